// A slot or callback that throws ends the program, and does not leave a call with the lock held.
#include <csignal>
#include <stdexcept>

#include "tests/robustness/child.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

int Throw(const SlotArgs&)
{
    throw std::runtime_error("from a slot");
}

Ended CallThatThrows(const std::function<int()>& call)
{
    return InChild([&call]() -> std::string {
        signal(SIGABRT, SIG_DFL);
        try {
            return std::to_string(call());
        } catch (const std::exception&) {
            return "the exception passed through the library";
        }
    });
}

class ThrowingSlot : public testing::Test {
protected:
    void SetUp() override
    {
        if (OBTEST_UNWINDS)
            GTEST_SKIP() << "a library that measures itself has unwind tables";
        InitialiseElsewhere();
    }
};

TEST_F(ThrowingSlot, EndsTheProgramAndGivesTheSwitchLockBack)
{
    Platform().slots["SetLanPortPcp"] = Throw;
    const Ended ended = CallThatThrows([] { return ORBLINK_SetLanPortPcp(0, 1, 5); });
    EXPECT_EQ(ended.signal, SIGABRT) << ended.text;
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 1, 7), 0);
}

TEST_F(ThrowingSlot, OfAPhyEndsTheProgram)
{
    Platform().slots["GetLink"] = Throw;
    const Ended ended = CallThatThrows([] {
        uint32_t link = 0;
        return ETHPHY_GetLink(0, &link, &link, &link);
    });
    EXPECT_EQ(ended.signal, SIGABRT) << ended.text;
}

}  // namespace
