/// @file
#pragma once

namespace kestrel
{

/// A colour of four components, each nominally in 0..1; nothing clamps them. Opaque black by default.
template <class T>
struct Color4
{
    /// All four are kept as given.
    T red;
    T green;
    T blue;
    T alpha;

    /// Opaque black.
    constexpr Color4() : Color4(T(0), T(0), T(0), T(1)) {}
    /// Red, green, blue, alpha.
    constexpr Color4(T r, T g, T b, T a) : red(r), green(g), blue(b), alpha(a) {}

    /// Equal in all four. A component that is not a number equals none.
    friend constexpr bool operator==(Color4 const& a, Color4 const& b)
    {
        return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
    }
    /// Not `==`.
    friend constexpr bool operator!=(Color4 const& a, Color4 const& b) { return !(a == b); }
};

} // namespace kestrel
