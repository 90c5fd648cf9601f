#!/bin/sh
# plain_code.sh LIBRARY
# LIBRARY runs no code when it is loaded or unloaded, takes no heap and no C++ runtime and has no
# unwind tables of its own.
set -eu
library=$1
status=0
complain() {
    echo "$library: $1:"
    printf '%s\n' "$2"
    status=1
}

start=$(readelf -d "$library" | grep -E '\((INIT|INIT_ARRAY|PREINIT_ARRAY|FINI|FINI_ARRAY)\)' || true)
[ -z "$start" ] || complain "code that runs when it is loaded or unloaded" "$start"
own=$(nm "$library" | grep -E '_GLOBAL__(sub_)?I_|__static_initialization' || true)
[ -z "$own" ] || complain "static constructors" "$own"

# The linker's own, for the table of imported functions, has no more than that.
tables=$(readelf -SW "$library" | sed -n 's/.* \.eh_frame  *PROGBITS  *[0-9a-f]* [0-9a-f]* \([0-9a-f]*\) .*/\1/p')
[ $((0x${tables:-0})) -le 512 ] || complain "bytes of unwind tables, hexadecimal" "$tables"

undefined=$(nm -D --undefined-only "$library" | awk '{ print $NF }' | sed 's/@.*//')
runtime=$(printf '%s\n' "$undefined" | grep -E '^(_Z|__cxa_|__gxx_|_Unwind|__dynamic_cast)' || true)
[ -z "$runtime" ] || complain "symbols of the C++ runtime" "$runtime"
heap=$(printf '%s\n' "$undefined" |
    grep -xE '(m|c|re)alloc|free|aligned_alloc|posix_memalign|strn?dup|v?asprintf' || true)
[ -z "$heap" ] || complain "heap functions" "$heap"
threads=$(printf '%s\n' "$undefined" | grep -E '^(pthread_create|thrd_create|clone)$' || true)
[ -z "$threads" ] || complain "thread functions" "$threads"
exit $status
