#!/bin/bash
# test.sh [--build-dir DIR] [PRESET...]
# Installs what is missing, builds for both ABIs with gcc and clang, runs every test, prints the
# library's coverage.
#   --build-dir DIR  where to build instead of build/
#   PRESET...        only these builds and their tests
set -euo pipefail
cd "$(dirname "$0")"

# One build for each thing that can differ. Programs of one ABI are also run on the other ABI's
# virtual board, so the release builds come first; the i386 tests run under the sanitizers.
presets=(release release-i386 asan asan-i386 clang-i386-library)
coverage_from=asan-i386
minimum_line_coverage=95
builds=$PWD/build

while [ $# -gt 0 ]; do
    case $1 in
        --build-dir)
            [ $# -gt 1 ] || { sed -n '2,6s/^# //p' "$0" >&2; exit 2; }
            builds=$(realpath -m "$2")
            shift
            ;;
        -*) sed -n '2,6s/^# //p' "$0" >&2; exit 2 ;;
        *) break ;;
    esac
    shift
done
[ $# -eq 0 ] || presets=("$@")
mkdir -p "$builds"

stage()
{
    printf '%s  %s\n' "$(date +%T)" "$*"
}

# Runs a command into a log; shows the log's end and gives up when it fails.
logged()
{
    local log=$1
    shift
    "$@" >"$log" 2>&1 || {
        tail -n 200 "$log" >&2
        exit 1
    }
}

options_of()
{
    case $1 in
        release-i386) echo "-DORBLINK_TESTS=CHECKS" ;;
        # Tests that only drive programs: compiled once, run on each build.
        asan) [ ! -d "$builds/release/tests" ] || echo "-DORBLINK_DRIVERS=$builds/release" ;;
    esac
}

run_tests()
{
    local log=$1 directory=$2
    logged "$log" ctest --test-dir "$directory" --output-on-failure --timeout 20 \
        --no-tests=error -j "$(nproc)"
    grep 'tests passed' "$log"
    skipped=$((skipped + $(grep -c '\*\*\*Skipped' "$log" || true)))
}

stage "packages"
logged "$builds/packages.log" scripts/install-packages.sh

for preset in "${presets[@]}"; do
    stage "build $preset"
    scripts/build.sh "$preset" "$builds/$preset" "$builds/$preset.log" $(options_of "$preset")
done

skipped=0
for preset in "${presets[@]}"; do
    [ -e "$builds/$preset/CTestTestfile.cmake" ] || continue
    stage "test $preset"
    run_tests "$builds/$preset-tests.log" "$builds/$preset"
done

if [ -d "$builds/$coverage_from" ]; then
    stage "coverage of the library"
    gcovr --root . --exclude-throw-branches \
        --filter '(common|platform|hwmbox|board|switch|switch_hal_services|phy)/' \
        --txt-summary --fail-under-line "$minimum_line_coverage" "$builds/$coverage_from"
fi

stage "all passed, $skipped skipped"
