#include "virtual_board/board/poller.h"

#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <utility>
#include <vector>

namespace vboard {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr Poller::Limit kAtOnce{0};
constexpr std::chrono::milliseconds kMoment{20};

class PollerTest : public testing::Test {
protected:
    static void MakeReady(const UniqueFd& event)
    {
        const uint64_t one = 1;
        ASSERT_EQ(write(event.Get(), &one, sizeof one), ssize_t{sizeof one});
    }
    std::vector<std::pair<uint32_t, uint32_t>> ReadyNow(Poller::Limit limit = kAtOnce)
    {
        std::vector<std::pair<uint32_t, uint32_t>> found;
        for (const auto& [mark, events] : poller.Wait(limit))
            if (events == EPOLLIN)
                found.emplace_back(mark.kind, mark.number);
        return found;
    }
    template <typename Waiting>
    static bool TakesAMoment(Waiting wait)
    {
        const auto start = std::chrono::steady_clock::now();
        wait();
        return std::chrono::steady_clock::now() - start >= kMoment;
    }

    UniqueFd first{eventfd(0, EFD_CLOEXEC)};
    UniqueFd second{eventfd(0, EFD_CLOEXEC)};
    Poller poller;
};

TEST_F(PollerTest, LooksEagerlyAtFirstAndWaitsForTheRestOfTheTime)
{
    poller.Watch(first.Get(), {7, 1});
    EXPECT_TRUE(TakesAMoment([&] { EXPECT_THAT(poller.Wait(kMoment, kMoment / 2), IsEmpty()); }));
    EXPECT_TRUE(TakesAMoment([&] { EXPECT_THAT(poller.Wait(kMoment, kMoment * 2), IsEmpty()); }));
    EXPECT_TRUE(
        TakesAMoment([&] { EXPECT_THAT(poller.Wait(kMoment, std::chrono::hours{1}), IsEmpty()); }));
    MakeReady(first);
    EXPECT_THAT(poller.Wait(std::nullopt, std::chrono::hours{1}), SizeIs(1));
    EXPECT_THAT(poller.Wait(std::chrono::hours{2}, std::chrono::hours{1}), SizeIs(1));
    EXPECT_THAT(poller.Wait(std::chrono::hours{1}, std::chrono::hours{2}), SizeIs(1));
}

TEST_F(PollerTest, TellsWhatIsReadyByItsMark)
{
    poller.Watch(first.Get(), {7, 0xFFFFFFFF});
    poller.Watch(second.Get(), {8, 1});
    EXPECT_THAT(ReadyNow(), IsEmpty());
    MakeReady(second);
    EXPECT_THAT(ReadyNow(std::nullopt), ElementsAre(Pair(8, 1)));
    MakeReady(first);
    EXPECT_THAT(ReadyNow(), UnorderedElementsAre(Pair(7, 0xFFFFFFFF), Pair(8, 1)));
    poller.Forget(second.Get());
    EXPECT_THAT(ReadyNow(), ElementsAre(Pair(7, 0xFFFFFFFF)));
}

TEST_F(PollerTest, WaitsNoLongerThanItsLimit)
{
    poller.Watch(first.Get(), {1, 1});
    EXPECT_TRUE(TakesAMoment([&] { EXPECT_THAT(ReadyNow(kMoment), IsEmpty()); }));
}

TEST_F(PollerTest, TakesNoteOfOtherEvents)
{
    MakeReady(first);
    poller.Watch(first.Get(), {1, 1});
    poller.WatchFor(first.Get(), {1, 2}, EPOLLOUT);
    const auto ready = poller.Wait(kAtOnce);
    ASSERT_EQ(ready.size(), 1U);
    EXPECT_EQ(ready[0].events, uint32_t{EPOLLOUT});
    EXPECT_EQ(ready[0].mark.number, 2U);
}

TEST_F(PollerTest, ReturnsFromWaitingAtOneForAnyOther)
{
    poller.Watch(first.Get(), {1, 1});
    EXPECT_TRUE(TakesAMoment([&] { EXPECT_FALSE(poller.WaitAt(second.Get(), kMoment)); }));
    MakeReady(first);
    EXPECT_FALSE(poller.WaitAt(second.Get(), std::nullopt));
    MakeReady(second);
    EXPECT_TRUE(poller.WaitAt(second.Get(), std::nullopt));
}

TEST_F(PollerTest, WhatCannotBeWaitedForIsAnError)
{
    EXPECT_THROW(poller.Watch(-1, {1, 1}), std::system_error);
}

// Kernels before 5.11 have no epoll_pwait2.
void WithoutLimitsOfNanoseconds()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_epoll_pwait2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(filter), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) != 0)
        _exit(EXIT_FAILURE);
    errno = 0;
    if (syscall(SYS_epoll_pwait2, -1, nullptr, 0, nullptr, nullptr) != -1 || errno != ENOSYS)
        _exit(EXIT_FAILURE);
}

TEST_F(PollerTest, DoesTheSameOnAnOlderKernel)
{
    using Marks = std::vector<std::pair<uint32_t, uint32_t>>;
    poller.Watch(first.Get(), {7, 9});
    const auto wait = [&] {
        WithoutLimitsOfNanoseconds();
        bool right = TakesAMoment([&] { poller.Wait(kMoment); });
        right = right && poller.Wait(kAtOnce).empty();
        MakeReady(first);
        right = right && ReadyNow(std::nullopt) == Marks{{7, 9}};
        _exit(right ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(wait(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

}  // namespace
}  // namespace vboard
