#include "switch/call/bitmap.h"
#include "switch/lifecycle/lane.h"
#include "switch/operations/pass_through.h"
#include "switch/lifecycle/restore.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr uint8_t kLanePort = 0;

bool IsPort(LogCaller caller, const SwitchCall& call, uint8_t port)
{
    if (!call)
        return false;
    if (port < call.Device().NumOfPorts())
        return true;
    OB_ERROR_AS(caller, "Invalid PhyPortIdx=%d, DevIdx=%d", port, call.Device().Idx());
    return false;
}

int EnableOnChip(LogCaller caller, const SwitchDevice& device, uint8_t port)
{
    if (device.Hal(&HalTable::EnablePort, port) != RC_OK)
        return OB_ERROR_AS(caller, "EnablePort failed, PortIdx=%d, DevIdx=%d", port, device.Idx());
    if (port == kLanePort && ResetInternalLane(caller, device) != RC_OK)
        return RC_ERROR;
    if (_RestorePortConfig(device, port) != RC_OK)
        return OB_ERROR_AS(caller, "Failed restore port configuration, DevIdx=%d PhyPortIdx=%d",
                           device.Idx(), port);
    return RC_OK;
}

}  // namespace

int ORBLINK_EnablePort(uint8_t DevIdx, uint8_t PortIdx)
{
    EntryExitLines lines{OB_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!IsPort(OB_CALLER, call, PortIdx))
        return RC_ERROR;
    uint8_t& enabledPorts = call.Config().enabledPorts;
    if (HasPort(enabledPorts, PortIdx)) {
        OB_NOTICE("PortIdx=%d link is already enabled, DevIdx=%d", PortIdx, DevIdx);
        return finished.Ok();
    }
    // Stored first and kept whatever follows: a later restore or retry wants the port up.
    enabledPorts = WithPort(enabledPorts, PortIdx);
    if (!call.Device().IsEnabled()) {
        OB_NOTICE("Switch is not in enabled state, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (EnableOnChip(OB_CALLER, call.Device(), PortIdx) != RC_OK)
        return RC_ERROR;
    return finished.Ok();
}

int ORBLINK_GetPortEnable(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Enabled)
{
    EntryExitLines lines{OB_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    if (Enabled == nullptr)
        return OB_ERROR("Enabled is NULL");
    *Enabled = 1;
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!IsPort(OB_CALLER, call, PortIdx) || RequireEnabled(OB_CALLER, call.Device()) != RC_OK)
        return RC_ERROR;
    if (!HasPort(call.Config().enabledPorts, PortIdx))
        *Enabled = 0;
    return finished.Ok();
}

int ORBLINK_DisablePort(uint8_t DevIdx, uint8_t PortIdx)
{
    EntryExitLines lines{OB_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!IsPort(OB_CALLER, call, PortIdx))
        return RC_ERROR;
    uint8_t& enabledPorts = call.Config().enabledPorts;
    if (!HasPort(enabledPorts, PortIdx)) {
        OB_NOTICE("PortIdx=%d link is already disabled, DevIdx=%d", PortIdx, DevIdx);
        return finished.Ok();
    }
    call.Record().dvtPorts = WithoutPort(call.Record().dvtPorts, PortIdx);
    enabledPorts = WithoutPort(enabledPorts, PortIdx);
    if (!call.Device().IsEnabled()) {
        OB_NOTICE("Switch is not in enabled state, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Device().Hal(&HalTable::DisablePort, PortIdx) != RC_OK)
        return OB_ERROR("DisablePort failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    OB_TRACE("ORBLINK_Disable -> bits now: 0x%x", enabledPorts);
    return finished.Ok();
}
