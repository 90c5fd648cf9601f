// Bring-up, reset and administrative state.
#include "hals/phy/phy.h"
#include "hals/phy/settings.h"
#include "hals/phy/slots.h"
#include "hals/wait.h"

namespace ieee8023 {
namespace {

constexpr unsigned kResetTime = 600'000;  // microseconds
constexpr unsigned kResetInterval = 10'000;

// A PHY may be silent, or make accesses fail, while it resets. Each failure costs a line of the
// log, so the waits between failures grow.
bool Reset(Phy& phy)
{
    phy.ExpectDrop();
    if (!phy.Write(kControl, kReset))
        return false;
    unsigned interval = kResetInterval;
    for (unsigned left = kResetTime; left != 0;) {
        uint16_t control = 0;
        unsigned wait = interval < left ? interval : left;
        hals::WaitMicroseconds(wait);
        left -= wait;
        bool answered = phy.ReadAny(kControl, control);
        if (answered && control != kNobody && (control & kReset) == 0)
            return true;
        interval = answered ? kResetInterval : 2 * interval;
    }
    return false;
}

bool KeepSettings(Phy& phy, SettingsKept why)
{
    Settings settings;
    if (!ReadSettings(phy, settings))
        return false;
    phy.Kept().settings = settings;
    phy.Kept().settingsKept = why;
    return true;
}

// What a reset would lose. A PHY in power-down may have lost it already: then what was kept before
// counts, and what it shows only where nothing was.
bool KeepForBringUp(Phy& phy)
{
    uint16_t control = 0;
    uint32_t& kept = phy.Kept().settingsKept;
    if (!phy.Read(kControl, control))
        return false;
    bool isDown = (control & kPowerDown) != 0;
    if (kept == kNotKept || (kept == kWhileDown && !isDown))
        return KeepSettings(phy, kForBringUp);
    kept = kForBringUp;
    return true;
}

bool PowerDown(Phy& phy)
{
    uint16_t control = 0;
    if (!phy.Read(kControl, control))
        return false;
    if ((control & kPowerDown) != 0)
        return true;
    if (phy.Kept().settingsKept != kForBringUp && !KeepSettings(phy, kWhileDown))
        return false;
    phy.ExpectDrop();
    return phy.Write(kControl, static_cast<uint16_t>((control & ~kSelfClearing) | kPowerDown));
}

bool PowerUp(Phy& phy)
{
    uint16_t control = 0;
    constexpr uint16_t kOff = kPowerDown | kIsolate;
    if (!phy.Read(kControl, control))
        return false;
    if ((control & kOff) != 0 &&
        !phy.Write(kControl, static_cast<uint16_t>(control & ~(kSelfClearing | kOff))))
        return false;
    if (phy.Kept().settingsKept == kWhileDown)
        phy.Kept().settingsKept = kNotKept;
    return true;
}

bool BringUp(Phy& phy, bool defaults)
{
    PhyMemory& kept = phy.Kept();
    phy.Forget();
    kept.toldMac = 0;
    if (!phy.Learn())
        return false;
    if (defaults)
        kept.settingsKept = kNotKept;
    else if (!KeepForBringUp(phy))
        return false;
    Settings settings = kept.settings;
    if (!Reset(phy) || (defaults && !ReadDefaults(phy, settings)) || !ApplySettings(phy, settings))
        return false;
    kept.settingsKept = kNotKept;
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
    if (!phy.Exists())
        return ETHPHY_IEEE8023_FAILED;
    return Result(enable != 0 ? PowerUp(phy) : phy.Learn() && PowerDown(phy));
}

int ResetDisable(int devIdx, int defConfig)
{
    Phy phy{devIdx};
    return Result(phy.Exists() && BringUp(phy, defConfig != 0));
}

int ResetEnable(int devIdx)
{
    Phy phy{devIdx};
    return Result(phy.Exists() && phy.Learn() && KeepForBringUp(phy) && PowerDown(phy));
}

}  // namespace ieee8023
