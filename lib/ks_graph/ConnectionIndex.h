/// @file
/// Internal: where each connection stands in a long list, so that a removal need not search it.
#pragma once

#include <foundation/ArrayOfPtr.h>
#include <ks_graph/GraphConnection.h>

#include <unordered_map>

namespace kestrel::graph
{

/// Kept beside one list and told of every change. It never follows the pointers: a list may hold connections
/// that are gone, as the array of a copied scene does.
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
        auto const [entry, isNew] = positions_.emplace(list[index], index);
        if (isNew) return;
        unsigned int const other = entry->second;
        bool const isStale = other != repeated && (other >= list.size() || list[other] != list[index]);
        entry->second = isStale ? index : repeated;
    }

    /// The index of the first entry, as far as the index knows; `npos` if there is none.
    unsigned int find(List const& list, GraphConnection const* connection) const
    {
        auto const entry = positions_.find(connection);
        if (entry == positions_.end()) return List::npos;
        return entry->second != repeated ? entry->second : list.find(connection);
    }

    /// After `connection` was taken out at `index`, and the last element, if there is one left, moved there.
    void removed(List const& list, GraphConnection const* connection, unsigned int index)
    {
        auto const entry = positions_.find(connection);
        if (entry != positions_.end() && entry->second != repeated) positions_.erase(entry);
        if (index >= list.size()) return;
        auto const moved = positions_.find(list[index]);
        if (moved != positions_.end() && moved->second != repeated) moved->second = index;
    }

private:
    static constexpr unsigned int repeated = 0xFFFFFFFFu;

    std::unordered_map<GraphConnection const*, unsigned int> positions_;
};

} // namespace kestrel::graph
