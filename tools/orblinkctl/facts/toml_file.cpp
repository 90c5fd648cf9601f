#include "tools/orblinkctl/facts/toml_file.h"

#include <toml++/toml.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "tools/orblinkctl/facts/failure.h"
#include "tools/orblinkctl/facts/json.h"

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

}  // namespace

Model ReadTomlFile(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (file.bad())
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    try {
        return FromNode(toml::parse(text, path));
    } catch (const toml::parse_error& error) {
        const auto& at = error.source().begin;
        throw Failure{kUsage, path + ":" + std::to_string(at.line) + ":" +
                                  std::to_string(at.column) + ": " +
                                  std::string(error.description())};
    }
}

}  // namespace ctl
