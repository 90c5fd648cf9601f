#!/bin/sh
# In a booted Debian on a virtual board, with the units enabled and a startup configuration.
set -eu
export ORBLINK_VBOARD=/board/socket
trap 'systemctl --no-block poweroff' EXIT
regions="/dev/shm/obos_orblink_driver /dev/shm/ethphy_driver"
keys="/var/tmp/orblink_sem /var/tmp/ethphy_sem"

fail()
{
    echo "WRONG: $*"
    journalctl -q --no-pager -u orblink-init.service -u orblink-config.service | tail -n 30
    exit 1
}

headline()
{
    printf '\n== %s\n' "$*"
}

expect_mode()
{
    for file in "$@"; do
        [ "$(stat -c '%U:%G %a' "$file")" = "root:orblink 660" ] ||
            fail "$(stat -c '%n %U:%G %a' "$file")"
    done
}

# Ends with the exit code of the command, which must be the wanted one.
ends_with()
{
    wanted=$1
    shift
    code=0
    "$@" >/tmp/said 2>&1 || code=$?
    [ $code -eq "$wanted" ] || {
        cat /tmp/said
        fail "exit code $code instead of $wanted: $*"
    }
}

headline "The board is initialised, up and configured"
systemctl is-active orblink-init.service orblink-config.service || fail "a unit is not active"
expect_mode $regions $keys
ends_with 0 orblinkctl config diff --startup
ends_with 0 orblinkctl config verify
orblinkctl -o kv port 0:2 | grep -x 'ports.0.vlan=100' || fail "the startup configuration is not in force"

headline "It was so before anything configures the network"
for unit in orblink-init orblink-config; do
    systemctl show -p Before "$unit" | grep -qw network-pre.target || fail "$unit: order"
done

headline "Already initialised is success"
systemctl daemon-reload
ends_with 4 orblinkctl init
systemctl restart orblink-init.service
systemctl is-active orblink-init.service || fail "not active"
systemctl start orblink-config.service

headline "Members of the group may do everything, others nothing"
useradd --create-home --groups orblink member
useradd --create-home other
ends_with 0 runuser -u member -- orblinkctl port 0:3 vlan 7
ends_with 6 runuser -u other -- orblinkctl port

headline "What a user leaves who logs out is removed, the board's is not"
systemd-run --quiet --wait --pipe -p PAMName=login -p User=member \
    sh -c 'echo mine >/dev/shm/mine; orblinkctl port 0:3 vlan 8'
for _ in $(seq 50); do
    [ -e /dev/shm/mine ] || break
    sleep 10  # a tenth of a second on this board
done
[ ! -e /dev/shm/mine ] || fail "the user was not logged out"
expect_mode $regions $keys
ends_with 0 orblinkctl port 0:3

headline "Cleaning the folder of what is old leaves the key files"
echo 'd /var/tmp 1777 root root 1s' >/etc/tmpfiles.d/clean.conf
touch /var/tmp/witness
sleep 250
systemd-tmpfiles --clean
[ ! -e /var/tmp/witness ] || fail "nothing was cleaned"
expect_mode $keys
ends_with 0 orblinkctl port 0:3

said_at_bring_up()
{
    journalctl --sync
    journalctl -q -o cat --no-pager -t bring-up
}

headline "A bad startup configuration leaves the defaults, and says so in one line"
for bad in 'schema = 1\n[switch.0.port.2]\nvlan = 5000' 'nonsense' \
    'schema = 1\n[switch.1.port.2]\nspeed = "no such"'; do
    printf "$bad\n" >/etc/orblink/startup.toml
    before=$(said_at_bring_up | wc -l)
    ! systemctl restart orblink-config.service 2>/dev/null || fail "taken: $bad"
    for _ in $(seq 50); do
        [ "$(said_at_bring_up | wc -l)" -eq "$before" ] || break
        sleep 10
    done
    said=$(said_at_bring_up | tail -n +$((before + 1)))
    printf '%s\n' "$said"
    [ "$(printf '%s\n' "$said" | wc -l)" -eq 1 ] || fail "not one line"
    case $said in "/etc/orblink/startup.toml is not in force, the defaults are: "*) ;; *) fail "the line" ;; esac
    ends_with 0 orblinkctl config diff
    ends_with 0 orblinkctl config verify
done

# As after power-on.
forget()
{
    ipcrm --all=sem
    rm -f $regions
    orblink-vboard control mailbox resend switch >/dev/null
    orblink-vboard control mailbox resend phy >/dev/null
}

# under PROPERTY COMMAND...: as the units run, but for their other options.
under()
{
    property=$1
    shift
    systemd-run --quiet --wait --pipe -p Group=orblink -p UMask=0007 -p ReadWritePaths=/var/tmp \
        -p "$property" "$@" </dev/null
}

headline "Each option of the units with init, bring-up and recover"
rm /etc/orblink/startup.toml
grep -E '^[A-Z][A-Za-z]+=' /consumer/hardening.conf | grep -vE '^(Group|UMask)=' >/tmp/options
while read -r option; do
    echo "$option"
    forget
    ends_with 0 under "$option" orblinkctl init
    ends_with 0 under "$option" /usr/libexec/orblink/bring-up
    ends_with 0 under "$option" orblinkctl recover
    ends_with 0 orblinkctl port
done </tmp/options
[ "$(wc -l </tmp/options)" -ge 15 ] || fail "looking in the wrong place"

headline "Options that are left out, and what they would do"
forget
ends_with 0 under "PrivateTmp=yes" orblinkctl init
ends_with 4 orblinkctl port
forget
ends_with 0 under "PrivateIPC=yes" orblinkctl init
ends_with 4 orblinkctl port
forget
ends_with 0 under UMask=0007 orblinkctl init
systemctl stop orblink-config.service orblink-init.service  # the last unit of the group counts
ends_with 0 under "RemoveIPC=yes" orblinkctl port
for _ in $(seq 50); do
    [ -e /dev/shm/obos_orblink_driver ] || break
    sleep 10
done
[ ! -e /dev/shm/obos_orblink_driver ] || fail "RemoveIPC has left the region"
forget
ends_with 1 under "RestrictAddressFamilies=AF_INET" orblinkctl --wait 3 init

headline "Options that are left out, and that the virtual board cannot show"
# It answers before the kernel looks at paths and at namespaces. What a real board would miss is seen
# at a witness.
touch /dev/witness
ends_with 0 under UMask=0007 test -e /dev/witness
ends_with 1 under PrivateDevices=yes test -e /dev/witness
for option in PrivateDevices=yes ProtectKernelTunables=yes PrivateNetwork=yes; do
    forget
    ends_with 0 under $option orblinkctl init
    ends_with 0 under $option /usr/libexec/orblink/bring-up
    ends_with 0 under $option orblinkctl recover
done

headline "Without the exemption the key files would go"
rm /usr/lib/tmpfiles.d/orblink.conf
sleep 250
systemd-tmpfiles --clean
[ ! -e /var/tmp/orblink_sem ] || fail "a key file is there"
echo "All as it should be"
