// The facts that a command found. Text and machine output are both made from it alone.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace ctl {

using Model = nlohmann::ordered_json;

inline constexpr int kSchema = 1;

// What a setter answers: one entry of "changes". Applied is false when the value only went into the
// stored configuration.
inline Model Change(std::string_view object, std::string_view setting, Model value, bool applied)
{
    Model change;
    change["object"] = object;
    change["setting"] = setting;
    change["value"] = std::move(value);
    change["applied"] = applied;
    Model model;
    model["changes"] = Model::array({change});
    return model;
}

inline std::string Text(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.is_string() ? value.get<std::string>() : value.dump();
}

inline std::string OnOff(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.get<bool>() ? "on" : "off";
}

inline std::string YesNo(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.get<bool>() ? "yes" : "no";
}

}  // namespace ctl
