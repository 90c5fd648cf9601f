#include "tools/orblinkctl/access/model.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"

template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace ctl {

Model Change(std::string_view object, std::string_view setting, Model value, bool applied)
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

Model Optional(uint32_t value, uint32_t none)
{
    return value == none ? Model() : Model(value);
}

Model SpeedModel(uint32_t code)
{
    const std::string word = SpeedWord(code);
    const auto number = ParseNumber(word);
    return number ? Model(*number) : Model(word);
}

std::string Text(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string OnOff(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.get<bool>() ? "on" : "off";
}

std::string YesNo(const Model& value)
{
    if (value.is_null())
        return "-";
    return value.get<bool>() ? "yes" : "no";
}

}  // namespace ctl
