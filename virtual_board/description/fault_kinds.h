// What can be made to go wrong on a board.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vboard {

enum class FaultId {
    kMailboxDown,
    kSocketError,
    kAppCpuDown,
    kBindError,
    kReceiveError,
    kSilent,
    kSendError,
    kSendShort,
    kMessageType,
    kPayloadLength,
    kMessageSize,
    kDeviceCount,
    kMdioError,
    kLaneOpen,
    kLaneError,
    kAttrOpen,
    kAttrError,
    kStateText,
    kGmacError,
    kGmacResult,
    kInterfaceError,
};

// One row of the table of faults; the command line, the board file and the manual follow it.
struct FaultKind {
    FaultId id;
    std::string_view name;
    std::string_view valueName;  // empty: the fault takes no value; "ERRNO": a number or a name
    uint32_t defaultValue;
    uint32_t maxValue;
    uint32_t defaultTimes;  // 0 = until cleared
    std::string_view help;
};

std::span<const FaultKind> FaultKinds();
const FaultKind* FindFault(std::string_view name);
std::string FaultNames();  // for an error message

// A number, or the name of an errno where the fault's value is one. nullopt: out of range.
std::optional<uint32_t> ParseFaultValue(const FaultKind& kind, std::string_view text);

// "no value", "a number from 0 to 255"...
std::string DescribeFaultValue(const FaultKind& kind);

struct Fault {
    const FaultKind* kind;
    uint32_t value;
    uint32_t at = 1;     // strikes at this occurrence from now, 1 = the next
    uint32_t times = 1;  // and so often in a row; 0 = until cleared
};

}  // namespace vboard
