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

void* operator new(std::size_t size)
{
    if (void* const block = allocate(size)) return block;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, std::nothrow_t const&) noexcept
{
    return allocate(size);
}

void operator delete(void* block) noexcept
{
    release(block);
}

void operator delete[](void* block) noexcept
{
    release(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    release(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    release(block);
}

namespace bench
{

Allocations allocationsSoFar()
{
    return {allocations.load(std::memory_order_relaxed), livingBytes.load(std::memory_order_relaxed)};
}

} // namespace bench
