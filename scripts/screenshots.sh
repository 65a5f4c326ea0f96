#!/usr/bin/env bash
# Renders every window of the desktop program into PNG files, under a
# virtual X server so that they look as they do on a desktop: once at the
# normal scale, and once at twice that (as on a high-density screen) into
# the folder's 200/.
#   scripts/screenshots.sh [BUILD_DIR]   (or: make screenshots)
set -euo pipefail
build_dir=$(cd "${1:-build}" && pwd)
out="${build_dir}/screenshots"
rm -rf "${out}"
mkdir -p "${out}/200"
xvfb-run -a -s "-screen 0 1280x1024x24" \
  env QT_QPA_PLATFORM=xcb "${build_dir}/pairwell_screenshots" "${out}"
xvfb-run -a -s "-screen 0 2560x2048x24" \
  env QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=2 \
  "${build_dir}/pairwell_screenshots" "${out}/200"
echo "Screenshots in ${out} and ${out}/200:"
ls "${out}" "${out}/200"
