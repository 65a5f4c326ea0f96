#!/usr/bin/env bash
# Installs the Debian packages the build needs, and nothing when all are there.
set -euo pipefail

# The desktop program needs Qt 6 Widgets (its tests run on the offscreen
# platform); screenshots render under a virtual X server with real fonts.
# The fuzz targets are built with clang and link its libFuzzer runtime.
# dist/validate.sh checks the desktop entry, the metainfo and the man pages;
# the install test compresses the man pages; the power-cut tests make ext4
# images and mount them through loop devices. The Windows build is made with
# MinGW-w64 (GoogleTest built from its Debian sources) and tested under
# Wine. With --package, also what `make package` uses: dpkg-shlibdeps for
# the dependencies, lintian.
packages=(g++ make cmake libgtest-dev libgmock-dev googletest qt6-base-dev
          xvfb xauth fonts-dejavu-core clang libclang-rt-14-dev
          desktop-file-utils appstream man-db groff-base gzip
          e2fsprogs mount
          mingw-w64 g++-mingw-w64-x86-64-posix wine wine64)
if [ "${1:-}" = "--package" ]; then
  packages+=(dpkg-dev file lintian)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
