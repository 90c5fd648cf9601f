#include "tools/orblinkctl/line/session.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/line/expansion.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/several.h"
#include "tools/orblinkctl/line/vocabulary.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

Settings settings;
CommandLine currentLine;

bool Given(const CommandLine& line, const char* option)
{
    return line.options.find(option) != line.options.end();
}

LogMode LogModeOf(const Settings& wanted)
{
    if (wanted.quiet)
        return LogMode::kSilent;
    if (wanted.verbosity == 0)
        return LogMode::kFailures;
    return wanted.verbosity == 1 ? LogMode::kProgress : LogMode::kTrace;
}

Format FormatOf(const CommandLine& line)
{
    if (Given(line, "--json"))
        return Format::kJson;
    if (!Given(line, "-o"))
        return Format::kText;
    const std::string& word = line.options.at("-o");
    return word == "json" ? Format::kJson : word == "kv" ? Format::kKeyValue : Format::kText;
}

void Adopt(const CommandLine& line)
{
    settings.format = FormatOf(line);
    settings.verbosity = line.verbosity;
    settings.quiet = Given(line, "-q");
    settings.color = Given(line, "--color") ? line.options.at("--color") : "auto";
    settings.wait = Given(line, "--wait") ? std::strtod(line.options.at("--wait").c_str(), nullptr)
                                          : kUsualWait;
    SetBusyWait(settings.wait);
    if (Given(line, "--names"))
        UseNamesFile(line.options.at("--names"));
    TakeLogLines(LogModeOf(settings));
}

bool HasOption(const Call& call, const std::string& name)
{
    const auto own = SplitWords(call.command->options);
    return std::find(own.begin(), own.end(), name) != own.end();
}

// An option belongs to those of the commands that have it, one at least.
void GiveOption(std::vector<Call>& calls, const std::string& name, const std::string& text)
{
    if (OptionNamed(name).global)
        return;
    bool taken = false;
    for (auto& call : calls) {
        if (!HasOption(call, name))
            continue;
        call.values[name] = text;
        taken = true;
    }
    if (!taken)
        throw Failure{kUsage, "option " + name + " does not belong to '" +
                                  std::string(calls.front().command->synopsis) + "'"};
}

ExitCode RunCall(Call& call)
{
    if (call.command->run != nullptr)
        return call.command->run(call);
    const Model model = call.command->query(call);
    WriteOut(Rendered(call, model));
    return call.exitCode;
}

ExitCode RunParsed(const CommandLine& line)
{
    currentLine = line;
    Adopt(line);
    if (Given(line, "--version")) {
        WriteOut(VersionText());
        return kDone;
    }
    if (Given(line, "--help")) {
        WriteOut(HelpText(line.words));
        return kDone;
    }
    std::vector<Call> calls = Resolve(line);
    const ExitCode code = calls.size() == 1 ? RunCall(calls.front()) : RunSeveral(calls);
    DropHeldLogLines();
    return code;
}

// Also of a line that turns out to be none: whoever asked for JSON gets it.
bool HasPair(const std::vector<std::string>& arguments, const char* first, const char* second)
{
    for (size_t i = 1; i < arguments.size(); ++i)
        if (arguments[i - 1] == first && arguments[i] == second)
            return true;
    return false;
}

template <typename Run>
ExitCode Guarded(const std::string& where, Run run)
{
    try {
        return run();
    } catch (const Failure& failure) {
        Complain(failure, where);
        return failure.code;
    } catch (const std::exception& error) {
        Complain({kFailed, error.what()}, where);
        return kFailed;
    }
}

}  // namespace

const Settings& CurrentSettings()
{
    return settings;
}

std::vector<Call> Resolve(const CommandLine& line)
{
    std::vector<Call> calls;
    for (const auto& words : ExpandWords(line.words))
        calls.push_back(MatchWords(words));
    for (const auto& [name, text] : line.options)
        GiveOption(calls, name, text);
    return calls;
}

std::string Rendered(const Call& call, const Model& model)
{
    std::string out;
    if (settings.format == Format::kText) {
        call.command->print(model, out);
        return out;
    }
    Model whole;
    whole["schema"] = kSchema;
    whole.update(model);
    return settings.format == Format::kJson
               ? whole.dump(2, ' ', false, Model::error_handler_t::replace) + "\n"
               : KeyValueLines(whole);
}

void Complain(const Failure& failure, const std::string& where)
{
    const auto lines = HeldLogLines();
    const std::string text = PrintableLines(where + failure.text);
    if (settings.jsonErrors) {
        Model error;
        error["schema"] = kSchema;
        error["error"]["code"] = failure.code;
        error["error"]["text"] = text;
        error["error"]["log"] = lines;
        std::fprintf(stderr, "%s\n", error.dump().c_str());
        return;
    }
    std::fprintf(stderr, "orblinkctl: %s\n", text.c_str());
}

ExitCode RunLine(const std::vector<std::string>& arguments)
{
    settings.jsonErrors = std::any_of(arguments.begin(), arguments.end(),
                                      [](const std::string& argument) {
                                          return argument == "--json-errors" ||
                                                 argument == "--json" || argument == "-ojson";
                                      }) ||
                          HasPair(arguments, "-o", "json");
    return Guarded("", [&] { return RunParsed(ParseCommandLine(arguments)); });
}

ExitCode RunBatchLine(const std::vector<std::string>& arguments, const std::string& where,
                      const CommandLine& batch)
{
    return Guarded(where, [&] {
        CommandLine line = ParseCommandLine(arguments);
        for (const auto& [name, text] : batch.options)
            if (OptionNamed(name).global)
                line.options.emplace(name, text);
        line.verbosity = std::max(line.verbosity, batch.verbosity);
        return RunParsed(line);
    });
}

const CommandLine& CurrentLine()
{
    return currentLine;
}

}  // namespace ctl
