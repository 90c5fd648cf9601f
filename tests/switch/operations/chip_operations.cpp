// The rows of the chip as a whole: registers, queues, ageing, MTU, LEDs.
#include "tests/switch/operations/operation_table.h"

namespace obtest {
namespace {

uint32_t value;
uint8_t ledMode = 3;

}  // namespace

std::vector<Operation> ChipOperations()
{
    return {
        PassThrough(
            {.name = "ReadPortReg",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_ReadPortReg(d, 65535, 17, &value); },
             .before = {"log9 Port=65535, Reg=17"}},
            "ReadPortReg", "{d}, 65535, 17, ptr",
            "ReadPortReg failed, Port=65535, Reg=17, DevIdx={d}"),
        PassThrough(
            {.name = "WritePortReg",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_WritePortReg(d, 300, 65535, 40000); },
             .before = {"log9 Port=300, Reg=65535"}},
            "WritePortReg", "{d}, 300, 65535, 40000",
            "WritePortReg failed, Port=300, Reg=65535, Val=40000, DevIdx={d}"),
        PassThrough(
            {.name = "VendorSpecificIoctl",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_VendorSpecificIoctl(d, -9, nullptr); },
             .before = {"log9 DevIdx={d}, Cmd=-9 pParam=0x00000000"}},
            "VendorSpecificIoctl", "{d}, -9, null",
            "ioctl failed, DevIdx={d}, Cmd=-9 pParam=0x00000000"),
        PassThrough({.name = "PrintMachineState",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_PrintMachineState(d); }},
                    "PrintMachineState", "{d}", "PrintMachineState failed, DevIdx={d}"),
        PassThrough({.name = "SetQWred",
                     .call = [](uint8_t d,
                                uint8_t) { return ORBLINK_SetQWred(d, 1, 2, 3, 4, 5, 6, 65535); }},
                    "SetQWred", "{d}, 1, 2, 3, 4, 5, 6, 65535", "SetQWred failed, DevIdx={d}"),
        PassThrough({.name = "SetGlobWred",
                     .call =
                         [](uint8_t d, uint8_t) {
                             return ORBLINK_SetGlobWred(d, 255, 2, 3, 4, 5, 6, 7, 8, 65535);
                         }},
                    "SetGlobWred", "{d}, 255, 2, 3, 4, 5, 6, 7, 8, 65535",
                    "SetGlobWred failed, DevIdx={d}"),
        PassThrough({.name = "SetQRsrv",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SetQRsrv(d, 255, 65535); }},
                    "SetQRsrv", "{d}, 255, 65535", "SetQRsrv failed, DevIdx={d}"),
        PassThrough(
            {.name = "SetPortFc",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_SetPortFc(d, 255, 2, 65535); }},
            "SetPortFc", "{d}, 255, 2, 65535", "SetPortFc failed, DevIdx={d}"),
        OneSlot({.name = "SetMacAging",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_SetMacAging(d, 5); },
                 .before = {"log9 DevIdx={d}, Aging=5"},
                 .store = [](SwitchDeviceRecord& record, int) { record.config.macAging = 5; }},
                "SetMacAging", "{d}, 5", "Set MAC aging failed, DevIdx={d}"),
        PassThrough(
            {.name = "SetMtuSize",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_SetMtuSize(d, 9216); },
             .store = [](SwitchDeviceRecord& record, int) { record.config.mtuSize = 9216; }},
            "SetMtuSize", "{d}, 9216", "SetMtuSize failed, Val=9216, DevIdx={d}"),
        PassThrough({.name = "SmiRead",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SmiRead(d, 0xBEEF, &value); },
                     .before = {"log9 DevIdx={d}, RegAddr=0xbeef"}},
                    "SmiRead", "{d}, 48879, ptr", "SmiRead failed, Reg=48879, DevIdx={d}"),
        PassThrough({.name = "SmiWrite",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SmiWrite(d, 0xBEEF, 65535); },
                     .before = {"log9 DevIdx={d}, RegAddr=0xbeef"}},
                    "SmiWrite", "{d}, 48879, 65535",
                    "SmiWrite failed, Reg=48879, Data=65535, DevIdx={d}"),
        OneSlot({.name = "GetLEDConfig",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_GetLEDConfig(d, &ledMode); },
                 .before = {"log9 GetLEDConfig dev={d}"},
                 .ending = Ending::kFinished,
                 .absent = "log1 GetLEDConfig HAL does not exist for switch impl "
                           "liborblink_velmar.so, DevIdx={d}"},
                "GetLEDConfig", "{d}, ptr", "GetLEDConfig failed, DevIdx={d}"),
        OneSlot({.name = "SetLEDConfig",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_SetLEDConfig(d, 5); },
                 .before = {"log9 SetLEDConfig dev={d}, mode=5"},
                 .ending = Ending::kFinished,
                 .absent = "log1 SetLEDConfig HAL does not exist for switch impl "
                           "liborblink_velmar.so, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record, int) { record.config.ledMode = 5; }},
                "SetLEDConfig", "{d}, 5", "SetLEDConfig failed, DevIdx={d}"),
    };
}

}  // namespace obtest
