#include "AllocationCounter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace
{

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::int64_t> livingBytes{0};

void* allocate(std::size_t size) noexcept
{
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) return nullptr;
    allocations.fetch_add(1, std::memory_order_relaxed);
    livingBytes.fetch_add(static_cast<std::int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
    return block;
}

void release(void* block) noexcept
{
    if (block == nullptr) return;
    livingBytes.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
    std::free(block);
}

} // namespace

#include "support/GlobalNewAndDelete.h"

namespace bench
{

Allocations allocationsSoFar()
{
    return {allocations.load(std::memory_order_relaxed), livingBytes.load(std::memory_order_relaxed)};
}

} // namespace bench
