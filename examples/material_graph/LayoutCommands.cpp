#include "Command.h"
#include "LayoutDump.h"
#include "LayoutFile.h"
#include "LevelPlacement.h"
#include "Text.h"

#include "SourceFile.h"

namespace material_graph
{

using kestrel::_Wa;
using kestrel::Array;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;

namespace
{

Result save(Workspace& workspace, Arguments const& arguments)
{
    std::string const& file = arguments[0];
    if (isSameFile(file, workspace.document))
        return fail(workspace.scene, "layout save", inQuotes(file) + " is the document itself");
    placeAllLevels(workspace.layout, workspace.scene.root(), workspace.settings);
    std::string const error = saveLayout(file, workspace.layout);
    if (!error.empty())
        return fail(workspace.scene, "layout save", "cannot write " + inQuotes(file) + ": " + error);
    return std::string();
}

std::string line(std::size_t count, char const* what)
{
    return std::to_string(count) + " " + what + "\n";
}

// How much of the layout fits the graph that is open.
std::string describe(Workspace& workspace)
{
    Array<KS_String, _Wa> names;
    workspace.layout.getAllNodeNames(names);
    std::size_t known = 0;
    for (KS_String const& name : names)
        if (workspace.scene.findNode(name) != nullptr) ++known;
    return line(known, "nodes of this graph") + line(names.size() - known, "other nodes") +
           line(workspace.layout.getNotes().size(), "notes");
}

Result load(Workspace& workspace, Arguments const& arguments)
{
    std::string const error = loadLayout(arguments[0], workspace.layout);
    if (error.empty()) return describe(workspace);
    return fail(workspace.scene, "layout load", "cannot read " + inQuotes(arguments[0]) + ": " + error);
}

Result show(Workspace& workspace, Arguments const& arguments)
{
    std::string bytes;
    std::string const error = readWholeFile(arguments[0], bytes);
    if (!error.empty())
        return fail(workspace.scene, "layout show", "cannot read " + inQuotes(arguments[0]) + ": " + error);
    LayoutDump const dump = dumpLayout(bytes);
    if (!dump.defect.empty())
        fail(workspace.scene, "layout show", inQuotes(arguments[0]) + " is damaged: " + dump.defect);
    return dump.text;
}

GraphConnection* connectionNamed(MaterialScene& scene, KS_String const& name)
{
    for (GraphConnection* connection : scene.getGraphConnections())
        if (connection->getFullName() == name) return connection;
    return nullptr;
}

// A node that can be hidden or collapsed; null, and an error of the command, if it is none.
MaterialNode* partNamed(MaterialScene& scene, char const* command, std::string const& name)
{
    MaterialNode* const node = nodeNamed(scene, command, name);
    if (node == nullptr || !node->isRoot()) return node;
    fail(scene, command, inQuotes(name) + " is the document itself");
    return nullptr;
}

Result hide(Workspace& workspace, Arguments const& arguments)
{
    GraphLayout change;
    for (std::string const& name : arguments)
    {
        if (connectionNamed(workspace.scene, KS_String(name)) != nullptr)
        {
            change.insertConnectionVisible(KS_String(name), false);
            continue;
        }
        MaterialNode* const node = partNamed(workspace.scene, "layout hide", name);
        if (node == nullptr) return std::nullopt;
        change.insertNodeVisible(node->getFullName(), false);
    }
    workspace.layout.updateWithOther(change);
    return std::string();
}

Result collapse(Workspace& workspace, Arguments const& arguments)
{
    GraphLayout change;
    for (std::string const& name : arguments)
    {
        MaterialNode* const node = partNamed(workspace.scene, "layout collapse", name);
        if (node == nullptr) return std::nullopt;
        change.insertNodeCollapsed(node->getFullName(), true);
    }
    workspace.layout.updateWithOther(change);
    return std::string();
}

} // namespace

std::map<std::string, Command> const& layoutCommands()
{
    static std::map<std::string, Command> const commands{
        {"layout save", {save, 1, 1}},
        {"layout load", {load, 1, 1}},
        {"layout show", {show, 1, 1}},
        {"layout hide", {hide, 1, anyNumber}},
        {"layout collapse", {collapse, 1, anyNumber}},
    };
    return commands;
}

} // namespace material_graph
