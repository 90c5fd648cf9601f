#include "virtual_board/chips/vs08/mac_vlan.h"

#include "virtual_board/chips/vs08/ports.h"

namespace vboard::vswitch {
namespace {

enum Offset : uint16_t { kCtrl, kVid, kMask, kMac0, kMac1, kMac2 };
constexpr uint16_t kValid = 1 << 15;

constexpr RegisterSpec kSpecs[] = {
    {kCtrl, 0, 0x8007, 0, 0xFFFF}, {kVid, 0, 0x0FFF, 0, kMaxVid}, {kMask, 0, 0x0FFF, 0, 0x0FFF},
    {kMac0, 0, 0xFFFF, 0, 0xFFFF}, {kMac1, 0, 0xFFFF, 0, 0xFFFF}, {kMac2, 0, 0xFFFF, 0, 0xFFFF},
};

}  // namespace

MacVlanTable::MacVlanTable(unsigned internal)
    : internalPort_(internal), entries_(kMacVlanEntries, RegisterBank(kSpecs))
{
}

void MacVlanTable::Reset()
{
    for (RegisterBank& entry : entries_)
        entry.Reset();
}

Refusal MacVlanTable::Read(uint16_t address, uint16_t& value) const
{
    return entries_[(address - kMacVlanFirst) / 8].Read(address % 8, value);
}

Refusal MacVlanTable::Write(uint16_t address, uint16_t value)
{
    RegisterBank& entry = entries_[(address - kMacVlanFirst) / 8];
    const uint16_t offset = address % 8;
    const Refusal refusal = entry.Check(offset, value);
    if (refusal)
        return refusal;
    if (offset != kCtrl && entry[kCtrl] & kValid)
        return "entry is valid";
    if (offset == kCtrl && value & kValid && (entry[kVid] == 0 || (value & 7u) == internalPort_))
        return kOutOfRange;
    entry.Set(offset, value);
    return nullptr;
}

MacVlanTable::Entry MacVlanTable::At(unsigned index) const
{
    const RegisterBank& entry = entries_[index];
    Entry result{(entry[kCtrl] & kValid) != 0, entry[kCtrl] & 7u, entry[kVid], entry[kMask], {}};
    for (uint16_t i = 0; i < 6; ++i)
        result.mac[i] = static_cast<uint8_t>(entry[kMac0 + i / 2] >> (i % 2 ? 0 : 8));
    return result;
}

}  // namespace vboard::vswitch
