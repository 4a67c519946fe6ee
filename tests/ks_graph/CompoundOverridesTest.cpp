#include "support/GraphTexts.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;
using ::testing::WhenDynamicCastTo;

using Calls = std::vector<std::string>;

/// A connection that lies about itself when it is told to.
class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;

    GraphNodeBase* getSourceNode() const override
    {
        return pretendedSource != nullptr ? pretendedSource : GraphConnection::getSourceNode();
    }
    GraphNodeBase* getTargetNode() const override
    {
        return pretendedTarget != nullptr ? pretendedTarget : GraphConnection::getTargetNode();
    }
    bool isConnectedPinSource(GraphNodePin const* pin) const override
    {
        return !deniesItsSource && GraphConnection::isConnectedPinSource(pin);
    }
    bool targetIsInterfacePin() const override
    {
        return !deniesInterfaces && GraphConnection::targetIsInterfacePin();
    }
    bool isImplicit() const override { return pretendsImplicit || GraphConnection::isImplicit(); }

    GraphNodeBase* pretendedSource = nullptr;
    GraphNodeBase* pretendedTarget = nullptr;
    bool deniesItsSource = false;
    bool deniesInterfaces = false;
    bool pretendsImplicit = false;
};

/// A pin that lies about itself when it is told to, and tells `calls` of its names and its pairing.
class HostPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;

    KS_String getName() override { return pretendedName.isEmpty() ? GraphNodePin::getName() : pretendedName; }
    KS_String getFullName() override { return GraphNodePin::getFullName() + suffix; }
    void setName(KS_String const& name) override
    {
        if (calls != nullptr) calls->push_back("setName " + std::string(name));
        GraphNodePin::setName(name);
    }
    bool isInterfacePin() const override { return pretendsInterface || GraphNodePin::isInterfacePin(); }
    GraphNodeBase* getParentGraphNodePtr() const override
    {
        return pretendedNode != nullptr ? pretendedNode : GraphNodePin::getParentGraphNodePtr();
    }
    GraphNodePin* getParentGraphNodePinPtr() const override
    {
        return pretendedParent != nullptr ? pretendedParent : GraphNodePin::getParentGraphNodePinPtr();
    }
    void setParentGraphNodePinPtr(GraphNodePin* pin) override
    {
        if (calls != nullptr) calls->emplace_back("setParentGraphNodePinPtr");
        GraphNodePin::setParentGraphNodePinPtr(pin);
    }
    void setChildGraphNodePinPtr(GraphNodePin* pin) override
    {
        if (calls != nullptr) calls->emplace_back("setChildGraphNodePinPtr");
        GraphNodePin::setChildGraphNodePinPtr(pin);
    }
    bool allowsConnectionFrom(GraphNodePin const* other) const override
    {
        return !(refusesCompounds && other->isCompoundPin()) && GraphNodePin::allowsConnectionFrom(other);
    }

    Calls* calls = nullptr;
    KS_String pretendedName;
    KS_String suffix;
    bool pretendsInterface = false;
    bool refusesCompounds = false;
    GraphNodeBase* pretendedNode = nullptr;
    GraphNodePin* pretendedParent = nullptr;
};

/// A node that lies about itself when it is told to, and keeps what it was asked.
class HostNode : public TestNode
{
public:
    using TestNode::getConnectionsWithNode;
    using TestNode::TestNode;

    KS_String getName() override { return pretendedName.isEmpty() ? TestNode::getName() : pretendedName; }
    KS_String getFullName() override
    {
        return pretendedFullName.isEmpty() ? TestNode::getFullName() : pretendedFullName;
    }
    void setName(KS_String const& name) override
    {
        calls.push_back("setName " + std::string(name));
        TestNode::setName(name + nameSuffix.c_str());
    }
    GraphNodeBase* getNodeOwner() const override
    {
        return pretendedOwner != nullptr ? pretendedOwner : TestNode::getNodeOwner();
    }
    void setNodeOwner(GraphNodeBase* owner) override
    {
        calls.push_back("setNodeOwner " + text(owner));
        if (!staysPut) TestNode::setNodeOwner(owner);
    }
    GraphNodeBase* getNodeByName(KS_String const& name, bool const& caseSensitive) override
    {
        calls.push_back("getNodeByName " + std::string(name) + (caseSensitive ? " exactly" : ""));
        return claimsEveryName ? this : TestNode::getNodeByName(name, caseSensitive);
    }
    KS_String getFreeNodeNameLikeThis(KS_String const& name, GraphNodeBase* otherParent) override
    {
        calls.push_back("getFreeNodeNameLikeThis " + std::string(name) + " " + text(otherParent));
        return claimsEveryName ? KS_String("guest") : TestNode::getFreeNodeNameLikeThis(name, otherParent);
    }
    bool isInterface() const override { return pretendsInterface || TestNode::isInterface(); }
    bool isCompound() const override { return deniesCompound ? false : TestNode::isCompound(); }
    bool getNodesRecursively(Nodes& out) override
    {
        calls.emplace_back("getNodesRecursively");
        out.append(this);
        return true;
    }
    void clearNodesArray() override
    {
        calls.emplace_back("clearNodesArray");
        TestNode::clearNodesArray();
    }
    bool getConnections(Connections& out, bool const& outputs, bool const& inputs,
                        bool const& includeImplicit, bool const& unique) const override
    {
        if (hidesConnections) return !out.isEmpty();
        return TestNode::getConnections(out, outputs, inputs, includeImplicit, unique);
    }

    Calls calls;
    KS_String pretendedName;
    KS_String pretendedFullName;
    KS_String nameSuffix;
    GraphNodeBase* pretendedOwner = nullptr;
    bool staysPut = false;
    bool claimsEveryName = false;
    bool pretendsInterface = false;
    bool deniesCompound = false;
    bool hidesConnections = false;
};

/// Keeps every call that the compound operations are said to make, and changes its answers when told to.
class HostScene : public GraphScene
{
public:
    using GraphScene::addNodePin;
    using GraphScene::connect;
    using GraphScene::createNewPin;
    using GraphScene::getConnectionsWithNode;
    using GraphScene::getNodeConnectionsByPin;
    using GraphScene::getPinConnections;
    using GraphScene::removeNodeFromGraph;

    unsigned int getFreeNodeId() override { return nextId != 0 ? nextId++ : GraphScene::getFreeNodeId(); }

    GraphNodeBase* createNewInterfaceNode() override
    {
        calls.emplace_back("createNewInterfaceNode");
        if (makesNoInterfaceNodes) return nullptr;
        if (!makesHostNodes) return GraphScene::createNewInterfaceNode();
        HostNode* const node = new HostNode(getFreeNodeId());
        node->setInterface(true);
        return node;
    }

    KS_String getFreeInterfaceNodeName(KS_String const& owner, PinDirection const& direction) override
    {
        calls.push_back("getFreeInterfaceNodeName " + std::string(owner) + " " +
                        std::to_string(direction.value()));
        return GraphScene::getFreeInterfaceNodeName(owner, direction) + nameSuffix;
    }

    KS_String getFreePinName(KS_String const& node, KS_String const& base) override
    {
        calls.push_back("getFreePinName " + std::string(node) + " " + base.c_str());
        return GraphScene::getFreePinName(node, base) + nameSuffix;
    }

    GraphNodePin* createNewPin(GraphNodeBase* node, unsigned int const& maxNumConnections,
                               PinDirection const& direction) override
    {
        calls.push_back("createNewPin " + text(node) + " " + std::to_string(maxNumConnections) + " " +
                        std::to_string(direction.value()));
        if (node == refusesPinsOf) return nullptr;
        return GraphScene::createNewPin(node, maxNumConnections, direction);
    }

    GraphNodePin* createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction) override
    {
        if (!makesHostPins) return GraphScene::createNewPin(maxNumConnections, direction);
        HostPin* const pin = new HostPin(nullptr, maxNumConnections, direction);
        pin->setId(nextPinId++);
        pin->calls = &calls;
        addNodePin(pin);
        return pin;
    }

    bool addNodePin(GraphNodePin* pin) override
    {
        calls.emplace_back("addNodePin");
        if (!refusesPins) return GraphScene::addNodePin(pin);
        delete pin;
        return false;
    }

    bool addNodeToGraph(GraphNodeBase* node) override
    {
        calls.push_back("addNodeToGraph " + text(node) + " of " + text(node->getNodeOwner()));
        return !refusesNodes && GraphScene::addNodeToGraph(node);
    }

    bool removeNodeFromGraph(GraphNodeBase* node) override
    {
        calls.push_back("removeNodeFromGraph " + text(node));
        return GraphScene::removeNodeFromGraph(node);
    }

    GraphConnection* connect(GraphNodePin const* source, GraphNodePin const* target,
                             bool const& implicit) override
    {
        calls.push_back("connect " + text(source) + " > " + text(target) + (implicit ? " implicit" : ""));
        return refusesConnections ? nullptr : GraphScene::connect(source, target, implicit);
    }

    bool removeConnection(GraphConnection const* connection) override
    {
        calls.push_back("removeConnection " + text(connection));
        return GraphScene::removeConnection(connection);
    }

    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        return makesNoConnections ? nullptr : new HostConnection(source, target);
    }

    bool isPinFull(GraphNodePin const* pin) const override
    {
        return pin == fullPin || GraphScene::isPinFull(pin);
    }

    bool addCompoundInterfaceNode(PinDirection const& direction, GraphNodeBase* compound,
                                  GraphNodeBase*& interfaceNode, GraphNodePin*& compoundPin,
                                  GraphNodePin*& interfacePin) override
    {
        calls.push_back("addCompoundInterfaceNode " + std::to_string(direction.value()) + " " +
                        text(compound));
        bool const result = GraphScene::addCompoundInterfaceNode(direction, compound, interfaceNode,
                                                                 compoundPin, interfacePin);
        if (interfaceNode != nullptr) interfaceNode->setType("host");
        return result && !refusesPairs;
    }

    bool addCompoundInterfacePin(PinDirection const& direction, GraphNodeBase* interfaceNode,
                                 GraphNodePin*& compoundPin, GraphNodePin*& interfacePin) override
    {
        calls.push_back("addCompoundInterfacePin " + std::to_string(direction.value()) + " " +
                        text(interfaceNode));
        return GraphScene::addCompoundInterfacePin(direction, interfaceNode, compoundPin, interfacePin) &&
               !refusesPairs;
    }

    GraphNodePin* createCompoundPinForInterfacePin(GraphNodePin* interfacePin) override
    {
        calls.push_back("createCompoundPinForInterfacePin " + text(interfacePin));
        GraphNodePin* const pin = GraphScene::createCompoundPinForInterfacePin(interfacePin);
        if (pin != nullptr) pin->setMaxNumConnections(3);
        return pin;
    }

    bool getConnectionsInvolvingNodes(Nodes const& nodes, bool const& skipInterfaces,
                                      bool const& includeImplicit, bool const& unique,
                                      Connections& out) const override
    {
        calls.push_back(std::string("getConnectionsInvolvingNodes") + (skipInterfaces ? " skip" : "") +
                        (includeImplicit ? " implicit" : "") + (unique ? " unique" : ""));
        GraphScene::getConnectionsInvolvingNodes(nodes, skipInterfaces, includeImplicit, unique, out);
        out.removeAll(hidden);
        return !out.isEmpty();
    }

    bool getConnectionsWithNode(GraphNodeBase const* node, Connections& out, bool const& outputs,
                                bool const& inputs, bool const& includeImplicit,
                                bool const& unique) const override
    {
        calls.push_back("getConnectionsWithNode " + std::to_string(outputs) + std::to_string(inputs) +
                        std::to_string(includeImplicit) + std::to_string(unique));
        return GraphScene::getConnectionsWithNode(node, out, outputs, inputs, includeImplicit, unique);
    }

    bool getPinConnections(GraphNodePin const* pin, Connections& out) const override
    {
        calls.push_back("getPinConnections " + text(pin));
        return !seesNoConnections && GraphScene::getPinConnections(pin, out);
    }

    void getNodeConnectionsByPin(GraphNodeBase* node, std::map<GraphNodePin*, Pins>& out) const override
    {
        calls.push_back("getNodeConnectionsByPin " + text(node));
        GraphScene::getNodeConnectionsByPin(node, out);
        if (partner == nullptr) return;
        for (auto& [pin, partners] : out)
        {
            partners.setSize(0);
            partners.append(partner);
        }
    }

    /// The calls that begin with one of the names.
    Calls callsOf(std::initializer_list<std::string> names) const
    {
        Calls found;
        for (std::string const& call : calls)
            for (std::string const& name : names)
                if (call == name || call.compare(0, name.size() + 1, name + " ") == 0) found.push_back(call);
        return found;
    }

    mutable Calls calls;
    unsigned int nextId = 0;
    unsigned int nextPinId = 0x40000000u;
    bool makesHostNodes = false;
    bool makesHostPins = false;
    bool makesNoConnections = false;
    bool makesNoInterfaceNodes = false;
    GraphNodeBase const* refusesPinsOf = nullptr;
    bool refusesNodes = false;
    bool refusesPins = false;
    bool refusesPairs = false;
    bool refusesConnections = false;
    bool seesNoConnections = false;
    KS_String nameSuffix;
    GraphNodePin const* fullPin = nullptr;
    GraphConnection* hidden = nullptr;
    GraphNodePin* partner = nullptr;
};

/// The filters a and b beside the empty compound C; all of them host nodes.
struct OverrideGraph : TestGraph<HostScene>
{
    OverrideGraph() : a(addHostFilter("a")), b(addHostFilter("b")), compound(addNode<HostNode>("C"))
    {
        compound.setCompound(true);
        reset();
    }

    HostNode& addHostFilter(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        HostNode& node = addNode<HostNode>(name, owner);
        addInput(node);
        addOutput(node);
        return node;
    }

    /// A registered pin of the node; its name is "Untitled".
    HostPin& addHostPin(GraphNodeBase& node, PinDirection const& direction)
    {
        HostPin* const pin = new HostPin(nullptr, unlimited, direction);
        pin->setId(scene.nextPinId++);
        scene.addNodePin(&node, pin);
        return *pin;
    }

    HostConnection& wire(GraphNodePin& source, GraphNodePin& target)
    {
        return dynamic_cast<HostConnection&>(*scene.connect(&source, &target, false));
    }

    HostConnection& wire(GraphNodeBase& source, GraphNodeBase& target)
    {
        return wire(*source.getPinByName("out"), *target.getPinByName("in"));
    }

    /// Forgets the calls so far.
    void reset()
    {
        scene.calls.clear();
        for (HostNode* node : {&a, &b, &compound}) node->calls.clear();
    }

    bool moveIn(std::initializer_list<GraphNodeBase*> nodes)
    {
        reset();
        return scene.moveNodesToCompound(listOf(nodes), &compound, pinRenames, inputInterfaces,
                                         outputInterfaces, newInterfaceNodes, newCompoundPins, removed, outer,
                                         inner);
    }

    bool moveOut(std::initializer_list<GraphNodeBase*> nodes)
    {
        reset();
        Nodes list = listOf(nodes);
        return scene.removeNodesFromCompound(&compound, list, pinRenames, removedOuter, removed, made, spare);
    }

    bool moveOutCreatingInterfaces(std::initializer_list<GraphNodeBase*> nodes)
    {
        reset();
        Nodes list = listOf(nodes);
        return scene.removeNodesFromCompoundCreatingInterfaces(
            &compound, list, pinRenames, removedOuter, removed, made, inner, inputInterfaces,
            outputInterfaces, newInterfaceNodes, newCompoundPins);
    }

    /// The inner pin of a new pair of the compound, on an interface node of that name.
    GraphNodePin& addPair(PinDirection const& direction, KS_String const& name)
    {
        GraphNodeBase* node = nullptr;
        GraphNodePin* outerPin = nullptr;
        GraphNodePin* innerPin = nullptr;
        scene.addCompoundInterfaceNode(direction, &compound, node, outerPin, innerPin);
        node->setName(name);
        return *innerPin;
    }

    std::map<std::string, std::string> renames() const
    {
        std::map<std::string, std::string> plain;
        for (auto const& [after, before] : pinRenames) plain.emplace(after, before);
        return plain;
    }

    std::map<KS_String, KS_String> pinRenames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces;
    std::map<GraphNodeBase*, GraphNodeBase*> outputInterfaces;
    Nodes newInterfaceNodes;
    Pins newCompoundPins;
    Array<GraphConnection, _Wa> removedOuter;
    Array<GraphConnection, _Wa> removed;
    Connections outer;
    Connections inner;
    Connections made;
    Connections spare;
    HostNode& a;
    HostNode& b;
    HostNode& compound;
};

} // namespace

// ---- the scene's factories and names

TEST(CompoundOverrides, EveryFactoryTakesItsIdFromTheHost)
{
    TestGraph<HostScene> graph;
    graph.scene.nextId = 1000;
    unsigned int expected = 1000;
    for (auto const make : {&GraphScene::createNewCompound, &GraphScene::createNewInterfaceNode,
                            &GraphScene::createNewPassThrough, &GraphScene::createNewEvaluator})
    {
        std::unique_ptr<GraphNodeBase> const node((graph.scene.*make)());
        EXPECT_EQ(node->getId(), expected++);
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, InterfaceNodesAreMadeByTheHost)
{
    OverrideGraph graph;
    graph.scene.makesHostNodes = true;
    graph.scene.nextId = 1000;
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    ASSERT_EQ(graph.newInterfaceNodes.size(), 1u);
    EXPECT_THAT(graph.newInterfaceNodes[0], WhenDynamicCastTo<HostNode*>(::testing::NotNull()));
    EXPECT_EQ(graph.newInterfaceNodes[0]->getId(), 1000u);
    EXPECT_EQ(graph.scene.getNodePtrById(1000), graph.newInterfaceNodes[0]);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, InterfaceNodeIsNamedAddedAndOwnedThroughItsVirtualOperations)
{
    OverrideGraph graph;
    graph.scene.makesHostNodes = true;
    graph.scene.nameSuffix = "!";
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"createNewInterfaceNode", "getFreeInterfaceNodeName", "addNodeToGraph"}),
                ElementsAre("createNewInterfaceNode", "getFreeInterfaceNodeName root.C 2",
                            "addNodeToGraph output interface01! of -"));
    HostNode* const node = dynamic_cast<HostNode*>(graph.newInterfaceNodes[0]);
    EXPECT_THAT(node->calls,
                ElementsAre("setName output interface01!", "setNodeOwner root", "setNodeOwner C"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// Without a look at the invariants: a node without scene tells no map that its pin was named.
TEST(CompoundOverrides, InterfaceNodeThatTheHostDoesNotAddJoinsTheCompoundAllTheSame)
{
    OverrideGraph graph;
    graph.scene.refusesNodes = true;
    GraphNodeBase* node = nullptr;
    GraphNodePin* outerPin = nullptr;
    GraphNodePin* innerPin = nullptr;
    EXPECT_TRUE(graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.compound, node, outerPin, innerPin));
    EXPECT_EQ(node->getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.scene.getNodePtrById(node->getId()), nullptr);
    EXPECT_EQ(outerPin->getChildGraphNodePinPtr(), innerPin);
    graph.compound.removeNode(node);
    node->destroyNodePins();
    delete node;
}

TEST(CompoundOverrides, PairIsNamedByTheHostBeforeAndAfterTheListedPin)
{
    OverrideGraph graph;
    graph.scene.nameSuffix = "!";
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getFreePinName"}),
                ElementsAre("getFreePinName root.C output", "getFreePinName root.C out"));
    EXPECT_THAT(texts(graph.newCompoundPins), ElementsAre("C.out!"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, FullNameOfTheCompoundIsAskedForTheNewNames)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.compound.pretendedFullName = "elsewhere";
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getFreeInterfaceNodeName", "getFreePinName"}),
                ElementsAre("getFreeInterfaceNodeName elsewhere 2", "getFreePinName elsewhere output",
                            "getFreePinName elsewhere out"));
    EXPECT_THAT(graph.renames(), UnorderedElementsAre(Pair("elsewhere.a.in", "root.a.in"),
                                                      Pair("elsewhere.a.out", "root.a.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, PinsOfAPairAreMadeOnTheirNodesByTheHost)
{
    OverrideGraph graph;
    graph.scene.makesHostPins = true;
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"createNewPin", "createCompoundPinForInterfacePin", "addNodePin"}),
                ElementsAre("createNewPin output interface01 4294967295 1", "addNodePin",
                            "createCompoundPinForInterfacePin output interface01.Untitled",
                            "createNewPin C 4294967295 2", "addNodePin"));
    GraphNodePin* const outerPin = graph.newCompoundPins[0];
    EXPECT_THAT(outerPin, WhenDynamicCastTo<HostPin*>(::testing::NotNull()));
    EXPECT_THAT(outerPin->getChildGraphNodePinPtr(), WhenDynamicCastTo<HostPin*>(::testing::NotNull()));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, PinsOfAPairArePairedAndNamedThroughTheirVirtualOperations)
{
    OverrideGraph graph;
    graph.scene.makesHostPins = true;
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"setChildGraphNodePinPtr", "setParentGraphNodePinPtr", "setName"}),
                ElementsAre("setChildGraphNodePinPtr", "setParentGraphNodePinPtr", "setName output",
                            "setName output", "setName out", "setName out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, CompoundPinIsTheOneThatTheHostMakes)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_EQ(graph.newCompoundPins[0]->getMaxNumConnections(), 3u);
    EXPECT_EQ(graph.newCompoundPins[0]->getChildGraphNodePinPtr()->getMaxNumConnections(), 0xFFFFFFFFu);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, BoundaryAsksForANodeFirstAndForAPinFromThenOn)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.b);
    graph.wire(graph.b, graph.a);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"addCompoundInterfaceNode", "addCompoundInterfacePin"}),
                ElementsAre("addCompoundInterfaceNode 1 C", "addCompoundInterfacePin 1 input interface01",
                            "addCompoundInterfaceNode 2 C", "addCompoundInterfacePin 2 output interface01",
                            "addCompoundInterfacePin 2 output interface01"));
    for (GraphNodeBase* node : graph.newInterfaceNodes) EXPECT_STREQ(node->getType().c_str(), "host");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, MoveOutCreatingInterfacesAsksForThemToo)
{
    OverrideGraph graph;
    HostNode& x = graph.addHostFilter("x", &graph.compound);
    HostNode& y = graph.addHostFilter("y", &graph.compound);
    graph.wire(x, y);
    graph.wire(x, y);
    graph.moveOutCreatingInterfaces({&x});
    EXPECT_THAT(graph.scene.callsOf({"addCompoundInterfaceNode", "addCompoundInterfacePin"}),
                ElementsAre("addCompoundInterfaceNode 1 C", "addCompoundInterfacePin 1 input interface01",
                            "addCompoundInterfacePin 1 input interface01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ResultOfTheInterfaceNodeIsThatOfItsPair)
{
    OverrideGraph graph;
    graph.scene.refusesPairs = true;
    GraphNodeBase* node = nullptr;
    GraphNodePin* outerPin = nullptr;
    GraphNodePin* innerPin = nullptr;
    EXPECT_FALSE(graph.scene.GraphScene::addCompoundInterfaceNode(PIN_INPUT, &graph.compound, node, outerPin,
                                                                  innerPin));
    EXPECT_NE(node, nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostThatRefusesPinsLeavesNullEntries)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.refusesPins = true;
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
    EXPECT_EQ(graph.removed.size(), 1u);
    EXPECT_THAT(listed(graph.inner), ElementsAre(nullptr));
    EXPECT_THAT(listed(graph.outer), ElementsAre(nullptr));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostThatRefusesTheInterfacePinIsNotAskedForItsCompoundPin)
{
    OverrideGraph graph;
    graph.scene.refusesPins = true;
    TestNode& gate = graph.addNode("gate", &graph.compound);
    GraphNodePin* outerPin = nullptr;
    GraphNodePin* innerPin = nullptr;
    EXPECT_FALSE(graph.scene.addCompoundInterfacePin(PIN_INPUT, &gate, outerPin, innerPin));
    EXPECT_THAT(graph.scene.callsOf({"createCompoundPinForInterfacePin"}), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostThatMakesNoInterfaceNodeHasNoPair)
{
    OverrideGraph graph;
    graph.scene.makesNoInterfaceNodes = true;
    GraphNodeBase* node = &graph.a;
    GraphNodePin* outerPin = graph.a.getPinByName("in");
    GraphNodePin* innerPin = outerPin;
    EXPECT_FALSE(graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.compound, node, outerPin, innerPin));
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(outerPin, nullptr);
    EXPECT_EQ(innerPin, nullptr);
    EXPECT_THAT(graph.scene.callsOf({"addNodeToGraph", "createNewPin"}), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, RecordWithoutInterfaceNodeServesNobody)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.outputInterfaces.emplace(&graph.a, nullptr);
    graph.moveIn({&graph.a});
    ASSERT_EQ(graph.newInterfaceNodes.size(), 1u);
    EXPECT_THAT(texts(graph.outer), ElementsAre("C.out > b.in"));
    EXPECT_THAT(graph.outputInterfaces, ElementsAre(Pair(&graph.a, nullptr)));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, BoundaryWithoutInterfaceNodeCannotBeCrossed)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.makesNoInterfaceNodes = true;
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.removed.size(), 1u);
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
    EXPECT_TRUE(graph.newInterfaceNodes.isEmpty());
    EXPECT_THAT(graph.outputInterfaces, IsEmpty());
    EXPECT_THAT(listed(graph.newCompoundPins), Each(nullptr));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, InterfacePinIsLeftAloneWhenTheHostRefusesTheCompoundPin)
{
    OverrideGraph graph;
    graph.scene.refusesPinsOf = &graph.compound;
    GraphNodeBase* node = nullptr;
    GraphNodePin* outerPin = nullptr;
    GraphNodePin* innerPin = nullptr;
    EXPECT_FALSE(graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.compound, node, outerPin, innerPin));
    EXPECT_NE(node, nullptr);
    EXPECT_EQ(outerPin, nullptr);
    ASSERT_NE(innerPin, nullptr);
    EXPECT_EQ(innerPin->getName(), "Untitled");
    EXPECT_EQ(innerPin->getParentGraphNodePinPtr(), nullptr);
    EXPECT_TRUE(graph.compound.getNodePins().isEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the scene's wiring

TEST(CompoundOverrides, MovesWireAndUnwireThroughTheHost)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"connect", "removeConnection"}),
                ElementsAre("removeConnection a.out > b.in", "connect a.out > output interface01.out",
                            "connect C.out > b.in"));
    graph.moveOut({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"connect", "removeConnection"}),
                ElementsAre("removeConnection C.out > b.in",
                            "removeConnection a.out > output interface01.out", "connect a.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostThatRefusesToConnectLeavesNullEntries)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.refusesConnections = true;
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(listed(graph.inner), ElementsAre(nullptr));
    EXPECT_THAT(listed(graph.outer), ElementsAre(nullptr));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostThatMakesNoConnectionLeavesNullEntries)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.makesNoConnections = true;
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(listed(graph.inner), ElementsAre(nullptr));
    EXPECT_THAT(listed(graph.outer), ElementsAre(nullptr));
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, HostsFullPinIsNotWired)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.fullPin = graph.b.getPinByName("in");
    graph.moveIn({&graph.a});
    EXPECT_THAT(listed(graph.outer), ElementsAre(nullptr));
    EXPECT_THAT(texts(graph.inner), ElementsAre("a.out > output interface01.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, PinThatRefusesCompoundsIsNotWired)
{
    OverrideGraph graph;
    HostPin& picky = graph.addHostPin(graph.b, PIN_INPUT);
    graph.wire(*graph.a.getPinByName("out"), picky);
    picky.refusesCompounds = true;
    graph.moveIn({&graph.a});
    EXPECT_THAT(listed(graph.outer), ElementsAre(nullptr));
    EXPECT_EQ(graph.inner.size(), 1u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NewConnectionsAreMadeByTheHost)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.b, graph.a);
    graph.moveIn({&graph.a});
    graph.moveOut({&graph.a});
    EXPECT_EQ(graph.made.size(), 2u);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()),
                Each(WhenDynamicCastTo<HostConnection*>(::testing::NotNull())));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- what the moves gather

TEST(CompoundOverrides, MovesGatherThroughTheHost)
{
    OverrideGraph graph;
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getConnectionsInvolvingNodes", "getConnectionsWithNode"}),
                ElementsAre("getConnectionsInvolvingNodes skip unique", "getConnectionsWithNode 1100"));
    graph.moveOut({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getConnectionsInvolvingNodes"}),
                ElementsAre("getConnectionsInvolvingNodes unique"));
    graph.moveOutCreatingInterfaces({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getConnectionsInvolvingNodes"}),
                ElementsAre("getConnectionsInvolvingNodes unique"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ConnectionThatTheHostHidesIsLeftAlone)
{
    OverrideGraph graph;
    HostConnection& hidden = graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.b);
    graph.scene.hidden = &hidden;
    graph.moveIn({&graph.a});
    EXPECT_TRUE(graph.scene.getGraphConnections().contains(&hidden));
    EXPECT_EQ(graph.removed.size(), 1u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeThatHidesItsConnectionsKeepsThem)
{
    OverrideGraph graph;
    HostConnection& connection = graph.wire(graph.a, graph.b);
    graph.a.hidesConnections = true;
    graph.moveIn({&graph.a});
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(&connection));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ConnectionThatCallsItselfImplicitIsLeftAlone)
{
    OverrideGraph graph;
    graph.scene.setUseAdjacencyMap(false);
    HostConnection& connection = graph.wire(graph.a, graph.b);
    connection.pretendsImplicit = true;
    graph.moveIn({&graph.a});
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(&connection));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ConnectionsByPinAreThoseThatTheHostSees)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.seesNoConnections = true;
    graph.reset();
    std::map<GraphNodePin*, Connections> connections;
    graph.scene.getNodeConnectionsByPin(&graph.a, connections);
    EXPECT_TRUE(connections[graph.a.getPinByName("out")].isEmpty());
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(&graph.a, partners);
    EXPECT_TRUE(partners[graph.a.getPinByName("out")].isEmpty());
    EXPECT_THAT(graph.scene.callsOf({"getPinConnections"}),
                ElementsAre("getPinConnections a.in", "getPinConnections a.out", "getPinConnections a.in",
                            "getPinConnections a.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, MoveOutWiresThePartnersThatTheHostNames)
{
    OverrideGraph graph;
    HostNode& x = graph.addHostFilter("x", &graph.compound);
    graph.wire(*x.getPinByName("out"), graph.addPair(PIN_OUTPUT, "O"));
    graph.scene.partner = graph.b.getPinByName("in");
    graph.moveOut({&x});
    EXPECT_THAT(texts(graph.made), ElementsAre("x.out > b.in"));
    EXPECT_THAT(graph.scene.callsOf({"getNodeConnectionsByPin", "getPinConnections"}),
                ElementsAre("getNodeConnectionsByPin C", "getPinConnections C.output"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- nodes

TEST(CompoundOverrides, NodeIsMovedThroughItsSetNodeOwner)
{
    OverrideGraph graph;
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.a.calls, ElementsAre("setNodeOwner C"));
    graph.moveOut({&graph.a});
    EXPECT_THAT(graph.a.calls, ElementsAre("setNodeOwner root"));
    graph.moveIn({&graph.a});
    graph.moveOutCreatingInterfaces({&graph.a});
    EXPECT_THAT(graph.a.calls, ElementsAre("setNodeOwner root"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeThatStaysPutIsLedThroughTheBoundaryAllTheSame)
{
    OverrideGraph graph;
    graph.wire(graph.a, graph.b);
    graph.a.staysPut = true;
    graph.moveIn({&graph.a});
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.root);
    EXPECT_THAT(graph.renames(),
                UnorderedElementsAre(Pair("root.a.in", "root.a.in"), Pair("root.a.out", "root.a.out")));
    EXPECT_THAT(texts(graph.outer), ElementsAre("C.out > b.in"));
    graph.a.staysPut = false;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, PinThatANodeGetsOnItsWayHasNoOldName)
{
    class GrowingNode : public TestNode
    {
    public:
        void setNodeOwner(GraphNodeBase* owner) override
        {
            TestNode::setNodeOwner(owner);
            if (grows) getGraphScene()->createNewPin(this, unlimited, PIN_INPUT)->setName("more");
        }

        bool grows = false;
    };
    OverrideGraph graph;
    GrowingNode& node = graph.addNode<GrowingNode>("node");
    graph.addInput(node);
    node.grows = true;
    graph.moveIn({&node});
    EXPECT_NE(node.getPinByName("more"), nullptr);
    EXPECT_THAT(graph.renames(), UnorderedElementsAre(Pair("root.C.node.in", "root.node.in")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NewOwnerDecidesWhetherANameIsTakenAndWhatTheNodeIsCalledInstead)
{
    OverrideGraph graph;
    graph.compound.claimsEveryName = true;
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.compound.calls, ElementsAre("getNodeByName a", "getFreeNodeNameLikeThis a root"));
    EXPECT_THAT(graph.a.calls, ElementsAre("setName guest", "setNodeOwner C"));
    EXPECT_THAT(graph.renames(), UnorderedElementsAre(Pair("root.C.guest.in", "root.a.in"),
                                                      Pair("root.C.guest.out", "root.a.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NewOwnerOfAMoveOutDecidesToo)
{
    for (bool const creating : {false, true})
    {
        SCOPED_TRACE(creating);
        OverrideGraph graph;
        graph.compound.setNodeOwner(&graph.b);
        HostNode& x = graph.addHostFilter("x", &graph.compound);
        graph.b.claimsEveryName = true;
        creating ? graph.moveOutCreatingInterfaces({&x}) : graph.moveOut({&x});
        EXPECT_THAT(graph.b.calls, ElementsAre("getNodeByName x", "getFreeNodeNameLikeThis x C"));
        EXPECT_STREQ(x.getFullName().c_str(), "root.b.guest");
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(CompoundOverrides, NodeMayChangeTheNameThatItIsGiven)
{
    OverrideGraph graph;
    graph.addHostFilter("a", &graph.compound);
    graph.a.nameSuffix = "_x";
    graph.moveIn({&graph.a});
    EXPECT_STREQ(graph.a.getName().c_str(), "a1_x");
    EXPECT_THAT(graph.renames(), Contains(Pair("root.C.a1_x.in", "root.a.in")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeIsAskedForItsName)
{
    OverrideGraph graph;
    TestNode& bare = graph.addNode<HostNode>("bare");
    dynamic_cast<HostNode&>(bare).pretendedName = "masked";
    graph.compound.claimsEveryName = true;
    graph.moveIn({&bare});
    EXPECT_THAT(graph.compound.calls,
                ElementsAre("getNodeByName masked", "getFreeNodeNameLikeThis masked root"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeThatCallsItselfAnInterfaceIsNotMoved)
{
    OverrideGraph graph;
    HostConnection& connection = graph.wire(graph.a, graph.b);
    graph.a.pretendsInterface = true;
    graph.moveIn({&graph.a});
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.root);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(&connection));
    EXPECT_TRUE(graph.pinRenames.empty());
    graph.a.pretendsInterface = false;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, EndWithoutNodeHasNoOwnerInAMoveOut)
{
    OverrideGraph graph;
    graph.a.setNodeOwner(&graph.compound);
    GraphNodePin source(nullptr, unlimited, PIN_OUTPUT);
    GraphNodePin target(nullptr, unlimited, PIN_INPUT);
    graph.wire(source, *graph.a.getPinByName("in"));
    graph.wire(*graph.a.getPinByName("out"), target);
    graph.moveOut({&graph.a});
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.root);
    EXPECT_EQ(graph.removed.size(), 2u);
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, CompoundIsAskedForItsOwnerInAMoveOut)
{
    OverrideGraph graph;
    TestNode& bare = graph.addNode("bare", &graph.compound);
    graph.compound.pretendedOwner = &graph.b;
    graph.moveOut({&bare});
    EXPECT_EQ(bare.getNodeOwner(), &graph.b);
    graph.compound.pretendedOwner = nullptr;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, EndsAreAskedForTheirOwnersInAMoveOut)
{
    for (bool const creating : {false, true})
    {
        SCOPED_TRACE(creating);
        OverrideGraph graph;
        HostNode& x = graph.addHostFilter("x", &graph.compound);
        HostNode& y = graph.addHostFilter("y", &graph.compound);
        HostConnection& connection = graph.wire(x, y);
        y.pretendedOwner = &graph.root;
        creating ? graph.moveOutCreatingInterfaces({&x}) : graph.moveOut({&x});
        EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(&connection));
        y.pretendedOwner = nullptr;
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(CompoundOverrides, InterfacePinsNodeIsAskedForItsOwner)
{
    OverrideGraph graph;
    HostNode& node = graph.addNode<HostNode>("I");
    GraphNodePin& pin = graph.addInput(node);
    node.pretendedOwner = &graph.compound;
    GraphNodePin* const outerPin = graph.scene.createCompoundPinForInterfacePin(&pin);
    EXPECT_EQ(outerPin->getParentGraphNodePtr(), &graph.compound);
    node.pretendedOwner = nullptr;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeThatDeniesToBeACompoundIsNeitherListedNorEntered)
{
    OverrideGraph graph;
    HostNode& inner = graph.addNode<HostNode>("D", &graph.compound);
    inner.setCompound(true);
    Nodes out;
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(texts(out), ElementsAre("root", "C", "D"));
    graph.compound.deniesCompound = true;
    out.setSize(0);
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(texts(out), ElementsAre("root"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, NodeDecidesWhatIsBelowIt)
{
    OverrideGraph graph;
    graph.addNode("x", &graph.compound);
    Nodes out;
    graph.scene.getGraphNodesAtLevel(&graph.compound, true, out);
    EXPECT_THAT(texts(out), ElementsAre("C"));
    EXPECT_THAT(graph.compound.calls, Contains("getNodesRecursively"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, CompoundIsEmptiedThroughTheHost)
{
    OverrideGraph graph;
    graph.addNode("x", &graph.compound);
    graph.addNode("y", &graph.compound);
    graph.reset();
    graph.scene.removeNodesInCompoundFromGraph(&graph.compound);
    EXPECT_THAT(graph.scene.callsOf({"removeNodeFromGraph"}),
                ElementsAre("removeNodeFromGraph x", "removeNodeFromGraph y"));
    EXPECT_THAT(graph.compound.calls, ElementsAre("clearNodesArray"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- pins

TEST(CompoundOverrides, PairIsNamedAfterTheNameThatTheListedPinGives)
{
    OverrideGraph graph;
    HostPin& pin = graph.addHostPin(graph.a, PIN_OUTPUT);
    graph.wire(pin, *graph.b.getPinByName("in"));
    pin.pretendedName = "masked";
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.scene.callsOf({"getFreePinName"}), Contains("getFreePinName root.C masked"));
    EXPECT_THAT(texts(graph.newCompoundPins), ElementsAre("C.masked"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, RenamesHoldTheFullNamesThatThePinsGive)
{
    OverrideGraph graph;
    HostNode& bare = graph.addNode<HostNode>("bare");
    HostPin& pin = graph.addHostPin(bare, PIN_INPUT);
    pin.suffix = "?";
    graph.moveIn({&bare});
    EXPECT_THAT(graph.renames(), UnorderedElementsAre(Pair("root.C.bare.Untitled?", "root.bare.Untitled?")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, PinThatCallsItselfAnInterfacePinIsResolvedInAMoveOut)
{
    for (bool const isTarget : {false, true})
    {
        SCOPED_TRACE(isTarget);
        OverrideGraph graph;
        HostNode& x = graph.addHostFilter("x", &graph.compound);
        HostNode& y = graph.addHostFilter("y", &graph.compound);
        HostPin& pin = graph.addHostPin(y, isTarget ? PIN_INPUT : PIN_OUTPUT);
        isTarget ? graph.wire(*x.getPinByName("out"), pin) : graph.wire(pin, *x.getPinByName("in"));
        pin.pretendsInterface = true;
        graph.moveOutCreatingInterfaces({&x});
        EXPECT_TRUE(graph.scene.getGraphConnections().isEmpty());
        EXPECT_EQ(graph.removed.size(), 1u);
        EXPECT_THAT(texts(graph.newInterfaceNodes), IsEmpty());
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(CompoundOverrides, InterfacePinIsAskedForItsCompoundPinInAMoveOut)
{
    OverrideGraph graph;
    HostNode& x = graph.addHostFilter("x", &graph.compound);
    graph.scene.makesHostPins = true;
    HostPin& inner = dynamic_cast<HostPin&>(graph.addPair(PIN_OUTPUT, "O"));
    GraphNodePin& other = *graph.addPair(PIN_OUTPUT, "P").getParentGraphNodePinPtr();
    graph.wire(*x.getPinByName("out"), inner);
    graph.wire(*inner.getParentGraphNodePinPtr(), *graph.a.getPinByName("in"));
    graph.wire(other, *graph.b.getPinByName("in"));
    inner.pretendedParent = &other;
    graph.moveOut({&x});
    EXPECT_THAT(texts(graph.scene.getGraphConnections()),
                UnorderedElementsAre("C.output > a.in", "x.out > b.in"));
    inner.pretendedParent = nullptr;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, InterfacePinIsAskedForItsNode)
{
    OverrideGraph graph;
    HostNode& stray = graph.addNode<HostNode>("stray");
    HostNode& inside = graph.addNode<HostNode>("inside", &graph.compound);
    HostPin& pin = graph.addHostPin(stray, PIN_INPUT);
    pin.pretendedNode = &inside;
    GraphNodePin* const outerPin = graph.scene.createCompoundPinForInterfacePin(&pin);
    EXPECT_EQ(outerPin->getParentGraphNodePtr(), &graph.compound);
    pin.pretendedNode = nullptr;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- connections

TEST(CompoundOverrides, ConnectionIsAskedWhichOfItsPinsIsTheSource)
{
    OverrideGraph graph;
    HostConnection& connection = graph.wire(graph.a, graph.b);
    connection.deniesItsSource = true;
    GraphNodePin* const source = graph.a.getPinByName("out");
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(&graph.a, partners);
    EXPECT_THAT(listed(partners[source]), ElementsAre(source));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ConnectionIsAskedWhetherItLeadsToAnInterfacePin)
{
    OverrideGraph graph;
    HostNode& x = graph.addHostFilter("x", &graph.compound);
    GraphNodePin& inner = graph.addPair(PIN_OUTPUT, "O");
    HostConnection& connection = graph.wire(*x.getPinByName("out"), inner);
    graph.wire(*inner.getParentGraphNodePinPtr(), *graph.b.getPinByName("in"));
    connection.deniesInterfaces = true;
    graph.moveOut({&x});
    EXPECT_TRUE(graph.removedOuter.isEmpty());
    EXPECT_THAT(texts(graph.scene.getGraphConnections()), Contains("C.output > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(CompoundOverrides, ConnectionIsAskedForItsNodesAtTheBoundary)
{
    for (bool const outgoing : {false, true})
    {
        SCOPED_TRACE(outgoing);
        OverrideGraph graph;
        graph.scene.setUseAdjacencyMap(false);
        HostConnection& connection = outgoing ? graph.wire(graph.a, graph.b) : graph.wire(graph.b, graph.a);
        (outgoing ? connection.pretendedTarget : connection.pretendedSource) = &graph.a;
        graph.moveIn({&graph.a});
        EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(&connection));
        EXPECT_TRUE(graph.removed.isEmpty());
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

} // namespace kestrel::graph::test
