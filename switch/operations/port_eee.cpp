#include "switch/call/bitmap.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr uint8_t kNoPort = 255;

bool IsPort(LogCaller caller, const SwitchCall& call, uint8_t port)
{
    if (!call)
        return false;
    if (port != kNoPort && port < call.Device().NumOfPorts())
        return true;
    OB_ERROR_AS(caller, "Invalid PhyPortIdx=%d DevIdx=%d", port, call.Device().Idx());
    return false;
}

bool IsEeePort(LogCaller caller, const SwitchCall& call, uint8_t port)
{
    if (!IsPort(caller, call, port))
        return false;
    if ((call.Record().caps.capsFlags & OB_CAPS_EEE) != 0)
        return true;
    OB_ERROR_AS(caller, "Switch does not support 802.3az, DevIdx=%d", call.Device().Idx());
    return false;
}

// The link is down while `change` runs, and the wish stored before it comes up again. A port that
// nobody enabled is left down.
template <typename Change>
int ChangeWithLinkDown(LogCaller caller, const SwitchCall& call, uint8_t port, uint8_t wanted,
                       Change change)
{
    const SwitchDevice& device = call.Device();
    if (device.Hal(&HalTable::DisablePort, port) != RC_OK)
        return OB_ERROR_AS(caller, "DisablePort failed, PhyPortIdx = %d, DevIdx=%d", port,
                           device.Idx());
    const int result = change();
    if (result == RC_OK)
        call.Config().eeePorts = wanted;
    if (HasPort(call.Config().enabledPorts, port))
        device.Hal(&HalTable::EnablePort, port);
    return result;
}

// `wanted` is the bitmap as it is to be stored.
template <typename Already, typename Change>
int ApplyEee(LogCaller caller, const SwitchCall& call, uint8_t port, uint8_t wanted,
             Already already, Change change)
{
    if (call.Config().eeePorts == wanted) {
        already();
        return RC_OK;
    }
    if (HasPort(call.Record().dvtPorts, port))
        OB_NOTICE_AS(caller, "DevIdx=%d PhyPortIdx=%d is in DVT mode", call.Device().Idx(), port);
    if (call.Device().IsEnabled())
        return ChangeWithLinkDown(caller, call, port, wanted, change);
    call.Config().eeePorts = wanted;
    return RC_OK;
}

}  // namespace

int ORBLINK_GetEeePortState(uint8_t DevIdx, uint8_t Port, uint32_t* EeeState)
{
    OB_TRACE("DevIdx = %d, Port=%d", DevIdx, Port);
    if (EeeState == nullptr)
        return OB_ERROR("Bad input - EeeState is NULL");
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!IsPort(OB_CALLER, call, Port))
        return RC_ERROR;
    if (!call.Device().IsEnabled()) {
        *EeeState = 0;
        return finished.Ok();
    }
    if (call.Device().Hal(&HalTable::GetEeePortState, Port, EeeState) != RC_OK)
        return OB_ERROR("GetEeePortState failed, DevIdx = %d, Port=%d", DevIdx, Port);
    return finished.Ok();
}

int ORBLINK_EnablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx)
{
    const LogCaller self = OB_CALLER;
    OB_TRACE("PhyPortIdx=%d", PhyPortIdx);
    FinishedLine finished{self};
    SwitchCall call{self, DevIdx, &finished};
    if (!IsEeePort(self, call, PhyPortIdx))
        return RC_ERROR;
    const auto already = [&] {
        OB_NOTICE_AS(self, "EEE is already enabled for PortIdx=%d, DevIdx=%d", PhyPortIdx, DevIdx);
    };
    const auto change = [&] {
        if (call.Device().Hal(&HalTable::EnablePhyPortEee, PhyPortIdx) != RC_OK)
            return OB_ERROR_AS(self, "EnablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d",
                               PhyPortIdx, DevIdx);
        return RC_OK;
    };
    return finished.Result(ApplyEee(self, call, PhyPortIdx,
                                    WithPort(call.Config().eeePorts, PhyPortIdx), already, change));
}

int ORBLINK_DisablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx)
{
    const LogCaller self = OB_CALLER;
    OB_TRACE("PhyPortIdx=%d", PhyPortIdx);
    if (ORBLINK_isBatteryMode() != 0)
        return OB_NOTICE("Modem in battery mode - skipping VendorSpecificIoctl %d", DevIdx);
    FinishedLine finished{self};
    SwitchCall call{self, DevIdx, &finished};
    if (!IsEeePort(self, call, PhyPortIdx))
        return RC_ERROR;
    const auto already = [&] {
        OB_NOTICE_AS(self, "EEE is already disabled for PortIdx=%d, DevIdx=%d", PhyPortIdx, DevIdx);
    };
    const auto change = [&] {
        if (call.Device().Hal(&HalTable::DisablePhyPortEee, PhyPortIdx) != RC_OK)
            return OB_ERROR_AS(self, "DisablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d",
                               PhyPortIdx, DevIdx);
        return RC_OK;
    };
    return finished.Result(ApplyEee(
        self, call, PhyPortIdx, WithoutPort(call.Config().eeePorts, PhyPortIdx), already, change));
}
