#!/bin/bash
# fuzz.sh [--seconds N] [--build-dir DIR] [HARNESS...]
# Builds the harnesses, all unless some are named, gives each every input of its corpus and then N
# seconds of its own (default 2), and prints what was run. Fails when a harness finds something; the
# input that does it is then in DIR/findings and belongs, once the fault is mended, into the corpus.
set -euo pipefail
called_from=$PWD
cd "$(dirname "$0")/../.."

seconds=2
build=$PWD/build/fuzz
while [ $# -gt 0 ]; do
    case $1 in
        --seconds) seconds=$2 ;;
        --build-dir) build=$(cd "$called_from" && realpath -m "$2") ;;
        *) break ;;
    esac
    shift 2
done
corpora=tests/robustness/fuzz/corpora
findings=$build/findings
logs=$build/logs
mkdir -p "$findings" "$logs"
[ $# -ne 0 ] || set -- $(cd $corpora && ls)

# Every exported function has its place in a harness.
for name in $(sed -nE '/HWMB_socket/d; s/^ +([A-Z]+_[A-Za-z0-9_]+);.*/\1/p' cmake/liborblink.map); do
    grep -qw "$name" tests/robustness/fuzz/*.cpp ||
        { echo "no harness calls $name" >&2; exit 1; }
done

{
    cmake --preset fuzz -B "$build"
    cmake --build "$build" --target "${@/#/fuzz_}"
} >"$logs/build" 2>&1 || { tail -n 100 "$logs/build" >&2; exit 1; }

# Inputs of the corpus run whole; new ones are kept short, which finds more.
run()
{
    local name=$1 found result=0
    local options=(-timeout=20 -rss_limit_mb=2048 -artifact_prefix="$findings/$name-")
    found=$(mktemp -d)
    find "$corpora/$name" -type f -print0 |
        xargs -0r "$build/fuzz/$name" "${options[@]}" &&
        "$build/fuzz/$name" "${options[@]}" -max_total_time="$seconds" -max_len=4096 \
            -print_final_stats=1 "$found" "$corpora/$name" || result=1
    rm -r "$found"
    return $result
}

number() # what the pattern catches in the last line of the log that has it
{
    sed -nE "s/$1/\\1/p" "$2" | tail -n 1
}

# As many at a time as there are processors.
TIMEFORMAT='%U %S'
for name; do
    [ "$(jobs -rp | wc -l)" -lt "$(nproc)" ] || wait -n || true
    rm -f "$logs/$name.held"
    { time { run "$name" >"$logs/$name" 2>&1 && touch "$logs/$name.held"; }; } 2>"$logs/$name.time" &
done
wait

status=0
row='| %-20s | %12s | %8s | %8s | %8s |\n'
printf "$row" harness executions 'CPU s' edges of
for name; do
    log=$logs/$name
    if [ ! -e "$log.held" ]; then
        status=1
        printf '%s: see %s\n' "$name" "$log" >&2
        grep -aE 'ERROR|SUMMARY|Test unit written|runtime error' "$log" >&2 || tail "$log" >&2
    fi
    printf "$row" "$name" \
        "$(number '.*number_of_executed_units: *([0-9]+).*' "$log")" \
        "$(tail -n 1 "$log.time" | awk '{ printf "%.1f", $1 + $2 }')" \
        "$(number '.* cov: ([0-9]+) .*' "$log")" \
        "$(number '.*Loaded [0-9]+ PC tables? \(([0-9]+) PCs\).*' "$log")"
done
exit $status
