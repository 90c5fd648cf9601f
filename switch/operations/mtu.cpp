#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

// The one operation whose messages print the device index with the 8-bit conversion, so it writes
// the frame's checks itself.
int ORBLINK_SetMtuSize(uint8_t DevIdx, uint16_t Val)
{
    SwitchLock lock;
    if (!lock)
        return OB_ERROR("_ApiProlog() failed, DevIdx=%hhu", DevIdx);
    if (DevIdx >= SwitchCount(lock.Region()))
        return OB_ERROR("Invalid device index, DevIdx=%hhu", DevIdx);
    const SwitchDevice device{lock.Region(), DevIdx};
    if (!device.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%hhu", DevIdx);
    if (device.Hal(&HalTable::SetMtuSize, Val) != RC_OK)
        return OB_ERROR("SetMtuSize failed, Val=%hu, DevIdx=%hhu", Val, DevIdx);
    device.Config().mtuSize = Val;
    return RC_OK;
}
