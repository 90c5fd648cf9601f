#include "tools/orblinkctl/output/model_text.h"

#include <algorithm>
#include <cctype>

#include "tools/orblinkctl/facts/json.h"
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

std::string CellText(const Model& value)
{
    if (value.is_boolean())
        return YesNo(value);
    if (!value.is_array())
        return Text(value);
    std::string list;
    for (const auto& entry : value)
        list += (list.empty() ? "" : " ") + Text(entry);
    return list.empty() ? "-" : list;
}

// Objects of one list need not know the same facts.
std::vector<std::string> KeysOf(const Model& list)
{
    std::vector<std::string> keys;
    for (const auto& entry : list)
        for (const auto& [name, value] : entry.items())
            if (std::find(keys.begin(), keys.end(), name) == keys.end())
                keys.push_back(name);
    return keys;
}

void PrintObjects(const std::string& key, const Model& list, std::string& out)
{
    if (list.empty())
        return Line(out, {"no ", key});
    const std::vector<std::string> keys = KeysOf(list);
    std::vector<std::string> headings;
    for (const auto& name : keys)
        headings.push_back(Heading(name));
    Table table(std::move(headings));
    for (const auto& entry : list) {
        std::vector<std::string> cells;
        for (const auto& name : keys)
            cells.push_back(entry.contains(name) ? CellText(entry[name]) : "-");
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
            Line(out, {key, ": ", CellText(value)});
    }
}

void PrintNothing(const Model&, std::string&) {}

void PrintChanges(const Model& model, std::string& out)
{
    for (const auto& change : model["changes"]) {
        const char* how = change["applied"].get<bool>() ? "" : " (stored for the next bring-up)";
        Line(out, {Text(change["object"]), ": ", Text(change["setting"]), " ",
                   CellText(change["value"]), how});
    }
}

void PrintCounters(const Model& model, std::string& out)
{
    for (const auto& [key, list] : model.items()) {
        for (const auto& object : list) {
            Table table({"COUNTER", "VALUE"});
            for (const auto& [name, value] : object["counters"].items())
                table.Row({name, Text(value)});
            table.Print(out);
        }
    }
}

}  // namespace ctl
