#include "tests/robustness/fuzz/hal_tables.h"

#include <cstring>
#include <type_traits>

#include "phy/ethphy_hal.h"
#include "switch/orblink_hal.h"
#include "switch_hal_services/orblink_hal_services.h"
#include "tests/robustness/fuzz/platform.h"

namespace fuzz {
namespace {

template <typename T>
void Fill(T)
{
}

// What a slot was given to write to.
template <typename T>
requires(std::is_integral_v<T> && !std::is_const_v<T>) void Fill(T* out)
{
    if (out != nullptr)
        *out = Any<T>();
}

void Fill(SwitchCaps* caps)
{
    platform.input->ConsumeData(caps, sizeof *caps);
}

// What slots may call back.
void CallServices(uint8_t devIdx)
{
    uint16_t value = 0;
    uint32_t word = 0;
    uint8_t bus = 0;
    uint8_t address = 0;
    switch (Any<uint8_t>() % 16) {
        case 0:
            if (auto* memory = static_cast<uint8_t*>(OBHAL_GetHalPrivData(devIdx)))
                platform.input->ConsumeData(memory, OB_HAL_PRIV_DATA_SIZE);
            break;
        case 1:
            OBHAL_GetInternalPortPidx(devIdx);
            OBHAL_GetInternalPortIfaceMode(devIdx);
            OBHAL_GetInternalPortIfaceSpeed(devIdx);
            OBHAL_GetMtuSize(devIdx);
            OBHAL_GetSwitchCount();
            break;
        case 2:
            OBHAL_GetMdioParams(devIdx, &bus, &address);
            OBHAL_ReadMdio(devIdx, Any<int>(), &value);
            break;
        case 3:
            OBHAL_WriteMdio(devIdx, Any<int>(), Any<uint16_t>());
            break;
        case 4:
            if (auto* memory = static_cast<uint8_t*>(EPHAL_GetHalPrivData(devIdx)))
                platform.input->ConsumeData(memory, EP_HAL_PRIV_DATA_SIZE);
            break;
        case 5:
            EPHAL_ReadMdio(devIdx, Any<uint32_t>(), &value);
            EPHAL_WriteMmd(devIdx, Any<uint8_t>(), Any<uint16_t>(), Any<uint16_t>());
            break;
        case 6:
            EPHAL_ReconfigureGmacPhy(devIdx, Any<int>(), Any<int>(), Any<int>());
            EPHAL_SetInterfaceState(devIdx, Any<int>());
            break;
        case 7:
            EPHAL_SetHwState(devIdx, Any<int>());
            EPHAL_GetHwState(devIdx, &word);
            EPHAL_GetUlpModeEnabled(devIdx, &word);
            EPHAL_GetPortIfaceMode(devIdx);
            EPHAL_GetPortIfaceSpeed(devIdx);
            EPHAL_GetMdioAddrAndBusId(devIdx, &bus, &address);
            break;
        default:
            break;
    }
}

// One call of any slot: other processes write meanwhile.
int Answer()
{
    CallServices(platform.input->ConsumeIntegralInRange<uint8_t>(0, 3));
    if (Any<uint8_t>() >= 0xE0) {
        WriteSomewhere(Family::kSwitch);
        WriteSomewhere(Family::kPhy);
    }
    return Any<uint8_t>() < 0xC0 ? 0 : Any<int>();
}

template <typename... Args>
int AnySlot(Args... args)
{
    (Fill(args), ...);
    return Answer();
}

int AnyWalk(int, MacEntryCallback callback, void* context)
{
    MacEntry entry;
    if (callback == nullptr)
        return Answer();
    for (int count = platform.input->ConsumeIntegralInRange(0, 300); count > 0; --count) {
        platform.input->ConsumeData(&entry, sizeof entry);
        if (Any<uint8_t>() < 0xE0) {
            auto word = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(context));
            std::memcpy(reinterpret_cast<uint8_t*>(&entry) + 20, &word, sizeof word);
        }
        if (callback(&entry) != 0 && Any<bool>())
            break;
    }
    return Answer();
}

using SwitchTable = struct OBHAL_HalFuncs;
using PhyTable = struct ETHPHY_HalFuncs;

constexpr SwitchTable kSwitchTable = {
    AnySlot, AnySlot, AnySlot, AnyWalk, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot,
    AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot,
    AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot,
    AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot,
    AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot};

constexpr PhyTable kPhyTable = {AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, nullptr,
                                AnySlot, AnySlot, AnySlot, AnySlot, AnySlot, AnySlot};

// A table as it is, or with the slots missing that the input says.
template <typename Table>
void* Draw(const Table& whole)
{
    static Table drawn;
    drawn = whole;
    void* slots[sizeof drawn / sizeof(void*)];
    std::memcpy(slots, &drawn, sizeof slots);
    if (Any<uint8_t>() >= 0xE0)
        for (void*& slot : slots)
            slot = Any<bool>() ? slot : nullptr;
    std::memcpy(&drawn, slots, sizeof slots);
    return &drawn;
}

}  // namespace

void* AnyTable(const char* name)
{
    return std::strstr(name, "ETHPHY") != nullptr ? Draw(kPhyTable) : Draw(kSwitchTable);
}

}  // namespace fuzz
