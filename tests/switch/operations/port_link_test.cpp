#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;
using testing::HasSubstr;

namespace {

class PortLink : public EnabledSwitch {
protected:
    PortLink()
    {
        config.link[2] = {OB_SPEED_100M, 0};
        ReportLink(1, OB_SPEED_1G, 1);
    }

    // What the HAL finds.
    void ReportLink(uint32_t foundLink, uint32_t foundSpeed, uint32_t foundDuplex)
    {
        platform.slots["GetPortLink"] = [=](const SlotArgs& args) {
            const uint32_t found[] = {foundLink, foundSpeed, foundDuplex};
            for (int i = 0; i < 3; ++i)
                if (args[2 + i] != 0)
                    *reinterpret_cast<uint32_t*>(args[2 + i]) = found[i];
            return 0;
        };
    }

    // The trace line of the last call.
    std::string Line() const
    {
        const Lines lines = transcript.Only({"log9"});
        return lines.empty() ? "" : lines.back();
    }

    uint32_t link = 77, speed = 77, duplex = 77;
};

TEST_F(PortLink, ThatIsUpIsReportedAsTheHalFoundIt)
{
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 1U);
    EXPECT_EQ(speed, OB_SPEED_1G + 0U);
    EXPECT_EQ(duplex, 1U);
}

TEST_F(PortLink, ThatIsDownIsReportedWithTheConfiguredSpeedAndDuplex)
{
    ReportLink(0, OB_SPEED_1G, 1);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 0U);
    EXPECT_EQ(speed, OB_SPEED_100M + 0U);
    EXPECT_EQ(duplex, 0U);
    EXPECT_EQ(Line(),
              "log9 ORBLINK_GetPortLink:# DevIdx=0, PortIdx=2, LinkDetected=DOWN, "
              "LinkSpeed=100Mb/s, FullDp=HD");
}

TEST_F(PortLink, AnyNonZeroValueIsUpOrFullDuplexAndReportedUnchanged)
{
    ReportLink(0x80000000U, OB_SPEED_10M, 2);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 0x80000000U);
    EXPECT_EQ(duplex, 2U);
    EXPECT_THAT(Line(), HasSubstr("LinkDetected=ON, LinkSpeed=10Mb/s, FullDp=FD"));
}

TEST_F(PortLink, DownWithoutALinkPointerKeepsTheHalsValues)
{
    ReportLink(0, OB_SPEED_1G, 1);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, nullptr, &speed, &duplex), 0);
    EXPECT_EQ(speed, OB_SPEED_1G + 0U);
    EXPECT_EQ(duplex, 1U);
    EXPECT_THAT(Line(), HasSubstr("LinkDetected=NA, LinkSpeed=1Gb/s, FullDp=FD"));
}

TEST_F(PortLink, DownFillsTheSpeedAlone)
{
    ReportLink(0, OB_SPEED_1G, 1);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, nullptr), 0);
    EXPECT_EQ(speed, OB_SPEED_100M + 0U);
    EXPECT_THAT(Line(), HasSubstr("LinkDetected=DOWN, LinkSpeed=100Mb/s, FullDp=NA"));
}

TEST_F(PortLink, DownFillsTheDuplexAlone)
{
    ReportLink(0, OB_SPEED_1G, 1);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, nullptr, &duplex), 0);
    EXPECT_EQ(duplex, 0U);
    EXPECT_THAT(Line(), HasSubstr("LinkDetected=DOWN, LinkSpeed=NA, FullDp=HD"));
}

TEST_F(PortLink, WithoutAnyPointerSucceedsAndLogsNaThreeTimes)
{
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, nullptr, nullptr, nullptr), 0);
    EXPECT_HALS("hal0 GetPortLink(0, 2, null, null, null)");
    EXPECT_THAT(Line(), HasSubstr("LinkDetected=NA, LinkSpeed=NA, FullDp=NA"));
}

TEST_F(PortLink, EverySpeedHasItsWordAndALargerCodeIsIllegal)
{
    const char* words[] = {"UNKNOWN", "AUTONEG", "10Mb/s", "100Mb/s",
                           "1Gb/s",   "2.5Gb/s", "10Gb/s", "Illegal"};
    for (uint32_t code = 0; code < 8; ++code) {
        ReportLink(1, code, 1);
        EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), 0);
        EXPECT_EQ(speed, code);
        EXPECT_THAT(Line(), HasSubstr("LinkSpeed=" + std::string(words[code]) + ","));
    }
    ReportLink(1, 0xFFFFFFFFU, 1);
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), 0);
    EXPECT_EQ(speed, 0xFFFFFFFFU);
    EXPECT_THAT(Line(), HasSubstr("LinkSpeed=Illegal"));
}

TEST_F(PortLink, ThatTheHalCannotReadIsNotReplacedByTheConfiguredOne)
{
    link = 0;
    platform.FailSlot("GetPortLink");
    EXPECT_EQ(ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex), -1);
    EXPECT_EQ(speed, 77U);
    EXPECT_EQ(duplex, 77U);
}

}  // namespace
