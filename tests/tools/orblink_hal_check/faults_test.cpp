// Each planted fault is found, by the check that it belongs to and at the slot that has it.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/tools/orblink_hal_check/checked.h"

using namespace checked;
using testing::Contains;
using testing::ElementsAre;

TEST(HalCheckFaults, NoneIsFoundInASwitchHalWithoutOne)
{
    EXPECT_THAT(SwitchFault(""), ElementsAre());
}

TEST(HalCheckFaults, NoneIsFoundInAPhyHalWithoutOne)
{
    EXPECT_THAT(PhyFault(""), ElementsAre());
}

TEST(HalCheckFaults, AMandatorySlotIsMissing)
{
    EXPECT_THAT(SwitchFault("slot-is-missing", "SetMtuSize"),
                Contains("table.missing-slot SetMtuSize"));
}

TEST(HalCheckFaults, ASlotIsNoCode)
{
    EXPECT_THAT(SwitchFault("slot-is-no-code", "SetMtuSize"),
                Contains("table.not-code SetMtuSize"));
}

TEST(HalCheckFaults, TheTableIsOfAnOlderInterface)
{
    EXPECT_THAT(Findings(Planted("libfaulty_short_table.so")), ElementsAre("table.size "));
}

TEST(HalCheckFaults, TheLibraryCallsTheApi)
{
    EXPECT_THAT(Findings(Planted("libfaulty_imports.so") + " --slot SetMtuSize"),
                ElementsAre("library.calls-api "));
}

TEST(HalCheckFaults, TheNameIsTooLongForBoardData)
{
    std::string folder = "/tmp/orblink-hal-check-test.XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string library = folder + "/liborblink_of_a_very_long_name.so";
    std::filesystem::create_symlink(Planted("libfaulty_switch_hal.so"), library);
    EXPECT_THAT(Findings(library + " --slot SetMtuSize"), ElementsAre("library.name-too-long "));
    std::filesystem::remove_all(folder);
}

TEST(HalCheckFaults, InitFails)
{
    EXPECT_THAT(SwitchFault("init-fails", "Init"), Contains("init.failed Init"));
}

TEST(HalCheckFaults, InitFailsOfAPhy)
{
    EXPECT_THAT(PhyFault("init-fails", "Init"), ElementsAre("init.failed Init"));
}

TEST(HalCheckFaults, InitWritesPastThePrivateData)
{
    EXPECT_THAT(SwitchFault("init-writes-past-private-data", "Init"),
                ElementsAre("buffer.overrun Init"));
}

TEST(HalCheckFaults, TheBringUpFails)
{
    EXPECT_THAT(SwitchFault("bring-up-fails", "ResetSwitch"),
                Contains("bringup.failed ResetSwitch"));
}

TEST(HalCheckFaults, TheRestoreFails)
{
    EXPECT_THAT(SwitchFault("restore-fails", "ResetSwitch"),
                Contains("bringup.restore-failed ResetSwitch"));
}

TEST(HalCheckFaults, ThePointerToThePrivateDataIsKeptInTheProcess)
{
    EXPECT_THAT(SwitchFault("keeps-private-data-pointer", "ResetSwitch"),
                Contains("private.kept-in-process ResetSwitch"));
}

TEST(HalCheckFaults, ASettingIsKeptInTheProcess)
{
    EXPECT_THAT(SwitchFault("keeps-led-mode-in-process"),
                ElementsAre("private.kept-in-process GetLEDConfig"));
}

TEST(HalCheckFaults, ASlotWritesPastThePrivateData)
{
    EXPECT_THAT(SwitchFault("writes-past-private-data", "SetMtuSize"),
                ElementsAre("private.overrun SetMtuSize"));
}

TEST(HalCheckFaults, ASlotOfAPhyWritesPastThePrivateData)
{
    EXPECT_THAT(PhyFault("writes-past-private-data", "Poll"), ElementsAre("private.overrun Poll"));
}

TEST(HalCheckFaults, ZeroPrivateDataCrashASlot)
{
    EXPECT_THAT(SwitchFault("crashes-with-zero-private-data", "ResetSwitch"),
                ElementsAre("private.zero-crashes ResetSwitch"));
}

TEST(HalCheckFaults, ASlotTakesTheLockThatItRunsUnder)
{
    EXPECT_THAT(SwitchFault("calls-the-api", "SetMtuSize"), ElementsAre("lock.reentry SetMtuSize"));
}

TEST(HalCheckFaults, ASlotOfAPhyTakesTheLockThatItRunsUnder)
{
    EXPECT_THAT(PhyFault("calls-the-api", "Poll"), ElementsAre("lock.reentry Poll"));
}

TEST(HalCheckFaults, APointerIsUsedInALaterCall)
{
    EXPECT_THAT(SwitchFault("keeps-link-pointer", "GetPortLink"),
                ElementsAre("pointer.kept GetPortLink"));
}

TEST(HalCheckFaults, TheCapabilitiesAreWrittenPastTheirEnd)
{
    EXPECT_THAT(SwitchFault("caps-too-long", "GetSwitchCaps"),
                Contains("buffer.overrun GetSwitchCaps"));
}

TEST(HalCheckFaults, TheLinkOfAPhyIsWrittenPastItsEnd)
{
    EXPECT_THAT(PhyFault("link-too-long", "GetLink"), Contains("buffer.overrun GetLink"));
}

TEST(HalCheckFaults, TheCountersAreLongerThanTheyAreSaidToBe)
{
    EXPECT_THAT(SwitchFault("counters-too-long", "GetPortCounters --counters-size 64"),
                ElementsAre("buffer.overrun GetPortCounters"));
}

TEST(HalCheckFaults, AByteBeforeTheBufferIsWritten)
{
    EXPECT_THAT(SwitchFault("writes-before-the-mode", "GetLEDConfig"),
                ElementsAre("buffer.underrun GetLEDConfig"));
}

TEST(HalCheckFaults, AnAddressThatMayOnlyBeReadIsWritten)
{
    EXPECT_THAT(SwitchFault("writes-to-the-address", "MapSetMacToVlan"),
                ElementsAre("buffer.const-written MapSetMacToVlan"));
}

TEST(HalCheckFaults, AResultIsNotWritten)
{
    EXPECT_THAT(SwitchFault("forgets-result", "GetEeePortState"),
                ElementsAre("result.not-filled GetEeePortState"));
}

TEST(HalCheckFaults, ASpeedIsNoSpeed)
{
    EXPECT_THAT(SwitchFault("unknown-speed", "GetPortLink"),
                ElementsAre("result.out-of-range GetPortLink"));
}

TEST(HalCheckFaults, AnotherModeIsReadThanWasSet)
{
    EXPECT_THAT(SwitchFault("stores-another-led-mode"),
                ElementsAre("result.read-back GetLEDConfig"));
}

TEST(HalCheckFaults, ThereAreNinePorts)
{
    EXPECT_THAT(SwitchFault("nine-ports", "GetSwitchCaps"),
                ElementsAre("caps.ports GetSwitchCaps"));
}

TEST(HalCheckFaults, AnInterfaceTypeIsUnknown)
{
    EXPECT_THAT(SwitchFault("unknown-interface-type", "GetSwitchCaps"),
                ElementsAre("caps.port-type GetSwitchCaps"));
}

TEST(HalCheckFaults, TheCapabilitiesChange)
{
    EXPECT_THAT(SwitchFault("caps-change", "GetSwitchCaps"),
                ElementsAre("caps.unstable GetSwitchCaps"));
}

TEST(HalCheckFaults, AFailureOfTheBusIsHidden)
{
    EXPECT_THAT(SwitchFault("hides-bus-failure", "GetPortLink"),
                ElementsAre("bus.failure-hidden GetPortLink"));
}

TEST(HalCheckFaults, AnUnknownPortCrashesASlot)
{
    EXPECT_THAT(SwitchFault("crashes-on-unknown-port", "EnablePort"),
                ElementsAre("range.crash EnablePort"));
}

TEST(HalCheckFaults, AnUnknownPortIsAccepted)
{
    EXPECT_THAT(SwitchFault("accepts-unknown-port", "DisablePort"),
                ElementsAre("range.port-accepted DisablePort"));
}

TEST(HalCheckFaults, NullParametersAreRead)
{
    EXPECT_THAT(SwitchFault("reads-null-parameters", "ResetSwitch"),
                ElementsAre("null.crash ResetSwitch"));
}

TEST(HalCheckFaults, ANullDuplexOfAPhyIsWritten)
{
    EXPECT_THAT(PhyFault("writes-null-duplex", "GetLink"), Contains("null.crash GetLink"));
}

TEST(HalCheckFaults, AnOrdinaryCallCrashes)
{
    EXPECT_THAT(SwitchFault("crashes", "SetMacAging"), Contains("slot.crash SetMacAging"));
}

TEST(HalCheckFaults, ASlotEndsTheProgram)
{
    EXPECT_THAT(SwitchFault("ends-the-program", "SetLanPortPcp"),
                ElementsAre("slot.exits SetLanPortPcp"));
}

TEST(HalCheckFaults, ASlotDoesNotReturn)
{
    EXPECT_THAT(SwitchFault("hangs", "PrintMachineState --patience 300"),
                ElementsAre("slot.hangs PrintMachineState"));
}

TEST(HalCheckFaults, ASlotHoldsTheLockForSeconds)
{
    EXPECT_THAT(SwitchFault("sleeps-for-seconds", "SetGlobWred"),
                ElementsAre("slot.too-slow SetGlobWred"));
}

TEST(HalCheckFaults, TheWalkLosesItsContext)
{
    EXPECT_THAT(SwitchFault("walk-loses-context", "ForEachMacEntry"),
                ElementsAre("walk.context ForEachMacEntry"));
}

TEST(HalCheckFaults, TheWalkDoesNotStop)
{
    EXPECT_THAT(SwitchFault("walk-never-stops", "ForEachMacEntry"),
                ElementsAre("walk.goes-on ForEachMacEntry"));
}

TEST(HalCheckFaults, TheWalkHandsOutNull)
{
    EXPECT_THAT(SwitchFault("walk-hands-out-null", "ForEachMacEntry"),
                ElementsAre("walk.null-entry ForEachMacEntry"));
}

TEST(HalCheckFaults, TheCallbackIsCalledAfterTheWalk)
{
    EXPECT_THAT(SwitchFault("calls-back-later"), Contains("walk.late-callback PrintMachineState"));
}

TEST(HalCheckFaults, AThreadIsLeft)
{
    EXPECT_THAT(SwitchFault("leaves-a-thread", "SetMtuSize"),
                ElementsAre("process.thread-left SetMtuSize"));
}

TEST(HalCheckFaults, EachCallLeavesADescriptor)
{
    EXPECT_THAT(SwitchFault("leaves-a-descriptor", "SetMtuSize"),
                ElementsAre("process.descriptor-leak SetMtuSize"));
}

TEST(HalCheckFaults, TheFileModeMaskIsChanged)
{
    EXPECT_THAT(SwitchFault("changes-the-mask", "SetMtuSize"),
                ElementsAre("process.changed SetMtuSize"));
}

TEST(HalCheckFaults, ASignalIsIgnored)
{
    EXPECT_THAT(SwitchFault("blocks-signals", "SetMtuSize"),
                ElementsAre("process.changed SetMtuSize"));
}
