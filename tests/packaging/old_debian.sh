#!/bin/bash
# old_debian.sh BUILD_DIR PACKAGES CACHE
# Builds the libraries for a Debian whose C library is older than 2.34, with its compiler, for both
# ABIs: there dlopen, shm_open and threads are in libraries of their own. Links programs with them there
# and runs them on the virtual board of PACKAGES. That system is kept in CACHE.
set -euo pipefail
cd "$(dirname "$0")/../.."
builds=$(realpath -m "$1")
packages=$(realpath "$2")
archive=$(realpath "$3")/old.tar
. packaging/debian_root.sh

# Its kernel's headers are too old for the HAL of what Linux drives.
targets="orblink obplatform vswitch_hal ethphy_ieee8023_hal phyk20_hal"

make_root "$archive" amd64 "g++-multilib" bullseye
place=$(mktemp -d)
trap 'remove_root "$place/root"; rm -rf "$place"' EXIT
root=$place/root
unpack_root "$archive" "$root"
dpkg-deb -x "$packages"/orblink-vboard_*_amd64.deb "$place/board"

# A link that begins with / leads out of this system for whoever looks at it from outside.
find "$root"/lib* "$root"/usr/lib* -type l -lname '/*' | while read -r link; do
    target=$root$(readlink "$link")
    [ ! -e "$target" ] || as_root ln -sfnr "$target" "$link"
done

build()
{
    cmake -S . -B "$2" -G Ninja -DCMAKE_MAKE_PROGRAM="$(command -v ninja)" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_SYSROOT="$root" -DCMAKE_C_COMPILER="$root/usr/bin/gcc" \
        -DCMAKE_CXX_COMPILER="$root/usr/bin/g++" -DCMAKE_CXX_FLAGS=-Wno-attributes \
        -DORBLINK_PROGRAMS=OFF -DORBLINK_TESTS=OFF -DORBLINK_I386="$1" &&
        cmake --build "$2" --target $targets
}

c_library_of()
{
    objdump -T "$1" | grep -oE 'GLIBC_[0-9.]+' | sort -Vu | tail -n 1
}

for bits in 64 32; do
    rm -rf "$place/build"
    build $([ $bits = 64 ] && echo OFF || echo ON) "$place/build" >"$builds/old-$bits.log" 2>&1 || {
        tail -n 50 "$builds/old-$bits.log" >&2
        exit 1
    }
    as_root mkdir "$root/orblink-$bits"
    as_root cp -P "$place"/build/lib/*.so* "$root/orblink-$bits"
    as_root cp -r --parents common platform hwmbox board switch switch_hal_services phy \
        "$root/orblink-$bits"
    as_root cp tests/packaging/brings_up.c "$root/orblink-$bits"
    library=$root/orblink-$bits/liborblink.so.0
    echo "$bits bits: needs $(c_library_of "$library")"
    readelf -d "$library" | grep -q 'NEEDED.*libdl\.so\.2' || { echo "not of an old C library"; exit 1; }
    for compiler in "gcc -x c" "g++ -x c++"; do
        said=$("$place/board/usr/bin/orblink-vboard" run --time-scale 0.01 \
            --board "$place/board/usr/share/orblink/boards/phy.toml" -- \
            bash -c '. packaging/debian_root.sh
                in_root "$1" sh -c "cd /orblink-$2 &&
                    $3 -Wall -Wextra -Werror -m$2 -I. brings_up.c -x none -L. -lorblink -lobplatform \
                        -o program &&
                    LD_LIBRARY_PATH=. ./program"' - "$root" $bits "$compiler")
        [ "$(tail -n 1 <<<"$said")" = "1, 2" ] || {
            printf '%s\n%s bits, %s\n' "$said" $bits "$compiler"
            exit 1
        }
    done
done
