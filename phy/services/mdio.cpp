#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <cerrno>
#include <cstring>

#include "common/mii_words.h"
#include "phy/services/process_socket.h"

namespace orblink::phy {

namespace {

// Clause-45 addresses carry the port, the MMD and bit 15 as their mark.
uint16_t PhyId(uint32_t mdioAddr, uint32_t reg)
{
    if ((reg & EPHAL_MDIO_CLAUSE45) == 0)
        return static_cast<uint16_t>(mdioAddr);
    return static_cast<uint16_t>(0x8000U | mdioAddr << 5 | (reg >> 16 & 31U));
}

// One ioctl on "nsgmii0", whichever PHY is meant; the words come back with the driver's answer.
int RunMii(LogCaller caller, unsigned long request, MiiWords& words)
{
    if (OpenProcessSocket(caller) != RC_OK)
        return RC_ERROR;
    ifreq mii = {};
    if (StoreInterfaceName(caller, mii.ifr_name, "nsgmii0") != RC_OK)
        return RC_ERROR;
    PutMiiWords(mii, words);
    if (ioctl(process.socket, request, &mii) < 0) {
        EP_ERROR_AT_AS(caller, "ioctl failed, errno=%d", errno);
        CloseProcessSocket();
        return RC_ERROR;
    }
    words = TakeMiiWords(mii);
    return RC_OK;
}

MiiWords WordsFor(uint32_t mdioBus, uint32_t mdioAddr, uint32_t reg, uint16_t data)
{
    return {.phyId = PhyId(mdioAddr, reg),
            .regNum = static_cast<uint16_t>(reg),
            .valueIn = data,
            .valueOut = 0,
            .mdioBus = static_cast<uint16_t>(mdioBus)};
}

// The record of a PHY that the board has.
const PhyBoardEntry* BoardEntryOrError(LogCaller caller, uint8_t devIdx)
{
    if (devIdx < PhyCount())
        return &FindRecord(devIdx)->board;
    EP_ERROR_AT_AS(caller, "failed DevIndex=%d", devIdx);
    return nullptr;
}

uint32_t Clause45Reg(uint8_t mmd, uint16_t mmdReg)
{
    return EPHAL_MDIO_CLAUSE45 | uint32_t{mmd} << 16 | mmdReg;
}

}  // namespace

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int EPHAL_DirectMdioReadAccess(uint32_t MdioBus, uint32_t MdioAddr, uint32_t Reg, uint16_t* Value)
{
    if (Value == nullptr)
        return EP_ERROR_AT("NULL ptr");
    MiiWords words = WordsFor(MdioBus, MdioAddr, Reg, 0);
    if (RunMii(EP_CALLER, SIOCGMIIREG, words) != RC_OK)
        return RC_ERROR;
    *Value = words.valueOut;
    EP_TRACE_PLACED("%s:%d: MdioBus=%d MdioAddr=0x%02X Reg=0x%02X Data=0x%04X", MdioBus, MdioAddr,
                    Reg, *Value);
    return RC_OK;
}

int EPHAL_DirectMdioWriteAccess(uint32_t MdioBus, uint32_t MdioAddr, uint32_t Reg, uint16_t Data)
{
    MiiWords words = WordsFor(MdioBus, MdioAddr, Reg, Data);
    if (RunMii(EP_CALLER, SIOCSMIIREG, words) != RC_OK)
        return RC_ERROR;
    EP_TRACE_PLACED("%s:%d: MdioBus=%d MdioAddr=0x%02X Reg=0x%02X Data=0x%04X", MdioBus, MdioAddr,
                    Reg, Data);
    return RC_OK;
}

int EPHAL_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    const PhyBoardEntry* const board = BoardEntryOrError(EP_CALLER, DevIdx);
    if (board == nullptr)
        return RC_ERROR;
    return EPHAL_DirectMdioReadAccess(board->mdioBus, board->mdioAddr, Reg, Value);
}

int EPHAL_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Data)
{
    const PhyBoardEntry* const board = BoardEntryOrError(EP_CALLER, DevIdx);
    if (board == nullptr)
        return RC_ERROR;
    return EPHAL_DirectMdioWriteAccess(board->mdioBus, board->mdioAddr, Reg, Data);
}

int EPHAL_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value)
{
    return EPHAL_ReadMdio(DevIdx, Clause45Reg(Mmd, MmdReg), Value) == 0 ? RC_OK : RC_ERROR;
}

int EPHAL_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Data)
{
    return EPHAL_WriteMdio(DevIdx, Clause45Reg(Mmd, MmdReg), Data) == 0 ? RC_OK : RC_ERROR;
}
