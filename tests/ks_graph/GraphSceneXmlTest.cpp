#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gtest/gtest.h>

#include <string>

namespace kestrel::graph::test
{

namespace
{

std::string pinXml(std::string const& parent, bool input, bool output, std::string const& capacity)
{
    return "<pin parent=\"" + parent + "\" input=\"" + (input ? "true" : "false") + "\" output=\"" +
           (output ? "true" : "false") + "\" maxconnections=\"" + capacity + "\">\n</pin>\n";
}

std::string nodeXml(std::string const& id, std::string const& pins = "")
{
    return "<node id=\"" + id + "\">\n<pins>\n" + pins + "</pins>\n</node>\n";
}

std::string connectionXml(std::string const& source, std::string const& target)
{
    return "<connection source-node=\"" + source + "\" target-node=\"" + target + "\"/>\n";
}

std::string sceneXml(std::string const& nodes, std::string const& connections = "")
{
    return "<graph>\n<nodes>\n" + nodes + "</nodes>\n<connections>\n" + connections +
           "</connections>\n</graph>\n";
}

std::string xml(GraphScene const& scene)
{
    return std::string(scene.toXml());
}

/// Writes itself in a way of its own, and pretends to have another id.
class HostNode : public TestNode
{
public:
    using TestNode::TestNode;
    KS_String toXml() override { return writesItself ? KS_String("[node]") : TestNode::toXml(); }
    unsigned int const& getId() const override { return pretends ? pretendedId : TestNode::getId(); }

    bool writesItself = false;
    bool pretends = false;
    unsigned int pretendedId = 77;
};

class HostPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    KS_String toXml() override { return writesItself ? KS_String("[pin]") : GraphNodePin::toXml(); }
    GraphNodeBase* getParentGraphNodePtr() const override
    {
        return pretendedNode != nullptr ? pretendedNode : GraphNodePin::getParentGraphNodePtr();
    }

    bool writesItself = false;
    GraphNodeBase* pretendedNode = nullptr;
};

class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    KS_String toXml() override { return "[connection]"; }
};

/// A connection that hides its nodes from everybody but its pins.
class ShyConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    GraphNodeBase* getSourceNode() const override { return nullptr; }
    GraphNodeBase* getTargetNode() const override { return nullptr; }
};

class HostScene : public GraphScene
{
public:
    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        return new HostConnection(source, target);
    }
};

} // namespace

// ---- the scene

TEST(SceneXml, EmptySceneIsItsSixTags)
{
    GraphScene const scene;
    EXPECT_EQ(xml(scene), "<graph>\n<nodes>\n</nodes>\n<connections>\n</connections>\n</graph>\n");
}

TEST(SceneXml, TwoWiredNodesByteForByte)
{
    GraphScene scene;
    GraphNodeBase first(1);
    GraphNodeBase second(2);
    scene.addNodeToGraph(&first);
    scene.addNodeToGraph(&second);
    GraphNodePin* const in = scene.createNewPin(&first, 1, PIN_INPUT);
    GraphNodePin* const out = scene.createNewPin(&second, 4294967295u, PIN_OUTPUT);
    scene.connect(out, in, false);
    EXPECT_EQ(xml(scene), "<graph>\n"
                          "<nodes>\n"
                          "<node id=\"1\">\n"
                          "<pins>\n"
                          "<pin parent=\"1\" input=\"true\" output=\"false\" maxconnections=\"1\">\n"
                          "</pin>\n"
                          "</pins>\n"
                          "</node>\n"
                          "<node id=\"2\">\n"
                          "<pins>\n"
                          "<pin parent=\"2\" input=\"false\" output=\"true\" maxconnections=\"-1\">\n"
                          "</pin>\n"
                          "</pins>\n"
                          "</node>\n"
                          "</nodes>\n"
                          "<connections>\n"
                          "<connection source-node=\"2\" target-node=\"1\"/>\n"
                          "</connections>\n"
                          "</graph>\n");
    EXPECT_SCENE_INVARIANTS(scene);
    scene.removeAllConnections();
    first.destroyNodePins();
    second.destroyNodePins();
}

TEST(SceneXml, NodesStandInAscendingOrderOfTheirIds)
{
    GraphScene scene;
    GraphNodeBase ten(10);
    GraphNodeBase nine(9);
    GraphNodeBase huge(0x80000000u);
    for (GraphNodeBase* node : {&huge, &ten, &nine}) scene.addNodeToGraph(node);
    EXPECT_EQ(xml(scene), sceneXml(nodeXml("9") + nodeXml("10") + nodeXml("-2147483648")));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneXml, NodesInCompoundsStandInTheSameFlatList)
{
    TestGraph<> graph;
    TestNode& compound = graph.addNode("C");
    graph.addNode("x", &graph.addNode("D", &compound));
    graph.addNode("y");
    EXPECT_EQ(xml(graph.scene),
              sceneXml(nodeXml("1") + nodeXml("2") + nodeXml("3") + nodeXml("4") + nodeXml("5")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneXml, ChildThatIsNotRegisteredIsNotWritten)
{
    TestGraph<> graph;
    TestNode& child = graph.newNode("child");
    graph.root.addNode(&child);
    EXPECT_EQ(xml(graph.scene), sceneXml(nodeXml("1")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneXml, ConnectionsStandInTheOrderOfTheArray)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    TestNode& c = graph.addFilter("c");
    auto const wire = [&](TestNode& source, TestNode& target)
    { return graph.scene.connect(source.getPinByName("out"), target.getPinByName("in"), false); };
    GraphConnection* const first = wire(a, b);
    wire(b, c);
    wire(c, a);
    std::string const head = xml(graph.scene).substr(0, xml(graph.scene).find("<connections>\n"));
    std::string const tail = "</connections>\n</graph>\n";
    EXPECT_EQ(xml(graph.scene), head + "<connections>\n" + connectionXml("2", "3") + connectionXml("3", "4") +
                                    connectionXml("4", "2") + tail);
    graph.scene.removeConnection(first);
    EXPECT_EQ(xml(graph.scene),
              head + "<connections>\n" + connectionXml("4", "2") + connectionXml("3", "4") + tail);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneXml, ConnectionsBetweenTheSameNodesGiveEqualLines)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    graph.addInput(b, "other");
    graph.scene.connect(a.getPinByName("out"), b.getPinByName("in"), false);
    graph.scene.connect(a.getPinByName("out"), b.getPinByName("other"), true);
    std::string const text = xml(graph.scene);
    EXPECT_NE(
        text.find("<connections>\n" + connectionXml("2", "3") + connectionXml("2", "3") + "</connections>\n"),
        std::string::npos);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneXml, WritingChangesNothing)
{
    TestGraph<> graph;
    graph.addFilter("a");
    graph.scene.setIsDirty(false);
    std::string const once = xml(graph.scene);
    EXPECT_EQ(xml(graph.scene), once);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneXml, HostsElementsAreTakenIntoTheText)
{
    TestGraph<HostScene> graph;
    HostNode& silent = graph.addNode<HostNode>("silent");
    silent.writesItself = true;
    TestNode& node = graph.addNode("node");
    HostPin* const pin = new HostPin(nullptr, 5, PIN_INPUT);
    pin->writesItself = true;
    node.addNodePin(pin);
    GraphNodePin& out = graph.addOutput(node, "out", 2);
    graph.scene.connect(&out, pin, false);
    EXPECT_EQ(xml(graph.scene),
              sceneXml(nodeXml("1") + "[node]" + nodeXml("3", "[pin]" + pinXml("3", false, true, "2")),
                       "[connection]"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// Without a look at the invariants: it searches the two pins' lists for every connection.
TEST(SceneXml, HundredThousandConnectionsAreWrittenByteForByte)
{
    constexpr int count = 100000;
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    std::string connections;
    for (int i = 0; i < count; ++i)
    {
        bool const back = i % 3 == 0;
        TestNode& source = back ? b : a;
        TestNode& target = back ? a : b;
        graph.scene.connect(source.getPinByName("out"), target.getPinByName("in"), false);
        connections += back ? connectionXml("3", "2") : connectionXml("2", "3");
    }
    auto const filterXml = [](std::string const& id)
    { return nodeXml(id, pinXml(id, true, false, "-1") + pinXml(id, false, true, "-1")); };
    // Not EXPECT_EQ: a difference would print megabytes.
    EXPECT_TRUE(xml(graph.scene) == sceneXml(nodeXml("1") + filterXml("2") + filterXml("3"), connections));
}

// ---- nodes

TEST(NodeXml, NothingButIdAndPinsIsWritten)
{
    GraphNodeBase node(12);
    node.setName("name <&\">");
    node.setType("type");
    node.setCategory("category");
    node.setDescription("description");
    node.setCompound(true);
    GraphNodeBase child(13);
    node.addNode(&child);
    EXPECT_EQ(std::string(node.toXml()), nodeXml("12"));
}

TEST(NodeXml, IdIsASignedNumber)
{
    struct Row
    {
        unsigned int id;
        char const* text;
    };
    for (Row const& row : {Row{0, "0"}, Row{0x7FFFFFFFu, "2147483647"}, Row{0x80000000u, "-2147483648"},
                           Row{0xFFFFFFFEu, "-2"}, Row{0xFFFFFFFFu, "-1"}})
    {
        SCOPED_TRACE(row.id);
        GraphNodeBase node(row.id);
        EXPECT_EQ(std::string(node.toXml()), nodeXml(row.text));
    }
}

TEST(NodeXml, PinsOfBothSidesStandInTheOrderOfTheList)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    graph.addOutput(node, "o", 1);
    graph.addInput(node, "i", 2);
    graph.addOutput(node, "p", 3);
    EXPECT_EQ(std::string(node.toXml()),
              nodeXml("2", pinXml("2", false, true, "1") + pinXml("2", true, false, "2") +
                               pinXml("2", false, true, "3")));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeXml, NodeWritesItsStoredIdAndItsPinsTheVirtualOne)
{
    TestGraph<> graph;
    HostNode& node = graph.addNode<HostNode>("n");
    graph.addInput(node, "in", 1);
    node.pretends = true;
    EXPECT_EQ(std::string(node.toXml()), nodeXml("2", pinXml("77", true, false, "1")));
    node.pretends = false;
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// ---- pins

TEST(PinXml, DirectionBitsAreWrittenOneByOne)
{
    for (unsigned int direction = 0; direction < 8; ++direction)
    {
        SCOPED_TRACE(direction);
        GraphNodeBase node(4);
        GraphNodePin pin(&node, 7, PinDirection(direction));
        EXPECT_EQ(std::string(pin.toXml()), pinXml("4", (direction & 1u) != 0, (direction & 2u) != 0, "7"));
    }
}

TEST(PinXml, CapacityIsASignedNumber)
{
    struct Row
    {
        unsigned int capacity;
        char const* text;
    };
    for (Row const& row : {Row{0, "0"}, Row{0x7FFFFFFFu, "2147483647"}, Row{0x80000000u, "-2147483648"},
                           Row{0xFFFFFFFFu, "-1"}})
    {
        SCOPED_TRACE(row.capacity);
        GraphNodeBase node(4);
        GraphNodePin pin(&node, row.capacity, PIN_INPUT);
        EXPECT_EQ(std::string(pin.toXml()), pinXml("4", true, false, row.text));
    }
}

TEST(PinXml, ParentIsTheIdOfTheNodeOrMinusOne)
{
    GraphNodePin alone(nullptr, 1, PIN_INPUT);
    alone.setName("never <written>");
    EXPECT_EQ(std::string(alone.toXml()), pinXml("-1", true, false, "1"));
    GraphNodeBase node(0x80000001u);
    GraphNodePin pin(&node, 1, PIN_INPUT);
    EXPECT_EQ(std::string(pin.toXml()), pinXml("-2147483647", true, false, "1"));
    GraphNodePin const plain;
    EXPECT_EQ(std::string(GraphNodePin(plain).toXml()), pinXml("-1", false, false, "0"));
}

TEST(PinXml, ParentIsAskedThroughTheVirtualOperations)
{
    GraphNodeBase node(4);
    HostNode other;
    other.pretends = true;
    HostPin pin(&node, 1, PIN_INPUT);
    EXPECT_EQ(std::string(pin.toXml()), pinXml("4", true, false, "1"));
    pin.pretendedNode = &other;
    EXPECT_EQ(std::string(pin.toXml()), pinXml("77", true, false, "1"));
}

// ---- connections

TEST(ConnectionXml, MissingPinsAndNodesAreMinusOne)
{
    GraphNodeBase node(4);
    GraphNodePin out(&node, 1, PIN_OUTPUT);
    GraphNodePin in(&node, 1, PIN_INPUT);
    GraphNodePin alone(nullptr, 1, PIN_INPUT);
    EXPECT_EQ(std::string(GraphConnection().toXml()), connectionXml("-1", "-1"));
    EXPECT_EQ(std::string(GraphConnection(&out, nullptr).toXml()), connectionXml("4", "-1"));
    EXPECT_EQ(std::string(GraphConnection(nullptr, &in).toXml()), connectionXml("-1", "4"));
    EXPECT_EQ(std::string(GraphConnection(&out, &alone).toXml()), connectionXml("4", "-1"));
    EXPECT_EQ(std::string(GraphConnection(&alone, &in).toXml()), connectionXml("-1", "4"));
}

TEST(ConnectionXml, IdsAreSignedAndTheDirectionsOfThePinsDoNotMatter)
{
    GraphNodeBase source(0x80000000u);
    GraphNodeBase target(0xFFFFFFFEu);
    GraphNodePin first(&source, 1, PIN_INPUT);
    GraphNodePin second(&target, 1, PIN_OUTPUT);
    GraphConnection connection(&first, &second);
    connection.setImplicit(true);
    EXPECT_EQ(std::string(connection.toXml()), connectionXml("-2147483648", "-2"));
}

TEST(ConnectionXml, PinsAreAskedForTheirNodesAndNodesForTheirIds)
{
    GraphNodeBase node(4);
    HostNode pretender;
    pretender.pretends = true;
    HostPin out(&node, 1, PIN_OUTPUT);
    HostPin in(&node, 1, PIN_INPUT);
    GraphConnection connection(&out, &in);
    EXPECT_EQ(std::string(connection.toXml()), connectionXml("4", "4"));
    out.pretendedNode = &pretender;
    EXPECT_EQ(std::string(connection.toXml()), connectionXml("77", "4"));
    in.pretendedNode = &pretender;
    EXPECT_EQ(std::string(connection.toXml()), connectionXml("77", "77"));
}

TEST(ConnectionXml, ConnectionsOwnAnswersAboutItsNodesAreNotAsked)
{
    GraphNodeBase node(4);
    GraphNodePin out(&node, 1, PIN_OUTPUT);
    GraphNodePin in(&node, 1, PIN_INPUT);
    ShyConnection connection(&out, &in);
    EXPECT_EQ(std::string(connection.toXml()), connectionXml("4", "4"));
}

} // namespace kestrel::graph::test
