#!/usr/bin/env bash
# Undo benchmark: what keeping the replaced and deleted copies costs a sync
# run, and how long putting a run back takes. Three workloads (WORKLOADS
# picks some):
#   replace  50,000 files of 1-8 KiB (500 folders of 100) in both folders,
#            the source's copies a day newer and different: the run replaces
#            all 50,000 in the mirror-to folder. Timed with VersionDays=0
#            (nothing kept: replaced for good) and with the default (30:
#            every old copy kept by a hard link, every step journalled).
#   delete   the mirror-to folder holds the same 50,000 files, the source
#            only one small file (so that it is not empty): the run deletes
#            the 50,000 (--allow-mass-delete), for good or by a rename into
#            the versions area.
#   undo     `pairwell-cli undo` of each replace run made with versions,
#            against that run's own time.
# Targets: replace and delete, with versions <= 1.1 x without; undo <= 1.0 x
# the run it puts back.
#
# Every timed run starts from the same state: the destination is copied
# (cp -a) from a pristine tree made once, then `sync` writes back every dirty
# page and the page cache is dropped (echo 3 > /proc/sys/vm/drop_caches), so
# both folders are read from disk; an undo is timed on the folder its run
# left, after the same `sync` and drop. Where dropping is not allowed (a
# container) the caches stay warm and the runs say so. All of that is
# outside the clock. A destination that has served is moved aside, never
# deleted, and the pile goes at the end: on ext4 without a journal the
# allocator skips, one by one, every inode freed in the last minute whose
# inode table block is still cached, which would slow the next run's
# creations (dropping the cache ends that; without dropping, a run waits
# until a minute has passed since the last deletion). A run without versions
# frees the inodes of the copies it replaces or deletes itself; the cache is
# dropped after it too, before the next destination is made.
#
# What is timed: the pairwell-cli command; the `sync` after it is timed too
# and shown as "then sync" (what the command left for the disk). Within each
# round the runs without and with versions alternate which goes first. The
# median of RUNS rounds counts. Each run also shows the discard requests its
# disk completed (command and sync): on a file system mounted with
# "discard", every file freed for good sends one, which is where a run that
# keeps nothing can lose to one that keeps its copies (the freeing comes
# later, when the kept copies expire). To measure without that, give a
# WORK_DIR on a file system mounted without "discard"; the header shows the
# mount options of the one used.
#
# Checks, after every timed run: a replace leaves the destination equal to
# the source, and the old copies, unchanged, in the versions area; a delete
# leaves only the source's file, and the deleted copies in the versions area;
# an undo leaves the destination exactly as it was before the run (bytes,
# sizes, modes and modification times of every file; folders by name and
# mode). The .pairwell folder itself is left out of the comparisons.
#
# Environment:
#   RUNS       timed rounds per workload (default 5)
#   WORKLOADS  e.g. "replace undo" (default "replace delete undo")
#
# Needs about 6 GiB free in WORK_DIR (the used destinations pile up until the
# end); takes about 10 minutes on 2 cores with the defaults (6 with RUNS=3).
#
# Run: bench/undo/run.sh [BUILD_DIR] [WORK_DIR]   (or: make bench-undo)
#   BUILD_DIR  default "build" under the repo root; built (Release, without
#              the desktop program) if the binary is missing
#   WORK_DIR   default a fresh temporary folder under /tmp, removed at the
#              end; a given one is kept, and data already made there is reused
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
build="${1:-build}"
[[ "$build" = /* ]] || build="$root/$build"
workloads="${WORKLOADS:-replace delete undo}"
want() { [[ " $workloads " == *" $1 "* ]]; }
for w in $workloads; do
  case "$w" in replace | delete | undo) ;; *)
    echo "Unknown workload '$w' in WORKLOADS (replace, delete, undo)" >&2; exit 2 ;;
  esac
done
runs="${RUNS:-5}"
[[ "$runs" =~ ^[1-9][0-9]*$ ]] || { echo "RUNS must be a positive number" >&2; exit 2; }
# shellcheck source=../common.sh
source "$root/bench/common.sh"
use_work_dir "${2:-}" undo
command -v python3 >/dev/null || apt_install python3

ensure_cli
# The catalogue as shipped (a build keeps an older Pairwell.ini it found).
shipped_ini="$root/data/Pairwell.ini"

# Data, made once per WORK_DIR: "old" holds the destination's copies, "new"
# the source's (the same names, other sizes and contents, a day newer),
# "keep" the one file the source of the deletions keeps. Dates are long past,
# so nothing counts as changed within the second a sync starts.
d="$work/data"
make_data() {
  local kind="$1"
  [ ! -f "$work/$kind.complete" ] || return 0
  echo "Making the '$kind' data in $d/$kind ..."
  rm -rf "${d:?}/$kind"
  python3 - "$d/$kind" "$kind" <<'PY'
import os, random, sys
base, kind = sys.argv[1], sys.argv[2]
t0 = 1_700_000_000
pool = random.Random(7).randbytes(16 << 20)
def write(path, data, t):
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    view = memoryview(data)
    while view:
        view = view[os.write(fd, view):]
    os.close(fd)
    os.utime(path, (t, t))
if kind == "keep":
    os.makedirs(base)
    write(f"{base}/keep.dat", pool[:2048], t0)
else:
    rng = random.Random(42 if kind == "old" else 43)
    t = t0 if kind == "old" else t0 + 86400
    for g in range(500):
        sub = f"{base}/d{g:04d}"
        os.makedirs(sub)
        for k in range(100):
            size = rng.randint(1024, 8192)
            start = rng.randrange(0, len(pool) - size)
            write(f"{sub}/f{k:03d}.dat", pool[start:start + size], t)
PY
  sync
  touch "$work/$kind.complete"
}
for kind in old new keep; do make_data "$kind"; done
# A run never writes into its source; a versions area there would mean the
# pristine data changed.
for kind in old new keep; do
  if [ -e "$d/$kind/.pairwell" ]; then
    echo "$d/$kind holds a .pairwell folder: remove $work and start again" >&2; exit 1
  fi
done

can_drop=yes
if ! { sync && echo 3 >/proc/sys/vm/drop_caches; } 2>/dev/null; then
  can_drop=no
  echo "Cannot drop the page cache here: warm cache"
fi

ini="$work/bench.ini"
dst="$work/dst"
aside="$work/old-dst"
log="$work/pairwell.out"

# Deletions: when the last one was, and the wait it calls for where the cache
# cannot be dropped.
last_delete=0
remove() { rm -rf "$@"; sync; last_delete=$(date +%s); }
settle() {
  [ "$can_drop" = no ] || return 0
  local wait=$((last_delete + 65 - $(date +%s)))
  if [ "$wait" -gt 0 ]; then
    echo "  (waiting ${wait}s until the inodes freed lately are reused at full speed)"
    sleep "$wait"
  fi
}
cold() { sync; [ "$can_drop" = no ] || echo 3 >/proc/sys/vm/drop_caches; }
moved=0
remove "$dst" "$aside"

# fresh_dst TREE...: $dst made anew as a copy of the trees given, the one
# before moved aside; ends with the cache dropped.
fresh_dst() {
  if [ -e "$dst" ]; then
    mkdir -p "$aside"
    mv "$dst" "$aside/$((++moved))"
  fi
  cold
  settle
  mkdir "$dst"
  local t
  for t in "$@"; do cp -a "$t/." "$dst/"; done
  cold
}

# A fresh configuration for each sync: a saved LastSyncDate would make the
# next run a second sync. $1 is the source; $2 extra keys of the set.
write_ini() {
  { cat "$shipped_ini"
    printf '[Sec: Bench]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=5\r\n' "$1" "$dst"
    [ -z "${2:-}" ] || printf '%s\r\n' "$2"
  } >"$ini"
}

now() { date +%s.%N; }
elapsed() { awk -v s="$1" -v e="$2" 'BEGIN { printf "%.3f", e - s }'; }
median() {
  printf '%s\n' "$@" | sort -g |
    awk '{ t[NR] = $1 } END { printf "%.3f", (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2 }'
}

# discards: the discard requests the work folder's disk completed so far and
# the milliseconds spent on them (empty where the kernel does not count them).
# A file system mounted with "discard" sends one for the blocks of every file
# it frees, so they show what freeing copies cost a run.
disk=$(basename "$(readlink -f "$(df --output=source "$work" | tail -1)")")
discards() { awk -v n="$disk" '$3 == n && NF >= 18 { print $15, $18 }' /proc/diskstats; }

# timed LABEL CMD...: runs CMD (output to $log), which must exit 0, then
# `sync`; sets $t (the command), $ts (the sync) and $dn (the discards of
# both, "-" where not counted).
timed() {
  local label="$1" s e f rc=0 d0 d1 dc
  shift
  d0=$(discards)
  s=$(now)
  "$@" >"$log" 2>&1 || rc=$?
  e=$(now)
  sync
  f=$(now)
  d1=$(discards)
  if [ "$rc" -ne 0 ]; then
    echo "failed: $label (exit $rc); the end of its output:" >&2
    tail -5 "$log" >&2
    exit 1
  fi
  t=$(elapsed "$s" "$e")
  ts=$(elapsed "$e" "$f")
  if [ -n "$d0" ] && [ -n "$d1" ]; then
    dc=$(awk -v a="$d0" -v b="$d1" 'BEGIN { split(a, x, " "); split(b, y, " ")
      printf "%d discards, %.2f s", y[1] - x[1], (y[2] - x[2]) / 1000 }')
    dn=${dc%% *}
  else
    dc="discards not counted"; dn=-
  fi
  printf '    %-46s %7s s   (then sync: %s s; %s)\n' "$label:" "$t" "$ts" "$dc"
}

# same TREE EXPECTED WHAT [files]: TREE (without its .pairwell folder) holds
# exactly the files of EXPECTED: names, bytes, sizes, modes and modification
# times; and the same folders, by name and mode, unless "files" is given.
same() {
  local out
  if out=$(python3 - "$@" <<'PY'
import os, stat, sys
tree, expected, what = sys.argv[1:4]
folders = len(sys.argv) < 5 or sys.argv[4] != "files"
def walk(top):
    files, dirs = {}, {}
    for here, subs, names in os.walk(top):
        rel = os.path.relpath(here, top)
        if rel == ".":
            subs[:] = [s for s in subs if s != ".pairwell"]
            rel = ""
        for s in subs:
            dirs[os.path.join(rel, s)] = stat.S_IMODE(os.lstat(os.path.join(here, s)).st_mode)
        for n in names:
            st = os.lstat(os.path.join(here, n))
            files[os.path.join(rel, n)] = (stat.S_IFMT(st.st_mode), st.st_size,
                                           stat.S_IMODE(st.st_mode), st.st_mtime_ns)
    return files, dirs
got, got_dirs = walk(tree)
want, want_dirs = walk(expected)
problems = []
for name in sorted(set(got) | set(want)):
    if got.get(name) != want.get(name):
        problems.append(f"{name}: {got.get(name)} instead of {want.get(name)}")
if folders:
    for name in sorted(set(got_dirs) ^ set(want_dirs)):
        problems.append(f"folder {name}: only in {'the result' if name in got_dirs else 'the expected tree'}")
    for name in sorted(set(got_dirs) & set(want_dirs)):
        if got_dirs[name] != want_dirs[name]:
            problems.append(f"folder {name}: mode {got_dirs[name]:o} instead of {want_dirs[name]:o}")
if not problems:
    for name in sorted(want):
        with open(os.path.join(tree, name), "rb") as a, open(os.path.join(expected, name), "rb") as b:
            if a.read() != b.read():
                problems.append(f"{name}: other bytes")
if problems:
    print(f"VERIFY FAILED ({what}): {len(problems)} differences, e.g.")
    for p in problems[:5]:
        print("      " + p)
    sys.exit(1)
print(f"verified ({what}): {len(want)} files equal in bytes, size, mode and mtime")
PY
  ); then
    echo "      $out"
  else
    echo "      $out"
    verified=no
  fi
}

# kept WHAT: the run left exactly one versions area in $dst, holding the
# destination's old copies unchanged.
kept() {
  local areas=("$dst"/.pairwell/versions/*/files)
  if [ "${#areas[@]}" -ne 1 ] || [ ! -d "${areas[0]}" ]; then
    echo "      VERIFY FAILED ($1): ${#areas[@]} versions areas in $dst/.pairwell/versions"
    verified=no; return
  fi
  same "${areas[0]}" "$d/old" "$1" files
}

# none_kept: a run with VersionDays=0 left no versions area with files.
none_kept() {
  if [ -d "$dst/.pairwell" ] && [ -n "$(find "$dst/.pairwell" -type f -print -quit)" ]; then
    echo "      VERIFY FAILED: VersionDays=0 kept files in $dst/.pairwell"; verified=no
  fi
}

# plan_check SOURCE ACTION COUNT WHAT [extra keys]: the plan of the prepared
# folders holds COUNT files with action code ACTION (3 copy the newest,
# 2 delete everywhere) and nothing else to do.
plan_check() {
  write_ini "$1" "${5:-}"
  local got
  if ! got=$("$cli" --ini "$ini" plan --json Bench 2>"$log" | python3 -c '
import collections, json, sys
c = collections.Counter(f["action"] for f in json.load(sys.stdin)["files"] if f["action"] != 1)
print(" ".join(f"{a}:{n}" for a, n in sorted(c.items())))'); then
    echo "  plan ($4) failed:" >&2; tail -5 "$log" >&2; exit 1
  fi
  if [ "$got" = "$2:$3" ]; then
    echo "  plan ($4): $3 files, each with action $2"
  else
    echo "  PLAN NOT AS EXPECTED ($4): actions $got, expected $2:$3" >&2; exit 1
  fi
}

# The source the binary was built from, whether it held changes not
# committed (and a digest of them, to tell two working states apart), and
# whether src/ changed after the binary was built.
src_dir=$(sed -n 's/^CMAKE_HOME_DIRECTORY:[A-Z]*=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
src_dir="${src_dir:-$root}"
commit=$(git -C "$src_dir" rev-parse --short HEAD 2>/dev/null || echo unknown)
changes=$(cd "$src_dir" && { git diff HEAD -- src; git ls-files -o --exclude-standard -- src | sort |
  while read -r f; do echo "$f"; cat "$f"; done; } 2>/dev/null | sha1sum | cut -c1-8)
if [ -n "$(cd "$src_dir" && git status --porcelain -- src 2>/dev/null)" ]; then
  commit="$commit+changes ($changes)"
fi
echo "pairwell-cli: $cli (${build_type:-unknown} build of $src_dir at $commit," \
  "built $(date -r "$cli" '+%Y-%m-%d %H:%M:%S'))"
if [ -n "$(find "$src_dir/src" -newer "$cli" -type f -print -quit 2>/dev/null)" ]; then
  echo "Note: src/ changed after this binary was built; it measures the older state"
fi
echo "Work folder: $work ($(df -T "$work" | awk 'NR == 2 { print $2 " on " $1 }')," \
  "mounted $(findmnt -no OPTIONS --target "$work" 2>/dev/null || echo "?"))"
echo "Caches: $([ "$can_drop" = yes ] && echo "dropped before every timed run" || echo "warm")"

files=$(find "$d/old" -type f | wc -l)
verified=yes
n_none=() n_kept=() n_undo=() s_none=() s_kept=() s_undo=() c_none=() c_kept=() c_undo=()

# replace (and undo): each round a run without versions and one with, in
# turns first; the undo follows the run with versions.
if want replace || want undo; then
  echo "Workload 'replace'$(want undo && echo " and 'undo'"): $files files, $runs rounds"
  planned=no
  replace_dst() {
    fresh_dst "$d/old"
    [ "$planned" = yes ] || { plan_check "$d/new" 3 "$files" replace; planned=yes; cold; }
  }
  replace_none() {
    replace_dst
    write_ini "$d/new" "VersionDays=0"
    timed "sync --yes, VersionDays=0" "$cli" --ini "$ini" sync --yes Bench
    n_none+=("$t"); s_none+=("$ts"); c_none+=("$dn")
    same "$dst" "$d/new" "replaced"
    none_kept
  }
  replace_kept() {
    replace_dst
    write_ini "$d/new"
    timed "sync --yes, VersionDays=30" "$cli" --ini "$ini" sync --yes Bench
    n_kept+=("$t"); s_kept+=("$ts"); c_kept+=("$dn")
    same "$dst" "$d/new" "replaced"
    kept "old copies kept"
    if want undo; then
      cold
      timed "undo Bench" "$cli" --ini "$ini" undo Bench
      n_undo+=("$t"); s_undo+=("$ts"); c_undo+=("$dn")
      same "$dst" "$d/old" "put back"
    fi
  }
  for ((i = 1; i <= runs; i++)); do
    echo "  round $i"
    if want replace && ((i % 2)); then replace_none; fi
    replace_kept
    if want replace && ! ((i % 2)); then replace_none; fi
  done
fi

d_none=() d_kept=() ds_none=() ds_kept=() dc_none=() dc_kept=()
if want delete; then
  echo "Workload 'delete': $files files, $runs rounds"
  planned=no
  delete_run() {
    fresh_dst "$d/old" "$d/keep"
    [ "$planned" = yes ] || { plan_check "$d/keep" 2 "$files" delete; planned=yes; cold; }
    write_ini "$d/keep" "$1"
    timed "sync --yes --allow-mass-delete, $2" "$cli" --ini "$ini" sync --yes --allow-mass-delete Bench
    same "$dst" "$d/keep" "deleted" files
    [ -n "$1" ] || kept "deleted copies kept"
    [ -z "$1" ] || none_kept
  }
  for ((i = 1; i <= runs; i++)); do
    echo "  round $i"
    if ((i % 2)); then delete_run "VersionDays=0" "VersionDays=0"; d_none+=("$t"); ds_none+=("$ts"); dc_none+=("$dn"); fi
    delete_run "" "VersionDays=30"; d_kept+=("$t"); ds_kept+=("$ts"); dc_kept+=("$dn")
    if ! ((i % 2)); then delete_run "VersionDays=0" "VersionDays=0"; d_none+=("$t"); ds_none+=("$ts"); dc_none+=("$dn"); fi
  done
fi

echo "Removing the used destinations ..."
remove "$dst" "$aside"

bytes_old=$(find "$d/old" -type f -printf '%s\n' | awk '{ s += $1 } END { printf "%.0f", s }')
bytes_new=$(find "$d/new" -type f -printf '%s\n' | awk '{ s += $1 } END { printf "%.0f", s }')
cache=$([ "$can_drop" = yes ] && echo "cold cache (dropped before each run)" || echo "warm cache")
echo
echo "Keeping versions: medians of $runs runs, $cache, $(nproc) cores"
echo "pairwell-cli at $commit"
# row NAME SECONDS SYNC_SECONDS DISCARDS...: a line of the table, with the
# median count of discards.
row() {
  local name="$1" t="$2" ts="$3" c="-"
  shift 3
  [[ " $* " == *" - "* ]] || c=$(median "$@" | awk '{ printf "%.0f", $1 }')
  printf '  %-40s %9.3f %9.3f %10.0f %9s\n' "$name" "$t" "$ts" \
    "$(awk -v f="$files" -v t="$t" 'BEGIN { print f / t }')" "$c"
}
head_row() { printf '  %-40s %9s %9s %10s %9s\n' "command" "seconds" "then sync" "files/s" "discards"; }
verdict() { awk -v r="$1" -v m="$2" 'BEGIN { printf "%s (%.2f)", r <= m + 1e-9 ? "MET" : "NOT MET", r }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a / b }'; }
if want replace || want undo; then
  m_kept=$(median "${n_kept[@]}"); ms_kept=$(median "${s_kept[@]}")
fi
if want replace; then
  m_none=$(median "${n_none[@]}"); ms_none=$(median "${s_none[@]}")
  r=$(ratio "$m_kept" "$m_none")
  printf '\nreplace: %d files replaced, %.1f MiB written over %.1f MiB\n' "$files" \
    "$(awk -v b="$bytes_new" 'BEGIN { print b / 1048576 }')" "$(awk -v b="$bytes_old" 'BEGIN { print b / 1048576 }')"
  head_row
  row "sync --yes, VersionDays=0 (none kept)" "$m_none" "$ms_none" "${c_none[@]}"
  row "sync --yes, VersionDays=30 (default)" "$m_kept" "$ms_kept" "${c_kept[@]}"
  echo "  runs without: ${n_none[*]}"
  echo "  runs with:    ${n_kept[*]}"
  echo "  with/without: $r   target <= 1.10: $(verdict "$r" 1.1)"
fi
if want delete; then
  m_dnone=$(median "${d_none[@]}"); ms_dnone=$(median "${ds_none[@]}")
  m_dkept=$(median "${d_kept[@]}"); ms_dkept=$(median "${ds_kept[@]}")
  r=$(ratio "$m_dkept" "$m_dnone")
  printf '\ndelete: %d files deleted from the mirror-to folder\n' "$files"
  head_row
  row "sync --yes ..., VersionDays=0 (for good)" "$m_dnone" "$ms_dnone" "${dc_none[@]}"
  row "sync --yes ..., VersionDays=30 (kept)" "$m_dkept" "$ms_dkept" "${dc_kept[@]}"
  echo "  runs without: ${d_none[*]}"
  echo "  runs with:    ${d_kept[*]}"
  echo "  with/without: $r   target <= 1.10: $(verdict "$r" 1.1)"
fi
if want undo; then
  m_undo=$(median "${n_undo[@]}"); ms_undo=$(median "${s_undo[@]}")
  r=$(ratio "$m_undo" "$m_kept")
  printf '\nundo: the replace run with versions put back (%d files)\n' "$files"
  head_row
  row "sync --yes, VersionDays=30 (the run)" "$m_kept" "$ms_kept" "${c_kept[@]}"
  row "undo Bench" "$m_undo" "$ms_undo" "${c_undo[@]}"
  echo "  undos:        ${n_undo[*]}"
  echo "  undo/run: $r   target <= 1.00: $(verdict "$r" 1.0)"
fi
echo
[ "$verified" = yes ] && echo "Checks: PASS (every run left the folders as expected)" ||
  echo "Checks: FAIL"
echo "Total time: ${SECONDS}s"
[ "$verified" = yes ]
