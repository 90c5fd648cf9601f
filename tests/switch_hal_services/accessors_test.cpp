#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

class Accessors : public SwitchTest {
protected:
    // Two switches, each with a library of its own.
    void InitTwo()
    {
        SwitchBoard::Entry second;
        second.halLibName = "liborblink_second.so";
        second.internalPortPidx = 0xFFFFFFFFU;
        second.ifaceMode = OB_IFACE_SGMII;
        second.ifaceSpeed = OB_SPEED_1G;
        second.mdioAddr = 0x1F;
        second.mdioBus = 0;
        Init(SwitchBoard::With({{.internalPortPidx = 5}, second}));
        Record(1).config.mtuSize = 65535;
        transcript.Clear();
    }

    // Where the private data lie in the region, or -1.
    static long OffsetOf(void* privateData)
    {
        if (privateData == nullptr)
            return -1;
        auto* mark = static_cast<uint8_t*>(privateData);
        memset(mark, 0x5A, OB_HAL_PRIV_DATA_SIZE);
        const auto* bytes = reinterpret_cast<const uint8_t*>(&Region());
        long offset = -1;
        for (long i = static_cast<long>(sizeof(SwitchDeviceRegion)) - 1; i >= 0; --i)
            if (bytes[i] == 0x5A)
                offset = i;
        memset(mark, 0, OB_HAL_PRIV_DATA_SIZE);
        return offset;
    }
};

TEST_F(Accessors, GiveEachSwitchItsOwnFacts)
{
    InitTwo();
    EXPECT_EQ(OBHAL_GetInternalPortPidx(0), 5);
    EXPECT_EQ(OBHAL_GetInternalPortPidx(1), -1);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceMode(0), OB_IFACE_HSGMII + 0U);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceMode(1), OB_IFACE_SGMII + 0U);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceSpeed(0), OB_SPEED_2G5 + 0U);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceSpeed(1), OB_SPEED_1G + 0U);
    EXPECT_EQ(OBHAL_GetMtuSize(0), 2000U);
    EXPECT_EQ(OBHAL_GetMtuSize(1), 65535U);
    EXPECT_EQ(OBHAL_GetSwitchCount(), 2U);
}

TEST_F(Accessors, LogAnEntryLineEachButForTwo)
{
    InitTwo();
    OBHAL_GetHalPrivData(0);
    OBHAL_GetInternalPortPidx(0);
    EXPECT_TRANSCRIPT();
    OBHAL_GetInternalPortIfaceMode(0);
    OBHAL_GetInternalPortIfaceSpeed(0);
    OBHAL_GetMtuSize(0);
    OBHAL_GetSwitchCount();
    OBHAL_GetMdioParams(0, nullptr, nullptr);
    EXPECT_TRANSCRIPT("log9 OBHAL_GetInternalPortIfaceMode:# ",
                      "log9 OBHAL_GetInternalPortIfaceSpeed:# ", "log9 OBHAL_GetMtuSize:# ",
                      "log9 OBHAL_GetSwitchCount:# ", "log9 OBHAL_GetMdioParams:# ");
}

TEST_F(Accessors, PrivateDataBelongToTheHalIndex)
{
    InitTwo();
    EXPECT_EQ(OffsetOf(OBHAL_GetHalPrivData(0)), 1937);
    EXPECT_EQ(OffsetOf(OBHAL_GetHalPrivData(1)), 3837);
    Record(1).halIdx = 0;
    EXPECT_EQ(OffsetOf(OBHAL_GetHalPrivData(1)), 1937);
}

TEST_F(Accessors, PrivateDataAreNullWithoutAHalIndex)
{
    Init();
    EXPECT_EQ(Record(1).halIdx, 255);
    EXPECT_EQ(OBHAL_GetHalPrivData(1), nullptr);
    Record(0).halIdx = 2;
    EXPECT_EQ(OBHAL_GetHalPrivData(0), nullptr);
}

TEST_F(Accessors, MdioParamsGoWhereTheyAreWanted)
{
    InitTwo();
    uint8_t bus = 77;
    uint8_t address = 77;
    EXPECT_EQ(OBHAL_GetMdioParams(0, &bus, &address), 0);
    EXPECT_EQ(bus, 1);
    EXPECT_EQ(address, 16);
    EXPECT_EQ(OBHAL_GetMdioParams(1, &bus, nullptr), 0);
    EXPECT_EQ(bus, 0);
    EXPECT_EQ(address, 16);
    EXPECT_EQ(OBHAL_GetMdioParams(1, nullptr, &address), 0);
    EXPECT_EQ(address, 0x1F);
    EXPECT_EQ(OBHAL_GetMdioParams(1, nullptr, nullptr), 0);
}

TEST_F(Accessors, AnswerWithNothingForADeviceBeyondTheRegion)
{
    InitTwo();
    uint8_t bus = 77;
    uint8_t address = 77;
    for (const uint8_t device : {2, 255}) {
        EXPECT_EQ(OBHAL_GetHalPrivData(device), nullptr);
        EXPECT_EQ(OBHAL_GetInternalPortPidx(device), 0);
        EXPECT_EQ(OBHAL_GetInternalPortIfaceMode(device), 0U);
        EXPECT_EQ(OBHAL_GetInternalPortIfaceSpeed(device), 0U);
        EXPECT_EQ(OBHAL_GetMtuSize(device), 0U);
        EXPECT_EQ(OBHAL_GetMdioParams(device, &bus, &address), 0);
    }
    EXPECT_EQ(bus, 77);
    EXPECT_EQ(address, 77);
}

TEST_F(Accessors, AnswerWithNothingBeforeTheProcessIsAttached)
{
    EXPECT_EQ(OBHAL_GetHalPrivData(0), nullptr);
    EXPECT_EQ(OBHAL_GetInternalPortPidx(0), 0);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceMode(0), 0U);
    EXPECT_EQ(OBHAL_GetInternalPortIfaceSpeed(0), 0U);
    EXPECT_EQ(OBHAL_GetMtuSize(0), 0U);
    EXPECT_EQ(OBHAL_GetSwitchCount(), 0U);
}

TEST_F(Accessors, CountNoSwitchesWhenTheNumberCannotBe)
{
    InitTwo();
    Region().NumOfSwitches = 3;
    EXPECT_EQ(OBHAL_GetSwitchCount(), 0U);
}

TEST_F(Accessors, ServeASlotWhileItsOperationHoldsTheSemaphore)
{
    InitTwo();
    Record(0).config.state = OB_STATE_ENABLED;
    uint32_t mtu = 0;
    platform.slots["SetMtuSize"] = [&](const SlotArgs&) {
        mtu = OBHAL_GetMtuSize(0);
        return 0;
    };
    EXPECT_EQ(ORBLINK_SetMtuSize(0, 1500), 0);
    EXPECT_EQ(mtu, 2000U);
    EXPECT_EQ(OBHAL_GetMtuSize(0), 1500U);
}

}  // namespace
