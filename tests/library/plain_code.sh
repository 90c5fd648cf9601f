#!/bin/sh
# plain_code.sh LIBRARY
# LIBRARY runs no code of its own when it is loaded, takes no heap and no C++ runtime.
set -eu
library=$1
status=0
complain() {
    echo "$library: $1:"
    printf '%s\n' "$2"
    status=1
}

# The compiler's start-up object brings one constructor; each of ours would add a pointer.
header=$(readelf -h "$library")
case $header in
    *ELF64*) pointer=8 ;;
    *) pointer=4 ;;
esac
size=$(readelf -d "$library" | sed -n 's/.*(INIT_ARRAYSZ) *\([0-9]*\).*/\1/p')
[ "$size" = "$pointer" ] || complain "bytes of constructors, $pointer are the compiler's" "$size"
own=$(nm "$library" | grep -E '_GLOBAL__(sub_)?I_|__static_initialization' || true)
[ -z "$own" ] || complain "static constructors" "$own"

undefined=$(nm -D --undefined-only "$library" | awk '{ print $NF }' | sed 's/@.*//')
runtime=$(printf '%s\n' "$undefined" | grep -E '^(_Z|__cxa_|__gxx_|_Unwind|__dynamic_cast)' |
    grep -v '^__cxa_finalize$' || true)
[ -z "$runtime" ] || complain "symbols of the C++ runtime" "$runtime"
heap=$(printf '%s\n' "$undefined" |
    grep -xE '(m|c|re)alloc|free|aligned_alloc|posix_memalign|strn?dup|v?asprintf' || true)
[ -z "$heap" ] || complain "heap functions" "$heap"
threads=$(printf '%s\n' "$undefined" | grep -E '^(pthread_create|thrd_create|clone)$' || true)
[ -z "$threads" ] || complain "thread functions" "$threads"
exit $status
