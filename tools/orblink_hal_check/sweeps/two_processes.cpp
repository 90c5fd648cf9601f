// What one process sets or reads must be the same in another one.
#include <cstring>

#include "tools/orblink_hal_check/processes/attachment.h"
#include "tools/orblink_hal_check/sweeps/sweeps.h"
#include "tools/orblink_hal_check/sweeps/switch_place.h"
#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

using T = SwitchTable;

constexpr uint8_t kLedMode = 1;
constexpr uint8_t kTestMode = 1;

bool ReadLedMode(int devIdx, uint8_t& mode)
{
    return CallSlot(&T::GetLEDConfig, devIdx, &mode) == 0;
}

bool ReadTestMode(int devIdx, uint8_t& mode)
{
    return CallSlot(&T::GetPortTestMode, devIdx, PlaceOn(devIdx).lan, &mode) == 0;
}

std::string Read(uint8_t value, uint8_t wanted)
{
    return std::string(TheWatch().call) + " read " + std::to_string(value) + " instead of " +
           std::to_string(wanted);
}

void SetLedMode(int devIdx)
{
    uint8_t mode = 0;
    Watch& watch = TheWatch();
    watch.ledSet = CallSlot(&T::SetLEDConfig, devIdx, kLedMode) == 0 && ReadLedMode(devIdx, mode);
    if (watch.ledSet && mode != kLedMode) {
        Report("result.read-back", Read(mode, kLedMode));
        watch.ledSet = false;
    }
}

void SetTestMode(int devIdx)
{
    uint8_t mode = 0;
    Watch& watch = TheWatch();
    watch.testModeSet =
        CallSlot(&T::SetPortTestMode, devIdx, PlaceOn(devIdx).lan, kTestMode) == 0 &&
        ReadTestMode(devIdx, mode);
    if (watch.testModeSet && mode != kTestMode) {
        Report("result.read-back", Read(mode, kTestMode));
        watch.testModeSet = false;
    }
}

void CompareLedMode(int devIdx)
{
    uint8_t mode = 0;
    if (TheWatch().ledSet && ReadLedMode(devIdx, mode) && mode != kLedMode)
        Report("private.kept-in-process", "in another process, " + Read(mode, kLedMode));
}

void CompareTestMode(int devIdx)
{
    uint8_t mode = 0;
    if (TheWatch().testModeSet && ReadTestMode(devIdx, mode) && mode != kTestMode)
        Report("private.kept-in-process", "in another process, " + Read(mode, kTestMode));
    CallSlot(&T::SetPortTestMode, devIdx, PlaceOn(devIdx).lan, 0);
}

bool ReadCaps(Family family, int devIdx, uint8_t (&caps)[sizeof(SwitchCaps)])
{
    memset(caps, 0, sizeof caps);
    if (family == Family::kSwitch)
        return CallSlot(&T::GetSwitchCaps, devIdx, reinterpret_cast<SwitchCaps*>(caps)) == 0;
    return CallSlot(&PhyTable::GetCaps, devIdx, reinterpret_cast<uint32_t*>(caps)) == 0;
}

void NoteCaps(Family family, int devIdx)
{
    alignas(SwitchCaps) uint8_t again[sizeof(SwitchCaps)];
    Watch& watch = TheWatch();
    watch.capsRead = ReadCaps(family, devIdx, watch.caps) && ReadCaps(family, devIdx, again);
    if (watch.capsRead && memcmp(watch.caps, again, sizeof again) != 0) {
        Report("caps.unstable", std::string(TheWatch().call) + " gave something else than before");
        watch.capsRead = false;
    }
}

void CompareCaps(Family family, int devIdx)
{
    alignas(SwitchCaps) uint8_t caps[sizeof(SwitchCaps)];
    const Watch& watch = TheWatch();
    if (watch.capsRead && ReadCaps(family, devIdx, caps) &&
        memcmp(watch.caps, caps, sizeof caps) != 0)
        Report("private.kept-in-process",
               std::string(watch.call) + " gave something else in another process");
}

}  // namespace

Steps SettingSweep(Family family, int devIdx)
{
    if (family == Family::kPhy)
        return {{"GetCaps", "slot.crash", [=] { NoteCaps(family, devIdx); }}};
    return {{"GetSwitchCaps", "slot.crash", [=] { NoteCaps(family, devIdx); }},
            {"SetLEDConfig", "slot.crash", [=] { SetLedMode(devIdx); }},
            {"SetPortTestMode", "slot.crash", [=] { SetTestMode(devIdx); }}};
}

Steps ReadingSweep(Family family, int devIdx)
{
    if (family == Family::kPhy)
        return {{"GetCaps", "slot.crash", [=] { CompareCaps(family, devIdx); }}};
    return {{"GetSwitchCaps", "slot.crash", [=] { CompareCaps(family, devIdx); }},
            {"GetLEDConfig", "slot.crash", [=] { CompareLedMode(devIdx); }},
            {"GetPortTestMode", "slot.crash", [=] { CompareTestMode(devIdx); }}};
}

}  // namespace halcheck
