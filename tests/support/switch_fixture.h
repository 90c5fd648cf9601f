// A board for the switch family: board data, scripted HALs, and a look into the shared region.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "switch/orblink_hal.h"
#include "tests/support/scripted_platform.h"

namespace obtest {

// Board data as the application CPU sends them (type 10), built field by field.
struct SwitchBoard {
    struct Entry {
        std::string halLibName = "liborblink_velmar.so";
        uint32_t serdesId = 1;
        uint32_t enableGpioPin = OB_NO_GPIO_PIN;
        uint32_t resetGpioPin = 19;
        uint32_t internalPortPidx = 0;
        uint8_t mdioAddr = 16;
        uint8_t mdioBus = 1;
        uint32_t ifaceSpeed = OB_SPEED_2G5;
        uint32_t ifaceMode = OB_IFACE_HSGMII;
        uint32_t preResetArg = 0x1234;
        uint32_t reservedWord = 0;
    };
    std::vector<Entry> entries;
    uint8_t count = 0;
    uint32_t portIsolation = 0;
    uint8_t macs[5][6] = {{2, 0, 0, 0, 0, 1},
                          {2, 0, 0, 0, 0, 2},
                          {2, 0, 0, 0, 0, 3},
                          {2, 0, 0, 0, 0, 4},
                          {2, 0, 0, 0, 0, 5}};
    uint32_t messageType = 10;
    uint32_t payloadLength = 176;

    static SwitchBoard With(std::vector<Entry> entries);
    std::vector<uint8_t> Message() const;
};

// Eight ports: 0 internal without PHY, 1 to 6 with PHY, 7 RGMII without PHY; EEE and mirroring.
SwitchCaps DefaultCaps();

// The shared regions as this process sees them, mapped apart from the library.
SwitchDeviceRegion& Region();
SwitchDeviceRecord& Record(int device);

// Value of the switch family's semaphore: 1 free, 0 held; -1 when there is none.
int SemaphoreValue();

// The slot table of a scripted switch HAL library ("a", "b"), to take slots away.
struct OBHAL_HalFuncs& HalTable(const std::string& which);

class SwitchTest : public testing::Test {
protected:
    SwitchTest();

    // ORBLINK_InitOnce on the board, then an empty transcript.
    void Init(const SwitchBoard& board = SwitchBoard::With({{}}), uint32_t arg = 1);

    // Init, and the switch stands in the record as brought up.
    void InitEnabled(const SwitchBoard& board = SwitchBoard::With({{}}));

    ScriptedPlatform& platform = Platform();
    Transcript& transcript = Platform().transcript;
};

}  // namespace obtest

#define EXPECT_TRANSCRIPT(...) \
    EXPECT_THAT(::obtest::Platform().transcript.All(), testing::ElementsAre(__VA_ARGS__))
#define EXPECT_HALS(...) \
    EXPECT_THAT(::obtest::Platform().transcript.Only({"hal"}), testing::ElementsAre(__VA_ARGS__))
#define EXPECT_LOGS(...) \
    EXPECT_THAT(::obtest::Platform().transcript.Log(), testing::ElementsAre(__VA_ARGS__))
