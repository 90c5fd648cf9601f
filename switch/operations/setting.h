// The setter pattern: short-cut, HAL, store.
#pragma once

#include "switch/call/frame.h"

namespace orblink::sw {

// A value that is stored already only logs `already`. An enabled switch takes it through `apply`,
// whose failure logs `failed` and leaves the record as it was; any other switch only stores it.
template <typename Stored, typename Already, typename Apply, typename Failed>
int ApplySetting(const SwitchDevice& device, Stored& stored, Stored value, Already already,
                 Apply apply, Failed failed)
{
    if (stored == value) {
        already();
        return RC_OK;
    }
    if (device.IsEnabled() && apply() != RC_OK)
        return failed();
    stored = value;
    return RC_OK;
}

}  // namespace orblink::sw
