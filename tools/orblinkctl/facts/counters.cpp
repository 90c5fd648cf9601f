#include "tools/orblinkctl/facts/counters.h"

#include <array>
#include <cstring>

#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/vswitch/vswitch_hal.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

constexpr uint16_t kVs08Id = 0x5608;
constexpr char kLinuxHal[] = "liborblink_linux.so";

constexpr const char* kNames[] = {
    "etherStatsDropEvents",
    "etherStatsOctets",
    "etherStatsPkts",
    "etherStatsBroadcastPkts",
    "etherStatsMulticastPkts",
    "etherStatsCRCAlignErrors",
    "etherStatsUndersizePkts",
    "etherStatsOversizePkts",
    "etherStatsFragments",
    "etherStatsJabbers",
    "etherStatsCollisions",
    "etherStatsPkts64Octets",
    "etherStatsPkts65to127Octets",
    "etherStatsPkts128to255Octets",
    "etherStatsPkts256to511Octets",
    "etherStatsPkts512to1023Octets",
    "etherStatsPkts1024to1518Octets",
    "etherStatsPkts1519toMaxOctets",
    "aFramesTransmittedOK",
    "aOctetsTransmittedOK",
    "aMulticastFramesXmittedOK",
    "aBroadcastFramesXmittedOK",
    "aFramesReceivedOK",
    "aOctetsReceivedOK",
    "aPAUSEMACCtrlFramesTransmitted",
    "aPAUSEMACCtrlFramesReceived",
    "dot1dTpPortInDiscards",
    "dot1qTpVlanPortInDiscards",
    "dot1dBasePortMtuExceededDiscards",
    "ifOutDiscards",
};
static_assert(sizeof(VswitchPortCounters) == std::size(kNames) * sizeof(uint64_t));
static_assert(offsetof(VswitchPortCounters, ifOutDiscards) == 29 * sizeof(uint64_t));
static_assert(offsetof(VswitchPortCounters, aFramesTransmittedOK) == 18 * sizeof(uint64_t));
static_assert(sizeof(LinuxSwitchCounters) == sizeof(VswitchPortCounters));
static_assert(offsetof(LinuxSwitchCounters, ifOutDiscards) == 29 * sizeof(uint64_t));
static_assert(offsetof(LinuxSwitchCounters, aFramesTransmittedOK) == 18 * sizeof(uint64_t));

// Room for the counters of any HAL.
using Buffer = std::array<uint8_t, 8192>;

Model Raw(const Buffer& buffer)
{
    size_t size = buffer.size();
    while (size > 0 && buffer[size - 1] == 0)
        --size;
    Model model;
    model["raw"] = BytesWord(buffer.data(), size);
    return model;
}

}  // namespace

bool IsVs08(const SwitchDeviceRecord& record)
{
    VswitchCapsBytes bytes;
    std::memcpy(&bytes, record.caps.halDefined, sizeof bytes);
    return record.capsValid != 0 && (bytes.chipId[0] | bytes.chipId[1] << 8) == kVs08Id;
}

bool IsLinuxSwitch(const SwitchDeviceRecord& record)
{
    return NameIn(record.board.halLibName) == kLinuxHal;
}

Model PortCounters(const SwitchDeviceRecord& record, PortId port)
{
    Buffer buffer{};
    Enter(Family::kSwitch);
    Check(ORBLINK_GetPortCounters(static_cast<uint8_t>(port.device),
                                  static_cast<uint8_t>(port.port), buffer.data()),
          PortObject(port), "ORBLINK_GetPortCounters");
    const bool isLinux = IsLinuxSwitch(record);
    if (!isLinux && !IsVs08(record))
        return Raw(buffer);
    Model model;
    for (size_t i = 0; i < std::size(kNames); ++i) {
        uint64_t value = 0;
        std::memcpy(&value, buffer.data() + i * sizeof value, sizeof value);
        model[kNames[i]] = isLinux && value == LINUX_SWITCH_UNKNOWN ? Model() : Model(value);
    }
    return model;
}

}  // namespace ctl
