#include "virtual_board/board/board_data.h"

#include <algorithm>

namespace vboard {
namespace {

constexpr size_t kSwitchEntrySize = 68;
constexpr size_t kPhyEntrySize = 56;

std::vector<uint8_t> NewMessage(uint32_t type, size_t payloadSize)
{
    std::vector<uint8_t> message(kMessageHeaderSize + payloadSize);
    PutWord(message, 0, type);
    PutWord(message, 4, static_cast<uint32_t>(payloadSize));
    return message;
}

void PutCommon(std::vector<uint8_t>& message, size_t at, const Wiring& wiring)
{
    std::ranges::copy(wiring.halLibName, message.begin() + static_cast<std::ptrdiff_t>(at));
    PutWord(message, at + 32, wiring.serdesId);
    PutWord(message, at + 36, wiring.enableGpioPin);
    PutWord(message, at + 40, wiring.resetGpioPin);
}

void PutSwitch(std::vector<uint8_t>& message, size_t at, const SwitchDescription& spec)
{
    PutCommon(message, at, spec.wiring);
    PutWord(message, at + 44, spec.internalPort);
    message[at + 48] = spec.wiring.mdioAddr;
    message[at + 49] = spec.wiring.mdioBus;
    PutWord(message, at + 52, spec.wiring.speed);
    PutWord(message, at + 56, spec.wiring.mode);
    PutWord(message, at + 60, spec.preResetArg);
    PutWord(message, at + 64, spec.reservedWord);
}

// The two MDIO bytes stand in the opposite order from the switch entry.
void PutPhy(std::vector<uint8_t>& message, size_t at, const PhyDescription& spec)
{
    PutCommon(message, at, spec.wiring);
    message[at + 44] = spec.wiring.mdioBus;
    message[at + 45] = spec.wiring.mdioAddr;
    PutWord(message, at + 48, spec.wiring.speed);
    PutWord(message, at + 52, spec.wiring.mode);
}

std::vector<uint8_t> SwitchMessage(const BoardDescription& spec)
{
    auto message = NewMessage(kSwitchMessage, kSwitchPayloadSize);
    for (size_t i = 0; i < spec.switches.size(); ++i)
        PutSwitch(message, kMessageHeaderSize + i * kSwitchEntrySize, spec.switches[i]);
    message[DeviceCountOffset(Family::kSwitch)] = static_cast<uint8_t>(spec.switches.size());
    PutWord(message, kMessageHeaderSize + 140, spec.isolation ? 1 : 0);
    auto to = message.begin() + static_cast<std::ptrdiff_t>(kMessageHeaderSize + 144);
    for (const MacAddress& mac : spec.macAddresses)
        to = std::ranges::copy(mac, to).out;
    return message;
}

std::vector<uint8_t> PhyMessage(const BoardDescription& spec)
{
    auto message = NewMessage(kPhyMessage, kPhyPayloadSize);
    for (size_t i = 0; i < spec.phys.size(); ++i)
        PutPhy(message, kMessageHeaderSize + i * kPhyEntrySize, spec.phys[i]);
    message[DeviceCountOffset(Family::kPhy)] = static_cast<uint8_t>(spec.phys.size());
    PutWord(message, kMessageHeaderSize + 116, spec.ulp ? 1 : 0);
    return message;
}

}  // namespace

std::vector<uint8_t> BoardDataMessage(const BoardDescription& spec, Family family)
{
    return family == Family::kSwitch ? SwitchMessage(spec) : PhyMessage(spec);
}

size_t DeviceCountOffset(Family family)
{
    return kMessageHeaderSize + (family == Family::kSwitch ? 136 : 112);
}

void PutWord(std::vector<uint8_t>& bytes, size_t offset, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

}  // namespace vboard
