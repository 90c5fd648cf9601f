#include "common/wait.h"
#include "phy/call/frame.h"
#include "phy/lifecycle/lane.h"

namespace orblink::phy {
namespace {

constexpr unsigned kResetMicroseconds = 300'000;
constexpr unsigned kReadyRounds = 20;
constexpr unsigned kReadyRoundMilliseconds = 100;
constexpr uint32_t kIdentifier1Reg = 2;
constexpr uint16_t kNobodyDrivesTheBus = 0xFFFF;

constexpr uint8_t kNoResetPin = 255;

uint8_t ResetPin(const PhyDeviceRecord& record)
{
    return static_cast<uint8_t>(ReadOnce(record.board.resetGpioPin));
}

// Waits until the PHY answers with an identifier. The outcome is only logged.
void wait_for_phy_ready(uint8_t devIdx)
{
    for (unsigned round = 1; round <= kReadyRounds; ++round) {
        WaitMicroseconds(kReadyRoundMilliseconds * 1000);
        uint16_t identifier = 0;
        if (EPHAL_ReadMdio(devIdx, kIdentifier1Reg, &identifier) != 0) {
            EP_ERROR("ReadMdio failed\n");
            return;
        }
        if (identifier != kNobodyDrivesTheBus) {
            EP_INFO("PHY become available after %u ms. PHY indentifier 0x%X",
                    kReadyRoundMilliseconds * round, identifier);
            return;
        }
    }
    EP_ERROR("PHY MDIO communication failed\n");
}

void StoreDefaults(PhyProvConfig& config)
{
    config.adminState = 1;
    config.word12 = 1;
    config.word16 = 1;
}

}  // namespace
}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_ResetDisable(uint8_t DevIdx, int DefConfig)
{
    EP_TRACE_AT("%s:%d DevIndex=%d DefConfig=%d", DevIdx, DefConfig);
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    PhyDeviceRecord& record = call.Record();
    record.config.hwState = EP_HW_STATE_DISABLED;
    const uint8_t pin = ResetPin(record);
    if (pin != kNoResetPin) {
        OBOS_SetGpioValue(pin, 0);  // results dropped: they are logged, and the PHY may be up
        WaitMicroseconds(kResetMicroseconds);
        EP_INFO_AT("%s:%d Setting GPIO %d to 1", pin);
        OBOS_SetGpioValue(pin, 1);
        wait_for_phy_ready(DevIdx);
    }
    if (DefConfig != 0)
        StoreDefaults(record.config);
    if (CallSlot(DevIdx, &HalTable::ResetDisable, DefConfig) != RC_OK)
        EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    if (_IsResetSgmiiRequired(DevIdx, record))
        _ResetSgmii(ReadOnce(record.board.serdesId), record.board.portIfaceSpeed);
    EP_INFO("PHY0 ULP = %u", call.Region().vendor[0].ulpModeEnabled);

    record.config.hwState = EP_HW_STATE_ENABLED;  // from here on, whatever the PHY answers
    if (CallSlot(DevIdx, &HalTable::GetCaps, &record.caps) != RC_OK) {
        record.capsValid = 0;
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    }
    record.capsValid = 1;
    record.postResetMark = EP_POST_RESET_NONE;
    const auto adminState = static_cast<int>(record.config.adminState);
    if (CallSlot(DevIdx, &HalTable::SetAdminState, adminState) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}

int ETHPHY_ResetEnable(uint8_t DevIdx)
{
    EP_TRACE_AT("%s:%d DevIndex=%d", DevIdx);
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    PhyDeviceRecord& record = call.Record();
    if (record.config.hwState == EP_HW_STATE_ENABLED) {
        if (CallSlot(DevIdx, &HalTable::SetAdminState, 0) != RC_OK)
            EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
        record.config.hwState = EP_HW_STATE_DISABLED;
    }
    int rc = CallSlot(DevIdx, &HalTable::ResetEnable);
    if (rc != RC_OK)
        EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    const uint8_t pin = ResetPin(record);
    if (pin != kNoResetPin) {
        EP_INFO_AT("%s:%d Setting GPIO %d to 0", pin);
        rc = OBOS_SetGpioValue(pin, 0) == 0 ? RC_OK : EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    }
    record.postResetMark = EP_POST_RESET_HELD;
    return rc;
}
