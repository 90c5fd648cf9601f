#include "virtual_board/chips/vs08/fdb.h"

#include "virtual_board/chips/vs08/ports.h"

namespace vboard::vswitch {
namespace {

using std::chrono::nanoseconds;

constexpr uint16_t kIndex = 0x0200;
constexpr uint16_t kCommand = 0x0201;
constexpr uint16_t kMac0 = 0x0202;
constexpr uint16_t kVid = 0x0205;
constexpr uint16_t kInfo = 0x0206;
constexpr uint16_t kAge = 0x0207;
constexpr uint16_t kCount = 0x0208;
constexpr uint16_t kStaticCount = 0x0209;

enum Command : uint16_t { kGetNext = 1, kAddStatic = 2, kDelete = 3, kFlush = 4 };
constexpr uint16_t kFailed = 1 << 14;
constexpr uint16_t kCommandBusy = 1 << 15;
constexpr uint16_t kInfoStatic = 1 << 4;

constexpr nanoseconds kCommandTime = std::chrono::microseconds(5);

constexpr RegisterSpec kSpecs[] = {
    {kIndex, 0, 0x07FF, 0, MacTable::kSlots - 1},
    {kCommand, 0, 0x000F, kGetNext, kFlush},
    {kMac0, 0, 0xFFFF, 0, 0xFFFF},
    {kMac0 + 1, 0, 0xFFFF, 0, 0xFFFF},
    {kMac0 + 2, 0, 0xFFFF, 0, 0xFFFF},
    {kVid, 0, 0x0FFF, 0, kMaxVid},
    {kInfo, 0, 0x0017, 0, 0x0017},
    {kAge, 0, 0, 0, 0},
    {kCount, 0, 0, 0, 0},
    {kStaticCount, 0, 0, 0, 0},
};

}  // namespace

Fdb::Fdb() : registers_(kSpecs) {}

void Fdb::Reset()
{
    registers_.Reset();
    table.Clear();
    doneAt_.reset();
    failed_ = false;
}

void Fdb::Advance(nanoseconds now, nanoseconds ageLimit)
{
    currentTime_ = now;
    if (doneAt_ && now >= *doneAt_) {
        doneAt_.reset();
        failed_ = !Execute();
    }
    table.Age(now, ageLimit);
}

Refusal Fdb::Read(uint16_t address, uint16_t& value) const
{
    if (Busy() && address <= kAge && address != kCommand)
        return kBusy;
    return Peek(address, value);
}

Refusal Fdb::Peek(uint16_t address, uint16_t& value) const
{
    const Refusal refusal = registers_.Read(address, value);
    if (address == kCommand)
        value |= static_cast<uint16_t>((Busy() ? kCommandBusy : 0) | (failed_ ? kFailed : 0));
    else if (address == kCount)
        value = static_cast<uint16_t>(table.Count());
    else if (address == kStaticCount)
        value = static_cast<uint16_t>(table.StaticCount());
    return refusal;
}

Refusal Fdb::Write(uint16_t address, uint16_t value, nanoseconds now)
{
    if (Busy() && address <= kAge)
        return kBusy;
    return address == kCommand ? Start(value, now) : registers_.Write(address, value);
}

Refusal Fdb::Start(uint16_t value, nanoseconds now)
{
    const Refusal refusal = registers_.Write(kCommand, value);
    if (refusal)
        return refusal;
    failed_ = false;
    doneAt_ = now + kCommandTime;
    return nullptr;
}

bool Fdb::Execute()
{
    switch (registers_[kCommand]) {
        case kGetNext:
            return GetNext();
        case kAddStatic:
            return AddStatic();
        case kDelete:
            return table.Delete(Mac(), registers_[kVid]);
        default:
            table.Flush();
            return true;
    }
}

bool Fdb::GetNext()
{
    const size_t slot = table.NextUsed(registers_[kIndex]);
    if (slot == MacTable::kSlots)
        return false;
    const MacTable::Entry& entry = table.At(slot);
    registers_.Set(kIndex, static_cast<uint16_t>(slot));
    for (size_t word = 0; word < 3; ++word)
        registers_.Set(static_cast<uint16_t>(kMac0 + word),
                       static_cast<uint16_t>(entry.mac[2 * word] << 8 | entry.mac[2 * word + 1]));
    registers_.Set(kVid, entry.vid);
    registers_.Set(kInfo, static_cast<uint16_t>(entry.port | (entry.isStatic ? kInfoStatic : 0)));
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(currentTime_ - entry.seen);
    registers_.Set(kAge, entry.isStatic ? 0 : static_cast<uint16_t>(age.count()));
    return true;
}

bool Fdb::AddStatic()
{
    const MacAddress mac = Mac();
    const uint16_t vid = registers_[kVid];
    return IsStation(mac) && vid != 0 && table.AddStatic(mac, vid, registers_[kInfo] & 7);
}

MacAddress Fdb::Mac() const
{
    MacAddress mac;
    for (uint16_t i = 0; i < 6; ++i)
        mac[i] = static_cast<uint8_t>(registers_[kMac0 + i / 2] >> (i % 2 ? 0 : 8));
    return mac;
}

}  // namespace vboard::vswitch
