#include <cstring>

#include "phy/call/frame.h"
#include "phy/call/semaphore.h"

namespace orblink::phy {
namespace {

// The semaphore, which is created held, given back at the end of the initialisation.
class HeldFromCreation {
public:
    explicit HeldFromCreation(int semaphoreId) : semaphoreId_(semaphoreId) {}
    ~HeldFromCreation() { _System5SemOp(semaphoreId_, kRelease); }  // result dropped: it stands
    HeldFromCreation(const HeldFromCreation&) = delete;
    HeldFromCreation& operator=(const HeldFromCreation&) = delete;

private:
    int semaphoreId_;
};

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

// The region with its initial values; null when a step failed.
PhyDeviceRegion* _InitPhyDevices(EthphyBsd& bsd)
{
    if (EP_CreatePhyDevices() != RC_OK) {
        EP_ERROR("EP_CreatePhyDevices() failed");
        return nullptr;
    }
    EP_TRACE("EP_CreatePhyDevices() Done");
    if (const int rc = StartSharedMemoryService(); rc < 0) {
        EP_ERROR("shm_init() failed, Rc=%d", rc);
        return nullptr;
    }
    PhyDeviceRegion* const region = MapRegion();
    if (region == nullptr) {
        EP_ERROR("EP_MapEthphyDevices() failed");
        return nullptr;
    }
    EP_TRACE("EP_MapEthphyDevices() Done");
    StoreInitialValues(*region);
    if (EP_InitBoardSpecificData(&bsd, region->vendor) != RC_OK) {
        EP_ERROR("_InitBoardSpecificData() failed");
        return nullptr;
    }
    return region;
}

// One index per library, in the order in which the PHYs name them. Returns how many were given.
int AssignHalIndices(PhyDeviceRegion& region, const EthphyBsd& bsd, int count)
{
    int firstPhy[EP_MAX_PHYS];
    int given = 0;
    for (int i = 0; i < count; ++i) {
        int halIdx = 0;
        while (halIdx < given && strncmp(bsd.entry[firstPhy[halIdx]].halLibName,
                                         bsd.entry[i].halLibName, OB_HAL_NAME_SIZE) != 0)
            ++halIdx;
        if (halIdx == given)
            firstPhy[given++] = i;
        region.phy[i].halIdx = static_cast<uint8_t>(halIdx);
    }
    return given;
}

int InitHal(uint8_t devIdx, void* privData)
{
    const HalTable* const hal = FindHal(devIdx);
    return hal != nullptr && hal->Init != nullptr ? hal->Init(privData) : RC_ERROR;
}

}  // namespace
}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_InitOnce(void)
{
    const NoCancellation uncancelled;
    const int semaphoreId = _CreateGlobalSem();
    if (semaphoreId < 0)
        return EP_ERROR("_CreateGlobalSem() failed");
    const HeldFromCreation held{semaphoreId};
    EthphyBsd bsd = {};
    PhyDeviceRegion* const region = _InitPhyDevices(bsd);
    if (region == nullptr)
        return EP_ERROR("_InitPhyDevices() failed");
    const int count = bsd.numOfPhys <= EP_MAX_PHYS ? bsd.numOfPhys : 0;
    for (int i = 0; i < count; ++i) {
        PhyBoardEntry& board = region->phy[i].board;
        region->phy[i].bsdValid = 1;
        if (memcpy_s(&board, sizeof(board), &bsd.entry[i], sizeof(bsd.entry[i])) != 0)
            return EP_ERROR_AT(
                "%s:%d Runtime-constraint violation error in function kova_memcpy_s");
    }
    region->NumOfPhys = static_cast<uint8_t>(count);
    const int halCount = AssignHalIndices(*region, bsd, count);
    // A PHY that cannot be driven must not keep the others from working: only logged from here on.
    if (_LoadHals(*region) != RC_OK) {
        EP_ERROR("_LoadHals() failed");
        return RC_OK;
    }
    // PHY i brought HAL index i: a second index exists only when PHY 1 names another library.
    for (uint8_t i = 0; i < halCount; ++i)
        if (InitHal(i, region->halPrivData[i]) != 0) {
            EP_ERROR("InitOnce() failed, HalIdx=%d", i);
            break;
        }
    return RC_OK;
}

int ETHPHY_GetNumOfPhys(uint8_t* Out)
{
    if (Out == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyFrame frame;
    if (!frame.Entered())
        return RC_ERROR;
    const uint8_t count = ReadOnce(frame.Region().NumOfPhys);
    if (count > EP_MAX_PHYS)
        return EP_ERROR_AT("%s:%d Invalid NumOfPhys=%d", count);
    *Out = count;
    return RC_OK;
}
