#!/bin/sh
# oldest_c_library.sh LIBRARY
# What LIBRARY calls is in the C library since 2.28, under names that have carried a newer version only
# since the C library took in libdl, librt and libpthread (2.34) and has fstat itself (2.33). So a build
# with an older one links and runs there.
set -eu
export LC_ALL=C
calls=$(objdump -T "$1" | grep -oE 'GLIBC_[0-9.]+\)? +[A-Za-z_0-9]+$' | tr -d ')')
[ -n "$calls" ] || { echo "$1: looking in the wrong place"; exit 1; }
newer=$(echo "$calls" | tr -s ' ' | sed 's/^GLIBC_2\.//' | awk '{
    split($1, version, ".")
    moved = version[1] == 34 && $2 ~ /^(dl(error|open|sym)|shm_open|pthread_[a-z_]+)$/
    moved = moved || version[1] == 33 && $2 ~ /^fstat(64)?$/
    if (version[1] > 28 && !moved)
        print $2 " of GLIBC_2." $1
}')
[ -z "$newer" ] || { echo "$1 calls $newer"; exit 1; }
