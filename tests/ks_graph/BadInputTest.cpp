#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

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

TEST(BadInput, NullNodesAreNotConnectedByAConnectionWithoutSource)
{
    TestGraph<> graph;
    graph.scene.setUseAdjacencyMap(false);
    TestNode& node = graph.addFilter("node");
    GraphConnection loose(nullptr, node.getPinByName("in"));
    graph.scene.refGraphConnections().append(&loose);
    EXPECT_FALSE(graph.scene.areNodesConnected(nullptr, &node, false, true));
    EXPECT_FALSE(graph.scene.areNodesConnected(&node, nullptr, true, true));
    graph.scene.refGraphConnections().removeAll(&loose);
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

} // namespace
} // namespace kestrel::graph::test
