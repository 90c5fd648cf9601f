// Building block of the VS08 model: plain registers with a reset value and the rules of a write.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vboard::vswitch {

// Why an access is refused, in a few words; null when it was done.
using Refusal = const char*;

inline constexpr Refusal kUnknownAddress = "no such register";
inline constexpr Refusal kReadOnly = "read-only register";
inline constexpr Refusal kReservedBit = "reserved bit set";
inline constexpr Refusal kOutOfRange = "value out of range";
inline constexpr Refusal kBusy = "command in progress";

struct RegisterSpec {
    uint16_t offset;
    uint16_t reset;
    uint16_t bits;  // those that exist; 0 = read only
    uint16_t min;
    uint16_t max;
};

// The registers that a list of specs describes, with their values.
class RegisterBank {
public:
    static constexpr size_t kCapacity = 16;

    explicit RegisterBank(std::span<const RegisterSpec> specs);

    void Reset();
    Refusal Read(uint16_t offset, uint16_t& value) const;
    // The refusal that Write would give; changes nothing.
    Refusal Check(uint16_t offset, uint16_t value) const;
    Refusal Write(uint16_t offset, uint16_t value);

    // The register at an offset of the specs; without the rules.
    uint16_t operator[](uint16_t offset) const { return values_[IndexOf(offset)]; }
    void Set(uint16_t offset, uint16_t value) { values_[IndexOf(offset)] = value; }

private:
    size_t IndexOf(uint16_t offset) const;

    std::span<const RegisterSpec> specs_;
    std::array<uint16_t, kCapacity> values_{};
};

}  // namespace vboard::vswitch
