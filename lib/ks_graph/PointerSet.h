/// @file
/// Internal: "is it in the list?" at a cost that does not grow with the list.
#pragma once

#include "FlatTable.h"
#include "Hashing.h"

#include <foundation/ArrayOfPtr.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace kestrel::graph
{

/// A set of pointers that compares the first few one by one and looks the others up by hash: most lists of a
/// graph are short, and a few are very long.
template <class T>
class PointerSet
{
    struct Entry
    {
        T const* pointer = nullptr;

        bool isFree() const { return pointer == nullptr; }
        std::uint64_t hash() const { return hashOf(pointer); }
    };

    static auto isOf(T const* pointer)
    {
        return [pointer](Entry const& entry) { return entry.pointer == pointer; };
    }

public:
    PointerSet() = default;

    explicit PointerSet(ArrayOfPtr<T, KS_NO> const& list)
    {
        for (T* const pointer : list) insert(pointer);
    }

    /// False when it was there already.
    bool insert(T const* pointer)
    {
        if (contains(pointer)) return false;
        if (numberOfFew_ < few_.size())
        {
            few_[numberOfFew_++] = pointer;
            return true;
        }
        if (pointer == nullptr) return !std::exchange(holdsNull_, true);
        many_.reserveOneMore();
        many_.insert({pointer});
        return true;
    }

    /// False when it was not there.
    bool erase(T const* pointer)
    {
        auto const end = few_.begin() + static_cast<std::ptrdiff_t>(numberOfFew_);
        auto const place = std::find(few_.begin(), end, pointer);
        if (place != end)
        {
            *place = few_[--numberOfFew_];
            return true;
        }
        if (pointer == nullptr) return std::exchange(holdsNull_, false);
        Entry* const entry = many_.find(hashOf(pointer), isOf(pointer));
        if (entry != nullptr) many_.erase(entry);
        return entry != nullptr;
    }

    bool isEmpty() const { return numberOfFew_ == 0 && !holdsNull_ && many_.isEmpty(); }

    bool contains(T const* pointer) const
    {
        auto const end = few_.begin() + static_cast<std::ptrdiff_t>(numberOfFew_);
        if (std::find(few_.begin(), end, pointer) != end) return true;
        if (pointer == nullptr) return holdsNull_;
        return many_.find(hashOf(pointer), isOf(pointer)) != nullptr;
    }

private:
    std::array<T const*, 8> few_{};
    std::size_t numberOfFew_ = 0;
    FlatTable<Entry> many_;
    bool holdsNull_ = false;
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
