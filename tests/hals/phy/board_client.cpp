// A management process for the board tests: does its arguments one after the other and prints what
// came of each. "OPERATION" or "OPERATION:PHY[:ARGUMENT...]"; numbers as strtoul takes them.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "hals/phy/ethphy_ieee8023.h"
#include "phy/ethphy_api.h"

namespace {

struct Arguments {
    uint8_t phy;
    uint32_t first;
    uint32_t second;
};

int Link(const Arguments& given)
{
    uint32_t link = 0, speed = 0, duplex = 0;
    int result = ETHPHY_GetLink(given.phy, &link, &speed, &duplex);
    std::printf("link %u %u %u\n", link, speed, duplex);
    return result;
}

int Caps(const Arguments& given)
{
    uint32_t caps = 0;
    int result = ETHPHY_GetCaps(given.phy, &caps);
    std::printf("caps 0x%x\n", caps);
    return result;
}

int Counters(const Arguments& given)
{
    EthphyIeee8023Counters counters{};
    int result = ETHPHY_GetCounters(given.phy, &counters);
    std::printf("counters %u: %u %u %u %u eee 0x%x\n", counters.valid, counters.idleErrors,
                counters.highBer, counters.erroredBlocks, counters.eeeWakeErrors,
                counters.eeeState);
    return result;
}

int Drops(const Arguments& given)
{
    EthphyIeee8023Counters counters{};
    int result = ETHPHY_GetCounters(given.phy, &counters);
    std::printf("drops %u\n", counters.linkDrops);
    return result;
}

int ReadChipReg(const Arguments& given)
{
    uint16_t value = 0;
    int result = ETHPHY_ReadChipReg(given.phy, given.first, &value);
    std::printf("register 0x%x\n", value);
    return result;
}

struct Operation {
    const char* name;
    int (*run)(const Arguments& given);
};

const Operation kOperations[] = {
    {"init", [](const Arguments&) { return ETHPHY_InitOnce(); }},
    {"up", [](const Arguments& on) { return ETHPHY_ResetDisable(on.phy, int(on.first)); }},
    {"down", [](const Arguments& on) { return ETHPHY_ResetEnable(on.phy); }},
    {"admin", [](const Arguments& on) { return ETHPHY_SetAdminState(on.phy, int(on.first)); }},
    {"eee", [](const Arguments& on) { return ETHPHY_SetEeeState(on.phy, uint8_t(on.first)); }},
    {"speed",
     [](const Arguments& on) {
         return ETHPHY_PhyZ88_SetSpeedDuplexMode(on.phy, on.first, int(on.second));
     }},
    {"clear", [](const Arguments& on) { return ETHPHY_ResetCounters(on.phy); }},
    {"poll", [](const Arguments& on) { return ETHPHY_Poll(on.phy); }},
    {"write",
     [](const Arguments& on) {
         return ETHPHY_WriteChipReg(on.phy, on.first, uint16_t(on.second));
     }},
    {"wait", [](const Arguments& on) { return usleep(on.first * 1000); }},
    {"link", Link},
    {"caps", Caps},
    {"counters", Counters},
    {"drops", Drops},
    {"read", ReadChipReg},
};

bool Do(const std::string& text)
{
    std::vector<uint32_t> numbers;
    for (size_t colon = text.find(':'); colon != std::string::npos;
         colon = text.find(':', colon + 1))
        numbers.push_back(uint32_t(std::strtoul(text.c_str() + colon + 1, nullptr, 0)));
    numbers.resize(3);
    for (const Operation& operation : kOperations) {
        if (text.substr(0, text.find(':')) != operation.name)
            continue;
        if (operation.run({uint8_t(numbers[0]), numbers[1], numbers[2]}) != 0)
            std::printf("%s failed\n", text.c_str());
        return true;
    }
    return false;
}

}  // namespace

int main(int, char** arguments)
{
    while (*++arguments != nullptr)
        if (!Do(*arguments)) {
            std::fprintf(stderr, "no operation '%s'\n", *arguments);
            return 2;
        }
    return 0;
}
