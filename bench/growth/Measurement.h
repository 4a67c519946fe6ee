/// @file
#pragma once

#include "../AllocationCounter.h"
#include "../Timing.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>

namespace bench
{

/// Tells Google Benchmark what an operation of a workload costs: its time, and as counters its allocations
/// and, where one makes something that stays, its bytes. A workload is one iteration for it, of which only
/// the part that is given here is measured.
class Measurement
{
public:
    explicit Measurement(benchmark::State& state) : state_(state) {}

    /// Processor time for one workload; a loop that has spent it ends early.
    static constexpr double budgetInSeconds = 2;

    /// Calls operation(i) for every i below the total, or until the budget is spent.
    template <class Operation>
    void loop(std::size_t total, Operation operation)
    {
        std::uint64_t const before = allocationsSoFar().count;
        tell(timedLoop(total, budgetInSeconds, operation), before);
    }

    /// The same, to the end whatever it takes.
    template <class Operation>
    void all(std::size_t total, Operation operation)
    {
        std::uint64_t const before = allocationsSoFar().count;
        tell(timedLoop(total, 1e30, operation), before);
    }

    /// One call that does that many operations.
    template <class Operation>
    void once(std::size_t operations, Operation operation)
    {
        std::uint64_t const before = allocationsSoFar().count;
        double const seconds = secondsOf(operation);
        tell({operations, seconds}, before);
    }

    void bytesEach(std::int64_t bytes, std::size_t count);
    void giveUp(char const* reason);

private:
    void tell(Timing const& timing, std::uint64_t allocationsBefore);

    benchmark::State& state_;
};

} // namespace bench
