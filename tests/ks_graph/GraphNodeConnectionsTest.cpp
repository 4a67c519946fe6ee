#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Expected = std::vector<GraphConnection*>;

constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;

/// The pin list of `node` is o1, i1, o2, i2, so that neither side stands in front as a whole.
struct WiredNode
{
    WiredNode() { graph.scene.setIsDirty(false); }

    GraphConnection* connect(GraphNodePin& from, GraphNodePin& to, bool implicit = false)
    {
        return graph.scene.connect(&from, &to, implicit);
    }

    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    TestNode& other = graph.addNode("other");
    GraphNodePin& o1 = graph.addOutput(node, "o1");
    GraphNodePin& i1 = graph.addInput(node, "i1");
    GraphNodePin& o2 = graph.addOutput(node, "o2");
    GraphNodePin& i2 = graph.addInput(node, "i2");
    GraphNodePin& source = graph.addOutput(other, "source");
    GraphNodePin& target = graph.addInput(other, "target");

    GraphConnection* const intoI2 = connect(source, i2);
    GraphConnection* const intoI1 = connect(source, i1);
    GraphConnection* const fromO2 = connect(o2, target);
    GraphConnection* const implicitIntoI1 = connect(source, i1, true);
    GraphConnection* const implicitFromO1 = connect(o1, target, true);
};

/// Two nodes wired in every way, and a third.
struct Couple
{
    GraphConnection* connect(GraphNodePin& from, GraphNodePin& to, bool implicit = false)
    {
        return graph.scene.connect(&from, &to, implicit);
    }

    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b");
    TestNode& c = graph.addFilter("c");
    GraphNodePin& aOut1 = graph.addOutput(a, "out1");
    GraphNodePin& aIn = graph.addInput(a, "in");
    GraphNodePin& aOut2 = graph.addOutput(a, "out2");
    GraphNodePin& bIn = graph.addInput(b, "in");
    GraphNodePin& bOut = graph.addOutput(b, "out");

    GraphConnection* const second = connect(aOut2, bIn);
    GraphConnection* const elsewhere = connect(aOut1, *c.getPinByName("in"));
    GraphConnection* const first = connect(aOut1, bIn);
    GraphConnection* const implicitThere = connect(aOut2, bIn, true);
    GraphConnection* const back = connect(bOut, aIn);
    GraphConnection* const implicitBack = connect(bOut, aIn, true);
};

/// A node whose only pin has both directions and is wired to itself.
struct LoopedPin
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin& pin = graph.addPin(node, "both", bothDirections);
    GraphConnection* const loop = graph.scene.connect(&pin, &pin, false);
};

/// Two connections that belong to no node.
struct Strangers
{
    explicit Strangers(Connections& out)
    {
        for (GraphConnection* connection : {&x, &y, &x}) out.append(connection);
    }

    GraphConnection x;
    GraphConnection y;
};

} // namespace

TEST(NodeConnections, InputSideComesFirstInPinOrder)
{
    WiredNode w;
    struct Row
    {
        bool outputs;
        bool inputs;
        bool includeImplicit;
        Expected expected;
    };
    Row const rows[] = {
        {true, true, true, {w.intoI1, w.implicitIntoI1, w.intoI2, w.implicitFromO1, w.fromO2}},
        {true, true, false, {w.intoI1, w.intoI2, w.fromO2}},
        {true, false, true, {w.implicitFromO1, w.fromO2}},
        {true, false, false, {w.fromO2}},
        {false, true, true, {w.intoI1, w.implicitIntoI1, w.intoI2}},
        {false, true, false, {w.intoI1, w.intoI2}},
        {false, false, true, {}},
        {false, false, false, {}},
    };
    for (Row const& row : rows)
    {
        for (bool const unique : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "outputs " << row.outputs << ", inputs " << row.inputs
                                            << ", implicit " << row.includeImplicit << ", unique " << unique);
            Connections out;
            EXPECT_EQ(w.node.getConnections(out, row.outputs, row.inputs, row.includeImplicit, unique),
                      !row.expected.empty());
            EXPECT_EQ(listed(out), row.expected);
        }
    }
    EXPECT_SCENE_INVARIANTS(w.graph.scene);
}

TEST(NodeConnections, AreAppendedToWhatTheListHolds)
{
    WiredNode w;
    Connections out;
    Strangers strangers(out);
    EXPECT_TRUE(w.node.getConnections(out, true, false, true, false));
    EXPECT_EQ(listed(out), (Expected{&strangers.x, &strangers.y, &strangers.x, w.implicitFromO1, w.fromO2}));
}

TEST(NodeConnections, UniqueRemovesRepeatsFromTheWholeList)
{
    WiredNode w;
    Connections out;
    Strangers strangers(out);
    out.append(w.fromO2);
    w.node.getConnections(out, true, true, false, true);
    EXPECT_EQ(listed(out), (Expected{&strangers.x, &strangers.y, w.fromO2, w.intoI1, w.intoI2}));
}

TEST(NodeConnections, UniqueRemovesRepeatsEvenWhenNothingIsAppended)
{
    GraphNodeBase const bare;
    Connections out;
    Strangers strangers(out);
    EXPECT_TRUE(bare.getConnections(out, false, false, true, true));
    EXPECT_EQ(listed(out), (Expected{&strangers.x, &strangers.y}));
}

TEST(NodeConnections, ImplicitOnesThatTheListHeldBeforeStay)
{
    WiredNode w;
    Connections out;
    out.append(w.implicitFromO1);
    w.node.getConnections(out, true, true, false, false);
    EXPECT_EQ(listed(out), (Expected{w.implicitFromO1, w.intoI1, w.intoI2, w.fromO2}));
}

TEST(NodeConnections, ResultIsWhetherTheListHoldsAny)
{
    GraphNodeBase const bare;
    Connections out;
    EXPECT_FALSE(bare.getConnections(out, true, true, true, true));
    Strangers strangers(out);
    EXPECT_TRUE(bare.getConnections(out, true, true, true, true));
}

TEST(NodeConnections, LoopOfTheNodeIsGatheredOnceOrTwice)
{
    TestGraph<> graph;
    TestNode& node = graph.addFilter("node");
    GraphConnection* const loop =
        graph.scene.connect(node.getPinByName("out"), node.getPinByName("in"), false);
    Connections once;
    node.getConnections(once, true, true, false, true);
    EXPECT_EQ(listed(once), Expected{loop});
    Connections twice;
    node.getConnections(twice, true, true, false, false);
    EXPECT_EQ(listed(twice), (Expected{loop, loop}));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeConnections, LoopOfAPinOfBothDirectionsIsGatheredOnceForEachSide)
{
    LoopedPin looped;
    struct Row
    {
        bool outputs;
        bool inputs;
        bool unique;
        Expected expected;
    };
    for (Row const& row :
         {Row{true, true, false, {looped.loop, looped.loop}}, Row{true, true, true, {looped.loop}},
          Row{true, false, false, {looped.loop}}, Row{false, true, false, {looped.loop}}})
    {
        SCOPED_TRACE(testing::Message() << row.outputs << row.inputs << row.unique);
        Connections out;
        looped.node.getConnections(out, row.outputs, row.inputs, false, row.unique);
        EXPECT_EQ(listed(out), row.expected);
    }
    EXPECT_SCENE_INVARIANTS(looped.graph.scene);
}

TEST(NodeConnections, PinOfBothDirectionsGivesEachSideItsOwnOnly)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    TestNode& other = graph.addFilter("other");
    GraphNodePin& both = graph.addPin(node, "both", bothDirections);
    GraphConnection* const in = graph.scene.connect(other.getPinByName("out"), &both, false);
    GraphConnection* const out = graph.scene.connect(&both, other.getPinByName("in"), false);
    for (bool const includeImplicit : {false, true})
    {
        SCOPED_TRACE(includeImplicit);
        Connections inputSide;
        node.getConnections(inputSide, false, true, includeImplicit, false);
        EXPECT_EQ(listed(inputSide), Expected{in});
        Connections outputSide;
        node.getConnections(outputSide, true, false, includeImplicit, false);
        EXPECT_EQ(listed(outputSide), Expected{out});
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeConnectionsWithNode, AreThoseToTheNodeAndOnRequestThoseFromIt)
{
    Couple w;
    struct Row
    {
        bool bothDirections;
        bool includeImplicit;
        Expected expected;
    };
    Row const rows[] = {
        {false, false, {w.first, w.second}},
        {false, true, {w.first, w.second, w.implicitThere}},
        {true, false, {w.first, w.second, w.back}},
        {true, true, {w.first, w.second, w.implicitThere, w.back, w.implicitBack}},
    };
    for (Row const& row : rows)
    {
        for (bool const unique : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "both " << row.bothDirections << ", implicit "
                                            << row.includeImplicit << ", unique " << unique);
            Connections out;
            EXPECT_TRUE(
                w.a.getConnectionsWithNode(&w.b, out, row.bothDirections, row.includeImplicit, unique));
            EXPECT_EQ(listed(out), row.expected);
        }
    }
    EXPECT_SCENE_INVARIANTS(w.graph.scene);
}

TEST(NodeConnectionsWithNode, OtherNodeGivesItsOwnFirst)
{
    Couple w;
    Connections out;
    w.b.getConnectionsWithNode(&w.a, out, true, false, false);
    EXPECT_EQ(listed(out), (Expected{w.back, w.first, w.second}));
}

TEST(NodeConnectionsWithNode, NodeThatIsNotWiredToItGivesNone)
{
    Couple w;
    for (bool const includeImplicit : {false, true})
    {
        Connections out;
        EXPECT_FALSE(w.b.getConnectionsWithNode(&w.c, out, true, includeImplicit, true));
        EXPECT_FALSE(w.c.getConnectionsWithNode(&w.a, out, false, includeImplicit, true));
        EXPECT_TRUE(w.c.getConnectionsWithNode(&w.a, out, true, includeImplicit, true));
        EXPECT_EQ(listed(out), Expected{w.elsewhere});
    }
}

TEST(NodeConnectionsWithNode, AppendAndRemoveRepeatsFromTheWholeListOnRequest)
{
    Couple w;
    Connections out;
    Strangers strangers(out);
    out.append(w.first);
    w.a.getConnectionsWithNode(&w.b, out, true, false, false);
    EXPECT_EQ(listed(out),
              (Expected{&strangers.x, &strangers.y, &strangers.x, w.first, w.first, w.second, w.back}));
    w.a.getConnectionsWithNode(&w.b, out, true, false, true);
    EXPECT_EQ(listed(out), (Expected{&strangers.x, &strangers.y, w.first, w.second, w.back}));
}

TEST(NodeConnectionsWithNode, LoopIsFoundFromBothEnds)
{
    LoopedPin looped;
    Connections twice;
    looped.node.getConnectionsWithNode(&looped.node, twice, true, false, false);
    EXPECT_EQ(listed(twice), (Expected{looped.loop, looped.loop}));
    Connections once;
    looped.node.getConnectionsWithNode(&looped.node, once, true, false, true);
    EXPECT_EQ(listed(once), Expected{looped.loop});
    Connections oneWay;
    looped.node.getConnectionsWithNode(&looped.node, oneWay, false, false, false);
    EXPECT_EQ(listed(oneWay), Expected{looped.loop});
}

TEST(NodeConnectionsWithNode, PinOfBothDirectionsGivesOnlyWhatLeavesIt)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    TestNode& other = graph.addFilter("other");
    GraphNodePin& both = graph.addPin(node, "both", bothDirections);
    graph.scene.connect(other.getPinByName("out"), &both, false);
    GraphConnection* const out = graph.scene.connect(&both, other.getPinByName("in"), false);
    for (bool const includeImplicit : {false, true})
    {
        Connections found;
        node.getConnectionsWithNode(&other, found, false, includeImplicit, false);
        EXPECT_EQ(listed(found), Expected{out});
    }
}

TEST(NodeConnectionsWithNode, NullNodeGivesNone)
{
    Couple w;
    for (bool const both : {false, true})
    {
        Connections out;
        EXPECT_FALSE(w.a.getConnectionsWithNode(nullptr, out, both, true, true));
        EXPECT_TRUE(out.isEmpty());
        EXPECT_FALSE(w.a.hasConnectionsWithNode(nullptr, both, true));
    }
}

TEST(NodeHasConnectionsWithNode, LooksAtTheDirectionsAndKindsThatItIsAskedFor)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    TestNode& c = graph.addFilter("c");
    graph.scene.connect(a.getPinByName("out"), b.getPinByName("in"), false);
    graph.scene.connect(b.getPinByName("out"), c.getPinByName("in"), true);
    struct Row
    {
        GraphNodeBase* from;
        GraphNodeBase* to;
        bool bothDirections;
        bool includeImplicit;
        bool expected;
    };
    Row const rows[] = {
        {&a, &b, false, false, true},  {&a, &b, true, false, true}, {&a, &b, false, true, true},
        {&b, &a, false, false, false}, {&b, &a, true, false, true}, {&b, &a, false, true, false},
        {&b, &c, false, false, false}, {&b, &c, false, true, true}, {&b, &c, true, false, false},
        {&c, &b, false, true, false},  {&c, &b, true, true, true},  {&c, &b, true, false, false},
        {&a, &c, true, true, false},   {&c, &a, true, true, false}, {&a, &a, true, true, false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(testing::Message()
                     << row.from->getName().c_str() << " to " << row.to->getName().c_str() << ", both "
                     << row.bothDirections << ", implicit " << row.includeImplicit);
        EXPECT_EQ(row.from->hasConnectionsWithNode(row.to, row.bothDirections, row.includeImplicit),
                  row.expected);
        Connections out;
        row.from->getConnectionsWithNode(row.to, out, row.bothDirections, row.includeImplicit, false);
        EXPECT_EQ(!out.isEmpty(), row.expected);
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeHasConnectionsWithNode, PinOfBothDirectionsLeadsNowhereByWhatEntersIt)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    TestNode& other = graph.addFilter("other");
    graph.scene.connect(other.getPinByName("out"), &graph.addPin(node, "both", bothDirections), false);
    EXPECT_FALSE(node.hasConnectionsWithNode(&other, false, false));
    EXPECT_TRUE(node.hasConnectionsWithNode(&other, true, false));
}

TEST(NodeHasConnectionsWithNode, FindsTheLastConnectionOfTheLastPin)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addFilter("b");
    TestNode& c = graph.addFilter("c");
    GraphNodePin& out1 = graph.addOutput(a, "out1");
    GraphNodePin& out2 = graph.addOutput(a, "out2");
    GraphNodePin* const bIn = b.getPinByName("in");
    graph.scene.connect(&out1, bIn, false);
    graph.scene.connect(&out2, c.getPinByName("in"), true);
    graph.scene.connect(&out2, bIn, false);
    EXPECT_FALSE(a.hasConnectionsWithNode(&c, true, false));
    graph.scene.connect(&out2, c.getPinByName("in"), false);
    EXPECT_TRUE(a.hasConnectionsWithNode(&c, false, false));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeHasConnectionsWithNode, LoopLeadsFromTheNodeToItself)
{
    LoopedPin looped;
    EXPECT_TRUE(looped.node.hasConnectionsWithNode(&looped.node, false, false));
}

TEST(NodeConnectedPins, AreSortedOutByDirectionAndConnection)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    TestNode& other = graph.addFilter("other");
    GraphNodePin& freeOut = graph.addOutput(node, "free out");
    GraphNodePin& usedIn = graph.addInput(node, "used in");
    GraphNodePin& usedBoth = graph.addPin(node, "used both", bothDirections);
    GraphNodePin& freeIn = graph.addInput(node, "free in");
    graph.addPin(node, "free none", PinDirection(0));
    GraphNodePin& freeBoth = graph.addPin(node, "free both", bothDirections);
    GraphNodePin& usedOut = graph.addOutput(node, "used out");
    graph.scene.connect(other.getPinByName("out"), &usedIn, false);
    graph.scene.connect(other.getPinByName("out"), &usedBoth, true);
    graph.scene.connect(&usedOut, other.getPinByName("in"), false);

    using List = std::vector<GraphNodePin*>;
    struct Row
    {
        unsigned int directions;
        List connected;
        List notConnected;
    };
    Row const rows[] = {
        {0, {}, {}},
        {1, {&usedIn, &usedBoth}, {&freeIn, &freeBoth}},
        {2, {&usedBoth, &usedOut}, {&freeOut, &freeBoth}},
        {3, {&usedIn, &usedBoth, &usedOut}, {&freeOut, &freeIn, &freeBoth}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.directions);
        Pins connected;
        EXPECT_EQ(node.getConnectedPins(PinDirection(row.directions), connected), !row.connected.empty());
        EXPECT_EQ(listed(connected), row.connected);
        Pins notConnected;
        EXPECT_EQ(node.getNotConnectedPins(PinDirection(row.directions), notConnected),
                  !row.notConnected.empty());
        EXPECT_EQ(listed(notConnected), row.notConnected);
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeConnectedPins, AreAppended)
{
    WiredNode w;
    Pins out;
    GraphNodeBase bare;
    EXPECT_FALSE(bare.getConnectedPins(bothDirections, out));
    EXPECT_FALSE(bare.getNotConnectedPins(bothDirections, out));
    w.node.getConnectedPins(PIN_OUTPUT, out);
    GraphNodePin& free = w.graph.addInput(w.node, "free");
    w.node.getNotConnectedPins(bothDirections, out);
    EXPECT_EQ(listed(out), (std::vector{&w.o1, &w.o2, &free}));
    EXPECT_TRUE(bare.getConnectedPins(bothDirections, out));
    EXPECT_TRUE(bare.getNotConnectedPins(bothDirections, out));
}

TEST(NodeInternalConnections, LeadFromTheFirstInputToTheFirstOutput)
{
    WiredNode w;
    Array<GraphConnection, _Wa> all;
    EXPECT_TRUE(w.node.getInternalConnections(all));
    EXPECT_TRUE(w.node.getInternalConnectionsForPainting(all));
    ASSERT_EQ(all.size(), 2u);
    for (GraphConnection const& connection : all)
    {
        EXPECT_EQ(connection.getSourcePin(), &w.i1);
        EXPECT_EQ(connection.getTargetPin(), &w.o1);
        EXPECT_FALSE(connection.isImplicit());
        // An input pin as source: internal connections count as connected nowhere.
        EXPECT_FALSE(connection.isConnected());
    }
    EXPECT_SCENE_INVARIANTS(w.graph.scene);
}

TEST(NodeInternalConnections, NeedAPinOnBothSides)
{
    for (unsigned int first = 0; first < 4; ++first)
    {
        for (unsigned int second = 0; second < 4; ++second)
        {
            SCOPED_TRACE(testing::Message() << first << " and " << second);
            GraphNodeBase node;
            GraphNodePin pins[] = {GraphNodePin(nullptr, 1, PinDirection(first)),
                                   GraphNodePin(nullptr, 1, PinDirection(second))};
            for (GraphNodePin& pin : pins) node.addNodePin(&pin);
            bool const expected = (first | second) == 3u;
            Array<GraphConnection, _Wa> out;
            EXPECT_EQ(node.getInternalConnections(out), expected);
            EXPECT_EQ(out.size(), expected ? 1u : 0u);
            Array<GraphConnection, _Wa> painted;
            EXPECT_EQ(node.getInternalConnectionsForPainting(painted), expected);
            EXPECT_EQ(painted.size(), expected ? 1u : 0u);
        }
    }
}

TEST(NodeInternalConnections, PinOfBothDirectionsIsLinkedToItself)
{
    GraphNodeBase node;
    GraphNodePin pin(nullptr, 1, bothDirections);
    node.addNodePin(&pin);
    Array<GraphConnection, _Wa> out;
    EXPECT_TRUE(node.getInternalConnections(out));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getSourcePin(), &pin);
    EXPECT_EQ(out[0].getTargetPin(), &pin);
}

TEST(NodeInternalConnections, AreAppendedAndEnteredNowhere)
{
    GraphNodeBase const bare;
    Array<GraphConnection, _Wa> out;
    EXPECT_FALSE(bare.getInternalConnections(out));
    EXPECT_FALSE(bare.getInternalConnectionsForPainting(out));
    out.append(GraphConnection());
    EXPECT_TRUE(bare.getInternalConnections(out));
    EXPECT_TRUE(bare.getInternalConnectionsForPainting(out));

    GraphNodeBase node;
    GraphNodePin in(nullptr, 1, PIN_INPUT);
    GraphNodePin output(nullptr, 1, PIN_OUTPUT);
    node.addNodePin(&in);
    node.addNodePin(&output);
    node.getInternalConnections(out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].getSourcePin(), nullptr);
    EXPECT_EQ(out[1].getSourcePin(), &in);
    EXPECT_FALSE(in.isConnected());
    EXPECT_FALSE(output.isConnected());
}

} // namespace kestrel::graph::test
