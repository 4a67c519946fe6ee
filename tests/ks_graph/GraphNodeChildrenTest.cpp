#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A node with many children of the library's own class.
class NodeChildren : public ::testing::Test
{
protected:
    NodeChildren()
    {
        for (int i = 0; i < 100; ++i)
        {
            children_.push_back(std::make_unique<GraphNodeBase>());
            children_.back()->setName(KS_String(std::string("Child").append(std::to_string(i))));
            parent_.addNode(children_.back().get());
        }
    }

    std::vector<GraphNodeBase*> left() const
    {
        std::vector<GraphNodeBase*> nodes;
        for (std::unique_ptr<GraphNodeBase> const& child : children_) nodes.push_back(child.get());
        return nodes;
    }

    GraphNodeBase& child(std::size_t place) { return *children_[place]; }

    GraphNodeBase parent_;
    std::vector<std::unique_ptr<GraphNodeBase>> children_;
};

/// Lets the tests change the lists as a host's own class may.
class OpenNode : public GraphNodeBase
{
public:
    using GraphNodeBase::addNodeToNodesList;
    using GraphNodeBase::removeNodeFromNodesList;
    using GraphNodeBase::setNodeOwnerBase;
};

} // namespace

TEST_F(NodeChildren, ChildrenRemovedBeforeAnybodyLooksLeaveNoGaps)
{
    std::vector<GraphNodeBase*> expected = left();
    for (unsigned int const place : {99u, 0u, 50u, 51u, 98u})
    {
        parent_.removeNode(&child(place));
        expected.erase(std::find(expected.begin(), expected.end(), &child(place)));
    }
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    parent_.getNodesRecursively(nodes);
    EXPECT_EQ(listed(nodes), expected);
    EXPECT_EQ(listed(parent_.getNodes()), expected);
    EXPECT_TRUE(parent_.isCompound());
}

TEST_F(NodeChildren, ANodeWhoseChildrenAreAllRemovedIsNoCompound)
{
    for (std::unique_ptr<GraphNodeBase> const& child : children_) parent_.removeNode(child.get());
    EXPECT_FALSE(parent_.isCompound());
    EXPECT_THAT(listed(parent_.getNodes()), IsEmpty());
}

TEST_F(NodeChildren, ChildrenAreRemovedFromTheFrontAndAddedAtTheEnd)
{
    std::vector<GraphNodeBase*> expected = left();
    for (int round = 0; round < 300; ++round)
    {
        GraphNodeBase* const first = expected.front();
        parent_.removeNode(first);
        expected.erase(expected.begin());
        if (round % 3 == 0)
        {
            parent_.addNode(first);
            expected.push_back(first);
        }
        if (expected.empty()) break;
        ASSERT_EQ(parent_.getNodeByName(expected.back()->getName(), true), expected.back());
    }
    EXPECT_EQ(listed(parent_.getNodes()), expected);
}

TEST_F(NodeChildren, AReferenceToTheListFollowsEveryRemoval)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes = parent_.getNodes();
    for (unsigned int count = 100; count > 0; --count)
    {
        ASSERT_EQ(nodes.size(), count);
        GraphNodeBase* const middle = nodes[count / 2];
        parent_.removeNode(middle);
        ASSERT_FALSE(nodes.contains(middle));
        ASSERT_FALSE(nodes.contains(nullptr));
    }
    EXPECT_TRUE(nodes.isEmpty());
}

TEST_F(NodeChildren, AChildThatComesBackStandsAtTheEnd)
{
    parent_.removeNode(&child(10));
    parent_.addNode(&child(10));
    parent_.addNode(&child(20));
    ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes = parent_.getNodes();
    EXPECT_EQ(nodes[98], &child(10));
    EXPECT_EQ(nodes[99], &child(20));
    parent_.removeNode(&child(99));
    EXPECT_EQ(nodes[97], &child(10));
    EXPECT_EQ(nodes.size(), 99U);
}

TEST_F(NodeChildren, AChildThatAHostListsTwiceIsRemovedTwice)
{
    parent_.refNodes().append(&child(3));
    EXPECT_EQ(parent_.getNodes().size(), 101U);
    parent_.removeNode(&child(3));
    EXPECT_EQ(parent_.getNodes().size(), 99U);
    EXPECT_FALSE(parent_.getNodes().contains(&child(3)));
}

TEST_F(NodeChildren, AListThatAHostHasSetIsSearched)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> reversed(parent_.getNodes());
    std::reverse(reversed.begin(), reversed.end());
    parent_.setNodes(reversed);
    parent_.removeNode(&child(0));
    parent_.removeNode(&child(99));
    EXPECT_EQ(parent_.getNodes().size(), 98U);
    EXPECT_EQ(parent_.getNodes()[0], &child(98));
    EXPECT_EQ(parent_.getNodeByName("child1", false), &child(1));
}

TEST_F(NodeChildren, AnEmptiedListTakesItsChildrenAgain)
{
    parent_.clearNodesArray();
    EXPECT_FALSE(parent_.isCompound());
    EXPECT_EQ(child(5).getNodeOwner(), &parent_);
    for (unsigned int const place : {5u, 4u})
    {
        child(place).setNodeOwner(nullptr);
        parent_.addNode(&child(place));
    }
    parent_.addNode(&child(6));
    EXPECT_THAT(listed(parent_.getNodes()), ElementsAre(&child(5), &child(4), &child(6)));
    parent_.removeNode(&child(4));
    EXPECT_THAT(listed(parent_.getNodes()), ElementsAre(&child(5), &child(6)));
}

TEST_F(NodeChildren, AChildThatEndsInTheListDisturbsNoOther)
{
    children_.erase(children_.begin() + 50);
    parent_.removeNode(&child(98));
    parent_.removeNode(&child(0));
    EXPECT_EQ(parent_.getNodes().size(), 98U);
    EXPECT_EQ(parent_.getNodes()[0], &child(1));
    parent_.clearNodesArray();
    EXPECT_FALSE(parent_.isCompound());
}

TEST_F(NodeChildren, TheFirstChildOfANameIsFoundWhateverChanges)
{
    EXPECT_EQ(parent_.getNodeByName("CHILD42", false), &child(42));
    EXPECT_EQ(parent_.getNodeByName("CHILD42", true), nullptr);
    child(42).setName("x");
    EXPECT_EQ(parent_.getNodeByName("child42", false), nullptr);
    EXPECT_EQ(parent_.getNodeByName("X", false), &child(42));
    child(17).setName("X");
    EXPECT_EQ(parent_.getNodeByName("x", false), &child(17));
    EXPECT_EQ(parent_.getNodeByName("x", true), &child(42));
    parent_.addNode(&child(17));
    EXPECT_EQ(parent_.getNodeByName("X", false), &child(42));
    EXPECT_EQ(parent_.getNodeByName("X", true), &child(17));
    parent_.removeNode(&child(42));
    EXPECT_EQ(parent_.getNodeByName("x", false), &child(17));
    std::reverse(parent_.refNodes().begin(), parent_.refNodes().end());
    child(3).setName("x");
    EXPECT_EQ(parent_.getNodeByName("x", false), &child(17));
}

TEST(NodeChildrenOfAHost, ListsThatTheHostChangesItselfAreRight)
{
    OpenNode parent;
    OpenNode other;
    OpenNode child;
    parent.addNodeToNodesList(&child);
    parent.addNodeToNodesList(&child);
    other.addNodeToNodesList(&child);
    EXPECT_THAT(listed(parent.getNodes()), ElementsAre(&child, &child));
    parent.removeNodeFromNodesList(&child);
    EXPECT_THAT(listed(parent.getNodes()), IsEmpty());
    EXPECT_THAT(listed(other.getNodes()), ElementsAre(&child));

    parent.addNode(&child);
    child.setNodeOwnerBase(&other);
    parent.addNodeToNodesList(&child);
    parent.removeNodeFromNodesList(&child);
    EXPECT_THAT(listed(parent.getNodes()), IsEmpty());
    other.removeNodeFromNodesList(&child);
    EXPECT_THAT(listed(other.getNodes()), IsEmpty());
    other.removeNodeFromNodesList(nullptr);
}

TEST(NodeChildrenOfAHost, IdsMayLieFarApart)
{
    TestGraph<> graph;
    std::vector<unsigned int> const ids{4000000000U, 5, 0xFFFFFFFEU, 70, 3, 1000000, 0xFFFFFFFFU};
    std::vector<GraphNodeBase*> nodes;
    for (unsigned int const id : ids)
    {
        TestNode& node = graph.newNode("n");
        node.setId(id);
        EXPECT_TRUE(graph.scene.addNodeToGraph(&node));
        EXPECT_FALSE(graph.scene.addNodeToGraph(&node));
        nodes.push_back(&node);
    }
    ArrayOfPtr<GraphNodeBase, KS_NO> registered;
    graph.scene.getGraphNodesAsList(registered);
    EXPECT_THAT(listed(registered), ElementsAre(&graph.root, nodes[4], nodes[1], nodes[3], nodes[5], nodes[0],
                                                nodes[2], nodes[6]));
    nodes[0]->setId(6);
    nodes[4]->setId(2000000000U);
    EXPECT_EQ(graph.scene.getNodePtrById(4000000000U), nullptr);
    EXPECT_EQ(graph.scene.getNodePtrById(6), nodes[0]);
    EXPECT_EQ(graph.scene.getNodePtrById(2000000000U), nodes[4]);
    graph.scene.removeNodeFromGraph(nodes[2]);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(0xFFFFFFFEU));
    EXPECT_EQ(graph.scene.getNumberOfNodes(), 7U);
}

} // namespace kestrel::graph::test
