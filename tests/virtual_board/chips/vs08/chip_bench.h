// A chip on a bench: MDIO frames take their time on the bus, and time passes on demand.
#pragma once

#include <chrono>
#include <optional>

#include "virtual_board/chips/vs08/chip.h"

constexpr uint16_t PortReg(unsigned port, uint16_t offset)
{
    return static_cast<uint16_t>(0x1000 + 0x100 * port + offset);
}

class ChipBench {
public:
    explicit ChipBench(unsigned internalPort = 0) : chip(internalPort) { Wait(kBoot); }

    void Wait(std::chrono::nanoseconds time)
    {
        now += time;
        chip.Advance(now);
    }

    // Frames on the bus.
    std::optional<uint16_t> ReadDirect(uint8_t reg)
    {
        Wait(kFrame);
        return chip.Read22(reg);
    }
    bool WriteDirect(uint8_t reg, uint16_t value)
    {
        Wait(kFrame);
        return chip.Write22(reg, value);
    }

    // Internal registers; the address itself is always accepted by a ready chip.
    std::optional<uint16_t> Read(uint16_t address)
    {
        return WriteDirect(4, address) ? ReadDirect(5) : std::nullopt;
    }
    bool Write(uint16_t address, uint16_t value)
    {
        return WriteDirect(4, address) && WriteDirect(5, value);
    }

    void LinkUp(unsigned port, unsigned speed = 1, bool fullDuplex = true)
    {
        if (!chip.SetLink(port, true, speed, fullDuplex))
            throw std::logic_error("link refused");
    }

    static constexpr std::chrono::nanoseconds kBoot = std::chrono::milliseconds(20);
    static constexpr std::chrono::nanoseconds kFrame = std::chrono::nanoseconds(25600);

    vboard::VswitchChip chip;
    std::chrono::nanoseconds now{};
};

inline vboard::MacAddress Station(unsigned number)
{
    return {0x02, 0, 0, 0, static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}
