#!/bin/bash
# documented.sh MAP DOCUMENT: each operation under a lock has its line in the table of killed callers.
set -eu
map=$1
document=$2
missing=0
count=0
for name in $(sed -n 's/^ *\(\(ORBLINK\|ETHPHY\)_[A-Za-z0-9]*\);$/\1/p' "$map"); do
    case $name in
    # Those have a table of their own, or take no lock.
    *_InitOnce | ORBLINK_isBatteryMode | ORBLINK_GetMacAddresses) continue ;;
    esac
    count=$((count + 1))
    grep -q "^| \`$name\` | [0-9]" "$document" || { echo "$document: no line for $name"; missing=1; }
done
[ "$count" -gt 60 ] || { echo "$map: only $count operations found"; exit 1; }
exit "$missing"
