#!/bin/bash
# run.sh [--repetitions N] [--build-dir DIR]
# Measures calls beside what they cannot do without and beside the kernel's own queries, all in one
# run, repetitions interleaved; prints ratios of medians and writes bench/results.json and
# bench/chart.svg. The kernel's queries need namespaces of their own (root, or a kernel that gives
# them to users); without them those rows are left out, and said to be.
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions=15
build=$PWD/build/release
while [ $# -gt 0 ]; do
    case $1 in
        --repetitions) repetitions=$2 ;;
        --build-dir) build=$(realpath -m "$2") ;;
        *) sed -n '2,6s/^# //p' "$0" >&2; exit 2 ;;
    esac
    shift 2
done

cmake --preset release -B "$build" >/dev/null
cmake --build "$build" --target calls_bench processes_bench >/dev/null

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
options="--benchmark_repetitions=$repetitions --benchmark_enable_random_interleaving=true
    --benchmark_min_time=0.02 --benchmark_out_format=json"

# A pair of interfaces and a bridge with 256 entries, seen by this run only.
peers='
    ip link add obbench0 type veth peer name obbench1 && ip link set obbench0 up &&
    ip link set obbench1 up && ip link add obbench type bridge && ip link set obbench1 master obbench &&
    for i in $(seq 0 255); do
        printf "fdb add 02:00:00:00:00:%02x dev obbench1 master static\n" $i
    done | bridge -batch - && exec "$@"'
namespaces=(unshare --net --ipc --mount)
[ "$(id -u)" -eq 0 ] || namespaces=(unshare --map-root-user --net --ipc --mount)
if "${namespaces[@]}" true 2>/dev/null; then
    beside_peers=("${namespaces[@]}" sh -c "$peers" sh)
else
    echo "left out: the kernel's queries and the bridge (no namespaces of its own for this user)"
    beside_peers=()
fi
for program in calls processes; do
    "${beside_peers[@]}" "$build/bin/${program}_bench" $options \
        --benchmark_out="$results/$program.json" >"$results/log" 2>&1 || {
        cat "$results/log" >&2
        exit 1
    }
done
bench/report.py "$results/calls.json" "$results/processes.json"
