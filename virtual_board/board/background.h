// What a board does by itself while it serves its clients.
#pragma once

#include <chrono>
#include <optional>

namespace vboard {

class Background {
public:
    Background() = default;
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;
    virtual ~Background() = default;

    // Readable when there is something to do.
    virtual int Fd() const = 0;
    // The real time after which there is something to do anyway; nullopt: not before Fd says so.
    virtual std::optional<std::chrono::nanoseconds> Wait() const = 0;
    virtual void Serve() = 0;
    // Does one thing, when Fd is known to be readable.
    virtual void ServeOne() { Serve(); }
};

}  // namespace vboard
