#!/bin/sh
# Builds both ABIs and shows the library at work on a virtual board: two switches and a PHY. Every
# step checks what it shows; the exit code is not 0 when one went wrong.
set -eu

cd "$(dirname "$0")"
root=$PWD
scripts/install-packages.sh

log=$(mktemp)
trap 'rm -f "$log"' EXIT
targets="orblinkctl orblink-vboard orblink_vboard_preload
    vswitch_hal ethphy_ieee8023_hal phyk20_hal"
for preset in release release-i386; do
    echo "Building $preset"
    cmake --preset "$preset" >"$log" 2>&1 &&
        cmake --build --preset "$preset" --target $targets >>"$log" 2>&1 || {
        cat "$log" >&2
        exit 1
    }
done

bin=$root/build/release/bin
"$bin/orblink-vboard" run --board tools/demo_board.toml \
    --lib-dir "$root/build/release/lib" --lib-dir "$root/build/release-i386/lib" \
    -- tools/demo_steps.sh "$bin" "$root/build/release-i386/bin"
