// The configuration of the board: saved, compared, applied, verified.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "tools/orblinkctl/commands/recovery.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/config/config_apply.h"
#include "tools/orblinkctl/config/config_model.h"
#include "tools/orblinkctl/config/guard.h"
#include "tools/orblinkctl/facts/chip_settings.h"
#include "tools/orblinkctl/facts/json.h"
#include "tools/orblinkctl/facts/library.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/terminal.h"
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

// Frees what the caller held when it was killed: without that, no step back would be possible.
void TakeBackForAnybody(const Model& before)
{
    for (const Family family : {Family::kSwitch, Family::kPhy})
        FreeAbandonedLock(family);
    TakeBack(before);
}

std::string AskingText(const Call& call)
{
    return "To keep the changes, press Enter or run 'orblinkctl config confirm' within " +
           call.Word("--confirm-within") + " s.\n";
}

// Until somebody decides: here by a key or a signal, elsewhere by a command, or nobody in time.
GuardOutcome Decision(Guard& guard, double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    const bool live = isatty(STDOUT_FILENO) != 0;
    bool listening = true;
    for (;;) {
        const auto left = std::chrono::duration<double>(end - Clock::now()).count();
        if (live && left > 0)
            WriteOut("\r" + std::to_string(static_cast<int>(std::ceil(left))) + " s left \r");
        pollfd sources[] = {{guard.Channel(), POLLIN, 0},
                            {listening ? STDIN_FILENO : -1, POLLIN, 0}};
        const int ready = poll(sources, 2, live ? 1000 : -1);
        if (EndRequested())
            return guard.TakeBack();
        if (ready > 0 && sources[0].revents != 0)
            return guard.Wait();
        if (ready <= 0 || sources[1].revents == 0)
            continue;
        char key = 0;
        if (read(STDIN_FILENO, &key, 1) == 1)
            return guard.Keep();
        listening = false;
    }
}

void RunGuarded(Guard& guard, const std::vector<ConfigStep>& steps)
{
    try {
        RunSteps(steps);
    } catch (Failure& failure) {
        const GuardOutcome outcome = guard.TakeBack();
        failure.text += outcome.failure.empty()
                            ? "; the changes were taken back"
                            : "; the changes could not be taken back: " + outcome.failure;
        throw;
    }
}

bool KeptInTime(const Call& call, const Model& before, const Model& differences,
                const std::vector<ConfigStep>& steps)
{
    PendingChange change;
    change.file = std::filesystem::absolute(*FileOf(call)).string();
    change.seconds = std::strtod(call.Word("--confirm-within").c_str(), nullptr);
    change.differences = differences;
    const CaughtEndSignals signals;
    Guard guard(change, [&] { TakeBackForAnybody(before); });
    if (CurrentSettings().format == Format::kText) {
        Model shown;
        shown["differences"] = differences;
        std::string text;
        PrintModel(shown, text);
        WriteOut(text);
    }
    RunGuarded(guard, steps);
    guard.StartCountdown();
    if (CurrentSettings().format == Format::kText)
        WriteOut(AskingText(call));
    const GuardOutcome outcome = Decision(guard, change.seconds);
    if (!outcome.failure.empty())
        throw Failure{kFailed, "the changes could not be taken back: " + outcome.failure};
    return outcome.kept;
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
    if (!KeptInTime(call, before, DifferenceModel(differences), steps)) {
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
        return Line(out, {"no change waits for its confirmation"});
    if (pending["seconds_left"].is_null())
        Line(out, {Text(pending["file"]), " is being applied"});
    else
        Line(out, {Text(pending["file"]), " is taken back in ", Text(pending["seconds_left"]),
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
    Line(out, {"the changes were ", model["kept"].get<bool>() ? "kept" : "taken back"});
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
    Line(out, {"checked: ", Text(model["checked"])});
    for (const auto& entry : model["skipped"])
        Line(out, {"not checked: ", Text(entry["object"]), ": ", Text(entry["reason"])});
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
