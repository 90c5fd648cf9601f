// What others on the machine do to a family: they remove its semaphore set and make a new one, they
// make its region first, they shorten it.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/robustness/child.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

constexpr uid_t kNobody = 65534;

class Neighbours : public testing::TestWithParam<Family> {
protected:
    Neighbours() { InitialiseElsewhere(); }

    // Any call that succeeds on the board.
    static int Call(Family family)
    {
        uint8_t count = 0;
        return family == Family::kSwitch ? ORBLINK_GetNumOfSwitches(&count)
                                         : ETHPHY_GetNumOfPhys(&count);
    }

    static std::string Errors()
    {
        std::string errors;
        for (const std::string& line : Platform().transcript.All())
            if (line.rfind("log1", 0) == 0 || line.rfind("phy1", 0) == 0)
                errors += line + "\n";
        return errors;
    }

    std::string RegionPath() const
    {
        return family == Family::kSwitch ? "/dev/shm/obos_orblink_driver"
                                         : "/dev/shm/ethphy_driver";
    }

    // The call of a process that has still to attach, with what it logs.
    std::string CallOfANewProcess() const
    {
        return InChild([this] {
                   const int result = Call(family);
                   const bool loaded = Platform().transcript.Has("sys dlopen");
                   return std::to_string(result) + (loaded ? " loaded\n" : " not loaded\n") +
                          Errors();
               })
            .text;
    }

    const Family family = GetParam();
};

TEST_P(Neighbours, ANewSetIsFoundByTheCallAfterTheOneThatFails)
{
    ASSERT_EQ(Call(family), 0);
    RemoveLock(family);
    ASSERT_EQ(InChild([this] { return std::to_string(Initialise(family)); }).text, "0");
    Platform().transcript.Clear();
    EXPECT_EQ(Call(family), -1);
    EXPECT_THAT(Errors(), testing::HasSubstr("semop() fail, errno=" + std::to_string(EINVAL)));
    EXPECT_EQ(Call(family), 0);
    EXPECT_EQ(LockValue(family), 1);
}

// As root only: the other user is a real one.
TEST_P(Neighbours, ARegionThatAnotherUserHasMadeIsRefusedToRoot)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root, to be two users";
    ASSERT_EQ(unlink(RegionPath().c_str()), 0);
    const std::string bytes = RegionBytes(family);
    const Ended made = InChild([&, path = RegionPath()] {
        if (setgid(kNobody) != 0 || setuid(kNobody) != 0)
            return std::string("still root");
        const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0666);
        return std::string(write(fd, bytes.data(), bytes.size()) ==
                                   static_cast<ssize_t>(bytes.size())
                               ? "made"
                               : "not made");
    });
    ASSERT_EQ(made.text, "made");
    const std::string said = CallOfANewProcess();
    EXPECT_THAT(said, testing::StartsWith("-1 not loaded\n"));
    EXPECT_THAT(said, testing::HasSubstr(std::to_string(kNobody)));
    EXPECT_EQ(LockValue(family), 1);
}

TEST_P(Neighbours, ARegionThatIsTooShortIsRefused)
{
    ASSERT_EQ(truncate(RegionPath().c_str(), 100), 0);
    EXPECT_THAT(CallOfANewProcess(), testing::StartsWith("-1 not loaded\n"));
    EXPECT_EQ(LockValue(family), 1);
}

// Nothing can be done about it in the library: who may write the region may do so.
TEST_P(Neighbours, ARegionThatShrinksEndsItsCallers)
{
    const Ended ended = InChild([this] {
        Call(family);
        if (truncate(RegionPath().c_str(), 0) == 0)
            Call(family);
        return std::string("lives");
    });
    EXPECT_EQ(ended.signal, SIGBUS);
    EXPECT_EQ(LockValue(family), family == Family::kSwitch ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Family, Neighbours, testing::Values(Family::kSwitch, Family::kPhy),
                         [](const auto& info) {
                             return std::string(info.param == Family::kSwitch ? "Switch" : "Phy");
                         });

}  // namespace
