# What the device toolchain files share; each sets CMAKE_SYSTEM_PROCESSOR and
# VELMAR_CROSS_TRIPLET, then includes this file.
#
# Without a sysroot the target's libraries are Debian's own multiarch packages
# (libfoo-dev:arm64 installs into /usr/lib/aarch64-linux-gnu beside the host's).
# A firmware SDK names its target root with -DVELMAR_SYSROOT=DIR (or the
# VELMAR_SYSROOT environment variable, or -DCMAKE_SYSROOT=DIR): headers,
# libraries and pkg-config files then come from there only. Debian's cross
# compilers still search their own C and C++ runtime (/usr/<triplet>) before a
# sysroot: for an SDK whose C library is older than that, name the SDK's own
# compiler with -DCMAKE_C_COMPILER=... -DCMAKE_CXX_COMPILER=...

set(CMAKE_SYSTEM_NAME Linux)

if(NOT CMAKE_C_COMPILER)
    set(CMAKE_C_COMPILER ${VELMAR_CROSS_TRIPLET}-gcc)
endif()
if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER ${VELMAR_CROSS_TRIPLET}-g++)
endif()

set(VELMAR_SYSROOT "$ENV{VELMAR_SYSROOT}" CACHE PATH
    "Target root file system of a firmware SDK (empty: Debian multiarch)")
if(VELMAR_SYSROOT AND NOT CMAKE_SYSROOT)
    set(CMAKE_SYSROOT "${VELMAR_SYSROOT}")
endif()
# try_compile projects read this file again with a cache of their own.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELMAR_SYSROOT)

# Tools run on the build machine; everything linked comes from the target.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config reads the target's .pc files only, never the build machine's.
set(ENV{PKG_CONFIG_PATH} "")
if(CMAKE_SYSROOT)
    set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
    set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_SYSROOT}/usr/lib/${VELMAR_CROSS_TRIPLET}/pkgconfig:\
${CMAKE_SYSROOT}/usr/lib/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")
else()
    unset(ENV{PKG_CONFIG_SYSROOT_DIR})
    set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${VELMAR_CROSS_TRIPLET}/pkgconfig:/usr/share/pkgconfig")
endif()
