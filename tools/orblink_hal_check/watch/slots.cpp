#include "tools/orblink_hal_check/watch/slots.h"

#include <algorithm>
#include <string>

#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/slot_call.h"

namespace halcheck {

namespace {

std::string Word(int value)
{
    return std::to_string(value);
}

std::string Word(uint32_t value)
{
    return std::to_string(value);
}

std::string Word(const void* pointer)
{
    return pointer != nullptr ? "buffer" : "null";
}

std::string Word(MacEntryCallback callback)
{
    return callback != nullptr ? "callback" : "null";
}

template <typename... Args>
std::string Words(Args... args)
{
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Word(args)), ...);
    return text;
}

constexpr Family FamilyOf(const SwitchTable*)
{
    return Family::kSwitch;
}

constexpr Family FamilyOf(const PhyTable*)
{
    return Family::kPhy;
}

template <auto Member>
struct Watched;

template <typename Table, typename... Args, int (*Table::*Member)(Args...)>
struct Watched<Member> {
    static int Call(Args... args)
    {
        const Table& real = RealTable<Table>();
        SlotCall call{FamilyOf(&real), IndexOf(Member), Words(args...)};
        // Stands in the place of a function that is there.
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        return call.Ended((real.*Member)(args...));
    }
};

template <auto Member>
Slot Row(const char* name, bool mandatory)
{
    return {name, mandatory, reinterpret_cast<void (*)()>(&Watched<Member>::Call)};
}

#define SWITCH_SLOT(name) Row<&SwitchTable::name>(#name, true)
#define OPTIONAL_SWITCH_SLOT(name) Row<&SwitchTable::name>(#name, false)
#define PHY_SLOT(name) Row<&PhyTable::name>(#name, true)
#define OPTIONAL_PHY_SLOT(name) Row<&PhyTable::name>(#name, false)

const Slot kSlotsOfSwitch[] = {
    SWITCH_SLOT(Init),
    SWITCH_SLOT(ResetSwitch),
    SWITCH_SLOT(GetSwitchCaps),
    SWITCH_SLOT(ForEachMacEntry),
    SWITCH_SLOT(EnableProviderBridgedMode),
    SWITCH_SLOT(DisableProviderBridgedMode),
    SWITCH_SLOT(SetLanPortVlan),
    SWITCH_SLOT(SetLanPortEgressTagging),
    SWITCH_SLOT(SetLanPortGroupId),
    SWITCH_SLOT(SetLanPortPcp),
    SWITCH_SLOT(GetPortCounters),
    SWITCH_SLOT(ResetPortCounters),
    SWITCH_SLOT(GetPortLink),
    SWITCH_SLOT(SetPhyPortSpeedDuplex),
    SWITCH_SLOT(EnablePort),
    SWITCH_SLOT(DisablePort),
    SWITCH_SLOT(EnableRgmiiDelay),
    SWITCH_SLOT(DisableRgmiiDelay),
    SWITCH_SLOT(EnableIgmpSnooping),
    SWITCH_SLOT(DisableIgmpSnooping),
    SWITCH_SLOT(EnablePhyPortEee),
    SWITCH_SLOT(DisablePhyPortEee),
    SWITCH_SLOT(SetPortMirror),
    SWITCH_SLOT(ReadPortReg),
    SWITCH_SLOT(WritePortReg),
    SWITCH_SLOT(VendorSpecificIoctl),
    SWITCH_SLOT(PrintMachineState),
    SWITCH_SLOT(SetQWred),
    SWITCH_SLOT(SetGlobWred),
    SWITCH_SLOT(SetQRsrv),
    SWITCH_SLOT(SetPortFc),
    SWITCH_SLOT(SetPhyPortDvt),
    SWITCH_SLOT(SetMacAging),
    SWITCH_SLOT(GetEeePortState),
    SWITCH_SLOT(SetMtuSize),
    SWITCH_SLOT(MapSetMacToVlan),
    SWITCH_SLOT(SmiRead),
    SWITCH_SLOT(SmiWrite),
    OPTIONAL_SWITCH_SLOT(GetPortTestMode),
    OPTIONAL_SWITCH_SLOT(SetPortTestMode),
    OPTIONAL_SWITCH_SLOT(GetLEDConfig),
    OPTIONAL_SWITCH_SLOT(SetLEDConfig),
};

const Slot kSlotsOfPhy[] = {
    PHY_SLOT(Init),
    PHY_SLOT(GetLink),
    PHY_SLOT(SetAdminState),
    PHY_SLOT(ResetDisable),
    PHY_SLOT(ResetEnable),
    PHY_SLOT(GetCaps),
    OPTIONAL_PHY_SLOT(Reserved),
    OPTIONAL_PHY_SLOT(GetCounters),
    OPTIONAL_PHY_SLOT(ResetCounters),
    OPTIONAL_PHY_SLOT(ReadChipReg),
    OPTIONAL_PHY_SLOT(WriteChipReg),
    OPTIONAL_PHY_SLOT(SetEeeState),
    OPTIONAL_PHY_SLOT(Poll),
};

static_assert(std::size(kSlotsOfSwitch) == kSwitchSlots);
static_assert(std::size(kSlotsOfPhy) == kPhySlots);

}  // namespace

std::span<const Slot> SlotsOf(Family family)
{
    if (family == Family::kSwitch)
        return kSlotsOfSwitch;
    return kSlotsOfPhy;
}

const char* TableSymbol(Family family)
{
    return family == Family::kSwitch ? "OBHAL_HalFuncs" : "ETHPHY_HalFuncs";
}

const char* NameOf(Family family)
{
    return family == Family::kSwitch ? "switch" : "PHY";
}

bool IsSlot(std::string_view name)
{
    return std::ranges::any_of(kFamilies, [&](Family family) {
        return std::ranges::any_of(SlotsOf(family),
                                   [&](const Slot& slot) { return slot.name == name; });
    });
}

}  // namespace halcheck
