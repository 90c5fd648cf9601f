// ETHPHY_PhyZ88_SetSpeedDuplexMode: four writes, each a call of its own.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

struct Mode {
    uint32_t speed;
    int fullDuplex;
    const char* values[4];
};

const Mode kModes[] = {
    {1, 0, {"0x4002", "0x0000", "0x0C21", "0x1200"}},
    {1, 1, {"0x4002", "0x0000", "0x0C61", "0x1200"}},
    {2, 0, {"0x4002", "0x0000", "0x0CE1", "0x1200"}},
    {2, 1, {"0x4002", "0x0000", "0x0DE1", "0x1200"}},
    {2, -1, {"0x4002", "0x0000", "0x0DE1", "0x1200"}},
    {3, 0, {"0x4002", "0x0200", "0x0DE1", "0x3240"}},
    {3, 1, {"0x4002", "0x0200", "0x0DE1", "0x3240"}},
    {4, 0, {"0x40A2", "0x0200", "0x0DE1", "0x3240"}},
    {4, 1, {"0x40A2", "0x0200", "0x0DE1", "0x3240"}},
    {0, 0, {"0x40A2", "0x0200", "0x0DE1", "0x3240"}},
    {0, 1, {"0x40A2", "0x0200", "0x0DE1", "0x3240"}},
    {0xFFFFFFFF, 0, {"0x40A2", "0x0200", "0x0DE1", "0x3240"}},
};

void PrintTo(const Mode& mode, std::ostream* out)
{
    *out << mode.speed << "/" << mode.fullDuplex;
}

class PhyForcedSpeed : public PhyTest, public testing::WithParamInterface<Mode> {
protected:
    // The first writes of the four, each inside a frame of its own.
    static Lines Writes(int count)
    {
        const char* const kPlaces[] = {"phy=0x8167, reg=32", "phy=0xB, reg=9", "phy=0xB, reg=4",
                                       "phy=0xB, reg=0"};
        Lines lines;
        for (int i = 0; i < count; ++i) {
            lines.push_back(kLock);
            lines.push_back("sys ioctl(SIOCSMIIREG, nsgmii0, " + std::string(kPlaces[i]) +
                            ", bus=2, " + GetParam().values[i] + ")");
            lines.push_back(kUnlock);
        }
        return lines;
    }

    Lines Frames() const { return transcript.Only({"sys semop", "sys ioctl"}); }
};

}  // namespace

TEST_P(PhyForcedSpeed, WritesFourRegisters)
{
    InitEnabled();
    EXPECT_EQ(ETHPHY_PhyZ88_SetSpeedDuplexMode(0, GetParam().speed, GetParam().fullDuplex), 0);
    EXPECT_EQ(Frames(), Writes(4));
    EXPECT_TRUE(transcript.Log().empty());
}

TEST_P(PhyForcedSpeed, StopsAtTheWriteThatFails)
{
    InitEnabled();
    for (int failing = 1; failing <= 4; ++failing) {
        transcript.Clear();
        platform.Fail("ioctl", EIO, failing);
        EXPECT_EQ(ETHPHY_PhyZ88_SetSpeedDuplexMode(0, GetParam().speed, GetParam().fullDuplex), -1);
        EXPECT_EQ(Frames(), Writes(failing));
        EXPECT_EQ(transcript.All().back(),
                  "phy1 [ETHPHY_PhyZ88_SetSpeedDuplexMode] Failed to write to register\n");
    }
}

INSTANTIATE_TEST_SUITE_P(All, PhyForcedSpeed, testing::ValuesIn(kModes));

TEST_F(PhyTest, ForcedSpeedOfAPhyHeldInReset)
{
    Init();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    EXPECT_EQ(ETHPHY_PhyZ88_SetSpeedDuplexMode(0, 1, 1), -1);
    EXPECT_STEPS(kLock, "phy1 [ValidateHwState] PHY is in disabled state", kUnlock,
                 "phy1 [ETHPHY_PhyZ88_SetSpeedDuplexMode] Failed to write to register\n");
}
