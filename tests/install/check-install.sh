#!/bin/sh
# Installs the build into a scratch prefix and builds an outside program
# against it twice: with find_package(velmar_quil) and with pkg-config.
set -eu
BUILD=$1
SOURCE=$2
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
cmake --install "$BUILD" --prefix "$WORK/prefix" > /dev/null

cmake -S "$SOURCE/tests/install" -B "$WORK/cmake-build" -G Ninja \
      -DCMAKE_PREFIX_PATH="$WORK/prefix" > /dev/null
cmake --build "$WORK/cmake-build" > /dev/null
LD_LIBRARY_PATH="$WORK/prefix/lib:$WORK/prefix/lib64:${LD_LIBRARY_PATH:-}" \
    VELMAR_ROOT="$WORK" "$WORK/cmake-build/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$WORK/prefix" -name velmar-quil.pc)")
export PKG_CONFIG_PATH
c++ -std=c++17 -o "$WORK/consumer-pc" "$SOURCE/tests/install/consumer.cpp" \
    $(pkg-config --cflags --libs velmar-quil)
LD_LIBRARY_PATH="$WORK/prefix/lib:$WORK/prefix/lib64:${LD_LIBRARY_PATH:-}" \
    VELMAR_ROOT="$WORK" "$WORK/consumer-pc"
echo "outside program built and ran with find_package and with pkg-config"
