#!/bin/bash
# by_hand.sh BUILD_DIR CACHE
# Installs what demo.sh builds, by the commands of docs/installing.md, into the fresh Debian of CACHE,
# and looks whether programs, library, manual, group and key files are there and work.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$(realpath "$1")
archive=$(realpath "$2")/fresh.tar
. packaging/debian_root.sh

commands=$(sed -n '/^sudo cmake --install/,/^```$/p' docs/installing.md | sed '$d; s/^sudo //')
[ "$(head -n 1 <<<"$commands")" = "cmake --install build/release" ] || {
    echo "docs/installing.md does not say how to install by hand"
    exit 1
}

place=$(mktemp -d)
trap 'remove_root "$place/root"; rm -rf "$place"' EXIT
root=$place/root
unpack_root "$archive" "$root"
# The list of what is installed goes beside it: the build may be another user's.
sed "s|(WRITE \"[^\"]*/\${CMAKE_INSTALL_MANIFEST}\"|(WRITE \"$place/manifest\"|" \
    "$build/cmake_install.cmake" >"$place/install.cmake"
DESTDIR=$place/installed cmake -P "$place/install.cmake"
tar -C "$place/installed" --owner=0 --group=0 -c . | as_root tar -C "$root" -x

in_root "$root" apt-get install -q -y --no-install-recommends python3
# Nothing runs there that could be told; boot.sh tells what does.
tail -n +2 <<<"$commands" | in_root "$root" env SYSTEMD_OFFLINE=1 sh -ex
in_root "$root" sh -ex <<'LOOK'
PATH=/usr/local/bin:$PATH
for file in bin/orblinkctl bin/orblink-web bin/orblink-vboard bin/orblink-hal-check \
    lib/systemd/system/orblink-init.service libexec/orblink/bring-up \
    share/man/man1/orblinkctl.1 share/man/man3/ORBLINK_SetPortMirror.3 share/man/man7/orblink-messages.7; do
    [ -s /usr/local/$file ]
done
systemd-analyze verify --man=no orblink-init.service orblink-config.service
[ "$(stat -c '%U:%G %a' /var/tmp/orblink_sem /var/tmp/ethphy_sem | sort -u)" = "root:orblink 660" ]
orblink-vboard run --board /usr/local/share/orblink/boards/phy.toml --time-scale 0.01 -- \
    sh -c 'orblinkctl init && orblinkctl up 0 && orblinkctl port &&
        python3 -c "import orblink; print(orblink.Switch(0).port(1))"'
LOOK
echo "All of it works"
