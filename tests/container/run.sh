#!/bin/bash
# run.sh BUILD_DIR LOG_DIR [--short] [--no-tun]
# Runs the tests of a build as a plain container would (plain_container.c): as this user and, when
# that is root, as an ordinary user, too. None may fail, at least 95 % must run, not be skipped.
# Left out is what drives the kernel's own switch: its tests need network namespaces, each of them.
# --short: each tenth test. --no-tun: without /dev/net/tun; takes root.
set -euo pipefail
build=$(realpath "$1")
logs=$2
selection=(-E "LinuxSwitch(Faults)?[.]|/Linux\$")
for option in "${@:3}"; do
    case $option in
        --short) selection+=(-I 1,,10) ;;
        --no-tun)
            [ ! -e /dev/net/tun ] ||
                exec unshare -m sh -c 'mount -t tmpfs none /dev/net; exec "$0" "$@"' "$0" "$@"
            ;;
        *)
            sed -n '2,6s/^# //p' "$0" >&2
            exit 2
            ;;
    esac
done

mkdir -p "$logs"
logs=$(realpath "$logs")
plain_container=$build/tests/plain_container

# A user who cannot write to the build keeps the records of ctest in a directory of his own.
run_as()
{
    local who=$1 log=$logs/$1.log own=$logs/$1
    shift
    mkdir -p "$own"
    echo "subdirs(\"$build\")" >"$own/CTestTestfile.cmake"
    chown "$who" "$own"
    if ! "$@" "$plain_container" ctest --test-dir "$own" --output-on-failure --timeout 20 \
        --no-tests=error -j "$(nproc)" "${selection[@]}" >"$log" 2>&1; then
        tail -n 100 "$log" >&2
        exit 1
    fi
    local all skipped
    all=$(sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$log")
    skipped=$(grep -c '\*\*\*Skipped' "$log" || true)
    echo "as $who: $all tests, $skipped skipped"
    if [ $((skipped * 20)) -gt "$all" ]; then
        grep '\*\*\*Skipped' "$log" >&2
        echo "more than one test in twenty was skipped" >&2
        exit 1
    fi
}

run_as "$(id -un)"
[ "$(id -u)" -eq 0 ] || exit 0
as_nobody=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
if "${as_nobody[@]}" test -r "$build/CTestTestfile.cmake" -a -x "$plain_container"; then
    run_as nobody "${as_nobody[@]}"
else
    echo "as nobody: left out, that user cannot read $build"
fi
