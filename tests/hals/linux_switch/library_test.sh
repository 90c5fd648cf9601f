#!/bin/sh
# The built HAL library: one exported symbol, and no library at run time but the C library,
# liborblink and its platform.
set -eu
library=$1

exported=$(nm -D --defined-only "$library" | awk '{ sub(/@.*/, "", $3); print $2, $3 }')
[ "$exported" = "D OBHAL_HalFuncs" ] || {
    echo "$library exports: $exported" >&2
    exit 1
}

needed=$(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
    LC_ALL=C sort | tr '\n' ' ')
[ "$needed" = "libc.so.6 libobplatform.so.0 liborblink.so.0 " ] || {
    echo "$library needs: $needed" >&2
    exit 1
}

undefined=$(nm -D --undefined-only "$library" | awk '{ sub(/@.*/, "", $2); print $2 }' |
    grep -v -x -e OBHAL_GetHalPrivData -e OBHAL_GetInternalPortPidx -e OBPLAT_Log \
        -e socket -e setsockopt -e send -e recv -e open -e read -e close -e fstat -e fstat64 \
        -e __fstat64_time64 -e __fxstat -e __fxstat64 -e open64 -e mmap -e mmap64 -e munmap \
        -e secure_getenv -e snprintf -e printf -e fflush -e stdout -e htons -e memchr -e memcmp \
        -e memcpy -e memset -e strcmp -e strlen -e __errno_location -e __stack_chk_fail \
        -e __cxa_finalize -e __gmon_start__ -e _ITM_deregisterTMCloneTable \
        -e _ITM_registerTMCloneTable || true)
[ -z "$undefined" ] || {
    echo "$library takes: $undefined" >&2
    exit 1
}
