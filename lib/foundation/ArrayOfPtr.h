/// @file
#pragma once

#include <foundation/ArrayBase.h>

namespace kestrel
{

/// The tag of the pointer lists that do not own what they point at.
struct KS_NO
{
};

/// The list of pointers: never deletes what it points at, compares by identity, nulls the slots that a
/// removal leaves behind. See `ArrayBase` for the operations.
template <class T, class Tag = KS_NO>
class ArrayOfPtr : public ArrayBase<T*>
{
};

static_assert(sizeof(ArrayOfPtr<int>) == sizeof(int**) + 2 * sizeof(unsigned int));

} // namespace kestrel
