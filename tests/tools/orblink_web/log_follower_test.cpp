#include "tools/orblink_web/reader/log_follower.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace web {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LogFollowerTest : public testing::Test {
protected:
    LogFollowerTest()
    {
        std::string name = "/tmp/orblink-web-log.XXXXXX";
        directory_ = mkdtemp(name.data());
        path_ = directory_ + "/syslog";
    }
    ~LogFollowerTest() override { std::filesystem::remove_all(directory_); }

    void Append(const std::string& text) const { std::ofstream(path_, std::ios::app) << text; }

    std::string directory_;
    std::string path_;
};

TEST_F(LogFollowerTest, TakesTheLibrarysLinesAlone)
{
    Append("gw: ORBLINK_InitOnce:41 begins\ngw: something else\ngw: _ApiProlog:9 failed\n");
    LogFollower log(path_);
    EXPECT_THAT(log.NewLines(),
                ElementsAre("gw: ORBLINK_InitOnce:41 begins", "gw: _ApiProlog:9 failed"));
    EXPECT_THAT(log.NewLines(), IsEmpty());
}

TEST_F(LogFollowerTest, WaitsForTheEndOfALine)
{
    LogFollower log(path_);
    EXPECT_THAT(log.NewLines(), IsEmpty()) << "there is no file yet";
    Append("gw: ORBLINK_In");
    EXPECT_THAT(log.NewLines(), IsEmpty());
    Append("itOnce:41 begins\n");
    EXPECT_THAT(log.NewLines(), ElementsAre("gw: ORBLINK_InitOnce:41 begins"));
}

TEST_F(LogFollowerTest, GoesOnWithTheFileThatTookItsPlace)
{
    Append("gw: ORBLINK_A:1 old\n");
    LogFollower log(path_);
    EXPECT_THAT(log.NewLines(), SizeIs(1));
    std::filesystem::rename(path_, path_ + ".1");
    Append("gw: ORBLINK_B:2 new\n");
    EXPECT_THAT(log.NewLines(), ElementsAre("gw: ORBLINK_B:2 new"));
    std::filesystem::resize_file(path_, 0);
    EXPECT_THAT(log.NewLines(), IsEmpty());
    Append("gw: C:3 x\n");
    EXPECT_THAT(log.NewLines(), ElementsAre("gw: C:3 x"));
}

TEST_F(LogFollowerTest, ReadsOnlyTheEndOfALongFileAndALittleAtATime)
{
    for (int i = 0; i < 20000; ++i)
        Append("gw: ORBLINK_Line:" + std::to_string(i) + " x\n");
    LogFollower log(path_);
    const size_t first = log.NewLines().size();
    EXPECT_GT(first, 1000U);
    EXPECT_LT(first, 6000U);
}

TEST_F(LogFollowerTest, IsNotHeldUpByAFifo)
{
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    LogFollower log(path_);
    EXPECT_THAT(log.NewLines(), IsEmpty());
}

}  // namespace
}  // namespace web
