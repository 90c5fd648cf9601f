#!/bin/bash
# test.sh [--full] [--build-dir DIR] [PRESET...]
# Installs what is missing, builds for both ABIs with gcc and clang, runs every test, runs a part of
# them as a plain container would, checks the form of the sources, prints the library's coverage.
#   --full           also the long checks: analysis of the whole tree, branch coverage, robustness,
#                    the page in a browser, packages, all tests as in a plain container, a virtual
#                    machine with Debian's own kernel
#   --build-dir DIR  where to build instead of build/
#   PRESET...        only these builds and their tests
set -euo pipefail
cd "$(dirname "$0")"

# One build for each thing that can differ. Programs of one ABI are also run on the other ABI's
# virtual board, so the release builds come first, by gcc; those under the sanitizers are clang's, that
# of i386 with the library's tests.
presets=(release release-i386 asan asan-i386)
coverage_from=asan-i386
minimum_line_coverage=95
minimum_branch_coverage=95
at_a_time=2  # tests, on each processor
full=no
builds=$PWD/build

while [ $# -gt 0 ]; do
    case $1 in
        --full) full=yes ;;
        --build-dir)
            [ $# -gt 1 ] || { sed -n '2,10s/^# //p' "$0" >&2; exit 2; }
            builds=$(realpath -m "$2")
            shift
            ;;
        -*) sed -n '2,10s/^# //p' "$0" >&2; exit 2 ;;
        *) break ;;
    esac
    shift
done
only_presets=$#
[ $only_presets -eq 0 ] || presets=("$@")
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
        # Optimised programs are left to the long form.
        release) [ $full = yes ] || [ $only_presets -gt 0 ] || echo "-DORBLINK_QUICK=ON" ;;
        # Its programs are there to be met by those of the other ABI.
        release-i386) echo "-DORBLINK_TESTS=CHECKS -DORBLINK_QUICK=ON" ;;
        # Tests that only drive programs: compiled once, run on each build. Those of the library run
        # under the sanitizers of the other ABI; of both in the long form.
        asan)
            [ ! -d "$builds/release/tests" ] || echo "-DORBLINK_DRIVERS=$builds/release"
            [ $full = yes ] || [ $only_presets -gt 0 ] || echo "-DORBLINK_TESTS=PROGRAMS"
            ;;
    esac
}

run_tests()
{
    local log=$1 directory=$2
    shift 2
    logged "$log" "$@" ctest --test-dir "$directory" --output-on-failure --timeout 20 \
        --no-tests=error -j $(($(nproc) * at_a_time)) ${test_selection:-}
    grep 'tests passed' "$log"
    # What test programs report that run each of their tests in a process of its own.
    local by_themselves=$directory/Testing/Temporary/LastTest.log
    awk '/ tests by themselves: / { all += $1; programs++ }
         END { if (all) print "of these", programs, "are programs of", all, "tests" }' "$by_themselves"
    skipped=$((skipped + $(grep -c '\*\*\*Skipped' "$log" || true) +
        $(grep -c '^skipped [0-9.]* s ' "$by_themselves" || true)))
}

library_coverage()
{
    local build=$1 tool=$2
    shift 2
    gcovr --root . --gcov-executable "$tool" --exclude-throw-branches --exclude-unreachable-branches \
        --filter '(common|platform|hwmbox|board|switch|switch_hal_services|phy)/' \
        "$@" --txt "$build-coverage.txt" --print-summary "$build"
}

stage "packages"
logged "$builds/packages.log" scripts/install-packages.sh $([ $full = no ] ||
    echo --analysis --browser --packaging --vm)

if [ $only_presets -eq 0 ]; then
    stage "form of sources and commits"
    logged "$builds/form.log" scripts/check-form.sh
fi

for preset in "${presets[@]}"; do
    stage "build $preset"
    scripts/build.sh "$preset" "$builds/$preset" "$builds/$preset.log" $(options_of "$preset")
done

skipped=0
for preset in "${presets[@]}"; do
    [ -e "$builds/$preset/CTestTestfile.cmake" ] || continue
    stage "test $preset"
    # Without sanitizers a third of the time is waits.
    [ "$preset" = release ] && at_a_time=3 || at_a_time=2
    run_tests "$builds/$preset-tests.log" "$builds/$preset"
done

if [ -d "$builds/$coverage_from" ]; then
    stage "coverage of the library"
    library_coverage "$builds/$coverage_from" "llvm-cov gcov" --fail-under-line "$minimum_line_coverage"
fi

if [ $only_presets -eq 0 ]; then
    stage "instructions of calls, footprint"
    for preset in release release-i386; do
        logged "$builds/figures.log" cmake --build "$builds/$preset" --target figures
    done
    logged "$builds/figures.txt" bench/figures.py "$builds/release" "$builds/release-i386"
    logged "$builds/size.txt" bench/figures.py --mapped \
        "$builds/release-i386/lib/liborblink.so.0" --at-most $((84 * 1024))
fi

if [ $only_presets -eq 0 ]; then
    stage "tests as in a plain container"
    tests/container/run.sh "$builds/release" "$builds/container" $([ $full = yes ] || echo --short)
    stage "clang-tidy over the library"
    logged "$builds/tidy.log" scripts/analyse.sh "$builds/asan-i386" --library
    stage "fuzzers over library and HALs"
    logged "$builds/fuzz.log" tests/robustness/fuzz.sh --seconds 1 --build-dir "$builds/fuzz" \
        dump mailbox board_data_switch board_data_phy switch_api phy_api hal_phy hal_vswitch
fi
if [ $full = yes ]; then
    stage "analysis of the whole tree"
    logged "$builds/analysis.log" scripts/analyse.sh "$builds/analysis" --whole
    stage "size of the library without hardening"
    logged "$builds/unhardened-i386.log" cmake --preset release-i386 -B "$builds/unhardened-i386" \
        -DORBLINK_HARDENING=OFF -DORBLINK_TESTS=OFF -DORBLINK_PROGRAMS=OFF
    logged "$builds/unhardened-i386.log" cmake --build "$builds/unhardened-i386" --target orblink
    logged "$builds/size.txt" bench/figures.py --mapped \
        "$builds/unhardened-i386/lib/liborblink.so.0" --at-most $((80 * 1024))
    # Without sanitizers: their checks are branches that no test is to take.
    stage "branch coverage of the library"
    scripts/build.sh coverage "$builds/coverage" "$builds/coverage.log"
    run_tests "$builds/coverage-tests.log" "$builds/coverage"
    library_coverage "$builds/coverage" gcov --fail-under-branch "$minimum_branch_coverage"
    stage "the page in a browser"
    tests/tools/orblink_web/browser/run.sh "$builds/release"
    stage "virtual machine"
    tests/vm/run.sh --i386 "$builds/release-i386" "$builds/release" "$builds/vm"
    stage "packages in a fresh Debian"
    tests/packaging/run.sh "$builds"
    stage "robustness"
    tests/robustness/run.sh --minutes 10
fi

stage "all passed, $skipped skipped"
