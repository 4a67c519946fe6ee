#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>

#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/SmallStack.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <deque>
#include <new>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

constexpr PinDirection noDirection{0u};
constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;

using Lines = std::vector<std::string>;

/// A node of that id and name, without scene.
class NamedNode : public GraphNodeBase
{
public:
    NamedNode(unsigned int const& id, KS_String const& name) : GraphNodeBase(id) { setName(name); }
};

/// Stands on a node that only the virtual question knows, and answers for its kind and its name itself.
class HostPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    GraphNodeBase* getParentGraphNodePtr() const override { return place; }
    bool isCompoundPin() const override { return compound; }
    bool isInterfacePin() const override { return interfaceKind; }
    KS_String getName() override { return "host"; }

    GraphNodeBase* place = nullptr;
    bool compound = false;
    bool interfaceKind = false;
};

/// Node "A" with the output pin "out", node "B" with the input pin "in", and a connection from the one to the
/// other that stands in no list.
class ConnectionBetweenNodes : public ::testing::Test
{
protected:
    ConnectionBetweenNodes()
    {
        out.setName("out");
        in.setName("in");
    }

    NamedNode a{1, "A"};
    NamedNode b{2, "B"};
    NamedNode other{3, "C"};
    GraphNodePin out{&a, unlimited, PIN_OUTPUT};
    GraphNodePin in{&b, unlimited, PIN_INPUT};
    GraphNodePin otherPin{&other, unlimited, bothDirections};
    GraphConnection connection{&out, &in};
};

using ConnectionConstruction = ConnectionBetweenNodes;
using ConnectionEquality = ConnectionBetweenNodes;
using ConnectionEnds = ConnectionBetweenNodes;
using ConnectionNodes = ConnectionBetweenNodes;
using ConnectionName = ConnectionBetweenNodes;
using ConnectionWiring = ConnectionBetweenNodes;
using ConnectionElement = ConnectionBetweenNodes;

// -----------------------------------------------------------------------------------------------------------
// Construction and copies

TEST_F(ConnectionConstruction, WithoutPinsItIsEmptyAndNotImplicit)
{
    GraphConnection const empty;
    EXPECT_EQ(empty.getSourcePin(), nullptr);
    EXPECT_EQ(empty.getTargetPin(), nullptr);
    EXPECT_FALSE(empty.isImplicit());
}

TEST_F(ConnectionConstruction, WithPinsItKeepsThemAndIsNotImplicit)
{
    EXPECT_EQ(connection.getSourcePin(), &out);
    EXPECT_EQ(connection.getTargetPin(), &in);
    EXPECT_FALSE(connection.isImplicit());
    EXPECT_FALSE(connection.isBidirectional());
}

TEST_F(ConnectionConstruction, TouchesNoList)
{
    GraphConnection const copy(connection);
    GraphConnection assigned;
    assigned = connection;
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
}

TEST_F(ConnectionConstruction, SettingAPinTouchesNoList)
{
    connection.addToConnectedPins();
    connection.setSourcePin(&otherPin);
    connection.setTargetPin(&otherPin);
    EXPECT_EQ(connection.getSourcePin(), &otherPin);
    EXPECT_EQ(connection.getTargetPin(), &otherPin);
    EXPECT_FALSE(otherPin.isConnected());
    EXPECT_EQ(out.getOutputConnections().size(), 1u);
    EXPECT_EQ(in.getInputConnections().size(), 1u);
    connection.setSourcePin(nullptr);
    connection.setTargetPin(nullptr);
    EXPECT_EQ(connection.getSourcePin(), nullptr);
    EXPECT_EQ(connection.getTargetPin(), nullptr);
}

TEST_F(ConnectionConstruction, CopiesAndAssignmentsTakePinsAndFlag)
{
    for (bool implicit : {false, true})
    {
        connection.setImplicit(implicit);
        GraphConnection const copy(connection);
        GraphConnection assigned(&otherPin, &otherPin);
        assigned.setImplicit(!implicit);
        EXPECT_EQ(&(assigned = connection), &assigned);
        for (GraphConnection const* each : {&copy, static_cast<GraphConnection const*>(&assigned)})
        {
            EXPECT_EQ(each->getSourcePin(), &out);
            EXPECT_EQ(each->getTargetPin(), &in);
            EXPECT_EQ(each->isImplicit(), implicit);
        }
    }
}

TEST_F(ConnectionConstruction, AssignmentToItselfChangesNothing)
{
    connection.setImplicit(true);
    GraphConnection& same = connection;
    connection = same;
    EXPECT_EQ(connection.getSourcePin(), &out);
    EXPECT_EQ(connection.getTargetPin(), &in);
    EXPECT_TRUE(connection.isImplicit());
}

TEST_F(ConnectionConstruction, DestructionTouchesNoList)
{
    {
        GraphConnection passing(&out, &in);
        passing.addToConnectedPins();
    }
    EXPECT_EQ(out.getOutputConnections().size(), 1u);
    EXPECT_EQ(in.getInputConnections().size(), 1u);
}

TEST_F(ConnectionConstruction, TheImplicitFlagIsStored)
{
    connection.setImplicit(true);
    EXPECT_TRUE(connection.isImplicit());
    connection.setImplicit(false);
    EXPECT_FALSE(connection.isImplicit());
}

// -----------------------------------------------------------------------------------------------------------
// Equality

TEST_F(ConnectionEquality, IsThatOfThePins)
{
    GraphConnection const same(&out, &in);
    GraphConnection const otherSource(&otherPin, &in);
    GraphConnection const otherTarget(&out, &otherPin);
    GraphConnection const turned(&in, &out);
    EXPECT_TRUE(connection == same);
    EXPECT_TRUE(connection.isSameAs(same));
    EXPECT_TRUE(connection == connection);
    for (GraphConnection const* each : {&otherSource, &otherTarget, &turned})
    {
        EXPECT_FALSE(connection == *each);
        EXPECT_FALSE(connection.isSameAs(*each));
    }
}

TEST_F(ConnectionEquality, DoesNotLookAtTheImplicitFlag)
{
    GraphConnection same(&out, &in);
    same.setImplicit(true);
    EXPECT_TRUE(connection == same);
    EXPECT_TRUE(connection.isSameAs(same));
}

TEST_F(ConnectionEquality, HoldsForConnectionsWithoutPins)
{
    EXPECT_TRUE(GraphConnection() == GraphConnection());
    EXPECT_TRUE(GraphConnection(&out, nullptr).isSameAs(GraphConnection(&out, nullptr)));
    EXPECT_FALSE(GraphConnection(&out, nullptr) == connection);
    EXPECT_FALSE(GraphConnection(nullptr, &in).isSameAs(connection));
}

TEST_F(ConnectionEquality, DoesNotAskWhetherTheyAreConnected)
{
    out.setDirection(noDirection);
    EXPECT_TRUE(connection.isSameAs(GraphConnection(&out, &in)));
}

class ConnectionOfItsOwnKind : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool isSameAs(GraphConnection const& compared) const override
    {
        asked = &compared;
        return answer;
    }

    bool answer = false;
    mutable GraphConnection const* asked = nullptr;
};

TEST_F(ConnectionEquality, TheOperatorAsksTheVirtualComparison)
{
    ConnectionOfItsOwnKind host(&out, &in);
    EXPECT_FALSE(host.operator==(connection));
    EXPECT_EQ(host.asked, &connection);
    host.answer = true;
    EXPECT_TRUE(host.operator==(GraphConnection()));
}

TEST_F(ConnectionEquality, ListsOfValuesFindByPins)
{
    Array<GraphConnection, _Wa> values;
    values.append(GraphConnection(&otherPin, &in));
    values.append(GraphConnection(&out, &in));
    values.append(GraphConnection(&out, &in));
    GraphConnection sought(&out, &in);
    sought.setImplicit(true);
    EXPECT_EQ(values.find(sought), 1u);
    EXPECT_EQ(values.removeAll(sought), 2u);
    ASSERT_EQ(values.size(), 1u);
    EXPECT_EQ(values[0].getSourcePin(), &otherPin);
}

// -----------------------------------------------------------------------------------------------------------
// Ends

TEST_F(ConnectionEnds, ItIsConnectedFromAnOutputBitToAnInputBit)
{
    for (unsigned int source = 0; source < 8; ++source)
    {
        for (unsigned int target = 0; target < 8; ++target)
        {
            out.setDirection(PinDirection(source));
            in.setDirection(PinDirection(target));
            bool const expected = (source & 2u) != 0 && (target & 1u) != 0;
            EXPECT_EQ(connection.isConnected(), expected) << source << " to " << target;
        }
    }
}

TEST_F(ConnectionEnds, ItIsNotConnectedWithoutBothPins)
{
    EXPECT_FALSE(GraphConnection().isConnected());
    EXPECT_FALSE(GraphConnection(&out, nullptr).isConnected());
    EXPECT_FALSE(GraphConnection(nullptr, &in).isConnected());
}

TEST_F(ConnectionEnds, EachPinIsKnownAsItsOwnEnd)
{
    EXPECT_TRUE(connection.isConnectedPin(&out));
    EXPECT_TRUE(connection.isConnectedPinSource(&out));
    EXPECT_FALSE(connection.isConnectedPinTarget(&out));
    EXPECT_TRUE(connection.isConnectedPin(&in));
    EXPECT_FALSE(connection.isConnectedPinSource(&in));
    EXPECT_TRUE(connection.isConnectedPinTarget(&in));
    for (GraphNodePin const* pin : {&otherPin, static_cast<GraphNodePin*>(nullptr)})
    {
        EXPECT_FALSE(connection.isConnectedPin(pin));
        EXPECT_FALSE(connection.isConnectedPinSource(pin));
        EXPECT_FALSE(connection.isConnectedPinTarget(pin));
    }
}

/// Every question about ends and nodes, asked about what the connection really has.
void expectNoEnds(GraphConnection& connection, GraphNodeBase const* sourceNode,
                  GraphNodeBase const* targetNode)
{
    for (GraphNodePin const* pin : {connection.getSourcePin(), connection.getTargetPin()})
    {
        EXPECT_FALSE(connection.isConnectedPin(pin));
        EXPECT_FALSE(connection.isConnectedPinSource(pin));
        EXPECT_FALSE(connection.isConnectedPinTarget(pin));
    }
    for (GraphNodeBase const* node : {sourceNode, targetNode})
    {
        EXPECT_FALSE(connection.isConnectedNode(node));
        EXPECT_FALSE(connection.isConnectedNodeSource(node));
        EXPECT_FALSE(connection.isConnectedNodeTarget(node));
    }
    EXPECT_FALSE(connection.isLoop());
    EXPECT_FALSE(connection.isNodeLoop());
    EXPECT_FALSE(connection.isSameNode());
    EXPECT_STREQ(connection.getFullName().c_str(), "");
}

TEST_F(ConnectionEnds, OneOfWrongDirectionsIsConnectedToNothing)
{
    struct Row
    {
        PinDirection source;
        PinDirection target;
    };
    for (Row const& row : {Row{PIN_INPUT, PIN_INPUT}, Row{PIN_OUTPUT, PIN_OUTPUT}, Row{PIN_INPUT, PIN_OUTPUT},
                           Row{noDirection, PIN_INPUT}, Row{PIN_OUTPUT, noDirection}})
    {
        out.setDirection(row.source);
        in.setDirection(row.target);
        expectNoEnds(connection, &a, &b);
        EXPECT_FALSE(connection.areNodesConnected(a, b, true, true));
    }
}

TEST_F(ConnectionEnds, AHalfMadeOneIsConnectedToNothing)
{
    GraphConnection withoutTarget(&out, nullptr);
    GraphConnection withoutSource(nullptr, &in);
    GraphConnection without;
    for (GraphConnection* each : {&withoutTarget, &withoutSource, &without})
    {
        expectNoEnds(*each, &a, &b);
        expectNoEnds(*each, nullptr, nullptr);
        EXPECT_FALSE(each->areNodesConnected(a, b, true, true));
    }
}

TEST_F(ConnectionEnds, ALoopGoesFromAPinToItself)
{
    GraphConnection const loop(&otherPin, &otherPin);
    EXPECT_TRUE(loop.isConnected());
    EXPECT_TRUE(loop.isLoop());
    EXPECT_TRUE(loop.isNodeLoop());
    EXPECT_TRUE(loop.isSameNode());
    EXPECT_TRUE(loop.isConnectedPinSource(&otherPin));
    EXPECT_TRUE(loop.isConnectedPinTarget(&otherPin));
}

TEST_F(ConnectionEnds, ALoopWithoutOneOfTheBitsIsNone)
{
    for (PinDirection const& direction : {noDirection, PIN_INPUT, PIN_OUTPUT})
    {
        otherPin.setDirection(direction);
        GraphConnection const loop(&otherPin, &otherPin);
        EXPECT_FALSE(loop.isLoop());
        EXPECT_FALSE(loop.isNodeLoop());
        EXPECT_FALSE(loop.isSameNode());
    }
}

TEST_F(ConnectionEnds, BetweenTwoPinsOfOneNodeOnlyTheNodeLoops)
{
    in.setParentGraphNodePtr(&a);
    EXPECT_FALSE(connection.isLoop());
    EXPECT_TRUE(connection.isNodeLoop());
    EXPECT_TRUE(connection.isSameNode());
}

TEST_F(ConnectionEnds, BetweenTwoNodesNothingLoops)
{
    EXPECT_FALSE(connection.isLoop());
    EXPECT_FALSE(connection.isNodeLoop());
    EXPECT_FALSE(connection.isSameNode());
}

TEST_F(ConnectionEnds, TwoNodesOfOneIdAreNotTheSameNode)
{
    b.setId(1);
    EXPECT_FALSE(connection.isNodeLoop());
    EXPECT_FALSE(connection.isSameNode());
    EXPECT_FALSE(connection.isConnectedNodeSource(&b));
}

class ConnectionOfSwitches : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool isConnected() const override { return connected; }
    bool isConnectedPinSource(GraphNodePin const*) const override { return sourceAnswer; }
    bool isConnectedPinTarget(GraphNodePin const*) const override { return targetAnswer; }

    bool connected = true;
    bool sourceAnswer = false;
    bool targetAnswer = false;
};

TEST_F(ConnectionEnds, AnyPinMeansTheVirtualSourceOrTheVirtualTarget)
{
    ConnectionOfSwitches host(&out, &in);
    EXPECT_FALSE(host.isConnectedPin(&out));
    host.sourceAnswer = true;
    EXPECT_TRUE(host.isConnectedPin(&otherPin));
    host.sourceAnswer = false;
    host.targetAnswer = true;
    EXPECT_TRUE(host.isConnectedPin(&otherPin));
}

class ConnectionThatDecides : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool isConnected() const override { return connected; }

    bool connected = false;
};

TEST_F(ConnectionEnds, EveryQuestionAsksTheVirtualIsConnected)
{
    ConnectionThatDecides host(&out, &in);
    expectNoEnds(host, &a, &b);
    EXPECT_FALSE(host.areNodesConnected(a, b, true, true));
    out.setDirection(noDirection);
    in.setDirection(noDirection);
    host.connected = true;
    EXPECT_TRUE(host.isConnectedPinSource(&out));
    EXPECT_TRUE(host.isConnectedPinTarget(&in));
    EXPECT_TRUE(host.isConnectedNode(&a));
    EXPECT_TRUE(host.isConnectedNodeSource(&a));
    EXPECT_TRUE(host.isConnectedNodeTarget(&b));
    EXPECT_TRUE(host.areNodesConnected(a, b, false, false));
    EXPECT_EQ(host.getFullName(), KS_String("A.out > B.in"));
    host.setTargetPin(&out);
    EXPECT_TRUE(host.isLoop());
    EXPECT_TRUE(host.isNodeLoop());
    EXPECT_TRUE(host.isSameNode());
}

// -----------------------------------------------------------------------------------------------------------
// Nodes of the ends

TEST_F(ConnectionNodes, AreThoseOfThePins)
{
    EXPECT_EQ(connection.getSourceNode(), &a);
    EXPECT_EQ(connection.getTargetNode(), &b);
    GraphConnection const empty;
    EXPECT_EQ(empty.getSourceNode(), nullptr);
    EXPECT_EQ(empty.getTargetNode(), nullptr);
}

TEST_F(ConnectionNodes, AreToldWithoutBeingConnected)
{
    out.setDirection(noDirection);
    EXPECT_EQ(connection.getSourceNode(), &a);
    EXPECT_EQ(connection.getTargetNode(), &b);
    EXPECT_EQ(GraphConnection(&out, nullptr).getSourceNode(), &a);
    EXPECT_EQ(GraphConnection(nullptr, &in).getTargetNode(), &b);
}

TEST_F(ConnectionNodes, AreEachKnownAsTheNodeOfTheirEnd)
{
    EXPECT_TRUE(connection.isConnectedNode(&a));
    EXPECT_TRUE(connection.isConnectedNodeSource(&a));
    EXPECT_FALSE(connection.isConnectedNodeTarget(&a));
    EXPECT_TRUE(connection.isConnectedNode(&b));
    EXPECT_FALSE(connection.isConnectedNodeSource(&b));
    EXPECT_TRUE(connection.isConnectedNodeTarget(&b));
    GraphNodeBase* const strangers[] = {&other, nullptr};
    for (GraphNodeBase const* node : strangers)
    {
        EXPECT_FALSE(connection.isConnectedNode(node));
        EXPECT_FALSE(connection.isConnectedNodeSource(node));
        EXPECT_FALSE(connection.isConnectedNodeTarget(node));
    }
}

TEST_F(ConnectionNodes, PinsWithoutNodesLinkNoneAndLoopNowhere)
{
    out.setParentGraphNodePtr(nullptr);
    in.setParentGraphNodePtr(nullptr);
    ASSERT_TRUE(connection.isConnected());
    EXPECT_FALSE(connection.isConnectedNode(nullptr));
    EXPECT_FALSE(connection.isConnectedNodeSource(nullptr));
    EXPECT_FALSE(connection.isConnectedNodeTarget(nullptr));
    EXPECT_FALSE(connection.isNodeLoop());
    EXPECT_FALSE(connection.isSameNode());
    EXPECT_FALSE(connection.areNodesConnected(a, b, true, true));
    EXPECT_FALSE(connection.areNodesConnected(GraphNodeBase(), GraphNodeBase(), true, true));
    EXPECT_FALSE(connection.sourceIsCompoundPin());
    EXPECT_FALSE(connection.targetIsInterfacePin());
    EXPECT_STREQ(connection.getFullName().c_str(), "");
    EXPECT_EQ(connection.getSourceNode(), nullptr);
}

TEST_F(ConnectionNodes, OnePinWithoutANodeStillLinksTheOther)
{
    in.setParentGraphNodePtr(nullptr);
    EXPECT_TRUE(connection.isConnectedNode(&a));
    EXPECT_TRUE(connection.isConnectedNodeSource(&a));
    EXPECT_FALSE(connection.isConnectedNodeTarget(&b));
    EXPECT_FALSE(connection.areNodesConnected(a, b, true, true));
    EXPECT_STREQ(connection.getFullName().c_str(), "");
}

TEST_F(ConnectionNodes, ThePinsAreAskedTheirVirtualNode)
{
    HostPin source(nullptr, 1, PIN_OUTPUT);
    HostPin target(nullptr, 1, PIN_INPUT);
    source.place = &a;
    target.place = &b;
    GraphConnection const hosted(&source, &target);
    EXPECT_EQ(hosted.getSourceNode(), &a);
    EXPECT_EQ(hosted.getTargetNode(), &b);
    EXPECT_TRUE(hosted.isConnectedNodeSource(&a));
    EXPECT_TRUE(hosted.isConnectedNodeTarget(&b));
    EXPECT_TRUE(hosted.isConnectedNode(&b));
    EXPECT_TRUE(hosted.areNodesConnected(a, b, false, false));
    EXPECT_FALSE(hosted.isSameNode());
    target.place = &a;
    EXPECT_TRUE(hosted.isSameNode());
    EXPECT_TRUE(hosted.isNodeLoop());
}

class ConnectionOfOtherNodes : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    GraphNodeBase* getSourceNode() const override { return source; }
    GraphNodeBase* getTargetNode() const override { return target; }

    GraphNodeBase* source = nullptr;
    GraphNodeBase* target = nullptr;
};

TEST_F(ConnectionNodes, ANodeLoopComparesTheVirtualNodesTheSameNodeThoseOfThePins)
{
    ConnectionOfOtherNodes host(&out, &in);
    host.source = host.target = &other;
    EXPECT_TRUE(host.isNodeLoop());
    EXPECT_FALSE(host.isSameNode());
    in.setParentGraphNodePtr(&a);
    host.target = &b;
    EXPECT_FALSE(host.isNodeLoop());
    EXPECT_TRUE(host.isSameNode());
}

TEST_F(ConnectionNodes, TheKindOfAnEndIsThatOfItsPin)
{
    struct Row
    {
        bool compound;
        bool interfaceKind;
    };
    for (Row const& row : {Row{false, false}, Row{true, false}, Row{false, true}, Row{true, true}})
    {
        HostPin asked(nullptr, 1, noDirection);
        asked.compound = row.compound;
        asked.interfaceKind = row.interfaceKind;
        GraphConnection const fromIt(&asked, &in);
        EXPECT_EQ(fromIt.sourceIsCompoundPin(), row.compound);
        EXPECT_EQ(fromIt.sourceIsInterfacePin(), row.interfaceKind);
        EXPECT_FALSE(fromIt.targetIsCompoundPin());
        EXPECT_FALSE(fromIt.targetIsInterfacePin());
        GraphConnection const toIt(&out, &asked);
        EXPECT_EQ(toIt.targetIsCompoundPin(), row.compound);
        EXPECT_EQ(toIt.targetIsInterfacePin(), row.interfaceKind);
        EXPECT_FALSE(toIt.sourceIsCompoundPin());
        EXPECT_FALSE(toIt.sourceIsInterfacePin());
    }
}

TEST_F(ConnectionNodes, AMissingEndIsOfNoKind)
{
    GraphConnection const empty;
    EXPECT_FALSE(empty.sourceIsCompoundPin());
    EXPECT_FALSE(empty.targetIsCompoundPin());
    EXPECT_FALSE(empty.sourceIsInterfacePin());
    EXPECT_FALSE(empty.targetIsInterfacePin());
}

// -----------------------------------------------------------------------------------------------------------
// Linked nodes

TEST_F(ConnectionNodes, AreLinkedInTheDirectionOfTheConnection)
{
    EXPECT_TRUE(connection.areNodesConnected(a, b, false, false));
    EXPECT_FALSE(connection.areNodesConnected(b, a, false, false));
    EXPECT_TRUE(connection.areNodesConnected(a, b, false, true));
    EXPECT_TRUE(connection.areNodesConnected(b, a, false, true));
    EXPECT_FALSE(connection.areNodesConnected(a, other, false, true));
    EXPECT_FALSE(connection.areNodesConnected(other, b, false, true));
    EXPECT_FALSE(connection.areNodesConnected(a, a, false, true));
    EXPECT_FALSE(connection.areNodesConnected(b, b, true, true));
}

TEST_F(ConnectionNodes, WithoutCompoundsTheRecursiveQuestionIsTheSame)
{
    EXPECT_TRUE(connection.areNodesConnected(a, b, true, false));
    EXPECT_FALSE(connection.areNodesConnected(b, a, true, false));
    EXPECT_TRUE(connection.areNodesConnected(b, a, true, true));
}

TEST_F(ConnectionNodes, ALoopLinksANodeWithItself)
{
    GraphConnection const loop(&otherPin, &otherPin);
    EXPECT_TRUE(loop.areNodesConnected(other, other, false, false));
    EXPECT_FALSE(loop.areNodesConnected(other, a, true, true));
}

TEST_F(ConnectionNodes, AreComparedByIdNotByPointer)
{
    GraphNodeBase const alsoA(1);
    GraphNodeBase const alsoB(2);
    EXPECT_TRUE(connection.areNodesConnected(alsoA, alsoB, false, false));
    EXPECT_FALSE(connection.areNodesConnected(alsoB, alsoA, false, false));
}

TEST_F(ConnectionNodes, WithoutAnIdAreNeverLinked)
{
    a.setId(0xFFFFFFFFu);
    EXPECT_FALSE(connection.areNodesConnected(a, b, true, true));
}

class NodeThatIsAnyNode : public NamedNode
{
public:
    using NamedNode::NamedNode;
    bool isSameNodeAs(GraphNodeBase const& compared) const override
    {
        asked = &compared;
        return true;
    }

    mutable GraphNodeBase const* asked = nullptr;
};

TEST_F(ConnectionNodes, TheNodesOfThePinsAreAskedToCompare)
{
    NodeThatIsAnyNode source(7, "source");
    NodeThatIsAnyNode target(8, "target");
    out.setParentGraphNodePtr(&source);
    in.setParentGraphNodePtr(&target);
    EXPECT_TRUE(connection.areNodesConnected(a, b, false, false));
    EXPECT_EQ(source.asked, &a);
    EXPECT_EQ(target.asked, &b);
    out.setParentGraphNodePtr(&a);
    in.setParentGraphNodePtr(&b);
    EXPECT_FALSE(connection.areNodesConnected(source, target, false, false));
}

/// A compound "C" and beside it a node "B"; in the compound, levels of compounds down to a node "X".
/// Connections lead from B in to X, and from X out to B.
class NestedNodes
{
public:
    explicit NestedNodes(unsigned int depth)
    {
        GraphNodeBase* level = &compound;
        for (unsigned int i = 1; i < depth; ++i)
        {
            levels.emplace_back(100 + i, "level");
            level->addNode(&levels.back());
            level = &levels.back();
        }
        level->addNode(&x);
    }

    NamedNode compound{1, "C"};
    NamedNode b{2, "B"};
    NamedNode x{3, "X"};
    std::deque<NamedNode> levels;
    GraphNodePin pinOfB{&b, unlimited, bothDirections};
    GraphNodePin pinOfX{&x, unlimited, bothDirections};
    GraphConnection inwards{&pinOfB, &pinOfX};
    GraphConnection outwards{&pinOfX, &pinOfB};
};

TEST(ConnectionIntoCompounds, ASearchIntoTheFirstNodeAcceptsWhatComesFromTheSecond)
{
    NestedNodes nodes(1);
    EXPECT_TRUE(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, false));
    EXPECT_FALSE(nodes.inwards.areNodesConnected(nodes.b, nodes.compound, true, false));
}

TEST(ConnectionIntoCompounds, ASearchIntoTheSecondNodeAcceptsWhatGoesToTheFirst)
{
    NestedNodes nodes(1);
    EXPECT_TRUE(nodes.outwards.areNodesConnected(nodes.b, nodes.compound, true, false));
    EXPECT_FALSE(nodes.outwards.areNodesConnected(nodes.compound, nodes.b, true, false));
}

TEST(ConnectionIntoCompounds, BothWaysAcceptsEither)
{
    NestedNodes nodes(1);
    for (GraphConnection const* connection : {&nodes.inwards, &nodes.outwards})
    {
        EXPECT_TRUE(connection->areNodesConnected(nodes.compound, nodes.b, true, true));
        EXPECT_TRUE(connection->areNodesConnected(nodes.b, nodes.compound, true, true));
    }
}

TEST(ConnectionIntoCompounds, IsOnlySearchedWhenAskedTo)
{
    NestedNodes nodes(1);
    for (GraphConnection const* connection : {&nodes.inwards, &nodes.outwards})
    {
        EXPECT_FALSE(connection->areNodesConnected(nodes.compound, nodes.b, false, true));
        EXPECT_FALSE(connection->areNodesConnected(nodes.b, nodes.compound, false, true));
    }
}

TEST(ConnectionIntoCompounds, TheDirectionTurnsAtEveryLevel)
{
    for (unsigned int depth = 1; depth <= 6; ++depth)
    {
        SCOPED_TRACE(depth);
        NestedNodes nodes(depth);
        bool const odd = depth % 2 == 1;
        EXPECT_EQ(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, false), odd);
        EXPECT_EQ(nodes.inwards.areNodesConnected(nodes.b, nodes.compound, true, false), !odd);
        EXPECT_EQ(nodes.outwards.areNodesConnected(nodes.compound, nodes.b, true, false), !odd);
        EXPECT_EQ(nodes.outwards.areNodesConnected(nodes.b, nodes.compound, true, false), odd);
        EXPECT_TRUE(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, true));
        EXPECT_TRUE(nodes.outwards.areNodesConnected(nodes.compound, nodes.b, true, true));
    }
}

TEST(ConnectionIntoCompounds, FindsAChildBehindOthers)
{
    NestedNodes nodes(1);
    NamedNode first(10, "first");
    NamedNode last(11, "last");
    GraphNodePin pin(&last, 1, PIN_INPUT);
    nodes.compound.addNode(&first);
    nodes.compound.addNode(&last);
    GraphConnection const toTheLast(&nodes.pinOfB, &pin);
    EXPECT_TRUE(toTheLast.areNodesConnected(nodes.compound, nodes.b, true, false));
    EXPECT_TRUE(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, false));
}

TEST(ConnectionIntoCompounds, FindsALinkBetweenTheChildrenOfTwoCompounds)
{
    NamedNode left(1, "left");
    NamedNode right(2, "right");
    NamedNode inLeft(3, "in left");
    NamedNode inRight(4, "in right");
    left.addNode(&inLeft);
    right.addNode(&inRight);
    GraphNodePin source(&inLeft, 1, PIN_OUTPUT);
    GraphNodePin target(&inRight, 1, PIN_INPUT);
    GraphConnection const connection(&source, &target);
    // One end is replaced at each of two steps, so that the direction has turned back.
    EXPECT_TRUE(connection.areNodesConnected(left, right, true, false));
    EXPECT_FALSE(connection.areNodesConnected(right, left, true, false));
    EXPECT_TRUE(connection.areNodesConnected(right, left, true, true));
}

class NodeThatIsNoCompound : public NamedNode
{
public:
    using NamedNode::NamedNode;
    bool isCompound() const override { return false; }
};

TEST(ConnectionIntoCompounds, AreOnlyEnteredIfTheySayThatTheyAre)
{
    NodeThatIsNoCompound closed(1, "closed");
    NamedNode b(2, "B");
    NamedNode x(3, "X");
    closed.addNode(&x);
    GraphNodePin source(&b, 1, PIN_OUTPUT);
    GraphNodePin target(&x, 1, PIN_INPUT);
    GraphConnection const connection(&source, &target);
    EXPECT_FALSE(connection.areNodesConnected(closed, b, true, true));
}

TEST(ConnectionIntoCompounds, AnEmptyCompoundHoldsNothing)
{
    NestedNodes nodes(1);
    NamedNode empty(50, "empty");
    empty.setCompound(true);
    EXPECT_FALSE(nodes.inwards.areNodesConnected(empty, nodes.b, true, true));
    EXPECT_FALSE(nodes.outwards.areNodesConnected(nodes.b, empty, true, true));
}

/// Keeps a line for each time that it is asked, and knows one more pair of linked nodes.
class QuestionedConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool areNodesConnected(GraphNodeBase const& from, GraphNodeBase const& to, bool const& recursive,
                           bool const& bothWays) const override
    {
        asked.push_back(shortName(from) + ">" + shortName(to) + (recursive ? " recursive" : "") +
                        (bothWays ? " both" : ""));
        return (&from == knownFrom && &to == knownTo) ||
               GraphConnection::areNodesConnected(from, to, recursive, bothWays);
    }

    mutable std::vector<std::string> asked;
    GraphNodeBase const* knownFrom = nullptr;
    GraphNodeBase const* knownTo = nullptr;

private:
    static std::string shortName(GraphNodeBase const& node)
    {
        return std::string(const_cast<GraphNodeBase&>(node).getName());
    }
};

TEST(ConnectionIntoCompounds, AnOverrideTakesPartInTheSearch)
{
    NestedNodes nodes(1);
    NamedNode elsewhere(9, "elsewhere");
    GraphNodePin pin(&elsewhere, 1, bothDirections);
    QuestionedConnection connection(&pin, &pin);
    EXPECT_FALSE(connection.areNodesConnected(nodes.compound, nodes.b, true, true));
    connection.knownFrom = &nodes.b;
    connection.knownTo = &nodes.x;
    EXPECT_TRUE(connection.areNodesConnected(nodes.compound, nodes.b, true, false));
}

TEST(ConnectionIntoCompounds, EachChildIsAskedInOrderWithTheDirectionTurned)
{
    NestedNodes nodes(1);
    NamedNode y(4, "Y");
    nodes.compound.addNode(&y);
    NamedNode elsewhere(9, "elsewhere");
    GraphNodePin pin(&elsewhere, 1, bothDirections);
    QuestionedConnection connection(&pin, &pin);
    EXPECT_FALSE(connection.areNodesConnected(nodes.compound, nodes.b, true, false));
    EXPECT_EQ(connection.asked, (Lines{"C>B recursive", "B>X recursive", "B>Y recursive"}));
    connection.asked.clear();
    EXPECT_FALSE(connection.areNodesConnected(nodes.b, nodes.compound, true, false));
    EXPECT_EQ(connection.asked, (Lines{"B>C recursive", "X>B recursive", "Y>B recursive"}));
    connection.asked.clear();
    EXPECT_FALSE(connection.areNodesConnected(nodes.b, nodes.compound, false, true));
    EXPECT_EQ(connection.asked, (Lines{"B>C both", "C>B"}));
    connection.asked.clear();
    connection.knownFrom = &nodes.x;
    connection.knownTo = &nodes.b;
    EXPECT_TRUE(connection.areNodesConnected(nodes.compound, nodes.b, true, true));
    EXPECT_EQ(connection.asked, (Lines{"C>B recursive both", "B>X recursive", "B>Y recursive",
                                       "B>C recursive", "X>B recursive"}));
}

TEST(ConnectionIntoCompounds, ADirectLinkIsFoundBeforeAnyChildIsAsked)
{
    NestedNodes nodes(1);
    GraphNodePin pinOfC(&nodes.compound, 1, PIN_OUTPUT);
    QuestionedConnection connection(&pinOfC, &nodes.pinOfB);
    EXPECT_TRUE(connection.areNodesConnected(nodes.compound, nodes.b, true, true));
    EXPECT_EQ(connection.asked, (Lines{"C>B recursive both"}));
}

// -----------------------------------------------------------------------------------------------------------
// Depth

TEST(ConnectionDepth, LinksAreFoundTwoThousandLevelsDown)
{
    NestedNodes nodes(2000);
    onSmallStack(
        [&nodes]
        {
            EXPECT_TRUE(nodes.outwards.areNodesConnected(nodes.compound, nodes.b, true, false));
            EXPECT_FALSE(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, false));
            EXPECT_TRUE(nodes.inwards.areNodesConnected(nodes.b, nodes.compound, true, false));
            EXPECT_TRUE(nodes.inwards.areNodesConnected(nodes.compound, nodes.b, true, true));
        });
}

TEST(ConnectionDepth, NamesAreBuiltTwoThousandLevelsDown)
{
    NestedNodes nodes(2000);
    onSmallStack(
        [&nodes]
        {
            std::string path = "C";
            for (unsigned int i = 1; i < 2000; ++i) path += ".level";
            path += ".X.Untitled";
            EXPECT_TRUE(std::string(nodes.pinOfX.getFullName()) == path);
            EXPECT_TRUE(std::string(nodes.inwards.getFullName()) == "B.Untitled > " + path);
        });
}

TEST(ConnectionDepth, ARenameGoesUpThroughTwoThousandInterfacePins)
{
    GraphNodeBase node;
    node.setInterface(true);
    std::deque<GraphNodePin> pins(2000, GraphNodePin(&node, 1, PIN_INPUT));
    for (std::size_t i = 1; i < pins.size(); ++i) pins[i - 1].setParentGraphNodePinPtr(&pins[i]);
    onSmallStack([&pins] { pins.front().setName("new"); });
    EXPECT_EQ(pins.back().getName(), KS_String("new"));
}

// -----------------------------------------------------------------------------------------------------------
// Name

TEST_F(ConnectionName, IsThatOfTheTwoPinsByNode)
{
    EXPECT_EQ(connection.getFullName(), KS_String("A.out > B.in"));
    EXPECT_EQ(GraphConnection(&otherPin, &otherPin).getFullName(), KS_String("C.Untitled > C.Untitled"));
}

TEST_F(ConnectionName, HoldsTheFullNamesOfTheNodes)
{
    NamedNode root(9, "root");
    root.addNode(&a);
    a.addNode(&b);
    EXPECT_EQ(connection.getFullName(), KS_String("root.A.out > root.A.B.in"));
}

TEST_F(ConnectionName, IsEmptyWhenNotConnected)
{
    in.setDirection(PIN_OUTPUT);
    EXPECT_STREQ(connection.getFullName().c_str(), "");
    EXPECT_STREQ(GraphConnection().getFullName().c_str(), "");
}

TEST_F(ConnectionName, IsThatOfAnImplicitOneToo)
{
    connection.setImplicit(true);
    EXPECT_EQ(connection.getFullName(), KS_String("A.out > B.in"));
}

TEST_F(ConnectionName, NamesAreNeverFormats)
{
    a.setName("50%s");
    out.setName("%n");
    b.setName("%d");
    in.setName("%%");
    EXPECT_EQ(connection.getFullName(), KS_String("50%s.%n > %d.%%"));
}

class NodeOfAnotherName : public GraphNodeBase
{
public:
    KS_String getFullName() override { return "over.there"; }
};

TEST_F(ConnectionName, AsksTheVirtualNodesTheirFullNamesAndThePinsTheirNames)
{
    NodeOfAnotherName elsewhere;
    HostPin source(&a, 1, PIN_OUTPUT);
    HostPin target(&b, 1, PIN_INPUT);
    source.place = &a;
    target.place = &b;
    ConnectionOfOtherNodes host(&source, &target);
    host.source = &elsewhere;
    host.target = &other;
    EXPECT_EQ(host.getFullName(), KS_String("over.there.host > C.host"));
}

// -----------------------------------------------------------------------------------------------------------
// Entering and leaving the lists of the pins

TEST_F(ConnectionWiring, EntersTheOutputListOfTheSourceAndTheInputListOfTheTarget)
{
    connection.addToConnectedPins();
    EXPECT_EQ(listed(out.getOutputConnections()), std::vector<GraphConnection*>{&connection});
    EXPECT_EQ(listed(in.getInputConnections()), std::vector<GraphConnection*>{&connection});
    EXPECT_EQ(out.getInputConnections().size(), 0u);
    EXPECT_EQ(in.getOutputConnections().size(), 0u);
    connection.removeFromConnectedPins();
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
}

TEST_F(ConnectionWiring, LeavesTheSourceAgainWhenTheTargetCannotBeEntered)
{
    struct Homeless : GraphConnection
    {
        using GraphConnection::GraphConnection;
        void addToTargetPin() override { throw std::bad_alloc(); }
    };
    Homeless homeless(&out, &in);
    EXPECT_THROW(homeless.addToConnectedPins(), std::bad_alloc);
    EXPECT_FALSE(out.isConnected());
}

TEST_F(ConnectionWiring, EachEndIsEnteredAndLeftAlone)
{
    connection.addToSourcePin();
    EXPECT_EQ(out.getOutputConnections().size(), 1u);
    EXPECT_FALSE(in.isConnected());
    connection.addToTargetPin();
    EXPECT_EQ(out.getOutputConnections().size(), 1u);
    EXPECT_EQ(in.getInputConnections().size(), 1u);
    connection.removeFromSourcePin();
    EXPECT_FALSE(out.isConnected());
    EXPECT_EQ(in.getInputConnections().size(), 1u);
    connection.removeFromTargetPin();
    EXPECT_FALSE(in.isConnected());
}

TEST_F(ConnectionWiring, TwiceEnteredIsTwiceListedAndLeavesOnceEachTime)
{
    connection.addToConnectedPins();
    connection.addToConnectedPins();
    EXPECT_EQ(out.getNumConnections(), 2u);
    connection.removeFromConnectedPins();
    EXPECT_EQ(out.getNumConnections(), 1u);
    EXPECT_EQ(in.getNumConnections(), 1u);
    connection.removeFromConnectedPins();
    connection.removeFromConnectedPins();
    EXPECT_EQ(out.getNumConnections(), 0u);
    EXPECT_EQ(in.getNumConnections(), 0u);
}

TEST_F(ConnectionWiring, LeavingMayReorderWhatStays)
{
    GraphConnection second(&out, &in);
    GraphConnection third(&out, &in);
    for (GraphConnection* each : {&connection, &second, &third}) each->addToConnectedPins();
    connection.removeFromConnectedPins();
    std::vector<GraphConnection*> const left{&third, &second};
    EXPECT_EQ(listed(out.getOutputConnections()), left);
    EXPECT_EQ(listed(in.getInputConnections()), left);
}

TEST_F(ConnectionWiring, ALoopStandsInBothListsOfItsPin)
{
    GraphConnection loop(&otherPin, &otherPin);
    loop.addToConnectedPins();
    EXPECT_EQ(otherPin.getInputConnections().size(), 1u);
    EXPECT_EQ(otherPin.getOutputConnections().size(), 1u);
    loop.removeFromConnectedPins();
    EXPECT_FALSE(otherPin.isConnected());
}

TEST_F(ConnectionWiring, DoesNotAskForDirectionsOrCapacity)
{
    in.setDirection(PIN_OUTPUT);
    in.setMaxNumConnections(0);
    out.setDirection(noDirection);
    connection.addToConnectedPins();
    EXPECT_EQ(out.getOutputConnections().size(), 1u);
    EXPECT_EQ(in.getInputConnections().size(), 1u);
    connection.removeFromConnectedPins();
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
}

TEST_F(ConnectionWiring, AMissingPinIsPassedOver)
{
    GraphConnection withoutTarget(&out, nullptr);
    GraphConnection withoutSource(nullptr, &in);
    GraphConnection without;
    for (GraphConnection* each : {&withoutTarget, &withoutSource, &without}) each->addToConnectedPins();
    EXPECT_EQ(listed(out.getOutputConnections()), std::vector<GraphConnection*>{&withoutTarget});
    EXPECT_EQ(listed(in.getInputConnections()), std::vector<GraphConnection*>{&withoutSource});
    for (GraphConnection* each : {&withoutTarget, &withoutSource, &without}) each->removeFromConnectedPins();
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
}

/// What the hosts' overrides below were called for, in order.
std::vector<std::string> calls;

class StepConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    void removeFromSourcePin() override { calls.emplace_back("removeFromSourcePin"); }
    void removeFromTargetPin() override { calls.emplace_back("removeFromTargetPin"); }
    void addToSourcePin() override { calls.emplace_back("addToSourcePin"); }
    void addToTargetPin() override { calls.emplace_back("addToTargetPin"); }
};

TEST_F(ConnectionWiring, BothEndsGoThroughTheVirtualOperationsSourceFirst)
{
    StepConnection host(&out, &in);
    calls.clear();
    host.addToConnectedPins();
    host.removeFromConnectedPins();
    EXPECT_EQ(calls,
              (Lines{"addToSourcePin", "addToTargetPin", "removeFromSourcePin", "removeFromTargetPin"}));
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
}

class StepPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;

    bool allowsConnectionFrom(GraphNodePin const* other) const override
    {
        note("allowsConnectionFrom");
        return GraphNodePin::allowsConnectionFrom(other);
    }
    bool allowsConnectionTo(GraphNodePin const* other) const override
    {
        note("allowsConnectionTo");
        return GraphNodePin::allowsConnectionTo(other);
    }
    void addInputConnection(GraphConnection* connection) override
    {
        note("addInputConnection", connection);
        GraphNodePin::addInputConnection(connection);
    }
    void addOutputConnection(GraphConnection* connection) override
    {
        note("addOutputConnection", connection);
        GraphNodePin::addOutputConnection(connection);
    }
    void removeInputConnection(GraphConnection* connection) override
    {
        note("removeInputConnection", connection);
        GraphNodePin::removeInputConnection(connection);
    }
    void removeOutputConnection(GraphConnection* connection) override
    {
        note("removeOutputConnection", connection);
        GraphNodePin::removeOutputConnection(connection);
    }

    mutable GraphConnection const* last = nullptr;

private:
    void note(char const* call, GraphConnection const* connection = nullptr) const
    {
        calls.push_back((isOutputPin() ? "out." : "in.") + std::string(call));
        if (connection != nullptr) last = connection;
    }
};

TEST_F(ConnectionWiring, ThePinsAreCalledThroughTheirVirtualOperationsSourceFirst)
{
    StepPin source(nullptr, 1, PIN_OUTPUT);
    StepPin target(nullptr, 1, PIN_INPUT);
    GraphConnection wired(&source, &target);
    calls.clear();
    wired.addToConnectedPins();
    wired.removeFromConnectedPins();
    EXPECT_EQ(calls, (Lines{"out.addOutputConnection", "in.addInputConnection", "out.removeOutputConnection",
                            "in.removeInputConnection"}));
    EXPECT_EQ(source.last, &wired);
    EXPECT_EQ(target.last, &wired);
}

// -----------------------------------------------------------------------------------------------------------
// XML

std::string xml(std::string const& source, std::string const& target)
{
    return "<connection source-node=\"" + source + "\" target-node=\"" + target + "\"/>\n";
}

TEST_F(ConnectionElement, TellsTheIdsOfTheTwoNodes)
{
    struct Row
    {
        unsigned int source;
        unsigned int target;
        char const* sourceText;
        char const* targetText;
    };
    for (Row const& row : {Row{2, 1, "2", "1"}, Row{0, 0, "0", "0"},
                           Row{0x7FFFFFFFu, 0x80000000u, "2147483647", "-2147483648"},
                           Row{0xFFFFFFFEu, 0xFFFFFFFFu, "-2", "-1"}})
    {
        a.setId(row.source);
        b.setId(row.target);
        EXPECT_EQ(std::string(connection.toXml()), xml(row.sourceText, row.targetText));
    }
}

TEST_F(ConnectionElement, ReadsAsOneLine)
{
    EXPECT_STREQ(connection.toXml().c_str(), "<connection source-node=\"1\" target-node=\"2\"/>\n");
}

TEST_F(ConnectionElement, TellsMinusOneForAMissingPinOrNode)
{
    EXPECT_EQ(std::string(GraphConnection().toXml()), xml("-1", "-1"));
    EXPECT_EQ(std::string(GraphConnection(&out, nullptr).toXml()), xml("1", "-1"));
    EXPECT_EQ(std::string(GraphConnection(nullptr, &in).toXml()), xml("-1", "2"));
    out.setParentGraphNodePtr(nullptr);
    EXPECT_EQ(std::string(connection.toXml()), xml("-1", "2"));
    in.setParentGraphNodePtr(nullptr);
    EXPECT_EQ(std::string(connection.toXml()), xml("-1", "-1"));
}

TEST_F(ConnectionElement, TellsNeitherPinsNorFlagNorWhetherItIsConnected)
{
    GraphNodePin alsoOut(&a, 1, noDirection);
    GraphNodePin alsoIn(&b, 1, PIN_OUTPUT);
    GraphConnection like(&alsoOut, &alsoIn);
    like.setImplicit(true);
    ASSERT_FALSE(like.isConnected());
    EXPECT_EQ(like.toXml(), connection.toXml());
}

class NodeOfAnotherId : public GraphNodeBase
{
public:
    unsigned int const& getId() const override { return anotherId; }

    unsigned int anotherId = 77;
};

TEST_F(ConnectionElement, AsksTheVirtualNodesOfThePinsTheirVirtualIds)
{
    NodeOfAnotherId elsewhere;
    HostPin source(&a, 1, PIN_OUTPUT);
    source.place = &elsewhere;
    // What the connection itself says of its nodes is not asked.
    ConnectionOfOtherNodes host(&source, &in);
    EXPECT_EQ(std::string(host.toXml()), xml("77", "2"));
    GraphConnection turned(&in, &source);
    EXPECT_EQ(std::string(turned.toXml()), xml("2", "77"));
}

// -----------------------------------------------------------------------------------------------------------
// A wiring call from end to end

class StepSceneConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    void setImplicit(bool const& implicit) override
    {
        calls.push_back(implicit ? "setImplicit true" : "setImplicit false");
        GraphConnection::setImplicit(implicit);
    }
};

class StepScene : public GraphScene
{
public:
    bool isPinFull(GraphNodePin const* pin) const override
    {
        calls.push_back(pin->isOutputPin() ? "isPinFull out" : "isPinFull in");
        return GraphScene::isPinFull(pin);
    }
    bool hasConnectionsLikeThis(GraphConnection const& connection) const override
    {
        calls.emplace_back("hasConnectionsLikeThis");
        return GraphScene::hasConnectionsLikeThis(connection);
    }
    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        calls.emplace_back("createGraphConnection");
        return new StepSceneConnection(source, target);
    }
};

/// Nodes "a" and "b" under the root, with pins that note their calls.
class WiringCall : public ::testing::Test
{
protected:
    WiringCall()
    {
        calls.clear();
        graph.scene.setIsDirty(false);
    }

    StepPin& adopt(GraphNodeBase& node, KS_String const& name, PinDirection const& direction, unsigned int id)
    {
        StepPin* const pin = new StepPin(&node, 1, direction);
        pin->setId(id);
        pin->setName(name);
        graph.scene.addNodePin(pin);
        node.addNodePin(pin);
        return *pin;
    }

    TestGraph<StepScene> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b");
    StepPin& out = adopt(a, "out", PIN_OUTPUT, 900001);
    StepPin& in = adopt(b, "in", PIN_INPUT, 900002);
};

TEST_F(WiringCall, GoesThroughEveryVirtualOperationInOrder)
{
    graph.scene.setAllowDuplicatedConnections(false);
    CallbackLog log;
    log.onConnection = [](GraphScene*, GraphNodeBase*, GraphConnection*) { calls.emplace_back("callback"); };
    GraphConnection* const made = graph.scene.connect(&out, &in, true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(calls,
              (Lines{"out.allowsConnectionTo", "in.allowsConnectionFrom", "isPinFull out", "isPinFull in",
                     "hasConnectionsLikeThis", "createGraphConnection", "setImplicit true",
                     "out.addOutputConnection", "in.addInputConnection", "callback"}));
    EXPECT_EQ(log.lines, std::vector<std::string>{"addConnection root a.out > b.in"});
    EXPECT_TRUE(made->isImplicit());
    EXPECT_EQ(made->getFullName(), KS_String("root.a.out > root.b.in"));
    EXPECT_EQ(listed(graph.scene.getGraphConnections()), std::vector<GraphConnection*>{made});
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(WiringCall, AsksForDuplicatesOnlyWhenTheyAreForbidden)
{
    ASSERT_NE(graph.scene.connect(&out, &in, false), nullptr);
    EXPECT_EQ(calls, (Lines{"out.allowsConnectionTo", "in.allowsConnectionFrom", "isPinFull out",
                            "isPinFull in", "createGraphConnection", "setImplicit false",
                            "out.addOutputConnection", "in.addInputConnection"}));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(WiringCall, TheCallbackSeesEverythingButTheDirtyFlag)
{
    CallbackLog log;
    bool counted = false;
    bool dirty = true;
    std::vector<std::string> broken{"not called"};
    log.onConnection = [&](GraphScene* scene, GraphNodeBase*, GraphConnection* made)
    {
        counted = scene->areNodesConnected(&a, &b, false, true);
        dirty = scene->getIsDirty();
        broken = brokenInvariants(*scene);
        EXPECT_EQ(made->getSourcePin(), &out);
    };
    graph.scene.connect(&out, &in, false);
    EXPECT_TRUE(counted);
    EXPECT_FALSE(dirty);
    EXPECT_EQ(broken, std::vector<std::string>{});
    EXPECT_TRUE(graph.scene.getIsDirty());
}

TEST_F(WiringCall, IsRefusedWhenTheTargetIsFull)
{
    graph.scene.connect(&out, &in, false);
    StepPin& another = adopt(a, "out2", PIN_OUTPUT, 900003);
    calls.clear();
    graph.scene.setIsDirty(false);
    EXPECT_EQ(graph.scene.connect(&another, &in, false), nullptr);
    EXPECT_EQ(calls,
              (Lines{"out.allowsConnectionTo", "in.allowsConnectionFrom", "isPinFull out", "isPinFull in"}));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(WiringCall, RemovalLeavesThePinsThroughTheConnectionAfterTheCallback)
{
    GraphConnection* const made = graph.scene.connect(&out, &in, false);
    calls.clear();
    CallbackLog log;
    log.onConnection = [](GraphScene*, GraphNodeBase*, GraphConnection*) { calls.emplace_back("callback"); };
    EXPECT_TRUE(graph.scene.removeConnection(made));
    EXPECT_EQ(calls, (Lines{"callback", "out.removeOutputConnection", "in.removeInputConnection"}));
    EXPECT_EQ(log.lines, std::vector<std::string>{"removeConnection root a.out > b.in"});
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(in.isConnected());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

} // namespace

} // namespace kestrel::graph::test
