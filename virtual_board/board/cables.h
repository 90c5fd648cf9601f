// What the ports of a board's switches are plugged into, and what it does by itself while the board
// serves its clients.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace vboard {

// One end of a cable.
struct CableEnd {
    std::string port;  // "sw0:2"
    std::string interface;
    std::string host;  // whose network namespace it is in; empty: where the board was started
    std::string address;
};

class Cables {
public:
    Cables() = default;
    Cables(const Cables&) = delete;
    Cables& operator=(const Cables&) = delete;
    virtual ~Cables() = default;

    // Readable when there is something to do.
    virtual int Fd() const = 0;
    // The real time after which there is something to do anyway; nullopt: not before Fd says so.
    virtual std::optional<std::chrono::nanoseconds> Wait() const = 0;
    // Does what there is to do, or a few milliseconds of it.
    virtual void Serve() = 0;

    virtual std::vector<CableEnd> Ends() const = 0;
    // The descriptor of a host's namespace; -1: no such host.
    virtual int NetworkOf(const std::string& host) const = 0;
};

}  // namespace vboard
