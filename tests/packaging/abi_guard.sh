#!/bin/bash
# abi_guard.sh BUILD_DIR
# Holds that packaging/abi/check.sh accepts this tree and finds each way in which a copy of it breaks
# what was built with it: a parameter that grows, a symbol that goes, a HAL slot that moves, a field that
# moves within a record of the same size, a constant with another value, a type that nobody recorded.
set -euo pipefail
cd "$(dirname "$0")/../.."
builds=$(realpath -m "$1")

packaging/abi/check.sh "$builds"

copy=$builds/broken/tree
rm -rf "$copy"
mkdir -p "$copy"
tar -c --exclude=./build --exclude=./.git . | tar -C "$copy" -x

# replace FILE FROM TO: in the copy; what is not found was not broken.
replace()
{
    python3 - "$copy/$1" "$2" "$3" <<'PYTHON'
import sys
file, old, new = sys.argv[1:]
text = open(file).read()
if text.count(old) != 1:
    sys.exit(f"{file}: {old!r} stands there {text.count(old)} times")
open(file, "w").write(text.replace(old, new))
PYTHON
}

narrow="ORBLINK_SetLanPortPcp(uint8_t DevIdx, uint8_t LanPortIdx, uint8_t Pcp)"
for file in switch/orblink_bridging.h switch/operations/lan_port.cpp; do
    replace $file "$narrow" "${narrow/uint8_t Pcp/uint16_t Pcp}"
done
replace switch/operations/lan_port.cpp "stored = Pcp;" "stored = static_cast<uint8_t>(Pcp);"
replace cmake/liborblink.map "    ORBLINK_SmiWrite;" ""
slot="    int (*EnableRgmiiDelay)(int DevIdx, int RgmiiPortIdx);"
replace switch/orblink_hal.h "$slot" ""
replace switch/orblink_hal.h "    int (*EnableIgmpSnooping)" "$slot
    int (*EnableIgmpSnooping)"
replace hals/vswitch/vswitch_hal.h "uint64_t etherStatsOctets;  " "uint64_t movedOctets;"
replace hals/vswitch/vswitch_hal.h "uint64_t etherStatsPkts; " "uint64_t etherStatsOctets;"
replace common/iface.h "OB_IFACE_SGMII = 5" "OB_IFACE_SGMII = 8"
replace common/iface.h "enum OB_Speed {" "enum OB_Unrecorded {
    OB_UNRECORDED = 0
};
enum OB_Speed {"

! said=$("$copy/packaging/abi/check.sh" "$builds/broken" amd64 2>&1) || {
    echo "No break was found"
    exit 1
}
for found in "ORBLINK_SetLanPortPcp(uint8_t, uint8_t, uint8_t)" "function int ORBLINK_SmiWrite" \
    EnableRgmiiDelay etherStatsOctets OB_IFACE_SGMII "OB_Unrecorded is in no record"; do
    grep -qF "$found" <<<"$said" || {
        printf '%s\nNot found: %s\n' "$said" "$found"
        exit 1
    }
done
