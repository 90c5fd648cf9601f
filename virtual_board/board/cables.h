// What the ports of a board's switches are plugged into, and what it does by itself while the board
// serves its clients.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "virtual_board/board/poller.h"
#include "virtual_board/datapath/trace.h"

namespace vboard {

// What a cable does to frames in either direction. Chances are in parts per million.
struct WireFaults {
    static constexpr uint32_t kAll = 1'000'000;

    uint32_t fcsErrors = 0;
    uint32_t loss = 0;
    uint32_t duplicates = 0;
    uint32_t undersize = 0;   // cut off, with a frame check sequence that is right
    uint32_t fragments = 0;   // cut off, with one that is wrong
    uint32_t collisions = 0;  // on a half-duplex link
    std::chrono::nanoseconds delay{};
    std::chrono::nanoseconds jitter{};  // at most so much more or less
    bool operator==(const WireFaults&) const = default;
};

// One end of a cable.
struct CableEnd {
    std::string port;  // "sw0:2"
    std::string interface;
    std::string host;  // whose network namespace it is in; empty: where the board was started
    std::string address;
    WireFaults wire;
};

// A frame at a port.
struct CapturedFrame {
    int64_t timeNs = 0;
    bool received = false;  // by the switch; else sent by it
    std::string comment;    // VLAN, queue, why it was dropped
    std::vector<uint8_t> bytes;
};

struct Captured {
    std::vector<CapturedFrame> frames;
    uint64_t next = 0;  // the number with which to ask again
    uint64_t lost = 0;  // frames that were not kept so long
    uint64_t kept = 0;  // frames that the next question will get
};

class Cables {
public:
    Cables() = default;
    Cables(const Cables&) = delete;
    Cables& operator=(const Cables&) = delete;
    virtual ~Cables() = default;

    // Has the poller watch what becomes ready when there is something to do, under marks of this
    // kind with numbers of the cables' own. The poller must stay.
    virtual void Watch(Poller& poller, uint32_t kind) = 0;
    // The real time after which there is something to do anyway; nullopt: not before poll says so.
    virtual std::optional<std::chrono::nanoseconds> Wait() const = 0;
    // Does what there is to do, or a little of it; with the numbers of what is ready.
    virtual void Serve(std::span<const uint32_t> ready) = 0;

    virtual std::vector<CableEnd> Ends() const = 0;
    // The descriptor of a host's namespace; -1: no such host.
    virtual int NetworkOf(const std::string& host) const = 0;

    // Of a port of a switch, "sw0", 2; false or nullopt: no such port.
    virtual bool SetWire(const std::string& device, unsigned port, const WireFaults& faults) = 0;
    // The frames from a number on; nothing: from now.
    virtual std::optional<Captured> Capture(const std::string& device, unsigned port,
                                            std::optional<uint64_t> from) = 0;
    virtual std::optional<std::vector<datapath::TraceStep>> Trace(
        const std::string& device, unsigned port, const std::vector<uint8_t>& frame) = 0;
};

}  // namespace vboard
