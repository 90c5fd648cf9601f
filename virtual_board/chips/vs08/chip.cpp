#include "virtual_board/chips/vs08/chip.h"

namespace vboard {

using namespace vswitch;
using std::chrono::nanoseconds;

namespace {

enum DirectRegister : uint8_t { kChipId, kChipRev, kStatus, kControl, kAddr, kData, kDataInc };

constexpr uint16_t kChipIdValue = 0x5608;
constexpr uint16_t kChipRevValue = 0x0010;
constexpr uint16_t kStatusReady = 1;
constexpr uint16_t kStatusRxReady = 2;
constexpr uint16_t kSoftReset = 1;
constexpr uint16_t kRxReset = 2;

constexpr uint16_t kPortFirst = 0x1000;
constexpr uint16_t kPortLast = 0x17FF;

constexpr nanoseconds kBootTime = std::chrono::milliseconds(20);
constexpr nanoseconds kSoftResetTime = std::chrono::milliseconds(2);
constexpr nanoseconds kRxResetTime = std::chrono::microseconds(500);

constexpr Refusal kHeld = "held in reset";
constexpr Refusal kNotReady = "not ready";

bool Within(uint16_t address, uint16_t first, uint16_t last)
{
    return address >= first && address <= last;
}

}  // namespace

VswitchChip::VswitchChip(unsigned internal)
    : internalPort(internal), global(internal), macVlan(internal), ports(MakePorts(internal))
{
    Reset(kBootTime);
}

void VswitchChip::Reset(nanoseconds readyAfter)
{
    global.Reset();
    fdb.Reset();
    counters.Reset();
    macVlan.Reset();
    queues.Reset();
    for (Port& port : ports)
        port.Reset();
    addr = 0;
    linkMask = LinkMask();
    ++view.resets;
    FollowRegisters();
    readyAt = rxReadyAt = now + readyAfter;
}

void VswitchChip::SetResetLine(bool hold)
{
    if (hold == held)
        return;
    held = hold;
    Reset(kBootTime);
}

void VswitchChip::Advance(nanoseconds boardTime)
{
    now = boardTime;
    fdb.Advance(now, global.AgeLimit());
    counters.Advance(now);
}

uint16_t VswitchChip::Status() const
{
    return static_cast<uint16_t>((Ready() ? kStatusReady : 0) | (RxReady() ? kStatusRxReady : 0));
}

std::optional<uint16_t> VswitchChip::Read22(uint8_t reg)
{
    uint16_t value = 0;
    const Refusal refusal = ReadDirect(reg, value);
    if (!refusal)
        return value;
    complaint = refusal;
    return std::nullopt;
}

bool VswitchChip::Write22(uint8_t reg, uint16_t value)
{
    const Refusal refusal = WriteDirect(reg, value);
    if (refusal)
        complaint = refusal;
    return !refusal;
}

Refusal VswitchChip::ReadDirect(uint8_t reg, uint16_t& value)
{
    if (held)
        return kHeld;
    if (reg > kDataInc)
        return kUnknownAddress;
    if (reg >= kAddr && !Ready())
        return kNotReady;
    if (reg < kData) {
        value = *Peek22(reg);
        return nullptr;
    }
    const Refusal refusal = ReadData(addr, value);
    if (!refusal && reg == kDataInc)
        ++addr;
    return refusal;
}

std::optional<uint16_t> VswitchChip::Peek22(uint8_t reg) const
{
    if (held || reg > kDataInc)
        return std::nullopt;
    const uint16_t direct[] = {kChipIdValue, kChipRevValue, Status(), 0, addr};
    if (reg < kData)
        return direct[reg];
    uint16_t value = 0;
    if (!Ready() || PeekData(addr, value))
        return std::nullopt;
    return value;
}

Refusal VswitchChip::WriteDirect(uint8_t reg, uint16_t value)
{
    if (held)
        return kHeld;
    if (reg > kDataInc)
        return kUnknownAddress;
    if (reg < kControl)
        return kReadOnly;
    if (!Ready())
        return kNotReady;
    if (reg == kControl)
        return Control(value);
    if (reg == kAddr) {
        addr = value;
        return nullptr;
    }
    const Refusal refusal = WriteData(addr, value);
    if (!refusal && reg == kDataInc)
        ++addr;
    return refusal;
}

Refusal VswitchChip::Control(uint16_t value)
{
    if (value & ~(kSoftReset | kRxReset))
        return kReservedBit;
    if (value == kSoftReset) {
        Reset(kSoftResetTime);
        return nullptr;
    }
    if (value != kRxReset)
        return kOutOfRange;
    if (!RxReady())
        return kBusy;
    rxReadyAt = now + kRxResetTime;
    return nullptr;
}

Refusal VswitchChip::ReadData(uint16_t address, uint16_t& value)
{
    if (Within(address, kGlobalFirst, kGlobalLast))
        return global.Read(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb.Read(address, value);
    if (Within(address, kCntFirst, kCntLast))
        return counters.Read(address, value);
    return PeekData(address, value);
}

Refusal VswitchChip::PeekData(uint16_t address, uint16_t& value) const
{
    if (Within(address, kGlobalFirst, kGlobalLast))
        return global.Peek(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb.Peek(address, value);
    if (Within(address, kCntFirst, kCntLast))
        return counters.Peek(address, value);
    if (Within(address, kMacVlanFirst, kMacVlanLast))
        return macVlan.Read(address, value);
    if (Within(address, kPortFirst, kPortLast))
        return ports[address >> 8 & 7].Read(address & 0xFF, value);
    if (Within(address, kQueueFirst, kQueueLast))
        return queues.Read(address, value);
    return kUnknownAddress;
}

Refusal VswitchChip::WriteData(uint16_t address, uint16_t value)
{
    const Refusal refusal = WriteBlock(address, value);
    FollowRegisters();
    return refusal;
}

Refusal VswitchChip::WriteBlock(uint16_t address, uint16_t value)
{
    if (Within(address, kGlobalFirst, kGlobalLast))
        return global.Write(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb.Write(address, value, now);
    if (Within(address, kCntFirst, kCntLast))
        return counters.Write(address, value, now);
    if (Within(address, kMacVlanFirst, kMacVlanLast))
        return macVlan.Write(address, value);
    if (Within(address, kQueueFirst, kQueueLast))
        return queues.Write(address, value);
    if (!Within(address, kPortFirst, kPortLast))
        return kUnknownAddress;
    const unsigned index = address >> 8 & 7;
    Port& port = ports[index];
    const uint16_t vid = port.Get(kPortVid);
    const Refusal refusal = port.Write(address & 0xFF, value);
    // What was learnt in the VLAN that the port has left is not behind it any more.
    if (port.Get(kPortVid) != vid)
        fdb.table.FlushPort(index);
    FollowLinks();
    return refusal;
}

bool VswitchChip::SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex)
{
    if (port >= kPorts || !ports[port].SetPartner(up, speedCode, fullDuplex))
        return false;
    FollowLinks();
    FollowRegisters();
    return true;
}

void VswitchChip::SetPartnerPower(unsigned port, bool on)
{
    ports[port].SetPartnerPower(on);
    FollowLinks();
    FollowRegisters();
}

void VswitchChip::FollowRegisters()
{
    viewStale = true;
    ++forwardingChanges;
    const uint16_t snooping = global.Get(kSnooping);
    view.igmpForgotten += snooping & 1 ? 0 : 1;
    view.mldForgotten += snooping & 2 ? 0 : 1;
}

const ForwardingView& VswitchChip::Forwarding()
{
    if (viewStale)
        Decode(global, ports, macVlan, queues, view);
    viewStale = false;
    return view;
}

uint16_t VswitchChip::LinkMask() const
{
    unsigned mask = 0;
    for (unsigned p = 0; p < kPorts; ++p)
        mask |= (ports[p].CurrentLink().up ? 1u : 0u) << p;
    return static_cast<uint16_t>(mask);
}

void VswitchChip::FollowLinks()
{
    const uint16_t links = LinkMask();
    const unsigned changed = links ^ linkMask;
    global.NoteLinkChange(static_cast<uint16_t>(changed));
    for (unsigned p = 0; p < kPorts; ++p) {
        if ((changed & ~links) >> p & 1)
            fdb.table.FlushPort(p);
    }
    linkMask = links;
}

bool VswitchChip::Learn(const MacAddress& mac, unsigned port, unsigned vid)
{
    if (port >= kPorts || !Awake(port) || vid == 0 || vid > kMaxVid || !IsStation(mac))
        return false;
    if (!ports[port].CurrentLink().up || ports[port].InTest())
        return false;
    if (fdb.table.Learn(mac, static_cast<uint16_t>(vid), port, now))
        return true;
    global.NoteFdbRefused();
    return false;
}

bool VswitchChip::Forget()
{
    if (!Ready())
        return false;
    fdb.table.Flush();
    return true;
}

bool VswitchChip::AddCounter(unsigned port, std::string_view name, uint64_t value)
{
    return Ready() && counters.Add(port, name, value);
}

}  // namespace vboard
