#include <cerrno>
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

class ConfiguredDevice : public SwitchTest {
protected:
    ConfiguredDevice() { memset(&entry, 0xCC, sizeof(entry)); }

    SwitchBoardEntry entry;
    uint32_t found = 7;
};

TEST_F(ConfiguredDevice, OneHasTheBuiltInEntry)
{
    EXPECT_EQ(OBOS_GetConfiguredDevice(1, &entry, &found), 0);
    EXPECT_EQ(found, 1U);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&entry);
    const auto word = [&](int offset) {
        uint32_t value = 0;
        memcpy(&value, bytes + offset, sizeof(value));
        return value;
    };
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "liborblink_velmar.so");
    EXPECT_EQ(word(32), 1U);
    EXPECT_EQ(word(36), 17U);
    EXPECT_EQ(word(40), 19U);
    EXPECT_EQ(word(44), 4U);
    EXPECT_EQ(bytes[48], 31);
    EXPECT_EQ(bytes[49], 1);
    EXPECT_EQ(word(52), 5U);
    EXPECT_EQ(word(56), 6U);
    EXPECT_TRANSCRIPT();
}

class ConfiguredDeviceOther : public ConfiguredDevice, public testing::WithParamInterface<int> {};

TEST_P(ConfiguredDeviceOther, IsNotFoundAndLeavesTheEntryAlone)
{
    EXPECT_EQ(OBOS_GetConfiguredDevice(GetParam(), &entry, &found), 0);
    EXPECT_EQ(found, 0U);
    EXPECT_EQ(entry.serdesId, 0xCCCCCCCCU);
}

INSTANTIATE_TEST_SUITE_P(Which, ConfiguredDeviceOther, testing::Values(0, 2, 255, -1),
                         [](const auto& info) { return "Index" + std::to_string(info.index); });

TEST_F(ConfiguredDevice, FailsWhenTheNameCannotBeCopied)
{
    platform.Fail("kova_strncpy_s", 0, 1, 34);
    EXPECT_EQ(OBOS_GetConfiguredDevice(1, &entry, &found), -1);
    EXPECT_LOGS(
        "log1 OBOS_GetConfiguredDevice:# ERROR: OBOS_GetConfiguredDevice:#: "
        "Runtime-constraint violation error in function kova_strncpy_s");
    EXPECT_EQ(transcript.Formats().front(),
              "%s:%d ERROR: %s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    EXPECT_EQ(found, 7U);
    EXPECT_EQ(entry.serdesId, 0xCCCCCCCCU);
}

TEST_F(ConfiguredDevice, RefusesNullPointers)
{
    EXPECT_EQ(OBOS_GetConfiguredDevice(1, nullptr, &found), -1);
    EXPECT_EQ(OBOS_GetConfiguredDevice(1, &entry, nullptr), -1);
    EXPECT_EQ(OBOS_GetConfiguredDevice(0, nullptr, nullptr), -1);
    EXPECT_EQ(transcript.Log().size(), 3U);
    EXPECT_EQ(OBOS_GetConfiguredDevice(0, nullptr, &found), 0);
}

}  // namespace
