// The configuration of the board: saved, compared, applied, verified.
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/commands/confirmation.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/config/config_apply.h"
#include "tools/orblinkctl/config/config_model.h"
#include "tools/orblinkctl/config/guard.h"
#include "tools/orblinkctl/facts/chip_settings.h"
#include "tools/orblinkctl/facts/switch_model.h"
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

// What an init script applies after power-on.
constexpr char kStartupFile[] = "/etc/orblink/startup.toml";

// The file that a call names; nothing when it names none.
std::optional<std::string> FileOf(const Call& call)
{
    if (call.Has("FILE") && call.Has("--startup"))
        throw Failure{kUsage, "either a file or --startup"};
    if (call.Has("--startup"))
        return kStartupFile;
    return call.Has("FILE") ? std::optional(call.Word("FILE")) : std::nullopt;
}

ExitCode Save(Call& call)
{
    RequireSomething();
    const auto file = FileOf(call);
    if (call.Has("--startup"))
        std::filesystem::create_directories(std::filesystem::path(kStartupFile).parent_path());
    Model model;
    model["config"] = CurrentConfig();
    const std::string text = Rendered(call, model);
    if (file)
        WriteFile(*file, text);
    else
        WriteOut(text);
    return kDone;
}

Model DifferenceModel(const std::vector<ConfigDifference>& differences)
{
    Model list = Model::array();
    for (const auto& difference : differences) {
        Model entry;
        entry["setting"] = PathText(difference.path);
        entry["board"] = difference.board;
        entry["wanted"] = difference.wanted;
        list.push_back(std::move(entry));
    }
    return list;
}

Model Diff(Call& call)
{
    RequireSomething();
    const Model board = CurrentConfig();
    const auto file = FileOf(call);
    const Model wanted = file ? ReadConfig(*file) : DefaultConfig(board);
    Model model;
    model["differences"] = DifferenceModel(Differences(board, wanted));
    if (!model["differences"].empty())
        call.exitCode = kDifferent;
    return model;
}

Model Apply(Call& call)
{
    const auto file = FileOf(call);
    if (!file)
        throw Failure{kUsage, "which configuration? config apply FILE, or --startup"};
    const Model wanted = ReadConfig(*file);
    RequireSomething();
    if (!call.Has("--dry-run") && AnythingPending())
        throw Failure{kUnsupported,
                      "another change waits for its confirmation: orblinkctl config "
                      "confirm, or orblinkctl config rollback"};
    const Model before = CurrentConfig();
    const auto differences = Differences(before, wanted);
    const auto steps = StepsFor(before, differences);
    Model model;
    model["steps"] = Model::array();
    for (const auto& step : steps)
        model["steps"].push_back(step.command);
    model["applied"] = !call.Has("--dry-run");
    model["taken_back"] = false;
    if (call.Has("--dry-run"))
        return model;
    if (!call.Has("--confirm-within") || steps.empty()) {
        RunOrTakeBack(steps, before);
        return model;
    }
    PendingChange change;
    change.file = std::filesystem::absolute(*file).string();
    change.seconds = std::strtod(call.Word("--confirm-within").c_str(), nullptr);
    change.differences = DifferenceModel(differences);
    if (!KeptInTime(change, before, steps)) {
        model["taken_back"] = true;
        call.exitCode = kFailed;
    }
    return model;
}

void PrintApplied(const Model& model, std::string& out)
{
    const bool applied = model["applied"].get<bool>();
    for (const auto& step : model["steps"])
        Paragraph(out, {applied ? "done: " : "would do: ", Text(step)});
    if (model["steps"].empty())
        Paragraph(out, {"nothing to do"});
    if (model["taken_back"].get<bool>())
        Paragraph(out, {"not confirmed: the changes were taken back"});
}

Model ShowPending(Call&)
{
    Model model;
    model["pending"] = AnythingPending() ? PendingModel() : Model();
    return model;
}

void PrintPending(const Model& model, std::string& out)
{
    const Model& pending = model["pending"];
    if (pending.is_null())
        return Paragraph(out, {"no change waits for its confirmation"});
    if (pending["seconds_left"].is_null())
        Paragraph(out, {Text(pending["file"]), " is being applied"});
    else
        Paragraph(out, {Text(pending["file"]), " is taken back in ", Text(pending["seconds_left"]),
                        " s: orblinkctl config confirm"});
    Model changes;
    changes["differences"] = pending["differences"];
    PrintModel(changes, out);
}

Model OutcomeModel(const GuardOutcome& outcome)
{
    if (!outcome.failure.empty())
        throw Failure{kFailed, "the changes could not be taken back: " + outcome.failure};
    Model model;
    model["kept"] = outcome.kept;
    return model;
}

Model Confirm(Call&)
{
    return OutcomeModel(ConfirmPending());
}

Model RollBack(Call&)
{
    return OutcomeModel(TakeBackPending());
}

void PrintOutcome(const Model& model, std::string& out)
{
    Paragraph(out, {"the changes were ", model["kept"].get<bool>() ? "kept" : "taken back"});
}

Model Skipped(const std::string& object, const std::string& reason)
{
    Model entry;
    entry["object"] = object;
    entry["reason"] = reason;
    return entry;
}

void VerifySwitch(Model& model, const SwitchDeviceRecord& record, unsigned device)
{
    if (!IsEnabled(record))
        return model["skipped"].push_back(Skipped(SwitchObject(device), DownText(record, device)));
    for (auto& setting : ChipSettings(record, device)) {
        model["checked"] = model["checked"].get<int>() + 1;
        if (setting["record"] != setting["chip"])
            model["differences"].push_back(std::move(setting));
    }
}

Model Verify(Call& call)
{
    RequireSomething();
    Model model;
    model["checked"] = 0;
    model["skipped"] = Model::array();
    model["differences"] = Model::array();
    if (IsInitialised(Family::kSwitch)) {
        const auto region = ReadSwitches();
        for (unsigned device = 0; device < region.NumOfSwitches; ++device)
            VerifySwitch(model, region.device[device], device);
    }
    if (IsInitialised(Family::kPhy)) {
        const unsigned phys = ReadPhys().NumOfPhys;
        for (unsigned device = 0; device < phys; ++device)
            model["skipped"].push_back(
                Skipped(PhyObject(device), "what a PHY was told is not read back"));
    }
    if (!model["differences"].empty())
        call.exitCode = kDifferent;
    else if (model["checked"] == 0 && !model["skipped"].empty())
        call.exitCode = kUnsupported;
    return model;
}

void PrintVerified(const Model& model, std::string& out)
{
    Paragraph(out, {"checked: ", Text(model["checked"])});
    for (const auto& entry : model["skipped"])
        Paragraph(out, {"not checked: ", Text(entry["object"]), ": ", Text(entry["reason"])});
    Model differences;
    differences["differences"] = model["differences"];
    PrintModel(differences, out);
}

constexpr Command kConfigCommands[] = {
    {"config save [FILE]", "--startup", "the stored configuration as TOML",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", nullptr, PrintConfig, Save},
    {"config diff [FILE]", "--startup", "what differs from a file, or from the defaults",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", Diff, PrintModel},
    {"config apply [FILE]", "--startup --dry-run --confirm-within",
     "bring the board to a file, by the differences alone",
     "ORBLINK_GetSwitchDevices ETHPHY_GetPhyData", Apply, PrintApplied},
    {"config pending", "", "the change that is taken back unless it is confirmed", "", ShowPending,
     PrintPending},
    {"config confirm", "", "keep it", "", Confirm, PrintOutcome},
    {"config rollback", "", "take it back now", "", RollBack, PrintOutcome},
    {"config verify", "", "what the records say against what the enabled chips report",
     "ORBLINK_ReadPortReg ORBLINK_SmiRead ORBLINK_GetLEDConfig ORBLINK_GetEeePortState", Verify,
     PrintVerified},
};

}  // namespace

std::span<const Command> ConfigCommands()
{
    return kConfigCommands;
}

}  // namespace ctl
