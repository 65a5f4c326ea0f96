# Cross build for 64-bit Windows with Debian's mingw-w64 (posix threads, for
# std::thread), run under wine:
#
#   cmake -S . -B build-windows \
#     -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
#     -DPAIRWELL_BUILD_GUI=OFF -DPAIRWELL_BUILD_TESTS=OFF
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(PAIRWELL_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${PAIRWELL_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PAIRWELL_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${PAIRWELL_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${PAIRWELL_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The programs carry the C and C++ runtimes and winpthread, so that no
# MinGW DLL needs to lie beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

find_program(PAIRWELL_WINE wine)
if(PAIRWELL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PAIRWELL_WINE})
endif()
