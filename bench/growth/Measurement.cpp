#include "Measurement.h"

namespace bench
{

void Measurement::tell(Timing const& timing, std::uint64_t allocationsBefore)
{
    auto const operations = static_cast<double>(timing.operations);
    auto const allocations = static_cast<double>(allocationsSoFar().count - allocationsBefore);
    state_.SetIterationTime(timing.seconds / operations);
    state_.counters["operations"] = operations;
    state_.counters["allocations"] = allocations / operations;
}

void Measurement::bytesEach(std::int64_t bytes, std::size_t count)
{
    state_.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(count);
}

void Measurement::giveUp(char const* reason)
{
    state_.SkipWithError(reason);
}

} // namespace bench
