// OrbLink for C++20: indices that cannot be mixed up, results that cannot be ignored, spans for
// tables, words for values. Header only; every function compiles to the C call. Switches are in
// namespace orblink, PHYs in orblink::phy; nothing throws.
#pragma once

#include "orblink/phys.hpp"
#include "orblink/ports.hpp"
#include "orblink/switches.hpp"
