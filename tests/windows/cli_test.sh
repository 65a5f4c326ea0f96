#!/usr/bin/env bash
# pairwell-cli.exe under Wine on real folders, named as Windows names them
# (drive letters, backslashes): a plan, a first sync, a plan with nothing
# left to do, a change and a deletion carried over, a simulation, the
# history and an undo. Prints "N passed, M failed"; the exit code is 1 when
# anything failed.
#   tests/windows/cli_test.sh PATH/TO/pairwell-cli.exe
set -uo pipefail
exe=$1
src=$(cd "$(dirname "$0")/../.." && pwd)
export WINEDEBUG=${WINEDEBUG:--all}
work=$(mktemp -d)
trap 'rm -rf "${work}"' EXIT
passed=0
failed=0

check() {  # check NAME CONDITION...
  local name=$1
  shift
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: ${name}"
    echo "--- stdout:"; cat "${work}/out"
    echo "--- stderr:"; cat "${work}/err"
  fi
}

# The Windows name of a folder of this machine ("Z:\tmp\...").
win() { winepath -w "$1" 2>/dev/null; }

# Runs pairwell-cli.exe with the test configuration; stdout and stderr, CR
# LF ends made LF, go to out and err, the exit code to code.
cli() {
  wine "${exe}" --ini "$(win "${work}/Pairwell.ini")" "$@" \
    >"${work}/out.raw" 2>"${work}/err.raw"
  code=$?
  tr -d '\r' <"${work}/out.raw" >"${work}/out"
  tr -d '\r' <"${work}/err.raw" >"${work}/err"
}

has() { grep -qF -- "$1" "${work}/out"; }
same() { cmp -s "$1" "$2"; }

mkdir -p "${work}/A/sub" "${work}/B"
printf 'one' >"${work}/A/a.txt"
printf 'two' >"${work}/A/sub/b.txt"
printf 'only in B' >"${work}/B/c.txt"
touch -d '2 hours ago' "${work}"/A/a.txt "${work}"/A/sub/b.txt "${work}"/B/c.txt
{
  cat "${src}/data/Pairwell.ini"
  printf '[Sec: Docs]\r\nDir1=%s\r\nDir2=%s\r\n' \
    "$(win "${work}/A")" "$(win "${work}/B")"
} >"${work}/Pairwell.ini"

cli --version
check "--version" test "${code}" = 0
check "--version names the program" grep -q '^pairwell-cli ' "${work}/out"

cli list
check "list" has "1  Docs  (2 folders)"

cli plan Docs
check "plan exits 0" test "${code}" = 0
check "plan shows a.txt" has "a.txt "
check "plan shows sub/b.txt with a forward slash" has "sub/b.txt "
check "plan counts three files" has "3 files total"
check "plan changes nothing" test ! -e "${work}/B/a.txt"

cli sync --yes Docs
check "first sync exits 0" test "${code}" = 0
check "a.txt copied" same "${work}/A/a.txt" "${work}/B/a.txt"
check "sub/b.txt copied" same "${work}/A/sub/b.txt" "${work}/B/sub/b.txt"
check "c.txt copied back" same "${work}/B/c.txt" "${work}/A/c.txt"
check "dates kept" test "$(stat -c %Y "${work}/A/a.txt")" = \
  "$(stat -c %Y "${work}/B/a.txt")"
check "no partial copies left" \
  test -z "$(find "${work}" -name '.pairwell-partial-*' -print -quit)"
check "the last sync is written back" \
  grep -q '^LastSyncDate=2' "${work}/Pairwell.ini"

cli plan Docs
check "nothing left to do" has "3 files total"
check "nothing queued" bash -c "! grep -q 'actions queued' '${work}/out'"

sleep 2
printf 'one, edited' >"${work}/B/a.txt"
rm "${work}/A/sub/b.txt"
cli sync --simulate --yes Docs
check "simulation exits 0" test "${code}" = 0
check "simulation leaves a.txt" test "$(cat "${work}/A/a.txt")" = one

cli sync --yes Docs
check "second sync exits 0" test "${code}" = 0
check "the edit is carried over" test "$(cat "${work}/A/a.txt")" = "one, edited"
check "the deletion is carried over" test ! -e "${work}/B/sub/b.txt"
check "the deleted copy is kept" \
  test -n "$(find "${work}/B/.pairwell/versions" -name b.txt -print -quit)"

cli history Docs
check "history lists two runs" test "$(grep -c . "${work}/out")" = 2

cli undo Docs
check "undo exits 0" test "${code}" = 0
check "undo puts the old a.txt back" test "$(cat "${work}/A/a.txt")" = one
check "undo puts b.txt back" test "$(cat "${work}/B/sub/b.txt")" = two

cli plan Nosuchset
check "an unknown set is a usage error" test "${code}" = 2

# Names in other scripts, in the folders and on the command line.
mkdir -p "${work}/Ünï €" "${work}/Zürich"
printf 'grüß' >"${work}/Ünï €/ñandú €.txt"
printf '[Sec: Café]\r\nDir1=%s\r\nDir2=%s\r\n' \
  "$(win "${work}/Ünï €")" "$(win "${work}/Zürich")" >>"${work}/Pairwell.ini"
# And names Windows cannot hold, made from outside Wine: left out and said.
for name in CON aux.txt 'bad:name.txt' 'trail.'; do
  printf 'x' >"${work}/Ünï €/${name}"
done
cli sync --yes Café
check "a set named in UTF-8 on the command line" test "${code}" = 0
for name in CON aux.txt 'bad:name.txt' 'trail.'; do
  check "${name} is not copied" test ! -e "${work}/Zürich/${name}"
  check "${name} is said to be left out" \
    grep -q "Left out: .*${name} (" "${work}/out" "${work}/err"
done
check "a name in other scripts is copied" \
  same "${work}/Ünï €/ñandú €.txt" "${work}/Zürich/ñandú €.txt"
check "and logged as it is" has "ñandú €.txt"

echo "pairwell-cli.exe: ${passed} passed, ${failed} failed"
[ "${failed}" -eq 0 ]
