/// @file
/// The global new and delete of a program, by the functions `void* allocate(std::size_t) noexcept`, null
/// without memory, and `void release(void*) noexcept`. No guard: the one source that defines these two
/// includes it behind them.

#include <cstddef>
#include <new>

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
