#!/bin/sh
# board_test.sh BUILD_DIR SOURCE_DIR
# The Python module on a virtual board, and the example that plots counters.
set -eu
build=$1
source=$2
PATH=$build/bin:$PATH
PYTHONPATH=$source/bindings/python
LD_LIBRARY_PATH=$build/lib
PYTHONDONTWRITEBYTECODE=1
PYTHONUTF8=1
export PATH PYTHONPATH LD_LIBRARY_PATH PYTHONDONTWRITEBYTECODE PYTHONUTF8

# A machine that lends out no boards has none to test on.
orblink-vboard run --board "$source/virtual_board/boards/no_devices.toml" -- true || exit 77

orblink-vboard run --time-scale 0.05 --board "$source/virtual_board/boards/phy.toml" -- sh -eu -c '
    orblinkctl -q init >/dev/null
    orblinkctl -q up 0 >/dev/null
    orblinkctl -q phy 0 up >/dev/null
    orblink-vboard control counter sw0:2 etherStatsPkts 5
    python3 "$1/tests/bindings/python/on_board.py"
    # A sleep of the shell is a twentieth as long here; Python sleeps until a time of the clock.
    while sleep 0.2; do orblink-vboard control counter sw0:3 aFramesReceivedOK 1000; done &
    python3 "$1/bindings/python/examples/plot_port_counters.py" --interval 0.3 --samples 3
    kill $!
    python3 -c "import matplotlib" 2>/dev/null || {
        ! said=$(python3 "$1/bindings/python/examples/plot_port_counters.py" --png no.png 2>&1) || exit 1
        [ "$said" = "--png takes matplotlib, which is not installed" ]
    }' sh "$source" >"${TMPDIR:-/tmp}/plot.$$" || {
    cat "${TMPDIR:-/tmp}/plot.$$"
    rm -f "${TMPDIR:-/tmp}/plot.$$"
    exit 1
}
plot=$(cat "${TMPDIR:-/tmp}/plot.$$")
rm -f "${TMPDIR:-/tmp}/plot.$$"
echo "$plot"
# Port 3 has grown, the other ports have not.
echo "$plot" | grep -q '^aFramesReceivedOK a second, at most [1-9]'
echo "$plot" | grep -q '^port 3 |.*█.*| [0-9]'
[ "$(echo "$plot" | grep -cx 'port [0-9] |   | 0.0')" -eq 7 ]
