// Moves two nodes into a compound, dissolves the compound, and makes it once more. A connection that crosses
// the boundary is led through a pair of pins, one on the compound and one on an interface node inside it.

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

void addNode(GraphScene& scene, GraphNodeBase* node, KS_String const& name, GraphNodeBase* owner)
{
    node->setName(name);
    node->setNodeOwner(owner);
    scene.addNodeToGraph(node);
}

GraphNodeBase* addFilter(GraphScene& scene, char const* name)
{
    auto* const node = new GraphNodeBase(scene.getFreeNodeId());
    addNode(scene, node, name, scene.getRootNode());
    scene.createNewPin(node, 1, PIN_INPUT)->setName("in");
    scene.createNewPin(node, noLimit, PIN_OUTPUT)->setName("out");
    return node;
}

void printConnections(GraphScene const& scene, char const* title)
{
    std::printf("%s\n", title);
    for (GraphConnection* connection : scene.getGraphConnections())
        std::printf("  %s\n", connection->getFullName().c_str());
}

GraphNodeBase* group(GraphScene& scene, Nodes const& nodes)
{
    GraphNodeBase* const owner = nodes[0]->getNodeOwner();
    GraphNodeBase* const compound = scene.createNewCompound();
    addNode(scene, compound, scene.getFreeNodeCompoundName(owner->getFullName()), owner);

    std::map<KS_String, KS_String> pinRenames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces, outputInterfaces;
    Nodes newInterfaceNodes;
    Pins newCompoundPins;
    ConnectionValues removed;
    Connections outer, inner;
    scene.moveNodesToCompound(nodes, compound, pinRenames, inputInterfaces, outputInterfaces,
                              newInterfaceNodes, newCompoundPins, removed, outer, inner);
    std::printf("grouped: %u interface nodes, %u compound pins, %u connections replaced\n",
                newInterfaceNodes.size(), newCompoundPins.size(), removed.size());
    return compound;
}

// A node that is not in the tree any more is the caller's to delete.
void removeAndDelete(GraphScene& scene, GraphNodeBase* node)
{
    scene.removeNodePins(node);
    scene.removeNodeFromGraph(node);
    delete node;
}

void ungroup(GraphScene& scene, GraphNodeBase* compound)
{
    Nodes nodes = compound->getNodes(); // a copy: the move empties the compound's own list
    std::map<KS_String, KS_String> pinRenames;
    ConnectionValues removedOuter, removed;
    Connections made, unused;
    scene.removeNodesFromCompound(compound, nodes, pinRenames, removedOuter, removed, made, unused);
    std::printf("ungrouped: %u connections made\n", made.size());

    // What is left in the compound are its interface nodes; with their pins go the compound's.
    Nodes const interfaceNodes = compound->getNodes();
    for (GraphNodeBase* node : interfaceNodes) removeAndDelete(scene, node);
    removeAndDelete(scene, compound);
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
    addNode(scene, root, "root", nullptr);
    scene.setRootNode(root);

    GraphNodeBase* const noise = addFilter(scene, "noise");
    GraphNodeBase* const blur = addFilter(scene, "blur");
    GraphNodeBase* const sharpen = addFilter(scene, "sharpen");
    GraphNodeBase* const view = addFilter(scene, "view");
    scene.connect(noise, blur, false);
    scene.connect(blur, sharpen, false);
    scene.connect(sharpen, view, false);
    printConnections(scene, "at first");

    Nodes chosen;
    chosen.append(blur);
    chosen.append(sharpen);
    GraphNodeBase* compound = group(scene, chosen);
    printConnections(scene, compound->getFullName().c_str());

    ungroup(scene, compound);
    printConnections(scene, "ungrouped");

    compound = group(scene, chosen);
    printConnections(scene, compound->getFullName().c_str());
    std::printf("%u nodes, %u connections\n", scene.getNumberOfNodes(), scene.getNumberOfConnections());
    deleteGraph(scene);
}
