// Reading a configuration file: every key and every value is checked before the board is touched.

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/toml_file.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/config/config_model.h"
#include "tools/orblinkctl/line/vocabulary.h"

namespace ctl {

namespace {

struct Setting {
    const char* key;
    // What the value must be: "bool", or an argument of the command line.
    const char* kind;
};

constexpr Setting kSwitchSettings[] = {
    {"mtu", "BYTES"},        {"led", "LED-MODE"},     {"aging", "STEP"}, {"service", "STATUS"},
    {"bridge_mode", "bool"}, {"bridge_tpid", "TPID"}, {"igmp", "bool"},
};
constexpr Setting kPortSettings[] = {
    {"enabled", "bool"}, {"eee", "bool"},          {"mirror_to", "DESTINATION"},
    {"speed", "SPEED"},  {"duplex", "DUPLEX"},     {"delay", "bool"},
    {"vlan", "VID"},     {"pcp", "PCP"},           {"tagging", "TAGGING"},
    {"group", "GROUP"},  {"group_locked", "bool"},
};
constexpr Setting kMacVlanSettings[] = {{"mask", "MASK"}, {"vlan", "VID"}};
constexpr Setting kPhySettings[] = {{"admin", "bool"}};

class Checker {
public:
    explicit Checker(const std::string& path) : path_(path) {}

    void File(const Model& file) const
    {
        for (const auto& [key, value] : file.items()) {
            if (key == "schema")
                Require(value == kConfigSchema, key, "1");
            else if (key == "switch")
                Each(value, key, "SWITCH", &Checker::Switch);
            else if (key == "phy")
                Each(value, key, "PHY", &Checker::Phy);
            else
                Refuse(key, "schema, switch or phy");
        }
    }

private:
    using Check = void (Checker::*)(const Model&, const std::string&) const;

    [[noreturn]] void Refuse(const std::string& key, const std::string& allowed) const
    {
        throw Failure{kUsage, path_ + ": bad " + key + ": allowed is " + allowed};
    }

    void Require(bool good, const std::string& key, const std::string& allowed) const
    {
        if (!good)
            Refuse(key, allowed);
    }

    void Each(const Model& table, const std::string& name, const char* index, Check check) const
    {
        Require(table.is_object(), name, "a table");
        for (const auto& [key, value] : table.items()) {
            const std::string here = name + "." + key;
            Require(ParseNumber(key, 0, name == "phy" || name == "switch" ? 1 : 7).has_value(),
                    here, ArgumentNamed(index).allowed);
            Require(value.is_object(), here, "a table");
            (this->*check)(value, here);
        }
    }

    void Switch(const Model& table, const std::string& name) const
    {
        for (const auto& [key, value] : table.items()) {
            if (key == "port")
                Each(value, name + ".port", "PORT", &Checker::Port);
            else if (key == "mac_vlan")
                MacVlans(value, name + ".mac_vlan");
            else
                One(kSwitchSettings, key, value, name);
        }
        Require(!table.contains("bridge_tpid") || table.value("bridge_mode", false),
                name + ".bridge_tpid", "none without bridge_mode = true");
    }

    void Port(const Model& table, const std::string& name) const
    {
        for (const auto& [key, value] : table.items())
            One(kPortSettings, key, value, name);
    }

    void Phy(const Model& table, const std::string& name) const
    {
        for (const auto& [key, value] : table.items())
            One(kPhySettings, key, value, name);
    }

    void MacVlans(const Model& table, const std::string& name) const
    {
        Require(table.is_object(), name, "a table");
        for (const auto& [key, value] : table.items()) {
            const auto words = SplitWords(key);
            const std::string here = name + ".\"" + key + "\"";
            Require(words.size() == 2 && ParseNumber(words[0], 1, 7) && ParseMac(words[1]), here,
                    "\"PORT MAC\" with port 1 to 7");
            Require(value.is_object() && value.contains("mask") && value.contains("vlan"), here,
                    "a table with mask and vlan");
            for (const auto& [field, number] : value.items())
                One(kMacVlanSettings, field, number, here);
        }
    }

    template <size_t N>
    void One(const Setting (&settings)[N], const std::string& key, const Model& value,
             const std::string& name) const
    {
        std::string known;
        for (const auto& setting : settings) {
            if (key == setting.key)
                return Value(setting, value, name + "." + key);
            known += (known.empty() ? "" : ", ") + std::string(setting.key);
        }
        Refuse(name + "." + key, known);
    }

    void Value(const Setting& setting, const Model& value, const std::string& name) const
    {
        if (std::string_view(setting.kind) == "bool")
            return Require(value.is_boolean(), name, "true or false");
        const Argument& argument = ArgumentNamed(setting.kind);
        const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        // A number in quotes is a mistake, but for speeds, which older files have so.
        const bool typeFits = value.is_number_integer() ||
                              (value.is_string() &&
                               (!ParseNumber(text) || std::string_view(setting.kind) == "SPEED"));
        Require(typeFits && Accepts(argument, text), name, argument.allowed);
    }

    const std::string& path_;
};

}  // namespace

Model ReadConfig(const std::string& path)
{
    Model file = ReadTomlFile(path);
    Checker(path).File(file);
    file.erase("schema");
    return file;
}

}  // namespace ctl
