#include "support/CallbackLog.h"
#include "support/GraphTexts.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

/// Everything that a move in reports, in the order of its parameters.
struct MoveIn
{
    PinRenames pinRenames;
    InterfaceOfNode inputInterfaces;
    InterfaceOfNode outputInterfaces;
    Nodes newInterfaceNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newCompoundPins;
    Array<GraphConnection, _Wa> removedConnections;
    Connections outerConnections;
    Connections innerConnections;

    bool run(GraphScene& scene, Nodes const& nodes, GraphNodeBase* compound)
    {
        return scene.moveNodesToCompound(nodes, compound, pinRenames, inputInterfaces, outputInterfaces,
                                         newInterfaceNodes, newCompoundPins, removedConnections,
                                         outerConnections, innerConnections);
    }

    bool run(GraphScene& scene, std::initializer_list<GraphNodeBase*> nodes, GraphNodeBase* compound)
    {
        return run(scene, listOf(nodes), compound);
    }

    std::map<std::string, std::string> renames() const { return texts(pinRenames); }
};

/// The filters a, b and c and the empty compound C, all under the root.
struct MoveInGraph : TestGraph<>
{
    MoveInGraph() : a(addFilter("a")), b(addFilter("b")), c(addFilter("c")), compound(addCompound("C")) {}

    TestNode& addCompound(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        TestNode& node = addNode(name, owner);
        node.setCompound(true);
        return node;
    }

    /// From the source's "out" to the target's "in".
    GraphConnection* wire(GraphNodeBase& source, GraphNodeBase& target, bool implicit = false)
    {
        return scene.connect(source.getPinByName("out"), target.getPinByName("in"), implicit);
    }

    /// An interface node of the compound with one pair.
    GraphNodeBase& addInterface(PinDirection const& direction, GraphNodeBase& owner)
    {
        GraphNodeBase* node = nullptr;
        GraphNodePin* outer = nullptr;
        GraphNodePin* inner = nullptr;
        scene.addCompoundInterfaceNode(direction, &owner, node, outer, inner);
        return *node;
    }

    bool moveIn(std::initializer_list<GraphNodeBase*> nodes) { return move.run(scene, nodes, &compound); }

    MoveIn move;
    TestNode& a;
    TestNode& b;
    TestNode& c;
    TestNode& compound;
};

} // namespace

// ---- who moves

TEST(SceneMoveIn, NothingToMoveIsTrueAndChangesNothing)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.scene.setIsDirty(false);
    CallbackLog log;
    EXPECT_TRUE(graph.moveIn({}));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(graph.move.renames(), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NodesBecomeChildrenInTheOrderOfTheList)
{
    MoveInGraph graph;
    EXPECT_TRUE(graph.moveIn({&graph.c, &graph.a}));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("c", "a"));
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("b", "C"));
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.a.in"), graph.a.getPinByName("in"));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ConnectionsAmongTheMovedNodesAreNotTouched)
{
    MoveInGraph graph;
    GraphConnection* const ab = graph.wire(graph.a, graph.b);
    GraphConnection* const loop = graph.wire(graph.a, graph.a);
    CallbackLog log;
    EXPECT_TRUE(graph.moveIn({&graph.a, &graph.b}));
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(ab, loop));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("a", "b"));
    EXPECT_TRUE(graph.compound.getNodePins().isEmpty());
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.C.a.in", "root.a.in"), Pair("root.C.a.out", "root.a.out"),
                                     Pair("root.C.b.in", "root.b.in"), Pair("root.C.b.out", "root.b.out")));
    EXPECT_TRUE(graph.move.inputInterfaces.empty());
    EXPECT_TRUE(graph.move.outputInterfaces.empty());
    EXPECT_TRUE(graph.move.newInterfaceNodes.isEmpty());
    EXPECT_TRUE(graph.move.newCompoundPins.isEmpty());
    EXPECT_TRUE(graph.move.removedConnections.isEmpty());
    EXPECT_TRUE(graph.move.outerConnections.isEmpty());
    EXPECT_TRUE(graph.move.innerConnections.isEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ConnectionsAmongTheNodesThatStayAreNotTouched)
{
    MoveInGraph graph;
    GraphConnection* const bc = graph.wire(graph.b, graph.c);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(bc));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the boundary

TEST(SceneMoveIn, OutgoingConnectionIsLedThroughAnOutputPair)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    EXPECT_TRUE(graph.moveIn({&graph.a}));

    ASSERT_EQ(graph.move.newInterfaceNodes.size(), 1u);
    GraphNodeBase* const node = graph.move.newInterfaceNodes[0];
    ASSERT_EQ(graph.move.newCompoundPins.size(), 1u);
    GraphNodePin* const outer = graph.move.newCompoundPins[0];
    GraphNodePin* const inner = outer->getChildGraphNodePinPtr();

    EXPECT_STREQ(node->getFullName().c_str(), "root.C.output interface01");
    EXPECT_TRUE(node->isOutputInterface());
    EXPECT_EQ(outer->getParentGraphNodePtr(), &graph.compound);
    EXPECT_EQ(outer->getDirection(), PIN_OUTPUT);
    EXPECT_EQ(inner->getParentGraphNodePtr(), node);
    EXPECT_THAT(graph.move.outputInterfaces, UnorderedElementsAre(Pair(&graph.a, node)));
    EXPECT_THAT(graph.move.inputInterfaces, IsEmpty());
    EXPECT_THAT(texts(graph.move.removedConnections), ElementsAre("a.out > b.in"));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("a.out > output interface01.out"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > b.in"));
    EXPECT_THAT(texts(graph.scene.getGraphConnections()),
                ElementsAre("a.out > output interface01.out", "C.out > b.in"));
    EXPECT_EQ(graph.move.innerConnections[0]->getTargetPin(), inner);
    EXPECT_EQ(graph.move.outerConnections[0]->getSourcePin(), outer);
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, IncomingConnectionIsLedThroughAnInputPair)
{
    MoveInGraph graph;
    graph.wire(graph.b, graph.a);
    EXPECT_TRUE(graph.moveIn({&graph.a}));

    ASSERT_EQ(graph.move.newInterfaceNodes.size(), 1u);
    GraphNodeBase* const node = graph.move.newInterfaceNodes[0];
    ASSERT_EQ(graph.move.newCompoundPins.size(), 1u);
    GraphNodePin* const outer = graph.move.newCompoundPins[0];

    EXPECT_STREQ(node->getFullName().c_str(), "root.C.input interface01");
    EXPECT_TRUE(node->isInputInterface());
    EXPECT_EQ(outer->getDirection(), PIN_INPUT);
    EXPECT_THAT(graph.move.inputInterfaces, UnorderedElementsAre(Pair(&graph.a, node)));
    EXPECT_THAT(graph.move.outputInterfaces, IsEmpty());
    EXPECT_THAT(texts(graph.move.removedConnections), ElementsAre("b.out > a.in"));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("input interface01.in > a.in"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("b.out > C.in"));
    EXPECT_EQ(graph.move.innerConnections[0]->getSourcePin(), outer->getChildGraphNodePinPtr());
    EXPECT_EQ(graph.move.outerConnections[0]->getTargetPin(), outer);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, BoundaryConnectionsOfANodeShareTheInterfaceNodeButNotThePair)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.c);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("output interface01"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.out", "C.out01"));
    EXPECT_THAT(listed(graph.compound.getNodePins()),
                ElementsAre(graph.move.newCompoundPins[0], graph.move.newCompoundPins[1]));
    EXPECT_THAT(texts(graph.move.innerConnections),
                ElementsAre("a.out > output interface01.out", "a.out > output interface01.out01"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > b.in", "C.out01 > c.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, EqualConnectionsEachGetAPair)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.b);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(texts(graph.move.removedConnections), ElementsAre("a.out > b.in", "a.out > b.in"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > b.in", "C.out01 > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, EveryMovedNodeHasAnInterfaceNodeForEachDirection)
{
    MoveInGraph graph;
    graph.wire(graph.c, graph.a);
    graph.wire(graph.a, graph.c);
    graph.wire(graph.c, graph.b);
    graph.wire(graph.b, graph.c);
    EXPECT_TRUE(graph.moveIn({&graph.a, &graph.b}));
    ASSERT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("input interface01", "output interface01",
                                                                 "input interface02", "output interface02"));
    EXPECT_THAT(texts(graph.compound.getNodes()),
                ElementsAre("a", "b", "input interface01", "output interface01", "input interface02",
                            "output interface02"));
    Nodes const& made = graph.move.newInterfaceNodes;
    EXPECT_THAT(graph.move.inputInterfaces,
                UnorderedElementsAre(Pair(&graph.a, made[0]), Pair(&graph.b, made[2])));
    EXPECT_THAT(graph.move.outputInterfaces,
                UnorderedElementsAre(Pair(&graph.a, made[1]), Pair(&graph.b, made[3])));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ConnectionsAreHandledNodeByNodeInputsFirst)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.c);
    graph.wire(graph.b, graph.c);
    graph.wire(graph.c, graph.b);
    graph.wire(graph.c, graph.a);
    EXPECT_TRUE(graph.moveIn({&graph.b, &graph.a}));
    EXPECT_THAT(texts(graph.move.removedConnections),
                ElementsAre("c.out > b.in", "b.out > c.in", "c.out > a.in", "a.out > c.in"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.in", "C.out", "C.in01", "C.out01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NewConnectionsAreExplicitAndCopiesHoldThePins)
{
    MoveInGraph graph;
    GraphNodePin* const source = graph.a.getPinByName("out");
    GraphNodePin* const target = graph.b.getPinByName("in");
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_FALSE(graph.move.innerConnections[0]->isImplicit());
    EXPECT_FALSE(graph.move.outerConnections[0]->isImplicit());
    EXPECT_EQ(graph.move.removedConnections[0].getSourcePin(), source);
    EXPECT_EQ(graph.move.removedConnections[0].getTargetPin(), target);
    EXPECT_FALSE(graph.move.removedConnections[0].isImplicit());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ImplicitConnectionsAreLeftCrossingTheBoundary)
{
    MoveInGraph graph;
    GraphConnection* const out = graph.wire(graph.a, graph.b, true);
    GraphConnection* const in = graph.wire(graph.b, graph.a, true);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(out, in));
    EXPECT_TRUE(out->isImplicit());
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), IsEmpty());
    EXPECT_THAT(texts(graph.move.removedConnections), IsEmpty());
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.compound);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NodeThatFedTheCompoundFeedsItRoundTheOutside)
{
    MoveInGraph graph;
    GraphNodeBase& door = graph.addInterface(PIN_INPUT, graph.compound);
    graph.scene.connect(graph.a.getPinByName("out"), graph.compound.getPinByName("input"), false);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("a.out > output interface01.out"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > C.input"));
    EXPECT_THAT(texts(graph.compound.getNodes()),
                ElementsAre(std::string(door.getName()), "a", "output interface01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the names of a pair

TEST(SceneMoveIn, PairIsNamedAfterThePinOfTheListedEnd)
{
    MoveInGraph graph;
    graph.a.getPinByName("in")->setName("left");
    graph.a.getPinByName("out")->setName("right");
    graph.b.getPinByName("in")->setName("far");
    graph.b.getPinByName("out")->setName("near");
    graph.scene.connect(graph.a.getPinByName("right"), graph.b.getPinByName("far"), false);
    graph.scene.connect(graph.b.getPinByName("near"), graph.a.getPinByName("left"), false);
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.left", "C.right"));
    EXPECT_THAT(texts(graph.move.innerConnections),
                ElementsAre("input interface01.left > a.left", "a.right > output interface01.right"));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.left"), graph.move.newCompoundPins[0]);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.input interface01.left"),
              graph.move.newCompoundPins[0]->getChildGraphNodePinPtr());
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.input"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, FreshPairStandsInTheWayOfItsOwnFirstName)
{
    struct Row
    {
        char const* listedPin;
        char const* first;
        char const* second;
    };
    for (Row const& row : {Row{"output", "C.output01", "C.output02"}, Row{"input", "C.input", "C.input01"},
                           Row{"Output", "C.Output", "C.Output01"}, Row{"p01", "C.p01", "C.p0101"},
                           Row{"50%s", "C.50%s", "C.50%s01"}})
    {
        SCOPED_TRACE(row.listedPin);
        MoveInGraph graph;
        graph.wire(graph.a, graph.b);
        graph.wire(graph.a, graph.c);
        graph.a.getPinByName("out")->setName(row.listedPin);
        graph.moveIn({&graph.a});
        EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre(row.first, row.second));
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneMoveIn, PairAvoidsTheNamesOfTheCompoundsPins)
{
    MoveInGraph graph;
    graph.addInput(graph.compound, "out");
    graph.wire(graph.a, graph.b);
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.out01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- refusals

TEST(SceneMoveIn, RefusedConnectionIsANullEntry)
{
    struct Row
    {
        bool outgoing;
        bool innerRefused;
    };
    for (Row const& row : {Row{true, false}, Row{true, true}, Row{false, false}, Row{false, true}})
    {
        SCOPED_TRACE(std::string(row.outgoing ? "outgoing" : "incoming") +
                     (row.innerRefused ? ", inner" : ", outer"));
        MoveInGraph graph;
        if (row.outgoing)
            graph.wire(graph.a, graph.b);
        else
            graph.wire(graph.b, graph.a);
        GraphNodeBase& full = row.innerRefused ? graph.a : graph.b;
        for (GraphNodePin* pin : full.getNodePins()) pin->setMaxNumConnections(0);

        EXPECT_TRUE(graph.moveIn({&graph.a}));
        Connections const& refused =
            row.innerRefused ? graph.move.innerConnections : graph.move.outerConnections;
        Connections const& made =
            row.innerRefused ? graph.move.outerConnections : graph.move.innerConnections;
        ASSERT_EQ(refused.size(), 1u);
        EXPECT_EQ(refused[0], nullptr);
        ASSERT_EQ(made.size(), 1u);
        EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(made[0]));
        EXPECT_EQ(graph.move.removedConnections.size(), 1u);
        EXPECT_EQ(graph.move.newCompoundPins.size(), 1u);
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneMoveIn, RefusedConnectionDoesNotStopTheOthers)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.c);
    graph.b.getPinByName("in")->setMaxNumConnections(0);
    EXPECT_TRUE(graph.moveIn({&graph.a}));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("-", "C.out01 > c.in"));
    EXPECT_THAT(texts(graph.move.innerConnections),
                ElementsAre("a.out > output interface01.out", "a.out > output interface01.out01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, OldConnectionMakesRoomForTheNewOnes)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.a.getPinByName("out")->setMaxNumConnections(1);
    graph.b.getPinByName("in")->setMaxNumConnections(1);
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("a.out > output interface01.out"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- renames

TEST(SceneMoveIn, NodeWhoseNameIsTakenInsideGetsAFreeOne)
{
    struct Row
    {
        char const* name;
        char const* inside;
        char const* outside;
        char const* expected;
    };
    Row const rows[] = {
        {"n", "other", "other", "n"},   {"n", "n", "other", "n1"},
        {"N", "n", "other", "N1"},      {"n", "n", "n1", "n2"},
        {"n", "n", "N1", "n2"},         {"n", "other", "N", "n"},
        {"n09", "n09", "other", "n01"}, {"12", "12", "other", "01"},
        {"n1", "n1", "other", "n2"},    {"50%s", "50%s", "other", "50%s1"},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::string(row.name) + " to " + row.inside + " beside " + row.outside);
        MoveInGraph graph;
        TestNode& node = graph.addFilter(row.name);
        graph.addNode(row.inside, &graph.compound);
        graph.addNode(row.outside);
        graph.moveIn({&node});
        EXPECT_STREQ(node.getName().c_str(), row.expected);
        std::string const before = std::string("root.") + row.name;
        std::string const after = std::string("root.C.") + row.expected;
        EXPECT_THAT(graph.move.renames(), UnorderedElementsAre(Pair(after + ".in", before + ".in"),
                                                               Pair(after + ".out", before + ".out")));
        EXPECT_EQ(graph.scene.getPinPtrByFullName(KS_String(after + ".in")), node.getPinByName("in"));
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneMoveIn, NodeMovedFirstTakesTheNameFromTheNext)
{
    MoveInGraph graph;
    TestNode& first = graph.addFilter("n");
    TestNode& second = graph.addFilter("n");
    graph.moveIn({&first, &second});
    EXPECT_STREQ(first.getName().c_str(), "n");
    EXPECT_STREQ(second.getName().c_str(), "n1");
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.C.n.in", "root.n.in"), Pair("root.C.n.out", "root.n.out"),
                                     Pair("root.C.n1.in", "root.n.in"), Pair("root.C.n1.out", "root.n.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NodeIsRenamedBeforeItLeaves)
{
    MoveInGraph graph;
    TestNode& node = graph.addFilter("n");
    graph.addNode("n", &graph.compound);
    graph.addNode("n1", &graph.compound);
    graph.moveIn({&node});
    EXPECT_STREQ(node.getName().c_str(), "n2");
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("n", "n1", "n2"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NodeThatIsInsideAlreadyMeetsItself)
{
    MoveInGraph graph;
    TestNode& x = graph.addFilter("x", &graph.compound);
    graph.addFilter("y", &graph.compound);
    graph.moveIn({&x});
    EXPECT_STREQ(x.getName().c_str(), "x1");
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("x1", "y"));
    EXPECT_THAT(graph.move.renames(), UnorderedElementsAre(Pair("root.C.x1.in", "root.C.x.in"),
                                                           Pair("root.C.x1.out", "root.C.x.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, RenameRecordThatIsThereStays)
{
    MoveInGraph graph;
    graph.move.pinRenames["root.C.a.in"] = "earlier";
    graph.move.pinRenames["unrelated"] = "kept";
    graph.moveIn({&graph.a});
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.C.a.in", "earlier"), Pair("root.C.a.out", "root.a.out"),
                                     Pair("unrelated", "kept")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, OnlyPinsOfTheMovedNodesThemselvesAreRecorded)
{
    MoveInGraph graph;
    TestNode& nested = graph.addCompound("K");
    graph.addFilter("x", &nested);
    graph.addInput(nested, "k");
    graph.wire(graph.a, graph.b);
    graph.moveIn({&nested, &graph.a});
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.C.K.k", "root.K.k"), Pair("root.C.a.in", "root.a.in"),
                                     Pair("root.C.a.out", "root.a.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- interface nodes in the list

TEST(SceneMoveIn, InterfaceNodeInTheListStaysWithItsConnections)
{
    MoveInGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    TestNode& x = graph.addFilter("x", &graph.compound);
    GraphNodeBase& door = graph.addInterface(PIN_INPUT, graph.compound);
    GraphConnection* const connection =
        graph.scene.connect(door.getPinByName("input"), x.getPinByName("in"), false);
    EXPECT_TRUE(graph.move.run(graph.scene, {&door}, &inner));
    EXPECT_EQ(door.getNodeOwner(), &graph.compound);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(connection));
    EXPECT_THAT(graph.move.renames(), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, InterfaceNodeInTheListCountsAsListed)
{
    MoveInGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    TestNode& x = graph.addFilter("x", &graph.compound);
    GraphNodeBase& door = graph.addInterface(PIN_INPUT, graph.compound);
    GraphConnection* const connection =
        graph.scene.connect(door.getPinByName("input"), x.getPinByName("in"), false);
    graph.move.run(graph.scene, {&door, &x}, &inner);
    EXPECT_EQ(x.getNodeOwner(), &inner);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(connection));
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ConnectionWithAnInterfaceNodeThatIsNotListedIsLedThroughAPair)
{
    MoveInGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    TestNode& x = graph.addFilter("x", &graph.compound);
    GraphNodeBase& door = graph.addInterface(PIN_INPUT, graph.compound);
    door.setName("door");
    graph.scene.connect(door.getPinByName("input"), x.getPinByName("in"), false);
    graph.move.run(graph.scene, {&x}, &inner);
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("door.input > D.in"));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("input interface01.in > x.in"));
    EXPECT_STREQ(graph.move.newInterfaceNodes[0]->getFullName().c_str(), "root.C.D.input interface01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- shared interface nodes

TEST(SceneMoveIn, RecordedInterfaceNodeIsUsedAgain)
{
    MoveInGraph graph;
    GraphNodeBase& door = graph.addInterface(PIN_OUTPUT, graph.compound);
    graph.wire(graph.a, graph.b);
    graph.move.outputInterfaces[&graph.a] = &door;
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), IsEmpty());
    EXPECT_THAT(graph.move.outputInterfaces, UnorderedElementsAre(Pair(&graph.a, &door)));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("a.out > output interface01.out"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.out"));
    EXPECT_THAT(texts(door.getNodePins()),
                ElementsAre("output interface01.output", "output interface01.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, RecordOfTheOtherDirectionOrAnotherNodeIsNotUsed)
{
    MoveInGraph graph;
    GraphNodeBase& door = graph.addInterface(PIN_OUTPUT, graph.compound);
    graph.wire(graph.a, graph.b);
    graph.move.inputInterfaces[&graph.a] = &door;
    graph.move.outputInterfaces[&graph.b] = &door;
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("output interface02"));
    EXPECT_THAT(graph.move.inputInterfaces, UnorderedElementsAre(Pair(&graph.a, &door)));
    EXPECT_EQ(graph.move.outputInterfaces[&graph.a], graph.move.newInterfaceNodes[0]);
    EXPECT_EQ(door.getNodePins().size(), 1u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, SameMapsShareTheInterfaceNodesAcrossCalls)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.c, graph.a);
    graph.moveIn({&graph.a});
    ASSERT_EQ(graph.move.newInterfaceNodes.size(), 2u);

    std::map<KS_String, KS_String> renames;
    Nodes nodes = listOf({&graph.a});
    Array<GraphConnection, _Wa> removedOuter;
    Array<GraphConnection, _Wa> removed;
    Connections made;
    Connections spare;
    graph.scene.removeNodesFromCompound(&graph.compound, nodes, renames, removedOuter, removed, made, spare);
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.root);

    graph.moveIn({&graph.a});
    EXPECT_EQ(graph.move.newInterfaceNodes.size(), 2u);
    EXPECT_THAT(texts(graph.compound.getNodes()),
                ElementsAre("input interface01", "output interface01", "a"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.in", "C.out", "C.in01", "C.out01"));
    EXPECT_EQ(graph.move.newInterfaceNodes[0]->getNodePins().size(), 2u);
    EXPECT_EQ(graph.move.newInterfaceNodes[1]->getNodePins().size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the caller's lists

TEST(SceneMoveIn, ListsAreAppendedTo)
{
    MoveInGraph graph;
    GraphConnection* const old = graph.wire(graph.b, graph.c);
    graph.wire(graph.a, graph.b);
    graph.move.newInterfaceNodes.append(&graph.root);
    graph.move.newCompoundPins.append(graph.c.getPinByName("in"));
    graph.move.removedConnections.append(*old);
    graph.move.outerConnections.append(old);
    graph.move.innerConnections.append(old);
    graph.moveIn({&graph.a});
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("root", "output interface01"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("c.in", "C.out"));
    EXPECT_THAT(texts(graph.move.removedConnections), ElementsAre("b.out > c.in", "a.out > b.in"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("b.out > c.in", "C.out > b.in"));
    EXPECT_THAT(texts(graph.move.innerConnections),
                ElementsAre("b.out > c.in", "a.out > output interface01.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ListMayBeTheOwnersChildListWithTheCompoundInIt)
{
    MoveInGraph graph;
    GraphConnection* const ab = graph.wire(graph.a, graph.b);
    graph.c.setName("d");
    EXPECT_TRUE(graph.move.run(graph.scene, graph.root.getNodes(), &graph.compound));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("a", "b", "d"));
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("C"));
    EXPECT_STREQ(graph.compound.getFullName().c_str(), "root.C");
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(ab));
    EXPECT_EQ(graph.move.pinRenames.size(), 6u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, ListMayBeTheCompoundsOwnChildList)
{
    MoveInGraph graph;
    graph.addFilter("x", &graph.compound);
    graph.addFilter("y", &graph.compound);
    EXPECT_TRUE(graph.move.run(graph.scene, graph.compound.getNodes(), &graph.compound));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("x1", "y1"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NullsInTheListHaveNoEffect)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    EXPECT_TRUE(graph.moveIn({nullptr, &graph.a, nullptr}));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("a", "output interface01"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("C.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, WithoutACompoundNothingMoves)
{
    MoveInGraph graph;
    GraphConnection* const ab = graph.wire(graph.a, graph.b);
    EXPECT_TRUE(graph.move.run(graph.scene, {&graph.a}, nullptr));
    EXPECT_EQ(graph.a.getNodeOwner(), &graph.root);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(ab));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- callbacks

TEST(SceneMoveIn, OutgoingConnectionFiresItsCallbacksInOrder)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.b);
    graph.wire(graph.a, graph.c);
    CallbackLog log;
    graph.moveIn({&graph.a});
    EXPECT_THAT(log.lines, ElementsAre("removeConnection C a.out > b.in", "addNode root output interface01",
                                       "addNodePin C Untitled", "addNodePin root Untitled",
                                       "addConnection C a.out > output interface01.out",
                                       "addConnection root C.out > b.in", "removeConnection C a.out > c.in",
                                       "addNodePin C Untitled", "addNodePin root Untitled",
                                       "addConnection C a.out > output interface01.out01",
                                       "addConnection root C.out01 > c.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, IncomingConnectionIsWiredInsideBeforeOutside)
{
    MoveInGraph graph;
    graph.wire(graph.b, graph.a);
    CallbackLog log;
    graph.moveIn({&graph.a});
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root b.out > a.in", "addNode root input interface01",
                                       "addNodePin C Untitled", "addNodePin root Untitled",
                                       "addConnection C input interface01.in > a.in",
                                       "addConnection root b.out > C.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, AllNodesHaveMovedBeforeTheFirstConnectionGoes)
{
    MoveInGraph graph;
    graph.wire(graph.a, graph.c);
    graph.wire(graph.b, graph.c);
    CallbackLog log;
    unsigned int movedAtFirst = 0;
    log.onConnection = [&](GraphScene*, GraphNodeBase*, GraphConnection*)
    {
        if (movedAtFirst == 0) movedAtFirst = graph.compound.getNodes().size();
    };
    graph.moveIn({&graph.a, &graph.b});
    EXPECT_EQ(movedAtFirst, 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- compounds among the moved nodes

TEST(SceneMoveIn, CompoundMovesWithEverythingInIt)
{
    MoveInGraph graph;
    TestNode& nested = graph.addCompound("K");
    TestNode& x = graph.addFilter("x", &nested);
    GraphNodeBase& door = graph.addInterface(PIN_INPUT, nested);
    GraphConnection* const within =
        graph.scene.connect(door.getPinByName("input"), x.getPinByName("in"), false);
    graph.scene.connect(graph.b.getPinByName("out"), nested.getPinByName("input"), false);

    graph.moveIn({&nested});
    EXPECT_THAT(texts(nested.getNodes()), ElementsAre("x", "input interface01"));
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("b.out > C.input01"));
    EXPECT_THAT(texts(graph.move.innerConnections), ElementsAre("input interface01.input01 > K.input"));
    EXPECT_EQ(graph.scene.getGraphConnections()[0], within);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.K.x.in"), x.getPinByName("in"));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.K.x.in"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.K.input interface01.input"),
              door.getPinByName("input"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, CompoundCannotMoveIntoWhatItHolds)
{
    MoveInGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    EXPECT_TRUE(graph.move.run(graph.scene, {&graph.compound, &inner, &graph.a}, &inner));
    EXPECT_EQ(graph.compound.getNodeOwner(), &graph.root);
    EXPECT_EQ(inner.getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.a.getNodeOwner(), &inner);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveIn, NodeFromTwoLevelsAwayIsWiredStraightThroughTheOneBoundary)
{
    MoveInGraph graph;
    TestNode& inner = graph.addCompound("D", &graph.compound);
    graph.wire(graph.a, graph.b);
    graph.move.run(graph.scene, {&graph.a}, &inner);
    EXPECT_THAT(texts(graph.move.outerConnections), ElementsAre("D.out > b.in"));
    EXPECT_THAT(graph.move.renames(), UnorderedElementsAre(Pair("root.C.D.a.in", "root.a.in"),
                                                           Pair("root.C.D.a.out", "root.a.out")));
    EXPECT_TRUE(graph.compound.getNodePins().isEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// Without a look at the invariants: it writes every full name, millions of bytes at this depth.
TEST(SceneMoveIn, TwoThousandLevelsMoveAtOnce)
{
    constexpr unsigned int levels = 2000;
    MoveInGraph graph;
    TestNode& top = graph.addNode("n");
    GraphNodeBase* owner = &top;
    for (unsigned int i = 1; i < levels; ++i) owner = &graph.addNode("n", owner);
    GraphNodePin& deepest = graph.addInput(*owner, "deepest");
    graph.moveIn({&top});
    EXPECT_EQ(top.getNodeOwner(), &graph.compound);
    EXPECT_EQ(graph.scene.getPinPtrByFullName(deepest.getFullName()), &deepest);
}

} // namespace kestrel::graph::test
