#include <algorithm>
#include <cstring>

#include "tests/switch/operations/operation.h"

namespace obtest {
namespace {

// In the order of the table.
constexpr const char* kSlots[] = {"Init",
                                  "ResetSwitch",
                                  "GetSwitchCaps",
                                  "ForEachMacEntry",
                                  "EnableProviderBridgedMode",
                                  "DisableProviderBridgedMode",
                                  "SetLanPortVlan",
                                  "SetLanPortEgressTagging",
                                  "SetLanPortGroupId",
                                  "SetLanPortPcp",
                                  "GetPortCounters",
                                  "ResetPortCounters",
                                  "GetPortLink",
                                  "SetPhyPortSpeedDuplex",
                                  "EnablePort",
                                  "DisablePort",
                                  "EnableRgmiiDelay",
                                  "DisableRgmiiDelay",
                                  "EnableIgmpSnooping",
                                  "DisableIgmpSnooping",
                                  "EnablePhyPortEee",
                                  "DisablePhyPortEee",
                                  "SetPortMirror",
                                  "ReadPortReg",
                                  "WritePortReg",
                                  "VendorSpecificIoctl",
                                  "PrintMachineState",
                                  "SetQWred",
                                  "SetGlobWred",
                                  "SetQRsrv",
                                  "SetPortFc",
                                  "SetPhyPortDvt",
                                  "SetMacAging",
                                  "GetEeePortState",
                                  "SetMtuSize",
                                  "MapSetMacToVlan",
                                  "SmiRead",
                                  "SmiWrite",
                                  "GetPortTestMode",
                                  "SetPortTestMode",
                                  "GetLEDConfig",
                                  "SetLEDConfig"};

}  // namespace

const std::vector<std::string>& SlotNames()
{
    static const std::vector<std::string> names(std::begin(kSlots), std::end(kSlots));
    return names;
}

void TakeSlotAway(const std::string& slot)
{
    using Slot = int (*)();
    static_assert(sizeof(struct OBHAL_HalFuncs) == std::size(kSlots) * sizeof(Slot));
    const auto found = std::find(std::begin(kSlots), std::end(kSlots), slot);
    ASSERT_NE(found, std::end(kSlots)) << slot;
    auto* table = reinterpret_cast<char*>(&HalTable("a"));
    memset(table + (found - kSlots) * sizeof(Slot), 0, sizeof(Slot));
}

}  // namespace obtest
