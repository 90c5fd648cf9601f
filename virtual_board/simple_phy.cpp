#include "virtual_board/simple_phy.h"

namespace vboard {
namespace {

constexpr uint16_t kIdentifier1 = 0x0156;
constexpr uint16_t kIdentifier2 = 0x0080;
constexpr uint16_t kStatus = 0x7949;  // all of 10 and 100 Mb/s, negotiation, extended registers
constexpr uint16_t kLinkUpBits = 0x0024;
constexpr uint16_t kSelfClearing = 0x8200;
constexpr uint16_t kWithoutPower = 0xFFFF;

}  // namespace

std::optional<uint16_t> SimplePhy::Peek22(uint8_t reg) const
{
    switch (reg) {
        case 0:
            return control_;
        case 1:
            return linkUp_ ? kStatus | kLinkUpBits : kStatus;
        case 2:
            return kIdentifier1;
        case 3:
            return kIdentifier2;
        default:
            return 0;
    }
}

std::optional<uint16_t> SimplePhy::Read22(uint8_t reg)
{
    return held_ ? kWithoutPower : Peek22(reg);
}

bool SimplePhy::Write22(uint8_t reg, uint16_t value)
{
    if (reg == 0 && !held_)
        control_ = value & static_cast<uint16_t>(~kSelfClearing);
    return true;
}

bool SimplePhy::SetLink(unsigned port, bool up, unsigned /*speedCode*/, bool /*fullDuplex*/)
{
    linkUp_ = up;
    return port == 0;
}

nlohmann::json SimplePhy::State() const
{
    return {{"inReset", held_}, {"linkUp", linkUp_}, {"control", control_}};
}

}  // namespace vboard
