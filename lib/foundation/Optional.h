/// @file
#pragma once

#include <cassert>

namespace kestrel
{

/// A view of a value that is held elsewhere, or of none. It owns nothing and dangles once its holder changes
/// or goes.
template <class T>
class Optional
{
public:
    /// A view of none.
    constexpr Optional() = default;

    /// A view of `*value`; of none when `value` is null.
    constexpr explicit Optional(T const* value) : value_(value), present_(value != nullptr) {}

    /// Both say whether there is a value to read.
    constexpr bool has_value() const { return present_; }
    constexpr explicit operator bool() const { return present_; }

    /// REQUIRES: `has_value()`. Asserted in debug builds only.
    constexpr T const& operator*() const
    {
        assert(present_);
        return *value_;
    }
    /// REQUIRES: `has_value()`. Asserted in debug builds only.
    constexpr T const* operator->() const
    {
        assert(present_);
        return value_;
    }

    /// A copy of the value, or of `other` when there is none.
    constexpr T value_or(T other) const { return present_ ? *value_ : other; }

private:
    T const* value_ = nullptr;
    bool present_ = false;
};

} // namespace kestrel
