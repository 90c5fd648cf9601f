// Bring-up, reset and administrative state.
#include <errno.h>
#include <unistd.h>

#include "hals/phy/phy.h"
#include "hals/phy/settings.h"
#include "hals/phy/slots.h"

namespace ieee8023 {
namespace {

constexpr unsigned kResetPolls = 60;
constexpr unsigned kResetPollMicroseconds = 10'000;

void Pause(unsigned microseconds)
{
    while (usleep(microseconds) != 0 && errno == EINTR) {
    }
}

// A PHY may be silent, or make accesses fail, while it resets.
bool Reset(const Phy& phy)
{
    if (!phy.Write(kControl, kReset))
        return false;
    for (unsigned poll = 0; poll < kResetPolls; ++poll) {
        uint16_t control = 0;
        Pause(kResetPollMicroseconds);
        if (phy.Read(kControl, control) && (control & kReset) == 0)
            return true;
    }
    return false;
}

bool SetPowerDown(const Phy& phy, bool down)
{
    uint16_t control = 0;
    if (!phy.Read(kControl, control))
        return false;
    bool isDown = (control & kPowerDown) != 0;
    control = static_cast<uint16_t>(control & ~(kSelfClearing | kPowerDown));
    return isDown == down || phy.Write(kControl, control | (down ? kPowerDown : 0));
}

// What a reset would lose, kept in case the bring-up has to be tried again.
bool KeepSettings(const Phy& phy)
{
    Settings settings;
    if (!ReadSettings(phy, settings))
        return false;
    phy.Kept().settings = settings;
    phy.Kept().settingsKept = 1;
    return true;
}

bool BringUp(Phy& phy, bool defaults)
{
    PhyMemory& kept = phy.Kept();
    phy.Forget();
    if (!phy.Learn())
        return false;
    if (defaults)
        kept.settingsKept = 0;
    else if (kept.settingsKept == 0 && !KeepSettings(phy))
        return false;
    Settings settings = kept.settings;
    if (!Reset(phy) || (defaults && !ReadDefaults(phy, settings)) || !ApplySettings(phy, settings))
        return false;
    kept.settingsKept = 0;
    return true;
}

}  // namespace

int Init(void* privateData)
{
    if (privateData == nullptr)
        return ETHPHY_IEEE8023_FAILED;
    FormatMemory(privateData);
    return ETHPHY_IEEE8023_OK;
}

int SetAdminState(int devIdx, int enable)
{
    Phy phy{devIdx};
    return Result(phy.Exists() && SetPowerDown(phy, enable == 0));
}

int ResetDisable(int devIdx, int defConfig)
{
    Phy phy{devIdx};
    return Result(phy.Exists() && BringUp(phy, defConfig != 0));
}

int ResetEnable(int devIdx)
{
    Phy phy{devIdx};
    return Result(phy.Exists() && phy.Learn() && KeepSettings(phy) && SetPowerDown(phy, true));
}

}  // namespace ieee8023
