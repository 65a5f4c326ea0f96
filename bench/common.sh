# Shared by the benchmark scripts (sourced, never run): root rights, Debian
# packages, and the pairwell-cli to measure. Expects $root (the repository)
# and $build (the build folder) to be set.

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

apt_install() {
  echo "Installing Debian package(s) $* with apt-get"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}

# Sets $cli, building it (Release, without the desktop program) when the
# build folder has none, and $build_type; says so when it is no Release.
ensure_cli() {
  cli="$build/pairwell-cli"
  if [ ! -x "$cli" ]; then
    echo "Building pairwell-cli (Release) in $build"
    if [ -f "$build/CMakeCache.txt" ]; then
      cmake -S "$root" -B "$build" >/dev/null
    else
      cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DPAIRWELL_BUILD_GUI=OFF >/dev/null
    fi
    cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" --target pairwell-cli >/dev/null
  fi
  build_type=$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
  [ "${build_type:-?}" = Release ] ||
    echo "Note: $build is a ${build_type:-unknown} build, not Release"
}

# Sets $work: the folder given (made when missing, kept at the end), or a
# fresh one under /tmp named after the benchmark, removed when it ends.
use_work_dir() {
  if [ -n "$1" ]; then
    mkdir -p "$1"
    work="$(cd "$1" && pwd)"
  else
    work="$(mktemp -d "/tmp/pairwell-bench-$2.XXXXXX")"
    trap 'rm -rf "$work"' EXIT
  fi
}
