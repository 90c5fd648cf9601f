#include "tools/orblink_web/view/sections.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <utility>

#include "tools/orblink_web/view/html.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/mii_decode.h"

namespace web {

namespace {

constexpr size_t kMostMacRows = 300;

std::string OnOff(const ctl::Model& value)
{
    return value.is_boolean() ? (value.get<bool>() ? "on" : "off") : Shown(value);
}

std::string SpeedText(const ctl::Model& port)
{
    if (At(port, "link") != true)
        return "–";
    return Shown(At(port, "link_speed")) + " " + Shown(At(port, "link_duplex"));
}

// A word beside the colour.
std::string LinkText(const ctl::Model& port)
{
    const ctl::Model& link = At(port, "link");
    if (!At(port, "error").is_null())
        return "<span class=\"mark bad\">error</span>";
    if (!link.is_boolean())
        return "<span class=\"mark off\">unknown</span>";
    return link == true ? "<span class=\"mark good\">up</span>"
                        : "<span class=\"mark off\">down</span>";
}

std::string Number(uint64_t value)
{
    std::string digits = std::to_string(value);
    for (size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, "\u202f");
    return digits;
}

std::string Heading(const std::string& key)
{
    std::string text = key;
    std::replace(text.begin(), text.end(), '_', ' ');
    return Escaped(text);
}

bool Contains(std::string text, std::string_view lowerCase)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text.find(lowerCase) != std::string::npos;
}

bool Matches(const ctl::Model& entry, std::string_view lowerCase)
{
    for (const auto& value : entry)
        if (Contains(Plain(value), lowerCase))
            return true;
    return lowerCase.empty();
}

std::string RegisterTable(const std::string& phy, ctl::Model answer)
{
    HtmlTable table("Registers of PHY " + Escaped(phy), {"Register", "Name", "Value", "Fields"});
    ctl::DecodeRegisters(answer, std::nullopt);
    for (const auto& entry : At(answer, "registers")) {
        const ctl::Model& value = At(entry, "value");
        std::string fields;
        for (const auto& field : At(entry, "bits"))
            fields += std::string("<span class=\"field") + (At(field, "value") == 0 ? "" : " set") +
                      "\">" + Shown(At(field, "name")) + " <b>" + Shown(At(field, "value")) +
                      "</b></span> ";
        table.Row({Shown(At(entry, "register")), Shown(At(entry, "name")),
                   value.is_number_unsigned() ? ctl::Hex(value.get<uint64_t>(), 4) : Shown(value),
                   fields});
    }
    return "<details open><summary>PHY " + Escaped(phy) + "</summary>" + table.Text() +
           "</details>";
}

}  // namespace

std::string PortName(const ctl::Model& port)
{
    const ctl::Model& device = At(port, "switch");
    const ctl::Model& index = At(port, "port");
    if (!device.is_number_unsigned() || !index.is_number_unsigned())
        return "";
    return ctl::PortWord(device.get<unsigned>(), index.get<unsigned>());
}

std::string PortSection(const ctl::Model& board, const Traffic& traffic)
{
    HtmlTable table("Ports", {"Port", "Label", "Link", "Speed", "Receive", "Send", "Enabled",
                              "Role", "VLAN", "Tagging", "EEE", "Mirrored to", "Fault"});
    for (const auto& port : At(board, "ports")) {
        const ctl::Model& rates = traffic.RatesOf(PortName(port));
        table.Row({Escaped(PortName(port)), Shown(At(port, "label")), LinkText(port),
                   SpeedText(port), BitRate(At(rates, "receive_bytes_per_second")),
                   BitRate(At(rates, "transmit_bytes_per_second")), Shown(At(port, "enabled")),
                   Shown(At(port, "role")), Shown(At(port, "vlan")), Shown(At(port, "tagging")),
                   OnOff(At(port, "eee")), Shown(At(port, "mirror_to")),
                   At(port, "error").is_null() ? "" : Shown(At(port, "error"))},
                  At(port, "link") == true ? "up" : "");
    }
    return table.Empty() ? Remark("no ports to show") : table.Text();
}

std::string CounterSection(const ctl::Model& board, const Traffic& traffic)
{
    HtmlTable table("Counters", {"Counter"});
    std::vector<const ctl::Model*> columns;
    std::vector<std::string> names;
    for (const auto& port : At(board, "ports")) {
        const ctl::Model& counters = traffic.CountersOf(PortName(port));
        if (!counters.is_object())
            continue;
        columns.push_back(&counters);
        table.Heading(Escaped(PortName(port)));
        for (const auto& [name, value] : counters.items())
            if (value != 0 && !value.is_null() &&
                std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
    }
    for (const auto& name : names) {
        std::vector<std::string> cells = {Escaped(name)};
        for (const auto* counters : columns) {
            const ctl::Model& value = At(*counters, name.c_str());
            cells.push_back(value.is_number_unsigned() ? Number(value.get<uint64_t>())
                                                       : Shown(value));
        }
        table.Row(cells);
    }
    if (columns.empty())
        return Remark("no port has counters that could be read");
    return table.Empty() ? Remark("every counter is 0") : table.Text();
}

std::string PhySection(const ctl::Model& board, const std::map<std::string, ctl::Model>& counters)
{
    HtmlTable table(
        "PHYs", {"PHY", "Label", "Link", "Speed", "State", "Admin", "HAL", "Counters", "Fault"});
    for (const auto& phy : At(board, "phys")) {
        const auto found = counters.find(Plain(At(phy, "phy")));
        std::string counted;
        if (found != counters.end())
            for (const auto& [name, value] : found->second.items())
                if (!value.is_null())
                    counted += Heading(name) + " <b>" + Shown(value) + "</b> ";
        table.Row(
            {Shown(At(phy, "phy")), Shown(At(phy, "label")), LinkText(phy), SpeedText(phy),
             Shown(At(phy, "state")), OnOff(At(phy, "admin")), Shown(At(At(phy, "board"), "hal")),
             counted.empty() ? "–" : "<span class=\"wrap\">" + counted + "</span>",
             At(phy, "error").is_null() ? "" : Shown(At(phy, "error"))},
            At(phy, "link") == true ? "up" : "");
    }
    return table.Empty() ? Remark("the board has no PHYs of their own") : table.Text();
}

std::string RegisterSection(const std::map<std::string, ctl::Model>& answers)
{
    std::string out;
    for (const auto& [phy, answer] : answers) {
        const ctl::Model& error = At(At(answer, "error"), "text");
        out += error.is_null() ? RegisterTable(phy, answer)
                               : Remark("PHY " + phy + ": " + Plain(error));
    }
    return out.empty() ? Remark("no PHY registers are read") : out;
}

std::string MacSection(const ctl::Model& answer, const std::string& search)
{
    const ctl::Model& error = At(At(answer, "error"), "text");
    if (!error.is_null())
        return Remark(Plain(error));
    std::string wanted = search.substr(0, 64);
    std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    HtmlTable table("MAC addresses", {});
    std::set<std::string> headed;
    size_t found = 0;
    for (const auto& entry : At(answer, "entries")) {
        if (!Matches(entry, wanted))
            continue;
        std::vector<std::string> cells;
        for (const auto& [key, value] : entry.items()) {
            if (found == 0)
                table.Heading(Heading(key));
            cells.push_back(Shown(value));
        }
        if (++found <= kMostMacRows)
            table.Row(cells);
    }
    if (found == 0)
        return Remark(wanted.empty() ? "no address is known" : "no entry has " + search);
    std::string count = std::to_string(found) + (found == 1 ? " entry" : " entries");
    if (found > kMostMacRows)
        count += ", the first " + std::to_string(kMostMacRows) + " are shown: search for fewer";
    return "<p class=\"count\">" + count + "</p>" + table.Text();
}

std::string ChangeSection(const std::deque<Noted>& changes)
{
    if (changes.empty())
        return Remark("nothing has changed since the page's program was started");
    std::string out = "<ol class=\"lines\" reversed>";
    for (const auto& change : changes)
        out += "<li><time>" + Escaped(change.time) + "</time> " + Escaped(change.text) + "</li>";
    return out + "</ol>";
}

std::string LogSection(const std::deque<std::string>& lines)
{
    if (lines.empty())
        return Remark("the library has written nothing yet");
    std::string out = "<ol class=\"lines code\">";
    for (const auto& line : lines)
        out += "<li>" + Escaped(line) + "</li>";
    return out + "</ol>";
}

}  // namespace web
