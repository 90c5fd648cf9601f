#include "common/log.h"
#include "common/wait.h"
#include "switch/lifecycle/defaults.h"
#include "switch/call/frame.h"
#include "switch/lifecycle/lane.h"
#include "switch/lifecycle/restore.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr int kRestore = 0;
constexpr int kLoadDefaults = 1;
constexpr unsigned kResetPulseMicroseconds = 200000;
constexpr unsigned kChipStartSeconds = 3;

// What the HAL's ResetSwitch is given.
struct VendorParamsView {
    const uint8_t* data;
    uint32_t size;
};

int StoreVendorParams(LogCaller caller, const SwitchDevice& device, const VendorParamsView& given)
{
    SwitchVendorRecord& stored = process.region->vendor[device.Idx()];
    if (given.size > sizeof(stored.vendorParams))
        return OB_ERROR_AS(caller, "Vendor param size %d too big , DevIdx=%d", given.size,
                           device.Idx());
    if (memcpy_s(stored.vendorParams, sizeof(stored.vendorParams), given.data, given.size) != 0)
        return OB_ERROR_AS(caller, "Runtime-constraint violation error in function kova_memcpy_s");
    stored.vendorParamSize = given.size;
    return RC_OK;
}

VendorParamsView StoredVendorParams(const SwitchDevice& device)
{
    const SwitchVendorRecord& stored = process.region->vendor[device.Idx()];
    const uint32_t size = stored.vendorParamSize;
    constexpr uint32_t kMax = sizeof(stored.vendorParams);
    return {stored.vendorParams, size < kMax ? size : kMax};
}

// A null pointer stands for the stored parameters only when the defaults are asked for.
int ChooseVendorParams(LogCaller caller, const SwitchDevice& device, int setDefault,
                       VendorParamsView& params)
{
    if (setDefault == kRestore && device.Record().configValid == 0)
        return OB_ERROR_AS(caller,
                           "Cannot enable with the current configuration - it is not valid, "
                           "DevIdx=%d",
                           device.Idx());
    if (params.data != nullptr)
        return StoreVendorParams(caller, device, params);
    if (setDefault != kRestore)
        params = StoredVendorParams(device);
    return RC_OK;
}

int SendPreReset(LogCaller caller, const SwitchDevice& device)
{
    const SwitchBoardEntry& board = device.Record().board;
    ObhalPreReset payload = {static_cast<uint8_t>(board.serdesId),
                             static_cast<uint8_t>(board.preResetArg)};
    if (device.Hal(&HalTable::VendorSpecificIoctl, OBHAL_IOCTL_PRE_RESET, &payload) != RC_OK)
        return OB_ERROR_AS(caller, "Switch pre reset failed");
    return RC_OK;
}

int PulseResetPin(LogCaller caller, const SwitchDevice& device)
{
    const uint32_t pin = device.Record().board.resetGpioPin;
    if (pin == OB_NO_GPIO_PIN) {
        OB_INFO_AS(caller, "No hardware-reseting GPIO pin defined, skipping, DevIdx=%d",
                   device.Idx());
        return RC_OK;
    }
    if (OBOS_SetGpioValue(pin, 0) != RC_OK)
        return OB_ERROR_AS(caller, "OBOS_SetGpioValue failed, pin=%d, val=1, DevIdx=%d", pin,
                           device.Idx());
    OB_INFO_AS(caller, "OBOS_SetGpioValue done, pin=%d, val=0, DevIdx %d", pin, device.Idx());
    WaitMicroseconds(kResetPulseMicroseconds);
    if (OBOS_SetGpioValue(pin, 1) != RC_OK)
        return OB_ERROR_AS(caller, "OBOS_SetGpioValue failed, pin=%d, val=1, DevIdx=%d", pin,
                           device.Idx());
    WaitSeconds(kChipStartSeconds);
    OB_INFO_AS(caller, "OBOS_SetGpioValue done, pin=%d, val=1, DevIdx=%d", pin, device.Idx());
    return RC_OK;
}

int ResetChip(LogCaller caller, const SwitchDevice& device, const VendorParamsView& params)
{
    if (device.Hal(&HalTable::ResetSwitch, params.data, params.size) != RC_OK)
        return OB_ERROR_AS(caller, "ResetSwitch failed, DevIdx=%d", device.Idx());
    device.Record().config.state = OB_STATE_ENABLED;
    return RC_OK;
}

int ReadCapsOnce(LogCaller caller, const SwitchDevice& device)
{
    SwitchDeviceRecord& record = device.Record();
    if (record.capsValid != 0)
        return RC_OK;
    if (device.Hal(&HalTable::GetSwitchCaps, &record.caps) != RC_OK)
        return OB_ERROR_AS(caller, "GetSwitchCaps() failed, DevIdx=%d", device.Idx());
    record.capsValid = 1;
    return RC_OK;
}

int Configure(LogCaller caller, const SwitchDevice& device, int setDefault)
{
    if (ReadCapsOnce(caller, device) != RC_OK)
        return RC_ERROR;
    if (setDefault == kLoadDefaults)
        WriteDefaultConfig(device.Record());
    if (_RestoreConfig(device) != RC_OK)
        return OB_ERROR_AS(caller, "Configuration restore failed, DevIdx=%d", device.Idx());
    if (ResetInternalLane(caller, device) != RC_OK)
        return RC_ERROR;
    for (uint8_t port = 1; port < device.NumOfPorts(); ++port)
        _RestorePortConfig(device, port);  // a port that fails is only logged
    return RC_OK;
}

int BringUp(LogCaller caller, const SwitchDevice& device, int setDefault, VendorParamsView params)
{
    if (device.IsEnabled()) {
        OB_NOTICE_AS(caller, "Switch is already enabled, DevIdx=%d", device.Idx());
        return RC_OK;
    }
    if (ChooseVendorParams(caller, device, setDefault, params) != RC_OK ||
        SendPreReset(caller, device) != RC_OK)
        return RC_ERROR;
    if (ORBLINK_isBatteryMode() != 0)
        return OB_NOTICE_AS(caller, "Modem in battery mode - skipping ResetDisable %d",
                            device.Idx());
    if (PulseResetPin(caller, device) != RC_OK || ResetChip(caller, device, params) != RC_OK)
        return RC_ERROR;
    return Configure(caller, device, setDefault);
}

}  // namespace

int ORBLINK_ResetDisable(uint8_t DevIdx, int SetDefault, uint8_t* VendorParams,
                         uint32_t VendorParamSize)
{
    EntryExitLines lines{OB_CALLER};
    OB_TRACE("DevIdx = %d, %s configuration", DevIdx,
             SetDefault != kRestore ? "Set default" : "Restore");
    int result = RC_ERROR;
    {
        SwitchLock lock;
        if (!lock)
            return OB_ERROR("_ApiProlog() failed, DevIdx=%d", DevIdx);
        if (DevIdx >= SwitchCount())
            OB_ERROR("Invalid device index, DevIdx=%d", DevIdx);
        else
            result = BringUp(OB_CALLER, SwitchDevice(DevIdx), SetDefault,
                             {VendorParams, VendorParamSize});
    }
    OB_TRACE("finished %s, DevIdx=%d", result == RC_OK ? "OK" : "with error!", DevIdx);
    return result;
}
