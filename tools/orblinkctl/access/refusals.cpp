#include "tools/orblinkctl/access/refusals.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/names.h"

namespace ctl {

namespace {

constexpr Refusal kRefusals[] = {
    {"ORBLINK_GetSwitchDevices", "the switches could not be read"},
    {"ORBLINK_GetSwitchProvConfig", "the configuration could not be read"},
    {"ORBLINK_GetSwitchCaps", "the capabilities could not be read"},
    {"ORBLINK_ResetDisable", "was not brought up"},
    {"ORBLINK_ResetEnable", "was not put into reset"},
    {"ORBLINK_GetPortLink", "the link could not be read"},
    {"ORBLINK_GetPortEnable", "the state could not be read"},
    {"ORBLINK_EnablePort", "was not enabled"},
    {"ORBLINK_DisablePort", "was not disabled"},
    {"ORBLINK_SetPhyPortSpeedDuplex", "the speed was not set"},
    {"ORBLINK_GetEeePortState", "the EEE state could not be read"},
    {"ORBLINK_EnablePhyPortEee", "EEE was not switched on"},
    {"ORBLINK_DisablePhyPortEee", "EEE was not switched off"},
    {"ORBLINK_SetPortMirror", "the mirror was not set"},
    {"ORBLINK_EnableRgmiiDelay", "the RGMII delay was not switched on"},
    {"ORBLINK_DisableRgmiiDelay", "the RGMII delay was not switched off"},
    {"ORBLINK_GetPortIEEETestMode", "the test mode could not be read"},
    {"ORBLINK_SetPortIEEETestMode", "the test mode was not set"},
    {"ORBLINK_EnablePhyPortDvt", "the verification test was not started"},
    {"ORBLINK_DisablePhyPortDvt", "the verification test was not ended"},
    {"ORBLINK_GetPortCounters", "the counters could not be read"},
    {"ORBLINK_ResetPortCounters", "the counters were not reset"},
    {"ORBLINK_SetLanPortVlan", "the VLAN was not set"},
    {"ORBLINK_SetLanPortPcp", "the priority was not set"},
    {"ORBLINK_SetLanPortEgressTagging", "the tagging was not set"},
    {"ORBLINK_SetLanPortGroupId", "the group was not set"},
    {"ORBLINK_EnableProviderBridgedMode", "provider bridged mode was not switched on"},
    {"ORBLINK_DisableProviderBridgedMode", "provider bridged mode was not switched off"},
    {"ORBLINK_GetMactoVlanTable", "the MAC-to-VLAN table could not be read"},
    {"ORBLINK_MapMactoVlan", "the MAC-to-VLAN table was not changed"},
    {"ORBLINK_EnableIgmpSnooping", "snooping was not switched on"},
    {"ORBLINK_DisableIgmpSnooping", "snooping was not switched off"},
    {"ORBLINK_SetMtuSize", "the MTU was not set"},
    {"ORBLINK_SetMacAging", "the ageing was not set"},
    {"ORBLINK_GetLEDConfig", "the LED mode could not be read"},
    {"ORBLINK_SetLEDConfig", "the LED mode was not set"},
    {"ORBLINK_SetQWred", "the thresholds of the queue were not set"},
    {"ORBLINK_SetGlobWred", "the global thresholds were not set"},
    {"ORBLINK_SetQRsrv", "the buffers were not reserved"},
    {"ORBLINK_SetPortFc", "flow control was not set"},
    {"ORBLINK_GetMacTable", "the MAC table could not be read"},
    {"ORBLINK_ForEachMacEntry", "the MAC table could not be read"},
    {"ORBLINK_ReadPortReg", "could not be read"},
    {"ORBLINK_WritePortReg", "could not be written"},
    {"ORBLINK_SmiRead", "could not be read"},
    {"ORBLINK_SmiWrite", "could not be written"},
    {"ORBLINK_VendorSpecificIoctl", "the chip's own command was refused"},
    {"ORBLINK_SetOrbLinkServiceStatus", "the service flag was not set"},
    {"ORBLINK_GetIsolationModeEnabled", "the isolation flag could not be read"},
    {"ORBLINK_PrintMachineState", "the state machines were not printed"},
    {"ORBLINK_GetMacAddresses", "the MAC addresses could not be read"},
    {"ORBLINK_GetNumOfSwitches", "the switches could not be counted"},
    {"ORBLINK_InitOnce", "the switch family was not initialised"},
    {"ETHPHY_InitOnce", "the PHY family was not initialised"},
    {"ETHPHY_GetNumOfPhys", "the PHYs could not be counted"},
    {"ETHPHY_GetPhyData", "the record could not be read"},
    {"ETHPHY_GetLink", "the link could not be read"},
    {"ETHPHY_ResetDisable", "was not brought up"},
    {"ETHPHY_ResetEnable", "was not put into reset"},
    {"ETHPHY_SetAdminState", "was not enabled or disabled"},
    {"ETHPHY_GetCaps", "the capabilities could not be read"},
    {"ETHPHY_GetProvisionedConfig", "the configuration could not be read"},
    {"ETHPHY_GetBsdConfig", "the wiring could not be read"},
    {"ETHPHY_GetCounters", "the counters could not be read"},
    {"ETHPHY_ResetCounters", "the counters were not reset"},
    {"ETHPHY_SetEeeState", "EEE was not switched"},
    {"ETHPHY_Poll", "the periodic work was not done"},
    {"ETHPHY_ResetSgmii", "the lane was not reset"},
    {"ETHPHY_PhyZ88_SetSpeedDuplexMode", "the speed was not set"},
    {"ETHPHY_ReadMdio", "could not be read"},
    {"ETHPHY_WriteMdio", "could not be written"},
    {"ETHPHY_ReadMmd", "could not be read"},
    {"ETHPHY_WriteMmd", "could not be written"},
    {"ETHPHY_ReadChipReg", "could not be read"},
    {"ETHPHY_WriteChipReg", "could not be written"},
};

constexpr Reason kReasons[] = {
    {"HAL does not exist", kUnsupported, "its HAL library does not offer it"},
    {"had been disable", kUnsupported, "the port is disabled: orblinkctl port PORT enable"},
    {"is in DVT mode", kUnsupported, "a verification test is on: orblinkctl port PORT dvt off"},
    {"No empty entries in Mac to Vlan table", kUnsupported,
     "all 32 entries are taken: orblinkctl mac-vlan SWITCH"},
    {"Illegal saved configuration", kFailed,
     "the stored configuration is illegal: orblinkctl up SWITCH --defaults"},
    {"Switch was not provisioned", kInitState, "never configured: orblinkctl up SWITCH"},
    {"dlopen failed", kFailed, "its HAL library cannot be loaded: orblinkctl doctor"},
    {"dlsym failed", kFailed, "its HAL library has no table: orblinkctl doctor"},
    {"No 'Reset GPIO' pin", kUnsupported, "it has no reset pin: orblinkctl board"},
};

// Nothing of what the library said explains it.
constexpr char kOnBattery[] =
    "the modem runs on battery: again on mains power, orblinkctl board shows it";
constexpr char kUnknownReason[] = "the chip or its HAL refused: again with -v shows the log";

bool IsBoard(std::string_view object)
{
    return object.find_first_of("0123456789") == std::string_view::npos;
}

unsigned DeviceIn(std::string_view object)
{
    return static_cast<unsigned>(object[object.find_first_of("0123456789")] - '0');
}

// "port 0:2 lan2" is 0:2.
std::string PortOf(std::string_view object)
{
    const size_t colon = object.find(':');
    return colon == std::string_view::npos || colon == 0 ? std::string()
                                                         : std::string(object.substr(colon - 1, 3));
}

void Replace(std::string& text, const char* word, const std::string& by)
{
    if (const size_t at = text.find(word); at != std::string::npos)
        text.replace(at, std::strlen(word), by);
}

std::string Filled(std::string text, std::string_view object)
{
    if (IsBoard(object))
        return text;
    Replace(text, "PORT", PortOf(object));
    Replace(text, "SWITCH", std::to_string(DeviceIn(object)));
    return text;
}

// Where the device sits on MDIO, as the board data have it.
std::string MdioPlace(std::string_view object)
{
    const unsigned device = DeviceIn(object);
    const auto text = [](unsigned bus, unsigned address) {
        return "MDIO bus " + std::to_string(bus) + " address " + std::to_string(address);
    };
    if (!object.starts_with("PHY")) {
        const auto board = SwitchOf(ReadSwitches(), device).board;
        return text(board.mdioBus, board.mdioAddr);
    }
    const auto board = PhyOf(ReadPhys(), device).board;
    return text(board.mdioBus, board.mdioAddr);
}

// "... register 0x0002" of a PHY is one on the bus; a switch's registers lie behind its own.
std::string MdioRegister(std::string_view object, std::string_view operation)
{
    const size_t at = object.rfind("register ");
    if (at == std::string_view::npos || !operation.ends_with("Mdio"))
        return {};
    const auto reg = ParseNumber(object.substr(at + 9));
    return reg ? " register " + std::to_string(*reg) : std::string();
}

// Empty when it was no access to the bus that failed.
std::string MdioReason(std::string_view object, std::string_view operation)
{
    const std::string line = LineWith("Mdio");
    const size_t at = line.find("ioctl failed, errno=");
    if (at == std::string::npos || IsBoard(object))
        return {};
    const char* const number = line.c_str() + line.find('=', at) + 1;
    const auto error = static_cast<int>(std::strtol(number, nullptr, 10));
    return MdioPlace(object) + MdioRegister(object, operation) + ": " + std::strerror(error) +
           ": orblinkctl doctor";
}

std::string_view TextOf(std::string_view operation)
{
    for (const auto& refusal : kRefusals)
        if (operation == refusal.operation)
            return refusal.text;
    return "the operation failed";
}

const Reason* FindReason()
{
    for (const auto& reason : kReasons)
        if (LogSaid(reason.line))
            return &reason;
    return nullptr;
}

std::string Because(std::string_view object, std::string_view operation)
{
    if (auto mdio = MdioReason(object, operation); !mdio.empty())
        return mdio;
    return ORBLINK_isBatteryMode() != 0 ? kOnBattery : kUnknownReason;
}

}  // namespace

std::span<const Refusal> Refusals()
{
    return kRefusals;
}

std::span<const Reason> Reasons()
{
    return kReasons;
}

Failure RefusalOf(std::string_view object, std::string_view operation)
{
    const auto* reason = FindReason();
    const std::string_view what = TextOf(operation);
    // What is said of the object itself needs no colon.
    const bool itself = what.starts_with("was ") || what.starts_with("could ");
    std::string text(object);
    text += itself ? " " : ": ";
    text += what;
    text += ": ";
    text += reason != nullptr ? Filled(reason->text, object) : Because(object, operation);
    if (LogLinesAreShown())
        text += " (" + std::string(operation) + ")";
    return {reason != nullptr ? reason->code : kFailed, text};
}

}  // namespace ctl
