#include <cstring>

#include "tests/board/board_fixture.h"

namespace obtest {
namespace {

using testing::ElementsAre;

const std::string kRead = "log3 OBOS_GetMacAddresses:# Read MAC addresses.";
const std::string kMissing = "log1 OBOS_GetMacAddresses:# MAC addresses are not initialized!";

BsdMessage FiveAddresses()
{
    BsdMessage message(10, 176, 176);
    for (int mac = 0; mac < 5; ++mac)
        message.Mac(mac, {0x10 * mac + 2, 0x10 * mac + 3, 0, 0xFF, 0, mac});
    return message;
}

class MacAddresses : public BoardTest {
protected:
    MacAddresses() { memset(mac, 0xEE, sizeof(mac)); }

    void Receive(const BsdMessage& message)
    {
        Deliver(message);
        SwitchBsd bsd;
        SwitchVendorRecord vendor[2];
        ASSERT_EQ(OBOS_InitHwSpecificData(&bsd, vendor), 0);
        transcript.Clear();
    }

    int Get() { return OBOS_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], mac[4]); }

    bool Untouched(int index) const
    {
        const uint8_t untouched[6] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
        return memcmp(mac[index], untouched, 6) == 0;
    }

    bool NoneCopied() const
    {
        return Untouched(0) && Untouched(1) && Untouched(2) && Untouched(3) && Untouched(4);
    }

    uint8_t mac[5][6];
};

TEST_F(MacAddresses, AreMissingBeforeAnyBoardData)
{
    EXPECT_EQ(Get(), -1);
    EXPECT_EQ(transcript.All(), (Lines{kRead, kMissing}));
    EXPECT_TRUE(NoneCopied());
}

TEST_F(MacAddresses, AreHandedOutInTheOrderOfTheMessage)
{
    Receive(FiveAddresses());
    EXPECT_EQ(Get(), 0);
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(mac[i], ElementsAre(0x10 * i + 2, 0x10 * i + 3, 0, 0xFF, 0, i));
    EXPECT_EQ(transcript.All(), (Lines{kRead}));
}

TEST_F(MacAddresses, AreNotHandedOutWhenOneOfThemIsMissing)
{
    for (int missing = 0; missing < 5; ++missing) {
        Receive(FiveAddresses().Mac(missing, {0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(Get(), -1) << missing;
        EXPECT_EQ(transcript.All(), (Lines{kRead, kMissing})) << missing;
        EXPECT_TRUE(NoneCopied()) << missing;
    }
}

TEST_F(MacAddresses, AreThereWithASingleBitSet)
{
    BsdMessage message(10, 176, 176);
    for (int i = 0; i < 5; ++i)
        message.Mac(i, {0, 0, 0, 0, 0, 1});
    Receive(message);
    EXPECT_EQ(Get(), 0);
}

TEST_F(MacAddresses, ANullPointerCostsOnlyThatAddress)
{
    Receive(FiveAddresses());
    EXPECT_EQ(OBOS_GetMacAddresses(nullptr, mac[1], nullptr, mac[3], mac[4]), 0);
    EXPECT_TRUE(Untouched(0));
    EXPECT_EQ(mac[1][5], 1);
    EXPECT_TRUE(Untouched(2));
    EXPECT_EQ(mac[3][5], 3);
    EXPECT_EQ(mac[4][5], 4);
    EXPECT_EQ(transcript.All(), (Lines{kRead}));
}

TEST_F(MacAddresses, ANullFifthPointerFailsTheCallAfterTheOtherCopies)
{
    Receive(FiveAddresses());
    EXPECT_NE(OBOS_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], nullptr), 0);
    EXPECT_EQ(mac[3][5], 3);
    EXPECT_EQ(transcript.All(), (Lines{kRead}));
}

TEST_F(MacAddresses, OnlyTheFifthCopysResultIsReturned)
{
    Receive(FiveAddresses());
    for (int copy = 1; copy <= 4; ++copy) {
        platform.Fail("kova_memcpy_s", 0, copy, 22);
        EXPECT_EQ(Get(), 0) << copy;
    }
    platform.Fail("kova_memcpy_s", 0, 5, 34);
    EXPECT_EQ(Get(), 34);
}

}  // namespace
}  // namespace obtest
