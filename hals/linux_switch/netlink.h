// Requests to the kernel over netlink. Nothing here outlives a slot: a socket is opened, asked and
// closed within one, so that neither a fork nor a change of the network namespace meets an old one.
#pragma once

#include <errno.h>
#include <linux/netlink.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace linux_switch {

// An attribute of a message, its value not copied.
struct Attribute {
    uint16_t type = 0;
    const uint8_t* data = nullptr;
    size_t size = 0;

    explicit operator bool() const { return data != nullptr; }

    // A shorter value is filled up with zeros.
    template <typename T>
    T As() const
    {
        T value{};
        if (data)
            memcpy(&value, data, size < sizeof value ? size : sizeof value);
        return value;
    }
    bool IsText(const char* text) const
    {
        const size_t length = strlen(text);
        return size >= length && memcmp(data, text, length) == 0 &&
               (size == length || data[length] == 0);
    }
};

// The attributes that follow one another in some bytes; what does not fit into them ends the walk.
class Attributes {
public:
    Attributes() = default;
    Attributes(const uint8_t* bytes, size_t count) : next_(bytes), left_(count) {}
    explicit Attributes(const Attribute& nest) : next_(nest.data), left_(nest.size) {}

    bool Next(Attribute& attribute);
    // The first of that type.
    Attribute Find(uint16_t type) const;

private:
    const uint8_t* next_ = nullptr;
    size_t left_ = 0;
};

// What the kernel answers with: the header of the family, and the attributes behind it.
class Reply {
public:
    Reply(const nlmsghdr* header, size_t size) : message_(header), length_(size) {}

    uint16_t Type() const { return message_->nlmsg_type; }
    template <typename T>
    bool Header(T& header) const
    {
        if (length_ < NLMSG_HDRLEN + sizeof header)
            return false;
        memcpy(&header, Payload(), sizeof header);
        return true;
    }
    Attributes Behind(size_t header) const;

private:
    const uint8_t* Payload() const
    {
        return reinterpret_cast<const uint8_t*>(message_) + NLMSG_HDRLEN;
    }

    const nlmsghdr* message_;
    size_t length_;
};

// A request, put together in place. What does not fit makes it invalid, and it is not sent.
class Request {
public:
    Request(uint16_t type, uint16_t flags);

    template <typename T>
    void Header(const T& header)
    {
        Append(&header, sizeof header);
    }
    void Put(uint16_t type, const void* value, size_t size);
    template <typename T>
    void Put(uint16_t type, T value)
    {
        Put(type, &value, sizeof value);
    }
    void PutText(uint16_t type, const char* text) { Put(type, text, strlen(text) + 1); }
    // Attributes that are put until Close() lie within this one.
    size_t Open(uint16_t type);
    void Close(size_t opened);

    bool Valid() const { return valid_; }
    nlmsghdr* Message() { return reinterpret_cast<nlmsghdr*>(bytes_); }

private:
    void Append(const void* value, size_t size);

    alignas(nlmsghdr) uint8_t bytes_[1024] = {};
    size_t used_ = NLMSG_HDRLEN;
    bool valid_ = true;
};

class Netlink {
public:
    explicit Netlink(int protocol);
    ~Netlink();
    Netlink(const Netlink&) = delete;
    Netlink& operator=(const Netlink&) = delete;

    // Each of these gives 0 or an error number. A kernel that does not answer ends with ETIMEDOUT,
    // and is asked nothing more: the caller is waiting, and the library's lock is held.
    int Do(Request& request) { return Exchange(request, nullptr, nullptr); }

    template <typename Take>
    int Ask(Request& request, Take take)
    {
        return Exchange(
            request, [](void* taker, const Reply& reply) { (*static_cast<Take*>(taker))(reply); },
            &take);
    }

    // Asks for a list. One that changed meanwhile is asked for again: again() takes back what has
    // been taken. EAGAIN: it has changed each time.
    template <typename Take, typename Again>
    int Dump(Request& request, Take take, Again again)
    {
        int error = kChangedMeanwhile;
        for (int tries = 0; error == kChangedMeanwhile && tries < kDumpTries; ++tries) {
            again();
            error = Ask(request, take);
        }
        return error == kChangedMeanwhile ? EAGAIN : error;
    }

    // The kernel's own words about the last failure, or nothing.
    const char* Reason() const { return reason_; }

private:
    using Taker = void (*)(void* taker, const Reply& reply);

    static constexpr int kDumpTries = 5;
    static constexpr int kChangedMeanwhile = 4096;  // no error number is as large

    int Exchange(Request& request, Taker take, void* taker);
    int Receive(uint32_t sequence, Taker take, void* taker);
    int Outcome(const nlmsghdr& message, size_t size);
    void KeepReason(const nlmsghdr& message, size_t size);

    int fd_;
    bool silent_ = false;
    uint32_t lastSequence_ = 0;
    char reason_[96] = {};
};

}  // namespace linux_switch
