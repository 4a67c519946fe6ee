/// @file
#pragma once

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <cstddef>

namespace kestrel::fuzz
{

/// The most bytes that were allocated at one moment since it was made, beyond those that were then. One at a
/// time, on one thread. It listens to the allocator of AddressSanitizer, which no replaced `new` weakens.
class PeakMemory
{
public:
    PeakMemory()
    {
        static bool const installed = __sanitizer_install_malloc_and_free_hooks(&allocated, &freed) != 0;
        works_ = installed;
        living_ = 0;
        peak_ = 0;
    }

    PeakMemory(PeakMemory const&) = delete;
    PeakMemory& operator=(PeakMemory const&) = delete;

    /// Without the hooks nothing would be counted.
    bool works() const { return works_; }

    std::size_t bytes() const { return static_cast<std::size_t>(peak_); }

private:
    static void allocated(void const volatile*, std::size_t size)
    {
        living_ += static_cast<std::ptrdiff_t>(size);
        peak_ = std::max(peak_, living_);
    }

    // Older blocks may go, too: then what lives is less than before.
    static void freed(void const volatile* block)
    {
        living_ -=
            static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(const_cast<void const*>(block)));
    }

    static inline std::ptrdiff_t living_ = 0;
    static inline std::ptrdiff_t peak_ = 0;
    bool works_ = false;
};

} // namespace kestrel::fuzz
