// A switch as it ought to be: its record, what its HAL is called with, and what its chip was told
// since its reset. Each operation yields the result that the library's must have.
#pragma once

#include <array>
#include <functional>

#include "tests/support/switch_fixture.h"
#include "tests/switch/operations/told_chip.h"

namespace obtest {

using Mac = std::array<uint8_t, 6>;

inline bool Bit(uint8_t bitmap, int port)
{
    return (bitmap >> port & 1) != 0;
}

class SwitchModel {
public:
    // The record as initialisation leaves it.
    explicit SwitchModel(const SwitchDeviceRecord& initial) : record(initial), initial_(initial) {}

    // The circumstances of the next operations.
    bool battery = false;
    bool semaphoreFails = false;
    int failingCall = 0;  // the HAL call that fails, counted from 1; 0 = none
    std::function<bool(const std::string& call)> refuses = [](const auto&) { return false; };

    SwitchDeviceRecord record;
    Lines calls;  // of the last operation; those of a bring-up are not told
    ToldChip chip;

    // Runs one operation, whose calls are then told.
    int Run(const std::function<int(SwitchModel&)>& operation);

    int EnableProviderBridgedMode(int tpid);
    int DisableProviderBridgedMode();
    int SetLanPortVlan(int port, int vid);
    int SetLanPortPcp(int port, int pcp);
    int SetLanPortEgressTagging(int port, uint32_t tagging);
    int SetLanPortGroupId(int port, uint32_t group, uint32_t lockState);
    int MapMactoVlan(int port, const Mac& mac, int mask, int vlan, int enable);
    int ResetPortCounters(int port);
    int SetPhyPortSpeedDuplex(int port, uint32_t speed, uint32_t duplex);
    int EnablePort(int port);
    int DisablePort(int port);
    int EnableRgmiiDelay(int port);
    int DisableRgmiiDelay(int port);
    int EnablePhyPortEee(int port) { return ChangeEee(port, true); }
    int DisablePhyPortEee(int port) { return battery ? -1 : ChangeEee(port, false); }
    int SetPortMirror(int source, int destination);
    int EnablePhyPortDvt(int port, int test);
    int DisablePhyPortDvt(int port);
    int EnableIgmpSnooping();
    int DisableIgmpSnooping();
    int SetMacAging(int step);
    int SetMtuSize(int mtu);
    int SetLEDConfig(int mode);
    int SetQRsrv(int queue, int buffers);
    int SetServiceStatus(uint32_t signal);
    int ResetEnable();
    int ResetDisable(int setDefault);

    bool Enabled() const { return record.config.state == OB_STATE_ENABLED; }

private:
    // One HAL call; false when it fails.
    template <typename... Args>
    bool Hal(const char* slot, Args... args)
    {
        return Tell(HalCall(slot, args...));
    }
    bool Tell(const std::string& call);

    // Reaches the chip of an enabled switch; any other only stores.
    template <typename... Args>
    bool HalIfEnabled(const char* slot, Args... args)
    {
        return !Enabled() || Hal(slot, args...);
    }

    bool HasPort(int port) const { return port < record.caps.numOfPorts; }
    bool HasPhy(int port) const { return port < 8 && record.caps.port[port].portHasPhy != 0; }
    bool IsLanPort(int port) const { return port != 0 && HasPort(port); }

    int SetRgmiiDelay(const char* slot, int port, bool on);
    int ChangeEee(int port, bool on);
    bool RestorePort(int port);
    MacToVlanEntry* MappingOf(int port, const Mac& mac);
    void LoadDefaults();

    SwitchDeviceRecord initial_;
};

// What a chip has been told once a switch with this record was brought up.
ToldChip BroughtUp(const SwitchDeviceRecord& record);

}  // namespace obtest
