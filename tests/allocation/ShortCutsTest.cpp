// What a short cut saves shows in no result, but in the memory that an operation takes.
#include "FailingAllocator.h"

#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

template <class Operation>
long allocationsOf(Operation operate)
{
    long const before = allocationsMade();
    operate();
    return allocationsMade() - before;
}

using Nodes = std::vector<std::unique_ptr<GraphNodeBase>>;

} // namespace

// ---- Nodes by their full names

namespace
{

/// A look-up by full name in a scene of nodes that need not be asked.
class NodeIndex : public testing::Test
{
protected:
    template <class Node = GraphNodeBase>
    GraphNodeBase& put(unsigned int id, char const* name)
    {
        nodes.push_back(std::make_unique<Node>(id));
        nodes.back()->setName(name);
        scene.addNodeToGraph(nodes.back().get());
        return *nodes.back();
    }

    static long allocationsOfLookUp(GraphScene const& in, char const* name, GraphNodeBase const* expected)
    {
        KS_String const fullName(name);
        GraphNodeBase const* found = nullptr;
        long const allocations = allocationsOf([&] { found = in.getNodePtrByFullName(fullName); });
        EXPECT_EQ(found, expected) << name;
        return allocations;
    }

    long allocationsOfLookUp(char const* name, GraphNodeBase const* expected) const
    {
        return allocationsOfLookUp(scene, name, expected);
    }

    /// That nothing has to be put into the index for it.
    void expectItIsThere()
    {
        for (GraphNodeBase* const node : {&put(101, "first"), &put(102, "second"), &put(103, "third")})
            EXPECT_EQ(allocationsOfLookUp(node->getName().c_str(), node), 0);
        EXPECT_EQ(allocationsOfLookUp("missing", nullptr), 0);
    }

    /// The same.
    void expectItStaysWhenANodeIsRemoved()
    {
        scene.removeNodeFromGraph(nodes.back().get());
        EXPECT_EQ(allocationsOfLookUp("missing", nullptr), 0);
    }

    Nodes nodes;
    class : public GraphScene
    {
    public:
        using GraphScene::removeNodeFromMapById;
    } scene;
};

} // namespace

TEST_F(NodeIndex, IsThereBeforeTheFirstLookUp)
{
    expectItIsThere();
    expectItStaysWhenANodeIsRemoved();
}

TEST_F(NodeIndex, IsThereAfterAllNodesWereRemoved)
{
    put(1, "removed");
    scene.removeAllNodes();
    expectItIsThere();
    expectItStaysWhenANodeIsRemoved();
}

TEST_F(NodeIndex, IsThereAfterAllNodesWereRemovedOfWhichOneHadEnded)
{
    put(1, "ended");
    nodes.clear();
    scene.removeAllNodes();
    expectItIsThere();
    expectItStaysWhenANodeIsRemoved();
}

// The first scene in which a node is has it in its index.
TEST_F(NodeIndex, IsThereAfterAllNodesWereRemovedOfWhichOneWasInAnotherSceneToo)
{
    GraphScene first;
    GraphNodeBase shared(1);
    first.addNodeToGraph(&shared);
    scene.addNodeToGraph(&shared);
    scene.removeAllNodes();
    expectItIsThere();
}

TEST_F(NodeIndex, IsFilledAgainAfterANodeThatHadEndedWasRemoved)
{
    put(1, "ended");
    nodes.clear();
    for (unsigned int id = 2; id < 6; ++id) put(id, std::to_string(id).c_str());
    scene.removeNodeFromMapById(1);
    EXPECT_GT(allocationsOfLookUp("3", nodes[1].get()), 0);
    EXPECT_EQ(allocationsOfLookUp("3", nodes[1].get()), 0);
    expectItStaysWhenANodeIsRemoved();
}

TEST_F(NodeIndex, IsFilledAgainAfterANodeOfAnotherSceneWasRemoved)
{
    GraphScene first;
    GraphNodeBase shared(1);
    first.addNodeToGraph(&shared);
    for (unsigned int id = 2; id < 6; ++id) put(id, std::to_string(id).c_str());
    scene.addNodeToGraph(&shared);
    EXPECT_GT(allocationsOfLookUp("3", nodes[1].get()), 0);
    EXPECT_GT(allocationsOfLookUp("3", nodes[1].get()), 0);
    first.removeNodeFromGraph(&shared);
    EXPECT_GT(allocationsOfLookUp("3", nodes[1].get()), 0);
    EXPECT_EQ(allocationsOfLookUp("3", nodes[1].get()), 0);
    expectItStaysWhenANodeIsRemoved();
}

// Nodes of one full name take memory in the index, so without memory a rename gives it up half-way.
TEST_F(NodeIndex, IsFilledAgainAfterARenameWithoutMemory)
{
    for (long number = 1; number < 12; ++number)
    {
        SCOPED_TRACE(number);
        GraphScene crowded;
        GraphNodeBase owner(1);
        Nodes children;
        owner.setName("owner");
        for (unsigned int id = 2; id < 6; ++id)
        {
            children.push_back(std::make_unique<GraphNodeBase>(id));
            children.back()->setName("same");
            owner.addNode(children.back().get());
            crowded.addNodeToGraph(children.back().get());
        }
        try
        {
            FailAllocation const failure(number, false);
            owner.setName("other");
        }
        catch (std::bad_alloc const&)
        {}
        KS_String const fullName = children[0]->getFullName();
        EXPECT_EQ(crowded.getNodePtrByFullName(fullName), children[0].get());
        EXPECT_EQ(allocationsOfLookUp(crowded, fullName.c_str(), children[0].get()), 0);
        crowded.removeNodeFromGraph(children[0].get());
        EXPECT_EQ(allocationsOfLookUp(crowded, fullName.c_str(), children[1].get()), 0);
    }
}

TEST_F(NodeIndex, HoldsNodesOfADeclaredClass)
{
    class DeclaredNode final : public GraphNodeBase
    {
    public:
        using GraphNodeBase::GraphNodeBase;
    };
    class SilentNode final : public GraphNodeBase
    {
    public:
        using GraphNodeBase::GraphNodeBase;
    };
    GraphNodeBase& node = put<DeclaredNode>(1, "node");
    EXPECT_GT(allocationsOfLookUp("node", &node), 0);
    declarePlainNames<DeclaredNode>();
    node.setName("declared");
    EXPECT_EQ(allocationsOfLookUp("declared", &node), 0);
    node.setName("again");
    EXPECT_EQ(allocationsOfLookUp("again", &node), 0);
    GraphNodeBase const& silent = put<SilentNode>(2, "silent");
    EXPECT_GT(allocationsOfLookUp("silent", &silent), 0);
}

// ---- Free names

namespace
{

/// With names "root.x01", "root.x02" and so on, of children or of nodes without owner.
long allocationsOfFreeName(unsigned int taken, bool hasRoot)
{
    GraphScene scene;
    GraphNodeBase root;
    root.setName("root");
    if (hasRoot) scene.setRootNode(&root);
    KS_String const owner("root");
    KS_String const base("x");
    Nodes nodes;
    for (unsigned int id = 1; id <= taken; ++id)
    {
        KS_String const name = scene.getFreeNodeName(owner, base);
        nodes.push_back(std::make_unique<GraphNodeBase>(id));
        nodes.back()->setName(hasRoot ? name : owner + "." + name);
        scene.addNodeToGraph(nodes.back().get());
    }
    KS_String free = scene.getFreeNodeName(owner, base);
    EXPECT_EQ(std::string(free), std::string("x").append(std::to_string(taken + 1)));
    return allocationsOf([&] { free = scene.getFreeNodeName(owner, base); });
}

} // namespace

TEST(FreeNames, TakeNoMoreMemoryWhenManyAreTaken)
{
    for (bool const hasRoot : {false, true})
    {
        SCOPED_TRACE(hasRoot);
        EXPECT_EQ(allocationsOfFreeName(60, hasRoot), allocationsOfFreeName(10, hasRoot));
    }
}

TEST(FreeNames, TakeNoMemoryForARenameAsLongAsNobodyAsksForOne)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.addNode("a name of more than a few bytes"));
    KS_String const name("renamed");
    KS_String const other("in");
    long const before = allocationsOf([&] { pin.setName(name); });
    for (int i = 0; i < 9; ++i) graph.addInput(graph.root, graph.scene.getFreePinName("root", "in"));
    graph.scene.getFreePinName("root", "in"); // is remembered from now on
    long const after = allocationsOf([&] { pin.setName(other); });
    EXPECT_LT(before, after);
}

// ---- Full names

TEST(FullNames, OfUpTo256BytesArePutTogetherWithoutMemory)
{
    for (unsigned int const length : {255u, 256u, 257u})
    {
        SCOPED_TRACE(length);
        GraphScene scene;
        GraphNodeBase node;
        node.setName(KS_String(std::string(length - 3, 'n')));
        GraphNodePin* const pin = scene.createNewPin(&node, 1, PIN_INPUT);
        pin->setName("in");
        ASSERT_EQ(pin->getFullName().length(), length);
        EXPECT_EQ(allocationsOf([&] { scene.removeNodePin(pin); }), length > 256 ? 1 : 0);
        EXPECT_EQ(scene.getPinPtrByFullName(pin->getFullName()), nullptr);
        node.destroyNodePins();
    }
}

// ---- The array of connections

namespace
{

/// Many connections, few at each pin.
class ConnectionArray : public testing::Test
{
protected:
    static constexpr unsigned int pinsOnEachSide = 8;

    ConnectionArray()
    {
        graph.scene.setUseAdjacencyMap(false);
        for (unsigned int i = 0; i < pinsOnEachSide; ++i)
        {
            sources.push_back(&graph.addOutput(graph.root, KS_String(std::to_string(i))));
            targets.push_back(&graph.addInput(graph.addNode(KS_String(std::to_string(i)))));
        }
    }

    GraphConnection* connect(unsigned int number = 0)
    {
        return graph.scene.connect(sources[number % pinsOnEachSide],
                                   targets[number / pinsOnEachSide % pinsOnEachSide], false);
    }

    void fill(unsigned int count)
    {
        while (graph.scene.getNumberOfConnections() < count) connect(graph.scene.getNumberOfConnections());
    }

    GraphConnection const* at(unsigned int position) const
    {
        return graph.scene.getGraphConnections()[position];
    }

    long allocationsOfRemoval(GraphConnection const* connection)
    {
        return allocationsOf([&] { graph.scene.removeConnection(connection); });
    }

    /// The array belongs to the host from now on, too.
    ArrayOfPtr<GraphConnection, KS_NO>& lend() { return graph.scene.refGraphConnections(); }

    TestGraph<> graph;
    std::vector<GraphNodePin*> sources;
    std::vector<GraphNodePin*> targets;
};

} // namespace

TEST_F(ConnectionArray, ThatNoHostHasHadInHandNeedsNoIndex)
{
    fill(100);
    EXPECT_EQ(allocationsOfRemoval(at(50)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(0)), 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(ConnectionArray, OfFewerThan64ConnectionsNeedsNoIndex)
{
    fill(63);
    lend();
    EXPECT_EQ(allocationsOfRemoval(at(10)), 0);
}

TEST_F(ConnectionArray, Of64ConnectionsGetsAnIndexThatFollowsEachChange)
{
    fill(64);
    lend();
    EXPECT_GT(allocationsOfRemoval(at(10)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(10)), 0); // the one that was moved there
    EXPECT_EQ(allocationsOfRemoval(connect()), 0);
    fill(70);
    EXPECT_EQ(allocationsOfRemoval(at(69)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(0)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(0)), 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(ConnectionArray, GivesItsIndexBackWhenFewerThan32ConnectionsAreLeft)
{
    fill(64);
    lend();
    auto const freedByRemoval = [this]
    {
        long const before = livingAllocations();
        graph.scene.removeConnection(at(0));
        return before - livingAllocations();
    };
    freedByRemoval();
    while (graph.scene.getNumberOfConnections() > 32) EXPECT_EQ(freedByRemoval(), 1); // the connection
    EXPECT_EQ(freedByRemoval(), 1);
    EXPECT_GT(freedByRemoval(), 1);
    EXPECT_EQ(freedByRemoval(), 1);
}

TEST_F(ConnectionArray, ThatTheHostHasReorderedGetsAnotherIndex)
{
    fill(100);
    std::reverse(lend().begin(), lend().end());
    EXPECT_GT(allocationsOfRemoval(at(10)), 0);
    std::reverse(lend().begin(), lend().end());
    EXPECT_EQ(allocationsOfRemoval(at(10)), 0); // is searched
    EXPECT_GT(allocationsOfRemoval(at(10)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(10)), 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(ConnectionArray, ThatTheHostHasReplacedGetsAnotherIndex)
{
    fill(100);
    lend();
    EXPECT_GT(allocationsOfRemoval(at(10)), 0);
    graph.scene.setGraphConnections(ArrayOfPtr<GraphConnection, KS_NO>(lend()));
    EXPECT_GT(allocationsOfRemoval(at(10)), 0);
    EXPECT_EQ(allocationsOfRemoval(at(10)), 0);
}

// ---- What a host's override throws leaves nothing behind

TEST(OverridesThatThrow, LeaveNoInterfaceNodeBehind)
{
    class FailingScene : public GraphScene
    {
    public:
        bool addNodeToGraph(GraphNodeBase*) override { throw std::bad_alloc(); }
    };
    FailingScene scene;
    GraphNodeBase compound(1);
    GraphNodeBase* node = nullptr;
    GraphNodePin* outer = nullptr;
    GraphNodePin* inner = nullptr;
    long const before = livingAllocations();
    EXPECT_THROW(scene.addCompoundInterfaceNode(PIN_INPUT, &compound, node, outer, inner), std::bad_alloc);
    EXPECT_EQ(livingAllocations(), before);
}

TEST(OverridesThatThrow, LeaveNoPinBehind)
{
    class FailingNode : public GraphNodeBase
    {
    public:
        bool addNodePin(GraphNodePin*) override { throw std::bad_alloc(); }
    };
    GraphScene scene;
    FailingNode node;
    std::unique_ptr<GraphNodePin> const other(scene.createNewPin(1, PIN_INPUT)); // so that the map has room
    long const before = livingAllocations();
    EXPECT_THROW(scene.createNewPin(&node, 1, PIN_INPUT), std::bad_alloc);
    EXPECT_EQ(livingAllocations(), before);
}

} // namespace kestrel::graph::test
