#include <cerrno>
#include <cstring>

#include "tests/board/board_fixture.h"

namespace obtest {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr uint8_t kUntouched = 0xEE;

const std::string kInit = "OBOS_InitHwSpecificData:# ";
const std::string kArrow = "log9 " + kInit + "--->";
const std::string kWaiting = "log3 " + kInit + "Waiting for LAN BSD from ARM";
const std::string kReceived = "log3 " + kInit + "Received LAN BSD from ARM";
const std::string kIni = "log3 OBOS_InitBsdFromIni:# OBOS_InitBsdFromIni NOT IMPLEMETED";
const std::string kIniDone = "log9 " + kInit + "OBOS_InitBsdFromIni() done! NumOfSwitchDevices=0";
const std::string kBack = "log9 " + kInit + "<---";
const std::string kParse = "log9 ParseBsd:#  ---> ";
const std::string kParsed = "log9 ParseBsd:#  <--- ";
const std::string kHeader = "log9 ParseBsd:# mainMsg->msg_type a, mainMsg->payload_len b0";

// What is logged when no message is taken over; parsing stands between the two lines of waiting.
Lines Nothing(const Lines& parsing)
{
    Lines lines = {kArrow, kWaiting};
    lines.insert(lines.end(), parsing.begin(), parsing.end());
    lines.insert(lines.end(), {kReceived, kIni, kIniDone, kBack});
    return lines;
}

// Two switches, every field with a value of its own.
BsdMessage TwoSwitches()
{
    BsdMessage message(10, 176, 176);
    message.Text(0, "libfirst.so").Word(32, 1).Word(36, 20).Word(40, 18).Word(44, 5);
    message.Byte(48, 16).Byte(49, 3).Word(52, 5).Word(56, 6).Word(60, 0x12345678);
    message.Word(64, 0xCAFEBABE);
    message.Text(68, "libsecond.so").Word(100, 0).Word(104, 0xFFFFFFFF).Word(108, 19);
    message.Word(112, 7).Byte(116, 0xFF).Byte(117, 0x80).Word(120, 1).Word(124, 2);
    message.Word(128, 0xA0B0C0D0).Word(132, 0x01020304);
    message.Byte(136, 2).Word(140, 0x00000100);
    for (int mac = 0; mac < 5; ++mac)
        message.Mac(mac, {2, 0, 0, 0, 0, mac + 1});
    return message;
}

class SwitchBoardData : public BoardTest {
protected:
    SwitchBoardData()
    {
        memset(&bsd, kUntouched, sizeof(bsd));
        memset(vendor, kUntouched, sizeof(vendor));
    }

    int Receive() { return OBOS_InitHwSpecificData(&bsd, vendor); }

    void ExpectNothingReceived()
    {
        const SwitchBsd none = {};
        EXPECT_EQ(memcmp(&bsd, &none, sizeof(bsd)), 0);
        ExpectVendor(0);
        uint8_t mac[6];
        EXPECT_EQ(OBOS_GetMacAddresses(mac, mac, mac, mac, mac), -1);
    }

    // Size 8, the flag and zeros in the first record; nothing in the second.
    void ExpectVendor(uint32_t flag)
    {
        SwitchVendorRecord expected[2] = {};
        expected[0].vendorParamSize = 8;
        memcpy(expected[0].vendorParams, &flag, sizeof(flag));
        EXPECT_EQ(memcmp(vendor, expected, sizeof(vendor)), 0);
    }

    SwitchBsd bsd;
    SwitchVendorRecord vendor[2];
};

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
    EXPECT_THAT(
        Logged(),
        ElementsAre(
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
            kBack));
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
    EXPECT_THAT(Logged(), ElementsAre(kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, kIni,
                                      kIniDone, kBack));
    ExpectVendor(1);
}

TEST_F(SwitchBoardData, OfThreeSwitchesAreRefused)
{
    Deliver(TwoSwitches().Byte(136, 3));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(),
              Nothing({kParse, kHeader, "log1 ParseBsd:# Bad message: device count 3 above 2"}));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, OfTwoHundredFiftyFiveSwitchesAreRefused)
{
    Deliver(TwoSwitches().Byte(136, 255));
    EXPECT_EQ(Receive(), 0);
    EXPECT_TRUE(transcript.Has("log1 ParseBsd:# Bad message: device count 255 above 2"));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, OfThePhyFamilyAreRefused)
{
    Deliver(TwoSwitches().Header(11, 120));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(
        Logged(),
        Nothing({kParse, "log9 ParseBsd:# mainMsg->msg_type b, mainMsg->payload_len 78",
                 "log1 ParseBsd:# Bad message: Expected BSD for orblink, got BSD for ethphy"}));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, OfAnUnknownTypeAreRefused)
{
    Deliver(TwoSwitches().Header(12, 176));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(),
              Nothing({kParse, "log9 ParseBsd:# mainMsg->msg_type c, mainMsg->payload_len b0",
                       "log1 ParseBsd:# Unsupported message type=12"}));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, OfAnyOtherPayloadSizeAreRefused)
{
    for (uint32_t size : {0U, 120U, 175U, 177U, 0xFFFFFFFFU}) {
        transcript.Clear();
        Deliver(TwoSwitches().Header(10, size));
        EXPECT_EQ(Receive(), 0);
        EXPECT_THAT(Logged(),
                    Contains("log1 ParseBsd:# Bad message: expected payload size 176, actual "
                             "payload size " +
                             std::to_string(static_cast<int>(size))));
        EXPECT_THAT(Logged(), Contains(kReceived));
        ExpectNothingReceived();
    }
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

TEST_F(SwitchBoardData, OfAnEmptyMessageAreOfAnUnsupportedType)
{
    platform.mailbox = {{}};
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(),
              Nothing({kParse, "log9 ParseBsd:# mainMsg->msg_type 0, mainMsg->payload_len 0",
                       "log1 ParseBsd:# Unsupported message type=0"}));
    ExpectNothingReceived();
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

TEST_F(SwitchBoardData, StayZeroWhenTheMailboxFails)
{
    for (const char* call : {"socket", "bind", "recv", "send"}) {
        transcript.Clear();
        platform.Fail(call, EIO);
        Deliver(TwoSwitches());
        EXPECT_EQ(Receive(), 0) << call;
        EXPECT_EQ(Logged(), Nothing({})) << call;
        ExpectNothingReceived();
        platform.mailbox.clear();
    }
}

TEST_F(SwitchBoardData, StayZeroWhenTheReceiveIsRefused)
{
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(), Nothing({}));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, WithoutAMessageForgetTheMacAddressesOfAnEarlierOne)
{
    Deliver(TwoSwitches());
    Receive();
    Receive();
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, StayZeroWhenTheParsersCopyFails)
{
    Deliver(TwoSwitches());
    platform.Fail("kova_memcpy_s", 0, 1, 22);
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(), Nothing({kParse, kHeader,
                                 "log1 ParseBsd:# ERROR: ParseBsd:#: Runtime-constraint violation "
                                 "error in function kova_memcpy_s"}));
    EXPECT_THAT(transcript.Formats(),
                Contains("%s:%d ERROR: %s:%d: Runtime-constraint violation error in function "
                         "kova_memcpy_s"));
    ExpectNothingReceived();
}

TEST_F(SwitchBoardData, FailWhenTheReceiversCopyFails)
{
    Deliver(TwoSwitches());
    platform.Fail("kova_memcpy_s", 0, 2, 22);
    EXPECT_EQ(Receive(), -1);
    EXPECT_THAT(Logged(),
                ElementsAre(kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, kIni, kIniDone,
                            "log1 " + kInit + "ERROR: " +
                                "OBOS_InitHwSpecificData:#: Runtime-constraint violation "
                                "error in function kova_memcpy_s"));
    const SwitchVendorRecord none[2] = {};
    EXPECT_EQ(memcmp(vendor, none, sizeof(vendor)), 0);
}

TEST_F(SwitchBoardData, DoNotMindAFailedCopyOfAMacAddress)
{
    for (int mac = 0; mac < 5; ++mac) {
        Deliver(TwoSwitches());
        platform.Fail("kova_memcpy_s", 0, 3 + mac, 22);
        EXPECT_EQ(Receive(), 0) << mac;
        EXPECT_EQ(bsd.NumOfSwitchDevices, 2);
        EXPECT_EQ(transcript.Log().back().substr(0, 5), "log3 ");
    }
}

TEST_F(SwitchBoardData, ShowTheLocalSourceTheDefaultsOfTheFirstSwitch)
{
    SwitchBsd seen;
    localSource = [&](SwitchBsd* offered) {
        memcpy(&seen, offered, sizeof(seen));
        return 0;
    };
    Receive();
    SwitchBsd expected = {};
    expected.entry[0].enableGpioPin = 0xFFFFFFFF;
    expected.entry[0].resetGpioPin = 0xFFFFFFFF;
    expected.entry[0].internalPortPidx = 0xFFFFFFFF;
    expected.entry[0].mdioAddr = 0xFF;
    expected.entry[0].mdioBus = 0xFF;
    expected.entry[0].internalPortIfaceSpeed = 4;
    expected.entry[0].internalPortIfaceMode = 4;
    EXPECT_EQ(memcmp(&seen, &expected, sizeof(seen)), 0);
}

TEST_F(SwitchBoardData, AreOverriddenByTheLocalSourceButForTheMacAddresses)
{
    Deliver(TwoSwitches());
    localSource = [](SwitchBsd* offered) {
        strcpy(offered->entry[0].halLibName, "liblocal.so");
        offered->NumOfSwitchDevices = 1;
        return 0;
    };
    EXPECT_EQ(Receive(), 0);
    EXPECT_THAT(
        Logged(),
        ElementsAre(kArrow, kWaiting, kParse, kHeader, kParsed, kReceived,
                    "call OBOS_InitBsdFromIni",
                    "log9 " + kInit + "OBOS_InitBsdFromIni() done! NumOfSwitchDevices=1",
                    "log3 " + kInit + "MII devices config overridden by ini!",
                    "log3 " + kInit +
                        "Board-specific data: \n\t\tSwitch Idx: 0\n\t\t\tHAL library: liblocal.so"
                        "\n\t\t\tEnable GPIO pin: -1\n\t\t\tReset GPIO pin: -1\n\t\t\t"
                        "Internal port pidx: -1\n\t\t\tInternal port mode: RGMII\n\t\t\t"
                        "Internal port speed: 1000 Mbs\n\t\t\tMDIO Bus: -1\n\t\t\t"
                        "MDIO Address: -1\n\t\t\tGmax Idx: 0\n",
                    kBack));
    const SwitchVendorRecord none[2] = {};
    EXPECT_EQ(memcmp(vendor, none, sizeof(vendor)), 0);
    uint8_t mac[5][6];
    EXPECT_EQ(OBOS_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], mac[4]), 0);
    EXPECT_EQ(mac[4][5], 5);
}

TEST_F(SwitchBoardData, OfALocalSourceWithTooManySwitchesPrintTwo)
{
    localSource = [](SwitchBsd* offered) {
        offered->NumOfSwitchDevices = 200;
        return 0;
    };
    EXPECT_EQ(Receive(), 0);
    EXPECT_TRUE(transcript.Has("Switch Idx: 1"));
    EXPECT_FALSE(transcript.Has("Switch Idx: 2"));
}

TEST_F(SwitchBoardData, FailWhenTheLocalSourceFails)
{
    Deliver(TwoSwitches());
    localSource = [](SwitchBsd*) { return 5; };
    EXPECT_EQ(Receive(), -1);
    EXPECT_THAT(Logged(), ElementsAre(kArrow, kWaiting, kParse, kHeader, kParsed, kReceived,
                                      "call OBOS_InitBsdFromIni",
                                      "log1 " + kInit + "OBOS_InitBsdFromIni() failed!", kBack));
    uint8_t mac[6];
    EXPECT_EQ(OBOS_GetMacAddresses(mac, mac, mac, mac, mac), -1);
}

TEST_F(SwitchBoardData, TheLibrarysOwnLocalSourceTouchesNothing)
{
    EXPECT_EQ(OBOS_InitBsdFromIni(&bsd), 0);
    SwitchBsd untouched;
    memset(&untouched, kUntouched, sizeof(untouched));
    EXPECT_EQ(memcmp(&bsd, &untouched, sizeof(bsd)), 0);
    EXPECT_EQ(Logged(), Lines{kIni});
}

}  // namespace
}  // namespace obtest
