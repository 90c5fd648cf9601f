// Port bitmaps of the record: 8 bits, bit n = port n.
#pragma once

#include <cstdint>

namespace orblink::sw {

constexpr bool HasPort(uint8_t bitmap, unsigned port)
{
    return port < 8 && ((bitmap >> port) & 1) != 0;
}

constexpr uint8_t WithPort(uint8_t bitmap, unsigned port)
{
    return static_cast<uint8_t>(bitmap | (1U << port));
}

constexpr uint8_t WithoutPort(uint8_t bitmap, unsigned port)
{
    return static_cast<uint8_t>(bitmap & ~(1U << port));
}

}  // namespace orblink::sw
