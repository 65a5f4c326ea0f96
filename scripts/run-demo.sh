#!/usr/bin/env bash
# The main job of `make run`: a small demo sync set in a scratch folder
# under the build directory, planned and then synchronized by pairwell-cli.
set -euo pipefail
build_dir=$(cd "${1:-build}" && pwd)
cli="${build_dir}/pairwell-cli"
demo="${build_dir}/demo"

rm -rf "${demo}"
mkdir -p "${demo}/Laptop/notes" "${demo}/Backup/notes"
printf 'Meeting notes\n' > "${demo}/Laptop/notes/monday.txt"
printf 'Shopping list\n' > "${demo}/Laptop/list.txt"
printf 'Old photo index\n' > "${demo}/Backup/photos.txt"
# Both copies changed since they were last the same: a conflict.
printf 'Draft, laptop edit\n' > "${demo}/Laptop/draft.txt"
printf 'Draft, backup edit\n' > "${demo}/Backup/draft.txt"
# Files made a while ago, so that after the sync they count as unchanged.
find "${demo}" -type f -exec touch -d '-3 hours' {} +
touch -d '-1 hour' "${demo}/Laptop/draft.txt"
touch -d '-2 hours' "${demo}/Backup/draft.txt"

# The shipped catalogue plus the demo set.
tr -d "\r" < "$(dirname "$0")/../data/Pairwell.ini" > "${demo}/Pairwell.ini"
cat >> "${demo}/Pairwell.ini" <<INI
[Sec: Demo]
Dir1=${demo}/Laptop
Dir1Flags=4
Dir2=${demo}/Backup
Dir2Flags=4
INI

echo "== pairwell-cli list"
"${cli}" --ini "${demo}/Pairwell.ini" list
echo
echo "== pairwell-cli plan Demo"
"${cli}" --ini "${demo}/Pairwell.ini" plan Demo 2>/dev/null
echo
echo "== pairwell-cli sync --yes Demo"
"${cli}" --ini "${demo}/Pairwell.ini" sync --yes Demo
echo
echo "== pairwell-cli plan Demo (again: nothing left to do)"
"${cli}" --ini "${demo}/Pairwell.ini" plan Demo 2>/dev/null

# With a display, the desktop program opens on the demo set.
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -x "${build_dir}/pairwell" ]; then
  echo
  echo "== pairwell (the window; close it to end)"
  PAIRWELL_INI="${demo}/Pairwell.ini" "${build_dir}/pairwell"
else
  echo
  echo "(No display: the desktop program 'pairwell' was not started.)"
fi
