#!/bin/bash
# boot.sh PACKAGES CACHE
# Boots a Debian with the packages on a virtual board: every process of it, the first one included,
# finds the board's hardware, and the units run as they are shipped. What is looked at there is in
# in_booted_debian.sh. Takes root.
set -euo pipefail
cd "$(dirname "$0")/../.."
packages=$(realpath "$1")
archive=$(realpath "$2")/fresh.tar
. packaging/debian_root.sh

place=$(mktemp -d)
trap 'remove_root "$place/root"; rm -rf "$place"' EXIT
root=$place/root
unpack_root "$archive" "$root"
mkdir "$root/packages" "$root/consumer"
cp "$packages"/*_amd64.deb "$root/packages"
rm "$root"/packages/*-dbgsym_*
cp tests/packaging/in_booted_debian.sh packaging/boot/hardening.conf "$root/consumer"
in_root "$root" sh -c 'apt-get install -q -y --no-install-recommends /packages/*.deb'

# The look around is the last thing that starts, and ends the system.
cat >"$root/etc/systemd/system/look-around.service" <<'UNIT'
[Unit]
After=multi-user.target
[Service]
Type=oneshot
ExecStart=/bin/sh /consumer/in_booted_debian.sh
ExecStopPost=/bin/sh -c 'echo "$SERVICE_RESULT" >/result'
StandardOutput=file:/looked
StandardError=inherit
TimeoutStartSec=300
[Install]
WantedBy=default.target
UNIT
cat >"$root/etc/orblink/startup.toml" <<'TOML'
schema = 1
[switch.0.port.2]
vlan = 100
TOML
# Tired of users at once, so that what it removes for them goes at once.
mkdir -p "$root/etc/systemd/logind.conf.d"
printf '[Login]\nUserStopDelaySec=0\nRemoveIPC=yes\n' >"$root/etc/systemd/logind.conf.d/test.conf"
in_root "$root" systemctl enable orblink-init.service orblink-config.service look-around.service

mkdir "$place/board"
timeout 400 "$root/usr/bin/orblink-vboard" run --board "$root/usr/share/orblink/boards/two_switches.toml" \
    --time-scale 0.01 --socket "$place/board/socket" -- \
    systemd-nspawn --quiet --directory="$root" --machine=orblink-test --register=no --keep-unit \
    --bind="$place/board:/board" --setenv=ORBLINK_VBOARD=/board/socket \
    --console=pipe --boot </dev/null || true
cat "$root/looked" || journalctl --directory="$root/var/log/journal" --no-pager | tail -100
[ "$(cat "$root/result")" = success ]
