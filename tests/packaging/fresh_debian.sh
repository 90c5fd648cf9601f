#!/bin/bash
# fresh_debian.sh PACKAGES CACHE
# Installs the packages of both architectures into a fresh Debian, uses them there as others would
# (in_fresh_debian.sh), removes them, and holds that nothing is left. The system without them is kept
# in CACHE.
set -euo pipefail
cd "$(dirname "$0")/../.."
packages=$(realpath "$1")
archive=$(realpath "$2")/fresh.tar
. packaging/debian_root.sh

# What a system has that programs are compiled on and that boots.
make_root "$archive" amd64,i386 \
    "cmake, dbus, g++, g++-multilib, libpam-systemd, libstdc++6:i386, ninja-build, pkgconf, systemd-sysv"

place=$(mktemp -d)
trap 'remove_root "$place/root"; rm -rf "$place"' EXIT
root=$place/root
unpack_root "$archive" "$root"
as_root mkdir "$root/packages" "$root/consumer"
as_root cp "$packages"/*.deb "$root/packages"
as_root cp -r tests/packaging/. docs/*.md "$root/consumer"
in_root "$root" sh /consumer/in_fresh_debian.sh
