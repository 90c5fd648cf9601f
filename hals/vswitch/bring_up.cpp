// Init, reset, capabilities and the ioctl.
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"
#include "hals/vswitch/vswitch_hal.h"
#include "hals/vswitch/vswitch_ioctl.h"

namespace vs08 {
namespace {

constexpr uint8_t kInvertBits = 3;

bool IsVs08(const Chip& chip)
{
    uint16_t id = 0;
    return chip.ReadDirect(kChipId, id) && id == kChipIdVs08;
}

// The value of SERDES_CTRL for the internal port as the board has it; false: the chip cannot.
bool SerdesSetting(uint8_t devIdx, uint8_t invert, uint16_t& value)
{
    const uint32_t mode = OBHAL_GetInternalPortIfaceMode(devIdx);
    uint32_t speed = OBHAL_GetInternalPortIfaceSpeed(devIdx);
    const bool fast = mode == OB_IFACE_HSGMII;
    if (!fast && mode != OB_IFACE_SGMII)
        return false;
    if (speed == OB_SPEED_UNKNOWN || (fast && speed == OB_SPEED_AUTONEG))
        speed = fast ? OB_SPEED_2G5 : OB_SPEED_AUTONEG;
    if (fast ? speed != OB_SPEED_2G5 : speed > OB_SPEED_1G)
        return false;
    value = static_cast<uint16_t>((fast ? kSerdesHsgmii : 0) | speed << kSerdesSpeedShift |
                                  (invert & kInvertBits) << kSerdesInvertShift);
    return true;
}

// The internal port is strapped on the chip; the board data must name the same one.
bool ConfigureInternalPort(const Chip& chip, uint8_t devIdx, uint8_t invert)
{
    const int port = OBHAL_GetInternalPortPidx(devIdx);
    uint16_t caps = 0;
    uint16_t serdes = 0;
    return IsPort(port) && chip.Read(kCaps, caps) && (caps >> kCapsInternalShift) == port &&
           SerdesSetting(devIdx, invert, serdes) &&
           chip.Write(PortAddress(port, kSerdesCtrl), serdes);
}

// Fewer than four bytes are allowed only when there are none at all.
bool TakeParameters(const void* params, uint32_t size, Memory& memory)
{
    if (!params || size == 0)
        return true;
    if (size < sizeof memory.portIsolation)
        return false;
    memcpy(&memory.portIsolation, params, sizeof memory.portIsolation);
    return true;
}

bool SoftReset(const Chip& chip)
{
    return chip.WaitForStatus(kStatusReady) && chip.WriteDirect(kControl, kControlSoftReset) &&
           chip.WaitForStatus(kStatusReady | kStatusRxReady);
}

bool RxReset(const Chip& chip)
{
    return chip.WaitForStatus(kStatusRxReady) && chip.WriteDirect(kControl, kControlRxReset) &&
           chip.WaitForStatus(kStatusRxReady);
}

// Comes while the chip may still be held in reset: nothing but the HAL's memory is touched.
bool PreReset(int devIdx, const void* param)
{
    Memory memory;
    ObhalPreReset arguments;
    if (!param || !Recall(devIdx, memory))
        return false;
    memcpy(&arguments, param, sizeof arguments);
    memory.serdesId = arguments.serdesId;
    memory.preResetArg = arguments.preResetArg;
    return Remember(devIdx, memory);
}

bool ReadPortCaps(const Chip& chip, int port, SwitchCaps& caps)
{
    uint16_t info = 0;
    if (!chip.Read(PortAddress(port, kPortInfo), info))
        return false;
    caps.port[port].portIfaceType = info & kInfoIface;
    caps.port[port].portHasPhy = info & kInfoHasPhy ? 1 : 0;
    caps.port[port].halDefined = info & kInfoInternal ? VSWITCH_PORT_INTERNAL : 0;
    return true;
}

bool ReadIdentity(const Chip& chip, uint16_t capsRegister, SwitchCaps& caps)
{
    uint16_t id = 0;
    uint16_t rev = 0;
    if (!chip.ReadDirect(kChipId, id) || !chip.ReadDirect(kChipRev, rev))
        return false;
    VswitchCapsBytes bytes;
    memcpy(bytes.chipId, &id, sizeof id);
    memcpy(bytes.chipRev, &rev, sizeof rev);
    bytes.internalPort = static_cast<uint8_t>(capsRegister >> kCapsInternalShift & 7);
    memcpy(caps.halDefined, &bytes, sizeof bytes);
    return id == kChipIdVs08;
}

uint8_t CapsFlags(uint16_t caps)
{
    return static_cast<uint8_t>((caps & kCapsNoSnooping ? OB_CAPS_NO_SNOOPING : 0) |
                                (caps & kCapsEee ? OB_CAPS_EEE : 0) |
                                (caps & kCapsMirror ? OB_CAPS_MIRRORING : 0));
}

}  // namespace

int Init(void* privateData)
{
    if (!privateData)
        return -1;
    FormatMemory(privateData);
    return 0;
}

int ResetSwitch(int devIdx, const void* params, uint32_t size)
{
    const Chip chip(devIdx);
    Memory memory;
    if (!Recall(devIdx, memory) || !TakeParameters(params, size, memory))
        return -1;
    if (!IsVs08(chip) || !SoftReset(chip))
        return -1;
    if (!ConfigureInternalPort(chip, static_cast<uint8_t>(devIdx), memory.preResetArg))
        return -1;
    if (!chip.Write(kForwardCtrl, memory.portIsolation ? 1 : 0))
        return -1;
    return Result(Remember(devIdx, memory));
}

int GetSwitchCaps(int devIdx, SwitchCaps* caps)
{
    const Chip chip(devIdx);
    SwitchCaps found{};
    uint16_t value = 0;
    if (!caps || !chip.WaitForStatus(kStatusReady) || !chip.Read(kCaps, value) ||
        !ReadIdentity(chip, value, found))
        return -1;
    found.capsFlags = CapsFlags(value);
    found.numOfPorts = static_cast<uint8_t>(value >> kCapsPortsShift & 15);
    if (found.numOfPorts > kPorts)
        return -1;
    for (int port = 0; port < found.numOfPorts; ++port) {
        if (!ReadPortCaps(chip, port, found))
            return -1;
    }
    *caps = found;
    return 0;
}

int VendorSpecificIoctl(int devIdx, int cmd, void* param)
{
    switch (cmd) {
        case OBHAL_IOCTL_RX_RESET:
            return Result(RxReset(Chip(devIdx)));
        case OBHAL_IOCTL_PRE_RESET:
            return Result(PreReset(devIdx, param));
        case VSWITCH_IOCTL_FLUSH_MAC:
            return Result(FlushMacs(devIdx));
        case VSWITCH_IOCTL_ADD_STATIC_MAC:
            return Result(AddStaticMac(devIdx, param));
        case VSWITCH_IOCTL_DELETE_MAC:
            return Result(DeleteMac(devIdx, param));
        default:
            return -1;
    }
}

}  // namespace vs08
