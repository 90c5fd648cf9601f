#include "tools/orblinkctl/line/grammar.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>

#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/line/nearest.h"
#include "tools/orblinkctl/line/vocabulary.h"

namespace ctl {

namespace {

bool StandsFor(const SynopsisWord& expected, const std::string& word)
{
    return !expected.literal || expected.name == word;
}

// How many of the typed words the command takes, from the left.
size_t Matching(const std::vector<SynopsisWord>& synopsis, const std::vector<std::string>& words)
{
    size_t count = 0;
    while (count < synopsis.size() && count < words.size() &&
           StandsFor(synopsis[count], words[count]))
        ++count;
    return count;
}

size_t Literals(const std::vector<SynopsisWord>& synopsis)
{
    return static_cast<size_t>(
        std::count_if(synopsis.begin(), synopsis.end(), [](const auto& w) { return w.literal; }));
}

bool Complete(const std::vector<SynopsisWord>& synopsis, size_t count)
{
    return count >= synopsis.size() || synopsis[count].optional;
}

// How well a command takes the words: literal ones count first, then arguments within their range.
std::pair<size_t, size_t> Fit(const std::vector<SynopsisWord>& synopsis,
                              const std::vector<std::string>& words)
{
    size_t accepted = 0;
    for (size_t i = 0; i < words.size(); ++i)
        if (!synopsis[i].literal && Accepts(ArgumentNamed(synopsis[i].name), words[i]))
            ++accepted;
    return {Literals(synopsis), accepted};
}

struct ParsedCommand {
    const Command* command;
    std::vector<SynopsisWord> synopsis;
};

std::vector<ParsedCommand> ParseAll()
{
    std::vector<ParsedCommand> all;
    for (const auto& group : CommandGroups())
        for (const auto& command : group.commands)
            all.push_back({&command, SynopsisWords(command)});
    return all;
}

const std::vector<ParsedCommand>& AllCommands()
{
    static const std::vector<ParsedCommand> all = ParseAll();
    return all;
}

// Those that begin with the first of the words; a batch asks for each of its lines.
const std::vector<const ParsedCommand*>& CommandsThatBegin(const std::vector<std::string>& words)
{
    static const auto byFirstWord = [] {
        std::map<std::string, std::vector<const ParsedCommand*>> found;
        for (const auto& parsed : AllCommands())
            found[parsed.synopsis.empty() ? "" : parsed.synopsis.front().name].push_back(&parsed);
        return found;
    }();
    static const std::vector<const ParsedCommand*> none;
    const auto found = byFirstWord.find(words.empty() ? "" : words.front());
    return found == byFirstWord.end() ? none : found->second;
}

std::string Joined(const std::vector<std::string>& words, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + words[i];
    return text;
}

std::string Listed(const std::vector<std::string>& list)
{
    std::string text;
    for (const auto& entry : list)
        text += (text.empty() ? "" : ", ") + entry;
    return text;
}

// What may follow the first `count` words.
std::vector<std::string> Expected(const std::vector<std::string>& words, size_t count)
{
    std::vector<std::string> expected;
    for (const auto& [command, synopsis] : AllCommands())
        if (Matching(synopsis, words) >= count && synopsis.size() > count)
            AddOnce(expected, synopsis[count].name);
    return expected;
}

[[noreturn]] void NoSuchCommand(const std::vector<std::string>& words)
{
    size_t longest = 0;
    for (const auto& [command, synopsis] : AllCommands())
        longest = std::max(longest, Matching(synopsis, words));
    const std::string after = longest == 0 ? "" : " after '" + Joined(words, longest) + "'";
    const auto expected = Expected(words, longest);
    if (longest == words.size())
        throw Failure{kUsage, "incomplete" + after + ": expected " + Listed(expected)};
    const std::string allowed = expected.empty() ? "nothing" : Listed(expected);
    throw Failure{kUsage, "unexpected '" + words[longest] + "'" + after + ": expected " + allowed +
                              MeantText(words[longest], expected)};
}

// "2", "0:9": an index as it should be, only that no board has such an object.
bool IsIndexOf(const std::string& name, const std::string& word)
{
    if (name != "SWITCH" && name != "PHY" && name != "PORT")
        return false;
    const size_t colon = name == "PORT" ? word.find(':') : std::string::npos;
    return ParseNumber(word.substr(colon == std::string::npos ? 0 : colon + 1)).has_value() &&
           (colon == std::string::npos || ParseNumber(word.substr(0, colon)).has_value());
}

void CheckWord(const std::string& name, const std::string& word)
{
    const Argument& argument = ArgumentNamed(name);
    if (!Accepts(argument, word) && IsIndexOf(name, word))
        throw Failure{kNoSuchObject,
                      "no " + name + " '" + word + "': allowed is " + argument.allowed};
    if (!Accepts(argument, word))
        throw Failure{kUsage, "bad " + name + " '" + word + "': allowed is " + argument.allowed};
}

}  // namespace

std::vector<SynopsisWord> SynopsisWords(const Command& command)
{
    std::vector<SynopsisWord> result;
    for (auto& text : SplitWords(command.synopsis)) {
        const bool optional = text.front() == '[';
        if (optional)
            text = text.substr(1, text.find(']') - 1);
        const bool literal = std::islower(static_cast<unsigned char>(text.front())) != 0;
        result.push_back({std::move(text), literal, optional});
    }
    return result;
}

Call MatchWords(const std::vector<std::string>& words)
{
    const ParsedCommand* best = nullptr;
    for (const auto* parsed : CommandsThatBegin(words)) {
        const auto& synopsis = parsed->synopsis;
        if (Matching(synopsis, words) != words.size() || !Complete(synopsis, words.size()))
            continue;
        if (best == nullptr || Fit(synopsis, words) > Fit(best->synopsis, words))
            best = parsed;
    }
    if (best == nullptr)
        NoSuchCommand(words);
    Call call(*best->command);
    for (size_t i = 0; i < words.size(); ++i) {
        const auto& expected = best->synopsis[i];
        if (expected.literal)
            continue;
        CheckWord(expected.name, words[i]);
        call.values[expected.name] = words[i];
    }
    return call;
}

bool IsCommand(const std::vector<std::string>& words)
{
    const auto& all = CommandsThatBegin(words);
    return std::any_of(all.begin(), all.end(), [&](const ParsedCommand* parsed) {
        return Matching(parsed->synopsis, words) == words.size() &&
               Complete(parsed->synopsis, words.size());
    });
}

std::vector<const Command*> CommandsUnder(const std::vector<std::string>& words)
{
    std::vector<const Command*> found;
    for (const auto& [command, synopsis] : AllCommands())
        if (Matching(synopsis, words) == words.size())
            found.push_back(command);
    return found;
}

}  // namespace ctl
