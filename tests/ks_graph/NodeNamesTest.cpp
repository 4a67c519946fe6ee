// Looking for nodes by full name: whatever changes before a look-up or during it, the index and the walk over
// those that have to be asked find what is registered.
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
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

/// Reaches the map of nodes.
class NamingScene final : public GraphScene
{
public:
    NamingScene() { declarePlainNames<NamingScene>(); }

    void put(GraphNodeBase& node) { insertNodeInMapById(node.getId(), &node); }
    void take(unsigned int id) { removeNodeFromMapById(id); }
};

/// A node with a name of the library's, of whose class nobody has said so: it has to be asked.
class AskedNode : public GraphNodeBase
{
public:
    AskedNode(unsigned int id, char const* name) : GraphNodeBase(id) { setName(name); }

    KS_String getFullName() override
    {
        if (log != nullptr) log->push_back(getId());
        if (std::function<void()> const first = std::exchange(whenFirstAsked, nullptr)) first();
        return GraphNodeBase::getFullName();
    }

    std::vector<unsigned int>* log = nullptr;
    std::function<void()> whenFirstAsked;
};

struct NamedNode : GraphNodeBase
{
    NamedNode(unsigned int id, char const* name) : GraphNodeBase(id) { setName(name); }
};

/// A node of the library's own class.
std::unique_ptr<GraphNodeBase> named(unsigned int id, char const* name)
{
    auto node = std::make_unique<GraphNodeBase>(id);
    node->setName(name);
    return node;
}

class NodeNames : public ::testing::Test
{
protected:
    GraphNodeBase* find(char const* fullName) { return scene.getNodePtrByFullName(fullName); }

    std::string freeName() { return std::string(scene.getFreeNodeName("a", "x")); }

    GraphNodeBase& put(unsigned int id, char const* name)
    {
        nodes.push_back(named(id, name));
        scene.addNodeToGraph(nodes.back().get());
        return *nodes.back();
    }

    std::vector<std::unique_ptr<GraphNodeBase>> nodes;
    NamingScene scene;
};

} // namespace

// ---- The index

TEST_F(NodeNames, FollowANodeWhoseIdChangesAsLongAsItIsRegistered)
{
    GraphNodeBase& node = put(5, "node");
    GraphNodeBase& other = put(7, "other");
    node.setId(6);
    EXPECT_EQ(find("node"), &node);
    scene.updateNodeIdChange(&node, 6, 6);
    EXPECT_EQ(find("node"), &node);
    node.setId(7); // is taken
    EXPECT_EQ(find("node"), nullptr);
    EXPECT_EQ(find("other"), &other);
}

TEST_F(NodeNames, AreForgottenWhenAllNodesAreRemoved)
{
    GraphNodeBase& plain = put(1, "plain");
    AskedNode asked(2, "asked");
    scene.addNodeToGraph(&asked);
    scene.removeAllNodes();
    EXPECT_EQ(find("plain"), nullptr);
    EXPECT_EQ(find("asked"), nullptr);
    plain.setName("other plain");
    asked.setName("other asked");
    EXPECT_EQ(find("other plain"), nullptr);
    EXPECT_EQ(find("other asked"), nullptr);
}

TEST_F(NodeNames, AreFreeAgainWhenAllNodesAreRemoved)
{
    for (unsigned int id = 1; id <= 9; ++id) put(id, std::string("a.x0").append(std::to_string(id)).c_str());
    EXPECT_EQ(freeName(), "x10");
    scene.removeAllNodes();
    EXPECT_EQ(freeName(), "x01");
}

TEST_F(NodeNames, OfNodesThatHaveEndedAreNotFound)
{
    {
        std::unique_ptr<GraphNodeBase> const ending = named(1, "ending");
        scene.addNodeToGraph(ending.get());
    }
    EXPECT_EQ(find("ending"), nullptr);
    scene.take(1);
}

TEST_F(NodeNames, OfANodeThatIsRemovedAfterAnotherHasEndedAreNotFound)
{
    GraphNodeBase& node = put(2, "node");
    {
        std::unique_ptr<GraphNodeBase> const ending = named(1, "ending");
        scene.addNodeToGraph(ending.get());
    }
    scene.removeNodeFromGraph(&node);
    scene.take(1);
    EXPECT_EQ(find("node"), nullptr);
}

TEST_F(NodeNames, OfANodeInThePlaceOfOneThatHasEndedStayWhenTheEntryOfThatOneGoes)
{
    std::optional<GraphNodeBase> node(1u);
    scene.put(*node);
    node.emplace(2u);
    node->setName("new");
    scene.put(*node);
    scene.take(1);
    EXPECT_EQ(find("new"), &*node);
    scene.take(2);
}

TEST_F(NodeNames, AreFreeAgainWhateverTheirNumberIs)
{
    for (unsigned int id = 1; id <= 20; ++id)
        put(id, std::string(id < 10 ? "a.x0" : "a.x").append(std::to_string(id)).c_str());
    EXPECT_EQ(freeName(), "x21");
    for (unsigned int const id : {9u, 12u, 19u, 20u})
    {
        GraphNodeBase& node = *nodes[id - 1];
        KS_String const name = node.getName();
        node.setName("other");
        EXPECT_EQ(freeName(), std::string(name).substr(2));
        node.setName(name);
        EXPECT_EQ(freeName(), "x21");
    }
}

TEST_F(NodeNames, AreNotAskedForWhenANodeEndsAfterItsOwner)
{
    for (unsigned int id = 1; id <= 9; ++id) put(id, std::string("a.x0").append(std::to_string(id)).c_str());
    EXPECT_EQ(freeName(), "x10");
    std::unique_ptr<GraphNodeBase> owner = named(20, "owner");
    std::unique_ptr<GraphNodeBase> node = named(21, "node");
    owner->addNode(node.get());
    scene.addNodeToGraph(node.get());
    owner.reset();
    node.reset();
    EXPECT_EQ(freeName(), "x10");
    scene.take(21);
}

TEST_F(NodeNames, OfTheIdZeroAreFoundAlsoWhenTheIndexIsFilledAnew)
{
    GraphNodeBase& zero = put(0, "zero");
    GraphNodeBase& shared = put(1, "shared");
    GraphScene other;
    GraphNodeBase plain(0);
    plain.setName("plain");
    other.addNodeToGraph(&plain);
    other.addNodeToGraph(&shared);
    scene.removeNodeFromGraph(&shared);
    EXPECT_EQ(other.getNodePtrByFullName("plain"), &plain);
    EXPECT_EQ(find("zero"), &zero);
}

// ---- The root node, which need not be registered

TEST_F(NodeNames, OfTheRootAreComparedWhole)
{
    std::unique_ptr<GraphNodeBase> const top = named(1, "top");
    std::unique_ptr<GraphNodeBase> const root = named(2, "root");
    scene.setRootNode(root.get());
    EXPECT_EQ(find(""), nullptr);
    EXPECT_EQ(find("root"), root.get());
    top->addNode(root.get());
    EXPECT_EQ(find("top.root"), root.get());
    EXPECT_EQ(find("toproot"), nullptr);
    EXPECT_EQ(find("root"), nullptr);
}

TEST_F(NodeNames, OfTheRootAreThoseThatItTells)
{
    struct LoudNode : GraphNodeBase
    {
        KS_String getName() override { return "loud"; }
    };
    LoudNode root;
    root.setName("quiet");
    scene.setRootNode(&root);
    EXPECT_EQ(find("loud"), &root);
    EXPECT_EQ(find("quiet"), nullptr);
}

TEST_F(NodeNames, OfARootOfAnotherClassAreAskedForWithEachCandidate)
{
    put(1, "a.x01");
    put(2, "a.x02");
    AskedNode root(3, "root");
    scene.setRootNode(&root);
    std::vector<unsigned int> asked;
    root.log = &asked;
    EXPECT_EQ(freeName(), "x03");
    EXPECT_THAT(asked, ElementsAre(3, 3, 3));
}

// ---- The nodes that have to be asked

TEST_F(NodeNames, OfTheIdZeroAreAskedFor)
{
    AskedNode asked(0, "asked");
    scene.addNodeToGraph(&asked);
    EXPECT_EQ(find("asked"), &asked);
}

TEST_F(NodeNames, OfOneAskedNodeAmongPlainOnesAreNotFree)
{
    put(1, "a.x01");
    AskedNode asked(2, "a.x02");
    scene.addNodeToGraph(&asked);
    EXPECT_EQ(freeName(), "x03");
}

class AskedNodeNames : public NodeNames
{
protected:
    AskedNodeNames()
    {
        for (AskedNode* const node : {&first, &second, &third})
        {
            node->log = &log;
            scene.put(*node);
        }
    }
    ~AskedNodeNames() override
    {
        for (unsigned int id = 11; id <= 13; ++id) scene.take(id);
    }

    AskedNode first{11, "a.x01"};
    AskedNode second{12, "a.x02"};
    AskedNode third{13, "other"};
    std::vector<unsigned int> log;
};

TEST_F(AskedNodeNames, AreAskedForOnceForOneFreeName)
{
    EXPECT_EQ(freeName(), "x03");
    EXPECT_THAT(log, ElementsAre(11, 12, 13));
}

TEST_F(AskedNodeNames, AreAskedForOnceThoughAnotherFreeNameIsLookedForMeanwhile)
{
    first.whenFirstAsked = [this] { scene.getFreeNodeName("a", "y"); };
    EXPECT_EQ(freeName(), "x03");
    EXPECT_THAT(log, ElementsAre(11, /**/ 11, 12, 13, /**/ 12, 13));
}

TEST_F(AskedNodeNames, OfANodeThatIsRegisteredWhileTheyAreAskedForAreFound)
{
    for (unsigned int const id : {0u, 1u})
    {
        NamedNode late(id, "late");
        first.whenFirstAsked = [&] { scene.put(late); };
        EXPECT_EQ(find("late"), &late);
        scene.take(id);
    }
}

// Of two nodes with one name, the first changes while a node in front of it is asked. Another one may be
// registered as well.
TEST_F(AskedNodeNames, AreThoseThatAreLeftAfterAChangeWhileTheyAreAskedFor)
{
    struct Change
    {
        char const* what;
        std::function<void(GraphNodeBase&)> happen;
        bool secondStays;
    };
    Change const changes[] = {
        {"a removal", [&](GraphNodeBase& node) { scene.take(node.getId()); }, true},
        {"another id", [](GraphNodeBase& node) { node.setId(1000); }, true},
        {"another name", [](GraphNodeBase& node) { node.setName("renamed"); }, true},
        {"the removal of all", [&](GraphNodeBase&) { scene.removeAllNodes(); }, false},
    };
    NamedNode another(1001, "another");
    for (bool const anotherComes : {false, true})
        for (Change const& change : changes)
        {
            SCOPED_TRACE(::testing::Message() << change.what << (anotherComes ? " after another came" : ""));
            GraphNodeBase& node = put(20, "same");
            GraphNodeBase const& behind = put(21, "same");
            first.whenFirstAsked = [&]
            {
                if (anotherComes) scene.put(another);
                change.happen(node);
            };
            EXPECT_EQ(find("same"), change.secondStays ? &behind : nullptr);
            scene.removeAllNodes();
            for (AskedNode* const asked : {&first, &second, &third}) scene.put(*asked);
        }
}

} // namespace kestrel::graph::test
