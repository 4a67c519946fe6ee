/// @file
/// Internal: a hash table whose entries lie side by side in one block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kestrel::graph
{

namespace detail
{

inline void prefetch([[maybe_unused]] void const* address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

} // namespace detail

/// Open addressing with linear probing. An `Entry` is default-constructible as a free place, moves without
/// failing, and has `bool isFree() const` and `std::uint64_t hash() const`.
///
/// Only `reserveOneMore` and copying allocate, so a caller can make room first and then change several tables
/// without failing in between.
template <class Entry>
class FlatTable
{
public:
    std::size_t size() const { return size_; }
    bool isEmpty() const { return size_ == 0; }

    /// The entry of that hash for which `isWanted` holds, or null. It is valid until the next change.
    template <class IsWanted>
    Entry* find(std::uint64_t hash, IsWanted isWanted)
    {
        return const_cast<Entry*>(std::as_const(*this).find(hash, isWanted));
    }
    template <class IsWanted>
    Entry const* find(std::uint64_t hash, IsWanted isWanted) const
    {
        if (places_.empty()) return nullptr;
        for (std::size_t i = home(hash); !places_[i].isFree(); i = next(i))
            if (isWanted(places_[i])) return &places_[i];
        return nullptr;
    }

    /// Begins to fetch the place where a search for this hash begins, while other work goes on. In a table
    /// that is larger than the caches, waiting for it is nearly all that a search costs.
    void prefetch(std::uint64_t hash) const
    {
        if (!places_.empty()) detail::prefetch(&places_[home(hash)]);
    }

    /// Makes sure that the next `insert` finds a place.
    void reserveOneMore()
    {
        if ((size_ + 1) * 4 > places_.size() * 3) reserve(size_ + 1);
    }

    /// Makes room for that many entries in all. REQUIRES: more than there is room for.
    void reserve(std::size_t count)
    {
        FlatTable larger;
        std::size_t places = 8;
        for (larger.shift_ = 61; count * 4 > places * 3; places *= 2) --larger.shift_;
        larger.places_ = std::vector<Entry>(places);
        for (Entry& entry : places_)
            if (!entry.isFree()) larger.insert(std::move(entry));
        *this = std::move(larger);
    }

    /// REQUIRES: `reserveOneMore` since the last insertion, or a removal.
    Entry* insert(Entry&& entry) noexcept
    {
        std::size_t i = home(entry.hash());
        while (!places_[i].isFree()) i = next(i);
        places_[i] = std::move(entry);
        ++size_;
        return &places_[i];
    }

    /// Entries behind the gap move up to where a search for them passes.
    void erase(Entry* entry) noexcept
    {
        auto gap = static_cast<std::size_t>(entry - places_.data());
        for (std::size_t i = next(gap); !places_[i].isFree(); i = next(i))
        {
            std::size_t const fromHome = (i - home(places_[i].hash())) & (places_.size() - 1);
            std::size_t const fromGap = (i - gap) & (places_.size() - 1);
            if (fromHome < fromGap) continue;
            places_[gap] = std::move(places_[i]);
            gap = i;
        }
        places_[gap] = Entry();
        --size_;
    }

    void clear() noexcept { *this = FlatTable(); }

    template <class Visit>
    void forEach(Visit visit) const
    {
        for (Entry const& entry : places_)
            if (!entry.isFree()) visit(entry);
    }

private:
    std::size_t home(std::uint64_t hash) const
    {
        return static_cast<std::size_t>((hash * 0x9E3779B97F4A7C15u) >> shift_);
    }
    std::size_t next(std::size_t i) const { return (i + 1) & (places_.size() - 1); }

    std::vector<Entry> places_; // a power of two, never full
    std::size_t size_ = 0;
    unsigned int shift_ = 64;
};

} // namespace kestrel::graph
