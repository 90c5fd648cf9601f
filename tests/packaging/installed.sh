#!/bin/sh
# installed.sh BUILD_DIR -m64|-m32
# Installs BUILD_DIR into a folder and uses it as somebody would who has nothing else: a C and a C++
# program and a HAL library, found by pkg-config and by CMake, run on the installed virtual board.
set -eu
build=$1
bits=$2
here=$(cd "$(dirname "$0")" && pwd)
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"

# The list of what is installed goes beside it: the build may be another user's.
sed "s|(WRITE \"[^\"]*/\${CMAKE_INSTALL_MANIFEST}\"|(WRITE \"$place/manifest\"|" \
    "$build/cmake_install.cmake" >install.cmake
cmake -DCMAKE_INSTALL_PREFIX="$place/usr" -P install.cmake >install.log || {
    cat install.log
    exit 1
}
# Where it was made is of no use to anybody else.
! grep -rIl "$build" usr || exit 1
grep -qx "ExecStart=$place/usr/libexec/orblink/bring-up" usr/lib/systemd/system/orblink-config.service || {
    grep ^ExecStart usr/lib/systemd/system/orblink-config.service
    exit 1
}

libraries=$(dirname "$(find usr -name liborblink.so)")
PKG_CONFIG_PATH=$place/$libraries/pkgconfig
export PKG_CONFIG_PATH
strict="-Wall -Wextra -Werror $bits"
gcc $strict "$here/consumer.c" $(pkg-config --cflags --libs orblink) -o with_pkg_config_c
g++ $strict -x c++ "$here/consumer.c" -x none $(pkg-config --cflags --libs orblink) \
    -o with_pkg_config_cxx
gcc $strict -shared -fPIC "$here/hal.c" $(pkg-config --cflags --libs orblink-hal) -o hal.so
gcc $strict "$here/platform.c" $(pkg-config --cflags --libs obplatform) -o platform_with_pkg_config

CFLAGS=$bits CXXFLAGS=$bits cmake -G Ninja -S "$here/project" -B project -DCMAKE_PREFIX_PATH="$place/usr" \
    >cmake.log || {
    cat cmake.log
    exit 1
}
cmake --build project >>cmake.log || {
    cat cmake.log
    exit 1
}

export LD_LIBRARY_PATH="$place/$libraries"
for program in ./platform_with_pkg_config project/platform_with_cmake; do
    said=$($program)
    [ "$said" = "main says with severity 1: 1 of 2" ] || {
        echo "$program says: $said"
        exit 1
    }
    ! readelf -d $program | grep -q liborblink || { echo "$program needs too much"; exit 1; }
done
programs="./with_pkg_config_c ./with_pkg_config_cxx project/with_cmake_c project/with_cmake_cxx"
said=$(usr/bin/orblink-vboard run --board usr/share/orblink/boards/phy.toml -- sh -c \
    "usr/bin/orblinkctl init >&2; for program in $programs; do \$program; done" 2>log) || :
expected="1, 2
1, 2
1, 2
1, 2"
[ "$said" = "$expected" ] || {
    echo "$programs say: $said"
    cat log
    exit 1
}
