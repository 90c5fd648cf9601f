// What every operation does alike: prolog, device index, release.
#include <cerrno>
#include <cstring>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

uint8_t buffer[sizeof(SwitchDeviceRegion)];

struct Operation {
    const char* name;
    bool takesDevice;
    long failure;
    long (*call)(uint8_t devIdx);
};

const Operation kOperations[] = {
    {"ORBLINK_GetNumOfSwitches", false, -1,
     [](uint8_t) { return long{ORBLINK_GetNumOfSwitches(buffer)}; }},
    {"ORBLINK_GetSwitchDevices", false, -1,
     [](uint8_t) { return long{ORBLINK_GetSwitchDevices(buffer)}; }},
    {"ORBLINK_GetSwitchCaps", true, -1,
     [](uint8_t devIdx) { return long{ORBLINK_GetSwitchCaps(devIdx, buffer)}; }},
    {"ORBLINK_GetSwitchProvConfig", true, -1,
     [](uint8_t devIdx) { return long{ORBLINK_GetSwitchProvConfig(devIdx, buffer)}; }},
    {"ORBLINK_ResetDisable", true, -1,
     [](uint8_t devIdx) { return long{ORBLINK_ResetDisable(devIdx, 1, nullptr, 0)}; }},
    {"ORBLINK_ResetEnable", true, -1,
     [](uint8_t devIdx) { return long{ORBLINK_ResetEnable(devIdx)}; }},
    {"ORBLINK_SetOrbLinkServiceStatus", true, -1,
     [](uint8_t devIdx) { return long{ORBLINK_SetOrbLinkServiceStatus(devIdx, 5)}; }},
    {"ORBLINK_IsOrbLinkServiceOn", true, 0,
     [](uint8_t devIdx) { return static_cast<long>(ORBLINK_IsOrbLinkServiceOn(devIdx)); }},
};

std::string NameOf(const testing::TestParamInfo<Operation>& info)
{
    return std::string(info.param.name).substr(sizeof("ORBLINK_") - 1);
}

class Frame : public SwitchTest, public testing::WithParamInterface<Operation> {
protected:
    long Call(uint8_t devIdx = 0) { return GetParam().call(devIdx); }

    std::string PrologFailed()
    {
        return std::string("log1 ") + GetParam().name + ":# _ApiProlog() failed" +
               (GetParam().takesDevice ? ", DevIdx=0" : "");
    }
};

class DeviceFrame : public Frame {};

TEST_P(Frame, FailsBeforeInitialisation)
{
    EXPECT_EQ(Call(), GetParam().failure);
    EXPECT_LOGS("log1 _InitGlobalSem:# open() failed, errno=" + std::to_string(ENOENT),
                "log1 _ApiProlog:# _InitGlobalSem() failed", PrologFailed());
}

TEST_P(Frame, FailsWithoutReleasingWhenTheLockCannotBeTaken)
{
    Init();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(Call(), GetParam().failure);
    EXPECT_LOGS("log1 _System5SemOp:# semop() fail, errno=" + std::to_string(EIDRM),
                "log1 _ApiProlog:# _ApiGlobalLock() failed", PrologFailed());
    EXPECT_EQ(transcript.Only({"sys semop"}), (Lines{"sys semop(0, -1, UNDO)"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(Frame, FailsOnceReleasedWhenALibraryCannotBeLoaded)
{
    InitElsewhere();
    platform.Fail("dlopen", ENOENT);
    EXPECT_EQ(Call(), GetParam().failure);
    const Lines logs = transcript.Log();
    ASSERT_EQ(logs.size(), 3U);
    EXPECT_EQ(logs[1], "log1 _ApiProlog:# _LoadHals() failed");
    EXPECT_EQ(logs[2], PrologFailed());
    EXPECT_EQ(transcript.Only({"sys semop"}),
              (Lines{"sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(Frame, TakesTheLockOnceAndReleasesIt)
{
    Init();
    Call();
    EXPECT_EQ(transcript.Only({"sys semop"}),
              (Lines{"sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(Frame, IgnoresTheResultOfTheRelease)
{
    Init();
    platform.Fail("semop", EINVAL, 2);
    EXPECT_EQ(Call(), 0);
    EXPECT_TRUE(transcript.Has("log1 _System5SemOp:# semop() fail, errno="));
}

INSTANTIATE_TEST_SUITE_P(Of, Frame, testing::ValuesIn(kOperations), NameOf);

TEST_P(DeviceFrame, RefusesTheFirstIndexBeyondTheBoard)
{
    Init();
    const SwitchDeviceRegion before = Region();
    EXPECT_EQ(Call(1), GetParam().failure);
    EXPECT_LOGS(std::string("log1 ") + GetParam().name + ":# Invalid device index, DevIdx=1");
    EXPECT_THAT(transcript.Only({"hal", "sys fopen(/sys/dev"}), testing::IsEmpty());
    EXPECT_EQ(memcmp(&before, &Region(), sizeof(before)), 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(DeviceFrame, RefusesTheHighestIndex)
{
    Init(SwitchBoard::With({{}, {}}));
    EXPECT_EQ(Call(255), GetParam().failure);
    EXPECT_LOGS(std::string("log1 ") + GetParam().name + ":# Invalid device index, DevIdx=255");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(DeviceFrame, RefusesEveryIndexOnABoardWithoutSwitches)
{
    Init(SwitchBoard());
    EXPECT_EQ(Call(0), GetParam().failure);
    EXPECT_LOGS(std::string("log1 ") + GetParam().name + ":# Invalid device index, DevIdx=0");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_P(DeviceFrame, RefusesADeviceWhenTheRegionHoldsAnImpossibleCount)
{
    Init();
    for (int count : {3, 200, 255}) {
        transcript.Clear();
        Region().NumOfSwitches = static_cast<uint8_t>(count);
        EXPECT_EQ(Call(0), GetParam().failure);
        EXPECT_LOGS(std::string("log1 ") + GetParam().name + ":# Invalid device index, DevIdx=0");
        EXPECT_EQ(SemaphoreValue(), 1);
    }
}

TEST_P(DeviceFrame, FailsWhenTheRegionHoldsAnImpossibleHalIndex)
{
    Init();
    for (int halIdx : {2, 254, 255}) {
        transcript.Clear();
        Record(0).halIdx = static_cast<uint8_t>(halIdx);
        EXPECT_EQ(Call(0), GetParam().failure);
        EXPECT_TRUE(transcript.Has("log1 _ApiProlog:# _LoadHals() failed"));
        EXPECT_THAT(transcript.Only({"hal"}), testing::IsEmpty());
        EXPECT_EQ(SemaphoreValue(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, DeviceFrame,
                         testing::ValuesIn(std::begin(kOperations) + 2, std::end(kOperations)),
                         NameOf);

}  // namespace
