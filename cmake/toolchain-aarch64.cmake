# 64-bit ARM Linux with Debian's cross compiler (g++-aarch64-linux-gnu):
#   cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-aarch64.cmake
# With a firmware SDK's target root: add -DVELMAR_SYSROOT=/path/to/sysroot.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VELMAR_CROSS_TRIPLET aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/cross-linux.cmake)
