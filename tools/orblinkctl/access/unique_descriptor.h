// A descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace ctl {

class UniqueDescriptor {
public:
    UniqueDescriptor() = default;
    explicit UniqueDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~UniqueDescriptor() { Close(); }
    UniqueDescriptor(const UniqueDescriptor&) = delete;
    UniqueDescriptor& operator=(const UniqueDescriptor&) = delete;
    UniqueDescriptor(UniqueDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1))
    {
    }
    UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept
    {
        Close();
        descriptor_ = std::exchange(other.descriptor_, -1);
        return *this;
    }

    int Get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }

private:
    void Close()
    {
        if (descriptor_ >= 0)
            close(descriptor_);  // result dropped: a writer looks at it before, see OutputFile
    }

    int descriptor_ = -1;
};

}  // namespace ctl
