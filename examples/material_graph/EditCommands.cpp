#include "Command.h"
#include "Grouping.h"
#include "LayoutFollowing.h"
#include "Summary.h"
#include "Text.h"

#include <algorithm>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;

namespace
{

void appendLines(std::string& text, char const* label, std::vector<std::string> const& lines)
{
    for (std::string const& line : lines) text.append(label).append(" ").append(line).append("\n");
}

Result groupingResult(MaterialScene& scene, char const* command, GroupingChanges const& changes)
{
    if (changes.refused != 0)
        fail(scene, command, std::to_string(changes.refused) + " connections were refused and are lost");
    std::string text;
    appendLines(text, "created", changes.created);
    appendLines(text, "removed", changes.removed);
    appendLines(text, "renamed", changes.renamed);
    return text + "\n" + toText(summarize(scene));
}

// Why a node cannot be put into a group with the others; empty when it can.
std::string obstacleToGroup(MaterialNode& node, GraphNodeBase* owner)
{
    std::string const subject = inQuotes(node.getFullName()) + " ";
    if (node.isRoot()) return subject + "is the document itself";
    if (node.isInterface()) return subject + "is an interface node and belongs to its compound";
    if (node.getNodeOwner() != owner) return subject + "is not beside the first node";
    return {};
}

// Why a node in that owner cannot get the name, `self` being the one that has it already, if any does; empty
// when it can.
std::string obstacleToName(KS_String const& name, GraphNodeBase& owner, GraphNodeBase* self)
{
    if (name.isEmpty()) return "the name is empty";
    GraphNodeBase* const holder = owner.getNodeByName(name, false);
    if (holder == nullptr || holder == self) return {};
    return "the name " + inQuotes(name) + " is taken in " + inQuotes(owner.getFullName());
}

Result groupNodes(Workspace& workspace, Arguments const& arguments)
{
    MaterialScene& scene = workspace.scene;
    std::vector<MaterialNode*> nodes;
    for (std::size_t i = 1; i < arguments.size(); ++i)
    {
        MaterialNode* const node = nodeNamed(scene, "group", arguments[i]);
        if (node == nullptr) return std::nullopt;
        std::string const obstacle =
            obstacleToGroup(*node, (nodes.empty() ? node : nodes.front())->getNodeOwner());
        if (!obstacle.empty()) return fail(scene, "group", obstacle);
        if (std::find(nodes.begin(), nodes.end(), node) == nodes.end()) nodes.push_back(node);
    }
    KS_String const name(arguments[0]);
    GraphNodeBase& owner = *nodes.front()->getNodeOwner();
    std::string const obstacle = obstacleToName(name, owner, nullptr);
    if (!obstacle.empty()) return fail(scene, "group", obstacle);
    GroupingChanges changes;
    MaterialNode& compound = group(scene, name, nodes, changes);
    followGrouping(workspace.layout, workspace.settings, compound, changes.moved);
    return groupingResult(scene, "group", changes);
}

Result ungroupNode(Workspace& workspace, Arguments const& arguments)
{
    MaterialScene& scene = workspace.scene;
    MaterialNode* const compound = nodeNamed(scene, "ungroup", arguments[0]);
    if (compound == nullptr) return std::nullopt;
    if (compound->isRoot() || !compound->isCompound())
        return fail(scene, "ungroup", inQuotes(arguments[0]) + " is not a compound");
    FormerCompound const former(*compound);
    GroupingChanges changes;
    ungroup(scene, *compound, changes);
    followUngrouping(workspace.layout, workspace.settings, former, changes.moved);
    return groupingResult(scene, "ungroup", changes);
}

Result renameNode(Workspace& workspace, Arguments const& arguments)
{
    MaterialScene& scene = workspace.scene;
    MaterialNode* const node = nodeNamed(scene, "rename", arguments[0]);
    if (node == nullptr) return std::nullopt;
    if (node->isRoot()) return fail(scene, "rename", inQuotes(arguments[0]) + " is the document itself");
    KS_String const name(arguments[1]);
    std::string const obstacle = obstacleToName(name, *node->getNodeOwner(), node);
    if (!obstacle.empty()) return fail(scene, "rename", obstacle);
    MovedNode const moved{node, node->getFullName()};
    node->setName(name);
    followRenames(workspace.layout, {moved});
    return "renamed " + std::string(moved.nameBefore) + " -> " + std::string(node->getFullName()) + "\n";
}

} // namespace

std::map<std::string, Command> const& editCommands()
{
    static std::map<std::string, Command> const commands{
        {"group", {groupNodes, 2, anyNumber}},
        {"ungroup", {ungroupNode, 1, 1}},
        {"rename", {renameNode, 2, 2}},
    };
    return commands;
}

} // namespace material_graph
