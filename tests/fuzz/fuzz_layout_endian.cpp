#include "LayoutFuzzing.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    kestrel::fuzz::testLayout<kestrel::FileStreamEndian>({reinterpret_cast<char const*>(data), size});
    return 0;
}
