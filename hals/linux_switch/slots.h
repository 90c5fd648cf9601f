// The slots of the HAL table, by theme.
#pragma once

#include "switch/orblink_hal.h"

namespace linux_switch {

// bring_up.cpp
int Init(void* privateData);
int ResetSwitch(int devIdx, const void* params, uint32_t size);
int GetSwitchCaps(int devIdx, SwitchCaps* caps);
int VendorSpecificIoctl(int devIdx, int cmd, void* param);

// mac_table.cpp
int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context);
bool FlushMacs(int devIdx);
bool AddStaticMac(int devIdx, const void* param);
bool DeleteMac(int devIdx, const void* param);

// vlan.cpp
int EnableProviderBridgedMode(int devIdx, int tpid);
int DisableProviderBridgedMode(int devIdx);
int SetLanPortVlan(int devIdx, int port, int vid);
int SetLanPortEgressTagging(int devIdx, int port, uint32_t enable);
int SetLanPortGroupId(int devIdx, int port, uint32_t group);
int SetLanPortPcp(int devIdx, int port, int pcp);
int MapSetMacToVlan(int devIdx, int port, const uint8_t* mac, int mask, int vid, int enable);

// ports.cpp
int GetPortLink(int devIdx, int port, uint32_t* link, uint32_t* speed, uint32_t* fullDuplex);
int EnablePort(int devIdx, int port);
int DisablePort(int devIdx, int port);
int SetPortMirror(int devIdx, int source, int destination);
int SetPhyPortSpeedDuplex(int devIdx, int port, uint32_t speed, uint32_t fullDuplex);
int EnablePhyPortEee(int devIdx, int port);
int DisablePhyPortEee(int devIdx, int port);
int GetEeePortState(int devIdx, int port, uint32_t* state);

// counters.cpp
int GetPortCounters(int devIdx, int port, void* counters);

// features.cpp
int EnableIgmpSnooping(int devIdx);
int DisableIgmpSnooping(int devIdx);
int SetMacAging(int devIdx, int step);
int SetMtuSize(int devIdx, int mtu);
int PrintMachineState(int devIdx);

// lacking.cpp: what the kernel has nothing for
int ResetPortCounters(int devIdx, int port);
int EnableRgmiiDelay(int devIdx, int port);
int DisableRgmiiDelay(int devIdx, int port);
int ReadPortReg(int devIdx, int port, int reg, void* value);
int WritePortReg(int devIdx, int port, int reg, int value);
int SetQWred(int devIdx, int queue, int greenMin, int greenMax, int yellowMin, int yellowMax,
             int redMin, int redMax);
int SetGlobWred(int devIdx, int on, int weight, int maxPercent, int greenMin, int greenMax,
                int yellowMin, int yellowMax, int redMin, int redMax);
int SetQRsrv(int devIdx, int queue, int buffers);
int SetPortFc(int devIdx, int port, int xoff, int xon);
int SetPhyPortDvt(int devIdx, int port, int test);
int SmiRead(int devIdx, int reg, void* value);
int SmiWrite(int devIdx, int reg, int value);

}  // namespace linux_switch
