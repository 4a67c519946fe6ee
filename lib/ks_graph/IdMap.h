/// @file
/// Internal: objects by id.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace kestrel::graph
{

/// Pointers by id, walked in ascending order of the ids. Ids that lie close together, as nearly all of a
/// scene do, have their pointers side by side in one block; the others are in a map beside it, and so are
/// null pointers, which stand for "no entry" in the block.
template <class T>
class IdMap
{
public:
    /// Behind every id.
    static constexpr std::uint64_t endOfIds = std::uint64_t{1} << 32;

    std::size_t size() const { return inBlock_ + scattered_.size(); }

    bool contains(unsigned int id) const { return inBlock(id) != nullptr || scattered_.count(id) != 0; }

    /// Null for an unknown id.
    T* find(unsigned int id) const
    {
        if (T* const object = inBlock(id)) return object;
        if (scattered_.empty()) return nullptr;
        auto const entry = scattered_.find(id);
        return entry != scattered_.end() ? entry->second : nullptr;
    }

    /// False, with nothing changed, when the id is taken.
    bool insert(unsigned int id, T* object)
    {
        if (inBlock_ == 0)
        {
            block_.clear();
            first_ = id;
        }
        if (object == nullptr || id < first_ || id - first_ >= reach())
            return inBlock(id) == nullptr && scattered_.emplace(id, object).second;
        if (contains(id)) return false;
        std::size_t const place = id - first_;
        if (place >= block_.size()) block_.resize(place + 1);
        block_[place] = object;
        ++inBlock_;
        return true;
    }

    /// Puts another object, not null, in the place of a known id.
    void assign(unsigned int id, T* object) noexcept
    {
        if (inBlock(id) != nullptr)
            block_[id - first_] = object;
        else
            scattered_.find(id)->second = object;
    }

    /// False for an unknown id.
    bool erase(unsigned int id)
    {
        if (inBlock(id) == nullptr) return scattered_.erase(id) != 0;
        block_[id - first_] = nullptr;
        --inBlock_;
        return true;
    }

    void clear() noexcept { *this = IdMap(); }

    /// `visit(id, object)` for the ids from `first` up to, but without, `end`, in ascending order until it
    /// returns false. Entries may come and go meanwhile.
    template <class Visit>
    void walk(std::uint64_t first, std::uint64_t end, Visit visit) const
    {
        for (std::uint64_t next = first; next < end;)
        {
            std::uint64_t const id = std::min(nextInBlock(next), nextScattered(next));
            if (id >= end || !visit(static_cast<unsigned int>(id), find(static_cast<unsigned int>(id))))
                return;
            next = id + 1;
        }
    }

    /// `visit(id, object)` for all, by ascending id. Entries may come and go meanwhile.
    template <class Visit>
    void forEach(Visit visit) const
    {
        walk(0, endOfIds,
             [&visit](unsigned int id, T* object)
             {
                 visit(id, object);
                 return true;
             });
    }

private:
    static constexpr std::uint64_t none = ~std::uint64_t{0};

    // As many places as the block may have: one in three is taken, at least.
    std::uint64_t reach() const { return std::uint64_t{inBlock_} * 2 + 64; }

    T* inBlock(unsigned int id) const
    {
        return id >= first_ && id - first_ < block_.size() ? block_[id - first_] : nullptr;
    }

    std::uint64_t nextInBlock(std::uint64_t from) const
    {
        std::size_t place = from > first_ ? static_cast<std::size_t>(from - first_) : 0;
        while (place < block_.size() && block_[place] == nullptr) ++place;
        return place < block_.size() ? std::uint64_t{first_} + place : none;
    }

    std::uint64_t nextScattered(std::uint64_t from) const
    {
        if (scattered_.empty()) return none;
        auto const entry = scattered_.lower_bound(static_cast<unsigned int>(from));
        return entry != scattered_.end() ? entry->first : none;
    }

    std::vector<T*> block_;
    unsigned int first_ = 0;
    std::size_t inBlock_ = 0;
    std::map<unsigned int, T*> scattered_;
};

} // namespace kestrel::graph
