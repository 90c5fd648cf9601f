#!/bin/bash
# build.sh PRESET BUILD_DIR LOG [CMAKE_OPTION...] [-- TARGET...]
# Configures and builds a preset and shows how far it is: on a terminal in one line, otherwise at
# each quarter. What the tools print goes to LOG, whose end is shown when something fails.
set -uo pipefail

preset=$1
directory=$2
log=$3
shift 3
options=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    options+=("$1")
    shift
done
[ $# -eq 0 ] || shift
targets=()
[ $# -eq 0 ] || targets=(--target "$@")

fail()
{
    [ ! -t 1 ] || printf '\n'
    tail -n 200 "$log" >&2
    exit 1
}

show_progress()
{
    local line done all quarter=0
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$log"
        [[ $line =~ ^\[([0-9]+)\ of\ ([0-9]+)\] ]] || continue
        done=${BASH_REMATCH[1]}
        all=${BASH_REMATCH[2]}
        if [ -t 1 ]; then
            printf '\r  %s: %d of %d steps' "$preset" "$done" "$all"
        elif [ $((done * 4 / all)) -gt $quarter ]; then
            quarter=$((done * 4 / all))
            printf '  %s: %d of %d steps\n' "$preset" "$done" "$all"
        fi
    done
    [ ! -t 1 ] || printf '\n'
}

# What was compiled before is not compiled again. Sources that are compiled together name each other
# by whole paths: for these that is so in a checkout at the same place only.
if command -v ccache >/dev/null && mkdir -p "$(ccache -k cache_dir)" 2>/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER-ccache}
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi

cmake --preset "$preset" -B "$directory" "${options[@]}" >"$log" 2>&1 || fail
NINJA_STATUS='[%f of %t] ' cmake --build "$directory" "${targets[@]}" 2>&1 | show_progress || fail
