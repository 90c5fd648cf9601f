#include "virtual_board/chips/vs08/ports.h"

#include <algorithm>
#include <stdexcept>

namespace vboard::vswitch {
namespace {

constexpr uint16_t kInfoSerdes = 6;
constexpr uint16_t kInfoRgmii = 4;
constexpr uint16_t kInfoPhy = 3 | 1 << 3;
constexpr uint16_t kInfoInternal = 1 << 4;

constexpr std::array kCommon = std::to_array<RegisterSpec>({
    {kPortInfo, 0, 0, 0, 0},
    {kPortCtrl, 1, 1, 0, 1},
    {kPortStatus, 0, 0, 0, 0},
    {kPortVid, 1, 0x0FFF, 1, kMaxVid},
    {kPortPcp, 0, 7, 0, 7},
    {kPortTag, 0, 1, 0, 1},
    {kPortGroup, 0, 0x80FF, 0, 0xFFFF},
    {kPortMirror, 0, 0x8007, 0, 0xFFFF},
    {kPortXoff, 0, 0x0FFF, 0, 0x0FFF},
    {kPortXon, 0, 0x0FFF, 0, 0x0FFF},
});

template <size_t N>
constexpr auto WithCommon(const RegisterSpec (&own)[N])
{
    std::array<RegisterSpec, kCommon.size() + N> all{};
    std::copy(std::begin(own), std::end(own),
              std::copy(kCommon.begin(), kCommon.end(), all.begin()));
    return all;
}

constexpr auto kPhyPort = WithCommon({{kPhyCtrl, 0x0009, 0x000F, 0, 0x000F},
                                      {kPhyEee, 0, 1, 0, 1},
                                      {kPhyTest, 0, 7, 0, 4},
                                      {kPhyDvt, 0, 7, 0, 4}});
constexpr auto kRgmiiPortRegisters = WithCommon({{kRgmiiCtrl, 0, 1, 0, 1}});
constexpr auto kSerdesPort = WithCommon({{kSerdesCtrl, 2, 0x003F, 0, 0x003F}});

Port::Kind KindOf(unsigned index, bool internal)
{
    if (internal || index == 0)
        return Port::Kind::kSerdes;
    return index == kRgmiiPort ? Port::Kind::kRgmii : Port::Kind::kPhy;
}

std::span<const RegisterSpec> RegistersOf(Port::Kind kind)
{
    if (kind == Port::Kind::kSerdes)
        return kSerdesPort;
    if (kind == Port::Kind::kPhy)
        return kPhyPort;
    return kRgmiiPortRegisters;
}

unsigned SpeedField(uint16_t serdesCtrl)
{
    return serdesCtrl >> 1 & 7;
}

bool SerdesFits(uint16_t value)
{
    const unsigned speed = SpeedField(value);
    return value & 1 ? speed == kSpeed2500 : speed >= kSpeedAutoneg && speed <= kSpeed1000;
}

}  // namespace

Port::Port(unsigned number, bool isInternal)
    : index_(number),
      internal_(isInternal),
      kind_(KindOf(number, isInternal)),
      registers_(RegistersOf(kind_))
{
}

Refusal Port::Read(uint16_t offset, uint16_t& value) const
{
    const Refusal refusal = registers_.Read(offset, value);
    if (refusal)
        return refusal;
    if (offset == kPortInfo) {
        const uint16_t ofKind[] = {kInfoSerdes, kInfoPhy, kInfoRgmii};
        value = ofKind[static_cast<int>(kind_)] | (internal_ ? kInfoInternal : 0);
    } else if (offset == kPortStatus) {
        value = Status();
    } else if (offset == kPhyEee) {
        value |= static_cast<uint16_t>(EeeActive() ? 2 : 0);
    }
    return nullptr;
}

Refusal Port::Write(uint16_t offset, uint16_t value)
{
    if (offset == kPhyEee && kind_ == Kind::kPhy && value & 2)
        return kReadOnly;
    Refusal refusal = registers_.Check(offset, value);
    if (!refusal)
        refusal = CheckFields(offset, value);
    if (!refusal)
        registers_.Set(offset, value);
    return refusal;
}

Refusal Port::CheckFields(uint16_t offset, uint16_t value) const
{
    bool fits = true;
    const unsigned low = value & 7;
    if (offset == kPortGroup)
        fits = value & kGroupValid || value == 0;
    else if (offset == kPortMirror)
        fits = value & kMirrorEnable ? low != index_ : value == 0;
    else if (offset == kPhyCtrl)
        fits = low >= kSpeedAutoneg && low <= kSpeed1000;
    else if (offset == kSerdesCtrl)
        fits = SerdesFits(value);
    return fits ? nullptr : kOutOfRange;
}

bool Port::SetPartner(bool up, unsigned speedCode, bool fullDuplex)
{
    if (!up) {
        partner_ = {};
        return true;
    }
    const unsigned best = kind_ == Kind::kSerdes ? kSpeed2500 : kSpeed1000;
    const unsigned speed = speedCode == kSpeedAutoneg ? best : speedCode;
    if (speed < kSpeed10 || speed > best)
        return false;
    partner_ = {true, speed, fullDuplex};
    return true;
}

Link Port::SerdesLink() const
{
    const uint16_t ctrl = registers_[kSerdesCtrl];
    const unsigned speed = SpeedField(ctrl);
    if (speed == kSpeedAutoneg)
        return {true, std::min<unsigned>(partner_.speed, kSpeed1000), partner_.fullDuplex};
    return {true, speed, true};
}

Link Port::CurrentLink() const
{
    const bool enabled = registers_[kPortCtrl] & 1;
    if (!enabled || !partner_.up || !partnerPower_)
        return {};
    if (kind_ == Kind::kSerdes)
        return SerdesLink();
    if (kind_ == Kind::kRgmii)
        return partner_;
    if (registers_[kPhyTest] != 0)
        return {};
    const uint16_t ctrl = registers_[kPhyCtrl];
    if ((ctrl & 7u) == kSpeedAutoneg)
        return partner_;
    return {true, ctrl & 7u, (ctrl & 8) != 0};
}

bool Port::EeeActive() const
{
    const Link link = CurrentLink();
    return kind_ == Kind::kPhy && registers_[kPhyEee] && link.up && link.fullDuplex &&
           link.speed >= kSpeed100;
}

uint16_t Port::Status() const
{
    const Link link = CurrentLink();
    return static_cast<uint16_t>((link.up ? 1 : 0) | (link.fullDuplex ? 2 : 0) | link.speed << 2);
}

std::vector<Port> MakePorts(unsigned internalPort)
{
    if (internalPort >= kPorts)
        throw std::invalid_argument("the internal port must be 0 to 7");
    std::vector<Port> ports;
    for (unsigned p = 0; p < kPorts; ++p)
        ports.emplace_back(p, p == internalPort);
    return ports;
}

}  // namespace vboard::vswitch
