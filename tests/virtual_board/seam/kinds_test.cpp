// Programs of every kind, of both ABIs, find the same board: each fills in the same table of what
// the kernel's interface promises.

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

std::string Promised()
{
    std::ifstream file{ORBLINK_KINDS "/promised.txt"};
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// For an interface that is not the board's the machine's kernel answers, which asks for
// CAP_NET_ADMIN before it looks for the interface.
std::string ToldWithoutRights(std::string promised)
{
    constexpr std::string_view kRow = "MII read of an interface that there is not: ";
    const size_t answer = promised.find(kRow) + kRow.size();
    return promised.replace(answer, std::string_view("ENODEV").size(), "EPERM");
}

class Kinds : public testing::TestWithParam<const char*> {};

TEST_P(Kinds, FillInTheTable)
{
    const std::string probe = std::string(ORBLINK_PROBES "/probe_") + GetParam();
    if (!std::filesystem::exists(probe))
        GTEST_SKIP() << "this machine has no compiler for programs of this kind";
    const auto outcome = OnBoard("two_switches.toml", "sleep 0.3; " + probe);
    EXPECT_EQ(outcome.status, 0);
    const std::string promised = Promised();
    ASSERT_GT(promised.size(), 2000U);
    if (geteuid() == 0)
        EXPECT_EQ(Printed(outcome), promised);
    else
        EXPECT_THAT(Printed(outcome), testing::AnyOf(promised, ToldWithoutRights(promised)));
}

INSTANTIATE_TEST_SUITE_P(All, Kinds,
                         testing::Values("x86_64", "i386", "x86_64_static", "i386_static",
                                         "x86_64_fortified", "i386_time64", "musl", "musl_static"),
                         [](const auto& test) { return std::string(test.param); });

// Sleeps on scaled time, by every call that sleeps relatively.
class KindsOfSleep : public testing::TestWithParam<const char*> {};

TEST_P(KindsOfSleep, FollowTheTimeScale)
{
    const std::string probe = std::string(ORBLINK_PROBES "/probe_") + GetParam();
    if (!std::filesystem::exists(probe))
        GTEST_SKIP() << "this machine has no compiler for programs of this kind";
    const auto fast = OnBoard("no_devices.toml", probe + " sleep 20", "--time-scale 0.001");
    EXPECT_EQ(Printed(fast), "nanosleep: short\nclock_nanosleep: short\nuntil a time: long\n");
    const auto slow = OnBoard("no_devices.toml", probe + " sleep 0", "--time-scale 5");
    EXPECT_EQ(Printed(slow), "nanosleep: long\nclock_nanosleep: long\nuntil a time: long\n");
}

INSTANTIATE_TEST_SUITE_P(All, KindsOfSleep,
                         testing::Values("x86_64", "i386", "i386_time64", "musl_static"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace vboard_test
