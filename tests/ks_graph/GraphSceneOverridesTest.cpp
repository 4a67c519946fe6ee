#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;

/// Overrides every operation that the scene calls on itself: writes down the call and does what the base
/// does.
class ListeningScene : public GraphScene
{
public:
    using GraphScene::addNodePin;
    using GraphScene::connect;
    using GraphScene::getConnectablePins;
    using GraphScene::getNodeConnectionsByPin;
    using GraphScene::isConnectionAllowed;

    mutable std::vector<std::string> calls;

    GraphNodeBase* getNodePtrById(unsigned int const& id) const override
    {
        calls.push_back("getNodePtrById");
        return GraphScene::getNodePtrById(id);
    }

    GraphNodeBase* getNodePtrByFullName(KS_String const& name) const override
    {
        calls.push_back("getNodePtrByFullName");
        return GraphScene::getNodePtrByFullName(name);
    }

    bool hasGraphNodeWithId(unsigned int const& id) const override
    {
        calls.push_back("hasGraphNodeWithId");
        return GraphScene::hasGraphNodeWithId(id);
    }

    bool getNodesConnectedBase(Connections const& connections, Nodes& out, bool const& addTargets,
                               bool const& addSources, bool const& skipSameNode) const override
    {
        calls.push_back("getNodesConnectedBase");
        return GraphScene::getNodesConnectedBase(connections, out, addTargets, addSources, skipSameNode);
    }

    bool getConnectablePins(GraphNodePin const* pin, GraphNodeBase const* node, Pins& out,
                            bool const& excludeFull) const override
    {
        calls.push_back("getConnectablePins(pin, node)");
        return GraphScene::getConnectablePins(pin, node, out, excludeFull);
    }

    bool getConnectablePins(GraphNodeBase const* node, GraphNodePin const* pin, Pins& out,
                            bool const& excludeFull) const override
    {
        calls.push_back("getConnectablePins(node, pin)");
        return GraphScene::getConnectablePins(node, pin, out, excludeFull);
    }

    bool getConnectablePins(GraphNodeBase const* source, GraphNodeBase const* target, Pins& sourcePins,
                            Pins& targetPins, bool const& excludeFull) const override
    {
        calls.push_back("getConnectablePins(node, node)");
        return GraphScene::getConnectablePins(source, target, sourcePins, targetPins, excludeFull);
    }

    bool isPinFull(GraphNodePin const* pin) const override
    {
        calls.push_back("isPinFull");
        return GraphScene::isPinFull(pin);
    }

    bool hasPinConnections(GraphNodePin const* pin, PinDirection const& direction) const override
    {
        calls.push_back("hasPinConnections(pin, direction)");
        return GraphScene::hasPinConnections(pin, direction);
    }

    bool hasPinConnections(GraphNodePin const* pin) const override
    {
        return GraphScene::hasPinConnections(pin);
    }

    bool hasConnectionsLikeThis(GraphConnection const& connection) const override
    {
        calls.push_back("hasConnectionsLikeThis");
        return GraphScene::hasConnectionsLikeThis(connection);
    }

    bool areNodesConnected(GraphNodeBase const* a, GraphNodeBase const* b, bool const& eitherDirection,
                           bool const& includeImplicit) const override
    {
        calls.push_back(eitherDirection ? "areNodesConnected either" : "areNodesConnected");
        return GraphScene::areNodesConnected(a, b, eitherDirection, includeImplicit);
    }

    bool getPinConnections(GraphNodePin const* pin, Connections& out) const override
    {
        calls.push_back("getPinConnections(pin)");
        return GraphScene::getPinConnections(pin, out);
    }

    bool getPinConnections(GraphNodePin const* pin, PinDirection const& direction,
                           Connections& out) const override
    {
        calls.push_back("getPinConnections(pin, direction)");
        return GraphScene::getPinConnections(pin, direction, out);
    }

    void getNodeConnectionsByPin(GraphNodeBase* node, std::map<GraphNodePin*, Pins>& out) const override
    {
        calls.push_back("getNodeConnectionsByPin");
        GraphScene::getNodeConnectionsByPin(node, out);
    }

    bool getConnectionsWithNode(GraphNodeBase const* node, Connections& out, bool const& outputs,
                                bool const& inputs, bool const& includeImplicit,
                                bool const& unique) const override
    {
        calls.push_back("getConnectionsWithNode(node)");
        return GraphScene::getConnectionsWithNode(node, out, outputs, inputs, includeImplicit, unique);
    }

    bool getConnectionsWithNode(unsigned int const& id, Connections& out, bool const& outputs,
                                bool const& inputs, bool const& includeImplicit,
                                bool const& unique) const override
    {
        calls.push_back("getConnectionsWithNode(id)");
        return GraphScene::getConnectionsWithNode(id, out, outputs, inputs, includeImplicit, unique);
    }

    bool getConnectionsBetweenNodes(GraphNodeBase const* a, GraphNodeBase const* b,
                                    bool const& bothDirections, bool const& includeImplicit,
                                    bool const& unique, Connections& out) const override
    {
        calls.push_back("getConnectionsBetweenNodes");
        return GraphScene::getConnectionsBetweenNodes(a, b, bothDirections, includeImplicit, unique, out);
    }

    bool getConnectionsInvolvingNodes(Nodes const& nodes, bool const& skipInterfaces,
                                      bool const& includeImplicit, bool const& unique,
                                      Connections& out) const override
    {
        calls.push_back("getConnectionsInvolvingNodes");
        return GraphScene::getConnectionsInvolvingNodes(nodes, skipInterfaces, includeImplicit, unique, out);
    }

    bool isConnectionAllowed(GraphNodePin const* pin, GraphNodeBase const* node,
                             bool const& pinIsSource) const override
    {
        calls.push_back(pinIsSource ? "isConnectionAllowed source" : "isConnectionAllowed target");
        return GraphScene::isConnectionAllowed(pin, node, pinIsSource);
    }

    void clearMessages() override
    {
        calls.push_back("clearMessages");
        GraphScene::clearMessages();
    }

    bool addNodeToGraph(GraphNodeBase* node) override
    {
        calls.push_back("addNodeToGraph");
        return GraphScene::addNodeToGraph(node);
    }

    bool removeNodeFromGraph(unsigned int const& id) override
    {
        calls.push_back("removeNodeFromGraph(id)");
        return GraphScene::removeNodeFromGraph(id);
    }

    bool removeNodeFromGraph(GraphNodeBase* node) override
    {
        calls.push_back("removeNodeFromGraph(node)");
        return GraphScene::removeNodeFromGraph(node);
    }

    void removeNodesInCompoundFromGraph(GraphNodeBase* compound) override
    {
        calls.push_back("removeNodesInCompoundFromGraph");
        GraphScene::removeNodesInCompoundFromGraph(compound);
    }

    GraphNodeBase* createNewInterfaceNode() override
    {
        calls.push_back("createNewInterfaceNode");
        return GraphScene::createNewInterfaceNode();
    }

    bool removeAllNodes() override
    {
        calls.push_back("removeAllNodes");
        return GraphScene::removeAllNodes();
    }

    bool addCompoundInterfaceNode(PinDirection const& direction, GraphNodeBase* compound,
                                  GraphNodeBase*& interfaceNode, GraphNodePin*& compoundPin,
                                  GraphNodePin*& interfacePin) override
    {
        calls.push_back("addCompoundInterfaceNode");
        return GraphScene::addCompoundInterfaceNode(direction, compound, interfaceNode, compoundPin,
                                                    interfacePin);
    }

    unsigned int getFreeNodeId() override
    {
        calls.push_back("getFreeNodeId");
        return GraphScene::getFreeNodeId();
    }

    KS_String getFreeNodeName(KS_String const& ownerFullName, KS_String const& baseName) override
    {
        calls.push_back("getFreeNodeName");
        return GraphScene::getFreeNodeName(ownerFullName, baseName);
    }

    KS_String getFreeInterfaceNodeName(KS_String const& ownerFullName, PinDirection const& direction) override
    {
        calls.push_back("getFreeInterfaceNodeName");
        return GraphScene::getFreeInterfaceNodeName(ownerFullName, direction);
    }

    GraphNodePin* createNewPin(GraphNodeBase* node, unsigned int const& maxNumConnections,
                               PinDirection const& direction) override
    {
        calls.push_back("createNewPin(node)");
        return GraphScene::createNewPin(node, maxNumConnections, direction);
    }

    GraphNodePin* createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction) override
    {
        calls.push_back("createNewPin");
        return GraphScene::createNewPin(maxNumConnections, direction);
    }

    bool addNodePin(GraphNodePin* pin) override
    {
        calls.push_back("addNodePin(pin)");
        return GraphScene::addNodePin(pin);
    }

    bool addNodePin(GraphNodeBase* node, GraphNodePin* pin) override
    {
        calls.push_back("addNodePin(node, pin)");
        return GraphScene::addNodePin(node, pin);
    }

    bool removeNodePin(GraphNodePin* pin) override
    {
        calls.push_back("removeNodePin");
        return GraphScene::removeNodePin(pin);
    }

    void removeNodePins(GraphNodeBase* node) override
    {
        calls.push_back("removeNodePins");
        GraphScene::removeNodePins(node);
    }

    void removeNodePinFromSceneAndNode(GraphNodePin* pin) override
    {
        calls.push_back("removeNodePinFromSceneAndNode");
        GraphScene::removeNodePinFromSceneAndNode(pin);
    }

    bool addCompoundInterfacePin(PinDirection const& direction, GraphNodeBase* interfaceNode,
                                 GraphNodePin*& compoundPin, GraphNodePin*& interfacePin) override
    {
        calls.push_back("addCompoundInterfacePin");
        return GraphScene::addCompoundInterfacePin(direction, interfaceNode, compoundPin, interfacePin);
    }

    GraphNodePin* createCompoundPinForInterfacePin(GraphNodePin* interfacePin) override
    {
        calls.push_back("createCompoundPinForInterfacePin");
        return GraphScene::createCompoundPinForInterfacePin(interfacePin);
    }

    KS_String getFreePinName(KS_String const& nodeFullName, KS_String const& baseName) override
    {
        calls.push_back("getFreePinName");
        return GraphScene::getFreePinName(nodeFullName, baseName);
    }

    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        calls.push_back("createGraphConnection");
        return GraphScene::createGraphConnection(source, target);
    }

    GraphConnection* connect(GraphNodePin const* source, GraphNodePin const* target,
                             bool const& implicit) override
    {
        calls.push_back("connect(pin, pin)");
        return GraphScene::connect(source, target, implicit);
    }

    bool removeConnectionsWithNode(GraphNodeBase const* node) override
    {
        calls.push_back("removeConnectionsWithNode(node)");
        return GraphScene::removeConnectionsWithNode(node);
    }

    bool removeConnectionsWithNode(unsigned int const& id) override
    {
        calls.push_back("removeConnectionsWithNode(id)");
        return GraphScene::removeConnectionsWithNode(id);
    }

    void removeConnectionsWithPin(GraphNodePin const* pin) override
    {
        calls.push_back("removeConnectionsWithPin");
        GraphScene::removeConnectionsWithPin(pin);
    }

    bool removeConnection(GraphConnection const* connection) override
    {
        calls.push_back("removeConnection");
        return GraphScene::removeConnection(connection);
    }

    bool removeAllConnections() override
    {
        calls.push_back("removeAllConnections");
        return GraphScene::removeAllConnections();
    }

    GraphConnection* connectBase(GraphNodePin const* pin, GraphNodeBase const* node, bool const& implicit,
                                 bool const& pinIsSource) override
    {
        calls.push_back(pinIsSource ? "connectBase source" : "connectBase target");
        return GraphScene::connectBase(pin, node, implicit, pinIsSource);
    }
};

/// a.out is wired to b.in. The compound holds the interface node "gate", whose pin is paired.
struct ListeningGraph : TestGraph<ListeningScene>
{
    ListeningGraph()
        : a(addFilter("a")),
          b(addFilter("b")),
          compound(addNode("compound")),
          inner(addFilter("inner", &compound)),
          gate(addNode("gate", &compound))
    {
        compound.setCompound(true);
        scene.connect(out(a), in(b), false);
        gate.setInterface(true);
        scene.addCompoundInterfacePin(PIN_INPUT, &gate, compoundPin, interfacePin);
    }

    GraphNodePin const* in(GraphNodeBase& node) { return node.getNodePins()[0]; }
    GraphNodePin const* out(GraphNodeBase& node) { return node.getNodePins()[1]; }
    GraphConnection* connection() { return scene.getGraphConnections()[0]; }

    bool moveIn(Nodes const& nodes)
    {
        std::map<KS_String, KS_String> renames;
        std::map<GraphNodeBase*, GraphNodeBase*> inputs;
        std::map<GraphNodeBase*, GraphNodeBase*> outputs;
        Nodes interfaces;
        Pins pins;
        Array<GraphConnection, _Wa> removed;
        Connections outer;
        Connections innerOnes;
        return scene.moveNodesToCompound(nodes, &compound, renames, inputs, outputs, interfaces, pins,
                                         removed, outer, innerOnes);
    }

    bool moveOut(Nodes nodes)
    {
        std::map<KS_String, KS_String> renames;
        Array<GraphConnection, _Wa> removedOuter;
        Array<GraphConnection, _Wa> removed;
        Connections made;
        Connections spare;
        return scene.removeNodesFromCompound(&compound, nodes, renames, removedOuter, removed, made, spare);
    }

    TestNode& a;
    TestNode& b;
    TestNode& compound;
    TestNode& inner;
    TestNode& gate;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
};

Nodes listWith(GraphNodeBase& node)
{
    Nodes nodes;
    nodes.append(&node);
    return nodes;
}

struct CallRow
{
    char const* operation;
    std::function<void(ListeningGraph&)> run;
    std::vector<std::string> calls;
};

void expectCalls(std::vector<CallRow> const& rows)
{
    for (CallRow const& row : rows)
    {
        SCOPED_TRACE(row.operation);
        ListeningGraph graph;
        graph.scene.calls.clear();
        row.run(graph);
        EXPECT_THAT(graph.scene.calls, IsSupersetOf(row.calls));
    }
}

// --- every call of the scene on itself

TEST(SceneOverrides, TakePartInRemovingNodes)
{
    expectCalls({
        {"removeNodeFromGraph(node)",
         [](ListeningGraph& g) { g.scene.removeNodeFromGraph(&g.a); },
         {"removeNodeFromGraph(id)"}},
        {"removeNodeFromGraph(id)",
         [](ListeningGraph& g) { g.scene.removeNodeFromGraph(g.compound.getId()); },
         {"hasGraphNodeWithId", "getNodePtrById", "removeConnectionsWithNode(id)",
          "removeConnectionsWithNode(node)", "removeNodesInCompoundFromGraph", "removeNodeFromGraph(node)"}},
        {"removeNodeFromGraph(id) of an interface node",
         [](ListeningGraph& g) { g.scene.removeNodeFromGraph(g.gate.getId()); },
         {"removeNodePins", "removeNodePinFromSceneAndNode", "removeConnectionsWithPin", "removeNodePin"}},
        {"removeNodesInCompoundFromGraph",
         [](ListeningGraph& g)
         {
             g.scene.removeNodePins(&g.gate);
             g.scene.removeNodesInCompoundFromGraph(&g.compound);
         },
         {"removeNodeFromGraph(node)", "removeNodeFromGraph(node)"}},
        {"clear",
         [](ListeningGraph& g) { g.scene.clear(); },
         {"removeAllConnections", "removeConnection", "removeAllNodes", "clearMessages"}},
    });
}

TEST(SceneOverrides, TakePartInRegisteringAndRemovingPins)
{
    expectCalls({
        {"createNewPin",
         [](ListeningGraph& g) { delete g.scene.createNewPin(1u, PIN_INPUT); },
         {"addNodePin(pin)"}},
        {"createNewPin(node)",
         [](ListeningGraph& g) { g.scene.createNewPin(&g.a, 1u, PIN_INPUT); },
         {"createNewPin", "addNodePin(pin)"}},
        {"addDynamicInputPin of a node",
         [](ListeningGraph& g) { g.a.addDynamicInputPin(); },
         {"createNewPin(node)"}},
        {"addDynamicOutputPin of a node",
         [](ListeningGraph& g) { g.a.addDynamicOutputPin(); },
         {"createNewPin(node)"}},
        {"addNodePin(node, pin)",
         [](ListeningGraph& g) { g.scene.addNodePin(&g.a, new GraphNodePin(nullptr, 1u, PIN_INPUT)); },
         {"addNodePin(pin)"}},
        {"addNodePins",
         [](ListeningGraph& g) { g.scene.addNodePins(&g.a, g.a.getNodePins()); },
         {"addNodePin(node, pin)", "addNodePin(node, pin)"}},
        {"removeNodePins",
         [](ListeningGraph& g) { g.scene.removeNodePins(&g.a); },
         {"removeNodePinFromSceneAndNode", "removeNodePinFromSceneAndNode"}},
        {"removeNodePinFromSceneAndNode",
         [](ListeningGraph& g) { g.scene.removeNodePinFromSceneAndNode(g.a.getNodePins()[1]); },
         {"removeConnectionsWithPin", "removeConnection", "removeNodePin"}},
        {"removeNodePinFromSceneAndNode of a pair",
         [](ListeningGraph& g) { g.scene.removeNodePinFromSceneAndNode(g.interfacePin); },
         {"removeConnectionsWithPin", "removeConnectionsWithPin", "removeNodePin", "removeNodePin"}},
    });
}

TEST(SceneOverrides, TakePartInWiring)
{
    expectCalls({
        {"isConnectionAllowed(pin, pin)",
         [](ListeningGraph& g) { g.scene.isConnectionAllowed(g.out(g.a), g.in(g.b)); },
         {"isPinFull", "isPinFull"}},
        {"isConnectionAllowed(pin, node)",
         [](ListeningGraph& g)
         {
             GraphNodeBase const* const node = &g.b;
             g.scene.isConnectionAllowed(g.out(g.a), node);
         },
         {"isConnectionAllowed source"}},
        {"isConnectionAllowed(node, pin)",
         [](ListeningGraph& g)
         {
             GraphNodeBase const* const node = &g.b;
             g.scene.isConnectionAllowed(node, g.in(g.a));
         },
         {"isConnectionAllowed target"}},
        {"connect(pin, pin)",
         [](ListeningGraph& g) { g.scene.connect(g.out(g.a), g.in(g.b), false); },
         {"isPinFull", "isPinFull", "createGraphConnection"}},
        {"connect(pin, pin) without duplicates",
         [](ListeningGraph& g)
         {
             g.scene.setAllowDuplicatedConnections(false);
             g.scene.connect(g.out(g.a), g.in(g.b), false);
         },
         {"hasConnectionsLikeThis"}},
        {"connect(pin, node)",
         [](ListeningGraph& g) { g.scene.connect(g.out(g.a), &g.b, false); },
         {"connectBase source", "getConnectablePins(pin, node)", "connect(pin, pin)"}},
        {"connect(node, pin)",
         [](ListeningGraph& g) { g.scene.connect(&g.b, g.in(g.a), false); },
         {"connectBase target", "getConnectablePins(node, pin)", "connect(pin, pin)"}},
        {"connect(node, node)",
         [](ListeningGraph& g) { g.scene.connect(&g.a, &g.b, false); },
         {"getConnectablePins(node, node)", "connect(pin, pin)"}},
    });
}

TEST(SceneOverrides, TakePartInUnwiring)
{
    expectCalls({
        {"removeAllConnections",
         [](ListeningGraph& g) { g.scene.removeAllConnections(); },
         {"removeConnection"}},
        {"removeConnectionsWithPin",
         [](ListeningGraph& g) { g.scene.removeConnectionsWithPin(g.out(g.a)); },
         {"getPinConnections(pin)", "removeConnection"}},
        {"removeConnectionsWithNode(node)",
         [](ListeningGraph& g) { g.scene.removeConnectionsWithNode(&g.a); },
         {"getConnectionsWithNode(node)", "removeConnection"}},
        {"removeConnectionsWithNode(id)",
         [](ListeningGraph& g) { g.scene.removeConnectionsWithNode(g.a.getId()); },
         {"getNodePtrById", "removeConnectionsWithNode(node)"}},
        {"removeConnectionsBetweenNodes",
         [](ListeningGraph& g) { g.scene.removeConnectionsBetweenNodes(&g.a, &g.b, false, false); },
         {"getConnectionsBetweenNodes", "removeConnection"}},
    });
}

TEST(SceneOverrides, TakePartInTheQueries)
{
    expectCalls({
        {"hasPinConnections",
         [](ListeningGraph& g) { g.scene.hasPinConnections(g.out(g.a)); },
         {"hasPinConnections(pin, direction)"}},
        {"getPinConnections",
         [](ListeningGraph& g)
         {
             Connections found;
             g.scene.getPinConnections(g.out(g.a), found);
         },
         {"getPinConnections(pin, direction)"}},
        {"getConnectionsWithNode(id)",
         [](ListeningGraph& g)
         {
             Connections found;
             g.scene.getConnectionsWithNode(g.a.getId(), found, true, true, true, true);
         },
         {"getNodePtrById", "getConnectionsWithNode(node)"}},
        {"getConnectionsInvolvingNodes",
         [](ListeningGraph& g)
         {
             Connections found;
             g.scene.getConnectionsInvolvingNodes(listWith(g.a), false, true, true, found);
         },
         {"getConnectionsWithNode(node)"}},
        {"getConnectionsInvolvingOnlyNodes",
         [](ListeningGraph& g)
         {
             Connections found;
             g.scene.getConnectionsInvolvingOnlyNodes(listWith(g.a), false, true, found);
         },
         {"getConnectionsWithNode(node)"}},
        {"getNodesConnectedWithNode",
         [](ListeningGraph& g)
         {
             Nodes found;
             g.scene.getNodesConnectedWithNode(&g.a, found, true, true, false, true, true);
         },
         {"getConnectionsWithNode(node)", "getNodesConnectedBase"}},
        {"areNodesConnected",
         [](ListeningGraph& g)
         {
             g.scene.setUseAdjacencyMap(false);
             g.scene.areNodesConnected(&g.b, &g.a, true, true);
         },
         {"areNodesConnected either", "areNodesConnected"}},
        {"getNodeConnectionsByPin of pins",
         [](ListeningGraph& g)
         {
             std::map<GraphNodePin*, Pins> found;
             g.scene.getNodeConnectionsByPin(&g.a, found);
         },
         {"getPinConnections(pin)", "getPinConnections(pin)"}},
        {"getNodeConnectionsByPin of connections",
         [](ListeningGraph& g)
         {
             std::map<GraphNodePin*, Connections> found;
             g.scene.getNodeConnectionsByPin(&g.a, found);
         },
         {"getPinConnections(pin)", "getPinConnections(pin)"}},
    });
}

TEST(SceneOverrides, TakePartInFreeNamesAndNewNodes)
{
    expectCalls({
        {"getFreeNodeId", [](ListeningGraph& g) { g.scene.getFreeNodeId(); }, {"getNodePtrById"}},
        {"getFreeNodeName",
         [](ListeningGraph& g) { g.scene.getFreeNodeName("root", "a"); },
         {"getNodePtrByFullName"}},
        {"getFreeNodeCompoundName",
         [](ListeningGraph& g) { g.scene.getFreeNodeCompoundName("root"); },
         {"getFreeNodeName"}},
        {"getFreeInterfaceNodeName",
         [](ListeningGraph& g) { g.scene.getFreeInterfaceNodeName("root", PIN_INPUT); },
         {"getFreeNodeName"}},
        {"createNewCompound",
         [](ListeningGraph& g) { delete g.scene.createNewCompound(); },
         {"getFreeNodeId"}},
        {"createNewInterfaceNode",
         [](ListeningGraph& g) { delete g.scene.createNewInterfaceNode(); },
         {"getFreeNodeId"}},
        {"createNewPassThrough",
         [](ListeningGraph& g) { delete g.scene.createNewPassThrough(); },
         {"getFreeNodeId"}},
        {"createNewEvaluator",
         [](ListeningGraph& g) { delete g.scene.createNewEvaluator(); },
         {"getFreeNodeId"}},
    });
}

TEST(SceneOverrides, TakePartInCompoundsAndMoves)
{
    expectCalls({
        {"createCompoundPinForInterfacePin",
         [](ListeningGraph& g) { g.scene.createCompoundPinForInterfacePin(g.interfacePin); },
         {"createNewPin(node)"}},
        {"addCompoundInterfacePin",
         [](ListeningGraph& g)
         { g.scene.addCompoundInterfacePin(PIN_INPUT, &g.gate, g.compoundPin, g.interfacePin); },
         {"createNewPin(node)", "createCompoundPinForInterfacePin", "getFreePinName"}},
        {"addCompoundInterfaceNode",
         [](ListeningGraph& g)
         {
             GraphNodeBase* node = nullptr;
             g.scene.addCompoundInterfaceNode(PIN_OUTPUT, &g.compound, node, g.compoundPin, g.interfacePin);
         },
         {"createNewInterfaceNode", "getFreeInterfaceNodeName", "addNodeToGraph", "addCompoundInterfacePin"}},
        {"moveNodesToCompound",
         [](ListeningGraph& g) { g.moveIn(listWith(g.a)); },
         {"getConnectionsInvolvingNodes", "removeConnection", "addCompoundInterfaceNode", "getFreePinName",
          "connect(pin, pin)", "connect(pin, pin)"}},
        {"removeNodesFromCompound",
         [](ListeningGraph& g)
         {
             g.scene.connect(g.interfacePin, g.in(g.inner), false);
             g.scene.connect(g.out(g.a), g.compoundPin, false);
             g.scene.calls.clear();
             g.moveOut(listWith(g.inner));
         },
         {"getConnectionsInvolvingNodes", "getNodeConnectionsByPin", "removeConnection",
          "connect(pin, pin)"}},
    });
}

// --- what an override answers decides

/// Lets each of a few operations be replaced.
class SteeredScene : public GraphScene
{
public:
    using GraphScene::addNodePin;
    using GraphScene::connect;
    using GraphScene::getConnectablePins;
    using GraphScene::getConnectionsWithNode;
    using GraphScene::getPinConnections;
    using GraphScene::isConnectionAllowed;
    using GraphScene::removeConnectionsWithNode;
    using GraphScene::removeNodeFromGraph;

    GraphNodePin const* fullPin = nullptr;
    GraphConnection* kept = nullptr;
    GraphNodeBase* hiddenNode = nullptr;
    GraphNodeBase* keptNode = nullptr;
    GraphNodePin* offered = nullptr;
    GraphConnection* gathered = nullptr;
    bool everythingIsAlike = false;

    bool isPinFull(GraphNodePin const* pin) const override { return pin == fullPin; }

    bool hasConnectionsLikeThis(GraphConnection const&) const override { return everythingIsAlike; }

    bool removeConnection(GraphConnection const* connection) override
    {
        return connection != kept && GraphScene::removeConnection(connection);
    }

    GraphNodeBase* getNodePtrById(unsigned int const& id) const override
    {
        GraphNodeBase* const node = GraphScene::getNodePtrById(id);
        return node == hiddenNode ? nullptr : node;
    }

    bool hasGraphNodeWithId(unsigned int const& id) const override { return getNodePtrById(id) != nullptr; }

    bool removeNodeFromGraph(GraphNodeBase* node) override
    {
        return node != keptNode && GraphScene::removeNodeFromGraph(node);
    }

    bool getConnectablePins(GraphNodePin const*, GraphNodeBase const*, Pins& out, bool const&) const override
    {
        out.append(offered);
        return offered != nullptr;
    }

    bool getConnectablePins(GraphNodeBase const*, GraphNodePin const*, Pins& out, bool const&) const override
    {
        out.append(offered);
        return offered != nullptr;
    }

    bool getConnectablePins(GraphNodeBase const*, GraphNodeBase const*, Pins& sources, Pins& targets,
                            bool const&) const override
    {
        sources.append(offered);
        targets.append(offered);
        return offered != nullptr;
    }

    bool getPinConnections(GraphNodePin const*, Connections& out) const override
    {
        out.append(gathered);
        return true;
    }

    bool getConnectionsWithNode(GraphNodeBase const*, Connections& out, bool const&, bool const&, bool const&,
                                bool const&) const override
    {
        out.append(gathered);
        return true;
    }

    bool getConnectionsBetweenNodes(GraphNodeBase const*, GraphNodeBase const*, bool const&, bool const&,
                                    bool const&, Connections& out) const override
    {
        out.append(gathered);
        return true;
    }
};

class SceneOverridesThatDecide : public ::testing::Test
{
protected:
    SceneOverridesThatDecide()
        : a(graph.addFilter("a")),
          b(graph.addFilter("b")),
          both(graph.addPin(graph.addNode("c"), "both", PIN_INPUT | PIN_OUTPUT))
    {}

    GraphNodePin const* in(GraphNodeBase& node) { return node.getNodePins()[0]; }
    GraphNodePin const* out(GraphNodeBase& node) { return node.getNodePins()[1]; }

    TestGraph<SteeredScene> graph;
    SteeredScene& scene = graph.scene;
    TestNode& a;
    TestNode& b;
    GraphNodePin& both;
};

TEST_F(SceneOverridesThatDecide, PinThatTheSceneCallsFullIsNotWired)
{
    for (GraphNodePin const* pin : {out(a), in(b)})
    {
        scene.fullPin = pin;
        EXPECT_FALSE(scene.isConnectionAllowed(out(a), in(b)));
        EXPECT_EQ(nullptr, scene.connect(out(a), in(b), false));
    }
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, PinThatTheSceneDoesNotCallFullIsWiredAndStillNoCandidate)
{
    GraphNodePin& full = graph.addInput(b, "full", 0);
    EXPECT_TRUE(scene.isConnectionAllowed(out(a), &full));
    EXPECT_NE(nullptr, scene.connect(out(a), &full, false));
    Pins candidates;
    EXPECT_TRUE(scene.GraphScene::getConnectablePins(out(a), static_cast<GraphNodeBase const*>(&b),
                                                     candidates, true));
    EXPECT_THAT(listed(candidates), ElementsAre(in(b)));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, DuplicateTestOfTheSceneIsAskedOnlyWhenDuplicatesAreForbidden)
{
    scene.everythingIsAlike = true;
    EXPECT_NE(nullptr, scene.connect(out(a), in(b), false));
    scene.setAllowDuplicatedConnections(false);
    EXPECT_EQ(nullptr, scene.connect(out(a), in(b), false));
    EXPECT_EQ(1u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, CandidatesOfTheSceneAreWired)
{
    scene.offered = &both;
    GraphConnection* const toNode = scene.connect(out(a), static_cast<GraphNodeBase const*>(&b), false);
    GraphConnection* const fromNode = scene.connect(static_cast<GraphNodeBase const*>(&b), in(a), false);
    GraphConnection* const betweenNodes = scene.connect(&a, &b, false);
    ASSERT_NE(nullptr, toNode);
    ASSERT_NE(nullptr, fromNode);
    ASSERT_NE(nullptr, betweenNodes);
    EXPECT_EQ(&both, toNode->getTargetPin());
    EXPECT_EQ(&both, fromNode->getSourcePin());
    EXPECT_TRUE(betweenNodes->isLoop());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, ConnectionThatTheSceneKeepsSurvivesEveryRemoval)
{
    GraphConnection* const gone = scene.connect(out(a), in(b), false);
    GraphConnection* const kept = scene.connect(out(a), in(b), false);
    scene.kept = kept;
    scene.gathered = kept;
    EXPECT_TRUE(scene.removeConnectionsWithNode(&a));
    scene.removeConnectionsWithPin(out(a));
    scene.removeConnectionsBetweenNodes(&a, &b, true, true);
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(gone, kept));
    EXPECT_TRUE(scene.removeAllConnections());
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(kept));
    EXPECT_SCENE_INVARIANTS(scene);
    scene.kept = nullptr;
}

TEST_F(SceneOverridesThatDecide, RemovalsGoByWhatTheSceneGathers)
{
    for (int way = 0; way < 3; ++way)
    {
        SCOPED_TRACE(way);
        GraphConnection* const other = scene.connect(out(a), in(b), false);
        scene.gathered = scene.connect(out(b), in(a), false);
        if (way == 0) scene.removeConnectionsWithNode(&graph.root);
        if (way == 1) scene.removeConnectionsWithPin(&both);
        if (way == 2) scene.removeConnectionsBetweenNodes(&graph.root, &graph.root, false, false);
        EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(other));
        scene.removeAllConnections();
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, NodeThatTheSceneHidesIsNotRemoved)
{
    scene.hiddenNode = &a;
    EXPECT_FALSE(scene.removeNodeFromGraph(a.getId()));
    EXPECT_FALSE(scene.removeConnectionsWithNode(a.getId()));
    EXPECT_EQ(&graph.root, a.getNodeOwner());
    scene.hiddenNode = nullptr;
    Connections found;
    scene.gathered = scene.connect(out(a), in(b), false);
    EXPECT_TRUE(scene.removeNodeFromGraph(b.getId()));
    EXPECT_EQ(0u, scene.getNumberOfConnections());
}

TEST(SceneOverrides, NodeThatTheSceneOnlyClaimsToHaveIsNotRemoved)
{
    class BoastingScene : public GraphScene
    {
    public:
        bool hasGraphNodeWithId(unsigned int const&) const override { return true; }
    };
    TestGraph<BoastingScene> graph;
    EXPECT_FALSE(graph.scene.removeNodeFromGraph(77u));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_EQ(1u, graph.scene.getNumberOfNodes());
}

TEST(SceneOverrides, NodesAreNotWiredWhenTheSceneOffersNoPinsForThem)
{
    class VagueScene : public GraphScene
    {
    public:
        bool getConnectablePins(GraphNodeBase const*, GraphNodeBase const*, Pins& sources, Pins& targets,
                                bool const&) const override
        {
            if (source != nullptr) sources.append(source);
            if (target != nullptr) targets.append(target);
            return true;
        }

        GraphNodePin* source = nullptr;
        GraphNodePin* target = nullptr;
    };
    TestGraph<VagueScene> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    EXPECT_EQ(nullptr, graph.scene.connect(&a, &b, false));
    graph.scene.source = a.getPinByName("out");
    EXPECT_EQ(nullptr, graph.scene.connect(&a, &b, false));
    graph.scene.source = nullptr;
    graph.scene.target = b.getPinByName("in");
    EXPECT_EQ(nullptr, graph.scene.connect(&a, &b, false));
    EXPECT_EQ(0u, graph.scene.getNumberOfConnections());
}

TEST(SceneOverrides, NodesAreNotWiredWhenTheSceneOffersPinsButDeniesThem)
{
    class DenyingScene : public GraphScene
    {
    public:
        bool getConnectablePins(GraphNodeBase const* source, GraphNodeBase const* target, Pins& sources,
                                Pins& targets, bool const&) const override
        {
            sources.append(source->getNodePins()[1]);
            targets.append(target->getNodePins()[0]);
            return false;
        }
    };
    TestGraph<DenyingScene> graph;
    EXPECT_EQ(nullptr, graph.scene.connect(&graph.addFilter("a"), &graph.addFilter("b"), false));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(SceneOverridesThatDecide, NullIsWiredWithNothingThatTheSceneOffers)
{
    GraphNodeBase const* const noNode = nullptr;
    scene.offered = &both;
    EXPECT_EQ(nullptr, scene.connect(out(a), noNode, false));
    EXPECT_EQ(nullptr, scene.connect(noNode, in(a), false));
    EXPECT_EQ(nullptr, scene.connect(&a, noNode, false));
    EXPECT_EQ(nullptr, scene.connect(noNode, &a, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatDecide, NullPinLosesNothingThatTheSceneGathers)
{
    scene.gathered = scene.connect(out(a), in(b), false);
    scene.removeConnectionsWithPin(nullptr);
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(scene.gathered));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneOverrides, NodeThatTheSceneDeniesToHaveIsNotRemoved)
{
    class DenyingScene : public GraphScene
    {
    public:
        bool hasGraphNodeWithId(unsigned int const&) const override { return false; }
    };
    TestGraph<DenyingScene> graph;
    TestNode& node = graph.addNode("node");
    EXPECT_FALSE(graph.scene.removeNodeFromGraph(node.getId()));
    EXPECT_EQ(&node, graph.scene.getNodePtrById(node.getId()));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneOverrides, ConnectionsToRemoveAreGatheredOnceEach)
{
    class GatheringScene : public GraphScene
    {
    public:
        using GraphScene::getConnectionsWithNode;

        bool getConnectionsWithNode(GraphNodeBase const*, Connections&, bool const&, bool const&, bool const&,
                                    bool const& unique) const override
        {
            onceEach.push_back(unique);
            return false;
        }

        bool getConnectionsBetweenNodes(GraphNodeBase const*, GraphNodeBase const*, bool const&, bool const&,
                                        bool const& unique, Connections&) const override
        {
            onceEach.push_back(unique);
            return false;
        }

        mutable std::vector<bool> onceEach;
    };
    GatheringScene scene;
    GraphNodeBase node(1);
    scene.removeConnectionsWithNode(&node);
    scene.removeConnectionsBetweenNodes(&node, &node, true, true);
    EXPECT_THAT(scene.onceEach, ElementsAre(true, true));
}

TEST(SceneOverrides, NewPinMakesTheSceneDirtyThoughTheHostDoesNotRegisterIt)
{
    class LaxScene : public GraphScene
    {
    public:
        bool addNodePin(GraphNodePin*) override { return true; }
    };
    LaxScene scene;
    std::unique_ptr<GraphNodePin> const pin(scene.createNewPin(1, PIN_INPUT));
    EXPECT_TRUE(scene.getIsDirty());
}

TEST(SceneOverrides, PinThatTheSceneDoesNotRegisterIsNotAddedToTheNode)
{
    class RefusingScene : public GraphScene
    {
    public:
        using GraphScene::addNodePin;

        bool addNodePin(GraphNodePin*) override { return false; }
    };
    TestGraph<RefusingScene> graph;
    GraphNodePin pin;
    EXPECT_FALSE(graph.scene.addNodePin(&graph.root, &pin));
    EXPECT_TRUE(graph.root.getNodePins().isEmpty());
    EXPECT_EQ(nullptr, pin.getParentGraphNodePtr());
    EXPECT_FALSE(graph.scene.getIsDirty());
}

TEST_F(SceneOverridesThatDecide, ChildThatTheSceneKeepsStaysRegistered)
{
    TestNode& top = graph.addNode("top");
    TestNode& child = graph.addNode("child", &top);
    TestNode& other = graph.addNode("other", &top);
    scene.keptNode = &child;
    scene.removeNodesInCompoundFromGraph(&top);
    EXPECT_EQ(&child, scene.getNodePtrById(child.getId()));
    EXPECT_EQ(nullptr, scene.getNodePtrById(other.getId()));
    EXPECT_TRUE(top.getNodes().isEmpty());
    EXPECT_EQ(&top, child.getNodeOwner());
    child.setNodeOwner(nullptr);
    EXPECT_SCENE_INVARIANTS(scene);
}

/// A host whose nodes have ids of its own.
class CountingScene : public GraphScene
{
public:
    unsigned int getFreeNodeId() override { return next++; }
    KS_String getFreePinName(KS_String const&, KS_String const& baseName) override { return baseName + "!"; }
    KS_String getFreeInterfaceNodeName(KS_String const&, PinDirection const&) override { return "mine"; }

    unsigned int next = 5000;
};

TEST(SceneOverrides, IdsAndNamesOfTheHostAreUsedForWhatTheSceneMakes)
{
    TestGraph<CountingScene> graph;
    TestNode& compound = graph.addNode("compound");
    unsigned int const next = graph.scene.next;
    GraphNodeBase* gate = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    graph.scene.addCompoundInterfaceNode(PIN_OUTPUT, &compound, gate, compoundPin, interfacePin);
    ASSERT_NE(nullptr, gate);
    EXPECT_EQ(next, gate->getId());
    EXPECT_STREQ("mine", gate->getName().c_str());
    EXPECT_STREQ("output!", interfacePin->getName().c_str());
    EXPECT_STREQ("output!", compoundPin->getName().c_str());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

/// A host that finds nodes by names of its own.
class FindingScene : public GraphScene
{
public:
    GraphNodeBase* getNodePtrByFullName(KS_String const& name) const override
    {
        return name == KS_String("root.x01") || name == KS_String("root.x02") ? getRootNode() : nullptr;
    }
};

TEST(SceneOverrides, NamesThatTheHostFindsAreNotFree)
{
    TestGraph<FindingScene> graph;
    EXPECT_STREQ("x03", graph.scene.getFreeNodeName("root", "x").c_str());
}

/// A node class whose callbacks the scene has to use.
class SpeakingNode : public TestNode
{
public:
    using TestNode::TestNode;

    KS_String getFullName() override { return "elsewhere"; }
    bool isInterface() const override { return true; }
};

TEST(SceneOverrides, NodesAreAskedForTheirFullNameAndKind)
{
    TestGraph<> graph;
    SpeakingNode& node = graph.addNode<SpeakingNode>("node");
    GraphNodePin& pin = graph.addInput(node);
    EXPECT_EQ(&node, graph.scene.getNodePtrByFullName("elsewhere"));
    EXPECT_EQ(nullptr, graph.scene.getNodePtrByFullName("root.node"));
    EXPECT_EQ(&pin, graph.scene.getPinPtrByFullName("elsewhere.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
    EXPECT_TRUE(graph.scene.removeNodeFromGraph(&node));
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_EQ(nullptr, graph.scene.getPinPtrByFullName("elsewhere.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

/// A connection that says that it belongs to other nodes than its pins do.
class RedirectedConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    GraphNodeBase* getSourceNode() const override { return source; }
    GraphNodeBase* getTargetNode() const override { return target; }

    GraphNodeBase* source = nullptr;
    GraphNodeBase* target = nullptr;
};

class RedirectingScene : public GraphScene
{
public:
    GraphConnection* createGraphConnection(GraphNodePin* sourcePin, GraphNodePin* targetPin) override
    {
        RedirectedConnection* const made = new RedirectedConnection(sourcePin, targetPin);
        made->source = source;
        made->target = target;
        return made;
    }

    GraphNodeBase* source = nullptr;
    GraphNodeBase* target = nullptr;
};

TEST(SceneOverrides, ConnectionsAreAskedForTheirNodes)
{
    for (bool const adjacency : {false, true})
    {
        SCOPED_TRACE(adjacency);
        TestGraph<RedirectingScene> graph;
        graph.scene.setUseAdjacencyMap(adjacency);
        TestNode& a = graph.addFilter("a");
        TestNode& b = graph.addFilter("b");
        TestNode& c = graph.addNode("c");
        TestNode& d = graph.addNode("d");
        graph.scene.source = &c;
        graph.scene.target = &d;
        GraphConnection* const made = graph.scene.connect(&a, &b, false);
        ASSERT_NE(nullptr, made);
        EXPECT_TRUE(graph.scene.areNodesConnected(&c, &d, false, true));
        EXPECT_FALSE(graph.scene.areNodesConnected(&a, &b, true, true));
        EXPECT_TRUE(graph.scene.hasNodeAnyConnection(&c, PIN_OUTPUT, false));
        EXPECT_FALSE(graph.scene.hasNodeAnyConnection(&a, PIN_OUTPUT, false));
        Nodes found;
        Connections connections;
        connections.append(made);
        graph.scene.getNodesConnectedBase(connections, found, true, true, false);
        EXPECT_THAT(listed(found), ElementsAre(&d, &c));
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

/// Runs out of memory in each override, once the base has done its work, while the counter is not zero.
int failuresAhead = 0;

void failIfTold()
{
    if (failuresAhead == 0) return;
    --failuresAhead;
    throw std::bad_alloc();
}

class FailingPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;

    void addInputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addInputConnection(connection);
        if (failsAsTarget) failIfTold();
    }

    void addOutputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addOutputConnection(connection);
        if (!failsAsTarget) failIfTold();
    }

    bool failsAsTarget = false;
};

class FailingNode : public TestNode
{
public:
    bool addNodePin(GraphNodePin* pin) override
    {
        bool const added = TestNode::addNodePin(pin);
        failIfTold();
        return added;
    }
};

class FailingScene : public GraphScene
{
public:
    using GraphScene::addNodePin;

    bool addNodePin(GraphNodePin* pin) override
    {
        bool const added = GraphScene::addNodePin(pin);
        if (failsWithPins) failIfTold();
        return added;
    }

    bool addNodeToGraph(GraphNodeBase* node) override
    {
        if (failsEarly) failIfTold();
        bool const added = GraphScene::addNodeToGraph(node);
        failIfTold();
        return added;
    }

    bool failsWithPins = false;
    bool failsEarly = false;
};

class SceneOverridesThatThrow : public ::testing::Test
{
protected:
    ~SceneOverridesThatThrow() override { failuresAhead = 0; }

    template <class Action>
    void expectFailure(Action action)
    {
        failuresAhead = 1;
        EXPECT_THROW(action(), std::bad_alloc);
        EXPECT_EQ(0, failuresAhead);
        EXPECT_SCENE_INVARIANTS(scene);
    }

    void expectFailureToAddInterface(GraphNodeBase& compound)
    {
        GraphNodeBase* node = nullptr;
        GraphNodePin* outer = nullptr;
        GraphNodePin* inner = nullptr;
        expectFailure([&] { scene.addCompoundInterfaceNode(PIN_INPUT, &compound, node, outer, inner); });
        EXPECT_TRUE(scene.addCompoundInterfaceNode(PIN_INPUT, &compound, node, outer, inner));
        EXPECT_SCENE_INVARIANTS(scene);
    }

    TestGraph<FailingScene> graph;
    FailingScene& scene = graph.scene;
};

TEST_F(SceneOverridesThatThrow, NewPinIsNowhereWhenItsNodeFailed)
{
    FailingNode& node = graph.addNode<FailingNode>("node");
    expectFailure([&] { scene.createNewPin(&node, 1, PIN_INPUT); });
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_EQ(nullptr, scene.getPinPtrByFullName("root.node.Untitled"));
    EXPECT_NE(nullptr, scene.createNewPin(&node, 1, PIN_INPUT));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatThrow, NewPinIsNowhereWhenTheSceneFailed)
{
    scene.failsWithPins = true;
    TestNode& node = graph.addNode("node");
    expectFailure([&] { scene.createNewPin(&node, 1, PIN_INPUT); });
    expectFailure([&] { scene.createNewPin(1, PIN_INPUT); });
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_NE(nullptr, scene.createNewPin(&node, 1, PIN_INPUT));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatThrow, GivenPinIsNowhereWhenItsNodeFailed)
{
    FailingNode& node = graph.addNode<FailingNode>("node");
    GraphNodePin pin;
    pin.setId(5000000);
    expectFailure([&] { scene.addNodePin(&node, &pin); });
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_EQ(nullptr, scene.getPinPtrById(5000000));
}

TEST_F(SceneOverridesThatThrow, NodeIsNowhereWhenItsOwnerFailed)
{
    class UnownedNode : public TestNode
    {
        void setNodeOwner(GraphNodeBase*) override { failIfTold(); }
    };
    UnownedNode& node = graph.newNode<UnownedNode>("node");
    expectFailure([&] { scene.addNodeToGraph(&node); });
    EXPECT_EQ(nullptr, scene.getNodePtrById(node.getId()));
    EXPECT_EQ(nullptr, node.getGraphScene());
}

TEST_F(SceneOverridesThatThrow, ConnectionIsNowhereWhenAPinFailed)
{
    TestNode& other = graph.addFilter("other");
    for (bool const failsAsTarget : {false, true})
    {
        SCOPED_TRACE(failsAsTarget);
        FailingPin* const pin = new FailingPin(nullptr, unlimited, failsAsTarget ? PIN_INPUT : PIN_OUTPUT);
        pin->failsAsTarget = failsAsTarget;
        pin->setId(failsAsTarget ? 5000001 : 5000000);
        TestNode& node = graph.addNode("node");
        scene.GraphScene::addNodePin(&node, pin);
        GraphNodePin* const source = failsAsTarget ? other.getPinByName("out") : pin;
        GraphNodePin* const target = failsAsTarget ? pin : other.getPinByName("in");
        scene.connect(source, target, true);
        expectFailure([&] { scene.connect(source, target, false); });
        EXPECT_EQ(1u, scene.getNumberOfConnections());
        EXPECT_EQ(1u, pin->getNumConnections());
        EXPECT_FALSE(scene.areNodesConnected(&node, &other, true, false));
        EXPECT_NE(nullptr, scene.connect(source, target, false));
        scene.removeAllConnections();
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneOverridesThatThrow, InterfaceNodeIsInTheGraphOrNowhereWhenTheSceneFailed)
{
    TestNode& compound = graph.addNode("compound");
    for (bool const failsEarly : {false, true})
    {
        SCOPED_TRACE(failsEarly);
        scene.failsEarly = failsEarly;
        expectFailureToAddInterface(compound);
    }
}

TEST_F(SceneOverridesThatThrow, InterfacePinIsLeftWithoutPartnerWhenTheCompoundFailed)
{
    FailingNode& compound = graph.addNode<FailingNode>("compound");
    expectFailureToAddInterface(compound);
    EXPECT_EQ(1u, compound.getNodePins().size());
}

} // namespace
} // namespace kestrel::graph::test
