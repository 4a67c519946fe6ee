/// @file
/// What allocations tell: the indexes beside long lists are made once and kept, and a full name is put
/// together at once.
#include "FailingAllocator.h"

#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <new>
#include <string>

namespace kestrel::graph::test
{

namespace
{

/// A node whose children have different names.
class Parent
{
public:
    explicit Parent(std::size_t count) : children_(count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            children_[i].setName(KS_String(std::to_string(i)));
            node.addNode(&children_[i]);
        }
    }

    GraphNodeBase& child(std::size_t place) { return children_[place]; }

    long allocationsOfASearch()
    {
        long const before = allocationsMade();
        EXPECT_EQ(node.getNodeByName(name_, true), nullptr);
        return allocationsMade() - before;
    }

    /// How many of the searches take memory that follow the removals of so many children, one by one.
    int costlySearches(std::size_t removals)
    {
        int count = 0;
        for (std::size_t i = 0; i < removals; ++i)
        {
            node.removeNode(&child(i));
            if (allocationsOfASearch() != 0) ++count;
        }
        return count;
    }

private:
    std::deque<GraphNodeBase> children_;
    KS_String name_{"nobody"};

public:
    GraphNodeBase node;
};

TEST(ChildIndex, IsMadeByTheFirstSearchOfALongListAndKept)
{
    Parent parent(100);
    EXPECT_GT(parent.allocationsOfASearch(), 0);
    EXPECT_EQ(parent.allocationsOfASearch(), 0);
}

TEST(ChildIndex, IsNotMadeForAShortList)
{
    Parent parent(20);
    EXPECT_EQ(parent.allocationsOfASearch(), 0);
}

TEST(ChildIndex, IsMadeForAListThatAHostHadSetAndThatWasEmptied)
{
    Parent parent(100);
    parent.node.setNodes({});
    parent.node.clearNodesArray();
    for (std::size_t i = 0; i < 100; ++i) parent.node.addNode(&parent.child(i));
    EXPECT_GT(parent.allocationsOfASearch(), 0);
}

TEST(ChildIndex, IsGivenBackWhenAHostTakesTheList)
{
    Parent parent(100);
    long const living = livingAllocations();
    EXPECT_GT(parent.allocationsOfASearch(), 0);
    parent.node.refNodes();
    EXPECT_EQ(livingAllocations(), living);
}

TEST(ChildIndex, IsMadeAnewOnlyWhenManyChildrenHaveGone)
{
    Parent parent(300);
    int const count = parent.costlySearches(200);
    EXPECT_GE(count, 2);
    EXPECT_LE(count, 6);
}

TEST(ChildIndex, IsMadeAnewOnlyWhenManyChildrenHaveGoneFromAListThatIsShown)
{
    Parent parent(300);
    parent.node.getNodes();
    int const count = parent.costlySearches(200);
    EXPECT_GE(count, 2);
    EXPECT_LE(count, 6);
}

/// The two lists of a pin.
struct Side
{
    void (GraphNodePin::*add)(GraphConnection*);
    void (GraphNodePin::*remove)(GraphConnection*);
};

class PinIndex : public ::testing::TestWithParam<Side>
{
protected:
    void addAll(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) (pin_.*GetParam().add)(&connections_[i]);
    }

    long allocationsOfRemoving(std::size_t place)
    {
        long const before = allocationsMade();
        (pin_.*GetParam().remove)(&connections_[place]);
        return allocationsMade() - before;
    }

    std::array<GraphConnection, 100> connections_;
    GraphNodePin pin_;
};

INSTANTIATE_TEST_SUITE_P(
    Sides, PinIndex,
    ::testing::Values(Side{&GraphNodePin::addInputConnection, &GraphNodePin::removeInputConnection},
                      Side{&GraphNodePin::addOutputConnection, &GraphNodePin::removeOutputConnection}));

TEST_P(PinIndex, IsMadeByTheFirstRemovalFromALongListAndKept)
{
    addAll(100);
    EXPECT_GT(allocationsOfRemoving(10), 0);
    EXPECT_EQ(allocationsOfRemoving(20), 0);
}

TEST_P(PinIndex, IsNotMadeForAShortList)
{
    addAll(40);
    EXPECT_EQ(allocationsOfRemoving(10), 0);
}

TEST_P(PinIndex, IsGivenBackWhenTheListHasBecomeShort)
{
    addAll(100);
    long const living = livingAllocations();
    for (std::size_t place = 0; place < 90; ++place) allocationsOfRemoving(place);
    EXPECT_EQ(livingAllocations(), living);
}

TEST(FullName, TakesOneAllocation)
{
    std::array<GraphNodeBase, 4> nodes;
    GraphNodePin pin(&nodes.back(), 1u, PIN_INPUT);
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) nodes[i].addNode(&nodes[i + 1]);
    long const before = allocationsMade();
    {
        KS_String const name = nodes.back().getFullName();
        EXPECT_EQ(allocationsMade() - before, 1);
    }
    {
        KS_String const name = pin.getFullName();
        EXPECT_EQ(allocationsMade() - before, 2);
    }
}

// It is made of two allocations before anything changes.
TEST(AllocationFailure, OfANewPairLeavesTheFormerPartnerOfAnotherPinKnown)
{
    for (long const number : {1L, 2L})
    {
        SCOPED_TRACE(number);
        TestGraph<> graph;
        TestNode& compound = graph.addNode("compound");
        TestNode& inner = graph.addNode("inner", &compound);
        GraphNodePin* const one = graph.scene.createNewPin(&inner, 1, PIN_OUTPUT);
        GraphNodePin* const other = graph.scene.createNewPin(&inner, 1, PIN_OUTPUT);
        GraphNodePin* const first = graph.scene.createCompoundPinForInterfacePin(one);
        graph.scene.createCompoundPinForInterfacePin(one);
        first->setChildGraphNodePinPtr(other);
        other->setParentGraphNodePinPtr(first);
        {
            FailAllocation const failure(number, false);
            EXPECT_THROW(graph.scene.createCompoundPinForInterfacePin(other), std::bad_alloc);
        }
        first->setChildGraphNodePinPtr(one);
        inner.removeNodePin(one);
        delete one;
        EXPECT_EQ(first->getChildGraphNodePinPtr(), nullptr);
    }
}

} // namespace

} // namespace kestrel::graph::test
