#include <cstring>

#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr int kMacSize = sizeof(MacToVlanEntry::Mac);
constexpr int kNibbles = 2 * kMacSize;

struct Mapping {
    uint8_t logPort;
    uint8_t mac[kMacSize];
    uint16_t mask;
    uint16_t vlanId;
};

constexpr uint8_t kNibbleMask[] = {0x0F, 0xF0};  // low digit of a byte, high digit

// Bit 0 of the mask is the last hex digit of the address, bit 11 the first.
void FillMaskedNibbles(Mapping& mapping)
{
    for (int nibble = 0; nibble < kNibbles; ++nibble)
        if (((mapping.mask >> nibble) & 1) == 0)
            mapping.mac[kMacSize - 1 - nibble / 2] |= kNibbleMask[nibble % 2];
}

struct Slots {
    MacToVlanEntry* match = nullptr;  // the same address and port, in use or not
    MacToVlanEntry* free = nullptr;   // the first free one before it
};

Slots FindSlots(SwitchProvConfig& config, const Mapping& mapping)
{
    Slots slots;
    for (MacToVlanEntry& entry : config.macToVlanTable) {
        if (entry.LogPort == mapping.logPort && memcmp(entry.Mac, mapping.mac, kMacSize) == 0) {
            slots.match = &entry;
            break;
        }
        if (slots.free == nullptr && entry.EnableMapping == 0)
            slots.free = &entry;
    }
    return slots;
}

int _SetMacVlanMapping(SwitchProvConfig& config, const Mapping& mapping, int enable)
{
    const Slots slots = FindSlots(config, mapping);
    if (enable == 0) {
        if (slots.match != nullptr)
            slots.match->EnableMapping = 0;
        return RC_OK;
    }
    MacToVlanEntry* entry = slots.match != nullptr ? slots.match : slots.free;
    if (entry == nullptr)
        return OB_ERROR("No empty entries in Mac to Vlan table");
    if (memcpy_s(entry->Mac, sizeof(entry->Mac), mapping.mac, kMacSize) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    entry->LogPort = mapping.logPort;
    // Not before the address and the port, which the compiler may otherwise do: a caller that died
    // in between would leave an entry in use that no later call finds.
    __atomic_store_n(&entry->EnableMapping, 1, __ATOMIC_RELEASE);
    entry->Mask = mapping.mask;
    entry->VlanId = mapping.vlanId;
    return RC_OK;
}

}  // namespace

int ORBLINK_MapMactoVlan(uint8_t DevIdx, uint8_t LogPort, const uint8_t* Mac, uint16_t Mask,
                         uint16_t VlanId, int EnableMapping)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsLanPort(LogPort))
        return OB_ERROR("Invalid PhyPortIdx=%d, DevIdx=%d", LogPort, DevIdx);
    Mapping mapping = {.logPort = LogPort, .mac = {}, .mask = Mask, .vlanId = VlanId};
    if (memcpy_s(mapping.mac, sizeof(mapping.mac), Mac, kMacSize) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    FillMaskedNibbles(mapping);
    if (_SetMacVlanMapping(call.Config(), mapping, EnableMapping) != RC_OK)
        return OB_ERROR("orbLinkDb_SetMacVlanMapping failed");
    if (!call.Enabled())
        return RC_OK;
    const uint8_t* mac = mapping.mac;
    if (call.Hal(&HalTable::MapSetMacToVlan, LogPort, mac, Mask, VlanId, EnableMapping) != RC_OK)
        return OB_ERROR(
            "MapSetMacToVlan failed, LogPort=%d, Mac=%02X:%02X:%02X:%02X:%02X:%02X, Mask=%04X, "
            "VlanId=%d, EnableMapping=%d",
            LogPort, mac[0], mac[1], mac[2], mac[3], mac[4], mac[5], Mask, VlanId, EnableMapping);
    return RC_OK;
}

int ORBLINK_GetMactoVlanTable(uint8_t DevIdx, void* Table)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    constexpr size_t kSize = sizeof(SwitchProvConfig::macToVlanTable);
    if (memcpy_s(Table, kSize, call.Config().macToVlanTable, kSize) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}
