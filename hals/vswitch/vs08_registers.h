// Registers of the VS08, as its register manual gives them.
#pragma once

#include <stdint.h>

namespace vs08 {

constexpr int kPorts = 8;
constexpr int kQueues = 64;
constexpr int kFdbSlots = 2048;
constexpr int kCounters = 30;
constexpr int kMacVlanEntries = 32;
constexpr int kMaxVid = 4094;
constexpr int kMaxBuffers = 4095;
constexpr int kMaxReserved = 63;

// Direct registers.
constexpr int kChipId = 0;
constexpr int kChipRev = 1;
constexpr int kStatus = 2;
constexpr int kControl = 3;
constexpr int kAddr = 4;
constexpr int kData = 5;
constexpr int kDataInc = 6;
constexpr int kDirectRegisters = 32;

constexpr uint16_t kChipIdVs08 = 0x5608;
constexpr uint16_t kStatusReady = 1 << 0;
constexpr uint16_t kStatusRxReady = 1 << 1;
constexpr uint16_t kControlSoftReset = 1 << 0;
constexpr uint16_t kControlRxReset = 1 << 1;

// Internal addresses: global.
constexpr uint16_t kFirstInternal = 0x0100;
constexpr uint16_t kCaps = 0x0100;
constexpr uint16_t kForwardCtrl = 0x0110;
constexpr uint16_t kPbCtrl = 0x0111;
constexpr uint16_t kPbTpid = 0x0112;
constexpr uint16_t kAgeing = 0x0113;
constexpr uint16_t kMtu = 0x0114;
constexpr uint16_t kSnooping = 0x0115;
constexpr uint16_t kLedMode = 0x0116;
constexpr uint16_t kLinkChange = 0x0117;
constexpr uint16_t kWredCtrl = 0x0120;

constexpr uint16_t kCapsNoSnooping = 1 << 0;
constexpr uint16_t kCapsEee = 1 << 1;
constexpr uint16_t kCapsMirror = 1 << 2;
constexpr int kCapsPortsShift = 4;
constexpr int kCapsInternalShift = 8;
constexpr uint16_t kSnoopingIgmp = 1 << 0;
constexpr uint16_t kSnoopingMld = 1 << 1;
constexpr int kWredWeightShift = 4;
constexpr int kWredMaxPShift = 8;

// MAC table access.
constexpr uint16_t kFdbIndex = 0x0200;
constexpr uint16_t kFdbCmd = 0x0201;
constexpr uint16_t kFdbMac0 = 0x0202;
constexpr uint16_t kFdbCount = 0x0208;

constexpr uint16_t kFdbGetNext = 1;
constexpr uint16_t kFdbAddStatic = 2;
constexpr uint16_t kFdbDelete = 3;
constexpr uint16_t kFdbFlush = 4;
constexpr uint16_t kFdbFailed = 1 << 14;
constexpr uint16_t kFdbInfoStatic = 1 << 4;
constexpr uint16_t kFdbInfoPort = 7;

// Counter access.
constexpr uint16_t kCntCmd = 0x0300;
constexpr uint16_t kCntWindow = 0x0310;
constexpr uint16_t kCntSnapshot = 1 << 4;
constexpr uint16_t kCntClear = 2 << 4;

constexpr uint16_t kBusy = 1 << 15;  // of FDB_CMD and CNT_CMD

// Source-MAC-to-VLAN table: entry e at kMacVlan + 8 * e.
constexpr uint16_t kMacVlan = 0x0400;
constexpr uint16_t kMacVlanVid = 1;
constexpr uint16_t kMacVlanMac0 = 3;
constexpr uint16_t kMacVlanValid = 1 << 15;
constexpr uint16_t kMacVlanPort = 7;
constexpr uint16_t kMacVlanMaskBits = 0x0FFF;

// Port p at kPort + 0x100 * p.
constexpr uint16_t kPort = 0x1000;
constexpr int kPortRegisters = 0x100;
constexpr uint16_t kPortInfo = 0x00;
constexpr uint16_t kPortCtrl = 0x01;
constexpr uint16_t kPortStatus = 0x02;
constexpr uint16_t kPortVid = 0x03;
constexpr uint16_t kPortPcp = 0x04;
constexpr uint16_t kPortTag = 0x05;
constexpr uint16_t kPortGroup = 0x06;
constexpr uint16_t kPortMirror = 0x07;
constexpr uint16_t kPortXoff = 0x08;
constexpr uint16_t kPortXon = 0x09;
constexpr uint16_t kPhyCtrl = 0x10;
constexpr uint16_t kPhyEee = 0x11;
constexpr uint16_t kPhyTest = 0x12;
constexpr uint16_t kPhyDvt = 0x13;
constexpr uint16_t kRgmiiCtrl = 0x18;
constexpr uint16_t kSerdesCtrl = 0x1C;

constexpr uint16_t kInfoIface = 7;
constexpr uint16_t kInfoHasPhy = 1 << 3;
constexpr uint16_t kInfoInternal = 1 << 4;
constexpr uint16_t kStatusLink = 1 << 0;
constexpr uint16_t kStatusFullDuplex = 1 << 1;
constexpr int kStatusSpeedShift = 2;
constexpr uint16_t kGroupValid = 1 << 15;
constexpr int kMaxGroup = 255;
constexpr uint16_t kMirrorEnable = 1 << 15;
constexpr uint16_t kMirrorDest = 7;
constexpr uint16_t kPhyFullDuplex = 1 << 3;
constexpr uint16_t kPhyEeeEnable = 1 << 0;
constexpr uint16_t kSerdesHsgmii = 1 << 0;
constexpr int kSerdesSpeedShift = 1;
constexpr int kSerdesInvertShift = 4;

// Queue q at kQueue + 8 * q.
constexpr uint16_t kQueue = 0x2000;
constexpr uint16_t kQueueReserved = 6;

constexpr uint16_t PortAddress(int port, uint16_t offset)
{
    return static_cast<uint16_t>(kPort + 0x100 * port + offset);
}

}  // namespace vs08
