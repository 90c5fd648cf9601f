#!/bin/bash
# Installs what is missing, builds for both ABIs with gcc and clang, runs every test, prints the
# library's line coverage. With arguments only these presets: ./test.sh release asan
set -euo pipefail
cd "$(dirname "$0")"

# One build for each thing that can differ. Programs of one ABI are also run on the other ABI's
# virtual board, so the release builds come first; the i386 tests run under the sanitizers.
presets=(release release-i386 asan asan-i386 clang-i386-library)
coverage_from=asan-i386
minimum_coverage=95

scripts/install-packages.sh
mkdir -p build
[ $# -eq 0 ] || presets=("$@")

stage()
{
    printf '%s  %s\n' "$(date +%T)" "$*"
}

show_and_fail()
{
    tail -n 200 "$1" >&2
    exit 1
}

options_of()
{
    [ "$1" != release-i386 ] || echo "-DORBLINK_TESTS=CHECKS"
}

for preset in "${presets[@]}"; do
    stage "build $preset"
    log=build/$preset.log
    cmake --preset "$preset" $(options_of "$preset") >"$log" 2>&1 || show_and_fail "$log"
    cmake --build --preset "$preset" >"$log" 2>&1 || show_and_fail "$log"
done

skipped=0
for preset in "${presets[@]}"; do
    [ -e "build/$preset/CTestTestfile.cmake" ] || continue
    stage "test $preset"
    log=build/$preset-tests.log
    ctest --preset "$preset" -j "$(nproc)" >"$log" 2>&1 || show_and_fail "$log"
    grep 'tests passed' "$log"
    skipped=$((skipped + $(grep -c '\*\*\*Skipped' "$log" || true)))
done

if [ -d "build/$coverage_from" ]; then
    stage "coverage of the library"
    gcovr --root . --exclude-throw-branches \
        --filter '(common|platform|hwmbox|board|switch|switch_hal_services|phy)/' \
        --fail-under-line "$minimum_coverage" "build/$coverage_from"
fi

stage "all passed, $skipped skipped"
