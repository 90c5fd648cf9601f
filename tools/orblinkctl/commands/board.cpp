// The board as a whole: initialisation, wiring, board services.
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/commands/initialise.h"
#include "tools/orblinkctl/commands/recovery.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/facts/board_data_sorter.h"
#include "tools/orblinkctl/facts/board_model.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/board_text.h"
#include "tools/orblinkctl/output/columns.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/picture.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

void RequireFirstTime(Family family)
{
    RequireOwnRegion(family);
    if (!IsInitialised(family))
        return;
    const std::string name = std::string("the ") + NamesOf(family).name + " family";
    const Diagnosis found = Diagnose(family);
    const std::string next = NextCommand(found);
    if (next.empty())
        throw Failure{kInitState, name + " is already initialised"};
    throw Failure{kInitState,
                  name + " is already initialised: " + VerdictText(found) + ": " + next};
}

Model WithoutAnswer(Family family)
{
    Model model;
    model["family"] = family == Family::kPhy ? "phy" : "switch";
    model["devices"] = 0;
    model["failure"] = NoAnswerText();
    model["mac_addresses"] = nullptr;
    return model;
}

// Boards of PHYs alone send no board data for switches, and the other way round.
void RequireOneAnswer(const Model& families)
{
    for (const auto& family : families)
        if (!family.contains("failure"))
            return;
    throw Failure{kFailed, families.front()["failure"].get<std::string>()};
}

Model Initialise(Call& call)
{
    const bool both = call.Has("--switch") == call.Has("--phy");
    std::vector<Family> wanted;
    if (both || call.Has("--switch"))
        wanted.push_back(Family::kSwitch);
    if (both || call.Has("--phy"))
        wanted.push_back(Family::kPhy);
    if (call.Has("--no-defaults") && wanted.front() != Family::kSwitch)
        throw Failure{kUsage, "--no-defaults is for the switch family"};
    for (const Family family : wanted)
        RequireFirstTime(family);
    Model families = Model::array();
    // Where one family alone is wanted nobody would get what was kept for the other.
    std::optional<BoardDataSorter> sorter;
    if (both)
        sorter.emplace();
    for (const Family family : wanted) {
        auto found = InitialiseFamily(family, !call.Has("--no-defaults"));
        families.push_back(found ? std::move(*found) : WithoutAnswer(family));
    }
    RequireOneAnswer(families);
    Model model;
    model["families"] = Model::array();
    model["mac_addresses"] = nullptr;
    for (auto& family : families) {
        if (model["mac_addresses"].is_null())
            model["mac_addresses"] = family["mac_addresses"];
        family.erase("mac_addresses");
        model["families"].push_back(std::move(family));
    }
    RememberMacAddresses(model["mac_addresses"]);
    return model;
}

void PrintInitialised(const Model& model, std::string& out)
{
    std::string next;
    for (const auto& family : model["families"]) {
        const std::string name = Text(family["family"]);
        const auto devices = family["devices"].get<unsigned>();
        const std::string none = family.contains("failure") ? ": " + Text(family["failure"])
                                                            : ": the board data name none";
        Paragraph(out,
                  {name, " family: ", std::to_string(devices), " found", devices == 0 ? none : ""});
        for (unsigned i = 0; i < devices; ++i)
            next +=
                (next.empty() ? "" : ", ") + std::string("orblinkctl ") +
                (name == "phy" ? "phy " + std::to_string(i) + " up" : "up " + std::to_string(i));
    }
    if (!model["mac_addresses"].is_null())
        for (const auto& address : model["mac_addresses"])
            Paragraph(out, {"MAC address ", Text(address)});
    if (!next.empty())
        Paragraph(out, {"next: ", next});
}

Model Show(Call& call)
{
    Model board = StoredBoard();
    if (!board["errors"].empty())
        call.exitCode = kFailed;
    return board;
}

ExitCode CodeOf(const Model& board)
{
    const bool failed =
        !board["errors"].empty() || AnyError(board["ports"]) || AnyError(board["phys"]);
    return failed ? kFailed : kDone;
}

bool WantsColour()
{
    const std::string& when = CurrentSettings().color;
    const char* refused = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    if (when != "auto")
        return when == "always";
    return isatty(STDOUT_FILENO) != 0 && (refused == nullptr || *refused == '\0') &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

bool HasLineCharacters()
{
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* locale = std::getenv(name);
        if (locale != nullptr && *locale != '\0')
            return std::string_view(locale).find("UTF-8") != std::string_view::npos ||
                   std::string_view(locale).find("utf8") != std::string_view::npos;
    }
    return false;
}

void PrintOverview(const Model& board, std::string& out)
{
    out += PictureText(DrawBoard(board, ScreenColumns()), HasLineCharacters(), WantsColour());
    for (const auto& error : board["errors"])
        Paragraph(out, {"error: ", Text(error)});
}

ExitCode Overview(Call& call)
{
    const Model board = LiveBoard();
    if (call.Has("--svg"))
        WriteFile(call.Word("--svg"), PictureSvg(DrawBoard(board)));
    else
        WriteOut(Rendered(call, board));
    return CodeOf(board);
}

Model ShowBoard(Call& call)
{
    const Model all = Show(call);
    Model model;
    model["battery"] = ORBLINK_isBatteryMode();
    model["mac_addresses"] = MacAddresses();
    for (const char* list : {"switches", "phys"}) {
        model[list] = all[list].is_null() ? Model() : Model::array();
        for (const auto& device : all[list]) {
            Model wiring;
            const char* index = device.contains("switch") ? "switch" : "phy";
            wiring[index] = device[index];
            if (!device["board"].is_null())
                wiring.update(device["board"]);
            if (device.contains("service"))
                wiring["service"] = device["service"];
            model[list].push_back(std::move(wiring));
        }
    }
    model["errors"] = all["errors"];
    return model;
}

Model ShowBattery(Call&)
{
    Model model;
    model["battery"] = ORBLINK_isBatteryMode();
    return model;
}

Model ShowMacs(Call&)
{
    Model model;
    model["mac_addresses"] = MacAddresses();
    if (model["mac_addresses"].is_null())
        throw Failure{kUnsupported,
                      "the MAC addresses are known to the program that initialised the board, and "
                      "to nobody after it: 'orblinkctl init' prints them"};
    return model;
}

Model ResetLane(Call& call)
{
    const auto lane = call.As<uint32_t>("GMAC");
    Check(OBOS_ResetSerDes(lane, call.Has("--hsgmii") ? 1 : 0), "lane " + call.Word("GMAC"),
          "OBOS_ResetSerDes");
    return Change("lane " + call.Word("GMAC"), "reset", call.Has("--hsgmii") ? "2500" : "1000",
                  true);
}

Model DrivePin(Call& call)
{
    Check(OBOS_SetGpioValue(call.As<uint32_t>("PIN"), call.As<int>("LEVEL")),
          "pin " + call.Word("PIN"), "OBOS_SetGpioValue");
    return Change("pin " + call.Word("PIN"), "level", call.Number("LEVEL"), true);
}

Model ShowBuiltIn(Call&)
{
    Model model;
    model["board_entries"] = Model::array();
    SwitchBoardEntry entry{};
    uint32_t found = 0;
    Check(OBOS_GetConfiguredDevice(1, &entry, &found), "board", "OBOS_GetConfiguredDevice");
    if (found != 0)
        model["board_entries"].push_back(BoardEntry(entry));
    return model;
}

constexpr Command kBoardCommands[] = {
    {"", "--svg", "the board drawn, with every link",
     "ORBLINK_GetSwitchDevices ORBLINK_GetPortLink ETHPHY_GetPhyData ETHPHY_GetLink", nullptr,
     PrintOverview, Overview},
    {"init", "--switch --phy --no-defaults", "initialise from the board data; once after power-on",
     "ORBLINK_InitOnce ORBLINK_GetNumOfSwitches ETHPHY_InitOnce ETHPHY_GetNumOfPhys", Initialise,
     PrintInitialised},
    {"show", "", "the wiring and every stored setting",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", Show, PrintBoard},
    {"board", "", "board data, MAC addresses, service flags, battery",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData ORBLINK_isBatteryMode", ShowBoard, PrintModel},
    {"board battery", "", "the system state; not 0 on battery", "ORBLINK_isBatteryMode",
     ShowBattery, PrintModel},
    {"board mac-addresses", "", "the board's five MAC addresses", "ORBLINK_GetMacAddresses",
     ShowMacs, PrintModel},
    {"board built-in", "", "the built-in board entry", "OBOS_GetConfiguredDevice", ShowBuiltIn,
     PrintModel},
    {"board lane-reset GMAC", "--hsgmii", "reset a SerDes lane of the SoC", "OBOS_ResetSerDes",
     ResetLane, PrintChanges},
    {"board pin PIN LEVEL", "", "drive a reset pin: 0 holds the device in reset",
     "OBOS_SetGpioValue", DrivePin, PrintChanges},
};

}  // namespace

std::span<const Command> BoardCommands()
{
    return kBoardCommands;
}

}  // namespace ctl
