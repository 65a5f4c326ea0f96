#!/usr/bin/env bash
# Checks the files that install Pairwell as a desktop program: the desktop
# entry, the AppStream metainfo, the man pages and the 48 px icon.
# Usage: dist/validate.sh [REPO_ROOT]   (default: the folder above dist/)
# Prints one line per check and exits 1 when any check fails.
set -euo pipefail

root=${1:-"$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"}
dist="$root/dist"
app_id=org.pairwell.Pairwell

passed=0
failed=0
pass() { echo "ok:   $*"; passed=$((passed + 1)); }
fail() { echo "FAIL: $*"; failed=$((failed + 1)); }

# Prints the captured output of a check, indented, when there is any.
show() { [ -z "$1" ] || printf '%s\n' "$1" | sed 's/^/      /'; }

# True when the command exists; else records the check as failed.
have() {
  if command -v "$1" >/dev/null 2>&1; then return 0; fi
  fail "$2: $1 not found (Debian package $3; scripts/install-deps.sh installs it)"
  return 1
}

# True when the file exists; else records the check as failed.
present() {
  if [ -f "$1" ]; then return 0; fi
  fail "$2: $1 is missing"
  return 1
}

check_desktop_entry() {
  local file="$dist/$app_id.desktop" out status=0
  present "$file" "desktop entry" || return 0
  have desktop-file-validate "desktop entry" desktop-file-utils || return 0
  out=$(desktop-file-validate "$file" 2>&1) || status=$?
  # A clean entry draws no error, no warning and no hint.
  if [ "$status" -ne 0 ] || [ -n "$out" ]; then
    fail "desktop entry: desktop-file-validate $file"
  else
    pass "desktop entry: desktop-file-validate $file"
  fi
  show "$out"
}

check_metainfo() {
  local file="$dist/$app_id.metainfo.xml" out status=0
  present "$file" "metainfo" || return 0
  have appstreamcli "metainfo" appstream || return 0
  out=$(appstreamcli validate --no-net "$file" 2>&1) || status=$?
  if [ "$status" -ne 0 ] || grep -qE '^[EW]: ' <<<"$out"; then
    fail "metainfo: appstreamcli validate --no-net $file"
  else
    pass "metainfo: appstreamcli validate --no-net $file"
  fi
  show "$out"
}

check_man_page() {
  local file="$dist/man/$1" err status=0
  present "$file" "man page" || return 0
  have man "man page" man-db || return 0
  err=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$file" 2>&1 >/dev/null) ||
    status=$?
  if [ "$status" -ne 0 ] || [ -n "$err" ]; then
    fail "man page: man --warnings -l $file printed warnings (status $status)"
  else
    pass "man page: man --warnings -l $file renders without a warning"
  fi
  show "$err"
}

# The PNG signature, then the IHDR chunk whose first fields are the width
# and the height, big-endian: bytes 16..23 of the file.
check_icon_png() {
  local file="$dist/icons/$app_id-48.png" bytes
  present "$file" "icon" || return 0
  present "$dist/icons/$app_id.svg" "icon" || return 0
  bytes=$(od -An -v -tu1 -N24 "$file" | tr -s ' \n' ' ')
  local -a b
  read -r -a b <<<"$bytes"
  if [ "${#b[@]}" -lt 24 ]; then
    fail "icon: $file is too short to be a PNG"
    return 0
  fi
  local signature="${b[*]:0:8}" chunk="${b[*]:12:4}"
  if [ "$signature" != "137 80 78 71 13 10 26 10" ] ||
     [ "$chunk" != "73 72 68 82" ]; then
    fail "icon: $file is not a PNG"
    return 0
  fi
  local width=$(( (b[16] << 24) | (b[17] << 16) | (b[18] << 8) | b[19] ))
  local height=$(( (b[20] << 24) | (b[21] << 16) | (b[22] << 8) | b[23] ))
  if [ "$width" -ne 48 ] || [ "$height" -ne 48 ]; then
    fail "icon: $file is ${width}x${height}, not 48x48"
  else
    pass "icon: $file is 48x48"
  fi
}

check_desktop_entry
check_metainfo
check_man_page pairwell.1
check_man_page pairwell-cli.1
check_icon_png

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
