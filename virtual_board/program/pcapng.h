// Frames in a file that network analysers read (PCAP Next Generation).
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vboard {

struct PcapngFrame {
    int64_t timeNs = 0;
    bool received = false;  // by the switch; else sent by it
    std::string comment;
    std::span<const uint8_t> bytes;
};

// What the file begins with: one Ethernet interface of this name.
std::string PcapngHeader(const std::string& interface);
std::string PcapngRecord(const PcapngFrame& frame);

}  // namespace vboard
