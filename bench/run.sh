#!/bin/bash
# run.sh [--repetitions N] [--build-dir DIR]
# Measures calls, programs and the virtual switch beside what they cannot do without and beside the
# kernel's own, all in one run, repetitions interleaved; prints ratios of medians and writes
# bench/results.json and bench/chart.svg. What needs namespaces of its own (root, or a kernel that
# gives them to users), a virtual board or a tool that is missing is left out, and said to be.
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions=9
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
cmake --build "$build" --target comparisons >/dev/null

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT

# A pair of interfaces and a bridge with 256 entries, and a /dev whose log is nobody's, seen by this
# run only.
own_network='
    ip link add obbench0 type veth peer name obbench1 && ip link set obbench0 up &&
    ip link set obbench1 up && ip link add obbench type bridge && ip link set obbench1 master obbench &&
    for i in $(seq 0 255); do
        printf "fdb add 02:00:00:00:00:%02x dev obbench1 master static\n" $i
    done | bridge -batch -'
own_log='
    dev=$(mktemp -d) && mount -t tmpfs orblink-bench "$dev" && mkdir "$dev/shm" &&
    mount -t tmpfs orblink-bench "$dev/shm" &&
    for each in null zero urandom; do touch "$dev/$each"; mount --bind "/dev/$each" "$dev/$each"; done &&
    touch "$dev/orblink-bench" && mount --move "$dev" /dev'
namespaces=(unshare --net --ipc --mount)
[ "$(id -u)" -eq 0 ] || namespaces=(unshare --map-root-user --net --ipc --mount)
alone=yes
"${namespaces[@]}" true 2>/dev/null || {
    alone=no
    echo "left out: the kernel's queries and the log (no namespaces of its own for this user)"
}

# NAME [SETUP]: one program of measurements, on its own when it can be.
measure()
{
    local command=("$build/bin/$1_bench" "--benchmark_repetitions=$repetitions"
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.02
        --benchmark_out_format=json "--benchmark_out=$results/$1.json")
    [ $# -lt 3 ] || command=("${@:3}" "${command[@]}")
    [ $alone = no ] || command=("${namespaces[@]}" sh -c "$2"' && exec "$@"' sh "${command[@]}")
    "${command[@]}" >"$results/log" 2>&1 || {
        cat "$results/log" >&2
        return 1
    }
}

measure calls "$own_network && $own_log"
measure bring_up true
measure processes true
# Commands find a board whose switch is up; it takes no time to wait.
board=("$build/bin/orblink-vboard" run --board "$PWD/virtual_board/boards/one_switch.toml"
    --time-scale 0.001 --)
measure commands "$own_network" env "PATH=$build/bin:$PATH" "${board[@]}" sh -c '
    orblinkctl init >/dev/null && orblinkctl up 0 --defaults >/dev/null && exec "$@"' sh ||
    echo "left out: the commands (no virtual board here)"
low_latency=$([ ! -w /dev/cpu_dma_latency ] || echo --low-latency)
bench/switch_and_bridge.py --build "$build" --rounds 3 --seconds 2 --json "$results/switch.json" \
    $low_latency >"$results/log" 2>&1 || [ -s "$results/switch.json" ] || {
    tail -n 1 "$results/log"
    echo "left out: the virtual switch beside a bridge (needs root, iperf3, trafgen)"
}
bench/report.py "$results"
