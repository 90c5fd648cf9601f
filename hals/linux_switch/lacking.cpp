// Slots that the kernel has nothing for: each fails, with one line that says why.
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/slots.h"

#define LS_LACKING(why) (LS_ERROR("Not possible, DevIdx=%d: " why, devIdx), -1)

namespace linux_switch {

int ResetPortCounters(int devIdx, int)
{
    return LS_LACKING("the kernel's counters only rise");
}

int EnableRgmiiDelay(int devIdx, int)
{
    return LS_LACKING("the device tree sets the delays of an RGMII port");
}

int DisableRgmiiDelay(int devIdx, int)
{
    return LS_LACKING("the device tree sets the delays of an RGMII port");
}

int ReadPortReg(int devIdx, int, int, void*)
{
    return LS_LACKING("the kernel drives the chip, its registers are not for others");
}

int WritePortReg(int devIdx, int, int, int)
{
    return LS_LACKING("the kernel drives the chip, its registers are not for others");
}

int SmiRead(int devIdx, int, void*)
{
    return LS_LACKING("the kernel drives the chip, its registers are not for others");
}

int SmiWrite(int devIdx, int, int)
{
    return LS_LACKING("the kernel drives the chip, its registers are not for others");
}

int SetQWred(int devIdx, int, int, int, int, int, int, int)
{
    return LS_LACKING("a bridge has no queues with buffers to discard from");
}

int SetGlobWred(int devIdx, int, int, int, int, int, int, int, int, int)
{
    return LS_LACKING("a bridge has no queues with buffers to discard from");
}

int SetQRsrv(int devIdx, int, int)
{
    return LS_LACKING("a bridge has no queues with buffers to reserve");
}

int SetPortFc(int devIdx, int, int, int)
{
    return LS_LACKING("drivers take no thresholds for flow control");
}

int SetPhyPortDvt(int devIdx, int, int)
{
    return LS_LACKING("drivers have no verification tests");
}

}  // namespace linux_switch
