/// @file
/// Internal: "is it in the list?" at a cost that does not grow with the list.
#pragma once

#include <foundation/ArrayOfPtr.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <unordered_set>

namespace kestrel::graph
{

/// A set of pointers that compares the first few one by one and hashes from then on: most lists of a graph
/// are short, and a few are very long.
template <class T>
class PointerSet
{
public:
    PointerSet() = default;

    explicit PointerSet(ArrayOfPtr<T, KS_NO> const& list)
    {
        for (T* const pointer : list) insert(pointer);
    }

    /// False when it was there already.
    bool insert(T const* pointer)
    {
        if (!many_.empty()) return many_.insert(pointer).second;
        if (contains(pointer)) return false;
        if (numberOfFew_ < few_.size())
        {
            few_[numberOfFew_++] = pointer;
            return true;
        }
        many_.insert(few_.begin(), few_.end());
        return many_.insert(pointer).second;
    }

    bool isEmpty() const { return numberOfFew_ == 0; }

    bool contains(T const* pointer) const
    {
        if (!many_.empty()) return many_.count(pointer) != 0;
        auto const end = few_.begin() + static_cast<std::ptrdiff_t>(numberOfFew_);
        return std::find(few_.begin(), end, pointer) != end;
    }

private:
    std::array<T const*, 16> few_{};
    std::size_t numberOfFew_ = 0;
    std::unordered_set<T const*> many_;
};

/// Keeps the first of each.
template <class T>
void removeRepeats(ArrayOfPtr<T, KS_NO>& list)
{
    PointerSet<T> seen;
    list.removeIf([&seen](T* pointer) { return !seen.insert(pointer); });
}

/// Appends the elements of `list`, which may be `out` itself.
template <class T>
void appendAll(ArrayOfPtr<T, KS_NO> const& list, ArrayOfPtr<T, KS_NO>& out)
{
    out.appendRange(list.data(), list.size());
}

} // namespace kestrel::graph
