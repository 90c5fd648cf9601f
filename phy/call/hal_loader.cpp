#include "phy/call/hal_loader.h"

#include <dlfcn.h>

#include <cerrno>
#include "board/hal_name.h"

namespace orblink::phy {

namespace {

constexpr const char* kTableSymbol = "ETHPHY_HalFuncs";

template <typename... Args>
int NoSlot(Args...)
{
    return RC_ERROR;
}

const char* DlErrorText()
{
    const char* const text = dlerror();
    return text == nullptr ? "" : text;
}

// Called as _LoadHals, whose step this is.
int LoadTable(LogCaller caller, const HalName& library, const HalTable*& entry)
{
    if (library.IsEmpty())  // dlopen would open the program itself
        return EP_ERROR_AS(caller,
                           "dlopen failed, so='%s', errno=%d, %s. Check SDK compilation options.",
                           library.Text(), ENOENT, "no library is named");
    void* const handle = dlopen(library.Text(), RTLD_NOW);
    if (handle == nullptr) {
        const int error = errno;
        return EP_ERROR_AS(caller,
                           "dlopen failed, so='%s', errno=%d, %s. Check SDK compilation options.",
                           library.Text(), error, DlErrorText());
    }
    entry = static_cast<const HalTable*>(dlsym(handle, kTableSymbol));
    if (entry == nullptr) {
        const int error = errno;
        return EP_ERROR_AS(caller, "dlsym failed, sym='%s', errno=%d. %s", kTableSymbol, error,
                           DlErrorText());
    }
    return RC_OK;  // the library stays loaded for the life of the process
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

int _LoadHals()
{
    for (const HalTable*& entry : process.halTables)
        entry = &kNoHal;
    for (uint8_t i = 0; i < PhyCount(); ++i) {
        const PhyDeviceRecord& record = *FindRecord(i);
        const HalName library{record.board.halLibName};
        const uint8_t halIdx = record.halIdx;
        EP_INFO_AT("DevIndex=%d HalImplLib=%s HalIndex=%d\n", i, library.Text(), halIdx);
        if (halIdx >= EP_MAX_PHYS)
            return EP_ERROR_AT("Invalid HalIndex=%d, DevIndex=%d", halIdx, i);
        const HalTable*& entry = process.halTables[halIdx];
        if (entry == &kNoHal && LoadTable(EP_CALLER, library, entry) != RC_OK)
            return RC_ERROR;
    }
    return RC_OK;
}

const HalTable* FindHal(uint8_t devIdx)
{
    const PhyDeviceRecord* const record = FindRecord(devIdx);
    const uint8_t halIdx = record == nullptr ? uint8_t{EP_NO_HAL_INDEX} : record->halIdx;
    return halIdx < EP_MAX_PHYS ? process.halTables[halIdx] : nullptr;
}

}  // namespace orblink::phy
