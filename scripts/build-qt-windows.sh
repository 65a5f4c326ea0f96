#!/usr/bin/env bash
# Builds a static Qt 6 for 64-bit Windows with Debian's MinGW-w64, from
# Debian's own qt6-base source, holding only what the desktop program needs:
# QtCore, QtGui, QtWidgets and the Windows platform plugin. The host's Qt
# (qt6-base-dev, qt6-base-dev-tools, the same version) gives moc, rcc and uic.
#
#   scripts/build-qt-windows.sh [TOP]        (TOP defaults to ../qt6-windows)
#
# Everything lands under TOP, outside the repository:
#   TOP/apt      a private apt index of Debian's source packages (the system's
#                apt setup is left as it is)
#   TOP/src      the qt6-base source, unpacked with Debian's patches
#   TOP/build    the build tree
#   TOP/install  the Qt for the Windows build of pairwell
#   TOP/*.log    the output of each step, and TOP/times.txt
#
# pairwell.exe is then built through Qt's toolchain file, which loads the
# project's own and adds the Qt to the places searched (the window tests
# need QtTest, which this Qt leaves out):
#   cmake -S . -B build-windows-gui -DCMAKE_BUILD_TYPE=Release \
#     -DCMAKE_TOOLCHAIN_FILE=TOP/install/lib/cmake/Qt6/qt.toolchain.cmake \
#     -DQT_CHAINLOAD_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
#     -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
#     -DPAIRWELL_BUILD_GUI=ON -DPAIRWELL_BUILD_TESTS=OFF
#   cmake --build build-windows-gui --target pairwell
#
# JOBS sets the build's parallel jobs (default 2); the build runs at the
# lowest priority so that the machine stays usable.
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)
top=${1:-${repo}/../qt6-windows}
mkdir -p "${top}"
top=$(cd "${top}" && pwd)
jobs=${JOBS:-2}
host_cmake_dir=/usr/lib/x86_64-linux-gnu/cmake
mingw=x86_64-w64-mingw32

# Qt's tools are not cross-built: the host's, of the same version, do.
for need in "${host_cmake_dir}/Qt6CoreTools" "${host_cmake_dir}/Qt6WidgetsTools" \
            /usr/lib/qt6/libexec/moc; do
  [[ -e "${need}" ]] || {
    echo "missing ${need}: apt-get install qt6-base-dev qt6-base-dev-tools" >&2
    exit 1
  }
done
for tool in cmake ninja dpkg-source "${mingw}-g++-posix"; do
  command -v "${tool}" >/dev/null || {
    echo "missing ${tool}: apt-get install cmake ninja-build dpkg-dev g++-mingw-w64-x86-64-posix" >&2
    exit 1
  }
done

stamp() { date +%s; }
record() { echo "$1" | tee -a "${top}/times.txt"; }

# 1. The source, as Debian builds it. A private sources list with deb-src
# lines, so the system's apt configuration is not touched.
src_dir=$(ls -d "${top}"/src/qt6-base-*/ 2>/dev/null | head -n 1 || true)
if [[ -z "${src_dir}" ]]; then
  apt_dir="${top}/apt"
  mkdir -p "${apt_dir}/lists/partial" "${apt_dir}/cache/archives/partial" \
           "${apt_dir}/sources.list.d" "${top}/src"
  keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  cat >"${apt_dir}/sources.list" <<EOF
deb-src [signed-by=${keyring}] http://deb.debian.org/debian bookworm main
deb-src [signed-by=${keyring}] http://deb.debian.org/debian bookworm-updates main
deb-src [signed-by=${keyring}] http://deb.debian.org/debian-security bookworm-security main
EOF
  apt_opts=(-o "Dir::Etc::SourceList=${apt_dir}/sources.list"
            -o "Dir::Etc::SourceParts=${apt_dir}/sources.list.d"
            -o "Dir::State::Lists=${apt_dir}/lists"
            -o "Dir::Cache=${apt_dir}/cache"
            -o "APT::Sandbox::User=root")
  apt-get "${apt_opts[@]}" update >"${top}/fetch.log" 2>&1
  # The same version as the host's tools: Qt's cross build needs them to match.
  host_source=$(dpkg-query -W -f='${source:Version}' qt6-base-dev)
  (cd "${top}/src" && apt-get "${apt_opts[@]}" source "qt6-base=${host_source}") >>"${top}/fetch.log" 2>&1
  src_dir=$(ls -d "${top}"/src/qt6-base-*/ | head -n 1)
fi
src_dir=${src_dir%/}
echo "Qt source: ${src_dir}"

# Qt 6.4 builds its DirectWrite font engine and database into QtGui only
# with Direct2D, yet the Windows plugin offers that database whenever
# DirectWrite 3 is there: with Direct2D off the program would not link. The
# plugin is made to ask for Direct2D too; it then draws text through GDI,
# Qt's default on Windows anyway.
integration="${src_dir}/src/plugins/platforms/windows/qwindowsintegration.cpp"
if grep -q '^#if QT_CONFIG(directwrite3)$' "${integration}"; then
  sed -i 's/^#if QT_CONFIG(directwrite3)$/#if QT_CONFIG(directwrite3) \&\& QT_CONFIG(direct2d)/' \
    "${integration}"
fi

# 2. The toolchain: MinGW-w64 with posix threads, as pairwell-cli.exe is
# built, so that Qt and the program share one C++ runtime.
toolchain="${top}/mingw-w64-x86_64-qt.cmake"
cat >"${toolchain}" <<EOF
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
EOF

# 3. Configure. Static, release; the third-party libraries Qt bundles rather
# than any of the system's (which are Linux builds anyway). Off: every
# module but Core, Gui and Widgets, OpenGL and Vulkan, D-Bus, ICU (Windows
# has its own locale and time zone data), FreeType (Windows draws text
# through GDI or DirectWrite), the image format plugins, the tests and
# examples, and the deployment tools. Tablet events go too: Debian's source
# leaves out the Wintab headers that the Windows plugin's tablet support needs.
build="${top}/build"
install="${top}/install"
mkdir -p "${build}"
configure_args=(
  -S "${src_dir}" -B "${build}" -G Ninja
  -DCMAKE_TOOLCHAIN_FILE="${toolchain}"
  -DCMAKE_INSTALL_PREFIX="${install}"
  -DCMAKE_BUILD_TYPE=Release
  -DBUILD_SHARED_LIBS=OFF
  -DQT_HOST_PATH=/usr
  -DQT_HOST_PATH_CMAKE_DIR="${host_cmake_dir}"
  -DQT_QMAKE_TARGET_MKSPEC=win32-g++
  -DQT_QPA_DEFAULT_PLATFORM=windows
  -DQT_BUILD_TESTS=OFF
  -DQT_BUILD_EXAMPLES=OFF
  -DQT_BUILD_BENCHMARKS=OFF
  -DFEATURE_gui=ON
  -DFEATURE_widgets=ON
  -DFEATURE_concurrent=OFF
  -DFEATURE_dbus=OFF
  -DFEATURE_network=OFF
  -DFEATURE_printsupport=OFF
  -DFEATURE_sql=OFF
  -DFEATURE_testlib=OFF
  -DFEATURE_xml=OFF
  -DFEATURE_opengl=OFF
  -DINPUT_opengl=no
  -DFEATURE_vulkan=OFF
  -DFEATURE_direct2d=OFF
  -DFEATURE_tabletevent=OFF
  -DFEATURE_icu=OFF
  -DFEATURE_glib=OFF
  -DFEATURE_zstd=OFF
  -DFEATURE_freetype=OFF
  -DFEATURE_fontconfig=OFF
  -DFEATURE_harfbuzz=ON
  -DFEATURE_system_harfbuzz=OFF
  -DFEATURE_system_zlib=OFF
  -DFEATURE_png=ON
  -DFEATURE_system_png=OFF
  -DFEATURE_jpeg=OFF
  -DFEATURE_system_jpeg=OFF
  -DFEATURE_system_pcre2=OFF
  -DFEATURE_system_doubleconversion=OFF
  -DFEATURE_imageformatplugin=OFF
  -DFEATURE_androiddeployqt=OFF
  -DFEATURE_macdeployqt=OFF
  -DFEATURE_windeployqt=OFF
  -DFEATURE_pkg_config=OFF
)
printf '%q ' cmake "${configure_args[@]}" >"${top}/configure-command.txt"
echo >>"${top}/configure-command.txt"

if [[ ! -f "${build}/build.ninja" ]]; then
  echo "Configuring (log: ${top}/configure.log)"
  t0=$(stamp)
  nice -n 19 cmake "${configure_args[@]}" >"${top}/configure.log" 2>&1
  record "configure: $(( $(stamp) - t0 )) s"
fi

# 4. Build and install.
echo "Building with ${jobs} jobs (log: ${top}/build.log)"
t0=$(stamp)
nice -n 19 cmake --build "${build}" --parallel "${jobs}" >"${top}/build.log" 2>&1
record "build: $(( $(stamp) - t0 )) s"
t0=$(stamp)
cmake --install "${build}" >"${top}/install.log" 2>&1
record "install: $(( $(stamp) - t0 )) s"

record "installed: $(du -sh "${install}" | cut -f1), build tree: $(du -sh "${build}" | cut -f1)"
echo "Qt for Windows in ${install}"
