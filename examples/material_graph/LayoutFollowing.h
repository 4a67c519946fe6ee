/// @file
/// What keeps a layout right while its graph changes: nothing tells a layout of a rename.
#pragma once

#include "Grouping.h"

#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphSettings.h>

#include <vector>

namespace material_graph
{

/// Gives every node at and below the moved ones, and every connection of them, its values under its new name.
void followRenames(kestrel::graph::GraphLayout& layout, std::vector<MovedNode> const& moved);

/// After `group`: the names follow, and the compound stands where the nodes stood, its interface nodes on
/// both sides of them.
void followGrouping(kestrel::graph::GraphLayout& layout, kestrel::graph::GraphSettings const& settings,
                    MaterialNode& compound, std::vector<MovedNode> const& moved);

/// What was known of a compound, kept over the end of it, for `followUngrouping`.
struct FormerCompound
{
    explicit FormerCompound(MaterialNode& compound);

    kestrel::KS_String name;
    kestrel::graph::GraphNodeBase& owner;
    std::vector<kestrel::KS_String> interfaceNames;
};

/// After `ungroup`: the names follow, and the nodes, arranged among each other as before, come near the place
/// where the compound stood, with its notes.
void followUngrouping(kestrel::graph::GraphLayout& layout, kestrel::graph::GraphSettings const& settings,
                      FormerCompound const& compound, std::vector<MovedNode> const& moved);

} // namespace material_graph
