#include "tests/switch/operations/switch_model.h"

#include <algorithm>
#include <cstring>

namespace obtest {
namespace {

void SetBit(uint8_t& bitmap, int port, bool on)
{
    bitmap = static_cast<uint8_t>(on ? bitmap | 1 << port : bitmap & ~(1 << port));
}

// Digit by digit, from the first: bit 11 of the mask keeps it.
Mac Masked(const Mac& mac, int mask)
{
    Mac result = mac;
    for (int digit = 0; digit < 12; ++digit)
        if ((mask & 0x800 >> digit) == 0)
            result[digit / 2] |= digit % 2 == 0 ? 0xF0 : 0x0F;
    return result;
}

}  // namespace

int SwitchModel::Run(const std::function<int(SwitchModel&)>& operation)
{
    calls.clear();
    return semaphoreFails ? -1 : operation(*this);
}

bool SwitchModel::Tell(const std::string& call)
{
    calls.push_back(call);
    if (static_cast<int>(calls.size()) == failingCall || refuses(call))
        return false;
    chip.Take(call);
    return true;
}

int SwitchModel::EnableProviderBridgedMode(int tpid)
{
    auto& config = record.config;
    if (tpid == 0)
        return -1;
    if (config.InProviderBridgedMode == 1 && config.STagTpid == tpid)
        return 0;
    if (!HalIfEnabled("EnableProviderBridgedMode", tpid))
        return -1;
    config.STagTpid = static_cast<uint16_t>(tpid);
    config.InProviderBridgedMode = 1;
    return 0;
}

int SwitchModel::DisableProviderBridgedMode()
{
    if (battery)
        return -1;
    if (record.config.InProviderBridgedMode == 0)
        return 0;
    if (!HalIfEnabled("DisableProviderBridgedMode"))
        return -1;
    record.config.InProviderBridgedMode = 0;
    return 0;
}

int SwitchModel::SetLanPortVlan(int port, int vid)
{
    const auto low = static_cast<uint16_t>(vid);
    if (!IsLanPort(port) || low == 0 || low >= 4095)
        return -1;
    auto& stored = record.config.lanPortVlan[port];
    if (stored != low && !HalIfEnabled("SetLanPortVlan", port, low))
        return -1;
    stored = low;
    return 0;
}

int SwitchModel::SetLanPortPcp(int port, int pcp)
{
    if (!IsLanPort(port) || pcp > 7)
        return -1;
    auto& stored = record.config.lanPortPcp[port];
    if (stored != pcp && !HalIfEnabled("SetLanPortPcp", port, pcp))
        return -1;
    stored = static_cast<uint8_t>(pcp);
    return 0;
}

int SwitchModel::SetLanPortEgressTagging(int port, uint32_t tagging)
{
    if (!IsLanPort(port))
        return -1;
    auto& stored = record.config.egressTagging[port];
    if (stored != tagging && !HalIfEnabled("SetLanPortEgressTagging", port, tagging))
        return -1;
    stored = tagging;
    return 0;
}

int SwitchModel::SetLanPortGroupId(int port, uint32_t group, uint32_t lockState)
{
    if (!IsLanPort(port) || lockState > 2)
        return -1;
    auto& lock = record.config.groupIdLock[port];
    if (lockState == 0 && lock != 0)
        return 0;
    if (lockState != 0)
        lock = lockState == 1 ? 1 : 0;
    auto& stored = record.config.groupId[port];
    if (static_cast<uint32_t>(stored) != group && !HalIfEnabled("SetLanPortGroupId", port, group))
        return -1;
    stored = static_cast<int32_t>(group);
    return 0;
}

// The entry of the address, in use or not, or else the first free one.
MacToVlanEntry* SwitchModel::MappingOf(int port, const Mac& mac)
{
    auto& table = record.config.macToVlanTable;
    auto* found = std::find_if(std::begin(table), std::end(table), [&](const auto& entry) {
        return entry.LogPort == port && std::equal(mac.begin(), mac.end(), entry.Mac);
    });
    if (found == std::end(table))
        found = std::find_if(std::begin(table), std::end(table),
                             [](const auto& entry) { return entry.EnableMapping == 0; });
    return found == std::end(table) ? nullptr : found;
}

int SwitchModel::MapMactoVlan(int port, const Mac& address, int mask, int vlan, int enable)
{
    if (!IsLanPort(port))
        return -1;
    const Mac mac = Masked(address, mask);
    MacToVlanEntry* entry = MappingOf(port, mac);
    if (enable != 0 && entry == nullptr)
        return -1;
    if (enable != 0) {
        std::copy(mac.begin(), mac.end(), entry->Mac);
        entry->LogPort = static_cast<uint8_t>(port);
        entry->Mask = static_cast<uint16_t>(mask);
        entry->VlanId = static_cast<uint16_t>(vlan);
    }
    if (entry != nullptr)  // a removal that found a free one leaves it free
        entry->EnableMapping = enable != 0 ? 1 : 0;
    return HalIfEnabled("MapSetMacToVlan", port, MacText(mac.data()), mask, vlan, enable) ? 0 : -1;
}

int SwitchModel::ResetPortCounters(int port)
{
    return HasPort(port) && Enabled() && Hal("ResetPortCounters", port) ? 0 : -1;
}

int SwitchModel::SetPhyPortSpeedDuplex(int port, uint32_t speed, uint32_t duplex)
{
    if (!HasPort(port) || !HasPhy(port))
        return -1;
    auto& link = record.config.link[port];
    if (link.linkSpeed == speed && link.linkFullDuplex == duplex)
        return 0;
    if (!Bit(record.config.enabledPorts, port) ||
        !HalIfEnabled("SetPhyPortSpeedDuplex", port, speed, duplex))
        return -1;
    link.linkSpeed = speed;
    link.linkFullDuplex = duplex;
    return 0;
}

bool SwitchModel::RestorePort(int port)
{
    const auto& link = record.config.link[port];
    const char* eee = Bit(record.config.eeePorts, port) ? "EnablePhyPortEee" : "DisablePhyPortEee";
    return !HasPhy(port) ||
           (Hal("SetPhyPortSpeedDuplex", port, link.linkSpeed, link.linkFullDuplex) &&
            Hal(eee, port));
}

int SwitchModel::EnablePort(int port)
{
    if (!HasPort(port))
        return -1;
    if (Bit(record.config.enabledPorts, port))
        return 0;
    SetBit(record.config.enabledPorts, port, true);
    if (!Enabled())
        return 0;
    return Hal("EnablePort", port) &&
                   (port != 0 || Hal("VendorSpecificIoctl", 3, std::string("null"))) &&
                   RestorePort(port)
               ? 0
               : -1;
}

int SwitchModel::DisablePort(int port)
{
    if (!HasPort(port))
        return -1;
    if (!Bit(record.config.enabledPorts, port))
        return 0;
    SetBit(record.config.enabledPorts, port, false);
    SetBit(record.dvtPorts, port, false);
    return HalIfEnabled("DisablePort", port) ? 0 : -1;
}

int SwitchModel::SetRgmiiDelay(const char* slot, int port, bool on)
{
    if (!HasPort(port) || HasPhy(port) || record.caps.port[port].portIfaceType != OB_IFACE_RGMII)
        return -1;
    auto& bitmap = record.config.rgmiiDelayPorts;
    if (Bit(bitmap, port) != on && !HalIfEnabled(slot, port))
        return -1;
    SetBit(bitmap, port, on);
    return 0;
}

int SwitchModel::EnableRgmiiDelay(int port)
{
    return SetRgmiiDelay("EnableRgmiiDelay", port, true);
}

int SwitchModel::DisableRgmiiDelay(int port)
{
    return SetRgmiiDelay("DisableRgmiiDelay", port, false);
}

int SwitchModel::ChangeEee(int port, bool on)
{
    if (!HasPort(port) || (record.caps.capsFlags & OB_CAPS_EEE) == 0)
        return -1;
    auto& bitmap = record.config.eeePorts;
    if (Bit(bitmap, port) == on)
        return 0;
    if (Enabled()) {
        if (!Hal("DisablePort", port))
            return -1;
        const bool changed = Hal(on ? "EnablePhyPortEee" : "DisablePhyPortEee", port);
        if (Bit(record.config.enabledPorts, port))
            Hal("EnablePort", port);
        if (!changed)
            return -1;
    }
    SetBit(bitmap, port, on);
    return 0;
}

int SwitchModel::SetPortMirror(int source, int destination)
{
    if (source == destination || !HasPort(source) || (!HasPort(destination) && destination != 255))
        return -1;
    auto& stored = record.config.mirrorDst[source];
    if (stored != destination && !HalIfEnabled("SetPortMirror", source, destination))
        return -1;
    stored = static_cast<uint8_t>(destination);
    return 0;
}

int SwitchModel::EnablePhyPortDvt(int port, int test)
{
    if (test < 1 || test > 4 || !HasPhy(port) || !Enabled() || !Hal("SetPhyPortDvt", port, test))
        return -1;
    SetBit(record.dvtPorts, port, true);
    return 0;
}

int SwitchModel::DisablePhyPortDvt(int port)
{
    if (!Enabled() || !HasPhy(port) || !Hal("SetPhyPortDvt", port, 0))
        return -1;
    SetBit(record.dvtPorts, port, false);
    return RestorePort(port) ? 0 : -1;
}

int SwitchModel::EnableIgmpSnooping()
{
    auto& stored = record.config.igmpSnooping;
    if (stored != 1 && !HalIfEnabled("EnableIgmpSnooping"))
        return -1;
    stored = 1;
    return 0;
}

int SwitchModel::DisableIgmpSnooping()
{
    auto& stored = record.config.igmpSnooping;
    if (stored == 1 && !HalIfEnabled("DisableIgmpSnooping"))
        return -1;
    stored = 0;
    return 0;
}

int SwitchModel::SetMacAging(int step)
{
    if (step < 1 || step > 5 || !HalIfEnabled("SetMacAging", step))
        return -1;
    record.config.macAging = static_cast<uint32_t>(step);
    return 0;
}

int SwitchModel::SetMtuSize(int mtu)
{
    if (!Enabled() || !Hal("SetMtuSize", mtu))
        return -1;
    record.config.mtuSize = static_cast<uint16_t>(mtu);
    return 0;
}

int SwitchModel::SetLEDConfig(int mode)
{
    if (!HalIfEnabled("SetLEDConfig", mode))
        return -1;
    record.config.ledMode = static_cast<uint8_t>(mode);
    return 0;
}

int SwitchModel::SetQRsrv(int queue, int buffers)
{
    return Enabled() && Hal("SetQRsrv", queue, buffers) ? 0 : -1;
}

int SwitchModel::SetServiceStatus(uint32_t signal)
{
    record.serviceStatus = signal;
    return 0;
}

int SwitchModel::ResetEnable()
{
    record.config.state = OB_STATE_RESET;
    record.dvtPorts = 0;
    return 0;
}

void SwitchModel::LoadDefaults()
{
    const SwitchProvConfig old = record.config;
    record.config = initial_.config;
    // Entries are only marked unused.
    memcpy(record.config.macToVlanTable, old.macToVlanTable, sizeof(old.macToVlanTable));
    for (auto& entry : record.config.macToVlanTable)
        entry.EnableMapping = 0;
}

int SwitchModel::ResetDisable(int setDefault)
{
    if (Enabled())
        return 0;
    if (battery)
        return -1;
    if (setDefault == 1)
        LoadDefaults();
    record.config.state = OB_STATE_ENABLED;
    chip = BroughtUp(record);
    return 0;
}

}  // namespace obtest
