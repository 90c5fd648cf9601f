// The mailbox client in both roles: messages of any length, replies of any length, failures.
#include "hwmbox/hwmbox.h"
#include "tests/robustness/fuzz/platform.h"

namespace {

using namespace fuzz;

int Build(void* message, uint32_t* size)
{
    platform.input->ConsumeData(message, HWMB_BUFFER_SIZE);
    *size =
        Any<uint8_t>() < 0xE0 ? platform.input->ConsumeIntegralInRange(0, 4200) : Any<uint32_t>();
    return Any<uint8_t>() < 0xF0 ? 0 : -1;
}

// Reads every byte that it is told to be there.
int Parse(void* message, uint32_t size, void* destination, int destinationSize)
{
    volatile unsigned sum = 0;
    for (uint32_t i = 0; i < size; ++i)
        sum = sum + static_cast<uint8_t*>(message)[i];
    for (int i = 0; i < destinationSize; ++i)
        static_cast<uint8_t*>(destination)[i] = 0;
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    Scene scene{input, true};
    uint8_t destination[64];
    while (input.remaining_bytes() > 0) {
        int role = input.ConsumeBool() ? SOCK_COMMANDER : SOCK_SUBJECT;
        HWMB_Start(role, Any<uint16_t>(), Any<uint8_t>(), Build, Parse, destination,
                   sizeof destination);
    }
    return 0;
}
