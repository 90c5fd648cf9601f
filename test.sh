#!/bin/bash
# Installs what is missing, builds for both ABIs with gcc and clang, runs every test, prints the
# library's line coverage. With arguments only these presets: ./test.sh release asan
set -euo pipefail
cd "$(dirname "$0")"

# What is built and tested. The release builds come first: programs of one ABI are also run on the
# other ABI's virtual board.
built=(release release-i386 asan asan-i386 clang-i386-library coverage)
tested=(release release-i386 asan asan-i386 coverage)
minimum_coverage=95

scripts/install-packages.sh
mkdir -p build
[ $# -eq 0 ] || { built=("$@") tested=("$@"); }

stage()
{
    printf '%s  %s\n' "$(date +%T)" "$*"
}

show_and_fail()
{
    cat "$1" >&2
    exit 1
}

for preset in "${built[@]}"; do
    stage "build $preset"
    log=build/$preset.log
    cmake --preset "$preset" >"$log" 2>&1 || show_and_fail "$log"
    cmake --build --preset "$preset" >"$log" 2>&1 || show_and_fail "$log"
done

for preset in "${tested[@]}"; do
    stage "test $preset"
    log=build/$preset-tests.log
    ctest --preset "$preset" -j "$(nproc)" >"$log" 2>&1 || show_and_fail "$log"
    grep -E 'tests passed|\(Skipped\)' "$log"
done

if [[ " ${tested[*]} " == *" coverage "* ]]; then
    stage "coverage of the library"
    gcovr --root . --object-directory build/coverage --exclude-throw-branches \
        --filter '(common|platform|hwmbox|board|switch|switch_hal_services|phy)/' \
        --fail-under-line "$minimum_coverage" build/coverage
fi

stage "all passed"
