// A TAP interface: the cable between a port of the switch and a network namespace.
#pragma once

#include <net/if.h>
#include <sys/uio.h>

#include <cstdint>
#include <span>
#include <string>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/datapath/offload.h"
#include "virtual_board/description/board_description.h"

namespace vboard::cables {

// In the calling thread's network namespace, so that a host reaches itself.
void TakeLoopbackUp();

class TapPort {
public:
    // Makes the interface in the calling thread's network namespace, configures it and takes it
    // up. Throws std::system_error.
    explicit TapPort(const PortDescription& spec);

    int FrameFd() const { return frames_.Get(); }
    // Readable when the interface may have come up or gone down.
    int ChangeFd() const { return changes_.Get(); }

    // Frames, or packets of which something is left to do.
    struct Packet {
        datapath::Bytes bytes;
        datapath::Offload left = {};
    };
    static constexpr size_t kRoom = 16 + datapath::kLongestPacket;

    // The next that was sent into the interface; empty: none is waiting, or the interface is gone.
    Packet Read(std::span<uint8_t, kRoom> room);
    // One arrives at the interface; lost when that is down.
    void Write(std::span<const iovec> packet, const datapath::Offload& left = {});
    // Whether the interface takes packets of which something is left to do.
    bool TakesPackets() const { return offloads_; }
    // Takes note of the changes so far.
    bool IsUp();
    // Whether its host has deleted the interface.
    bool IsGone() const { return gone_; }
    // What the interface says of its cable: carrier, and the speed and duplex while it has one.
    void ShowLink(bool up, uint32_t megabits, bool fullDuplex);

private:
    // The interface under the name that its host gives it now; false: it is gone.
    bool Find(ifreq& request) const;

    std::string interface_;  // as it was made
    UniqueFd frames_;
    UniqueFd changes_;
    bool headers_ = true;    // one of virtio before each packet, both ways
    bool offloads_ = false;  // what these can say is agreed upon
    bool gone_ = false;
};

}  // namespace vboard::cables
