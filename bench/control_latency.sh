#!/bin/sh
# control_latency.sh BUILD_DIR
# How long a control call takes on a board without traffic, and while four hosts send 64-byte
# frames to everybody as fast as they can. Needs hosts: /dev/net/tun and network namespaces.
set -eu
if [ $# -eq 1 ]; then
    build=$(realpath "$1")
    here=$(realpath "$(dirname "$0")")
    exec "$build/bin/orblink-vboard" run --board "$here/../tests/virtual_board/cables/lan.toml" -- \
        "$here/control_latency.sh" "$build" inside
fi

PATH=$1/bin:$PATH
orblinkctl init >/dev/null
orblinkctl up 0 --defaults >/dev/null
printf '%-20s %8s %8s %8s\n' milliseconds median '99 %' worst
control_latency 'no traffic'
for port in 1 2 3 4; do
    orblink-vboard exec "$(echo $port | tr 1234 abcd)" -- mausezahn lan$port -q -c 0 -p 60 \
        -a 02:00:00:00:01:0$port -b ff:ff:ff:ff:ff:ff >/dev/null 2>&1 &
done
sleep 1
control_latency 'four senders'  # which end with the board
