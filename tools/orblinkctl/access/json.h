// Models in full. Its code is made once, in model.cpp, and not in each file that uses it.
#pragma once

#include <nlohmann/json.hpp>

extern template class nlohmann::basic_json<nlohmann::ordered_map>;
