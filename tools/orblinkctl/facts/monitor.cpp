#include "tools/orblinkctl/facts/monitor.h"

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/facts/mac_table.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"

namespace ctl {

namespace {

void Take(WatchedState& state, const std::string& object, const Model& facts,
          std::initializer_list<const char*> keys)
{
    for (const char* key : keys)
        state[{object, key}] = facts[key];
}

void TakeMacs(WatchedState& state, const SwitchDeviceRecord& record, unsigned device)
{
    for (const auto& entry : MacEntries(record, device)) {
        const bool known = entry.contains("mac");
        const std::string name = known
                                     ? "mac " + Text(entry["mac"]) + " vlan " + Text(entry["vlan"])
                                     : "mac entry " + Text(entry["raw"]);
        state[{SwitchObject(device), name}] =
            known ? Model("port " + Text(entry["port"])) : Model("present");
    }
}

void TakeSwitches(WatchedState& state)
{
    const auto region = ReadSwitches();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        state[{SwitchObject(device), "state"}] = StateWord(record.config.state);
        if (IsEnabled(record))
            TakeMacs(state, record, device);
    }
    for (const auto& port : LivePorts(region))
        Take(state, PortObject({port["switch"].get<unsigned>(), port["port"].get<unsigned>()}),
             port, {"enabled", "vlan", "link", "link_speed", "link_duplex", "error"});
}

void TakePhys(WatchedState& state)
{
    for (const auto& phy : LivePhys(ReadPhys()))
        Take(state, PhyObject(phy["phy"].get<unsigned>()), phy,
             {"state", "admin", "link", "link_speed", "link_duplex", "error"});
}

template <typename Read>
void TakeFamily(WatchedState& state, Family family, const char* name, Read read)
{
    const bool initialised = IsInitialised(family);
    state[{name, "family"}] = initialised ? "readable" : "not initialised";
    if (!initialised)
        return;
    try {
        read(state);
    } catch (const Failure& failure) {
        if (failure.code != kFailed && failure.code != kBusy)
            throw;
        state[{name, "family"}] = "not readable: " + failure.text;
        DropHeldLogLines();
    }
}

}  // namespace

WatchedState ReadWatchedState()
{
    WatchedState state;
    state[{"board", "battery"}] = ORBLINK_isBatteryMode();
    TakeFamily(state, Family::kSwitch, "switch", TakeSwitches);
    TakeFamily(state, Family::kPhy, "phy", TakePhys);
    return state;
}

}  // namespace ctl
