// Board data that are taken over.
#include <cstring>

#include "tests/board/switch_bsd_fixture.h"

namespace obtest {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(SwitchBoardData, AreStoredInHostOrder)
{
    Deliver(TwoSwitches());
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.NumOfSwitchDevices, 2);
    const SwitchBoardEntry& first = bsd.entry[0];
    EXPECT_STREQ(first.halLibName, "libfirst.so");
    EXPECT_EQ(first.serdesId, 1U);
    EXPECT_EQ(first.enableGpioPin, 20U);
    EXPECT_EQ(first.resetGpioPin, 18U);
    EXPECT_EQ(first.internalPortPidx, 5U);
    EXPECT_EQ(first.mdioAddr, 16);
    EXPECT_EQ(first.mdioBus, 3);
    EXPECT_EQ(first.internalPortIfaceSpeed, 5U);
    EXPECT_EQ(first.internalPortIfaceMode, 6U);
    EXPECT_EQ(first.preResetArg, 0x12345678U);
    EXPECT_EQ(first.reservedWord, 0xCAFEBABEU);
    const SwitchBoardEntry& second = bsd.entry[1];
    EXPECT_STREQ(second.halLibName, "libsecond.so");
    EXPECT_EQ(second.serdesId, 0U);
    EXPECT_EQ(second.enableGpioPin, 0xFFFFFFFFU);
    EXPECT_EQ(second.resetGpioPin, 19U);
    EXPECT_EQ(second.internalPortPidx, 7U);
    EXPECT_EQ(second.mdioAddr, 0xFF);
    EXPECT_EQ(second.mdioBus, 0x80);
    EXPECT_EQ(second.internalPortIfaceSpeed, 1U);
    EXPECT_EQ(second.internalPortIfaceMode, 2U);
    EXPECT_EQ(second.preResetArg, 0xA0B0C0D0U);
    EXPECT_EQ(second.reservedWord, 0x01020304U);
}

TEST_F(SwitchBoardData, AreLoggedStepByStep)
{
    Deliver(TwoSwitches());
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(
        Logged(),
        (Lines{
            kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, kIni, kIniDone,
            "log3 " + kInit +
                "Board-specific data: \n\t\tSwitch Idx: 0\n\t\t\tHAL library: libfirst.so\n\t\t\t"
                "Enable GPIO pin: 20\n\t\t\tReset GPIO pin: 18\n\t\t\tInternal port pidx: 5\n\t\t\t"
                "Internal port mode: HSGMII\n\t\t\tInternal port speed: 2.5Gbs\n\t\t\t"
                "MDIO Bus: 3\n\t\t\tMDIO Address: 16\n\t\t\tGmax Idx: 1\n",
            "log3 " + kInit +
                "Board-specific data: \n\t\tSwitch Idx: 1\n\t\t\tHAL library: libsecond.so\n\t\t\t"
                "Enable GPIO pin: -1\n\t\t\tReset GPIO pin: 19\n\t\t\tInternal port pidx: 7\n\t\t\t"
                "Internal port mode: RMII\n\t\t\tInternal port speed: AUTONEG\n\t\t\t"
                "MDIO Bus: -128\n\t\t\tMDIO Address: -1\n\t\t\tGmax Idx: 0\n",
            kBack}));
    EXPECT_THAT(
        transcript.Formats(),
        Contains("%s:%d Board-specific data: \n\t\tSwitch Idx: %d\n\t\t\tHAL library: %s\n\t\t\t"
                 "Enable GPIO pin: %d\n\t\t\tReset GPIO pin: %d\n\t\t\tInternal port pidx: %d"
                 "\n\t\t\tInternal port mode: %s\n\t\t\tInternal port speed: %s\n\t\t\t"
                 "MDIO Bus: %d\n\t\t\tMDIO Address: %d\n\t\t\tGmax Idx: %d\n"));
}

TEST_F(SwitchBoardData, ArriveAtApplicationTwelveModuleZeroAndAreAcknowledged)
{
    Deliver(TwoSwitches());
    Receive();
    EXPECT_THAT(platform.boundAddresses, ElementsAre(std::vector<uint8_t>{43, 0, 0, 12, 0, 0, 0, 0,
                                                                          0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(transcript.Has("sys socket(43, 1, 0)"));
    EXPECT_THAT(platform.sent, ElementsAre(std::vector<uint8_t>{0, 0, 0, 12, 0, 0, 0, 0}));
}

TEST_F(SwitchBoardData, AreAcknowledgedBeforeTheyAreParsed)
{
    Deliver(TwoSwitches());
    Receive();
    const Lines order = transcript.Only(
        {"sys", "log9 ParseBsd", "out HWMB_dumpBuffer:# =====_HWMB_BUFFER_DUMP_ 0x"});
    const std::string dump = order[3];
    EXPECT_THAT(order,
                ElementsAre("sys socket(43, 1, 0)", "sys bind(16)", "sys recv(4096, MSG_TRUNC)",
                            HasSubstr("[184]====="), "sys send(8, 0)", kParse, dump, kHeader,
                            kParsed, "sys close()"));
}

TEST_F(SwitchBoardData, AreAcknowledgedEvenWhenTheyAreRefused)
{
    Deliver(TwoSwitches().Header(11, 120));
    Receive();
    EXPECT_THAT(platform.sent, ElementsAre(std::vector<uint8_t>{0, 0, 0, 12, 0, 0, 0, 0}));
}

TEST_F(SwitchBoardData, CarryThePortIsolationFlag)
{
    Deliver(TwoSwitches());
    Receive();
    ExpectVendor(1);
    Deliver(TwoSwitches().Word(140, 0));
    Receive();
    ExpectVendor(0);
}

TEST_F(SwitchBoardData, OfOneSwitchLeaveTheSecondEntryInWireOrder)
{
    BsdMessage message(10, 176, 176);
    message.Numbered().Byte(136, 1);
    Deliver(message);
    Receive();
    EXPECT_EQ(bsd.NumOfSwitchDevices, 1);
    EXPECT_EQ(bsd.entry[0].serdesId, 0x21222324U);
    EXPECT_EQ(memcmp(&bsd.entry[1], message.bytes.data() + 8 + 68, 68), 0);
    EXPECT_EQ(memcmp(bsd.padding, message.bytes.data() + 8 + 137, 3), 0);
    EXPECT_TRUE(transcript.Has("Switch Idx: 0"));
    EXPECT_FALSE(transcript.Has("Switch Idx: 1"));
}

TEST_F(SwitchBoardData, OfNoSwitchLogNoWiring)
{
    Deliver(TwoSwitches().Byte(136, 0));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.NumOfSwitchDevices, 0);
    EXPECT_EQ(Logged(), (Lines{kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, kIni,
                               kIniDone, kBack}));
    ExpectVendor(1);
}

TEST_F(SwitchBoardData, ShorterThanTheirHeaderSaysEndInZeros)
{
    Deliver(TwoSwitches());
    Receive();
    BsdMessage cut = TwoSwitches();
    cut.bytes.resize(8 + 137);
    Deliver(cut);
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.NumOfSwitchDevices, 2);
    ExpectVendor(0);
    uint8_t mac[6];
    EXPECT_EQ(OBOS_GetMacAddresses(mac, mac, mac, mac, mac), -1);
}

TEST_F(SwitchBoardData, LongerThanTheirPayloadAreTaken)
{
    BsdMessage message = TwoSwitches();
    message.bytes.resize(300, 0xAB);
    Deliver(message);
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.NumOfSwitchDevices, 2);
}

TEST_F(SwitchBoardData, OfAHalNameWithoutNulPrintThirtyTwoCharacters)
{
    Deliver(TwoSwitches().Text(0, "abcdefghijklmnopqrstuvwxyz012345").Byte(32, 'X'));
    Receive();
    EXPECT_TRUE(transcript.Has("HAL library: abcdefghijklmnopqrstuvwxyz012345\n"));
}

TEST_F(SwitchBoardData, PrintTheWordOfEveryModeAndSpeed)
{
    const char* modes[] = {"UNKNOWN", "MII", "RMII", "GMII", "RGMII", "SGMII", "HSGMII", "UNKNOWN"};
    const char* speeds[] = {"UNKNOWN",  "AUTONEG", "10 Mbs", "100 Mbs",
                            "1000 Mbs", "2.5Gbs",  "10 Gbs", "UNKNOWN"};
    for (uint32_t code = 0; code <= 7; ++code) {
        transcript.Clear();
        Deliver(TwoSwitches().Byte(136, 1).Word(52, code).Word(56, code));
        Receive();
        EXPECT_TRUE(transcript.Has("Internal port mode: " + std::string(modes[code]) +
                                   "\n\t\t\tInternal port speed: " + speeds[code] + "\n"));
    }
}

TEST_F(SwitchBoardData, PrintCodesFarOutsideAsUnknown)
{
    Deliver(TwoSwitches().Byte(136, 1).Word(52, 0xFFFFFFFF).Word(56, 0x80000000));
    Receive();
    EXPECT_TRUE(
        transcript.Has("Internal port mode: UNKNOWN\n\t\t\tInternal port speed: UNKNOWN\n"));
}

}  // namespace
}  // namespace obtest
