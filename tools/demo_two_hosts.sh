#!/bin/sh
# A step of demo.sh: two hosts on a board of their own. Argument: directory of the programs.
set -u
PATH=$1:$PATH
tools=$(dirname "$0")
errors=$(mktemp)
trap 'rm -f "$errors"' EXIT

printf '\n=== Two hosts ping; a VLAN separates them; back in one VLAN they ping again\n'
if orblink-vboard run --board "$tools/demo_hosts.toml" -- true 2>"$errors"; then
    orblink-vboard run --board "$tools/demo_hosts.toml" --time-scale 0.05 -- "$tools/demo_hosts.sh"
elif grep -Eq 'ports = "tap"|network namespace' "$errors"; then
    echo "Left out, this machine does not allow it: $(cat "$errors")"
else
    cat "$errors"
    exit 1
fi
