#!/usr/bin/env bash
# Installs the build into a temporary DESTDIR and runs the installed
# pairwell-cli as a person with a fresh home would: its configuration is made
# from the shipped default in the person's configuration folder (once), its
# log goes to the state folder, and a sync works.
#
# Usage: install_test.sh BUILD_DIR
set -euo pipefail

build="$1"
work="$(mktemp -d /tmp/pairwell-install-test.XXXXXX)"
trap 'rm -rf "$work"' EXIT
root="$work/root"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
check_file() { [ -f "$root/$1" ] || fail "not installed: /$1"; }

DESTDIR="$root" cmake --install "$build" --prefix /usr >"$work/install.log"

for f in usr/bin/pairwell-cli usr/share/pairwell/Pairwell.ini \
         usr/share/man/man1/pairwell-cli.1.gz usr/share/doc/pairwell/copyright \
         usr/share/doc/pairwell/changelog.gz \
         usr/share/doc/pairwell/examples/pairwell-sync.service \
         usr/share/doc/pairwell/examples/pairwell-sync.timer; do
  check_file "$f"
done
if [ -f "$build/pairwell" ]; then
  for f in usr/bin/pairwell usr/share/pairwell/readme.html \
           usr/share/pairwell/help.css usr/share/man/man1/pairwell.1.gz \
           usr/share/applications/org.pairwell.Pairwell.desktop \
           usr/share/metainfo/org.pairwell.Pairwell.metainfo.xml \
           usr/share/icons/hicolor/scalable/apps/org.pairwell.Pairwell.svg \
           usr/share/icons/hicolor/48x48/apps/org.pairwell.Pairwell.png; do
    check_file "$f"
  done
  out="$(desktop-file-validate \
         "$root/usr/share/applications/org.pairwell.Pairwell.desktop" 2>&1)" ||
    fail "desktop-file-validate: $out"
fi
for page in "$root"/usr/share/man/man1/*.1.gz; do
  warnings="$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)"
  [ -z "$warnings" ] || fail "man -l $page: $warnings"
done

# A person's fresh home; no configuration named by the environment.
cli="$root/usr/bin/pairwell-cli"
unset PAIRWELL_INI
export HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state"
mkdir -p "$HOME"
config="$XDG_CONFIG_HOME/pairwell/Pairwell.ini"

"$cli" list >"$work/out1" 2>"$work/err1" || fail "first list exited $?"
expected="Pairwell created its configuration file $config from the default $root/usr/share/pairwell/Pairwell.ini."
grep -qF "$expected" "$work/err1" || fail "no creation message: $(cat "$work/err1")"
cmp -s "$config" "$root/usr/share/pairwell/Pairwell.ini" ||
  fail "the configuration is not the shipped default"
[ -d "$XDG_STATE_HOME/pairwell" ] || fail "no log folder in the state folder"

"$cli" list >"$work/out2" 2>"$work/err2" || fail "second list exited $?"
if grep -q "created its configuration" "$work/err2"; then
  fail "the configuration was made twice"
fi

# A set of the person's, synchronized by the installed program, logging.
mkdir -p "$work/A" "$work/B"
printf 'hello\n' >"$work/A/note.txt"
printf '\r\n[Sec: Docs]\r\nDir1=%s\r\nDir1Flags=4\r\nDir2=%s\r\nDir2Flags=4\r\nUseLogFile=True\r\nLogFileName=Docs.log\r\n' \
  "$work/A" "$work/B" >>"$config"
"$cli" sync --yes Docs >"$work/out3" 2>"$work/err3" ||
  fail "sync exited $?: $(cat "$work/err3")"
cmp -s "$work/A/note.txt" "$work/B/note.txt" || fail "the file was not copied"
grep -q "LastSyncDate=" "$config" || fail "no last-sync date saved"
grep -q "note.txt" "$XDG_STATE_HOME/pairwell/Docs.log" 2>/dev/null ||
  fail "no log in the state folder"

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "installed program: every check passed"
