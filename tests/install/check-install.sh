#!/bin/sh
# Installs the build into a scratch prefix and builds an outside program
# against it twice: with find_package(velmar_quil) and with pkg-config. Nothing
# finds the libraries but run paths: the program's own to the prefix, and the
# library's to the port beside it (the pkg-config program does not name the
# port at all). The installed quilctl reports the version it runs. In a cross
# build the program is built for the target (the build's toolchain and root,
# VELMAR_TOOLCHAIN_FILE and VELMAR_TARGET_SYSROOT) and run through its
# emulator (VELMAR_TARGET_EMULATOR).
set -eu
BUILD=$1
SOURCE=$2
EMULATOR=${VELMAR_TARGET_EMULATOR:-}
SYSROOT=${VELMAR_TARGET_SYSROOT:-}
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
unset LD_LIBRARY_PATH
cmake --install "$BUILD" --prefix "$WORK/prefix" > /dev/null
LIBDIR=$(dirname "$(find "$WORK/prefix" -name 'libvelmar_quil.so*' | head -n 1)")

set --
if [ -n "${VELMAR_TOOLCHAIN_FILE:-}" ]; then
    # The package is named by its directory: a cross build looks for
    # packages inside the target root only.
    set -- "-DCMAKE_TOOLCHAIN_FILE=$VELMAR_TOOLCHAIN_FILE" "-DVELMAR_SYSROOT=$SYSROOT" \
        "-Dvelmar_quil_DIR=$(dirname "$(find "$WORK/prefix" -name velmar_quilConfig.cmake)")"
fi
cmake -S "$SOURCE/tests/install" -B "$WORK/cmake-build" -G Ninja \
      -DCMAKE_PREFIX_PATH="$WORK/prefix" "$@" > /dev/null
cmake --build "$WORK/cmake-build" > /dev/null
VELMAR_ROOT="$WORK" $EMULATOR "$WORK/cmake-build/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$WORK/prefix" -name velmar-quil.pc)")
export PKG_CONFIG_PATH
CXX=${VELMAR_TARGET_CXX:-c++}
if [ -n "$SYSROOT" ]; then
    # The target's own packages (json-c) come from the root, with the root's
    # paths; ours stay where they were installed.
    PKG_CONFIG_LIBDIR=$(dirname "$(find "$SYSROOT/usr/lib" -name json-c.pc | head -n 1)")
    export PKG_CONFIG_LIBDIR
    flags=$(pkg-config --cflags --libs velmar-quil | sed "s#\(^\| \)-I/usr#\1-I$SYSROOT/usr#g")
    CXX="$CXX --sysroot=$SYSROOT"
else
    flags=$(pkg-config --cflags --libs velmar-quil)
fi
# shellcheck disable=SC2086
$CXX -std=c++17 -o "$WORK/consumer-pc" "$SOURCE/tests/install/consumer.cpp" \
    -Wl,--as-needed $flags -Wl,-rpath,"$LIBDIR"
if readelf -d "$WORK/consumer-pc" | grep -q 'NEEDED.*libvelmar_port'; then
    echo "the pkg-config program names the port itself: the library's run path is untested"
    exit 1
fi
VELMAR_ROOT="$WORK" $EMULATOR "$WORK/consumer-pc"

version=$($EMULATOR "$WORK/prefix/bin/quilctl" --version)
expected=$(sed -n 's/^project(velmar_quil VERSION \([0-9.]*\).*/\1/p' "$SOURCE/CMakeLists.txt")
[ "$version" = "{\"library\":\"$expected\",\"port\":\"$expected\"}" ] || {
    echo "installed quilctl --version: $version (expected $expected)"
    exit 1
}
echo "outside program built and ran with find_package and with pkg-config; quilctl $expected"
