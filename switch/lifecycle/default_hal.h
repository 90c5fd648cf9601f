#pragma once

namespace orblink::sw {

// The HAL library of a board that names no other; its chip needs a receive-path reset after each
// SerDes reset.
constexpr const char* kDefaultHalLibrary = "liborblink_velmar.so";

}  // namespace orblink::sw
