// Switch-wide features.
#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"

namespace vs08 {
namespace {

int SetWithin(int devIdx, uint16_t address, int value, int min, int max)
{
    return Result(value >= min && value <= max &&
                  Chip(devIdx).Write(address, static_cast<uint16_t>(value)));
}

}  // namespace

int EnableIgmpSnooping(int devIdx)
{
    return Result(Chip(devIdx).Write(kSnooping, kSnoopingIgmp | kSnoopingMld));
}

int DisableIgmpSnooping(int devIdx)
{
    return Result(Chip(devIdx).Write(kSnooping, 0));
}

int SetMacAging(int devIdx, int step)
{
    return SetWithin(devIdx, kAgeing, step, 1, 5);
}

int SetMtuSize(int devIdx, int mtu)
{
    return SetWithin(devIdx, kMtu, mtu, 64, 10240);
}

int GetLEDConfig(int devIdx, uint8_t* mode)
{
    uint16_t value = 0;
    if (!mode || !Chip(devIdx).Read(kLedMode, value))
        return -1;
    *mode = static_cast<uint8_t>(value);
    return 0;
}

int SetLEDConfig(int devIdx, int mode)
{
    return SetWithin(devIdx, kLedMode, mode, 0, 7);
}

}  // namespace vs08
