// The built libraries from outside.
#include <array>
#include <cstdio>
#include <set>
#include <sstream>

#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

std::string OutputOf(const std::string& command)
{
    std::string output;
    std::array<char, 256> buffer{};
    FILE* pipe = popen(command.c_str(), "r");
    while (fgets(buffer.data(), buffer.size(), pipe) != nullptr)
        output += buffer.data();
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

class HalLibrary : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Names, HalLibrary, testing::Values(kGeneralHal, kDefaultHal),
                         [](const auto& name) { return name.index == 0 ? "General" : "Default"; });

TEST_P(HalLibrary, ExportsItsTableAndNothingElse)
{
    std::istringstream symbols{OutputOf(std::string{"nm -D --defined-only "} + GetParam())};
    std::string address, type, name;
    ASSERT_TRUE(symbols >> address >> type >> name);
    EXPECT_EQ(name, "ETHPHY_HalFuncs");
    EXPECT_FALSE(symbols >> address) << address;
}

TEST_P(HalLibrary, NeedsNoRuntimeOfCpp)
{
    std::string dynamic = OutputOf(std::string{"readelf -dW "} + GetParam());
    EXPECT_NE(dynamic.find("[liborblink.so.0]"), std::string::npos);
    EXPECT_NE(dynamic.find("[libc.so.6]"), std::string::npos);
#ifndef ORBLINK_INSTRUMENTED
    for (const char* library : {"libstdc++", "libgcc_s", "libm."})
        EXPECT_EQ(dynamic.find(library), std::string::npos) << library;
#endif
}

TEST_P(HalLibrary, HasEverySlotButTheReservedOne)
{
    const auto& hal = LoadHal(GetParam());
    EXPECT_EQ(hal.Reserved, nullptr);
    const auto* slots = reinterpret_cast<void* const*>(&hal);
    for (size_t i = 0; i < sizeof hal / sizeof *slots; ++i)
        EXPECT_EQ(slots[i] == nullptr, i == 6) << i;
}

}  // namespace
}  // namespace vboard
