// Queries that read the record: ETHPHY_GetNumOfPhys, GetProvisionedConfig, GetBsdConfig,
// GetPhyData, GetCaps.
#include <cstring>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

class PhyRecordCopies : public PhyTest {
protected:
    void FillRecord()
    {
        for (size_t i = 0; i < sizeof(PhyDeviceRecord); ++i)
            reinterpret_cast<uint8_t*>(&Record())[i] = static_cast<uint8_t>(i);
    }

    // Bytes from..to as FillRecord wrote them, then a guard that a copy must leave alone.
    static std::vector<uint8_t> BytesAndGuard(int from, int to)
    {
        std::vector<uint8_t> bytes;
        for (int i = from; i <= to; ++i)
            bytes.push_back(static_cast<uint8_t>(i));
        bytes.insert(bytes.end(), 8, 0xEE);
        return bytes;
    }
};

}  // namespace

TEST_F(PhyRecordCopies, NumOfPhys)
{
    InitEnabled({{{}, {}}});
    uint8_t count = 0;
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_STEPS(kLock, kUnlock);
}

TEST_F(PhyRecordCopies, NumOfPhysFailsWithItsPrologWithoutALineOfItsOwn)
{
    InitEnabled();
    platform.Fail("semop", 43);
    uint8_t count = 7;
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&count), -1);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(transcript.All().back(), "phy1 [_ApiProlog] _ApiGlobalLock() failed");
}

TEST_F(PhyRecordCopies, NumOfPhysFailsOnGarbage)
{
    InitEnabled();
    PhyRegion().NumOfPhys = 3;
    uint8_t count = 7;
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&count), -1);
    EXPECT_EQ(count, 7);
    EXPECT_STEPS(kLock, "phy1 ETHPHY_GetNumOfPhys:# Invalid NumOfPhys=3", kUnlock);
}

TEST_F(PhyRecordCopies, ProvisionedConfigIsBytes4To31)
{
    Init();
    FillRecord();
    std::vector<uint8_t> out(28 + 8, 0xEE);
    EXPECT_EQ(ETHPHY_GetProvisionedConfig(0, out.data()), 0);
    EXPECT_EQ(out, BytesAndGuard(4, 31));
    EXPECT_STEPS(kLock, kUnlock);
}

TEST_F(PhyRecordCopies, BsdConfigIsBytes36To91)
{
    Init();
    FillRecord();
    std::vector<uint8_t> out(56 + 8, 0xEE);
    EXPECT_EQ(ETHPHY_GetBsdConfig(0, out.data()), 0);
    EXPECT_EQ(out, BytesAndGuard(36, 91));
}

TEST_F(PhyRecordCopies, AFailingCopyFailsTheCall)
{
    Init();
    uint8_t out[56];
    platform.Fail("kova_memcpy_s", 0, 1, 22);
    EXPECT_EQ(ETHPHY_GetProvisionedConfig(0, out), -1);
    EXPECT_STEPS(
        kLock,
        "phy1 ETHPHY_GetProvisionedConfig:# Runtime-constraint violation error in function "
        "kova_memcpy_s",
        kUnlock);
    transcript.Clear();
    EXPECT_EQ(ETHPHY_GetBsdConfig(0, nullptr), -1);
    EXPECT_STEPS(kLock,
                 "phy1 ETHPHY_GetBsdConfig:# Runtime-constraint violation error in function "
                 "kova_memcpy_s",
                 kUnlock);
}

TEST_F(PhyRecordCopies, PhyDataIsTheRecordItself)
{
    Init({{{}, {}}});
    void* first = nullptr;
    void* second = nullptr;
    EXPECT_EQ(ETHPHY_GetPhyData(0, &first), 0);
    EXPECT_EQ(ETHPHY_GetPhyData(1, &second), 0);
    EXPECT_EQ(static_cast<char*>(second) - static_cast<char*>(first), 104);
    Record(1).config.word24 = 0x12345678;
    EXPECT_EQ(static_cast<PhyDeviceRecord*>(second)->config.word24, 0x12345678U);
}

TEST_F(PhyRecordCopies, CapsAreRefusedUntilTheyAreValid)
{
    InitEnabled();
    uint32_t caps = 9;
    EXPECT_EQ(ETHPHY_GetCaps(0, &caps), -1);
    EXPECT_STEPS(kLock, "phy1 [ETHPHY_GetCaps] PHY capabilities are not valid, DevIdx=0", kUnlock);
    EXPECT_EQ(caps, 9U);
    Record().capsValid = 1;
    Record().caps = 0x80000001;
    EXPECT_EQ(ETHPHY_GetCaps(0, &caps), 0);
    EXPECT_EQ(caps, 0x80000001);
}

TEST_F(PhyRecordCopies, WorkWhileThePhyIsHeldInReset)
{
    Init();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    Record().capsValid = 1;
    uint8_t out[56];
    void* data = nullptr;
    uint32_t caps = 0;
    EXPECT_EQ(ETHPHY_GetProvisionedConfig(0, out), 0);
    EXPECT_EQ(ETHPHY_GetBsdConfig(0, out), 0);
    EXPECT_EQ(ETHPHY_GetPhyData(0, &data), 0);
    EXPECT_EQ(ETHPHY_GetCaps(0, &caps), 0);
    EXPECT_EQ(ETHPHY_Poll(0), 0);
}
