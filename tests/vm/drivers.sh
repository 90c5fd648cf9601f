# What only drivers of chips have: speed, duplex, EEE, counters, a cable that is unplugged, a device
# that goes away. The ports of the switch are interfaces of the machine, each with a host at the other
# end of its cable. Read by cases.sh.
drivers=/run/drivers
hosts_at=192.0.2

on_drivers() { orblink-vboard attach --socket $drivers/socket -- "$@"; }
port() { on_drivers orblinkctl -o kv port 0:"$1" | sed -n "s/^ports\.0\.$2=//p"; }

# The interface with that address; bridges have that of a port.
named()
{
    for place in /sys/class/net/*; do
        if [ -e "$place/device" ] && [ "$(cat "$place/address")" = "$1" ]; then
            basename "$place"
            return 0
        fi
    done
    return 1
}

# until_is WANTED COMMAND...: within ten seconds.
until_is()
{
    wanted=$1
    shift
    for _ in $(seq 20); do
        [ "$("$@")" != "$wanted" ] || return 0
        sleep 0.5
    done
    echo "is $("$@") instead of $wanted: $*"
    return 1
}

# A host with a network of its own.
put_host()
{
    unshare -n sleep infinity &
    host=$!
    until [ "$(readlink /proc/$host/ns/net)" != "$(readlink /proc/self/ns/net)" ]; do sleep 0.1; done
    interface=$(named "02:00:00:00:0$1:02")
    ip link set "$interface" netns $host
    nsenter -t $host -n ip address add $hosts_at."$1"/24 dev "$interface"
    nsenter -t $host -n ip link set "$interface" up
    echo $host >$drivers/host"$1"
}

from_host1() { nsenter -t "$(cat $drivers/host1)" -n "$@"; }

# The monitor of the machine takes it, once it is through with what it was sent by chance before.
plug()
{
    exec 9<>/dev/ttyS2
    stty raw -echo <&9
    for _ in 1 2 3; do
        printf '\nset_link %s %s\n' "$1" "$2" >&9
        timeout 3 cat <&9 >/dev/null || true
    done
    exec 9>&-
}

machines_interfaces_are_a_switch()
{
    named 02:00:00:00:01:01 >/dev/null || {
        echo "this machine has not got the interfaces"
        return 77
    }
    mkdir -p $drivers
    printf 'bridge = "br-chips"\ncpu_port = 0\n[ports]\n1 = "%s"\n2 = "%s"\n' \
        "$(named 02:00:00:00:01:01)" "$(named 02:00:00:00:02:01)" >$drivers/linux-switch-0.toml
    block_of_manual 2 >$drivers/board.toml
    put_host 1
    put_host 2
    ORBLINK_LINUX_SWITCH=$drivers orblink-vboard serve --board $drivers/board.toml \
        --socket $drivers/socket >$drivers/log 2>&1 &
    until [ -S $drivers/socket ]; do sleep 0.1; done
    ORBLINK_LINUX_SWITCH=$drivers on_drivers orblinkctl init
    on_drivers orblinkctl up 0 --defaults
    until_is true port 1 link
    until_is true port 2 link
    from_host1 ping -c 3 $hosts_at.2
}

needs_the_interfaces()
{
    [ -S $drivers/socket ] || { echo "without a switch of the machine's interfaces"; exit 77; }
}

# shown INTERFACE LINE: what ethtool says of it.
shown() { ethtool "$1" | sed -n "s/^[[:space:]]*$2: //p"; }
link_mode() { echo "$(port "$1" link_speed) $(port "$1" link_duplex)"; }

speed_and_duplex_are_forced()
{
    needs_the_interfaces
    negotiates=$(named 02:00:00:00:01:01) fixed=$(named 02:00:00:00:02:01)
    on_drivers orblinkctl port 0:2 speed 100 half
    until_is 100Mb/s shown "$fixed" Speed
    until_is Half shown "$fixed" Duplex
    until_is "100 half" link_mode 2
    on_drivers orblinkctl port 0:2 speed 1000 full
    until_is "1000 full" link_mode 2
    until_is on shown "$negotiates" Auto-negotiation
    on_drivers orblinkctl port 0:1 speed 100 full
    until_is off shown "$negotiates" Auto-negotiation
    on_drivers orblinkctl port 0:1 speed auto
    until_is on shown "$negotiates" Auto-negotiation
    until_is true port 1 link
}

speed_that_the_chip_has_not_got_changes_nothing()
{
    needs_the_interfaces
    interface=$(named 02:00:00:00:01:01)
    refused on_drivers orblinkctl -v port 0:1 speed 10000 full >$drivers/said 2>&1
    cat $drivers/said
    grep "Cannot set the speed of $interface, DevIdx=0" $drivers/said
    until_is on shown "$interface" Auto-negotiation
    until_is true port 1 link
}

link_follows_the_cable()
{
    needs_the_interfaces
    plug port1 off
    until_is false port 1 link
    plug port1 on
    until_is true port 1 link
    until_is "1000 full" link_mode 1
}

counted() { on_drivers orblinkctl -o kv port 0:"$1" counters | sed -n "s/.*\.$2=//p"; }

counters_count_what_passes()
{
    needs_the_interfaces
    in=$(counted 1 aFramesReceivedOK) out=$(counted 2 aFramesTransmittedOK)
    from_host1 ping -c 10 -i 0.2 $hosts_at.2
    [ $(($(counted 1 aFramesReceivedOK) - in)) -ge 10 ]
    [ $(($(counted 2 aFramesTransmittedOK) - out)) -ge 10 ]
}

eee_is_the_drivers()
{
    needs_the_interfaces
    found=
    for number in 1 2; do
        ethtool --show-eee "$(named 02:00:00:00:0$number:01)" 2>/dev/null || continue
        found="$found $number"
    done
    if [ -z "$found" ]; then
        refused on_drivers orblinkctl port 0:1 eee on
        echo "no chip of this machine has EEE"
        return 77
    fi
    for number in $found; do
        on_drivers orblinkctl port 0:"$number" eee on
        ethtool --show-eee "$(named 02:00:00:00:0"$number":01)" | grep 'EEE status: enabled'
        on_drivers orblinkctl port 0:"$number" eee off
        ethtool --show-eee "$(named 02:00:00:00:0"$number":01)" | grep 'EEE status: disabled'
    done
}

chip_that_comes_back_has_its_settings_again()
{
    needs_the_interfaces
    interface=$(named 02:00:00:00:02:01)
    device=$(basename "$(dirname "$(dirname "$(realpath /sys/class/net/"$interface")")")")
    driver=$(realpath /sys/class/net/"$interface"/device/driver)
    on_drivers orblinkctl port 0:2 speed 100 half
    on_drivers orblinkctl port 0:2 vlan 7
    echo "$device" >"$driver"/unbind
    refused on_drivers orblinkctl port 0:2 link
    echo "$device" >"$driver"/bind
    # As systems do that give names by place; this one takes the first that is free.
    back=$(named 02:00:00:00:02:01)
    [ "$back" = "$interface" ] || ip link set "$back" name "$interface"
    until_is true port 2 link
    until_is "100 half" link_mode 2
    bridge vlan show dev "$interface" | grep '7 PVID Egress Untagged'
}

a_case Drivers.MachinesInterfacesAreASwitch machines_interfaces_are_a_switch
a_case Drivers.SpeedAndDuplexAreForced speed_and_duplex_are_forced
a_case Drivers.SpeedThatTheChipHasNotGotChangesNothing speed_that_the_chip_has_not_got_changes_nothing
a_case Drivers.LinkFollowsTheCable link_follows_the_cable
a_case Drivers.CountersCountWhatPasses counters_count_what_passes
a_case Drivers.EeeIsTheDrivers eee_is_the_drivers
a_case Drivers.ChipThatComesBackHasItsSettingsAgain chip_that_comes_back_has_its_settings_again
