#pragma once

#include <cstddef>

/// How many allocations the process has made by `operator new`. A test executable that calls it counts them.
std::size_t countAllocations();
