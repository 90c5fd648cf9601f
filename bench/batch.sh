#!/bin/sh
# batch.sh BUILD_DIR
# What a command costs in a batch and in a process of its own, on the virtual board: nanoseconds of
# a setting on a switch in reset, which is stored only, so that the cost of the command itself shows.
set -eu
export PATH="$(realpath "$1")/bin:$PATH"
cd "$(dirname "$0")/.."

exec orblink-vboard run --board virtual_board/boards/one_switch.toml -- sh -euc '
    orblinkctl init >/dev/null 2>&1
    commands=$(mktemp)
    trap "rm -f $commands" EXIT
    for i in $(seq 500); do echo port 1 vlan 5; echo port 1 vlan 6; done >"$commands"
    start=$(date +%s%N)
    orblinkctl batch "$commands" >/dev/null
    end=$(date +%s%N)
    batch=$(((end - start) / 1000))
    start=$(date +%s%N)
    for i in $(seq 100); do orblinkctl port 1 vlan 5; orblinkctl port 1 vlan 6; done >/dev/null
    end=$(date +%s%N)
    alone=$(((end - start) / 200))
    echo "in a batch $batch ns, alone $alone ns: $((alone / batch)) times"'
