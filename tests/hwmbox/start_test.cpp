// Opening and binding the mailbox socket, and the choice of the role.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tests/hwmbox/mailbox_fixture.h"

namespace obtest {
namespace {

using testing::ElementsAre;

constexpr const char* kStart = "out HWMB_Start:# Start. Socket type SOCK_SUBJECT";
constexpr const char* kSocket = "sys socket(43, 1, 0)";
const std::string kInit = "out HWMB_initializeSocket:# ";
const std::string kInitFailed = kInit + "HWMB_initializeSocket Failed";
const std::string kAddress = kInit + "hwmbox_addr values: mid=86, appid=4660";

const Lines kSocketNotReady = {
    kSocket, kInit + "failed to open socket!!! [ret=-1, errno=100: Network is down]",
    kInit + "HW_MBOX not ready yet, try again in 1000 msec...", "wait usleep(1000000)"};
const Lines kBindNotReady = {
    "sys bind(16)", kInit + "failed to bind socket!!! [ret=-1, errno=112: Host is down]",
    kInit + "APP-CPU's HW_MBOX not ready yet, try again in 1000 msec...", "wait usleep(1000000)"};

using HwmbStart = MailboxTest;

TEST_F(HwmbStart, BindsTheSixteenByteAddressInHostOrder)
{
    Run(SOCK_SUBJECT);
    EXPECT_THAT(platform.boundAddresses,
                ElementsAre(Bytes{43, 0, 0x56, 0x34, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(HwmbStart, KeepsTheClosedDescriptorsNumber)
{
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_GE(HWMB_socket, 0);
    EXPECT_EQ(transcript.All().back(), "sys close()");
}

// The standard streams of a program that closed them, given back at the end.
class ClosedStreams {
public:
    ClosedStreams()
    {
        for (int fd = 0; fd <= 2; ++fd) {
            kept_[fd] = fcntl(fd, F_DUPFD, 3);
            close(fd);
        }
    }
    ~ClosedStreams()
    {
        for (int fd = 0; fd <= 2; ++fd) {
            dup2(kept_[fd], fd);
            close(kept_[fd]);
        }
    }

private:
    int kept_[3];
};

TEST_F(HwmbStart, KeepsTheSocketOffTheStandardStreams)
{
    platform.mailbox = {Message("PING")};
    {
        const ClosedStreams closed;
        EXPECT_EQ(Run(SOCK_SUBJECT), 0);
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);  // the place that the socket was moved from
    }
    EXPECT_GT(HWMB_socket, STDERR_FILENO);
    const Lines& all = transcript.All();
    EXPECT_EQ(all[2], "sys close()");
    EXPECT_EQ(all[3], Opened(SOCK_SUBJECT)[2]);
}

TEST_F(HwmbStart, TheSocketIsClosedOnExec)
{
    platform.Fail("bind", EADDRINUSE);  // leaves it open
    Run(SOCK_SUBJECT);
    EXPECT_EQ(fcntl(HWMB_socket, F_GETFD), FD_CLOEXEC);
}

TEST_F(HwmbStart, FailsAtOnceWhenTheSocketIsRefused)
{
    platform.Fail("socket", EAFNOSUPPORT);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    const std::string why = "[ret=-1, errno=97: Address family not supported by protocol]";
    EXPECT_LINES({kStart, kSocket, kInit + "failed to open socket!!! " + why,
                  kInit + "Critical failure in open socket!!! " + why, kInitFailed});
    EXPECT_EQ(HWMB_socket, -1);
}

TEST_F(HwmbStart, TriesAgainEverySecondWhileTheMailboxIsDown)
{
    platform.FailEach("socket", ENETDOWN, 2);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    const Lines& all = transcript.All();
    const Lines expected = Lines{kStart} + kSocketNotReady + kSocketNotReady +
                           Lines{kSocket, kInit + "socket successfully opened! [HWMB_socket=" +
                                              std::to_string(HWMB_socket) + "]"};
    ASSERT_GE(all.size(), expected.size());
    EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(expected.size())), expected);
}

TEST_F(HwmbStart, CountsFailedSocketsAtEachTenthRetry)
{
    platform.FailEach("socket", ENETDOWN, 21);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    const std::string count = kInit + "initialize socket failed for ";
    Lines expected = {kStart};
    for (int failure = 0; failure <= 20; ++failure) {
        Lines lines = kSocketNotReady;
        if (failure == 10 || failure == 20)
            lines.insert(lines.begin() + 2, count + std::to_string(failure) + " times!!!");
        expected = expected + lines;
    }
    const Lines& all = transcript.All();
    ASSERT_GE(all.size(), expected.size());
    EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(expected.size())), expected);
}

TEST_F(HwmbStart, CountsFailedSocketsBeforeACriticalOne)
{
    platform.FailEach("socket", ENETDOWN, 10);
    platform.Fail("socket", EPERM, 11);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    const std::string why = "[ret=-1, errno=1: Operation not permitted]";
    const Lines tail(transcript.All().end() - 5, transcript.All().end());
    EXPECT_EQ(tail, (Lines{kSocket, kInit + "failed to open socket!!! " + why,
                           kInit + "initialize socket failed for 10 times!!!",
                           kInit + "Critical failure in open socket!!! " + why, kInitFailed}));
}

TEST_F(HwmbStart, StartsCountingAnewInEachRun)
{
    for (int run = 0; run < 2; ++run) {
        platform.FailEach("socket", ENETDOWN, 6);
        Run(SOCK_SUBJECT);
    }
    EXPECT_FALSE(transcript.Has("initialize socket failed for"));
}

TEST_F(HwmbStart, FailsAtOnceWhenTheBindIsRefusedAndLeavesTheSocketOpen)
{
    platform.Fail("bind", EADDRINUSE);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    const std::string why = "[ret=-1, errno=98: Address already in use]";
    EXPECT_LINES(
        {kStart, kSocket,
         kInit + "socket successfully opened! [HWMB_socket=" + std::to_string(HWMB_socket) + "]",
         kAddress, "sys bind(16)", kInit + "failed to bind socket!!! " + why,
         kInit + "Critical failure in bind socket!!! " + why, kInitFailed});
}

TEST_F(HwmbStart, BindsTheSameAddressAgainEverySecondWhileTheApplicationCpuIsDown)
{
    platform.FailEach("bind", EHOSTDOWN, 2);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    ASSERT_EQ(platform.boundAddresses.size(), 3U);
    EXPECT_EQ(platform.boundAddresses[1], platform.boundAddresses[0]);
    EXPECT_EQ(platform.boundAddresses[2], platform.boundAddresses[0]);
    const Lines expected =
        Lines{kAddress} + kBindNotReady + kBindNotReady +
        Lines{"sys bind(16)", kInit + "socket is ready!!!", kInit + "HWMB_initializeSocket done"};
    const Lines& all = transcript.All();
    ASSERT_GE(all.size(), expected.size() + 3);
    EXPECT_EQ(Lines(all.begin() + 3, all.begin() + 3 + static_cast<long>(expected.size())),
              expected);
    EXPECT_EQ(transcript.Only({"sys socket"}).size(), 1U);
}

TEST_F(HwmbStart, CountsFailedBindsAtEachTenthRetryWhateverTheSocketDid)
{
    platform.FailEach("socket", ENETDOWN, 5);
    platform.FailEach("bind", EHOSTDOWN, 21);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    Lines counts;
    for (const auto& line : transcript.All())
        if (line.find(" times!!!") != std::string::npos)
            counts.push_back(line);
    EXPECT_EQ(counts, (Lines{kInit + "bind socket failed for 10 times!!!",
                             kInit + "bind socket failed for 20 times!!!"}));
    EXPECT_EQ(transcript.Only({"wait usleep(1000000)"}).size(), 26U);
}

TEST_F(HwmbStart, AMailboxDownAtBindIsCritical)
{
    platform.Fail("bind", ENETDOWN);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_TRUE(transcript.Has(kInitFailed));
    EXPECT_THAT(transcript.Only({"wait"}), testing::IsEmpty());
}

TEST_F(HwmbStart, AHostDownAtSocketIsCritical)
{
    platform.Fail("socket", EHOSTDOWN);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_TRUE(transcript.Has(kInitFailed));
    EXPECT_THAT(transcript.Only({"wait"}), testing::IsEmpty());
}

TEST_F(HwmbStart, AWaitCutShortByASignalGoesOnForTheRest)
{
    const auto kRest = testing::MatchesRegex(R"(wait usleep\(9[0-9]{5}\))");
    platform.Fail("socket", ENETDOWN);
    platform.FailEach("usleep", EINTR, 2);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_THAT(transcript.Only({"wait", "sys socket"}),
                testing::ElementsAre(kSocket, "wait usleep(1000000)", kRest, kRest, kSocket));
}

TEST_F(HwmbStart, AWaitThatFailsOtherwiseIsNotRepeated)
{
    platform.Fail("socket", ENETDOWN);
    platform.Fail("usleep", EINVAL);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_EQ(transcript.Only({"wait", "sys socket"}),
              (Lines{kSocket, "wait usleep(1000000)", kSocket}));
}

TEST_F(HwmbStart, AnUnknownRoleFailsAfterTheBind)
{
    EXPECT_EQ(Run(2), -1);
    EXPECT_LINES(Opened(2) + Lines({"out HWMB_Start:# HWMB_Start failed - Unknown socket type 2",
                                    "sys close()"}));
}

TEST_F(HwmbStart, ANegativeRoleIsUnknownToo)
{
    EXPECT_EQ(Run(-1), -1);
    EXPECT_LINES(Opened(-1) + Lines({"out HWMB_Start:# HWMB_Start failed - Unknown socket type -1",
                                     "sys close()"}));
}

}  // namespace
}  // namespace obtest
