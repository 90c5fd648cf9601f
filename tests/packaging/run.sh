#!/bin/bash
# run.sh BUILD_DIR
# Compares the libraries' interfaces with those recorded; makes the packages of both architectures
# twice and holds that they are the same bytes and that lintian finds nothing; builds the libraries for
# an older C library; installs the packages into a fresh Debian, uses them there as others would, boots
# it, and removes everything again; takes a clone of what is committed through README.md. What is
# fetched and made for it is kept in BUILD_DIR/packages.
set -euo pipefail
cd "$(dirname "$0")/../.."
place=$(realpath -m "$1")/packages
release=$(realpath -m "$1")/release
. packaging/debian_root.sh
mkdir -p "$place"

stage()
{
    printf '%s    %s\n' "$(date +%T)" "$*"
}

logged()
{
    local log=$place/$1.log
    shift
    "$@" >"$log" 2>&1 || {
        tail -n 100 "$log" >&2
        exit 1
    }
}

stage "interfaces as recorded"
logged abi tests/packaging/abi_guard.sh "$place/abi"

# As docs/installing.md says, but for the folder.
documented=$(grep -x 'packaging/build\.sh .* --output packages' docs/installing.md)
stage "building both architectures, twice"
for number in 1 2; do
    rm -rf "$place/$number"
    logged "build-$number" ${documented/%packages/$place\/$number} --cache "$place/cache"
done

stage "same bytes"
different=$(diff <(cd "$place/1" && sha256sum *.deb) <(cd "$place/2" && sha256sum *.deb)) || {
    echo "$different" >&2
    exit 1
}

printf '            %s packages\n' "$(ls "$place"/1/*.deb | wc -l)"

stage "lintian"
logged lintian lintian --allow-root --fail-on error,warning,info --display-info --info \
    --tag-display-limit 0 "$place"/1/*.changes

stage "an old Debian"
logged old tests/packaging/old_debian.sh "$place" "$place"/1 "$place/cache"
stage "a fresh Debian"
logged fresh tests/packaging/fresh_debian.sh "$place"/1 "$place/cache"
stage "a clean clone"
logged clone tests/packaging/clean_clone.sh "$place"/1
stage "an installation by hand"
[ -e "$release/bin/orblink-web" ] ||
    scripts/build.sh release "$release" "$place/release.log" -- installed
logged by_hand tests/packaging/by_hand.sh "$release" "$place/cache"
stage "boot"
logged boot tests/packaging/boot.sh "$place"/1 "$place/cache"
