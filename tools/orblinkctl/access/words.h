// The words of the command line: numbers, ranges, addresses, speeds, and their way back to text.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

using MacAddress = std::array<uint8_t, 6>;

struct PortId {
    unsigned device;
    unsigned port;
};

struct RegisterRange {
    uint32_t first;
    uint32_t last;
};

// A value to write; only the bits of the mask are changed.
struct MaskedValue {
    uint16_t value;
    uint16_t mask;
};

// Decimal or 0x hexadecimal, nothing before or behind it.
std::optional<uint64_t> ParseNumber(std::string_view word);
std::optional<uint64_t> ParseNumber(std::string_view word, uint64_t least, uint64_t most);
std::optional<MacAddress> ParseMac(std::string_view word);
// "P" (of switch 0) or "S:P".
std::optional<PortId> ParsePort(std::string_view word);
// "0x10" or "0x10-0x1f", at most 65535.
std::optional<RegisterRange> ParseRange(std::string_view word);
// "0x2" or "0x2/0xff".
std::optional<MaskedValue> ParseMasked(std::string_view word);
std::optional<std::vector<uint8_t>> ParseBytes(std::string_view hex);

// Speed codes (enum OB_Speed) and interface modes (enum OB_IfaceMode) as words.
std::optional<uint32_t> ParseSpeed(std::string_view word);
std::string SpeedWord(uint32_t code);
std::string ModeWord(uint32_t code);

std::string Hex(uint64_t value, int digits);
std::string MacWord(const uint8_t* address);
std::string PortWord(unsigned device, unsigned port);
std::string BytesWord(const uint8_t* data, size_t size);
void AddOnce(std::vector<std::string>& list, const std::string& entry);
std::vector<std::string> SplitWords(std::string_view text);

}  // namespace ctl
