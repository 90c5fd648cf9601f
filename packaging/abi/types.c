/*
 * A symbol of each public type. The libraries' own symbols take records by void*, and no symbol of
 * theirs is a HAL's table.
 */
#include "board/board_services.h"
#include "common/iface.h"
#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/phy/ethphy_ieee8023.h"
#include "hals/vswitch/vswitch_hal.h"
#include "hals/vswitch/vswitch_ioctl.h"
#include "hwmbox/hwmbox.h"
#include "phy/ethphy_api.h"
#include "phy/ethphy_hal.h"
#include "phy/ethphy_records.h"
#include "platform/ob_platform.h"
#include "switch/orblink_api.h"
#include "switch/orblink_hal.h"
#include "switch/orblink_records.h"
#include "switch_hal_services/orblink_hal_services.h"

enum OB_IfaceMode aOB_IfaceMode;
enum OB_Speed aOB_Speed;

struct EthphyBsd aEthphyBsd;
struct EthphyIeee8023Counters aEthphyIeee8023Counters;
struct ETHPHY_HalFuncs aETHPHY_HalFuncs;
struct GmacReconfigRequest aGmacReconfigRequest;
struct hwmbox_addr ahwmbox_addr;
struct LinuxSwitchCounters aLinuxSwitchCounters;
struct LinuxSwitchMacEntry aLinuxSwitchMacEntry;
struct LinuxSwitchStaticMac aLinuxSwitchStaticMac;
struct MacTable aMacTable;
struct OBHAL_HalFuncs aOBHAL_HalFuncs;
struct ObhalPreReset aObhalPreReset;
struct OBPLAT_LogSite aOBPLAT_LogSite;
struct PhyDeviceRegion aPhyDeviceRegion;
struct PhyVendorRecord aPhyVendorRecord;
struct SwitchBsd aSwitchBsd;
struct SwitchDeviceRegion aSwitchDeviceRegion;
struct SwitchVendorRecord aSwitchVendorRecord;
struct VswitchCapsBytes aVswitchCapsBytes;
struct VswitchMacEntry aVswitchMacEntry;
struct VswitchPortCounters aVswitchPortCounters;
struct VswitchStaticMac aVswitchStaticMac;

MacEntryCallback macEntryCallback;
MsgBuilder msgBuilder;
MsgParser msgParser;
OBPLAT_LogHandler logHandler;
