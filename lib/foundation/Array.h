/// @file
#pragma once

#include <foundation/ArrayBase.h>

namespace kestrel
{

/// The tag of the value lists. It carries no meaning of its own; it is part of the public type names.
struct _Wa
{
};

/// The list of values: holds its elements, compares them with `==`, copies them when it is copied.
/// `T` is default-constructible and copyable. See `ArrayBase` for the operations.
template <class T, class Tag = _Wa>
class Array : public ArrayBase<T>
{
};

static_assert(sizeof(Array<int>) == sizeof(int*) + 2 * sizeof(unsigned int));

} // namespace kestrel
