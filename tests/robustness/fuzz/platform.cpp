#include "tests/robustness/fuzz/platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "phy/ethphy_api.h"
#include "platform/ob_platform.h"
#include "switch/orblink_api.h"

namespace fuzz {

Platform platform;

namespace {

constexpr char kHal[] = "libhal.so";

template <typename Region>
uint8_t* Storage()
{
    static const auto storage = std::make_unique<uint8_t[]>(sizeof(Region));
    return storage.get();
}

// What an initialisation and a bring-up leave.
void MakeUsual(SwitchDeviceRegion& region)
{
    region.NumOfSwitches = OB_MAX_SWITCHES;
    for (uint8_t i = 0; i < OB_MAX_SWITCHES; ++i) {
        SwitchDeviceRecord& record = region.device[i];
        record.halIdx = i;
        std::memcpy(record.board.halLibName, kHal, sizeof kHal);
        record.caps.numOfPorts = OB_MAX_PORTS;
        for (auto& port : record.caps.port)
            port.portHasPhy = 1;
        record.config.state = OB_STATE_ENABLED;
        record.config.enabledPorts = 0xFF;
    }
}

void MakeUsual(PhyDeviceRegion& region)
{
    region.NumOfPhys = EP_MAX_PHYS;
    for (uint8_t i = 0; i < EP_MAX_PHYS; ++i) {
        PhyDeviceRecord& record = region.phy[i];
        record.halIdx = i;
        record.bsdValid = 1;
        record.capsValid = 1;
        std::memcpy(record.board.halLibName, i == 0 ? "libphyk20.so" : kHal, sizeof kHal);
    }
}

template <typename T>
void Rebuild(T& region)
{
    std::memset(&region, 0, sizeof region);
    if (Any<bool>())
        MakeUsual(region);
}

}  // namespace

uint8_t* Region(Family family)
{
    return family == Family::kSwitch ? Storage<SwitchDeviceRegion>() : Storage<PhyDeviceRegion>();
}

size_t RegionSize(Family family)
{
    return family == Family::kSwitch ? sizeof(SwitchDeviceRegion) : sizeof(PhyDeviceRegion);
}

void WriteSomewhere(Family family)
{
    size_t at = platform.input->ConsumeIntegralInRange<size_t>(0, RegionSize(family) - 1);
    size_t room = std::min<size_t>(RegionSize(family) - at, 8);
    auto bytes = platform.input->ConsumeBytes<uint8_t>(
        platform.input->ConsumeIntegralInRange<size_t>(1, room));
    std::copy(bytes.begin(), bytes.end(), Region(family) + at);
}

void SpoilRegion(Family family)
{
    if (family == Family::kSwitch)
        Rebuild(*reinterpret_cast<SwitchDeviceRegion*>(Region(family)));
    else
        Rebuild(*reinterpret_cast<PhyDeviceRegion*>(Region(family)));
    for (int count = platform.input->ConsumeIntegralInRange(0, 24); count > 0; --count)
        WriteSomewhere(family);
}

Scene::Scene(FuzzedDataProvider& input, bool faults)
{
    platform = {};
    platform.input = &input;
    platform.thread = pthread_self();
    uint8_t count = 0;
    platform.forget = true;
    ORBLINK_GetNumOfSwitches(&count);
    ETHPHY_GetNumOfPhys(&count);
    platform.forget = false;
    platform.faults = faults;
    platform.releaseFailed = false;
    platform.held[0] = platform.held[1] = 0;
}

Scene::~Scene()
{
    platform = {};
}

void CheckReleased()
{
    bool held = platform.held[0] != 0 || platform.held[1] != 0;
    if (held && !platform.releaseFailed) {
        std::fprintf(stderr, "a call returned with a semaphore at %d and %d\n", -platform.held[0],
                     -platform.held[1]);
        std::abort();
    }
    platform.held[0] = platform.held[1] = 0;
    platform.releaseFailed = false;
}

}  // namespace fuzz

// The log's sink: arguments that do not fit their format are read like those that do.
extern "C" void OBPLAT_Log(const OBPLAT_LogSite*, const char* function, int, const char* format,
                           ...)
{
    char line[2048];
    va_list arguments;
    va_start(arguments, format);
    int length = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length < 0 || function == nullptr)
        std::abort();
}
