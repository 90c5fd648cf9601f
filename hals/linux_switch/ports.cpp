// Link, enabling, mirroring, speed and EEE.
#include <errno.h>

#include "hals/linux_switch/ethtool.h"
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/session.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

struct SpeedCode {
    uint32_t megabits;
    uint32_t code;
};

constexpr SpeedCode kSpeeds[] = {{10, OB_SPEED_10M},
                                 {100, OB_SPEED_100M},
                                 {1000, OB_SPEED_1G},
                                 {2500, OB_SPEED_2G5},
                                 {10'000, OB_SPEED_10G}};

uint32_t CodeOf(uint32_t megabits)
{
    for (const SpeedCode& speed : kSpeeds) {
        if (speed.megabits == megabits)
            return speed.code;
    }
    return OB_SPEED_UNKNOWN;
}

uint32_t MegabitsOf(uint32_t code)
{
    for (const SpeedCode& speed : kSpeeds) {
        if (speed.code == code)
            return speed.megabits;
    }
    return 0;
}

void Give(uint32_t* out, uint32_t value)
{
    if (out)
        *out = value;
}

int SetEnabled(int devIdx, int port, bool enabled)
{
    Session session(devIdx);
    if (!session.MeetPort(port))
        return -1;
    const int error = SetUp(session.Route(), session.Port(port).index, enabled);
    if (error != 0)
        return session.Refuse(enabled ? "enable" : "disable", session.Memory().NameOf(port), error);
    SwitchMemory wanted = session.Memory();
    wanted.port[port].enabled = enabled ? 1 : 0;
    return session.Settle("enable", wanted.NameOf(port), wanted);
}

// A port that cannot save energy has none to switch off, and none that it is asked to leave on.
int SetEee(int devIdx, int port, bool enabled)
{
    Session session(devIdx);
    if (!session.MeetPort(port))
        return -1;
    Ethtool ethtool;
    const int error = ethtool.SetEee(session.Port(port).index, enabled);
    if (error != 0 && error != EOPNOTSUPP)
        return Refuse(devIdx, "set EEE of", session.Memory().NameOf(port), error, ethtool.Reason());
    SwitchMemory wanted = session.Memory();
    wanted.port[port].eee = enabled ? Switched::kOn : Switched::kOff;
    return session.Keep(wanted);
}

}  // namespace

int GetPortLink(int devIdx, int port, uint32_t* link, uint32_t* speed, uint32_t* fullDuplex)
{
    Session session(devIdx);
    LinkMode mode{};
    if (!session.MeetPort(port))
        return -1;
    const Link& found = session.Port(port);
    const bool up = found.up && found.carrier;
    // Not every driver knows its speed.
    if (up && (speed || fullDuplex))
        Ethtool().GetMode(found.index, mode);
    Give(link, up ? 1 : 0);
    Give(speed, CodeOf(mode.megabits));
    Give(fullDuplex, mode.fullDuplex ? 1 : 0);
    return 0;
}

int EnablePort(int devIdx, int port)
{
    return SetEnabled(devIdx, port, true);
}

int DisablePort(int devIdx, int port)
{
    return SetEnabled(devIdx, port, false);
}

int SetPortMirror(int devIdx, int source, int destination)
{
    Session session(devIdx);
    if (!session.MeetPort(source))
        return -1;
    SwitchMemory wanted = session.Memory();
    const bool off = destination == OB_NO_MIRROR;
    if (!off && (!wanted.IsPort(destination) || source == destination)) {
        LS_ERROR("Invalid mirror destination %d, DevIdx=%d", destination, devIdx);
        return -1;
    }
    if (!off && !session.Port(destination))
        return session.Refuse("mirror to", wanted.NameOf(destination), ENODEV);
    wanted.port[source].mirror = static_cast<uint8_t>(destination);
    return session.Settle("mirror", wanted.NameOf(source), wanted);
}

int SetPhyPortSpeedDuplex(int devIdx, int port, uint32_t speed, uint32_t fullDuplex)
{
    LinkMode wanted{};
    wanted.megabits = MegabitsOf(speed);
    wanted.fullDuplex = fullDuplex != 0;
    wanted.autoneg = speed == OB_SPEED_AUTONEG;
    if (!wanted.autoneg && wanted.megabits == 0) {
        LS_ERROR("Invalid speed %u, DevIdx=%d", speed, devIdx);
        return -1;
    }
    Session session(devIdx);
    if (!session.MeetPort(port))
        return -1;
    Ethtool ethtool;
    LinkMode now{};
    const uint32_t index = session.Port(port).index;
    int error = ethtool.GetMode(index, now);
    // An interface that never negotiates is as automatic as it can be.
    const bool asWanted = wanted.autoneg && (now.autoneg || !now.negotiates);
    if (asWanted && error == EOPNOTSUPP)
        error = 0;
    else if (!asWanted && error == 0)
        error = ethtool.SetMode(index, wanted);
    if (error != 0) {
        Refuse(devIdx, "set the speed of", session.Memory().NameOf(port), error, ethtool.Reason());
        // Drivers have stopped negotiating by the time they refuse; for others this is no change.
        if (now.autoneg)
            ethtool.SetMode(index, now);
        return -1;
    }
    SwitchMemory settled = session.Memory();
    settled.port[port].megabits = static_cast<uint16_t>(wanted.megabits);
    settled.port[port].fullDuplex = wanted.fullDuplex ? 1 : 0;
    return session.Keep(settled);
}

int EnablePhyPortEee(int devIdx, int port)
{
    return SetEee(devIdx, port, true);
}

int DisablePhyPortEee(int devIdx, int port)
{
    return SetEee(devIdx, port, false);
}

int GetEeePortState(int devIdx, int port, uint32_t* state)
{
    Session session(devIdx);
    if (!state || !session.MeetPort(port))
        return -1;
    EeeState eee{};
    Ethtool ethtool;
    const int error = ethtool.GetEee(session.Port(port).index, eee);
    if (error != 0 && error != EOPNOTSUPP)
        return Refuse(devIdx, "read EEE of", session.Memory().NameOf(port), error,
                      ethtool.Reason());
    *state = eee.enabled ? 1 : 0;
    return 0;
}

}  // namespace linux_switch
