#!/usr/bin/env bash
# How many copy workers suit a slow disk: a first `pairwell-cli sync --yes`
# into an empty folder on a loop-mounted ext4 image, timed with 1, 2, 4 and
# 8 workers (PAIRWELL_COPY_THREADS), every figure including the flushes
# that make the copies durable.
#
# The image is a loop device with direct I/O (no second page cache in
# between) and requests cut to 16 KiB, so that every read and write of the
# image reaches the real disk in small pieces, as a USB stick takes them.
# It is no slower disk where the disk under it is fast: a machine without an
# I/O throttle (cgroup io.max, device-mapper delay) cannot make one. The
# sources stay on the ordinary disk. Before each timed run the destination goes, `sync`, and the
# page cache is dropped (all outside the clock).
#
# Needs root (loop devices, mount, drop_caches); says so and stops without.
# Run: bench/copy/threads.sh [BUILD_DIR]   (RUNS, default 3; about 6 minutes)
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
runs="${RUNS:-3}"
cli="$build/pairwell-cli"
[ -x "$cli" ] || { echo "No $cli: run 'make build' first" >&2; exit 2; }
if [ "$(id -u)" -ne 0 ]; then
  echo "bench/copy/threads.sh needs root for its loop device; not run" >&2
  exit 0
fi

work="$(mktemp -d /var/tmp/pairwell-bench-threads.XXXXXX)"
mnt="$work/mnt"
loop=""
cleanup() {
  mountpoint -q "$mnt" 2>/dev/null && umount "$mnt"
  [ -z "$loop" ] || losetup -d "$loop"
  rm -rf "$work"
}
trap cleanup EXIT

truncate -s 3G "$work/disk.img"
mkfs.ext4 -q -F "$work/disk.img"
loop=$(losetup --find --show --direct-io=on "$work/disk.img")
dev=$(basename "$loop")
echo 16 >"/sys/block/$dev/queue/max_sectors_kb"
mkdir "$mnt"
mount "$loop" "$mnt"

python3 - "$work/src" <<'PY'
import os, random, sys
base = sys.argv[1]
rng = random.Random(42)
pool = random.Random(7).randbytes(16 << 20)
t0 = 1_700_000_000
def write(path, data):
    with open(path, "wb") as f:
        f.write(data)
    os.utime(path, (t0, t0))
for g in range(100):
    sub = f"{base}/small/d{g:03d}"
    os.makedirs(sub)
    for k in range(100):
        size = rng.randint(1024, 8192)
        start = rng.randrange(0, len(pool) - size)
        write(f"{sub}/f{k:03d}.dat", pool[start:start + size])
os.makedirs(f"{base}/large")
for i in range(4):
    write(f"{base}/large/big{i}.bin", f"{i}".encode() + pool * 4)
PY
sync

median() {
  printf '%s\n' "$@" | sort -g | awk '{ t[NR] = $1 } END { print t[int((NR + 1) / 2)] }'
}

echo "Loop device $loop: direct I/O, max_sectors_kb $(cat "/sys/block/$dev/queue/max_sectors_kb"), ext4"
printf '%-8s %-8s %10s   %s\n' workload threads seconds runs
for w in small large; do
  for threads in 1 2 4 8; do
    times=()
    for ((i = 0; i < runs; i++)); do
      rm -rf "$mnt/dst"
      mkdir "$mnt/dst"
      { cat "$root/data/Pairwell.ini"
        printf '[Sec: Bench]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=4\r\n' \
          "$work/src/$w" "$mnt/dst"
      } >"$work/bench.ini"
      sync
      echo 3 >/proc/sys/vm/drop_caches
      s=$(date +%s.%N)
      PAIRWELL_COPY_THREADS=$threads "$cli" --ini "$work/bench.ini" sync --yes Bench \
        >"$work/out.txt" 2>&1 || { cat "$work/out.txt"; exit 1; }
      e=$(date +%s.%N)
      times+=("$(awk -v s="$s" -v e="$e" 'BEGIN { printf "%.3f", e - s }')")
    done
    printf '%-8s %-8s %10s   %s\n' "$w" "$threads" "$(median "${times[@]}")" "${times[*]}"
  done
done
