#include "switch/call/bitmap.h"
#include "switch/operations/setting.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

bool IsRgmiiPort(LogCaller caller, const SwitchCall& call, uint8_t port)
{
    if (!call)
        return false;
    if (port >= call.Device().NumOfPorts()) {
        OB_ERROR_AS(caller, "Invalid RgmiiPortIdx=%d, DevIdx=%d", port, call.Device().Idx());
        return false;
    }
    const auto& caps = call.Record().caps.port[port];
    if (caps.portHasPhy == 0 && caps.portIfaceType == OB_IFACE_RGMII)
        return true;
    OB_ERROR_AS(caller, "RgmiiPortIdx=%d has PHY or is not a RGMII, DevIdx=%d", port,
                call.Device().Idx());
    return false;
}

}  // namespace

int ORBLINK_EnableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx)
{
    const LogCaller self = OB_CALLER;
    OB_TRACE("RgmiiPortIdx=%d", RgmiiPortIdx);
    FinishedLine finished{self};
    SwitchCall call{self, DevIdx, &finished};
    if (!IsRgmiiPort(self, call, RgmiiPortIdx))
        return RC_ERROR;
    uint8_t& delayPorts = call.Config().rgmiiDelayPorts;
    return finished.Result(ApplySetting(
        call.Device(), delayPorts, WithPort(delayPorts, RgmiiPortIdx),
        [&] {
            OB_NOTICE_AS(self, "RGMII delay is already enabled for RgmiiPortIdx=%d, DevIdx=%d",
                         RgmiiPortIdx, DevIdx);
        },
        [&] { return call.Device().Hal(&HalTable::EnableRgmiiDelay, RgmiiPortIdx); },
        [&] {
            return OB_ERROR_AS(self, "EnableRgmiiDelay failed, RgmiiPortIdx = %d, DevIdx=%d",
                               RgmiiPortIdx, DevIdx);
        }));
}

int ORBLINK_DisableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx)
{
    const LogCaller self = OB_CALLER;
    OB_TRACE("RgmiiPortIdx=%d", RgmiiPortIdx);
    FinishedLine finished{self};
    SwitchCall call{self, DevIdx, &finished};
    if (!IsRgmiiPort(self, call, RgmiiPortIdx))
        return RC_ERROR;
    uint8_t& delayPorts = call.Config().rgmiiDelayPorts;
    return finished.Result(ApplySetting(
        call.Device(), delayPorts, WithoutPort(delayPorts, RgmiiPortIdx),
        [&] {
            OB_NOTICE_AS(self, "RGMII delay is already disabled for RgmiiPortIdx=%d, DevIdx=%d",
                         RgmiiPortIdx, DevIdx);
        },
        [&] { return call.Device().Hal(&HalTable::DisableRgmiiDelay, RgmiiPortIdx); },
        [&] {
            return OB_ERROR_AS(self, "DisableRgmiiDelay failed, RgmiiPortIdx = %d, DevIdx=%d",
                               RgmiiPortIdx, DevIdx);
        }));
}
