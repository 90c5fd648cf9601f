#include "common/shared_object.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>

using namespace orblink;

namespace {

constexpr size_t kSize = 1000;
constexpr uid_t kSomebody = 12345;

class SharedObjects : public testing::Test {
protected:
    ~SharedObjects() override { shm_unlink(Name()); }

    const char* Name() const { return name_.c_str(); }

    void Create(off_t size = kSize)
    {
        ASSERT_EQ(CreateSharedObject(Name(), kSize).failed, CreateStep::kDone);
        const std::string path = "/dev/shm" + name_;
        ASSERT_EQ(truncate(path.c_str(), size), 0);
    }

    void GiveTo(uid_t owner)
    {
        const std::string path = "/dev/shm" + name_;
        ASSERT_EQ(chown(path.c_str(), owner, static_cast<gid_t>(-1)), 0);
    }

private:
    std::string name_ = "/orblink_common_test_" + std::to_string(getpid());
};

TEST_F(SharedObjects, AreCreatedWithTheirSizeAndMapped)
{
    Create();
    const SharedMapping mapping = MapSharedObject(Name(), kSize);
    ASSERT_EQ(mapping.failed, MapStep::kDone);
    static_cast<char*>(mapping.address)[kSize - 1] = 'x';
    const SharedMapping again = MapSharedObject(Name(), kSize);
    ASSERT_EQ(again.failed, MapStep::kDone);
    EXPECT_EQ(static_cast<char*>(again.address)[kSize - 1], 'x');
}

TEST_F(SharedObjects, ThatDoNotExistFailToOpen)
{
    const SharedMapping mapping = MapSharedObject(Name(), kSize);
    EXPECT_EQ(mapping.failed, MapStep::kShmOpen);
    EXPECT_EQ(mapping.error, ENOENT);
    EXPECT_EQ(mapping.address, nullptr);
}

TEST_F(SharedObjects, OneByteTooShortAreRefused)
{
    Create(kSize - 1);
    EXPECT_EQ(MapSharedObject(Name(), kSize).failed, MapStep::kSize);
}

TEST_F(SharedObjects, LongerThanNeededAreMapped)
{
    Create(kSize + 1);
    EXPECT_EQ(MapSharedObject(Name(), kSize).failed, MapStep::kDone);
}

TEST_F(SharedObjects, OfSomebodyElseAreRefusedByRoot)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    Create();
    GiveTo(kSomebody);
    const SharedMapping mapping = MapSharedObject(Name(), kSize);
    EXPECT_EQ(mapping.failed, MapStep::kOwner);
    EXPECT_EQ(mapping.owner, kSomebody);
    EXPECT_EQ(mapping.address, nullptr);
}

TEST_F(SharedObjects, OfRootAreMappedByAnybody)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const mode_t before = umask(0);
    Create();
    umask(before);
    ASSERT_EQ(seteuid(kSomebody), 0);
    const MapStep failed = MapSharedObject(Name(), kSize).failed;
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(failed, MapStep::kDone);
}

TEST_F(SharedObjects, NeverLeaveADescriptorOnAStandardStream)
{
    Create();
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD, 100);
    close(STDOUT_FILENO);
    const SharedMapping mapping = MapSharedObject(Name(), kSize);
    const bool taken = fcntl(STDOUT_FILENO, F_GETFD) != -1;
    dup2(kept, STDOUT_FILENO);
    close(kept);
    EXPECT_EQ(mapping.failed, MapStep::kDone);
    EXPECT_FALSE(taken);
}

}  // namespace
