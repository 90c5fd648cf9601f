#include <string.h>

#include "board/bsd_wire.h"
#include "board/hal_name.h"
#include "board/mac_addresses.h"
#include "common/iface.h"
#include "common/iface_words.h"
#include "common/log.h"
#include "hwmbox/hwmbox.h"

namespace orblink {
namespace {

void WriteDefaults(SwitchBoardEntry& entry)
{
    entry.enableGpioPin = OB_NO_GPIO_PIN;
    entry.resetGpioPin = OB_NO_GPIO_PIN;
    entry.internalPortPidx = 0xFFFFFFFFU;
    entry.mdioAddr = 0xFF;
    entry.mdioBus = 0xFF;
    entry.internalPortIfaceSpeed = OB_SPEED_1G;
    entry.internalPortIfaceMode = OB_IFACE_RGMII;
}

void ToHostOrder(SwitchBoardEntry& entry)
{
    entry.serdesId = be32toh(entry.serdesId);
    entry.enableGpioPin = be32toh(entry.enableGpioPin);
    entry.resetGpioPin = be32toh(entry.resetGpioPin);
    entry.internalPortPidx = be32toh(entry.internalPortPidx);
    entry.internalPortIfaceSpeed = be32toh(entry.internalPortIfaceSpeed);
    entry.internalPortIfaceMode = be32toh(entry.internalPortIfaceMode);
    entry.preResetArg = be32toh(entry.preResetArg);
    entry.reservedWord = be32toh(entry.reservedWord);
}

// MsgParser of the switch family; Dest receives a SwitchBsdPayload.
int ParseBsd(void* Buffer, uint32_t Length, void* Dest, int DestSize)
{
    OB_TRACE(" ---> ");
    HWMB_dumpBuffer(Buffer, static_cast<int>(Length));

    auto& mainMsg = *static_cast<MainMsg*>(Buffer);
    ToHostOrder(mainMsg);
    OB_TRACE("mainMsg->msg_type %x, mainMsg->payload_len %x", mainMsg.msg_type,
             mainMsg.payload_len);
    if (mainMsg.msg_type == kMsgPhyBsd)
        return OB_ERROR("Bad message: Expected BSD for orblink, got BSD for ethphy");
    if (mainMsg.msg_type != kMsgSwitchBsd)
        return OB_ERROR("Unsupported message type=%d", mainMsg.msg_type);

    constexpr int kExpected = sizeof(SwitchBsdPayload);
    if (mainMsg.payload_len != kExpected)
        return OB_ERROR("Bad message: expected payload size %d, actual payload size %d", kExpected,
                        mainMsg.payload_len);

    const auto* received = reinterpret_cast<const SwitchBsdPayload*>(&mainMsg + 1);
    const int count = received->bsd.NumOfSwitchDevices;
    if (count > OB_MAX_DEVICES)
        return OB_ERROR("Bad message: device count %d above %d", count, OB_MAX_DEVICES);
    if (memcpy_s(Dest, static_cast<size_t>(DestSize), received, sizeof(*received)) != 0)
        return OB_ERROR_TWICE(
            "%s:%d ERROR: %s:%d: Runtime-constraint violation error in function kova_memcpy_s");

    auto& payload = *static_cast<SwitchBsdPayload*>(Dest);
    for (int i = 0; i < count; ++i)
        ToHostOrder(payload.bsd.entry[i]);
    payload.portIsolationEnabled = be32toh(payload.portIsolationEnabled);
    OB_TRACE(" <--- ");
    return RC_OK;
}

void FillVendorRecord(SwitchVendorRecord& record, bool portIsolation)
{
    const uint32_t params[] = {portIsolation, 0};
    record.vendorParamSize = sizeof(params);
    memcpy(record.vendorParams, params, sizeof(params));
}

}  // namespace
}  // namespace orblink

using namespace orblink;

int OBOS_InitHwSpecificData(SwitchBsd* Bsd, SwitchVendorRecord* Vendor)
{
    OB_TRACE("--->");
    if (Bsd == nullptr)
        return OB_ERROR("SwitchBsd is NULL");
    if (Vendor == nullptr)
        return OB_ERROR("VendorRecord is NULL");

    SwitchBsdPayload payload = {};
    memset(Bsd, 0, sizeof(*Bsd));
    memset(Vendor, 0, sizeof(*Vendor) * OB_MAX_DEVICES);
    WriteDefaults(Bsd->entry[0]);

    OB_INFO("Waiting for LAN BSD from ARM");
    HWMB_Start(SOCK_SUBJECT, kBsdAppid, kBsdMid, BuildBsdAck, ParseBsd, &payload, sizeof(payload));
    OB_INFO("Received LAN BSD from ARM");

    if (OBOS_InitBsdFromIni(Bsd) != 0) {
        OB_ERROR("OBOS_InitBsdFromIni() failed!");
        OB_TRACE("<---");
        return RC_ERROR;
    }
    OB_TRACE("OBOS_InitBsdFromIni() done! NumOfSwitchDevices=%d", Bsd->NumOfSwitchDevices);
    if (Bsd->NumOfSwitchDevices != 0) {
        OB_INFO("MII devices config overridden by ini!");
    } else {
        if (memcpy_s(Bsd, sizeof(*Bsd), &payload.bsd, sizeof(payload.bsd)) != 0)
            return OB_ERROR_TWICE(
                "%s:%d ERROR: %s:%d: Runtime-constraint violation error in function kova_memcpy_s");
        FillVendorRecord(Vendor[0], payload.portIsolationEnabled != 0);
    }
    StoreMacAddresses(payload.mac);

    const int count = BoundedDeviceCount(Bsd->NumOfSwitchDevices);
    if (count != Bsd->NumOfSwitchDevices)
        OB_ERROR("Bad override: device count %d above %d", Bsd->NumOfSwitchDevices, OB_MAX_DEVICES);
    for (int i = 0; i < count; ++i) {
        const SwitchBoardEntry& entry = Bsd->entry[i];
        OB_INFO(
            "Board-specific data: \n\t\tSwitch Idx: %d\n\t\t\tHAL library: %s"
            "\n\t\t\tEnable GPIO pin: %d\n\t\t\tReset GPIO pin: %d"
            "\n\t\t\tInternal port pidx: %d\n\t\t\tInternal port mode: %s"
            "\n\t\t\tInternal port speed: %s\n\t\t\tMDIO Bus: %d"
            "\n\t\t\tMDIO Address: %d\n\t\t\tGmax Idx: %d\n",
            i, HalName(entry.halLibName).Text(), entry.enableGpioPin, entry.resetGpioPin,
            entry.internalPortPidx, IfaceModeWord(entry.internalPortIfaceMode),
            IfaceSpeedWord(entry.internalPortIfaceSpeed), static_cast<int8_t>(entry.mdioBus),
            static_cast<int8_t>(entry.mdioAddr), entry.serdesId);
    }
    OB_TRACE("<---");
    return RC_OK;
}
