#pragma once

#include <cstddef>

/// How often the test program has allocated memory with `new` so far.
std::size_t countAllocations();
