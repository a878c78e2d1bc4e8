# 32-bit ARM Linux, hard float, with Debian's cross compiler
# (g++-arm-linux-gnueabihf; ARMv7-A, VFPv3-D16, Thumb-2 by default):
#   cmake -S . -B build-armhf -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-armhf.cmake
# With a firmware SDK's target root: add -DVELMAR_SYSROOT=/path/to/sysroot.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VELMAR_CROSS_TRIPLET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/cross-linux.cmake)
# GCC notes on every std::vector<long long> it instantiates that GCC 7.1
# changed how such arguments are passed on ARM; one compiler builds it all.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")
