#!/usr/bin/env bash
# Copy benchmark: how fast a first `pairwell-cli sync --yes` fills an empty
# folder, next to `cp -a src/. dst/` and `rsync -a src/ dst/` on the same
# data. Three data sets:
#   large  1 GiB in 8 files of 128 MiB (random data, every block written)
#   small  50,000 files of 200 bytes to 4 KiB in 500 subfolders of 100
#   all    both together in one source (hard links to the same data)
# Every run copies into a fresh empty destination. Before each timed run the
# previous destination is removed, `sync` flushes dirty pages and the page
# cache is dropped (echo 3 > /proc/sys/vm/drop_caches), so the source is
# read from disk; where dropping is not allowed (a container) the source is
# read once beforehand and the runs say "warm cache". The time is the
# command's own (its writes may still sit in the page cache when it ends);
# the median of RUNS timed runs (default 3) counts. MB/s is 10^6 bytes of
# file data per second; files/s counts the files of the set. After the last
# pairwell run of each set the destination is compared with the source:
# bytes (diff -r), and names, sizes, modes and modification times.
#
# Needs about 3 GiB free in WORK_DIR.
#
# Run: bench/copy/run.sh [BUILD_DIR] [WORK_DIR]   (or: make bench-copy)
#   BUILD_DIR  default "build" under the repo root; built (Release) if the
#              binary is missing
#   WORK_DIR   default a fresh temporary folder, removed at the end; a given
#              one is kept, and data already generated there is reused
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
runs="${RUNS:-3}"
if [ -n "${2:-}" ]; then
  mkdir -p "$2"
  work="$(cd "$2" && pwd)"
else
  work="$(mktemp -d /tmp/pairwell-bench-copy.XXXXXX)"
  trap 'rm -rf "$work"' EXIT
fi

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }
apt_install() {
  echo "Installing Debian package(s) $* with apt-get"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}
command -v rsync >/dev/null || apt_install rsync
command -v python3 >/dev/null || apt_install python3

cli="$build/pairwell-cli"
if [ ! -x "$cli" ]; then
  echo "Building pairwell-cli (Release) in $build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target pairwell-cli >/dev/null
fi
build_type=$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
[ "${build_type:-?}" = Release ] ||
  echo "Note: $build is a ${build_type:-unknown} build, not Release"
# The catalogue as shipped (a build keeps an older Pairwell.ini it found).
shipped_ini="$root/data/Pairwell.ini"

# Data: fixed names, sizes and dates (a day old, so that nothing counts as
# changed within the second a sync starts).
d="$work/data"
if [ ! -f "$work/data.complete" ]; then
  echo "Generating data in $work ..."
  rm -rf "$d"
  python3 - "$d" <<'PY'
import os, random, sys
base = sys.argv[1]
t0 = 1_700_000_000
rng = random.Random(42)
pool = os.urandom(16 << 20)
def write(path, data):
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    view = memoryview(data)
    while view:
        view = view[os.write(fd, view):]
    os.close(fd)
    os.utime(path, (t0, t0))
os.makedirs(f"{base}/large")
for i in range(8):
    fd = os.open(f"{base}/large/big{i}.bin", os.O_WRONLY | os.O_CREAT, 0o644)
    for block in range(128 // 16):
        # Each 16 MiB block starts with its own stamp: no two are equal.
        os.write(fd, f"{i}:{block}:".encode().ljust(64, b"#"))
        os.write(fd, pool[64:])
    os.close(fd)
    os.utime(f"{base}/large/big{i}.bin", (t0, t0))
for g in range(500):
    sub = f"{base}/small/d{g:03d}"
    os.makedirs(sub)
    for k in range(100):
        size = rng.randint(200, 4096)
        start = rng.randrange(0, len(pool) - size)
        write(f"{sub}/f{k:03d}.dat", pool[start:start + size])
PY
  mkdir -p "$d/all"
  cp -al "$d/large" "$d/small" "$d/all/"
  touch "$work/data.complete"
fi

can_drop=yes
if ! { sync && echo 3 >/proc/sys/vm/drop_caches; } 2>/dev/null; then
  can_drop=no
  echo "Cannot drop the page cache here: warm cache (source read once first)"
  find "$d" -type f -exec cat {} + >/dev/null
fi

ini="$work/bench.ini"
dst="$work/dst"
log="$work/pairwell.out"

# A fresh configuration for each pairwell run: a saved LastSyncDate would
# make the next run a second sync.
write_ini() {
  { cat "$shipped_ini"
    printf '[Sec: Bench]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=4\r\n' "$src" "$dst"
  } >"$ini"
}
# The commands, each copying $src into the empty $dst.
run_pairwell() {
  "$cli" --ini "$ini" sync --yes Bench >"$log" 2>&1
}
run_cp() { cp -a "$src/." "$dst/"; }
run_rsync() { rsync -a "$src/" "$dst/"; }

# time_runs NAME: RUNS timed runs of run_NAME into a fresh $dst; sets $med.
time_runs() {
  local i s e times=()
  for ((i = 0; i < runs; i++)); do
    rm -rf "$dst"
    mkdir "$dst"
    [ "$1" != pairwell ] || write_ini
    sync
    [ "$can_drop" = no ] || echo 3 >/proc/sys/vm/drop_caches
    s=$(date +%s.%N)
    "run_$1" || { echo "failed: $1 (see $log)" >&2; exit 1; }
    e=$(date +%s.%N)
    times+=("$(awk -v s="$s" -v e="$e" 'BEGIN { printf "%.4f", e - s }')")
  done
  med=$(printf '%s\n' "${times[@]}" | sort -g |
    awk '{ t[NR] = $1 } END { print (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2 }')
  echo "  $1: ${times[*]} s"
}

# verify: the pairwell destination holds exactly the source.
verify() {
  local what="$1"
  if ! diff -rq "$src" "$dst" >/dev/null; then
    echo "  VERIFY FAILED ($what): contents differ"; verified=no; return
  fi
  # A folder's own date is not kept (its entries change it): folders are
  # compared by name and mode.
  local fmt=(-mindepth 1 \( -type d -printf '%P d %m\n' \) -o -printf '%P %y %s %m %T@\n')
  (cd "$src" && find . "${fmt[@]}" | sort) >"$work/src.list"
  (cd "$dst" && find . "${fmt[@]}" | sort) >"$work/dst.list"
  if ! cmp -s "$work/src.list" "$work/dst.list"; then
    echo "  VERIFY FAILED ($what): names, sizes, modes or dates differ"
    diff "$work/src.list" "$work/dst.list" | head -5
    verified=no; return
  fi
  echo "  verified ($what): $(grep -c ' f ' "$work/dst.list") files equal in bytes, size, mode and mtime"
}

verified=yes
results=()
for set in large small all; do
  src="$d/$set"
  files=$(find "$src" -type f | wc -l)
  bytes=$(find "$src" -type f -printf '%s\n' | awk '{ s += $1 } END { printf "%.0f", s }')
  echo "Set '$set': $files files, $bytes bytes"
  time_runs pairwell; t_pw=$med
  verify "$set"
  time_runs cp; t_cp=$med
  time_runs rsync; t_rs=$med
  results+=("$set $files $bytes $t_pw $t_cp $t_rs")
  rm -rf "$dst"
done

echo
cache=$([ "$can_drop" = yes ] && echo "cold cache (dropped before each run)" || echo "warm cache")
echo "First sync into an empty folder, median of $runs runs, $cache, $(nproc) cores"
printf '%s\n' "${results[@]}" | awk '{
  set = $1; f = $2; b = $3; pw = $4; cp = $5; rs = $6
  printf "\n%s: %d files, %.1f MiB\n", set, f, b / 1048576
  printf "  %-24s %9s %9s %10s\n", "command", "median s", "MB/s", "files/s"
  printf "  %-24s %9.3f %9.1f %10.0f\n", "pairwell-cli sync --yes", pw, b / 1e6 / pw, f / pw
  printf "  %-24s %9.3f %9.1f %10.0f\n", "cp -a", cp, b / 1e6 / cp, f / cp
  printf "  %-24s %9.3f %9.1f %10.0f\n", "rsync -a", rs, b / 1e6 / rs, f / rs
  printf "  ratio pairwell/cp: %.2f   pairwell/rsync: %.2f\n", pw / cp, pw / rs
}'
echo
[ "$verified" = yes ] && echo "Destination check: PASS (pairwell copies equal the source)" ||
  echo "Destination check: FAIL"
echo "Total time: ${SECONDS}s"
