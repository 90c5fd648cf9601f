#include "tools/orblinkctl/access/diagnosis.h"

#include <gmock/gmock.h>

#include <ctime>

namespace ctl {
namespace {

using testing::HasSubstr;

constexpr pid_t kTaker = 4711;

// A lock that kTaker took at 1000.
LockState Taken()
{
    LockState lock;
    lock.id = 1;
    lock.value = 0;
    lock.lastOperator = kTaker;
    lock.lastOperation = 1000;
    lock.created = 500;
    return lock;
}

Process StartedAt(int64_t seconds)
{
    return {kTaker, "taker", seconds};
}

Diagnosis With(const LockState& lock, const std::optional<Process>& lastOperator)
{
    Diagnosis found;
    found.state.family = Family::kPhy;
    found.state.lock = lock;
    found.lastOperator = lastOperator;
    found.holder = JudgeHolder(lock, lastOperator);
    return found;
}

TEST(Holder, OfAFreeLockIsNobody)
{
    LockState lock = Taken();
    lock.value = 1;
    EXPECT_EQ(JudgeHolder(lock, StartedAt(900)), Holder::kNone);
}

TEST(Holder, IsTheLastOperatorWhileItLives)
{
    EXPECT_EQ(JudgeHolder(Taken(), StartedAt(900)), Holder::kAlive);
    EXPECT_EQ(JudgeHolder(Taken(), std::nullopt), Holder::kEnded);
}

// Clocks of a start and of an operation are not the same, so a close call counts as the holder.
TEST(Holder, IsUnknownWhenTheProcessStartedAfterTheLastOperation)
{
    EXPECT_EQ(JudgeHolder(Taken(), StartedAt(1002)), Holder::kAlive);
    EXPECT_EQ(JudgeHolder(Taken(), StartedAt(1003)), Holder::kUnknown);
}

TEST(Holder, IsUnknownForProcessZeroAndForALockThatNobodyUsed)
{
    LockState lock = Taken();
    lock.lastOperator = 0;
    EXPECT_EQ(JudgeHolder(lock, std::nullopt), Holder::kUnknown);
    lock = Taken();
    lock.lastOperation = 0;
    EXPECT_EQ(JudgeHolder(lock, std::nullopt), Holder::kUnknown);
}

TEST(Objection, ALivingHolderIsNeverOverruled)
{
    const auto objection = ObjectionTo(With(Taken(), StartedAt(900)));
    ASSERT_TRUE(objection);
    EXPECT_EQ(objection->text, "process 4711 (taker) holds the lock and lives");
    EXPECT_FALSE(objection->overruled);
}

TEST(Objection, NoneWhenTheHolderHasEnded)
{
    Diagnosis found = With(Taken(), std::nullopt);
    found.users.processes.push_back({12, "attached", 1});
    EXPECT_FALSE(ObjectionTo(found));
}

TEST(Objection, AnyUserOfTheRegionMayBeAnUnknownHolder)
{
    Diagnosis found = With(Taken(), StartedAt(2000));
    EXPECT_FALSE(ObjectionTo(found));
    found.users.hidden = 2;
    auto objection = ObjectionTo(found);
    ASSERT_TRUE(objection);
    EXPECT_THAT(objection->text, HasSubstr("2 processes that only root may look into"));
    EXPECT_TRUE(objection->overruled);
    found.users.processes.push_back({12, "attached", 1});
    objection = ObjectionTo(found);
    ASSERT_TRUE(objection);
    EXPECT_EQ(objection->text, "process 12 (attached) uses the region and may hold the lock");
    EXPECT_TRUE(objection->overruled);
}

TEST(Objection, AProcessOfAnotherPidNamespaceMayHoldTheLock)
{
    LockState lock = Taken();
    lock.lastOperator = 0;
    const auto objection = ObjectionTo(With(lock, std::nullopt));
    ASSERT_TRUE(objection);
    EXPECT_THAT(objection->text, HasSubstr("in another PID namespace"));
    EXPECT_TRUE(objection->overruled);
}

TEST(Objection, AnInitialisationThatBeganAMomentAgo)
{
    LockState lock = Taken();
    lock.lastOperation = 0;
    lock.created = std::time(nullptr);
    EXPECT_TRUE(ObjectionTo(With(lock, std::nullopt)));
    lock.created -= 5;
    EXPECT_FALSE(ObjectionTo(With(lock, std::nullopt)));
}

TEST(ProcessText, ShowsNoControlCharacters)
{
    EXPECT_EQ(ProcessText({1, "a\033[2Jb", 0}), "process 1 (a\\x1b[2Jb)");
}

}  // namespace
}  // namespace ctl
