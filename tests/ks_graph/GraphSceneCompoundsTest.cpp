#include "support/CallbackLog.h"
#include "support/GraphTexts.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

constexpr PinDirection both{3u};
constexpr PinDirection neither{0u};

/// A graph with an empty compound "C" under the root.
struct CompoundGraph : TestGraph<>
{
    CompoundGraph() : compound(addCompound("C")) { scene.setIsDirty(false); }

    TestNode& addCompound(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        TestNode& node = addNode(name, owner);
        node.setCompound(true);
        return node;
    }

    TestNode& addInterface(KS_String const& name, GraphNodeBase& owner)
    {
        TestNode& node = addNode(name, &owner);
        node.setInterface(true);
        return node;
    }

    TestNode& compound;
};

/// What the two operations that make a pair hand back; starts with pointers that lead nowhere useful.
struct Pair
{
    explicit Pair(CompoundGraph& graph)
        : node(&graph.root),
          pinOfTheRoot(&graph.root, 1, PIN_INPUT),
          compoundPin(&pinOfTheRoot),
          interfacePin(&pinOfTheRoot)
    {}

    GraphNodeBase* node;
    GraphNodePin pinOfTheRoot;
    GraphNodePin* compoundPin;
    GraphNodePin* interfacePin;
};

std::vector<std::string> namesOf(Nodes const& nodes)
{
    std::vector<std::string> names;
    for (GraphNodeBase* node : nodes) names.emplace_back(node->getName().c_str());
    return names;
}

} // namespace

// ---- making nodes

TEST(SceneCompounds, FactoriesMakeABareNodeWithAFreeIdAndTheirFlag)
{
    struct Row
    {
        char const* factory;
        GraphNodeBase* (GraphScene::*make)();
        bool isCompound;
        bool isInterface;
    };
    Row const rows[] = {
        {"createNewCompound", &GraphScene::createNewCompound, true, false},
        {"createNewInterfaceNode", &GraphScene::createNewInterfaceNode, false, true},
        {"createNewPassThrough", &GraphScene::createNewPassThrough, false, false},
        {"createNewEvaluator", &GraphScene::createNewEvaluator, false, false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.factory);
        TestGraph<> graph;
        std::unique_ptr<GraphNodeBase> const node((graph.scene.*row.make)());
        EXPECT_EQ(node->getId(), 2u);
        EXPECT_EQ(node->isCompound(), row.isCompound);
        EXPECT_EQ(node->isInterface(), row.isInterface);
        EXPECT_STREQ(node->getName().c_str(), "");
        EXPECT_STREQ(node->getType().c_str(), "");
        EXPECT_STREQ(node->getDescription().c_str(), "");
        EXPECT_STREQ(node->getCategory().c_str(), "");
        EXPECT_TRUE(node->getNodePins().isEmpty());
        EXPECT_TRUE(node->getNodes().isEmpty());
        EXPECT_EQ(node->getNodeOwner(), nullptr);
        EXPECT_EQ(node->getGraphScene(), nullptr);
        EXPECT_EQ(graph.scene.getNumberOfNodes(), 1u);
        EXPECT_FALSE(graph.scene.getIsDirty());
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneCompounds, AMadeNodeDoesNotReserveItsId)
{
    TestGraph<> graph;
    std::unique_ptr<GraphNodeBase> const first(graph.scene.createNewCompound());
    std::unique_ptr<GraphNodeBase> const second(graph.scene.createNewInterfaceNode());
    EXPECT_EQ(first->getId(), second->getId());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the compound pin for an interface pin

TEST(SceneCompounds, CompoundPinHasTheOppositeDirectionByTheInputBit)
{
    struct Row
    {
        PinDirection interfacePin;
        PinDirection compoundPin;
    };
    for (Row const& row : {Row{PIN_INPUT, PIN_OUTPUT}, Row{PIN_OUTPUT, PIN_INPUT}, Row{both, PIN_OUTPUT},
                           Row{neither, PIN_INPUT}})
    {
        SCOPED_TRACE(row.interfacePin.value());
        CompoundGraph graph;
        GraphNodePin& inner = graph.addPin(graph.addInterface("I", graph.compound), "p", row.interfacePin);
        GraphNodePin* const outer = graph.scene.createCompoundPinForInterfacePin(&inner);
        ASSERT_NE(outer, nullptr);
        EXPECT_EQ(outer->getDirection(), row.compoundPin);
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneCompounds, CompoundPinIsPairedUnlimitedUnnamedAndRegistered)
{
    CompoundGraph graph;
    GraphNodePin& inner = graph.addInput(graph.addInterface("I", graph.compound), "p", 1);
    graph.scene.setIsDirty(false);

    GraphNodePin* const outer = graph.scene.createCompoundPinForInterfacePin(&inner);
    ASSERT_NE(outer, nullptr);
    EXPECT_EQ(outer->getParentGraphNodePtr(), &graph.compound);
    EXPECT_THAT(listed(graph.compound.getNodePins()), ElementsAre(outer));
    EXPECT_EQ(outer->getChildGraphNodePinPtr(), &inner);
    EXPECT_EQ(inner.getParentGraphNodePinPtr(), outer);
    EXPECT_EQ(outer->getParentGraphNodePinPtr(), nullptr);
    EXPECT_EQ(inner.getChildGraphNodePinPtr(), nullptr);
    EXPECT_EQ(outer->getMaxNumConnections(), 0xFFFFFFFFu);
    EXPECT_EQ(inner.getMaxNumConnections(), 1u);
    EXPECT_STREQ(outer->getName().c_str(), "Untitled");
    EXPECT_STREQ(inner.getName().c_str(), "p");
    EXPECT_EQ(graph.scene.getPinPtrById(outer->getId()), outer);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.Untitled"), outer);
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, InterfacePinOutsideACompoundGetsNoCompoundPin)
{
    CompoundGraph graph;
    TestNode& homeless = graph.newNode("I");
    homeless.setInterface(true);
    GraphNodePin& pin = *graph.scene.createNewPin(&homeless, 1, PIN_INPUT);
    GraphNodePin* const alone = graph.scene.createNewPin(1, PIN_INPUT);
    graph.scene.setIsDirty(false);

    EXPECT_EQ(graph.scene.createCompoundPinForInterfacePin(&pin), nullptr);
    EXPECT_EQ(graph.scene.createCompoundPinForInterfacePin(alone), nullptr);
    EXPECT_EQ(graph.scene.createCompoundPinForInterfacePin(nullptr), nullptr);
    EXPECT_EQ(pin.getParentGraphNodePinPtr(), nullptr);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
    graph.scene.removeNodePin(alone);
    delete alone;
}

// ---- a pair of pins

TEST(SceneCompounds, OnlyExactlyInputMakesAnInputPair)
{
    struct Row
    {
        PinDirection direction;
        PinDirection compoundPin;
        PinDirection interfacePin;
        char const* name;
    };
    for (Row const& row :
         {Row{PIN_INPUT, PIN_INPUT, PIN_OUTPUT, "input"}, Row{PIN_OUTPUT, PIN_OUTPUT, PIN_INPUT, "output"},
          Row{both, PIN_OUTPUT, PIN_INPUT, "output"}, Row{neither, PIN_OUTPUT, PIN_INPUT, "output"},
          Row{PinDirection{5u}, PIN_OUTPUT, PIN_INPUT, "output"}})
    {
        SCOPED_TRACE(row.direction.value());
        CompoundGraph graph;
        TestNode& node = graph.addInterface("I", graph.compound);
        Pair pair(graph);
        EXPECT_TRUE(
            graph.scene.addCompoundInterfacePin(row.direction, &node, pair.compoundPin, pair.interfacePin));
        EXPECT_THAT(listed(node.getNodePins()), ElementsAre(pair.interfacePin));
        EXPECT_THAT(listed(graph.compound.getNodePins()), ElementsAre(pair.compoundPin));
        EXPECT_EQ(pair.compoundPin->getDirection(), row.compoundPin);
        EXPECT_EQ(pair.interfacePin->getDirection(), row.interfacePin);
        EXPECT_STREQ(pair.interfacePin->getName().c_str(), row.name);
        EXPECT_STREQ(pair.compoundPin->getName().c_str(), row.name);
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneCompounds, PairIsUnlimitedPairedAndFoundByItsNames)
{
    CompoundGraph graph;
    TestNode& node = graph.addInterface("I", graph.compound);
    Pair pair(graph);
    graph.scene.addCompoundInterfacePin(PIN_INPUT, &node, pair.compoundPin, pair.interfacePin);
    EXPECT_EQ(pair.compoundPin->getMaxNumConnections(), 0xFFFFFFFFu);
    EXPECT_EQ(pair.interfacePin->getMaxNumConnections(), 0xFFFFFFFFu);
    EXPECT_EQ(pair.compoundPin->getChildGraphNodePinPtr(), pair.interfacePin);
    EXPECT_EQ(pair.interfacePin->getParentGraphNodePinPtr(), pair.compoundPin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.input"), pair.compoundPin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.I.input"), pair.interfacePin);
    EXPECT_LT(pair.interfacePin->getId(), pair.compoundPin->getId());
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, CompoundPinIsNamedOnlyThroughThePairing)
{
    CompoundGraph graph;
    TestNode& noInterface = graph.addNode("x", &graph.compound);
    Pair pair(graph);
    EXPECT_TRUE(
        graph.scene.addCompoundInterfacePin(PIN_OUTPUT, &noInterface, pair.compoundPin, pair.interfacePin));
    EXPECT_STREQ(pair.interfacePin->getName().c_str(), "output");
    EXPECT_STREQ(pair.compoundPin->getName().c_str(), "Untitled");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, PairsAreNumberedAmongThePinsOfTheCompound)
{
    CompoundGraph graph;
    TestNode& first = graph.addInterface("I", graph.compound);
    TestNode& second = graph.addInterface("J", graph.compound);
    graph.addOutput(first, "output");
    graph.addInput(graph.compound, "output01");
    std::vector<std::string> names;
    for (auto const& [direction, node] : {std::pair(PIN_OUTPUT, &first), std::pair(PIN_OUTPUT, &second),
                                          std::pair(PIN_INPUT, &first), std::pair(PIN_INPUT, &second)})
    {
        Pair pair(graph);
        graph.scene.addCompoundInterfacePin(direction, node, pair.compoundPin, pair.interfacePin);
        names.emplace_back(pair.compoundPin->getName().c_str());
    }
    EXPECT_THAT(names, ElementsAre("output", "output02", "input", "input01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, NoPairWithoutACompound)
{
    CompoundGraph graph;
    TestNode& homeless = graph.newNode("I");
    homeless.setInterface(true);
    for (GraphNodeBase* node : {static_cast<GraphNodeBase*>(&homeless), static_cast<GraphNodeBase*>(nullptr)})
    {
        Pair pair(graph);
        EXPECT_FALSE(
            graph.scene.addCompoundInterfacePin(PIN_INPUT, node, pair.compoundPin, pair.interfacePin));
        EXPECT_EQ(pair.compoundPin, nullptr);
        EXPECT_EQ(pair.interfacePin, nullptr);
    }
    EXPECT_TRUE(homeless.getNodePins().isEmpty());
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, PairFiresThePinCallbackForTheInterfacePinFirst)
{
    CompoundGraph graph;
    TestNode& node = graph.addInterface("I", graph.compound);
    Pair pair(graph);
    CallbackLog log;
    graph.scene.addCompoundInterfacePin(PIN_INPUT, &node, pair.compoundPin, pair.interfacePin);
    EXPECT_THAT(log.lines, ElementsAre("addNodePin C Untitled", "addNodePin root Untitled"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- an interface node with its first pair

TEST(SceneCompounds, InterfaceNodeIsNamedByTheInputBitAndWiredByTheWholeDirection)
{
    struct Row
    {
        PinDirection direction;
        char const* node;
        PinDirection compoundPin;
        char const* pin;
        bool isInputInterface;
    };
    for (Row const& row : {Row{PIN_INPUT, "input interface01", PIN_INPUT, "input", true},
                           Row{PIN_OUTPUT, "output interface01", PIN_OUTPUT, "output", false},
                           Row{both, "input interface01", PIN_OUTPUT, "output", false},
                           Row{neither, "output interface01", PIN_OUTPUT, "output", false}})
    {
        SCOPED_TRACE(row.direction.value());
        CompoundGraph graph;
        Pair pair(graph);
        EXPECT_TRUE(graph.scene.addCompoundInterfaceNode(row.direction, &graph.compound, pair.node,
                                                         pair.compoundPin, pair.interfacePin));
        EXPECT_STREQ(pair.node->getName().c_str(), row.node);
        EXPECT_TRUE(pair.node->isInterface());
        EXPECT_EQ(pair.node->isInputInterface(), row.isInputInterface);
        EXPECT_EQ(pair.node->isOutputInterface(), !row.isInputInterface);
        EXPECT_EQ(pair.compoundPin->getDirection(), row.compoundPin);
        EXPECT_STREQ(pair.compoundPin->getName().c_str(), row.pin);
        EXPECT_STREQ(pair.interfacePin->getName().c_str(), row.pin);
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneCompounds, InterfaceNodeIsRegisteredAndOwnedByTheCompound)
{
    CompoundGraph graph;
    Pair pair(graph);
    unsigned int const id = graph.scene.getFreeNodeId();
    graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.compound, pair.node, pair.compoundPin,
                                         pair.interfacePin);
    EXPECT_EQ(graph.scene.getNodePtrById(id), pair.node);
    EXPECT_EQ(pair.node->getGraphScene(), &graph.scene);
    EXPECT_EQ(pair.node->getNodeOwner(), &graph.compound);
    EXPECT_THAT(listed(graph.compound.getNodes()), ElementsAre(pair.node));
    EXPECT_THAT(listed(graph.root.getNodes()), ElementsAre(&graph.compound));
    EXPECT_THAT(listed(pair.node->getNodePins()), ElementsAre(pair.interfacePin));
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, InterfaceNodeIsNamedThenAddedThenOwnedThenGivenItsPair)
{
    CompoundGraph graph;
    Pair pair(graph);
    CallbackLog log;
    bool hadPins = true;
    log.onNode = [&](GraphScene*, GraphNodeBase*, GraphNodeBase* node)
    { hadPins = !node->getNodePins().isEmpty(); };
    graph.scene.addCompoundInterfaceNode(PIN_OUTPUT, &graph.compound, pair.node, pair.compoundPin,
                                         pair.interfacePin);
    EXPECT_THAT(log.lines, ElementsAre("addNode root output interface01", "addNodePin C Untitled",
                                       "addNodePin root Untitled"));
    EXPECT_FALSE(hadPins);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, InterfaceNodesAreNumberedWithinTheirCompound)
{
    CompoundGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    std::vector<std::string> names;
    for (auto const& [direction, owner] :
         {std::pair(PIN_INPUT, &graph.compound), std::pair(PIN_INPUT, &graph.compound),
          std::pair(PIN_OUTPUT, &graph.compound), std::pair(PIN_INPUT, &inner)})
    {
        Pair pair(graph);
        graph.scene.addCompoundInterfaceNode(direction, owner, pair.node, pair.compoundPin,
                                             pair.interfacePin);
        names.push_back(std::string(pair.node->getFullName()) + " " + pair.compoundPin->getName().c_str());
    }
    EXPECT_THAT(names, ElementsAre("root.C.input interface01 input", "root.C.input interface02 input01",
                                   "root.C.output interface01 output", "root.C.D.input interface01 input"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, NoInterfaceNodeWithoutACompound)
{
    CompoundGraph graph;
    Pair pair(graph);
    CallbackLog log;
    EXPECT_FALSE(graph.scene.addCompoundInterfaceNode(PIN_INPUT, nullptr, pair.node, pair.compoundPin,
                                                      pair.interfacePin));
    EXPECT_EQ(pair.node, nullptr);
    EXPECT_EQ(pair.compoundPin, nullptr);
    EXPECT_EQ(pair.interfacePin, nullptr);
    EXPECT_EQ(graph.scene.getNumberOfNodes(), 2u);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- emptying a compound

TEST(SceneCompounds, EmptyingACompoundRemovesEveryChildInOrder)
{
    CompoundGraph graph;
    TestNode& a = graph.addFilter("a", &graph.compound);
    TestNode& inner = graph.addCompound("D", &graph.compound);
    TestNode& x = graph.addNode("x", &inner);
    TestNode& b = graph.addNode("b", &graph.compound);
    TestNode& outside = graph.addNode("outside");
    graph.scene.removeNodePins(&a);
    CallbackLog log;
    graph.scene.removeNodesInCompoundFromGraph(&graph.compound);
    EXPECT_THAT(log.lines,
                ElementsAre("removeNode C a", "removeNode D x", "removeNode C D", "removeNode C b"));
    EXPECT_TRUE(graph.compound.getNodes().isEmpty());
    for (TestNode* node : {&a, &inner, &x, &b})
    {
        EXPECT_EQ(node->getNodeOwner(), nullptr);
        EXPECT_FALSE(graph.scene.hasGraphNodeWithId(node->getId()));
    }
    EXPECT_THAT(listed(graph.root.getNodes()), ElementsAre(&graph.compound, &outside));
    EXPECT_TRUE(graph.scene.hasGraphNodeWithId(graph.compound.getId()));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, EmptyingACompoundEndsItsPairs)
{
    CompoundGraph graph;
    TestNode& outside = graph.addFilter("outside");
    Pair pair(graph);
    graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.compound, pair.node, pair.compoundPin,
                                         pair.interfacePin);
    graph.scene.connect(outside.getPinByName("out"), pair.compoundPin, false);
    graph.scene.removeNodesInCompoundFromGraph(&graph.compound);
    EXPECT_TRUE(graph.compound.getNodePins().isEmpty());
    EXPECT_TRUE(pair.node->getNodePins().isEmpty());
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.input"), nullptr);
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
    delete pair.node;
}

TEST(SceneCompounds, EmptyingNullDoesNothing)
{
    CompoundGraph graph;
    graph.addNode("a", &graph.compound);
    graph.scene.removeNodesInCompoundFromGraph(nullptr);
    EXPECT_EQ(graph.scene.getNumberOfNodes(), 3u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- connections by pin

TEST(SceneCompounds, EveryPinOfTheNodeIsListedWithItsConnections)
{
    CompoundGraph graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    TestNode& c = graph.addFilter("c");
    GraphNodePin& idle = graph.addInput(b, "idle");
    GraphConnection* const in = graph.scene.connect(a.getPinByName("out"), b.getPinByName("in"), true);
    GraphConnection* const out1 = graph.scene.connect(b.getPinByName("out"), a.getPinByName("in"), false);
    GraphConnection* const out2 = graph.scene.connect(b.getPinByName("out"), c.getPinByName("in"), false);

    std::map<GraphNodePin*, Connections> connections;
    graph.scene.getNodeConnectionsByPin(&b, connections);
    EXPECT_EQ(connections.size(), 3u);
    EXPECT_THAT(listed(connections[b.getPinByName("in")]), ElementsAre(in));
    EXPECT_THAT(listed(connections[b.getPinByName("out")]), ElementsAre(out1, out2));
    EXPECT_THAT(listed(connections[&idle]), IsEmpty());

    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(&b, partners);
    EXPECT_EQ(partners.size(), 3u);
    EXPECT_THAT(listed(partners[b.getPinByName("in")]), ElementsAre(a.getPinByName("out")));
    EXPECT_THAT(listed(partners[b.getPinByName("out")]),
                ElementsAre(a.getPinByName("in"), c.getPinByName("in")));
    EXPECT_THAT(listed(partners[&idle]), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, PartnersOfABidirectionalPinFollowTheInputsThenTheOutputs)
{
    CompoundGraph graph;
    TestNode& a = graph.addFilter("a");
    GraphNodePin& pin = graph.addPin(graph.addNode("b"), "pin", both);
    graph.scene.connect(&pin, a.getPinByName("in"), false);
    graph.scene.connect(a.getPinByName("out"), &pin, false);
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(pin.getParentGraphNodePtr(), partners);
    EXPECT_THAT(listed(partners[&pin]), ElementsAre(a.getPinByName("out"), a.getPinByName("in")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, LoopOfAPinIsListedOnceForEachList)
{
    CompoundGraph graph;
    GraphNodePin& pin = graph.addPin(graph.addNode("a"), "pin", both);
    GraphConnection* const loop = graph.scene.connect(&pin, &pin, false);
    std::map<GraphNodePin*, Connections> connections;
    graph.scene.getNodeConnectionsByPin(pin.getParentGraphNodePtr(), connections);
    EXPECT_THAT(listed(connections[&pin]), ElementsAre(loop, loop));
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(pin.getParentGraphNodePtr(), partners);
    EXPECT_THAT(listed(partners[&pin]), ElementsAre(&pin, &pin));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, PartnerInAConnectionThatIsNotConnectedIsItsSource)
{
    CompoundGraph graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphNodePin* const source = a.getPinByName("out");
    graph.scene.connect(source, b.getPinByName("in"), false);
    b.getPinByName("in")->setDirection(PIN_OUTPUT);
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(&a, partners);
    EXPECT_THAT(listed(partners[source]), ElementsAre(source));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, PinThatIsAKeyAlreadyKeepsItsList)
{
    CompoundGraph graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphConnection* const connection =
        graph.scene.connect(a.getPinByName("out"), b.getPinByName("in"), false);
    std::map<GraphNodePin*, Connections> connections;
    connections[a.getPinByName("out")];
    graph.scene.getNodeConnectionsByPin(&a, connections);
    EXPECT_THAT(listed(connections[a.getPinByName("out")]), IsEmpty());
    graph.scene.getNodeConnectionsByPin(&b, connections);
    EXPECT_THAT(listed(connections[b.getPinByName("in")]), ElementsAre(connection));
    EXPECT_EQ(connections.size(), 4u);

    std::map<GraphNodePin*, Pins> partners;
    partners[a.getPinByName("out")];
    graph.scene.getNodeConnectionsByPin(&a, partners);
    EXPECT_THAT(listed(partners[a.getPinByName("out")]), IsEmpty());
    EXPECT_EQ(partners.size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, NullNodeHasNoPinsToList)
{
    TestGraph<> graph;
    std::map<GraphNodePin*, Connections> connections;
    graph.scene.getNodeConnectionsByPin(nullptr, connections);
    EXPECT_TRUE(connections.empty());
    std::map<GraphNodePin*, Pins> partners;
    graph.scene.getNodeConnectionsByPin(nullptr, partners);
    EXPECT_TRUE(partners.empty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- nodes at a level, all compounds

TEST(SceneCompounds, LevelOfANodeIsItsChildrenOrEverythingBelowIt)
{
    CompoundGraph graph;
    TestNode& d = graph.addCompound("D", &graph.compound);
    graph.addNode("x", &d);
    graph.addNode("y", &graph.compound);
    graph.addNode("z");

    Nodes out;
    out.append(&graph.root);
    graph.scene.getGraphNodesAtLevel(&graph.compound, false, out);
    EXPECT_THAT(namesOf(out), ElementsAre("root", "D", "y"));
    graph.scene.getGraphNodesAtLevel(&graph.root, true, out);
    EXPECT_THAT(namesOf(out), ElementsAre("root", "D", "y", "C", "z", "D", "y", "x"));
    graph.scene.getGraphNodesAtLevel(nullptr, true, out);
    graph.scene.getGraphNodesAtLevel(nullptr, false, out);
    EXPECT_EQ(out.size(), 8u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, LevelMayBeGatheredIntoTheNodesOwnList)
{
    CompoundGraph graph;
    graph.scene.getGraphNodesAtLevel(&graph.root, false, graph.root.refNodes());
    EXPECT_THAT(namesOf(graph.root.getNodes()), ElementsAre("C", "C"));
    graph.root.refNodes().setSize(1);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, AllCompoundsAreListedFromTheRootDownInPreOrder)
{
    CompoundGraph graph;
    TestNode& d = graph.addCompound("D", &graph.compound);
    graph.addNode("x", &d);
    graph.addCompound("E", &d);
    graph.addCompound("F", &graph.compound);
    graph.addCompound("G");
    graph.addNode("y");
    graph.addNode("inH", &graph.addNode("H"));

    Nodes out;
    out.append(&d);
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(namesOf(out), ElementsAre("D", "root", "C", "D", "E", "F", "G", "H"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, RootThatIsNoCompoundListsNothing)
{
    TestGraph<> graph;
    Nodes out;
    graph.scene.getAllGraphCompounds(out);
    EXPECT_TRUE(out.isEmpty());
    graph.root.setCompound(true);
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(namesOf(out), ElementsAre("root"));
    graph.scene.setRootNode(nullptr);
    graph.scene.getAllGraphCompounds(out);
    EXPECT_EQ(out.size(), 1u);
    graph.scene.setRootNode(&graph.root);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneCompounds, CompoundsOutsideTheTreeOfTheRootAreNotListed)
{
    CompoundGraph graph;
    graph.addNode("x", &graph.compound);
    graph.compound.setNodeOwner(nullptr);
    Nodes out;
    graph.root.setCompound(true);
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(namesOf(out), ElementsAre("root"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// A host may put any node into a list of children, so that lists form a ring.
TEST(SceneCompounds, CompoundsInListsOfOtherOwnersAreListedOnceEachBehindTheirOwners)
{
    CompoundGraph graph;
    TestNode& inner = graph.addCompound("inner", &graph.compound);
    TestNode& stranger = graph.addCompound("stranger");
    stranger.setNodeOwner(nullptr);
    Nodes const childrenOfRoot = graph.root.getNodes();
    Nodes const childrenOfCompound = graph.compound.getNodes();
    graph.root.setNodes(listOf({&inner, &graph.compound, &stranger}));
    graph.compound.setNodes(listOf({&inner, &graph.root}));

    Nodes out;
    graph.scene.getAllGraphCompounds(out);
    EXPECT_THAT(namesOf(out), ElementsAre("root", "C", "inner", "stranger"));

    graph.root.setNodes(childrenOfRoot);
    graph.compound.setNodes(childrenOfCompound);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// Without a look at the invariants: it writes every full name, millions of bytes at this depth.
TEST(SceneCompounds, TwoThousandLevelsAreWalked)
{
    constexpr unsigned int levels = 2000;
    TestGraph<> graph;
    GraphNodeBase* owner = &graph.root;
    for (unsigned int i = 0; i < levels; ++i) owner = &graph.addNode("n", owner);
    Nodes compounds;
    graph.scene.getAllGraphCompounds(compounds);
    EXPECT_EQ(compounds.size(), levels);
    EXPECT_EQ(compounds[levels - 1], owner->getNodeOwner());
    Nodes below;
    graph.scene.getGraphNodesAtLevel(&graph.root, true, below);
    EXPECT_EQ(below.size(), levels);
    EXPECT_EQ(below[levels - 1], owner);
}

// The first compound pin keeps a link to the interface pin, which is gone with the second one by then.
TEST(SceneCompounds, AnInterfacePinThatWasPairedTwiceCanBeRemoved)
{
    TestGraph<> graph;
    GraphNodeBase* outer = nullptr;
    GraphNodeBase* inner = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    graph.scene.addCompoundInterfaceNode(PIN_OUTPUT, &graph.root, outer, compoundPin, interfacePin);
    graph.scene.addCompoundInterfaceNode(PIN_INPUT, outer, inner, compoundPin, interfacePin);
    GraphNodePin const* const second = graph.scene.createCompoundPinForInterfacePin(interfacePin);
    EXPECT_EQ(interfacePin->getParentGraphNodePinPtr(), second);
    EXPECT_EQ(compoundPin->getChildGraphNodePinPtr(), interfacePin);

    EXPECT_TRUE(graph.scene.removeNodeFromGraph(outer));
    EXPECT_TRUE(outer->getNodePins().isEmpty());
    EXPECT_TRUE(graph.root.getNodePins().isEmpty());
    delete inner;
    delete outer;
}

// The first compound pin keeps a link to the interface pin, which is paired with the second one.
class PinPairedTwice : public ::testing::Test
{
protected:
    PinPairedTwice() : compound(graph.addNode("compound"))
    {
        graph.scene.addCompoundInterfaceNode(PIN_INPUT, &compound, inner, first, interfacePin);
        second = graph.scene.createCompoundPinForInterfacePin(interfacePin);
    }

    TestGraph<> graph;
    GraphNodeBase& compound;
    GraphNodeBase* inner = nullptr;
    GraphNodePin* first = nullptr;
    GraphNodePin* second = nullptr;
    GraphNodePin* interfacePin = nullptr;
};

// A pin that has changed its id since it was registered leaves its entry in the map of pins behind.
TEST_F(PinPairedTwice, MayEndWhileTheMapOfPinsHoldsADeadOne)
{
    GraphNodePin* const changed = graph.scene.createNewPin(inner, 1, PIN_INPUT);
    changed->setId(changed->getId() + 1000);
    graph.scene.removeNodePinFromSceneAndNode(changed);

    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
}

TEST_F(PinPairedTwice, MayEndAfterAFormerPartner)
{
    graph.scene.createCompoundPinForInterfacePin(interfacePin); // goes with the interface pin
    compound.removeNodePin(second);
    delete second;

    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_THAT(listed(compound.getNodePins()), ElementsAre(first));
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
}

TEST_F(PinPairedTwice, MayEndByItsDestructor)
{
    inner->destroyNodePins();
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
    second->setChildGraphNodePinPtr(nullptr);
}

TEST_F(PinPairedTwice, LeavesAFormerPartnerThatIsPairedElsewhereAlone)
{
    GraphNodePin other;
    first->setChildGraphNodePinPtr(&other);
    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_EQ(first->getChildGraphNodePinPtr(), &other);
    first->setChildGraphNodePinPtr(nullptr);
}

TEST_F(PinPairedTwice, KnowsNothingOfCopiesOfAFormerPartner)
{
    {
        GraphNodePin const copy(*first);
        EXPECT_EQ(copy.getChildGraphNodePinPtr(), interfacePin);
        *first = GraphNodePin();
    }
    first->setParentGraphNodePtr(&compound);
    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
}

TEST_F(PinPairedTwice, MayBePairedWithAFormerPartnerAgain)
{
    interfacePin->setParentGraphNodePinPtr(first);
    graph.scene.createCompoundPinForInterfacePin(interfacePin);
    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
    second->setChildGraphNodePinPtr(nullptr);
}

TEST_F(PinPairedTwice, LeavesAPairOfAnotherPinAloneWhenItsDestructorEndsIt)
{
    GraphNodePin other;
    first->setChildGraphNodePinPtr(&other);
    inner->destroyNodePins();
    EXPECT_EQ(first->getChildGraphNodePinPtr(), &other);
    first->setChildGraphNodePinPtr(nullptr);
    second->setChildGraphNodePinPtr(nullptr);
}

TEST_F(PinPairedTwice, MayEndAfterAFormerPartnerThatAnotherPinHasLeftToo)
{
    GraphNodePin* const other = graph.scene.createNewPin(inner, 1, PIN_OUTPUT);
    first->setChildGraphNodePinPtr(other);
    other->setParentGraphNodePinPtr(first);
    graph.scene.createCompoundPinForInterfacePin(other); // goes with the other pin
    compound.removeNodePin(first);
    delete first;

    graph.scene.removeNodePinFromSceneAndNode(interfacePin); // and the second one with this
    graph.scene.removeNodePinFromSceneAndNode(other);
    EXPECT_TRUE(compound.getNodePins().isEmpty());
}

TEST_F(PinPairedTwice, LeavesItsFormerPartnerWithoutALinkThoughAnotherPinNamesThePartnerToo)
{
    GraphNodePin* const other = graph.scene.createNewPin(inner, 1, PIN_OUTPUT);
    other->setParentGraphNodePinPtr(first);
    graph.scene.createCompoundPinForInterfacePin(other);
    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
}

TEST_F(PinPairedTwice, KeepsNoLinkThatTheHostHasCut)
{
    second->setChildGraphNodePinPtr(nullptr);
    GraphNodePin* const third = graph.scene.createCompoundPinForInterfacePin(interfacePin);
    EXPECT_EQ(interfacePin->getParentGraphNodePinPtr(), third);
    graph.scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_THAT(listed(compound.getNodePins()), ElementsAre(first, second));
}

} // namespace kestrel::graph::test
