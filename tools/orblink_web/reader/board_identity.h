// Which board this is: locks and regions of another one have other numbers.
#pragma once

#include <sys/types.h>

#include <array>
#include <compare>
#include <cstdint>

namespace web {

struct FamilyIdentity {
    int lock;
    dev_t device;
    ino_t region;
    uint64_t size;

    auto operator<=>(const FamilyIdentity&) const = default;
};

using BoardIdentity = std::array<FamilyIdentity, 2>;

BoardIdentity PresentBoard();

}  // namespace web
