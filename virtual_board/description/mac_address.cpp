#include "virtual_board/description/mac_address.h"

#include <algorithm>
#include <cstdio>

namespace vboard {

bool ParseMac(std::string_view text, MacAddress& mac)
{
    unsigned bytes[6];
    char rest = 0;
    std::string copy{text};
    // NOLINTNEXTLINE(cert-err34-c): two digits never leave the range
    if (copy.size() != 17 || sscanf(copy.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &bytes[0], &bytes[1],
                                    &bytes[2], &bytes[3], &bytes[4], &bytes[5], &rest) != 6)
        return false;
    std::ranges::transform(bytes, mac.begin(), [](unsigned byte) { return uint8_t(byte); });
    return copy.find_first_not_of("0123456789abcdefABCDEF:") == std::string::npos;
}

std::string FormatMac(const MacAddress& mac)
{
    char text[18];
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5]);
    return text;
}

}  // namespace vboard
