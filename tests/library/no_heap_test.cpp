// No exported operation takes memory from the heap, on its way to a HAL whose slots do nothing and
// back. What the C library takes for a stream is its own: the streams here are open before.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "bench/ready_board.h"
#include "board/board_services.h"
#include "common/shared_names.h"
#include "hwmbox/hwmbox.h"
#include "phy/ethphy_api.h"
#include "platform/ob_platform.h"
#include "switch/orblink_api.h"
#include "switch_hal_services/orblink_hal_services.h"

namespace {

using bench::kPhy;
using bench::kPort;
using bench::kSwitch;

constexpr uint8_t kPortWithoutPhy = 5;

constexpr int kDone = 0;
constexpr int kRefused = -1;

bool counting;
int allocations;
FILE* nowhere;

uint8_t octet;
uint16_t word;
uint32_t value, speed, duplex;
uint8_t mac[5][6];
void* pointer;
uint8_t buffer[8192];
MacTable macTable;
SwitchBsd switchBsd;
EthphyBsd phyBsd;
SwitchVendorRecord switchVendor[OB_MAX_SWITCHES];
PhyVendorRecord phyVendor[EP_MAX_PHYS];
SwitchBoardEntry boardEntry;

struct Operation {
    const char* name;
    int result;
    int (*call)();
};

int Given(const void* found)
{
    return found != nullptr ? kDone : kRefused;
}

int Ignored(uint32_t)
{
    return kDone;
}

uint32_t TakeEntry(MacEntry*)
{
    return 1;
}

// The family's lock, gone: its initialisation may create it again.
void RemoveLock(const char* keyFile)
{
    semctl(semget(ftok(keyFile, OB_KEY_NUMBER), 1, 0), 0, IPC_RMID);
}

#define OPERATION(result, function, ...)                        \
    {                                                           \
#function, result, [] { return function(__VA_ARGS__); } \
    }
#define OPERATION_AS(as, function, ...)                            \
    {                                                              \
#function, kDone, [] { return as(function(__VA_ARGS__)); } \
    }

// In an order in which each finds what it needs. Where the mailbox does not answer the
// initialisations go on without board data.
const Operation kOperations[] = {
    OPERATION(kDone, ORBLINK_GetNumOfSwitches, &octet),
    OPERATION(kDone, ORBLINK_GetSwitchCaps, kSwitch, buffer),
    OPERATION(kDone, ORBLINK_GetSwitchProvConfig, kSwitch, buffer),
    OPERATION(kDone, ORBLINK_GetSwitchDevices, buffer),
    OPERATION(kDone, ORBLINK_GetIsolationModeEnabled, kSwitch, &value),
    OPERATION(kDone, OBOS_GetConfiguredDevice, 0, &boardEntry, &value),
    OPERATION(kDone, ORBLINK_isBatteryMode),
    OPERATION(kRefused, ORBLINK_GetMacAddresses, mac[0], mac[1], mac[2], mac[3], mac[4]),
    OPERATION(kRefused, OBOS_GetMacAddresses, mac[0], mac[1], mac[2], mac[3], mac[4]),
    OPERATION_AS(Ignored, ORBLINK_IsOrbLinkServiceOn, kSwitch),
    OPERATION(kDone, ORBLINK_SetOrbLinkServiceStatus, kSwitch, 1),
    OPERATION(kDone, ORBLINK_EnableProviderBridgedMode, kSwitch, 0x88A8),
    OPERATION(kDone, ORBLINK_DisableProviderBridgedMode, kSwitch),
    OPERATION(kDone, ORBLINK_SetLanPortVlan, kSwitch, kPort, 100),
    OPERATION(kDone, ORBLINK_SetLanPortPcp, kSwitch, kPort, 5),
    OPERATION(kDone, ORBLINK_SetLanPortEgressTagging, kSwitch, kPort, 1),
    OPERATION(kDone, ORBLINK_SetLanPortGroupId, kSwitch, kPort, 3, 0),
    OPERATION(kDone, ORBLINK_MapMactoVlan, kSwitch, kPort, mac[0], 0xFFF, 100, 1),
    OPERATION(kDone, ORBLINK_GetMactoVlanTable, kSwitch, buffer),
    OPERATION(kDone, ORBLINK_GetPortCounters, kSwitch, kPort, buffer),
    OPERATION(kDone, ORBLINK_ResetPortCounters, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_GetPortLink, kSwitch, kPort, &value, &speed, &duplex),
    OPERATION(kDone, ORBLINK_EnablePort, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_SetPhyPortSpeedDuplex, kSwitch, kPort, OB_SPEED_100M, 1),
    OPERATION(kDone, ORBLINK_GetPortEnable, kSwitch, kPort, &value),
    OPERATION(kDone, ORBLINK_EnablePhyPortEee, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_GetEeePortState, kSwitch, kPort, &value),
    OPERATION(kDone, ORBLINK_DisablePhyPortEee, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_EnablePhyPortDvt, kSwitch, kPort, 1),
    OPERATION(kDone, ORBLINK_DisablePhyPortDvt, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_DisablePort, kSwitch, kPort),
    OPERATION(kDone, ORBLINK_EnableRgmiiDelay, kSwitch, kPortWithoutPhy),
    OPERATION(kDone, ORBLINK_DisableRgmiiDelay, kSwitch, kPortWithoutPhy),
    OPERATION(kDone, ORBLINK_SetPortMirror, kSwitch, kPort, 3),
    OPERATION(kDone, ORBLINK_GetPortIEEETestMode, kSwitch, kPort, buffer),
    OPERATION(kDone, ORBLINK_SetPortIEEETestMode, kSwitch, kPort, 1),
    OPERATION(kDone, ORBLINK_ForEachMacEntry, kSwitch, TakeEntry),
    OPERATION(kDone, ORBLINK_GetMacTable, kSwitch, &macTable),
    OPERATION(kDone, ORBLINK_EnableIgmpSnooping, kSwitch),
    OPERATION(kDone, ORBLINK_DisableIgmpSnooping, kSwitch),
    OPERATION(kDone, ORBLINK_ReadPortReg, kSwitch, kPort, 1, buffer),
    OPERATION(kDone, ORBLINK_WritePortReg, kSwitch, kPort, 1, 1),
    OPERATION(kDone, ORBLINK_SmiRead, kSwitch, 1, buffer),
    OPERATION(kDone, ORBLINK_SmiWrite, kSwitch, 1, 1),
    OPERATION(kDone, ORBLINK_VendorSpecificIoctl, kSwitch, 1, buffer),
    OPERATION(kDone, ORBLINK_PrintMachineState, kSwitch),
    OPERATION(kDone, ORBLINK_SetQWred, kSwitch, 1, 2, 3, 4, 5, 6, 7),
    OPERATION(kDone, ORBLINK_SetGlobWred, kSwitch, 1, 2, 3, 4, 5, 6, 7, 8, 9),
    OPERATION(kDone, ORBLINK_SetQRsrv, kSwitch, 1, 2),
    OPERATION(kDone, ORBLINK_SetPortFc, kSwitch, kPort, 1, 2),
    OPERATION(kDone, ORBLINK_SetMacAging, kSwitch, 5),
    OPERATION(kDone, ORBLINK_SetMtuSize, kSwitch, 1600),
    OPERATION(kDone, ORBLINK_SetLEDConfig, kSwitch, 2),
    OPERATION(kDone, ORBLINK_GetLEDConfig, kSwitch, &octet),
    OPERATION_AS(Given, OBHAL_GetHalPrivData, kSwitch),
    OPERATION_AS(Ignored, OBHAL_GetInternalPortPidx, kSwitch),
    OPERATION_AS(Ignored, OBHAL_GetInternalPortIfaceMode, kSwitch),
    OPERATION_AS(Ignored, OBHAL_GetInternalPortIfaceSpeed, kSwitch),
    OPERATION_AS(Ignored, OBHAL_GetMtuSize, kSwitch),
    OPERATION_AS(Ignored, OBHAL_GetSwitchCount),
    OPERATION(kDone, OBHAL_GetMdioParams, kSwitch, &octet, &octet),
    OPERATION(kDone, OBHAL_ReadMdio, kSwitch, 1, &word),
    OPERATION(kDone, OBHAL_WriteMdio, kSwitch, 1, 1),
    OPERATION(kDone, ORBLINK_ResetEnable, kSwitch),
    OPERATION(kDone, ORBLINK_ResetDisable, kSwitch, 0, nullptr, 0),
    OPERATION(kDone, OBOS_SetGpioValue, 18, 1),
    OPERATION(kDone, OBOS_ResetSerDes, 0, 0),
    OPERATION(kDone, OBOS_InitBsdFromIni, &switchBsd),
    OPERATION(kDone, OBOS_InitHwSpecificData, &switchBsd, switchVendor),
    OPERATION(kDone, EP_InitBoardSpecificData, &phyBsd, phyVendor),
    OPERATION(kRefused, HWMB_Start, SOCK_SUBJECT, 1, 1, nullptr, nullptr, nullptr, 0),
    {"HWMB_dumpBuffer", kDone, [] { return HWMB_dumpBuffer(buffer, 40), kDone; }},
    OPERATION(kDone, OBOS_CreateSwitchDevices),
    OPERATION_AS(Given, OBOS_MapSwitchDevices),

    OPERATION(kDone, ETHPHY_GetNumOfPhys, &octet),
    OPERATION(kDone, ETHPHY_GetLink, kPhy, &value, &speed, &duplex),
    OPERATION(kDone, ETHPHY_SetAdminState, kPhy, 1),
    OPERATION(kDone, ETHPHY_GetProvisionedConfig, kPhy, buffer),
    OPERATION(kDone, ETHPHY_GetBsdConfig, kPhy, buffer),
    OPERATION(kDone, ETHPHY_GetPhyData, kPhy, &pointer),
    OPERATION(kDone, ETHPHY_GetCaps, kPhy, &value),
    OPERATION(kDone, ETHPHY_Poll, kPhy),
    OPERATION(kDone, ETHPHY_GetCounters, kPhy, buffer),
    OPERATION(kDone, ETHPHY_ResetCounters, kPhy),
    OPERATION(kDone, ETHPHY_SetEeeState, kPhy, 1),
    OPERATION(kDone, ETHPHY_ReadMdio, kPhy, 1, &word),
    OPERATION(kDone, ETHPHY_WriteMdio, kPhy, 1, 1),
    OPERATION(kDone, ETHPHY_ReadMmd, kPhy, 1, 1, &word),
    OPERATION(kDone, ETHPHY_WriteMmd, kPhy, 1, 1, 1),
    OPERATION(kDone, ETHPHY_ReadChipReg, kPhy, 1, &word),
    OPERATION(kDone, ETHPHY_WriteChipReg, kPhy, 1, 1),
    OPERATION(kDone, ETHPHY_PhyZ88_SetSpeedDuplexMode, kPhy, 100, 1),
    OPERATION(kDone, EPHAL_DirectMdioReadAccess, 0, 1, 1, &word),
    OPERATION(kDone, EPHAL_DirectMdioWriteAccess, 0, 1, 1, 1),
    OPERATION(kDone, EPHAL_ReadMdio, kPhy, 1, &word),
    OPERATION(kDone, EPHAL_WriteMdio, kPhy, 1, 1),
    OPERATION(kDone, EPHAL_ReadMmd, kPhy, 1, 1, &word),
    OPERATION(kDone, EPHAL_WriteMmd, kPhy, 1, 1, 1),
    OPERATION(kDone, EPHAL_ReconfigureGmacPhy, kPhy, 1, 100, 1),
    OPERATION(kDone, EPHAL_SetInterfaceState, kPhy, 1),
    OPERATION(kDone, EPHAL_SetHwState, kPhy, 1),
    OPERATION(kDone, EPHAL_GetHwState, kPhy, &value),
    OPERATION(kDone, EPHAL_GetUlpModeEnabled, kPhy, &value),
    OPERATION_AS(Given, EPHAL_GetHalPrivData, kPhy),
    OPERATION_AS(Ignored, EPHAL_GetPortIfaceMode, kPhy),
    OPERATION_AS(Ignored, EPHAL_GetPortIfaceSpeed, kPhy),
    OPERATION(kDone, EPHAL_GetMdioAddrAndBusId, kPhy, &octet, &octet),
    OPERATION(kDone, ETHPHY_ResetSgmii, kPhy),
    OPERATION(kDone, ETHPHY_ResetEnable, kPhy),
    OPERATION(kDone, ETHPHY_ResetDisable, kPhy, 0),
    OPERATION(kDone, EP_CreatePhyDevices),
    OPERATION_AS(Given, EP_MapEthphyDevices),

    {"ORBLINK_InitOnce", kDone, [] { return RemoveLock(OB_SWITCH_KEY_FILE), ORBLINK_InitOnce(1); }},
    {"ETHPHY_InitOnce", kDone, [] { return RemoveLock(OB_PHY_KEY_FILE), ETHPHY_InitOnce(); }},
};

void Drop(const OBPLAT_LogSite*, const char*, const char*, va_list) {}

// Calls of a family load its HAL first, which is the loader's business.
void Attach()
{
    auto* const switches = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    auto& caps = switches->device[kSwitch].caps;
    caps.capsFlags = OB_CAPS_EEE | OB_CAPS_MIRRORING;
    for (auto& port : caps.port)
        port = {OB_IFACE_RGMII, 1, 0};
    caps.port[kPortWithoutPhy].portHasPhy = 0;
    switches->device[kSwitch].board.resetGpioPin = 18;
    switches->vendor[kSwitch].vendorParamSize = 8;
    auto* const phys = static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
    phys->phy[kPhy].capsValid = 1;
    phys->phy[kPhy].board.resetGpioPin = 18;
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(&octet), 0);
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&octet), 0);
}

TEST(Heap, NoExportedOperationTakesMemory)
{
    nowhere = fopen64("/dev/null", "r+");
    ASSERT_NE(nowhere, nullptr);
    setvbuf(nowhere, nullptr, _IONBF, 0);
    OBPLAT_SetLogHandler(Drop);
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_TRACE);
    const bench::ReadyBoard board;
    Attach();
    for (const Operation& operation : kOperations) {
        allocations = 0;
        counting = true;
        const int result = operation.call();
        counting = false;
        EXPECT_EQ(allocations, 0) << operation.name;
        EXPECT_EQ(result, operation.result) << operation.name;
    }
}

TEST(Heap, IsCounted)
{
    counting = true;
    free(strdup("one"));  // NOLINT(cppcoreguidelines-no-malloc): that is to be counted
    counting = false;
    EXPECT_EQ(allocations, 1);
}

// Functions of the linker's list of what is exported.
TEST(Heap, AllExportedOperationsAreCalled)
{
    std::ifstream map{ORBLINK_MAP};
    std::set<std::string> exported;
    for (std::string symbol; map >> symbol && symbol != "local:";)
        if (symbol.back() == ';' && symbol != "HWMB_socket;")
            exported.insert(symbol.substr(0, symbol.size() - 1));
    ASSERT_GT(exported.size(), 90U);
    std::multiset<std::string> called;
    for (const Operation& operation : kOperations)
        called.insert(operation.name);
    EXPECT_EQ(std::vector<std::string>(called.begin(), called.end()),
              std::vector<std::string>(exported.begin(), exported.end()));
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size)
{
    allocations += counting ? 1 : 0;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    allocations += counting ? 1 : 0;
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size)
{
    allocations += counting ? 1 : 0;
    return __libc_realloc(block, size);
}

FILE* fopen(const char* path, const char* mode)
{
    return counting ? nowhere : fopen64(path, mode);
}

int fclose(FILE*)
{
    return 0;
}

int printf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int length = vfprintf(counting ? nowhere : stdout, format, args);
    va_end(args);
    return length;
}

// Devices that do what they are asked for.
int ioctl(int, unsigned long, ...)
{
    return 0;
}

int socket(int family, int, int) noexcept
{
    errno = EAFNOSUPPORT;
    return family == AF_INET ? dup(fileno(nowhere)) : -1;
}

int usleep(useconds_t)
{
    return 0;
}

unsigned sleep(unsigned)
{
    return 0;
}

int system(const char*)
{
    return 0;
}

}  // extern "C"
