#include <sys/resource.h>

#include <cerrno>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

const char* const kOpened =
    "sys fopen(/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state, r)";

struct State {
    const char* name;
    const char* text;
    int expected;
};

class BatteryMode : public SwitchTest, public testing::WithParamInterface<State> {};

TEST_P(BatteryMode, IsTheIntegerOfTheSystemState)
{
    platform.systemState = GetParam().text;
    EXPECT_EQ(ORBLINK_isBatteryMode(), GetParam().expected);
    EXPECT_TRANSCRIPT(kOpened);
}

INSTANTIATE_TEST_SUITE_P(Text, BatteryMode,
                         testing::ValuesIn(std::vector<State>{{"Zero", "0\n", 0},
                                                              {"One", "1\n", 1},
                                                              {"NoNewline", "1", 1},
                                                              {"Large", "17\n", 17},
                                                              {"Negative", "-3\n", -3},
                                                              {"LeadingBlanks", "  5 rest", 5},
                                                              {"Empty", "", 0},
                                                              {"NoNumber", "battery\n", 0},
                                                              {"NumberBehindText", "x1", 0},
                                                              {"NotHexadecimal", "0x10", 0}}),
                         [](const auto& info) { return info.param.name; });

class BatteryAttribute : public SwitchTest {};

TEST_F(BatteryAttribute, ThatIsMissingMeansNoBatteryMode)
{
    EXPECT_EQ(ORBLINK_isBatteryMode(), 0);
    EXPECT_TRANSCRIPT(kOpened);
}

TEST_F(BatteryAttribute, ThatCannotBeOpenedMeansNoBatteryMode)
{
    platform.systemState = "1";
    platform.Fail("fopen", EACCES);
    EXPECT_EQ(ORBLINK_isBatteryMode(), 0);
}

TEST_F(BatteryAttribute, IsReadWithoutTheLockAndBeforeInitialisation)
{
    platform.systemState = "1";
    EXPECT_EQ(ORBLINK_isBatteryMode(), 1);
    EXPECT_EQ(SemaphoreValue(), -1);
}

TEST_F(BatteryAttribute, IsClosedAfterEachRead)
{
    const rlimit few = {.rlim_cur = 100, .rlim_max = 100};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    platform.systemState = "1";
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(ORBLINK_isBatteryMode(), 1) << i;
}

}  // namespace
