#include <cerrno>

#include "tests/board/board_fixture.h"

namespace obtest {
namespace {

const std::string kReset = "log9 OBOS_ResetSerDes:# ";
const std::string kOpen = "sys open(/dev/modphy_drv, O_RDONLY)";
const std::string kOpened = "log9 _ResetModphy:# open /dev/modphy_drv done";

using SerDesLane = BoardTest;

TEST_F(SerDesLane, IsResetThroughTheLaneDriver)
{
    EXPECT_EQ(OBOS_ResetSerDes(0, 0), 0);
    EXPECT_EQ(
        transcript.All(),
        (Lines{kReset + "GmacIdx 0 Speed2_5 False", kOpen, kOpened,
               "sys ioctl(MODPHY_RESET_LANE, 3)",
               "log9 _ResetModphy:# ioctl(MODPHY_RESET_LANE,  ClientId = 3) done", "sys close()"}));
}

TEST_F(SerDesLane, ClientDependsOnTheGmacAndTheSpeed)
{
    const struct {
        uint32_t gmac;
        int fast;
        const char* word;
        int client;
    } cases[] = {{0, 0, "False", 3}, {0, 1, "True", 5}, {1, 0, "False", 4},
                 {1, 1, "True", 6},  {1, 7, "True", 6}, {0, -1, "True", 5}};
    for (const auto& c : cases) {
        transcript.Clear();
        EXPECT_EQ(OBOS_ResetSerDes(c.gmac, c.fast), 0);
        EXPECT_EQ(transcript.All().front(),
                  kReset + "GmacIdx " + std::to_string(c.gmac) + " Speed2_5 " + c.word);
        EXPECT_TRUE(transcript.Has("sys ioctl(MODPHY_RESET_LANE, " + std::to_string(c.client)));
    }
}

TEST_F(SerDesLane, OfAnyOtherGmacTouchesNoDevice)
{
    EXPECT_EQ(OBOS_ResetSerDes(2, 0), -1);
    EXPECT_EQ(OBOS_ResetSerDes(0xFFFFFFFF, 1), -1);
    EXPECT_EQ(transcript.All(),
              (Lines{kReset + "GmacIdx 2 Speed2_5 False", kReset + "GmacIdx -1 Speed2_5 True"}));
}

TEST_F(SerDesLane, FailsWhenTheDriverCannotBeOpened)
{
    platform.Fail("open", ENOENT);
    EXPECT_EQ(OBOS_ResetSerDes(0, 0), -1);
    EXPECT_EQ(transcript.All(), (Lines{kReset + "GmacIdx 0 Speed2_5 False", kOpen,
                                       "log1 _ResetModphy:# open error, errno=2"}));
}

TEST_F(SerDesLane, FailsAndClosesTheDriverWhenItRefuses)
{
    platform.Fail("ioctl", EBUSY);
    EXPECT_EQ(OBOS_ResetSerDes(1, 0), -1);
    EXPECT_EQ(transcript.All(),
              (Lines{kReset + "GmacIdx 1 Speed2_5 False", kOpen, kOpened,
                     "sys ioctl(MODPHY_RESET_LANE, 4)", "log1 _ResetModphy:# ioctl error, errno=16",
                     "sys close()"}));
}

TEST_F(SerDesLane, APositiveAnswerOfTheDriverIsSuccess)
{
    platform.Fail("ioctl", 0, 1, 1);
    EXPECT_EQ(OBOS_ResetSerDes(1, 0), 0);
}

TEST_F(SerDesLane, TheCloseIsNotChecked)
{
    platform.Fail("close", EIO);
    EXPECT_EQ(OBOS_ResetSerDes(1, 1), 0);
}

}  // namespace
}  // namespace obtest
