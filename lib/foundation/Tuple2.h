/// @file
#pragma once

namespace kestrel
{

/// Two values: a position, an offset, a size. Zeros by default.
template <class A, class B>
struct Tuple2
{
    A first;
    B second;

    constexpr Tuple2() : first(), second() {}
    constexpr Tuple2(A a, B b) : first(a), second(b) {}

    friend constexpr bool operator==(Tuple2 const& a, Tuple2 const& b)
    {
        return a.first == b.first && a.second == b.second;
    }
    friend constexpr bool operator!=(Tuple2 const& a, Tuple2 const& b) { return !(a == b); }
};

} // namespace kestrel
