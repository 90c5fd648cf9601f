#include "common/descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

using namespace orblink;

namespace {

bool IsOpen(int fd)
{
    return fcntl(fd, F_GETFD) != -1;
}

int OpenNull()
{
    return open("/dev/null", O_RDWR);
}

// Frees a standard stream's number for the length of a test.
class WithoutStandardStream {
public:
    explicit WithoutStandardStream(int number) : number_(number), kept_(fcntl(number, F_DUPFD, 100))
    {
        close(number);
    }
    ~WithoutStandardStream()
    {
        dup2(kept_, number_);
        close(kept_);
    }

private:
    int number_;
    int kept_;
};

class KeptDescriptorOn : public testing::TestWithParam<int> {};

TEST_P(KeptDescriptorOn, AStandardStreamsNumberIsMovedAndClosed)
{
    const int number = GetParam();
    int moved = -1;
    bool oldIsOpen = true;
    {
        const WithoutStandardStream freed{number};
        const int opened = OpenNull();
        ASSERT_EQ(opened, number);
        moved = KeepDescriptor(opened);
        oldIsOpen = IsOpen(number);
    }
    const Descriptor owned{moved};
    EXPECT_GE(moved, 3);
    EXPECT_FALSE(oldIsOpen);
    EXPECT_EQ(fcntl(moved, F_GETFD), FD_CLOEXEC);
    struct stat here = {};
    struct stat null = {};
    ASSERT_EQ(fstat(moved, &here), 0);
    ASSERT_EQ(stat("/dev/null", &null), 0);
    EXPECT_EQ(here.st_rdev, null.st_rdev);
}

INSTANTIATE_TEST_SUITE_P(Each, KeptDescriptorOn, testing::Values(0, 1, 2));

TEST(KeptDescriptor, BeyondTheStandardStreamsStaysWhereItIs)
{
    const Descriptor opened{OpenNull()};
    ASSERT_GE(opened.Get(), 3);
    EXPECT_EQ(KeepDescriptor(opened.Get()), opened.Get());
    EXPECT_EQ(fcntl(opened.Get(), F_GETFD), FD_CLOEXEC);
}

TEST(KeptDescriptor, ThatIsNoneStaysNoneAndKeepsErrno)
{
    errno = EMFILE;
    EXPECT_EQ(KeepDescriptor(-1), -1);
    EXPECT_EQ(errno, EMFILE);
}

TEST(Descriptor, ClosesAtTheEndOfItsScopeUnlessReleased)
{
    const int first = OpenNull();
    const int second = OpenNull();
    {
        const Descriptor closed{first};
        Descriptor kept{second};
        EXPECT_TRUE(kept);
        EXPECT_EQ(kept.Release(), second);
        EXPECT_FALSE(kept);
    }
    EXPECT_FALSE(IsOpen(first));
    EXPECT_TRUE(IsOpen(second));
    close(second);
}

}  // namespace
