#include <cstring>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

class BoardMacAddresses : public SwitchTest {
protected:
    uint8_t mac[5][6] = {};

    int Read() { return ORBLINK_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], mac[4]); }
};

TEST_F(BoardMacAddresses, AreTheFiveOfTheBoardDataWithoutTakingTheLock)
{
    Init();
    EXPECT_EQ(Read(), 0);
    const SwitchBoard board;
    EXPECT_EQ(memcmp(mac, board.macs, sizeof(mac)), 0);
    EXPECT_TRANSCRIPT("log3 OBOS_GetMacAddresses:# Read MAC addresses.");
}

TEST_F(BoardMacAddresses, AreKnownToTheInitialisingProcessOnly)
{
    InitElsewhere();
    EXPECT_EQ(Read(), -1);
    EXPECT_LOGS("log3 OBOS_GetMacAddresses:# Read MAC addresses.",
                "log1 OBOS_GetMacAddresses:# MAC addresses are not initialized!");
}

TEST_F(BoardMacAddresses, GiveTheResultOfTheLastCopyOnly)
{
    Init();
    EXPECT_EQ(ORBLINK_GetMacAddresses(nullptr, nullptr, nullptr, nullptr, mac[4]), 0);
    EXPECT_NE(ORBLINK_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], nullptr), 0);
}

}  // namespace
