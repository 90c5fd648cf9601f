// The address of an interface, with its prefix length.
#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>

namespace vboard {

struct InterfaceAddress {
    int family = 0;
    in_addr v4{};
    in6_addr v6{};
    unsigned prefix = 0;
};

// "192.0.2.1/24", "2001:db8::1/64"; nullopt when it is neither.
std::optional<InterfaceAddress> ParseInterfaceAddress(const std::string& text);

}  // namespace vboard
