#include "switch/lifecycle/defaults.h"

namespace orblink::sw {
namespace {

void WritePortDefaults(SwitchProvConfig& config, int port)
{
    config.groupId[port] = kDefaultGroup;
    config.groupIdLock[port] = 1;
    config.lanPortVlan[port] = kDefaultVlan;
    config.lanPortPcp[port] = kDefaultPcp;
    config.egressTagging[port] = kDefaultTagging;
    config.link[port].linkSpeed = kDefaultSpeed;
    config.link[port].linkFullDuplex = kDefaultDuplex;
    config.mirrorDst[port] = kDefaultMirror;
}

}  // namespace

void WriteDefaultConfig(SwitchDeviceRecord& record)
{
    SwitchProvConfig& config = record.config;
    config.InProviderBridgedMode = kDefaultBridgedMode;
    for (int port = 0; port < OB_MAX_PORTS; ++port)
        WritePortDefaults(config, port);
    config.mtuSize = kDefaultMtu;
    config.enabledPorts = kDefaultEnabledPorts;
    config.rgmiiDelayPorts = 0;
    config.STagTpid = kDefaultTpid;
    config.igmpSnooping = kDefaultSnooping;
    config.eeePorts = kDefaultEeePorts;
    config.macAging = kDefaultAging;
    for (auto& entry : config.macToVlanTable)
        entry.EnableMapping = 0;
    config.ledMode = kDefaultLedMode;
    record.configValid = 1;
}

}  // namespace orblink::sw
