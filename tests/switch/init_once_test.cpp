#include <cerrno>

#include "tests/support/switch_fixture.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

class InitOnce : public SwitchTest {};

TEST_F(InitOnce, CreatesTheSemaphoreFreeAndWithoutUndo)
{
    platform.mailbox.push_back(SwitchBoard::With({{}}).Message());
    ASSERT_EQ(ORBLINK_InitOnce(1), 0);
    const auto calls = transcript.Only({"sys"});
    const Lines creation(calls.begin(), calls.begin() + 6);
    EXPECT_THAT(creation,
                ElementsAre("sys open(/var/tmp/orblink_sem, O_RDWR|O_CREAT, 600)", "sys close()",
                            "sys ftok(/var/tmp/orblink_sem, 97)", "sys semget(1, 0x7FF)",
                            "sys semop(0, +1, 0)", "sys semop(0, -1, UNDO)"));
    EXPECT_EQ(calls.back(), "sys semop(0, +1, UNDO)");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(InitOnce, ASecondOneFailsAndLeavesTheRegionUntouched)
{
    Init();
    Record(0).config.mtuSize = 1234;
    EXPECT_EQ(ORBLINK_InitOnce(1), -1);
    EXPECT_LOGS("log1 _CreateGlobalSem:# semget() failed, cannot create sem, errno=" +
                    std::to_string(EEXIST),
                "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed");
    EXPECT_EQ(Record(0).config.mtuSize, 1234);
}

}  // namespace
