// Text output: aligned tables and "key=value" lines.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/facts/model.h"

namespace ctl {

// Columns are as wide as their widest cell; columns that hold only numbers are aligned to the
// right.
class Table {
public:
    explicit Table(std::vector<std::string> headings);
    void Row(std::vector<std::string> cells);
    void Print(std::string& out) const;

private:
    std::vector<std::vector<std::string>> rows_;
};

void Line(std::string& out, std::initializer_list<std::string_view> pieces);

// A value when there is one, else a dash.
std::string Cell(const Model& object, const char* key);

// Every fact of a model on a line of its own: ports.0.vlan=100.
std::string KeyValueLines(const Model& model);

}  // namespace ctl
