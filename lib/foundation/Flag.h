/// @file
#pragma once

namespace kestrel
{

/// A set of bits. `Owner` only keeps the flags of different classes apart. Empty by default.
template <class Owner, class T>
class Flag
{
public:
    /// Of no bit.
    constexpr Flag() = default;
    /// Of all bits that are set in `bits`.
    constexpr explicit Flag(T bits) : bits_(bits) {}

    /// The bits.
    constexpr T value() const { return bits_; }

    /// Whether the two share at least one bit: a set of both bits has any of either, an empty set of none.
    constexpr bool hasAny(Flag other) const { return (bits_ & other.bits_) != 0; }

    /// Sets the other's bits, too.
    constexpr Flag& operator|=(Flag other)
    {
        bits_ |= other.bits_;
        return *this;
    }
    /// Keeps only the other's bits.
    constexpr Flag& operator&=(Flag other)
    {
        bits_ &= other.bits_;
        return *this;
    }

    /// The bits of either.
    friend constexpr Flag operator|(Flag a, Flag b) { return a |= b; }
    /// The bits that are in both.
    friend constexpr Flag operator&(Flag a, Flag b) { return a &= b; }
    /// Whether exactly the same bits are set.
    friend constexpr bool operator==(Flag a, Flag b) { return a.bits_ == b.bits_; }
    /// Not `==`.
    friend constexpr bool operator!=(Flag a, Flag b) { return a.bits_ != b.bits_; }

private:
    T bits_ = 0;
};

} // namespace kestrel
