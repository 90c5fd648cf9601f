// The configuration of the board: saved, compared, applied, verified.
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/config/config_apply.h"
#include "tools/orblinkctl/config/config_model.h"
#include "tools/orblinkctl/facts/chip_settings.h"
#include "tools/orblinkctl/facts/library.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

void RequireSomething()
{
    if (!IsInitialised(Family::kSwitch) && !IsInitialised(Family::kPhy))
        throw Failure{kInitState, "the board is not initialised: run 'orblinkctl init' first"};
}

void PrintConfig(const Model& model, std::string& out)
{
    out += ConfigText(model["config"]);
}

ExitCode Save(Call& call)
{
    RequireSomething();
    Model model;
    model["config"] = CurrentConfig();
    const std::string text = Rendered(call, model);
    if (call.Has("FILE"))
        ReplaceFile(call.Word("FILE"), text);
    else
        WriteOut(text);
    return kDone;
}

Model Diff(Call& call)
{
    RequireSomething();
    const Model board = CurrentConfig();
    const Model wanted = call.Has("FILE") ? ReadConfig(call.Word("FILE")) : DefaultConfig(board);
    Model model;
    model["differences"] = Model::array();
    for (const auto& difference : Differences(board, wanted)) {
        Model entry;
        entry["setting"] = PathText(difference.path);
        entry["board"] = difference.board;
        entry["wanted"] = difference.wanted;
        model["differences"].push_back(std::move(entry));
    }
    if (!model["differences"].empty())
        call.exitCode = kDifferent;
    return model;
}

// Brings the board back as far as possible after a failure; the failure itself is what counts.
void TakeBack(const Model& before)
{
    const Model now = CurrentConfig();
    RunSteps(StepsFor(now, Differences(now, before)));
}

void RunOrTakeBack(const std::vector<ConfigStep>& steps, const Model& before)
{
    try {
        RunSteps(steps);
    } catch (Failure& failure) {
        try {
            TakeBack(before);
            failure.text += "; the changes were taken back";
        } catch (const Failure& second) {
            failure.text += "; the changes could not be taken back: " + second.text;
        }
        throw;
    }
}

// Whether a line came on standard input in time.
bool Confirmed(double seconds)
{
    WriteOut("Press Enter to keep the changes.\n");
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, static_cast<int>(seconds * 1000)) <= 0)
        return false;
    char key = 0;
    return read(STDIN_FILENO, &key, 1) == 1;
}

Model Apply(Call& call)
{
    const Model wanted = ReadConfig(call.Word("FILE"));
    RequireSomething();
    const Model before = CurrentConfig();
    const auto steps = StepsFor(before, Differences(before, wanted));
    Model model;
    model["steps"] = Model::array();
    for (const auto& step : steps)
        model["steps"].push_back(step.command);
    model["applied"] = !call.Has("--dry-run");
    model["taken_back"] = false;
    if (call.Has("--dry-run"))
        return model;
    RunOrTakeBack(steps, before);
    if (!call.Has("--confirm-within") || steps.empty())
        return model;
    if (!Confirmed(std::strtod(call.Word("--confirm-within").c_str(), nullptr))) {
        TakeBack(before);
        model["taken_back"] = true;
        call.exitCode = kFailed;
    }
    return model;
}

void PrintApplied(const Model& model, std::string& out)
{
    const bool applied = model["applied"].get<bool>();
    for (const auto& step : model["steps"])
        Line(out, {applied ? "done: " : "would do: ", Text(step)});
    if (model["steps"].empty())
        Line(out, {"nothing to do"});
    if (model["taken_back"].get<bool>())
        Line(out, {"not confirmed: the changes were taken back"});
}

Model Verify(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["checked"] = 0;
    model["differences"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        if (!IsEnabled(region.device[device]))
            continue;
        for (auto& setting : ChipSettings(region.device[device], device)) {
            model["checked"] = model["checked"].get<int>() + 1;
            if (setting["record"] != setting["chip"])
                model["differences"].push_back(std::move(setting));
        }
    }
    if (!model["differences"].empty())
        call.exitCode = kDifferent;
    return model;
}

constexpr Command kCommands[] = {
    {"config save [FILE]", "", "the stored configuration as TOML",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", nullptr, PrintConfig, Save},
    {"config diff [FILE]", "", "what differs from a file, or from the defaults",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", Diff, PrintModel},
    {"config apply FILE", "--dry-run --confirm-within",
     "bring the board to a file, by the differences alone",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", Apply, PrintApplied},
    {"config verify", "", "what the records say against what the enabled chips report",
     "ORBLINK_ReadPortReg ORBLINK_SmiRead ORBLINK_GetLEDConfig ORBLINK_GetEeePortState", Verify,
     PrintModel},
};

}  // namespace

std::span<const Command> ConfigCommands()
{
    return kCommands;
}

}  // namespace ctl
