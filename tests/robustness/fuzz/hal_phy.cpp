// The general PHY HAL over registers and shared memory that hold anything, on a bus that fails.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "phy/ethphy_hal.h"
#include "tests/robustness/fuzz/any_call.h"

namespace fuzz {
Platform platform;
}

namespace {

using namespace fuzz;

constexpr unsigned kManyAccesses = 400;  // more than any slot needs
uint8_t* memory;
unsigned accesses;

int Access(uint16_t* value)
{
    if (++accesses > kManyAccesses)
        std::abort();
    if (Any<uint8_t>() >= 0xF8)
        return -1;
    if (value != nullptr)
        *value = Any<uint16_t>();
    return 0;
}

void CallSlot(const struct ETHPHY_HalFuncs& hal)
{
    Arguments arguments;
    int phy = arguments.Draw<uint8_t>() % 3;
    auto* words = static_cast<uint32_t*>(arguments.Allocate(12));
    switch (Any<uint8_t>() % 11) {
        case 0:
            hal.GetLink(phy, words, words + 1, words + 2);
            break;
        case 1:
            hal.SetAdminState(phy, Any<bool>());
            break;
        case 2:
            hal.ResetDisable(phy, Any<bool>());
            break;
        case 3:
            hal.ResetEnable(phy);
            break;
        case 4:
            hal.GetCaps(phy, words);
            break;
        case 5:
            hal.GetCounters(phy, arguments.Allocate(32));
            break;
        case 6:
            hal.ResetCounters(phy);
            break;
        case 7:
            hal.ReadChipReg(phy, Any<uint32_t>(), static_cast<uint16_t*>(arguments.Allocate(2)));
            break;
        case 8:
            hal.WriteChipReg(phy, Any<uint32_t>(), Any<int>());
            break;
        case 9:
            hal.SetEeeState(phy, Any<uint8_t>());
            break;
        default:
            hal.Poll(phy);
            break;
    }
}

}  // namespace

extern "C" {

int EPHAL_ReadMdio(uint8_t, uint32_t, uint16_t* value)
{
    return Access(value);
}

int EPHAL_WriteMdio(uint8_t, uint32_t, uint16_t)
{
    return Access(nullptr);
}

int EPHAL_ReadMmd(uint8_t, uint8_t, uint16_t, uint16_t* value)
{
    return Access(value);
}

int EPHAL_WriteMmd(uint8_t, uint8_t, uint16_t, uint16_t)
{
    return Access(nullptr);
}

int EPHAL_GetHwState(uint8_t, uint32_t* enabled)
{
    *enabled = Any<bool>();
    return 0;
}

uint32_t EPHAL_GetPortIfaceMode(uint8_t)
{
    return Any<uint8_t>() % 8;
}

int EPHAL_ReconfigureGmacPhy(uint8_t, int, int, int)
{
    return Access(nullptr);
}

void* EPHAL_GetHalPrivData(uint8_t)
{
    return memory;
}

int usleep(useconds_t)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    // cppcheck-suppress danglingLifetime ; nobody asks for it between two runs
    platform.input = &input;
    auto storage = std::make_unique<uint8_t[]>(EP_HAL_PRIV_DATA_SIZE);
    memory = storage.get();
    ETHPHY_HalFuncs.Init(memory);
    if (input.ConsumeBool())  // behind the word that marks the format
        input.ConsumeData(memory + 4, EP_HAL_PRIV_DATA_SIZE - 4);
    while (input.remaining_bytes() > 0) {
        accesses = 0;
        CallSlot(ETHPHY_HalFuncs);
    }
    return 0;
}
}
