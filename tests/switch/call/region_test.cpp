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

}  // namespace
