# What needs systemd and other users: a gateway's board that several share, its group, both ABIs.
# Read by cases.sh.
PATH=$build/bin:$PATH
socket=/run/gateway/socket
keys="/var/tmp/orblink_sem /var/tmp/ethphy_sem"
regions="/dev/shm/obos_orblink_driver /dev/shm/ethphy_driver"

on_board() { orblink-vboard attach --socket $socket -- "$@"; }

# as USER GROUP COMMAND...
as()
{
    user=$1 group=$2
    shift 2
    setpriv --reuid="$user" --regid="$user" --groups="$group" --no-new-privs "$@"
}

# The files that the manual shows.
block_of_manual()
{
    awk -v wanted="$1" '/^```/ { inside = !inside; number += inside; next }
        inside && number == wanted' "$source/docs/linux-switch.md"
}

make_gateway()
{
    echo "orblink:x:900:" >>/etc/group
    for user in member:1001 other:1002; do
        echo "${user%:*}:x:${user#*:}:${user#*:}::/:/bin/sh" >>/etc/passwd
        echo "${user%:*}:x:${user#*:}:" >>/etc/group
    done
    for port in 2 3; do
        ip link add enp${port}s0 type veth peer name far$port
        ip link set far$port up
    done
    mkdir -p /etc/orblink
    block_of_manual 1 >/etc/orblink/linux-switch-0.toml
    block_of_manual 2 >/etc/orblink/gateway.toml
    block_of_manual 4 >/etc/systemd/system/gateway.service
    ln -s "$build"/bin/orblink* /usr/bin/
    systemctl daemon-reload
    systemctl start gateway.service || { systemctl status gateway.service; return 1; }
}

unit_brings_the_bridge_up()
{
    make_gateway
    systemctl is-active gateway.service
    for port in enp2s0 enp3s0; do
        bridge link show dev $port | grep 'master br-lan state forwarding'
    done
    on_board orblinkctl -o kv port 0:1 | grep -x 'ports.0.link=true'
}

# The units that are shipped, on this board: joining it takes what programs of the board need not.
boot_units_find_it_initialised_and_bring_it_up()
{
    mkdir -p /usr/local/libexec/orblink
    cp "$source/packaging/boot/bring-up" /usr/local/libexec/orblink/
    cp "$build"/packaging/boot/orblink-*.service /etc/systemd/system/
    for unit in orblink-init orblink-config; do
        command=$(sed -n 's/^ExecStart=//p' /etc/systemd/system/$unit.service)
        mkdir -p /etc/systemd/system/$unit.service.d
        cat >/etc/systemd/system/$unit.service.d/gateway.conf <<UNIT
[Unit]
Requires=gateway.service
After=gateway.service
[Service]
ExecStart=
ExecStart=orblink-vboard attach --socket $socket -- $command
CapabilityBoundingSet=~
RestrictNamespaces=no
SystemCallFilter=
UNIT
    done
    systemctl daemon-reload
    systemctl start orblink-config.service || {
        journalctl -q --no-pager -u orblink-init -u orblink-config | tail -n 30
        return 1
    }
    systemctl is-active orblink-init.service orblink-config.service
}

group_owns_regions_and_keys()
{
    [ "$(on_board stat -c '%U:%G %a' $regions | uniq)" = "root:orblink 660" ]
    # Nobody but who makes them opens them; the others only ask for their numbers.
    [ "$(on_board stat -c '%U:%G %a' $keys | uniq)" = "root:orblink 600" ]
}

members_attach_and_others_do_not()
{
    as member 900 orblink-vboard attach --socket $socket -- "$build/bin/orblinkctl" port 0:1
    refused as other 1002 orblink-vboard attach --socket $socket -- "$build/bin/orblinkctl" port 0:1
}

members_change_nothing_without_the_capability()
{
    before=$(bridge -j vlan)
    refused as member 900 orblink-vboard attach --socket $socket -- \
        "$build/bin/orblinkctl" -v port 0:1 vlan 5 >"$scratch/refused" 2>&1
    cat "$scratch/refused"
    grep 'not permitted, it takes CAP_NET_ADMIN' "$scratch/refused"
    [ "$(bridge -j vlan)" = "$before" ]
}

kernel_protects_what_others_made_first()
{
    for setting in protected_regular protected_symlinks protected_hardlinks; do
        [ "$(cat /proc/sys/fs/$setting)" -ge 1 ]
    done
    as other 1002 touch /var/tmp/made_first /dev/shm/made_first
    for place in /var/tmp /dev/shm; do
        refused dd if=/dev/null of=$place/made_first conv=notrunc
    done
    as other 1002 ln -s /etc/passwd /var/tmp/led_away
    refused dd if=/dev/null of=/var/tmp/led_away conv=notrunc
}

both_abis_use_one_board()
{
    [ -n "$i386" ] || { echo "without a build for i386"; return 77; }
    on_board orblinkctl port 0:1 vlan 100
    on_board "$i386/bin/orblinkctl" -o kv port 0:1 | grep -x 'ports.0.vlan=100'
    on_board "$i386/bin/orblinkctl" port 0:2 vlan 200
    bridge vlan show dev enp3s0 | grep '200 PVID Egress Untagged'
    on_board orblinkctl -o kv port 0:2 | grep -x 'ports.0.vlan=200'
}

a_case Gateway.UnitBringsTheBridgeUp unit_brings_the_bridge_up
a_case Gateway.BootUnitsFindItInitialisedAndBringItUp boot_units_find_it_initialised_and_bring_it_up
a_case Gateway.GroupOwnsRegionsAndKeys group_owns_regions_and_keys
a_case Gateway.MembersAttachAndOthersDoNot members_attach_and_others_do_not
a_case Gateway.MembersChangeNothingWithoutTheCapability members_change_nothing_without_the_capability
a_case Gateway.KernelProtectsWhatOthersMadeFirst kernel_protects_what_others_made_first
a_case Gateway.BothAbisUseOneBoard both_abis_use_one_board
