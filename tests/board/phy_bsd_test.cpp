#include <cerrno>
#include <cstring>

#include "tests/board/board_fixture.h"

namespace obtest {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr uint8_t kUntouched = 0xEE;

const std::string kInit = "[EP_InitBoardSpecificData] ";
const std::string kWaiting = "phy3 " + kInit + "Waiting for LAN BSD from ARM";
const std::string kReceived = "phy3 " + kInit + "Received LAN BSD from ARM";
const std::string kParse = "phy9 [ParseBsd]  ---> ";
const std::string kParsed = "phy9 [ParseBsd]  <--- ";
const std::string kHeader = "phy9 [ParseBsd] mainMsg->msg_type b, mainMsg->payload_len 78";

Lines Nothing(const Lines& parsing)
{
    Lines lines = {kWaiting};
    lines.insert(lines.end(), parsing.begin(), parsing.end());
    lines.push_back(kReceived);
    return lines;
}

// Two PHYs, every field with a value of its own.
BsdMessage TwoPhys()
{
    BsdMessage message(11, 120, 120);
    message.Text(0, "libphy1.so").Word(32, 1).Word(36, 21).Word(40, 18);
    message.Byte(44, 2).Byte(45, 9).Word(48, 4).Word(52, 5);
    message.Text(56, "libphy2.so").Word(88, 0).Word(92, 0xFFFFFFFF).Word(96, 0x12345613);
    message.Byte(100, 0xFE).Byte(101, 0xFF).Word(104, 6).Word(108, 3);
    message.Byte(112, 2).Word(116, 0x00000001);
    return message;
}

class PhyBoardData : public BoardTest {
protected:
    PhyBoardData()
    {
        memset(&bsd, kUntouched, sizeof(bsd));
        memset(vendor, kUntouched, sizeof(vendor));
    }

    int Receive() { return EP_InitBoardSpecificData(&bsd, vendor); }

    // Size 4 and the flag in the first record; the second is left alone.
    void ExpectVendor(uint32_t flag)
    {
        EXPECT_EQ(vendor[0].size, 4U);
        EXPECT_EQ(vendor[0].ulpModeEnabled, flag);
        EXPECT_EQ(vendor[1].size, 0xEEEEEEEEU);
        EXPECT_EQ(vendor[1].ulpModeEnabled, 0xEEEEEEEEU);
    }

    void ExpectNothingReceived()
    {
        const EthphyBsd none = {};
        EXPECT_EQ(memcmp(&bsd, &none, sizeof(bsd)), 0);
        ExpectVendor(0);
    }

    EthphyBsd bsd;
    PhyVendorRecord vendor[2];
};

TEST_F(PhyBoardData, AreStoredInHostOrder)
{
    Deliver(TwoPhys());
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.numOfPhys, 2);
    const PhyBoardEntry& first = bsd.entry[0];
    EXPECT_STREQ(first.halLibName, "libphy1.so");
    EXPECT_EQ(first.serdesId, 1U);
    EXPECT_EQ(first.enableGpioPin, 21U);
    EXPECT_EQ(first.resetGpioPin, 18U);
    EXPECT_EQ(first.mdioBus, 2);
    EXPECT_EQ(first.mdioAddr, 9);
    EXPECT_EQ(first.portIfaceSpeed, 4U);
    EXPECT_EQ(first.portIfaceMode, 5U);
    const PhyBoardEntry& second = bsd.entry[1];
    EXPECT_STREQ(second.halLibName, "libphy2.so");
    EXPECT_EQ(second.serdesId, 0U);
    EXPECT_EQ(second.enableGpioPin, 0xFFFFFFFFU);
    EXPECT_EQ(second.resetGpioPin, 0x12345613U);
    EXPECT_EQ(second.mdioBus, 0xFE);
    EXPECT_EQ(second.mdioAddr, 0xFF);
    EXPECT_EQ(second.portIfaceSpeed, 6U);
    EXPECT_EQ(second.portIfaceMode, 3U);
}

TEST_F(PhyBoardData, AreLoggedStepByStepWithoutPrefix)
{
    Deliver(TwoPhys());
    Receive();
    EXPECT_EQ(Logged(),
              (Lines{kWaiting, kParse, kHeader, kParsed, kReceived,
                     "phy3 " + kInit +
                         "Board-specific data: \n\t\tExternal Phy Idx: 0\n\t\t\t"
                         "Enable GPIO pin: 21\n\t\t\tReset GPIO pin: 18\n\t\t\tport mode: SGMII"
                         "\n\t\t\tport speed: 1000 Mbs\n\t\t\tMDIO Bus: 2\n\t\t\t"
                         "MDIO Address: 9\n\t\t\tGmax Idx: 1\n",
                     "phy3 " + kInit +
                         "Board-specific data: \n\t\tExternal Phy Idx: 1\n\t\t\t"
                         "Enable GPIO pin: -1\n\t\t\tReset GPIO pin: 305419795\n\t\t\t"
                         "port mode: GMII\n\t\t\tport speed: 10 Gbs\n\t\t\tMDIO Bus: -2\n\t\t\t"
                         "MDIO Address: -1\n\t\t\tGmax Idx: 0\n"}));
    EXPECT_THAT(transcript.Formats(),
                ElementsAre("Waiting for LAN BSD from ARM", " ---> ",
                            "mainMsg->msg_type %x, mainMsg->payload_len %x", " <--- ",
                            "Received LAN BSD from ARM", HasSubstr("Board-specific data: \n"),
                            "Board-specific data: \n\t\tExternal Phy Idx: %d\n\t\t\t"
                            "Enable GPIO pin: %d\n\t\t\tReset GPIO pin: %d\n\t\t\tport mode: %s"
                            "\n\t\t\tport speed: %s\n\t\t\tMDIO Bus: %d\n\t\t\t"
                            "MDIO Address: %d\n\t\t\tGmax Idx: %d\n"));
}

TEST_F(PhyBoardData, ArriveAtApplicationTwelveModuleZeroAndAreAcknowledgedBeforeParsing)
{
    Deliver(TwoPhys());
    Receive();
    EXPECT_THAT(platform.boundAddresses, ElementsAre(std::vector<uint8_t>{43, 0, 0, 12, 0, 0, 0, 0,
                                                                          0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_THAT(platform.sent, ElementsAre(std::vector<uint8_t>{0, 0, 0, 12, 0, 0, 0, 0}));
    const Lines order = transcript.Only(
        {"sys", "phy9 [ParseBsd]", "out HWMB_dumpBuffer:# =====_HWMB_BUFFER_DUMP_ 0x"});
    EXPECT_THAT(order,
                ElementsAre("sys socket(43, 1, 0)", "sys bind(16)", "sys recv(4096, MSG_TRUNC)",
                            HasSubstr("[128]====="), "sys send(8, 0)", kParse,
                            HasSubstr("[128]====="), kHeader, kParsed, "sys close()"));
}

TEST_F(PhyBoardData, CarryTheUltraLowPowerFlagInAnyByteOrder)
{
    for (uint32_t flag : {0x00000001U, 0x01000000U, 0x80000000U}) {
        Deliver(TwoPhys().Word(116, flag));
        Receive();
        ExpectVendor(1);
    }
    Deliver(TwoPhys().Word(116, 0));
    Receive();
    ExpectVendor(0);
}

TEST_F(PhyBoardData, OfOnePhyLeaveTheSecondEntryInWireOrder)
{
    BsdMessage message(11, 120, 120);
    message.Numbered().Byte(112, 1);
    Deliver(message);
    Receive();
    EXPECT_EQ(bsd.numOfPhys, 1);
    EXPECT_EQ(bsd.entry[0].serdesId, 0x21222324U);
    EXPECT_EQ(memcmp(&bsd.entry[1], message.bytes.data() + 8 + 56, 56), 0);
    EXPECT_TRUE(transcript.Has("External Phy Idx: 0"));
    EXPECT_FALSE(transcript.Has("External Phy Idx: 1"));
}

TEST_F(PhyBoardData, OfMoreThanTwoPhysAreRefused)
{
    for (int count : {3, 127, 128, 255}) {
        transcript.Clear();
        Deliver(TwoPhys().Byte(112, count));
        EXPECT_EQ(Receive(), 0);
        EXPECT_EQ(Logged(), Nothing({kParse, kHeader,
                                     "phy1 [ParseBsd] Bad message: device count " +
                                         std::to_string(count) + " above 2"}));
        ExpectNothingReceived();
    }
}

TEST_F(PhyBoardData, OfTheSwitchFamilyAreRefused)
{
    Deliver(TwoPhys().Header(10, 176));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(
        Logged(),
        Nothing({kParse, "phy9 [ParseBsd] mainMsg->msg_type a, mainMsg->payload_len b0",
                 "phy1 [ParseBsd] Bad message: Expected BSD for ETHPHY, got BSD for OrbLink"}));
    ExpectNothingReceived();
}

TEST_F(PhyBoardData, OfAnUnknownTypeAreRefused)
{
    Deliver(TwoPhys().Header(13, 120));
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(),
              Nothing({kParse, "phy9 [ParseBsd] mainMsg->msg_type d, mainMsg->payload_len 78",
                       "phy1 [ParseBsd] Unsupported message type=13"}));
    ExpectNothingReceived();
}

TEST_F(PhyBoardData, OfAnyOtherPayloadSizeAreRefused)
{
    for (int size : {0, 119, 121, 176}) {
        transcript.Clear();
        Deliver(TwoPhys().Header(11, static_cast<uint32_t>(size)));
        EXPECT_EQ(Receive(), 0);
        EXPECT_THAT(Logged(), Contains("phy1 [ParseBsd] Bad message: expected payload size 120, "
                                       "actual payload size " +
                                       std::to_string(size)));
        EXPECT_THAT(Logged(), Contains(kReceived));
        ExpectNothingReceived();
    }
}

TEST_F(PhyBoardData, ShorterThanTheirHeaderSaysEndInZeros)
{
    Deliver(TwoPhys());
    Receive();
    BsdMessage cut = TwoPhys();
    cut.bytes.resize(8 + 113);
    Deliver(cut);
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(bsd.numOfPhys, 2);
    ExpectVendor(0);
}

TEST_F(PhyBoardData, PrintCodesWithoutAWordAsUnknown)
{
    Deliver(TwoPhys().Byte(112, 1).Word(48, 7).Word(52, 0xFFFFFFFF));
    Receive();
    EXPECT_TRUE(transcript.Has("port mode: UNKNOWN\n\t\t\tport speed: UNKNOWN\n"));
}

TEST_F(PhyBoardData, StayZeroWhenTheMailboxFails)
{
    for (const char* call : {"socket", "bind", "recv", "send"}) {
        transcript.Clear();
        platform.Fail(call, EIO);
        Deliver(TwoPhys());
        EXPECT_EQ(Receive(), 0) << call;
        EXPECT_EQ(Logged(), Nothing({})) << call;
        ExpectNothingReceived();
        platform.mailbox.clear();
    }
}

TEST_F(PhyBoardData, StayZeroWhenTheParsersCopyFails)
{
    Deliver(TwoPhys());
    platform.Fail("kova_memcpy_s", 0, 1, 22);
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(), Nothing({kParse, kHeader,
                                 "phy1 [ParseBsd] Runtime-constraint violation error in function "
                                 "kova_memcpy_s"}));
    ExpectNothingReceived();
}

TEST_F(PhyBoardData, FailWithTheirDefaultsInPlaceWhenTheReceiversCopyFails)
{
    Deliver(TwoPhys());
    platform.Fail("kova_memcpy_s", 0, 2, 22);
    EXPECT_EQ(Receive(), -1);
    EXPECT_EQ(Logged().back(),
              "phy1 " + kInit + "Runtime-constraint violation error in function kova_memcpy_s");
    EthphyBsd expected = {};
    for (auto& entry : expected.entry) {
        entry.enableGpioPin = 0xFFFFFFFF;
        entry.resetGpioPin = 0xFFFFFFFF;
        entry.mdioBus = 0xFF;
        entry.mdioAddr = 0xFF;
        entry.portIfaceSpeed = 4;
        entry.portIfaceMode = 5;
    }
    EXPECT_EQ(memcmp(&bsd, &expected, sizeof(bsd)), 0);
    EXPECT_EQ(vendor[0].size, 0xEEEEEEEEU);
}

TEST_F(PhyBoardData, NeedARecordToBeStoredIn)
{
    EXPECT_EQ(EP_InitBoardSpecificData(nullptr, vendor), -1);
    EXPECT_EQ(transcript.All(), (Lines{"phy1 " + kInit + "EthphyBsd is NULL"}));
}

TEST_F(PhyBoardData, NeedAVendorRecord)
{
    EXPECT_EQ(EP_InitBoardSpecificData(&bsd, nullptr), -1);
    EXPECT_EQ(transcript.All(), (Lines{"phy1 " + kInit + "VendorRecord is NULL"}));
    EXPECT_EQ(bsd.numOfPhys, kUntouched);
}

TEST_F(PhyBoardData, WithoutEitherComplainOfTheFirst)
{
    EXPECT_EQ(EP_InitBoardSpecificData(nullptr, nullptr), -1);
    EXPECT_EQ(transcript.All(), (Lines{"phy1 " + kInit + "EthphyBsd is NULL"}));
}

TEST_F(PhyBoardData, LeaveTheLocalSourceOfTheSwitchFamilyAlone)
{
    localSource = [](SwitchBsd*) { return 5; };
    Deliver(TwoPhys());
    EXPECT_EQ(Receive(), 0);
    EXPECT_THAT(Logged(), Not(Contains("call OBOS_InitBsdFromIni")));
}

}  // namespace
}  // namespace obtest
