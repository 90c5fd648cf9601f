// What only ports with a PHY have: forced speed, EEE and the test modes.
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"

namespace vs08 {
namespace {

constexpr int kMaxTest = 4;

int SetPhy(int devIdx, int port, uint16_t offset, uint16_t value)
{
    const Chip chip(devIdx);
    return Result(HasPhy(chip, port) && chip.Write(PortAddress(port, offset), value));
}

}  // namespace

int SetPhyPortSpeedDuplex(int devIdx, int port, uint32_t speed, uint32_t fullDuplex)
{
    if (speed < OB_SPEED_AUTONEG || speed > OB_SPEED_1G)
        return -1;
    return SetPhy(devIdx, port, kPhyCtrl,
                  static_cast<uint16_t>(speed | (fullDuplex ? kPhyFullDuplex : 0)));
}

int EnablePhyPortEee(int devIdx, int port)
{
    return SetPhy(devIdx, port, kPhyEee, kPhyEeeEnable);
}

int DisablePhyPortEee(int devIdx, int port)
{
    return SetPhy(devIdx, port, kPhyEee, 0);
}

int GetEeePortState(int devIdx, int port, uint32_t* state)
{
    const Chip chip(devIdx);
    uint16_t info = 0;
    uint16_t eee = 0;
    if (!state || !IsPort(port) || !chip.Read(PortAddress(port, kPortInfo), info))
        return -1;
    if (info & kInfoHasPhy && !chip.Read(PortAddress(port, kPhyEee), eee))
        return -1;
    *state = eee & kPhyEeeEnable;
    return 0;
}

int SetPhyPortDvt(int devIdx, int port, int test)
{
    if (test < 0 || test > kMaxTest)
        return -1;
    return SetPhy(devIdx, port, kPhyDvt, static_cast<uint16_t>(test));
}

int GetPortTestMode(int devIdx, int port, void* mode)
{
    const Chip chip(devIdx);
    uint16_t value = 0;
    if (!mode || !HasPhy(chip, port) || !chip.Read(PortAddress(port, kPhyTest), value))
        return -1;
    *static_cast<uint8_t*>(mode) = static_cast<uint8_t>(value);
    return 0;
}

int SetPortTestMode(int devIdx, int port, int mode)
{
    if (mode < 0 || mode > kMaxTest)
        return -1;
    return SetPhy(devIdx, port, kPhyTest, static_cast<uint16_t>(mode));
}

}  // namespace vs08
