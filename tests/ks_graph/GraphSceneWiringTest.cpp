#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;

std::vector<std::string> journal;

void noteCallback(GraphScene*, GraphNodeBase*, GraphConnection*)
{
    journal.push_back("callback");
}

/// Writes down its wiring.
class HostPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;

    bool allowsConnectionTo(GraphNodePin const* other) const override
    {
        journal.push_back(label + " allows");
        return GraphNodePin::allowsConnectionTo(other);
    }

    void addInputConnection(GraphConnection* connection) override
    {
        journal.push_back(label + " gets input");
        GraphNodePin::addInputConnection(connection);
    }

    void addOutputConnection(GraphConnection* connection) override
    {
        journal.push_back(label + " gets output");
        GraphNodePin::addOutputConnection(connection);
    }

    std::string label;
};

/// A pin that wires only with pins of its own colour.
class ColouredPin : public GraphNodePin
{
public:
    ColouredPin(PinDirection const& direction, int colour)
        : GraphNodePin(nullptr, unlimited, direction), colour_(colour)
    {}

    bool allowsConnectionFrom(GraphNodePin const* other) const override
    {
        return GraphNodePin::allowsConnectionFrom(other) &&
               static_cast<ColouredPin const*>(other)->colour_ == colour_;
    }

private:
    int colour_;
};

class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;

    ~HostConnection() override { journal.push_back("delete"); }

    void setImplicit(bool const& implicit) override
    {
        journal.push_back(implicit ? "implicit" : "not implicit");
        GraphConnection::setImplicit(implicit);
    }

    void removeFromConnectedPins() override
    {
        journal.push_back("leave pins");
        GraphConnection::removeFromConnectedPins();
    }
};

class HostScene : public GraphScene
{
public:
    using GraphScene::isConnectionAllowed;

    bool isPinFull(GraphNodePin const* pin) const override
    {
        journal.push_back("full " + std::string(const_cast<GraphNodePin*>(pin)->getName()));
        return GraphScene::isPinFull(pin);
    }

    bool hasConnectionsLikeThis(GraphConnection const& connection) const override
    {
        journal.push_back("like this");
        return GraphScene::hasConnectionsLikeThis(connection);
    }

    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        journal.push_back("make");
        return make ? make(source, target) : new HostConnection(source, target);
    }

    std::function<GraphConnection*(GraphNodePin*, GraphNodePin*)> make;
};

template <class Scene>
class WiringFixture : public ::testing::Test
{
protected:
    WiringFixture()
        : a(graph.addFilter("a")),
          b(graph.addFilter("b")),
          in(*a.getNodePins()[0]),
          out(*a.getNodePins()[1]),
          bIn(*b.getNodePins()[0]),
          bOut(*b.getNodePins()[1])
    {
        journal.clear();
        scene.setIsDirty(false);
    }

    void expectUntouched()
    {
        EXPECT_EQ(0u, scene.getNumberOfConnections());
        for (GraphNodePin* pin : {&in, &out, &bIn, &bOut}) EXPECT_FALSE(pin->isConnected());
        EXPECT_FALSE(scene.areNodesConnected(&a, &b, true, true));
        EXPECT_FALSE(scene.getIsDirty());
        EXPECT_SCENE_INVARIANTS(scene);
    }

    std::vector<GraphConnection*> connections() const { return listed(scene.getGraphConnections()); }

    TestGraph<Scene> graph;
    Scene& scene = graph.scene;
    TestNode& a;
    TestNode& b;
    GraphNodePin& in;
    GraphNodePin& out;
    GraphNodePin& bIn;
    GraphNodePin& bOut;
};

class SceneWiring : public WiringFixture<GraphScene>
{
protected:
    GraphNodePin& addBoth(GraphNodeBase& node, KS_String const& name = "both",
                          unsigned int capacity = unlimited)
    {
        return graph.addPin(node, name, bothDirections, capacity);
    }

    ColouredPin& addColoured(GraphNodeBase& node, PinDirection const& direction, int colour)
    {
        ColouredPin* const pin = new ColouredPin(direction, colour);
        node.addNodePin(pin);
        return *pin;
    }
};

class HostSceneWiring : public WiringFixture<HostScene>
{
};

// --- rules

TEST_F(SceneWiring, PinsMayBeWiredFromOutputToInputOnly)
{
    GraphNodePin& both = addBoth(b);
    struct Row
    {
        GraphNodePin* source;
        GraphNodePin* target;
        bool allowed;
    };
    Row const rows[] = {
        {&out, &bIn, true},   {&bIn, &out, false}, {&out, &bOut, false}, {&in, &bIn, false},
        {&out, &both, true},  {&both, &in, true},  {&both, &both, true}, {&in, &both, false},
        {&both, &out, false}, {&out, &in, true},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::string(row.source->getFullName()) + " > " + row.target->getFullName().c_str());
        EXPECT_EQ(row.allowed, scene.isConnectionAllowed(row.source, row.target));
        GraphConnection* const made = scene.connect(row.source, row.target, false);
        EXPECT_EQ(row.allowed, made != nullptr);
        if (made != nullptr) scene.removeConnection(made);
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RuleForTwoPinsRefusesAFullPinOnEitherSide)
{
    EXPECT_TRUE(scene.isConnectionAllowed(&out, &bIn));
    out.setMaxNumConnections(0);
    EXPECT_FALSE(scene.isConnectionAllowed(&out, &bIn));
    out.setMaxNumConnections(1);
    bIn.setMaxNumConnections(0);
    EXPECT_FALSE(scene.isConnectionAllowed(&out, &bIn));
    bIn.setMaxNumConnections(1);
    EXPECT_TRUE(scene.isConnectionAllowed(&out, &bIn));
}

TEST_F(SceneWiring, RuleForAPinAndANodeAsksTheNodeForTheRightDirection)
{
    TestNode& onlyIn = graph.addNode("onlyIn");
    graph.addInput(onlyIn);
    TestNode& onlyOut = graph.addNode("onlyOut");
    GraphNodePin& both = addBoth(b);
    graph.addOutput(onlyOut);
    EXPECT_TRUE(scene.isConnectionAllowed(&out, &onlyIn, true));
    EXPECT_FALSE(scene.isConnectionAllowed(&out, &onlyOut, true));
    EXPECT_FALSE(scene.isConnectionAllowed(&in, &onlyIn, true));
    EXPECT_FALSE(scene.isConnectionAllowed(&out, &onlyIn, false));
    // A node asked what may go to a pin asks its own pins' allowsConnectionFrom, so an input pin answers.
    EXPECT_TRUE(scene.isConnectionAllowed(&both, &onlyIn, false));
    EXPECT_FALSE(scene.isConnectionAllowed(&both, &onlyOut, false));
    EXPECT_FALSE(scene.isConnectionAllowed(&in, &onlyOut, false));
}

TEST_F(SceneWiring, RuleForAPinAndANodeTakesThePinAsSource)
{
    TestNode& onlyIn = graph.addNode("onlyIn");
    graph.addInput(onlyIn);
    EXPECT_TRUE(scene.isConnectionAllowed(&out, &onlyIn));
    EXPECT_FALSE(scene.isConnectionAllowed(&onlyIn, &out));
}

TEST_F(SceneWiring, RuleForANodeAndAPinTakesThePinAsTarget)
{
    TestNode& onlyIn = graph.addNode("onlyIn");
    graph.addInput(onlyIn);
    GraphNodePin& both = addBoth(b);
    EXPECT_TRUE(scene.isConnectionAllowed(&onlyIn, &both));
    EXPECT_FALSE(scene.isConnectionAllowed(&onlyIn, &in));
    EXPECT_FALSE(scene.isConnectionAllowed(&onlyIn, &out));
}

TEST_F(SceneWiring, RulesWithANodeDoNotTestForFullPins)
{
    for (GraphNodePin* pin : {&in, &out, &bIn, &bOut}) pin->setMaxNumConnections(0);
    EXPECT_TRUE(scene.isConnectionAllowed(&out, &b));
    EXPECT_TRUE(scene.isConnectionAllowed(&a, &b));
    GraphNodePin& full = addBoth(b, "full", 0);
    EXPECT_TRUE(scene.isConnectionAllowed(&a, &full));
}

/// A node that refuses to be a target, or a source, and counts how often it is asked.
class StubbornNode : public TestNode
{
public:
    using TestNode::allowsConnectionFrom;
    using TestNode::allowsConnectionTo;
    using TestNode::TestNode;

    bool allowsConnectionFrom(GraphNodeBase const*) const override
    {
        ++askedFrom;
        return answer;
    }

    bool allowsConnectionTo(GraphNodeBase const*) const override
    {
        ++askedTo;
        return answer;
    }

    bool answer = false;
    mutable int askedFrom = 0;
    mutable int askedTo = 0;
};

TEST_F(SceneWiring, RuleForTwoNodesAsksTheSourceAlone)
{
    StubbornNode& source = graph.addNode<StubbornNode>("source");
    StubbornNode& target = graph.addNode<StubbornNode>("target");
    EXPECT_FALSE(scene.isConnectionAllowed(&source, &target));
    source.answer = true;
    EXPECT_TRUE(scene.isConnectionAllowed(&source, &target));
    EXPECT_EQ(2, source.askedTo);
    EXPECT_EQ(0, source.askedFrom);
    EXPECT_EQ(0, target.askedTo);
    EXPECT_EQ(0, target.askedFrom);
}

TEST_F(SceneWiring, NullIsNeverAllowed)
{
    GraphNodePin const* const noPin = nullptr;
    GraphNodeBase const* const noNode = nullptr;
    EXPECT_FALSE(scene.isConnectionAllowed(noPin, &bIn));
    EXPECT_FALSE(scene.isConnectionAllowed(&out, noPin));
    EXPECT_FALSE(scene.isConnectionAllowed(noPin, noPin));
    EXPECT_FALSE(scene.isConnectionAllowed(noPin, &b));
    EXPECT_FALSE(scene.isConnectionAllowed(&out, noNode));
    EXPECT_FALSE(scene.isConnectionAllowed(noNode, &bIn));
    EXPECT_FALSE(scene.isConnectionAllowed(&a, noPin));
    EXPECT_FALSE(scene.isConnectionAllowed(noNode, &b));
    EXPECT_FALSE(scene.isConnectionAllowed(&a, noNode));
    for (bool const pinIsSource : {false, true})
    {
        EXPECT_FALSE(scene.isConnectionAllowed(noPin, &b, pinIsSource));
        EXPECT_FALSE(scene.isConnectionAllowed(&out, noNode, pinIsSource));
    }
}

TEST_F(SceneWiring, AskingTheRulesChangesNothing)
{
    scene.isConnectionAllowed(&out, &bIn);
    scene.isConnectionAllowed(&a, &b);
    scene.isConnectionAllowed(&out, &b);
    scene.isConnectionAllowed(&a, &bIn);
    expectUntouched();
}

// --- connecting two pins

TEST_F(SceneWiring, ConnectEntersTheConnectionEverywhere)
{
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(&out, made->getSourcePin());
    EXPECT_EQ(&bIn, made->getTargetPin());
    EXPECT_FALSE(made->isImplicit());
    EXPECT_THAT(connections(), ElementsAre(made));
    EXPECT_THAT(listed(out.getOutputConnections()), ElementsAre(made));
    EXPECT_THAT(listed(bIn.getInputConnections()), ElementsAre(made));
    EXPECT_TRUE(out.getInputConnections().isEmpty());
    EXPECT_TRUE(bIn.getOutputConnections().isEmpty());
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, false));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectTakesTheImplicitFlag)
{
    GraphConnection* const made = scene.connect(&out, &bIn, true);
    ASSERT_NE(nullptr, made);
    EXPECT_TRUE(made->isImplicit());
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, true));
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, false, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectionsStandInTheOrderOfTheirCreation)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    GraphConnection* const second = scene.connect(&bOut, &in, false);
    GraphConnection* const third = scene.connect(&out, &bIn, true);
    EXPECT_THAT(connections(), ElementsAre(first, second, third));
    EXPECT_THAT(listed(out.getOutputConnections()), ElementsAre(first, third));
    EXPECT_EQ(3u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectGoesThroughItsStepsInOrder)
{
    TestGraph<HostScene> own;
    TestNode& node = own.addNode("node");
    std::vector<HostPin*> pins;
    for (char const* name : {"source", "target"})
    {
        pins.push_back(new HostPin(nullptr, unlimited, bothDirections));
        pins.back()->setName(name);
        pins.back()->label = name;
        own.scene.addNodePin(&node, pins.back());
    }
    for (bool const duplicates : {true, false})
    {
        for (bool const implicit : {true, false})
        {
            own.scene.setAllowDuplicatedConnections(duplicates);
            std::vector<std::string> expected = {"source allows", "full source", "full target"};
            if (!duplicates) expected.push_back("like this");
            for (char const* step : {"make", implicit ? "implicit" : "not implicit", "source gets output",
                                     "target gets input", "callback"})
                expected.push_back(step);
            CallbackLog log;
            log.onConnection = noteCallback;
            journal.clear();
            own.scene.connect(pins[0], pins[1], implicit);
            EXPECT_EQ(expected, journal);
        }
    }
    EXPECT_SCENE_INVARIANTS(own.scene);
}

TEST_F(SceneWiring, AddCallbackSeesTheConnectionFullyWired)
{
    TestNode& compound = graph.addNode("compound");
    a.setNodeOwner(&compound);
    CallbackLog log;
    log.onConnection = [&](GraphScene* caller, GraphNodeBase* owner, GraphConnection* connection)
    {
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(&compound, owner);
        EXPECT_TRUE(connection->isImplicit());
        EXPECT_THAT(connections(), ElementsAre(connection));
        EXPECT_THAT(listed(out.getOutputConnections()), ElementsAre(connection));
        EXPECT_THAT(listed(bIn.getInputConnections()), ElementsAre(connection));
        EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, true));
        EXPECT_SCENE_INVARIANTS(scene);
    };
    scene.connect(&out, &bIn, true);
    EXPECT_THAT(log.lines, ElementsAre("addConnection compound a.out > b.in"));
}

TEST_F(SceneWiring, DirtyFlagIsSetAfterTheAddCallback)
{
    CallbackLog log;
    log.onConnection = [](GraphScene* caller, GraphNodeBase*, GraphConnection*)
    {
        EXPECT_FALSE(caller->getIsDirty());
        caller->setIsDirty(false);
    };
    scene.connect(&out, &bIn, false);
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(SceneWiring, OwnerOfAConnectionFromTheRootIsNull)
{
    GraphNodePin& rootOut = graph.addOutput(graph.root);
    CallbackLog log;
    scene.connect(&rootOut, &in, false);
    EXPECT_THAT(log.lines, ElementsAre("addConnection - root.out > a.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, PinTakesAsManyConnectionsAsItsCapacity)
{
    for (unsigned int const capacity : {0u, 1u, 2u, 3u})
    {
        SCOPED_TRACE(capacity);
        out.setMaxNumConnections(capacity);
        for (unsigned int i = 0; i < capacity; ++i) EXPECT_NE(nullptr, scene.connect(&out, &bIn, i % 2 != 0));
        EXPECT_EQ(nullptr, scene.connect(&out, &bIn, false));
        EXPECT_EQ(capacity, scene.getNumberOfConnections());
        out.setMaxNumConnections(unlimited);
        bIn.setMaxNumConnections(capacity);
        EXPECT_EQ(nullptr, scene.connect(&out, &bIn, false));
        bIn.setMaxNumConnections(unlimited);
        scene.removeAllConnections();
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, PinOfCapacityOneMayBeWiredToItselfOnce)
{
    GraphNodePin& both = addBoth(a, "both", 1);
    GraphConnection* const loop = scene.connect(&both, &both, false);
    ASSERT_NE(nullptr, loop);
    EXPECT_TRUE(loop->isLoop());
    EXPECT_EQ(2u, both.getNumConnections());
    EXPECT_EQ(nullptr, scene.connect(&both, &both, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RefusedConnectLeavesTheSceneUntouched)
{
    GraphNodePin const* const noPin = nullptr;
    struct Row
    {
        char const* reason;
        GraphNodePin const* source;
        GraphNodePin const* target;
        unsigned int outCapacity;
        unsigned int inCapacity;
    };
    Row const rows[] = {
        {"no source", noPin, &bIn, 1, 1},     {"no target", &out, noPin, 1, 1},
        {"no pins", noPin, noPin, 1, 1},      {"wrong source", &in, &bIn, 1, 1},
        {"wrong target", &out, &bOut, 1, 1},  {"turned", &bIn, &out, 1, 1},
        {"source is full", &out, &bIn, 0, 1}, {"target is full", &out, &bIn, 1, 0},
    };
    CallbackLog log;
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.reason);
        out.setMaxNumConnections(row.outCapacity);
        bIn.setMaxNumConnections(row.inCapacity);
        EXPECT_EQ(nullptr, scene.connect(row.source, row.target, false));
        expectUntouched();
    }
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(SceneWiring, RefusedConnectDoesNotClearTheDirtyFlag)
{
    scene.setIsDirty(true);
    EXPECT_EQ(nullptr, scene.connect(&in, &bIn, false));
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(SceneWiring, LoopsAreMadeWhateverTheLoopFlagSays)
{
    for (bool const allow : {true, false})
    {
        scene.setAllowLoops(allow);
        GraphNodePin& both = addBoth(a, allow ? "one" : "two");
        EXPECT_TRUE(scene.isConnectionAllowed(&out, &in));
        EXPECT_TRUE(scene.isConnectionAllowed(&both, &both));
        EXPECT_NE(nullptr, scene.connect(&out, &in, false));
        EXPECT_NE(nullptr, scene.connect(&both, &both, false));
    }
    EXPECT_EQ(4u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, PinsWithoutNodeAreWiredWithoutOwnerAndWithoutAdjacency)
{
    GraphNodePin source(nullptr, 1u, PIN_OUTPUT);
    GraphNodePin target(nullptr, 1u, PIN_INPUT);
    CallbackLog log;
    GraphConnection* const made = scene.connect(&source, &target, false);
    ASSERT_NE(nullptr, made);
    EXPECT_THAT(log.lines, ElementsAre("addConnection - -.Untitled > -.Untitled"));
    EXPECT_THAT(connections(), ElementsAre(made));
    EXPECT_TRUE(source.isConnected());
    EXPECT_TRUE(target.isConnected());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
    EXPECT_TRUE(scene.removeConnection(made));
    EXPECT_THAT(log.lines, ElementsAre("addConnection - -.Untitled > -.Untitled",
                                       "removeConnection - -.Untitled > -.Untitled"));
    EXPECT_FALSE(source.isConnected());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, OnePinWithoutNodeIsEnoughToKeepTheConnectionOutOfTheAdjacency)
{
    GraphNodePin target(nullptr, 1u, PIN_INPUT);
    GraphNodePin source(nullptr, 1u, PIN_OUTPUT);
    GraphConnection* const toStray = scene.connect(&out, &target, false);
    GraphConnection* const fromStray = scene.connect(&source, &in, false);
    ASSERT_NE(nullptr, toStray);
    ASSERT_NE(nullptr, fromStray);
    EXPECT_SCENE_INVARIANTS(scene);
    scene.removeConnection(toStray);
    scene.removeConnection(fromStray);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, NodesNeedNotBeRegisteredToBeWired)
{
    TestNode& stranger = graph.newNode("stranger");
    GraphNodePin* const pin = scene.createNewPin(&stranger, 1u, PIN_INPUT);
    EXPECT_NE(nullptr, scene.connect(&bOut, pin, false));
    EXPECT_TRUE(scene.areNodesConnected(&b, &stranger, false, false));
    scene.addNodeToGraph(&stranger);
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- duplicates

TEST_F(SceneWiring, DuplicatesAreMadeWhenTheyAreAllowed)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    GraphConnection* const second = scene.connect(&out, &bIn, false);
    EXPECT_NE(nullptr, second);
    EXPECT_NE(first, second);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, SecondConnectionOfOneDirectionPassesEvenWhenDuplicatesAreForbidden)
{
    scene.setAllowDuplicatedConnections(false);
    EXPECT_NE(nullptr, scene.connect(&out, &bIn, false));
    EXPECT_NE(nullptr, scene.connect(&out, &bIn, false));
    EXPECT_EQ(2u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectionAgainstAnExistingOneIsRefusedWhenDuplicatesAreForbidden)
{
    GraphNodePin& one = addBoth(a, "one");
    GraphNodePin& two = addBoth(b, "two");
    GraphNodePin& three = addBoth(b, "three");
    for (bool const implicit : {false, true})
    {
        SCOPED_TRACE(implicit);
        scene.setAllowDuplicatedConnections(false);
        GraphConnection* const there = scene.connect(&two, &one, implicit);
        ASSERT_NE(nullptr, there);
        scene.setIsDirty(false);
        CallbackLog log;
        EXPECT_EQ(nullptr, scene.connect(&one, &two, false));
        EXPECT_EQ(nullptr, scene.connect(&one, &two, true));
        EXPECT_THAT(log.lines, IsEmpty());
        EXPECT_THAT(connections(), ElementsAre(there));
        EXPECT_FALSE(scene.getIsDirty());
        EXPECT_NE(nullptr, scene.connect(&one, &three, false));
        scene.setAllowDuplicatedConnections(true);
        EXPECT_NE(nullptr, scene.connect(&one, &two, false));
        EXPECT_SCENE_INVARIANTS(scene);
        scene.removeAllConnections();
    }
}

TEST_F(SceneWiring, PinIsWiredToItselfOnceWhenDuplicatesAreForbidden)
{
    GraphNodePin& both = addBoth(a);
    scene.setAllowDuplicatedConnections(false);
    EXPECT_NE(nullptr, scene.connect(&both, &both, false));
    EXPECT_EQ(nullptr, scene.connect(&both, &both, false));
    scene.setAllowDuplicatedConnections(true);
    EXPECT_NE(nullptr, scene.connect(&both, &both, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, HavingConnectionsLikeThisLooksAtTheInputListOfTheSourcePin)
{
    GraphNodePin& one = addBoth(a, "one");
    GraphNodePin& two = addBoth(b, "two");
    GraphNodePin& three = addBoth(b, "three");
    scene.connect(&three, &one, false);
    scene.connect(&two, &one, true);
    EXPECT_TRUE(scene.hasConnectionsLikeThis(GraphConnection(&one, &two)));
    EXPECT_TRUE(scene.hasConnectionsLikeThis(GraphConnection(&one, &three)));
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(&two, &one)));
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(&one, &one)));
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(&one, &bIn)));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, HavingConnectionsLikeThisIsFalseForOneThatIsNotConnected)
{
    scene.connect(&out, &bIn, false);
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection()));
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(&out, nullptr)));
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(nullptr, &bIn)));
    // The input list of b.in holds one from a.out, but nothing can go from an input to an output pin.
    EXPECT_FALSE(scene.hasConnectionsLikeThis(GraphConnection(&bIn, &out)));
}

TEST_F(SceneWiring, ConnectionsLikeThisAreThoseOfTheSameSourceAndTargetPins)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    scene.connect(&out, &in, false);
    GraphConnection* const second = scene.connect(&out, &bIn, true);
    scene.connect(&bOut, &bIn, false);
    ArrayOfPtr<GraphConnection, KS_NO> alike;
    EXPECT_TRUE(scene.getConnectionsLikeThis(GraphConnection(&out, &bIn), alike));
    EXPECT_THAT(listed(alike), ElementsAre(first, second));
    EXPECT_TRUE(scene.getConnectionsLikeThis(GraphConnection(&out, &bIn), alike));
    EXPECT_THAT(listed(alike), ElementsAre(first, second, first, second));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectionsLikeThisLookAtTheOutputsOfTheSourcePinOnly)
{
    GraphNodePin& one = addBoth(a, "one");
    GraphNodePin& two = addBoth(b, "two");
    scene.connect(&two, &one, false);
    ArrayOfPtr<GraphConnection, KS_NO> alike;
    EXPECT_FALSE(scene.getConnectionsLikeThis(GraphConnection(&one, &two), alike));
    EXPECT_TRUE(alike.isEmpty());
}

TEST_F(SceneWiring, ConnectionsLikeThisTellWhetherTheListHoldsAny)
{
    GraphConnection* const there = scene.connect(&bOut, &in, false);
    ArrayOfPtr<GraphConnection, KS_NO> alike;
    EXPECT_FALSE(scene.getConnectionsLikeThis(GraphConnection(&out, &bIn), alike));
    alike.append(there);
    EXPECT_TRUE(scene.getConnectionsLikeThis(GraphConnection(&out, &bIn), alike));
    EXPECT_FALSE(scene.getConnectionsLikeThis(GraphConnection(), alike));
    EXPECT_FALSE(scene.getConnectionsLikeThis(GraphConnection(&in, &bOut), alike));
    EXPECT_THAT(listed(alike), ElementsAre(there));
}

// --- connecting with nodes

TEST_F(SceneWiring, PinIsConnectedToTheFirstPinOfTheNodeThatTakesIt)
{
    TestNode& many = graph.addNode("many");
    graph.addOutput(many, "out");
    graph.addInput(many, "full", 0);
    GraphNodePin& free = graph.addInput(many, "free");
    graph.addInput(many, "other");
    GraphConnection* const made = scene.connect(&out, &many, true);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(&out, made->getSourcePin());
    EXPECT_EQ(&free, made->getTargetPin());
    EXPECT_TRUE(made->isImplicit());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, NodeIsConnectedToAPinFromItsFirstPinThatMayFeedIt)
{
    TestNode& many = graph.addNode("many");
    graph.addInput(many, "in");
    graph.addOutput(many, "full", 0);
    GraphNodePin& free = graph.addOutput(many, "free");
    graph.addOutput(many, "other");
    GraphConnection* const made = scene.connect(&many, &in, true);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(&free, made->getSourcePin());
    EXPECT_EQ(&in, made->getTargetPin());
    EXPECT_TRUE(made->isImplicit());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectBaseGoesBothWays)
{
    GraphNodePin& both = addBoth(graph.root);
    GraphConnection* const from = scene.connectBase(&both, &b, true, true);
    GraphConnection* const to = scene.connectBase(&both, &b, false, false);
    ASSERT_NE(nullptr, from);
    ASSERT_NE(nullptr, to);
    EXPECT_EQ(&both, from->getSourcePin());
    EXPECT_EQ(&bIn, from->getTargetPin());
    EXPECT_TRUE(from->isImplicit());
    EXPECT_EQ(&bOut, to->getSourcePin());
    EXPECT_EQ(&both, to->getTargetPin());
    EXPECT_FALSE(to->isImplicit());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, NodesAreConnectedByTheFirstPinsThatAreFree)
{
    out.setMaxNumConnections(0);
    bIn.setMaxNumConnections(0);
    GraphNodePin& free = graph.addOutput(a, "free");
    GraphNodePin& open = graph.addInput(b, "open");
    GraphConnection* const made = scene.connect(&a, &b, true);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(&free, made->getSourcePin());
    EXPECT_EQ(&open, made->getTargetPin());
    EXPECT_TRUE(made->isImplicit());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, NodeMayBeConnectedToItself)
{
    GraphConnection* const made = scene.connect(&a, &a, false);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(&out, made->getSourcePin());
    EXPECT_EQ(&in, made->getTargetPin());
    EXPECT_TRUE(made->isNodeLoop());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, NodesWhoseFirstCandidatesDoNotMatchAreNotConnected)
{
    TestNode& source = graph.addNode("source");
    TestNode& target = graph.addNode("target");
    ColouredPin& redOut = addColoured(source, PIN_OUTPUT, 1);
    addColoured(source, PIN_OUTPUT, 2);
    addColoured(target, PIN_INPUT, 2);
    ColouredPin& redIn = addColoured(target, PIN_INPUT, 1);
    scene.setIsDirty(false);
    CallbackLog log;
    EXPECT_TRUE(scene.isConnectionAllowed(&source, &target));
    EXPECT_EQ(nullptr, scene.connect(&source, &target, false));
    EXPECT_THAT(log.lines, IsEmpty());
    expectUntouched();
    EXPECT_NE(nullptr, scene.connect(&redOut, &redIn, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectWithNodesIsRefusedWithoutCandidates)
{
    TestNode& empty = graph.addNode("empty");
    TestNode& full = graph.addNode("full");
    graph.addInput(full, "in", 0);
    graph.addOutput(full, "out", 0);
    scene.setIsDirty(false);
    CallbackLog log;
    GraphNodePin const* const noPin = nullptr;
    GraphNodeBase const* const noNode = nullptr;
    for (GraphNodeBase* node : std::vector<GraphNodeBase*>{&empty, &full, nullptr})
    {
        GraphNodeBase const* const other = node;
        EXPECT_EQ(nullptr, scene.connect(&out, other, false));
        EXPECT_EQ(nullptr, scene.connect(other, &in, false));
        EXPECT_EQ(nullptr, scene.connect(&a, other, false));
        EXPECT_EQ(nullptr, scene.connect(other, &a, false));
        EXPECT_EQ(nullptr, scene.connectBase(&out, other, false, true));
        EXPECT_EQ(nullptr, scene.connectBase(&in, other, false, false));
    }
    EXPECT_EQ(nullptr, scene.connect(noPin, &b, false));
    EXPECT_EQ(nullptr, scene.connect(&b, noPin, false));
    EXPECT_EQ(nullptr, scene.connect(noNode, noNode, false));
    EXPECT_EQ(nullptr, scene.connectBase(noPin, &b, false, true));
    EXPECT_EQ(nullptr, scene.connectBase(noPin, &b, false, false));
    EXPECT_EQ(nullptr, scene.connect(&in, &b, false));
    EXPECT_EQ(nullptr, scene.connect(&b, &out, false));
    EXPECT_THAT(log.lines, IsEmpty());
    expectUntouched();
}

TEST_F(SceneWiring, ConnectWithANodeIsRefusedWhenThePinItselfIsFull)
{
    out.setMaxNumConnections(0);
    in.setMaxNumConnections(0);
    EXPECT_EQ(nullptr, scene.connect(&out, &b, false));
    EXPECT_EQ(nullptr, scene.connect(&b, &in, false));
    expectUntouched();
}

// --- the order of the rules

TEST_F(HostSceneWiring, RulesAreAskedInOrderUpToTheFirstNo)
{
    scene.setAllowDuplicatedConnections(false);
    struct Row
    {
        GraphNodePin* source;
        unsigned int outCapacity;
        unsigned int inCapacity;
        std::vector<std::string> asked;
    };
    Row const rows[] = {
        {&in, 1, 1, {}},
        {&out, 0, 0, {"full out"}},
        {&out, 1, 0, {"full out", "full in"}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.asked.size());
        out.setMaxNumConnections(row.outCapacity);
        bIn.setMaxNumConnections(row.inCapacity);
        journal.clear();
        EXPECT_FALSE(scene.isConnectionAllowed(row.source, &bIn));
        EXPECT_EQ(row.asked, journal);
        journal.clear();
        EXPECT_EQ(nullptr, scene.connect(row.source, &bIn, false));
        EXPECT_EQ(row.asked, journal);
    }
    expectUntouched();
}

// --- the host's factory

TEST_F(HostSceneWiring, ConnectionOfTheHostIsTakenOverAndDeletedAsSuch)
{
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    EXPECT_NE(nullptr, dynamic_cast<HostConnection*>(made));
    EXPECT_EQ(&out, made->getSourcePin());
    EXPECT_EQ(&bIn, made->getTargetPin());
    CallbackLog log;
    log.onConnection = noteCallback;
    journal.clear();
    scene.removeConnection(made);
    EXPECT_THAT(journal, ElementsAre("callback", "leave pins", "delete"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(HostSceneWiring, EveryFormOfConnectUsesTheFactory)
{
    journal.clear();
    scene.connect(&out, &bIn, false);
    scene.connect(&out, &b, false);
    scene.connect(&a, &bIn, false);
    scene.connect(&a, &b, false);
    EXPECT_EQ(4, std::count(journal.begin(), journal.end(), "make"));
    EXPECT_EQ(4u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(HostSceneWiring, ImplicitFlagOfTheFactoryIsOverwritten)
{
    for (bool const implicit : {false, true})
    {
        scene.make = [implicit](GraphNodePin* source, GraphNodePin* target)
        {
            GraphConnection* const made = new GraphConnection(source, target);
            made->setImplicit(!implicit);
            return made;
        };
        EXPECT_EQ(implicit, scene.connect(&out, &bIn, implicit)->isImplicit());
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(HostSceneWiring, FactoryIsNotAskedForARefusedConnection)
{
    out.setMaxNumConnections(0);
    scene.connect(&out, &bIn, false);
    scene.connect(&in, &bIn, false);
    EXPECT_EQ(0, std::count(journal.begin(), journal.end(), "make"));
    expectUntouched();
}

TEST_F(HostSceneWiring, FactoryThatMakesNothingRefusesTheConnection)
{
    scene.make = [](GraphNodePin*, GraphNodePin*) -> GraphConnection* { return nullptr; };
    CallbackLog log;
    EXPECT_EQ(nullptr, scene.connect(&out, &bIn, false));
    EXPECT_EQ(nullptr, scene.connect(&out, &b, false));
    EXPECT_EQ(nullptr, scene.connect(&a, &b, true));
    EXPECT_THAT(log.lines, IsEmpty());
    expectUntouched();
}

TEST_F(SceneWiring, FactoryItselfRegistersNothing)
{
    GraphConnection* const made = scene.createGraphConnection(&out, &bIn);
    EXPECT_EQ(&out, made->getSourcePin());
    EXPECT_EQ(&bIn, made->getTargetPin());
    EXPECT_FALSE(made->isImplicit());
    expectUntouched();
    delete made;
}

TEST_F(SceneWiring, TemporaryOfTheDuplicateTestIsSeenByNobody)
{
    TestGraph<HostScene> own;
    TestNode& node = own.addFilter("node");
    own.scene.setAllowDuplicatedConnections(false);
    CallbackLog log;
    journal.clear();
    own.scene.connect(&node, &node, false);
    EXPECT_EQ(1, std::count(journal.begin(), journal.end(), "make"));
    EXPECT_EQ(0, std::count(journal.begin(), journal.end(), "delete"));
    EXPECT_THAT(log.lines, ElementsAre("addConnection root node.out > node.in"));
    EXPECT_SCENE_INVARIANTS(own.scene);
}

// --- removing one connection

TEST_F(SceneWiring, RemovedConnectionIsGoneEverywhere)
{
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    scene.setIsDirty(false);
    EXPECT_TRUE(scene.removeConnection(made));
    EXPECT_TRUE(scene.getIsDirty());
    scene.setIsDirty(false);
    expectUntouched();
}

TEST_F(SceneWiring, RemovingNoConnectionIsFalse)
{
    CallbackLog log;
    EXPECT_FALSE(scene.removeConnection(nullptr));
    EXPECT_THAT(log.lines, IsEmpty());
    expectUntouched();
}

TEST_F(SceneWiring, LastConnectionMovesIntoThePlaceOfTheRemovedOne)
{
    struct Row
    {
        unsigned int removed;
        std::vector<unsigned int> left;
    };
    Row const rows[] = {{0, {3, 1, 2}}, {1, {0, 3, 2}}, {2, {0, 1, 3}}, {3, {0, 1, 2}}};
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.removed);
        std::vector<GraphConnection*> made;
        for (int i = 0; i < 4; ++i) made.push_back(scene.connect(&out, &bIn, false));
        scene.removeConnection(made[row.removed]);
        std::vector<GraphConnection*> expected;
        for (unsigned int i : row.left) expected.push_back(made[i]);
        EXPECT_EQ(expected, connections());
        EXPECT_EQ(expected, listed(scene.refGraphConnections()));
        EXPECT_EQ(expected, listed(out.getOutputConnections()));
        EXPECT_EQ(expected, listed(bIn.getInputConnections()));
        EXPECT_SCENE_INVARIANTS(scene);
        scene.removeAllConnections();
    }
}

TEST_F(SceneWiring, ThirdConnectionIsFirstAfterTheRemovalOfTheFirst)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    GraphConnection* const second = scene.connect(&bOut, &in, false);
    GraphConnection* const third = scene.connect(&out, &in, false);
    scene.removeConnection(first);
    EXPECT_THAT(connections(), ElementsAre(third, second));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemoveCallbackSeesTheConnectionStillFullyWired)
{
    TestNode& compound = graph.addNode("compound");
    a.setNodeOwner(&compound);
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    scene.setIsDirty(false);
    CallbackLog log;
    log.onConnection = [&](GraphScene* caller, GraphNodeBase* owner, GraphConnection* connection)
    {
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(&compound, owner);
        EXPECT_EQ(made, connection);
        EXPECT_THAT(connections(), ElementsAre(made));
        EXPECT_THAT(listed(out.getOutputConnections()), ElementsAre(made));
        EXPECT_THAT(listed(bIn.getInputConnections()), ElementsAre(made));
        EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, false));
        EXPECT_FALSE(scene.getIsDirty());
        EXPECT_SCENE_INVARIANTS(scene);
    };
    scene.removeConnection(made);
    EXPECT_THAT(log.lines, ElementsAre("removeConnection compound a.out > b.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, DirtyFlagIsSetAfterTheRemoveCallback)
{
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    CallbackLog log;
    log.onConnection = [](GraphScene* caller, GraphNodeBase*, GraphConnection*)
    { caller->setIsDirty(false); };
    scene.removeConnection(made);
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(HostSceneWiring, ConnectionThatIsNotInTheSceneIsUnwiredAndDeletedAllTheSame)
{
    GraphConnection* const there = scene.connect(&bOut, &in, false);
    HostConnection* const foreign = new HostConnection(&out, &bIn);
    foreign->addToConnectedPins();
    scene.setUseAdjacencyMap(false);
    scene.setIsDirty(false);
    journal.clear();
    CallbackLog log;
    EXPECT_TRUE(scene.removeConnection(foreign));
    EXPECT_THAT(journal, ElementsAre("leave pins", "delete"));
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root a.out > b.in"));
    EXPECT_THAT(connections(), ElementsAre(there));
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(bIn.isConnected());
    EXPECT_TRUE(scene.getIsDirty());
    scene.setUseAdjacencyMap(true);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, HalfMadeConnectionIsDeletedToo)
{
    for (int i = 0; i < 3; ++i)
    {
        GraphConnection* const half = new GraphConnection(i == 1 ? &out : nullptr, i == 2 ? &bIn : nullptr);
        EXPECT_TRUE(scene.removeConnection(half));
    }
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_FALSE(out.isConnected());
}

TEST_F(SceneWiring, RemovedConnectionMakesRoomInAFullPin)
{
    out.setMaxNumConnections(1);
    GraphConnection* const made = scene.connect(&out, &bIn, false);
    EXPECT_EQ(nullptr, scene.connect(&out, &bIn, false));
    scene.removeConnection(made);
    EXPECT_NE(nullptr, scene.connect(&out, &bIn, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- removing many

TEST_F(SceneWiring, RemovingAllGoesFromTheFirstToTheLast)
{
    TestNode& c = graph.addFilter("c");
    scene.connect(&a, &b, false);
    scene.connect(&b, &c, true);
    scene.connect(&c, &a, false);
    scene.setIsDirty(false);
    CallbackLog log;
    EXPECT_TRUE(scene.removeAllConnections());
    EXPECT_THAT(log.lines,
                ElementsAre("removeConnection root a.out > b.in", "removeConnection root b.out > c.in",
                            "removeConnection root c.out > a.in"));
    EXPECT_TRUE(scene.getIsDirty());
    scene.setIsDirty(false);
    expectUntouched();
}

TEST_F(SceneWiring, RemovingAllOfNoneIsTrueAndSetsTheDirtyFlag)
{
    EXPECT_TRUE(scene.removeAllConnections());
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(SceneWiring, RemovingWithAPinTakesItsInputsThenItsOutputsImplicitOnesToo)
{
    GraphNodePin& both = addBoth(a);
    TestNode& c = graph.addFilter("c");
    GraphNodePin& cIn = *c.getNodePins()[0];
    GraphNodePin& cOut = *c.getNodePins()[1];
    scene.connect(&both, &cIn, true);
    scene.connect(&bOut, &both, false);
    scene.connect(&cOut, &both, true);
    GraphConnection* const other = scene.connect(&out, &bIn, false);
    CallbackLog log;
    scene.removeConnectionsWithPin(&both);
    EXPECT_THAT(log.lines,
                ElementsAre("removeConnection root b.out > a.both", "removeConnection root c.out > a.both",
                            "removeConnection root a.both > c.in"));
    EXPECT_THAT(connections(), ElementsAre(other));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovingWithAPinThatIsWiredToItselfRemovesEachConnectionOnce)
{
    GraphNodePin& both = addBoth(a);
    scene.connect(&both, &both, false);
    scene.connect(&both, &bIn, false);
    scene.connect(&both, &both, true);
    scene.connect(&bOut, &both, false);
    CallbackLog log;
    scene.removeConnectionsWithPin(&both);
    EXPECT_EQ(4u, log.lines.size());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_FALSE(both.isConnected());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovingWithNoPinOrAFreeOneDoesNothing)
{
    scene.removeConnectionsWithPin(nullptr);
    scene.removeConnectionsWithPin(&out);
    expectUntouched();
}

TEST_F(SceneWiring, RemovingWithANodeTakesInputsThenOutputsAndLeavesImplicitOnes)
{
    TestNode& c = graph.addFilter("c");
    scene.connect(&b, &c, false);
    scene.connect(&a, &b, false);
    GraphConnection* const implicitOne = scene.connect(&a, &b, true);
    GraphConnection* const other = scene.connect(&a, &c, false);
    for (bool const byId : {false, true})
    {
        SCOPED_TRACE(byId);
        CallbackLog log;
        EXPECT_TRUE(byId ? scene.removeConnectionsWithNode(b.getId()) : scene.removeConnectionsWithNode(&b));
        EXPECT_THAT(log.lines,
                    ElementsAre("removeConnection root a.out > b.in", "removeConnection root b.out > c.in"));
        EXPECT_EQ(2u, scene.getNumberOfConnections());
        EXPECT_TRUE(scene.getGraphConnections().contains(implicitOne));
        EXPECT_TRUE(scene.getGraphConnections().contains(other));
        scene.connect(&b, &c, false);
        scene.connect(&a, &b, false);
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovingWithANodeThatIsWiredToItselfRemovesTheLoopOnce)
{
    scene.connect(&out, &in, false);
    GraphNodePin& both = addBoth(a);
    scene.connect(&both, &both, false);
    CallbackLog log;
    EXPECT_TRUE(scene.removeConnectionsWithNode(&a));
    EXPECT_EQ(2u, log.lines.size());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovingWithAnUnwiredNodeIsTrueAndLeavesTheDirtyFlagAlone)
{
    EXPECT_TRUE(scene.removeConnectionsWithNode(&a));
    EXPECT_TRUE(scene.removeConnectionsWithNode(a.getId()));
    expectUntouched();
}

TEST_F(SceneWiring, RemovingWithNoNodeOrAnUnknownIdIsFalse)
{
    EXPECT_FALSE(scene.removeConnectionsWithNode(nullptr));
    EXPECT_FALSE(scene.removeConnectionsWithNode(4711u));
    EXPECT_FALSE(scene.removeConnectionsWithNode(0xFFFFFFFFu));
    expectUntouched();
}

TEST_F(SceneWiring, RemovingBetweenNodesFollowsItsTwoFlags)
{
    struct Row
    {
        bool bothWays;
        bool includeImplicit;
        std::vector<unsigned int> left;
    };
    // 0 and 1 lead from a to b, 2 and 3 back; the odd ones are implicit; 4 leads elsewhere.
    Row const rows[] = {
        {false, false, {1, 2, 3, 4}},
        {false, true, {2, 3, 4}},
        {true, false, {1, 3, 4}},
        {true, true, {4}},
    };
    TestNode& c = graph.addFilter("c");
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.left.size());
        std::vector<GraphConnection*> made;
        for (unsigned int i = 0; i < 4; ++i)
            made.push_back(i < 2 ? scene.connect(&a, &b, i % 2 != 0) : scene.connect(&b, &a, i % 2 != 0));
        made.push_back(scene.connect(&a, &c, false));
        scene.removeConnectionsBetweenNodes(&a, &b, row.bothWays, row.includeImplicit);
        std::vector<GraphConnection*> expected;
        for (unsigned int i : row.left) expected.push_back(made[i]);
        EXPECT_THAT(connections(), ::testing::UnorderedElementsAreArray(expected));
        EXPECT_SCENE_INVARIANTS(scene);
        scene.removeAllConnections();
    }
}

TEST_F(SceneWiring, RemovingBetweenANodeAndItselfRemovesEachLoopOnce)
{
    scene.connect(&a, &a, false);
    scene.connect(&a, &a, true);
    GraphConnection* const other = scene.connect(&a, &b, false);
    CallbackLog log;
    scene.removeConnectionsBetweenNodes(&a, &a, true, true);
    EXPECT_EQ(2u, log.lines.size());
    EXPECT_THAT(connections(), ElementsAre(other));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovingBetweenNoNodesDoesNothing)
{
    scene.connect(&a, &b, false);
    scene.setIsDirty(false);
    scene.removeConnectionsBetweenNodes(nullptr, &b, true, true);
    scene.removeConnectionsBetweenNodes(&a, nullptr, true, true);
    scene.removeConnectionsBetweenNodes(nullptr, nullptr, true, true);
    EXPECT_EQ(1u, scene.getNumberOfConnections());
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- the array and the host

TEST_F(SceneWiring, RemovalFindsAConnectionThatTheHostHasMovedWithinTheArray)
{
    std::vector<GraphConnection*> made;
    for (int i = 0; i < 4; ++i) made.push_back(scene.connect(&out, &bIn, false));
    ArrayOfPtr<GraphConnection, KS_NO>& array = scene.refGraphConnections();
    std::reverse(array.begin(), array.end());
    scene.removeConnection(made[0]);
    EXPECT_THAT(connections(), ElementsAre(made[3], made[2], made[1]));
    scene.removeConnection(made[3]);
    EXPECT_THAT(connections(), ElementsAre(made[1], made[2]));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, RemovalTakesTheFirstOfTwoEntriesOfOneConnection)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    GraphConnection* const second = scene.connect(&out, &bIn, false);
    GraphConnection* const third = scene.connect(&out, &bIn, false);
    ArrayOfPtr<GraphConnection, KS_NO> twice;
    for (GraphConnection* connection : {third, first, second, third}) twice.append(connection);
    scene.setGraphConnections(twice);
    scene.removeConnection(third);
    EXPECT_THAT(connections(), ElementsAre(third, first, second));
    ArrayOfPtr<GraphConnection, KS_NO> rest;
    for (GraphConnection* connection : {first, second}) rest.append(connection);
    scene.setGraphConnections(rest);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneWiring, ConnectionThatTheHostTookOutOfTheArrayIsStillUnwired)
{
    GraphConnection* const first = scene.connect(&out, &bIn, false);
    GraphConnection* const second = scene.connect(&out, &bIn, false);
    ArrayOfPtr<GraphConnection, KS_NO> rest;
    rest.append(second);
    scene.setGraphConnections(rest);
    EXPECT_TRUE(scene.removeConnection(first));
    EXPECT_THAT(connections(), ElementsAre(second));
    EXPECT_THAT(listed(out.getOutputConnections()), ElementsAre(second));
    EXPECT_SCENE_INVARIANTS(scene);
}

} // namespace
TEST(ConnectablePins, KeepANullThatTheListHeldWhenFullPinsAreLeftOut)
{
    TestGraph<> graph;
    TestNode& source = graph.addFilter("source");
    TestNode& target = graph.addFilter("target");
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    pins.append(nullptr);
    EXPECT_TRUE(graph.scene.getConnectablePins(source.getPinByName("out"), &target, pins, true));
    ASSERT_EQ(pins.size(), 2u);
    EXPECT_EQ(pins[0], nullptr);
    EXPECT_EQ(pins[1], target.getPinByName("in"));
}

} // namespace kestrel::graph::test
