#include "virtual_board/chips/vs08/registers.h"

#include <algorithm>
#include <stdexcept>

namespace vboard::vswitch {

RegisterBank::RegisterBank(std::span<const RegisterSpec> list) : specs_(list)
{
    if (specs_.size() > kCapacity)
        throw std::length_error("too many registers in a bank");
    Reset();
}

void RegisterBank::Reset()
{
    std::ranges::transform(specs_, values_.begin(), &RegisterSpec::reset);
}

// The number of specs when there is no such register.
static size_t Search(std::span<const RegisterSpec> specs, uint16_t offset)
{
    return std::ranges::find(specs, offset, &RegisterSpec::offset) - specs.begin();
}

Refusal RegisterBank::Read(uint16_t offset, uint16_t& value) const
{
    const size_t index = Search(specs_, offset);
    if (index == specs_.size())
        return kUnknownAddress;
    value = values_[index];
    return nullptr;
}

Refusal RegisterBank::Check(uint16_t offset, uint16_t value) const
{
    const size_t index = Search(specs_, offset);
    if (index == specs_.size())
        return kUnknownAddress;
    const RegisterSpec& spec = specs_[index];
    if (spec.bits == 0)
        return kReadOnly;
    if (value & ~spec.bits)
        return kReservedBit;
    return value < spec.min || value > spec.max ? kOutOfRange : nullptr;
}

Refusal RegisterBank::Write(uint16_t offset, uint16_t value)
{
    const Refusal refusal = Check(offset, value);
    if (!refusal)
        Set(offset, value);
    return refusal;
}

size_t RegisterBank::IndexOf(uint16_t offset) const
{
    const size_t index = Search(specs_, offset);
    if (index == specs_.size())
        throw std::out_of_range("register offset");
    return index;
}

}  // namespace vboard::vswitch
