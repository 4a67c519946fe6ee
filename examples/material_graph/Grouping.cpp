#include "Grouping.h"

#include <map>

namespace material_graph
{

using kestrel::_Wa;
using kestrel::Array;
using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;

namespace
{

using Renames = std::map<KS_String, KS_String>;

std::string textOf(KS_String const& text)
{
    return std::string(text);
}

// The moves rename first and remove connections afterwards: the pins have their new names by then.
std::string nameBefore(GraphNodePin* pin, Renames const& renames)
{
    KS_String const now = pin->getFullName();
    auto const renamed = renames.find(now);
    return textOf(renamed != renames.end() ? renamed->second : now);
}

void listRemoved(Array<GraphConnection, _Wa> const& connections, Renames const& renames,
                 GroupingChanges& changes)
{
    for (GraphConnection const& connection : connections)
        changes.removed.push_back("connection " + nameBefore(connection.getSourcePin(), renames) + " > " +
                                  nameBefore(connection.getTargetPin(), renames));
}

void listCreated(ArrayOfPtr<GraphConnection, KS_NO> const& connections, GroupingChanges& changes)
{
    for (GraphConnection* connection : connections)
    {
        if (connection != nullptr)
            changes.created.push_back("connection " + textOf(connection->getFullName()));
        else
            ++changes.refused;
    }
}

void listRenamed(Renames const& renames, GroupingChanges& changes)
{
    for (auto const& [now, before] : renames)
        changes.renamed.push_back(textOf(before) + " -> " + textOf(now));
}

// The pins have kept their names; what feeds the compound is still wired to it, though it feeds the moved
// nodes now.
void listRemaining(GraphNodeBase& node, GroupingChanges& changes)
{
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    node.getConnections(connections, true, true, true, true);
    for (GraphConnection* connection : connections)
        changes.removed.push_back("connection " + textOf(connection->getFullName()));
}

void listCompound(MaterialNode& compound, std::vector<std::string>& out)
{
    out.push_back("compound " + textOf(compound.getFullName()));
    for (GraphNodeBase* node : compound.getNodes())
        if (node->isInterface()) out.push_back("interface node " + textOf(node->getFullName()));
    for (GraphNodePin* pin : compound.getNodePins()) out.push_back("pin " + textOf(pin->getFullName()));
}

std::vector<GraphNodeBase*> splitOffInterfaces(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes,
                                               std::vector<MovedNode>& others)
{
    std::vector<GraphNodeBase*> interfaces;
    for (GraphNodeBase* node : nodes)
    {
        if (node->isInterface())
            interfaces.push_back(node);
        else
            others.push_back({static_cast<MaterialNode*>(node), node->getFullName()});
    }
    return interfaces;
}

} // namespace

MaterialNode& group(MaterialScene& scene, KS_String const& name, std::vector<MaterialNode*> const& nodes,
                    GroupingChanges& changes)
{
    MaterialNode& compound = scene.addCompound(name, *nodes.front()->getNodeOwner());
    ArrayOfPtr<GraphNodeBase, KS_NO> moved;
    for (MaterialNode* node : nodes)
    {
        moved.append(node);
        changes.moved.push_back({node, node->getFullName()});
    }

    Renames renames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces;
    std::map<GraphNodeBase*, GraphNodeBase*> outputInterfaces;
    ArrayOfPtr<GraphNodeBase, KS_NO> newInterfaceNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newCompoundPins;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> outer;
    ArrayOfPtr<GraphConnection, KS_NO> inner;
    scene.moveNodesToCompound(moved, &compound, renames, inputInterfaces, outputInterfaces, newInterfaceNodes,
                              newCompoundPins, removed, outer, inner);

    listCompound(compound, changes.created);
    listCreated(outer, changes);
    listCreated(inner, changes);
    listRemoved(removed, renames, changes);
    listRenamed(renames, changes);
    return compound;
}

void ungroup(MaterialScene& scene, MaterialNode& compound, GroupingChanges& changes)
{
    // The interface nodes are listed, too: they stay, but an input that is wired straight to an output is
    // replaced.
    ArrayOfPtr<GraphNodeBase, KS_NO> children = compound.getNodes();
    std::vector<GraphNodeBase*> const interfaces = splitOffInterfaces(children, changes.moved);

    Renames renames;
    Array<GraphConnection, _Wa> removedOuter;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> created;
    ArrayOfPtr<GraphConnection, KS_NO> spare;
    scene.removeNodesFromCompound(&compound, children, renames, removedOuter, removed, created, spare);

    listCreated(created, changes);
    listRemoved(removedOuter, renames, changes);
    listRemoved(removed, renames, changes);
    listRenamed(renames, changes);
    listRemaining(compound, changes);
    listCompound(compound, changes.removed);
    for (GraphNodeBase* node : interfaces) scene.deleteNode(*node);
    scene.deleteNode(compound);
}

} // namespace material_graph
