#include "tools/orblinkctl/access/text_safety.h"

#include <cstdint>

namespace ctl {

namespace {

struct Character {
    uint32_t code;
    // 0 when the text does not begin with a well-formed character.
    size_t size;
};

size_t SizeByLead(uint8_t lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

Character First(std::string_view text)
{
    const auto lead = static_cast<uint8_t>(text.front());
    const size_t size = SizeByLead(lead);
    if (size == 0 || size > text.size())
        return {lead, 0};
    uint32_t code = size == 1 ? lead : lead & (0xFFU >> (size + 1));
    for (size_t i = 1; i < size; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xC0) != 0x80)
            return {lead, 0};
        code = code << 6 | (next & 0x3F);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return {code, code < kLeast[size] || code > 0x10FFFF || surrogate ? 0 : size};
}

// Control characters of both tables, and those that turn the direction of writing.
bool IsControl(uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x200E || code == 0x200F ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

void AddEscaped(std::string& out, std::string_view bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char byte : bytes) {
        const auto value = static_cast<uint8_t>(byte);
        out += "\\x";
        out += kDigits[value >> 4];
        out += kDigits[value & 0xF];
    }
}

std::string Escaped(std::string_view text, bool lines)
{
    std::string out;
    while (!text.empty()) {
        const Character character = First(text);
        const std::string_view bytes = text.substr(0, character.size == 0 ? 1 : character.size);
        const bool kept = lines && character.code == '\n';
        if (!kept && (character.size == 0 || IsControl(character.code)))
            AddEscaped(out, bytes);
        else
            out += bytes;
        text.remove_prefix(bytes.size());
    }
    return out;
}

}  // namespace

std::string Printable(std::string_view text)
{
    return Escaped(text, false);
}

std::string PrintableLines(std::string_view text)
{
    return Escaped(text, true);
}

}  // namespace ctl
