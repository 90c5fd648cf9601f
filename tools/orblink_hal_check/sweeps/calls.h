// What the library under test is asked: ordinary calls of each slot of a device, and others.
#pragma once

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "tools/orblink_hal_check/watch/guarded.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

// An ordinary call of a slot; its result is that of the slot.
struct OrdinaryCall {
    const char* slot;
    std::function<int(int devIdx)> run;
};

const std::vector<OrdinaryCall>& OrdinaryCalls(Family family);

// Values that the slot has to refuse, or may refuse, and must survive.
struct UnusualCall {
    const char* slot;
    std::function<void(int devIdx)> run;
};

const std::vector<UnusualCall>& OutOfRangeCalls(Family family);
const std::vector<UnusualCall>& NullPointerCalls(Family family);

// Bytes of what GetPortCounters and GetCounters fill.
extern size_t countersSize;

// The two bytes that no result consists of in both of two calls.
inline constexpr uint8_t kFills[] = {0xA5, 0x5A};

// Calls a slot that writes one value, into a guarded buffer, twice.
template <typename Value, typename Call>
int ReadValue(const char* slot, Call call, Value* value = nullptr)
{
    bool untouched = true;
    for (const uint8_t fill : kFills) {
        Guarded out{slot, sizeof(Value), fill};
        const int result = call(out.As<Value>());
        out.CheckBeginning();
        if (result != 0)
            return result;
        untouched = untouched && out.IsUntouched();
        if (value != nullptr)
            memcpy(value, out.As<void>(), sizeof *value);
    }
    if (untouched)
        Report("result.not-filled", std::string(TheWatch().call) + " succeeded and wrote nothing");
    return 0;
}

// What is looked at in a link as a slot has given it.
void CheckSpeed(uint32_t speed);

}  // namespace halcheck
