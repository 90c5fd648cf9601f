#include "switch/call/frame.h"
#include "switch/call/port_bits.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

bool IsRgmiiWithoutPhy(const SwitchCall& call, uint8_t port)
{
    return call.Device().PortHasPhy(port) == 0 &&
           call.Record().caps.port[port].portIfaceType == OB_IFACE_RGMII;
}

}  // namespace

int ORBLINK_EnableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx)
{
    OB_TRACE("RgmiiPortIdx=%d", RgmiiPortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(RgmiiPortIdx))
        return OB_ERROR("Invalid RgmiiPortIdx=%d, DevIdx=%d", RgmiiPortIdx, DevIdx);
    if (!IsRgmiiWithoutPhy(call, RgmiiPortIdx))
        return OB_ERROR("RgmiiPortIdx=%d has PHY or is not a RGMII, DevIdx=%d", RgmiiPortIdx,
                        DevIdx);
    uint8_t& delayPorts = call.Config().rgmiiDelayPorts;
    if (HasPort(delayPorts, RgmiiPortIdx)) {
        OB_NOTICE("RGMII delay is already enabled for RgmiiPortIdx=%d, DevIdx=%d", RgmiiPortIdx,
                  DevIdx);
        return finished.Ok();
    }
    if (call.Enabled() && call.Hal(&HalTable::EnableRgmiiDelay, RgmiiPortIdx) != RC_OK)
        return OB_ERROR("EnableRgmiiDelay failed, RgmiiPortIdx = %d, DevIdx=%d", RgmiiPortIdx,
                        DevIdx);
    delayPorts = WithPort(delayPorts, RgmiiPortIdx);
    return finished.Ok();
}

int ORBLINK_DisableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx)
{
    OB_TRACE("RgmiiPortIdx=%d", RgmiiPortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(RgmiiPortIdx))
        return OB_ERROR("Invalid RgmiiPortIdx=%d, DevIdx=%d", RgmiiPortIdx, DevIdx);
    if (!IsRgmiiWithoutPhy(call, RgmiiPortIdx))
        return OB_ERROR("RgmiiPortIdx=%d has PHY or is not a RGMII, DevIdx=%d", RgmiiPortIdx,
                        DevIdx);
    uint8_t& delayPorts = call.Config().rgmiiDelayPorts;
    if (!HasPort(delayPorts, RgmiiPortIdx)) {
        OB_NOTICE("RGMII delay is already disabled for RgmiiPortIdx=%d, DevIdx=%d", RgmiiPortIdx,
                  DevIdx);
        return finished.Ok();
    }
    if (call.Enabled() && call.Hal(&HalTable::DisableRgmiiDelay, RgmiiPortIdx) != RC_OK)
        return OB_ERROR("DisableRgmiiDelay failed, RgmiiPortIdx = %d, DevIdx=%d", RgmiiPortIdx,
                        DevIdx);
    delayPorts = WithoutPort(delayPorts, RgmiiPortIdx);
    return finished.Ok();
}
