// The board as a whole: initialisation, wiring, board services.
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/facts/board_model.h"
#include "tools/orblinkctl/facts/library.h"
#include "tools/orblinkctl/facts/log_lines.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/board_text.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/picture.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

// The mailbox client tells its story on standard output, where only the command's own output
// belongs.
// False when no board data came, or none that the library could take: it then goes on without
// devices.
template <typename Initialise>
bool InitialiseFamily(const char* operation, Initialise initialise)
{
    StdoutCapture capture;
    const int result = initialise();
    const std::string story = capture.Text();
    if (CurrentSettings().verbosity > 0 || (result != 0 && !CurrentSettings().quiet))
        std::fputs(story.c_str(), stderr);
    Check(result, "board", operation);
    return story.find("successfully received") != std::string::npos && !LogSaid("Bad message") &&
           !LogSaid("Unsupported message type");
}

void RequireBoardData(bool came, unsigned devices, const char* name)
{
    if (!came && devices == 0)
        throw Failure{kFailed, std::string("the ") + name +
                                   " family is initialised, but without devices: no good board "
                                   "data came over the mailbox (-v shows the exchange)"};
}

void RefuseSecondTime(Family family, const char* name)
{
    if (IsInitialised(family))
        throw Failure{kInitState, std::string("the ") + name + " family is already initialised"};
}

Model FamilyModel(const char* name, unsigned devices)
{
    Model model;
    model["family"] = name;
    model["devices"] = devices;
    return model;
}

Model Initialise(Call& call)
{
    const bool both = call.Has("--switch") == call.Has("--phy");
    const bool switches = both || call.Has("--switch");
    const bool phys = both || call.Has("--phy");
    if (call.Has("--no-defaults") && !switches)
        throw Failure{kUsage, "--no-defaults is for the switch family"};
    if (switches)
        RefuseSecondTime(Family::kSwitch, "switch");
    if (phys)
        RefuseSecondTime(Family::kPhy, "PHY");
    Model model;
    model["families"] = Model::array();
    if (switches) {
        const uint32_t defaults = call.Has("--no-defaults") ? 0 : 1;
        const bool came =
            InitialiseFamily("ORBLINK_InitOnce", [&] { return ORBLINK_InitOnce(defaults); });
        uint8_t count = 0;
        Check(ORBLINK_GetNumOfSwitches(&count), "board", "ORBLINK_GetNumOfSwitches");
        RequireBoardData(came, count, "switch");
        model["families"].push_back(FamilyModel("switch", count));
    }
    if (phys) {
        const bool came = InitialiseFamily("ETHPHY_InitOnce", [] { return ETHPHY_InitOnce(); });
        uint8_t count = 0;
        Check(ETHPHY_GetNumOfPhys(&count), "board", "ETHPHY_GetNumOfPhys");
        RequireBoardData(came, count, "PHY");
        model["families"].push_back(FamilyModel("phy", count));
    }
    model["mac_addresses"] = MacAddresses();
    return model;
}

void PrintInitialised(const Model& model, std::string& out)
{
    for (const auto& family : model["families"])
        Line(out, {Text(family["family"]), " family: ", Text(family["devices"]), " found"});
    if (!model["mac_addresses"].is_null())
        for (const auto& address : model["mac_addresses"])
            Line(out, {"MAC address ", Text(address)});
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
    out += PictureText(DrawBoard(board), HasLineCharacters(), WantsColour());
    for (const auto& error : board["errors"])
        Line(out, {"error: ", Text(error)});
}

ExitCode Overview(Call& call)
{
    const Model board = LiveBoard();
    if (call.Has("--svg"))
        ReplaceFile(call.Word("--svg"), PictureSvg(DrawBoard(board)));
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
    model["mac_addresses"] = Model::array();
    uint8_t macs[5][6];
    Check(ORBLINK_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]),
          "board (only the process that initialised the board knows the addresses)",
          "ORBLINK_GetMacAddresses");
    for (const auto& mac : macs)
        model["mac_addresses"].push_back(MacWord(mac));
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

constexpr Command kCommands[] = {
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
    return kCommands;
}

}  // namespace ctl
