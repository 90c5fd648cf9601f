// The VS08 HAL over registers and shared memory that hold anything, on a bus that fails.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <tuple>

#include "switch/orblink_hal.h"
#include "tests/robustness/fuzz/any_call.h"

namespace fuzz {
Platform platform;
}

namespace {

using namespace fuzz;

constexpr unsigned kManyAccesses = 2'000'000;  // a walk of the MAC table takes many
uint8_t* memory;
unsigned accesses;

int Access(uint16_t* value)
{
    if (++accesses > kManyAccesses)
        std::abort();
    if (platform.input->remaining_bytes() == 0)
        return -1;
    if (Any<uint8_t>() >= 0xF8)
        return -1;
    if (value != nullptr)
        *value = Any<uint16_t>();
    return 0;
}

uint32_t Visit(MacEntry*)
{
    return Any<bool>();
}

// All slots but Init and those whose arguments are spelled out.
template <typename... Args>
void CallSlot(int (*slot)(int, Args...))
{
    Arguments arguments;
    if (slot != nullptr)
        slot(Any<uint8_t>() % 3, arguments.Draw<Args>()...);
}

void CallOne(const struct OBHAL_HalFuncs& hal)
{
    Arguments arguments;
    using Table = struct OBHAL_HalFuncs;
    // cppcheck-suppress syntaxError ; it cannot read the tuple
    constexpr auto kPlain = std::tuple{&Table::EnableProviderBridgedMode,
                                       &Table::DisableProviderBridgedMode,
                                       &Table::SetLanPortVlan,
                                       &Table::SetLanPortEgressTagging,
                                       &Table::SetLanPortGroupId,
                                       &Table::SetLanPortPcp,
                                       &Table::GetPortCounters,
                                       &Table::ResetPortCounters,
                                       &Table::GetPortLink,
                                       &Table::SetPhyPortSpeedDuplex,
                                       &Table::EnablePort,
                                       &Table::DisablePort,
                                       &Table::EnableRgmiiDelay,
                                       &Table::DisableRgmiiDelay,
                                       &Table::EnableIgmpSnooping,
                                       &Table::DisableIgmpSnooping,
                                       &Table::EnablePhyPortEee,
                                       &Table::DisablePhyPortEee,
                                       &Table::SetPortMirror,
                                       &Table::ReadPortReg,
                                       &Table::WritePortReg,
                                       &Table::VendorSpecificIoctl,
                                       &Table::PrintMachineState,
                                       &Table::SetQWred,
                                       &Table::SetGlobWred,
                                       &Table::SetQRsrv,
                                       &Table::SetPortFc,
                                       &Table::SetPhyPortDvt,
                                       &Table::SetMacAging,
                                       &Table::GetEeePortState,
                                       &Table::SetMtuSize,
                                       &Table::MapSetMacToVlan,
                                       &Table::SmiRead,
                                       &Table::SmiWrite,
                                       &Table::GetPortTestMode,
                                       &Table::SetPortTestMode,
                                       &Table::GetLEDConfig,
                                       &Table::SetLEDConfig,
                                       &Table::GetSwitchCaps};
    constexpr auto kCount = std::tuple_size_v<decltype(kPlain)>;
    size_t chosen = Any<uint8_t>() % (kCount + 2);
    size_t at = 0;
    std::apply([&](auto... slots) { ((at++ == chosen ? CallSlot(hal.*slots) : void()), ...); },
               kPlain);
    auto size = platform.input->ConsumeIntegralInRange<uint32_t>(0, 40);
    if (chosen == kCount)
        hal.ResetSwitch(Any<uint8_t>() % 3, arguments.Allocate(size), size);
    if (chosen == kCount + 1)
        hal.ForEachMacEntry(Any<uint8_t>() % 3, Visit, nullptr);
}

}  // namespace

extern "C" {

void* OBHAL_GetHalPrivData(uint8_t)
{
    return memory;
}

int OBHAL_GetInternalPortPidx(uint8_t)
{
    return Any<uint8_t>() % 10;
}

uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t)
{
    return Any<uint8_t>() % 8;
}

uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t)
{
    return Any<uint8_t>() % 8;
}

int OBHAL_ReadMdio(uint8_t, int, uint16_t* value)
{
    return Access(value);
}

int OBHAL_WriteMdio(uint8_t, int, uint16_t)
{
    return Access(nullptr);
}

int usleep(useconds_t)
{
    return 0;
}

int __wrap_printf(const char* format, ...)
{
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    int length = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    return length;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    platform.input = &input;
    auto storage = std::make_unique<uint8_t[]>(OB_HAL_PRIV_DATA_SIZE);
    memory = storage.get();
    OBHAL_HalFuncs.Init(memory);
    if (input.ConsumeBool())  // behind the word that marks the format
        input.ConsumeData(memory + 4, OB_HAL_PRIV_DATA_SIZE - 4);
    while (input.remaining_bytes() > 0) {
        accesses = 0;
        CallOne(OBHAL_HalFuncs);
    }
    return 0;
}
}
