#include "Command.h"
#include "GraphPicture.h"
#include "HelpPage.h"
#include "LevelPlacement.h"
#include "Summary.h"
#include "Text.h"

namespace material_graph
{

using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodePin;

namespace
{

std::string describe(GraphConnection* connection)
{
    return static_cast<MaterialConnection*>(connection)->describe();
}

Result summary(Workspace& workspace, Arguments const&)
{
    return toText(summarize(workspace.scene));
}

Result xml(Workspace& workspace, Arguments const&)
{
    return std::string(workspace.scene.toXml());
}

Result html(Workspace& workspace, Arguments const& arguments)
{
    MaterialNode* const node = nodeNamed(workspace.scene, "html", arguments[0]);
    if (node == nullptr) return std::nullopt;
    return helpPage(*node, workspace.settings);
}

Result svg(Workspace& workspace, Arguments const& arguments)
{
    MaterialNode* level = &workspace.scene.root();
    if (!arguments.empty()) level = nodeNamed(workspace.scene, "svg", arguments[0]);
    if (level == nullptr) return std::nullopt;
    if (!level->isCompound())
        return fail(workspace.scene, "svg", inQuotes(arguments[0]) + " is not a compound");
    placeLevel(workspace.layout, *level, workspace.settings);
    return drawLevel(workspace.scene, *level, workspace.layout, workspace.settings);
}

Result connections(Workspace& workspace, Arguments const& arguments)
{
    MaterialNode* const node = nodeNamed(workspace.scene, "connections", arguments[0]);
    if (node == nullptr) return std::nullopt;
    ArrayOfPtr<GraphConnection, KS_NO> list;
    node->getConnections(list, true, true, true, true);
    std::string text;
    for (GraphConnection* connection : list) text += describe(connection) + "\n";
    return text;
}

Result find(Workspace& workspace, Arguments const& arguments)
{
    MaterialScene& scene = workspace.scene;
    GraphNodePin* const pin = scene.findPin(arguments[0]);
    if (pin == nullptr) return fail(scene, "find", "there is no pin " + inQuotes(arguments[0]));
    std::string text(pin->getFullName());
    text.append(pin->isInputPin() ? ", input (" : ", output (").append(pin->getInfo()).append(")\n");
    ArrayOfPtr<GraphConnection, KS_NO> list;
    pin->getConnections(list, true);
    for (GraphConnection* connection : list) text += "  " + describe(connection) + "\n";
    return text;
}

} // namespace

std::map<std::string, Command> const& queryCommands()
{
    static std::map<std::string, Command> const commands{
        {"summary", {summary, 0, 0}},         {"xml", {xml, 0, 0}},   {"html", {html, 1, 1}},
        {"connections", {connections, 1, 1}}, {"find", {find, 1, 1}}, {"svg", {svg, 0, 1}},
    };
    return commands;
}

} // namespace material_graph
