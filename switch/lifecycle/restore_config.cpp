#include "common/log.h"
#include "switch/call/port_bits.h"
#include "switch/lifecycle/defaults.h"
#include "switch/lifecycle/restore.h"

// Each step logs in the name of its caller: an operator reads one story, told by _RestoreConfig.
namespace orblink::sw {
namespace {

int DisablePorts(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "- Disable all ports so no traffic will flow in unstable state");
    for (uint8_t port = 0; port < device.NumOfPorts(); ++port) {
        if (device.Hal(&HalTable::DisablePort, port) != RC_OK)
            return OB_ERROR_AS(self, "DisablePort failed, PortIdx=%d", port);
        OB_INFO_AS(self, "Disabled Port %d", port);
    }
    return RC_OK;
}

int EnterProviderBridgedMode(StepCaller self, const SwitchDevice& device)
{
    const uint16_t tpid = ReadOnce(device.Config().STagTpid);
    OB_INFO_AS(self, "InProviderBridgedMode == True");
    if (device.Hal(&HalTable::EnableProviderBridgedMode, tpid) != RC_OK)
        return OB_ERROR_AS(self, "EnableProviderBridgedMode failed, STagTpid=0x%x", tpid);
    OB_INFO_AS(self, "- EnableProviderBridgedMode %d done", tpid);
    return RC_OK;
}

int LeaveProviderBridgedMode(StepCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::DisableProviderBridgedMode) != RC_OK)
        return OB_ERROR_AS(self, "DisableProviderBridgedMode failed");
    OB_INFO_AS(self, "DisableProviderBridgedMode done");
    return RC_OK;
}

int RestoreVlanMode(StepCaller self, const SwitchDevice& device)
{
    const uint32_t mode = ReadOnce(device.Config().InProviderBridgedMode);
    OB_INFO_AS(self, "Set VLAN mode");
    if (mode != kDefaultBridgedMode) {
        OB_INFO_AS(self, "InProviderBridgedMode != ORBLINK_DEF_PBM");
        const int result = mode == 1 ? EnterProviderBridgedMode(self, device)
                                     : LeaveProviderBridgedMode(self, device);
        if (result != RC_OK)
            return result;
    }
    OB_INFO_AS(self, "Set VLAN mode done");
    return RC_OK;
}

int RestorePortGroup(StepCaller self, const SwitchDevice& device, uint8_t port)
{
    const int32_t group = ReadOnce(device.Config().groupId[port]);
    if (group == kDefaultGroup)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortGroupId, port, static_cast<uint32_t>(group)) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortGroupId failed, PortIdx=%d, GroupId=%d", port, group);
    OB_INFO_AS(self, "SetLanPortGroupId done, PortIdx=%d, GroupId=%d", port, group);
    return RC_OK;
}

int RestorePortVlan(StepCaller self, const SwitchDevice& device, uint8_t port)
{
    const uint16_t vlan = ReadOnce(device.Config().lanPortVlan[port]);
    if (vlan == kDefaultVlan)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortVlan, port, vlan) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortVlan failed, PortIdx=%d, Vlan=%d", port, vlan);
    OB_INFO_AS(self, "SetLanPortVlan done, PortIdx=%d, Vlan=%d", port, vlan);
    return RC_OK;
}

int RestorePortPcp(StepCaller self, const SwitchDevice& device, uint8_t port)
{
    const uint8_t pcp = ReadOnce(device.Config().lanPortPcp[port]);
    if (pcp == kDefaultPcp)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortPcp, port, pcp) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortPcp failed, PortIdx=%d, PCP=%d", port, pcp);
    OB_INFO_AS(self, "SetLanPortPcp done, PortIdx=%d, PCP=%d", port, pcp);
    return RC_OK;
}

int RestorePortTagging(StepCaller self, const SwitchDevice& device, uint8_t port)
{
    const uint32_t tagging = ReadOnce(device.Config().egressTagging[port]);
    if (tagging == kDefaultTagging)
        return RC_OK;
    if (device.Hal(&HalTable::SetLanPortEgressTagging, port, tagging) != RC_OK)
        return OB_ERROR_AS(self, "SetLanPortEgressTagging failed, PortIdx=%d, EgressTagging=%d",
                           port, tagging);
    OB_INFO_AS(self, "SetLanPortEgressTagging done, PortIdx=%d, EgressTagging=%d", port, tagging);
    return RC_OK;
}

// Port 0 is never a LAN port.
int RestoreLanPorts(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "- Set VLAN-Port associations:");
    for (uint8_t port = 1; port < device.NumOfPorts(); ++port) {
        OB_INFO_AS(self, "- Port %d", port);
        if (device.PortHasPhy(port) != 1)
            continue;
        if (RestorePortGroup(self, device, port) != RC_OK ||
            RestorePortVlan(self, device, port) != RC_OK ||
            RestorePortPcp(self, device, port) != RC_OK ||
            RestorePortTagging(self, device, port) != RC_OK)
            return RC_ERROR;
    }
    OB_INFO_AS(self, "- Set VLAN-Port associations done");
    return RC_OK;
}

int RestoreMacVlans(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Src MAC forwarding to VLAN");
    for (const MacToVlanEntry& entry : device.Config().macToVlanTable) {
        if (entry.EnableMapping == 0)
            continue;
        if (device.Hal(&HalTable::MapSetMacToVlan, entry.LogPort, entry.Mac, entry.Mask,
                       entry.VlanId, 1) != RC_OK)
            return OB_ERROR_AS(self, "MapSetMacToVlan failed");
    }
    OB_INFO_AS(self, "Src MAC forwarding to VLAN done");
    return RC_OK;
}

int RestoreMacAging(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set MAC aging");
    const auto aging = static_cast<int>(ReadOnce(device.Config().macAging));
    if (device.Hal(&HalTable::SetMacAging, aging) != RC_OK)
        return OB_ERROR_AS(self, "Set MAC aging failed, DevIdx=%d", device.Idx());
    OB_INFO_AS(self, "Done set MAC aging");
    return RC_OK;
}

int RestorePortSpeed(StepCaller self, const SwitchDevice& device, uint8_t port)
{
    const uint32_t speed = ReadOnce(device.Config().link[port].linkSpeed);
    const uint32_t duplex = ReadOnce(device.Config().link[port].linkFullDuplex);
    OB_INFO_AS(self, "- Port %d HasPhy", port);
    if (speed == kDefaultSpeed && duplex == kDefaultDuplex)
        return RC_OK;
    if (device.Hal(&HalTable::SetPhyPortSpeedDuplex, port, speed, duplex) != RC_OK)
        return OB_ERROR_AS(self, "SetPhyPortSpeedDuplex failed, Port=%d, Speed=%d, Duplex=%d", port,
                           speed, duplex);
    OB_INFO_AS(self, "SetPhyPortSpeedDuplex done, Port=%d, Speed=%d, Duplex=%d", port, speed,
               duplex);
    return RC_OK;
}

int RestorePhys(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set PHY properties");
    for (uint8_t port = 1; port < device.NumOfPorts(); ++port) {
        OB_INFO_AS(self, "- Port %d", port);
        if (device.PortHasPhy(port) == 1 && RestorePortSpeed(self, device, port) != RC_OK)
            return RC_ERROR;
    }
    OB_INFO_AS(self, "Set PHY properties done");
    return RC_OK;
}

int RestoreMirroring(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set mirroring");
    for (uint8_t port = 0; port < device.NumOfPorts(); ++port) {
        const uint8_t destination = ReadOnce(device.Config().mirrorDst[port]);
        if (destination == kDefaultMirror)
            continue;
        if (device.Hal(&HalTable::SetPortMirror, port, destination) != RC_OK)
            return OB_ERROR_AS(self, "SetPortMirror failed, SrcPortIdx=%d, DstPortInd=%d", port,
                               destination);
        OB_INFO_AS(self, "SetPortMirror done, SrcPortIdx=%d, DstPortInd=%d", port, destination);
    }
    OB_INFO_AS(self, "Set mirroring done");
    return RC_OK;
}

int RestoreRgmiiDelays(StepCaller self, const SwitchDevice& device)
{
    OB_INFO_AS(self, "Set RGMII delay");
    for (uint8_t port = 0; port < device.NumOfPorts(); ++port) {
        if (!HasPort(device.Config().rgmiiDelayPorts, port))
            continue;
        if (device.Hal(&HalTable::EnableRgmiiDelay, port) != RC_OK)
            return OB_ERROR_AS(self, "EnableRgmiiDelay failed, PortIdx=%d", port);
        OB_INFO_AS(self, "EnableRgmiiDelay done, PortIdx=%d", port);
    }
    OB_INFO_AS(self, "Set RGMII delay done");
    return RC_OK;
}

int SwitchSnoopingOn(StepCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::EnableIgmpSnooping) != RC_OK)
        return OB_ERROR_AS(self, "EnableIgmpSnooping failed");
    OB_INFO_AS(self, "EnableIgmpSnooping done");
    return RC_OK;
}

int SwitchSnoopingOff(StepCaller self, const SwitchDevice& device)
{
    if (device.Hal(&HalTable::DisableIgmpSnooping) != RC_OK)
        return OB_ERROR_AS(self, "DisableIgmpSnooping failed");
    OB_INFO_AS(self, "DisableIgmpSnooping done");
    return RC_OK;
}

int RestoreSnooping(StepCaller self, const SwitchDevice& device)
{
    const uint32_t snooping = ReadOnce(device.Config().igmpSnooping);
    OB_INFO_AS(self, "Set IGMP snooping ");
    if (snooping != kDefaultSnooping) {
        const int result =
            snooping == 1 ? SwitchSnoopingOn(self, device) : SwitchSnoopingOff(self, device);
        if (result != RC_OK)
            return result;
    }
    OB_INFO_AS(self, "Set IGMP snooping done");
    return RC_OK;
}

int RestoreMtu(StepCaller self, const SwitchDevice& device)
{
    const uint16_t mtu = ReadOnce(device.Config().mtuSize);
    OB_INFO_AS(self, "Set MTU size ");
    if (mtu == kDefaultMtu)
        return RC_OK;
    if (device.Hal(&HalTable::SetMtuSize, mtu) != RC_OK)
        return OB_ERROR_AS(self, "Set MTU size failed");
    OB_INFO_AS(self, "Set MTU size done");
    return RC_OK;
}

int RestoreLedMode(StepCaller self, const SwitchDevice& device)
{
    const uint8_t mode = ReadOnce(device.Config().ledMode);
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

int EnablePorts(StepCaller self, const SwitchDevice& device)
{
    const uint8_t enabled = ReadOnce(device.Config().enabledPorts);
    OB_INFO_AS(self, "Enabling Ports: Mask 0x%x", enabled);
    for (uint8_t port = 0; port < device.NumOfPorts(); ++port) {
        if (!HasPort(enabled, port))
            continue;
        if (device.Hal(&HalTable::EnablePort, port) != RC_OK)
            return OB_ERROR_AS(self, "EnablePort failed, PortIdx=%d", port);
        OB_INFO_AS(self, "EnablePort %d done", port);
    }
    OB_INFO_AS(self, "Enabling Ports done: bitmap = 0x%x", enabled);
    return RC_OK;
}

}  // namespace

int _RestoreConfig(const SwitchDevice& device)
{
    OB_INFO("DevIdx %d", device.Idx());
    if (DisablePorts(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreVlanMode(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreLanPorts(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreMacVlans(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreMacAging(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestorePhys(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreMirroring(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreRgmiiDelays(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreSnooping(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreMtu(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (RestoreLedMode(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    return EnablePorts(OB_STEP_CALLER, device);
}

}  // namespace orblink::sw
