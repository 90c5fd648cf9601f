// A local source in the place of the mailbox.
#include <cstring>

#include "tests/board/switch_bsd_fixture.h"

namespace obtest {
namespace {

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
    EXPECT_EQ(
        Logged(),
        (Lines{kArrow, kWaiting, kParse, kHeader, kParsed, kReceived, "call OBOS_InitBsdFromIni",
               "log9 " + kInit + "OBOS_InitBsdFromIni() done! NumOfSwitchDevices=1",
               "log3 " + kInit + "MII devices config overridden by ini!",
               "log3 " + kInit +
                   "Board-specific data: \n\t\tSwitch Idx: 0\n\t\t\tHAL library: liblocal.so"
                   "\n\t\t\tEnable GPIO pin: -1\n\t\t\tReset GPIO pin: -1\n\t\t\t"
                   "Internal port pidx: -1\n\t\t\tInternal port mode: RGMII\n\t\t\t"
                   "Internal port speed: 1000 Mbs\n\t\t\tMDIO Bus: -1\n\t\t\t"
                   "MDIO Address: -1\n\t\t\tGmax Idx: 0\n",
               kBack}));
    const SwitchVendorRecord none[2] = {};
    EXPECT_EQ(memcmp(vendor, none, sizeof(vendor)), 0);
    uint8_t mac[5][6];
    EXPECT_EQ(OBOS_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], mac[4]), 0);
    EXPECT_EQ(mac[4][5], 5);
}

TEST_F(SwitchBoardData, OfALocalSourceWithTooManySwitchesCountAsNone)
{
    localSource = [](SwitchBsd* offered) {
        offered->NumOfSwitchDevices = 200;
        return 0;
    };
    EXPECT_EQ(Receive(), 0);
    EXPECT_FALSE(transcript.Has("Switch Idx: "));
    EXPECT_EQ(transcript.Only({"log1"}),
              Lines{"log1 " + kInit + "Bad override: device count 200 above 2"});
}

TEST_F(SwitchBoardData, FailWhenTheLocalSourceFails)
{
    Deliver(TwoSwitches());
    localSource = [](SwitchBsd*) { return 5; };
    EXPECT_EQ(Receive(), -1);
    EXPECT_EQ(Logged(), (Lines{kArrow, kWaiting, kParse, kHeader, kParsed, kReceived,
                               "call OBOS_InitBsdFromIni",
                               "log1 " + kInit + "OBOS_InitBsdFromIni() failed!", kBack}));
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
