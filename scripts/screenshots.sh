#!/usr/bin/env bash
# Renders every window of the desktop program into PNG files, under a
# virtual X server so that they look as they do on a desktop.
#   scripts/screenshots.sh [BUILD_DIR]   (or: make screenshots)
set -euo pipefail
build_dir=$(cd "${1:-build}" && pwd)
out="${build_dir}/screenshots"
rm -rf "${out}"
mkdir -p "${out}"
xvfb-run -a -s "-screen 0 1280x1024x24" \
  env QT_QPA_PLATFORM=xcb "${build_dir}/pairwell_screenshots" "${out}"
echo "Screenshots in ${out}:"
ls "${out}"
