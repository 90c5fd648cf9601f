#!/bin/sh
# run_time_needs.sh LIBRARY SONAME "NEEDED..."
# LIBRARY carries this SONAME and needs exactly these libraries (in alphabetical order). A C library
# before 2.34 came in several, which it may need there.
set -eu
export LC_ALL=C
dynamic=$(readelf -d "$1")
name=$(printf '%s\n' "$dynamic" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
parts_of_c='^$'
[ "$(getconf GNU_LIBC_VERSION | cut -d. -f2)" -ge 34 ] || parts_of_c='^lib(dl|rt|pthread)\.so'
needed=$(printf '%s\n' "$dynamic" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
    grep -vE "$parts_of_c" | sort | xargs)
status=0
[ "$name" = "$2" ] || { echo "$1: SONAME is '$name', not '$2'"; status=1; }
[ "$needed" = "$3" ] || { echo "$1: needs '$needed', not '$3'"; status=1; }
exit $status
