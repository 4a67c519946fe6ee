#include "FailingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long> living{0};
std::atomic<long> untilFailure{0}; // 0: nothing fails
std::atomic<bool> failsOnward{false};

bool failsNow()
{
    if (untilFailure == 0) return false;
    if (untilFailure > 1)
    {
        --untilFailure;
        return false;
    }
    if (!failsOnward) untilFailure = 0;
    return true;
}

void* allocate(std::size_t size) noexcept
{
    if (failsNow()) return nullptr;
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block != nullptr) ++living;
    return block;
}

void release(void* block) noexcept
{
    if (block != nullptr) --living;
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

namespace kestrel::graph::test
{

FailAllocation::FailAllocation(long number, bool persistently)
{
    failsOnward = persistently;
    untilFailure = number;
}

FailAllocation::~FailAllocation()
{
    untilFailure = 0;
}

long livingAllocations()
{
    return living;
}

} // namespace kestrel::graph::test
