# Where the hosts of traffic.sh are: in network namespaces of their own, on cables to the kernel's
# switch. The SoC has the switch's own interface, in the namespace that this begins in.
at() {
    case $1 in
        soc) echo env ;;
        *) echo "nsenter -t $(cat "$S/$1.host") -n" ;;
    esac
}
interface_of() {
    case $1 in
        soc) echo br0 ;;
        a) echo lan1 ;;
        b) echo lan2 ;;
        c) echo lan3 ;;
        d) echo lan4 ;;
    esac
}
number=0
echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6
for host in a b c d; do
    number=$((number + 1))
    # Without a share of what the script's output is read by.
    unshare -n sh -c 'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6
        echo $$ >"$0"; exec tail -f /dev/null' "$S/$host.host" >/dev/null 2>&1 &
    until test -s "$S/$host.host"; do sleep 0.05; done
    ip link add lan$number type veth peer name lan$number address 02:00:00:00:00:0$number \
        netns "$(cat "$S/$host.host")"
    [ $host = d ] || $(at $host) ip address add 10.0.0.$number/24 dev lan$number
    $(at $host) ip link set lan$number up
done
# Its reset line is the board's alone and stops nothing; somebody spoils what was set.
lose_settings() {
    ctl down 0
    bridge vlan delete vid 100 dev lan1
    bridge vlan delete vid 100 dev br0 self
    bridge vlan add vid 7 pvid untagged dev lan3
    tc qdisc delete dev lan3 clsact
}
begin() {
    ip link set br0 address 02:00:00:00:00:64
    ip address add 10.0.0.100/24 dev br0
}
