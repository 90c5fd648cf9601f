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
    : internalPort_(internal), global_(internal), macVlan_(internal), ports_(MakePorts(internal))
{
    Reset(kBootTime);
}

void VswitchChip::Reset(nanoseconds readyAfter)
{
    global_.Reset();
    fdb_.Reset();
    counters_.Reset();
    macVlan_.Reset();
    queues_.Reset();
    for (Port& port : ports_)
        port.Reset();
    addr_ = 0;
    linkMask_ = LinkMask();
    ++view_.resets;
    FollowRegisters();
    readyAt_ = rxReadyAt_ = now_ + readyAfter;
}

void VswitchChip::SetResetLine(bool hold)
{
    if (hold == held_)
        return;
    held_ = hold;
    Reset(kBootTime);
}

void VswitchChip::Advance(nanoseconds boardTime)
{
    now_ = boardTime;
    fdb_.Advance(now_, global_.AgeLimit());
    counters_.Advance(now_);
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
    complaint_ = refusal;
    return std::nullopt;
}

bool VswitchChip::Write22(uint8_t reg, uint16_t value)
{
    const Refusal refusal = WriteDirect(reg, value);
    if (refusal)
        complaint_ = refusal;
    return !refusal;
}

Refusal VswitchChip::ReadDirect(uint8_t reg, uint16_t& value)
{
    if (held_)
        return kHeld;
    if (reg > kDataInc)
        return kUnknownAddress;
    if (reg >= kAddr && !Ready())
        return kNotReady;
    if (reg < kData) {
        value = *Peek22(reg);
        return nullptr;
    }
    const Refusal refusal = ReadData(addr_, value);
    if (!refusal && reg == kDataInc)
        ++addr_;
    return refusal;
}

std::optional<uint16_t> VswitchChip::Peek22(uint8_t reg) const
{
    if (held_ || reg > kDataInc)
        return std::nullopt;
    const uint16_t direct[] = {kChipIdValue, kChipRevValue, Status(), 0, addr_};
    if (reg < kData)
        return direct[reg];
    uint16_t value = 0;
    if (!Ready() || PeekData(addr_, value))
        return std::nullopt;
    return value;
}

Refusal VswitchChip::WriteDirect(uint8_t reg, uint16_t value)
{
    if (held_)
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
        addr_ = value;
        return nullptr;
    }
    const Refusal refusal = WriteData(addr_, value);
    if (!refusal && reg == kDataInc)
        ++addr_;
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
    rxReadyAt_ = now_ + kRxResetTime;
    return nullptr;
}

Refusal VswitchChip::ReadData(uint16_t address, uint16_t& value)
{
    if (Within(address, kGlobalFirst, kGlobalLast))
        return global_.Read(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb_.Read(address, value);
    if (Within(address, kCntFirst, kCntLast))
        return counters_.Read(address, value);
    return PeekData(address, value);
}

Refusal VswitchChip::PeekData(uint16_t address, uint16_t& value) const
{
    if (Within(address, kGlobalFirst, kGlobalLast))
        return global_.Peek(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb_.Peek(address, value);
    if (Within(address, kCntFirst, kCntLast))
        return counters_.Peek(address, value);
    if (Within(address, kMacVlanFirst, kMacVlanLast))
        return macVlan_.Read(address, value);
    if (Within(address, kPortFirst, kPortLast))
        return ports_[address >> 8 & 7].Read(address & 0xFF, value);
    if (Within(address, kQueueFirst, kQueueLast))
        return queues_.Read(address, value);
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
        return global_.Write(address, value);
    if (Within(address, kFdbFirst, kFdbLast))
        return fdb_.Write(address, value, now_);
    if (Within(address, kCntFirst, kCntLast))
        return counters_.Write(address, value, now_);
    if (Within(address, kMacVlanFirst, kMacVlanLast))
        return macVlan_.Write(address, value);
    if (Within(address, kQueueFirst, kQueueLast))
        return queues_.Write(address, value);
    if (!Within(address, kPortFirst, kPortLast))
        return kUnknownAddress;
    const unsigned index = address >> 8 & 7;
    Port& port = ports_[index];
    const uint16_t vid = port.Get(kPortVid);
    const Refusal refusal = port.Write(address & 0xFF, value);
    // What was learnt in the VLAN that the port has left is not behind it any more.
    if (port.Get(kPortVid) != vid)
        fdb_.table.FlushPort(index);
    FollowLinks();
    return refusal;
}

bool VswitchChip::SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex)
{
    if (port >= kPorts || !ports_[port].SetPartner(up, speedCode, fullDuplex))
        return false;
    FollowLinks();
    FollowRegisters();
    return true;
}

void VswitchChip::SetPartnerPower(unsigned port, bool on)
{
    ports_[port].SetPartnerPower(on);
    FollowLinks();
    FollowRegisters();
}

void VswitchChip::FollowRegisters()
{
    viewStale_ = true;
    ++forwardingChanges_;
    const uint16_t snooping = global_.Get(kSnooping);
    view_.igmpForgotten += snooping & 1 ? 0 : 1;
    view_.mldForgotten += snooping & 2 ? 0 : 1;
}

const ForwardingView& VswitchChip::Forwarding()
{
    if (viewStale_)
        Decode(global_, ports_, macVlan_, queues_, view_);
    viewStale_ = false;
    return view_;
}

uint16_t VswitchChip::LinkMask() const
{
    unsigned mask = 0;
    for (unsigned p = 0; p < kPorts; ++p)
        mask |= (ports_[p].CurrentLink().up ? 1u : 0u) << p;
    return static_cast<uint16_t>(mask);
}

void VswitchChip::FollowLinks()
{
    const uint16_t links = LinkMask();
    const unsigned changed = links ^ linkMask_;
    global_.NoteLinkChange(static_cast<uint16_t>(changed));
    for (unsigned p = 0; p < kPorts; ++p) {
        if ((changed & ~links) >> p & 1)
            fdb_.table.FlushPort(p);
    }
    linkMask_ = links;
}

bool VswitchChip::Learn(const MacAddress& mac, unsigned port, unsigned vid)
{
    if (port >= kPorts || !Awake(port) || vid == 0 || vid > kMaxVid || !IsStation(mac))
        return false;
    if (!ports_[port].CurrentLink().up || ports_[port].InTest())
        return false;
    if (fdb_.table.Learn(mac, static_cast<uint16_t>(vid), port, now_))
        return true;
    global_.NoteFdbRefused();
    return false;
}

bool VswitchChip::Forget()
{
    if (!Ready())
        return false;
    fdb_.table.Flush();
    return true;
}

bool VswitchChip::AddCounter(unsigned port, std::string_view name, uint64_t value)
{
    return Ready() && counters_.Add(port, name, value);
}

}  // namespace vboard
