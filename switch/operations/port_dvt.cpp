#include "switch/call/frame.h"
#include "switch/call/port_bits.h"
#include "switch/lifecycle/restore.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr int kNoTest = 0;
constexpr int kLastTest = 4;

}  // namespace

int ORBLINK_EnablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx, int DvtTest)
{
    if (DvtTest <= kNoTest || DvtTest > kLastTest)
        return OB_ERROR("Unknown DVT test: DvtTest %d", DvtTest);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Device().PortHasPhy(PhyPortIdx) == 0)
        return OB_ERROR("PhyPortIdx=%d does not have PHY attached, DevIdx=%d", PhyPortIdx, DevIdx);
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SetPhyPortDvt, PhyPortIdx, DvtTest) != RC_OK)
        return OB_ERROR("SetPhyPortDvt failed, DevIdx %d , PhyPortIdx %d, DvtTest %d", DevIdx,
                        PhyPortIdx, DvtTest);
    call.Record().dvtPorts = WithPort(call.Record().dvtPorts, PhyPortIdx);
    return RC_OK;
}

int ORBLINK_DisablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Device().PortHasPhy(PhyPortIdx) == 0)
        return OB_ERROR("Not a LAN port, DevIdx %d , PhyPortIdx %d", DevIdx, PhyPortIdx);
    if (call.Hal(&HalTable::SetPhyPortDvt, PhyPortIdx, kNoTest) != RC_OK)
        return OB_ERROR("SetPhyPortDvt failed, DevIdx %d , PhyPortIdx %d", DevIdx, PhyPortIdx);
    call.Record().dvtPorts = WithoutPort(call.Record().dvtPorts, PhyPortIdx);
    if (_RestorePortConfig(call.Device(), PhyPortIdx) != RC_OK)
        return OB_ERROR("Failed restore port configuration, DevIdx=%d PhyPortIdx=%d", DevIdx,
                        PhyPortIdx);
    return RC_OK;
}
