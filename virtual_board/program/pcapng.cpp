#include "virtual_board/program/pcapng.h"

#include <string_view>

namespace vboard {
namespace {

constexpr uint32_t kSection = 0x0A0D0D0A;
constexpr uint32_t kByteOrder = 0x1A2B3C4D;
constexpr uint32_t kInterface = 1;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint16_t kEthernet = 1;

enum Option : uint16_t { kEnd = 0, kComment = 1, kInterfaceName = 2, kFlags = 2, kResolution = 9 };
constexpr char kNanoseconds = 9;

// Of the machine's own byte order, which the section names.
template <typename Number>
void Append(std::string& text, Number number)
{
    text.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void Pad(std::string& text)
{
    text.append((4 - text.size() % 4) % 4, '\0');
}

void AppendOption(std::string& text, Option option, std::string_view value)
{
    Append(text, static_cast<uint16_t>(option));
    Append(text, static_cast<uint16_t>(value.size()));
    text += value;
    Pad(text);
}

std::string Block(uint32_t type, const std::string& body)
{
    std::string block;
    const auto length = static_cast<uint32_t>(body.size() + 12);
    Append(block, type);
    Append(block, length);
    block += body;
    Append(block, length);
    return block;
}

}  // namespace

std::string PcapngHeader(const std::string& interface)
{
    std::string section;
    Append(section, kByteOrder);
    Append(section, uint16_t{1});
    Append(section, uint16_t{0});
    Append(section, int64_t{-1});  // of unknown length
    std::string described;
    Append(described, kEthernet);
    Append(described, uint16_t{0});
    Append(described, uint32_t{0});  // no limit of a frame's length
    AppendOption(described, kInterfaceName, interface);
    AppendOption(described, kResolution, {&kNanoseconds, 1});
    AppendOption(described, kEnd, "");
    return Block(kSection, section) + Block(kInterface, described);
}

std::string PcapngRecord(const PcapngFrame& frame)
{
    const auto time = static_cast<uint64_t>(frame.timeNs);
    const auto length = static_cast<uint32_t>(frame.bytes.size());
    std::string body;
    Append(body, uint32_t{0});  // the interface
    Append(body, static_cast<uint32_t>(time >> 32));
    Append(body, static_cast<uint32_t>(time));
    Append(body, length);
    Append(body, length);
    body.append(reinterpret_cast<const char*>(frame.bytes.data()), frame.bytes.size());
    Pad(body);
    const uint32_t direction = frame.received ? 1 : 2;
    AppendOption(body, kComment, frame.comment);
    AppendOption(body, kFlags, {reinterpret_cast<const char*>(&direction), sizeof direction});
    AppendOption(body, kEnd, "");
    return Block(kEnhancedPacket, body);
}

}  // namespace vboard
