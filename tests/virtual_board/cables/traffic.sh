# What the scripts of the tests begin with, on a board of lan.toml or lan_linux.toml; S is their
# directory, and hosts_virtual.sh or hosts_linux.sh has been read: "at HOST" prints what a command
# on a host begins with.
set -e
ctl() { orblinkctl -q "$@" >/dev/null; }
on() {
    host=$1
    shift
    $(at "$host") "$@"
}
send() {
    octets=$(echo "$2" | sed 's/../&:/g; s/:$//')
    on "$1" mausezahn "$(interface_of "$1")" -q -c "${3:-1}" "$octets" >/dev/null 2>&1
}
hear() {
    $(at "$1") tcpdump -i "$(interface_of "$1")" -Z "$(id -un)" \
        --immediate-mode -s 2048 -B 8192 -Q "${2:-in}" -U -n -w "$S/$1.pcap" 2>"$S/$1.log" &
    echo $! >"$S/$1.pid"
    until grep -q 'listening on' "$S/$1.log"; do sleep 0.05; done
}
heard() {
    sleep 10
    kill -TERM "$(cat "$S/$1.pid")"
    wait "$(cat "$S/$1.pid")"
}
reach() {
    on "$1" ip neigh flush all 2>/dev/null
    if on "$1" ping -c 1 -W 1 "$2" >/dev/null 2>&1; then echo yes; else echo no; fi
}

ctl --wait 60 init
ctl up 0 --defaults
ctl aging 0 5
begin
until orblinkctl port 0:4 link | grep -q yes; do sleep 0.05; done
