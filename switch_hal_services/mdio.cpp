#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "common/mii_words.h"
#include "common/log.h"
#include "switch_hal_services/attached_record.h"
#include "switch_hal_services/orblink_hal_services.h"

using namespace orblink;

namespace {

constexpr uint8_t kNone = 0xFF;

// Whichever switch is meant: only the bus id and the address differ between switches.
constexpr char kInterface[] = "nsgmii0";

int RunOnSocket(LogCaller caller, int fd, unsigned long request, MiiWords& words, uint8_t devIdx)
{
    ifreq mii = {};
    if (strncpy_s(mii.ifr_name, sizeof(mii.ifr_name), kInterface, sizeof(kInterface)) != 0)
        return OB_ERROR_AS(caller, "Runtime-constraint violation error in function kova_strncpy_s");
    PutMiiWords(mii, words);
    if (ioctl(fd, request, &mii) < 0)
        return OB_ERROR_AS(caller, "ioctl failed, errno=%d, DevIdx=%d", errno, devIdx);
    words = TakeMiiWords(mii);
    return RC_OK;
}

int RunMii(LogCaller caller, unsigned long request, MiiWords& words, uint8_t devIdx)
{
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    if (fd < 0)
        return OB_ERROR_AS(caller, "socket failed, errno=%d, DevIdx=%d", errno, devIdx);
    const int result = RunOnSocket(caller, fd, request, words, devIdx);
    close(fd);
    return result;
}

// One access to the switch's registers; both directions fail in the same ways.
int Access(LogCaller caller, unsigned long request, uint8_t devIdx, int reg, uint16_t& value)
{
    const SwitchDeviceRecord* record = AttachedRecord(devIdx);
    if (record == nullptr)
        return OB_ERROR_AS(caller, "Illegal params, DevIdx=%d", devIdx);
    const SwitchBoardEntry& board = record->board;
    if (board.mdioBus == kNone)
        return OB_ERROR_TWICE_AS(caller, "Invalid MDIO bus, check board specific data, DevIdx=%d",
                                 devIdx);
    if (board.mdioAddr == kNone)
        return OB_ERROR_AS(caller, "Invalid MDIO address, check board specific data, DevIdx=%d",
                           devIdx);
    MiiWords words = {.phyId = board.mdioAddr,
                      .regNum = static_cast<uint16_t>(reg),
                      .valueIn = value,
                      .valueOut = 0,
                      .mdioBus = board.mdioBus};
    if (RunMii(caller, request, words, devIdx) != RC_OK)
        return RC_ERROR;
    value = words.valueOut;
    return RC_OK;
}

}  // namespace

int OBHAL_ReadMdio(uint8_t DevIdx, int Reg, uint16_t* Value)
{
    OB_TRACE("");
    if (Value == nullptr)
        return OB_ERROR("Illegal params, DevIdx=%d", DevIdx);
    uint16_t value = 0;
    if (Access(OB_CALLER, SIOCGMIIREG, DevIdx, Reg, value) != RC_OK)
        return RC_ERROR;
    *Value = value;
    return RC_OK;
}

int OBHAL_WriteMdio(uint8_t DevIdx, int Reg, uint16_t Data)
{
    OB_TRACE("");
    return Access(OB_CALLER, SIOCSMIIREG, DevIdx, Reg, Data);
}
