#include <string.h>

#include "board/bsd_wire.h"
#include "common/iface.h"
#include "common/iface_words.h"
#include "common/log.h"
#include "hwmbox/hwmbox.h"

namespace orblink {
namespace {

void WriteDefaults(PhyBoardEntry& entry)
{
    entry.enableGpioPin = OB_NO_GPIO_PIN;
    entry.resetGpioPin = OB_NO_GPIO_PIN;
    entry.mdioBus = 0xFF;
    entry.mdioAddr = 0xFF;
    entry.portIfaceSpeed = OB_SPEED_1G;
    entry.portIfaceMode = OB_IFACE_SGMII;
}

void ToHostOrder(PhyBoardEntry& entry)
{
    entry.serdesId = be32toh(entry.serdesId);
    entry.enableGpioPin = be32toh(entry.enableGpioPin);
    entry.resetGpioPin = be32toh(entry.resetGpioPin);
    entry.portIfaceSpeed = be32toh(entry.portIfaceSpeed);
    entry.portIfaceMode = be32toh(entry.portIfaceMode);
}

// MsgParser of the PHY family; Dest receives a PhyBsdPayload.
int ParseBsd(void* Buffer, uint32_t Length, void* Dest, int DestSize)
{
    EP_TRACE(" ---> ");
    HWMB_dumpBuffer(Buffer, static_cast<int>(Length));

    auto& mainMsg = *static_cast<MainMsg*>(Buffer);
    ToHostOrder(mainMsg);
    EP_TRACE("mainMsg->msg_type %x, mainMsg->payload_len %x", mainMsg.msg_type,
             mainMsg.payload_len);
    if (mainMsg.msg_type == kMsgSwitchBsd)
        return EP_ERROR("Bad message: Expected BSD for ETHPHY, got BSD for OrbLink");
    if (mainMsg.msg_type != kMsgPhyBsd)
        return EP_ERROR("Unsupported message type=%d", mainMsg.msg_type);

    constexpr int kExpected = sizeof(PhyBsdPayload);
    if (mainMsg.payload_len != kExpected)
        return EP_ERROR("Bad message: expected payload size %d, actual payload size %d", kExpected,
                        mainMsg.payload_len);

    const auto* received = reinterpret_cast<const PhyBsdPayload*>(&mainMsg + 1);
    const int count = received->bsd.numOfPhys;
    if (count > OB_MAX_DEVICES)
        return EP_ERROR("Bad message: device count %d above %d", count, OB_MAX_DEVICES);
    if (memcpy_s(Dest, static_cast<size_t>(DestSize), received, sizeof(*received)) != 0)
        return EP_ERROR("Runtime-constraint violation error in function kova_memcpy_s");

    auto& payload = *static_cast<PhyBsdPayload*>(Dest);
    for (int i = 0; i < count; ++i)
        ToHostOrder(payload.bsd.entry[i]);
    EP_TRACE(" <--- ");
    return RC_OK;
}

}  // namespace
}  // namespace orblink

using namespace orblink;

int EP_InitBoardSpecificData(EthphyBsd* Bsd, PhyVendorRecord* Vendor)
{
    if (Bsd == nullptr)
        return EP_ERROR("EthphyBsd is NULL");
    if (Vendor == nullptr)
        return EP_ERROR("VendorRecord is NULL");

    PhyBsdPayload payload = {};
    memset(Bsd, 0, sizeof(*Bsd));
    for (PhyBoardEntry& entry : Bsd->entry)
        WriteDefaults(entry);

    EP_INFO("Waiting for LAN BSD from ARM");
    HWMB_Start(SOCK_SUBJECT, kBsdAppid, kBsdMid, BuildBsdAck, ParseBsd, &payload, sizeof(payload));
    EP_INFO("Received LAN BSD from ARM");

    if (memcpy_s(Bsd, sizeof(*Bsd), &payload.bsd, sizeof(payload.bsd)) != 0)
        return EP_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
    Vendor[0].ulpModeEnabled = payload.ulpModeEnabled != 0;
    Vendor[0].size = sizeof(Vendor[0].ulpModeEnabled);

    const int count = BoundedDeviceCount(Bsd->numOfPhys);
    for (int i = 0; i < count; ++i) {
        const PhyBoardEntry& entry = Bsd->entry[i];
        EP_INFO(
            "Board-specific data: \n\t\tExternal Phy Idx: %d\n\t\t\tEnable GPIO pin: %d"
            "\n\t\t\tReset GPIO pin: %d\n\t\t\tport mode: %s\n\t\t\tport speed: %s"
            "\n\t\t\tMDIO Bus: %d\n\t\t\tMDIO Address: %d\n\t\t\tGmax Idx: %d\n",
            i, entry.enableGpioPin, entry.resetGpioPin, IfaceModeWord(entry.portIfaceMode),
            IfaceSpeedWord(entry.portIfaceSpeed), static_cast<int8_t>(entry.mdioBus),
            static_cast<int8_t>(entry.mdioAddr), entry.serdesId);
    }
    return RC_OK;
}
