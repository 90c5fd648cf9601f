#include "tools/orblink_hal_check/processes/attachment.h"

#include <algorithm>
#include <cstring>

#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

SwitchDeviceRegion* switches = nullptr;
PhyDeviceRegion* phys = nullptr;

bool WatchAll()
{
    return std::ranges::all_of(kFamilies, [](Family family) {
        return FindTable(family) == nullptr || WatchTable(family);
    });
}

template <typename Region>
void Append(std::vector<uint8_t>& bytes, const Region& region, size_t from, size_t to)
{
    const auto* const all = reinterpret_cast<const uint8_t*>(&region);
    bytes.insert(bytes.end(), all + from, all + to);
}

}  // namespace

bool Enter(Entry entry)
{
    uint8_t count = 0;
    switch (entry) {
        case Entry::kLoad:
            return true;
        case Entry::kWatch:
            return WatchAll();
        case Entry::kAttachToSwitches:
            if (!WatchAll() || ORBLINK_GetNumOfSwitches(&count) != 0)
                return false;
            switches = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
            return switches != nullptr;
        case Entry::kAttachToPhys:
            if (!WatchAll() || ETHPHY_GetNumOfPhys(&count) != 0)
                return false;
            phys = static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
            return phys != nullptr;
    }
    return false;
}

SwitchDeviceRegion& Switches()
{
    return *switches;
}

PhyDeviceRegion& Phys()
{
    return *phys;
}

RegionUntouched::RegionUntouched(Family family) : family_(family), before_(Outside()) {}

RegionUntouched::~RegionUntouched()
{
    if (Outside() != before_)
        Report("private.overrun",
               std::string(TheWatch().call) + " changed the region outside of its private data");
}

// Every device of a family names the library under test: its private data are the first ones. A PHY's
// state word and mark are set by a service.
std::vector<uint8_t> RegionUntouched::Outside() const
{
    std::vector<uint8_t> bytes;
    if (family_ == Family::kSwitch) {
        Append(bytes, *switches, 0, offsetof(SwitchDeviceRegion, halPrivData));
        Append(bytes, *switches, offsetof(SwitchDeviceRegion, halPrivData[1]),
               sizeof(SwitchDeviceRegion));
        return bytes;
    }
    PhyDeviceRegion copy = *phys;
    for (PhyDeviceRecord& record : copy.phy) {
        record.config.hwState = 0;
        record.postResetMark = 0;
    }
    Append(bytes, copy, 0, offsetof(PhyDeviceRegion, halPrivData));
    Append(bytes, copy, offsetof(PhyDeviceRegion, halPrivData[1]), sizeof copy);
    return bytes;
}

ZeroedPrivateData::ZeroedPrivateData(Family family, int devIdx)
    : data_(static_cast<uint8_t*>(family == Family::kSwitch
                                      ? OBHAL_GetHalPrivData(static_cast<uint8_t>(devIdx))
                                      : EPHAL_GetHalPrivData(static_cast<uint8_t>(devIdx))))
{
    if (data_ == nullptr)
        return;
    const size_t size = family == Family::kSwitch ? OB_HAL_PRIV_DATA_SIZE : EP_HAL_PRIV_DATA_SIZE;
    kept_.assign(data_, data_ + size);
    memset(data_, 0, size);
}

ZeroedPrivateData::~ZeroedPrivateData()
{
    if (data_ != nullptr)
        memcpy(data_, kept_.data(), kept_.size());
}

}  // namespace halcheck
