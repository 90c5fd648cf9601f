// Reading of one TOML table with every complaint noted at its place in the file.
#pragma once

#define TOML_HEADER_ONLY 1
#include <toml++/toml.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vboard {

class Problems {
public:
    explicit Problems(std::string_view file) : path_{file} {}

    void Add(const toml::source_region& where, const std::string& what);
    std::vector<std::string> InFileOrder() const;

private:
    struct Problem {
        toml::source_position where;
        std::string what;
    };
    std::string path_;
    std::vector<Problem> all_;
};

// The keys of one table. Each getter names what it expects in the complaint and returns nullopt
// when the key is missing or wrong; a key that no getter asked for is unknown.
class TomlReader {
public:
    TomlReader(const toml::table& read, Problems& noted) : table_{read}, problems_{noted} {}
    TomlReader(const TomlReader&) = delete;
    TomlReader& operator=(const TomlReader&) = delete;
    ~TomlReader() { CheckUnknown(); }

    void Require(std::string_view key);
    bool Has(std::string_view key) const { return table_.contains(key); }

    std::optional<bool> Bool(std::string_view key);
    std::optional<uint32_t> Number(std::string_view key, uint32_t max, uint32_t min = 0);
    // Or the word "none", which is given back as noneValue.
    std::optional<uint32_t> NumberOrNone(std::string_view key, uint32_t max, uint32_t noneValue);
    std::optional<std::string> Text(std::string_view key, size_t minLength, size_t maxLength);
    // One of the words; its index.
    std::optional<uint32_t> Word(std::string_view key, std::span<const std::string_view> words);

    // Every string of an array: take says whether it liked it, else `expected` is the complaint.
    using TakeText = std::function<bool(const std::string&)>;
    // False when the key is missing or no array.
    bool Texts(std::string_view key, std::string_view expected, const TakeText& take);
    // Every number of an array, each at most max.
    std::vector<uint32_t> Numbers(std::string_view key, uint32_t max);

    using TakeTable = std::function<void(TomlReader&)>;
    void Table(std::string_view key, const TakeTable& take);
    // [[key]], at most max of them.
    void Tables(std::string_view key, size_t max, const TakeTable& take);

    // A complaint at a key (or at the table when it lacks the key).
    void Complain(std::string_view key, const std::string& what);

private:
    const toml::node* Get(std::string_view key);
    void CheckUnknown();

    const toml::table& table_;
    Problems& problems_;
    std::set<std::string, std::less<>> asked_;
};

}  // namespace vboard
