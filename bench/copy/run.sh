#!/usr/bin/env bash
# Copy benchmark: how fast a first `pairwell-cli sync --yes` fills an empty
# folder, next to `rsync -a src/ dst/` and `cp -a src/. dst/ && sync` on the
# same data. Three workloads (WORKLOADS picks some, in this order):
#   small  50,000 files of 1-8 KiB in 500 folders of 100
#   files  200,000 files of 0-16 KiB in 2,000 folders of 100
#   large  8 files of 128 MiB (random data, every block written)
# Every run copies into a fresh empty destination. Before each timed run the
# previous destination goes, `sync` writes back every dirty page and the page
# cache is dropped (echo 3 > /proc/sys/vm/drop_caches), so the source is read
# from disk; where dropping is not allowed (a container) the source is read
# once beforehand and the runs say "warm cache". All of that is outside the
# clock. A destination of many files is moved aside rather than deleted, and
# the pile is deleted after the workload, a minute before any more files are
# made: on ext4 without a journal the allocator skips every inode freed in
# the last minute one by one, which made the run after a deletion of 200,000
# files several times slower than the same run a minute later.
#
# What is timed: pairwell-cli and rsync -a their own run; cp -a with a
# `sync` after it, which is the price of data known to be on the disk (a
# durable copier pays it itself). The `sync` that follows every command
# before the next run is timed too and shown as "then sync": what the
# command left in the page cache for the disk. The median of RUNS timed
# runs counts. MB/s is 10^6 bytes of file data per second.
#
# Targets: small, pairwell <= 0.6 x rsync -a; large, pairwell <= 1.05 x
# (cp -a + sync). After the last pairwell run of each workload the
# destination is compared with the source: bytes (diff -r), and names,
# sizes, modes and modification times.
#
# Environment:
#   RUNS                   timed runs per command (default 5; 3 for "files")
#   WORKLOADS              e.g. "small large" (default "small files large")
#   PAIRWELL_COPY_THREADS  handed to pairwell-cli (its copy worker count);
#                          unset means the program's own default
#
# Needs about 25 GiB free in WORK_DIR (the destinations of the "files"
# workload pile up until it ends); takes about 15 minutes on 2 cores.
#
# Run: bench/copy/run.sh [BUILD_DIR] [WORK_DIR]   (or: make bench-copy)
#   BUILD_DIR  default "build" under the repo root; built (Release, without
#              the desktop program) if the binary is missing
#   WORK_DIR   default a fresh temporary folder under /tmp, removed at the
#              end; a given one is kept, and data already made there is reused
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
workloads="${WORKLOADS:-small files large}"
for w in $workloads; do
  case "$w" in small | files | large) ;; *)
    echo "Unknown workload '$w' in WORKLOADS (small, files, large)" >&2; exit 2 ;;
  esac
done
if [ -n "${RUNS:-}" ]; then
  [[ "$RUNS" =~ ^[1-9][0-9]*$ ]] || { echo "RUNS must be a positive number" >&2; exit 2; }
fi
if [ -n "${PAIRWELL_COPY_THREADS:-}" ]; then
  threads_used="$PAIRWELL_COPY_THREADS"
  export PAIRWELL_COPY_THREADS
else
  threads_used=default
  unset PAIRWELL_COPY_THREADS
fi
# shellcheck source=../common.sh
source "$root/bench/common.sh"
use_work_dir "${2:-}" copy
command -v rsync >/dev/null || apt_install rsync
command -v python3 >/dev/null || apt_install python3

ensure_cli
# The catalogue as shipped (a build keeps an older Pairwell.ini it found).
shipped_ini="$root/data/Pairwell.ini"

# Data: fixed names, sizes and contents (seeded), dates a day old or more,
# so that nothing counts as changed within the second a sync starts. Each
# workload is made once per WORK_DIR.
d="$work/data"
make_data() {
  local w="$1"
  [ ! -f "$work/$w.complete" ] || return 0
  echo "Making the '$w' data in $d/$w ..."
  rm -rf "${d:?}/$w"
  python3 - "$d/$w" "$w" <<'PY'
import os, random, sys
base, kind = sys.argv[1], sys.argv[2]
t0 = 1_700_000_000
rng = random.Random(42)
pool = random.Random(7).randbytes(16 << 20)
def write(path, data):
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    view = memoryview(data)
    while view:
        view = view[os.write(fd, view):]
    os.close(fd)
    os.utime(path, (t0, t0))
def folders(count, per, low, high):
    for g in range(count):
        sub = f"{base}/d{g:04d}"
        os.makedirs(sub)
        for k in range(per):
            size = rng.randint(low, high)
            start = rng.randrange(0, len(pool) - size)
            write(f"{sub}/f{k:03d}.dat", pool[start:start + size])
if kind == "small":
    folders(500, 100, 1024, 8192)
elif kind == "files":
    folders(2000, 100, 0, 16384)
else:
    os.makedirs(base)
    for i in range(8):
        path = f"{base}/big{i}.bin"
        fd = os.open(path, os.O_WRONLY | os.O_CREAT, 0o644)
        for block in range(128 // 16):
            # Each 16 MiB block starts with its own stamp: no two are equal.
            os.write(fd, f"{i}:{block}:".encode().ljust(64, b"#"))
            os.write(fd, pool[64:])
        os.close(fd)
        os.utime(path, (t0, t0))
PY
  sync
  touch "$work/$w.complete"
}
for w in $workloads; do make_data "$w"; done

can_drop=yes
if ! { sync && echo 3 >/proc/sys/vm/drop_caches; } 2>/dev/null; then
  can_drop=no
  echo "Cannot drop the page cache here: warm cache (source read once first)"
fi

ini="$work/bench.ini"
dst="$work/dst"
aside="$work/old-dst"
log="$work/pairwell.out"

# Deletions: when the last one was, and the waits it calls for.
last_delete=0
remove() { rm -rf "$@"; sync; last_delete=$(date +%s); }
many_files=1000
settle() {
  local wait=$((last_delete + 65 - $(date +%s)))
  if [ "$wait" -gt 0 ]; then
    echo "  (waiting ${wait}s until the inodes freed lately are reused at full speed)"
    sleep "$wait"
  fi
}
# fresh_dst: an empty $dst, the old one deleted or, with many files, moved aside.
fresh_dst() {
  if [ "$files" -lt "$many_files" ]; then
    remove "$dst"
  elif [ -e "$dst" ]; then
    mkdir -p "$aside"
    mv "$dst" "$aside/$((++moved))"
  fi
  mkdir "$dst"
}
moved=0
remove "$dst" "$aside"  # and a deletion by whatever ran before counts as recent

# A fresh configuration for each pairwell run: a saved LastSyncDate would
# make the next run a second sync.
write_ini() {
  { cat "$shipped_ini"
    printf '[Sec: Bench]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=4\r\n' "$src" "$dst"
  } >"$ini"
}
# The commands, each copying $src into the empty $dst.
run_pairwell() { "$cli" --ini "$ini" sync --yes Bench >"$log" 2>&1; }
run_rsync() { rsync -a "$src/" "$dst/"; }
run_cp() { cp -a "$src/." "$dst/" && sync; }

now() { date +%s.%N; }
elapsed() { awk -v s="$1" -v e="$2" 'BEGIN { printf "%.3f", e - s }'; }
median() {
  printf '%s\n' "$@" | sort -g |
    awk '{ t[NR] = $1 } END { printf "%.3f", (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2 }'
}

# time_runs NAME: $runs timed runs of run_NAME into a fresh $dst; sets $med
# (the command) and $med_sync (the sync after it).
time_runs() {
  local i s e f times=() syncs=()
  for ((i = 0; i < runs; i++)); do
    fresh_dst
    [ "$1" != pairwell ] || write_ini
    sync
    [ "$files" -lt "$many_files" ] || settle
    [ "$can_drop" = no ] || echo 3 >/proc/sys/vm/drop_caches
    s=$(now)
    "run_$1" || { echo "failed: $1 (exit $?; see $log)" >&2; exit 1; }
    e=$(now)
    sync
    f=$(now)
    times+=("$(elapsed "$s" "$e")")
    syncs+=("$(elapsed "$e" "$f")")
  done
  med=$(median "${times[@]}")
  med_sync=$(median "${syncs[@]}")
  printf '  %-9s %s s   (then sync: %s s)\n' "$1:" "${times[*]}" "${syncs[*]}"
}

# verify: the pairwell destination holds exactly the source, beside the
# run's own versions area (its journal of the copies it created).
verify() {
  local what="$1"
  if ! diff -rq --exclude=.pairwell "$src" "$dst" >/dev/null; then
    echo "  VERIFY FAILED ($what): contents differ"; verified=no; return
  fi
  # A folder's own date is not kept (its entries change it): folders are
  # compared by name and mode.
  local fmt=(-mindepth 1 \( -type d -printf '%P d %m\n' \) -o -printf '%P %y %s %m %T@\n')
  (cd "$src" && find . "${fmt[@]}" | sort) >"$work/src.list"
  (cd "$dst" && find . -path ./.pairwell -prune -o "${fmt[@]}" | sort) >"$work/dst.list"
  if ! cmp -s "$work/src.list" "$work/dst.list"; then
    echo "  VERIFY FAILED ($what): names, sizes, modes or dates differ"
    diff "$work/src.list" "$work/dst.list" | head -5
    verified=no; return
  fi
  echo "  verified ($what): $(grep -c ' f ' "$work/dst.list") files equal in bytes, size, mode and mtime"
}

# The source the binary was built from (a build of another checkout may be
# measured), and whether it held changes not committed.
src_dir=$(sed -n 's/^CMAKE_HOME_DIRECTORY:[A-Z]*=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
commit=$(git -C "${src_dir:-$root}" rev-parse --short HEAD 2>/dev/null || echo unknown)
git -C "${src_dir:-$root}" diff --quiet HEAD -- src 2>/dev/null || commit="$commit+changes"
echo "pairwell-cli: $cli (${build_type:-unknown} build of ${src_dir:-?} at $commit)"
echo "PAIRWELL_COPY_THREADS: $threads_used"
echo "Work folder: $work ($(df -T "$work" | awk 'NR == 2 { print $2 " on " $1 }'))"

verified=yes
results=()
for w in $workloads; do
  src="$d/$w"
  # 200,000 files take long to remove, sync and copy: fewer runs by default.
  if [ -n "${RUNS:-}" ]; then runs=$RUNS; elif [ "$w" = files ]; then runs=3; else runs=5; fi
  files=$(find "$src" -type f | wc -l)
  bytes=$(find "$src" -type f -printf '%s\n' | awk '{ s += $1 } END { printf "%.0f", s }')
  echo "Workload '$w': $files files, $bytes bytes, $runs runs"
  [ "$can_drop" = yes ] || find "$src" -type f -exec cat {} + >/dev/null
  time_runs pairwell; t_pw=$med; s_pw=$med_sync
  verify "$w"
  time_runs rsync; t_rs=$med; s_rs=$med_sync
  time_runs cp; t_cp=$med; s_cp=$med_sync
  results+=("$w $files $bytes $runs $t_pw $s_pw $t_rs $s_rs $t_cp $s_cp")
  remove "$dst" "$aside"
done

echo
cache=$([ "$can_drop" = yes ] && echo "cold cache (dropped before each run)" || echo "warm cache")
echo "First sync into an empty folder: medians, $cache, $(nproc) cores,"
echo "PAIRWELL_COPY_THREADS=$threads_used"
printf '%s\n' "${results[@]}" | awk '
function row(name, t, s) {
  printf "  %-26s %9.3f %9.3f %9.1f %10.0f\n", name, t, s, b / 1e6 / t, f / t
}
{
  w = $1; f = $2; b = $3; n = $4; pw = $5; spw = $6; rs = $7; srs = $8; cp = $9; scp = $10
  printf "\n%s: %d files, %.1f MiB (median of %d runs)\n", w, f, b / 1048576, n
  printf "  %-26s %9s %9s %9s %10s\n", "command", "seconds", "then sync", "MB/s", "files/s"
  row("pairwell-cli sync --yes", pw, spw)
  row("rsync -a", rs, srs)
  row("cp -a + sync", cp, scp)
  printf "  pairwell/rsync: %.2f   pairwell/(cp -a+sync): %.2f\n", pw / rs, pw / cp
  if (w == "small")
    printf "  target pairwell <= 0.60 x rsync -a: %s (%.2f)\n", pw <= 0.6 * rs ? "MET" : "NOT MET", pw / rs
  if (w == "large")
    printf "  target pairwell <= 1.05 x (cp -a + sync): %s (%.2f)\n", pw <= 1.05 * cp ? "MET" : "NOT MET", pw / cp
}'
echo
[ "$verified" = yes ] && echo "Destination check: PASS (pairwell copies equal the source)" ||
  echo "Destination check: FAIL"
echo "Total time: ${SECONDS}s"
[ "$verified" = yes ]
