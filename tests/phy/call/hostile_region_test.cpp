// What others do to the region, to the process's descriptors and to its threads.
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

class PhyHostileRegion : public PhyTest {
protected:
    // Writes one of two values into a byte of the region for as long as the test lives.
    class Flipper {
    public:
        Flipper(uint8_t& byte, uint8_t first, uint8_t second)
            : thread_([this, &byte, first, second] {
                  while (!ended_) {
                      __atomic_store_n(&byte, first, __ATOMIC_RELAXED);
                      __atomic_store_n(&byte, second, __ATOMIC_RELAXED);
                  }
              })
        {
        }
        ~Flipper()
        {
            ended_ = true;
            thread_.join();
        }

    private:
        std::atomic<bool> ended_ = false;
        std::thread thread_;
    };
};

void* PollOnce(void*)
{
    ETHPHY_Poll(0);
    return nullptr;
}

std::atomic<bool> inSlot;

}  // namespace

TEST_F(PhyHostileRegion, ACountThatChangesIsReadOnce)
{
    Init();
    const Flipper flipper{PhyRegion().NumOfPhys, 1, 200};
    for (int i = 0; i < 20'000; ++i) {
        uint8_t count = 0;
        const int result = ETHPHY_GetNumOfPhys(&count);
        ASSERT_EQ(count, result == 0 ? 1 : 0);
        if (i % 1000 == 0)
            transcript.Clear();
    }
}

TEST_F(PhyHostileRegion, InitialisationTrustsTheBoardDataAndNotTheRegion)
{
    Init();
    const Flipper flipper{PhyRegion().NumOfPhys, 1, 255};
    for (int i = 0; i < 300; ++i) {
        RemovePhySemaphore();
        platform.mailbox.push_back(PhyBoard{{{}}}.Message());
        ASSERT_EQ(ETHPHY_InitOnce(), 0);
        ASSERT_EQ(Record(1).halIdx, EP_NO_HAL_INDEX);
        transcript.Clear();
    }
}

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
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, PollOnce, nullptr), 0);
    while (!inSlot)
        usleep(1000);
    EXPECT_EQ(pthread_cancel(thread), 0);
    pthread_join(thread, nullptr);
    EXPECT_EQ(PhySemaphoreValue(), 1);
    EXPECT_EQ(transcript.All().back(), kUnlock);
}
