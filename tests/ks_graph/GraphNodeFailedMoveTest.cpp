/// @file
/// A move that fails half-way, and a move during which a host changes the children of the node that moves.
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <string>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Fails to list a node.
class Refusing : public GraphNodeBase
{
protected:
    void addNodeToNodesList(GraphNodeBase*) override { throw std::bad_alloc(); }
};

/// Lists a node and fails then.
class FailingLate : public GraphNodeBase
{
protected:
    void addNodeToNodesList(GraphNodeBase* node) override
    {
        GraphNodeBase::addNodeToNodesList(node);
        throw std::bad_alloc();
    }
};

/// A node with three children, and one that fails to take them.
struct Siblings
{
    Siblings()
    {
        for (GraphNodeBase* const node : {&a, &b, &c}) owner.addNode(node);
    }

    GraphNodeBase owner;
    GraphNodeBase a;
    GraphNodeBase b;
    GraphNodeBase c;
    Refusing refusing;
};

/// Fails to tell its scene.
class Unwilling : public GraphNodeBase
{
public:
    GraphScene* getGraphScene() const override
    {
        if (fails) throw std::bad_alloc();
        return nullptr;
    }

    bool fails = false;
};

/// A node whose child's scene cannot be told of a move.
struct MoveOfUnwilling
{
    MoveOfUnwilling()
    {
        node.addNode(&child);
        from.addNode(&node);
        child.fails = true;
    }

    GraphNodeBase from;
    GraphNodeBase to;
    GraphNodeBase node;
    Unwilling child;
};

} // namespace

TEST(NodeFailedMove, LeavesTheNodeBetweenItsSiblings)
{
    Siblings siblings;
    EXPECT_THROW(siblings.refusing.addNode(&siblings.b), std::bad_alloc);
    EXPECT_THAT(listed(siblings.owner.getNodes()), ElementsAre(&siblings.a, &siblings.b, &siblings.c));
    EXPECT_EQ(siblings.b.getNodeOwner(), &siblings.owner);
}

TEST(NodeFailedMove, LeavesTheLastNodeAtTheEnd)
{
    Siblings siblings;
    EXPECT_THROW(siblings.refusing.addNode(&siblings.c), std::bad_alloc);
    EXPECT_THAT(listed(siblings.owner.getNodes()), ElementsAre(&siblings.a, &siblings.b, &siblings.c));
}

TEST(NodeFailedMove, LeavesTheNodeWhereAHostHasPutIt)
{
    Siblings siblings;
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    for (GraphNodeBase* const node : {&siblings.c, &siblings.a, &siblings.b}) nodes.append(node);
    siblings.owner.setNodes(nodes);
    EXPECT_THROW(siblings.refusing.addNode(&siblings.a), std::bad_alloc);
    EXPECT_THAT(listed(siblings.owner.getNodes()), ElementsAre(&siblings.c, &siblings.a, &siblings.b));
}

TEST(NodeFailedMove, LeavesANodeThatItsOwnerDoesNotListUnlisted)
{
    Siblings siblings;
    siblings.owner.clearNodesArray();
    EXPECT_THROW(siblings.refusing.addNode(&siblings.a), std::bad_alloc);
    EXPECT_THAT(listed(siblings.owner.getNodes()), IsEmpty());
    EXPECT_EQ(siblings.a.getNodeOwner(), &siblings.owner);
}

TEST(NodeFailedMove, LeavesANodeWithoutOwnerWithoutOne)
{
    Refusing refusing;
    GraphNodeBase node;
    EXPECT_THROW(refusing.addNode(&node), std::bad_alloc);
    EXPECT_EQ(node.getNodeOwner(), nullptr);
}

TEST(NodeFailedMove, LeavesNothingWithTheNewOwner)
{
    Siblings siblings;
    FailingLate to;
    EXPECT_THROW(to.addNode(&siblings.b), std::bad_alloc);
    EXPECT_THAT(listed(to.getNodes()), IsEmpty());
}

TEST(NodeFailedMove, LeavesTheNodeToBeFoundByItsName)
{
    std::array<GraphNodeBase, 40> children;
    GraphNodeBase owner;
    Refusing refusing;
    for (GraphNodeBase& child : children) owner.addNode(&child);
    children[20].setName("wanted");
    ASSERT_EQ(owner.getNodeByName("wanted", true), &children[20]);
    EXPECT_THROW(refusing.addNode(&children[20]), std::bad_alloc);
    EXPECT_EQ(owner.getNodeByName("wanted", true), &children[20]);
}

TEST(NodeFailedMove, IsTakenBackWhenTheScenesOfTheChildrenCannotBeTold)
{
    MoveOfUnwilling move;
    EXPECT_THROW(move.node.setNodeOwner(&move.to), std::bad_alloc);
    EXPECT_EQ(move.node.getNodeOwner(), &move.from);
    EXPECT_THAT(listed(move.from.getNodes()), ElementsAre(&move.node));
    EXPECT_THAT(listed(move.to.getNodes()), IsEmpty());
}

TEST(NodeFailedMove, StandsWhenTheSceneOfTheNodeHasLearnedOfIt)
{
    GraphScene scene;
    MoveOfUnwilling move;
    move.node.setGraphScene(&scene);
    EXPECT_NO_THROW(move.node.setNodeOwner(&move.to));
    EXPECT_EQ(move.node.getNodeOwner(), &move.to);
    EXPECT_THAT(listed(move.to.getNodes()), ElementsAre(&move.node));
}

TEST(NodeMove, MayTakeTheChildrenOfTheNodeAway)
{
    struct Freeing : GraphNodeBase
    {
        void addNodeToNodesList(GraphNodeBase* node) override
        {
            GraphNodeBase::addNodeToNodesList(node);
            node->removeNode(node->getNodes()[0]);
        }
    };
    GraphNodeBase node;
    GraphNodeBase child;
    Freeing to;
    node.addNode(&child);
    node.setNodeOwner(&to);
    EXPECT_THAT(listed(to.getNodes()), ElementsAre(&node));
    EXPECT_THAT(listed(node.getNodes()), IsEmpty());
}

TEST(NodeMove, MayBringTheNodeItsFirstChild)
{
    struct Giving : GraphNodeBase
    {
        void addNodeToNodesList(GraphNodeBase* node) override
        {
            GraphNodeBase::addNodeToNodesList(node);
            node->addNode(&child);
        }
        GraphNodeBase child;
    };
    GraphScene scene;
    GraphNodeBase node;
    Giving to;
    to.child.setGraphScene(&scene);
    node.setNodeOwner(&to);
    EXPECT_THAT(listed(node.getNodes()), ElementsAre(&to.child));
}

} // namespace kestrel::graph::test
