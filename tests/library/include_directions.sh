#!/bin/sh
# include_directions.sh SOURCE_DIR PUBLIC_HEADER...
# Each folder includes itself and the folders below it only; HAL libraries see public headers only.
set -eu
cd "$1"
shift
public=" $* "
status=0

# The folders that a folder may include beside itself.
allowed() {
    case $1 in
        platform) ;;
        common) echo platform ;;
        hwmbox) echo common platform ;;
        board) echo common platform hwmbox ;;
        switch) echo common platform board switch_hal_services ;;
        switch_hal_services) echo common platform board ;;
        phy) echo common platform board ;;
    esac
}

includes() {
    find -H "$1" -name '*.h' -o -name '*.cpp' -o -name '*.c' | sort |
        xargs grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' |
        sed -E 's/^([^:]*:[0-9]+):[^"]*"([^"]*)".*/\1 \2/'
}

refuse() {
    echo "$1: must not include \"$2\""
    status=1
}

seen=0
for folder in platform common hwmbox board switch switch_hal_services phy; do
    lines=$(includes $folder)
    while read -r place header; do
        [ -n "$place" ] || continue
        seen=$((seen + 1))
        case " $folder $(allowed $folder) " in
            *" ${header%%/*} "*) ;;
            *) refuse "$place" "$header" ;;
        esac
    done <<LINES
$lines
LINES
done

lines=$(includes hals)
while read -r place header; do
    [ -n "$place" ] || continue
    seen=$((seen + 1))
    case $header in
        hals/*) continue ;;
    esac
    case $public in
        *" $header "*) ;;
        *) refuse "$place" "$header" ;;
    esac
done <<LINES
$lines
LINES

[ $seen -gt 50 ] || { echo "only $seen includes found: looking in the wrong place"; exit 1; }
exit $status
