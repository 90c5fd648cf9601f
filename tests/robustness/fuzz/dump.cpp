// The dump of a buffer, which is on the heap and no longer than it is said to be.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "hwmbox/hwmbox.h"
#include "tests/robustness/fuzz/platform.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider nothing{data, 0};
    fuzz::Scene scene{nothing, false};
    auto copy = std::make_unique<uint8_t[]>(size);
    std::memcpy(copy.get(), data, size);
    HWMB_dumpBuffer(copy.get(), static_cast<int>(size));
    HWMB_dumpBuffer(nullptr, static_cast<int>(size));
    HWMB_dumpBuffer(copy.get(), -static_cast<int>(size));
    return 0;
}
