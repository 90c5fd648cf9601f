#include "tools/orblink_web/reader/board_identity.h"

#include "tools/orblinkctl/access/shared_state.h"

namespace web {

namespace {

FamilyIdentity Present(ctl::Family family)
{
    const ctl::LockState lock = ctl::LookAtLock(family);
    const ctl::RegionState region = ctl::LookAtRegion(family);
    return {lock.id, region.device, region.inode, region.size};
}

}  // namespace

BoardIdentity PresentBoard()
{
    return {Present(ctl::Family::kSwitch), Present(ctl::Family::kPhy)};
}

}  // namespace web
