// Who owns the region, where its descriptor is, and what becomes of a cancelled thread.
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

using PhyHostileRegion = PhyTest;

void* PollOnce(void*)
{
    ETHPHY_Poll(0);
    return nullptr;
}

std::atomic<bool> inSlot;

}  // namespace

TEST_F(PhyHostileRegion, ARegionOfAnotherUserIsRefusedByRoot)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make one";
    ASSERT_EQ(EP_CreatePhyDevices(), 0);
    ASSERT_EQ(chown("/dev/shm/ethphy_driver", 65534, 65534), 0);
    transcript.Clear();
    EXPECT_EQ(EP_MapEthphyDevices(), nullptr);
    EXPECT_STEPS("sys shm_open(/ethphy_driver, O_RDWR, 666)", "sys close()",
                 "phy1 EP_MapEthphyDevices:# the region /ethphy_driver is owned by user 65534 and "
                 "not by root");
}

TEST_F(PhyHostileRegion, ItsDescriptorAndTheSocketsKeepOffTheStandardStreams)
{
    int kept[3];
    for (int fd = 0; fd <= 2; ++fd) {
        kept[fd] = fcntl(fd, F_DUPFD, 3);
        close(fd);
    }
    Init();
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_ReadMdio(0, 1, &value), 0);
    const bool free[] = {fcntl(0, F_GETFD) == -1, fcntl(1, F_GETFD) == -1, fcntl(2, F_GETFD) == -1};
    for (int fd = 0; fd <= 2; ++fd) {
        dup2(kept[fd], fd);
        close(kept[fd]);
    }
    EXPECT_TRUE(free[0] && free[1] && free[2]);
}

TEST_F(PhyHostileRegion, ACancelledThreadReleasesTheLockFirst)
{
    InitEnabled();
    platform.slots["Poll"] = [](const SlotArgs&) {
        inSlot = true;
        usleep(100'000);  // where a thread would be cancelled
        return 0;
    };
    pthread_t thread = 0;
    ASSERT_EQ(pthread_create(&thread, nullptr, PollOnce, nullptr), 0);
    while (!inSlot)
        usleep(1000);
    EXPECT_EQ(pthread_cancel(thread), 0);
    pthread_join(thread, nullptr);
    EXPECT_EQ(PhySemaphoreValue(), 1);
    EXPECT_EQ(transcript.All().back(), kUnlock);
}
