#include "virtual_board/program/command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "virtual_board/program/attach_command.h"
#include "virtual_board/program/control_command.h"
#include "virtual_board/program/control_words.h"
#include "virtual_board/program/exec_command.h"
#include "virtual_board/program/run_command.h"

namespace vboard {
namespace {

using Action = std::function<int()>;

// One subcommand must be given; any other word is refused by name.
void RequireVerb(CLI::App& app)
{
    app.require_subcommand(0, 1);
    app.allow_extras();
    app.final_callback([&app] {
        std::string verbs;
        for (const CLI::App* verb : app.get_subcommands(nullptr))
            verbs += (verbs.empty() ? "" : ", ") + verb->get_name();
        const bool given = !app.get_subcommands().empty();
        if (given && app.remaining_size() > 0)
            throw CLI::ValidationError("unexpected word '" + app.remaining()[0] + "'");
        if (app.remaining_size() > 0)
            throw CLI::ValidationError("unknown word '" + app.remaining()[0] +
                                       "': expected one of " + verbs);
        if (!given)
            throw CLI::ValidationError("a word is missing: expected one of " + verbs);
    });
}

void AddLowLatency(CLI::App& verb, bool& lowLatency)
{
    verb.add_flag(
        "--low-latency", lowLatency,
        "keep the machine's processors awake while frames pass: quicker round trips, more "
        "power; root only");
}

// A range refuses no "nan", which is neither below nor above anything.
std::string IsFinite(const std::string& word)
{
    return std::isfinite(std::strtod(word.c_str(), nullptr)) ? "" : "'" + word + "' is no number";
}

void AddRun(CLI::App& program, Action& action)
{
    auto options = std::make_shared<RunOptions>();
    auto* verb = program.add_subcommand("run", "run a command against a virtual board");
    verb->add_option("--board", options->boardFile, "the board's TOML file")->required();
    verb->add_option("--time-scale", options->timeScale,
                     "length of every relative sleep in the command: 0.001 = a thousandth")
        ->check(CLI::Range(0.000001, 1000.0) & CLI::Validator(IsFinite, "", ""));
    verb->add_option("--isolation", options->isolation,
                     "what keeps the command apart: namespaces, names of the board's own, or "
                     "nothing: the machine's own names; auto: the first that is to be had")
        ->check(CLI::IsMember({"auto", "namespaces", "names", "machine"}));
    verb->add_option("--socket", options->socketPath, "where the board listens");
    verb->add_option("--ports", options->ports, "tap: the switch ports are TAP interfaces")
        ->check(CLI::IsMember({"tap", "none"}));
    AddLowLatency(*verb, options->lowLatency);
    verb->add_option("command", options->command, "after --: the command and its arguments")
        ->required();
    verb->final_callback([options, &action] { action = [=] { return RunCommand(*options); }; });
}

void AddServe(CLI::App& program, Action& action)
{
    auto options = std::make_shared<ServeOptions>();
    auto* verb = program.add_subcommand("serve", "run a board that programs join with 'attach'");
    verb->add_option("--board", options->boardFile, "the board's TOML file")->required();
    verb->add_option("--time-scale", options->timeScale,
                     "length of every relative sleep on the board: 0.001 = a thousandth")
        ->check(CLI::Range(0.000001, 1000.0) & CLI::Validator(IsFinite, "", ""));
    verb->add_option("--socket", options->socketPath, "where the board listens");
    AddLowLatency(*verb, options->lowLatency);
    verb->final_callback([options, &action] { action = [=] { return ServeCommand(*options); }; });
}

void AddAttach(CLI::App& program, Action& action)
{
    auto options = std::make_shared<AttachOptions>();
    auto* verb = program.add_subcommand("attach", "run a command on a board of 'serve'");
    verb->add_option("--socket", options->socketPath, "the board's socket")->required();
    verb->add_option("command", options->command, "after --: the command and its arguments")
        ->required();
    verb->final_callback([options, &action] { action = [=] { return AttachCommand(*options); }; });
}

void AddExec(CLI::App& program, Action& action)
{
    auto options = std::make_shared<ExecOptions>();
    auto* verb = program.add_subcommand("exec", "run a command on a host behind a switch port");
    verb->add_option("--socket", options->socketPath,
                     "the board's socket; inside 'run' the board that is running");
    verb->add_option("host", options->host, "as 'control hosts' shows it")->required();
    verb->add_option("command", options->command, "after --: the command and its arguments")
        ->required();
    verb->final_callback([options, &action] { action = [=] { return ExecCommand(*options); }; });
}

CLI::Option* AddArgument(CLI::App& verb, const ControlArgument& argument)
{
    const std::string name{argument.name};
    const std::string help{argument.help};
    if (argument.form == ControlArgument::Form::kFlag)
        return verb.add_flag(name, help);
    auto* option = verb.add_option(name, help);
    option->required(argument.required);
    option->check([&argument](const std::string& word) {
        Json command;
        return FillArgument(argument, word, command);
    });
    return option;
}

void AddControlVerb(CLI::App& control, const ControlVerb& row,
                    const std::shared_ptr<ControlOptions>& options, Action& action)
{
    auto* verb = control.add_subcommand(std::string(row.name), std::string(row.help));
    verb->fallthrough();  // --socket and --json may stand behind the verb
    verb->footer([&row] { return HelpBelow(row); });
    std::vector<CLI::Option*> given;
    for (const ControlArgument& argument : row.arguments)
        given.push_back(AddArgument(*verb, argument));
    verb->final_callback([=, &row, &action] {
        options->verb = &row;
        options->command = {{"verb", row.name}};
        for (size_t i = 0; i < given.size(); ++i) {
            const ControlArgument& argument = row.arguments[i];
            if (given[i]->count() > 0)
                FillArgument(argument, given[i]->as<std::string>(), options->command);
            else if (argument.standard)
                options->command[argument.key] = *argument.standard;
        }
        action = [=] { return ControlCommand(*options); };
    });
}

void AddControl(CLI::App& program, Action& action)
{
    auto options = std::make_shared<ControlOptions>();
    auto* control = program.add_subcommand("control", "look at a running board and change it");
    control->add_option("--socket", options->socketPath,
                        "the board's socket; inside 'run' the board that is running");
    control->add_flag("--json", options->json, "print JSON");
    for (const ControlVerb& row : ControlVerbs())
        if (row.listed)
            AddControlVerb(*control, row, options, action);
    RequireVerb(*control);
}

}  // namespace

int RunCommandLine(int argc, char** argv)
{
    constexpr int kUsage = 2;
    CLI::App program{"A board with switches and PHYs that programs run against, and its control."};
    program.name("orblink-vboard");
    Action action;
    AddRun(program, action);
    AddControl(program, action);
    AddServe(program, action);
    AddAttach(program, action);
    AddExec(program, action);
    RequireVerb(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : kUsage;
    }
    return action();
}

}  // namespace vboard
