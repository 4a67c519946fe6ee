/// @file
/// Replaces the global new and delete of a program by ones that count.
#pragma once

#include <cstdint>

namespace bench
{

struct Allocations
{
    /// Since the program began.
    std::uint64_t count = 0;
    /// In what is allocated now, with what the allocator rounds a block up by.
    std::int64_t livingBytes = 0;
};

Allocations allocationsSoFar();

} // namespace bench
