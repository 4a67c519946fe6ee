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

enum class Way
{
    dropping,
    creatingInterfaces
};

/// Runs either of the two moves out and keeps everything that it reports.
struct MoveOut
{
    PinRenames pinRenames;
    ConnectionValues removedOuter;
    ConnectionValues removed;
    Connections made;
    Connections spare;
    Connections inner;
    InterfaceOfNode inputInterfaces;
    InterfaceOfNode outputInterfaces;
    Nodes newInterfaceNodes;
    Pins newCompoundPins;

    bool run(GraphScene& scene, Way way, GraphNodeBase* compound, Nodes& nodes)
    {
        if (way == Way::dropping)
            return scene.removeNodesFromCompound(compound, nodes, pinRenames, removedOuter, removed, made,
                                                 spare);
        return scene.removeNodesFromCompoundCreatingInterfaces(
            compound, nodes, pinRenames, removedOuter, removed, made, inner, inputInterfaces,
            outputInterfaces, newInterfaceNodes, newCompoundPins);
    }

    std::map<std::string, std::string> renames() const { return texts(pinRenames); }
};

struct PinPair
{
    GraphNodeBase* node = nullptr;
    GraphNodePin* outer = nullptr;
    GraphNodePin* inner = nullptr;
};

/// The filters a and b beside the compound C, which holds the filters x and y.
struct MoveOutGraph : TestGraph<>
{
    MoveOutGraph()
        : a(addFilter("a")),
          b(addFilter("b")),
          compound(addCompound("C")),
          x(addFilter("x", &compound)),
          y(addFilter("y", &compound))
    {}

    TestNode& addCompound(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        TestNode& node = addNode(name, owner);
        node.setCompound(true);
        return node;
    }

    /// An interface node of that name in the compound, with one pair of pins "input" or "output".
    PinPair addPair(PinDirection const& direction, KS_String const& name, GraphNodeBase& owner)
    {
        PinPair pair;
        scene.addCompoundInterfaceNode(direction, &owner, pair.node, pair.outer, pair.inner);
        pair.node->setName(name);
        return pair;
    }

    PinPair addEntry(KS_String const& name = "I") { return addPair(PIN_INPUT, name, compound); }
    PinPair addExit(KS_String const& name = "O") { return addPair(PIN_OUTPUT, name, compound); }

    GraphConnection* wire(GraphNodePin* source, GraphNodePin* target, bool implicit = false)
    {
        return scene.connect(source, target, implicit);
    }

    GraphConnection* wire(GraphNodeBase& source, GraphNodeBase& target)
    {
        return wire(out(source), in(target));
    }

    static GraphNodePin* in(GraphNodeBase& node) { return node.getPinByName("in"); }
    static GraphNodePin* out(GraphNodeBase& node) { return node.getPinByName("out"); }

    bool moveOut(Way way, std::initializer_list<GraphNodeBase*> list)
    {
        Nodes nodes;
        for (GraphNodeBase* node : list) nodes.append(node);
        return move.run(scene, way, &compound, nodes);
    }

    std::vector<std::string> connections() const { return texts(scene.getGraphConnections()); }

    MoveOut move;
    TestNode& a;
    TestNode& b;
    TestNode& compound;
    TestNode& x;
    TestNode& y;
};

/// What the two moves have in common.
class SceneMoveOut : public ::testing::TestWithParam<Way>
{
protected:
    bool moveOut(std::initializer_list<GraphNodeBase*> nodes) { return graph.moveOut(GetParam(), nodes); }

    MoveOutGraph graph;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(BothWays, SceneMoveOut, ::testing::Values(Way::dropping, Way::creatingInterfaces),
                         [](auto const& way)
                         { return way.param == Way::dropping ? "Dropping" : "CreatingInterfaces"; });

// ---- who moves, and to where

TEST_P(SceneMoveOut, NothingToMoveIsTrueAndChangesNothing)
{
    graph.wire(graph.x, graph.y);
    graph.scene.setIsDirty(false);
    CallbackLog log;
    EXPECT_TRUE(moveOut({}));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NodesBecomeTheLastChildrenOfTheCompoundsOwner)
{
    EXPECT_TRUE(moveOut({&graph.y, &graph.x}));
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("a", "b", "C", "y", "x"));
    EXPECT_THAT(texts(graph.compound.getNodes()), IsEmpty());
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.x.in", "root.C.x.in"), Pair("root.x.out", "root.C.x.out"),
                                     Pair("root.y.in", "root.C.y.in"), Pair("root.y.out", "root.C.y.out")));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.x.in"), MoveOutGraph::in(graph.x));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.x.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NodesOfANestedCompoundClimbOneLevel)
{
    TestNode& inner = graph.addCompound("D", &graph.compound);
    TestNode& z = graph.addFilter("z", &inner);
    Nodes nodes;
    nodes.append(&z);
    EXPECT_TRUE(graph.move.run(graph.scene, GetParam(), &inner, nodes));
    EXPECT_EQ(z.getNodeOwner(), &graph.compound);
    EXPECT_THAT(graph.move.renames(), UnorderedElementsAre(Pair("root.C.z.in", "root.C.D.z.in"),
                                                           Pair("root.C.z.out", "root.C.D.z.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NodeWhoseNameIsTakenOutsideGetsAFreeOne)
{
    graph.x.setName("A");
    graph.y.setName("a1");
    moveOut({&graph.x});
    EXPECT_STREQ(graph.x.getName().c_str(), "A2");
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.A2.in", "root.C.A.in"), Pair("root.A2.out", "root.C.A.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NodeThatIsOutsideAlreadyMeetsItself)
{
    moveOut({&graph.b});
    EXPECT_STREQ(graph.b.getName().c_str(), "b1");
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("a", "b1", "C"));
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.b1.in", "root.b.in"), Pair("root.b1.out", "root.b.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, RenameRecordThatIsThereStays)
{
    graph.move.pinRenames["root.x.in"] = "earlier";
    moveOut({&graph.x});
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("root.x.in", "earlier"), Pair("root.x.out", "root.C.x.out")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, InterfaceNodesInTheListStay)
{
    PinPair const entry = graph.addEntry();
    moveOut({entry.node, &graph.x});
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("y", "I"));
    EXPECT_EQ(graph.move.pinRenames.size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, CompoundMovesWithEverythingInIt)
{
    TestNode& nested = graph.addCompound("K", &graph.compound);
    TestNode& z = graph.addFilter("z", &nested);
    PinPair const entry = graph.addPair(PIN_INPUT, "J", nested);
    GraphConnection* const within = graph.wire(entry.inner, MoveOutGraph::in(z));
    moveOut({&nested});
    EXPECT_THAT(texts(nested.getNodes()), ElementsAre("z", "J"));
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(within));
    EXPECT_THAT(graph.move.renames(), UnorderedElementsAre(Pair("root.K.input", "root.C.K.input")));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.K.z.in"), MoveOutGraph::in(z));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.K.J.input"), entry.inner);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// The map keys stay those of the place that the node left, so the invariants do not hold here.
TEST_P(SceneMoveOut, FromACompoundWithoutOwnerNodesEndWithoutOwnerUnderTheirOwnNames)
{
    GraphConnection* const ab = graph.wire(graph.a, graph.b);
    Nodes nodes;
    nodes.append(&graph.a);
    nodes.append(&graph.b);
    EXPECT_TRUE(graph.move.run(graph.scene, GetParam(), &graph.root, nodes));
    EXPECT_EQ(graph.a.getNodeOwner(), nullptr);
    EXPECT_EQ(graph.b.getNodeOwner(), nullptr);
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("C"));
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(ab));
    EXPECT_THAT(graph.move.renames(),
                UnorderedElementsAre(Pair("a.in", "root.a.in"), Pair("a.out", "root.a.out"),
                                     Pair("b.in", "root.b.in"), Pair("b.out", "root.b.out")));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.in"), MoveOutGraph::in(graph.a));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("a.in"), nullptr);
}

// ---- connections that stay

TEST_P(SceneMoveOut, ConnectionsAmongTheMovedNodesAreKept)
{
    GraphConnection* const xy = graph.wire(graph.x, graph.y);
    GraphConnection* const loop = graph.wire(graph.x, graph.x);
    CallbackLog log;
    moveOut({&graph.x, &graph.y});
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(xy, loop));
    EXPECT_THAT(texts(graph.move.removed), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionThatCrossedAndNoLongerDoesIsKept)
{
    GraphConnection* const outgoing = graph.wire(graph.x, graph.a);
    GraphConnection* const incoming = graph.wire(graph.b, graph.x);
    moveOut({&graph.x});
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(outgoing, incoming));
    EXPECT_THAT(texts(graph.move.removed), IsEmpty());
    EXPECT_THAT(texts(graph.move.made), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionsOfTheNodesThatStayAreNotTouched)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.y));
    graph.wire(MoveOutGraph::out(graph.y), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    std::vector<std::string> const before = graph.connections();
    CallbackLog log;
    moveOut({&graph.x});
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(graph.connections(), before);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ImplicitConnectionsAreLeftCrossingTheBoundary)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner, true);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.wire(MoveOutGraph::out(graph.x), MoveOutGraph::in(graph.y), true);
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > O.output", "C.output > b.in", "x.out > y.in"));
    EXPECT_THAT(texts(graph.move.removed), IsEmpty());
    EXPECT_THAT(texts(graph.move.removedOuter), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the input side

TEST_P(SceneMoveOut, NodeFedThroughAnEntryIsFedByEveryPartnerOutside)
{
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.b), entry.outer);
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    EXPECT_TRUE(moveOut({&graph.x}));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("b.out > x.in", "a.out > x.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("I.input > x.in"));
    EXPECT_THAT(texts(graph.move.removedOuter), IsEmpty());
    EXPECT_THAT(graph.connections(),
                ElementsAre("b.out > C.input", "a.out > C.input", "b.out > x.in", "a.out > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, OutsideGoesOnFeedingTheCompound)
{
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    graph.wire(entry.inner, MoveOutGraph::in(graph.y));
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(),
                ::testing::UnorderedElementsAre("a.out > C.input", "I.input > y.in", "a.out > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, SourceThatHasNoRoomBesideTheCompoundFeedsTheNodeNoMore)
{
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(MoveOutGraph::out(graph.b), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    MoveOutGraph::out(graph.a)->setMaxNumConnections(1);
    EXPECT_TRUE(moveOut({&graph.x}));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("b.out > x.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("I.input > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the output side

TEST_P(SceneMoveOut, NodeThatFedAnExitFeedsEveryPartnerOutsideAndTheExitFeedsNone)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.wire(exit.outer, MoveOutGraph::in(graph.a));
    EXPECT_TRUE(moveOut({&graph.x}));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > b.in", "x.out > a.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("x.out > O.output"));
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > b.in", "C.output > a.in"));
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > b.in", "x.out > a.in"));
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, OuterConnectionMakesRoomForTheDirectOne)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    MoveOutGraph::in(graph.b)->setMaxNumConnections(1);
    MoveOutGraph::out(graph.x)->setMaxNumConnections(1);
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, RefusedDirectConnectionIsNotListed)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.a));
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    MoveOutGraph::in(graph.a)->setMaxNumConnections(0);
    EXPECT_TRUE(moveOut({&graph.x}));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > b.in"));
    EXPECT_EQ(graph.move.removedOuter.size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, SeveralWaysToOneExitRemoveItsOuterConnectionsOnce)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(MoveOutGraph::out(graph.y), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    CallbackLog log;
    moveOut({&graph.x, &graph.y});
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > b.in"));
    EXPECT_THAT(texts(graph.move.removed),
                ElementsAre("x.out > O.output", "x.out > O.output", "y.out > O.output"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > b.in", "x.out > b.in", "y.out > b.in"));
    EXPECT_EQ(log.lines.size(), 7u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NodeThatStaysBehindASharedExitLosesItsWayOut)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(MoveOutGraph::out(graph.y), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), UnorderedElementsAre("y.out > O.output", "x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, OuterConnectionsGoEvenWhenTheyAreImplicit)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b), true);
    moveOut({&graph.x});
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > b.in"));
    ASSERT_THAT(texts(graph.move.made), ElementsAre("x.out > b.in"));
    EXPECT_FALSE(graph.move.made[0]->isImplicit());
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 1u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, OuterConnectionsOfBothDirectionsGo)
{
    PinPair const exit = graph.addExit();
    exit.outer->setDirection(PIN_INPUT | PIN_OUTPUT);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.wire(MoveOutGraph::out(graph.a), exit.outer);
    moveOut({&graph.x});
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("a.out > C.output", "C.output > b.in"));
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, CopyOfARemovedConnectionHoldsItsPinsAlone)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b), true);
    moveOut({&graph.x});
    ASSERT_EQ(graph.move.removedOuter.size(), 1u);
    EXPECT_EQ(graph.move.removedOuter[0].getSourcePin(), exit.outer);
    EXPECT_EQ(graph.move.removedOuter[0].getTargetPin(), MoveOutGraph::in(graph.b));
    EXPECT_FALSE(graph.move.removedOuter[0].isImplicit());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionThatGoesAsAnOuterOneIsListedOnlyAsThat)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    moveOut({&graph.b, &graph.x});
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > b1.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("x.out > O.output"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > b1.in"));
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > b1.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, OuterConnectionIntoAnInterfacePinIsNotReplaced)
{
    TestNode& nested = graph.addCompound("D", &graph.compound);
    TestNode& z = graph.addFilter("z", &nested);
    PinPair const far = graph.addExit("far");
    PinPair const near = graph.addPair(PIN_OUTPUT, "near", nested);
    graph.wire(MoveOutGraph::out(z), near.inner);
    graph.wire(near.outer, far.inner);
    graph.wire(far.outer, MoveOutGraph::in(graph.b));
    Nodes nodes;
    nodes.append(&z);
    nodes.append(far.node);
    graph.move.run(graph.scene, GetParam(), &nested, nodes);
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("D.output > far.output", "C.output > b.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("z.out > near.output"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("z.out > far.output"));
    EXPECT_THAT(graph.connections(), ElementsAre("z.out > far.output"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- both sides at once

TEST_P(SceneMoveOut, EverySourceIsConnectedToEveryTargetSourcesInTheOuterLoop)
{
    TestNode& c = graph.addFilter("c");
    TestNode& d = graph.addFilter("d");
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.b), entry.outer);
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(d));
    graph.wire(exit.outer, MoveOutGraph::in(c));
    moveOut({entry.node});
    EXPECT_THAT(texts(graph.move.made),
                ElementsAre("b.out > d.in", "b.out > c.in", "a.out > d.in", "a.out > c.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("I.input > O.output"));
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > d.in", "C.output > c.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, PartnerThatIsWiredTwiceIsConnectedTwice)
{
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    moveOut({&graph.x});
    EXPECT_THAT(texts(graph.move.made), ElementsAre("a.out > x.in", "a.out > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ListedInterfaceNodeHandsItsConnectionsToTheOutside)
{
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    moveOut({entry.node});
    EXPECT_EQ(graph.x.getNodeOwner(), &graph.compound);
    EXPECT_THAT(graph.connections(), ElementsAre("a.out > C.input", "a.out > x.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("I.input > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionsAreReplacedInTheOrderInWhichTheNodesAreListed)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    graph.wire(entry.inner, MoveOutGraph::in(graph.y));
    moveOut({&graph.y, &graph.x});
    EXPECT_THAT(texts(graph.move.removed),
                ElementsAre("I.input > y.in", "I.input > x.in", "x.out > O.output"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("a.out > y.in", "a.out > x.in", "x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionOfTheCompoundToItselfIsFollowedOneEndAtATime)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.y));
    moveOut({&graph.x, &graph.y});
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > C.input", "C.output > y.in"));
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("C.output > C.input"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, PartnerMayBeTheInterfacePinOfTheNextCompound)
{
    TestNode& nested = graph.addCompound("D", &graph.compound);
    TestNode& z = graph.addFilter("z", &nested);
    PinPair const far = graph.addEntry("far");
    PinPair const near = graph.addPair(PIN_INPUT, "near", nested);
    graph.wire(MoveOutGraph::out(graph.a), far.outer);
    graph.wire(far.inner, near.outer);
    graph.wire(near.inner, MoveOutGraph::in(z));
    Nodes nodes;
    nodes.append(&z);
    graph.move.run(graph.scene, GetParam(), &nested, nodes);
    EXPECT_THAT(texts(graph.move.made), ElementsAre("far.input > z.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- pairs that lead nowhere

TEST_P(SceneMoveOut, PairWithoutPartnersIsReplacedByNothing)
{
    PinPair const exit = graph.addExit();
    PinPair const entry = graph.addEntry();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("I.input > x.in", "x.out > O.output"));
    EXPECT_THAT(texts(graph.move.made), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, InterfacePinWithoutACompoundPinIsReplacedByNothing)
{
    TestNode& bare = graph.addFilter("bare", &graph.compound);
    bare.setInterface(true);
    graph.wire(graph.x, bare);
    graph.wire(bare, graph.x);
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("bare.out > x.in", "x.out > bare.in"));
    EXPECT_THAT(texts(graph.move.removedOuter), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, InterfacePinOfAnotherCompoundLosesItsOuterConnectionsAndIsReplacedByNothing)
{
    TestNode& other = graph.addCompound("E");
    PinPair const exit = graph.addPair(PIN_OUTPUT, "J", other);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    moveOut({&graph.x});
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("x.out > J.output"));
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("E.output > b.in"));
    EXPECT_THAT(texts(graph.move.made), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, InterfaceNodesAndPairsStayWhenNothingIsWiredToThem)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    moveOut({&graph.x, &graph.y});
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("I", "O"));
    EXPECT_THAT(listed(graph.compound.getNodePins()), ElementsAre(entry.outer, exit.outer));
    EXPECT_THAT(listed(entry.node->getNodePins()), ElementsAre(entry.inner));
    EXPECT_EQ(entry.outer->getChildGraphNodePinPtr(), entry.inner);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.C.O.output"), exit.inner);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- the caller's lists

TEST_P(SceneMoveOut, ListMayBeTheCompoundsOwnChildList)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    GraphConnection* const xy = graph.wire(graph.x, graph.y);
    graph.wire(MoveOutGraph::out(graph.y), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    EXPECT_TRUE(graph.move.run(graph.scene, GetParam(), &graph.compound, graph.compound.refNodes()));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("I", "O"));
    EXPECT_THAT(texts(graph.root.getNodes()), ElementsAre("a", "b", "C", "x", "y"));
    EXPECT_THAT(graph.connections(),
                UnorderedElementsAre("a.out > C.input", "a.out > x.in", "x.out > y.in", "y.out > b.in"));
    EXPECT_TRUE(graph.scene.getGraphConnections().contains(xy));
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ListsAreAppendedTo)
{
    PinPair const exit = graph.addExit();
    GraphConnection* const old = graph.wire(graph.a, graph.b);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.move.pinRenames["unrelated"] = "kept";
    graph.move.removedOuter.append(*old);
    graph.move.removed.append(*old);
    graph.move.made.append(old);
    moveOut({&graph.x});
    EXPECT_EQ(graph.move.pinRenames.size(), 3u);
    EXPECT_THAT(texts(graph.move.removedOuter), ElementsAre("a.out > b.in", "C.output > b.in"));
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("a.out > b.in", "x.out > O.output"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("a.out > b.in", "x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ListIsNotChangedByTheMove)
{
    PinPair const entry = graph.addEntry();
    graph.wire(graph.x, graph.y);
    Nodes nodes;
    nodes.append(entry.node);
    nodes.append(&graph.x);
    graph.move.run(graph.scene, GetParam(), &graph.compound, nodes);
    EXPECT_THAT(listed(nodes), ElementsAre(entry.node, &graph.x));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, NullsInTheListHaveNoEffect)
{
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    EXPECT_TRUE(moveOut({nullptr, &graph.x, nullptr}));
    EXPECT_THAT(graph.connections(), ElementsAre("x.out > b.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, ConnectionWithoutSourceIntoAnInterfacePinIsRemoved)
{
    graph.scene.setUseAdjacencyMap(false); // the host changes the connection behind the counts
    PinPair const exit = graph.addExit();
    GraphConnection* const broken = graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    MoveOutGraph::out(graph.x)->removeOutputConnection(broken);
    broken->setSourcePin(nullptr);
    EXPECT_TRUE(moveOut({&graph.x, exit.node}));
    ASSERT_EQ(graph.move.removed.size(), 1u);
    EXPECT_EQ(graph.move.removed[0].getSourcePin(), nullptr);
    EXPECT_EQ(graph.move.removed[0].getTargetPin(), exit.inner);
    EXPECT_TRUE(graph.move.made.isEmpty());
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_P(SceneMoveOut, WithoutACompoundNothingMoves)
{
    GraphConnection* const xy = graph.wire(graph.x, graph.y);
    Nodes nodes;
    nodes.append(&graph.x);
    EXPECT_TRUE(graph.move.run(graph.scene, GetParam(), nullptr, nodes));
    EXPECT_EQ(graph.x.getNodeOwner(), &graph.compound);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(xy));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- callbacks

TEST_P(SceneMoveOut, OuterConnectionsGoFirstWhenTheNodesHaveMoved)
{
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(MoveOutGraph::out(graph.a), entry.outer);
    graph.wire(entry.inner, MoveOutGraph::in(graph.x));
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    CallbackLog log;
    std::vector<GraphNodeBase*> owners;
    log.onConnection = [&](GraphScene*, GraphNodeBase*, GraphConnection*)
    { owners.push_back(graph.x.getNodeOwner()); };
    moveOut({&graph.x});
    EXPECT_THAT(log.lines,
                ElementsAre("removeConnection root C.output > b.in", "removeConnection C I.input > x.in",
                            "addConnection root a.out > x.in", "removeConnection root x.out > O.output",
                            "addConnection root x.out > b.in"));
    ASSERT_FALSE(owners.empty());
    EXPECT_EQ(owners.front(), &graph.root);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// Without a look at the invariants: it writes every full name, millions of bytes at this depth.
TEST_P(SceneMoveOut, TwoThousandLevelsMoveAtOnce)
{
    GraphNodeBase* owner = &graph.x;
    for (unsigned int i = 1; i < 2000; ++i) owner = &graph.addNode("n", owner);
    GraphNodePin& deepest = graph.addInput(*owner, "deepest");
    moveOut({&graph.x});
    EXPECT_EQ(graph.x.getNodeOwner(), &graph.root);
    EXPECT_EQ(graph.scene.getPinPtrByFullName(deepest.getFullName()), &deepest);
}

// ---- dropping what crosses

TEST(SceneMoveOutDropping, ConnectionsWithTheNodesThatStayAreDropped)
{
    MoveOutGraph graph;
    graph.wire(graph.x, graph.y);
    graph.wire(graph.y, graph.x);
    CallbackLog log;
    EXPECT_TRUE(graph.moveOut(Way::dropping, {&graph.x}));
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("y.out > x.in", "x.out > y.in"));
    EXPECT_THAT(texts(graph.move.removedOuter), IsEmpty());
    EXPECT_THAT(texts(graph.move.made), IsEmpty());
    EXPECT_THAT(log.lines,
                ElementsAre("removeConnection C y.out > x.in", "removeConnection root x.out > y.in"));
    EXPECT_THAT(texts(graph.compound.getNodes()), ElementsAre("y"));
    EXPECT_TRUE(graph.compound.getNodePins().isEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutDropping, SpareListIsNotTouched)
{
    MoveOutGraph graph;
    PinPair const exit = graph.addExit();
    graph.wire(graph.x, graph.y);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    GraphConnection* const marker = graph.wire(graph.a, graph.b);
    graph.move.spare.append(marker);
    graph.moveOut(Way::dropping, {&graph.x});
    EXPECT_THAT(listed(graph.move.spare), ElementsAre(marker));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutDropping, ConnectionOfTwoListedNodesWithDifferentOwnersIsDropped)
{
    MoveOutGraph graph;
    TestNode& nested = graph.addCompound("D", &graph.compound);
    TestNode& z = graph.addFilter("z", &nested);
    graph.addInput(graph.compound);
    graph.wire(z, graph.compound);
    Nodes nodes;
    nodes.append(&z);
    nodes.append(&graph.compound);
    graph.move.run(graph.scene, Way::dropping, &nested, nodes);
    EXPECT_EQ(graph.compound.getNodeOwner(), &graph.root);
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("z.out > C.in"));
    EXPECT_THAT(graph.connections(), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- leading what crosses through new interfaces

TEST(SceneMoveOutCreatingInterfaces, NodeThatFedAnInnerNodeFeedsItThroughAnEntry)
{
    MoveOutGraph graph;
    graph.wire(graph.x, graph.y);
    EXPECT_TRUE(graph.moveOut(Way::creatingInterfaces, {&graph.x}));
    ASSERT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("input interface01"));
    ASSERT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.out"));
    GraphNodeBase* const node = graph.move.newInterfaceNodes[0];
    GraphNodePin* const outer = graph.move.newCompoundPins[0];
    EXPECT_EQ(node->getNodeOwner(), &graph.compound);
    EXPECT_EQ(outer->getDirection(), PIN_INPUT);
    EXPECT_THAT(graph.move.inputInterfaces, UnorderedElementsAre(Pair(&graph.x, node)));
    EXPECT_THAT(graph.move.outputInterfaces, IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("x.out > y.in"));
    EXPECT_THAT(texts(graph.move.removedOuter), IsEmpty());
    EXPECT_THAT(texts(graph.move.inner), ElementsAre("input interface01.out > y.in"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > C.out"));
    EXPECT_EQ(graph.move.made[0]->getTargetPin(), outer);
    EXPECT_EQ(graph.move.inner[0]->getSourcePin(), outer->getChildGraphNodePinPtr());
    EXPECT_THAT(graph.connections(), ElementsAre("input interface01.out > y.in", "x.out > C.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, NodeThatWasFedByAnInnerNodeIsFedThroughAnExit)
{
    MoveOutGraph graph;
    graph.wire(graph.y, graph.x);
    EXPECT_TRUE(graph.moveOut(Way::creatingInterfaces, {&graph.x}));
    ASSERT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("output interface01"));
    GraphNodeBase* const node = graph.move.newInterfaceNodes[0];
    ASSERT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.in"));
    EXPECT_EQ(graph.move.newCompoundPins[0]->getDirection(), PIN_OUTPUT);
    EXPECT_THAT(graph.move.outputInterfaces, UnorderedElementsAre(Pair(&graph.x, node)));
    EXPECT_THAT(graph.move.inputInterfaces, IsEmpty());
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("y.out > x.in"));
    EXPECT_THAT(texts(graph.move.inner), ElementsAre("y.out > output interface01.in"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("C.in > x.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, BoundaryConnectionsOfANodeShareTheInterfaceNodeButNotThePair)
{
    MoveOutGraph graph;
    TestNode& z = graph.addFilter("z", &graph.compound);
    graph.wire(graph.x, graph.y);
    graph.wire(graph.x, z);
    graph.wire(graph.y, graph.x);
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("output interface01", "input interface01"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.in", "C.out", "C.out01"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("C.in > x.in", "x.out > C.out", "x.out > C.out01"));
    EXPECT_THAT(texts(graph.move.inner),
                ElementsAre("y.out > output interface01.in", "input interface01.out > y.in",
                            "input interface01.out01 > z.in"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, EveryMovedNodeHasItsOwnInterfaceNode)
{
    MoveOutGraph graph;
    TestNode& z = graph.addFilter("z", &graph.compound);
    graph.wire(graph.x, z);
    graph.wire(graph.y, z);
    graph.moveOut(Way::creatingInterfaces, {&graph.x, &graph.y});
    ASSERT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("input interface01", "input interface02"));
    EXPECT_THAT(graph.move.inputInterfaces,
                UnorderedElementsAre(Pair(&graph.x, graph.move.newInterfaceNodes[0]),
                                     Pair(&graph.y, graph.move.newInterfaceNodes[1])));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, RecordedInterfaceNodeIsUsedAgain)
{
    MoveOutGraph graph;
    PinPair const entry = graph.addEntry();
    PinPair const exit = graph.addExit();
    graph.wire(graph.x, graph.y);
    graph.wire(graph.y, graph.x);
    graph.move.inputInterfaces[&graph.x] = entry.node;
    graph.move.outputInterfaces[&graph.x] = exit.node;
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), IsEmpty());
    EXPECT_THAT(texts(entry.node->getNodePins()), ElementsAre("I.input", "I.out"));
    EXPECT_THAT(texts(exit.node->getNodePins()), ElementsAre("O.output", "O.in"));
    EXPECT_THAT(graph.move.inputInterfaces, UnorderedElementsAre(Pair(&graph.x, entry.node)));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, FreshPairStandsInTheWayOfItsOwnFirstName)
{
    MoveOutGraph graph;
    MoveOutGraph::out(graph.x)->setName("input");
    graph.wire(graph.x.getPinByName("input"), MoveOutGraph::in(graph.y));
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("C.input01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, RefusedConnectionIsANullEntry)
{
    for (bool const innerRefused : {false, true})
    {
        SCOPED_TRACE(innerRefused);
        MoveOutGraph graph;
        graph.wire(graph.x, graph.y);
        (innerRefused ? MoveOutGraph::in(graph.y) : MoveOutGraph::out(graph.x))->setMaxNumConnections(0);
        EXPECT_TRUE(graph.moveOut(Way::creatingInterfaces, {&graph.x}));
        EXPECT_THAT(texts(graph.move.made), ElementsAre(innerRefused ? "x.out > C.out" : "-"));
        EXPECT_THAT(texts(graph.move.inner),
                    ElementsAre(innerRefused ? "-" : "input interface01.out > y.in"));
        EXPECT_EQ(graph.scene.getNumberOfConnections(), 1u);
        EXPECT_EQ(graph.move.newCompoundPins.size(), 1u);
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

TEST(SceneMoveOutCreatingInterfaces, DirectAndOuterConnectionsAreListedInTheOrderOfTheOldOnes)
{
    MoveOutGraph graph;
    PinPair const exit = graph.addExit();
    graph.wire(exit.outer, MoveOutGraph::in(graph.b));
    graph.wire(graph.x, graph.y);
    graph.wire(MoveOutGraph::out(graph.x), exit.inner);
    graph.wire(graph.x, graph.y);
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(texts(graph.move.removed), ElementsAre("x.out > y.in", "x.out > O.output", "x.out > y.in"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("x.out > C.out", "x.out > b.in", "x.out > C.out01"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, CallbacksFireInTheOrderOfTheSteps)
{
    MoveOutGraph graph;
    graph.wire(graph.x, graph.y);
    CallbackLog log;
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root x.out > y.in", "addNode root input interface01",
                                       "addNodePin C Untitled", "addNodePin root Untitled",
                                       "addConnection C input interface01.out > y.in",
                                       "addConnection root x.out > C.out"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, ConnectionOfTwoListedNodesWithDifferentOwnersIsKept)
{
    MoveOutGraph graph;
    TestNode& nested = graph.addCompound("D", &graph.compound);
    TestNode& z = graph.addFilter("z", &nested);
    graph.addInput(graph.compound);
    GraphConnection* const connection = graph.wire(z, graph.compound);
    Nodes nodes;
    nodes.append(&z);
    nodes.append(&graph.compound);
    graph.move.run(graph.scene, Way::creatingInterfaces, &nested, nodes);
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ElementsAre(connection));
    EXPECT_THAT(texts(graph.move.removed), IsEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, ListsAreAppendedTo)
{
    MoveOutGraph graph;
    GraphConnection* const old = graph.wire(graph.a, graph.b);
    graph.wire(graph.x, graph.y);
    graph.move.made.append(old);
    graph.move.inner.append(old);
    graph.move.newInterfaceNodes.append(&graph.root);
    graph.move.newCompoundPins.append(MoveOutGraph::in(graph.a));
    graph.move.inputInterfaces[&graph.a] = &graph.root;
    graph.moveOut(Way::creatingInterfaces, {&graph.x});
    EXPECT_THAT(texts(graph.move.made), ElementsAre("a.out > b.in", "x.out > C.out"));
    EXPECT_THAT(texts(graph.move.inner), ElementsAre("a.out > b.in", "input interface01.out > y.in"));
    EXPECT_THAT(texts(graph.move.newInterfaceNodes), ElementsAre("root", "input interface01"));
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("a.in", "C.out"));
    EXPECT_EQ(graph.move.inputInterfaces.size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneMoveOutCreatingInterfaces, FromACompoundWithoutOwnerTheRootGetsThePair)
{
    MoveOutGraph graph;
    TestNode& lonely = graph.addNode("lonely");
    GraphNodePin pin(&lonely, 1, PIN_OUTPUT);
    lonely.addNodePin(&pin);
    graph.wire(&pin, MoveOutGraph::in(graph.b));
    Nodes nodes;
    nodes.append(&lonely);
    graph.move.run(graph.scene, Way::creatingInterfaces, &graph.root, nodes);
    EXPECT_EQ(lonely.getNodeOwner(), nullptr);
    EXPECT_THAT(texts(graph.move.newCompoundPins), ElementsAre("root.Untitled"));
    EXPECT_THAT(texts(graph.move.made), ElementsAre("lonely.Untitled > root.Untitled"));
    EXPECT_STREQ(graph.move.newInterfaceNodes[0]->getFullName().c_str(), "root.input interface01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
    graph.scene.removeAllConnections();
    lonely.removeNodePin(&pin);
}

} // namespace kestrel::graph::test
