#!/bin/sh
# The built HAL library: one exported symbol, and no library at run time but the C library and
# liborblink.
set -eu
library=$1

exported=$(nm -D --defined-only "$library" | awk '{ sub(/@.*/, "", $3); print $2, $3 }')
[ "$exported" = "D OBHAL_HalFuncs" ] || {
    echo "$library exports: $exported" >&2
    exit 1
}

needed=$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
    LC_ALL=C sort | tr '\n' ' ')
[ "$needed" = "libc.so.6 liborblink.so.0 " ] || {
    echo "$library needs: $needed" >&2
    exit 1
}

undefined=$(nm -D --undefined-only "$library" | awk '{ sub(/@.*/, "", $2); print $2 }' |
    grep -v -x -e OBHAL_ReadMdio -e OBHAL_WriteMdio -e OBHAL_GetHalPrivData \
        -e OBHAL_GetInternalPortPidx -e OBHAL_GetInternalPortIfaceMode \
        -e OBHAL_GetInternalPortIfaceSpeed -e memcpy -e memcmp -e memset -e printf -e fflush \
        -e stdout -e usleep -e clock_gettime -e __clock_gettime64 -e __errno_location \
        -e __stack_chk_fail -e __cxa_finalize -e __gmon_start__ \
        -e _ITM_deregisterTMCloneTable -e _ITM_registerTMCloneTable || true)
[ -z "$undefined" ] || {
    echo "$library takes: $undefined" >&2
    exit 1
}
