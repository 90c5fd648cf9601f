// A file descriptor with an owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace vboard {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int owned) : fd{owned} {}
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : fd{std::exchange(other.fd, -1)} {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(fd, other.fd);
        return *this;
    }
    ~UniqueFd()
    {
        if (fd >= 0)
            close(fd);  // result dropped: nothing written with it is kept in a cache
    }

    int Get() const { return fd; }
    explicit operator bool() const { return fd >= 0; }

private:
    int fd = -1;
};

}  // namespace vboard
