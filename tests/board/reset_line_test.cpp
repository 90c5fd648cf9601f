#include <cerrno>

#include "tests/board/board_fixture.h"

namespace obtest {
namespace {

const std::string kPath0 = "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset";
const std::string kPath1 = "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset";
const std::string kSet = "OBOS_SetGpioValue:# ";

using ResetLine = BoardTest;

TEST_F(ResetLine, Pin18IsTheFirstAttribute)
{
    EXPECT_EQ(OBOS_SetGpioValue(18, 0), 0);
    EXPECT_EQ(transcript.All(),
              (Lines{"sys fopen(" + kPath0 + ", w)", "log9 " + kSet + "Reset attribute " + kPath0,
                     "sys write(sgmii0_reset, \"0\")"}));
}

TEST_F(ResetLine, Pin19IsTheSecondAttribute)
{
    EXPECT_EQ(OBOS_SetGpioValue(19, 1), 0);
    EXPECT_EQ(transcript.All(),
              (Lines{"sys fopen(" + kPath1 + ", w)", "log9 " + kSet + "Reset attribute " + kPath1,
                     "sys write(sgmii1_reset, \"1\")"}));
}

TEST_F(ResetLine, AnyValueIsWrittenInDecimal)
{
    EXPECT_EQ(OBOS_SetGpioValue(18, -123456), 0);
    EXPECT_TRUE(transcript.Has("sys write(sgmii0_reset, \"-123456\")"));
}

TEST_F(ResetLine, OtherPinsAreUnknown)
{
    const std::pair<uint32_t, const char*> pins[] = {
        {0, "0"}, {17, "17"}, {20, "20"}, {255, "255"}, {0xFFFFFFFF, "-1"}};
    for (const auto& [pin, text] : pins) {
        transcript.Clear();
        EXPECT_EQ(OBOS_SetGpioValue(pin, 1), -1);
        EXPECT_EQ(transcript.All(), (Lines{"log1 " + kSet + "Unknown GPIO " + text}));
    }
}

TEST_F(ResetLine, AnAttributeThatCannotBeOpenedFails)
{
    platform.Fail("fopen", ENOENT);
    EXPECT_EQ(OBOS_SetGpioValue(19, 1), -1);
    EXPECT_EQ(transcript.All(), (Lines{"sys fopen(" + kPath1 + ", w)",
                                       "log1 " + kSet + "Failed to open attribute " + kPath1}));
}

TEST_F(ResetLine, ARefusedWriteIsNoticedAlthoughTheStreamIsBuffered)
{
    platform.FailEach("fwrite", EIO);
    EXPECT_EQ(OBOS_SetGpioValue(18, 0), -1);
    EXPECT_EQ(transcript.All(),
              (Lines{"sys fopen(" + kPath0 + ", w)", "log9 " + kSet + "Reset attribute " + kPath0,
                     "sys write(sgmii0_reset, \"0\")", "log1 " + kSet + "Failed to reset"}));
}

TEST_F(ResetLine, WorksAgainAfterARefusedWrite)
{
    platform.Fail("fwrite", EIO);
    EXPECT_EQ(OBOS_SetGpioValue(18, 0), -1);
    EXPECT_EQ(OBOS_SetGpioValue(18, 0), 0);
}

}  // namespace
}  // namespace obtest
