# What the scripts of traffic_test.cpp begin with, on the board of lan.toml; S is their directory.
set -e
ctl() { orblinkctl -q "$@" >/dev/null; }
on() {
    host=$1
    shift
    orblink-vboard exec "$host" -- "$@"
}
interface_of() {
    case $1 in
        soc) echo soc0 ;;
        a) echo lan1 ;;
        b) echo lan2 ;;
        c) echo lan3 ;;
        d) echo lan4 ;;
    esac
}
send() {
    octets=$(echo "$2" | sed 's/../&:/g; s/:$//')
    on "$1" mausezahn "$(interface_of "$1")" -q -c "${3:-1}" "$octets" >/dev/null 2>&1
}
hear() {
    orblink-vboard exec "$1" -- tcpdump -i "$(interface_of "$1")" -Z "$(id -un)" \
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

ctl init
ctl up 0 --defaults
ctl aging 0 5
until orblinkctl port 0:4 link | grep -q yes; do sleep 0.05; done
