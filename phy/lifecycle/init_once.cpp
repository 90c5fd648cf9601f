#include <cstring>

#include "phy/call/frame.h"
#include "phy/call/semaphore.h"

namespace orblink::phy {

namespace {

// The semaphore is created held; this gives it back at the end of the initialisation.
class HeldFromCreation {
public:
    HeldFromCreation() = default;
    ~HeldFromCreation() { _System5SemOp(+1); }

    HeldFromCreation(const HeldFromCreation&) = delete;
    HeldFromCreation& operator=(const HeldFromCreation&) = delete;
};

int MapRegion(LogCaller caller)
{
    if (process.region == nullptr && StartSharedMemoryService(caller) != RC_OK)
        return RC_ERROR;
    auto* const region = static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
    if (region == nullptr)
        return EP_ERROR_AS(caller, "EP_MapEthphyDevices() failed");
    process.region = region;
    return RC_OK;
}

void StoreInitialValues(PhyDeviceRegion& region)
{
    memset(&region, 0, sizeof(region));
    for (PhyDeviceRecord& record : region.phy) {
        record.halIdx = EP_NO_HAL_INDEX;
        record.config.word12 = 1;
        record.config.word16 = 1;
        record.config.adminState = 1;
    }
}

int _InitPhyDevices(EthphyBsd& bsd)
{
    if (EP_CreatePhyDevices() != RC_OK)
        return EP_ERROR("EP_CreatePhyDevices() failed");
    EP_TRACE("EP_CreatePhyDevices() Done");
    if (MapRegion(EP_CALLER) != RC_OK)
        return RC_ERROR;
    EP_TRACE("EP_MapEthphyDevices() Done");
    StoreInitialValues(*process.region);
    if (EP_InitBoardSpecificData(&bsd, process.region->vendor) != RC_OK)
        return EP_ERROR("_InitBoardSpecificData() failed");
    return RC_OK;
}

void StoreBoardData(PhyDeviceRegion& region, const EthphyBsd& bsd)
{
    const uint8_t count = bsd.numOfPhys > EP_MAX_PHYS ? uint8_t{0} : bsd.numOfPhys;
    for (uint8_t i = 0; i < count; ++i) {
        region.phy[i].bsdValid = 1;
        region.phy[i].board = bsd.entry[i];
    }
    region.NumOfPhys = count;
}

// One index per library, in the order in which the PHYs name them. Returns how many were given.
int AssignHalIndices(PhyDeviceRegion& region)
{
    uint8_t given = 0;
    const PhyDeviceRecord* owner[EP_MAX_PHYS] = {};
    for (uint8_t i = 0; i < region.NumOfPhys; ++i) {
        PhyDeviceRecord& record = region.phy[i];
        uint8_t idx = 0;
        while (idx < given && strncmp(owner[idx]->board.halLibName, record.board.halLibName,
                                      OB_HAL_NAME_SIZE) != 0)
            ++idx;
        if (idx == given)
            owner[given++] = &record;
        record.halIdx = idx;
    }
    return given;
}

// PHY i brought HAL index i: a second index exists only when PHY 1 names another library.
int InitHals(LogCaller caller, PhyDeviceRegion& region, int count)
{
    for (uint8_t i = 0; i < count; ++i) {
        const HalTable* const hal = FindHal(i);
        if (hal == nullptr || hal->Init == nullptr || hal->Init(region.halPrivData[i]) != 0)
            return EP_ERROR_AS(caller, "InitOnce() failed, HalIdx=%d", i);
    }
    return RC_OK;
}

}  // namespace

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_InitOnce(void)
{
    if (_CreateGlobalSem() != RC_OK)
        return EP_ERROR("_CreateGlobalSem() failed");
    const HeldFromCreation held;
    EthphyBsd bsd = {};
    if (_InitPhyDevices(bsd) != RC_OK)
        return EP_ERROR("_InitPhyDevices() failed");
    StoreBoardData(*process.region, bsd);
    const int halCount = AssignHalIndices(*process.region);
    if (_LoadHals() != RC_OK)
        EP_ERROR("_LoadHals() failed");
    else
        InitHals(EP_CALLER, *process.region, halCount);
    return RC_OK;  // a PHY that cannot be driven must not keep the others from working
}

int ETHPHY_GetNumOfPhys(uint8_t* Out)
{
    if (Out == nullptr)
        return EP_ERROR_AT("NULL ptr");
    const PhyFrame frame;
    if (!frame.Entered())
        return RC_ERROR;
    if (process.region->NumOfPhys > EP_MAX_PHYS)
        return EP_ERROR_AT("Invalid NumOfPhys=%d", process.region->NumOfPhys);
    *Out = process.region->NumOfPhys;
    return RC_OK;
}
