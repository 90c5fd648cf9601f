// Switches: whole devices. Each function is the C function of the same name, whose comment holds.
#pragma once

#include <span>

#include "result.hpp"
#include "switch/orblink_api.h"
#include "values.hpp"

namespace orblink {

// ---- Initialisation and queries ----

inline Status InitOnce(Initialise how)
{
    return Status(ORBLINK_InitOnce(Number(how)));
}

inline Result<uint8_t> GetNumOfSwitches()
{
    return Result<uint8_t>([](uint8_t* out) { return ORBLINK_GetNumOfSwitches(out); });
}

inline Result<SwitchCaps> GetSwitchCaps(SwitchIndex device)
{
    return Result<SwitchCaps>(
        [=](SwitchCaps* out) { return ORBLINK_GetSwitchCaps(Number(device), out); });
}

inline Result<SwitchProvConfig> GetSwitchProvConfig(SwitchIndex device)
{
    return Result<SwitchProvConfig>(
        [=](SwitchProvConfig* out) { return ORBLINK_GetSwitchProvConfig(Number(device), out); });
}

inline Result<SwitchDeviceRegion> GetSwitchDevices()
{
    return Result<SwitchDeviceRegion>(
        [](SwitchDeviceRegion* out) { return ORBLINK_GetSwitchDevices(out); });
}

inline Result<bool> GetIsolationModeEnabled(SwitchIndex device)
{
    uint32_t on = 0;
    const int code = ORBLINK_GetIsolationModeEnabled(Number(device), &on);
    return Result<bool>(code, on != 0);
}

inline Status CreateSwitchDevices()
{
    return Status(OBOS_CreateSwitchDevices());
}

// Null on failure.
[[nodiscard]] inline SwitchDeviceRegion* MapSwitchDevices()
{
    return static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
}

struct ConfiguredDevice {
    SwitchBoardEntry entry;
    uint32_t found;  // 0: the entry is empty
};

inline Result<ConfiguredDevice> GetConfiguredDevice(int which)
{
    ConfiguredDevice device{};
    const int code = OBOS_GetConfiguredDevice(which, &device.entry, &device.found);
    return Result<ConfiguredDevice>(code, device);
}

[[nodiscard]] inline bool IsBatteryMode()
{
    return ORBLINK_isBatteryMode() != 0;
}

inline Result<std::array<MacAddress, 5>> GetMacAddresses()
{
    return Result<std::array<MacAddress, 5>>([](std::array<MacAddress, 5>* out) {
        auto& mac = *out;
        return ORBLINK_GetMacAddresses(mac[0].data(), mac[1].data(), mac[2].data(), mac[3].data(),
                                       mac[4].data());
    });
}

[[nodiscard]] inline uint32_t IsOrbLinkServiceOn(SwitchIndex device)
{
    return ORBLINK_IsOrbLinkServiceOn(Number(device));
}

inline Status SetOrbLinkServiceStatus(SwitchIndex device, uint32_t signal)
{
    return Status(ORBLINK_SetOrbLinkServiceStatus(Number(device), signal));
}

// ---- Bring-up and reset ----

// Without vendor parameters the default configuration uses the stored ones.
inline Status ResetDisable(SwitchIndex device, BringUp how, std::span<uint8_t> vendorParams = {})
{
    return Status(ORBLINK_ResetDisable(Number(device), Number(how), vendorParams.data(),
                                       static_cast<uint32_t>(vendorParams.size())));
}

inline Status ResetEnable(SwitchIndex device)
{
    return Status(ORBLINK_ResetEnable(Number(device)));
}

// ---- Stations, snooping ----

inline Status ForEachMacEntry(SwitchIndex device, MacEntryCallback callback)
{
    return Status(ORBLINK_ForEachMacEntry(Number(device), callback));
}

inline Status GetMacTable(SwitchIndex device, MacTable& table)
{
    return Status(ORBLINK_GetMacTable(Number(device), &table));
}

inline std::span<const MacEntry> Entries(const MacTable& table)
{
    const size_t count = table.count;
    return {table.entry, count < OB_MAC_TABLE_ENTRIES ? count : OB_MAC_TABLE_ENTRIES};
}

inline Status EnableIgmpSnooping(SwitchIndex device)
{
    return Status(ORBLINK_EnableIgmpSnooping(Number(device)));
}

inline Status DisableIgmpSnooping(SwitchIndex device)
{
    return Status(ORBLINK_DisableIgmpSnooping(Number(device)));
}

inline Status SetMacAging(SwitchIndex device, int step)
{
    return Status(ORBLINK_SetMacAging(Number(device), step));
}

// ---- Registers. What a chip's HAL lays out is read into the type that the caller names. ----

template <typename Value = uint16_t>
Result<Value> ReadPortReg(SwitchIndex device, uint16_t port, uint16_t reg)
{
    return Result<Value>(
        [=](Value* out) { return ORBLINK_ReadPortReg(Number(device), port, reg, out); });
}

inline Status WritePortReg(SwitchIndex device, uint16_t port, uint16_t reg, uint16_t value)
{
    return Status(ORBLINK_WritePortReg(Number(device), port, reg, value));
}

template <typename Value = uint16_t>
Result<Value> SmiRead(SwitchIndex device, uint16_t address)
{
    return Result<Value>([=](Value* out) { return ORBLINK_SmiRead(Number(device), address, out); });
}

inline Status SmiWrite(SwitchIndex device, uint16_t address, uint16_t value)
{
    return Status(ORBLINK_SmiWrite(Number(device), address, value));
}

template <typename Parameter>
Status VendorSpecificIoctl(SwitchIndex device, int command, Parameter* parameter)
{
    return Status(ORBLINK_VendorSpecificIoctl(Number(device), command, parameter));
}

inline Status PrintMachineState(SwitchIndex device)
{
    return Status(ORBLINK_PrintMachineState(Number(device)));
}

// ---- Quality of service: numbers as the HAL has them ----

inline Status SetQWred(SwitchIndex device, uint8_t queue, std::span<const uint16_t, 6> limits)
{
    return Status(ORBLINK_SetQWred(Number(device), queue, limits[0], limits[1], limits[2],
                                   limits[3], limits[4], limits[5]));
}

inline Status SetGlobWred(SwitchIndex device, uint8_t a, uint8_t b, uint8_t c,
                          std::span<const uint16_t, 6> limits)
{
    return Status(ORBLINK_SetGlobWred(Number(device), a, b, c, limits[0], limits[1], limits[2],
                                      limits[3], limits[4], limits[5]));
}

inline Status SetQRsrv(SwitchIndex device, uint8_t queue, uint16_t buffers)
{
    return Status(ORBLINK_SetQRsrv(Number(device), queue, buffers));
}

inline Status SetPortFc(SwitchIndex device, PortIndex port, uint16_t a, uint16_t b)
{
    return Status(ORBLINK_SetPortFc(Number(device), Number(port), a, b));
}

inline Status SetMtuSize(SwitchIndex device, uint16_t bytes)
{
    return Status(ORBLINK_SetMtuSize(Number(device), bytes));
}

// While the switch is not enabled the value is 0.
inline Result<uint8_t> GetLEDConfig(SwitchIndex device)
{
    uint8_t mode = 0;
    const int code = ORBLINK_GetLEDConfig(Number(device), &mode);
    return Result<uint8_t>(code, mode);
}

inline Status SetLEDConfig(SwitchIndex device, uint8_t mode)
{
    return Status(ORBLINK_SetLEDConfig(Number(device), mode));
}

}  // namespace orblink
