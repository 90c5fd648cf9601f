#include "tools/orblinkctl/access/toml_file.h"

#include <toml++/toml.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "toml/text_check.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"

namespace ctl {

namespace {

Model FromNode(const toml::node& node)
{
    if (const auto* table = node.as_table()) {
        Model model = Model::object();
        for (const auto& [key, value] : *table)
            model[std::string(key.str())] = FromNode(value);
        return model;
    }
    if (const auto* array = node.as_array()) {
        Model model = Model::array();
        for (const auto& value : *array)
            model.push_back(FromNode(value));
        return model;
    }
    if (const auto* text = node.as_string())
        return text->get();
    if (const auto* number = node.as_integer())
        return number->get();
    if (const auto* flag = node.as_boolean())
        return flag->get();
    if (const auto* real = node.as_floating_point())
        return real->get();
    return nullptr;
}

// A device or a pipe may never end.
std::string Contents(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Failure{kUsage, path + ": is no regular file"};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    std::string text(toml_text::kLongestFile + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad())
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    text.resize(static_cast<size_t>(file.gcount()));
    return text;
}

Failure BadText(const std::string& path, uint32_t line, uint32_t column, std::string_view what)
{
    return Failure{kUsage, path + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " +
                               std::string(what)};
}

}  // namespace

Model ReadTomlFile(const std::string& path)
{
    const std::string text = Contents(path);
    if (const auto refused = toml_text::Check(text))
        throw BadText(path, refused->line, refused->column, refused->what);
    try {
        return FromNode(toml::parse(text, path));
    } catch (const toml::parse_error& error) {
        const auto& at = error.source().begin;
        throw BadText(path, at.line, at.column, error.description());
    }
}

}  // namespace ctl
