#include "tools/orblink_hal_check/sweeps/replay.h"

#include <cstring>
#include <string>

#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

constexpr uint8_t kDevices = 2;

// Whether the restore worked in the process that called Init.
bool& Restored(uint8_t devIdx)
{
    return TheWatch().restored[devIdx];
}

std::string Blame(const std::string& call)
{
    const Watch& watch = TheWatch();
    return watch.failedCall[0] != '\0' ? call + " failed at " + watch.failedCall
                                       : call + " failed, though no slot did";
}

bool FailedIn(const char* slot)
{
    return strncmp(TheWatch().failedCall, slot, strlen(slot)) == 0;
}

void Initialise(Family family)
{
    const bool isSwitch = family == Family::kSwitch;
    const int result = isSwitch ? ORBLINK_InitOnce(0) : ETHPHY_InitOnce();
    const char* const name = isSwitch ? "ORBLINK_InitOnce" : "ETHPHY_InitOnce";
    if (FailedIn("Init("))
        ReportOn("Init", "init.failed", Blame(name));
    else if (result != 0)
        Report("bringup.failed", Blame(name));
    TheWatch().initialised[family == Family::kPhy] = result == 0;
}

// Devices that the board does not have are left out.
bool IsThere(Family family, uint8_t devIdx)
{
    uint8_t count = 0;
    const int result =
        family == Family::kSwitch ? ORBLINK_GetNumOfSwitches(&count) : ETHPHY_GetNumOfPhys(&count);
    return result == 0 && devIdx < count;
}

// The PHY family goes on after slots that failed, and says that it succeeded.
bool BringUp(Family family, uint8_t devIdx, bool defaults)
{
    TheWatch().failedCall[0] = '\0';
    const int result = family == Family::kSwitch
                           ? ORBLINK_ResetDisable(devIdx, defaults ? 1 : 0, nullptr, 0)
                           : ETHPHY_ResetDisable(devIdx, defaults ? 1 : 0);
    return result == 0 && (family == Family::kSwitch || TheWatch().failedCall[0] == '\0');
}

std::string NameOfBringUp(Family family, uint8_t devIdx)
{
    return std::string(family == Family::kSwitch ? "ORBLINK_" : "ETHPHY_") + "ResetDisable(" +
           std::to_string(devIdx) + ")";
}

void FirstBringUp(Family family, uint8_t devIdx)
{
    if (IsThere(family, devIdx) && !BringUp(family, devIdx, true))
        Report("bringup.failed", Blame(NameOfBringUp(family, devIdx)));
}

bool Restore(Family family, uint8_t devIdx)
{
    TheWatch().failedCall[0] = '\0';
    const int held =
        family == Family::kSwitch ? ORBLINK_ResetEnable(devIdx) : ETHPHY_ResetEnable(devIdx);
    const bool slotFailed = TheWatch().failedCall[0] != '\0';
    return held == 0 && !slotFailed && BringUp(family, devIdx, false);
}

void FirstRestore(Family family, uint8_t devIdx)
{
    if (!IsThere(family, devIdx))
        return;
    Restored(devIdx) = Restore(family, devIdx);
    if (!Restored(devIdx))
        Report("bringup.restore-failed", Blame(NameOfBringUp(family, devIdx)));
}

void SecondRestore(Family family, uint8_t devIdx)
{
    if (IsThere(family, devIdx) && Restored(devIdx) && !Restore(family, devIdx))
        Report("private.kept-in-process",
               "in a process that has not called Init, " + Blame(NameOfBringUp(family, devIdx)));
}

// One setting of each kind that is restored. What the chip refuses is not restored.
void SetUpSwitch(uint8_t devIdx)
{
    SwitchCaps caps{};
    if (!IsThere(Family::kSwitch, devIdx) || ORBLINK_GetSwitchCaps(devIdx, &caps) != 0)
        return;
    const uint8_t ports = caps.numOfPorts < OB_MAX_PORTS ? caps.numOfPorts : OB_MAX_PORTS;
    const uint8_t mac[6] = {0x02, 0, 0, 0, 0, 0x11};
    ORBLINK_EnableProviderBridgedMode(devIdx, 0x88A8);
    for (uint8_t port = 1; port < ports; ++port) {
        ORBLINK_SetLanPortGroupId(devIdx, port, 1, 1);
        ORBLINK_SetLanPortVlan(devIdx, port, 100 + port);
        ORBLINK_SetLanPortPcp(devIdx, port, 3);
        ORBLINK_SetLanPortEgressTagging(devIdx, port, 1);
        if (caps.port[port].portHasPhy != 0) {
            ORBLINK_SetPhyPortSpeedDuplex(devIdx, port, OB_SPEED_100M, 1);
            ORBLINK_DisablePhyPortEee(devIdx, port);
        } else if (caps.port[port].portIfaceType == OB_IFACE_RGMII) {
            ORBLINK_EnableRgmiiDelay(devIdx, port);
        }
    }
    if (ports > 2)
        ORBLINK_SetPortMirror(devIdx, 1, 2);
    // The library keeps an entry also when the slot refuses it.
    if (ORBLINK_MapMactoVlan(devIdx, 1, mac, 0xFFF, 100, 1) != 0)
        ORBLINK_MapMactoVlan(devIdx, 1, mac, 0xFFF, 100, 0);
    ORBLINK_SetMacAging(devIdx, 2);
    ORBLINK_EnableIgmpSnooping(devIdx);
    ORBLINK_SetMtuSize(devIdx, 1500);
    ORBLINK_SetLEDConfig(devIdx, 1);
}

void SetUpPhy(uint8_t devIdx)
{
    if (!IsThere(Family::kPhy, devIdx))
        return;
    ETHPHY_SetEeeState(devIdx, 1);
    ETHPHY_SetAdminState(devIdx, 0);
    ETHPHY_SetAdminState(devIdx, 1);
    ETHPHY_Poll(devIdx);
}

}  // namespace

Steps FirstProcess(Family family)
{
    Steps steps{{"", "slot.crash", [=] { Initialise(family); }}};
    for (uint8_t devIdx = 0; devIdx < kDevices; ++devIdx)
        steps.push_back({"", "slot.crash", [=] { FirstBringUp(family, devIdx); }});
    for (uint8_t devIdx = 0; devIdx < kDevices; ++devIdx)
        steps.push_back({"", "slot.crash", [=] {
                             family == Family::kSwitch ? SetUpSwitch(devIdx) : SetUpPhy(devIdx);
                         }});
    for (uint8_t devIdx = 0; devIdx < kDevices; ++devIdx)
        steps.push_back({"", "slot.crash", [=] { FirstRestore(family, devIdx); }});
    return steps;
}

Steps SecondProcess(Family family)
{
    Steps steps;
    for (uint8_t devIdx = 0; devIdx < kDevices; ++devIdx)
        steps.push_back({"", "private.kept-in-process", [=] { SecondRestore(family, devIdx); }});
    return steps;
}

}  // namespace halcheck
