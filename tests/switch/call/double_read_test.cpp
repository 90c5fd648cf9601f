// Somebody writes the region while it is read: what was checked is what must be used, wherever
// between two accesses the write falls.
#include "tests/support/changing_region.h"
#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

class DoubleRead : public SwitchTest {
protected:
    // The call, once for each access that it makes to the region, with the change right after that
    // access; the region is as it was before each.
    void ChangeAfterEachAccess(const std::function<void()>& change,
                               const std::function<void()>& call)
    {
        const SwitchDeviceRegion before = Region();
        int accesses = 1;
        for (int nth = 1; nth <= accesses; ++nth) {
            accesses = RunChangingAfter(nth, change, call);
            EXPECT_EQ(SemaphoreValue(), 1);
            Region() = before;
            transcript.Clear();
        }
        EXPECT_GT(accesses, 1);
    }
};

TEST_F(DoubleRead, OfTheCountNeverGivesOneThatCannotBe)
{
    Init();
    ChangeAfterEachAccess([] { Region().NumOfSwitches = 200; },
                          [] {
                              uint8_t count = 0;
                              ORBLINK_GetNumOfSwitches(&count);
                              EXPECT_LE(count, OB_MAX_SWITCHES);
                          });
}

TEST_F(DoubleRead, OfTheHalIndexNeverCallsThroughATableThatIsNotThere)
{
    Init();
    Record(0).config.state = OB_STATE_ENABLED;
    for (const int halIdx : {1, 2, 255})  // 1 has no table
        ChangeAfterEachAccess([halIdx] { Record(0).halIdx = static_cast<uint8_t>(halIdx); },
                              [] { ORBLINK_SetLEDConfig(0, 5); });
}

TEST_F(DoubleRead, OfTheHalIndexNeverLeavesThePrivateData)
{
    Init();
    auto* const first = static_cast<uint8_t*>(OBHAL_GetHalPrivData(0));
    ChangeAfterEachAccess([] { Record(0).halIdx = 200; },
                          [first] {
                              const auto* data = static_cast<uint8_t*>(OBHAL_GetHalPrivData(0));
                              EXPECT_TRUE(data == nullptr || data == first);
                              OBHAL_GetSwitchCount();  // one more access
                          });
}

TEST_F(DoubleRead, OfTheVendorParameterSizeNeverHandsOutMoreThanThereIs)
{
    Init();
    uint32_t handed = 0;
    platform.slots["ResetSwitch"] = [&handed](const SlotArgs& args) {
        handed = static_cast<uint32_t>(args[2]);
        return 7;  // the bring-up has done what matters here
    };
    ChangeAfterEachAccess([] { Region().vendor[0].vendorParamSize = 0x7FFFFFFF; },
                          [&handed] {
                              EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), -1);
                              EXPECT_LE(handed, 32U);
                          });
}

TEST_F(DoubleRead, OfTheNumberOfPortsNeverLetsAPortBeyondTheRecordPass)
{
    Init();
    Record(0).caps.numOfPorts = 2;
    ChangeAfterEachAccess([] { Record(0).caps.numOfPorts = 255; },
                          [] { EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 200, 5), -1); });
}

}  // namespace
