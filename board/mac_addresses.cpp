#include "board/mac_addresses.h"

#include <string.h>

#include "common/log.h"

namespace orblink {
namespace {

constinit uint8_t macAddresses[kMacCount][kMacSize] = {};

bool IsMissing(const uint8_t (&mac)[kMacSize])
{
    constexpr uint8_t kNone[kMacSize] = {};
    return memcmp(mac, kNone, kMacSize) == 0;
}

}  // namespace

void StoreMacAddresses(const uint8_t (&received)[kMacCount][kMacSize])
{
    for (int k = 0; k < kMacCount; ++k)
        memcpy_s(macAddresses[k], kMacSize, received[k], kMacSize);
}

}  // namespace orblink

using namespace orblink;

int OBOS_GetMacAddresses(uint8_t* Mac0, uint8_t* Mac1, uint8_t* Mac2, uint8_t* Mac3, uint8_t* Mac4)
{
    OB_INFO("Read MAC addresses.");
    for (const auto& mac : macAddresses) {
        if (IsMissing(mac))
            return OB_ERROR("MAC addresses are not initialized!");
    }
    uint8_t* const out[kMacCount] = {Mac0, Mac1, Mac2, Mac3, Mac4};
    int result = RC_OK;
    for (int k = 0; k < kMacCount; ++k)
        result = memcpy_s(out[k], kMacSize, macAddresses[k], kMacSize);
    return result;  // of the fifth copy
}
