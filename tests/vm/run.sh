#!/bin/bash
# run.sh [--only PATTERN] [--i386 BUILD_DIR] BUILD_DIR DIRECTORY
# What needs Debian's own kernel, systemd or other users, in a virtual machine: one boot runs all
# cases (cases.sh). Shows each case with its outcome, why some were skipped, and their numbers; ends
# with 1 when one failed, hung or was not come to. DIRECTORY keeps the kernel's package.
#   --only PATTERN    only these cases, in GoogleTest's words
#   --i386 BUILD_DIR  a build for i386, whose programs use the same board
# VM_SECONDS: how long the machine may take (3600).
set -euo pipefail
here=$(dirname "$(realpath "$0")")
source=$(realpath "$here/../..")
only='*'
i386=
while [ $# -gt 2 ]; do
    case $1 in
        --only) only=$2 ;;
        --i386) i386=$(realpath "$2") ;;
        *) sed -n '2,8s/^# //p' "$0" >&2; exit 2 ;;
    esac
    shift 2
done
build=$(realpath "$1")
directory=$(realpath -m "$2")
mkdir -p "$directory"

files=("$here" "$source/tests/virtual_board/cables" "$source/virtual_board/boards"
    "$source/tests/hals/linux_switch/hal_check.sh" "$source"/tools/demo_{hosts,linux_switch}.sh
    "$source/docs/linux-switch.md" "$source/packaging/boot/bring-up" /etc/iproute2
    "$build"/packaging/boot/orblink-{init,config}.service
    "$build"/tests/{linux_switch_test,vboard_traffic_test} "$build"/lib/*.so*
    "$build"/bin/{orblinkctl,orblink-vboard,orblink-hal-check})
for tool in bridge cmp ethtool ip iperf3 mausezahn nsenter ping sed seq setpriv socat ss tc tcpdump unshare; do
    files+=("$(PATH=$PATH:/usr/sbin:/sbin command -v $tool)")
done
[ -z "$i386" ] || files+=("$i386/bin/orblinkctl" "$i386"/lib/*.so*)
export VM_FILES="${files[*]}" VM_PACKAGES="coreutils procps"
export VM_MODULES="llc stp bridge mrp garp 8021q veth dummy tun sch_ingress cls_flower
    cls_matchall act_gact act_vlan act_mirred dsa_loop rocker netdevsim
    e1000 e1000e failover net_failover virtio_ring virtio virtio_pci_modern_dev
    virtio_pci_legacy_dev virtio_pci virtio_net"
# The one for clouds has no drivers for chips. Two cables, each from a port to a host (drivers.sh).
export VM_KERNEL=linux-image-amd64
export VM_DEVICES="
    -device e1000,id=port1,netdev=port1,mac=02:00:00:00:01:01 -netdev hubport,id=port1,hubid=1
    -device virtio-net-pci,id=host1,netdev=host1,mac=02:00:00:00:01:02 -netdev hubport,id=host1,hubid=1
    -device virtio-net-pci,id=port2,netdev=port2,mac=02:00:00:00:02:01 -netdev hubport,id=port2,hubid=2
    -device e1000e,id=host2,netdev=host2,mac=02:00:00:00:02:02 -netdev hubport,id=host2,hubid=2"

status=0
"$here/boot.sh" --seconds "${VM_SECONDS:-3600}" "$directory" \
    "$here/cases.sh" "$only" "$build" "$source" "$i386" |
    tee "$directory/cases" | "$here/results.awk" || status=$?
[ $status -eq 0 ] || echo "virtual machine: see $directory/cases and $directory/console" >&2
exit $status
