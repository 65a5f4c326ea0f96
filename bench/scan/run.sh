#!/usr/bin/env bash
# Scan benchmark: how fast `pairwell-cli plan` and `plan --json` scan and
# classify two folders of FILES small files each (default 100,000: FILES/100
# subfolders x 100 files, about 1% only on one side, 1% only on the other,
# 1% changed), next to `rsync -a --dry-run --delete` and `find` on the same
# data, in one run. Every command gets one untimed warm-up pass (page cache),
# then RUNS timed passes (default 3); the median wall time counts. Files per
# second counts the files of both folders. At the default size a second data
# set holds its files in one flat folder per side, to check that a scan's
# cost grows with the files, not with how they are laid out. Also reports
# the peak memory of plan and plan --json.
#
# Run: bench/scan/run.sh [BUILD_DIR] [WORK_DIR]   (or: make bench-scan,
#      make bench-scan FILES=1000000)
#   BUILD_DIR  default "build" under the repo root; built (Release) if the
#              binary is missing
#   WORK_DIR   default a fresh temporary folder, removed at the end; a given
#              one is kept, and data already generated there is reused
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
runs="${RUNS:-3}"
per_side="${FILES:-100000}"
if ! [[ "$per_side" =~ ^[1-9][0-9]*00$ ]]; then
  echo "FILES must be a multiple of 100" >&2
  exit 2
fi
if [ -n "${2:-}" ]; then
  mkdir -p "$2"
  work="$(cd "$2" && pwd)"
else
  work="$(mktemp -d /tmp/pairwell-bench-scan.XXXXXX)"
  trap 'rm -rf "$work"' EXIT
fi

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }
apt_install() {
  echo "Installing Debian package(s) $* with apt-get"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}
command -v rsync >/dev/null || apt_install rsync
[ -x /usr/bin/time ] || apt_install time
command -v python3 >/dev/null || apt_install python3

cli="$build/pairwell-cli"
if [ ! -x "$cli" ]; then
  echo "Building pairwell-cli (Release) in $build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target pairwell-cli >/dev/null
fi
# The catalogue as shipped (a build keeps an older Pairwell.ini it found).
shipped_ini="$root/data/Pairwell.ini"

# Data: names are fixed, contents a few bytes, dates fixed so that rsync sees
# the unchanged files as equal. Per group of 100 slots, slot 0 exists only in
# the first folder, slot 100 only in the second, slot 1 differs in content
# and date; so each folder holds exactly FILES files.
data="$work/data-$per_side"
if [ ! -f "$data/complete" ]; then
  echo "Generating data in $data ..."
  rm -rf "$data"
  python3 - "$data" "$per_side" <<'PY'
import os, sys
base, groups, t0 = sys.argv[1], int(sys.argv[2]) // 100, 1_600_000_000
def write(path, text, mtime):
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    os.write(fd, text.encode()); os.close(fd)
    os.utime(path, (mtime, mtime))
def make(a, b, per_dir):
    for g in range(groups):
        sub = f"d{g:04d}" if per_dir else ""
        for side in (a, b):
            os.makedirs(os.path.join(side, sub), exist_ok=True)
        for slot in range(101):
            name = os.path.join(sub, f"f{g:04d}_{slot:03d}.txt")
            if slot < 100:
                write(os.path.join(a, name), f"a{g}.{slot}\n", t0)
            if slot > 0:
                changed = slot == 1
                write(os.path.join(b, name), f"bb{g}.{slot}\n" if changed else f"a{g}.{slot}\n",
                      t0 + 3600 if changed else t0)
make(f"{base}/A", f"{base}/B", True)
if groups <= 1000:
    make(f"{base}/A2", f"{base}/B2", False)
PY
  touch "$data/complete"
fi
files=$((2 * per_side))  # both folders of a data set

d="$data"
ini="$work/bench.ini"
section() {
  printf '\r\n[Sec: %s]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=4\r\n' "$@"
}
{
  cat "$shipped_ini"
  section Bench "$d/A" "$d/B"
  [ -d "$d/A2" ] && section Flat "$d/A2" "$d/B2"
} >"$ini"

# shellcheck source=../median_time.sh
source "$root/bench/median_time.sh"

# peak_mib CMD...: the command's peak resident memory in MiB.
peak_mib() {
  /usr/bin/time -f %M -o "$work/peak_kib" "$@" >/dev/null 2>&1
  awk '{ kib = $1 } END { printf "%.1f", kib / 1024 }' "$work/peak_kib"
}

echo "Timing (median of $runs runs after one warm-up pass)..."
median_time "$cli" --ini "$ini" plan Bench; t_pw=$med
median_time "$cli" --ini "$ini" plan --json Bench; t_json=$med
median_time rsync -a --dry-run --delete "$d/A/" "$d/B/"; t_rs=$med
median_time find "$d/A" "$d/B" -printf ''; t_find=$med
m_pw=$(peak_mib "$cli" --ini "$ini" plan Bench)
m_json=$(peak_mib "$cli" --ini "$ini" plan --json Bench)
m_rs=$(peak_mib rsync -a --dry-run --delete "$d/A/" "$d/B/")
m_find=$(peak_mib find "$d/A" "$d/B" -printf '')

echo
echo "Scan of 2 x $per_side files ($((per_side / 100)) folders x 100 per side), $(nproc) cores"
awk -v f="$files" -v pw="$t_pw" -v js="$t_json" -v rs="$t_rs" -v fi="$t_find" \
    -v mpw="$m_pw" -v mjs="$m_json" -v mrs="$m_rs" -v mfi="$m_find" 'BEGIN {
  printf "%-34s %10s %12s %10s\n", "command", "median s", "files/s", "peak MiB"
  printf "%-34s %10.3f %12.0f %10.1f\n", "pairwell-cli plan", pw, f / pw, mpw
  printf "%-34s %10.3f %12.0f %10.1f\n", "pairwell-cli plan --json", js, f / js, mjs
  printf "%-34s %10.3f %12.0f %10.1f\n", "rsync -a --dry-run --delete", rs, f / rs, mrs
  printf "%-34s %10.3f %12.0f %10.1f\n", "find", fi, f / fi, mfi
  printf "ratio plan/rsync: %.2f   plan --json/plan: %.2f   plan/find: %.2f\n",
         pw / rs, js / pw, pw / fi
}'

if grep -q '^\[Sec: Flat\]' "$ini"; then
  median_time "$cli" --ini "$ini" plan Flat; t_flat=$med
  echo
  echo "Linearity (pairwell-cli plan, seconds per 1,000 files)"
  awk -v f="$files" -v many="$t_pw" -v flat="$t_flat" -v n="$per_side" 'BEGIN {
    m = many / (f / 1000); s = flat / (f / 1000); r = s / m
    printf "%-34s %10.5f\n", n / 100 " folders x 100", m
    printf "%-34s %10.5f\n", "1 folder x " n, s
    printf "ratio flat/many: %.2f  %s\n", r,
      (r <= 1.5) ? "PASS (flat no slower than 1.5x per file)" : "WARN (flat slower than 1.5x per file)"
  }'
fi
echo "Total time: ${SECONDS}s"
