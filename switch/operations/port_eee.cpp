#include "switch/call/frame.h"
#include "switch/call/port_bits.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

// The link comes up again after the change, on a port that somebody has enabled.
void BringLinkUp(const SwitchCall& call, uint8_t port)
{
    if (HasPort(call.Config().enabledPorts, port))
        // cppcheck-suppress syntaxError ; it cannot read the call
        call.Hal(&HalTable::EnablePort, port);  // result dropped: the change itself is what counts
}

}  // namespace

int ORBLINK_GetEeePortState(uint8_t DevIdx, uint8_t Port, uint32_t* EeeState)
{
    OB_TRACE("DevIdx = %d, Port=%d", DevIdx, Port);
    if (EeeState == nullptr)
        return OB_ERROR("Bad input - EeeState is NULL");
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(Port))
        return OB_ERROR("Invalid PhyPortIdx=%d DevIdx=%d", Port, DevIdx);
    if (!call.Enabled()) {
        *EeeState = 0;
        return finished.Ok();
    }
    if (call.Hal(&HalTable::GetEeePortState, Port, EeeState) != RC_OK)
        return OB_ERROR("GetEeePortState failed, DevIdx = %d, Port=%d", DevIdx, Port);
    return finished.Ok();
}

int ORBLINK_EnablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx)
{
    OB_TRACE("PhyPortIdx=%d", PhyPortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PhyPortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d DevIdx=%d", PhyPortIdx, DevIdx);
    if (!call.Device().HasCapability(OB_CAPS_EEE))
        return OB_ERROR("Switch does not support 802.3az, DevIdx=%d", DevIdx);
    uint8_t& eeePorts = call.Config().eeePorts;
    if (HasPort(eeePorts, PhyPortIdx)) {
        OB_NOTICE("EEE is already enabled for PortIdx=%d, DevIdx=%d", PhyPortIdx, DevIdx);
        return finished.Ok();
    }
    if (HasPort(call.Record().dvtPorts, PhyPortIdx))
        OB_NOTICE("DevIdx=%d PhyPortIdx=%d is in DVT mode", DevIdx, PhyPortIdx);
    if (!call.Enabled()) {
        eeePorts = WithPort(eeePorts, PhyPortIdx);
        return finished.Ok();
    }
    if (call.Hal(&HalTable::DisablePort, PhyPortIdx) != RC_OK)
        return OB_ERROR("DisablePort failed, PhyPortIdx = %d, DevIdx=%d", PhyPortIdx, DevIdx);
    if (call.Hal(&HalTable::EnablePhyPortEee, PhyPortIdx) != RC_OK) {
        OB_ERROR("EnablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", PhyPortIdx, DevIdx);
        BringLinkUp(call, PhyPortIdx);
        return RC_ERROR;
    }
    eeePorts = WithPort(eeePorts, PhyPortIdx);
    BringLinkUp(call, PhyPortIdx);
    return finished.Ok();
}

int ORBLINK_DisablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx)
{
    OB_TRACE("PhyPortIdx=%d", PhyPortIdx);
    if (ORBLINK_isBatteryMode() != 0) {
        OB_NOTICE("Modem in battery mode - skipping VendorSpecificIoctl %d", DevIdx);
        return RC_ERROR;
    }
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PhyPortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d DevIdx=%d", PhyPortIdx, DevIdx);
    if (!call.Device().HasCapability(OB_CAPS_EEE))
        return OB_ERROR("Switch does not support 802.3az, DevIdx=%d", DevIdx);
    uint8_t& eeePorts = call.Config().eeePorts;
    if (!HasPort(eeePorts, PhyPortIdx)) {
        OB_NOTICE("EEE is already disabled for PortIdx=%d, DevIdx=%d", PhyPortIdx, DevIdx);
        return finished.Ok();
    }
    if (HasPort(call.Record().dvtPorts, PhyPortIdx))
        OB_NOTICE("DevIdx=%d PhyPortIdx=%d is in DVT mode", DevIdx, PhyPortIdx);
    if (!call.Enabled()) {
        eeePorts = WithoutPort(eeePorts, PhyPortIdx);
        return finished.Ok();
    }
    if (call.Hal(&HalTable::DisablePort, PhyPortIdx) != RC_OK)
        return OB_ERROR("DisablePort failed, PhyPortIdx = %d, DevIdx=%d", PhyPortIdx, DevIdx);
    if (call.Hal(&HalTable::DisablePhyPortEee, PhyPortIdx) != RC_OK) {
        OB_ERROR("DisablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", PhyPortIdx, DevIdx);
        BringLinkUp(call, PhyPortIdx);
        return RC_ERROR;
    }
    eeePorts = WithoutPort(eeePorts, PhyPortIdx);
    BringLinkUp(call, PhyPortIdx);
    return finished.Ok();
}
