#!/bin/sh
# Run on the board of demo_two_hosts.sh or demo_linux_switch.sh: what a VLAN does to two hosts. ALICE is
# what a command on the first begins with. The exit code is not 0 when something went wrong.
set -u
alice=${ALICE:-orblink-vboard exec alice --}
failures=0

complain() {
    echo "WRONG: $*"
    failures=$((failures + 1))
}

run() {
    echo "\$ $*"
    "$@" || complain "exit code $?"
}

ping_bob() {
    echo "\$ $alice ping -c 2 -W 1 10.0.0.2"
    $alice ping -c 2 -i 0.2 -W 1 10.0.0.2
}

answered() {
    ping_bob || complain "the ping should be answered"
}

run orblinkctl init >/dev/null
run orblinkctl up 0 --defaults
until orblinkctl port 0:2 link | grep -q yes; do sleep 0.1; done

answered
run orblinkctl port 0:2 vlan 100
ping_bob && complain "the VLAN should separate the hosts"
run orblinkctl port 0:2 vlan 1
answered
run orblinkctl mac
for mac in 02:00:00:00:0a:11 02:00:00:00:0b:0b; do
    orblinkctl mac | grep -q "$mac" || complain "the MAC table lacks $mac"
done
exit $((failures != 0))
