#!/bin/sh
# The steps of demo.sh, run inside the virtual board. Arguments: directories of the programs of the
# machine's own ABI and of i386.
set -u

native=$1
i386=$2
PATH=$native:$PATH
failures=0
step=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

headline() {
    step=$((step + 1))
    printf '\n=== %d. %s\n' "$step" "$*"
}

complain() {
    echo "WRONG: $*"
    failures=$((failures + 1))
}

# Runs and shows a command that must succeed; its output is kept for the checks.
run() {
    echo "\$ $*"
    "$@" >"$work/out" 2>"$work/err"
    code=$?
    cat "$work/out" "$work/err"
    [ $code -eq 0 ] || complain "exit code $code"
}

# A command that must end with the given exit code.
refused() {
    wanted=$1
    shift
    echo "\$ $*"
    "$@" >"$work/out" 2>"$work/err"
    code=$?
    cat "$work/out" "$work/err"
    [ $code -eq "$wanted" ] || complain "exit code $code instead of $wanted"
}

# What the last command printed must hold a line that matches.
expect() {
    cat "$work/out" "$work/err" | grep -Eq -- "$1" || complain "nothing matches '$1'"
}

since() {
    echo $(($(date +%s) - $1))
}

# Auto-negotiation takes a PHY a few seconds.
until_up() {
    for _ in $(seq 50); do
        orblinkctl phy 0 link | grep -q yes && return
        sleep 0.2
    done
}

headline "Before initialisation every command says so"
refused 4 orblinkctl port 0:2
expect 'not initialised'

headline "Initialisation from the board data that the application CPU sends"
run orblinkctl init
expect '^switch family: 2 found$'
expect '^phy family: 1 found$'
expect '^MAC address 02:00:5e:00:0d:05$'
refused 4 orblinkctl init
run orblink-vboard control journal --kind mailbox
expect 'send'

headline "The wiring and the stored settings"
run orblinkctl show
expect '^switch 0: never brought up, 8 ports$'
expect '^0:7 .* rgmii '
expect '^PHY 0: '

headline "Bring-up of switch 0 at real time, with the library's log lines"
start=$(date +%s)
run orblinkctl -v up 0
expect 'Switch is already enabled|finished|Enabling Ports done: bitmap = 0xff'
[ "$(since "$start")" -ge 3 ] || complain "the reset pulse took less than 3 s"
run orblinkctl port 0:1 link
expect ' yes +1000 +full$'

headline "The same bring-up of switch 1 by the i386 program"
run "$i386/orblinkctl" up 1 --defaults
expect '^switch 1: state enabled$'
run "$i386/orblinkctl" switch 1
expect '^state: enabled$'

headline "The chip registers that resulted"
run orblink-vboard control reg sw0 0-2
expect '^0x00 0x5608$'
run orblinkctl reg 0 2 0x0-0x5
expect '^0x0003: 0x0001$'
run orblink-vboard control journal --kind gpio
expect 'write'
run orblink-vboard control journal --kind lane
expect 'lane'

headline "Reset: the chip is silent, the configuration is kept"
run orblinkctl down 0
expect '^switch 0: state in reset$'
refused 5 orblinkctl port 0:1 link
expect 'switch 0 is in reset: orblinkctl up 0'

headline "A VLAN set while the switch is held in reset is only stored"
run orblinkctl port 0:2 vlan 100
expect 'stored for the next bring-up'

headline "Restore: the VLAN is in the chip afterwards"
run orblinkctl up 0 --restore
run orblinkctl reg 0 2 3
expect '^0x0003: 0x0064$'
orblink-vboard control state sw0 | grep -q 'vlan: 100' || complain "the chip does not have VLAN 100"

headline "A station speaks and a cable is pulled"
run orblink-vboard control learn sw0:2 00:00:5e:00:53:01 100
run orblinkctl mac --vlan 100
expect '00:00:5e:00:53:01'
run orblink-vboard control link sw0:1 down
run orblinkctl port 0:1 link
expect ' no '

headline "Bring-up of the PHY"
run orblinkctl -v phy 0 up
until_up
run orblinkctl phy 0 link
expect ' yes +2500 +full$'

headline "A forced speed"
run orblinkctl phy 0 speed 100 full
until_up
run orblinkctl phy 0 link
expect ' yes +100 +full$'

headline "Raw registers of the PHY: clause 22 decoded, and an MMD"
run orblinkctl mdio 0 0x1 --decode
expect 'link up: 1'
run orblinkctl mmd 0 7 32
expect '^0x0020: 0x4002$'

headline "The i386 program sees the same board"
run "$i386/orblinkctl" port 0:2 vlan
expect ' 100 '
run "$i386/orblinkctl" mac --json
expect '"mac": "00:00:5e:00:53:01"'

headline "A word that is wrong is named, with what is allowed"
refused 2 orblinkctl port 0:2 vlan 4095
expect "bad VID '4095': allowed is 1 to 4094"

if [ $failures -ne 0 ]; then
    printf '\n%s\n' "$failures check(s) went wrong"
    exit 1
fi
