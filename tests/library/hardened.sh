#!/bin/sh
# hardened.sh BUILD_DIR PROGRAMS
# What BUILD_DIR installs: read-only after relocation and bound at the start, stack protectors,
# position-independent programs, landing pads for indirect calls in 64-bit code, and no library with
# a search path of its own. At least so many PROGRAMS are there.
set -eu
export LC_ALL=C
status=0
complain() {
    echo "$file: $1"
    status=1
}

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
# The list of what is installed goes beside it: the build may be another user's.
sed "s|(WRITE \"[^\"]*/\${CMAKE_INSTALL_MANIFEST}\"|(WRITE \"$prefix/manifest\"|" \
    "$1/cmake_install.cmake" >"$prefix/install.cmake"
cmake -DCMAKE_INSTALL_PREFIX="$prefix" -P "$prefix/install.cmake" >"$prefix/log" || {
    cat "$prefix/log"
    exit 1
}

check_program() {
    readelf -hW "$file" | grep -q 'Type: *DYN' || complain "a program at a fixed address"
}

check_library() {
    ! readelf -dW "$file" | grep -qE '\((RUNPATH|RPATH)\)' || complain "a library with a search path"
}

check_landing_pads() {
    bare=$(objdump -d --no-show-raw-insn "$file" | awk '
        /^[0-9a-f]+ <[^>]*>:$/ { name = $2; next }
        name != "" { if ($2 != "endbr64" && name ~ exported) print name; name = "" }
    ' exported="^<($(nm -D --defined-only "$file" | awk '$2 == "T" { print $3 }' | xargs | tr ' ' '|'))>:$")
    [ -z "$bare" ] || complain "functions without a landing pad: $(echo "$bare" | xargs)"
}

files=$(find "$prefix" -type f -exec sh -c 'head -c4 "$1" | grep -q ELF' - {} \; -print)
programs=0
libraries=0
for file in $files; do
    readelf -lW "$file" | grep -q GNU_RELRO || complain "no part that is read-only after relocation"
    readelf -dW "$file" | grep -qE 'BIND_NOW|FLAGS_1.*NOW' || complain "bound as it runs"
    if readelf -lW "$file" | grep -q INTERP; then
        programs=$((programs + 1))
        check_program
    else
        libraries=$((libraries + 1))
        check_library
        readelf -hW "$file" | grep -q ELF32 || check_landing_pads
    fi
done

# The functions of these have arrays on their stacks.
for file in $(find "$prefix" -name liborblink.so.0 -o -name libobplatform.so.0); do
    nm -D "$file" | grep -q __stack_chk_fail || complain "no stack protector"
done

echo "$programs programs, $libraries libraries"
[ "$programs" -ge "$2" ] && [ "$libraries" -ge 5 ] || {
    echo "looking in the wrong place"
    exit 1
}
exit $status
