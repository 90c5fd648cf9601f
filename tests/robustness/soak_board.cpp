#include "tests/robustness/soak_board.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <random>

#include "phy/ethphy_api.h"
#include "tests/robustness/child.h"
#include "tests/robustness/scripted_board.h"

namespace obtest {
namespace {

constexpr Family kSwitch = Family::kSwitch;

SwitchProvConfig& Config()
{
    return Record(0).config;
}

uint32_t Bit(uint8_t bits, uint8_t port)
{
    return bits >> port & 1U;
}

void Mac(uint8_t port, uint8_t (&mac)[6])
{
    const uint8_t bytes[6] = {2, 0, 0, 0, 0, port};
    std::copy(bytes, bytes + 6, mac);
}

uint32_t MappedVlan(uint8_t port)
{
    uint8_t mac[6];
    Mac(port, mac);
    for (const MacToVlanEntry& entry : Config().macToVlanTable)
        if (entry.LogPort == port && std::equal(mac, mac + 6, entry.Mac))
            return entry.EnableMapping != 0 ? entry.VlanId : 0U;
    return 0;
}

int MapVlan(uint8_t port, uint32_t vlan)
{
    uint8_t mac[6];
    Mac(port, mac);
    return ORBLINK_MapMactoVlan(0, port, mac, 0xFFF, static_cast<uint16_t>(vlan), vlan != 0);
}

// The setting that this worker is about to write.
struct Intention {
    const Setting* setting = nullptr;
    uint8_t port = 0;
    uint32_t value = 0;
    uint32_t worker = 0;
    uint32_t sequence = 0;  // 0 = not logged yet
};

Intention intention;

size_t Index(const Setting& setting)
{
    return static_cast<size_t>(&setting - Settings().data());
}

// In a HAL slot, that is, with the family's lock taken. The first slot of a call writes the log.
int LogWrite(const SlotArgs&)
{
    if (intention.setting == nullptr || intention.sequence != 0)
        return 0;
    const Setting& setting = *intention.setting;
    const uint32_t sequence = Log().sequence[static_cast<int>(setting.family)] + 1;
    LastWriter& last = Log().last[Index(setting)][intention.port];
    last.before = setting.stored(intention.port);
    last.value = intention.value;
    last.worker = intention.worker;
    last.sequence = sequence;
    Log().sequence[static_cast<int>(setting.family)] = sequence;
    intention.sequence = sequence;
    return 0;
}

void LogFromSlots()
{
    for (const char* slot : {"SetLanPortVlan",
                             "SetLanPortPcp",
                             "SetLanPortEgressTagging",
                             "SetLanPortGroupId",
                             "MapSetMacToVlan",
                             "SetPhyPortSpeedDuplex",
                             "EnablePort",
                             "DisablePort",
                             "EnablePhyPortEee",
                             "DisablePhyPortEee",
                             "SetPortMirror",
                             "EnableIgmpSnooping",
                             "DisableIgmpSnooping",
                             "SetMacAging",
                             "SetMtuSize",
                             "SetLEDConfig",
                             "SetPhyPortDvt",
                             "EnableProviderBridgedMode",
                             "DisableProviderBridgedMode",
                             "SetAdminState"})
        Platform().slots[slot] = LogWrite;
}

uint64_t MicrosecondsNow()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
}

uint32_t ResidentKilobytes()
{
    unsigned long size = 0, resident = 0;
    FILE* const statm = fopen("/proc/self/statm", "r");
    // NOLINTNEXTLINE(cert-err34-c): the numbers are the kernel's
    if (statm == nullptr || fscanf(statm, "%lu %lu", &size, &resident) != 2)
        resident = 0;
    if (statm != nullptr)
        fclose(statm);
    return static_cast<uint32_t>(resident * 4);
}

void Measure(WorkerRecord& record, int when)
{
    record.descriptors[when] = static_cast<uint32_t>(OpenDescriptors());
    record.resident[when] = ResidentKilobytes();
}

void Write(const Setting& setting, uint8_t port, uint32_t value, uint32_t worker)
{
    WorkerRecord& record = Log().worker[worker];
    intention = {&setting, port, value, worker, 0};
    record.setting = static_cast<uint32_t>(Index(setting));
    record.value = value;
    record.port = port;
    const uint64_t begin = MicrosecondsNow();
    const int result = setting.set(port, value);
    record.worstWait = std::max(record.worstWait, static_cast<uint32_t>(MicrosecondsNow() - begin));
    if (intention.sequence != 0)
        record.completed[static_cast<int>(setting.family)] = intention.sequence;
    record.port = 0;
    ++record.calls;
    record.failures += result != 0 ? 1 : 0;
}

}  // namespace

const std::vector<Setting>& Settings()
{
    static const std::vector<Setting> settings = {
        {"VLAN", kSwitch, kPorts, 100,
         [](uint8_t port, uint32_t value) {
             return ORBLINK_SetLanPortVlan(0, port, static_cast<int>(value + 1));
         },
         [](uint8_t port) { return Config().lanPortVlan[port] - 1U; }},
        {"PCP", kSwitch, kPorts, 8,
         [](uint8_t port, uint32_t value) {
             return ORBLINK_SetLanPortPcp(0, port, static_cast<uint8_t>(value));
         },
         [](uint8_t port) { return uint32_t{Config().lanPortPcp[port]}; }},
        {"egress tagging", kSwitch, kPorts, 4,
         [](uint8_t port, uint32_t value) {
             return ORBLINK_SetLanPortEgressTagging(0, port, value);
         },
         [](uint8_t port) { return uint32_t{Config().egressTagging[port]}; }},
        {"group", kSwitch, kPorts, 50,
         [](uint8_t port, uint32_t value) { return ORBLINK_SetLanPortGroupId(0, port, value, 1); },
         [](uint8_t port) { return static_cast<uint32_t>(Config().groupId[port]); }},
        {"MAC to VLAN", kSwitch, kPorts, 50, MapVlan, MappedVlan},
        {"speed", kSwitch, kPorts, 4,
         [](uint8_t port, uint32_t value) {
             ORBLINK_SetPhyPortSpeedDuplex(0, port, value + 1, 1);
             return 0;  // refused on a port that is not enabled
         },
         [](uint8_t port) { return Config().link[port].linkSpeed - 1U; }},
        {"enabled", kSwitch, kPorts, 2,
         [](uint8_t port, uint32_t value) {
             return value != 0 ? ORBLINK_EnablePort(0, port) : ORBLINK_DisablePort(0, port);
         },
         [](uint8_t port) { return Bit(Config().enabledPorts, port); }},
        {"EEE", kSwitch, kPorts, 2,
         [](uint8_t port, uint32_t value) {
             return value != 0 ? ORBLINK_EnablePhyPortEee(0, port)
                               : ORBLINK_DisablePhyPortEee(0, port);
         },
         [](uint8_t port) { return Bit(Config().eeePorts, port); }},
        {"mirror", kSwitch, kPorts, 2,
         [](uint8_t port, uint32_t value) {
             return ORBLINK_SetPortMirror(0, port, value != 0 ? 0 : 7);
         },
         [](uint8_t port) { return Config().mirrorDst[port] == 0 ? 1U : 0U; }},
        {"snooping", kSwitch, 1, 2,
         [](uint8_t, uint32_t value) {
             return value != 0 ? ORBLINK_EnableIgmpSnooping(0) : ORBLINK_DisableIgmpSnooping(0);
         },
         [](uint8_t) { return Config().igmpSnooping == 1 ? 1U : 0U; }},
        {"ageing", kSwitch, 1, 5,
         [](uint8_t, uint32_t value) {
             return ORBLINK_SetMacAging(0, static_cast<int>(value + 1));
         },
         [](uint8_t) { return Config().macAging - 1U; }},
        {"MTU", kSwitch, 1, 9000,
         [](uint8_t, uint32_t value) {
             return ORBLINK_SetMtuSize(0, static_cast<uint16_t>(value));
         },
         [](uint8_t) { return uint32_t{Config().mtuSize}; }},
        {"LED", kSwitch, 1, 200,
         [](uint8_t, uint32_t value) {
             return ORBLINK_SetLEDConfig(0, static_cast<uint8_t>(value));
         },
         [](uint8_t) { return uint32_t{Config().ledMode}; }},
        {"provider bridge", kSwitch, 1, 2,
         [](uint8_t, uint32_t value) {
             return value != 0 ? ORBLINK_EnableProviderBridgedMode(0, 0x88A8)
                               : ORBLINK_DisableProviderBridgedMode(0);
         },
         [](uint8_t) { return uint32_t{Config().InProviderBridgedMode}; }},
        {"PHY state", Family::kPhy, 1, 100,
         [](uint8_t, uint32_t value) { return ETHPHY_SetAdminState(0, static_cast<int>(value)); },
         [](uint8_t) { return uint32_t{PhyRegion().phy[0].config.adminState}; }},
    };
    return settings;
}

SoakLog& Log()
{
    static SoakLog* const log = [] {
        const int fd = open("/dev/shm/orblink_soak", O_RDWR | O_CREAT, 0600);
        if (ftruncate(fd, sizeof(SoakLog)) != 0)
            abort();
        void* const address =
            mmap(nullptr, sizeof(SoakLog), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        close(fd);
        return static_cast<SoakLog*>(address);
    }();
    return *log;
}

uint64_t Milliseconds()
{
    return MicrosecondsNow() / 1000;
}

int Work(uint32_t worker, uint64_t end)
{
    ScriptBoard();
    LogFromSlots();
    Platform().transcript.quiet = true;
    WorkerRecord& record = Log().worker[worker];
    uint8_t count = 0;
    record.failures += ORBLINK_GetNumOfSwitches(&count) == 0 ? 0 : 1;
    record.failures += ETHPHY_GetNumOfPhys(&count) == 0 ? 0 : 1;
    std::minstd_rand random(worker + 1);
    const std::vector<Setting>& settings = Settings();
    for (int round = 0; Milliseconds() < end; ++round) {
        const Setting& setting = settings[random() % settings.size()];
        const auto port = static_cast<uint8_t>(1 + random() % setting.ports);
        Write(setting, port, static_cast<uint32_t>(random() % setting.values), worker);
        if (round == 20)
            Measure(record, 0);
    }
    Measure(record, 1);
    return record.failures == 0 ? 0 : 1;
}

}  // namespace obtest
