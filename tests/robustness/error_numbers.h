// The errors that the manual pages give for the calls that the library makes.
#pragma once

#include <string>
#include <vector>

namespace obtest {

// Empty for a call that sets none.
const std::vector<int>& ErrorNumbersOf(const std::string& call);

}  // namespace obtest
