#include <initializer_list>

#include "common/log.h"
#include "switch/lifecycle/restore.h"

// Each step takes the caller's name: an operator reads one story, told by _RestoreConfig.
namespace orblink::sw {
namespace {

constexpr uint16_t kChipVlan = 1;
constexpr uint16_t kChipMtu = 2000;

bool HasBit(uint8_t bitmap, int port)
{
    return ((bitmap >> port) & 1) != 0;
}

int DisablePorts(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "- Disable all ports so no traffic will flow in unstable state");
    for (int port = 0; port < device.NumOfPorts(); ++port) {
        if (device.Hal(&HalTable::DisablePort, port) != RC_OK)
            return OB_ERROR_AS(self, "DisablePort failed, PortIdx=%d", port);
        OB_INFO_AS(self, "Disabled Port %d", port);
    }
    return RC_OK;
}

int EnterProviderBridgedMode(LogCaller self, const SwitchDevice& device)
{
    const uint16_t tpid = device.Record().config.STagTpid;
    OB_INFO_AS(self, "InProviderBridgedMode == True");
    if (device.Hal(&HalTable::EnableProviderBridgedMode, tpid) != RC_OK)
        return OB_ERROR_AS(self, "EnableProviderBridgedMode failed, STagTpid=0x%x", tpid);
    OB_INFO_AS(self, "- EnableProviderBridgedMode %d done", tpid);
    return RC_OK;
}

int LeaveProviderBridgedMode(LogCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::DisableProviderBridgedMode) != RC_OK)
        return OB_ERROR_AS(self, "DisableProviderBridgedMode failed");
    OB_INFO_AS(self, "DisableProviderBridgedMode done");
    return RC_OK;
}

int RestoreVlanMode(LogCaller self, const SwitchDevice& device)
{
    const uint32_t mode = device.Record().config.InProviderBridgedMode;
    OB_INFO_AS(self, "Set VLAN mode");
    if (mode != 0) {
        OB_INFO_AS(self, "InProviderBridgedMode != ORBLINK_DEF_PBM");
        const int result = mode == 1 ? EnterProviderBridgedMode(self, device)
                                     : LeaveProviderBridgedMode(self, device);
        if (result != RC_OK)
            return result;
    }
    OB_INFO_AS(self, "Set VLAN mode done");
    return RC_OK;
}

int RestorePortGroup(LogCaller self, const SwitchDevice& device, int port)
{
    const int32_t group = device.Record().config.groupId[port];
    if (group == OB_NO_GROUP)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortGroupId, port, static_cast<uint32_t>(group)) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortGroupId failed, PortIdx=%d, GroupId=%d", port, group);
    OB_INFO_AS(self, "SetLanPortGroupId done, PortIdx=%d, GroupId=%d", port, group);
    return RC_OK;
}

int RestorePortVlan(LogCaller self, const SwitchDevice& device, int port)
{
    const uint16_t vlan = device.Record().config.lanPortVlan[port];
    if (vlan == kChipVlan)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortVlan, port, vlan) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortVlan failed, PortIdx=%d, Vlan=%d", port, vlan);
    OB_INFO_AS(self, "SetLanPortVlan done, PortIdx=%d, Vlan=%d", port, vlan);
    return RC_OK;
}

int RestorePortPcp(LogCaller self, const SwitchDevice& device, int port)
{
    const uint8_t pcp = device.Record().config.lanPortPcp[port];
    if (pcp == 0)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortPcp, port, pcp) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortPcp failed, PortIdx=%d, PCP=%d", port, pcp);
    OB_INFO_AS(self, "SetLanPortPcp done, PortIdx=%d, PCP=%d", port, pcp);
    return RC_OK;
}

int RestorePortTagging(LogCaller self, const SwitchDevice& device, int port)
{
    const uint32_t tagging = device.Record().config.egressTagging[port];
    if (tagging == 0)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortEgressTagging, port, tagging) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortEgressTagging failed, PortIdx=%d, EgressTagging=%d",
                           port, tagging);
    OB_INFO_AS(self, "SetLanPortEgressTagging done, PortIdx=%d, EgressTagging=%d", port, tagging);
    return RC_OK;
}

// Port 0 is never a LAN port.
int RestoreLanPorts(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "- Set VLAN-Port associations:");
    for (int port = 1; port < device.NumOfPorts(); ++port) {
        OB_INFO_AS(self, "- Port %d", port);
        if (device.Record().caps.port[port].portHasPhy != 1)
            continue;
        for (const auto restore :
             {RestorePortGroup, RestorePortVlan, RestorePortPcp, RestorePortTagging})
            if (restore(self, device, port) != RC_OK)
                return RC_ERROR;
    }
    OB_INFO_AS(self, "- Set VLAN-Port associations done");
    return RC_OK;
}

int RestoreMacVlans(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Src MAC forwarding to VLAN");
    for (const MacToVlanEntry& entry : device.Record().config.macToVlanTable) {
        if (entry.EnableMapping == 0)
            continue;
        if (device.Hal(&HalTable::MapSetMacToVlan, entry.LogPort, entry.Mac, entry.Mask,
                       entry.VlanId, 1) != RC_OK)
            return OB_ERROR_AS(self, "MapSetMacToVlan failed");
    }
    OB_INFO_AS(self, "Src MAC forwarding to VLAN done");
    return RC_OK;
}

int RestoreMacAging(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set MAC aging");
    const auto aging = static_cast<int>(device.Record().config.macAging);
    if (device.Hal(&HalTable::SetMacAging, aging) != RC_OK)
        return OB_ERROR_AS(self, "Set MAC aging failed, DevIdx=%d", device.Idx());
    OB_INFO_AS(self, "Done set MAC aging");
    return RC_OK;
}

int RestorePortSpeed(LogCaller self, const SwitchDevice& device, int port)
{
    const auto link = device.Record().config.link[port];
    OB_INFO_AS(self, "- Port %d HasPhy", port);
    if (link.linkSpeed == OB_SPEED_AUTONEG && link.linkFullDuplex == 1)
        return RC_OK;
    if (device.Hal(&HalTable::SetPhyPortSpeedDuplex, port, link.linkSpeed, link.linkFullDuplex) !=
        RC_OK)
        return OB_ERROR_AS(self, "SetPhyPortSpeedDuplex failed, Port=%d, Speed=%d, Duplex=%d", port,
                           link.linkSpeed, link.linkFullDuplex);
    OB_INFO_AS(self, "SetPhyPortSpeedDuplex done, Port=%d, Speed=%d, Duplex=%d", port,
               link.linkSpeed, link.linkFullDuplex);
    return RC_OK;
}

int RestorePhys(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set PHY properties");
    for (int port = 1; port < device.NumOfPorts(); ++port) {
        OB_INFO_AS(self, "- Port %d", port);
        if (device.Record().caps.port[port].portHasPhy == 1 &&
            RestorePortSpeed(self, device, port) != RC_OK)
            return RC_ERROR;
    }
    OB_INFO_AS(self, "Set PHY properties done");
    return RC_OK;
}

int RestoreMirroring(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set mirroring");
    for (int port = 0; port < device.NumOfPorts(); ++port) {
        const uint8_t destination = device.Record().config.mirrorDst[port];
        if (destination == OB_NO_MIRROR)
            continue;
        if (device.Hal(&HalTable::SetPortMirror, port, destination) != RC_OK)
            return OB_ERROR_AS(self, "SetPortMirror failed, SrcPortIdx=%d, DstPortInd=%d", port,
                               destination);
        OB_INFO_AS(self, "SetPortMirror done, SrcPortIdx=%d, DstPortInd=%d", port, destination);
    }
    OB_INFO_AS(self, "Set mirroring done");
    return RC_OK;
}

int RestoreRgmiiDelays(LogCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set RGMII delay");
    for (int port = 0; port < device.NumOfPorts(); ++port) {
        if (!HasBit(device.Record().config.rgmiiDelayPorts, port))
            continue;
        if (device.Hal(&HalTable::EnableRgmiiDelay, port) != RC_OK)
            return OB_ERROR_AS(self, "EnableRgmiiDelay failed, PortIdx=%d", port);
        OB_INFO_AS(self, "EnableRgmiiDelay done, PortIdx=%d", port);
    }
    OB_INFO_AS(self, "Set RGMII delay done");
    return RC_OK;
}

int SwitchSnoopingOn(LogCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::EnableIgmpSnooping) != RC_OK)
        return OB_ERROR_AS(self, "EnableIgmpSnooping failed");
    OB_INFO_AS(self, "EnableIgmpSnooping done");
    return RC_OK;
}

int SwitchSnoopingOff(LogCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::DisableIgmpSnooping) != RC_OK)
        return OB_ERROR_AS(self, "DisableIgmpSnooping failed");
    OB_INFO_AS(self, "DisableIgmpSnooping done");
    return RC_OK;
}

int RestoreSnooping(LogCaller self, const SwitchDevice& device)
{
    const uint32_t snooping = device.Record().config.igmpSnooping;
    OB_INFO_AS(self, "Set IGMP snooping ");
    if (snooping != 0) {
        const int result =
            snooping == 1 ? SwitchSnoopingOn(self, device) : SwitchSnoopingOff(self, device);
        if (result != RC_OK)
            return result;
    }
    OB_INFO_AS(self, "Set IGMP snooping done");
    return RC_OK;
}

int RestoreMtu(LogCaller self, const SwitchDevice& device)
{
    const uint16_t mtu = device.Record().config.mtuSize;
    OB_INFO_AS(self, "Set MTU size ");
    if (mtu == kChipMtu)
        return RC_OK;
    if (device.Hal(&HalTable::SetMtuSize, mtu) != RC_OK)
        return OB_ERROR_AS(self, "Set MTU size failed");
    OB_INFO_AS(self, "Set MTU size done");
    return RC_OK;
}

int RestoreLedMode(LogCaller self, const SwitchDevice& device)
{
    const uint8_t mode = device.Record().config.ledMode;
    OB_INFO_AS(self, "Set LED config to %u", mode);
    if (!device.HasSlot(&HalTable::SetLEDConfig)) {
        OB_NOTICE_AS(self, "No HAL Function to set LED config!");
        return RC_OK;
    }
    if (device.Hal(&HalTable::SetLEDConfig, mode) != RC_OK)
        return OB_ERROR_AS(self, "Failed to set LED config!");
    OB_INFO_AS(self, "LED config set");
    return RC_OK;
}

int EnablePorts(LogCaller self, const SwitchDevice& device)
{
    const uint8_t enabled = device.Record().config.enabledPorts;
    OB_INFO_AS(self, "Enabling Ports: Mask 0x%x", enabled);
    for (int port = 0; port < device.NumOfPorts(); ++port) {
        if (!HasBit(enabled, port))
            continue;
        if (device.Hal(&HalTable::EnablePort, port) != RC_OK)
            return OB_ERROR_AS(self, "EnablePort failed, PortIdx=%d", port);
        OB_INFO_AS(self, "EnablePort %d done", port);
    }
    OB_INFO_AS(self, "Enabling Ports done: bitmap = 0x%x", enabled);
    return RC_OK;
}

constexpr int (*kSteps[])(LogCaller, const SwitchDevice&) = {
    DisablePorts,    RestoreVlanMode, RestoreLanPorts,  RestoreMacVlans,
    RestoreMacAging, RestorePhys,     RestoreMirroring, RestoreRgmiiDelays,
    RestoreSnooping, RestoreMtu,      RestoreLedMode,   EnablePorts};

}  // namespace

int _RestoreConfig(const SwitchDevice& device)
{
    OB_INFO("DevIdx %d", device.Idx());
    for (const auto step : kSteps)
        if (step(OB_CALLER, device) != RC_OK)
            return RC_ERROR;
    return RC_OK;
}

}  // namespace orblink::sw
