// What holds for every switch operation, each row of the table in turn.
#include <cerrno>
#include <cstring>

#include "tests/switch/operations/operation.h"

using namespace obtest;
using testing::ElementsAreArray;

namespace {

class EveryOperation : public SwitchTest, public testing::WithParamInterface<Operation> {
protected:
    const Operation& operation = GetParam();

    // The switches as they are before each call.
    void Prepare(const SwitchBoard& board = SwitchBoard::With({{}}))
    {
        InitEnabled(board);
        for (int device = 0; device < board.count; ++device)
            if (operation.prepare != nullptr)
                operation.prepare(Record(device));
        memcpy(&before_, &Region(), sizeof(before_));
    }

    void Rewind()
    {
        memcpy(&Region(), &before_, sizeof(before_));
        transcript.Clear();
    }

    int Call(uint8_t device, uint8_t port) { return operation.call(device, port); }
    int Call() { return Call(0, operation.port); }

    // The region is as before the call but for what the operation stores in one record.
    void ExpectStored(bool stored, int device = 0)
    {
        SwitchDeviceRegion expected = before_;
        if (stored && operation.store != nullptr)
            operation.store(expected.device[device], operation.port);
        EXPECT_EQ(memcmp(&Region(), &expected, sizeof(expected)), 0) << "the region differs";
    }

    // No call leaves the semaphore taken or given twice.
    void TearDown() override { EXPECT_EQ(SemaphoreValue(), 1); }

private:
    SwitchDeviceRegion before_;
};

class EveryPortOperation : public EveryOperation {};
class EverySetter : public EveryOperation {};
class EveryHalOperation : public EveryOperation {};

TEST_P(EveryOperation, SendsItsArgumentsUnderTheSemaphoreAndStores)
{
    Prepare();
    std::vector<int> held;
    for (const auto& slot : SlotsOf(operation.steps))
        platform.slots[slot] = [&](const SlotArgs&) {
            held.push_back(SemaphoreValue());
            return 0;
        };
    EXPECT_EQ(Call(), 0);
    EXPECT_THAT(transcript.All(),
                ElementsAreArray(Spelling{operation}.Call(operation.steps, true)));
    EXPECT_EQ(held, std::vector<int>(SlotsOf(operation.steps).size(), 0));
    ExpectStored(true);
}

TEST_P(EveryOperation, ServesTheSecondSwitchThroughItsOwnLibrary)
{
    SwitchBoard::Entry second;
    second.halLibName = "liborblink_second.so";
    Prepare(SwitchBoard::With({{}, second}));
    EXPECT_EQ(Call(1, operation.port), 0);
    const Spelling spelling{.operation = operation, .device = 1, .library = 1};
    EXPECT_THAT(transcript.All(), ElementsAreArray(spelling.Call(operation.steps, true)));
    ExpectStored(true, 1);
}

TEST_P(EveryOperation, ReleasesNothingAfterAFailedProlog)
{
    Prepare();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(Call(), -1);
    EXPECT_THAT(transcript.All(), ElementsAreArray(Spelling{operation}.FailedProlog(EIDRM)));
    ExpectStored(false);
}

TEST_P(EveryOperation, RefusesADeviceThatIsNotThere)
{
    Prepare();
    for (const uint8_t device : {1, 2, 255}) {
        Rewind();
        EXPECT_EQ(Call(device, operation.port), -1);
        const Spelling spelling{.operation = operation, .device = device};
        EXPECT_THAT(transcript.All(), ElementsAreArray(spelling.Call(
                                          {"log1 Invalid device index, DevIdx={d}"}, false)));
        ExpectStored(false);
    }
}

TEST_P(EveryOperation, RefusesAnyDeviceWhileTheNumberOfSwitchesCannotBe)
{
    Prepare();
    Region().NumOfSwitches = 3;
    EXPECT_EQ(Call(), -1);
    EXPECT_EQ(transcript.Log(),
              (Lines{Spelling{operation}.Line("log1 Invalid device index, DevIdx={d}")}));
}

TEST_P(EveryOperation, OnASwitchThatIsNotEnabledFailsOrOnlyStores)
{
    Prepare();
    const Lines notEnabled = {"log1 Switch is not in enabled state, DevIdx={d}"};
    for (const uint32_t state : {0U, OB_STATE_RESET + 0U, 3U, 0x102U}) {
        Rewind();
        Record(0).config.state = state;
        EXPECT_EQ(Call(), operation.needsEnabled ? -1 : 0) << state;
        const Lines& steps = operation.needsEnabled ? notEnabled : operation.offline;
        EXPECT_THAT(transcript.All(),
                    ElementsAreArray(Spelling{operation}.Call(steps, !operation.needsEnabled)));
        EXPECT_EQ(Record(0).config.state, state);
        Record(0).config.state = OB_STATE_ENABLED;
        ExpectStored(!operation.needsEnabled);
    }
}

TEST_P(EveryPortOperation, RefusesAPortOutOfRange)
{
    Prepare();
    const int count = 6;
    for (const int port : {operation.ports.lowest - 1, count, count + 1, 8, 255}) {
        if (port < 0 || port > operation.ports.highestAsked)
            continue;
        Rewind();
        Record(0).caps.numOfPorts = count;
        EXPECT_EQ(Call(0, static_cast<uint8_t>(port)), -1) << port;
        const Spelling spelling{.operation = operation, .port = static_cast<uint8_t>(port)};
        EXPECT_THAT(transcript.All(),
                    ElementsAreArray(spelling.Call({"log1 " + operation.ports.invalid}, false)));
        Record(0).caps.numOfPorts = 8;
        ExpectStored(false);
    }
}

TEST_P(EveryPortOperation, TakesTheFirstAndTheLastPort)
{
    Prepare();
    for (const uint8_t port : {operation.ports.lowest, uint8_t{5}}) {
        Rewind();
        Record(0).caps.numOfPorts = 6;
        Call(0, port);
        EXPECT_FALSE(transcript.Has("Invalid ")) << Joined(transcript.All());
    }
}

TEST_P(EveryPortOperation, StopsAtEightPortsWhateverTheRecordSays)
{
    Prepare();
    if (operation.ports.highestAsked < 8)
        return;
    Record(0).caps.numOfPorts = 255;
    EXPECT_EQ(Call(0, 8), -1);
    const Spelling spelling{.operation = operation, .port = 8};
    EXPECT_EQ(transcript.Log(), (Lines{spelling.Line("log1 " + operation.ports.invalid)}));
}

TEST_P(EverySetter, DoesNothingForAValueThatIsStored)
{
    Prepare();
    for (const uint32_t state : {OB_STATE_ENABLED + 0U, 0U}) {
        Rewind();
        Record(0).config.state = state;
        ASSERT_EQ(Call(), 0);
        transcript.Clear();
        EXPECT_EQ(Call(), 0);
        EXPECT_THAT(transcript.All(),
                    ElementsAreArray(Spelling{operation}.Call({operation.already}, true)));
        Record(0).config.state = OB_STATE_ENABLED;
        ExpectStored(true);
    }
}

TEST_P(EveryHalOperation, FailsWhenASlotFails)
{
    Prepare();
    for (const SlotFailure& failure : operation.failures) {
        for (const int code : {7, 1, -1, -1000}) {
            Rewind();
            platform.FailSlot(failure.slot, code);
            EXPECT_EQ(Call(), -1) << failure.slot;
            platform.slots.erase(failure.slot);
            EXPECT_THAT(transcript.All(),
                        ElementsAreArray(Spelling{operation}.Call(failure.steps, false)));
        }
        ExpectStored(failure.stored);
    }
}

TEST_P(EveryHalOperation, FailsWhenASlotIsMissing)
{
    Prepare();
    for (const SlotFailure& failure : operation.failures) {
        Rewind();
        Lines steps;
        for (const auto& step : failure.steps)
            if (step.rfind("hal " + failure.slot + "(", 0) != 0)
                steps.push_back(step);
        if (!operation.absent.empty())
            steps = {operation.absent};
        const struct OBHAL_HalFuncs all = HalTable("a");
        TakeSlotAway(failure.slot);
        EXPECT_EQ(Call(), -1) << failure.slot;
        HalTable("a") = all;
        EXPECT_THAT(transcript.All(), ElementsAreArray(Spelling{operation}.Call(steps, false)));
        ExpectStored(failure.stored);
    }
}

TEST_P(EveryHalOperation, WithoutItsOptionalSlotStillServesASwitchThatIsNotEnabled)
{
    Prepare();
    if (operation.absent.empty())
        return;
    Record(0).config.state = OB_STATE_RESET;
    TakeSlotAway(operation.failures[0].slot);
    EXPECT_EQ(Call(), 0);
    EXPECT_THAT(transcript.All(),
                ElementsAreArray(Spelling{operation}.Call(operation.offline, true)));
}

INSTANTIATE_TEST_SUITE_P(Switch, EveryOperation, testing::ValuesIn(Operations()), NameOf);
INSTANTIATE_TEST_SUITE_P(Switch, EveryPortOperation,
                         testing::ValuesIn(OperationsWith([](const Operation& operation) {
                             return !operation.ports.invalid.empty();
                         })),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Switch, EverySetter,
                         testing::ValuesIn(OperationsWith([](const Operation& operation) {
                             return !operation.already.empty();
                         })),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Switch, EveryHalOperation,
                         testing::ValuesIn(OperationsWith([](const Operation& operation) {
                             return !operation.failures.empty();
                         })),
                         NameOf);

}  // namespace
