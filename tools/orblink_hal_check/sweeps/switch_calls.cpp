// Ordinary calls of the slots of a switch.
#include <algorithm>
#include <iterator>

#include "tools/orblink_hal_check/processes/attachment.h"
#include "tools/orblink_hal_check/sweeps/calls.h"
#include "tools/orblink_hal_check/sweeps/switch_place.h"
#include "tools/orblink_hal_check/watch/hal.h"

namespace halcheck {

size_t countersSize = 4096;

namespace {

using T = SwitchTable;

constexpr int kVid = 100;
constexpr int kTpid = 0x88A8;
constexpr uint8_t kMac[6] = {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30};

uint32_t WalkOn(MacEntry*)
{
    return 1;
}

int ResetSwitch(int devIdx)
{
    Guarded parameters{"ResetSwitch", 8, 0, Guarded::Rights::kReadOnly};
    return CallSlot(&T::ResetSwitch, devIdx, parameters.As<void>(), 8);
}

int GetSwitchCaps(int devIdx)
{
    SwitchCaps caps{};
    const int result = ReadValue<SwitchCaps>(
        "GetSwitchCaps", [=](SwitchCaps* out) { return CallSlot(&T::GetSwitchCaps, devIdx, out); },
        &caps);
    if (result != 0)
        return result;
    if (caps.numOfPorts < 1 || caps.numOfPorts > OB_MAX_PORTS)
        Report("caps.ports", "GetSwitchCaps gave " + std::to_string(caps.numOfPorts) + " ports");
    for (int port = 0; port < std::min<int>(caps.numOfPorts, OB_MAX_PORTS); ++port)
        if (caps.port[port].portIfaceType >= OB_IFACE_MODE_COUNT || caps.port[port].portHasPhy > 1)
            Report("caps.port-type", "GetSwitchCaps gave port " + std::to_string(port) + " type " +
                                         std::to_string(caps.port[port].portIfaceType) +
                                         " and PHY mark " +
                                         std::to_string(caps.port[port].portHasPhy));
    return 0;
}

int GetPortCounters(int devIdx)
{
    Guarded counters{"GetPortCounters", countersSize, kFills[0]};
    const int result =
        CallSlot(&T::GetPortCounters, devIdx, PlaceOn(devIdx).lan, counters.As<void>());
    counters.CheckBeginning();
    return result;
}

int GetPortLink(int devIdx)
{
    int result = 0;
    bool untouched[3] = {true, true, true};
    for (const uint8_t fill : kFills) {
        Guarded link{"GetPortLink", 4, fill};
        Guarded speed{"GetPortLink", 4, fill};
        Guarded duplex{"GetPortLink", 4, fill};
        result = CallSlot(&T::GetPortLink, devIdx, PlaceOn(devIdx).lan, link.As<uint32_t>(),
                          speed.As<uint32_t>(), duplex.As<uint32_t>());
        const Guarded* const outs[] = {&link, &speed, &duplex};
        for (size_t i = 0; i < std::size(outs); ++i) {
            outs[i]->CheckBeginning();
            untouched[i] = untouched[i] && outs[i]->IsUntouched();
        }
        if (result != 0)
            return result;
        if (!speed.IsUntouched())
            CheckSpeed(*speed.As<uint32_t>());
    }
    if (untouched[0] || untouched[1] || untouched[2])
        Report("result.not-filled", "GetPortLink succeeded and left a result unwritten");
    return result;
}

int MapSetMacToVlan(int devIdx)
{
    const int lan = PlaceOn(devIdx).lan;
    int result = 0;
    for (const int enable : {1, 0}) {
        Guarded mac{"MapSetMacToVlan", sizeof kMac, 0x12, Guarded::Rights::kReadOnly};
        result = CallSlot(&T::MapSetMacToVlan, devIdx, lan, mac.As<uint8_t>(), 0xFFF, kVid, enable);
    }
    return result;
}

int SetPhyPortDvt(int devIdx)
{
    const int lan = PlaceOn(devIdx).lan;
    const int result = CallSlot(&T::SetPhyPortDvt, devIdx, lan, 1);
    const int ended = CallSlot(&T::SetPhyPortDvt, devIdx, lan, 0);
    return result != 0 ? result : ended;
}

// It goes back to what was before, whatever that is: a value that the chip has had already.
int WritePortReg(int devIdx)
{
    uint16_t value = 0;
    const int lan = PlaceOn(devIdx).lan;
    if (CallSlot(&T::ReadPortReg, devIdx, lan, 0, &value) != 0)
        value = 0;
    return CallSlot(&T::WritePortReg, devIdx, lan, 0, value);
}

int SmiWrite(int devIdx)
{
    uint16_t value = 0;
    if (CallSlot(&T::SmiRead, devIdx, 0, &value) != 0)
        value = 0;
    return CallSlot(&T::SmiWrite, devIdx, 0, value);
}

int VendorSpecificIoctl(int devIdx)
{
    Guarded preReset{"VendorSpecificIoctl", sizeof(ObhalPreReset), 0, Guarded::Rights::kReadOnly};
    const int result =
        CallSlot(&T::VendorSpecificIoctl, devIdx, OBHAL_IOCTL_PRE_RESET, preReset.As<void>());
    const int reset = CallSlot(&T::VendorSpecificIoctl, devIdx, OBHAL_IOCTL_RX_RESET, nullptr);
    return result != 0 ? result : reset;
}

// One port and nothing else.
template <auto Member>
OrdinaryCall OnPort(const char* slot, int SwitchPlace::*port = &SwitchPlace::lan)
{
    return {slot, [=](int devIdx) { return CallSlot(Member, devIdx, PlaceOn(devIdx).*port); }};
}

// A port and a value.
template <auto Member>
OrdinaryCall ToPort(const char* slot, int value)
{
    return {slot, [=](int devIdx) { return CallSlot(Member, devIdx, PlaceOn(devIdx).lan, value); }};
}

template <auto Member>
OrdinaryCall OnSwitch(const char* slot)
{
    return {slot, [](int devIdx) { return CallSlot(Member, devIdx); }};
}

template <auto Member>
OrdinaryCall ToSwitch(const char* slot, int value)
{
    return {slot, [=](int devIdx) { return CallSlot(Member, devIdx, value); }};
}

int ForEachMacEntry(int devIdx)
{
    return CallSlot(&T::ForEachMacEntry, devIdx, WalkOn, nullptr);
}

int SetSpeed(int devIdx)
{
    return CallSlot(&T::SetPhyPortSpeedDuplex, devIdx, PlaceOn(devIdx).lan, OB_SPEED_AUTONEG, 1U);
}

int SetPortMirror(int devIdx)
{
    const SwitchPlace place = PlaceOn(devIdx);
    const int other = place.lan + 1 < place.ports ? place.lan + 1 : 0;
    const int result = CallSlot(&T::SetPortMirror, devIdx, place.lan, other);
    const int ended = CallSlot(&T::SetPortMirror, devIdx, place.lan, OB_NO_MIRROR);
    return result != 0 ? result : ended;
}

int ReadPortReg(int devIdx)
{
    const int lan = PlaceOn(devIdx).lan;
    return ReadValue<uint16_t>("ReadPortReg", [=](uint16_t* out) {
        return CallSlot(&T::ReadPortReg, devIdx, lan, 0, out);
    });
}

int SmiRead(int devIdx)
{
    return ReadValue<uint16_t>(
        "SmiRead", [=](uint16_t* out) { return CallSlot(&T::SmiRead, devIdx, 0, out); });
}

int GetEeePortState(int devIdx)
{
    const int lan = PlaceOn(devIdx).lan;
    return ReadValue<uint32_t>("GetEeePortState", [=](uint32_t* out) {
        return CallSlot(&T::GetEeePortState, devIdx, lan, out);
    });
}

int GetPortTestMode(int devIdx)
{
    const int lan = PlaceOn(devIdx).lan;
    return ReadValue<uint8_t>("GetPortTestMode", [=](uint8_t* out) {
        return CallSlot(&T::GetPortTestMode, devIdx, lan, out);
    });
}

int GetLedConfig(int devIdx)
{
    return ReadValue<uint8_t>(
        "GetLEDConfig", [=](uint8_t* out) { return CallSlot(&T::GetLEDConfig, devIdx, out); });
}

std::vector<OrdinaryCall> CallsOfSwitch()
{
    return {
        {"ResetSwitch", ResetSwitch},
        {"GetSwitchCaps", GetSwitchCaps},
        {"ForEachMacEntry", ForEachMacEntry},
        ToSwitch<&T::EnableProviderBridgedMode>("EnableProviderBridgedMode", kTpid),
        OnSwitch<&T::DisableProviderBridgedMode>("DisableProviderBridgedMode"),
        ToPort<&T::SetLanPortVlan>("SetLanPortVlan", kVid),
        ToPort<&T::SetLanPortEgressTagging>("SetLanPortEgressTagging", 1),
        ToPort<&T::SetLanPortGroupId>("SetLanPortGroupId", 1),
        ToPort<&T::SetLanPortPcp>("SetLanPortPcp", 3),
        {"GetPortCounters", GetPortCounters},
        OnPort<&T::ResetPortCounters>("ResetPortCounters"),
        {"GetPortLink", GetPortLink},
        {"SetPhyPortSpeedDuplex", SetSpeed},
        OnPort<&T::DisablePort>("DisablePort"),
        OnPort<&T::EnablePort>("EnablePort"),
        OnPort<&T::EnableRgmiiDelay>("EnableRgmiiDelay", &SwitchPlace::rgmii),
        OnPort<&T::DisableRgmiiDelay>("DisableRgmiiDelay", &SwitchPlace::rgmii),
        OnSwitch<&T::EnableIgmpSnooping>("EnableIgmpSnooping"),
        OnSwitch<&T::DisableIgmpSnooping>("DisableIgmpSnooping"),
        OnPort<&T::EnablePhyPortEee>("EnablePhyPortEee"),
        OnPort<&T::DisablePhyPortEee>("DisablePhyPortEee"),
        {"SetPortMirror", SetPortMirror},
        {"ReadPortReg", ReadPortReg},
        {"WritePortReg", WritePortReg},
        {"VendorSpecificIoctl", VendorSpecificIoctl},
        OnSwitch<&T::PrintMachineState>("PrintMachineState"),
        {"SetQWred",
         [](int dev) { return CallSlot(&T::SetQWred, dev, 0, 10, 20, 10, 20, 10, 20); }},
        {"SetGlobWred",
         [](int dev) { return CallSlot(&T::SetGlobWred, dev, 0, 1, 50, 10, 20, 10, 20, 10, 20); }},
        {"SetQRsrv", [](int dev) { return CallSlot(&T::SetQRsrv, dev, 0, 1); }},
        {"SetPortFc", [](int dev) { return CallSlot(&T::SetPortFc, dev, PlaceOn(dev).lan, 0, 0); }},
        {"SetPhyPortDvt", SetPhyPortDvt},
        ToSwitch<&T::SetMacAging>("SetMacAging", 3),
        {"GetEeePortState", GetEeePortState},
        ToSwitch<&T::SetMtuSize>("SetMtuSize", 2000),
        {"MapSetMacToVlan", MapSetMacToVlan},
        {"SmiRead", SmiRead},
        {"SmiWrite", SmiWrite},
        {"GetPortTestMode", GetPortTestMode},
        ToPort<&T::SetPortTestMode>("SetPortTestMode", 0),
        {"GetLEDConfig", GetLedConfig},
        ToSwitch<&T::SetLEDConfig>("SetLEDConfig", 3),
    };
}

}  // namespace

SwitchPlace PlaceOn(int devIdx)
{
    const SwitchCaps& caps = Switches().device[devIdx].caps;
    SwitchPlace place{std::clamp<int>(caps.numOfPorts, 1, OB_MAX_PORTS), 1, 0};
    for (int port = place.ports - 1; port >= 1; --port) {
        if (caps.port[port].portHasPhy != 0)
            place.lan = port;
        else if (caps.port[port].portIfaceType == OB_IFACE_RGMII)
            place.rgmii = port;
    }
    return place;
}

void CheckSpeed(uint32_t speed)
{
    if (speed >= OB_SPEED_COUNT)
        Report("result.out-of-range",
               std::string(TheWatch().call) + " gave the speed code " + std::to_string(speed));
}

std::vector<OrdinaryCall> CallsOfPhy();

const std::vector<OrdinaryCall>& OrdinaryCalls(Family family)
{
    static const std::vector<OrdinaryCall> kOfSwitch = CallsOfSwitch();
    static const std::vector<OrdinaryCall> kOfPhy = CallsOfPhy();
    return family == Family::kSwitch ? kOfSwitch : kOfPhy;
}

}  // namespace halcheck
