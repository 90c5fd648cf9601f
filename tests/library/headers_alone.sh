#!/bin/sh
# headers_alone.sh COMPILER -m64|-m32 SOURCE_DIR HEADER...
# Each public header compiles by itself, as C11 and as C++20, where nothing but the public headers
# is installed.
set -eu
compiler=$1
bits=$2
cd "$3"
shift 3
installed=$(mktemp -d)
trap 'rm -rf "$installed"' EXIT
cp --parents "$@" "$installed"

status=0
for header in "$@"; do
    for language in c:c11 c++:c++20; do
        printf '#include "%s"\ntypedef int Something;\n' "$header" |
            "$compiler" "$bits" -x "${language%%:*}" -std="${language##*:}" -fsyntax-only \
                -Wall -Wextra -pedantic -Werror -I "$installed" - || {
            echo "$header does not compile alone as ${language##*:} with $compiler $bits"
            status=1
        }
    done
done
exit $status
