#include "switch/operations/setting.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr uint16_t kMaxVid = 4094;
constexpr uint8_t kMaxPcp = 7;

// What the operations on a LAN port have in common. Port 0 is never a LAN port.
struct LanPort {
    LanPort(LogCaller by, uint8_t devIdx, uint8_t portIdx)
        : caller(by), call(by, devIdx), port(portIdx)
    {
        valid = call && port >= 1 && port < call.Device().NumOfPorts();
        if (call && !valid)
            OB_ERROR_AS(caller, "Invalid LanPortIdx=%d, DevIdx=%d", port, devIdx);
    }

    explicit operator bool() const { return valid; }

    template <typename T, typename Param, typename Already, typename Failed>
    int Set(T (SwitchProvConfig::*member)[OB_MAX_PORTS], int (*HalTable::*slot)(int, int, Param),
            T value, Already already, Failed failed) const
    {
        const auto apply = [&] { return call.Device().Hal(slot, port, static_cast<Param>(value)); };
        return ApplySetting(call.Device(), (call.Config().*member)[port], value, already, apply,
                            failed);
    }

    LogCaller caller;
    SwitchCall call;
    uint8_t port;
    bool valid;
};

enum class GroupLock { kWrite, kKeep, kBad };

// Locks or unlocks as asked, and tells whether the group is to be written.
GroupLock ApplyGroupLock(const LanPort& lan, uint32_t lockState)
{
    uint32_t& lock = lan.call.Config().groupIdLock[lan.port];
    switch (lockState) {
        case 0:
            return lock != 0 ? GroupLock::kKeep : GroupLock::kWrite;
        case 1:
            lock = 1;
            return GroupLock::kWrite;
        case 2:
            lock = 0;
            return GroupLock::kWrite;
        default:
            return GroupLock::kBad;
    }
}

}  // namespace

int ORBLINK_SetLanPortVlan(uint8_t DevIdx, uint8_t LanPortIdx, int Vid)
{
    OB_TRACE("LanPortIdx=%d, Vid=%d", LanPortIdx, Vid);
    const LanPort lan{OB_CALLER, DevIdx, LanPortIdx};
    if (!lan)
        return RC_ERROR;
    const auto vid = static_cast<uint16_t>(Vid);
    if (vid < 1 || vid > kMaxVid)
        return OB_ERROR("Invalid Vid=%d, DevIdx=%d", vid, DevIdx);
    return lan.Set(
        &SwitchProvConfig::lanPortVlan, &HalTable::SetLanPortVlan, vid,
        [&] {
            OB_NOTICE_AS(lan.caller, "Vlan %d is already set for LanPortIdx=%d, DevIdx=%d", vid,
                         LanPortIdx, DevIdx);
        },
        [&] {
            return OB_ERROR_AS(lan.caller,
                               "SetLanPortVlan failed, LanPortIdx=%d, Vid=%d, DevIdx=%d",
                               LanPortIdx, vid, DevIdx);
        });
}

int ORBLINK_SetLanPortPcp(uint8_t DevIdx, uint8_t LanPortIdx, uint8_t Pcp)
{
    OB_TRACE("LanPortIdx=%d, Pcp=%d", LanPortIdx, Pcp);
    const LanPort lan{OB_CALLER, DevIdx, LanPortIdx};
    if (!lan)
        return RC_ERROR;
    if (Pcp > kMaxPcp)
        return OB_ERROR("Invalid Pcp=%d, DevIdx=%d", Pcp, DevIdx);
    return lan.Set(
        &SwitchProvConfig::lanPortPcp, &HalTable::SetLanPortPcp, Pcp,
        [&] {
            OB_NOTICE_AS(lan.caller, "Pcp %d is already set for LanPortIdx=%d, DevIdx=%d", Pcp,
                         LanPortIdx, DevIdx);
        },
        [&] {
            return OB_ERROR_AS(lan.caller, "SetLanPortPcp failed, LanPortIdx=%d, Pcp=%d, DevIdx=%d",
                               LanPortIdx, Pcp, DevIdx);
        });
}

int ORBLINK_SetLanPortEgressTagging(uint8_t DevIdx, uint8_t LanPortIdx,
                                    uint32_t EnableEgressTagging)
{
    OB_TRACE("LanPortIdx=%d, EnableEgressTagging=%d", LanPortIdx, EnableEgressTagging);
    const LanPort lan{OB_CALLER, DevIdx, LanPortIdx};
    if (!lan)
        return RC_ERROR;
    return lan.Set(
        &SwitchProvConfig::egressTagging, &HalTable::SetLanPortEgressTagging, EnableEgressTagging,
        [&] {
            OB_NOTICE_AS(lan.caller,
                         "EnableEgressTagging %d is already set for LanPortIdx=%d, DevIdx=%d",
                         EnableEgressTagging, LanPortIdx, DevIdx);
        },
        [&] {
            return OB_ERROR_AS(
                lan.caller,
                "SetLanPortEgressTagging failed, LanPortIdx=%d, EnableEgressTagging=%d, DevIdx=%d",
                LanPortIdx, EnableEgressTagging, DevIdx);
        });
}

int ORBLINK_SetLanPortGroupId(uint8_t DevIdx, uint8_t LanPortIdx, uint32_t GroupId,
                              uint32_t LockState)
{
    OB_TRACE("LanPortIdx=%d, GroupId=%d", LanPortIdx, GroupId);
    const LanPort lan{OB_CALLER, DevIdx, LanPortIdx};
    if (!lan)
        return RC_ERROR;
    const GroupLock lock = ApplyGroupLock(lan, LockState);
    if (lock == GroupLock::kKeep)
        return RC_OK;
    if (lock == GroupLock::kBad)
        return OB_ERROR(
            "SetLanPortGroupId failed, LanPortIdx=%d, GroupId=%d, DevIdx=%d LockState=%d",
            LanPortIdx, GroupId, DevIdx, LockState);
    return lan.Set(
        &SwitchProvConfig::groupId, &HalTable::SetLanPortGroupId, static_cast<int32_t>(GroupId),
        [&] {
            OB_NOTICE_AS(lan.caller, "GroupId %d is already set for LanPortIdx=%d, DevIdx=%d",
                         GroupId, LanPortIdx, DevIdx);
        },
        [&] {
            return OB_ERROR_AS(lan.caller,
                               "SetLanPortGroupId failed, LanPortIdx=%d, GroupId=%d, DevIdx=%d",
                               LanPortIdx, GroupId, DevIdx);
        });
}
