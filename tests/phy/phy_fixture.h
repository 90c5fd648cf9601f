// A board for the PHY family: board data, scripted HALs, and a look into the shared region.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "phy/ethphy_hal.h"
#include "tests/support/scripted_platform.h"

namespace obtest {

// Board data as the application CPU sends them (type 11), built field by field.
struct PhyBoard {
    struct Entry {
        std::string halLibName = "libphyk20.so";
        uint32_t serdesId = 1;
        uint32_t enableGpioPin = OB_NO_GPIO_PIN;
        uint32_t resetGpioPin = 19;
        uint8_t mdioBus = 2;
        uint8_t mdioAddr = 11;
        uint32_t ifaceSpeed = OB_SPEED_2G5;
        uint32_t ifaceMode = OB_IFACE_HSGMII;
    };
    std::vector<Entry> entries;
    uint32_t ulpMode = 0;

    std::vector<uint8_t> Message() const;
};

// The shared region as this process sees it, mapped apart from the library.
PhyDeviceRegion& PhyRegion();

// Value of the PHY family's semaphore: 1 free, 0 held; -1 when there is none.
int PhySemaphoreValue();

// Removes the semaphore, as an operator would after a failed initialisation.
void RemovePhySemaphore();

// The slot table of a scripted PHY HAL library ("phy-a", "phy-b"), to take slots away.
struct ETHPHY_HalFuncs& PhyHalTable(const std::string& which);

// What a process did that had not used the library before.
struct ProcessReport {
    int result = 0;
    Lines transcript;
};

// A second process, created before this one uses the library; Run lets it go and waits for it.
class FreshProcess {
public:
    explicit FreshProcess(const std::function<int()>& work);
    ProcessReport Run();

private:
    int go_ = -1;
    int report_ = -1;
    int pid_ = 0;
};

class PhyTest : public testing::Test {
protected:
    PhyTest();

    // ETHPHY_InitOnce on the board, then an empty transcript. The PHYs' state words are 0.
    void Init(const PhyBoard& board = {{{}}});

    // Init, and every PHY stands in its record as enabled.
    void InitEnabled(const PhyBoard& board = {{{}}});

    PhyDeviceRecord& Record(int phy = 0) { return PhyRegion().phy[phy]; }

    // The transcript without the reception of the board data and the inner lines of
    // OBOS_SetGpioValue.
    Lines Steps() const;

    ScriptedPlatform& platform = Platform();
    Transcript& transcript = Platform().transcript;
};

inline Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline constexpr const char* kLock = "sys semop(0, -1, 0)";
inline constexpr const char* kUnlock = "sys semop(0, +1, 0)";

}  // namespace obtest

#define EXPECT_STEPS(...) EXPECT_THAT(Steps(), testing::ElementsAre(__VA_ARGS__))
