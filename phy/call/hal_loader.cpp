#include "phy/call/hal_loader.h"

#include "board/hal_name.h"
#include "common/hal_library.h"
#include "common/log.h"
#include "phy/call/region.h"

namespace orblink::phy {
namespace {

constexpr const char* kTableSymbol = "ETHPHY_HalFuncs";

template <typename... Args>
int NoSlot(Args...)
{
    return RC_ERROR;
}

}  // namespace

constexpr HalTable kNoHal = {
    .Init = NoSlot,
    .GetLink = NoSlot,
    .SetAdminState = NoSlot,
    .ResetDisable = NoSlot,
    .ResetEnable = NoSlot,
    .GetCaps = NoSlot,
    .Reserved = nullptr,
    .GetCounters = nullptr,
    .ResetCounters = nullptr,
    .ReadChipReg = nullptr,
    .WriteChipReg = nullptr,
    .SetEeeState = nullptr,
    .Poll = nullptr,
};

int _LoadHals(const PhyDeviceRegion& region)
{
    for (auto& table : process.halTables)
        table = &kNoHal;
    const uint8_t count = PhyCount(region);
    for (uint8_t i = 0; i < count; ++i) {
        const HalName name{region.phy[i].board.halLibName};
        const uint8_t halIdx = ReadOnce(region.phy[i].halIdx);
        EP_INFO_AT("%s:%d DevIndex=%d HalImplLib=%s HalIndex=%d\n", i, name.Text(), halIdx);
        if (halIdx >= EP_MAX_PHYS)
            return EP_ERROR_AT("%s:%d Invalid HalIndex=%d, DevIndex=%d", halIdx, i);
        if (process.halTables[halIdx] != &kNoHal)
            continue;
        const HalLibrary library = LoadHalLibrary(name.Text(), kTableSymbol);
        if (library.failed == HalStep::kOpen)
            return EP_ERROR("dlopen failed, so='%s', errno=%d, %s. Check SDK compilation options.",
                            name.Text(), library.error, library.reason);
        process.halTables[halIdx] = static_cast<const HalTable*>(library.table);
        if (library.failed == HalStep::kSymbol)
            return EP_ERROR("dlsym failed, sym='%s', errno=%d. %s", kTableSymbol, library.error,
                            library.reason);
    }
    return RC_OK;
}

const HalTable* FindHal(uint8_t devIdx)
{
    const PhyDeviceRegion* const region = process.region;
    if (region == nullptr || devIdx >= EP_MAX_PHYS)
        return nullptr;
    const uint8_t halIdx = ReadOnce(region->phy[devIdx].halIdx);
    return halIdx < EP_MAX_PHYS ? process.halTables[halIdx].load() : nullptr;
}

}  // namespace orblink::phy
