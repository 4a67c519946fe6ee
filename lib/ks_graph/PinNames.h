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
        Name(std::string_view text) : front(text) {} // NOLINT: a text is a name
        Name(std::string_view begin, std::string_view end) : front(begin), back(end) {}

        std::uint64_t hash() const { return continuedHash(hashOf(front), back); }

        std::string_view front;
        std::string_view back;
    };

    /// The text of a key, made before anything changes.
    class Key
    {
    public:
        Key() = default;
        explicit Key(std::string_view text)
            : text_(new char[text.size()]),
              length_(static_cast<std::uint32_t>(text.size())),
              hash_(static_cast<std::uint32_t>(hashOf(text)))
        {
            std::copy(text.begin(), text.end(), text_.get());
        }

        std::string_view view() const { return {text_.get(), length_}; }
        std::uint32_t hash() const { return hash_; }
        bool isNothing() const { return text_ == nullptr; }

        bool is(Name const& name) const
        {
            return length_ == name.front.size() + name.back.size() && view().starts_with(name.front) &&
                   view().ends_with(name.back);
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
    bool insert(std::string_view name, GraphNodePin* pin)
    {
        if (entryOf(name) != nullptr) return false;
        Key key(name);
        entries_.reserveOneMore();
        entries_.insert({std::move(key), pin});
        return true;
    }

    bool contains(std::string_view name) const { return entryOf(name) != nullptr; }

    /// Null for an unknown name.
    GraphNodePin* find(std::string_view name) const
    {
        Entry const* const entry = entryOf(name);
        return entry != nullptr ? entry->pin : nullptr;
    }

    /// False for an unknown name.
    bool erase(std::string_view name) noexcept
    {
        Entry* const entry = entryOf(name);
        if (entry != nullptr) entries_.erase(entry);
        return entry != nullptr;
    }

    /// False for an unknown old name. A new name that is taken keeps its pin.
    bool rekey(Name const& oldName, Key&& newKey) noexcept
    {
        Entry* const entry = entryOf(oldName);
        if (entry == nullptr) return false;
        GraphNodePin* const pin = entry->pin;
        entries_.erase(entry);
        if (entryOf(newKey.view()) == nullptr) entries_.insert({std::move(newKey), pin});
        return true;
    }

    /// The pin of the first name, in the order of the bytes, for which `isWanted` holds; null if there is
    /// none.
    template <class IsWanted>
    GraphNodePin* findFirst(IsWanted isWanted) const
    {
        Entry const* first = nullptr;
        entries_.forEach(
            [&](Entry const& entry)
            {
                if (isWanted(entry.key.view()) && (first == nullptr || entry.key.view() < first->key.view()))
                    first = &entry;
            });
        return first != nullptr ? first->pin : nullptr;
    }

    /// `visit(name, pin)`, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        entries_.forEach([&visit](Entry const& entry) { visit(entry.key.view(), entry.pin); });
    }

private:
    struct Entry
    {
        Key key;
        GraphNodePin* pin = nullptr;

        bool isFree() const { return key.isNothing(); }
        std::uint64_t hash() const { return key.hash(); }
    };

    Entry* entryOf(Name const& name) { return const_cast<Entry*>(std::as_const(*this).entryOf(name)); }
    Entry const* entryOf(Name const& name) const
    {
        auto const hash = static_cast<std::uint32_t>(name.hash());
        return entries_.find(hash, [&name, hash](Entry const& entry)
                             { return entry.key.hash() == hash && entry.key.is(name); });
    }

    FlatTable<Entry> entries_;
};

} // namespace kestrel::graph
