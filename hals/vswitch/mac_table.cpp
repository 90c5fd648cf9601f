// The walk of the MAC table, and the table's ioctls.
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"
#include "hals/vswitch/vswitch_hal.h"
#include "hals/vswitch/vswitch_ioctl.h"

namespace vs08 {
namespace {

static_assert(sizeof(VswitchMacEntry) == sizeof(MacEntry));
static_assert(offsetof(VswitchMacEntry, contextWord) == offsetof(MacEntry, contextWord));

constexpr int kEntryWords = 8;  // FDB_INDEX to FDB_AGE
enum EntryWord { kIndex, kCmd, kMac, kVid = kMac + 3, kInfo, kAge };

void UnpackMac(const uint16_t* words, uint8_t* mac)
{
    for (size_t i = 0; i < 6; ++i)
        mac[i] = static_cast<uint8_t>(words[i / 2] >> (i % 2 ? 0 : 8));
}

void PackMac(const uint8_t* mac, uint16_t* words)
{
    for (size_t i = 0; i < 3; ++i)
        words[i] = static_cast<uint16_t>(mac[2 * i] << 8 | mac[2 * i + 1]);
}

enum class Found { kEntry, kNoMore, kError };

// Reads the first entry at or above a slot.
Found GetNext(const Chip& chip, int slot, uint16_t* words)
{
    uint16_t result = 0;
    if (!chip.Write(kFdbIndex, static_cast<uint16_t>(slot)) ||
        !chip.Run(kFdbCmd, kFdbGetNext, result))
        return Found::kError;
    if (result & kFdbFailed)
        return Found::kNoMore;
    // A slot that does not rise would make the walk endless.
    const bool usable = chip.ReadRun(kFdbIndex, words, kEntryWords) && words[kIndex] >= slot &&
                        words[kIndex] < kFdbSlots;
    return usable ? Found::kEntry : Found::kError;
}

MacEntry Describe(const uint16_t* words, void* context)
{
    VswitchMacEntry entry{};
    UnpackMac(words + kMac, entry.mac);
    entry.vlanId = words[kVid];
    entry.port = words[kInfo] & kFdbInfoPort;
    entry.isStatic = words[kInfo] & kFdbInfoStatic ? 1 : 0;
    entry.slot = words[kIndex];
    entry.ageSeconds = words[kAge];
    entry.contextWord = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(context));
    MacEntry result;
    memcpy(&result, &entry, sizeof result);
    return result;
}

bool RunTableCommand(int devIdx, uint16_t command)
{
    uint16_t result = 0;
    return Chip(devIdx).Run(kFdbCmd, command, result) && !(result & kFdbFailed);
}

bool RunOnEntry(int devIdx, const VswitchStaticMac& entry, int port, uint16_t command)
{
    uint16_t words[5];
    PackMac(entry.mac, words);
    words[3] = entry.vlanId;
    words[4] = static_cast<uint16_t>(port);
    return IsVid(entry.vlanId) && IsPort(port) && Chip(devIdx).WriteRun(kFdbMac0, words, 5) &&
           RunTableCommand(devIdx, command);
}

}  // namespace

int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context)
{
    if (!callback)
        return -1;
    const Chip chip(devIdx);
    for (int slot = 0; slot < kFdbSlots;) {
        uint16_t words[kEntryWords];
        const Found found = GetNext(chip, slot, words);
        if (found != Found::kEntry)
            return Result(found == Found::kNoMore);
        MacEntry entry = Describe(words, context);
        if (callback(&entry) == 0)
            return 0;
        slot = words[kIndex] + 1;
    }
    return 0;
}

bool FlushMacs(int devIdx)
{
    return RunTableCommand(devIdx, kFdbFlush);
}

bool AddStaticMac(int devIdx, const void* param)
{
    VswitchStaticMac entry;
    if (!param)
        return false;
    memcpy(&entry, param, sizeof entry);
    return RunOnEntry(devIdx, entry, entry.port, kFdbAddStatic);
}

bool DeleteMac(int devIdx, const void* param)
{
    VswitchStaticMac entry;
    if (!param)
        return false;
    memcpy(&entry, param, sizeof entry);
    return RunOnEntry(devIdx, entry, 0, kFdbDelete);
}

}  // namespace vs08
