#include "tools/orblinkctl/line/help.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/line/command.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/vocabulary.h"
#include "tools/orblinkctl/output/columns.h"

namespace ctl {

namespace {

constexpr char kUsageLine[] = "Usage: orblinkctl [OPTION]... [COMMAND [WORD]...]\n";

std::string Padded(std::string_view text, size_t width)
{
    std::string cell(text);
    if (cell.size() < width)
        cell.append(width - cell.size(), ' ');
    return cell;
}

std::string OptionHead(const OptionDefinition& option)
{
    std::string head = option.name;
    if (*option.argument != '\0')
        head += std::string(" ") + option.argument;
    return head;
}

void AddOption(std::string& out, const OptionDefinition& option)
{
    out += "  " + Padded(OptionHead(option), 26) + "  " + option.help + "\n";
    if (*option.argument != '\0')
        out += "  " + std::string(26, ' ') + "  " + option.argument + ": " +
               ArgumentNamed(option.argument).allowed + "\n";
}

void AddGlobalOptions(std::string& out)
{
    out += "\nOptions of every command:\n";
    for (const auto& option : Options())
        if (option.global)
            AddOption(out, option);
}

std::string OverviewHelp()
{
    std::string out = kUsageLine;
    out +=
        "Controls the external Ethernet switches and PHYs of the board.\n"
        "Without a command: an overview of the board.\n";
    for (const auto& group : CommandGroups()) {
        out += std::string("\n") + group.title + ":\n";
        for (const auto& command : group.commands)
            if (*command.synopsis != '\0')
                out += "  " + Padded(command.synopsis, 42) + "  " + command.summary + "\n";
    }
    AddGlobalOptions(out);
    out +=
        "\nExit codes: 0 done, 1 the library or the board failed, 2 usage, 3 no such object,\n"
        "4 not or already initialised, 5 not supported or not possible now,\n"
        "6 permission, 7 busy, 8 the shared state is damaged, 9 differences.\n";
    return out;
}

void AddCommand(std::string& out, const Command& command)
{
    out += std::string("orblinkctl ") + command.synopsis + "\n    " + command.summary + "\n";
    for (const auto& word : SynopsisWords(command))
        if (!word.literal)
            out += "    " + Padded(word.name, 24) + "  " + ArgumentNamed(word.name).allowed + "\n";
    for (const auto& name : SplitWords(command.options))
        out += "    " + Padded(OptionHead(OptionNamed(name)), 24) + "  " + OptionNamed(name).help +
               "\n";
}

bool TakesAll(const Command& command, const std::vector<std::string>& words)
{
    const auto synopsis = SynopsisWords(command);
    for (size_t i = 0; i < words.size(); ++i)
        if (!synopsis[i].literal && words[i] != synopsis[i].name &&
            !Accepts(ArgumentNamed(synopsis[i].name), words[i]))
            return false;
    return true;
}

// More commands than that are listed by theme, one on each line.
constexpr size_t kMostInFull = 8;

// Whether all the words stand in it in this order; arguments and options by their names.
bool Mentions(const Command& command, const std::vector<std::string>& words)
{
    const auto synopsis = SynopsisWords(command);
    const auto options = SplitWords(command.options);
    auto from = synopsis.begin();
    for (const auto& word : words) {
        if (std::find(options.begin(), options.end(), word) != options.end())
            continue;
        from = std::find_if(from, synopsis.end(),
                            [&](const SynopsisWord& own) { return own.name == word; });
        if (from == synopsis.end())
            return false;
        ++from;
    }
    return true;
}

// The commands that begin with the words, or else those that mention them.
std::vector<const Command*> CommandsNamed(const std::vector<std::string>& words)
{
    auto found = CommandsUnder(words);
    // An argument takes any word: what it does not take is not meant.
    std::erase_if(found, [&](const Command* command) { return !TakesAll(*command, words); });
    if (!found.empty())
        return found;
    for (const auto* command : CommandsUnder({}))
        if (Mentions(*command, words))
            found.push_back(command);
    return found;
}

void AddGroups(std::string& out, const std::vector<const Command*>& commands)
{
    for (const auto& group : CommandGroups()) {
        std::string lines;
        for (const auto& command : group.commands)
            if (std::find(commands.begin(), commands.end(), &command) != commands.end())
                lines += "  " + Padded(command.synopsis, 34) + "  " + command.summary + "\n";
        if (!lines.empty())
            out += std::string(out.empty() ? "" : "\n") + group.title + ":\n" + lines;
    }
}

// A line that is too wide goes on below its explanation, or begins that on a line of its own.
std::string Fitted(const std::string& line, size_t columns)
{
    constexpr size_t kNarrowest = 24;
    if (ColumnsOf(line) <= columns)
        return line;
    const size_t start = line.find_first_not_of(' ');
    const size_t gap = line.rfind("  ");
    if (gap == std::string::npos || gap < start)
        return Wrapped(columns < start + kNarrowest ? "      " + line.substr(start) : line,
                       columns);
    const std::string explanation = line.substr(gap + 2);
    const std::string head = line.substr(0, line.find_last_not_of(' ', gap) + 1);
    if (columns < gap + 2 + kNarrowest)
        return Wrapped(head, columns) + "\n" + Wrapped("      " + explanation, columns);
    std::string out = line.substr(0, gap + 2);
    for (const char c : Wrapped(explanation, columns - gap - 2)) {
        out += c;
        if (c == '\n')
            out.append(gap + 2, ' ');
    }
    return out;
}

std::string ForTheScreen(const std::string& text)
{
    const size_t columns = ScreenColumns();
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        out += Fitted(text.substr(at, end - at), columns) + "\n";
        at = end + 1;
    }
    return out;
}

}  // namespace

std::string VersionText()
{
    return "orblinkctl " ORBLINKCTL_VERSION "\n";
}

std::string HelpText(const std::vector<std::string>& words)
{
    if (words.empty())
        return ForTheScreen(OverviewHelp());
    const auto commands = CommandsNamed(words);
    if (commands.empty())
        MatchWords(words);
    std::string out;
    if (commands.size() > kMostInFull) {
        AddGroups(out, commands);
        return ForTheScreen(out + "\nMore of one of them: orblinkctl help " + words.front() +
                            " WORD...\n");
    }
    for (const auto* command : commands)
        AddCommand(out, *command);
    AddGlobalOptions(out);
    return ForTheScreen(out);
}

Model CommandModel(const std::vector<std::string>& words)
{
    Model model;
    model["commands"] = Model::array();
    for (const auto* command : CommandsNamed(words)) {
        Model entry;
        entry["synopsis"] = command->synopsis;
        entry["options"] = SplitWords(command->options);
        entry["summary"] = command->summary;
        entry["operations"] = SplitWords(command->operations);
        model["commands"].push_back(std::move(entry));
    }
    return model;
}

}  // namespace ctl
