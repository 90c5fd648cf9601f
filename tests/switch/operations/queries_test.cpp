#include <cerrno>
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;
using testing::Each;

namespace {

const char* const kCopyError = "Runtime-constraint violation error in function kova_memcpy_s";

class Queries : public SwitchTest {
protected:
    // A buffer with a guard byte behind the part that a call may write.
    template <size_t Size>
    struct Guarded {
        Guarded() { memset(bytes, 0xDD, sizeof(bytes)); }
        uint8_t bytes[Size + 1];
        bool Untouched() const
        {
            return std::all_of(bytes, bytes + Size + 1, [](uint8_t b) { return b == 0xDD; });
        }
    };
};

class GetNumOfSwitches : public Queries, public testing::WithParamInterface<int> {};

TEST_P(GetNumOfSwitches, WritesTheCountOfTheBoard)
{
    Init(SwitchBoard::With(std::vector<SwitchBoard::Entry>(static_cast<size_t>(GetParam()))));
    Guarded<1> out;
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(out.bytes), 0);
    EXPECT_EQ(out.bytes[0], GetParam());
    EXPECT_EQ(out.bytes[1], 0xDD);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetNumOfSwitches:# ", "sys semop(0, -1, UNDO)",
                      "sys semop(0, +1, UNDO)");
    EXPECT_EQ(transcript.Formats().front(), "%s:%d ");
}

INSTANTIATE_TEST_SUITE_P(Boards, GetNumOfSwitches, testing::Values(0, 1, 2),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_F(Queries, NumOfSwitchesRefusesANullPointerWithTheLockFree)
{
    Init();
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(nullptr), -1);
    ASSERT_EQ(transcript.Log().size(), 1U);
    EXPECT_THAT(transcript.Log()[0], testing::StartsWith("log1 ORBLINK_GetNumOfSwitches:# "));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Queries, NumOfSwitchesRefusesACountThatCannotBe)
{
    Init();
    Region().NumOfSwitches = 3;
    uint8_t out = 0xDD;
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(&out), -1);
    EXPECT_EQ(out, 0xDD);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Queries, CapsAreTheWholeBlockOfTheRightSwitch)
{
    platform.slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        memset(reinterpret_cast<void*>(args[1]), args[0] == 0 ? 0x11 : 0x22, 104);
        return 0;
    };
    Init(SwitchBoard::With({{}, {}}));
    Guarded<104> out;
    EXPECT_EQ(ORBLINK_GetSwitchCaps(1, out.bytes), 0);
    EXPECT_THAT(std::vector<uint8_t>(out.bytes, out.bytes + 104), Each(0x22));
    EXPECT_EQ(out.bytes[104], 0xDD);
    EXPECT_TRANSCRIPT("sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)");
}

class CapsInState : public Queries, public testing::WithParamInterface<uint32_t> {};

TEST_P(CapsInState, CanBeRead)
{
    Init();
    Record(0).config.state = GetParam();
    SwitchCaps caps = {};
    EXPECT_EQ(ORBLINK_GetSwitchCaps(0, &caps), 0);
    EXPECT_EQ(caps.numOfPorts, 8);
    EXPECT_EQ(caps.port[1].portHasPhy, 1U);
}

INSTANTIATE_TEST_SUITE_P(States, CapsInState, testing::Values(0, 1, 2, 77),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_F(Queries, CapsAreNotValidUntilTheyHaveBeenRead)
{
    Init(SwitchBoard::With({{}}), 0);
    Guarded<104> out;
    EXPECT_EQ(ORBLINK_GetSwitchCaps(0, out.bytes), -1);
    EXPECT_LOGS("log1 ORBLINK_GetSwitchCaps:# Switch capabilities are not valid, DevIdx=0");
    EXPECT_TRUE(out.Untouched());
    EXPECT_EQ(SemaphoreValue(), 1);

    ASSERT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(ORBLINK_GetSwitchCaps(0, out.bytes), 0);
}

TEST_F(Queries, ProvConfigIsTheWholeConfigurationOfTheRightSwitch)
{
    Init(SwitchBoard::With({{}, {}}));
    memset(&Record(1).config, 0x33, 732);
    Guarded<732> out;
    EXPECT_EQ(ORBLINK_GetSwitchProvConfig(1, out.bytes), 0);
    EXPECT_THAT(std::vector<uint8_t>(out.bytes, out.bytes + 732), Each(0x33));
    EXPECT_EQ(out.bytes[732], 0xDD);
    EXPECT_EQ(ORBLINK_GetSwitchProvConfig(0, out.bytes), 0);
    EXPECT_EQ(memcmp(out.bytes, reinterpret_cast<uint8_t*>(&Region()) + 112, 732), 0);
}

TEST_F(Queries, ProvConfigOfASwitchThatWasNotProvisionedFails)
{
    Init(SwitchBoard::With({{}}), 0);
    Guarded<732> out;
    EXPECT_EQ(ORBLINK_GetSwitchProvConfig(0, out.bytes), -1);
    EXPECT_LOGS("log1 ORBLINK_GetSwitchProvConfig:# Switch was not provisioned, DevIdx=0");
    EXPECT_TRUE(out.Untouched());
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Queries, ProvConfigIsRefusedInBatteryModeWithoutTakingTheLock)
{
    Init();
    platform.systemState = "1";
    Guarded<732> out;
    EXPECT_EQ(ORBLINK_GetSwitchProvConfig(0, out.bytes), -1);
    EXPECT_TRANSCRIPT(
        "sys fopen(/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state, r)",
        "log9 ORBLINK_GetSwitchProvConfig:# Modem in battery mode - skipping GetSwitchProvConfig "
        "0");
    EXPECT_TRUE(out.Untouched());
}

TEST_F(Queries, DevicesIsTheWholeRegionByteForByte)
{
    Init(SwitchBoard::With({{}, {}}));
    for (size_t i = 0; i < sizeof(Region().halPrivData[1]); ++i)
        Region().halPrivData[1][i] = static_cast<uint8_t>(i);
    Region().unused[2] = 0x99;
    Guarded<5740> out;
    EXPECT_EQ(ORBLINK_GetSwitchDevices(out.bytes), 0);
    EXPECT_EQ(memcmp(out.bytes, &Region(), 5740), 0);
    EXPECT_EQ(out.bytes[5740], 0xDD);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetSwitchDevices:# ", "sys semop(0, -1, UNDO)",
                      "sys semop(0, +1, UNDO)");
}

struct Copy {
    const char* name;
    int (*call)(void* out);
};

class FailingCopy : public Queries, public testing::WithParamInterface<Copy> {
protected:
    std::string Expected()
    {
        return "log1 ORBLINK_" + std::string(GetParam().name) + ":# " + kCopyError;
    }
};

TEST_P(FailingCopy, IsLoggedAndLeavesTheLockFree)
{
    Init();
    uint8_t out[5740];
    platform.Fail("kova_memcpy_s", 0, 1, 22);
    EXPECT_EQ(GetParam().call(out), -1);
    EXPECT_LOGS(Expected());
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(FailingCopy, IsWhatANullPointerGives)
{
    Init();
    EXPECT_EQ(GetParam().call(nullptr), -1);
    EXPECT_LOGS(Expected());
    EXPECT_EQ(SemaphoreValue(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Of, FailingCopy,
    testing::ValuesIn(std::vector<Copy>{
        {"GetSwitchCaps", [](void* out) { return ORBLINK_GetSwitchCaps(0, out); }},
        {"GetSwitchProvConfig", [](void* out) { return ORBLINK_GetSwitchProvConfig(0, out); }},
        {"GetSwitchDevices", [](void* out) { return ORBLINK_GetSwitchDevices(out); }}}),
    [](const auto& info) { return info.param.name; });

class IsolationMode : public Queries {
protected:
    uint32_t out = 0xDD;
};

TEST_F(IsolationMode, IsReadFromACopyOfTheRegion)
{
    SwitchBoard board = SwitchBoard::With({{}});
    board.portIsolation = 1;
    Init(board);
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(0, &out), 0);
    EXPECT_EQ(out, 1U);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetSwitchDevices:# ", "sys semop(0, -1, UNDO)",
                      "sys semop(0, +1, UNDO)",
                      "log9 ORBLINK_GetIsolationModeEnabled:# Port Isolation Enabled 1");
}

TEST_F(IsolationMode, IsOneForAnyFlagButZero)
{
    Init();
    for (const auto& [flag, expected] : std::vector<std::pair<uint32_t, uint32_t>>{
             {0, 0}, {1, 1}, {2, 1}, {0x100, 1}, {0x80000000, 1}}) {
        memcpy(Region().vendor[0].vendorParams, &flag, sizeof(flag));
        EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(0, &out), 0);
        EXPECT_EQ(out, expected) << flag;
    }
}

TEST_F(IsolationMode, LooksAtTheFirstWordOnly)
{
    Init();
    Region().vendor[0].vendorParams[4] = 1;
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(0, &out), 0);
    EXPECT_EQ(out, 0U);
}

TEST_F(IsolationMode, IsReadFromTheSwitchsOwnRecord)
{
    Init(SwitchBoard::With({{}, {}}));
    Region().vendor[0].vendorParams[0] = 0;
    Region().vendor[1].vendorParamSize = 8;
    Region().vendor[1].vendorParams[0] = 1;
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(0, &out), 0);
    EXPECT_EQ(out, 0U);
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(1, &out), 0);
    EXPECT_EQ(out, 1U);
}

TEST_F(IsolationMode, NeedsAPointer)
{
    Init();
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(9, nullptr), -1);
    EXPECT_TRANSCRIPT("log1 ORBLINK_GetIsolationModeEnabled:# Illegal params");
}

TEST_F(IsolationMode, BoundsTheDeviceByTheCapacityAndNotByTheBoard)
{
    Init();
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(2, &out), -1);
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(255, &out), -1);
    EXPECT_TRANSCRIPT("log1 ORBLINK_GetIsolationModeEnabled:# Illegal DevIdx 2!",
                      "log1 ORBLINK_GetIsolationModeEnabled:# Illegal DevIdx 255!");
    transcript.Clear();
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(1, &out), -1);
    EXPECT_LOGS("log1 ORBLINK_GetIsolationModeEnabled:# Illegal saved configuration");
    EXPECT_EQ(out, 0xDDU);
}

TEST_F(IsolationMode, NeedsARecordOfExactlyEightBytes)
{
    Init(SwitchBoard::With({{}, {}}));
    for (uint32_t size : {0U, 7U, 9U, 32U, 0x108U}) {
        transcript.Clear();
        Region().vendor[1].vendorParamSize = size;
        EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(1, &out), -1);
        EXPECT_LOGS("log1 ORBLINK_GetIsolationModeEnabled:# Illegal saved configuration");
    }
    Region().vendor[1].vendorParamSize = 8;
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(1, &out), 0);
}

TEST_F(IsolationMode, FailsWithoutSharedMemory)
{
    EXPECT_EQ(ORBLINK_GetIsolationModeEnabled(0, &out), -1);
    EXPECT_LOGS("log1 _InitGlobalSem:# open() failed, errno=" + std::to_string(ENOENT),
                "log1 _ApiProlog:# _InitGlobalSem() failed",
                "log1 ORBLINK_GetSwitchDevices:# _ApiProlog() failed",
                "log1 ORBLINK_GetIsolationModeEnabled:# Failed to access shared memory");
}

}  // namespace
