/// @file
/// What every program of this folder prints: a line `workload,n,nanoseconds an operation,peak memory in kB`
/// for each workload, with `NA` for what its library cannot do.
#pragma once

#include "../Timing.h"

#include <cstddef>
#include <cstdint>

namespace bench
{

struct Arguments
{
    std::uint32_t nodes;
    double budget; // in seconds for each workload
};

/// Ends the program with its usage if they make no sense.
Arguments readArguments(int count, char** values);

/// Measures one workload after the other.
class Report
{
public:
    explicit Report(Arguments const& arguments) : n_(arguments.nodes), budget_(arguments.budget) {}

    double budget() const { return budget_; }

    /// The memory before the graph is built.
    void start() const;
    void notAvailable(char const* workload) const;

    /// Calls operation(i) for every i below the total: for work that later workloads rely on.
    template <class Operation>
    void all(char const* workload, std::size_t total, Operation operation) const
    {
        print(workload, timedLoop(total, 1e30, operation), total);
    }

    /// The same, but stops when the budget is spent. The time is that of the operations that were done.
    template <class Operation>
    void loop(char const* workload, std::size_t total, Operation operation) const
    {
        print(workload, timedLoop(total, budget_, operation), total);
    }

    /// One call that does that many operations.
    template <class Operation>
    void once(char const* workload, std::size_t operations, Operation operation) const
    {
        print(workload, {operations, secondsOf(operation)}, operations);
    }

    /// The same, for a call that may give up and return false.
    template <class Operation>
    void attempt(char const* workload, std::size_t operations, Operation operation) const
    {
        bool done = false;
        auto const tryOnce = [&] { done = operation(); };
        double const seconds = secondsOf(tryOnce);
        print(workload, {done ? operations : 0, seconds}, operations);
    }

private:
    // `NA` without an operation that was done; a note when there were fewer than wanted.
    void print(char const* workload, Timing const& timing, std::size_t wanted) const;

    std::uint32_t n_;
    double budget_;
};

} // namespace bench
