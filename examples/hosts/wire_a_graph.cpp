// Builds a graph of three nodes, wires it under the library's rules, looks things up, and takes it apart
// again.

#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

unsigned int const noLimit = 0xFFFFFFFF;

GraphNodeBase& addNode(GraphScene& scene, char const* name)
{
    auto* const node = new GraphNodeBase(scene.getFreeNodeId());
    node->setName(name);
    scene.addNodeToGraph(node);
    return *node;
}

GraphNodePin& addPin(GraphScene& scene, GraphNodeBase& node, char const* name, PinDirection direction,
                     unsigned int capacity)
{
    GraphNodePin* const pin = scene.createNewPin(&node, capacity, direction);
    pin->setName(name);
    return *pin;
}

void tryToConnect(GraphScene& scene, GraphNodePin& source, GraphNodePin& target)
{
    GraphConnection const* const connection = scene.connect(&source, &target, false);
    std::printf("%s > %s: %s\n", source.getFullName().c_str(), target.getFullName().c_str(),
                connection != nullptr ? "made" : "refused");
}

void printUpstream(GraphScene const& scene, GraphNodeBase const& node)
{
    ArrayOfPtr<GraphConnection, KS_NO> inputs;
    scene.getConnectionsWithNode(&node, inputs, false, true, true, true);
    for (GraphConnection* connection : inputs) std::printf("  %s\n", connection->getFullName().c_str());
}

// A node's destructor does not delete its pins, so they go first; `clear` deletes all nodes but the root.
void deleteGraph(GraphScene& scene)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes) scene.removeNodePins(node);
    scene.clear();
    delete scene.getRootNode();
}

} // namespace

int main()
{
    GraphScene scene;
    scene.setRootNode(&addNode(scene, "root")); // the nodes that follow come under it

    GraphNodeBase& noise = addNode(scene, "noise");
    GraphNodeBase& blur = addNode(scene, "blur");
    GraphNodeBase& mix = addNode(scene, "mix");
    GraphNodePin& noiseOut = addPin(scene, noise, "out", PIN_OUTPUT, noLimit);
    GraphNodePin& blurIn = addPin(scene, blur, "in", PIN_INPUT, 1);
    GraphNodePin& blurOut = addPin(scene, blur, "out", PIN_OUTPUT, noLimit);
    GraphNodePin& mixA = addPin(scene, mix, "a", PIN_INPUT, 1);
    GraphNodePin& mixB = addPin(scene, mix, "b", PIN_INPUT, 1);

    tryToConnect(scene, noiseOut, blurIn);
    tryToConnect(scene, noiseOut, mixA);
    tryToConnect(scene, blurOut, mixA); // has its one connection already
    tryToConnect(scene, mixB, blurIn);  // an input is no source
    scene.connect(&blur, &mix, false);  // the first pins of the two that are free

    std::printf("mix is fed by\n");
    printUpstream(scene, mix);

    GraphNodePin* const found = scene.getPinPtrByFullName("root.mix.b");
    std::printf("root.mix.b has %u connection\n", scene.getPinNumConnections(found));
    std::printf("root.mix.B is %s\n",
                scene.getPinPtrByFullName("root.mix.B") == nullptr ? "unknown" : "known");
    std::printf("the next blur may be called %s\n", scene.getFreeNodeName("root", "blur").c_str());

    scene.removeConnectionsWithNode(&blur);
    std::printf("without the connections of blur, mix is fed by\n");
    printUpstream(scene, mix);

    std::printf("%s", scene.toXml().c_str());
    deleteGraph(scene);
}
