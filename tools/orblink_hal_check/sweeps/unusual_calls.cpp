// Values out of their ranges and null pointers, as far as callers of the API can have them arrive at a
// slot.
#include <climits>

#include "tools/orblink_hal_check/sweeps/calls.h"
#include "tools/orblink_hal_check/sweeps/switch_place.h"
#include "tools/orblink_hal_check/watch/hal.h"

namespace halcheck {

namespace {

using T = SwitchTable;
using P = PhyTable;

constexpr int kNoPorts[] = {OB_MAX_PORTS, 31, 255};

// A call for ports that no switch has.
template <typename Call>
UnusualCall WithoutPort(const char* slot, Call call)
{
    return {slot, [=](int devIdx) {
                for (const int port : kNoPorts)
                    if (call(devIdx, port) == 0)
                        Report("range.port-accepted", std::string(TheWatch().call) + " succeeded");
            }};
}

template <auto Member>
UnusualCall OfNoPort(const char* slot)
{
    return WithoutPort(slot, [](int devIdx, int port) { return CallSlot(Member, devIdx, port); });
}

template <auto Member>
UnusualCall ToNoPort(const char* slot, int value)
{
    return WithoutPort(slot,
                       [=](int devIdx, int port) { return CallSlot(Member, devIdx, port, value); });
}

// Values that the API passes on unchecked.
template <auto Member>
UnusualCall Values(const char* slot, const std::vector<int>& values)
{
    return {slot, [=](int devIdx) {
                for (const int value : values)
                    CallSlot(Member, devIdx, value);
            }};
}

template <auto Member>
UnusualCall PortValues(const char* slot, const std::vector<int>& values)
{
    return {slot, [=](int devIdx) {
                for (const int value : values)
                    CallSlot(Member, devIdx, PlaceOn(devIdx).lan, value);
            }};
}

void AnyRegister(int devIdx)
{
    for (const int port : {8, 255, 0xFFFF})
        for (const int reg : {0, 0xFFFF}) {
            Guarded value{"ReadPortReg", 2, 0};
            CallSlot(&T::ReadPortReg, devIdx, port, reg, value.As<void>());
        }
}

void AnyPortLink(int devIdx)
{
    for (const int port : kNoPorts) {
        Guarded out{"GetPortLink", 12, 0};
        auto* const words = out.As<uint32_t>();
        if (CallSlot(&T::GetPortLink, devIdx, port, words, words + 1, words + 2) == 0)
            Report("range.port-accepted", std::string(TheWatch().call) + " succeeded");
    }
}

std::vector<UnusualCall> RangesOfSwitch()
{
    return {
        OfNoPort<&T::ResetPortCounters>("ResetPortCounters"),
        OfNoPort<&T::EnablePort>("EnablePort"),
        OfNoPort<&T::DisablePort>("DisablePort"),
        OfNoPort<&T::EnableRgmiiDelay>("EnableRgmiiDelay"),
        OfNoPort<&T::EnablePhyPortEee>("EnablePhyPortEee"),
        ToNoPort<&T::SetLanPortVlan>("SetLanPortVlan", 1),
        ToNoPort<&T::SetPhyPortDvt>("SetPhyPortDvt", 1),
        {"GetPortLink", AnyPortLink},
        WithoutPort("SetPortFc",
                    [](int dev, int port) { return CallSlot(&T::SetPortFc, dev, port, 0, 0); }),
        {"ReadPortReg", AnyRegister},
        Values<&T::EnableProviderBridgedMode>("EnableProviderBridgedMode", {1, 0x800, 0xFFFF}),
        Values<&T::SetMtuSize>("SetMtuSize", {0, 1, 0xFFFF}),
        Values<&T::SetLEDConfig>("SetLEDConfig", {8, 255}),
        Values<&T::SetMacAging>("SetMacAging", {0, 6, INT_MAX}),
        PortValues<&T::SetLanPortEgressTagging>("SetLanPortEgressTagging", {2, -1}),
        PortValues<&T::SetLanPortGroupId>("SetLanPortGroupId", {256, INT_MAX, -1}),
        PortValues<&T::SetPortTestMode>("SetPortTestMode", {5, 255}),
        {"SetPhyPortSpeedDuplex",
         [](int devIdx) {
             for (const uint32_t speed : {0U, 7U, UINT_MAX})
                 CallSlot(&T::SetPhyPortSpeedDuplex, devIdx, PlaceOn(devIdx).lan, speed, UINT_MAX);
         }},
        {"SetQWred",
         [](int devIdx) { CallSlot(&T::SetQWred, devIdx, 255, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0); }},
        {"SetGlobWred",
         [](int devIdx) {
             CallSlot(&T::SetGlobWred, devIdx, 255, 255, 255, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0);
         }},
        {"SetQRsrv", [](int devIdx) { CallSlot(&T::SetQRsrv, devIdx, 255, 0xFFFF); }},
        {"SmiRead",
         [](int devIdx) {
             Guarded value{"SmiRead", 2, 0};
             CallSlot(&T::SmiRead, devIdx, 0xFFFF, value.As<void>());
         }},
        {"VendorSpecificIoctl",
         [](int devIdx) {
             for (const int command : {INT_MIN, -1, 0x7FFF, INT_MAX})
                 CallSlot(&T::VendorSpecificIoctl, devIdx, command, nullptr);
         }},
    };
}

std::vector<UnusualCall> RangesOfPhy()
{
    return {
        {"ReadChipReg",
         [](int devIdx) {
             for (const uint32_t reg : {32U, 0xFFFFU, 0x7FFFFFFFU, UINT_MAX}) {
                 Guarded value{"ReadChipReg", 2, 0};
                 CallSlot(&P::ReadChipReg, devIdx, reg, value.As<uint16_t>());
             }
         }},
        {"WriteChipReg", [](int devIdx) { CallSlot(&P::WriteChipReg, devIdx, 0xFFFFU, 0xFFFF); }},
        {"SetEeeState", [](int devIdx) { CallSlot(&P::SetEeeState, devIdx, 255); }},
        {"SetAdminState",
         [](int devIdx) {
             for (const int state : {INT_MIN, INT_MAX, 1})
                 CallSlot(&P::SetAdminState, devIdx, state);
         }},
        {"ResetDisable", [](int devIdx) { CallSlot(&P::ResetDisable, devIdx, INT_MAX); }},
    };
}

void NullLinkPointers(int devIdx)
{
    uint32_t value = 0;
    for (int given = 0; given < 7; ++given)
        CallSlot(&T::GetPortLink, devIdx, PlaceOn(devIdx).lan, (given & 1) != 0 ? &value : nullptr,
                 (given & 2) != 0 ? &value : nullptr, (given & 4) != 0 ? &value : nullptr);
}

std::vector<UnusualCall> NullsOfSwitch()
{
    return {
        {"ResetSwitch",
         [](int devIdx) {
             CallSlot(&T::ResetSwitch, devIdx, nullptr, 0U);
             CallSlot(&T::ResetSwitch, devIdx, nullptr, 32U);
         }},
        {"GetPortLink", NullLinkPointers},
        {"GetPortCounters",
         [](int dev) { CallSlot(&T::GetPortCounters, dev, PlaceOn(dev).lan, nullptr); }},
        {"ReadPortReg",
         [](int dev) { CallSlot(&T::ReadPortReg, dev, PlaceOn(dev).lan, 0, nullptr); }},
        {"SmiRead", [](int devIdx) { CallSlot(&T::SmiRead, devIdx, 0, nullptr); }},
        {"GetPortTestMode",
         [](int dev) { CallSlot(&T::GetPortTestMode, dev, PlaceOn(dev).lan, nullptr); }},
        {"VendorSpecificIoctl",
         [](int devIdx) {
             CallSlot(&T::VendorSpecificIoctl, devIdx, OBHAL_IOCTL_RX_RESET, nullptr);
             CallSlot(&T::VendorSpecificIoctl, devIdx, OBHAL_IOCTL_PRE_RESET, nullptr);
         }},
        {"ForEachMacEntry",
         [](int devIdx) { CallSlot(&T::ForEachMacEntry, devIdx, nullptr, nullptr); }},
    };
}

std::vector<UnusualCall> NullsOfPhy()
{
    return {
        {"GetLink",
         [](int devIdx) {
             uint32_t link = 0;
             CallSlot(&P::GetLink, devIdx, &link, nullptr, nullptr);
             CallSlot(&P::GetLink, devIdx, &link, &link, nullptr);
             CallSlot(&P::GetLink, devIdx, &link, nullptr, &link);
         }},
        {"ReadChipReg", [](int devIdx) { CallSlot(&P::ReadChipReg, devIdx, 2U, nullptr); }},
    };
}

}  // namespace

const std::vector<UnusualCall>& OutOfRangeCalls(Family family)
{
    static const std::vector<UnusualCall> kOfSwitch = RangesOfSwitch();
    static const std::vector<UnusualCall> kOfPhy = RangesOfPhy();
    return family == Family::kSwitch ? kOfSwitch : kOfPhy;
}

const std::vector<UnusualCall>& NullPointerCalls(Family family)
{
    static const std::vector<UnusualCall> kOfSwitch = NullsOfSwitch();
    static const std::vector<UnusualCall> kOfPhy = NullsOfPhy();
    return family == Family::kSwitch ? kOfSwitch : kOfPhy;
}

}  // namespace halcheck
