// The VS08 HAL on a bench: the library's services over two chip models, and faults on demand.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

#include "hals/vswitch/vswitch_hal.h"
#include "hals/vswitch/vswitch_ioctl.h"
#include "switch/orblink_hal.h"
#include "virtual_board/chips/vs08/chip.h"

class HalBench {
public:
    static constexpr unsigned kInternalPort[] = {0, 4};

    struct Device {
        explicit Device(unsigned internalPort)
            : chip(internalPort), internalPort(static_cast<int>(internalPort))
        {
        }

        vboard::VswitchChip chip;
        int internalPort;  // of the board data
        uint32_t ifaceMode = OB_IFACE_HSGMII;
        uint32_t ifaceSpeed = OB_SPEED_2G5;
    };

    HalBench();
    ~HalBench();

    // What the library does for a new board: Init, and ResetSwitch without parameters.
    void BringUp(int devIdx = 0);
    void Wait(std::chrono::nanoseconds time);

    // A register as it stands; not counted as an access.
    uint16_t Register(uint16_t address, int devIdx = 0);
    uint16_t PortRegister(unsigned port, uint16_t offset, int devIdx = 0);

    std::array<Device, 2> device{Device(kInternalPort[0]), Device(kInternalPort[1])};
    int accesses = 0;       // MDIO frames that the HAL asked for
    int failAt = 0;         // the access that fails, counted from 1; 0 = none
    int interruptFrom = 0;  // likewise, those that a signal cuts short
    int interruptUntil = 0;
    bool frozen = false;  // the chips' time stands still
    std::chrono::nanoseconds now{};
    std::chrono::nanoseconds slept{};
    uint8_t privateData[1 + OB_HAL_PRIV_DATA_SIZE + 1];  // from byte 1 on, as in the region

    static HalBench* current;
};

inline const struct OBHAL_HalFuncs& Hal()
{
    return OBHAL_HalFuncs;
}
