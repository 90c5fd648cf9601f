// The EPHAL_ services that read and write the record.
#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

class PhyAccessors : public PhyTest {};

}  // namespace

TEST_F(PhyAccessors, HwState)
{
    Init();
    Record().postResetMark = 0xFF;
    uint32_t enabled = 9;
    EXPECT_EQ(EPHAL_GetHwState(0, &enabled), 0);
    EXPECT_EQ(enabled, 0U) << "never brought up";

    EXPECT_EQ(EPHAL_SetHwState(0, 0), 0);
    EXPECT_EQ(Record().config.hwState, 1U);
    EXPECT_EQ(Record().postResetMark, 0xFF);
    EXPECT_EQ(EPHAL_GetHwState(0, &enabled), 0);
    EXPECT_EQ(enabled, 0U);

    EXPECT_EQ(EPHAL_SetHwState(0, -7), 0);
    EXPECT_EQ(Record().config.hwState, 2U);
    EXPECT_EQ(Record().postResetMark, 0);
    EXPECT_EQ(EPHAL_GetHwState(0, &enabled), 0);
    EXPECT_EQ(enabled, 1U);

    Record().config.hwState = 3;
    EXPECT_EQ(EPHAL_GetHwState(0, &enabled), 0);
    EXPECT_EQ(enabled, 0U);
    EXPECT_TRUE(transcript.All().empty()) << "no lock, no line";
}

TEST_F(PhyAccessors, UlpMode)
{
    Init();
    PhyRegion().vendor[0].ulpModeEnabled = 0x01020304;
    PhyRegion().vendor[1].ulpModeEnabled = 5;
    uint32_t ulp = 0;
    EXPECT_EQ(EPHAL_GetUlpModeEnabled(0, &ulp), 0);
    EXPECT_EQ(ulp, 0x01020304U);
    EXPECT_EQ(EPHAL_GetUlpModeEnabled(1, &ulp), 0);
    EXPECT_EQ(ulp, 5U);
}

TEST_F(PhyAccessors, HalPrivData)
{
    Init({{{}, {}}});
    auto* const first = static_cast<uint8_t*>(EPHAL_GetHalPrivData(0));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(EPHAL_GetHalPrivData(1), first) << "they share a library";
    first[0] = 0x11;
    first[551] = 0x22;
    EXPECT_EQ(PhyRegion().halPrivData[0][0], 0x11);
    EXPECT_EQ(PhyRegion().halPrivData[0][551], 0x22);
    Record(1).halIdx = 1;
    EXPECT_EQ(EPHAL_GetHalPrivData(1), first + 552);
}

TEST_F(PhyAccessors, HalPrivDataIsNullWithoutAHalIndexOrBeyondTheCount)
{
    Init();
    EXPECT_EQ(EPHAL_GetHalPrivData(1), nullptr);
    EXPECT_EQ(EPHAL_GetHalPrivData(255), nullptr);
    for (int halIdx : {2, 255}) {
        Record().halIdx = static_cast<uint8_t>(halIdx);
        EXPECT_EQ(EPHAL_GetHalPrivData(0), nullptr);
    }
    Record().halIdx = 0;
    PhyRegion().NumOfPhys = 200;
    EXPECT_EQ(EPHAL_GetHalPrivData(0), nullptr);
}

TEST_F(PhyAccessors, BoardFacts)
{
    Init();
    EXPECT_EQ(EPHAL_GetPortIfaceMode(0), static_cast<uint32_t>(OB_IFACE_HSGMII));
    EXPECT_EQ(EPHAL_GetPortIfaceSpeed(0), static_cast<uint32_t>(OB_SPEED_2G5));
    uint8_t bus = 0;
    uint8_t addr = 0;
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(0, &bus, &addr), 0);
    EXPECT_EQ(bus, 2);
    EXPECT_EQ(addr, 11);
    bus = addr = 0;
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(0, &bus, nullptr), 0);
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(0, nullptr, &addr), 0);
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(0, nullptr, nullptr), 0);
    EXPECT_EQ(bus, 2);
    EXPECT_EQ(addr, 11);
    EXPECT_TRUE(transcript.All().empty());
}

TEST_F(PhyAccessors, MdioPlaceOfAnInvalidIndex)
{
    Init();
    uint8_t bus = 9;
    uint8_t addr = 9;
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(1, &bus, &addr), -1);
    EXPECT_EQ(bus, 9);
    EXPECT_EQ(addr, 9);
    EXPECT_STEPS("phy1 [EPHAL_GetMdioAddrAndBusId] failed");
}

namespace {

// Every service with an index, on a place that must not be touched.
void ExpectRefused(uint8_t devIdx)
{
    uint32_t word = 0x77;
    uint16_t value = 0x77;
    EXPECT_EQ(EPHAL_SetHwState(devIdx, 1), -1);
    EXPECT_EQ(EPHAL_GetHwState(devIdx, &word), -1);
    EXPECT_EQ(EPHAL_GetUlpModeEnabled(devIdx, &word), -1);
    EXPECT_EQ(EPHAL_GetHalPrivData(devIdx), nullptr);
    EXPECT_EQ(EPHAL_GetPortIfaceMode(devIdx), 0U);
    EXPECT_EQ(EPHAL_GetPortIfaceSpeed(devIdx), 0U);
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(devIdx, nullptr, nullptr), -1);
    EXPECT_EQ(EPHAL_ReadMdio(devIdx, 1, &value), -1);
    EXPECT_EQ(EPHAL_WriteMdio(devIdx, 1, 1), -1);
    EXPECT_EQ(EPHAL_ReadMmd(devIdx, 1, 1, &value), -1);
    EXPECT_EQ(EPHAL_WriteMmd(devIdx, 1, 1, 1), -1);
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(devIdx, 1, 1, 1), -1);
    EXPECT_EQ(EPHAL_SetInterfaceState(devIdx, 1), -1);
    EXPECT_EQ(word, 0x77U);
    EXPECT_EQ(value, 0x77);
    EXPECT_TRUE(Platform().transcript.Only({"sys", "hal"}).empty());
}

}  // namespace

TEST_F(PhyAccessors, AProcessThatHasNotAttachedIsRefused)
{
    ExpectRefused(0);
}

TEST_F(PhyAccessors, AnIndexBeyondTheRegionIsRefused)
{
    Init({{{}, {}}});
    ExpectRefused(2);
    ExpectRefused(255);
}

TEST_F(PhyAccessors, WithGarbageInTheCountNothingThatChecksItWorks)
{
    Init({{{}, {}}});
    PhyRegion().NumOfPhys = 3;
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
    EXPECT_EQ(EPHAL_GetMdioAddrAndBusId(0, nullptr, nullptr), -1);
    EXPECT_TRUE(transcript.Only({"sys"}).empty());
}
