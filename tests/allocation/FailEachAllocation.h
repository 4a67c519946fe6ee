/// @file
#pragma once

#include "FailingAllocator.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace kestrel::graph::test
{

/// Fails allocation 1, 2, 3, ... of the change, each time of a new subject, until the change makes no more of
/// them, and lets `check` look at the subject each time: at one whose change ended with an exception, or at
/// one that saw no failure or got along without that memory. Nothing may be left of a subject when it is
/// gone. Returns how many of the failures reached the caller.
template <class Make, class Change, class Check>
long failEachAllocation(bool persistently, Make make, Change change, Check check)
{
    long exceptions = 0;
    bool failed = true;
    for (long number = 1; failed; ++number)
    {
        SCOPED_TRACE((persistently ? "from allocation " : "allocation ") + std::to_string(number));
        long const living = livingAllocations();
        {
            auto subject = make();
            bool thrown = false;
            try
            {
                FailAllocation const failure(number, persistently);
                change(subject);
                failed = failure.happened();
            }
            catch (std::bad_alloc const&)
            {
                thrown = true;
                ++exceptions;
            }
            check(subject, thrown);
        }
        if (testing::Test::HasFailure()) return exceptions; // which are kept in memory, too
        EXPECT_EQ(livingAllocations(), living);
    }
    return exceptions;
}

} // namespace kestrel::graph::test
