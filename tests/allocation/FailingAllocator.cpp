#include "FailingAllocator.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace
{

// In front of each block stands its size; this much keeps the block aligned.
constexpr std::size_t headerSize = alignof(std::max_align_t);
static_assert(headerSize >= sizeof(std::size_t));

std::atomic<long> living{0};
std::atomic<long> made{0};
std::atomic<std::size_t> livingBytes{0};
std::atomic<std::size_t> peakBytes{0};
std::atomic<long> untilFailure{0}; // 0: nothing fails
std::atomic<bool> failsOnward{false};
std::atomic<bool> hasFailed{false};
std::atomic<long> failures{0};

bool failsNow()
{
    if (untilFailure == 0) return false;
    if (untilFailure > 1)
    {
        --untilFailure;
        return false;
    }
    if (!failsOnward) untilFailure = 0;
    if (!hasFailed.exchange(true)) ++failures;
    return true;
}

void* allocate(std::size_t size) noexcept
{
    if (failsNow() || size > std::numeric_limits<std::size_t>::max() - headerSize) return nullptr;
    void* const whole = std::malloc(headerSize + size);
    if (whole == nullptr) return nullptr;
    std::memcpy(whole, &size, sizeof size);
    ++living;
    ++made;
    livingBytes += size;
    peakBytes = std::max(peakBytes.load(), livingBytes.load());
    return static_cast<char*>(whole) + headerSize;
}

void release(void* block) noexcept
{
    if (block == nullptr) return;
    void* const whole = static_cast<char*>(block) - headerSize;
    std::size_t size = 0;
    std::memcpy(&size, whole, sizeof size);
    --living;
    livingBytes -= size;
    std::free(whole);
}

} // namespace

#include "support/GlobalNewAndDelete.h"

namespace kestrel::graph::test
{

FailAllocation::FailAllocation(long number, bool persistently)
{
    hasFailed = false;
    failsOnward = persistently;
    untilFailure = number;
}

FailAllocation::~FailAllocation()
{
    untilFailure = 0;
}

bool FailAllocation::happened() const
{
    return hasFailed;
}

long livingAllocations()
{
    return living;
}

long allocationsMade()
{
    return made;
}

long failuresCaused()
{
    return failures;
}

PeakMemory::PeakMemory() : before_(livingBytes)
{
    peakBytes = before_;
}

std::size_t PeakMemory::bytes() const
{
    return peakBytes - before_;
}

} // namespace kestrel::graph::test
