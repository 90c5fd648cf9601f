#include "tools/orblinkctl/facts/vs08_decode.h"

#include <array>
#include <initializer_list>
#include <string>

#include "tools/orblinkctl/facts/mii_decode.h"

namespace ctl {

namespace {

struct ChipRegister {
    uint32_t address;
    const char* name;
    std::array<BitField, 5> fields;
};

constexpr BitField kBuffers = {11, 0, "buffers"};

constexpr ChipRegister kChipRegisters[] = {
    {0, "chip identification", {{{15, 0, "identification"}}}},
    {1, "chip revision", {{{7, 4, "major"}, {3, 0, "minor"}}}},
    {2, "status", {{{1, 1, "receive path ready"}, {0, 0, "ready"}}}},
    {4, "internal address", {{{15, 0, "of the next data access"}}}},
    {0x100,
     "capabilities",
     {{{10, 8, "internal port"},
       {7, 4, "ports"},
       {2, 2, "mirroring"},
       {1, 1, "Energy-Efficient Ethernet"},
       {0, 0, "no snooping"}}}},
    {0x101, "size of the MAC table", {{{15, 0, "slots"}}}},
    {0x102, "queues", {{{15, 8, "queues of a port"}, {7, 0, "queues"}}}},
    {0x103, "packet buffers", {{{15, 0, "buffers of 256 octets"}}}},
    {0x104, "counters", {{{15, 0, "counters of a port"}}}},
    {0x105, "size of the MAC-to-VLAN table", {{{15, 0, "entries"}}}},
    {0x110, "forwarding", {{{0, 0, "port isolation"}}}},
    {0x111, "provider bridging", {{{0, 0, "enable"}}}},
    {0x112, "provider tag", {{{15, 0, "tag protocol identifier"}}}},
    {0x113, "ageing", {{{15, 0, "step: 1 = 15 s, 2 = 75 s, 3 = 300 s, 4 = 1200 s, 5 = 4800 s"}}}},
    {0x114, "MTU", {{{15, 0, "octets"}}}},
    {0x115, "snooping", {{{1, 1, "MLD"}, {0, 0, "IGMP"}}}},
    {0x116,
     "LED mode",
     {{{15, 0,
        "mode: 0 off, 1 link, 2 activity, 3 link and activity, 4 speed, 5 duplex and collision, 6 "
        "on, 7 blinking"}}}},
    {0x117, "link changes", {{{7, 0, "one bit for each port"}}}},
    {0x118, "refused addresses", {{{15, 0, "addresses that found the table full"}}}},
    {0x120,
     "early detection",
     {{{14, 8, "most discarded, percent"}, {7, 4, "weight of the average"}, {0, 0, "enable"}}}},
    {0x121, "green minimum", {{kBuffers}}},
    {0x122, "green maximum", {{kBuffers}}},
    {0x123, "yellow minimum", {{kBuffers}}},
    {0x124, "yellow maximum", {{kBuffers}}},
    {0x125, "red minimum", {{kBuffers}}},
    {0x126, "red maximum", {{kBuffers}}},
    {0x208, "MAC table", {{{15, 0, "entries"}}}},
    {0x209, "static MAC addresses", {{{15, 0, "entries"}}}},
};

constexpr char kSpeedCode[] =
    "speed: 0 none, 1 negotiated, 2 = 10, 3 = 100, 4 = 1000, 5 = 2500 Mb/s";

constexpr ChipRegister kPortBlockRegisters[] = {
    {0x00,
     "information",
     {{{4, 4, "internal port"},
       {3, 3, "has a PHY"},
       {2, 0, "interface: 3 GMII, 4 RGMII, 5 SGMII, 6 HSGMII"}}}},
    {0x01, "control", {{{0, 0, "enable"}}}},
    {0x02, "status", {{{4, 2, kSpeedCode}, {1, 1, "full duplex"}, {0, 0, "link up"}}}},
    {0x03, "VLAN", {{{11, 0, "VLAN id"}}}},
    {0x04, "priority", {{{2, 0, "of untagged frames"}}}},
    {0x05, "tagging", {{{0, 0, "tag what leaves"}}}},
    {0x06, "group", {{{15, 15, "valid"}, {7, 0, "group"}}}},
    {0x07, "mirror", {{{15, 15, "enable"}, {2, 0, "destination port"}}}},
    {0x08, "flow control on", {{kBuffers}}},
    {0x09, "flow control off", {{kBuffers}}},
    {0x10, "PHY control", {{{3, 3, "full duplex"}, {2, 0, kSpeedCode}}}},
    {0x11, "Energy-Efficient Ethernet", {{{1, 1, "active"}, {0, 0, "enable"}}}},
    {0x12,
     "PHY test mode",
     {{{2, 0, "mode: 0 off, 1 waveform, 2 jitter-master, 3 jitter-slave, 4 distortion"}}}},
    {0x13,
     "PHY verification",
     {{{2, 0, "test: 0 off, 1 mac-loopback, 2 line-loopback, 3 packets, 4 bit-stream"}}}},
    {0x18, "RGMII control", {{{0, 0, "delay of both clocks"}}}},
    {0x1C,
     "SerDes control",
     {{{5, 5, "transmit inverted"},
       {4, 4, "receive inverted"},
       {3, 1, kSpeedCode},
       {0, 0, "2.5 Gb/s"}}}},
};

constexpr ChipRegister kQueueRegisters[] = {
    {0, "green minimum", {{kBuffers}}},     {1, "green maximum", {{kBuffers}}},
    {2, "yellow minimum", {{kBuffers}}},    {3, "yellow maximum", {{kBuffers}}},
    {4, "red minimum", {{kBuffers}}},       {5, "red maximum", {{kBuffers}}},
    {6, "reserved", {{{5, 0, "buffers"}}}},
};

constexpr uint32_t kFirstPort = 0x1000;
constexpr uint32_t kPortSize = 0x100;
constexpr uint32_t kFirstQueue = 0x2000;
constexpr uint32_t kQueueSize = 8;
constexpr uint32_t kQueueEnd = kFirstQueue + 64 * kQueueSize;

struct FoundRegister {
    const ChipRegister* entry = nullptr;
    // "port 2 ", "queue 17 ", or nothing.
    std::string place;
};

template <size_t N>
const ChipRegister* EntryOf(const ChipRegister (&list)[N], uint32_t address)
{
    for (const auto& entry : list)
        if (entry.address == address)
            return &entry;
    return nullptr;
}

FoundRegister FindChipRegister(uint32_t address)
{
    if (address >= kFirstPort && address < PortBlock(8))
        return {EntryOf(kPortBlockRegisters, address % kPortSize),
                "port " + std::to_string((address - kFirstPort) / kPortSize) + " "};
    if (address >= kFirstQueue && address < kQueueEnd)
        return {EntryOf(kQueueRegisters, address % kQueueSize),
                "queue " + std::to_string((address - kFirstQueue) / kQueueSize) + " "};
    return {EntryOf(kChipRegisters, address), ""};
}

}  // namespace

uint32_t PortBlock(unsigned port)
{
    return kFirstPort + kPortSize * port;
}

void DecodeChipRegisters(Model& model, uint32_t first)
{
    for (auto& entry : model["registers"]) {
        const FoundRegister found = FindChipRegister(first + entry["register"].get<uint32_t>());
        const std::string place = first == 0 ? found.place : "";
        if (found.entry == nullptr)
            Describe(entry, "", {});
        else
            Describe(entry, place + found.entry->name, found.entry->fields);
    }
}

}  // namespace ctl
