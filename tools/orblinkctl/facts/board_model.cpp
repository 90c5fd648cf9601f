#include "tools/orblinkctl/facts/board_model.h"

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"

namespace ctl {

namespace {

Model remembered;

void AddSwitches(Model& model, bool live)
{
    const auto region = ReadSwitches();
    model["switches"] = Model::array();
    model["mac_vlans"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        model["switches"].push_back(StoredSwitch(record, device));
        for (auto& entry : MacVlanEntries(record.config.macToVlanTable, device))
            model["mac_vlans"].push_back(std::move(entry));
    }
    model["ports"] = live ? LivePorts(region) : StoredPorts(region);
}

void AddPhys(Model& model, bool live)
{
    const auto region = ReadPhys();
    model["phys"] = live ? LivePhys(region) : StoredPhys(region);
}

template <typename Read>
void Attempt(Model& model, Read read)
{
    try {
        read();
    } catch (const Failure& failure) {
        if (failure.code != kFailed)
            throw;
        model["errors"].push_back(failure.text);
    }
}

Model ReadBoard(bool live)
{
    const bool switches = IsInitialised(Family::kSwitch);
    const bool phys = IsInitialised(Family::kPhy);
    if (!switches && !phys)
        throw Failure{kInitState, "the board is not initialised: run 'orblinkctl init' first"};
    Model model;
    for (const char* list : {"switches", "ports", "mac_vlans", "phys"})
        model[list] = nullptr;
    model["errors"] = Model::array();
    if (switches)
        Attempt(model, [&] { AddSwitches(model, live); });
    if (phys)
        Attempt(model, [&] { AddPhys(model, live); });
    return model;
}

}  // namespace

void RememberMacAddresses(Model addresses)
{
    remembered = std::move(addresses);
}

Model StoredBoard()
{
    return ReadBoard(false);
}

Model LiveBoard()
{
    return ReadBoard(true);
}

Model MacAddresses()
{
    if (!remembered.is_null())
        return remembered;
    uint8_t macs[5][6];
    const bool known = ORBLINK_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]) == 0;
    if (!known) {
        DropHeldLogLines();
        return nullptr;
    }
    Model list = Model::array();
    for (const auto& mac : macs)
        list.push_back(MacWord(mac));
    return list;
}

}  // namespace ctl
