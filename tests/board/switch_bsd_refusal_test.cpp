// Board data that do not arrive, are refused or cannot be copied.
#include <cerrno>
#include <cstring>

#include "tests/board/switch_bsd_fixture.h"

namespace obtest {
namespace {

using testing::Contains;

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

TEST_F(SwitchBoardData, OfAnEmptyMessageAreOfAnUnsupportedType)
{
    platform.mailbox = {{}};
    EXPECT_EQ(Receive(), 0);
    EXPECT_EQ(Logged(),
              Nothing({kParse, "log9 ParseBsd:# mainMsg->msg_type 0, mainMsg->payload_len 0",
                       "log1 ParseBsd:# Unsupported message type=0"}));
    ExpectNothingReceived();
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
    EXPECT_EQ(Logged(),
              (Lines{kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, kIni, kIniDone,
                     "log1 " + kInit + "ERROR: " +
                         "OBOS_InitHwSpecificData:#: Runtime-constraint violation "
                         "error in function kova_memcpy_s"}));
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

TEST_F(SwitchBoardData, NeedARecordToBeStoredIn)
{
    EXPECT_EQ(OBOS_InitHwSpecificData(nullptr, vendor), -1);
    EXPECT_EQ(transcript.All(), (Lines{kArrow, "log1 " + kInit + "SwitchBsd is NULL"}));
    EXPECT_EQ(vendor[0].vendorParamSize, 0xEEEEEEEEU);
}

TEST_F(SwitchBoardData, NeedAVendorRecord)
{
    EXPECT_EQ(OBOS_InitHwSpecificData(&bsd, nullptr), -1);
    EXPECT_EQ(transcript.All(), (Lines{kArrow, "log1 " + kInit + "VendorRecord is NULL"}));
    EXPECT_EQ(bsd.NumOfSwitchDevices, kUntouched);
}

}  // namespace
}  // namespace obtest
