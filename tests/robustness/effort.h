// How long a test tries: shortly among all the others, or for as long as run.sh says.
#pragma once

#include <cstdlib>
#include <string>

namespace obtest {

// ORBLINK_THOROUGH holds the seconds that each of the long-running tests may take.
inline bool Thorough()
{
    return getenv("ORBLINK_THOROUGH") != nullptr;
}

inline int Seconds(int shortly)
{
    return Thorough() ? std::stoi(getenv("ORBLINK_THOROUGH")) : shortly;
}

}  // namespace obtest
