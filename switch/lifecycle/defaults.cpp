#include "switch/lifecycle/defaults.h"

namespace orblink::sw {
namespace {

constexpr uint16_t kDefaultVlan = 1;
constexpr uint16_t kDefaultTpid = 0x8100;
constexpr uint16_t kDefaultMtu = 2000;
constexpr uint8_t kDefaultLedMode = 3;
constexpr uint8_t kDefaultEeePorts = 0x3F;
constexpr uint32_t kDefaultAging = 3;

void WritePortDefaults(SwitchProvConfig& config, int port)
{
    config.groupId[port] = OB_NO_GROUP;
    config.groupIdLock[port] = 1;
    config.lanPortVlan[port] = kDefaultVlan;
    config.lanPortPcp[port] = 0;
    config.egressTagging[port] = 0;
    config.link[port].linkSpeed = OB_SPEED_AUTONEG;
    config.link[port].linkFullDuplex = 1;
    config.mirrorDst[port] = OB_NO_MIRROR;
}

}  // namespace

void WriteDefaultConfig(SwitchDeviceRecord& record)
{
    SwitchProvConfig& config = record.config;
    config.InProviderBridgedMode = 0;
    for (int port = 0; port < OB_MAX_PORTS; ++port)
        WritePortDefaults(config, port);
    config.mtuSize = kDefaultMtu;
    config.enabledPorts = 0xFF;
    config.rgmiiDelayPorts = 0;
    config.STagTpid = kDefaultTpid;
    config.igmpSnooping = 0;
    config.eeePorts = kDefaultEeePorts;
    config.macAging = kDefaultAging;
    for (auto& entry : config.macToVlanTable)
        entry.EnableMapping = 0;
    config.ledMode = kDefaultLedMode;
    record.configValid = 1;
}

}  // namespace orblink::sw
