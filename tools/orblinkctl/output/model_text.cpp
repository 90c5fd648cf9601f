#include "tools/orblinkctl/output/model_text.h"

#include <algorithm>
#include <cctype>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

std::string Heading(const std::string& key)
{
    std::string heading = key;
    for (char& c : heading)
        c = c == '_' ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return heading;
}

bool IsOneOf(const std::string& key, std::initializer_list<const char*> keys)
{
    return std::any_of(keys.begin(), keys.end(), [&](const char* name) { return key == name; });
}

// What can be switched is on or off; other facts hold or do not.
std::string FlagText(const std::string& key, const Model& value)
{
    const bool isSetting =
        IsOneOf(key, {"enabled", "eee", "eee_on_chip", "delay", "dvt", "igmp", "admin",
                      "group_locked", "board", "wanted", "record", "chip"});
    return isSetting ? OnOff(value) : YesNo(value);
}

// Numbers that people know in hexadecimal.
int HexDigits(const std::string& key)
{
    return key == "bridge_tpid" ? 4 : key == "mask" ? 3 : 0;
}

std::string CellText(const std::string& key, const Model& value)
{
    if (value.is_boolean())
        return FlagText(key, value);
    if (value.is_number_unsigned() && HexDigits(key) != 0)
        return Hex(value.get<uint64_t>(), HexDigits(key));
    if (!value.is_array())
        return Text(value);
    std::string list;
    for (const auto& entry : value)
        list += (list.empty() ? "" : " ") + Text(entry);
    return list.empty() ? "-" : list;
}

// A word of bits that "phy N caps" spells out.
bool IsOpaque(const std::string& key, const Model& value)
{
    return key == "capabilities" && (value.is_number() || value.is_null());
}

// Objects of one list need not know the same facts.
std::vector<std::string> KeysOf(const Model& list)
{
    std::vector<std::string> keys;
    for (const auto& entry : list)
        for (const auto& [name, value] : entry.items())
            if (!IsOpaque(name, value) && std::find(keys.begin(), keys.end(), name) == keys.end())
                keys.push_back(name);
    return keys;
}

// As the word of the command line that sets it.
std::string WordOfSetting(const std::string& setting)
{
    if (setting == "mirror_to")
        return "mirror";
    if (setting == "bridge_tpid")
        return "tpid";
    std::string word = setting;
    std::replace(word.begin(), word.end(), '_', '-');
    return word;
}

std::string NothingWord(const std::string& setting)
{
    if (setting == "group")
        return "none";
    if (setting.starts_with("mac-vlan "))
        return "removed";
    return IsOneOf(setting, {"mirror_to", "dvt"}) ? "off" : "-";
}

void PrintObjects(const std::string& key, const Model& list, std::string& out)
{
    if (list.empty())
        return Paragraph(out, {"no ", key});
    const std::vector<std::string> keys = KeysOf(list);
    std::vector<std::string> headings;
    for (const auto& name : keys)
        headings.push_back(Heading(name));
    Table table(std::move(headings));
    for (const auto& entry : list) {
        std::vector<std::string> cells;
        for (const auto& name : keys)
            cells.push_back(entry.contains(name) ? CellText(name, entry[name]) : "-");
        table.Row(std::move(cells));
    }
    table.Print(out);
}

}  // namespace

void PrintModel(const Model& model, std::string& out)
{
    for (const auto& [key, value] : model.items()) {
        if (value.is_array() && (value.empty() || value.front().is_object()))
            PrintObjects(key, value, out);
        else
            Paragraph(out, {key, ": ", CellText(key, value)});
    }
}

void PrintNothing(const Model&, std::string&) {}

void PrintChanges(const Model& model, std::string& out)
{
    for (const auto& change : model["changes"]) {
        const char* how = change["applied"].get<bool>() ? "" : " (stored for the next bring-up)";
        const std::string setting = Text(change["setting"]);
        const Model& value = change["value"];
        Paragraph(out, {Text(change["object"]), ": ", WordOfSetting(setting), " ",
                        value.is_null() ? NothingWord(setting) : CellText(setting, value), how});
    }
}

std::string CounterText(const Model& value)
{
    return value.is_null() ? "unknown" : Text(value);
}

void PrintCounters(const Model& model, std::string& out)
{
    for (const auto& [key, list] : model.items()) {
        for (const auto& object : list) {
            Table table({"COUNTER", "VALUE"});
            for (const auto& [name, value] : object["counters"].items())
                table.Row({name, CounterText(value)});
            table.Print(out);
        }
    }
}

}  // namespace ctl
