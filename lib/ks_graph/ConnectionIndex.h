/// @file
/// Internal: where each connection stands in a long list, so that a removal need not search it.
#pragma once

#include "FlatTable.h"
#include "Hashing.h"

#include <foundation/ArrayOfPtr.h>
#include <ks_graph/GraphConnection.h>

#include <cstdint>

namespace kestrel::graph
{

/// Kept beside one list and told of every change. It never follows the pointers: a list may hold connections
/// that are gone, as the array of a copied scene does. Null, which only a host puts into a list, has no
/// entry.
///
/// A connection that stands in the list more than once is searched all the same: its first entry has to go.
class ConnectionIndex
{
public:
    using List = ArrayOfPtr<GraphConnection, KS_NO>;

    /// Below this length a search is faster than the index.
    static constexpr unsigned int longList = 64;

    explicit ConnectionIndex(List const& list)
    {
        positions_.reserve(list.size());
        for (unsigned int i = 0; i < list.size(); ++i) added(list, i);
    }

    /// After an element was appended at `index`.
    void added(List const& list, unsigned int index)
    {
        if (list[index] == nullptr) return;
        if (Entry* const known = entryOf(list[index]))
        {
            unsigned int const other = known->position;
            bool const isStale = other != repeated && (other >= list.size() || list[other] != list[index]);
            known->position = isStale ? index : repeated;
            return;
        }
        positions_.reserveOneMore();
        positions_.insert({list[index], index});
    }

    /// The index of the first entry, as far as the index knows; `npos` if there is none.
    unsigned int find(List const& list, GraphConnection const* connection)
    {
        if (connection == nullptr) return list.find(connection);
        Entry const* const entry = entryOf(connection);
        if (entry == nullptr) return List::npos;
        return entry->position != repeated ? entry->position : list.find(connection);
    }

    /// After `connection` was taken out at `index`, and the last element, if there is one left, moved there.
    void removed(List const& list, GraphConnection const* connection, unsigned int index)
    {
        Entry* const entry = entryOf(connection);
        if (entry != nullptr && entry->position != repeated) positions_.erase(entry);
        if (index >= list.size()) return;
        Entry* const moved = entryOf(list[index]);
        if (moved != nullptr && moved->position != repeated) moved->position = index;
    }

private:
    static constexpr unsigned int repeated = 0xFFFFFFFFu;

    struct Entry
    {
        GraphConnection const* connection = nullptr;
        unsigned int position = 0;

        bool isFree() const { return connection == nullptr; }
        std::uint64_t hash() const { return hashOf(connection); }
    };

    Entry* entryOf(GraphConnection const* connection)
    {
        return positions_.find(hashOf(connection),
                               [connection](Entry const& entry) { return entry.connection == connection; });
    }

    FlatTable<Entry> positions_;
};

} // namespace kestrel::graph
