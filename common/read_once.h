// Reading memory that any process may be writing at the same time.
#pragma once

#include <type_traits>

namespace orblink {

// The value, read exactly once: what was checked is what is used. A plain read may be repeated by
// the compiler between the check and the use.
template <typename T>
[[gnu::always_inline]] inline T ReadOnce(const T& shared)
{
    static_assert(std::is_scalar_v<T> && sizeof(T) <= sizeof(unsigned));
    return __atomic_load_n(&shared, __ATOMIC_RELAXED);
}

}  // namespace orblink
