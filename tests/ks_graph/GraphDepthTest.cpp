/// @file
/// Nodes 2,000 levels deep, on a stack of 1 MiB.
#include "support/GraphTexts.h"
#include "support/MoveRecords.h"
#include "support/SceneInvariants.h"
#include "support/SmallStack.h"
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

constexpr std::size_t depth = 2000;

/// Nodes "0" below the root, "1" in it and so on, 2,000 deep. The first, the last and some between have pins.
struct DeepGraph
{
    DeepGraph()
    {
        GraphNodeBase* owner = &graph.root;
        for (std::size_t level = 0; level < depth; ++level)
        {
            KS_String const name(std::to_string(level).c_str());
            bool const hasPins = level % 250 == 0 || level + 1 == depth;
            TestNode& node = hasPins ? graph.addFilter(name, owner) : graph.addNode(name, owner);
            nodes.push_back(&node);
            owner = &node;
        }
        outside = &graph.addFilter("outside");
    }

    TestNode& top() { return *nodes.front(); }
    TestNode& bottom() { return *nodes.back(); }
    GraphNodePin* bottomIn() { return bottom().getNodePins()[0]; }
    GraphNodePin* bottomOut() { return bottom().getNodePins()[1]; }

    /// The full name of the last node with the first ones replaced by `start`.
    static std::string fullName(std::string name, std::size_t from)
    {
        for (std::size_t level = from; level < depth; ++level) name += "." + std::to_string(level);
        return name;
    }

    /// A removed or deleted node takes no pin out of the maps, and the pins of a compound that are not paired
    /// cannot be removed with their node's.
    void unregisterPins()
    {
        for (TestNode* node : nodes)
            for (GraphNodePin* pin : node->getNodePins()) scene.removeNodePin(pin);
    }

    GraphNodePin* pinNamed(std::string const& name) { return graph.scene.getPinPtrByFullName(name.c_str()); }

    TestGraph<> graph;
    GraphScene& scene = graph.scene;
    std::vector<TestNode*> nodes;
    TestNode* outside = nullptr;
};

void onDeepGraph(std::function<void(DeepGraph&)> const& check)
{
    onSmallStack(
        [&]
        {
            DeepGraph deep;
            check(deep);
        });
}

/// The same for a change, after which everything has to agree.
void onChangingDeepGraph(std::function<void(DeepGraph&)> const& change)
{
    onDeepGraph(
        [&](DeepGraph& deep)
        {
            change(deep);
            EXPECT_SCENE_INVARIANTS(deep.scene);
        });
}

TEST(GraphDepth, NodesAreBuiltAndFound)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            std::string const name = DeepGraph::fullName("root", 0);
            EXPECT_EQ(name, std::string(deep.bottom().getFullName()));
            EXPECT_EQ(name + ".in", std::string(deep.bottomIn()->getFullName()));
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(name + ".in"));
            EXPECT_EQ(&deep.bottom(), deep.scene.getNodePtrByFullName(name.c_str()));
            EXPECT_TRUE(deep.bottom().isOwnedByNode(&deep.graph.root, true));
            EXPECT_FALSE(deep.bottom().isOwnedByNode(deep.outside, true));
            EXPECT_EQ(depth + 2, deep.scene.getNumberOfNodes());
        });
}

TEST(GraphDepth, NodesAreGathered)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            Nodes nodes;
            deep.graph.root.getNodesRecursively(nodes);
            EXPECT_EQ(depth + 1, nodes.size());
            deep.scene.getGraphNodesAtLevel(&deep.top(), true, nodes);
            EXPECT_EQ(2 * depth, nodes.size());
            nodes.clear();
            deep.scene.getAllGraphCompounds(nodes);
            EXPECT_EQ(depth, nodes.size()); // the root, and all but the last
            Pins pins;
            deep.graph.root.getAllChildNodePins(pins, true);
            EXPECT_EQ(20u, pins.size());
            deep.scene.clearMessages();
        });
}

TEST(GraphDepth, NodesAreWiredAndUnwired)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            GraphConnection* const made =
                deep.scene.connect(deep.outside, static_cast<GraphNodeBase*>(&deep.bottom()), false);
            ASSERT_NE(nullptr, made);
            EXPECT_EQ("root.outside.out > " + DeepGraph::fullName("root", 0) + ".in",
                      std::string(made->getFullName()));
            EXPECT_TRUE(deep.scene.areNodesConnected(deep.outside, &deep.bottom(), false, false));
            EXPECT_TRUE(made->areNodesConnected(*deep.outside, deep.bottom(), true, true));
            // At every level the search asks for the other direction, and there are 1,999 of them.
            EXPECT_TRUE(made->areNodesConnected(deep.top(), *deep.outside, true, true));
            EXPECT_FALSE(made->areNodesConnected(*deep.nodes[1], deep.graph.addNode("other"), true, true));
            EXPECT_TRUE(deep.scene.removeConnectionsWithNode(deep.bottom().getId()));
            EXPECT_EQ(0u, deep.scene.getNumberOfConnections());
        });
}

TEST(GraphDepth, NodesAreRenamed)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            deep.top().setName("renamed");
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root.renamed", 1) + ".in"));
            deep.graph.root.setName("r");
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("r.renamed", 1) + ".in"));
            deep.bottomIn()->setName("pin");
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("r.renamed", 1) + ".pin"));
            deep.bottom().setId(1000000);
            EXPECT_EQ(&deep.bottom(), deep.scene.getNodePtrById(1000000));
        });
}

TEST(GraphDepth, NodesAreGivenAnotherOwner)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            deep.top().setNodeOwner(deep.outside);
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root.outside", 0) + ".in"));
            deep.graph.root.addNode(&deep.top());
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root", 0) + ".in"));
            deep.top().setNodeOwner(&deep.bottom());
            EXPECT_EQ(&deep.graph.root, deep.top().getNodeOwner());
            deep.nodes[1000]->setNodeOwner(&deep.graph.root);
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root", 1000) + ".in"));
        });
}

TEST(GraphDepth, NodesAreBuiltFromTheBottomUpwards)
{
    onSmallStack(
        []
        {
            TestGraph<> graph;
            TestNode& bottom = graph.addNode("0");
            TestNode* inner = &bottom;
            std::string name = "0";
            for (std::size_t level = 1; level < depth; ++level)
            {
                // Only now: every step from here on re-keys the pins.
                if (level + 10 == depth) graph.addInput(bottom);
                std::string const next = std::to_string(level);
                TestNode& outer = graph.addNode(next.c_str());
                inner->setNodeOwner(&outer);
                name = next + "." + name;
                inner = &outer;
            }
            EXPECT_EQ("root." + name, std::string(bottom.getFullName()));
            EXPECT_EQ(bottom.getNodePins()[0],
                      graph.scene.getPinPtrByFullName(("root." + name + ".in").c_str()));
        });
}

TEST(GraphDepth, NodesAreMovedIntoACompoundAndOut)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            TestNode& compound = deep.graph.addNode("compound");
            compound.setCompound(true);
            deep.scene.connect(deep.outside->getNodePins()[1], deep.top().getNodePins()[0], false);
            Nodes moved;
            moved.append(&deep.top());
            MoveRecords in;
            EXPECT_TRUE(deep.scene.moveNodesToCompound(moved, &compound, in.pinRenames, in.inputInterfaces,
                                                       in.outputInterfaces, in.newInterfaceNodes,
                                                       in.newCompoundPins, in.removed, in.outer, in.inner));
            EXPECT_EQ(1u, in.outer.size());
            EXPECT_EQ(1u, in.inner.size());
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root.compound", 0) + ".in"));
            MoveRecords out;
            EXPECT_TRUE(deep.scene.removeNodesFromCompound(&compound, moved, out.pinRenames, out.removedOuter,
                                                           out.removed, out.outer, out.inner));
            EXPECT_EQ(1u, out.outer.size());
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root", 0) + ".in"));
        });
}

TEST(GraphDepth, NodesAreMovedIntoADeepCompoundAndOut)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            TestNode& compound = deep.bottom();
            TestNode& moving = deep.graph.addFilter("moving");
            deep.scene.connect(deep.outside->getNodePins()[1], moving.getNodePins()[0], false);
            deep.scene.connect(moving.getNodePins()[1], deep.outside->getNodePins()[0], false);
            Nodes moved;
            moved.append(&moving);
            MoveRecords in;
            deep.scene.moveNodesToCompound(moved, &compound, in.pinRenames, in.inputInterfaces,
                                           in.outputInterfaces, in.newInterfaceNodes, in.newCompoundPins,
                                           in.removed, in.outer, in.inner);
            EXPECT_EQ(2u, in.newInterfaceNodes.size());
            EXPECT_EQ(moving.getNodePins()[0], deep.pinNamed(DeepGraph::fullName("root", 0) + ".moving.in"));
            MoveRecords out;
            deep.scene.removeNodesFromCompoundCreatingInterfaces(
                &compound, moved, out.pinRenames, out.removedOuter, out.removed, out.outer, out.inner,
                out.inputInterfaces, out.outputInterfaces, out.newInterfaceNodes, out.newCompoundPins);
            EXPECT_EQ(deep.nodes[depth - 2], moving.getNodeOwner());
            EXPECT_EQ(2u, out.outer.size());
        });
}

TEST(GraphDepth, NodesGetFreeNamesAndIds)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            KS_String const name = deep.bottom().getFullName();
            EXPECT_STREQ("in01", deep.scene.getFreePinName(name, "in").c_str());
            EXPECT_STREQ("compound01", deep.scene.getFreeNodeCompoundName(name).c_str());
            EXPECT_EQ(depth + 3, deep.scene.getFreeNodeId());
        });
}

TEST(GraphDepth, NodesAreExportedAndDescribed)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            std::string const xml(deep.scene.toXml());
            std::size_t count = 0;
            for (std::size_t at = xml.find("<node id="); at != std::string::npos;
                 at = xml.find("<node id=", at + 1))
                ++count;
            EXPECT_EQ(depth + 2, count);
            EXPECT_FALSE(deep.bottom().asHTML().isEmpty());
            GraphScene const copy(deep.scene);
            EXPECT_EQ(depth + 2, copy.getNumberOfNodes());
        });
}

TEST(GraphDepth, NodesAreRemovedFromTheGraph)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            GraphNodePin* const out = deep.outside->getNodePins()[1];
            deep.scene.connect(out, deep.bottomIn(), false);
            deep.unregisterPins();
            EXPECT_TRUE(deep.scene.removeNodeFromGraph(&deep.top()));
            EXPECT_EQ(2u, deep.scene.getNumberOfNodes());
            EXPECT_EQ(0u, deep.scene.getNumberOfConnections());
            EXPECT_EQ(nullptr, deep.bottom().getNodeOwner());
            EXPECT_TRUE(deep.top().getNodes().isEmpty());
        });
}

TEST(GraphDepth, NodesAreRemovedFromTheirCompound)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            deep.unregisterPins();
            deep.scene.removeNodesInCompoundFromGraph(&deep.graph.root);
            EXPECT_EQ(1u, deep.scene.getNumberOfNodes());
            deep.scene.addNodeToGraph(deep.outside); // its pins are still registered under its full name
        });
}

TEST(GraphDepth, NodesAreDeletedWithAllOthers)
{
    for (bool const clears : {false, true})
    {
        onChangingDeepGraph(
            [clears](DeepGraph& deep)
            {
                deep.unregisterPins();
                deep.scene.removeNodePins(deep.outside);
                if (clears)
                    deep.scene.clear();
                else
                    deep.scene.removeAllNodes();
                EXPECT_EQ(0u, deep.scene.getNumberOfNodes());
                EXPECT_TRUE(deep.graph.root.getNodes().isEmpty());
            });
    }
}

/// Of a deep graph with a connection from the outside to the bottom, with and without the adjacency counts.
void onWiredDeepGraph(std::function<void(DeepGraph&, GraphConnection&)> const& check)
{
    for (bool const usesAdjacencyMap : {true, false})
    {
        onChangingDeepGraph(
            [&](DeepGraph& deep)
            {
                deep.scene.setUseAdjacencyMap(usesAdjacencyMap);
                GraphConnection* const made =
                    deep.scene.connect(deep.outside->getNodePins()[1], deep.bottomIn(), false);
                ASSERT_NE(nullptr, made);
                check(deep, *made);
            });
    }
}

TEST(GraphDepth, NodesAreAskedForTheirConnections)
{
    onWiredDeepGraph(
        [](DeepGraph& deep, GraphConnection& made)
        {
            GraphScene& scene = deep.scene;
            Nodes both;
            both.append(&deep.bottom());
            both.append(deep.outside);
            EXPECT_TRUE(scene.areNodesConnected(&deep.bottom(), deep.outside, true, true));
            EXPECT_FALSE(scene.areNodesConnected(&deep.top(), deep.outside, true, true));
            EXPECT_TRUE(scene.hasNodeAnyConnection(deep.outside, PIN_OUTPUT, true));
            EXPECT_TRUE(deep.outside->hasConnectionsWithNode(&deep.bottom(), true, true));
            Connections found;
            EXPECT_TRUE(scene.getConnectionsWithNode(&deep.bottom(), found, true, true, true, true));
            EXPECT_TRUE(
                scene.getConnectionsBetweenNodes(deep.outside, &deep.bottom(), true, true, true, found));
            EXPECT_TRUE(scene.getConnectionsInvolvingNodes(both, true, true, true, found));
            EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(both, true, true, found));
            EXPECT_EQ(texts(found), texts(scene.getGraphConnections()));
            Nodes nodes;
            EXPECT_TRUE(
                scene.getNodesConnectedWithNode(&deep.bottom(), nodes, true, true, false, true, true));
            EXPECT_EQ(2u, nodes.size());
            std::map<GraphNodePin*, Pins> partners;
            scene.getNodeConnectionsByPin(&deep.bottom(), partners);
            EXPECT_EQ(1u, partners[deep.bottomIn()].size());
            EXPECT_TRUE(made.isConnectedNode(&deep.bottom()));
            EXPECT_FALSE(made.isNodeLoop());
            EXPECT_FALSE(made.toXml().isEmpty());
        });
}

TEST(GraphDepth, NodesAreAskedForTheirPins)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            GraphScene& scene = deep.scene;
            std::string const name = DeepGraph::fullName("root", 0);
            EXPECT_EQ(deep.bottomIn(), scene.getPinPtrById(deep.bottomIn()->getId()));
            EXPECT_EQ(deep.bottomIn(), scene.getPinPtrByFullNameCaseInsensitive(KS_String(name + ".IN")));
            EXPECT_TRUE(deep.bottom().hasPinWithName("in", true));
            Pins pins;
            EXPECT_TRUE(scene.getConnectablePins(deep.outside, deep.bottomIn(), pins, true));
            EXPECT_TRUE(scene.getConnectablePins(deep.bottomOut(), deep.outside, pins, true));
            EXPECT_TRUE(scene.isConnectionAllowed(deep.outside->getNodePins()[1], deep.bottomIn()));
            EXPECT_TRUE(deep.bottom().getNotConnectedPins(PIN_INPUT, pins));
            EXPECT_FALSE(deep.bottomIn()->toXml().isEmpty());
            EXPECT_FALSE(deep.bottom().toXml().isEmpty());
        });
}

TEST(GraphDepth, NodesAreAskedForFreeNames)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            TestNode& owner = *deep.nodes[depth - 2];
            std::string const last = std::to_string(depth - 1);
            KS_String const name = owner.getFullName();
            EXPECT_EQ(last + "01", deep.scene.getFreeNodeName(name, KS_String(last)).c_str());
            EXPECT_STREQ("input interface01", deep.scene.getFreeInterfaceNodeName(name, PIN_INPUT).c_str());
            EXPECT_STRNE(last.c_str(), owner.getFreeNodeNameLikeThis(KS_String(last), &deep.top()).c_str());
            EXPECT_STREQ("in1", deep.bottom().getFreePinNameLikeThis("in").c_str());
            EXPECT_EQ(&deep.bottom(), owner.getNodeByName(KS_String(last), true));
        });
}

TEST(GraphDepth, NodesGetPairsOfPinsAndLoseThem)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            GraphNodeBase* interfaceNode = nullptr;
            GraphNodePin* compoundPin = nullptr;
            GraphNodePin* interfacePin = nullptr;
            EXPECT_TRUE(deep.scene.addCompoundInterfaceNode(PIN_INPUT, &deep.bottom(), interfaceNode,
                                                            compoundPin, interfacePin));
            EXPECT_TRUE(
                deep.scene.addCompoundInterfacePin(PIN_INPUT, interfaceNode, compoundPin, interfacePin));
            std::string const name = DeepGraph::fullName("root", 0);
            EXPECT_EQ(compoundPin, deep.pinNamed(name + ".input01"));
            interfacePin->setName("another");
            EXPECT_EQ(compoundPin, deep.pinNamed(name + ".another"));
            EXPECT_NE(nullptr, deep.bottom().addDynamicInputPin());
            deep.scene.removeNodePinFromSceneAndNode(compoundPin);
            EXPECT_EQ(nullptr, deep.pinNamed(name + ".another"));
            deep.scene.removeNodePins(interfaceNode);
            EXPECT_TRUE(interfaceNode->getNodePins().isEmpty());
        });
}

TEST(GraphDepth, NodesAreWiredByEachOverload)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            GraphNodePin* const out = deep.outside->getNodePins()[1];
            EXPECT_NE(nullptr, deep.scene.connect(out, &deep.bottom(), false));
            EXPECT_NE(nullptr, deep.scene.connect(deep.outside, deep.bottomIn(), true));
            EXPECT_NE(nullptr, deep.scene.connect(deep.bottomOut(), &deep.top(), false));
            deep.scene.removeConnectionsWithPin(deep.bottomOut());
            EXPECT_EQ(2u, deep.scene.getNumberOfConnections());
            deep.scene.removeConnectionsBetweenNodes(deep.outside, &deep.bottom(), true, false);
            EXPECT_EQ(1u, deep.scene.getNumberOfConnections());
            EXPECT_TRUE(deep.scene.removeAllConnections());
        });
}

TEST(GraphDepth, NodesAreMovedOutOfEachCompoundOnTheWayUp)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            deep.scene.connect(deep.outside->getNodePins()[1], deep.bottomIn(), false);
            Nodes moved;
            moved.append(&deep.bottom());
            for (std::size_t level = depth - 2; level > depth - 4; --level)
            {
                MoveRecords out;
                deep.scene.removeNodesFromCompoundCreatingInterfaces(
                    deep.nodes[level], moved, out.pinRenames, out.removedOuter, out.removed, out.outer,
                    out.inner, out.inputInterfaces, out.outputInterfaces, out.newInterfaceNodes,
                    out.newCompoundPins);
                EXPECT_EQ(deep.nodes[level - 1], deep.bottom().getNodeOwner());
            }
        });
}

TEST(GraphDepth, NodesAreToldApartFromTheirCopies)
{
    onDeepGraph(
        [](DeepGraph& deep)
        {
            GraphNodeBase const copy(deep.top());
            EXPECT_TRUE(deep.top() == copy);
            EXPECT_FALSE(deep.bottom() == copy);
            EXPECT_TRUE(deep.bottom().isOwnedByNode(&deep.top(), true));
            EXPECT_FALSE(deep.bottom().isRoot());
        });
}

TEST(GraphDepth, HandlersOfMessagesAreAskedUpwards)
{
    onSmallStack(
        []
        {
            std::deque<MessageHandler> handlers(depth);
            for (std::size_t i = 0; i + 1 < depth; ++i)
            {
                handlers[i].setVerbosityLevel(0);
                handlers[i].setParent(&handlers[i + 1]);
            }
            handlers.back().setVerbosityLevel(4);
            EXPECT_EQ(4, handlers.front().getActualVerbosityLevel());
        });
}

} // namespace
} // namespace kestrel::graph::test
