#!/bin/sh
# install-packages.sh [--analysis] [--browser] [--packaging] [--vm]
# Installs the Debian 12 packages that building, testing and the demo need. When all are there it
# needs no rights and does nothing; without the rights it says what to ask an administrator for.
#   --analysis   also what the analysis of the whole tree needs
#   --browser    also what the tests of the page in a browser need
#   --packaging  also what making and testing the Debian packages needs
#   --vm         also what the tests in a virtual machine need
set -eu

packages="
    binutils
    ccache
    clang
    clang-format
    clang-tidy
    cmake
    cppcheck
    doxygen
    ethtool
    fish
    g++
    g++-multilib
    gcovr
    googletest
    iperf3
    iproute2
    iputils-ping
    libbenchmark-dev
    libboost-dev
    libclang-rt-14-dev
    libcli11-dev
    libgmock-dev
    libgtest-dev
    librsvg2-bin
    libtomlplusplus-dev
    lldpd
    llvm
    mandoc
    musl-tools
    mypy
    net-tools
    netsniff-ng
    ninja-build
    nlohmann-json3-dev
    pkgconf
    procps
    python3
    socat
    tcpdump
    tshark
    valgrind
    zsh
"

for option in "$@"; do
    case $option in
        --analysis) packages="$packages libclang-14-dev llvm-14-dev" ;;
        --browser) packages="$packages chromium fonts-dejavu-core python3-websocket" ;;
        --vm) packages="$packages busybox-static cpio qemu-system-x86 systemd" ;;
        --packaging)
            packages="$packages abigail-tools arch-test debhelper dh-python lintian mmdebstrap systemd-container uidmap"
            ;;
    esac
done

missing=""
for package in $packages; do
    state=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
    case "$state" in
        ii*) ;;
        *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" -ne 0 ]; then
    as_root=sudo
    # A terminal can be asked for the password; without one only a sudo that needs none will do.
    if ! { command -v sudo && { [ -t 0 ] || sudo -n true; }; } >/dev/null 2>&1; then
        echo "Packages are missing, and user $(id -un) cannot install them. Ask an administrator for:"
        echo "    apt-get update && apt-get install --no-install-recommends$missing"
        exit 1
    fi >&2
fi
echo "Installing:$missing"
$as_root apt-get update -q
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
