// Replaying the stored configuration onto a chip.
#pragma once

#include "switch/call/device.h"

namespace orblink::sw {

// Everything but what _RestorePortConfig does, in a fixed order, ports enabled last. Stops at the
// first failing HAL call, which it logs. Values equal to the chip's own defaults are not sent.
int _RestoreConfig(const SwitchDevice& device);

// Speed, duplex and EEE of one port, whatever their values. Nothing for a port without a PHY.
int _RestorePortConfig(const SwitchDevice& device, uint8_t port);

}  // namespace orblink::sw
