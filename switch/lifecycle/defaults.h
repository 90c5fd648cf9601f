// The configuration of a switch that nobody has configured yet. A bring-up sends what differs from
// it: the chip comes out of reset with the same values.
#pragma once

#include "switch/orblink_api.h"

namespace orblink::sw {

constexpr uint32_t kDefaultBridgedMode = 0;
constexpr uint16_t kDefaultTpid = 0x8100;
constexpr int32_t kDefaultGroup = OB_NO_GROUP;
constexpr uint16_t kDefaultVlan = 1;
constexpr uint8_t kDefaultPcp = 0;
constexpr uint32_t kDefaultTagging = 0;
constexpr uint32_t kDefaultSpeed = OB_SPEED_AUTONEG;
constexpr uint32_t kDefaultDuplex = 1;
constexpr uint8_t kDefaultMirror = OB_NO_MIRROR;
constexpr uint32_t kDefaultSnooping = 0;
constexpr uint16_t kDefaultMtu = 2000;
constexpr uint32_t kDefaultAging = 3;
constexpr uint8_t kDefaultLedMode = 3;
constexpr uint8_t kDefaultEnabledPorts = 0xFF;
constexpr uint8_t kDefaultEeePorts = 0x3F;

// Writes it, marked as valid. What is no configuration (state, board data, service flag) is kept.
void WriteDefaultConfig(SwitchDeviceRecord& record);

}  // namespace orblink::sw
