/// @file
#pragma once

#include "MaterialScene.h"

#include <string>
#include <vector>

namespace material_graph
{

/// A node that has another place in the tree, or another name, than before.
struct MovedNode
{
    MaterialNode* node;
    kestrel::KS_String nameBefore;
};

/// What a grouping changed, one line each. Full names are those that were valid when the thing was there:
/// before the change for what was removed, after it for what was created.
struct GroupingChanges
{
    std::vector<std::string> created;
    std::vector<std::string> removed;
    /// "<full name before> -> <full name after>", for the pins of moved nodes.
    std::vector<std::string> renamed;
    std::vector<MovedNode> moved;
    /// Connections that could not be made again.
    unsigned int refused = 0;
};

/// Moves nodes into a new compound beside them.
/// REQUIRES: at least one node, each once, all of one owner, no interface node and not the root.
MaterialNode& group(MaterialScene& scene, kestrel::KS_String const& name,
                    std::vector<MaterialNode*> const& nodes, GroupingChanges& changes);

/// Moves what is in the compound out of it, wired as before, and deletes the compound with its interface
/// nodes. REQUIRES: a compound, not the root.
void ungroup(MaterialScene& scene, MaterialNode& compound, GroupingChanges& changes);

} // namespace material_graph
