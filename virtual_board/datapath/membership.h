// What a packet means to IGMP and MLD snooping.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

#include "virtual_board/datapath/frame.h"

namespace vboard::datapath {

enum class Protocol : uint8_t { kIgmp, kMld };

// An IPv4 group fills the first four octets.
using GroupAddress = std::array<uint8_t, 16>;

// One packet to a multicast group; only as long as its frame.
class MulticastPacket {
public:
    // Leaving is a report as well; a hello is that of a multicast router.
    enum class Kind { kOther, kData, kQuery, kReport, kHello };

    // kOther: neither IPv4 nor IPv6 to a group, or cut short. A message with a wrong checksum is
    // data.
    explicit MulticastPacket(const Frame& frame);

    Kind What() const { return kind_; }
    Protocol Of() const { return protocol_; }
    // Of kData: the destination, and whether it goes everywhere whoever has joined.
    GroupAddress Group() const { return GroupAt(destination_); }
    bool Unrestricted() const;
    // Of kQuery: from a router; one from the unspecified address is only passed on.
    bool Elects() const;
    // Of kHello: how long the router is there.
    std::chrono::seconds HoldTime() const;

    // Of kReport: calls change(group, joins) for everything that the message reports.
    template <typename Change>
    void ForEachChange(Change change) const;

private:
    struct Record {
        uint8_t type;
        unsigned sources;
        const uint8_t* group;
        size_t size;  // 0: the message ends before it
    };

    void ReadIpv4(Bytes packet);
    void ReadIgmp(Bytes packet);
    void ReadMld(Bytes packet);
    void ReadHello(Bytes packet);
    uint32_t PseudoHeader(uint8_t next) const;
    void ReadIpv6(Bytes packet);
    size_t GroupSize() const { return protocol_ == Protocol::kIgmp ? 4 : 16; }
    size_t SingleGroupAt() const { return protocol_ == Protocol::kIgmp ? 4 : 8; }
    GroupAddress GroupAt(const uint8_t* address) const;
    bool ManyRecords() const;
    bool Leaves() const;
    Record RecordAt(size_t at) const;
    static bool Joins(const Record& record) { return record.type % 2 == 0 || record.sources != 0; }

    Kind kind_ = Kind::kOther;
    Protocol protocol_ = Protocol::kIgmp;
    const uint8_t* source_ = nullptr;
    const uint8_t* destination_ = nullptr;
    Bytes message_;
};

template <typename Change>
void MulticastPacket::ForEachChange(Change change) const
{
    constexpr uint8_t kBlockOldSources = 6;
    if (!ManyRecords())
        return change(GroupAt(message_.data() + SingleGroupAt()), !Leaves());
    unsigned left = Word(message_.data() + 6);
    for (size_t at = 8; left > 0; --left) {
        const Record record = RecordAt(at);
        if (record.size == 0)
            return;
        const bool allowsNothing = record.type == 5 && record.sources == 0;
        if (record.type >= 1 && record.type < kBlockOldSources && !allowsNothing)
            change(GroupAt(record.group), Joins(record));
        at += record.size;
    }
}

}  // namespace vboard::datapath
