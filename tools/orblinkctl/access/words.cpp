#include "tools/orblinkctl/access/words.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>

#include "common/iface.h"

namespace ctl {

namespace {

constexpr const char* kSpeeds[] = {"unknown", "auto", "10", "100", "1000", "2500", "10000"};
constexpr const char* kModes[] = {"unknown", "mii", "rmii", "gmii", "rgmii", "sgmii", "hsgmii"};
static_assert(std::size(kSpeeds) == OB_SPEED_COUNT && std::size(kModes) == OB_IFACE_MODE_COUNT);

constexpr uint64_t kMaxRegister = 0xFFFF;

std::optional<uint8_t> HexByte(std::string_view digits)
{
    unsigned value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || error != std::errc{} || stop != end)
        return std::nullopt;
    return static_cast<uint8_t>(value);
}

}  // namespace

std::optional<uint64_t> ParseNumber(std::string_view word)
{
    int base = 10;
    if (word.starts_with("0x") || word.starts_with("0X")) {
        word.remove_prefix(2);
        base = 16;
    }
    uint64_t value = 0;
    const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
    if (word.empty() || error != std::errc{} || stop != word.data() + word.size())
        return std::nullopt;
    return value;
}

std::optional<uint64_t> ParseNumber(std::string_view word, uint64_t least, uint64_t most)
{
    const auto value = ParseNumber(word);
    return value && *value >= least && *value <= most ? value : std::nullopt;
}

std::optional<MacAddress> ParseMac(std::string_view word)
{
    MacAddress address{};
    if (word.size() != 17)
        return std::nullopt;
    for (size_t i = 0; i < address.size(); ++i) {
        const auto byte = HexByte(word.substr(3 * i, 2));
        if (!byte || (i < 5 && word[3 * i + 2] != ':'))
            return std::nullopt;
        address[i] = *byte;
    }
    return address;
}

std::optional<PortId> ParsePort(std::string_view word)
{
    std::string_view device = "0";
    if (const size_t colon = word.find(':'); colon != std::string_view::npos) {
        device = word.substr(0, colon);
        word.remove_prefix(colon + 1);
    }
    const auto switchNumber = ParseNumber(device, 0, 1);
    const auto port = ParseNumber(word, 0, 7);
    if (!switchNumber || !port)
        return std::nullopt;
    return PortId{static_cast<unsigned>(*switchNumber), static_cast<unsigned>(*port)};
}

std::optional<RegisterRange> ParseRange(std::string_view word)
{
    const size_t dash = word.find('-');
    const auto first = ParseNumber(word.substr(0, dash), 0, kMaxRegister);
    const auto last = dash == std::string_view::npos
                          ? first
                          : ParseNumber(word.substr(dash + 1), 0, kMaxRegister);
    if (!first || !last || *last < *first)
        return std::nullopt;
    return RegisterRange{static_cast<uint32_t>(*first), static_cast<uint32_t>(*last)};
}

std::optional<MaskedValue> ParseMasked(std::string_view word)
{
    const size_t slash = word.find('/');
    const auto value = ParseNumber(word.substr(0, slash), 0, 0xFFFF);
    const auto mask = slash == std::string_view::npos
                          ? std::optional<uint64_t>(0xFFFF)
                          : ParseNumber(word.substr(slash + 1), 1, 0xFFFF);
    if (!value || !mask || (*value & ~*mask) != 0)
        return std::nullopt;
    return MaskedValue{static_cast<uint16_t>(*value), static_cast<uint16_t>(*mask)};
}

std::optional<std::vector<uint8_t>> ParseBytes(std::string_view hex)
{
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < hex.size(); i += 2) {
        const auto byte = HexByte(hex.substr(i, 2));
        if (!byte)
            return std::nullopt;
        bytes.push_back(*byte);
    }
    return bytes;
}

std::optional<uint32_t> ParseSpeed(std::string_view word)
{
    for (uint32_t code = OB_SPEED_AUTONEG; code < OB_SPEED_COUNT; ++code)
        if (word == kSpeeds[code])
            return code;
    return std::nullopt;
}

std::string SpeedWord(uint32_t code)
{
    return code < OB_SPEED_COUNT ? kSpeeds[code] : "illegal-" + std::to_string(code);
}

std::string ModeWord(uint32_t code)
{
    return code < OB_IFACE_MODE_COUNT ? kModes[code] : "illegal-" + std::to_string(code);
}

std::string Hex(uint64_t value, int digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*llx", digits, static_cast<unsigned long long>(value));
    return text;
}

std::string MacWord(const uint8_t* address)
{
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", address[0], address[1],
                  address[2], address[3], address[4], address[5]);
    return text;
}

std::string PortWord(unsigned device, unsigned port)
{
    return std::to_string(device) + ":" + std::to_string(port);
}

std::string BytesWord(const uint8_t* data, size_t size)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 15];
    }
    return text;
}

void AddOnce(std::vector<std::string>& list, const std::string& entry)
{
    if (std::find(list.begin(), list.end(), entry) == list.end())
        list.push_back(entry);
}

std::vector<std::string> SplitWords(std::string_view text)
{
    std::vector<std::string> words;
    while (!text.empty()) {
        const size_t start = text.find_first_not_of(" \t\r\n");
        if (start == std::string_view::npos)
            break;
        const size_t end = std::min(text.find_first_of(" \t\r\n", start), text.size());
        words.emplace_back(text.substr(start, end - start));
        text.remove_prefix(end);
    }
    return words;
}

}  // namespace ctl
