// What a chip model offers to the board: registers on an MDIO bus, a reset line, virtual time.
#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

#include "virtual_board/description/mac_address.h"

namespace vboard {

// One device on an MDIO bus. An access that the device does not answer, or that its data sheet
// forbids, yields nullopt or false: the access then fails and the journal carries Complaint().
class MdioDevice {
public:
    MdioDevice() = default;
    MdioDevice(const MdioDevice&) = delete;
    MdioDevice& operator=(const MdioDevice&) = delete;
    virtual ~MdioDevice() = default;

    virtual std::optional<uint16_t> Read22(uint8_t reg) = 0;
    virtual bool Write22(uint8_t reg, uint16_t value) = 0;
    virtual std::optional<uint16_t> Read45(uint8_t /*mmd*/, uint16_t /*reg*/)
    {
        return std::nullopt;
    }
    virtual bool Write45(uint8_t /*mmd*/, uint16_t /*reg*/, uint16_t /*value*/) { return false; }

    // Why the last access was refused, in a few words; only asked right after a refusal.
    virtual std::string_view Complaint() const { return "refused by the chip"; }

    // The reset attribute: held while it is 0. Called on every write, also when nothing changes,
    // and once when the board is built.
    virtual void SetResetLine(bool held) = 0;

    // The board's time since power-on, never going back; called before every other method that
    // depends on time.
    virtual void Advance(std::chrono::nanoseconds boardTime) = 0;

    // The link of a port as the outside world makes it (a PHY has port 0 only). The speed code is
    // that of the board data (2 = 10, 3 = 100, 4 = 1000, 5 = 2500 Mb/s), 1 = the best of both ends.
    // False: no such port, or a speed the port does not have.
    virtual bool SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex) = 0;

    // Interventions from outside that only a switch has; false: not supported or out of range.
    virtual bool Learn(const MacAddress& /*mac*/, unsigned /*port*/, unsigned /*vid*/)
    {
        return false;
    }
    virtual bool Forget() { return false; }
    virtual bool AddCounter(unsigned /*port*/, std::string_view /*name*/, uint64_t /*value*/)
    {
        return false;
    }

    // A clause-22 register as it stands, without the effects of a read on the bus (no clearing,
    // no access rules); nullopt: there is none, or the chip cannot show it so.
    virtual std::optional<uint16_t> Peek22(uint8_t /*reg*/) const { return std::nullopt; }

    virtual nlohmann::json State() const = 0;
};

}  // namespace vboard
