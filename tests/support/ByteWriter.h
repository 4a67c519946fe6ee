/// @file
/// Layout files put together byte by byte, without the library.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::graph::test
{

inline std::string encodedNumber(std::uint32_t number, std::endian order)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
    {
        int const shift = 8 * (order == std::endian::big ? 3 - i : i);
        bytes += static_cast<char>(number >> shift & 0xFFu);
    }
    return bytes;
}

/// Appends values in one byte order, and remembers where the counts, lengths and bools stand. Floats come as
/// their bits.
class ByteWriter
{
public:
    explicit ByteWriter(std::endian order) : order_(order) {}

    void bytes(std::string_view bytes) { content_ += bytes; }
    void number(std::uint32_t number) { bytes(encodedNumber(number, order_)); }

    void count(std::size_t count)
    {
        counts_.push_back(content_.size());
        number(static_cast<std::uint32_t>(count));
    }

    /// A length that need not fit the bytes behind it.
    void length(std::uint32_t length)
    {
        lengths_.push_back(content_.size());
        number(length);
    }

    void value(bool value)
    {
        bools_.push_back(content_.size());
        bytes(value ? std::string_view("\1", 1) : std::string_view("\0", 1));
    }

    void value(std::string const& text)
    {
        length(static_cast<std::uint32_t>(text.size() + 1));
        bytes(text);
        bytes(std::string_view("\0", 1));
    }

    template <std::size_t count>
    void value(std::array<std::uint32_t, count> const& floats)
    {
        for (std::uint32_t const bits : floats) number(bits);
    }

    std::string const& content() const { return content_; }

    /// @name Offsets
    /// @{
    std::vector<std::size_t> const& counts() const { return counts_; }
    std::vector<std::size_t> const& lengths() const { return lengths_; }
    std::vector<std::size_t> const& bools() const { return bools_; }
    /// @}

private:
    std::endian order_;
    std::string content_;
    std::vector<std::size_t> counts_;
    std::vector<std::size_t> lengths_;
    std::vector<std::size_t> bools_;
};

} // namespace kestrel::graph::test
