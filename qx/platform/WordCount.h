#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qx {

/// How many bits of the words are 1, counted with the machine's own instruction where there is one.
std::size_t CountOnes(std::span<const std::uint64_t> Words);

} // namespace qx
