#pragma once

#include <cstddef>

namespace qx::tests {

/// How often the program has taken memory by `new`, and how much in all.
long Allocations();
std::size_t AllocatedBytes();

} // namespace qx::tests
