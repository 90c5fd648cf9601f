// Ordinary calls of the slots of a PHY.
#include "tools/orblink_hal_check/sweeps/calls.h"
#include "tools/orblink_hal_check/watch/hal.h"

namespace halcheck {

namespace {

using P = PhyTable;

constexpr uint32_t kIdentifierRegister = 2;
constexpr uint32_t kAdvertisementRegister = 4;

int GetLink(int devIdx)
{
    bool untouched = true;
    for (const uint8_t fill : kFills) {
        Guarded link{"GetLink", 4, fill};
        Guarded speed{"GetLink", 4, fill};
        Guarded duplex{"GetLink", 4, fill};
        const int result = CallSlot(&P::GetLink, devIdx, link.As<uint32_t>(), speed.As<uint32_t>(),
                                    duplex.As<uint32_t>());
        for (const Guarded* out : {&link, &speed, &duplex})
            out->CheckBeginning();
        if (result != 0)
            return result;
        // Without a link there may be no speed to tell.
        untouched = untouched && link.IsUntouched();
        if (!speed.IsUntouched())
            CheckSpeed(*speed.As<uint32_t>());
    }
    if (untouched)
        Report("result.not-filled", "GetLink succeeded and left the link unwritten");
    return 0;
}

int GetCaps(int devIdx)
{
    return ReadValue<uint32_t>("GetCaps",
                               [=](uint32_t* out) { return CallSlot(&P::GetCaps, devIdx, out); });
}

int GetCounters(int devIdx)
{
    Guarded counters{"GetCounters", countersSize, kFills[0]};
    const int result = CallSlot(&P::GetCounters, devIdx, counters.As<void>());
    counters.CheckBeginning();
    return result;
}

int ReadChipReg(int devIdx)
{
    return ReadValue<uint16_t>("ReadChipReg", [=](uint16_t* out) {
        return CallSlot(&P::ReadChipReg, devIdx, kIdentifierRegister, out);
    });
}

int WriteChipReg(int devIdx)
{
    uint16_t value = 0;
    if (CallSlot(&P::ReadChipReg, devIdx, kAdvertisementRegister, &value) != 0)
        value = 0;
    return CallSlot(&P::WriteChipReg, devIdx, kAdvertisementRegister, value);
}

}  // namespace

std::vector<OrdinaryCall> CallsOfPhy()
{
    return {
        {"ResetDisable", [](int devIdx) { return CallSlot(&P::ResetDisable, devIdx, 1); }},
        {"GetLink", GetLink},
        {"GetCaps", GetCaps},
        {"GetCounters", GetCounters},
        {"ResetCounters", [](int devIdx) { return CallSlot(&P::ResetCounters, devIdx); }},
        {"ReadChipReg", ReadChipReg},
        {"WriteChipReg", WriteChipReg},
        {"SetEeeState", [](int devIdx) { return CallSlot(&P::SetEeeState, devIdx, 1); }},
        {"Poll", [](int devIdx) { return CallSlot(&P::Poll, devIdx); }},
        {"ResetEnable", [](int devIdx) { return CallSlot(&P::ResetEnable, devIdx); }},
        {"SetAdminState", [](int devIdx) { return CallSlot(&P::SetAdminState, devIdx, 1); }},
    };
}

}  // namespace halcheck
