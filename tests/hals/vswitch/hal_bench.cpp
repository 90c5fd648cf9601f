#include "tests/hals/vswitch/hal_bench.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

HalBench* HalBench::current = nullptr;

namespace {

constexpr std::chrono::nanoseconds kFrame(25600);

// Counts the access; false when it is the one that fails.
bool Begin()
{
    HalBench& bench = *HalBench::current;
    ++bench.accesses;
    if (!bench.frozen)
        bench.Wait(kFrame);
    const bool cut =
        bench.accesses >= bench.interruptFrom && bench.accesses <= bench.interruptUntil;
    errno = cut ? EINTR : EIO;
    return !cut && bench.accesses != bench.failAt;
}

}  // namespace

HalBench::HalBench()
{
    current = this;
    std::memset(privateData, 0xEE, sizeof privateData);
    std::memset(privateData + 1, 0, OB_HAL_PRIV_DATA_SIZE);
    Wait(std::chrono::milliseconds(20));
}

HalBench::~HalBench()
{
    current = nullptr;
    EXPECT_EQ(privateData[0], 0xEE);
    EXPECT_EQ(privateData[1 + OB_HAL_PRIV_DATA_SIZE], 0xEE);
}

void HalBench::BringUp(int devIdx)
{
    ASSERT_EQ(Hal().Init(privateData + 1), 0);
    ASSERT_EQ(Hal().ResetSwitch(devIdx, nullptr, 0), 0);
    accesses = 0;
    slept = {};
}

void HalBench::Wait(std::chrono::nanoseconds time)
{
    now += time;
    for (Device& each : device)
        each.chip.Advance(now);
}

uint16_t HalBench::Register(uint16_t address, int devIdx)
{
    vboard::VswitchChip& chip = device[devIdx].chip;
    const uint16_t kept = chip.Read22(4).value();
    chip.Write22(4, address);
    const uint16_t value = chip.Peek22(5).value();
    chip.Write22(4, kept);
    return value;
}

uint16_t HalBench::PortRegister(unsigned port, uint16_t offset, int devIdx)
{
    return Register(static_cast<uint16_t>(0x1000 + 0x100 * port + offset), devIdx);
}

extern "C" {

void* OBHAL_GetHalPrivData(uint8_t)
{
    return HalBench::current->privateData + 1;
}

int OBHAL_GetInternalPortPidx(uint8_t DevIdx)
{
    return HalBench::current->device[DevIdx].internalPort;
}

uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t DevIdx)
{
    return HalBench::current->device[DevIdx].ifaceMode;
}

uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t DevIdx)
{
    return HalBench::current->device[DevIdx].ifaceSpeed;
}

int OBHAL_ReadMdio(uint8_t DevIdx, int Reg, uint16_t* Value)
{
    if (!Begin())
        return -1;
    const auto value = HalBench::current->device[DevIdx].chip.Read22(static_cast<uint8_t>(Reg));
    if (value)
        *Value = *value;
    return value ? 0 : -1;
}

int OBHAL_WriteMdio(uint8_t DevIdx, int Reg, uint16_t Data)
{
    if (!Begin())
        return -1;
    auto& chip = HalBench::current->device[DevIdx].chip;
    return chip.Write22(static_cast<uint8_t>(Reg), Data) ? 0 : -1;
}

int usleep(useconds_t Time)
{
    HalBench* bench = HalBench::current;
    const auto time = std::chrono::microseconds(Time);
    bench->slept += time;
    if (!bench->frozen)
        bench->Wait(time);
    return 0;
}
}
