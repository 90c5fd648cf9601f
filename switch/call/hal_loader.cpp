#include <dlfcn.h>

#include <cerrno>

#include "board/hal_name.h"
#include "common/log.h"
#include "switch/call/process_state.h"

namespace orblink::sw {
namespace {

constexpr const char* kTableSymbol = "OBHAL_HalFuncs";

struct Library {
    void* handle;
    int error;
    const char* reason;
};

// An empty name would open the program itself. Handles stay open for the life of the process.
Library Open(const HalName& name)
{
    if (name.IsEmpty())
        return {nullptr, ENOENT, "the library has no name"};
    void* handle = dlopen(name.Text(), RTLD_NOW);
    const int error = errno;
    return {handle, error, handle == nullptr ? dlerror() : nullptr};
}

int LoadHal(LogCaller caller, int switchIdx)
{
    const HalName name{process.region->device[switchIdx].board.halLibName};
    const Library library = Open(name);
    if (library.handle == nullptr)
        return OB_ERROR_AS(caller,
                           "dlopen failed, so='%s', errno=%d, %s. Check SDK compilation options.",
                           name.Text(), library.error, library.reason);
    const void* table = dlsym(library.handle, kTableSymbol);
    const int error = errno;
    process.halTables[switchIdx] = static_cast<const HalTable*>(table);
    if (table == nullptr)
        return OB_ERROR_AS(caller, "dlsym failed, sym='%s', errno=%d. %s", kTableSymbol, error,
                           dlerror());
    return RC_OK;
}

}  // namespace

int _LoadHals()
{
    for (int i = 0; i < SwitchCount(); ++i) {
        const uint8_t halIdx = process.region->device[i].halIdx;
        if (halIdx >= OB_MAX_SWITCHES)
            return OB_ERROR("Invalid HalIdx=%d, DevIdx=%d", halIdx, i);
        // HAL indices are handed out in order of first use: a switch that brings a new library has
        // an index equal to its own, so the entry tested here is the one that is filled.
        if (process.halTables[halIdx] == nullptr && LoadHal(OB_CALLER, i) != RC_OK)
            return RC_ERROR;
    }
    return RC_OK;
}

}  // namespace orblink::sw
