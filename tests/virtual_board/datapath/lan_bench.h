// A switch whose cables all end at this bench: frames in, frames out, registers by MDIO.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/virtual_board/chips/vs08/chip_bench.h"
#include "virtual_board/datapath/switch_engine.h"

namespace lan {

using Octets = std::vector<uint8_t>;
using vboard::MacAddress;

inline constexpr MacAddress kBroadcast = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
inline constexpr uint16_t kTestType = 0x88B5;

// Registers by their addresses in the manual.
enum : uint16_t {
    kForwardCtrl = 0x0110,
    kPbCtrl = 0x0111,
    kPbTpid = 0x0112,
    kAgeing = 0x0113,
    kMtu = 0x0114,
    kSnooping = 0x0115,
    kFdbRefused = 0x0118,
    kWredCtrl = 0x0120,
    kWredGreenMin = 0x0121,
    kWredGreenMax = 0x0122,
};
enum : uint16_t {
    kCtrl = 1,
    kVid = 3,
    kPcp = 4,
    kTagging = 5,
    kGroup = 6,
    kMirror = 7,
    kXoff = 8,
    kXon = 9,
    kPhyCtrl = 0x10,
    kDvt = 0x13,
};
constexpr uint16_t PortRegister(unsigned port, uint16_t offset)
{
    return static_cast<uint16_t>(0x1000 + 0x100 * port + offset);
}
constexpr uint16_t QueueRegister(unsigned port, unsigned queue, uint16_t offset)
{
    return static_cast<uint16_t>(0x2000 + 8 * (8 * port + queue) + offset);
}

// Data and type that follow the addresses and tags; whole frames are never shorter than 60.
inline Octets Payload(size_t size = 46, uint16_t type = kTestType)
{
    Octets octets = {static_cast<uint8_t>(type >> 8), static_cast<uint8_t>(type)};
    for (size_t i = 0; i < size; ++i)
        octets.push_back(static_cast<uint8_t>(i));
    return octets;
}

inline Octets operator+(Octets a, const Octets& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Octets Words(std::initializer_list<unsigned> words)
{
    Octets octets;
    for (unsigned word : words) {
        octets.push_back(static_cast<uint8_t>(word >> 8));
        octets.push_back(static_cast<uint8_t>(word));
    }
    return octets;
}

inline Octets Tag(unsigned pcp, unsigned vid, unsigned tpid = 0x8100, bool dei = false)
{
    return Words({tpid, pcp << 13 | (dei ? 0x1000u : 0u) | vid});
}

inline Octets From(const MacAddress& source, const MacAddress& destination,
                   const Octets& rest = Payload())
{
    Octets frame(destination.begin(), destination.end());
    frame.insert(frame.end(), source.begin(), source.end());
    return frame + rest;
}

class Bench : public vboard::datapath::Wires {
public:
    struct Sent {
        unsigned port;
        Octets frame;
    };

    explicit Bench(unsigned internalPort = 0) : bench(internalPort), engine(bench.chip, *this)
    {
        for (unsigned p = 0; p < 8; ++p)
            bench.LinkUp(p);
    }

    void Write(uint16_t address, uint16_t value)
    {
        ASSERT_TRUE(bench.Write(address, value)) << std::hex << address << " = " << value;
    }
    void WritePort(unsigned port, uint16_t offset, uint16_t value)
    {
        Write(PortRegister(port, offset), value);
    }
    uint16_t Read(uint16_t address) { return bench.Read(address).value_or(0xDEAD); }

    // One frame; what leaves the switch until it has nothing more to send.
    std::map<unsigned, std::vector<Octets>> Hear(unsigned port, const Octets& frame)
    {
        Give(port, frame);
        return Drain();
    }
    // The ports on which the frame leaves, for example "0 2 3".
    std::string Ports(unsigned port, const Octets& frame)
    {
        std::string text;
        for (const auto& [at, frames] : Hear(port, frame))
            text += (text.empty() ? "" : " ") + std::to_string(at);
        return text;
    }
    void Give(unsigned port, const Octets& frame)
    {
        bench.Wait(std::chrono::nanoseconds(1));
        engine.Receive(port, frame, bench.now);
    }
    std::map<unsigned, std::vector<Octets>> Drain()
    {
        while (const auto next = engine.NextTransmission()) {
            bench.Wait(std::max(*next - bench.now, std::chrono::nanoseconds(1)));
            engine.Transmit(bench.now);
        }
        std::map<unsigned, std::vector<Octets>> heard;
        for (const Sent& one : sent)
            heard[one.port].push_back(one.frame);
        sent.clear();
        return heard;
    }
    uint64_t Counter(unsigned port, std::string_view name)
    {
        return bench.chip.State()["ports"][port]["counters"][std::string(name)];
    }
    // Where the MAC table has an address, "port/vlan port/vlan ...".
    std::string Known(const MacAddress& mac)
    {
        std::string text;
        auto& table = bench.chip.Stations();
        for (size_t s = table.NextUsed(0); s < table.kSlots; s = table.NextUsed(s + 1)) {
            const auto& entry = table.At(s);
            if (entry.mac == mac)
                text += (text.empty() ? "" : " ") + std::to_string(entry.port) + "/" +
                        std::to_string(entry.vid);
        }
        return text;
    }
    void MacVlan(unsigned entry, unsigned port, unsigned vid, unsigned mask, const MacAddress& mac)
    {
        const auto base = static_cast<uint16_t>(0x0400 + 8 * entry);
        const uint16_t words[] = {static_cast<uint16_t>(vid), static_cast<uint16_t>(mask),
                                  static_cast<uint16_t>(mac[0] << 8 | mac[1]),
                                  static_cast<uint16_t>(mac[2] << 8 | mac[3]),
                                  static_cast<uint16_t>(mac[4] << 8 | mac[5])};
        for (uint16_t i = 0; i < 5; ++i)
            Write(static_cast<uint16_t>(base + 1 + i), words[i]);
        Write(base, static_cast<uint16_t>(0x8000 | port));
    }

    void Send(unsigned port, std::span<const iovec> pieces) override
    {
        ++frames;
        if (!keep)
            return;
        Octets frame;
        for (const iovec& piece : pieces) {
            const auto* start = static_cast<const uint8_t*>(piece.iov_base);
            frame.insert(frame.end(), start, start + piece.iov_len);
        }
        sent.push_back({port, frame});
    }

    ChipBench bench;
    vboard::datapath::SwitchEngine engine;
    std::vector<Sent> sent;
    unsigned frames = 0;
    bool keep = true;
};

class Lan : public ::testing::Test, public Bench {};

inline const MacAddress kA = Station(1);
inline const MacAddress kB = Station(2);
inline const MacAddress kC = Station(3);

}  // namespace lan
