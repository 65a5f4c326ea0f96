#!/usr/bin/env bash
# Builds the fuzz targets of fuzz/ with clang and runs each for a while on a
# copy of its seed corpus, two at a time.
#   scripts/fuzz.sh [BUILD_DIR] [SECONDS]   (or: make fuzz FUZZ_SECONDS=...)
# The inputs a run finds stay in BUILD_DIR/corpus, so later runs start from
# them; fuzz/corpus holds only the seeds. An input that crashes, hangs or
# leaks is saved in BUILD_DIR/crashes/<target>/ and the script fails.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build-fuzz}
seconds=${2:-30}

CC=clang CXX=clang++ cmake -S . -B "${build_dir}" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPAIRWELL_FUZZ=ON
cmake --build "${build_dir}" -j "$(nproc)"

# Configurations of a few KiB reach every branch of the loader; longer
# inputs only slow each run down (and a loader slower than linear would
# time out on them rather than show a fault).
declare -A options=([ini_loader_fuzzer]=-max_len=4096)

run_target() {
  local target=$1
  local corpus="${build_dir}/corpus/${target}"
  local crashes="${build_dir}/crashes/${target}"
  mkdir -p "${corpus}" "${crashes}"
  cp fuzz/corpus/"${target}"/* "${corpus}/"
  local status=0
  UBSAN_OPTIONS=print_stacktrace=1 "${build_dir}/fuzz/${target}" \
    -max_total_time="${seconds}" -timeout=10 -print_final_stats=1 \
    ${options[${target}]:-} \
    -artifact_prefix="${crashes}/" "${corpus}" \
    >"${build_dir}/logs/${target}.log" 2>&1 || status=$?
  echo "${status}" >"${build_dir}/logs/${target}.status"
}

mkdir -p "${build_dir}/logs"
targets=()
for source in fuzz/*_fuzzer.cc; do
  targets+=("$(basename "${source}" .cc)")
done
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge 2 ]; do wait -n; done
  echo "Fuzzing ${target} for ${seconds} s"
  run_target "${target}" &
done
wait

failed=0
for target in "${targets[@]}"; do
  log="${build_dir}/logs/${target}.log"
  if [ "$(cat "${build_dir}/logs/${target}.status")" -eq 0 ]; then
    echo "${target}: $(grep '^Done [0-9]* runs' "${log}")"
  else
    failed=1
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "${log}")
    echo "${target}: FAILED after ${runs:-?} runs, log in ${log}," \
      "inputs in ${build_dir}/crashes/${target}/"
    grep -A 12 -m 1 -E '^==[0-9]+==|runtime error|check failed' "${log}" || true
  fi
done
exit "${failed}"
