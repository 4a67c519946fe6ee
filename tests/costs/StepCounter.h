/// @file
/// What the library does, counted instead of timed: its sources are compiled once more so that every basic
/// block reports that it runs.
#pragma once

#include <cstdint>

namespace kestrel::graph::test
{

/// Since the program began.
struct Work
{
    std::uint64_t steps = 0;       // basic blocks of the library
    std::uint64_t copiedBytes = 0; // by memcpy and memmove, which no step shows
};

Work workSoFar();

} // namespace kestrel::graph::test
