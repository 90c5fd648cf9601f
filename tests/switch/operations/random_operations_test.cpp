// Random operations on one switch against the model.
#include <cerrno>
#include <cstring>

#include "tests/switch/operations/operation.h"
#include "tests/switch/operations/random_calls.h"

using namespace obtest;

namespace {

constexpr int kOperations = 10000;

class RandomOperations : public SwitchTest {
protected:
    void SetUp() override
    {
        Init();
        model.emplace(Record(0));
        const auto answer = [this](const SlotArgs&) {
            return ++slotCalls == model->failingCall ? 7 : 0;
        };
        for (const auto& slot : SlotNames())
            platform.slots[slot] = answer;
    }

    // The circumstances of the next call: battery mode, a failing semaphore, a failing HAL call.
    void DrawCircumstances(CallSource& source)
    {
        if (source.OneIn(200))
            model->battery = !model->battery;
        platform.systemState.reset();
        if (model->battery)
            platform.systemState = "1\n";
        if (!model->semaphoreFails && source.OneIn(300)) {
            platform.Fail("semop", EINTR);
            model->semaphoreFails = true;
        }
        model->failingCall = source.OneIn(10) ? source.Draw(1, 4) : 0;
    }

    // Runs the call on both sides and compares all that can be seen.
    void Run(const RandomCall& call)
    {
        slotCalls = 0;
        transcript.Clear();
        const bool bringUp = call.text.rfind("ResetDisable", 0) == 0;
        if (bringUp)
            model->failingCall = 0;
        const int result = call.api();
        const Lines told = TakeCalls();
        ASSERT_EQ(result, model->Run(call.model));
        ASSERT_EQ(memcmp(&Record(0), &model->record, sizeof(SwitchDeviceRecord)), 0);
        if (!bringUp)
            ASSERT_EQ(told, model->calls);
        ASSERT_EQ(chip.Values(), model->chip.Values()) << Difference(chip, model->chip);
        ASSERT_EQ(SemaphoreValue(), 1);
        if (transcript.Has("semop() fail"))
            model->semaphoreFails = false;
    }

    // What the HAL was called with since the transcript was cleared; the chip takes it.
    Lines TakeCalls()
    {
        Lines calls;
        for (const auto& line : transcript.Only({"hal"})) {
            calls.push_back(line.substr(strlen("hal0 ")));
            if (static_cast<int>(calls.size()) != model->failingCall)
                chip.Take(calls.back());
        }
        return calls;
    }

    std::optional<SwitchModel> model;
    ToldChip chip;
    int slotCalls = 0;
};

// Several shorter walks, each with a seed and a time limit of its own.
class RandomWalk : public RandomOperations, public testing::WithParamInterface<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Of, RandomWalk, testing::Range(0U, 4U));

TEST_P(RandomWalk, LeavesRecordHalAndSemaphoreAsTheModelSays)
{
    const unsigned seed = TestSeed();
    CallSource source(seed, {});
    int broughtUp = 0;
    for (int i = 0; i < kOperations; ++i) {
        DrawCircumstances(source);
        const RandomCall call = source.Next();
        SCOPED_TRACE("ORBLINK_TEST_SEED=" + std::to_string(seed) + ", operation " +
                     std::to_string(i) + ": " + call.text);
        const bool enabled = model->Enabled();
        Run(call);
        if (HasFatalFailure())
            FAIL() << Joined(transcript.All());
        broughtUp += !enabled && model->Enabled() ? 1 : 0;
    }
    EXPECT_GT(broughtUp, kOperations / 1000);
}

TEST_F(RandomOperations, ThenAResetAndARestoreTellTheChipAllThatIsStored)
{
    const unsigned seed = TestSeed();
    CallSource source(seed, {});
    SCOPED_TRACE("ORBLINK_TEST_SEED=" + std::to_string(seed));
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 500; ++i) {
            const RandomCall call = source.Next();
            Run(call);
            ASSERT_FALSE(HasFatalFailure()) << call.text;
        }
        ASSERT_EQ(ORBLINK_ResetEnable(0), 0);
        transcript.Clear();
        ASSERT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
        TakeCalls();
        model->ResetEnable();
        model->ResetDisable(0);
        ASSERT_EQ(chip.Values(), BroughtUp(Record(0)).Values())
            << Difference(chip, BroughtUp(Record(0)));
    }
}

}  // namespace
