/// @file
#pragma once

namespace kestrel
{

/// Two values: a position, an offset, a size. Zeros by default.
template <class A, class B>
struct Tuple2
{
    /// Both are kept as given: x and y of a position, width and height of a size.
    A first;
    B second;

    /// Zeros.
    constexpr Tuple2() : first(), second() {}
    /// The first, then the second.
    constexpr Tuple2(A a, B b) : first(a), second(b) {}

    /// Equal in both. A value that is not a number equals none.
    friend constexpr bool operator==(Tuple2 const& a, Tuple2 const& b)
    {
        return a.first == b.first && a.second == b.second;
    }
    /// Not `==`.
    friend constexpr bool operator!=(Tuple2 const& a, Tuple2 const& b) { return !(a == b); }
};

} // namespace kestrel
