#!/bin/sh
# examples_test.sh SOURCE_DIR BUILD_DIR
# The examples of the manual's section 3 and the programs of docs/programs.md compile without a warning
# and do on a virtual board what they say.
set -eu
source=$1
build=$2
PATH=$build/bin:$PATH
export PATH PYTHONPATH="$source/bindings/python" LD_LIBRARY_PATH="$build/lib" PYTHONDONTWRITEBYTECODE=1
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

# A machine that lends out no boards has none to test on.
orblink-vboard run --board "$source/virtual_board/boards/no_devices.toml" -- true || exit 77

# The only block of that language.
block()
{
    sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$source/docs/programs.md" | sed '1d;$d'
}
block c >"$place/guide.c"
block cpp >"$place/guide_cpp.cpp"
block python >"$place/guide.py"
for file in "$source"/docs/man/examples/*.c "$place/guide.c"; do
    kind=$(grep -q '^int main' "$file" || echo -shared)
    gcc -std=c11 -Wall -Wextra -Wpedantic -Werror -fPIC $kind -I "$source" "$file" \
        -L "$build/lib" -lorblink -lobplatform -o "$place/$(basename "$file" .c)"
done
g++ -std=c++20 -Wall -Wextra -Wpedantic -Werror -I "$source" -I "$source/bindings/cpp" \
    "$place/guide_cpp.cpp" -L "$build/lib" -lorblink -lobplatform -o "$place/guide_cpp"

cd "$place"
orblink-vboard run --time-scale 0.001 --board "$source/virtual_board/boards/phy.toml" -- sh -eu -c '
    ./orblink_mailbox | grep -x "[0-9]* bytes" >mailbox.said
    orblink-vboard control mailbox resend switch
    ./orblink_board | tail -n 5 >board.said
    orblink-vboard control mailbox resend
    orblinkctl -q init >/dev/null
    orblinkctl -q up 0 >/dev/null
    orblinkctl -q phy 0 up >/dev/null
    for program in orblink_init orblink_ports ethphy_init ethphy_registers \
        orblink_reset orblink_bridging orblink_features orblink_platform \
        ethphy_reset ethphy_state guide guide_cpp; do
        ./$program >$program.said 2>&1 || { echo "$program fails"; cat $program.said; exit 1; }
    done
    python3 guide.py >guide_py.said
    orblinkctl mac-vlan 0 -o kv >mac_vlan.said'

says()
{
    [ "$(cat "$1.said")" = "$2" ] || { echo "$1 says: $(cat "$1.said")"; exit 1; }
}
says mailbox "184 bytes"
says board "$(printf '02:00:5e:00:02:0%d\n' 1 2 3 4 5)"
says orblink_init "switch 0: 8 ports"
says orblink_ports "port 1: 1 Gb/s"
says orblink_features "0 copied, 0 walked"
says orblink_platform ""
says ethphy_init "2 PHYs"
says ethphy_registers 0a5a8023
grep -q "^enabled, link " ethphy_state.said
says guide up
says guide_cpp "up at 1 Gb/s"
says guide_py "Port(0, 1) up"
grep -q '=02:00:00:00:00:09$' mac_vlan.said
