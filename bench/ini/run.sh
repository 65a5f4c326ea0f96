#!/usr/bin/env bash
# Configuration loading benchmark: how long `pairwell-cli list` takes on a
# configuration file of 10,000 and of 100,000 sync sets (each a section with
# two folders), next to `grep -c` reading the same file. Loading must grow
# linearly with the sections: the 100,000-set file should take about ten
# times the 10,000-set one, not a hundred. Every command gets one untimed
# warm-up pass, then RUNS timed passes (default 3); the median counts.
#
# Run: bench/ini/run.sh [BUILD_DIR]   (or: make bench-ini)
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
runs="${RUNS:-3}"
cli="$build/pairwell-cli"
[ -x "$cli" ] || { echo "bench-ini: $cli is missing; run make build" >&2; exit 1; }
work="$(mktemp -d /tmp/pairwell-bench-ini.XXXXXX)"
trap 'rm -rf "$work"' EXIT

# shellcheck source=../median_time.sh
source "$root/bench/median_time.sh"

make_ini() {
  local sets="$1" file="$2"
  {
    sed -n '/^\[Conflict Types\]/,$p' "$root/data/Pairwell.ini"
    awk -v n="$sets" 'BEGIN {
      for (i = 1; i <= n; ++i) {
        printf "[Sec: Set %d]\r\nDir1=/data/a%d\r\nDir2=/data/b%d\r\n\r\n", i, i, i
      }
    }'
  } > "$file"
}

printf '%-10s %12s %12s %10s\n' sets "pairwell s" "grep -c s" ratio
declare -A took
for sets in 10000 100000; do
  ini="$work/p$sets.ini"
  make_ini "$sets" "$ini"
  median_time "$cli" --ini "$ini" list; pw=$med
  median_time grep -c '^\[Sec: ' "$ini"; peer=$med
  took[$sets]=$pw
  printf '%-10s %12.3f %12.3f %10.1f\n' "$sets" "$pw" "$peer" \
    "$(awk -v a="$pw" -v b="$peer" 'BEGIN {print a / b}')"
done
printf 'growth from 10,000 to 100,000 sets: %.1fx (linear: about 10x)\n' \
  "$(awk -v a="${took[100000]}" -v b="${took[10000]}" 'BEGIN {print a / b}')"
