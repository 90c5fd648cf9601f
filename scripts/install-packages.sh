#!/bin/sh
# Installs the Debian 12 packages that building, testing and the demo need; does nothing when all are there.
set -eu

packages="
    clang
    cmake
    g++
    g++-multilib
    gcovr
    googletest
    iperf3
    iproute2
    iputils-ping
    libclang-rt-14-dev
    libcli11-dev
    librsvg2-bin
    libtomlplusplus-dev
    netsniff-ng
    ninja-build
    nlohmann-json3-dev
    procps
    socat
    tcpdump
"

missing=""
for package in $packages; do
    state=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
    case "$state" in
        ii*) ;;
        *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

root=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "install-packages: missing:$missing - run as root or install sudo" >&2
        exit 1
    }
    root=sudo
fi
echo "Installing:$missing"
$root apt-get update -q
$root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
