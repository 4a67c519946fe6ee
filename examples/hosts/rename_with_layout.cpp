// A layout knows nodes and connections by their full names, and nothing tells it of a rename. This host
// carries it along when a node is renamed and when nodes are moved into a compound.

#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

unsigned int const noLimit = 0xFFFFFFFF;

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using ConnectionValues = Array<GraphConnection, _Wa>;
using Dictionary = std::map<KS_String const, KS_String>;
using NamesBefore = std::map<GraphNodeBase*, KS_String>;

// The moved nodes, as the pins tell it: a move reports the new full name of each pin, and the one before. A
// node without pins is not among them; a host that has such nodes notes their names before it moves them.
NamesBefore namesBefore(GraphScene const& scene, std::map<KS_String, KS_String> const& pinRenames)
{
    NamesBefore names;
    for (auto const& [now, before] : pinRenames)
    {
        GraphNodePin* const pin = scene.getPinPtrByFullName(now);
        names[pin->getParentGraphNodePtr()] = before.left(before.length() - pin->getName().length() - 1);
    }
    return names;
}

// A node that is renamed or moved takes all below it along.
void addAllBelow(NamesBefore& names)
{
    NamesBefore const tops = names;
    for (auto const& [top, before] : tops)
    {
        unsigned int const length = top->getFullName().length();
        Nodes below;
        top->getNodesRecursively(below);
        for (GraphNodeBase* node : below) names[node] = before + node->getFullName().mid(length);
    }
}

KS_String nameBefore(NamesBefore const& names, GraphNodePin& pin)
{
    auto const moved = names.find(pin.getParentGraphNodePtr());
    return moved == names.end() ? pin.getFullName() : moved->second + "." + pin.getName();
}

// From each name before to the name now: of the nodes, and of their connections, which name two nodes each.
Dictionary dictionaryOf(NamesBefore const& names)
{
    Dictionary dictionary;
    for (auto const& [node, before] : names)
    {
        dictionary[before] = node->getFullName();
        Connections connections;
        node->getConnections(connections, true, true, true, true);
        for (GraphConnection* connection : connections)
            dictionary[nameBefore(names, *connection->getSourcePin()) + " > " +
                       nameBefore(names, *connection->getTargetPin())] = connection->getFullName();
    }
    return dictionary;
}

void follow(GraphLayout& layout, NamesBefore names)
{
    addAllBelow(names);
    Dictionary const dictionary = dictionaryOf(names);
    // What the layout still knows of a node that once had the new name is not this node's.
    for (auto const& [before, now] : dictionary)
        if (dictionary.count(now) == 0) layout.removeNode(now);
    layout.applyDictionary(dictionary);
}

void rename(GraphNodeBase& node, KS_String const& name, GraphLayout& layout)
{
    NamesBefore const names{{&node, node.getFullName()}};
    node.setName(name);
    follow(layout, names);
}

void moveInto(GraphScene& scene, GraphNodeBase* compound, Nodes const& nodes, GraphLayout& layout)
{
    std::map<KS_String, KS_String> pinRenames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces, outputInterfaces;
    Nodes newInterfaceNodes;
    Pins newCompoundPins;
    ConnectionValues removed;
    Connections outer, inner;
    scene.moveNodesToCompound(nodes, compound, pinRenames, inputInterfaces, outputInterfaces,
                              newInterfaceNodes, newCompoundPins, removed, outer, inner);
    follow(layout, namesBefore(scene, pinRenames));
}

void print(GraphLayout const& layout, char const* title)
{
    std::printf("%s\n", title);
    Array<KS_String, _Wa> names;
    layout.getAllNodeNames(names);
    for (KS_String const& name : names)
    {
        Tuple2<float, float> const position = *layout.getPositionByNodeName(name);
        std::printf("  %s at %g, %g\n", name.c_str(), static_cast<double>(position.first),
                    static_cast<double>(position.second));
    }
    names.clear();
    layout.getAllConnectionNames(names);
    for (KS_String const& name : names) std::printf("  %s is drawn\n", name.c_str());
}

void addNode(GraphScene& scene, GraphNodeBase* node, char const* name)
{
    node->setName(name);
    scene.addNodeToGraph(node);
}

GraphNodeBase* addFilter(GraphScene& scene, char const* name)
{
    auto* const node = new GraphNodeBase(scene.getFreeNodeId());
    addNode(scene, node, name);
    scene.createNewPin(node, 1, PIN_INPUT)->setName("in");
    scene.createNewPin(node, noLimit, PIN_OUTPUT)->setName("out");
    return node;
}

void deleteGraph(GraphScene& scene)
{
    Nodes nodes;
    scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes) scene.removeNodePins(node);
    scene.clear();
    delete scene.getRootNode();
}

} // namespace

int main()
{
    GraphScene scene;
    auto* const root = new GraphNodeBase(scene.getFreeNodeId());
    addNode(scene, root, "root");
    scene.setRootNode(root);
    GraphNodeBase* const blur = addFilter(scene, "blur");
    GraphNodeBase* const view = addFilter(scene, "view");
    GraphConnection* const connection = scene.connect(blur, view, false);

    GraphLayout layout;
    layout.insertNodePosition(blur->getFullName(), {0, 0});
    layout.insertNodePosition(view->getFullName(), {200, 0});
    layout.insertConnectionVisible(connection->getFullName(), true);
    print(layout, "at first");

    rename(*blur, "soft blur", layout);
    print(layout, "renamed");

    GraphNodeBase* const box = scene.createNewCompound();
    addNode(scene, box, "box");
    Nodes both;
    both.append(blur);
    both.append(view);
    moveInto(scene, box, both, layout);
    print(layout, "moved into a compound");

    rename(*box, "effect", layout);
    print(layout, "the compound renamed");
    deleteGraph(scene);
}
