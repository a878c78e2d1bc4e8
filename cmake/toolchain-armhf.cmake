# 32-bit ARM Linux, hard float, with Debian's cross compiler
# (g++-arm-linux-gnueabihf; ARMv7-A, VFPv3-D16, Thumb-2 by default):
#   cmake -S . -B build-armhf -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-armhf.cmake
# With a firmware SDK's target root: add -DVELMAR_SYSROOT=/path/to/sysroot.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VELMAR_CROSS_TRIPLET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/cross-linux.cmake)
# GCC notes on every std::vector<long long> it instantiates that GCC 7.1
# changed how such arguments are passed on ARM; one compiler builds it all.
#
# 64-bit file offsets and inode numbers: a stat() of a file on a large or
# overlay file system must not fail with EOVERFLOW. (time_t stays what the
# target's libraries were built with; a 64-bit time_t is the distribution's
# choice, made for all of them at once.)
set(CMAKE_C_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi -D_FILE_OFFSET_BITS=64")
