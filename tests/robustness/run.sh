#!/bin/bash
# run.sh [--minutes N] [--build-dir DIR]
# The robustness programme for N minutes (10 by default), builds not counted, and a table of its
# figures. It builds in DIR/PRESET (build/robustness by default).
# Lines that begin with "| " in the output of the tests are the figures; docs/reliability.md shows them.
set -euo pipefail
cd "$(dirname "$0")/../.."

usage()
{
    sed -n '2,4s/^# //p' "$0" >&2
    exit 2
}

minutes=10
# Build trees of their own: nobody else's options change.
builds_in=build/robustness
while [ $# -gt 0 ]; do
    [ $# -gt 1 ] || usage
    case $1 in
        --minutes) minutes=$2 ;;
        --build-dir) builds_in=$2 ;;
        *) usage ;;
    esac
    shift 2
done
[[ $minutes =~ ^[1-9][0-9]*$ ]] || { echo "$0: minutes are a whole number of 1 or more" >&2; exit 2; }

# Debug builds are -O0, release builds -O2; both ABIs of each, side by side, so that their workers
# meet on one board.
builds=(gcc i386 release release-i386)
tests=(fault_table_test kill_matrix_test signals_test threads_test hostile_region_test
       neighbours_test soak_worker soak_test board_worker board_signals)
# What has no natural end: 6 hostile forms per build, 4 crowds and 2 on the virtual board, one race
# detector, 13 harnesses, as many at a time as there are processors.
seconds=$((minutes * 60 / (6 * ${#builds[@]} + 4 + 2 + 1 + 13 / $(nproc))))
[ "$seconds" -gt 0 ] || seconds=1
on_board=$((seconds < 5 ? 5 : seconds))  # nobody is killed in the last of them
failed=0
mkdir -p "$builds_in"
builds_in=$(realpath "$builds_in")
log=$builds_in/robustness.log
: >"$log"

tree()
{
    echo "$builds_in/$1"
}

build()
{
    local output programs=OFF
    output=$(tree "$1").log
    [ "$1" != release ] || programs=ON # for recover and the virtual board
    cmake --preset "$1" -B "$(tree "$1")" -DORBLINK_PROGRAMS=$programs >"$output" 2>&1 &&
        cmake --build "$(tree "$1")" --target "${@:2}" >>"$output" 2>&1 ||
        { tail -n 40 "$output" >&2; exit 1; }
}

# run PRESET SECONDS PROGRAM...: each test of the programs in a process of its own, thoroughly.
run()
{
    local preset=$1 seconds=$2 program name
    shift 2
    export ORBLINK_BUILD=$(tree "$preset") ORBLINK_THOROUGH=$seconds
    for program in "$@"; do
        echo "== $preset $program" >>"$log"
        for name in $(names "$ORBLINK_BUILD/tests/$program"); do
            timeout $((3 * seconds + 600)) "$ORBLINK_BUILD/tests/$program" --gtest_filter="$name" \
                >>"$log" 2>&1 || { failed=1; echo "FAILED: $preset $name, see $log" >&2; }
        done
    done
}

# The tests of a program, one name each.
names()
{
    "$1" --gtest_list_tests | awk '/^[^ ]/ { suite = $1 } /^ / { print suite $1 }'
}

load()
{
    cut -d ' ' -f 1 /proc/loadavg
}

load=$(load)
for preset in "${builds[@]}"; do
    echo "$(date +%T)  build $preset"
    build "$preset" "${tests[@]}" vswitch_hal ethphy_ieee8023_hal phyk20_hal
done
echo "$(date +%T)  build tsan"
build tsan threads_test

echo "$(date +%T)  faults, kills, signals, neighbours"
for preset in release release-i386; do
    run "$preset" 1 fault_table_test kill_matrix_test signals_test neighbours_test
done
for preset in "${builds[@]}"; do
    echo "$(date +%T)  hostile region, $preset"
    run "$preset" "$seconds" hostile_region_test
done
echo "$(date +%T)  soak"
run release "$seconds" soak_test
for kills in "" --kills; do
    echo "== release soak on the virtual board $kills" >>"$log"
    timeout $((on_board + 300)) tests/robustness/soak_on_board.py "$(tree release)" "$on_board" 15 \
        $kills >>"$log" 2>&1 || { failed=1; echo "FAILED: soak on the board, see $log" >&2; }
done
echo "$(date +%T)  signals on the virtual board"
echo "== release signals on the virtual board" >>"$log"
ORBLINK_BUILD=$(tree release)
timeout 300 "$ORBLINK_BUILD/bin/orblink-vboard" run --time-scale 0.001 \
    --board virtual_board/boards/phy.toml -- sh -c '"$1/bin/orblinkctl" init && exec \
    "$1/tests/board_signals" "$2"' sh "$ORBLINK_BUILD" $((minutes * 150)) >>"$log" 2>&1 ||
    { failed=1; echo "FAILED: signals on the board, see $log" >&2; }
echo "$(date +%T)  race detector"
run tsan "$seconds" threads_test

echo "$(date +%T)  fuzzers"
echo "== fuzzers" >>"$log"
tests/robustness/fuzz.sh --seconds "$seconds" --build-dir "$(tree fuzz)" >>"$log" || failed=1

{
    printf 'Commit %s, %s, %s, %d processors, %d minutes, load %s before and %s after\n' \
        "$(git describe --always --dirty 2>/dev/null || echo unknown)" "$(gcc --version | head -n 1)" \
        "$(clang --version | head -n 1)" "$(nproc)" "$minutes" "$load" "$(load)"
    sed -n 's/^== \(.*\)/\n\1/p; /^| /p' "$log"
} | tee "$builds_in/robustness.md"
echo "skipped: $(grep -c '^\[  SKIPPED \] [^1-9]' "$log" || true)"
exit "$failed"
