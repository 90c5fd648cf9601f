// Registers of a PHY: over MDIO, and of the chip by the HAL.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

class PhyRegisters : public PhyTest {
protected:
    PhyRegisters()
    {
        platform.mii = [this](unsigned long, MiiWords& words) {
            held = PhySemaphoreValue();
            words.valueOut = 0xBEEF;
            return answers;
        };
    }

    bool answers = true;
    int held = -1;
    const char* const kSocket = "sys socket(2, 2, 0)";
};

}  // namespace

TEST_F(PhyRegisters, ReadMdio)
{
    InitEnabled();
    uint16_t value = 0;
    EXPECT_EQ(ETHPHY_ReadMdio(0, 3, &value), 0);
    EXPECT_EQ(value, 0xBEEF);
    EXPECT_STEPS(kLock, kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0xB, reg=3, bus=2)",
                 "phy9 EPHAL_DirectMdioReadAccess:#: MdioBus=2 MdioAddr=0x0B Reg=0x03 Data=0xBEEF",
                 kUnlock);
    EXPECT_EQ(held, 0);
}

TEST_F(PhyRegisters, WriteMdio)
{
    InitEnabled();
    EXPECT_EQ(ETHPHY_WriteMdio(0, 4, 0x0DE1), 0);
    EXPECT_STEPS(kLock, kSocket, "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0xB, reg=4, bus=2, 0x0DE1)",
                 "phy9 EPHAL_DirectMdioWriteAccess:#: MdioBus=2 MdioAddr=0x0B Reg=0x04 Data=0x0DE1",
                 kUnlock);
}

TEST_F(PhyRegisters, ReadMmd)
{
    InitEnabled();
    uint16_t value = 0;
    EXPECT_EQ(ETHPHY_ReadMmd(0, 31, 0x0E23, &value), 0);
    EXPECT_EQ(value, 0xBEEF);
    EXPECT_STEPS(kLock, kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x817F, reg=3619, bus=2)",
                 "phy9 EPHAL_DirectMdioReadAccess:#: MdioBus=2 MdioAddr=0x0B Reg=0x401F0E23 "
                 "Data=0xBEEF",
                 kUnlock);
}

TEST_F(PhyRegisters, WriteMmd)
{
    InitEnabled();
    EXPECT_EQ(ETHPHY_WriteMmd(0, 7, 32, 0x4002), 0);
    EXPECT_STEPS(kLock, kSocket,
                 "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x8167, reg=32, bus=2, 0x4002)",
                 "phy9 EPHAL_DirectMdioWriteAccess:#: MdioBus=2 MdioAddr=0x0B Reg=0x40070020 "
                 "Data=0x4002",
                 kUnlock);
}

TEST_F(PhyRegisters, ASilentBusFailsTheCallAndLeavesTheValue)
{
    InitEnabled();
    answers = false;
    uint16_t value = 0x1111;
    EXPECT_EQ(ETHPHY_ReadMdio(0, 3, &value), -1);
    EXPECT_EQ(ETHPHY_ReadMmd(0, 3, 3, &value), -1);
    EXPECT_EQ(ETHPHY_WriteMdio(0, 3, 1), -1);
    EXPECT_EQ(ETHPHY_WriteMmd(0, 3, 3, 1), -1);
    EXPECT_EQ(value, 0x1111);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyRegisters, OnlyAFailingPrologSetsTheValueToAllOnes)
{
    InitEnabled();
    uint16_t value = 0x1111;
    EXPECT_EQ(ETHPHY_ReadMdio(1, 3, &value), -1);
    EXPECT_EQ(ETHPHY_ReadMmd(1, 3, 3, &value), -1);
    EXPECT_EQ(value, 0x1111);
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(ETHPHY_ReadMdio(0, 3, &value), -1);
    EXPECT_EQ(value, 0xFFFF);
    value = 0x1111;
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(ETHPHY_ReadMmd(0, 3, 3, &value), -1);
    EXPECT_EQ(value, 0xFFFF);
}

TEST_F(PhyRegisters, ChipRegisterValueComesFromTheSlot)
{
    InitEnabled();
    platform.slots["ReadChipReg"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint16_t*>(args[2]) = 0xCAFE;
        return 0;
    };
    uint16_t value = 0;
    EXPECT_EQ(ETHPHY_ReadChipReg(0, 1, &value), 0);
    EXPECT_EQ(value, 0xCAFE);
}
