#!/bin/bash
# check.sh [--renew] BUILD_DIR [amd64|i386]
# Compares what both libraries export, and all public types, for both ABIs or one of them, with what is
# recorded beside this script. Who changes an interface on purpose records it with --renew; the commit
# says why. The libraries are built in BUILD_DIR, with the debug information that describes them.
set -euo pipefail
recorded=$(cd "$(dirname "$0")" && pwd)
source=$(realpath "$recorded/../..")
renew=no
[ "${1:-}" != --renew ] || {
    renew=yes
    shift
}
[ $# -ge 1 ] && [ $# -le 2 ] || {
    sed -n '2,5s/^# //p' "$0" >&2
    exit 2
}
builds=$(realpath -m "$1")
architectures=${2:-amd64 i386}
status=0

build()
{
    local folder=$builds/abi-$1 bits=64
    [ "$1" = amd64 ] || bits=32
    cmake -S "$source" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ -DORBLINK_PROGRAMS=OFF \
        -DORBLINK_TESTS=OFF -DORBLINK_I386=$([ $bits = 64 ] && echo OFF || echo ON) &&
        cmake --build "$folder" --target orblink obplatform &&
        gcc -m$bits -g -shared -fPIC -I"$source" "$recorded/types.c" -o "$folder/lib/types.so"
}

record()
{
    abidw --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path \
        --type-id-style hash "$1" --out-file "$2"
}

# Whatever differs is shown: also what is only new has to be recorded.
compare()
{
    abidiff --exported-interfaces-only --no-show-locs "$2" "$1" || {
        echo "$(basename "$2"): the interface is not the recorded one"
        status=1
    }
}

# A type that nothing recorded describes could change unseen.
all_types_are_recorded()
{
    local headers type
    headers=$(sed -n 's/^#include "\(.*\)"/\1/p' "$recorded/types.c")
    for type in $(cd "$source" && sed -nE 's/^(typedef )?(struct|enum|union) (\w+) \{$/\3/p' $headers); do
        grep -qE "<(class|enum|union)-decl name='$type'" "$recorded"/*."$1".abi || {
            echo "$type is in no record of $1: add it to types.c"
            status=1
        }
    done
}

mkdir -p "$builds"
for architecture in $architectures; do
    build "$architecture" >"$builds/abi-$architecture.log" 2>&1 || {
        tail -n 50 "$builds/abi-$architecture.log" >&2
        exit 1
    }
    for library in liborblink.so.0 libobplatform.so.0 types.so; do
        file=$builds/abi-$architecture/lib/$library
        abi=$recorded/${library%%.*}.$architecture.abi
        if [ $renew = yes ]; then
            record "$file" "$abi"
        else
            compare "$file" "$abi"
        fi
    done
    all_types_are_recorded "$architecture"
done
exit $status
