#!/bin/sh
# readme_test.sh SOURCE_DIR BUILD_DIR
# README.md fits a screen, what it refers to is there, and its commands by hand draw its picture.
set -eu
cd "$1"
build=$2
status=0

lines=$(wc -l <README.md)
[ "$lines" -le 60 ] || { echo "README.md has $lines lines"; status=1; }
for file in $(grep -oE '\]\([^)#]*' README.md docs/*.md CONTRIBUTING.md SECURITY.md | grep -v '(http' |
    sed 's/\]($//; s/\](//; s/ /_/g'); do
    guide=${file%%:*}
    [ -e "$(dirname "$guide")/${file#*:}" ] || { echo "$guide refers to ${file#*:}"; status=1; }
done

# A machine that lends out no boards draws none.
"$build/bin/orblink-vboard" run --board virtual_board/boards/no_devices.toml -- true || exit 77

# The lines from the search path to the end of the block.
by_hand=$(sed -n '/^    PATH=/,/^$/p' README.md | sed "s|\$PWD/build/release|$build|; s/run --board/run --time-scale 0.001 --board/")
drawn=$(LC_ALL=C.UTF-8 timeout 15 sh -c "$by_hand" 2>/dev/null </dev/null | sed -n '/^┌/,$p') || status=1
shown=$(sed -n '/^```$/,/^```$/p' README.md | sed '1d;$d')
[ -n "$shown" ] && [ "$drawn" = "$shown" ] || {
    printf 'the commands draw:\n%s\n' "$drawn"
    status=1
}
exit $status
