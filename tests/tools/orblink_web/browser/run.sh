#!/bin/bash
# run.sh BUILD_DIR [--seconds N] [--screenshots DIR]
# Opens the page of a virtual board in a headless Chromium, then has 50 clients follow it for N
# seconds (60). Lines that begin with "| " are figures. Skipped by name where there is no Chromium.
set -euo pipefail

python=/usr/bin/python3 # whose modules Debian installs
if ! command -v chromium >/dev/null; then
    echo "skipped: browser (no chromium)"
    exit 0
fi
if ! "$python" -c 'import websocket' 2>/dev/null; then
    echo "skipped: browser (no python3-websocket)"
    exit 0
fi
exec "$python" "$(dirname "$0")/browser_test.py" "$@"
