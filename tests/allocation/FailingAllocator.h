/// @file
/// Replaces the global new and delete of the test program by ones that can be told to fail.
#pragma once

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
};

/// Allocations that have not been freed.
long livingAllocations();

} // namespace kestrel::graph::test
