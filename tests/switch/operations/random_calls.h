// Calls of the switch API, drawn at random, each with what the model says of it.
#pragma once

#include <random>

#include "tests/switch/operations/switch_model.h"

namespace obtest {

// What is drawn beyond what the API itself refuses.
struct DrawLimits {
    uint32_t lastTagging = 0xFFFFFFFFU;
    uint32_t lastGroup = 0xFFFFFFFFU;
    uint32_t firstSpeed = 0;
    uint32_t lastSpeed = 6;
    int firstMtu = 0;
    int lastMtu = 65535;
    int lastVlan = 65535;
    int firstVlan = 0;
    int lastLedMode = 255;
    int lastMask = 0xFFFF;
    int lastBuffers = 65535;
    int firstTpid = 0;
    int addresses = 40;
};

struct RandomCall {
    std::string text;
    std::function<int()> api;
    std::function<int(SwitchModel&)> model;
};

class CallSource {
public:
    CallSource(unsigned seed, const DrawLimits& limits) : random_(seed), limits_(limits) {}

    RandomCall Next();

    // A number of the range, both ends included.
    int Draw(int first, int last);
    bool OneIn(int times) { return Draw(1, times) == 1; }

private:
    RandomCall NextVlanCall();
    RandomCall NextPortCall();
    RandomCall NextWideCall();
    RandomCall NextMapping();

    uint32_t DrawWord(uint32_t last);
    int Port() { return Draw(0, 9); }
    int Vlan() { return OneIn(4) ? Draw(limits_.firstVlan, limits_.lastVlan) : Draw(1, 9); }

    std::mt19937 random_;
    DrawLimits limits_;
};

// From ORBLINK_TEST_SEED, or another one each time.
unsigned TestSeed();

}  // namespace obtest
