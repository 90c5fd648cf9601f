// Descriptors that somebody owns.
#pragma once

#include <unistd.h>

namespace orblink {

// Closes its descriptor at the end of the scope; -1 is none.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor()
    {
        if (fd_ >= 0)
            close(fd_);  // result dropped: what failed before is what the caller reports
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const { return fd_ >= 0; }
    int Get() const { return fd_; }

    // For one that is to stay open for the life of the process, or whose owner is another object.
    int Release()
    {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};

// A descriptor that outlives the statements that opened it, close-on-exec and never 0, 1 or 2: a
// caller may have closed its standard streams, and what it prints next must not land in it. Such a
// one is moved; when that fails it is kept as it is. Takes and returns -1, errno untouched.
int KeepDescriptor(int fd);

}  // namespace orblink
