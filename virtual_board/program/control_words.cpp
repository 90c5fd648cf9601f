#include "virtual_board/program/control_words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "virtual_board/description/fault_kinds.h"

namespace vboard {
namespace {

constexpr size_t kFaultColumn = 36;
constexpr double kLargestScaled = 1e6;

struct Unit {
    std::string_view name;
    double size;
};

constexpr unsigned kLastRegister = 31;

using Form = ControlArgument::Form;

std::string Words(const ControlArgument& argument)
{
    std::string list;
    for (const auto& word : argument.words)
        list.append(list.empty() ? "" : ", ").append(word.text);
    return list;
}

// Decimal, or hexadecimal with 0x.
std::optional<uint64_t> ParseNumber(std::string_view text)
{
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    uint64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
    return error == std::errc{} && rest == end ? std::optional{value} : std::nullopt;
}

std::string Expected(const std::string& word, const std::string& what)
{
    return "'" + word + "' " + what;
}

std::string FillWord(const ControlArgument& argument, const std::string& word, Json& command)
{
    if (std::ranges::find(argument.words, word, &ControlArgument::Word::text) ==
        argument.words.end())
        return Expected(word, "is not one of " + Words(argument));
    command[argument.key] = word;
    return {};
}

std::string FillNumber(const ControlArgument& argument, const std::string& word, Json& command)
{
    const auto named = std::ranges::find(argument.words, word, &ControlArgument::Word::text);
    if (named != argument.words.end()) {
        command[argument.key] = named->number;
        return {};
    }
    const auto number = ParseNumber(word);
    if (number && *number >= argument.min && *number <= argument.max) {
        command[argument.key] = *number;
        return {};
    }
    std::string what = Words(argument);
    if (argument.min <= argument.max)
        what += (what.empty() ? "" : " or ") + std::string("a number from ") +
                std::to_string(argument.min) + " to " + std::to_string(argument.max);
    return Expected(word, "is not " + what);
}

// A PHY has port 0 only and needs none.
std::string FillPort(const std::string& word, Json& command)
{
    const size_t colon = word.find(':');
    const std::string name = word.substr(0, colon);
    std::string port = colon == std::string::npos ? "" : word.substr(colon + 1);
    if (colon == std::string::npos && name.starts_with("phy"))
        port = "0";
    if (port.empty() || port.size() > 2 || port.find_first_not_of("0123456789") != port.npos)
        return Expected(word, "names no port: expected for example sw0:2 or phy0");
    command["device"] = name;
    command["port"] = std::stoul(port);
    return {};
}

std::string FillRegisters(const std::string& word, Json& command)
{
    const size_t dash = word.find('-');
    const auto first = ParseNumber(std::string_view{word}.substr(0, dash));
    const auto last =
        dash == std::string::npos ? first : ParseNumber(std::string_view{word}.substr(dash + 1));
    if (!first || !last || *first > kLastRegister || *last > kLastRegister)
        return Expected(word, "is no register: expected 0 to 31 or a range 0x0-0x1f");
    command["first"] = *first;
    command["last"] = *last;
    return {};
}

// A number with decimals and one of the units; in units of the smallest.
std::optional<int64_t> ParseScaled(const std::string& word, std::span<const Unit> units)
{
    double value = 0;
    const char* end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, value);
    const auto unit = std::ranges::find(units, std::string_view(rest, end), &Unit::name);
    if (error != std::errc{} || unit == units.end() || !(value >= 0 && value <= kLargestScaled))
        return std::nullopt;
    return std::llround(value * unit->size);
}

std::string FillChance(const ControlArgument& argument, const std::string& word, Json& command)
{
    constexpr Unit kUnits[] = {{"%", 1e4}};
    const auto parts = ParseScaled(word, kUnits);
    if (!parts || *parts > WireFaults::kAll)
        return Expected(word, "is no part: expected 0% to 100%");
    command[argument.key] = *parts;
    return {};
}

std::string FillTime(const ControlArgument& argument, const std::string& word, Json& command)
{
    constexpr Unit kUnits[] = {{"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
    const auto time = ParseScaled(word, kUnits);
    if (!time)
        return Expected(word, "is no time: expected a number and ns, us, ms or s");
    command[argument.key] = *time;
    return {};
}

std::string FillFrame(const ControlArgument& argument, const std::string& word, Json& command)
{
    constexpr size_t kShortest = 14;
    std::string digits = word;
    std::erase(digits, ':');
    std::vector<uint8_t> octets;
    for (size_t at = 0; at + 2 <= digits.size(); at += 2) {
        uint8_t octet = 0;
        const char* end = digits.data() + at + 2;
        if (std::from_chars(digits.data() + at, end, octet, 16).ptr == end)
            octets.push_back(octet);
    }
    if (digits.size() != 2 * octets.size() || octets.size() < kShortest)
        return Expected(word, "is no frame: expected at least 14 octets in hexadecimal");
    command[argument.key] = octets;
    return {};
}

std::string FaultHelp()
{
    std::string help = "The faults, their value [default] and what they do:\n";
    for (const FaultKind& kind : FaultKinds()) {
        std::string name = std::string(kind.name) + " " + std::string(kind.valueName);
        if (kind.valueName == "ERRNO")
            name += " [" + ErrnoName(static_cast<int>(kind.defaultValue)) + "]";
        else if (!kind.valueName.empty())
            name += " [" + std::to_string(kind.defaultValue) + "]";
        name.resize(std::max<size_t>(name.size(), kFaultColumn), ' ');
        help += "  " + name + " " + std::string(kind.help) + "\n";
    }
    return help + "  clear: take all faults away\n";
}

}  // namespace

std::string FillArgument(const ControlArgument& argument, const std::string& word, Json& command)
{
    switch (argument.form) {
        case Form::kWord:
            return FillWord(argument, word, command);
        case Form::kNumber:
            return FillNumber(argument, word, command);
        case Form::kPort:
            return FillPort(word, command);
        case Form::kRegisters:
            return FillRegisters(word, command);
        case Form::kChance:
            return FillChance(argument, word, command);
        case Form::kTime:
            return FillTime(argument, word, command);
        case Form::kFrame:
            return FillFrame(argument, word, command);
        case Form::kFlag:
            command[argument.key] = true;
            return {};
        case Form::kText:
        case Form::kFile:
        case Form::kDevice:
            command[argument.key] = word;
            return {};
    }
    return {};
}

std::string HelpBelow(const ControlVerb& verb)
{
    return verb.faults ? FaultHelp() : "";
}

}  // namespace vboard
