// Counters, link, enabling, RGMII delay and mirroring.
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"
#include "hals/vswitch/vswitch_hal.h"

namespace vs08 {
namespace {

bool RunOnCounters(const Chip& chip, int port, uint16_t command)
{
    uint16_t result = 0;
    return IsPort(port) && chip.Run(kCntCmd, static_cast<uint16_t>(command | port), result);
}

uint64_t CounterOf(const uint16_t* words)
{
    return words[0] | static_cast<uint64_t>(words[1]) << 16 |
           static_cast<uint64_t>(words[2]) << 32 | static_cast<uint64_t>(words[3]) << 48;
}

void Give(uint32_t* out, uint32_t value)
{
    if (out)
        *out = value;
}

int SetPortEnable(int devIdx, int port, uint16_t enable)
{
    return Result(IsPort(port) && Chip(devIdx).Write(PortAddress(port, kPortCtrl), enable));
}

int SetRgmiiDelay(int devIdx, int port, uint16_t delay)
{
    const Chip chip(devIdx);
    uint16_t info = 0;
    if (!IsPort(port) || !chip.Read(PortAddress(port, kPortInfo), info) ||
        (info & kInfoIface) != OB_IFACE_RGMII)
        return -1;
    return Result(chip.Write(PortAddress(port, kRgmiiCtrl), delay));
}

}  // namespace

int GetPortCounters(int devIdx, int port, void* counters)
{
    const Chip chip(devIdx);
    uint16_t words[4 * kCounters];
    static_assert(sizeof(VswitchPortCounters) == sizeof words);
    if (!counters || !RunOnCounters(chip, port, kCntSnapshot) ||
        !chip.ReadRun(kCntWindow, words, 4 * kCounters))
        return -1;
    uint64_t values[kCounters];
    for (size_t i = 0; i < kCounters; ++i)
        values[i] = CounterOf(words + 4 * i);
    memcpy(counters, values, sizeof values);
    return 0;
}

int ResetPortCounters(int devIdx, int port)
{
    return Result(RunOnCounters(Chip(devIdx), port, kCntClear));
}

int GetPortLink(int devIdx, int port, uint32_t* link, uint32_t* speed, uint32_t* fullDuplex)
{
    uint16_t status = 0;
    if (!IsPort(port) || !Chip(devIdx).Read(PortAddress(port, kPortStatus), status))
        return -1;
    Give(link, status & kStatusLink ? 1 : 0);
    Give(speed, status >> kStatusSpeedShift & 7);
    Give(fullDuplex, status & kStatusFullDuplex ? 1 : 0);
    return 0;
}

int EnablePort(int devIdx, int port)
{
    return SetPortEnable(devIdx, port, 1);
}

int DisablePort(int devIdx, int port)
{
    return SetPortEnable(devIdx, port, 0);
}

int EnableRgmiiDelay(int devIdx, int port)
{
    return SetRgmiiDelay(devIdx, port, 1);
}

int DisableRgmiiDelay(int devIdx, int port)
{
    return SetRgmiiDelay(devIdx, port, 0);
}

int SetPortMirror(int devIdx, int source, int destination)
{
    const bool off = destination == OB_NO_MIRROR;
    if (!IsPort(source) || source == destination || (!off && !IsPort(destination)))
        return -1;
    const int value = off ? 0 : kMirrorEnable | destination;
    return Result(
        Chip(devIdx).Write(PortAddress(source, kPortMirror), static_cast<uint16_t>(value)));
}

}  // namespace vs08
