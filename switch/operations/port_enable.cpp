#include "switch/call/frame.h"
#include "switch/call/port_bits.h"
#include "switch/lifecycle/lane.h"
#include "switch/lifecycle/restore.h"

using namespace orblink;
using namespace orblink::sw;

constexpr uint8_t kLanePort = 0;

int ORBLINK_EnablePort(uint8_t DevIdx, uint8_t PortIdx)
{
    EntryExitLines lines{OB_TRACE_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    uint8_t& enabledPorts = call.Config().enabledPorts;
    if (HasPort(enabledPorts, PortIdx)) {
        OB_NOTICE("PortIdx=%d link is already enabled, DevIdx=%d", PortIdx, DevIdx);
        return finished.Ok();
    }
    // Stored first and kept whatever follows: a later restore or retry wants the port up.
    enabledPorts = WithPort(enabledPorts, PortIdx);
    if (!call.Enabled()) {
        OB_NOTICE("Switch is not in enabled state, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Hal(&HalTable::EnablePort, PortIdx) != RC_OK)
        return OB_ERROR("EnablePort failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (PortIdx == kLanePort && ResetInternalLane(OB_CALLER, call.Device()) != RC_OK)
        return RC_ERROR;
    if (_RestorePortConfig(call.Device(), PortIdx) != RC_OK)
        return OB_ERROR("Failed restore port configuration, DevIdx=%d PhyPortIdx=%d", DevIdx,
                        PortIdx);
    return finished.Ok();
}

int ORBLINK_GetPortEnable(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Enabled)
{
    EntryExitLines lines{OB_TRACE_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    if (Enabled == nullptr)
        return OB_ERROR("Enabled is NULL");
    *Enabled = 1;
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (!HasPort(call.Config().enabledPorts, PortIdx))
        *Enabled = 0;
    return finished.Ok();
}

int ORBLINK_DisablePort(uint8_t DevIdx, uint8_t PortIdx)
{
    EntryExitLines lines{OB_TRACE_CALLER};
    OB_TRACE("DevIdx %d, PortIdx=%d", DevIdx, PortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    uint8_t& enabledPorts = call.Config().enabledPorts;
    if (!HasPort(enabledPorts, PortIdx)) {
        OB_NOTICE("PortIdx=%d link is already disabled, DevIdx=%d", PortIdx, DevIdx);
        return finished.Ok();
    }
    call.Record().dvtPorts = WithoutPort(call.Record().dvtPorts, PortIdx);
    enabledPorts = WithoutPort(enabledPorts, PortIdx);
    if (!call.Enabled()) {
        OB_NOTICE("Switch is not in enabled state, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Hal(&HalTable::DisablePort, PortIdx) != RC_OK)
        return OB_ERROR("DisablePort failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    OB_TRACE("ORBLINK_Disable -> bits now: 0x%x", enabledPorts);
    return finished.Ok();
}
