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
    /// When it fails, the object is not here; what was before is.
    void insert(std::uint32_t hash, unsigned int rank, T* object)
    {
        if (!waiting_.isFree()) settle(waiting_);
        waiting_ = {hash, rank, object};
        table_.prefetch(hash);
    }

    void erase(std::uint32_t hash, unsigned int rank) noexcept
    {
        if (waiting_.isOf(hash) && waiting_.rank == rank)
        {
            waiting_ = Entry();
            return;
        }
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
    T* findFirst(std::uint32_t hash, IsWanted isWanted) const
    {
        Entry const found = findSettled(hash, isWanted);
        bool const waitingIsFirst = waiting_.isOf(hash) && (found.isFree() || waiting_.rank < found.rank) &&
                                    isWanted(*waiting_.object);
        return waitingIsFirst ? waiting_.object : found.object;
    }

    /// `visit(object)`, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        table_.forEach([&visit](Entry const& entry) { visit(*entry.object); });
        for (auto const& [hashAndRank, object] : later_) visit(*object);
        if (!waiting_.isFree()) visit(*waiting_.object);
    }

    void clear() noexcept
    {
        table_.clear();
        later_.clear();
        waiting_ = Entry();
    }

private:
    struct Entry
    {
        std::uint32_t textHash = 0;
        unsigned int rank = 0;
        T* object = nullptr;

        bool isFree() const { return object == nullptr; }
        bool isOf(std::uint32_t wantedHash) const { return !isFree() && textHash == wantedHash; }
        std::uint64_t hash() const { return textHash; }
    };

    void settle(Entry entry)
    {
        Entry* const first = find(entry.textHash);
        if (first == nullptr)
        {
            table_.reserveOneMore();
            table_.insert(std::move(entry));
            return;
        }
        Entry const& later = entry.rank < first->rank ? *first : entry;
        later_.emplace(std::pair(later.textHash, later.rank), later.object);
        if (entry.rank < first->rank) *first = entry;
    }

    template <class IsWanted>
    Entry findSettled(std::uint32_t hash, IsWanted isWanted) const
    {
        Entry const* const first = find(hash);
        if (first == nullptr) return {};
        if (isWanted(*first->object)) return *first;
        for (auto later = later_.lower_bound({hash, 0}); later != later_.end() && later->first.first == hash;
             ++later)
            if (isWanted(*later->second)) return {hash, later->first.second, later->second};
        return {};
    }

    Entry* find(std::uint32_t hash) { return const_cast<Entry*>(std::as_const(*this).find(hash)); }
    Entry const* find(std::uint32_t hash) const
    {
        return table_.find(hash, [hash](Entry const& entry) { return entry.textHash == hash; });
    }

    FlatTable<Entry> table_;
    // What was inserted last: a node is made and then gets its owner, and meanwhile its place in the table is
    // on the way into the cache.
    Entry waiting_;
    std::map<std::pair<std::uint32_t, unsigned int>, T*> later_; // all but the first of each value
};

} // namespace kestrel::graph
