#!/bin/sh
# refused.sh COMPILER SOURCE_DIR
# What must not compile does not: every line that begins with "//!" is one mistake, of which the
# compiler complains, and of no other line.
set -eu
compiler=$1
root=$2
here=$(cd "$(dirname "$0")" && pwd)
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

compiled()
{
    "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fsyntax-only \
        -I "$root" -I "$root/bindings/cpp" "$1" >"$place/said" 2>&1
}

compiled "$here/refused.cpp" || {
    cat "$place/said"
    echo "the program without the mistakes does not compile"
    exit 1
}
grep -n '^ *//! ' "$here/refused.cpp" | cut -d: -f1 | sort >"$place/wanted"
[ "$(wc -l <"$place/wanted")" -ge 10 ] || { echo "mistakes are missing"; exit 1; }
sed 's|^ *//! ||' "$here/refused.cpp" >"$place/mistakes.cpp"
! compiled "$place/mistakes.cpp" || { echo "the mistakes compile"; exit 1; }
sed -nE 's/.*mistakes.cpp:([0-9]+):[0-9]+: error:.*/\1/p' "$place/said" | sort -u >"$place/found"
cmp -s "$place/wanted" "$place/found" || {
    diff "$place/wanted" "$place/found" || true
    echo "lines with a mistake (<) and lines that are refused (>) differ"
    exit 1
}
