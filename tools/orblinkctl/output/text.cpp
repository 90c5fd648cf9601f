#include "tools/orblinkctl/output/text.h"

#include <algorithm>
#include <cctype>

#include "tools/orblinkctl/facts/json.h"

namespace ctl {

namespace {

// Counts characters, not the bytes of a UTF-8 text.
size_t Width(const std::string& cell)
{
    return static_cast<size_t>(
        std::count_if(cell.begin(), cell.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

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
            const std::string step = value.is_array() ? std::to_string(index++) : name;
            Flatten(entry, key.empty() ? step : key + "." + step, out);
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

void Table::Print(std::string& out) const
{
    const size_t columns = rows_.front().size();
    std::vector<size_t> widths(columns, 0);
    std::vector<bool> numbers(columns, true);
    std::vector<bool> filled(columns, false);
    for (const auto& row : rows_)
        for (size_t i = 0; i < columns; ++i)
            widths[i] = std::max(widths[i], Width(row[i]));
    for (auto row = rows_.begin() + 1; row != rows_.end(); ++row)
        for (size_t i = 0; i < columns; ++i) {
            numbers[i] = numbers[i] && LooksLikeNumber((*row)[i]);
            filled[i] = filled[i] || (*row)[i] != "-";
        }
    for (const auto& row : rows_) {
        std::string line;
        for (size_t i = 0; i < columns; ++i) {
            const std::string padding(widths[i] - Width(row[i]), ' ');
            line += (i == 0 ? "" : "  ") +
                    (numbers[i] && filled[i] ? padding + row[i] : row[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + "\n";
    }
}

void Line(std::string& out, std::initializer_list<std::string_view> pieces)
{
    for (const auto piece : pieces)
        out += piece;
    out += "\n";
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
