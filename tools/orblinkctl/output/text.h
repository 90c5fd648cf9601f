// Text output: aligned tables and "key=value" lines.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// Columns are as wide as their widest cell; columns that hold only numbers are aligned to the
// right. On a terminal that is too narrow, columns without a value go first, then those that are
// expendable; what is too wide still is printed as a card for each row.
class Table {
public:
    explicit Table(std::vector<std::string> headings);
    void Row(std::vector<std::string> cells);
    // Headings of columns that may go, the first one first.
    void Expendable(std::vector<std::string> headings) { expendable_ = std::move(headings); }
    void Print(std::string& out) const;

private:
    std::vector<size_t> Widths() const;
    bool Fits(size_t columns) const;
    bool IsEmpty(size_t column) const;
    void Drop(size_t column);
    void Narrow(size_t columns);
    void PrintRows(std::string& out) const;
    void PrintCards(std::string& out, size_t columns) const;

    std::vector<std::string> expendable_;
    std::vector<std::vector<std::string>> rows_;
};

void Line(std::string& out, std::initializer_list<std::string_view> pieces);

// A sentence: on a terminal that is too narrow it goes on, indented, on the next line.
void Paragraph(std::string& out, std::initializer_list<std::string_view> pieces);

// A value when there is one, else a dash.
std::string Cell(const Model& object, const char* key);

// Every fact of a model on a line of its own: ports.0.vlan=100.
std::string KeyValueLines(const Model& model);

}  // namespace ctl
