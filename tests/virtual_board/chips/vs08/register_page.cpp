#include "tests/virtual_board/chips/vs08/register_page.h"

#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

std::string Trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" `");
    const auto last = text.find_last_not_of(" `");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

std::vector<std::string> Cells(const std::string& row)
{
    std::vector<std::string> cells;
    std::stringstream stream(row.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');)
        cells.push_back(Trimmed(cell));
    return cells;
}

std::optional<uint16_t> Number(const std::string& text)
{
    if (!std::regex_match(text, std::regex("0x[0-9A-F]+|[0-9]+")))
        return std::nullopt;
    return static_cast<uint16_t>(std::stoul(text, nullptr, 0));
}

uint16_t NamedBits(const std::string& content)
{
    static const std::regex kField("\\bb([0-9]+)(:([0-9]+))?\\b");
    unsigned bits = 0;
    for (std::sregex_iterator it(content.begin(), content.end(), kField), end; it != end; ++it) {
        const unsigned high = std::stoul((*it)[1]);
        const unsigned low = (*it)[3].matched ? std::stoul((*it)[3]) : high;
        bits |= (2u << high) - (1u << low);
    }
    return static_cast<uint16_t>(bits ? bits : 0xFFFF);
}

bool IsAccess(const std::string& text)
{
    return text == "RO" || text == "RW" || text == "RC" || text == "W1C" || text == "CMD";
}

class PageReader {
public:
    explicit PageReader(const char* path)
    {
        std::ifstream file(path);
        if (!file)
            throw std::runtime_error(std::string("cannot read ") + path);
        for (std::string line; std::getline(file, line);)
            Take(line);
    }

    std::vector<PageRegister> registers;

private:
    void Take(const std::string& line)
    {
        if (line.starts_with("#"))
            heading_ = line;
        if (!line.starts_with("|"))
            return;
        const auto cells = Cells(line);
        if (cells.size() == 5 && cells[1].ends_with("ports"))
            portKind_ = cells[1];
        else if (cells.size() == 5 && IsAccess(cells[2]))
            TakeRow(cells);
    }

    void TakeRow(const std::vector<std::string>& cells)
    {
        if (heading_.starts_with("### 4.1") || heading_.starts_with("### 4.2"))
            Add(*Number(cells[0]), cells);
        else if (heading_.starts_with("### 4.3"))
            TakeCounterRow(cells);
        else if (heading_.starts_with("### 4.4"))
            Repeat(0x0400, 8, 32, cells);
        else if (heading_.starts_with("### 4.5"))
            TakePortRow(cells);
        else if (heading_.starts_with("### 4.6"))
            Repeat(0x2000, 8, 64, cells);
    }

    void TakeCounterRow(const std::vector<std::string>& cells)
    {
        if (Number(cells[0]))
            return Add(*Number(cells[0]), cells);
        for (uint16_t word = 0; word < 4 * 30; ++word)
            Add(0x0310 + word, cells);
    }

    void TakePortRow(const std::vector<std::string>& cells)
    {
        for (uint16_t port = 0; port < 8; ++port) {
            const std::string kind = port == 0   ? "SerDes ports"
                                     : port == 7 ? "RGMII ports"
                                                 : "PHY ports";
            if (portKind_.empty() || portKind_ == kind)
                Add(0x1000 + 0x100 * port + *Number(cells[0]), cells);
        }
    }

    void Repeat(uint16_t base, uint16_t step, uint16_t times, const std::vector<std::string>& cells)
    {
        for (uint16_t i = 0; i < times; ++i)
            Add(base + step * i + *Number(cells[0]), cells);
    }

    void Add(unsigned address, const std::vector<std::string>& cells)
    {
        registers.push_back({static_cast<uint16_t>(address), cells[1], cells[2], Number(cells[3]),
                             NamedBits(cells[4])});
    }

    std::string heading_;
    std::string portKind_;
};

}  // namespace

const std::vector<PageRegister>& RegisterPage()
{
    static const std::vector<PageRegister> kPage = PageReader(VSWITCH_PAGE).registers;
    return kPage;
}
