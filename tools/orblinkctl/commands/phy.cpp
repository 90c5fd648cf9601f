// Standalone PHYs.

#include "hals/phy/ethphy_ieee8023.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/phy_counters.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/phy_offers.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

// The wiring stands in "show" and "phy N board", what it can do in "phy N caps"; tables stay narrow
// without them.
Model WithoutBoard(Model phy)
{
    phy["hal"] = phy["board"].is_null() ? Model() : phy["board"]["hal"];
    phy.erase("board");
    phy.erase("capability_names");
    return phy;
}

Model Listed(Model entry)
{
    Model model;
    model["phys"] = Model::array({std::move(entry)});
    return model;
}

Model ListPhys(Call& call)
{
    Model model;
    model["phys"] = Model::array();
    for (auto& phy : LivePhys(ReadPhys()))
        model["phys"].push_back(WithoutBoard(std::move(phy)));
    if (AnyError(model["phys"]))
        call.exitCode = kFailed;
    return model;
}

Model ShowPhy(Call& call)
{
    const PhyTarget target(call);
    Model phy = StoredPhy(target.region, target.device);
    AddPhyLink(phy, target.device);
    if (!phy["error"].is_null())
        call.exitCode = kFailed;
    return Listed(WithoutBoard(std::move(phy)));
}

Model ShowPhyLink(Call& call)
{
    const PhyTarget target(call);
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    Check(ETHPHY_GetLink(target.device, &link, &speed, &duplex), target.object, "ETHPHY_GetLink");
    Model phy;
    phy["phy"] = target.device;
    phy["link"] = link != 0;
    phy["link_speed"] = link != 0 ? SpeedModel(speed) : Model();
    phy["link_duplex"] = link != 0 ? Model(duplex != 0 ? "full" : "half") : Model();
    return Listed(std::move(phy));
}

Model Done(const PhyTarget& target, const char* setting, Model value, bool applied = true)
{
    return Change(target.object, setting, std::move(value), applied);
}

Model PhyUp(Call& call)
{
    const PhyTarget target(call);
    Check(ETHPHY_ResetDisable(target.device, call.Has("--defaults") ? 1 : 0), target.object,
          "ETHPHY_ResetDisable");
    return Done(target, "state", "enabled");
}

Model PhyDown(Call& call)
{
    const PhyTarget target(call);
    Check(ETHPHY_ResetEnable(target.device), target.object, "ETHPHY_ResetEnable");
    return Done(target, "state", "in reset");
}

Model ResetPhy(Call& call)
{
    PhyDown(call);
    return PhyUp(call);
}

Model SetAdmin(const PhyTarget& target, bool enable)
{
    Check(ETHPHY_SetAdminState(target.device, enable ? 1 : 0), target.object,
          "ETHPHY_SetAdminState");
    const bool held = target.region.phy[target.device].config.hwState == EP_HW_STATE_DISABLED;
    return Done(target, "admin", enable, !held);
}

Model EnablePhy(Call& call)
{
    return SetAdmin(PhyTarget(call), true);
}
Model DisablePhy(Call& call)
{
    return SetAdmin(PhyTarget(call), false);
}

// Only the general HAL tells what its PHY can do in a way that is known here.
void RequireEee(const PhyTarget& target)
{
    constexpr uint32_t kAnyEee = ETHPHY_IEEE8023_EEE_100 | ETHPHY_IEEE8023_EEE_1000 |
                                 ETHPHY_IEEE8023_EEE_10000 | ETHPHY_IEEE8023_EEE_2500 |
                                 ETHPHY_IEEE8023_EEE_5000;
    const auto& record = target.region.phy[target.device];
    if (IsIeee8023(record) && record.capsValid != 0 && (record.caps & kAnyEee) == 0)
        throw Failure{kUnsupported, target.object + " does not support 802.3az"};
}

void PrintWords(const char* heading, const Model& words, std::string& out)
{
    std::string list;
    for (const auto& word : words)
        list += " " + Text(word);
    Paragraph(out, {"  ", heading, list.empty() ? " -" : list});
}

void PrintPhyCaps(const Model& model, std::string& out)
{
    for (const auto& phy : model["phys"]) {
        Paragraph(out, {"PHY ", Text(phy["phy"]), ": capabilities ",
                        Hex(phy["capabilities"].get<uint32_t>(), 8)});
        if (!phy["capability_names"].is_null())
            PrintWords("it can", phy["capability_names"], out);
    }
}

std::string PhyLinkText(const Model& phy)
{
    if (phy["link"] != true)
        return "no link";
    return "link " + Text(phy["link_speed"]) + " " + Text(phy["link_duplex"]);
}

void PrintSpeeds(const Model& model, std::string& out)
{
    for (const auto& phy : model["phys"]) {
        const Model& duplex = phy["duplex"];
        Paragraph(out, {"PHY ", Text(phy["phy"]), ": speed ", Text(phy["speed"]),
                        duplex.is_null() ? "" : " " + Text(duplex), ", ", PhyLinkText(phy)});
        PrintWords("offers:", phy["offers"], out);
        PrintWords("the partner offers:", phy["partner_offers"], out);
    }
}

void PrintEee(const Model& model, std::string& out)
{
    for (const auto& phy : model["phys"]) {
        Paragraph(out, {"PHY ", Text(phy["phy"]), ": eee ", OnOff(phy["eee"]), ", ",
                        phy["active"] == true ? "in use" : "not in use", ", ", PhyLinkText(phy)});
        PrintWords("offers it at:", phy["offers"], out);
        PrintWords("the partner offers it at:", phy["partner_offers"], out);
    }
}

Model ShowPhySpeed(Call& call)
{
    const PhyTarget target(call);
    return Listed(SpeedOffers(target.region, target.device));
}

Model ShowPhyEee(Call& call)
{
    const PhyTarget target(call);
    RequireEee(target);
    return Listed(EeeOffers(target.device));
}

Model ShowPhyCaps(Call& call)
{
    const PhyTarget target(call);
    if (target.region.phy[target.device].capsValid == 0)
        throw Failure{kInitState, "the capabilities of " + target.object +
                                      " are not known yet: orblinkctl phy " +
                                      std::to_string(target.device) + " up"};
    uint32_t caps = 0;
    Check(ETHPHY_GetCaps(target.device, &caps), target.object, "ETHPHY_GetCaps");
    Model phy;
    phy["phy"] = target.device;
    phy["capabilities"] = caps;
    phy["capability_names"] = CapabilityNames(target.region.phy[target.device], caps);
    return Listed(std::move(phy));
}

Model ShowPhyConfig(Call& call)
{
    const PhyTarget target(call);
    PhyProvConfig config;
    Check(ETHPHY_GetProvisionedConfig(target.device, &config), target.object,
          "ETHPHY_GetProvisionedConfig");
    Model phy;
    phy["phy"] = target.device;
    phy["state"] = PhyStateWord(config.hwState);
    phy["word8"] = config.word8;
    phy["word12"] = config.word12;
    phy["word16"] = config.word16;
    phy["admin"] = config.adminState != 0;
    phy["word24"] = config.word24;
    phy["word28"] = config.word28;
    return Listed(std::move(phy));
}

Model ShowPhyBoard(Call& call)
{
    const PhyTarget target(call);
    PhyBoardEntry entry;
    Check(ETHPHY_GetBsdConfig(target.device, &entry), target.object, "ETHPHY_GetBsdConfig");
    Model phy;
    phy["phy"] = target.device;
    phy.update(PhyBoardModel(entry));
    return Listed(std::move(phy));
}

Model ShowPhyCounters(Call& call)
{
    const PhyTarget target(call);
    Model phy;
    phy["phy"] = target.device;
    phy["counters"] = PhyCounters(target.region, target.device);
    return Listed(std::move(phy));
}

Model ResetPhyCounters(Call& call)
{
    const PhyTarget target(call);
    Check(ETHPHY_ResetCounters(target.device), target.object, "ETHPHY_ResetCounters");
    return Done(target, "counters", 0);
}

Model SetPhyEee(Call& call)
{
    const PhyTarget target(call);
    const bool on = call.Word("ON-OFF") == "on";
    RequireEee(target);
    Check(ETHPHY_SetEeeState(target.device, on ? 1 : 0), target.object, "ETHPHY_SetEeeState");
    return Done(target, "eee", on);
}

Model Poll(Call& call)
{
    const PhyTarget target(call);
    Check(ETHPHY_Poll(target.device), target.object, "ETHPHY_Poll");
    return Done(target, "poll", "done");
}

Model ResetPhyLane(Call& call)
{
    const PhyTarget target(call);
    Check(ETHPHY_ResetSgmii(target.device), target.object, "ETHPHY_ResetSgmii");
    return Done(target, "lane", "reset");
}

Model SetPhySpeed(Call& call)
{
    const PhyTarget target(call);
    // 10, 100, 1000, 2500 are the codes 1 to 4 of this operation.
    const uint32_t code = *ParseSpeed(call.Word("PHY-SPEED")) - OB_SPEED_AUTONEG;
    const bool full = !call.Has("DUPLEX") || call.Word("DUPLEX") == "full";
    Check(ETHPHY_PhyZ88_SetSpeedDuplexMode(target.device, code, full ? 1 : 0), target.object,
          "ETHPHY_PhyZ88_SetSpeedDuplexMode");
    Model model = Done(target, "speed", call.Number("PHY-SPEED"));
    model["changes"].push_back(Done(target, "duplex", full ? "full" : "half")["changes"].front());
    return model;
}

constexpr Command kPhyCommands[] = {
    {"phy", "", "every PHY with its link", "ETHPHY_GetNumOfPhys ETHPHY_GetPhyData ETHPHY_GetLink",
     ListPhys, PrintModel},
    {"phy PHY", "", "one PHY with its link", "ETHPHY_GetPhyData ETHPHY_GetLink", ShowPhy,
     PrintModel},
    {"phy PHY up", "--defaults", "take a PHY out of reset", "ETHPHY_ResetDisable", PhyUp,
     PrintChanges},
    {"phy PHY down", "", "put a PHY into reset", "ETHPHY_ResetEnable", PhyDown, PrintChanges},
    {"phy PHY reset", "--defaults", "down, then up", "ETHPHY_ResetEnable ETHPHY_ResetDisable",
     ResetPhy, PrintChanges},
    {"phy PHY enable", "", "enable a PHY", "ETHPHY_SetAdminState", EnablePhy, PrintChanges},
    {"phy PHY disable", "", "disable a PHY", "ETHPHY_SetAdminState", DisablePhy, PrintChanges},
    {"phy PHY link", "", "the link of a PHY", "ETHPHY_GetLink", ShowPhyLink, PrintModel},
    {"phy PHY speed", "", "speed and duplex, and what the PHY and its partner offer",
     "ETHPHY_ReadMdio ETHPHY_ReadMmd ETHPHY_GetLink", ShowPhySpeed, PrintSpeeds},
    {"phy PHY speed PHY-SPEED [DUPLEX]", "", "advertise one speed and negotiate again",
     "ETHPHY_PhyZ88_SetSpeedDuplexMode", SetPhySpeed, PrintChanges},
    {"phy PHY eee", "", "Energy-Efficient Ethernet, and where the PHY and its partner offer it",
     "ETHPHY_ReadMdio ETHPHY_ReadMmd ETHPHY_GetLink", ShowPhyEee, PrintEee},
    {"phy PHY eee ON-OFF", "", "switch Energy-Efficient Ethernet", "ETHPHY_SetEeeState", SetPhyEee,
     PrintChanges},
    {"phy PHY caps", "", "what the PHY can do", "ETHPHY_GetCaps", ShowPhyCaps, PrintPhyCaps},
    {"phy PHY config", "", "the provisioned configuration", "ETHPHY_GetProvisionedConfig",
     ShowPhyConfig, PrintModel},
    {"phy PHY board", "", "the wiring", "ETHPHY_GetBsdConfig", ShowPhyBoard, PrintModel},
    {"phy PHY counters", "", "the counters", "ETHPHY_GetCounters", ShowPhyCounters, PrintCounters},
    {"phy PHY counters reset", "", "set the counters to 0", "ETHPHY_ResetCounters",
     ResetPhyCounters, PrintChanges},
    {"phy PHY poll", "", "let the HAL do its periodic work", "ETHPHY_Poll", Poll, PrintChanges},
    {"phy PHY lane-reset", "", "reset the SoC lane of a PHY", "ETHPHY_ResetSgmii", ResetPhyLane,
     PrintChanges},
};

}  // namespace

std::span<const Command> PhyCommands()
{
    return kPhyCommands;
}

}  // namespace ctl
