#include <cerrno>
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

class InitOnce : public SwitchTest {
protected:
    InitOnce()
    {
        platform.slots["Init"] = [this](const SlotArgs& args) { return OnInit(args); };
    }

    int Run(const SwitchBoard& board, uint32_t arg)
    {
        platform.mailbox.push_back(board.Message());
        return ORBLINK_InitOnce(arg);
    }

    // The private data that each Init was given, as an offset into the region.
    std::vector<long> privateData;

private:
    int OnInit(const SlotArgs& args)
    {
        // Seen through this process's other mapping: mark the byte, then look for it.
        auto* given = reinterpret_cast<uint8_t*>(args[0]);
        *given = 0xA5;
        const auto* bytes = reinterpret_cast<const uint8_t*>(&Region());
        for (long offset = 1937; offset < 5740; ++offset)
            if (bytes[offset] == 0xA5)
                privateData.push_back(offset);
        *given = 0;
        return 0;
    }
};

SwitchBoard TwoSwitches(const std::string& first, const std::string& second)
{
    SwitchBoard::Entry entries[2];
    entries[0].halLibName = first;
    entries[1].halLibName = second;
    return SwitchBoard::With({entries[0], entries[1]});
}

TEST_F(InitOnce, RunsEveryStepInOrderUnderTheNewSemaphore)
{
    ASSERT_EQ(Run(SwitchBoard::With({{}}), 1), 0);
    Lines steps = transcript.Only({"sys", "hal", "log"});
    // What the board data receiver prints of the entry is its own tests' matter.
    std::erase_if(steps, [](const auto& line) {
        return line.find("ParseBsd") != std::string::npos ||
               line.find("Board-specific data") != std::string::npos;
    });
    EXPECT_EQ(steps, (Lines{"sys open(/var/tmp/orblink_sem, O_RDWR|O_CREAT, 600)",
                            "sys close()",
                            "sys ftok(/var/tmp/orblink_sem, 97)",
                            "sys semget(1, 0x7FF)",
                            "sys semop(0, +1, 0)",
                            "sys semop(0, -1, UNDO)",
                            "sys shm_open(/obos_orblink_driver, O_RDWR|O_CREAT, 666)",
                            "sys ftruncate(5740)",
                            "sys close()",
                            "log9 _InitSwitchDevices:# OBOS_CreateSwitchDevices() Done",
                            "sys shm_open(/obos_orblink_driver, O_RDWR, 666)",
                            "sys mmap(5740, 3, 1)",
                            "log9 _InitSwitchDevices:# OBOS_MapSwitchDevices() Done",
                            "log9 OBOS_InitHwSpecificData:# --->",
                            "log3 OBOS_InitHwSpecificData:# Waiting for LAN BSD from ARM",
                            "sys socket(43, 1, 0)",
                            "sys bind(16)",
                            "sys recv(4096, MSG_TRUNC)",
                            "sys send(8, 0)",
                            "sys close()",
                            "log3 OBOS_InitHwSpecificData:# Received LAN BSD from ARM",
                            "log3 OBOS_InitBsdFromIni:# OBOS_InitBsdFromIni NOT IMPLEMETED",
                            "log9 OBOS_InitHwSpecificData:# OBOS_InitBsdFromIni() done! "
                            "NumOfSwitchDevices=0",
                            "log9 OBOS_InitHwSpecificData:# <---",
                            "sys dlopen(liborblink_velmar.so, RTLD_NOW)",
                            "hal0 Init(ptr)",
                            "log1 ORBLINK_InitOnce:# Calling GetSwitchCaps() , DevIdx=0",
                            "hal0 GetSwitchCaps(0, ptr)",
                            "log1 ORBLINK_InitOnce:# Return GetSwitchCaps() , DevIdx=0",
                            "sys semop(0, +1, UNDO)"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(InitOnce, HoldsTheSemaphoreWhileTheHalsAreInitialised)
{
    int during = -1;
    platform.slots["Init"] = [&](const SlotArgs&) {
        during = SemaphoreValue();
        return 0;
    };
    ASSERT_EQ(Run(SwitchBoard::With({{}}), 0), 0);
    EXPECT_EQ(during, 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(InitOnce, ASecondOneFailsAndLeavesTheRegionUntouched)
{
    Init();
    Record(0).config.mtuSize = 1234;
    EXPECT_EQ(ORBLINK_InitOnce(1), -1);
    EXPECT_LOGS("log1 _CreateGlobalSem:# semget() failed, cannot create sem, errno=" +
                    std::to_string(EEXIST),
                "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed");
    EXPECT_EQ(Record(0).config.mtuSize, 1234);
    EXPECT_EQ(SemaphoreValue(), 1);
    uint8_t count = 0;
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(&count), 0);
    EXPECT_EQ(count, 1);
}

TEST_F(InitOnce, ZeroesARegionThatItFinds)
{
    ASSERT_EQ(OBOS_CreateSwitchDevices(), 0);
    memset(&Region(), 0xEE, sizeof(SwitchDeviceRegion));
    ASSERT_EQ(Run(SwitchBoard(), 1), 0);
    SwitchDeviceRegion expected = {};
    expected.device[0].halIdx = 255;
    expected.device[1].halIdx = 255;
    expected.vendor[0].vendorParamSize = 8;
    EXPECT_EQ(memcmp(&Region(), &expected, sizeof(expected)), 0);
}

TEST_F(InitOnce, WithZeroSwitchesSucceedsAndLoadsNothing)
{
    ASSERT_EQ(Run(SwitchBoard(), 1), 0);
    EXPECT_THAT(transcript.Only({"hal", "sys dlopen"}), testing::IsEmpty());
    EXPECT_EQ(transcript.All().back(), "sys semop(0, +1, UNDO)");
    EXPECT_EQ(Region().NumOfSwitches, 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(InitOnce, WithoutABoardDataMessageSucceedsWithZeroSwitches)
{
    platform.FailEach("socket", EAFNOSUPPORT);
    EXPECT_EQ(ORBLINK_InitOnce(1), 0);
    EXPECT_EQ(Region().NumOfSwitches, 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(InitOnce, CopiesTheBoardEntriesWhole)
{
    SwitchBoard::Entry entry;
    entry.serdesId = 0x01020304;
    entry.enableGpioPin = 18;
    entry.preResetArg = 0xA1B2C3D4;
    entry.reservedWord = 0x55667788;
    ASSERT_EQ(Run(SwitchBoard::With({entry}), 0), 0);
    const SwitchBoardEntry& board = Record(0).board;
    EXPECT_EQ(Record(0).bsdValid, 1);
    EXPECT_STREQ(board.halLibName, "liborblink_velmar.so");
    EXPECT_EQ(board.serdesId, 0x01020304U);
    EXPECT_EQ(board.enableGpioPin, 18U);
    EXPECT_EQ(board.resetGpioPin, 19U);
    EXPECT_EQ(board.mdioAddr, 16);
    EXPECT_EQ(board.mdioBus, 1);
    EXPECT_EQ(board.internalPortIfaceSpeed, 5U);
    EXPECT_EQ(board.internalPortIfaceMode, 6U);
    EXPECT_EQ(board.preResetArg, 0xA1B2C3D4U);
    EXPECT_EQ(board.reservedWord, 0x55667788U);
    EXPECT_EQ(Record(1).bsdValid, 0);
    EXPECT_EQ(Record(1).halIdx, 255);
}

TEST_F(InitOnce, SwitchesThatNameOneLibraryShareItsIndexTableAndInit)
{
    ASSERT_EQ(Run(TwoSwitches("liborblink_velmar.so", "liborblink_velmar.so"), 0), 0);
    EXPECT_EQ(Record(0).halIdx, 0);
    EXPECT_EQ(Record(1).halIdx, 0);
    EXPECT_EQ(transcript.Only({"hal", "sys dlopen"}),
              (Lines{"sys dlopen(liborblink_velmar.so, RTLD_NOW)", "hal0 Init(ptr)"}));
    EXPECT_THAT(privateData, ElementsAre(1937));
}

TEST_F(InitOnce, SwitchesThatNameTwoLibrariesGetAnIndexEach)
{
    ASSERT_EQ(Run(TwoSwitches("liborblink_velmar.so", "liborblink_second.so"), 0), 0);
    EXPECT_EQ(Record(0).halIdx, 0);
    EXPECT_EQ(Record(1).halIdx, 1);
    EXPECT_EQ(
        transcript.Only({"hal", "sys dlopen"}),
        (Lines{"sys dlopen(liborblink_velmar.so, RTLD_NOW)",
               "sys dlopen(liborblink_second.so, RTLD_NOW)", "hal0 Init(ptr)", "hal1 Init(ptr)"}));
    EXPECT_THAT(privateData, ElementsAre(1937, 3837));
}

TEST_F(InitOnce, ComparesLibraryNamesOverAll32Bytes)
{
    const std::string longName(31, 'x');
    platform.libraries[longName + "1"] = "a";
    platform.libraries[longName + "2"] = "b";
    ASSERT_EQ(Run(TwoSwitches(longName + "1", longName + "2"), 0), 0);
    EXPECT_EQ(Record(1).halIdx, 1);
}

TEST_F(InitOnce, NamesThatDifferOnlyBehindTheirNulShareALibrary)
{
    const std::string name = "liborblink_velmar.so";
    ASSERT_EQ(Run(TwoSwitches(name, name + '\0' + "rest"), 0), 0);
    EXPECT_EQ(Record(1).halIdx, 0);
}

struct RxResetCase {
    const char* name;
    std::string first, second;
    uint32_t firstMark, secondMark;
};

class InitOnceRxReset : public InitOnce, public testing::WithParamInterface<RxResetCase> {};

TEST_P(InitOnceRxReset, IsMarkedForTheDefaultLibraryOnly)
{
    for (const auto& name : {GetParam().first, GetParam().second})
        platform.libraries.insert({name, "b"});
    const SwitchBoard::Entry first{.halLibName = GetParam().first};
    const SwitchBoard::Entry second{.halLibName = GetParam().second};
    ASSERT_EQ(Run(GetParam().second.empty() ? SwitchBoard::With({first})
                                            : SwitchBoard::With({first, second}),
                  0),
              0);
    EXPECT_EQ(Record(0).rxResetAfterSerdes, GetParam().firstMark);
    EXPECT_EQ(Record(1).rxResetAfterSerdes, GetParam().secondMark);
}

INSTANTIATE_TEST_SUITE_P(Names, InitOnceRxReset,
                         testing::ValuesIn(std::vector<RxResetCase>{
                             {"Default", "liborblink_velmar.so", "", 1, 0},
                             {"Other", "liborblink_second.so", "", 0, 0},
                             {"LongerName", "liborblink_velmar.so.1", "", 0, 0},
                             {"ShorterName", "liborblink_velmar.s", "", 0, 0},
                             {"Both", "liborblink_velmar.so", "liborblink_velmar.so", 1, 1},
                             {"FirstOnly", "liborblink_velmar.so", "liborblink_second.so", 1, 0},
                             {"SecondOnly", "liborblink_second.so", "liborblink_velmar.so", 0, 1}}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
