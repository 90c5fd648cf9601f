// Somebody writes the region while it is read: what was checked is what must be used, wherever
// between two accesses the write falls.
#include <cstring>

#include "tests/phy/phy_fixture.h"
#include "tests/support/changing_region.h"

using namespace obtest;

namespace {

class PhyDoubleRead : public PhyTest {
protected:
    // The call, once for each access that it makes to the region, with the change right after that
    // access; the region is as it was before each.
    void ChangeAfterEachAccess(const std::function<void()>& change,
                               const std::function<void()>& call)
    {
        PhyDeviceRegion before;
        memcpy(&before, &PhyRegion(), sizeof(before));
        int accesses = 1;
        for (int nth = 1; nth <= accesses; ++nth) {
            accesses = RunChangingAfter(nth, change, call);
            EXPECT_EQ(PhySemaphoreValue(), 1);
            memcpy(&PhyRegion(), &before, sizeof(before));
            transcript.Clear();
        }
        EXPECT_GE(accesses, 1);
    }
};

}  // namespace

TEST_F(PhyDoubleRead, OfTheCountNeverGivesOneThatCannotBe)
{
    Init();
    ChangeAfterEachAccess([] { PhyRegion().NumOfPhys = 200; },
                          [] {
                              uint8_t count = 0;
                              ETHPHY_GetNumOfPhys(&count);
                              EXPECT_LE(count, EP_MAX_PHYS);
                          });
}

TEST_F(PhyDoubleRead, OfTheHalIndexNeverCallsThroughATableThatIsNotThere)
{
    InitEnabled();
    for (const int halIdx : {1, 2, 255})  // 1 has no library
        ChangeAfterEachAccess(
            [halIdx] { PhyRegion().phy[0].halIdx = static_cast<uint8_t>(halIdx); },
            [] {
                ETHPHY_Poll(0);
                ETHPHY_SetEeeState(0, 1);
            });
}

TEST_F(PhyDoubleRead, OfTheHalIndexNeverLeavesThePrivateData)
{
    Init();
    auto* const first = static_cast<uint8_t*>(EPHAL_GetHalPrivData(0));
    ChangeAfterEachAccess([] { PhyRegion().phy[0].halIdx = 200; },
                          [first] {
                              const auto* data = static_cast<uint8_t*>(EPHAL_GetHalPrivData(0));
                              EXPECT_TRUE(data == nullptr || data == first);
                          });
}

TEST_F(PhyDoubleRead, OfTheLaneNeverLeavesTheNames)
{
    Init();
    ChangeAfterEachAccess([] { PhyRegion().phy[0].board.serdesId = 250; },
                          [this] {
                              const int result = EPHAL_SetInterfaceState(0, 1);
                              const Lines ran = transcript.Only({"sys system"});
                              EXPECT_EQ(ran.size(), result == 0 ? 1U : 0U);
                              for (const std::string& line : ran)
                                  EXPECT_EQ(line, "sys system(ifconfig nsgmii1 up)");
                          });
}
