#include <cerrno>
#include <cstddef>
#include <cstring>

#include "tests/switch/call/other_process.h"

using namespace obtest;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class HalLoader : public SwitchTest {
protected:
    // One call that needs the HAL libraries.
    int Call()
    {
        transcript.Clear();
        uint8_t count = 0;
        return ORBLINK_GetNumOfSwitches(&count);
    }

    void SetLibraryName(int device, const std::string& name)
    {
        memset(Record(device).board.halLibName, 0, 32);
        memcpy(Record(device).board.halLibName, name.data(), name.size());
    }
};

TEST_F(HalLoader, FailingDlopenNamesTheLibraryTheErrorAndTheReason)
{
    InitElsewhere();
    SetLibraryName(0, "libnowhere.so");
    EXPECT_EQ(Call(), -1);
    const Lines logs = transcript.Log();
    ASSERT_EQ(logs.size(), 3U);
    EXPECT_THAT(logs[0], StartsWith("log1 _LoadHals:# dlopen failed, so='libnowhere.so', errno="));
    EXPECT_THAT(logs[0], HasSubstr("libnowhere.so: cannot open shared object file"));
    EXPECT_THAT(logs[0], testing::EndsWith(". Check SDK compilation options."));
    EXPECT_EQ(logs[1], "log1 _ApiProlog:# _LoadHals() failed");
    EXPECT_EQ(logs[2], "log1 ORBLINK_GetNumOfSwitches:# _ApiProlog() failed");
    EXPECT_THAT(transcript.Formats(),
                testing::Contains("%s:%d dlopen failed, so='%s', errno=%d, %s. Check SDK "
                                  "compilation options."));
    EXPECT_EQ(transcript.All()[transcript.All().size() - 2], "sys semop(0, +1, UNDO)");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(HalLoader, ALibraryWithoutTheTableFailsEveryCallAndIsTriedEachTime)
{
    InitElsewhere();
    SetLibraryName(0, "libnohal.so");
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(Call(), -1);
        const Lines logs = transcript.Log();
        ASSERT_EQ(logs.size(), 3U);
        EXPECT_THAT(logs[0], StartsWith("log1 _LoadHals:# dlsym failed, sym='OBHAL_HalFuncs', "
                                        "errno="));
        EXPECT_THAT(logs[0], HasSubstr("undefined symbol: OBHAL_HalFuncs"));
        EXPECT_THAT(transcript.Formats(),
                    testing::Contains("%s:%d dlsym failed, sym='%s', errno=%d. %s"));
        EXPECT_EQ(logs[1], "log1 _ApiProlog:# _LoadHals() failed");
        EXPECT_EQ(transcript.Only({"sys dlopen"}), (Lines{"sys dlopen(libnohal.so, RTLD_NOW)"}));
        EXPECT_EQ(SemaphoreValue(), 1);
    }
}

TEST_F(HalLoader, TriesAFailedLibraryAgainOnTheNextCall)
{
    InitElsewhere();
    platform.Fail("dlopen", ENOENT);
    EXPECT_EQ(Call(), -1);
    EXPECT_EQ(Call(), 0);
    EXPECT_EQ(transcript.Only({"sys dlopen"}),
              (Lines{"sys dlopen(liborblink_velmar.so, RTLD_NOW)"}));
    EXPECT_EQ(Call(), 0);
    EXPECT_THAT(transcript.Only({"sys dlopen"}), testing::IsEmpty());
}

TEST_F(HalLoader, KeepsTheFirstLibraryWhenTheSecondFails)
{
    InitElsewhere(SwitchBoard::With({{}, {.halLibName = "liborblink_second.so"}}));
    platform.Fail("dlopen", ENOENT, 2);
    EXPECT_EQ(Call(), -1);
    EXPECT_EQ(Call(), 0);
    EXPECT_EQ(transcript.Only({"sys dlopen"}),
              (Lines{"sys dlopen(liborblink_second.so, RTLD_NOW)"}));
}

TEST_F(HalLoader, ReadsAtMost32CharactersOfAName)
{
    const std::string name(32, 'n');
    InitElsewhere(SwitchBoard::With({{}}));
    SetLibraryName(0, name);
    Record(0).halIdx = 0;
    EXPECT_EQ(Call(), -1);
    EXPECT_EQ(transcript.Only({"sys dlopen"}), (Lines{"sys dlopen(" + name + ", RTLD_NOW)"}));
    EXPECT_THAT(transcript.Log()[0],
                StartsWith("log1 _LoadHals:# dlopen failed, so='" + name + "', errno="));
}

TEST_F(HalLoader, LoadsALibraryWhoseNameFillsTheField)
{
    const std::string name(32, 'n');
    platform.libraries[name] = "a";
    Init(SwitchBoard::With({{.halLibName = name}}));
    EXPECT_EQ(Record(0).halIdx, 0);
    EXPECT_EQ(Record(0).rxResetAfterSerdes, 0U);
}

TEST_F(HalLoader, DoesNotHandAnEmptyNameToDlopen)
{
    platform.mailbox.push_back(SwitchBoard::With({{.halLibName = ""}}).Message());
    EXPECT_EQ(ORBLINK_InitOnce(1), -1);
    EXPECT_THAT(transcript.Only({"sys dlopen"}), testing::IsEmpty());
    EXPECT_TRUE(transcript.Has("log1 _LoadHals:# dlopen failed, so='', errno="));
    EXPECT_TRUE(transcript.Has("log1 ORBLINK_InitOnce:# _LoadHals() failed"));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(HalLoader, TwoSwitchesOnOneLibraryBothUseItsTable)
{
    Init(SwitchBoard::With({{}, {}}));
    EXPECT_EQ(ORBLINK_ResetDisable(1, 1, nullptr, 0), 0);
    EXPECT_THAT(transcript.Only({"hal1"}), testing::IsEmpty());
    EXPECT_TRUE(transcript.Has("hal0 ResetSwitch(1, "));
}

TEST_F(HalLoader, TwoSwitchesOnTwoLibrariesUseTheirOwnTables)
{
    Init(SwitchBoard::With({{}, {.halLibName = "liborblink_second.so"}}));
    EXPECT_EQ(ORBLINK_ResetDisable(1, 1, nullptr, 0), 0);
    EXPECT_THAT(transcript.Only({"hal0"}), testing::IsEmpty());
    EXPECT_TRUE(transcript.Has("hal1 ResetSwitch(1, "));
    transcript.Clear();
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_THAT(transcript.Only({"hal1"}), testing::IsEmpty());
    EXPECT_TRUE(transcript.Has("hal0 ResetSwitch(0, "));
}

TEST_F(HalLoader, ASwitchWhoseIndexNamesNoLoadedTableFailsWithoutACrash)
{
    Init();
    Record(0).halIdx = 1;
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), -1);
    EXPECT_EQ(transcript.Only({"log1"}),
              (Lines{"log1 ORBLINK_ResetDisable:# Switch pre reset failed"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST(HalTableLayout, HasTheSlotsInTheOrderThatHalLibrariesAreBuiltWith)
{
    using Table = struct OBHAL_HalFuncs;
    const size_t offsets[] = {offsetof(Table, Init),
                              offsetof(Table, ResetSwitch),
                              offsetof(Table, GetSwitchCaps),
                              offsetof(Table, ForEachMacEntry),
                              offsetof(Table, EnableProviderBridgedMode),
                              offsetof(Table, DisableProviderBridgedMode),
                              offsetof(Table, SetLanPortVlan),
                              offsetof(Table, SetLanPortEgressTagging),
                              offsetof(Table, SetLanPortGroupId),
                              offsetof(Table, SetLanPortPcp),
                              offsetof(Table, GetPortCounters),
                              offsetof(Table, ResetPortCounters),
                              offsetof(Table, GetPortLink),
                              offsetof(Table, SetPhyPortSpeedDuplex),
                              offsetof(Table, EnablePort),
                              offsetof(Table, DisablePort),
                              offsetof(Table, EnableRgmiiDelay),
                              offsetof(Table, DisableRgmiiDelay),
                              offsetof(Table, EnableIgmpSnooping),
                              offsetof(Table, DisableIgmpSnooping),
                              offsetof(Table, EnablePhyPortEee),
                              offsetof(Table, DisablePhyPortEee),
                              offsetof(Table, SetPortMirror),
                              offsetof(Table, ReadPortReg),
                              offsetof(Table, WritePortReg),
                              offsetof(Table, VendorSpecificIoctl),
                              offsetof(Table, PrintMachineState),
                              offsetof(Table, SetQWred),
                              offsetof(Table, SetGlobWred),
                              offsetof(Table, SetQRsrv),
                              offsetof(Table, SetPortFc),
                              offsetof(Table, SetPhyPortDvt),
                              offsetof(Table, SetMacAging),
                              offsetof(Table, GetEeePortState),
                              offsetof(Table, SetMtuSize),
                              offsetof(Table, MapSetMacToVlan),
                              offsetof(Table, SmiRead),
                              offsetof(Table, SmiWrite),
                              offsetof(Table, GetPortTestMode),
                              offsetof(Table, SetPortTestMode),
                              offsetof(Table, GetLEDConfig),
                              offsetof(Table, SetLEDConfig)};
    for (size_t slot = 0; slot < 42; ++slot)
        EXPECT_EQ(offsets[slot], slot * sizeof(void*)) << slot;
    EXPECT_EQ(sizeof(Table), 42 * sizeof(void*));
}

}  // namespace
