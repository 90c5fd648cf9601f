#include "phy/call/frame.h"

namespace orblink::phy {

namespace {

// Copies one part of a PHY's record to the caller.
template <typename Part>
int CopyPart(LogCaller caller, uint8_t devIdx, Part PhyDeviceRecord::*part, void* out)
{
    const PhyCall call{devIdx};
    if (!call)
        return RC_ERROR;
    if (memcpy_s(out, sizeof(Part), &(call.Record().*part), sizeof(Part)) != 0)
        return EP_ERROR_AT_AS(caller,
                              "Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

}  // namespace

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_GetProvisionedConfig(uint8_t DevIdx, void* Out)
{
    return CopyPart(EP_CALLER, DevIdx, &PhyDeviceRecord::config, Out);
}

int ETHPHY_GetBsdConfig(uint8_t DevIdx, void* Out)
{
    return CopyPart(EP_CALLER, DevIdx, &PhyDeviceRecord::board, Out);
}

int ETHPHY_GetPhyData(uint8_t DevIdx, void** Out)
{
    if (Out == nullptr)
        return EP_ERROR_AT("NULL ptr");
    const PhyCall call{DevIdx};
    if (!call)
        return RC_ERROR;
    *Out = &call.Record();
    return RC_OK;
}

int ETHPHY_GetCaps(uint8_t DevIdx, uint32_t* Caps)
{
    if (Caps == nullptr)
        return EP_ERROR_AT("NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Record().capsValid == 0)
        return EP_ERROR("PHY capabilities are not valid, DevIdx=%d", DevIdx);
    *Caps = call.Record().caps;
    return RC_OK;
}
