#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;

// --- null

TEST(BadInput, NullInListsOfNodesIsSkipped)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphConnection* const made = graph.scene.connect(&a, &b, false);
    Nodes nodes;
    for (GraphNodeBase* node : std::vector<GraphNodeBase*>{nullptr, &a, nullptr, &b}) nodes.append(node);
    for (bool const skipInterfaces : {false, true})
    {
        Connections found;
        EXPECT_TRUE(graph.scene.getConnectionsInvolvingNodes(nodes, skipInterfaces, true, true, found));
        EXPECT_THAT(listed(found), ElementsAre(made));
        EXPECT_TRUE(graph.scene.getConnectionsInvolvingOnlyNodes(nodes, skipInterfaces, true, found));
        EXPECT_THAT(listed(found), ElementsAre(made));
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

/// A list as the moves may leave it: a connection that was refused is a null entry.
Connections withNull(GraphConnection* connection)
{
    Connections connections;
    connections.append(nullptr);
    connections.append(connection);
    return connections;
}

TEST(BadInput, NullInAListOfConnectionsHasNoNodes)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    Connections const connections = withNull(graph.scene.connect(&a, &a, false));
    for (bool const skipSameNode : {false, true})
    {
        Nodes found;
        EXPECT_TRUE(graph.scene.getNodesConnectedBase(connections, found, true, true, skipSameNode));
        EXPECT_EQ(skipSameNode ? 0u : 1u, found.size());
        EXPECT_FALSE(found.contains(nullptr));
    }
}

TEST(BadInput, NullInAListOfConnectionsIsFilteredOut)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    GraphConnection* const made = graph.scene.connect(&a, &a, false);
    Connections connections = withNull(made);
    Nodes nodes;
    nodes.append(&a);
    EXPECT_TRUE(graph.scene.getConnectionsInvolvingOnlyNodes(nodes, false, true, connections));
    EXPECT_THAT(listed(connections), ElementsAre(made));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, NullInTheConnectionArrayIsNoConnection)
{
    TestGraph<> graph;
    graph.scene.setUseAdjacencyMap(false);
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    Connections& array = graph.scene.refGraphConnections();
    array.append(nullptr);
    graph.scene.connect(&a, &b, false);
    array.append(nullptr);
    for (bool const flag : {false, true})
    {
        EXPECT_TRUE(graph.scene.areNodesConnected(&a, &b, flag, flag));
        EXPECT_EQ(flag, graph.scene.areNodesConnected(&b, &a, flag, flag));
        EXPECT_TRUE(graph.scene.hasNodeAnyConnection(&b, PIN_INPUT, flag));
        EXPECT_FALSE(graph.scene.hasNodeAnyConnection(&b, PIN_OUTPUT, flag));
    }
    std::string const xml(graph.scene.toXml());
    EXPECT_EQ(xml.find("<connection "), xml.rfind("<connection "));
    EXPECT_NE(xml.find("<connection "), std::string::npos);
    EXPECT_TRUE(graph.scene.removeAllConnections());
    EXPECT_FALSE(a.getNodePins()[1]->isConnected());
    array.removeAll(nullptr);
    EXPECT_TRUE(array.isEmpty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, NullInListsOfPinsIsRefused)
{
    TestGraph<> graph;
    GraphNodePin* const pin = new GraphNodePin(nullptr, 1u, PIN_INPUT);
    pin->setId(4711);
    Pins pins;
    pins.append(pin);
    pins.append(nullptr);
    EXPECT_FALSE(graph.scene.addNodePins(&graph.root, pins));
    EXPECT_THAT(listed(graph.root.getNodePins()), ElementsAre(pin));
    EXPECT_EQ(pin, graph.scene.getPinPtrById(4711));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, NullNodesHaveNothingToGather)
{
    TestGraph<> graph;
    Nodes nodes;
    std::map<GraphNodePin*, Pins> pins;
    std::map<GraphNodePin*, Connections> connections;
    graph.scene.getGraphNodesAtLevel(nullptr, true, nodes);
    graph.scene.getGraphNodesAtLevel(nullptr, false, nodes);
    graph.scene.getNodeConnectionsByPin(nullptr, pins);
    graph.scene.getNodeConnectionsByPin(nullptr, connections);
    graph.scene.setRootNode(nullptr);
    graph.scene.getAllGraphCompounds(nodes);
    EXPECT_TRUE(nodes.isEmpty());
    EXPECT_TRUE(pins.empty());
    EXPECT_TRUE(connections.empty());
    EXPECT_FALSE(graph.scene.getIsDirty());
}

TEST(BadInput, ConnectionsWithoutPinsOrNodesHaveNoNodesToShow)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    GraphNodePin stray(nullptr, 1u, PIN_INPUT | PIN_OUTPUT);
    GraphConnection noPins;
    GraphConnection noNodes(&stray, &stray);
    GraphConnection whole(a.getNodePins()[1], a.getNodePins()[0]);
    Connections connections;
    for (GraphConnection* connection : {&noPins, &noNodes, &whole}) connections.append(connection);
    Nodes found;
    EXPECT_TRUE(graph.scene.getNodesConnectedBase(connections, found, true, true, true));
    EXPECT_FALSE(found.contains(&a));
    EXPECT_TRUE(graph.scene.getNodesConnectedBase(connections, found, true, true, false));
    EXPECT_TRUE(found.contains(&a));
    Connections alike;
    EXPECT_FALSE(graph.scene.getConnectionsLikeThis(noPins, alike));
    EXPECT_FALSE(graph.scene.hasConnectionsLikeThis(noPins));
    EXPECT_FALSE(graph.scene.hasConnectionsLikeThis(noNodes));
}

/// A host that promises candidates and offers none, or a null one.
class PromisingScene : public GraphScene
{
public:
    using GraphScene::getConnectablePins;

    bool getConnectablePins(GraphNodePin const*, GraphNodeBase const*, Pins& out, bool const&) const override
    {
        if (offersNull) out.append(nullptr);
        return true;
    }

    bool getConnectablePins(GraphNodeBase const*, GraphNodePin const*, Pins& out, bool const&) const override
    {
        if (offersNull) out.append(nullptr);
        return true;
    }

    bool getConnectablePins(GraphNodeBase const*, GraphNodeBase const*, Pins& sources, Pins& targets,
                            bool const&) const override
    {
        if (offersNull) sources.append(nullptr);
        if (offersNull) targets.append(nullptr);
        return true;
    }

    bool offersNull = false;
};

TEST(BadInput, PromisedCandidatesThatAreNotThereAreNotWired)
{
    for (bool const offersNull : {true, false})
    {
        TestGraph<PromisingScene> graph;
        graph.scene.offersNull = offersNull;
        TestNode& a = graph.addFilter("a");
        GraphNodeBase const* const node = &a;
        GraphNodePin const* const pin = a.getNodePins()[0];
        EXPECT_EQ(nullptr, graph.scene.connect(pin, node, false));
        EXPECT_EQ(nullptr, graph.scene.connect(node, pin, false));
        EXPECT_EQ(nullptr, graph.scene.connect(node, node, false));
        EXPECT_EQ(0u, graph.scene.getNumberOfConnections());
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

// --- unknown and stale ids

TEST(BadInput, IdsOfRemovedNodesAreUnknownEverywhere)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    graph.scene.connect(&a, &b, true);
    unsigned int const stale = a.getId();
    graph.scene.removeNodeFromGraph(&a);
    graph.scene.setIsDirty(false);
    Connections found;
    for (unsigned int const id : {stale, 0u, 4711u, 0xFFFFFFFEu, 0xFFFFFFFFu})
    {
        SCOPED_TRACE(id);
        EXPECT_EQ(nullptr, graph.scene.getNodePtrById(id));
        EXPECT_FALSE(graph.scene.hasGraphNodeWithId(id));
        EXPECT_FALSE(graph.scene.removeNodeFromGraph(id));
        EXPECT_FALSE(graph.scene.removeConnectionsWithNode(id));
        EXPECT_FALSE(graph.scene.getConnectionsWithNode(id, found, true, true, true, true));
    }
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(1u, graph.scene.getNumberOfConnections());
    EXPECT_FALSE(graph.scene.getIsDirty());
    graph.scene.addNodeToGraph(&a);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, IdOfARemovedNodeMayBeTakenByAnother)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.newNode("b");
    b.setId(a.getId());
    graph.scene.removeNodeFromGraph(&a);
    EXPECT_TRUE(graph.scene.addNodeToGraph(&b));
    EXPECT_FALSE(graph.scene.addNodeToGraph(&a));
    EXPECT_EQ(&b, graph.scene.getNodePtrById(a.getId()));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, RemovedNodeThatChangesItsIdTakesTheEntryOfItsSuccessor)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.newNode("b");
    b.setId(a.getId());
    graph.scene.removeNodeFromGraph(&a);
    graph.scene.addNodeToGraph(&b);
    a.setId(4711); // it still names its scene, which looks for the old id alone
    EXPECT_EQ(nullptr, graph.scene.getNodePtrById(b.getId()));
    EXPECT_EQ(&a, graph.scene.getNodePtrById(4711));
}

TEST(BadInput, ChangeOfAnUnknownIdChangesNothing)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    graph.scene.setIsDirty(false);
    graph.scene.updateNodeIdChange(&a, 4711, 4712);
    EXPECT_EQ(nullptr, graph.scene.getNodePtrById(4712));
    EXPECT_EQ(&a, graph.scene.getNodePtrById(a.getId()));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// --- pins without nodes

TEST(BadInput, PinsWithoutNodesAnswerTheScenesQuestions)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    GraphNodePin out(nullptr, 1u, PIN_OUTPUT);
    GraphNodePin in(nullptr, 1u, PIN_INPUT);
    Pins pins;
    EXPECT_TRUE(graph.scene.isConnectionAllowed(&out, &in));
    EXPECT_TRUE(graph.scene.isConnectionAllowed(&out, static_cast<GraphNodeBase const*>(&a)));
    EXPECT_TRUE(graph.scene.getConnectablePins(&out, static_cast<GraphNodeBase const*>(&a), pins, true));
    EXPECT_TRUE(graph.scene.getConnectablePins(static_cast<GraphNodeBase const*>(&a), &in, pins, true));
    EXPECT_FALSE(graph.scene.hasPinConnections(&out));
    EXPECT_EQ(0u, graph.scene.getPinNumConnections(&in));
    out.setName("renamed");
    EXPECT_STREQ("renamed", out.getFullName().c_str());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, PinsWithoutNodesAreWiredWithNodesAndUnwiredAgain)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    GraphNodePin out(nullptr, 1u, PIN_OUTPUT);
    GraphNodePin in(nullptr, 1u, PIN_INPUT);
    EXPECT_NE(nullptr, graph.scene.connect(&out, static_cast<GraphNodeBase const*>(&a), false));
    EXPECT_NE(nullptr, graph.scene.connect(static_cast<GraphNodeBase const*>(&a), &in, false));
    EXPECT_EQ(2u, graph.scene.getNumberOfConnections());
    for (bool const adjacency : {true, false})
    {
        graph.scene.setUseAdjacencyMap(adjacency);
        EXPECT_FALSE(graph.scene.areNodesConnected(&a, &a, true, true));
    }
    graph.scene.setUseAdjacencyMap(true);
    EXPECT_SCENE_INVARIANTS(graph.scene);
    EXPECT_TRUE(graph.scene.removeConnectionsWithNode(&a));
    EXPECT_FALSE(in.isConnected());
    EXPECT_FALSE(out.isConnected());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(BadInput, ConnectionsOfPinsWithoutNodesAreExportedWithoutIds)
{
    TestGraph<> graph;
    GraphNodePin out(nullptr, 1u, PIN_OUTPUT);
    GraphNodePin in(nullptr, 1u, PIN_INPUT);
    GraphConnection* const made = graph.scene.connect(&out, &in, false);
    std::string const xml(graph.scene.toXml());
    EXPECT_NE(std::string::npos, xml.find("<connection source-node=\"-1\" target-node=\"-1\"/>\n"));
    graph.scene.removeConnection(made);
}

// --- names

char const* const oddNames[] = {
    "",     " ",         "  two  blanks ",
    ".",    "..",        "a.b",
    ".a.",  "a > b",     ">",
    "%",    "%s",        "%d%n%s",
    "100%", "%%02",      "\"",
    "'",    "\"quoted'", "<&>",
    "\n",   "a\tb\r\n",  "\x80",
    "\xFF", "\xC3\xBC",  "gr\xC3\xB6\xC3",
    "root", "root.in",   "Untitled",
    "\\",   "a > b.",    "> > >",
    "-",    "\x01\x7F",
};

/// A node and its two pins, all of one odd name, wired to root.b.
struct OddlyNamed
{
    explicit OddlyNamed(KS_String const& name)
        : node(graph.addNode(name)),
          out(graph.addOutput(node, name)),
          b(graph.addFilter("b")),
          connection(graph.scene.connect(&out, static_cast<GraphNodeBase const*>(&b), false))
    {}

    TestGraph<> graph;
    TestNode& node;
    GraphNodePin& out;
    TestNode& b;
    GraphConnection* connection;
};

void forEachOddName(std::function<void(OddlyNamed&, std::string const&)> const& check)
{
    for (char const* name : oddNames)
    {
        SCOPED_TRACE(::testing::PrintToString(name));
        OddlyNamed odd(name);
        check(odd, name);
        EXPECT_SCENE_INVARIANTS(odd.graph.scene);
    }
}

TEST(BadInput, OddNamesAreTakenAsTheyAre)
{
    forEachOddName(
        [](OddlyNamed& odd, std::string const& name)
        {
            std::string const nodeName = "root." + name;
            std::string const pinName = nodeName + "." + name;
            EXPECT_EQ(name, std::string(odd.node.getName()));
            EXPECT_EQ(nodeName, std::string(odd.node.getFullName()));
            EXPECT_EQ(pinName, std::string(odd.out.getFullName()));
            ASSERT_NE(nullptr, odd.connection);
            EXPECT_EQ(pinName + " > root.b.in", std::string(odd.connection->getFullName()));
        });
}

TEST(BadInput, OddNamesAreFound)
{
    forEachOddName(
        [](OddlyNamed& odd, std::string const&)
        {
            GraphScene& scene = odd.graph.scene;
            EXPECT_EQ(&odd.node, scene.getNodePtrByFullName(odd.node.getFullName()));
            EXPECT_EQ(&odd.out, scene.getPinPtrByFullName(odd.out.getFullName()));
            EXPECT_EQ(&odd.out, scene.getPinPtrByFullNameCaseInsensitive(odd.out.getFullName()));
        });
}

TEST(BadInput, OddNamesAreFollowedByTheMaps)
{
    forEachOddName(
        [](OddlyNamed& odd, std::string const& name)
        {
            GraphScene& scene = odd.graph.scene;
            odd.node.setName("plain");
            odd.out.setName("pin");
            EXPECT_EQ(&odd.out, scene.getPinPtrByFullName("root.plain.pin"));
            odd.node.setName(name.c_str());
            odd.out.setName(name.c_str());
            EXPECT_EQ(&odd.out, scene.getPinPtrByFullName(("root." + name + "." + name).c_str()));
            odd.node.setNodeOwner(&odd.b);
            EXPECT_EQ(&odd.out, scene.getPinPtrByFullName(("root.b." + name + "." + name).c_str()));
        });
}

TEST(BadInput, OddNamesAreStemsOfFreeNamesAndNeverFormats)
{
    forEachOddName(
        [](OddlyNamed& odd, std::string const& name)
        {
            GraphScene& scene = odd.graph.scene;
            KS_String const text(name.c_str());
            EXPECT_EQ(name + "01", std::string(scene.getFreePinName(odd.node.getFullName(), text)));
            EXPECT_EQ(name + "01", std::string(scene.getFreeNodeName("root", text)));
            bool const endsWithDigits = name == "%%02";
            std::string const next = endsWithDigits ? "%%01" : name + "1";
            EXPECT_EQ(next, std::string(odd.node.getFreePinNameLikeThis(text)));
            EXPECT_EQ(next, std::string(odd.graph.root.getFreeNodeNameLikeThis(text, nullptr)));
        });
}

TEST(BadInput, OddNamesDoNotReachTheExport)
{
    forEachOddName(
        [](OddlyNamed& odd, std::string const&)
        {
            std::string const xml(odd.graph.scene.toXml());
            odd.node.setName("plain");
            odd.out.setName("pin");
            EXPECT_EQ(std::string(odd.graph.scene.toXml()), xml);
        });
}

TEST(BadInput, LongNamesAreTakenAsTheyAre)
{
    std::string const longName(100000, 'n');
    OddlyNamed odd{KS_String(longName.c_str())};
    EXPECT_EQ("root." + longName + "." + longName, std::string(odd.out.getFullName()));
    EXPECT_EQ(&odd.out, odd.graph.scene.getPinPtrByFullName(odd.out.getFullName()));
    EXPECT_EQ(longName + "01", std::string(odd.graph.scene.getFreeNodeName("root", longName.c_str())));
    EXPECT_SCENE_INVARIANTS(odd.graph.scene);
}

TEST(BadInput, NodeWhoseNameHoldsADotIsMistakenForAChildByTheFirstId)
{
    TestGraph<> graph;
    TestNode& dotted = graph.addNode("a.b");
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b", &a);
    EXPECT_EQ(&dotted, graph.scene.getNodePtrByFullName("root.a.b"));
    dotted.setName("other");
    EXPECT_EQ(&b, graph.scene.getNodePtrByFullName("root.a.b"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// --- the tree

TEST(BadInput, TreeStaysATreeWhateverIsPutWhere)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b", &a);
    graph.scene.setIsDirty(false);
    a.setNodeOwner(&a);
    a.setNodeOwner(&b);
    b.addNode(&a);
    b.addNode(&graph.root);
    graph.root.setNodeOwner(&b);
    a.addNode(&a);
    a.addNode(nullptr);
    EXPECT_EQ(&graph.root, a.getNodeOwner());
    EXPECT_EQ(&a, b.getNodeOwner());
    EXPECT_EQ(nullptr, graph.root.getNodeOwner());
    EXPECT_TRUE(b.getNodes().isEmpty());
    EXPECT_NE(nullptr, graph.scene.getPinPtrByFullName("root.a.b.in"));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// --- depth

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif

// Sanitizers make frames several times larger.
constexpr std::size_t stackSize = (sanitized ? 8u : 1u) << 20;

using Work = std::function<void()>;

#if defined(_WIN32)
DWORD WINAPI runWork(void* work)
{
    (*static_cast<Work*>(work))();
    return 0;
}

void onSmallStack(Work work)
{
    HANDLE const thread =
        CreateThread(nullptr, stackSize, &runWork, &work, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(nullptr, thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}
#else
void* runWork(void* work)
{
    (*static_cast<Work*>(work))();
    return nullptr;
}

void onSmallStack(Work work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, stackSize));
    pthread_t thread;
    int const started = pthread_create(&thread, &attributes, &runWork, &work);
    pthread_attr_destroy(&attributes);
    ASSERT_EQ(0, started);
    ASSERT_EQ(0, pthread_join(thread, nullptr));
}
#endif

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

TEST(BadInputDepth, DeepNodesAreBuiltAndFound)
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

TEST(BadInputDepth, DeepNodesAreGathered)
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

TEST(BadInputDepth, DeepNodesAreWiredAndUnwired)
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

TEST(BadInputDepth, DeepNodesAreRenamed)
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

TEST(BadInputDepth, DeepNodesAreGivenAnotherOwner)
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

TEST(BadInputDepth, DeepNodesAreBuiltFromTheBottomUpwards)
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

/// What the moves fill, thrown away.
struct MoveResults
{
    std::map<KS_String, KS_String> pinRenames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces;
    std::map<GraphNodeBase*, GraphNodeBase*> outputInterfaces;
    Nodes interfaceNodes;
    Pins compoundPins;
    Array<GraphConnection, _Wa> removed;
    Array<GraphConnection, _Wa> removedOuter;
    Connections outer;
    Connections inner;
};

TEST(BadInputDepth, DeepNodesAreMovedIntoACompoundAndOut)
{
    onChangingDeepGraph(
        [](DeepGraph& deep)
        {
            TestNode& compound = deep.graph.addNode("compound");
            compound.setCompound(true);
            deep.scene.connect(deep.outside->getNodePins()[1], deep.top().getNodePins()[0], false);
            Nodes moved;
            moved.append(&deep.top());
            MoveResults in;
            EXPECT_TRUE(deep.scene.moveNodesToCompound(moved, &compound, in.pinRenames, in.inputInterfaces,
                                                       in.outputInterfaces, in.interfaceNodes,
                                                       in.compoundPins, in.removed, in.outer, in.inner));
            EXPECT_EQ(1u, in.outer.size());
            EXPECT_EQ(1u, in.inner.size());
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root.compound", 0) + ".in"));
            MoveResults out;
            EXPECT_TRUE(deep.scene.removeNodesFromCompound(&compound, moved, out.pinRenames, out.removedOuter,
                                                           out.removed, out.outer, out.inner));
            EXPECT_EQ(1u, out.outer.size());
            EXPECT_EQ(deep.bottomIn(), deep.pinNamed(DeepGraph::fullName("root", 0) + ".in"));
        });
}

TEST(BadInputDepth, DeepNodesAreMovedIntoADeepCompoundAndOut)
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
            MoveResults in;
            deep.scene.moveNodesToCompound(moved, &compound, in.pinRenames, in.inputInterfaces,
                                           in.outputInterfaces, in.interfaceNodes, in.compoundPins,
                                           in.removed, in.outer, in.inner);
            EXPECT_EQ(2u, in.interfaceNodes.size());
            EXPECT_EQ(moving.getNodePins()[0], deep.pinNamed(DeepGraph::fullName("root", 0) + ".moving.in"));
            MoveResults out;
            deep.scene.removeNodesFromCompoundCreatingInterfaces(
                &compound, moved, out.pinRenames, out.removedOuter, out.removed, out.outer, out.inner,
                out.inputInterfaces, out.outputInterfaces, out.interfaceNodes, out.compoundPins);
            EXPECT_EQ(deep.nodes[depth - 2], moving.getNodeOwner());
            EXPECT_EQ(2u, out.outer.size());
        });
}

TEST(BadInputDepth, DeepNodesGetFreeNamesAndIds)
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

TEST(BadInputDepth, DeepNodesAreExportedAndDescribed)
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

TEST(BadInputDepth, DeepNodesAreRemovedFromTheGraph)
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

TEST(BadInputDepth, DeepNodesAreRemovedFromTheirCompound)
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

TEST(BadInputDepth, DeepNodesAreDeletedWithAllOthers)
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

} // namespace
} // namespace kestrel::graph::test
