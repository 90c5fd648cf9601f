#include "switch/orblink_api.h"
#include "tests/robustness/fuzz/board_data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzz::Initialise(
        fuzz::Family::kSwitch, [] { return ORBLINK_InitOnce(1); }, data, size);
}
