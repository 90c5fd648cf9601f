#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>

#include "common/descriptor.h"
#include "common/log.h"
#include "common/mii_words.h"
#include "common/read_once.h"
#include "switch_hal_services/attached_switch.h"
#include "switch_hal_services/orblink_hal_services.h"

using namespace orblink;

namespace {

constexpr uint8_t kNone = 0xFF;

// Whichever switch is meant: only the bus id and the address differ between switches.
constexpr char kInterface[] = "nsgmii0";

// Fills in where the switch is on the bus.
int AddressSwitch(LogCaller caller, uint8_t devIdx, MiiWords& words)
{
    const SwitchBoardEntry* const board = AttachedBoardEntry(devIdx);
    if (board == nullptr)
        return OB_ERROR_AS(caller, "Illegal params, DevIdx=%d", devIdx);
    const uint8_t bus = ReadOnce(board->mdioBus);
    if (bus == kNone)
        return OB_ERROR_AS(caller, "%s:%d Invalid MDIO bus, check board specific data, DevIdx=%d",
                           caller.func, caller.Line(), devIdx);
    const uint8_t address = ReadOnce(board->mdioAddr);
    if (address == kNone)
        return OB_ERROR_AS(caller, "Invalid MDIO address, check board specific data, DevIdx=%d",
                           devIdx);
    words.mdioBus = bus;
    words.phyId = address;
    return RC_OK;
}

// One access; the driver's answer replaces the words.
int RunMii(LogCaller caller, unsigned long request, MiiWords& words, uint8_t devIdx)
{
    const Descriptor bus{socket(AF_INET, SOCK_DGRAM, 0)};
    if (!bus)
        return OB_ERROR_AS(caller, "socket failed, errno=%d, DevIdx=%d", errno, devIdx);
    ifreq mii = {};
    if (strncpy_s(mii.ifr_name, sizeof(mii.ifr_name), kInterface, sizeof(kInterface)) != 0)
        return OB_ERROR_AS(caller, "Runtime-constraint violation error in function kova_strncpy_s");
    PutMiiWords(mii, words);
    if (ioctl(bus.Get(), request, &mii) < 0)
        return OB_ERROR_AS(caller, "ioctl failed, errno=%d, DevIdx=%d", errno, devIdx);
    words = TakeMiiWords(mii);
    return RC_OK;
}

}  // namespace

int OBHAL_ReadMdio(uint8_t DevIdx, int Reg, uint16_t* Value)
{
    OB_TRACE("");
    if (Value == nullptr)
        return OB_ERROR("Illegal params, DevIdx=%d", DevIdx);
    MiiWords words = {};
    words.regNum = static_cast<uint16_t>(Reg);
    if (AddressSwitch(OB_CALLER, DevIdx, words) != RC_OK ||
        RunMii(OB_CALLER, SIOCGMIIREG, words, DevIdx) != RC_OK)
        return RC_ERROR;
    *Value = words.valueOut;
    return RC_OK;
}

int OBHAL_WriteMdio(uint8_t DevIdx, int Reg, uint16_t Data)
{
    OB_TRACE("");
    MiiWords words = {};
    words.regNum = static_cast<uint16_t>(Reg);
    words.valueIn = Data;
    if (AddressSwitch(OB_CALLER, DevIdx, words) != RC_OK)
        return RC_ERROR;
    return RunMii(OB_CALLER, SIOCSMIIREG, words, DevIdx);
}
