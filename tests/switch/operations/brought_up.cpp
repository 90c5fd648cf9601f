#include "tests/switch/operations/switch_model.h"

namespace obtest {

ToldChip BroughtUp(const SwitchDeviceRecord& record)
{
    ToldChip chip;
    const auto& config = record.config;
    const auto tell = [&](bool needed, const char* slot, auto... args) {
        if (needed)
            chip.Take(HalCall(slot, args...));
    };
    for (int port = 0; port < record.caps.numOfPorts; ++port) {
        const bool lan = port != 0 && record.caps.port[port].portHasPhy != 0;
        const auto group = static_cast<uint32_t>(config.groupId[port]);
        const auto& link = config.link[port];
        const bool eee = Bit(config.eeePorts, port);
        tell(lan && group != 0xFFFFFFFFU, "SetLanPortGroupId", port, group);
        tell(lan && config.lanPortVlan[port] != 1, "SetLanPortVlan", port,
             config.lanPortVlan[port]);
        tell(lan && config.lanPortPcp[port] != 0, "SetLanPortPcp", port, config.lanPortPcp[port]);
        tell(lan && config.egressTagging[port] != 0, "SetLanPortEgressTagging", port,
             config.egressTagging[port]);
        tell(lan, "SetPhyPortSpeedDuplex", port, link.linkSpeed, link.linkFullDuplex);
        tell(lan, eee ? "EnablePhyPortEee" : "DisablePhyPortEee", port);
        tell(config.mirrorDst[port] != 255, "SetPortMirror", port, config.mirrorDst[port]);
        tell(Bit(config.rgmiiDelayPorts, port), "EnableRgmiiDelay", port);
        tell(true, Bit(config.enabledPorts, port) ? "EnablePort" : "DisablePort", port);
    }
    for (const auto& entry : config.macToVlanTable)
        tell(entry.EnableMapping != 0, "MapSetMacToVlan", entry.LogPort, MacText(entry.Mac),
             entry.Mask, entry.VlanId, 1);
    tell(config.InProviderBridgedMode == 1, "EnableProviderBridgedMode", config.STagTpid);
    tell(config.igmpSnooping == 1, "EnableIgmpSnooping");
    tell(config.mtuSize != 2000, "SetMtuSize", config.mtuSize);
    tell(true, "SetMacAging", config.macAging);
    tell(true, "SetLEDConfig", config.ledMode);
    return chip;
}

}  // namespace obtest
