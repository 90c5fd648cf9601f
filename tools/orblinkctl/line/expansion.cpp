#include "tools/orblinkctl/line/expansion.h"

#include <algorithm>
#include <optional>

#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/line/grammar.h"

namespace ctl {

namespace {

using Words = std::vector<std::string>;

// "0:1-4" and "1-4"; nothing for a word that is no range.
std::optional<Words> PortRange(const std::string& word)
{
    const size_t dash = word.find('-');
    if (dash == std::string::npos)
        return std::nullopt;
    const auto first = ParsePort(word.substr(0, dash));
    const auto last = ParseNumber(word.substr(dash + 1), 0, 7);
    if (!first || !last || *last < first->port)
        return std::nullopt;
    Words ports;
    for (unsigned port = first->port; port <= *last; ++port)
        ports.push_back(PortWord(first->device, port));
    return ports;
}

// Each port of a list once. What is no port stays as it is and is refused later, by its name.
Words PortList(const std::string& word)
{
    Words ports;
    for (size_t start = 0; start <= word.size();) {
        const size_t end = std::min(word.find(',', start), word.size());
        const std::string item = word.substr(start, end - start);
        // A label may have a hyphen.
        const auto range = FindPort(item) ? std::nullopt : PortRange(item);
        for (const auto& port : range.value_or(Words{item}))
            if (std::find(ports.begin(), ports.end(), port) == ports.end())
                ports.push_back(port);
        start = end + 1;
    }
    return ports;
}

Words Setting(const Words& words, size_t at, size_t end)
{
    Words command = {"port", words[1]};
    command.insert(command.end(), words.begin() + static_cast<std::ptrdiff_t>(at),
                   words.begin() + static_cast<std::ptrdiff_t>(end));
    return command;
}

// Cuts the words behind the port into commands of it, the longest ones first; none if it cannot.
std::vector<Words> Cut(const Words& words)
{
    // Where the command ends that begins at a word, with complete ones behind it; 0 for nowhere.
    std::vector<size_t> ends(words.size() + 1, 0);
    ends[words.size()] = words.size();
    for (size_t at = words.size(); at-- > 2;)
        for (size_t end = words.size(); end > at && ends[at] == 0; --end)
            if (ends[end] != 0 && IsCommand(Setting(words, at, end)))
                ends[at] = end;
    std::vector<Words> settings;
    for (size_t at = 2; at < words.size() && ends[at] != 0; at = ends[at])
        settings.push_back(Setting(words, at, ends[at]));
    return settings;
}

std::string AllBehind(const Words& words)
{
    std::string text = words[1];
    for (size_t i = 2; i < words.size(); ++i)
        text += " " + words[i];
    return text;
}

}  // namespace

std::vector<std::vector<std::string>> ExpandWords(const std::vector<std::string>& words)
{
    if (words.size() > 2 && words[0] == "help")
        return {{words[0], AllBehind(words)}};
    if (words.size() < 2 || words[0] != "port")
        return {words};
    const bool isOne = IsCommand(words);
    if (isOne && words[1].find_first_of(",-") == std::string::npos)
        return {words};
    auto settings = isOne ? std::vector<Words>{words} : Cut(words);
    if (settings.empty())
        settings = {words};
    std::vector<Words> all;
    for (const auto& port : PortList(words[1])) {
        for (auto command : settings) {
            command[1] = port;
            all.push_back(std::move(command));
        }
    }
    return all;
}

bool MayGoOn(const std::vector<std::string>& words)
{
    return words.size() > 2 && words[0] == "port" && !Cut(words).empty();
}

}  // namespace ctl
