// A file descriptor with an owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace vboard {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int owned) : fd_{owned} {}
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : fd_{std::exchange(other.fd_, -1)} {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~UniqueFd()
    {
        if (fd_ >= 0)
            close(fd_);  // result dropped: nothing written with it is kept in a cache
    }

    int Get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_ = -1;
};

}  // namespace vboard
