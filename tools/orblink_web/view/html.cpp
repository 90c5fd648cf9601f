#include "tools/orblink_web/view/html.h"

#include <array>
#include <cstdio>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/text_safety.h"

namespace web {

std::string Escaped(std::string_view text)
{
    std::string out;
    for (const char c : ctl::PrintableLines(text)) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (c == '\'')
            out += "&#39;";
        else
            out += c;
    }
    return out;
}

const ctl::Model& At(const ctl::Model& object, const char* key)
{
    static const ctl::Model nothing;
    return object.is_object() && object.contains(key) ? object[key] : nothing;
}

std::string Plain(const ctl::Model& value)
{
    if (value.is_null())
        return "";
    if (value.is_array()) {
        std::string list;
        for (const auto& entry : value)
            list += (list.empty() ? "" : ", ") + Plain(entry);
        return list;
    }
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    return value.is_string() ? value.get<std::string>()
                             : value.dump(-1, ' ', false, ctl::Model::error_handler_t::replace);
}

std::string Shown(const ctl::Model& value)
{
    const std::string text = Plain(value);
    return text.empty() ? "–" : Escaped(text);
}

HtmlTable::HtmlTable(std::string_view caption, std::initializer_list<std::string> headings)
    : caption_(caption)
{
    for (const auto& heading : headings)
        Heading(heading);
}

void HtmlTable::Row(const std::vector<std::string>& cells, std::string_view style)
{
    rows_ += style.empty() ? "<tr>" : "<tr class=\"" + std::string(style) + "\">";
    bool first = true;
    for (const auto& cell : cells) {
        rows_ += first ? "<th scope=\"row\">" + cell + "</th>" : "<td>" + cell + "</td>";
        first = false;
    }
    rows_ += "</tr>";
}

std::string HtmlTable::Text() const
{
    return "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"" + caption_ +
           "\"><table><caption>" + caption_ + "</caption><thead><tr>" + headings_ +
           "</tr></thead><tbody>" + rows_ + "</tbody></table></div>";
}

std::string Remark(std::string_view text)
{
    return "<p class=\"remark\">" + Escaped(text) + "</p>";
}

std::string BitRate(const ctl::Model& octetsPerSecond)
{
    static constexpr std::array kUnits = {"b/s", "kb/s", "Mb/s", "Gb/s"};
    if (!octetsPerSecond.is_number())
        return "–";
    double rate = octetsPerSecond.get<double>() * 8;
    size_t unit = 0;
    while (rate >= 1000 && unit + 1 < kUnits.size()) {
        rate /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 || rate >= 100 ? "%.0f %s" : "%.1f %s", rate,
                  kUnits[unit]);
    return text;
}

}  // namespace web
