#include "FailingAllocator.h"

#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <foundation/FileStream.h>
#include <foundation/KS_String.h>
#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>

namespace kestrel::graph::test
{

namespace
{

// A graph with something of everything: a compound "box" under the root with two nodes in it, wired to each
// other and, through an interface pair, to the outside; and nodes outside.
struct Graph : TestGraph<>
{
    Graph()
        : box(addNode("box")),
          inner(addFilter("inner", &box)),
          second(addFilter("second", &box)),
          outside(addFilter("outside")),
          other(addFilter("other")),
          empty(addNode("empty")),
          detached(newNode<TestNode>("detached")),
          left(addFilter("left", &detached)),
          right(addFilter("right", &detached))
    {
        scene.connect(pin(inner, "out"), pin(second, "in"), false);
        scene.addCompoundInterfaceNode(PIN_OUTPUT, &box, interfaceNode, compoundPin, interfacePin);
        scene.connect(pin(second, "out"), interfacePin, false);
        fed = scene.connect(compoundPin, pin(outside, "in"), false);
    }

    static GraphNodePin* pin(GraphNodeBase& node, char const* name) { return node.getPinByName(name); }

    TestNode& box;
    TestNode& inner;
    TestNode& second;
    TestNode& outside;
    TestNode& other;
    TestNode& empty;    // no pins: its map entries would go stale when it leaves the tree
    TestNode& detached; // in no scene, but its two children are
    TestNode& left;
    TestNode& right;
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    GraphConnection* fed = nullptr;
};

// What a host can see of the graph, in one text.
std::string picture(Graph& graph)
{
    std::string text;
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    graph.scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes)
    {
        text += std::to_string(node->getId()) + " " + node->getFullName().c_str() + ":";
        for (GraphNodeBase* child : node->getNodes()) text += std::string(" ") + child->getName().c_str();
        for (GraphNodePin* pin : node->getNodePins())
        {
            text +=
                std::string(" ") + pin->getName().c_str() + "=" + std::to_string(pin->getNumConnections());
            if (graph.scene.getPinPtrByFullName(pin->getFullName()) != pin) text += "?";
        }
        text += "\n";
    }
    for (GraphConnection* connection : graph.scene.getGraphConnections())
        text += std::string(connection->getFullName().c_str()) + "\n";
    return text;
}

using Change = std::function<void(Graph&)>;

std::string pictureAfter(Change const& change)
{
    Graph graph;
    change(graph);
    return picture(graph);
}

// Fails allocation 1, 2, 3, ... of the change until it gets through. After each failure the graph is whole
// and, for a single change, as it was; the same call then gets through.
void failEachAllocation(Change const& change, bool isSingleChange, bool persistently)
{
    std::string const after = pictureAfter(change);
    bool failed = true;
    for (long number = 1; failed && number < 10000; ++number)
    {
        SCOPED_TRACE("allocation " + std::to_string(number));
        long const living = livingAllocations();
        {
            Graph graph;
            std::string const before = picture(graph);
            failed = false;
            try
            {
                FailAllocation const failure(number, persistently);
                change(graph);
            }
            catch (std::bad_alloc const&)
            {
                failed = true;
            }
            EXPECT_SCENE_INVARIANTS(graph.scene);
            if (isSingleChange)
            {
                EXPECT_EQ(picture(graph), failed ? before : after);
                if (failed) change(graph);
                EXPECT_EQ(picture(graph), after);
            }
            EXPECT_SCENE_INVARIANTS(graph.scene);
        }
        EXPECT_EQ(livingAllocations(), living);
        if (testing::Test::HasFailure()) return;
    }
    EXPECT_FALSE(failed);
}

struct NamedChange
{
    char const* name;
    bool isSingle;
    Change change;
};

void moveIn(Graph& graph)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&graph.outside);
    nodes.append(&graph.other);
    std::map<KS_String, KS_String> renames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputs;
    std::map<GraphNodeBase*, GraphNodeBase*> outputs;
    ArrayOfPtr<GraphNodeBase, KS_NO> newNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newPins;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> outer;
    ArrayOfPtr<GraphConnection, KS_NO> inner;
    graph.scene.moveNodesToCompound(nodes, &graph.box, renames, inputs, outputs, newNodes, newPins, removed,
                                    outer, inner);
}

void moveOut(Graph& graph)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&graph.second);
    std::map<KS_String, KS_String> renames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputs;
    std::map<GraphNodeBase*, GraphNodeBase*> outputs;
    ArrayOfPtr<GraphNodeBase, KS_NO> newNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newPins;
    Array<GraphConnection, _Wa> removedOuter;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> made;
    ArrayOfPtr<GraphConnection, KS_NO> inner;
    graph.scene.removeNodesFromCompoundCreatingInterfaces(&graph.box, nodes, renames, removedOuter, removed,
                                                          made, inner, inputs, outputs, newNodes, newPins);
}

NamedChange const changes[] = {
    {"connect", true,
     [](Graph& graph)
     { graph.scene.connect(Graph::pin(graph.outside, "out"), Graph::pin(graph.other, "in"), false); }},
    {"connect nodes", true,
     [](Graph& graph)
     {
         graph.scene.connect(static_cast<GraphNodeBase*>(&graph.outside),
                             static_cast<GraphNodeBase*>(&graph.other), false);
     }},
    {"removeConnection", true, [](Graph& graph) { graph.scene.removeConnection(graph.fed); }},
    {"removeAllConnections", false, [](Graph& graph) { graph.scene.removeAllConnections(); }},
    {"addNodeToGraph", true,
     [](Graph& graph)
     {
         auto node = std::make_unique<TestNode>(77);
         graph.scene.addNodeToGraph(node.get());
         static_cast<void>(node.release());
     }},
    {"removeNodeFromGraph", false,
     [](Graph& graph)
     {
         graph.scene.removeNodePins(&graph.other);
         graph.scene.removeNodeFromGraph(&graph.other);
     }},
    {"createNewPin", true, [](Graph& graph) { graph.scene.createNewPin(&graph.other, 1, PIN_INPUT); }},
    {"addNodePin", true,
     [](Graph& graph)
     {
         auto pin = std::make_unique<GraphNodePin>(nullptr, 1, PIN_INPUT);
         pin->setId(4000000);
         graph.scene.addNodePin(&graph.other, pin.get());
         static_cast<void>(pin.release());
     }},
    {"addNode", true, [](Graph& graph) { graph.outside.addNode(&graph.box); }},
    {"addNode of the first child", true, [](Graph& graph) { graph.outside.addNode(&graph.inner); }},
    {"setNodeOwner", true, [](Graph& graph) { graph.box.setNodeOwner(&graph.outside); }},
    {"setNodeOwner to null", true, [](Graph& graph) { graph.empty.setNodeOwner(nullptr); }},
    {"setNodeOwner of a node without scene", true,
     [](Graph& graph) { graph.detached.setNodeOwner(&graph.root); }},
    {"setName of a compound", true, [](Graph& graph) { graph.box.setName("a box with a longer name"); }},
    {"setName of a pin", true,
     [](Graph& graph) { Graph::pin(graph.outside, "in")->setName("another name for the pin"); }},
    {"setName of an interface pin", true,
     [](Graph& graph) { graph.interfacePin->setName("another name for the pair"); }},
    {"setId", true, [](Graph& graph) { graph.other.setId(500); }},
    {"addCompoundInterfaceNode", false,
     [](Graph& graph)
     {
         GraphNodeBase* node = nullptr;
         GraphNodePin* compoundPin = nullptr;
         GraphNodePin* interfacePin = nullptr;
         graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.box, node, compoundPin, interfacePin);
     }},
    {"moveNodesToCompound", false, moveIn},
    {"removeNodesFromCompoundCreatingInterfaces", false, moveOut},
    {"clearing the pins of a node", false, [](Graph& graph) { graph.scene.removeNodePins(&graph.box); }},
};

} // namespace

TEST(AllocationFailure, OnceInAnyPlaceLeavesTheGraphWholeAndAllowsToTryAgain)
{
    for (NamedChange const& change : changes)
    {
        SCOPED_TRACE(change.name);
        failEachAllocation(change.change, change.isSingle, false);
    }
}

TEST(AllocationFailure, FromAnyPlaceOnLeavesTheGraphWholeAndAllowsToTryAgain)
{
    for (NamedChange const& change : changes)
    {
        SCOPED_TRACE(change.name);
        failEachAllocation(change.change, change.isSingle, true);
    }
}

TEST(AllocationFailure, LeavesTheTargetOfASceneAssignmentUnchanged)
{
    Graph source;
    TestGraph<> other;
    TestNode& node = other.addFilter("node");
    other.scene.connect(&node, &node, false);
    GraphNodePin* const pin = node.getPinByName("in");
    bool failed = true;
    for (long number = 1; failed && number < 10000; ++number)
    {
        SCOPED_TRACE("allocation " + std::to_string(number));
        long const living = livingAllocations();
        {
            GraphScene target(other.scene);
            failed = false;
            try
            {
                FailAllocation const failure(number, true);
                target = source.scene;
            }
            catch (std::bad_alloc const&)
            {
                failed = true;
            }
            GraphScene const& expected = failed ? static_cast<GraphScene&>(other.scene) : source.scene;
            EXPECT_EQ(target.getId(), expected.getId());
            EXPECT_EQ(target.getNumberOfNodes(), expected.getNumberOfNodes());
            EXPECT_EQ(target.getNumberOfConnections(), expected.getNumberOfConnections());
            EXPECT_EQ(target.getPinPtrById(pin->getId()), failed ? pin : nullptr);
            EXPECT_EQ(target.getPinPtrByFullName("root.node.in"), failed ? pin : nullptr);
            EXPECT_SCENE_INVARIANTS(target);
        }
        EXPECT_EQ(livingAllocations(), living);
        if (HasFailure()) return;
    }
    EXPECT_FALSE(failed);
}

TEST(AllocationFailure, LeavesATextEmptyThatWasReadWithoutItsNul)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::tmpfile(), std::fclose);
    ASSERT_NE(file, nullptr);
    FileStreamRaw stream(file.get());
    stream.writeValue(5u);
    stream.write("12345", 5);
    std::rewind(file.get());
    KS_String text("abcd");
    ASSERT_EQ(text.capacity(), 5u); // room for the bytes, none for a NUL behind them
    bool failed = false;
    try
    {
        FailAllocation const failure(1, true);
        text.read(stream);
    }
    catch (std::bad_alloc const&)
    {
        failed = true;
    }
    EXPECT_TRUE(failed);
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.size(), 1u);
    EXPECT_EQ(*text.c_str(), '\0');
}

TEST(AllocationFailure, DoesNotReachTheDestructionOfPins)
{
    long const living = livingAllocations();
    {
        TestGraph<> graph;
        TestNode& node = graph.newNode("node");
        for (unsigned int id = 1; id <= 20; ++id)
        {
            GraphNodePin* const pin = new GraphNodePin(nullptr, 1, PIN_INPUT);
            pin->setId(id);
            node.addNodePin(pin);
        }
        node.refNodePins().append(node.getNodePins()[3]);
        bool failed = false;
        try
        {
            FailAllocation const failure(1, true);
            node.destroyNodePins();
        }
        catch (std::bad_alloc const&)
        {
            failed = true;
        }
        EXPECT_FALSE(failed);
        EXPECT_TRUE(node.getNodePins().isEmpty());
    }
    EXPECT_EQ(livingAllocations(), living);
}

TEST(AllocationFailure, OfANewPinLeavesTheEntryOfAnotherPinOfThatIdAlone)
{
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        Graph graph;
        std::unique_ptr<GraphNodePin> const last(graph.scene.createNewPin(1, PIN_INPUT));
        graph.scene.removeNodePin(last.get());
        GraphNodePin hosts;
        hosts.setId(last->getId() + 1); // the id that the next pin gets
        graph.scene.addNodePin(&hosts);
        try
        {
            FailAllocation const failure(number, false);
            graph.scene.createNewPin(&graph.other, 1, PIN_INPUT);
        }
        catch (std::bad_alloc const&)
        {}
        EXPECT_EQ(graph.scene.getPinPtrById(hosts.getId()), &hosts);
        graph.scene.removeNodePin(&hosts);
    }
}

} // namespace kestrel::graph::test
