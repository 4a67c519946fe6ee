#include "support/TestGraph.h"
#include "support/TestLocale.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;

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

TEST(NodeChildrenOfAHost, MayHoldANullThatAHostHasPutThere)
{
    OpenNode owner;
    GraphNodeBase child(2);
    child.setName("child");
    owner.addNodeToNodesList(nullptr);
    EXPECT_EQ(owner.getNodes().size(), 1u);
    owner.removeNodeFromNodesList(nullptr);
    owner.addNode(&child);
    EXPECT_EQ(owner.getNodeByName("child", true), &child);
    owner.removeNode(&child);
    EXPECT_TRUE(owner.getNodes().isEmpty());
}

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

TEST_F(NodeChildren, AnEmptiedListFindsNoneOfItsFormerChildren)
{
    EXPECT_EQ(parent_.getNodeByName("child99", false), &child(99));
    parent_.clearNodesArray();
    for (std::size_t i = 0; i < 50; ++i) parent_.addNode(&child(i));
    EXPECT_EQ(parent_.getNodeByName("child49", false), &child(49));
    EXPECT_EQ(parent_.getNodeByName("child99", false), nullptr);
}

TEST_F(NodeChildren, AListThatTheHostHoldsIsSearchedAlsoWhenItWasEmptiedMeanwhile)
{
    ArrayOfPtr<GraphNodeBase, KS_NO>& held = parent_.refNodes();
    parent_.clearNodesArray();
    for (std::size_t i = 0; i < 100; ++i) parent_.addNode(&child(i));
    std::reverse(held.begin(), held.end());
    parent_.removeNode(&child(0));
    EXPECT_EQ(held.size(), 99U);
    EXPECT_EQ(held[0], &child(99));
    EXPECT_EQ(held[98], &child(1));
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

TEST_F(NodeChildren, NamesThatDifferInTheirCaseAloneAreToldApart)
{
    child(10).setName("ab");
    child(20).setName("AB");
    child(30).setName("aB");
    child(40).setName("Ab");
    EXPECT_EQ(parent_.getNodeByName("ab", true), &child(10));
    EXPECT_EQ(parent_.getNodeByName("AB", true), &child(20));
    EXPECT_EQ(parent_.getNodeByName("aB", true), &child(30));
    EXPECT_EQ(parent_.getNodeByName("Ab", true), &child(40));
    EXPECT_EQ(parent_.getNodeByName("aB", false), &child(10));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(parent_.getNodeByName(KS_String(std::string("CHILD").append(std::to_string(i))), true),
                  nullptr);
}

TEST_F(NodeChildren, NamesMayHoldLettersAboveAscii)
{
    child(5).setName("Gr\xF6\xDF"
                     "e");
    EXPECT_EQ(parent_.getNodeByName("gR\xF6\xDF"
                                    "E",
                                    false),
              &child(5));
    EXPECT_EQ(parent_.getNodeByName("gr\xF6\xDF"
                                    "e",
                                    true),
              nullptr);
    EXPECT_EQ(parent_.getNodeByName("Gr\xF6", false), nullptr);
}

TEST_F(NodeChildren, AnEmptiedListThatHadAGapMakesNoCompound)
{
    parent_.removeNode(&child(5));
    parent_.clearNodesArray();
    EXPECT_FALSE(parent_.isCompound());
}

TEST_F(NodeChildren, AListThatAHostSetsKeepsItsNulls)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&child(1));
    nodes.append(nullptr);
    parent_.removeNode(&child(5));
    parent_.setNodes(nodes);
    EXPECT_THAT(listed(parent_.getNodes()), ElementsAre(&child(1), IsNull()));
}

TEST_F(NodeChildren, AListThatAHostTakesIntoItsHandsHasNoGaps)
{
    parent_.removeNode(&child(5));
    EXPECT_FALSE(parent_.refNodes().contains(nullptr));
}

TEST_F(NodeChildren, ARemovalFromAListThatIsShownNullsTheFreedSlot)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes = parent_.getNodes();
    parent_.removeNode(&child(5));
    EXPECT_EQ(nodes.data()[99], nullptr);
}

TEST_F(NodeChildren, TheFirstOfManyOfOneNameIsFoundWhoeverGoesAndComesBack)
{
    KS_String const name("same");
    for (std::unique_ptr<GraphNodeBase> const& child : children_) child->setName(name);
    std::deque<GraphNodeBase*> expected;
    for (std::unique_ptr<GraphNodeBase> const& child : children_) expected.push_back(child.get());
    for (int round = 0; round < 150; ++round)
    {
        ASSERT_EQ(parent_.getNodeByName(name, true), expected.front()) << round;
        parent_.addNode(expected.front());
        expected.push_back(expected.front());
        expected.pop_front();
    }
}

TEST_F(NodeChildren, AChildThatHasLeftIsFoundByNoNameThatItHadBefore)
{
    ASSERT_EQ(parent_.getNodeByName("Child5", true), &child(5));
    child(5).setName("other");
    parent_.removeNode(&child(5));
    child(5).setName("Child5");
    EXPECT_EQ(parent_.getNodeByName("Child5", true), nullptr);
}

TEST_F(NodeChildren, AListedChildThatIsAssignedAnotherNodeIsFoundByThatName)
{
    ASSERT_EQ(parent_.getNodeByName("Child5", true), &child(5));
    GraphNodeBase other;
    other.setName("other");
    child(5) = other; // which has no owner
    EXPECT_EQ(parent_.getNodeByName("other", true), &child(5));
    EXPECT_EQ(parent_.getNodeByName("Child5", true), nullptr);
}

TEST_F(NodeChildren, AChildIsFoundNoMoreThoughAnotherNodeHasTriedToRemoveIt)
{
    ASSERT_EQ(parent_.getNodeByName("Child5", true), &child(5));
    OpenNode other;
    other.removeNodeFromNodesList(&child(5));
    parent_.removeNode(&child(5));
    EXPECT_EQ(parent_.getNodeByName("Child5", true), nullptr);
}

// The second owner stands where the first one was.
TEST_F(NodeChildren, ANodeWhoseOwnerIsGoneIsNotAmongTheChildrenOfTheNextOne)
{
    std::optional<GraphNodeBase> owner(std::in_place);
    GraphNodeBase orphan;
    owner->addNode(&orphan);
    owner.emplace();
    for (std::unique_ptr<GraphNodeBase> const& child : children_) owner->addNode(child.get());
    ASSERT_EQ(owner->getNodeByName("Child5", true), &child(5));
    orphan.setName("orphan");
    EXPECT_EQ(owner->getNodeByName("orphan", true), nullptr);
}

#if defined(__GLIBC__)
TEST_F(NodeChildren, NamesAreFoundByTheLettersOfTheLocaleOfTheMoment)
{
    TestLocale locale;
    ASSERT_TRUE(locale.isThere()) << "localedef has made no locale";
    child(5).setName("\xC4");
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), nullptr);
    locale.enter();
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), &child(5));
    locale.leave();
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), nullptr);

    for (char const* name : {"I", "\x80"})
    {
        child(8).setName(name);
        EXPECT_EQ(parent_.getNodeByName(name, true), &child(8));
        locale.enter();
        EXPECT_EQ(parent_.getNodeByName(name, true), &child(8));
        EXPECT_EQ(parent_.getNodeByName(name[0] == 'I' ? "\xFD" : "\x9A", false), &child(8));
        EXPECT_EQ(parent_.getNodeByName("i", false), nullptr);
        locale.leave();
    }

    EXPECT_EQ(parent_.getNodeByName("\xC4", true), &child(5));
    locale.enter();
    child(3).setName("\xC4");
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), &child(3));
    EXPECT_EQ(parent_.getNodeByName("CHiLD7", false), &child(7));
    locale.leave();
    parent_.removeNode(&child(3));
    EXPECT_EQ(parent_.getNodeByName("\xC4", false), &child(5));
    EXPECT_EQ(parent_.getNodeByName("child7", false), &child(7));
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), nullptr);
}

TEST_F(NodeChildren, NamesAreFoundByTheLettersOfALocaleThatDiffersAboveAsciiAlone)
{
    TestLocale locale(TestLocale::Letters::aboveAscii);
    ASSERT_TRUE(locale.isThere()) << "localedef has made no locale";
    child(5).setName("\xC4");
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), nullptr);
    locale.enter();
    EXPECT_EQ(parent_.getNodeByName("I", false), nullptr);
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), &child(5));
}

TEST_F(NodeChildren, AChildThatLeavesInAnotherLocaleIsNotFoundInTheFirstOne)
{
    TestLocale locale;
    ASSERT_TRUE(locale.isThere()) << "localedef has made no locale";
    child(5).setName("\xC4");
    locale.enter();
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), &child(5));
    locale.leave();
    parent_.removeNode(&child(5));
    locale.enter();
    EXPECT_EQ(parent_.getNodeByName("\xE4", false), nullptr);
}
#endif

TEST_F(NodeChildren, ANodeOfTheHostsClassIsFoundByTheNameThatItTells)
{
    struct : GraphNodeBase
    {
        KS_String getName() override { return told; }
        KS_String told = "told";
    } host;
    EXPECT_EQ(parent_.getNodeByName("told", true), nullptr);
    parent_.addNode(&host);
    EXPECT_EQ(parent_.getNodeByName("told", true), &host);
    host.told = "child7";
    child(7).setName("other");
    EXPECT_EQ(parent_.getNodeByName("child7", false), &host);
    parent_.removeNode(&host);
    EXPECT_EQ(parent_.getNodeByName("child7", false), nullptr);
}

TEST(NodeChildrenOfAHost, ManyNodesOfItsClassAreFoundByTheNamesThatTheyTell)
{
    struct Telling : GraphNodeBase
    {
        KS_String getName() override { return told; }
        KS_String told;
    };
    std::array<Telling, 40> children;
    GraphNodeBase parent;
    for (Telling& child : children) parent.addNode(&child);
    children[20].told = "told";
    EXPECT_EQ(parent.getNodeByName("told", true), &children[20]);
}

TEST(NodeChildrenOfAHost, ANodeWhoseOnlyChildLeavesAListThatIsShownIsNoCompound)
{
    GraphNodeBase parent;
    GraphNodeBase child;
    parent.addNode(&child);
    EXPECT_THAT(listed(parent.getNodes()), ElementsAre(&child));
    parent.removeNode(&child);
    EXPECT_FALSE(parent.isCompound());
}

TEST(NodeChildrenOfAHost, AChildThatComesAndGoesLeavesTheListShort)
{
    GraphNodeBase parent;
    GraphNodeBase child;
    for (int i = 0; i < 100; ++i)
    {
        parent.addNode(&child);
        parent.removeNode(&child);
    }
    EXPECT_LT(parent.getNodes().capacity(), 10u);
}

TEST(NodeChildrenOfAHost, ARemovalOfNullLeavesACompoundACompound)
{
    OpenNode parent;
    GraphNodeBase child;
    GraphNodeBase gone;
    parent.addNode(&child);
    parent.addNode(&gone);
    parent.removeNode(&gone);
    parent.removeNodeFromNodesList(nullptr);
    EXPECT_TRUE(parent.isCompound());
    EXPECT_THAT(listed(parent.getNodes()), ElementsAre(&child));
}

TEST(NodeChildrenOfAHost, AChildIsRemovedFromTheListASecondTimeWithoutEffect)
{
    OpenNode parent;
    GraphNodeBase child;
    parent.addNode(&child);
    for (int i = 0; i < 2; ++i) parent.removeNodeFromNodesList(&child);
    EXPECT_THAT(listed(parent.getNodes()), IsEmpty());
    EXPECT_EQ(child.getNodeOwner(), &parent);
}

TEST(NodeChildrenOfAHost, AChildThatItListsOnceMoreIsRemovedTwice)
{
    OpenNode parent;
    GraphNodeBase first;
    GraphNodeBase twice;
    GraphNodeBase last;
    for (GraphNodeBase* const child : {&first, &twice, &last}) parent.addNode(child);
    parent.addNodeToNodesList(&twice);
    EXPECT_THAT(listed(parent.getNodes()), ElementsAre(&first, &twice, &last, &twice));
    parent.removeNode(&twice);
    EXPECT_THAT(listed(parent.getNodes()), ElementsAre(&first, &last));
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
