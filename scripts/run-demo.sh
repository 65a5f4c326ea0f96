#!/usr/bin/env bash
# The main job of `make run`: shows what the build produced.
set -euo pipefail
build_dir=${1:-build}

echo "Pairwell is built in ${build_dir}:"
for f in "${build_dir}/src/libpairwell_core.a" "${build_dir}/Pairwell.ini"; do
  [ -e "$f" ] && echo "  $f"
done
echo
echo "The shipped configuration (${build_dir}/Pairwell.ini):"
tr -d '\r' < "${build_dir}/Pairwell.ini" | sed 's/^/  /'
echo
echo "The command-line front end comes next; run 'make test' for the tests."
