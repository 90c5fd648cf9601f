// Small steps of writing HTML. What comes from the board is escaped here and nowhere else.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/access/model.h"

namespace web {

// For text and for attributes in quotes.
std::string Escaped(std::string_view text);

// A value of an object, null when there is none or no object.
const ctl::Model& At(const ctl::Model& object, const char* key);
// The value as escaped text; a dash for null.
std::string Shown(const ctl::Model& value);
// The value as plain text, empty for null.
std::string Plain(const ctl::Model& value);

// A table in a box that can be scrolled sideways; headings and cells are HTML already.
class HtmlTable {
public:
    HtmlTable(std::string_view caption, std::initializer_list<std::string> headings);
    // The first cell is the row's heading.
    void Row(const std::vector<std::string>& cells, std::string_view style = "");
    void Heading(const std::string& text) { headings_ += "<th scope=\"col\">" + text + "</th>"; }
    bool Empty() const { return rows_.empty(); }
    std::string Text() const;

private:
    std::string caption_;
    std::string headings_;
    std::string rows_;
};

// One paragraph that says why there is nothing to see.
std::string Remark(std::string_view text);

// "12.3 Mb/s" of octets per second, a dash for null.
std::string BitRate(const ctl::Model& octetsPerSecond);

}  // namespace web
