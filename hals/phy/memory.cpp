#include "hals/phy/memory.h"

#include <string.h>

namespace ieee8023 {
namespace {

constexpr uint32_t kMagic = 0x80230002;  // with the version of the layout

}  // namespace

void FormatMemory(void* privateData)
{
    Memory memory{};
    memory.magic = kMagic;
    memcpy(privateData, &memory, sizeof memory);
}

PhyMemory* MemoryOf(int devIdx)
{
    if (devIdx < 0 || devIdx >= EP_MAX_PHYS)
        return nullptr;
    auto* memory = static_cast<Memory*>(EPHAL_GetHalPrivData(static_cast<uint8_t>(devIdx)));
    return memory != nullptr && memory->magic == kMagic ? &memory->phy[devIdx] : nullptr;
}

}  // namespace ieee8023
