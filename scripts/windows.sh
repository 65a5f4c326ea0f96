#!/usr/bin/env bash
# The Windows build: cross-compiles pairwell-cli.exe and the core tests for
# 64-bit Windows with MinGW-w64 (linked statically: no DLLs to ship) into
# BUILD_DIR, runs the tests and the end-to-end runs of pairwell-cli.exe
# under Wine, and packs BUILD_DIR/packages/pairwell-<version>-windows-x86_64.zip.
#   scripts/windows.sh [BUILD_DIR]   (or: make windows)
set -euo pipefail
src=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build-windows}
mkdir -p "${build}"
build=$(cd "${build}" && pwd)
jobs=${JOBS:-$(nproc 2>/dev/null || echo 2)}

cmake -S "${src}" -B "${build}" \
  -DCMAKE_TOOLCHAIN_FILE="${src}/cmake/mingw-w64-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=Release -DPAIRWELL_BUILD_GUI=OFF
cmake --build "${build}" -j "${jobs}"

# Wine keeps its Windows in a folder of the build's own, made on first use;
# the test programs write nothing outside it and the temporary folders.
export WINEPREFIX="${build}/wine" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# Dates are local times: the tests that need another zone set their own.
export TZ=UTC
wineboot --init >/dev/null 2>&1

failed=0
# Runs a test program under Wine, its whole output in BUILD/LOG; prints the
# summary and each failed test by name. Fails when a test failed or the
# program did not get to its summary.
run_tests() {  # run_tests NAME LOG
  echo "== $1.exe under Wine (the whole output: ${build}/$2)"
  local status=0
  wine "${build}/tests/$1.exe" 2>&1 | tr -d '\r' >"${build}/$2" || status=1
  grep -E '^\[(==========|  PASSED  |  SKIPPED |  FAILED  )\] [0-9]+ tests?' \
    "${build}/$2" || status=1
  grep -E '^\[  FAILED  \] [A-Za-z_]+\.' "${build}/$2" | sort -u || true
  grep -q '^\[  PASSED  \]' "${build}/$2" || status=1
  return "${status}"
}
run_tests pairwell_core_tests core_tests.log || failed=1
# pairwell-cli.exe started as a person would, on folders in the temporary
# folder, named as Windows names them.
run_tests pairwell_cli_tests cli_tests.log || failed=1

echo "== pairwell-cli.exe under Wine on real folders"
bash "${src}/tests/windows/cli_test.sh" "${build}/pairwell-cli.exe" || failed=1

version=$(sed -n 's/^project(Pairwell VERSION \([0-9.]*\).*/\1/p' "${src}/CMakeLists.txt")
package="pairwell-${version}-windows-x86_64"
stage="${build}/packages/${package}"
rm -rf "${stage}" "${stage}.zip"
mkdir -p "${stage}"
# The help pages lie beside the program, where it looks for what it ships.
cp "${build}/pairwell-cli.exe" "${src}/data/Pairwell.ini" \
   "${src}/dist/windows/README.txt" "${src}"/src/ui/help/*.html \
   "${src}"/src/ui/help/*.css "${stage}/"
(cd "${build}/packages" && cmake -E tar cf "${package}.zip" --format=zip "${package}")
echo "Packed ${build}/packages/${package}.zip"
exit "${failed}"
