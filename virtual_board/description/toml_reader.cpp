#include "virtual_board/description/toml_reader.h"

#include <algorithm>

namespace vboard {
namespace {

std::string Range(uint32_t min, uint32_t max)
{
    return "an integer from " + std::to_string(min) + " to " + std::to_string(max);
}

bool InRange(const toml::node& node, uint32_t min, uint32_t max)
{
    const auto* number = node.as_integer();
    return number != nullptr && number->get() >= static_cast<int64_t>(min) &&
           number->get() <= static_cast<int64_t>(max);
}

uint32_t AsNumber(const toml::node& node)
{
    return static_cast<uint32_t>(node.as_integer()->get());
}

std::string Listed(std::span<const std::string_view> words)
{
    std::string list;
    for (std::string_view word : words)
        list.append(list.empty() ? "\"" : ", \"").append(word).append("\"");
    return list;
}

}  // namespace

void Problems::Add(const toml::source_region& where, const std::string& what)
{
    all_.push_back({where.begin, what});
}

std::vector<std::string> Problems::InFileOrder() const
{
    std::vector<Problem> sorted = all_;
    std::ranges::stable_sort(sorted, std::less<>{}, &Problem::where);
    std::vector<std::string> lines;
    for (const auto& [where, what] : sorted)
        lines.push_back(path_ + ":" + std::to_string(where.line) + ":" +
                        std::to_string(where.column) + ": " + what);
    return lines;
}

const toml::node* TomlReader::Get(std::string_view key)
{
    asked_.emplace(key);
    return table_.get(key);
}

void TomlReader::Complain(std::string_view key, const std::string& what)
{
    const toml::node* node = table_.get(key);
    const toml::node& at = node != nullptr ? *node : table_;
    problems_.Add(at.source(), std::string(key) + ": " + what);
}

void TomlReader::Require(std::string_view key)
{
    if (Get(key) == nullptr)
        problems_.Add(table_.source(), "key '" + std::string(key) + "' is missing here");
}

void TomlReader::CheckUnknown()
{
    std::string known;
    for (const std::string& key : asked_)
        known.append(known.empty() ? "" : ", ").append(key);
    for (const auto& [key, node] : table_)
        if (!asked_.contains(key.str()))
            problems_.Add(key.source(),
                          "unknown key '" + std::string(key.str()) + "': expected one of " + known);
}

std::optional<bool> TomlReader::Bool(std::string_view key)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return std::nullopt;
    if (!node->is_boolean()) {
        Complain(key, "expected true or false");
        return std::nullopt;
    }
    return node->as_boolean()->get();
}

std::optional<uint32_t> TomlReader::Number(std::string_view key, uint32_t max, uint32_t min)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return std::nullopt;
    if (!InRange(*node, min, max)) {
        Complain(key, "expected " + Range(min, max));
        return std::nullopt;
    }
    return AsNumber(*node);
}

std::optional<uint32_t> TomlReader::NumberOrNone(std::string_view key, uint32_t max,
                                                 uint32_t noneValue)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return std::nullopt;
    if (node->is_string() && node->as_string()->get() == "none")
        return noneValue;
    if (!InRange(*node, 0, max)) {
        Complain(key, "expected " + Range(0, max) + " or \"none\"");
        return std::nullopt;
    }
    return AsNumber(*node);
}

std::optional<std::string> TomlReader::Text(std::string_view key, size_t minLength,
                                            size_t maxLength)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return std::nullopt;
    const auto* text = node->as_string();
    if (text == nullptr || text->get().size() < minLength || text->get().size() > maxLength) {
        Complain(key, "expected a string of " + std::to_string(minLength) + " to " +
                          std::to_string(maxLength) + " characters");
        return std::nullopt;
    }
    return text->get();
}

std::optional<uint32_t> TomlReader::Word(std::string_view key,
                                         std::span<const std::string_view> words)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return std::nullopt;
    for (uint32_t index = 0; index < words.size(); ++index)
        if (node->is_string() && node->as_string()->get() == words[index])
            return index;
    Complain(key, "expected one of " + Listed(words));
    return std::nullopt;
}

bool TomlReader::Texts(std::string_view key, std::string_view expected, const TakeText& take)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return false;
    if (!node->is_array()) {
        Complain(key, "expected an array: " + std::string(expected));
        return false;
    }
    for (const toml::node& element : *node->as_array()) {
        const auto* text = element.as_string();
        if (text == nullptr || !take(text->get()))
            problems_.Add(element.source(),
                          std::string(key) + ": expected " + std::string(expected));
    }
    return true;
}

std::vector<uint32_t> TomlReader::Numbers(std::string_view key, uint32_t max)
{
    std::vector<uint32_t> numbers;
    const toml::node* node = Get(key);
    if (node == nullptr)
        return numbers;
    if (!node->is_array()) {
        Complain(key, "expected an array, each " + Range(0, max));
        return numbers;
    }
    for (const toml::node& element : *node->as_array()) {
        if (InRange(element, 0, max))
            numbers.push_back(AsNumber(element));
        else
            problems_.Add(element.source(), std::string(key) + ": expected " + Range(0, max));
    }
    return numbers;
}

void TomlReader::Table(std::string_view key, const TakeTable& take)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return;
    if (!node->is_table()) {
        Complain(key, "expected a table");
        return;
    }
    TomlReader reader{*node->as_table(), problems_};
    take(reader);
}

void TomlReader::Tables(std::string_view key, size_t max, const TakeTable& take)
{
    const toml::node* node = Get(key);
    if (node == nullptr)
        return;
    if (!node->is_array_of_tables()) {
        Complain(key, "expected tables, each written [[" + std::string(key) + "]]");
        return;
    }
    size_t count = 0;
    for (const toml::node& element : *node->as_array()) {
        if (++count > max)
            problems_.Add(element.source(), "[[" + std::string(key) + "]]: expected at most " +
                                                std::to_string(max) + " of these");
        TomlReader reader{*element.as_table(), problems_};
        take(reader);
    }
}

}  // namespace vboard
