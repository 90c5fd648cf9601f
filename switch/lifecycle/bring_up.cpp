#include "common/wait.h"
#include "switch/call/frame.h"
#include "switch/lifecycle/defaults.h"
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

int StoreVendorParams(LogCaller caller, SwitchVendorRecord& stored, const VendorParamsView& given,
                      int devIdx)
{
    if (given.size > sizeof(stored.vendorParams))
        return OB_ERROR_AS(caller, "Vendor param size %d too big , DevIdx=%d", given.size, devIdx);
    if (memcpy_s(stored.vendorParams, sizeof(stored.vendorParams), given.data, given.size) != 0)
        return OB_ERROR_AS(caller, "Runtime-constraint violation error in function kova_memcpy_s");
    stored.vendorParamSize = given.size;
    return RC_OK;
}

VendorParamsView StoredVendorParams(const SwitchVendorRecord& stored)
{
    const uint32_t size = ReadOnce(stored.vendorParamSize);
    constexpr uint32_t kMax = sizeof(stored.vendorParams);
    return {stored.vendorParams, size < kMax ? size : kMax};
}

// A null pointer stands for the stored parameters only when the defaults are asked for.
int ChooseVendorParams(LogCaller caller, const SwitchDevice& device, SwitchVendorRecord& stored,
                       int setDefault, VendorParamsView& params)
{
    if (setDefault == kRestore && device.Record().configValid == 0)
        return OB_ERROR_AS(caller,
                           "Cannot enable with the current configuration - it is not valid, "
                           "DevIdx=%d",
                           device.Idx());
    if (params.data != nullptr)
        return StoreVendorParams(caller, stored, params, device.Idx());
    if (setDefault != kRestore)
        params = StoredVendorParams(stored);
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

int PulseResetPin(StepCaller caller, const SwitchDevice& device)
{
    const uint32_t pin = ReadOnce(device.Record().board.resetGpioPin);
    if (pin == OB_NO_GPIO_PIN) {
        OB_NOTICE_AS(caller, "No hardware-reseting GPIO pin defined, skipping, DevIdx=%d",
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

}  // namespace

int ORBLINK_ResetDisable(uint8_t DevIdx, int SetDefault, uint8_t* VendorParams,
                         uint32_t VendorParamSize)
{
    EntryExitLines lines{OB_TRACE_CALLER};
    OB_TRACE("DevIdx = %d, %s configuration", DevIdx,
             SetDefault != kRestore ? "Set default" : "Restore");
    FinishedLine finished{OB_TRACE_CALLER, DevIdx};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    const SwitchDevice& device = call.Device();
    if (call.Enabled()) {
        OB_NOTICE("Switch is already enabled, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    VendorParamsView params = {VendorParams, VendorParamSize};
    if (ChooseVendorParams(OB_CALLER, device, call.Region().vendor[DevIdx], SetDefault, params) !=
        RC_OK)
        return RC_ERROR;
    if (SendPreReset(OB_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (ORBLINK_isBatteryMode() != 0) {
        OB_NOTICE("Modem in battery mode - skipping ResetDisable %d", DevIdx);
        return RC_ERROR;
    }
    if (PulseResetPin(OB_STEP_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (call.Hal(&HalTable::ResetSwitch, params.data, params.size) != RC_OK)
        return OB_ERROR("ResetSwitch failed, DevIdx=%d", DevIdx);
    // At once: a failure in what follows leaves the switch enabled.
    call.Config().state = OB_STATE_ENABLED;
    if (ReadCapsOnce(OB_CALLER, device) != RC_OK)
        return RC_ERROR;
    if (SetDefault == kLoadDefaults)
        WriteDefaultConfig(call.Record());
    if (_RestoreConfig(device) != RC_OK)
        return OB_ERROR("Configuration restore failed, DevIdx=%d", DevIdx);
    if (ResetInternalLane(OB_CALLER, device) != RC_OK)
        return RC_ERROR;
    for (uint8_t port = 1; port < device.NumOfPorts(); ++port)
        _RestorePortConfig(device, port);  // result dropped: a port that fails is only logged
    return finished.Ok();
}
