#include "hals/vswitch/vs08_chip.h"

#include <string.h>

#include "hals/uninterrupted.h"
#include "hals/wait.h"
#include "switch/orblink_hal.h"

namespace vs08 {
namespace {

constexpr int kStatusTries = 100;
constexpr uint32_t kStatusInterval = 2000;
constexpr int kCommandTries = 200;
constexpr uint32_t kCommandInterval = 50;

constexpr uint32_t kFormat = 0x56533038;

struct PrivateData {
    uint32_t format;
    Memory ofSwitch[OB_MAX_SWITCHES];
};
static_assert(sizeof(PrivateData) <= OB_HAL_PRIV_DATA_SIZE);

bool IsSwitch(int devIdx)
{
    return devIdx >= 0 && devIdx < OB_MAX_SWITCHES;
}

// The private data are unaligned: they are copied in and out.
uint8_t* PrivateDataOf(int devIdx, PrivateData& copy)
{
    if (!IsSwitch(devIdx))
        return nullptr;
    auto* stored = static_cast<uint8_t*>(OBHAL_GetHalPrivData(static_cast<uint8_t>(devIdx)));
    if (!stored)
        return nullptr;
    memcpy(&copy, stored, sizeof copy);
    return copy.format == kFormat ? stored : nullptr;
}

}  // namespace

bool Chip::Valid() const
{
    return IsSwitch(devIdx_);
}

bool Chip::ReadDirect(int reg, uint16_t& value) const
{
    return Valid() && hals::Uninterrupted([&] {
               return OBHAL_ReadMdio(static_cast<uint8_t>(devIdx_), reg, &value);
           });
}

bool Chip::WriteDirect(int reg, uint16_t value) const
{
    return Valid() && hals::Uninterrupted([&] {
               return OBHAL_WriteMdio(static_cast<uint8_t>(devIdx_), reg, value);
           });
}

bool Chip::ReadRun(uint16_t address, uint16_t* values, int count) const
{
    bool done = WriteDirect(kAddr, address);
    for (int i = 0; done && i < count; ++i)
        done = ReadDirect(count == 1 ? kData : kDataInc, values[i]);
    return done;
}

bool Chip::WriteRun(uint16_t address, const uint16_t* values, int count) const
{
    bool done = WriteDirect(kAddr, address);
    for (int i = 0; done && i < count; ++i)
        done = WriteDirect(count == 1 ? kData : kDataInc, values[i]);
    return done;
}

bool Chip::WaitForStatus(uint16_t bits) const
{
    for (int i = 0; i < kStatusTries; ++i) {
        uint16_t status = 0;
        if (!ReadDirect(kStatus, status))
            return false;
        if ((status & bits) == bits)
            return true;
        hals::WaitMicroseconds(kStatusInterval);
    }
    return false;
}

bool Chip::Run(uint16_t commandRegister, uint16_t command, uint16_t& result) const
{
    if (!Write(commandRegister, command))
        return false;
    for (int i = 0; i < kCommandTries; ++i) {
        if (!ReadDirect(kData, result))
            return false;
        if (!(result & kBusy))
            return true;
        hals::WaitMicroseconds(kCommandInterval);
    }
    return false;
}

void FormatMemory(void* privateData)
{
    PrivateData fresh{};
    fresh.format = kFormat;
    memcpy(privateData, &fresh, sizeof fresh);
}

bool Recall(int devIdx, Memory& memory)
{
    PrivateData copy;
    if (!PrivateDataOf(devIdx, copy))
        return false;
    memory = copy.ofSwitch[devIdx];
    return true;
}

bool Remember(int devIdx, const Memory& memory)
{
    PrivateData copy;
    uint8_t* stored = PrivateDataOf(devIdx, copy);
    if (!stored)
        return false;
    copy.ofSwitch[devIdx] = memory;
    memcpy(stored, &copy, sizeof copy);
    return true;
}

bool IsLanPort(int devIdx, int port)
{
    return IsSwitch(devIdx) && port >= 1 && port < kPorts &&
           port != OBHAL_GetInternalPortPidx(static_cast<uint8_t>(devIdx));
}

bool HasPhy(const Chip& chip, int port)
{
    uint16_t info = 0;
    return IsPort(port) && chip.Read(PortAddress(port, kPortInfo), info) && info & kInfoHasPhy;
}

}  // namespace vs08
