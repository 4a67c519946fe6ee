#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;
constexpr PinDirection noDirection{};

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;

template <class T>
ArrayOfPtr<T, KS_NO> listOf(std::vector<T*> const& elements)
{
    ArrayOfPtr<T, KS_NO> list;
    for (T* element : elements) list.append(element);
    return list;
}

class SceneQueries : public ::testing::Test
{
protected:
    SceneQueries()
        : a(graph.addFilter("a")),
          b(graph.addFilter("b")),
          c(graph.addFilter("c")),
          aIn(*a.getNodePins()[0]),
          aOut(*a.getNodePins()[1]),
          bIn(*b.getNodePins()[0]),
          bOut(*b.getNodePins()[1])
    {
        scene.setIsDirty(false);
    }

    GraphConnection* connect(GraphNodeBase& source, GraphNodeBase& target, bool implicit = false)
    {
        return scene.connect(static_cast<GraphNodeBase const*>(&source), &target, implicit);
    }

    TestGraph<> graph;
    GraphScene& scene = graph.scene;
    TestNode& a;
    TestNode& b;
    TestNode& c;
    GraphNodePin& aIn;
    GraphNodePin& aOut;
    GraphNodePin& bIn;
    GraphNodePin& bOut;
};

/// The queries that read the adjacency counts instead of the array when they are in use.
class SceneQueriesInBothModes : public SceneQueries, public ::testing::WithParamInterface<bool>
{
protected:
    SceneQueriesInBothModes() { scene.setUseAdjacencyMap(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Adjacency, SceneQueriesInBothModes, ::testing::Bool());

// --- pins

TEST_F(SceneQueries, FullnessIsThePinsAffair)
{
    aOut.setMaxNumConnections(1);
    EXPECT_FALSE(scene.isPinFull(&aOut));
    connect(a, b);
    EXPECT_TRUE(scene.isPinFull(&aOut));
    EXPECT_FALSE(scene.isPinFull(&bIn));
    EXPECT_FALSE(scene.isPinFull(nullptr));
    GraphNodePin const unset;
    EXPECT_TRUE(scene.isPinFull(&unset));
}

TEST_F(SceneQueries, PinConnectionsAreCountedByDirection)
{
    GraphNodePin& both = graph.addPin(a, "both", bothDirections);
    scene.connect(&bOut, &both, false);
    scene.connect(&both, &bIn, true);
    scene.connect(&both, &bIn, false);
    struct Row
    {
        PinDirection direction;
        unsigned int count;
    };
    Row const rows[] = {
        {noDirection, 0}, {PIN_INPUT, 1}, {PIN_OUTPUT, 2}, {bothDirections, 3}, {PinDirection(4), 0}};
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.direction.value());
        EXPECT_EQ(row.count, scene.getPinNumConnections(&both, row.direction));
        EXPECT_EQ(row.count != 0, scene.hasPinConnections(&both, row.direction));
    }
    EXPECT_EQ(3u, scene.getPinNumConnections(&both));
    EXPECT_TRUE(scene.hasPinConnections(&both));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, OneSideOfAPinIsEnoughForItToHaveConnections)
{
    EXPECT_FALSE(scene.hasPinConnections(&aOut));
    EXPECT_EQ(0u, scene.getPinNumConnections(&aOut));
    connect(a, b);
    EXPECT_TRUE(scene.hasPinConnections(&aOut));
    EXPECT_TRUE(scene.hasPinConnections(&bIn));
    EXPECT_FALSE(scene.hasPinConnections(&aOut, PIN_INPUT));
    EXPECT_TRUE(scene.hasPinConnections(&aOut, PIN_OUTPUT));
    EXPECT_TRUE(scene.hasPinConnections(&bIn, PIN_INPUT));
    EXPECT_FALSE(scene.hasPinConnections(&bIn, PIN_OUTPUT));
    EXPECT_TRUE(scene.hasPinConnections(&bIn, bothDirections));
}

TEST_F(SceneQueries, NoPinHasNoConnectionsAndTheNumberOfNoId)
{
    EXPECT_FALSE(scene.hasPinConnections(nullptr));
    EXPECT_FALSE(scene.hasPinConnections(nullptr, bothDirections));
    EXPECT_EQ(0xFFFFFFFFu, scene.getPinNumConnections(nullptr));
    EXPECT_EQ(0xFFFFFFFFu, scene.getPinNumConnections(nullptr, bothDirections));
    EXPECT_EQ(0xFFFFFFFFu, scene.getPinNumConnections(nullptr, noDirection));
    Connections out;
    EXPECT_FALSE(scene.getPinConnections(nullptr, out));
    EXPECT_FALSE(scene.getPinConnections(nullptr, bothDirections, out));
    out.append(connect(a, b));
    EXPECT_FALSE(scene.getPinConnections(nullptr, out));
    EXPECT_EQ(1u, out.size());
}

TEST_F(SceneQueries, PinConnectionsAreGatheredInputsFirstImplicitOnesToo)
{
    GraphNodePin& both = graph.addPin(a, "both", bothDirections);
    GraphConnection* const from = scene.connect(&both, &bIn, true);
    GraphConnection* const to = scene.connect(&bOut, &both, true);
    Connections out;
    EXPECT_TRUE(scene.getPinConnections(&both, out));
    EXPECT_THAT(listed(out), ElementsAre(to, from));
    EXPECT_TRUE(scene.getPinConnections(&both, PIN_INPUT, out));
    EXPECT_TRUE(scene.getPinConnections(&both, PIN_OUTPUT, out));
    EXPECT_TRUE(scene.getPinConnections(&both, bothDirections, out));
    EXPECT_THAT(listed(out), ElementsAre(to, from, to, from, to, from));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, GatheringPinConnectionsTellsWhetherTheListHoldsAny)
{
    GraphConnection* const made = connect(a, b);
    Connections out;
    EXPECT_FALSE(scene.getPinConnections(&bOut, out));
    EXPECT_FALSE(scene.getPinConnections(&aOut, PIN_INPUT, out));
    EXPECT_FALSE(scene.getPinConnections(&aOut, noDirection, out));
    EXPECT_THAT(listed(out), IsEmpty());
    out.append(made);
    EXPECT_TRUE(scene.getPinConnections(&bOut, out));
    EXPECT_TRUE(scene.getPinConnections(&aOut, PIN_INPUT, out));
    EXPECT_THAT(listed(out), ElementsAre(made));
}

// --- connectable pins

TEST_F(SceneQueries, PinsThatTakeAPinAreTheNodesInputs)
{
    GraphNodePin& second = graph.addInput(b, "second");
    GraphNodePin& full = graph.addInput(b, "full", 0);
    GraphNodePin& both = graph.addPin(b, "both", bothDirections);
    Pins out;
    EXPECT_TRUE(scene.getConnectablePins(&aOut, &b, out, false));
    EXPECT_THAT(listed(out), ElementsAre(&bIn, &second, &full, &both));
    out.clear();
    EXPECT_TRUE(scene.getConnectablePins(&aOut, &b, out, true));
    EXPECT_THAT(listed(out), ElementsAre(&bIn, &second, &both));
    out.clear();
    EXPECT_FALSE(scene.getConnectablePins(&aIn, &b, out, false));
    EXPECT_FALSE(scene.getConnectablePins(&aIn, &b, out, true));
    EXPECT_THAT(listed(out), IsEmpty());
}

TEST_F(SceneQueries, PinsThatMayFeedAPinAreTheNodesOutputs)
{
    GraphNodePin& second = graph.addOutput(b, "second");
    GraphNodePin& full = graph.addOutput(b, "full", 0);
    GraphNodePin& both = graph.addPin(b, "both", bothDirections);
    Pins out;
    EXPECT_TRUE(scene.getConnectablePins(&b, &aIn, out, false));
    EXPECT_THAT(listed(out), ElementsAre(&bOut, &second, &full, &both));
    out.clear();
    EXPECT_TRUE(scene.getConnectablePins(&b, &aIn, out, true));
    EXPECT_THAT(listed(out), ElementsAre(&bOut, &second, &both));
    out.clear();
    EXPECT_FALSE(scene.getConnectablePins(&b, &aOut, out, false));
    EXPECT_FALSE(scene.getConnectablePins(&b, &aOut, out, true));
    EXPECT_THAT(listed(out), IsEmpty());
}

TEST_F(SceneQueries, FormWithBothWaysFollowsItsFlag)
{
    GraphNodePin& both = graph.addPin(a, "both", bothDirections);
    GraphNodePin& fullIn = graph.addInput(b, "fullIn", 0);
    GraphNodePin& fullOut = graph.addOutput(b, "fullOut", 0);
    struct Row
    {
        bool pinIsSource;
        bool excludeFull;
        std::vector<GraphNodePin*> expected;
    };
    Row const rows[] = {
        {true, false, {&bIn, &fullIn}},
        {true, true, {&bIn}},
        {false, false, {&bOut, &fullOut}},
        {false, true, {&bOut}},
    };
    for (Row const& row : rows)
    {
        Pins out;
        EXPECT_TRUE(scene.getConnectablePins(&both, &b, row.pinIsSource, out, row.excludeFull));
        EXPECT_EQ(row.expected, listed(out));
    }
    bIn.setMaxNumConnections(0);
    Pins out;
    EXPECT_FALSE(scene.getConnectablePins(&both, &b, true, out, true));
    EXPECT_TRUE(out.isEmpty());
}

TEST_F(SceneQueries, FullPinsAreRemovedFromWhatTheListHeldBeforeToo)
{
    GraphNodePin& full = graph.addInput(c, "full", 0);
    GraphNodePin& open = graph.addInput(c, "open");
    Pins out = listOf<GraphNodePin>({&full, &open, &full});
    EXPECT_TRUE(scene.getConnectablePins(&aOut, &b, out, true));
    EXPECT_THAT(listed(out), ElementsAre(&open, &bIn));
    out = listOf<GraphNodePin>({&open, &full});
    EXPECT_TRUE(scene.getConnectablePins(&b, &aIn, out, true));
    EXPECT_THAT(listed(out), ElementsAre(&open, &bOut));
}

TEST_F(SceneQueries, WithoutFullPinsTheResultIsWhetherTheListHoldsAnyWhateverTheNodeSaid)
{
    GraphNodePin& open = graph.addInput(c, "open");
    Pins out = listOf<GraphNodePin>({&open});
    EXPECT_FALSE(scene.getConnectablePins(&aIn, &b, out, false));
    EXPECT_TRUE(scene.getConnectablePins(&aIn, &b, out, true));
    EXPECT_FALSE(scene.getConnectablePins(&b, &aOut, out, false));
    EXPECT_TRUE(scene.getConnectablePins(&b, &aOut, out, true));
    EXPECT_THAT(listed(out), ElementsAre(&open));
    bIn.setMaxNumConnections(0);
    out.clear();
    EXPECT_TRUE(scene.getConnectablePins(&aOut, &b, out, false));
    out.clear();
    EXPECT_FALSE(scene.getConnectablePins(&aOut, &b, out, true));
}

TEST_F(SceneQueries, PinsOfTwoNodesAreGatheredForEachPair)
{
    GraphNodePin& secondOut = graph.addOutput(a, "second");
    GraphNodePin& secondIn = graph.addInput(b, "second");
    Pins sources;
    Pins targets;
    EXPECT_TRUE(scene.getConnectablePins(&a, &b, sources, targets, false));
    EXPECT_THAT(listed(sources), ElementsAre(&aOut, &aOut, &secondOut, &secondOut));
    EXPECT_THAT(listed(targets), ElementsAre(&bIn, &bIn, &secondIn, &secondIn));
    aOut.setMaxNumConnections(0);
    secondIn.setMaxNumConnections(0);
    EXPECT_TRUE(scene.getConnectablePins(&a, &b, sources, targets, true));
    EXPECT_THAT(listed(sources), ElementsAre(&secondOut, &secondOut, &secondOut, &secondOut));
    EXPECT_THAT(listed(targets), ElementsAre(&bIn, &bIn, &bIn, &bIn));
}

TEST_F(SceneQueries, PinsOfTwoNodesMustBeLeftOnBothSidesWithoutFullOnes)
{
    struct Row
    {
        unsigned int outCapacity;
        unsigned int inCapacity;
        bool found;
    };
    for (Row const& row : {Row{1, 1, true}, Row{0, 1, false}, Row{1, 0, false}, Row{0, 0, false}})
    {
        aOut.setMaxNumConnections(row.outCapacity);
        bIn.setMaxNumConnections(row.inCapacity);
        Pins sources;
        Pins targets;
        EXPECT_TRUE(scene.getConnectablePins(&a, &b, sources, targets, false));
        sources.clear();
        targets.clear();
        EXPECT_EQ(row.found, scene.getConnectablePins(&a, &b, sources, targets, true));
        EXPECT_EQ(row.outCapacity, sources.size());
        EXPECT_EQ(row.inCapacity, targets.size());
    }
}

TEST_F(SceneQueries, PinsOfTwoNodesCountWhenTheListsHoldThemThoughTheNodesSayNo)
{
    TestNode& bare = graph.addNode("bare");
    GraphNodePin& full = graph.addInput(c, "full", 0);
    Pins sources = listOf<GraphNodePin>({&aOut});
    Pins targets = listOf<GraphNodePin>({&full, &bIn});
    EXPECT_FALSE(scene.getConnectablePins(&bare, &b, sources, targets, false));
    EXPECT_TRUE(scene.getConnectablePins(&bare, &b, sources, targets, true));
    EXPECT_THAT(listed(sources), ElementsAre(&aOut));
    EXPECT_THAT(listed(targets), ElementsAre(&bIn));
}

/// Gathers nothing and gives the answers that it is told, writing down who is asked.
class AnsweringNode : public TestNode
{
public:
    using TestNode::allowsConnectionFrom;
    using TestNode::allowsConnectionTo;
    using TestNode::TestNode;

    bool allowsConnectionTo(GraphNodeBase const*, Pins& out) const override
    {
        ++asked;
        if (given != nullptr) out.append(given);
        return answer;
    }

    bool allowsConnectionFrom(GraphNodeBase const*, Pins& out) const override
    {
        ++asked;
        if (given != nullptr) out.append(given);
        return answer;
    }

    GraphNodePin* given = nullptr;
    bool answer = false;
    mutable int asked = 0;
};

TEST_F(SceneQueries, TargetNodeIsAskedOnlyWhenTheSourceNodeSaysYes)
{
    AnsweringNode& source = graph.addNode<AnsweringNode>("source");
    AnsweringNode& target = graph.addNode<AnsweringNode>("target");
    source.given = &aOut;
    target.given = &bIn;
    target.answer = true;
    Pins sources;
    Pins targets;
    EXPECT_FALSE(scene.getConnectablePins(&source, &target, sources, targets, false));
    EXPECT_EQ(0, target.asked);
    EXPECT_FALSE(scene.getConnectablePins(&source, &target, sources, targets, true));
    EXPECT_EQ(0, target.asked);
    EXPECT_EQ(2, source.asked);
    EXPECT_EQ(2u, sources.size());
    source.answer = true;
    EXPECT_TRUE(scene.getConnectablePins(&source, &target, sources, targets, false));
    EXPECT_EQ(1, target.asked);
    target.answer = false;
    EXPECT_FALSE(scene.getConnectablePins(&source, &target, sources, targets, false));
    EXPECT_TRUE(scene.getConnectablePins(&source, &target, sources, targets, true));
}

TEST_F(SceneQueries, NullHasNoConnectablePins)
{
    GraphNodePin const* const noPin = nullptr;
    GraphNodeBase const* const noNode = nullptr;
    Pins out = listOf<GraphNodePin>({&bIn});
    Pins other = listOf<GraphNodePin>({&aOut});
    for (bool const excludeFull : {false, true})
    {
        EXPECT_FALSE(scene.getConnectablePins(noPin, &b, out, excludeFull));
        EXPECT_FALSE(scene.getConnectablePins(&aOut, noNode, out, excludeFull));
        EXPECT_FALSE(scene.getConnectablePins(&b, noPin, out, excludeFull));
        EXPECT_FALSE(scene.getConnectablePins(noNode, &aIn, out, excludeFull));
        EXPECT_FALSE(scene.getConnectablePins(noNode, &b, other, out, excludeFull));
        EXPECT_FALSE(scene.getConnectablePins(&a, noNode, other, out, excludeFull));
        for (bool const pinIsSource : {false, true})
        {
            EXPECT_FALSE(scene.getConnectablePins(noPin, &b, pinIsSource, out, excludeFull));
            EXPECT_FALSE(scene.getConnectablePins(&aOut, noNode, pinIsSource, out, excludeFull));
        }
    }
    EXPECT_THAT(listed(out), ElementsAre(&bIn));
    EXPECT_THAT(listed(other), ElementsAre(&aOut));
}

/// Repeats the pins so often that the list outgrows its block while it is walked.
constexpr unsigned int manyPins = 20;

TEST_F(SceneQueries, ConnectablePinsMayBeGatheredIntoTheListThatIsWalked)
{
    for (unsigned int i = 0; i < manyPins; ++i) graph.addPin(c, "both", bothDirections);
    unsigned int const size = c.getNodePins().size();
    for (bool const pinIsSource : {true, false})
    {
        SCOPED_TRACE(pinIsSource);
        GraphNodePin const& pin = pinIsSource ? aOut : aIn;
        EXPECT_TRUE(scene.getConnectablePins(&pin, &c, pinIsSource, c.refNodePins(), false));
        EXPECT_EQ(size + manyPins + 1, c.getNodePins().size()); // the filter's own input or output, too
        c.refNodePins().setSize(size);
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, ConnectablePinsOfTwoNodesMayBeGatheredIntoTheListsThatAreWalked)
{
    for (TestNode* node : {&b, &c})
        for (unsigned int i = 0; i < manyPins; ++i) graph.addPin(*node, "both", bothDirections);
    unsigned int const size = b.getNodePins().size();
    unsigned int const pairs = (manyPins + 1) * (manyPins + 1);
    Pins found;
    EXPECT_TRUE(scene.getConnectablePins(&b, &c, b.refNodePins(), found, false));
    EXPECT_EQ(size + pairs, b.getNodePins().size());
    b.refNodePins().setSize(size);
    EXPECT_TRUE(scene.getConnectablePins(&b, &c, found, b.refNodePins(), false));
    EXPECT_EQ(size + pairs, b.getNodePins().size());
    b.refNodePins().setSize(size);
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- connections of nodes

TEST_F(SceneQueries, ConnectionsWithANodeFollowTheFourFlagsOfTheNode)
{
    GraphConnection* const in = connect(b, a);
    GraphConnection* const out = connect(a, b);
    GraphConnection* const implicitOut = connect(a, c, true);
    GraphConnection* const loop = connect(a, a);
    struct Row
    {
        bool outputs;
        bool inputs;
        bool includeImplicit;
        bool unique;
        std::vector<GraphConnection*> expected;
    };
    Row const rows[] = {
        {false, false, true, false, {}},
        {true, false, true, false, {out, implicitOut, loop}},
        {true, false, false, false, {out, loop}},
        {false, true, true, false, {in, loop}},
        {true, true, true, false, {in, loop, out, implicitOut, loop}},
        {true, true, true, true, {in, loop, out, implicitOut}},
        {true, true, false, true, {in, loop, out}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        for (bool const byId : {false, true})
        {
            Connections found;
            bool const any = byId ? scene.getConnectionsWithNode(a.getId(), found, row.outputs, row.inputs,
                                                                 row.includeImplicit, row.unique)
                                  : scene.getConnectionsWithNode(&a, found, row.outputs, row.inputs,
                                                                 row.includeImplicit, row.unique);
            EXPECT_EQ(row.expected, listed(found));
            EXPECT_EQ(!row.expected.empty(), any);
        }
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, ConnectionsWithANodeAreAppendedAndTheListDecidesTheResult)
{
    GraphConnection* const made = connect(a, b);
    Connections found = listOf<GraphConnection>({made});
    EXPECT_TRUE(scene.getConnectionsWithNode(&c, found, true, true, true, false));
    EXPECT_TRUE(scene.getConnectionsWithNode(&a, found, true, true, true, false));
    EXPECT_THAT(listed(found), ElementsAre(made, made));
    EXPECT_TRUE(scene.getConnectionsWithNode(&c, found, true, true, true, true));
    EXPECT_THAT(listed(found), ElementsAre(made));
}

TEST_F(SceneQueries, NoNodeAndAnUnknownIdHaveNoConnections)
{
    Connections found = listOf<GraphConnection>({connect(a, b)});
    EXPECT_FALSE(scene.getConnectionsWithNode(nullptr, found, true, true, true, true));
    EXPECT_FALSE(scene.getConnectionsWithNode(4711u, found, true, true, true, true));
    EXPECT_FALSE(scene.getConnectionsWithNode(0xFFFFFFFFu, found, true, true, true, true));
    EXPECT_EQ(1u, found.size());
}

TEST_F(SceneQueries, ConnectionsBetweenNodesFollowTheThreeFlagsOfTheNode)
{
    GraphConnection* const there = connect(a, b);
    GraphConnection* const implicitThere = connect(a, b, true);
    GraphConnection* const back = connect(b, a);
    connect(a, c);
    struct Row
    {
        bool bothWays;
        bool includeImplicit;
        bool unique;
        std::vector<GraphConnection*> expected;
    };
    Row const rows[] = {
        {false, false, false, {there, there}},
        {false, true, false, {there, there, implicitThere}},
        {true, false, false, {there, there, back}},
        {true, true, false, {there, there, implicitThere, back}},
        {true, true, true, {there, implicitThere, back}},
        {false, false, true, {there}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        Connections found = listOf<GraphConnection>({there});
        EXPECT_TRUE(
            scene.getConnectionsBetweenNodes(&a, &b, row.bothWays, row.includeImplicit, row.unique, found));
        EXPECT_EQ(row.expected, listed(found));
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, ConnectionsBetweenNodesThatHaveNoneAreNone)
{
    connect(b, a);
    Connections found;
    EXPECT_FALSE(scene.getConnectionsBetweenNodes(&a, &b, false, true, true, found));
    EXPECT_FALSE(scene.getConnectionsBetweenNodes(&a, &c, true, true, true, found));
    EXPECT_TRUE(found.isEmpty());
    found.append(scene.getGraphConnections()[0]);
    EXPECT_TRUE(scene.getConnectionsBetweenNodes(&a, &c, true, true, true, found));
    EXPECT_FALSE(scene.getConnectionsBetweenNodes(nullptr, &a, true, true, true, found));
    EXPECT_FALSE(scene.getConnectionsBetweenNodes(&a, nullptr, true, true, true, found));
    EXPECT_EQ(1u, found.size());
}

TEST_F(SceneQueries, ConnectionsInvolvingNodesAreGatheredNodeByNode)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const bc = connect(b, c);
    GraphConnection* const implicitCa = connect(c, a, true);
    Nodes const nodes = listOf<GraphNodeBase>({&b, &a});
    Connections found;
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(nodes, false, true, false, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc, implicitCa, ab));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(nodes, false, false, false, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc, ab));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(nodes, false, true, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc, implicitCa));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, RepeatsInvolvingNodesAreRemovedFromTheWholeListFirstOnesKept)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const loop = connect(a, a);
    GraphConnection* const other = connect(b, c);
    Connections found = listOf<GraphConnection>({other, other, loop});
    EXPECT_TRUE(
        scene.getConnectionsInvolvingNodes(listOf<GraphNodeBase>({&a, &a}), false, true, true, found));
    EXPECT_THAT(listed(found), ElementsAre(other, loop, ab));
    found = listOf<GraphConnection>({other, other});
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(listOf<GraphNodeBase>({&a}), false, true, false, found));
    EXPECT_THAT(listed(found), ElementsAre(other, other, loop, ab, loop));
}

TEST_F(SceneQueries, InterfaceNodesAreSkippedOnRequest)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const bc = connect(b, c);
    b.setInterface(true);
    Nodes const nodes = listOf<GraphNodeBase>({&b, &c});
    Connections found;
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(nodes, true, true, false, found));
    EXPECT_THAT(listed(found), ElementsAre(bc));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(nodes, false, true, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc));
    found.clear();
    EXPECT_FALSE(scene.getConnectionsInvolvingNodes(listOf<GraphNodeBase>({&b}), true, true, true, found));
    EXPECT_FALSE(scene.getConnectionsInvolvingNodes(Nodes(), false, true, true, found));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, ConnectionsInvolvingOnlyNodesHaveBothEndsInTheList)
{
    connect(a, b);
    GraphConnection* const bc = connect(b, c);
    GraphConnection* const implicitCb = connect(c, b, true);
    GraphConnection* const loop = connect(c, c);
    connect(c, a);
    Nodes const nodes = listOf<GraphNodeBase>({&c, &b});
    Connections found;
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(nodes, false, true, found));
    EXPECT_THAT(listed(found), ElementsAre(bc, loop, implicitCb));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(nodes, false, false, found));
    EXPECT_THAT(listed(found), ElementsAre(bc, loop));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, EndWithoutNodeIsInNoList)
{
    GraphNodePin source(nullptr, unlimited, PIN_OUTPUT);
    GraphNodePin target(nullptr, unlimited, PIN_INPUT);
    GraphConnection* const from = scene.connect(&source, b.getPinByName("in"), false);
    GraphConnection* const to = scene.connect(b.getPinByName("out"), &target, false);
    ASSERT_NE(nullptr, from);
    ASSERT_NE(nullptr, to);
    Connections found;
    EXPECT_FALSE(
        scene.getConnectionsInvolvingOnlyNodes(listOf<GraphNodeBase>({&b, nullptr}), false, true, found));
    scene.removeConnection(from);
    scene.removeConnection(to);
}

TEST_F(SceneQueries, WhatTheListHeldBeforeIsFilteredTheSameWay)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const bc = connect(b, c);
    GraphConnection* const ca = connect(c, a);
    Connections found = listOf<GraphConnection>({ca, ab, ab});
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(listOf<GraphNodeBase>({&b, &a}), false, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab));
    found = listOf<GraphConnection>({ca, bc});
    EXPECT_FALSE(scene.getConnectionsInvolvingOnlyNodes(listOf<GraphNodeBase>({&a}), false, true, found));
    EXPECT_TRUE(found.isEmpty());
    found = listOf<GraphConnection>({ca});
    EXPECT_FALSE(scene.getConnectionsInvolvingOnlyNodes(Nodes(), false, true, found));
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(SceneQueries, SkippedInterfaceNodesStillCountAsEndsInTheList)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const loop = connect(b, b);
    b.setInterface(true);
    Nodes const nodes = listOf<GraphNodeBase>({&a, &b});
    Connections found;
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(nodes, true, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(nodes, false, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, loop));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, EndsAreComparedByPointerNotById)
{
    GraphConnection* const ab = connect(a, b);
    GraphNodeBase twin(b.getId());
    Connections found = listOf<GraphConnection>({ab});
    EXPECT_FALSE(
        scene.getConnectionsInvolvingOnlyNodes(listOf<GraphNodeBase>({&a, &twin}), false, true, found));
}

TEST_F(SceneQueries, ListsThatArePassedInMayBeTheNodesOwnChildren)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const bc = connect(b, c);
    Connections found;
    EXPECT_TRUE(scene.getConnectionsInvolvingOnlyNodes(graph.root.getNodes(), false, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc));
    found.clear();
    EXPECT_TRUE(scene.getConnectionsInvolvingNodes(graph.root.getNodes(), false, true, true, found));
    EXPECT_THAT(listed(found), ElementsAre(ab, bc));
}

TEST_F(SceneQueries, NodesBelowMayBeGatheredIntoTheListOfOneOfThem)
{
    TestNode& compound = graph.addNode("compound");
    TestNode& inner = graph.addNode("inner", &compound);
    TestNode& innermost = graph.addNode("innermost", &inner);
    for (TestNode* listOwner : {&compound, &inner})
    {
        SCOPED_TRACE(listOwner->getName().c_str());
        GraphNodeBase* const child = listOwner->getNodes()[0];
        scene.getGraphNodesAtLevel(&graph.root, true, listOwner->refNodes());
        EXPECT_THAT(listed(listOwner->getNodes()),
                    ElementsAre(child, &a, &b, &c, &compound, &inner, &innermost));
        listOwner->refNodes().setSize(1);
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- connected nodes

TEST_F(SceneQueries, ConnectedNodesComeInOrderOfAppearanceTargetsBeforeSources)
{
    GraphConnection* const ab = connect(a, b);
    GraphConnection* const ba = connect(b, a);
    GraphConnection* const cb = connect(c, b);
    Nodes found;
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({ab, ba}), found, true, true, false));
    EXPECT_THAT(listed(found), ElementsAre(&b, &a));
    found.clear();
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({ba, ab, cb}), found, true, true, false));
    EXPECT_THAT(listed(found), ElementsAre(&a, &b, &c));
    found.clear();
    EXPECT_TRUE(
        scene.getNodesConnectedBase(listOf<GraphConnection>({cb, ab, ba}), found, true, false, false));
    EXPECT_THAT(listed(found), ElementsAre(&b, &a));
    found.clear();
    EXPECT_TRUE(
        scene.getNodesConnectedBase(listOf<GraphConnection>({cb, ab, ba}), found, false, true, false));
    EXPECT_THAT(listed(found), ElementsAre(&c, &a, &b));
    found.clear();
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({cb}), found, false, false, false));
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(SceneQueries, ConnectedNodesOfNoConnectionsAreNoneAndStillTrue)
{
    Nodes found;
    EXPECT_TRUE(scene.getNodesConnectedBase(Connections(), found, true, true, true));
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(SceneQueries, ConnectedNodesAreNotRepeatedBesideWhatTheListHeld)
{
    GraphConnection* const ab = connect(a, b);
    Nodes found = listOf<GraphNodeBase>({&a, &c, &c});
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({ab}), found, true, true, false));
    EXPECT_THAT(listed(found), ElementsAre(&a, &c, &c, &b));
}

TEST_F(SceneQueries, ConnectionsWithinOneNodeAreSkippedOnRequest)
{
    GraphConnection* const loop = connect(a, a);
    GraphConnection* const bc = connect(b, c);
    Nodes found;
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({loop, bc}), found, true, true, true));
    EXPECT_THAT(listed(found), ElementsAre(&c, &b));
    found.clear();
    EXPECT_TRUE(scene.getNodesConnectedBase(listOf<GraphConnection>({loop, bc}), found, true, true, false));
    EXPECT_THAT(listed(found), ElementsAre(&a, &c, &b));
}

TEST_F(SceneQueries, NodesConnectedWithANodeAreThoseOfItsConnectionsItselfIncluded)
{
    connect(a, b);
    connect(c, a);
    struct Row
    {
        bool addTargets;
        bool addSources;
        std::vector<GraphNodeBase*> expected;
    };
    Row const rows[] = {
        {true, true, {&a, &c, &b}}, // the input side first: c to a, then a to b
        {true, false, {&b}},
        {false, true, {&c}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        Nodes found;
        EXPECT_TRUE(
            scene.getNodesConnectedWithNode(&a, found, row.addTargets, row.addSources, false, true, true));
        EXPECT_EQ(row.expected, listed(found));
    }
    Nodes found;
    EXPECT_FALSE(scene.getNodesConnectedWithNode(&a, found, false, false, false, true, true));
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(SceneQueries, NodesConnectedWithANodeIncludeThoseOfImplicitConnectionsByTheLastFlag)
{
    connect(a, b, true);
    for (bool const unique : {false, true})
    {
        Nodes found;
        EXPECT_FALSE(scene.getNodesConnectedWithNode(&a, found, true, true, false, unique, false));
        EXPECT_TRUE(found.isEmpty());
        EXPECT_TRUE(scene.getNodesConnectedWithNode(&a, found, true, true, false, unique, true));
        EXPECT_THAT(listed(found), ElementsAre(&b, &a));
    }
}

TEST_F(SceneQueries, NodesConnectedWithAnUnwiredNodeAreNoneAndFalseWhateverTheListHeld)
{
    connect(a, b);
    Nodes found = listOf<GraphNodeBase>({&a});
    EXPECT_FALSE(scene.getNodesConnectedWithNode(&c, found, true, true, false, true, true));
    EXPECT_FALSE(scene.getNodesConnectedWithNode(&a, found, false, true, false, true, true));
    EXPECT_FALSE(scene.getNodesConnectedWithNode(nullptr, found, true, true, false, true, true));
    EXPECT_THAT(listed(found), ElementsAre(&a));
}

TEST_F(SceneQueries, NodesConnectedWithANodeThatIsOnlyWiredToItselfAreNoneButTrueWhenItIsSkipped)
{
    connect(a, a);
    Nodes found;
    EXPECT_TRUE(scene.getNodesConnectedWithNode(&a, found, true, true, true, true, true));
    EXPECT_TRUE(found.isEmpty());
    EXPECT_TRUE(scene.getNodesConnectedWithNode(&a, found, true, true, false, true, true));
    EXPECT_THAT(listed(found), ElementsAre(&a));
}

// --- the queries that have two modes

TEST_P(SceneQueriesInBothModes, NodesAreConnectedByDirection)
{
    connect(a, b);
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, true));
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, true, true));
    EXPECT_FALSE(scene.areNodesConnected(&b, &a, false, true));
    EXPECT_TRUE(scene.areNodesConnected(&b, &a, true, true));
    EXPECT_FALSE(scene.areNodesConnected(&a, &c, true, true));
    EXPECT_FALSE(scene.areNodesConnected(&a, &a, true, true));
    connect(a, a);
    EXPECT_TRUE(scene.areNodesConnected(&a, &a, false, true));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_P(SceneQueriesInBothModes, ImplicitConnectionsConnectNodesOnlyWhenTheyAreIncluded)
{
    connect(a, b, true);
    for (bool const eitherDirection : {false, true})
    {
        EXPECT_FALSE(scene.areNodesConnected(&a, &b, eitherDirection, false));
        EXPECT_TRUE(scene.areNodesConnected(&a, &b, eitherDirection, true));
        EXPECT_FALSE(scene.areNodesConnected(&b, &a, eitherDirection, false));
        EXPECT_EQ(eitherDirection, scene.areNodesConnected(&b, &a, eitherDirection, true));
    }
    connect(a, b);
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, false));
    EXPECT_TRUE(scene.areNodesConnected(&b, &a, true, false));
}

TEST_P(SceneQueriesInBothModes, NodesAreConnectedByTheLastOfManyConnections)
{
    connect(b, c);
    connect(c, b, true);
    GraphConnection* const first = connect(a, b);
    GraphConnection* const second = connect(a, b);
    scene.removeConnection(first);
    EXPECT_TRUE(scene.areNodesConnected(&a, &b, false, false));
    scene.removeConnection(second);
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, true, true));
    EXPECT_TRUE(scene.areNodesConnected(&b, &c, false, false));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_P(SceneQueriesInBothModes, NullNodesAreNotConnected)
{
    connect(a, b);
    EXPECT_FALSE(scene.areNodesConnected(nullptr, &b, true, true));
    EXPECT_FALSE(scene.areNodesConnected(&a, nullptr, true, true));
    EXPECT_FALSE(scene.areNodesConnected(nullptr, nullptr, true, true));
    EXPECT_FALSE(scene.hasNodeAnyConnection(nullptr, bothDirections, false));
}

TEST_P(SceneQueriesInBothModes, ConnectionsOfPinsWithoutNodesConnectNothing)
{
    GraphNodePin source(nullptr, 1u, PIN_OUTPUT);
    GraphNodePin target(nullptr, 1u, PIN_INPUT);
    GraphConnection* const made = scene.connect(&source, &target, false);
    ASSERT_NE(nullptr, made);
    EXPECT_FALSE(scene.areNodesConnected(nullptr, nullptr, true, true));
    EXPECT_FALSE(scene.areNodesConnected(&a, &b, true, true));
    EXPECT_FALSE(scene.hasNodeAnyConnection(nullptr, bothDirections, false));
    scene.removeConnection(made);
}

TEST_P(SceneQueriesInBothModes, AskingChangesNothing)
{
    connect(a, b);
    scene.setIsDirty(false);
    scene.areNodesConnected(&a, &c, true, true);
    scene.hasNodeAnyConnection(&c, bothDirections, false);
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, NodesAreToldApartByPointerInTheArrayAndByIdInTheCounts)
{
    connect(a, b);
    GraphNodeBase const twin(a.getId());
    EXPECT_TRUE(scene.areNodesConnected(&twin, &b, false, true));
    scene.setUseAdjacencyMap(false);
    EXPECT_FALSE(scene.areNodesConnected(&twin, &b, false, true));
}

TEST_P(SceneQueriesInBothModes, NodeHasAnyConnectionInADirection)
{
    bool const adjacency = GetParam();
    connect(a, b, true);
    struct Row
    {
        GraphNodeBase const* node;
        PinDirection direction;
        bool inTheArray;
        bool inTheCounts;
    };
    // The counts answer for both directions as soon as the output bit is there, and else not at all.
    Row const rows[] = {
        {&a, PIN_OUTPUT, true, true},    {&a, PIN_INPUT, false, false},   {&a, bothDirections, true, true},
        {&b, PIN_OUTPUT, false, true},   {&b, PIN_INPUT, true, false},    {&b, bothDirections, true, true},
        {&c, PIN_OUTPUT, false, false},  {&c, PIN_INPUT, false, false},   {&c, bothDirections, false, false},
        {&a, noDirection, false, false}, {&b, noDirection, false, false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        for (bool const ignoreLoops : {false, true})
            EXPECT_EQ(adjacency ? row.inTheCounts : row.inTheArray,
                      scene.hasNodeAnyConnection(row.node, row.direction, ignoreLoops));
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_P(SceneQueriesInBothModes, ConnectionsOfANodeWithItselfMayBeIgnored)
{
    bool const adjacency = GetParam();
    connect(a, a);
    EXPECT_TRUE(scene.hasNodeAnyConnection(&a, PIN_OUTPUT, false));
    EXPECT_EQ(!adjacency, scene.hasNodeAnyConnection(&a, PIN_INPUT, false));
    EXPECT_FALSE(scene.hasNodeAnyConnection(&a, PIN_OUTPUT, true));
    EXPECT_FALSE(scene.hasNodeAnyConnection(&a, PIN_INPUT, true));
    EXPECT_FALSE(scene.hasNodeAnyConnection(&a, bothDirections, true));
    connect(b, a);
    EXPECT_EQ(adjacency, scene.hasNodeAnyConnection(&a, PIN_OUTPUT, true));
    EXPECT_EQ(!adjacency, scene.hasNodeAnyConnection(&a, PIN_INPUT, true));
    EXPECT_TRUE(scene.hasNodeAnyConnection(&a, bothDirections, true));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneQueries, OneIncomingConnectionIsSeenByDirectionOnlyWithoutTheCounts)
{
    connect(a, b);
    EXPECT_FALSE(scene.hasNodeAnyConnection(&b, PIN_INPUT, false));
    scene.setUseAdjacencyMap(false);
    EXPECT_TRUE(scene.hasNodeAnyConnection(&b, PIN_INPUT, false));
}

TEST_F(SceneQueries, NumbersAreThoseOfTheArrayAndOfTheIdMap)
{
    EXPECT_EQ(4u, scene.getNumberOfNodes());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    connect(a, b);
    connect(a, b);
    EXPECT_EQ(2u, scene.getNumberOfConnections());
    scene.removeNodeFromGraph(&c);
    EXPECT_EQ(3u, scene.getNumberOfNodes());
}

} // namespace
} // namespace kestrel::graph::test
