/// @file
/// Replaces the global new and delete of the test program by ones that can be told to fail, and that count.
#pragma once

#include <cstddef>

namespace kestrel::graph::test
{

/// While it lives, the allocation of that number (from 1) fails; with `persistently`, all later ones too.
class FailAllocation
{
public:
    FailAllocation(long number, bool persistently);
    ~FailAllocation();
    FailAllocation(FailAllocation const&) = delete;
    FailAllocation& operator=(FailAllocation const&) = delete;

    /// Whether an allocation has failed since it was made, also one whose failure nobody saw.
    bool happened() const;
};

/// Allocations that have not been freed.
long livingAllocations();

/// Allocations since the program started.
long allocationsMade();

/// How many `FailAllocation` have seen their allocation fail since the program started.
long failuresCaused();

/// The most bytes that were allocated at one moment since it was made, beyond those that were then. Only the
/// newest one tells.
class PeakMemory
{
public:
    PeakMemory();

    std::size_t bytes() const;

private:
    std::size_t before_;
};

} // namespace kestrel::graph::test
