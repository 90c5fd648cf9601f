// What happens between the log sink and the daemon's socket. The kernel queues few datagrams for a
// daemon that does not read.
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <regex>
#include <string>
#include <thread>

#include "platform/ob_platform.h"
#include "tests/platform/log_daemon.h"

namespace {

using obtest::LogDaemon;
using testing::ElementsAre;

constexpr const char* kMark = "<11>platform_test: ";

void Log(int value)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_ERROR, 3, OBPLAT_MODULE_SWITCH, 42};
    OBPLAT_Log(&site, "SomeStep", 0, "value=%d", value);
}

std::string Line(int value)
{
    return kMark + ("value=" + std::to_string(value));
}

std::string LineAfter(unsigned lost, int value)
{
    return kMark + ("[" + std::to_string(lost) + " lines lost] value=" + std::to_string(value));
}

// A sink that has found no daemon does not look again for 10 ms.
void WaitUntilItLooksAgain()
{
    usleep(30'000);
}

std::vector<int> OpenSockets()
{
    std::vector<int> sockets;
    for (int fd = 0; fd < 100; ++fd) {
        int type = 0;
        socklen_t size = sizeof(type);
        if (getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size) == 0)
            sockets.push_back(fd);
    }
    return sockets;
}

TEST(LogSocket, ADaemonThatDoesNotReadLosesLinesAndIsToldHowMany)
{
    constexpr int kLines = 5000;
    const LogDaemon daemon;
    alarm(10);  // a sink that waits for the daemon waits for ever
    for (int i = 0; i < kLines; ++i)
        Log(i);
    alarm(0);
    const auto taken = daemon.Drain();
    ASSERT_GT(taken.size(), 0U);
    ASSERT_LT(taken.size(), kLines);
    for (size_t i = 0; i < taken.size(); ++i)
        EXPECT_EQ(taken[i], Line(static_cast<int>(i)));
    Log(7);
    Log(8);
    EXPECT_THAT(daemon.Drain(),
                ElementsAre(LineAfter(static_cast<unsigned>(kLines - taken.size()), 7), Line(8)));
}

TEST(LogSocket, LinesWithoutADaemonAreCountedForTheFirstOne)
{
    for (int i = 0; i < 3; ++i)
        Log(i);
    const LogDaemon daemon;
    WaitUntilItLooksAgain();
    Log(3);
    EXPECT_THAT(daemon.Drain(), ElementsAre(LineAfter(3, 3)));
}

TEST(LogSocket, ADaemonThatWasStartedAgainIsFoundAtOnce)
{
    LogDaemon daemon;
    Log(1);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(1)));
    daemon.Stop();
    daemon.Start();
    Log(2);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(2)));
}

TEST(LogSocket, LinesBetweenTwoDaemonsAreCounted)
{
    LogDaemon daemon;
    Log(1);
    daemon.Stop();
    Log(2);
    Log(3);
    daemon.Start();
    WaitUntilItLooksAgain();
    Log(4);
    Log(5);
    EXPECT_THAT(daemon.Drain(), ElementsAre(LineAfter(2, 4), Line(5)));
}

TEST(LogSocket, KeepsOneDescriptorThatIsClosedOnExec)
{
    LogDaemon daemon;
    const auto before = OpenSockets();
    for (int restart = 0; restart < 5; ++restart) {
        Log(restart);
        daemon.Stop();
        Log(restart);
        daemon.Start();
        WaitUntilItLooksAgain();
    }
    auto after = OpenSockets();
    ASSERT_EQ(after.size(), before.size() + 1);
    EXPECT_EQ(fcntl(after.back(), F_GETFD), FD_CLOEXEC);
}

// In a child: the streams stay closed.
TEST(LogSocket, IsNeverAStandardStream)
{
    const LogDaemon daemon;
    const pid_t child = fork();
    if (child == 0) {
        for (int fd = 0; fd <= 2; ++fd)
            close(fd);
        Log(1);
        for (int fd = 0; fd <= 2; ++fd)
            if (fcntl(fd, F_GETFD) >= 0)
                _exit(1);
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(1)));
}

TEST(LogSocket, NothingIsWrittenIntoAFileThatTookItsNumber)
{
    const LogDaemon daemon;
    Log(1);
    const int number = OpenSockets().back();
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, pair), 0);
    ASSERT_EQ(dup2(pair[0], number), number);
    Log(2);
    char byte = 0;
    EXPECT_EQ(recv(pair[1], &byte, 1, 0), -1);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(1), Line(2)));
    int type = 0;
    socklen_t size = sizeof(type);
    EXPECT_EQ(getsockopt(number, SOL_SOCKET, SO_TYPE, &type, &size), 0);
    EXPECT_EQ(type, SOCK_STREAM);  // left open
}

TEST(LogSocket, AClosedDescriptorIsReplaced)
{
    const LogDaemon daemon;
    Log(1);
    close(OpenSockets().back());
    Log(2);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(1), Line(2)));
}

TEST(LogSocket, WorksInTheChildOfAFork)
{
    const LogDaemon daemon;
    Log(1);
    const pid_t child = fork();
    if (child == 0) {
        Log(2);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    Log(3);
    EXPECT_THAT(daemon.Drain(), ElementsAre(Line(1), Line(2), Line(3)));
}

// The library itself, in a child that has a /dev of its own.
TEST(LogSocket, TheLibrarysDaemonIsTheLocalOne)
{
    constexpr int kNotAllowed = 77;
    const pid_t child = fork();
    if (child == 0) {
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", "/dev", "tmpfs", 0, nullptr) != 0)
            _exit(kNotAllowed);
        const LogDaemon daemon{{AF_UNIX, "/dev/log"}};
        void* const library = dlopen(OBTEST_PLATFORM, RTLD_NOW);
        const auto log = reinterpret_cast<decltype(&OBPLAT_Log)>(dlsym(library, "OBPLAT_Log"));
        static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_ERROR, 3, OBPLAT_MODULE_PHY, 1};
        log(&site, "SomeStep", 0, "value=%d", 5);
        _exit(daemon.Drain() == std::vector{Line(5)} ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotAllowed)
        GTEST_SKIP() << "no mount namespace";
    EXPECT_EQ(status, 0);
}

// Every line arrives whole or is counted, and the threads share one descriptor.
TEST(LogSocket, ThreadsLoseNoLineUncounted)
{
    constexpr int kThreads = 8;
    constexpr int kLines = 500;
    const LogDaemon daemon;
    const auto before = OpenSockets();
    std::vector<std::thread> threads;
    std::atomic<int> running{kThreads};
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < kLines; ++i)
                Log(i);
            --running;
        });
    std::vector<std::string> taken;
    const auto take = [&] {
        const auto lines = daemon.Drain();
        taken.insert(taken.end(), lines.begin(), lines.end());
    };
    while (running > 0)
        take();
    for (auto& thread : threads)
        thread.join();
    take();
    Log(kLines);
    take();
    const std::regex kForm("(?:\\[([0-9]+) lines lost\\] )?value=([0-9]+)");
    unsigned long accounted = 0;
    for (const auto& line : taken) {
        const std::string text = line.substr(strlen(kMark));
        std::smatch part;
        ASSERT_TRUE(std::regex_match(text, part, kForm)) << line;
        EXPECT_LE(std::stoi(part[2]), kLines) << line;
        accounted += (part[1].matched ? std::stoul(part[1]) : 0) + 1;
    }
    EXPECT_EQ(accounted, kThreads * kLines + 1U);
    EXPECT_EQ(OpenSockets().size(), before.size() + 1);
}

}  // namespace
