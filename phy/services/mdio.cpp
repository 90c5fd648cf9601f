#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <cerrno>

#include "common/log.h"
#include "common/mii_words.h"
#include "phy/call/region.h"
#include "phy/services/process_socket.h"

namespace orblink::phy {
namespace {

// Whichever PHY is meant: only the bus id and the address differ.
constexpr const char* kMdioInterface = "nsgmii0";

// Clause-45 addresses carry the port, the MMD and bit 15 as their mark.
uint16_t PhyId(uint32_t mdioAddr, uint32_t reg)
{
    if ((reg & EPHAL_MDIO_CLAUSE45) == 0)
        return static_cast<uint16_t>(mdioAddr);
    return static_cast<uint16_t>(0x8000U | mdioAddr << 5 | (reg >> 16 & 31U));
}

MiiWords WordsFor(uint32_t mdioBus, uint32_t mdioAddr, uint32_t reg, uint16_t data)
{
    return {.phyId = PhyId(mdioAddr, reg),
            .regNum = static_cast<uint16_t>(reg),
            .valueIn = data,
            .valueOut = 0,
            .mdioBus = static_cast<uint16_t>(mdioBus)};
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
        return EP_ERROR_AT("%s:%d NULL ptr");
    if (!OpenProcessSocket())
        return EP_ERROR_AT("%s:%d socket failed, errno=%d", errno);
    ifreq mii = {};
    if (strncpy_s(mii.ifr_name, sizeof(mii.ifr_name), kMdioInterface, sizeof(mii.ifr_name)) != 0)
        return EP_ERROR_AT("%s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    PutMiiWords(mii, WordsFor(MdioBus, MdioAddr, Reg, 0));
    if (ioctl(process.socket.Get(), SIOCGMIIREG, &mii) < 0) {
        EP_ERROR_AT("%s:%d ioctl failed, errno=%d", errno);
        CloseProcessSocket();
        return RC_ERROR;
    }
    *Value = TakeMiiWords(mii).valueOut;
    EP_TRACE_AT("%s:%d: MdioBus=%d MdioAddr=0x%02X Reg=0x%02X Data=0x%04X", MdioBus, MdioAddr, Reg,
                *Value);
    return RC_OK;
}

int EPHAL_DirectMdioWriteAccess(uint32_t MdioBus, uint32_t MdioAddr, uint32_t Reg, uint16_t Data)
{
    if (!OpenProcessSocket())
        return EP_ERROR_AT("%s:%d socket failed, errno=%d", errno);
    ifreq mii = {};
    if (strncpy_s(mii.ifr_name, sizeof(mii.ifr_name), kMdioInterface, sizeof(mii.ifr_name)) != 0)
        return EP_ERROR_AT("%s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    PutMiiWords(mii, WordsFor(MdioBus, MdioAddr, Reg, Data));
    if (ioctl(process.socket.Get(), SIOCSMIIREG, &mii) < 0) {
        EP_ERROR_AT("%s:%d ioctl failed, errno=%d", errno);
        CloseProcessSocket();
        return RC_ERROR;
    }
    EP_TRACE_AT("%s:%d: MdioBus=%d MdioAddr=0x%02X Reg=0x%02X Data=0x%04X", MdioBus, MdioAddr, Reg,
                Data);
    return RC_OK;
}

int EPHAL_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    if (DevIdx >= PhyCount())
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    const PhyBoardEntry& board = FindRecord(DevIdx)->board;
    return EPHAL_DirectMdioReadAccess(board.mdioBus, board.mdioAddr, Reg, Value);
}

int EPHAL_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Data)
{
    if (DevIdx >= PhyCount())
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    const PhyBoardEntry& board = FindRecord(DevIdx)->board;
    return EPHAL_DirectMdioWriteAccess(board.mdioBus, board.mdioAddr, Reg, Data);
}

int EPHAL_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value)
{
    return EPHAL_ReadMdio(DevIdx, Clause45Reg(Mmd, MmdReg), Value) == 0 ? RC_OK : RC_ERROR;
}

int EPHAL_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Data)
{
    return EPHAL_WriteMdio(DevIdx, Clause45Reg(Mmd, MmdReg), Data) == 0 ? RC_OK : RC_ERROR;
}
