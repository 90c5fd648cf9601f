#!/bin/sh
# library_test.sh LIBRARY NEEDED NAME...
# A built switch HAL library: one exported symbol, at run time no library but those of NEEDED, and
# nothing from them but these names and what every library takes.
set -eu
library=$1
allowed_libraries=$2
shift 2

exported=$(nm -D --defined-only "$library" | awk '{ sub(/@.*/, "", $3); print $2, $3 }')
[ "$exported" = "D OBHAL_HalFuncs" ] || {
    echo "$library exports: $exported" >&2
    exit 1
}

needed=$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
    LC_ALL=C sort | tr '\n' ' ')
[ "$needed" = "$allowed_libraries " ] || {
    echo "$library needs: $needed" >&2
    exit 1
}

common="OBHAL_GetHalPrivData OBHAL_GetInternalPortPidx memcmp memcpy memset printf fflush stdout
    __errno_location __stack_chk_fail __cxa_finalize __gmon_start__ _ITM_deregisterTMCloneTable
    _ITM_registerTMCloneTable"
undefined=$(nm -D --undefined-only "$library" | awk '{ sub(/@.*/, "", $2); print $2 }' |
    grep -v -x -F "$(printf '%s\n' $common "$@")" || true)
[ -z "$undefined" ] || {
    echo "$library takes: $undefined" >&2
    exit 1
}
