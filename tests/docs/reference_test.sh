#!/bin/sh
# reference_test.sh SOURCE_DIR
# Doxygen has nothing to say about the public headers, and each function is in what it makes.
set -eu
cd "$1"
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
{
    cat docs/Doxyfile
    printf 'OUTPUT_DIRECTORY = %s\nGENERATE_HTML = NO\nGENERATE_XML = YES\n' "$place"
} | doxygen - >"$place/said" 2>&1 || {
    cat "$place/said"
    exit 1
}
[ ! -s "$place/said" ] || { cat "$place/said"; exit 1; }
status=0
for name in $(sed -nE 's/^ {4}(\w+);/\1/p' cmake/liborblink.map); do
    grep -rqs "<name>$name</name>" "$place/xml" || { echo "$name is not there"; status=1; }
done
exit $status
