#include "Commands.h"

#include "Grouping.h"
#include "Summary.h"
#include "Text.h"

#include <algorithm>
#include <cstddef>
#include <map>

namespace material_graph
{

using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;

namespace
{

using Arguments = std::vector<std::string>;
using Result = std::optional<std::string>;

struct Command
{
    Result (*run)(MaterialScene& scene, Arguments const& arguments);
    std::size_t fewestArguments;
    std::size_t mostArguments;
};

Result fail(MaterialScene& scene, char const* command, std::string const& text)
{
    scene.refMessages().pushError(command, KS_String(text));
    return std::nullopt;
}

MaterialNode* nodeNamed(MaterialScene& scene, char const* command, std::string const& name)
{
    MaterialNode* const node = scene.findNode(name);
    if (node == nullptr) fail(scene, command, "there is no node " + inQuotes(name));
    return node;
}

std::string describe(GraphConnection* connection)
{
    return static_cast<MaterialConnection*>(connection)->describe();
}

Result summary(MaterialScene& scene, Arguments const&)
{
    return toText(summarize(scene));
}

Result xml(MaterialScene& scene, Arguments const&)
{
    return std::string(scene.toXml());
}

Result html(MaterialScene& scene, Arguments const& arguments)
{
    MaterialNode* const node = nodeNamed(scene, "html", arguments[0]);
    if (node == nullptr) return std::nullopt;
    return std::string(node->asHTML()) + "\n";
}

Result connections(MaterialScene& scene, Arguments const& arguments)
{
    MaterialNode* const node = nodeNamed(scene, "connections", arguments[0]);
    if (node == nullptr) return std::nullopt;
    ArrayOfPtr<GraphConnection, KS_NO> list;
    node->getConnections(list, true, true, true, true);
    std::string text;
    for (GraphConnection* connection : list) text += describe(connection) + "\n";
    return text;
}

Result find(MaterialScene& scene, Arguments const& arguments)
{
    GraphNodePin* const pin = scene.findPin(arguments[0]);
    if (pin == nullptr) return fail(scene, "find", "there is no pin " + inQuotes(arguments[0]));
    std::string text(pin->getFullName());
    text.append(pin->isInputPin() ? ", input (" : ", output (").append(pin->getInfo()).append(")\n");
    ArrayOfPtr<GraphConnection, KS_NO> list;
    pin->getConnections(list, true);
    for (GraphConnection* connection : list) text += "  " + describe(connection) + "\n";
    return text;
}

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

Result groupNodes(MaterialScene& scene, Arguments const& arguments)
{
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
    if (name.isEmpty()) return fail(scene, "group", "the compound needs a name");
    if (owner.getNodeByName(name, false) != nullptr)
        return fail(scene, "group",
                    "the name " + inQuotes(arguments[0]) + " is taken in " + inQuotes(owner.getFullName()));
    GroupingChanges changes;
    group(scene, name, nodes, changes);
    return groupingResult(scene, "group", changes);
}

Result ungroupNode(MaterialScene& scene, Arguments const& arguments)
{
    MaterialNode* const compound = nodeNamed(scene, "ungroup", arguments[0]);
    if (compound == nullptr) return std::nullopt;
    if (compound->isRoot() || !compound->isCompound())
        return fail(scene, "ungroup", inQuotes(arguments[0]) + " is not a compound");
    GroupingChanges changes;
    ungroup(scene, *compound, changes);
    return groupingResult(scene, "ungroup", changes);
}

std::map<std::string, Command> const& commands()
{
    static std::map<std::string, Command> const table{
        {"summary", {summary, 0, 0}},     {"xml", {xml, 0, 0}},
        {"html", {html, 1, 1}},           {"connections", {connections, 1, 1}},
        {"find", {find, 1, 1}},           {"group", {groupNodes, 2, static_cast<std::size_t>(-1)}},
        {"ungroup", {ungroupNode, 1, 1}},
    };
    return table;
}

} // namespace

bool isCommand(std::string const& name, std::size_t numberOfArguments)
{
    auto const command = commands().find(name);
    return command != commands().end() && numberOfArguments >= command->second.fewestArguments &&
           numberOfArguments <= command->second.mostArguments;
}

std::optional<std::string> runCommand(MaterialScene& scene, std::string const& name,
                                      std::vector<std::string> const& arguments)
{
    return commands().at(name).run(scene, arguments);
}

} // namespace material_graph
