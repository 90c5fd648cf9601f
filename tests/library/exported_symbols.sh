#!/bin/sh
# exported_symbols.sh LIBRARY SOURCE_DIR MARK HEADER...
# The dynamic symbols that LIBRARY defines are the functions and objects that the headers declare
# behind MARK ("-": without a mark), no more and no fewer. Tables that HAL libraries define are none
# of them.
set -eu
export LC_ALL=C
library=$1
cd "$2"
mark=$3
shift 3

declared=$(
    if [ "$mark" = - ]; then cat "$@"; else sed -nE "s/^$mark (extern )?//p" "$@"; fi |
        sed -nE 's/^(uint[0-9]+_t|int|void|const char)( ?\*)? ?([A-Za-z_0-9]+)(\(.*|;)$/\3/p' | sort
)
exported=$(nm -D --defined-only "$library" | awk '{ print $NF }' | sort)

[ -n "$declared" ] || { echo "no declarations found in $*"; exit 1; }
[ "$declared" = "$exported" ] && exit 0
echo "$library: declared (<) and exported (>) differ:"
printf '%s\n' "$declared" >"${TMPDIR:-/tmp}/declared.$$"
printf '%s\n' "$exported" | diff "${TMPDIR:-/tmp}/declared.$$" - || true
rm -f "${TMPDIR:-/tmp}/declared.$$"
exit 1
