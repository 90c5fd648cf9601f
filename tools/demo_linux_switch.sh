#!/bin/sh
# The last step of demo.sh: the two hosts at the kernel's own switch. Argument: directory of the programs.
set -eu
tools=$(dirname "$(realpath "$0")")
if [ "${2:-}" != inside ]; then
    printf '\n=== The same at the switch that the kernel has\n'
    options=-n
    [ "$(id -u)" -eq 0 ] || options=-rn
    for needed in true "ip link add one type veth peer name other" \
        "ip link add br0 type bridge vlan_filtering 1"; do
        why=$(unshare $options $needed 2>&1) || {
            echo "Left out, this machine does not allow it: unshare $options $needed: $why"
            exit 0
        }
    done
    exec unshare $options "$0" "$1" inside
fi

PATH=$1:$PATH
place=$(mktemp -d)
hosts=
trap 'kill $hosts; rm -rf "$place"' EXIT

# add_host PORT NAME ADDRESS MAC
add_host() {
    unshare -n sh -c 'echo $$ >"$0"; exec tail -f /dev/null' "$place/$2" &
    until [ -s "$place/$2" ]; do sleep 0.1; done
    host=$(cat "$place/$2")
    hosts="$hosts $host"
    ip link add "lan$1" type veth peer name "eth-$2" address "$4" netns "$host"
    nsenter -t "$host" -n ip address add "$3/24" dev "eth-$2"
    nsenter -t "$host" -n ip link set "eth-$2" up
}

add_host 1 alice 10.0.0.1 02:00:00:00:0a:11
alice=$host
add_host 2 bob 10.0.0.2 02:00:00:00:0b:0b

cat >"$place/linux-switch-0.toml" <<'TOML'
bridge = "br-lan"
cpu_port = 0
[ports]
1 = "lan1"
2 = "lan2"
TOML
cat >"$place/board.toml" <<'TOML'
name = "Linux switch"
[[switch]]
hal = "liborblink_linux.so"
chip = "none"
serdes = 0
internal_port = 0
TOML
export ORBLINK_LINUX_SWITCH="$place" ALICE="nsenter -t $alice -n"
orblink-vboard run --board "$place/board.toml" -- "$tools/demo_hosts.sh"
