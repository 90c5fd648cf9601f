#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr uint16_t kMaxVid = 4094;
constexpr uint8_t kMaxPcp = 7;

// ORBLINK_SetLanPortGroupId's LockState.
enum : uint32_t { kKeepLock, kLock, kUnlock, kLockStates };

}  // namespace

int ORBLINK_SetLanPortVlan(uint8_t DevIdx, uint8_t LanPortIdx, int Vid)
{
    OB_TRACE("LanPortIdx=%d, Vid=%d", LanPortIdx, Vid);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsLanPort(LanPortIdx))
        return OB_ERROR("Invalid LanPortIdx=%d, DevIdx=%d", LanPortIdx, DevIdx);
    const auto vid = static_cast<uint16_t>(Vid);
    if (vid < 1 || vid > kMaxVid)
        return OB_ERROR("Invalid Vid=%d, DevIdx=%d", vid, DevIdx);
    uint16_t& stored = call.Config().lanPortVlan[LanPortIdx];
    if (stored == vid) {
        OB_NOTICE("Vlan %d is already set for LanPortIdx=%d, DevIdx=%d", vid, LanPortIdx, DevIdx);
        return RC_OK;
    }
    if (call.Enabled() && call.Hal(&HalTable::SetLanPortVlan, LanPortIdx, vid) != RC_OK)
        return OB_ERROR("SetLanPortVlan failed, LanPortIdx=%d, Vid=%d, DevIdx=%d", LanPortIdx, vid,
                        DevIdx);
    stored = vid;
    return RC_OK;
}

int ORBLINK_SetLanPortPcp(uint8_t DevIdx, uint8_t LanPortIdx, uint8_t Pcp)
{
    OB_TRACE("LanPortIdx=%d, Pcp=%d", LanPortIdx, Pcp);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsLanPort(LanPortIdx))
        return OB_ERROR("Invalid LanPortIdx=%d, DevIdx=%d", LanPortIdx, DevIdx);
    if (Pcp > kMaxPcp)
        return OB_ERROR("Invalid Pcp=%d, DevIdx=%d", Pcp, DevIdx);
    uint8_t& stored = call.Config().lanPortPcp[LanPortIdx];
    if (stored == Pcp) {
        OB_NOTICE("Pcp %d is already set for LanPortIdx=%d, DevIdx=%d", Pcp, LanPortIdx, DevIdx);
        return RC_OK;
    }
    if (call.Enabled() && call.Hal(&HalTable::SetLanPortPcp, LanPortIdx, Pcp) != RC_OK)
        return OB_ERROR("SetLanPortPcp failed, LanPortIdx=%d, Pcp=%d, DevIdx=%d", LanPortIdx, Pcp,
                        DevIdx);
    stored = Pcp;
    return RC_OK;
}

int ORBLINK_SetLanPortEgressTagging(uint8_t DevIdx, uint8_t LanPortIdx,
                                    uint32_t EnableEgressTagging)
{
    OB_TRACE("LanPortIdx=%d, EnableEgressTagging=%d", LanPortIdx, EnableEgressTagging);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsLanPort(LanPortIdx))
        return OB_ERROR("Invalid LanPortIdx=%d, DevIdx=%d", LanPortIdx, DevIdx);
    uint32_t& stored = call.Config().egressTagging[LanPortIdx];
    if (stored == EnableEgressTagging) {
        OB_NOTICE("EnableEgressTagging %d is already set for LanPortIdx=%d, DevIdx=%d",
                  EnableEgressTagging, LanPortIdx, DevIdx);
        return RC_OK;
    }
    if (call.Enabled() &&
        call.Hal(&HalTable::SetLanPortEgressTagging, LanPortIdx, EnableEgressTagging) != RC_OK)
        return OB_ERROR(
            "SetLanPortEgressTagging failed, LanPortIdx=%d, EnableEgressTagging=%d, DevIdx=%d",
            LanPortIdx, EnableEgressTagging, DevIdx);
    stored = EnableEgressTagging;
    return RC_OK;
}

int ORBLINK_SetLanPortGroupId(uint8_t DevIdx, uint8_t LanPortIdx, uint32_t GroupId,
                              uint32_t LockState)
{
    OB_TRACE("LanPortIdx=%d, GroupId=%d", LanPortIdx, GroupId);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsLanPort(LanPortIdx))
        return OB_ERROR("Invalid LanPortIdx=%d, DevIdx=%d", LanPortIdx, DevIdx);
    if (LockState >= kLockStates)
        return OB_ERROR(
            "SetLanPortGroupId failed, LanPortIdx=%d, GroupId=%d, DevIdx=%d LockState=%d",
            LanPortIdx, GroupId, DevIdx, LockState);
    uint32_t& lock = call.Config().groupIdLock[LanPortIdx];
    if (LockState == kKeepLock && lock != 0)
        return RC_OK;
    // Stays changed whatever becomes of the write.
    if (LockState != kKeepLock)
        lock = LockState == kLock ? 1 : 0;
    const auto group = static_cast<int32_t>(GroupId);
    int32_t& stored = call.Config().groupId[LanPortIdx];
    if (stored == group) {
        OB_NOTICE("GroupId %d is already set for LanPortIdx=%d, DevIdx=%d", group, LanPortIdx,
                  DevIdx);
        return RC_OK;
    }
    if (call.Enabled() && call.Hal(&HalTable::SetLanPortGroupId, LanPortIdx, GroupId) != RC_OK)
        return OB_ERROR("SetLanPortGroupId failed, LanPortIdx=%d, GroupId=%d, DevIdx=%d",
                        LanPortIdx, GroupId, DevIdx);
    stored = group;
    return RC_OK;
}
