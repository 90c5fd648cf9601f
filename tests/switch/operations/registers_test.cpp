#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class Registers : public EnabledSwitch {};

TEST_F(Registers, TakeAnyPortAndHandTheCallersPointerOn)
{
    platform.slots["ReadPortReg"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint16_t*>(args[3]) = 0xBEEF;
        return 0;
    };
    platform.slots["SmiRead"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint16_t*>(args[2]) = 0xCAFE;
        return 0;
    };
    uint16_t value = 0;
    EXPECT_EQ(ORBLINK_ReadPortReg(0, 65535, 0, &value), 0);
    EXPECT_EQ(value, 0xBEEF);
    EXPECT_EQ(ORBLINK_SmiRead(0, 0, &value), 0);
    EXPECT_EQ(value, 0xCAFE);
    EXPECT_EQ(ORBLINK_WritePortReg(0, 255, 0, 0), 0);
    EXPECT_EQ(ORBLINK_SetPortFc(0, 255, 0, 0), 0);
}

TEST_F(Registers, AVendorIoctlPassesItsParameterUnexamined)
{
    uint32_t parameter = 5;
    platform.slots["VendorSpecificIoctl"] = [&](const SlotArgs& args) {
        EXPECT_EQ(args[2], reinterpret_cast<intptr_t>(&parameter));
        return 1;
    };
    char address[24];
    snprintf(address, sizeof(address), "0x%08lX", reinterpret_cast<unsigned long>(&parameter));
    EXPECT_EQ(ORBLINK_VendorSpecificIoctl(0, 0x7FFFFFFF, &parameter), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_VendorSpecificIoctl:# DevIdx=0, Cmd=2147483647 pParam=" +
                          std::string(address),
                      "sys semop(0, -1, UNDO)", "hal0 VendorSpecificIoctl(0, 2147483647, ptr)",
                      "log1 ORBLINK_VendorSpecificIoctl:# ioctl failed, DevIdx=0, Cmd=2147483647 "
                      "pParam=" +
                          std::string(address),
                      "sys semop(0, +1, UNDO)");
}

}  // namespace
