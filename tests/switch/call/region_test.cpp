// The region services by themselves; they take no semaphore.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

class SwitchRegion : public SwitchTest {};

TEST_F(SwitchRegion, IsCreatedWithItsExactSize)
{
    EXPECT_EQ(OBOS_CreateSwitchDevices(), 0);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR|O_CREAT, 666)",
                      "sys ftruncate(5740)", "sys close()");
    struct stat file = {};
    ASSERT_EQ(stat("/dev/shm/obos_orblink_driver", &file), 0);
    EXPECT_EQ(file.st_size, 5740);
}

TEST_F(SwitchRegion, ThatExistsIsReusedAsItIs)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    memset(&Region(), 0x42, sizeof(SwitchDeviceRegion));
    EXPECT_EQ(OBOS_CreateSwitchDevices(), 0);
    EXPECT_EQ(Region().unused[2], 0x42);
    EXPECT_EQ(Region().device[0].capsValid, 0x42);
}

TEST_F(SwitchRegion, FailsToBeCreatedWithoutShmOpen)
{
    platform.Fail("shm_open", EMFILE);
    EXPECT_EQ(OBOS_CreateSwitchDevices(), -1);
    EXPECT_TRANSCRIPT(
        "sys shm_open(/obos_orblink_driver, O_RDWR|O_CREAT, 666)",
        "log1 OBOS_CreateSwitchDevices:# shm_open() failed, errno=" + std::to_string(EMFILE));
}

TEST_F(SwitchRegion, FailsToBeCreatedWithoutFtruncateAndClosesFirst)
{
    platform.Fail("ftruncate", ENOSPC);
    platform.Fail("close", EIO);  // must not replace the error that is reported
    EXPECT_EQ(OBOS_CreateSwitchDevices(), -1);
    EXPECT_TRANSCRIPT(
        "sys shm_open(/obos_orblink_driver, O_RDWR|O_CREAT, 666)", "sys ftruncate(5740)",
        "sys close()",
        "log1 OBOS_CreateSwitchDevices:# ftruncate() failed, errno=" + std::to_string(ENOSPC));
}

TEST_F(SwitchRegion, IsMappedSharedAndItsDescriptorKeptOpen)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    transcript.Clear();
    auto* region = static_cast<uint8_t*>(OBOS_MapSwitchDevices());
    ASSERT_NE(region, nullptr);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys mmap(5740, 3, 1)");
    region[5739] = 0x77;
    EXPECT_EQ(Region().unused[2], 0x77);
}

TEST_F(SwitchRegion, ThatDoesNotExistCannotBeMapped)
{
    EXPECT_EQ(OBOS_MapSwitchDevices(), nullptr);
    EXPECT_LOGS("log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# shm_open() failed, errno=" +
                std::to_string(ENOENT));
    EXPECT_EQ(transcript.Formats().front(), "%s:%d %s:%d shm_open() failed, errno=%d");
}

TEST_F(SwitchRegion, FailsToBeMappedWithoutMmapAndClosesFirst)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    transcript.Clear();
    platform.Fail("mmap", EAGAIN);
    platform.Fail("close", EIO);
    EXPECT_EQ(OBOS_MapSwitchDevices(), nullptr);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys mmap(5740, 3, 1)",
                      "sys close()",
                      "log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# mmap() failed, errno=" +
                          std::to_string(EAGAIN));
    EXPECT_EQ(transcript.Formats().front(), "%s:%d %s:%d mmap() failed, errno=%d");
}

TEST_F(SwitchRegion, ThatIsTooShortIsNotMapped)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    ASSERT_EQ(truncate("/dev/shm/obos_orblink_driver", 5739), 0);
    transcript.Clear();
    EXPECT_EQ(OBOS_MapSwitchDevices(), nullptr);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys close()",
                      "log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# the region "
                      "/obos_orblink_driver is shorter than 5740 bytes");
}

TEST_F(SwitchRegion, OfSomebodyElseIsNotMappedByRoot)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    if (geteuid() != 0 || chown("/dev/shm/obos_orblink_driver", 12345, 12345) != 0)
        GTEST_SKIP() << "needs root, and a user to give the region to";
    transcript.Clear();
    EXPECT_EQ(OBOS_MapSwitchDevices(), nullptr);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys close()",
                      "log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# the region "
                      "/obos_orblink_driver is owned by user 12345 and not by root");
}

TEST_F(SwitchRegion, NeverStandsOnAStandardStream)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    transcript.Clear();
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD, 100);
    close(STDOUT_FILENO);
    auto* const region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    const bool taken = fcntl(STDOUT_FILENO, F_GETFD) != -1;
    dup2(kept, STDOUT_FILENO);
    close(kept);
    ASSERT_NE(region, nullptr);
    EXPECT_FALSE(taken);
    EXPECT_TRANSCRIPT("sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys close()",
                      "sys mmap(5740, 3, 1)");
}

TEST_F(SwitchRegion, ThatIsLongerIsMapped)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    ASSERT_EQ(truncate("/dev/shm/obos_orblink_driver", 8192), 0);
    EXPECT_NE(OBOS_MapSwitchDevices(), nullptr);
}

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
        uint32_t value;
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
