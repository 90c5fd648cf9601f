#include "virtual_board/description/interface_address.h"

#include <arpa/inet.h>

#include <charconv>

namespace vboard {

std::optional<InterfaceAddress> ParseInterfaceAddress(const std::string& text)
{
    const size_t slash = text.find('/');
    if (slash == std::string::npos)
        return std::nullopt;
    InterfaceAddress parsed;
    const std::string address = text.substr(0, slash);
    if (inet_pton(AF_INET, address.c_str(), &parsed.v4) == 1)
        parsed.family = AF_INET;
    else if (inet_pton(AF_INET6, address.c_str(), &parsed.v6) == 1)
        parsed.family = AF_INET6;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + slash + 1, end, parsed.prefix);
    const unsigned longest = parsed.family == AF_INET6 ? 128 : 32;
    if (parsed.family == 0 || error != std::errc{} || rest != end || parsed.prefix > longest)
        return std::nullopt;
    return parsed;
}

}  // namespace vboard
