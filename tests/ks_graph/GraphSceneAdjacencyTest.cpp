#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

class OpenScene : public GraphScene
{
public:
    using GraphScene::addConnectionToAdjacencyMaps;
    using GraphScene::getNumberOfConnectionsInAdjacencyMap;
    using GraphScene::isConnectionInAdjacencyMap;
    using GraphScene::nodeHasConnectionsInAdjacencyMap;
    using GraphScene::nodeHasConnectionsInAdjacencyMapAsSource;
    using GraphScene::nodeHasConnectionsInAdjacencyMapAsTarget;
    using GraphScene::removeConnectionFromAdjacencyMaps;
};

class SceneAdjacency : public ::testing::Test
{
protected:
    SceneAdjacency()
        : a(graph.addFilter("a")),
          b(graph.addFilter("b")),
          c(graph.addFilter("c")),
          aToB(a.getNodePins()[1], b.getNodePins()[0]),
          bToA(b.getNodePins()[1], a.getNodePins()[0]),
          aToA(a.getNodePins()[1], a.getNodePins()[0]),
          implicitAToB(a.getNodePins()[1], b.getNodePins()[0])
    {
        implicitAToB.setImplicit(true);
        scene.setIsDirty(false);
    }

    void add(GraphConnection const& connection, int times = 1)
    {
        for (int i = 0; i < times; ++i) scene.addConnectionToAdjacencyMaps(&connection);
    }

    void remove(GraphConnection const& connection, int times = 1)
    {
        for (int i = 0; i < times; ++i) scene.removeConnectionFromAdjacencyMaps(&connection);
    }

    int all(GraphNodeBase const& from, GraphNodeBase const& to) const
    {
        return scene.getNumberOfConnectionsInAdjacencyMap(&from, &to, false, true);
    }

    int explicitOnes(GraphNodeBase const& from, GraphNodeBase const& to) const
    {
        return scene.getNumberOfConnectionsInAdjacencyMap(&from, &to, false, false);
    }

    TestGraph<OpenScene> graph;
    OpenScene& scene = graph.scene;
    TestNode& a;
    TestNode& b;
    TestNode& c;
    GraphConnection aToB;
    GraphConnection bToA;
    GraphConnection aToA;
    GraphConnection implicitAToB;
};

// --- counting

TEST_F(SceneAdjacency, StartsWithoutAnyCount)
{
    EXPECT_EQ(0, all(a, b));
    EXPECT_EQ(0, explicitOnes(a, b));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, true, true));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&a, true, true, false));
}

TEST_F(SceneAdjacency, CountsByDirection)
{
    add(aToB, 2);
    EXPECT_EQ(2, all(a, b));
    EXPECT_EQ(2, explicitOnes(a, b));
    EXPECT_EQ(0, all(b, a));
    EXPECT_EQ(0, all(a, a));
    EXPECT_EQ(0, all(a, c));
}

TEST_F(SceneAdjacency, CountsImplicitConnectionsAmongAllOnly)
{
    add(implicitAToB, 3);
    EXPECT_EQ(3, all(a, b));
    EXPECT_EQ(0, explicitOnes(a, b));
    add(aToB);
    EXPECT_EQ(4, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
    remove(implicitAToB);
    EXPECT_EQ(3, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
    remove(aToB);
    EXPECT_EQ(2, all(a, b));
    EXPECT_EQ(0, explicitOnes(a, b));
}

TEST_F(SceneAdjacency, SecondTargetOfOneSourceHasACountOfItsOwn)
{
    GraphConnection const aToC(a.getNodePins()[1], c.getNodePins()[0]);
    add(aToB);
    add(aToC, 2);
    EXPECT_EQ(1, all(a, b));
    EXPECT_EQ(2, all(a, c));
    remove(aToC);
    EXPECT_EQ(1, all(a, b));
    EXPECT_EQ(1, all(a, c));
}

TEST_F(SceneAdjacency, RemovalOfOneThatWasNeverAddedLeavesMinusOne)
{
    remove(aToB);
    EXPECT_EQ(-1, all(a, b));
    EXPECT_EQ(-1, explicitOnes(a, b));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, true, false));
    add(aToB);
    EXPECT_EQ(0, all(a, b));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    add(aToB);
    EXPECT_EQ(1, all(a, b));
    EXPECT_TRUE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
}

TEST_F(SceneAdjacency, RemovalOfAnImplicitOneThatWasNeverAddedLeavesTheExplicitCountAlone)
{
    remove(implicitAToB);
    EXPECT_EQ(-1, all(a, b));
    EXPECT_EQ(0, explicitOnes(a, b));
}

TEST_F(SceneAdjacency, RemovalBesideACountedTargetLeavesMinusOneToo)
{
    GraphConnection const aToC(a.getNodePins()[1], c.getNodePins()[0]);
    add(aToB);
    remove(aToC);
    EXPECT_EQ(-1, all(a, c));
    EXPECT_EQ(1, all(a, b));
}

TEST_F(SceneAdjacency, CountGoesByTheFlagThatTheConnectionHasAtTheMoment)
{
    add(aToB);
    aToB.setImplicit(true);
    remove(aToB);
    EXPECT_EQ(0, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
}

TEST_F(SceneAdjacency, CountingLeavesTheDirtyFlagAlone)
{
    add(aToB);
    remove(aToB);
    EXPECT_FALSE(scene.getIsDirty());
}

TEST_F(SceneAdjacency, NullAndConnectionsWithoutNodesAreNotCounted)
{
    GraphNodePin stray(nullptr, 1u, PIN_INPUT | PIN_OUTPUT);
    GraphConnection const noPins;
    GraphConnection const noSource(nullptr, b.getNodePins()[0]);
    GraphConnection const noTarget(a.getNodePins()[1], nullptr);
    GraphConnection const strayTarget(a.getNodePins()[1], &stray);
    GraphConnection const straySource(&stray, b.getNodePins()[0]);
    for (GraphConnection const* connection : {static_cast<GraphConnection const*>(nullptr), &noPins,
                                              &noSource, &noTarget, &strayTarget, &straySource})
    {
        scene.addConnectionToAdjacencyMaps(connection);
        scene.removeConnectionFromAdjacencyMaps(connection);
        scene.addConnectionToAdjacencyMaps(connection);
    }
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&a, true, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&b, true, true, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

/// A node whose id is the host's affair.
class NodeOfAnotherId : public TestNode
{
public:
    using TestNode::TestNode;
    unsigned int const& getId() const override { return otherId; }

    unsigned int otherId = 900;
};

TEST_F(SceneAdjacency, NodesAreToldApartByTheIdThatTheySay)
{
    NodeOfAnotherId host;
    GraphNodePin out(&host, 1u, PIN_OUTPUT);
    GraphConnection const connection(&out, b.getNodePins()[0]);
    add(connection);
    GraphNodeBase const sameId(900);
    EXPECT_EQ(1, all(sameId, b));
    EXPECT_EQ(1, all(host, b));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&host, true, false));
    GraphNodeBase const twinOfB(b.getId());
    EXPECT_TRUE(scene.isConnectionInAdjacencyMap(&sameId, &twinOfB, true, false));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&twinOfB, true, false));
}

// --- asking

TEST_F(SceneAdjacency, ConnectionIsLookedUpInTheChosenMapAndDirection)
{
    add(aToB);
    add(implicitAToB);
    remove(aToB); // one implicit connection from a to b is left
    struct Row
    {
        GraphNodeBase const* from;
        GraphNodeBase const* to;
        bool includeImplicit;
        bool eitherDirection;
        bool found;
    };
    Row const rows[] = {
        {&a, &b, true, false, true},  {&a, &b, true, true, true},    {&a, &b, false, false, false},
        {&a, &b, false, true, false}, {&b, &a, true, false, false},  {&b, &a, true, true, true},
        {&b, &a, false, true, false}, {&b, &a, false, false, false}, {&a, &c, true, true, false},
        {&c, &a, true, true, false},  {&a, &a, true, true, false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.found, scene.isConnectionInAdjacencyMap(row.from, row.to, row.includeImplicit,
                                                              row.eitherDirection));
    }
}

TEST_F(SceneAdjacency, ReverseDirectionIsLookedUpInTheSameMap)
{
    add(implicitAToB);
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&b, &a, false, true));
    add(aToB);
    EXPECT_TRUE(scene.isConnectionInAdjacencyMap(&b, &a, false, true));
}

TEST_F(SceneAdjacency, CountOfZeroIsNoConnection)
{
    add(aToB, 2);
    remove(aToB);
    EXPECT_EQ(1, all(a, b));
    EXPECT_TRUE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    remove(aToB);
    EXPECT_EQ(0, all(a, b));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, true, false));
}

TEST_F(SceneAdjacency, NodeIsASourceThroughAnyOfItsTargets)
{
    GraphConnection const aToC(a.getNodePins()[1], c.getNodePins()[0]);
    add(aToB);
    add(aToC);
    remove(aToB);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, false, true));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&b, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&c, true, false));
}

TEST_F(SceneAdjacency, NodeIsATargetThroughAnyOfItsSources)
{
    GraphConnection const cToB(c.getNodePins()[1], b.getNodePins()[0]);
    add(aToB);
    add(cToB);
    remove(aToB);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, true, false));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, false, true));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&c, true, false));
}

// How many nodes a node is connected with is counted from the first question on.
TEST_F(SceneAdjacency, NodeThatWasAskedBeforeIsASourceUntilItsLastConnectionGoes)
{
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    add(aToB, 2);
    for (bool const includeImplicit : {false, true})
        EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, includeImplicit, false));
    remove(aToB, 2);
    for (bool const includeImplicit : {false, true})
    {
        EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, includeImplicit, false));
        EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, includeImplicit, false));
    }
}

TEST_F(SceneAdjacency, NodesThatWereAskedBeforeAreSourcesWhicheverOfThemStopToBe)
{
    std::vector<GraphConnection> connections;
    for (int i = 0; i < 20; ++i)
        connections.emplace_back(graph.addFilter("source").getNodePins()[1], b.getNodePins()[0]);
    auto const isSource = [&](GraphConnection const& connection)
    { return scene.nodeHasConnectionsInAdjacencyMapAsSource(connection.getSourceNode(), true, false); };
    EXPECT_FALSE(isSource(connections[0]));
    for (GraphConnection const& connection : connections) add(connection);
    for (std::size_t gone = 0; gone < connections.size(); ++gone)
    {
        remove(connections[gone]);
        for (std::size_t i = 0; i < connections.size(); ++i)
            EXPECT_EQ(isSource(connections[i]), i > gone) << i << " without " << gone;
    }
}

TEST_F(SceneAdjacency, ImplicitConnectionsMakeASourceOrTargetOnlyWhenTheyAreIncluded)
{
    add(implicitAToB);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, false, false));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&b, false, false));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMap(&b, true, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&b, false, true, false));
}

TEST_F(SceneAdjacency, ConnectionToItselfCountsUnlessItIsIgnored)
{
    add(aToA);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, true));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&a, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&a, true, true));
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMap(&a, true, true, false));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&a, true, true, true));
    add(aToB);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&a, true, true));
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&a, true, true));
    add(bToA);
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&a, true, true));
}

TEST_F(SceneAdjacency, NodeIsAskedAsTargetOnlyWhenThatIsWanted)
{
    add(aToB);
    for (bool const alsoAsTarget : {false, true})
    {
        EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMap(&a, true, alsoAsTarget, false));
        EXPECT_EQ(alsoAsTarget, scene.nodeHasConnectionsInAdjacencyMap(&b, true, alsoAsTarget, false));
        EXPECT_EQ(alsoAsTarget, scene.nodeHasConnectionsInAdjacencyMap(&b, false, alsoAsTarget, true));
        EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(&c, true, alsoAsTarget, false));
    }
}

TEST_F(SceneAdjacency, ReverseDirectionAddsAtMostOneToTheNumber)
{
    add(aToB, 2);
    add(bToA, 3);
    EXPECT_EQ(3, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, true, true));
    EXPECT_EQ(4, scene.getNumberOfConnectionsInAdjacencyMap(&b, &a, true, true));
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, true));
    EXPECT_EQ(3, scene.getNumberOfConnectionsInAdjacencyMap(&b, &a, false, true));
    remove(bToA, 3);
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, true, true));
    remove(bToA);
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, true, true));
    EXPECT_EQ(0, scene.getNumberOfConnectionsInAdjacencyMap(&b, &a, true, true));
}

TEST_F(SceneAdjacency, NumberTakesItsFlagsInTheOtherOrderThanTheLookUp)
{
    add(implicitAToB, 2);
    add(bToA);
    EXPECT_EQ(3, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, true, true));
    EXPECT_EQ(1, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, true, false));
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, true));
    EXPECT_EQ(0, scene.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, false));
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&b, &a, true, true));
    EXPECT_EQ(1, scene.getNumberOfConnectionsInAdjacencyMap(&b, &a, true, false));
    EXPECT_TRUE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, false, false));
}

TEST_F(SceneAdjacency, NumberOfANodeWithItselfCountsTheReverseTooWhenAsked)
{
    add(aToA, 2);
    EXPECT_EQ(2, scene.getNumberOfConnectionsInAdjacencyMap(&a, &a, false, true));
    EXPECT_EQ(3, scene.getNumberOfConnectionsInAdjacencyMap(&a, &a, true, true));
}

TEST_F(SceneAdjacency, NullNodesHaveNoConnections)
{
    add(aToB);
    for (bool const first : {false, true})
    {
        for (bool const second : {false, true})
        {
            EXPECT_FALSE(scene.isConnectionInAdjacencyMap(nullptr, &b, first, second));
            EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, nullptr, first, second));
            EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(nullptr, first, second));
            EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(nullptr, first, second));
            EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMap(nullptr, first, true, second));
            EXPECT_EQ(0, scene.getNumberOfConnectionsInAdjacencyMap(nullptr, &b, first, second));
            EXPECT_EQ(0, scene.getNumberOfConnectionsInAdjacencyMap(&a, nullptr, first, second));
        }
    }
}

// --- connecting and removing

TEST_F(SceneAdjacency, FollowsTheScenesConnections)
{
    GraphConnection* const first = scene.connect(&a, &b, false);
    GraphConnection* const second = scene.connect(&a, &b, false);
    GraphConnection* const third = scene.connect(&a, &b, true);
    EXPECT_EQ(3, all(a, b));
    EXPECT_EQ(2, explicitOnes(a, b));
    EXPECT_SCENE_INVARIANTS(scene);
    scene.removeConnection(first);
    EXPECT_EQ(2, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
    scene.removeConnection(third);
    EXPECT_EQ(1, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
    scene.removeConnection(second);
    EXPECT_EQ(0, all(a, b));
    EXPECT_FALSE(scene.isConnectionInAdjacencyMap(&a, &b, true, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneAdjacency, IsNotBuiltWhenItIsTurnedOnLater)
{
    scene.setUseAdjacencyMap(false);
    GraphConnection* const uncounted = scene.connect(&a, &b, false);
    scene.setUseAdjacencyMap(true);
    EXPECT_EQ(0, all(a, b));
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, false, true));
    GraphConnection* const counted = scene.connect(&a, &b, false);
    EXPECT_EQ(1, all(a, b));
    scene.removeConnection(uncounted);
    EXPECT_EQ(0, all(a, b));
    scene.removeConnection(counted);
    EXPECT_EQ(-1, all(a, b));
}

TEST_F(SceneAdjacency, KeepsItsCountsWhenItIsTurnedOff)
{
    GraphConnection* const counted = scene.connect(&a, &b, false);
    scene.setUseAdjacencyMap(false);
    EXPECT_EQ(1, all(a, b));
    scene.connect(&a, &b, false);
    EXPECT_EQ(1, all(a, b));
    scene.removeConnection(counted);
    EXPECT_EQ(1, all(a, b));
    scene.removeAllConnections();
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, false, true));
    scene.setUseAdjacencyMap(true);
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, true));
}

TEST_F(SceneAdjacency, KeepsTheOldIdOfANodeWhoseIdChanges)
{
    GraphConnection* const made = scene.connect(&a, &b, false);
    GraphNodeBase const oldSelf(a.getId());
    a.setId(500);
    EXPECT_EQ(0, all(a, b));
    EXPECT_EQ(1, all(oldSelf, b));
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, false, true));
    scene.removeConnection(made);
    EXPECT_EQ(-1, all(a, b));
    EXPECT_EQ(1, all(oldSelf, b));
    scene.setUseAdjacencyMap(false);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneAdjacency, RemovalAfterTheImplicitFlagChangedLeavesTheCountsApart)
{
    GraphConnection* const made = scene.connect(&a, &b, false);
    made->setImplicit(true);
    scene.removeConnection(made);
    EXPECT_EQ(0, all(a, b));
    EXPECT_EQ(1, explicitOnes(a, b));
}

TEST_F(SceneAdjacency, RemovalOfAForeignConnectionLeavesMinusOne)
{
    GraphConnection* const foreign = new GraphConnection(a.getNodePins()[1], b.getNodePins()[0]);
    foreign->addToConnectedPins();
    EXPECT_TRUE(scene.removeConnection(foreign));
    EXPECT_EQ(-1, all(a, b));
    EXPECT_EQ(-1, explicitOnes(a, b));
}

TEST_F(SceneAdjacency, IsEmptyAfterClear)
{
    remove(aToB);
    add(bToA, 2);
    GraphNodeBase const idOfA(a.getId());
    GraphNodeBase const idOfB(b.getId());
    EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&idOfB, true, false));
    scene.clear();
    EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&idOfB, true, false));
    EXPECT_EQ(0, all(idOfA, idOfB));
    EXPECT_EQ(0, all(idOfB, idOfA));
    EXPECT_EQ(0, explicitOnes(idOfA, idOfB));
    EXPECT_EQ(0, explicitOnes(idOfB, idOfA));
}

TEST_F(SceneAdjacency, CopyOfTheSceneCountsOnItsOwn)
{
    add(aToB);
    OpenScene copy(scene);
    copy.addConnectionToAdjacencyMaps(&aToB);
    EXPECT_EQ(1, all(a, b));
    EXPECT_EQ(2, copy.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, true));
    copy = scene;
    EXPECT_EQ(1, copy.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, true));
    EXPECT_EQ(1, copy.getNumberOfConnectionsInAdjacencyMap(&a, &b, false, false));
}

} // namespace
} // namespace kestrel::graph::test
