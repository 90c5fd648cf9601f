#!/bin/sh
# hal_check.sh PROGRAM LIBRARY [OPTION...]
# The check of HAL libraries on the one for the kernel's switches, with a switch of two cables in a
# network of its own. 77: such networks are not allowed here.
set -eu
if [ -z "${INSIDE_OWN_NETWORK:-}" ]; then
    options=-n
    [ "$(id -u)" -eq 0 ] || options=-rn
    unshare $options true 2>/dev/null || exit 77
    INSIDE_OWN_NETWORK=yes exec unshare $options "$0" "$@"
fi
mapping=$(mktemp -d)
trap 'rm -rf "$mapping"' EXIT
ip link add lan1 type veth peer name host1 || exit 77
ip link add lan2 type veth peer name host2
ip link set host1 up
ip link set host2 up
cat >"$mapping/linux-switch-0.toml" <<'TOML'
bridge = "br0"
cpu_port = 0
[ports]
1 = "lan1"
2 = "lan2"
TOML
ORBLINK_LINUX_SWITCH=$mapping "$@"
