// One call of a slot, as it is watched: what is being called, how long it takes, how often it
// reaches for the bus, and whether it comes back to the library's own calls.
#pragma once

#include <cstdint>
#include <string>

#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

class SlotCall {
public:
    SlotCall(Family family, size_t slot, const std::string& arguments);
    ~SlotCall();
    SlotCall(const SlotCall&) = delete;
    SlotCall& operator=(const SlotCall&) = delete;

    int Ended(int result);

private:
    Family family_;
    size_t slot_;
    uint64_t start_;
};

// What the functions that stand in for those of the platform see during a call.
struct PlatformUse {
    uint32_t accesses;    // of MDIO registers
    uint64_t asked;       // microseconds of waiting that were asked for
    uint64_t waited;      // and that passed
    bool tookLock;        // a function of the library was called that takes one
    char calledBack[64];  // its name, where it is known
};

extern PlatformUse platformUse;
// Makes every access of a register fail.
extern bool busFails;
// How often the call that ended last reached for the bus.
uint32_t AccessesOfLastCall();

// Hears which function was called back.
void ListenToLog();

}  // namespace halcheck
