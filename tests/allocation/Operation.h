/// @file
/// What an operation promises when an allocation fails, and the check that it keeps it.
#pragma once

#include "FailEachAllocation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel::graph::test
{

enum class Promise
{
    allocatesNothing,
    /// A failure leaves everything as it was. So do all questions.
    allOrNothing,
    /// A series of changes: a failure leaves some of them done, and the same call does the others.
    repeatCompletes,
    /// A series of changes: a failure leaves some of them done, and the same call starts anew.
    partsRemain
};

/// A call on a subject. A subject is made anew for each attempt and has
/// - `state()`: everything that a change may touch, in one text;
/// - `results()`: what the call returned and gathered;
/// - `prepareRepeat()`: forgets these, and removes what a host has to remove before it tries again;
/// - `expectWhole()`: fails the test unless its parts agree with each other.
/// The call itself must not allocate outside the library: the arguments lie ready in the subject.
template <class Subject>
struct Operation
{
    /// As in the list of exported symbols, without the namespaces.
    std::string_view symbol;
    Promise promise;
    void (*call)(Subject&);
};

template <class Subject>
void expectPromiseKept(Operation<Subject> const& operation, bool persistently)
{
    std::string before;
    std::string after;
    {
        Subject fresh;
        before = fresh.state();
        operation.call(fresh);
        after = fresh.results() + fresh.state();
    }
    auto const check = [&](Subject& subject, bool failed)
    {
        subject.expectWhole();
        if (failed)
        {
            if (operation.promise == Promise::allOrNothing)
            {
                EXPECT_EQ(subject.state(), before);
            }
            subject.prepareRepeat();
            operation.call(subject);
            subject.expectWhole();
            if (operation.promise == Promise::partsRemain) return;
        }
        EXPECT_EQ(subject.results() + subject.state(), after);
    };
    failEachAllocation(
        persistently, [] { return Subject(); }, operation.call, check);
}

/// Whether an operation allocates is part of what the table says of it, so neither list can be padded.
template <class Subject>
void expectAllocationsAsPromised(Operation<Subject> const& operation)
{
    Subject subject;
    long const before = allocationsMade();
    operation.call(subject);
    long const made = allocationsMade() - before;
    subject.expectWhole();
    if (operation.promise == Promise::allocatesNothing)
        EXPECT_EQ(made, 0);
    else
        EXPECT_GT(made, 0);
}

template <class Subject>
void expectPromisesKept(std::vector<Operation<Subject>> const& operations)
{
    ASSERT_FALSE(operations.empty());
    for (Operation<Subject> const& operation : operations)
    {
        SCOPED_TRACE(operation.symbol);
        expectAllocationsAsPromised(operation);
        if (operation.promise == Promise::allocatesNothing) continue;
        for (bool const persistently : {false, true}) expectPromiseKept(operation, persistently);
    }
}

} // namespace kestrel::graph::test
