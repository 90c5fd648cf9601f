#!/bin/sh
# typed.sh SOURCE_DIR
# The module and its example say all of their types, and rightly.
set -eu
cd "$1/bindings/python"
cache=$(mktemp -d)
trap 'rm -rf "$cache"' EXIT
MYPYPATH=. mypy --config-file mypy.ini --cache-dir "$cache" orblink examples/plot_port_counters.py
