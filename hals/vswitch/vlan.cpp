// VLAN and bridging.
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"

namespace vs08 {
namespace {

constexpr int kMinTpid = 0x0600;
constexpr int kMaxTpid = 0xFFFF;
constexpr int kMaxPcp = 7;

int SetLanPort(int devIdx, int port, uint16_t offset, uint16_t value)
{
    return Result(IsLanPort(devIdx, port) && Chip(devIdx).Write(PortAddress(port, offset), value));
}

constexpr uint16_t EntryAddress(int entry, uint16_t offset = 0)
{
    return static_cast<uint16_t>(kMacVlan + 8 * entry + offset);
}

struct Place {
    int match = -1;
    int free = -1;
};

// Looks for the entry of an address (its three words) on a port, and for the first free one.
bool FindEntry(const Chip& chip, int port, const uint16_t* mac, Place& place)
{
    for (int i = 0; i < kMacVlanEntries && place.match < 0; ++i) {
        uint16_t ctrl = 0;
        if (!chip.Read(EntryAddress(i), ctrl))
            return false;
        if (!(ctrl & kMacVlanValid)) {
            place.free = place.free < 0 ? i : place.free;
            continue;
        }
        if ((ctrl & kMacVlanPort) != port)
            continue;
        uint16_t words[3];
        if (!chip.ReadRun(EntryAddress(i, kMacVlanMac0), words, 3))
            return false;
        if (memcmp(words, mac, sizeof words) == 0)
            place.match = i;
    }
    return true;
}

// The chip takes an entry's fields only while it is not valid.
bool WriteEntry(const Chip& chip, int entry, int port, const uint16_t* mac, int mask, int vid)
{
    const uint16_t words[5] = {static_cast<uint16_t>(vid),
                               static_cast<uint16_t>(mask & kMacVlanMaskBits), mac[0], mac[1],
                               mac[2]};
    return chip.Write(EntryAddress(entry), 0) &&
           chip.WriteRun(EntryAddress(entry, kMacVlanVid), words, 5) &&
           chip.Write(EntryAddress(entry), static_cast<uint16_t>(kMacVlanValid | port));
}

}  // namespace

int EnableProviderBridgedMode(int devIdx, int tpid)
{
    const Chip chip(devIdx);
    if (tpid < kMinTpid || tpid > kMaxTpid)
        return -1;
    return Result(chip.Write(kPbTpid, static_cast<uint16_t>(tpid)) && chip.Write(kPbCtrl, 1));
}

int DisableProviderBridgedMode(int devIdx)
{
    return Result(Chip(devIdx).Write(kPbCtrl, 0));
}

int SetLanPortVlan(int devIdx, int port, int vid)
{
    if (!IsVid(vid))
        return -1;
    return SetLanPort(devIdx, port, kPortVid, static_cast<uint16_t>(vid));
}

int SetLanPortEgressTagging(int devIdx, int port, uint32_t enable)
{
    if (enable > 1)
        return -1;
    return SetLanPort(devIdx, port, kPortTag, static_cast<uint16_t>(enable));
}

int SetLanPortGroupId(int devIdx, int port, uint32_t group)
{
    if (group == static_cast<uint32_t>(OB_NO_GROUP))
        return SetLanPort(devIdx, port, kPortGroup, 0);
    if (group > kMaxGroup)
        return -1;
    return SetLanPort(devIdx, port, kPortGroup, static_cast<uint16_t>(kGroupValid | group));
}

int SetLanPortPcp(int devIdx, int port, int pcp)
{
    if (pcp < 0 || pcp > kMaxPcp)
        return -1;
    return SetLanPort(devIdx, port, kPortPcp, static_cast<uint16_t>(pcp));
}

int MapSetMacToVlan(int devIdx, int port, const uint8_t* mac, int mask, int vid, int enable)
{
    if (!mac || !IsLanPort(devIdx, port) || (enable && !IsVid(vid)))
        return -1;
    uint16_t words[3];
    for (size_t i = 0; i < 3; ++i)
        words[i] = static_cast<uint16_t>(mac[2 * i] << 8 | mac[2 * i + 1]);
    const Chip chip(devIdx);
    Place place;
    if (!FindEntry(chip, port, words, place))
        return -1;
    if (!enable)
        return Result(place.match < 0 || chip.Write(EntryAddress(place.match), 0));
    const int entry = place.match < 0 ? place.free : place.match;
    return Result(entry >= 0 && WriteEntry(chip, entry, port, words, mask, vid));
}

}  // namespace vs08
