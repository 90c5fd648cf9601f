#include "hals/linux_switch/memory.h"

#include <stddef.h>
#include <string.h>

#include "hals/linux_switch/log.h"

namespace linux_switch {
namespace {

constexpr uint32_t kFormat = 0x4C535731;

struct PrivateData {
    uint32_t format;
    SwitchMemory ofSwitch[OB_MAX_SWITCHES];
};
static_assert(sizeof(PortMemory) == 40 && sizeof(Steering) == 12);
static_assert(sizeof(PrivateData) <= OB_HAL_PRIV_DATA_SIZE);

// Unaligned, so it is copied in and out.
uint8_t* PrivateDataOf(int devIdx)
{
    if (devIdx < 0 || devIdx >= OB_MAX_SWITCHES)
        return nullptr;
    auto* stored = static_cast<uint8_t*>(OBHAL_GetHalPrivData(static_cast<uint8_t>(devIdx)));
    uint32_t format = 0;
    if (stored)
        memcpy(&format, stored, sizeof format);
    return format == kFormat ? stored : nullptr;
}

size_t PlaceOf(int devIdx)
{
    return offsetof(PrivateData, ofSwitch) + static_cast<size_t>(devIdx) * sizeof(SwitchMemory);
}

bool WithinLimits(const SwitchMemory& memory)
{
    bool within = memory.ports <= kPorts && memory.cpuPort < memory.ports;
    for (const Steering& steering : memory.steering)
        within = within && (!steering.used || steering.port < kPorts);
    return within;
}

void EndNames(SwitchMemory& memory)
{
    memory.bridge[IFNAMSIZ - 1] = '\0';
    for (PortMemory& port : memory.port)
        port.name[IFNAMSIZ - 1] = '\0';
}

}  // namespace

void ClearSettings(SwitchMemory& memory, int port)
{
    PortMemory& cleared = memory.port[port];
    cleared.group = kNoGroup;
    cleared.vid = kDefaultVid;
    cleared.tagged = 0;
    cleared.pcp = 0;
    cleared.mirror = OB_NO_MIRROR;
    cleared.enabled = 1;
    cleared.megabits = 0;
    cleared.eee = Switched::kNever;
}

void ClearSettings(SwitchMemory& memory)
{
    memory.tpid = 0x8100;
    memory.isolation = 0;
    memory.ageing = kDefaultAgeing;
    memory.snooping = 0;
    memory.mtu = 0;
    memset(memory.steering, 0, sizeof memory.steering);
    for (int port = 0; port < kPorts; ++port)
        ClearSettings(memory, port);
}

void FormatMemory(void* privateData, const SwitchMemory (&memories)[OB_MAX_SWITCHES])
{
    PrivateData fresh{};
    fresh.format = kFormat;
    memcpy(fresh.ofSwitch, memories, sizeof fresh.ofSwitch);
    memcpy(privateData, &fresh, sizeof fresh);
}

bool Recall(int devIdx, SwitchMemory& memory)
{
    const uint8_t* stored = PrivateDataOf(devIdx);
    if (stored)
        memcpy(&memory, stored + PlaceOf(devIdx), sizeof memory);
    if (!stored || !memory.mapped || !WithinLimits(memory)) {
        LS_ERROR("Switch has no mapping of its ports, DevIdx=%d", devIdx);
        return false;
    }
    EndNames(memory);
    return true;
}

bool Remember(int devIdx, const SwitchMemory& memory)
{
    uint8_t* stored = PrivateDataOf(devIdx);
    if (!stored)
        return false;
    memcpy(stored + PlaceOf(devIdx), &memory, sizeof memory);
    return true;
}

}  // namespace linux_switch
