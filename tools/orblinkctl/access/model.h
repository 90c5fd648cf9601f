// The facts that a command found. Text and machine output are both made from it alone.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "tools/orblinkctl/access/json.h"

namespace ctl {

// Where a model is taken apart or put together, <nlohmann/json.hpp> is included as well.
using Model = nlohmann::ordered_json;

inline constexpr int kSchema = 2;

// What a setter answers: one entry of "changes". Applied is false when the value only went into the
// stored configuration.
Model Change(std::string_view object, std::string_view setting, Model value, bool applied);

// A value that is null where the field says that there is none.
Model Optional(uint32_t value, uint32_t none);

// Speeds are numbers of Mb/s; "auto" and what is no speed are words.
Model SpeedModel(uint32_t code);

std::string Text(const Model& value);
std::string OnOff(const Model& value);
std::string YesNo(const Model& value);

}  // namespace ctl
