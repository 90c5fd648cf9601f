// A PHY that answers its control, status and identifier registers and follows its cable.
#pragma once

#include "virtual_board/link_partner.h"
#include "virtual_board/mdio_device.h"

namespace vboard {

class SimplePhy : public MdioDevice {
public:
    explicit SimplePhy(const LinkPartner& partner) : linkUp_{partner.connected} {}

    std::optional<uint16_t> Read22(uint8_t reg) override;
    bool Write22(uint8_t reg, uint16_t value) override;
    void SetResetLine(bool held) override { held_ = held; }
    void Advance(std::chrono::nanoseconds) override {}
    bool SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex) override;
    std::optional<uint16_t> Peek22(uint8_t reg) const override;
    nlohmann::json State() const override;

private:
    bool held_ = false;
    bool linkUp_;
    uint16_t control_ = 0x1000;
};

}  // namespace vboard
