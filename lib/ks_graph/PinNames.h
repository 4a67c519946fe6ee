/// @file
/// Internal: the registered pins by full name.
#pragma once

#include "FlatTable.h"
#include "Hashing.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace kestrel::graph
{

class GraphNodePin;

/// A key is the full name that a pin had when it was registered or re-keyed last, whatever its name is by
/// now.
class PinNames
{
public:
    /// A name in two pieces, so that a part that many have in common need not be copied.
    struct Name
    {
        Name(HashedText const& text) : front(text) {} // NOLINT: a text is a name
        Name(HashedText const& begin, std::string_view end) : front(begin), back(end) {}

        std::uint64_t hash() const { return continuedHash(front.hash, back); }

        HashedText front;
        std::string_view back;
    };

    /// The text of a key, made before anything changes.
    class Key
    {
    public:
        Key() = default;
        explicit Key(HashedText const& name)
            : text_(new char[name.text.size()]),
              length_(static_cast<std::uint32_t>(name.text.size())),
              hash_(shortHash(name.hash))
        {
            std::copy(name.text.begin(), name.text.end(), text_.get());
        }

        std::string_view view() const { return {text_.get(), length_}; }
        std::uint32_t hash() const { return hash_; }
        bool isNothing() const { return text_ == nullptr; }

        bool is(Name const& name) const
        {
            return length_ == name.front.text.size() + name.back.size() &&
                   view().starts_with(name.front.text) && view().ends_with(name.back);
        }

    private:
        std::unique_ptr<char[]> text_;
        std::uint32_t length_ = 0;
        std::uint32_t hash_ = 0;
    };

    PinNames() = default;
    PinNames(PinNames&&) = default;
    PinNames& operator=(PinNames&&) = default;
    PinNames(PinNames const& other)
    {
        other.forEach([this](std::string_view name, GraphNodePin* pin) { insert(name, pin); });
    }

    /// False, with nothing changed, when the name is taken.
    bool insert(HashedText const& name, GraphNodePin* pin)
    {
        settle();
        if (contains(name)) return false;
        Key key(name);
        entries_.reserveOneMore();
        wait({std::move(key), pin});
        return true;
    }

    bool contains(HashedText const& name) const { return found(name) != nullptr; }

    /// Null for an unknown name.
    GraphNodePin* find(HashedText const& name) const
    {
        Entry const* const entry = found(name);
        return entry != nullptr ? entry->pin : nullptr;
    }

    /// False for an unknown name.
    bool erase(HashedText const& name) noexcept
    {
        settle();
        Entry* const entry = entryOf(name);
        if (entry != nullptr) entries_.erase(entry);
        return entry != nullptr;
    }

    /// Ahead of an operation on this name.
    void prefetch(std::uint64_t hash) const { entries_.prefetch(shortHash(hash)); }

    /// False for an unknown old name. A new name that is taken keeps its pin.
    bool rekey(Name const& oldName, Key&& newKey) noexcept
    {
        if (isWaiting(oldName) && entryOf(oldName) == nullptr)
        {
            wait({std::move(newKey), waiting_.pin});
            return true;
        }
        settle();
        Entry* const entry = entryOf(oldName);
        if (entry == nullptr) return false;
        wait({std::move(newKey), entry->pin});
        entries_.erase(entry);
        return true;
    }

    /// The pin of the first name, in the order of the bytes, for which `isWanted` holds; null if there is
    /// none.
    template <class IsWanted>
    GraphNodePin* findFirst(IsWanted isWanted) const
    {
        std::string_view first;
        GraphNodePin* found = nullptr;
        forEach(
            [&](std::string_view name, GraphNodePin* pin)
            {
                if (!isWanted(name) || (found != nullptr && first <= name)) return;
                first = name;
                found = pin;
            });
        return found;
    }

    /// `visit(name, pin)`, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        entries_.forEach([&visit](Entry const& entry) { visit(entry.key.view(), entry.pin); });
        if (!waiting_.isFree() && entryOf(waiting_.key) == nullptr) visit(waiting_.key.view(), waiting_.pin);
    }

private:
    struct Entry
    {
        Key key;
        GraphNodePin* pin = nullptr;

        bool isFree() const { return key.isNothing(); }
        std::uint64_t hash() const { return key.hash(); }
    };

    Entry const* entryOf(Key const& key) const { return entryOf(Name({key.view(), key.hash()})); }
    Entry* entryOf(Name const& name) { return const_cast<Entry*>(std::as_const(*this).entryOf(name)); }
    Entry const* entryOf(Name const& name) const
    {
        std::uint32_t const hash = shortHash(name.hash());
        return entries_.find(hash, [&name, hash](Entry const& entry)
                             { return entry.key.hash() == hash && entry.key.is(name); });
    }

    Entry const* found(HashedText const& name) const
    {
        if (Entry const* const entry = entryOf(name)) return entry;
        return isWaiting(name) ? &waiting_ : nullptr;
    }

    bool isWaiting(Name const& name) const { return !waiting_.isFree() && waiting_.key.is(name); }

    void wait(Entry&& entry) noexcept
    {
        waiting_ = std::move(entry);
        prefetch(waiting_.hash());
    }

    void settle() noexcept
    {
        if (waiting_.isFree()) return;
        if (entryOf(waiting_.key) == nullptr) entries_.insert(std::move(waiting_));
        waiting_ = Entry();
    }

    FlatTable<Entry> entries_;
    // What was registered or re-keyed last, as long as nothing else changes: a pin is made and then named, so
    // its first name need not go into the table, and meanwhile the place of the second is on the way into the
    // cache. A name that is taken there keeps its pin.
    Entry waiting_;
};

} // namespace kestrel::graph
