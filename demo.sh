#!/bin/bash
# demo.sh [--build-dir DIR]
# Builds both ABIs and shows the library at work on a virtual board: two switches and a PHY. Every
# step checks what it shows; the exit code is not 0 when one went wrong.
set -eu

cd "$(dirname "$0")"
builds=$PWD/build
if [ "${1:-}" = --build-dir ] && [ $# -eq 2 ]; then
    builds=$(realpath -m "$2")
elif [ $# -ne 0 ]; then
    echo "demo.sh [--build-dir DIR]" >&2
    exit 2
fi
mkdir -p "$builds"

scripts/install-packages.sh >"$builds/packages.log" 2>&1 || {
    cat "$builds/packages.log" >&2
    exit 1
}

for preset in release release-i386; do
    echo "Building $preset"
    scripts/build.sh "$preset" "$builds/$preset" "$builds/demo-$preset.log" -- installed
done

bin=$builds/release/bin
failed=0
"$bin/orblink-vboard" run --board tools/demo_board.toml -- \
    tools/demo_steps.sh "$bin" "$builds/release-i386/bin" || failed=1
tools/demo_two_hosts.sh "$bin" || failed=1
tools/demo_linux_switch.sh "$bin" || failed=1

echo
if [ $failed -ne 0 ]; then
    echo "Some checks went wrong"
    exit 1
fi
echo "All steps went as they should."
