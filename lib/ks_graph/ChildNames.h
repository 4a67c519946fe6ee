/// @file
/// Internal: the children of a node by name.
#pragma once

#include "FirstOfHash.h"

#include <ks_graph/GraphNodeBase.h>

#include <cstdint>
#include <string_view>

namespace kestrel::graph
{

/// The children of a regular list (`ChildList`), all of plain names, by what is left of their names without
/// regard to case.
class ChildNames
{
public:
    ChildNames();

    /// Which letters belong together is a matter of the locale. False when it has changed since the children
    /// were inserted, and the name has a letter that may be concerned.
    bool isCurrentFor(std::string_view name) const;

    void insert(GraphNodeBase& child);
    void erase(GraphNodeBase const& child) noexcept;

    /// The first child in list order.
    GraphNodeBase* find(KS_String const& name, bool caseSensitive) const;

private:
    FirstOfHash<GraphNodeBase> children_;
    std::uint64_t letters_;
};

} // namespace kestrel::graph
