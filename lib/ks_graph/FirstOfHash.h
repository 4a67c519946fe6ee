/// @file
/// Internal: the first of all objects whose texts have one hash value.
#pragma once

#include "FlatTable.h"

#include <cstdint>
#include <map>
#include <utility>

namespace kestrel::graph
{

/// Objects by hash value and, among those of one value, by rank. Any number of objects may have the same
/// text, as nodes have before they are named: each change then costs the logarithm of their number.
template <class T>
class FirstOfHash
{
public:
    void insert(std::uint64_t hash, unsigned int rank, T* object)
    {
        if (Entry* const first = find(hash))
        {
            Entry const added{hash, rank, object};
            bool const comesFirst = rank < first->rank;
            Entry const& later = comesFirst ? *first : added;
            later_.emplace(std::pair(hash, later.rank), later.object);
            if (comesFirst) *first = added;
            return;
        }
        table_.reserveOneMore();
        table_.insert({hash, rank, object});
    }

    void erase(std::uint64_t hash, unsigned int rank) noexcept
    {
        Entry* const first = find(hash);
        if (first == nullptr) return;
        if (first->rank != rank)
        {
            later_.erase({hash, rank});
            return;
        }
        auto const second = later_.empty() ? later_.end() : later_.lower_bound({hash, 0});
        if (second == later_.end() || second->first.first != hash)
        {
            table_.erase(first);
            return;
        }
        *first = {hash, second->first.second, second->second};
        later_.erase(second);
    }

    /// The object of the lowest rank for which `isWanted` holds, or null.
    template <class IsWanted>
    T* findFirst(std::uint64_t hash, IsWanted isWanted) const
    {
        Entry const* const first = find(hash);
        if (first == nullptr) return nullptr;
        if (isWanted(*first->object)) return first->object;
        for (auto later = later_.lower_bound({hash, 0}); later != later_.end() && later->first.first == hash;
             ++later)
            if (isWanted(*later->second)) return later->second;
        return nullptr;
    }

    /// `visit(object)`, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        table_.forEach([&visit](Entry const& entry) { visit(*entry.object); });
        for (auto const& [hashAndRank, object] : later_) visit(*object);
    }

    void clear() noexcept
    {
        table_.clear();
        later_.clear();
    }

private:
    struct Entry
    {
        std::uint64_t textHash = 0;
        unsigned int rank = 0;
        T* object = nullptr;

        bool isFree() const { return object == nullptr; }
        std::uint64_t hash() const { return textHash; }
    };

    Entry* find(std::uint64_t hash) { return const_cast<Entry*>(std::as_const(*this).find(hash)); }
    Entry const* find(std::uint64_t hash) const
    {
        return table_.find(hash, [hash](Entry const& entry) { return entry.textHash == hash; });
    }

    FlatTable<Entry> table_;
    std::map<std::pair<std::uint64_t, unsigned int>, T*> later_; // all but the first of each value
};

} // namespace kestrel::graph
