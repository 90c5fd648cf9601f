#include "tools/orblinkctl/output/text.h"

#include <algorithm>
#include <cctype>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/output/columns.h"

namespace ctl {

namespace {

bool LooksLikeNumber(const std::string& cell)
{
    return cell == "-" || (!cell.empty() && std::all_of(cell.begin(), cell.end(), [](char c) {
               return std::isdigit(static_cast<unsigned char>(c)) != 0;
           }));
}

bool IsPlain(const std::string& text)
{
    return !text.empty() && text != "null" && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
               std::string_view("_.:/+-").find(c) != std::string_view::npos;
    });
}

void Flatten(const Model& value, const std::string& key, std::string& out)
{
    if (value.is_structured()) {
        size_t index = 0;
        for (const auto& [name, entry] : value.items()) {
            std::string step = key.empty() ? key : key + ".";
            step += value.is_array() ? std::to_string(index++) : name;
            Flatten(entry, step, out);
        }
        return;
    }
    const bool plain = value.is_string() && IsPlain(value.get<std::string>());
    out += key + "=" + (plain ? value.get<std::string>() : value.dump()) + "\n";
}

}  // namespace

Table::Table(std::vector<std::string> headings)
{
    rows_.push_back(std::move(headings));
}

void Table::Row(std::vector<std::string> cells)
{
    rows_.push_back(std::move(cells));
}

std::vector<size_t> Table::Widths() const
{
    std::vector<size_t> widths(rows_.front().size(), 0);
    for (const auto& row : rows_)
        for (size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    return widths;
}

bool Table::Fits(size_t columns) const
{
    size_t width = 0;
    for (const size_t one : Widths())
        width += one + (width == 0 ? 0 : 2);
    return width <= columns;
}

bool Table::IsEmpty(size_t column) const
{
    return std::all_of(rows_.begin() + 1, rows_.end(),
                       [column](const auto& row) { return row[column] == "-"; });
}

void Table::Drop(size_t column)
{
    for (auto& row : rows_)
        row.erase(row.begin() + static_cast<std::ptrdiff_t>(column));
}

void Table::Narrow(size_t columns)
{
    for (size_t i = rows_.front().size(); i-- > 0 && !Fits(columns);)
        if (rows_.size() > 1 && IsEmpty(i))
            Drop(i);
    for (const auto& heading : expendable_) {
        const auto& head = rows_.front();
        const auto found = std::find(head.begin(), head.end(), heading);
        if (!Fits(columns) && found != head.end())
            Drop(static_cast<size_t>(found - head.begin()));
    }
}

void Table::Print(std::string& out) const
{
    const size_t columns = ScreenColumns();
    if (Fits(columns))
        return PrintRows(out);
    Table narrow = *this;
    narrow.Narrow(columns);
    if (narrow.Fits(columns))
        return narrow.PrintRows(out);
    PrintCards(out, columns);
}

void Table::PrintRows(std::string& out) const
{
    const size_t columns = rows_.front().size();
    const std::vector<size_t> widths = Widths();
    std::vector<bool> numbers(columns, true);
    for (auto row = rows_.begin() + 1; row != rows_.end(); ++row)
        for (size_t i = 0; i < columns; ++i)
            numbers[i] = numbers[i] && LooksLikeNumber((*row)[i]);
    for (const auto& row : rows_) {
        std::string line;
        for (size_t i = 0; i < columns; ++i) {
            const std::string padding(widths[i] - ColumnsOf(row[i]), ' ');
            line += (i == 0 ? "" : "  ") +
                    (numbers[i] && !IsEmpty(i) ? padding + row[i] : row[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + "\n";
    }
}

// A row as a paragraph of its own: "heading value", as many as fit on a line.
void Table::PrintCards(std::string& out, size_t columns) const
{
    constexpr size_t kIndent = 4;
    for (auto row = rows_.begin() + 1; row != rows_.end(); ++row) {
        std::string line;
        for (size_t i = 0; i < row->size(); ++i) {
            const std::string fact = rows_.front()[i] + " " + (*row)[i];
            if (line.find_last_not_of(' ') != std::string::npos &&
                ColumnsOf(line) + 2 + ColumnsOf(fact) > columns) {
                out += Wrapped(line, columns) + "\n";
                line = std::string(kIndent, ' ') + fact;
            } else {
                line += (line.empty() ? "" : "  ") + fact;
            }
        }
        out += Wrapped(line, columns) + "\n";
    }
}

void Line(std::string& out, std::initializer_list<std::string_view> pieces)
{
    for (const auto piece : pieces)
        out += piece;
    out += "\n";
}

void Paragraph(std::string& out, std::initializer_list<std::string_view> pieces)
{
    std::string line;
    for (const auto piece : pieces)
        line += piece;
    // No screen is asked for when it would have to be that narrow.
    constexpr size_t kShort = 40;
    Line(out, {ColumnsOf(line) <= kShort ? line : Wrapped(line, ScreenColumns())});
}

std::string Cell(const Model& object, const char* key)
{
    const auto found = object.find(key);
    return found == object.end() ? "-" : Text(*found);
}

std::string KeyValueLines(const Model& model)
{
    std::string out;
    Flatten(model, "", out);
    return out;
}

}  // namespace ctl
