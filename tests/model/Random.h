/// @file
#pragma once

#include <cstdint>
#include <vector>

namespace kestrel::graph::test::model
{

/// The same numbers for a seed everywhere, which the distributions of the standard library do not promise.
class Random
{
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next()
    {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15u;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// Below `count`, which is not 0.
    unsigned int below(std::size_t count) { return static_cast<unsigned int>((next() >> 32) * count >> 32); }

    /// True once in `count` times.
    bool once(unsigned int count) { return below(count) == 0; }

    template <class Container>
    auto const& oneOf(Container const& container)
    {
        return *(container.begin() + below(container.size()));
    }

private:
    std::uint64_t state_;
};

} // namespace kestrel::graph::test::model
