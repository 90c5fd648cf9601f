// Programs from their start to their end.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace bench {

// Output is thrown away; a program that ends with another code than 0 fails its row.
void RegisterSpawn(const std::string& name, const std::vector<std::string>& words, int iterations);

}  // namespace bench
