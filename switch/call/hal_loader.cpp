#include "switch/call/hal_loader.h"

#include "board/hal_name.h"
#include "common/hal_library.h"
#include "common/log.h"
#include "common/read_once.h"
#include "switch/call/device.h"

namespace orblink::sw {

constexpr const char* kTableSymbol = "OBHAL_HalFuncs";

int _LoadHals(const SwitchDeviceRegion& region)
{
    const uint8_t count = SwitchCount(region);
    for (int i = 0; i < count; ++i) {
        const uint8_t halIdx = ReadOnce(region.device[i].halIdx);
        if (halIdx >= OB_MAX_SWITCHES)
            return OB_ERROR("Invalid HalIdx=%d, DevIdx=%d", halIdx, i);
        // HAL indices are handed out in order of first use: a switch that brings a new library has
        // an index equal to its own, so the entry tested here is the one that is filled.
        if (process.halTables[halIdx] != nullptr)
            continue;
        const HalName name{region.device[i].board.halLibName};
        const HalLibrary library = LoadHalLibrary(name.Text(), kTableSymbol);
        if (library.failed == HalStep::kOpen)
            return OB_ERROR("dlopen failed, so='%s', errno=%d, %s. Check SDK compilation options.",
                            name.Text(), library.error, library.reason);
        process.halTables[i] = static_cast<const HalTable*>(library.table);
        if (library.failed == HalStep::kSymbol)
            return OB_ERROR("dlsym failed, sym='%s', errno=%d. %s", kTableSymbol, library.error,
                            library.reason);
    }
    return RC_OK;
}

}  // namespace orblink::sw
