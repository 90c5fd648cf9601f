#include "virtual_board/board/awake_processors.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace vboard {
namespace {

using std::chrono::milliseconds;

// A file that says how often it was opened and what was written; a FIFO's reader sees the end of the
// request.
class AwakeProcessorsTest : public testing::Test {
protected:
    AwakeProcessorsTest()
    {
        EXPECT_NE(mkdtemp(directory.data()), nullptr);
        path = directory + "/latency";
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        reader = UniqueFd{open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
        EXPECT_TRUE(reader);
    }
    ~AwakeProcessorsTest() override
    {
        unlink(path.c_str());
        rmdir(directory.c_str());
    }
    std::string Written() const
    {
        char bytes[64];
        const ssize_t count = read(reader.Get(), bytes, sizeof bytes);
        return {bytes, static_cast<size_t>(count > 0 ? count : 0)};
    }
    bool IsAsked() const
    {
        pollfd end{reader.Get(), POLLIN, 0};
        poll(&end, 1, 0);
        return (end.revents & POLLHUP) == 0;
    }
    static bool IsDue(const AwakeProcessors& processors)
    {
        pollfd timer{processors.Fd(), POLLIN, 0};
        return poll(&timer, 1, 5000) == 1;
    }

    const std::string kNoLatency = std::string(4, '\0');
    std::string directory = "/tmp/awake.XXXXXX";
    std::string path;
    UniqueFd reader;
};

TEST_F(AwakeProcessorsTest, AreAskedForOnlyWhileFramesPass)
{
    AwakeProcessors processors{path, milliseconds{1}};
    EXPECT_EQ(Written(), kNoLatency);  // whether it may
    EXPECT_FALSE(IsAsked());

    processors.FramesPass();
    EXPECT_EQ(Written(), kNoLatency);
    EXPECT_TRUE(IsAsked());

    ASSERT_TRUE(IsDue(processors));
    processors.Serve();
    EXPECT_FALSE(IsAsked());

    processors.FramesPass();
    EXPECT_EQ(Written(), kNoLatency);
    EXPECT_TRUE(IsAsked());
}

TEST_F(AwakeProcessorsTest, AreAskedForOnceForManyFrames)
{
    AwakeProcessors processors{path, milliseconds{1}};
    Written();
    for (int frame = 0; frame < 100; ++frame)
        processors.FramesPass();
    EXPECT_EQ(Written(), kNoLatency);
}

TEST_F(AwakeProcessorsTest, StayAwakeWhenAFrameCameMeanwhile)
{
    AwakeProcessors processors{path, milliseconds{100}};
    processors.FramesPass();
    ASSERT_TRUE(IsDue(processors));
    processors.FramesPass();
    processors.Serve();
    EXPECT_TRUE(IsAsked());
    ASSERT_TRUE(IsDue(processors));
    processors.Serve();
    EXPECT_FALSE(IsAsked());
}

TEST_F(AwakeProcessorsTest, TellHowMuchLonger)
{
    AwakeProcessors processors{path, milliseconds{100}};
    EXPECT_EQ(processors.Left().count(), 0);
    processors.FramesPass();
    EXPECT_GT(processors.Left().count(), 0);
    EXPECT_LE(processors.Left(), milliseconds{100});
    ASSERT_TRUE(IsDue(processors));
    processors.Serve();
    EXPECT_EQ(processors.Left().count(), 0);
}

TEST_F(AwakeProcessorsTest, ARequestThatIsRefusedLaterIsMissedByNobody)
{
    AwakeProcessors processors{path, milliseconds{1}};
    unlink(path.c_str());
    processors.FramesPass();
    EXPECT_FALSE(IsAsked());
    EXPECT_EQ(processors.Left().count(), 0);
}

TEST_F(AwakeProcessorsTest, AreRefusedByNameBeforeTheBoardRuns)
{
    try {
        const AwakeProcessors processors{directory + "/none"};
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(directory + "/none: No such file"));
    }
}

}  // namespace
}  // namespace vboard
