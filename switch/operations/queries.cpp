#include <cstring>

#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_GetNumOfSwitches(uint8_t* Out)
{
    OB_TRACE("");
    SwitchLock lock;
    if (!lock)
        return OB_ERROR("_ApiProlog() failed");
    if (Out == nullptr)
        return OB_ERROR("Illegal params");
    const uint8_t count = ReadOnce(lock.Region().NumOfSwitches);
    if (count > OB_MAX_SWITCHES)
        return OB_ERROR("Illegal NumOfSwitches=%d", count);
    *Out = count;
    return RC_OK;
}

int ORBLINK_GetSwitchCaps(uint8_t DevIdx, void* Out)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Record().capsValid == 0)
        return OB_ERROR("Switch capabilities are not valid, DevIdx=%d", DevIdx);
    if (memcpy_s(Out, sizeof(SwitchCaps), &call.Record().caps, sizeof(SwitchCaps)) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

int ORBLINK_GetSwitchProvConfig(uint8_t DevIdx, void* Out)
{
    if (ORBLINK_isBatteryMode() != 0) {
        OB_TRACE("Modem in battery mode - skipping GetSwitchProvConfig %d", DevIdx);
        return RC_ERROR;
    }
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Record().configValid == 0)
        return OB_ERROR("Switch was not provisioned, DevIdx=%d", DevIdx);
    if (memcpy_s(Out, sizeof(SwitchProvConfig), &call.Config(), sizeof(SwitchProvConfig)) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

int ORBLINK_GetSwitchDevices(void* Out)
{
    OB_TRACE("");
    SwitchLock lock;
    if (!lock)
        return OB_ERROR("_ApiProlog() failed");
    if (memcpy_s(Out, sizeof(SwitchDeviceRegion), &lock.Region(), sizeof(SwitchDeviceRegion)) != 0)
        return OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

int ORBLINK_GetIsolationModeEnabled(uint8_t DevIdx, uint32_t* Out)
{
    // The flag and a reserved word: what the board data receiver stores.
    constexpr uint32_t kStoredSize = 8;

    if (Out == nullptr)
        return OB_ERROR("Illegal params");
    if (DevIdx >= OB_MAX_SWITCHES)
        return OB_ERROR("Illegal DevIdx %d!", DevIdx);
    SwitchDeviceRegion copy;
    if (ORBLINK_GetSwitchDevices(&copy) != RC_OK)
        return OB_ERROR("Failed to access shared memory");
    const SwitchVendorRecord& vendor = copy.vendor[DevIdx];
    if (vendor.vendorParamSize != kStoredSize)
        return OB_ERROR("Illegal saved configuration");
    uint32_t isolated = 0;
    memcpy(&isolated, vendor.vendorParams, sizeof(isolated));
    *Out = isolated != 0 ? 1 : 0;
    OB_TRACE("Port Isolation Enabled %d", *Out);
    return RC_OK;
}
