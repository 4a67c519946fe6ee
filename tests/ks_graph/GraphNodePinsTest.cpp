#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Lines = std::vector<std::string>;

constexpr unsigned int inputBit = 1;
constexpr unsigned int outputBit = 2;

/// A node, its list operations opened up, with pins that live and die with this object.
class PinnedNode : public GraphNodeBase
{
public:
    using GraphNodeBase::addPinToList;
    using GraphNodeBase::removePinFromList;

    GraphNodePin& add(std::string const& name, unsigned int direction)
    {
        GraphNodePin& pin = make(name, direction);
        addNodePin(&pin);
        return pin;
    }

    /// A pin that is not on the node.
    GraphNodePin& make(std::string const& name, unsigned int direction = inputBit)
    {
        GraphNodePin& pin = pins_.emplace_back(nullptr, 1u, PinDirection(direction));
        pin.setName(KS_String(name));
        return pin;
    }

private:
    std::deque<GraphNodePin> pins_;
};

/// The pins none, in, out and both, named after their directions.
class FourPins : public PinnedNode
{
public:
    FourPins()
    {
        add("none", 0);
        add("in", inputBit);
        add("out", outputBit);
        add("both", inputBit | outputBit);
    }
};

Lines namesOf(Pins const& pins)
{
    Lines names;
    for (GraphNodePin* pin : pins) names.push_back(pin->getName().c_str());
    return names;
}

Lines namesOn(GraphNodeBase const& node)
{
    return namesOf(node.getNodePins());
}

/// Writes a line when it is deleted.
class MournedPin : public GraphNodePin
{
public:
    MournedPin(KS_String const& name, Lines& lines) : lines_(lines) { setName(name); }
    ~MournedPin() override { lines_.push_back("delete " + std::string(getName().c_str())); }

private:
    Lines& lines_;
};

enum class Side
{
    inputs,
    outputs
};

void reorder(GraphNodeBase& node, Side side, Lines const& wanted)
{
    Array<KS_String, _Wa> names;
    for (std::string const& name : wanted) names.append(KS_String(name));
    if (side == Side::inputs)
        node.reorderInputPins(names);
    else
        node.reorderOutputPins(names);
}

unsigned int bitOf(Side side)
{
    return side == Side::inputs ? inputBit : outputBit;
}

/// What becomes of `before`, the pins of one side, with one pin on the other side, which is not to move.
Lines reordered(Side side, Lines const& before, Lines const& wanted)
{
    PinnedNode node;
    Side const otherSide = side == Side::inputs ? Side::outputs : Side::inputs;
    node.add("other", bitOf(otherSide));
    for (std::string const& name : before) node.add(name, bitOf(side));
    reorder(node, side, wanted);

    Lines after = namesOn(node);
    auto const other = side == Side::inputs ? after.end() - 1 : after.begin();
    EXPECT_EQ(*other, "other");
    after.erase(other);
    return after;
}

Lines numbered(unsigned int count)
{
    Lines names;
    for (unsigned int i = 0; i < count; ++i) names.push_back("p" + std::to_string(i));
    return names;
}

} // namespace

TEST(NodePinQueries, HasThePinsOfItsListOnly)
{
    PinnedNode node;
    GraphNodePin const& first = node.add("first", inputBit);
    GraphNodePin const& last = node.add("last", inputBit);
    GraphNodePin const& stranger = node.make("first");
    EXPECT_TRUE(node.hasPin(&first));
    EXPECT_TRUE(node.hasPin(&last));
    EXPECT_FALSE(node.hasPin(&stranger));
}

TEST(NodePinQueries, AListThatTheHostMayChangeIsLookedAtAnew)
{
    std::deque<GraphNodePin> pins(100);
    GraphNodeBase node;
    for (GraphNodePin& pin : pins) node.addNodePin(&pin);
    GraphNodePin other;
    EXPECT_FALSE(node.hasPin(&other));
    ArrayOfPtr<GraphNodePin, KS_NO>& list = node.refNodePins();
    list[50] = &other;
    EXPECT_TRUE(node.hasPin(&other));
    EXPECT_FALSE(node.hasPin(&pins[50]));
    list[50] = &pins[50];
    EXPECT_FALSE(node.hasPin(&other));
    EXPECT_TRUE(node.hasPin(&pins[50]));
}

// From some length on, a node keeps a set of its pins beside the list.
class NodeOfManyPins : public ::testing::Test
{
protected:
    NodeOfManyPins()
    {
        for (GraphNodePin& pin : pins_) node_.addNodePin(&pin);
        EXPECT_FALSE(node_.hasPin(&stranger_));
    }

    struct Claiming : GraphNodeBase
    {
        bool hasPin(GraphNodePin const* pin) const override { return claims || GraphNodeBase::hasPin(pin); }
        bool claims = false;
    };

    std::deque<GraphNodePin> pins_{100};
    GraphNodePin stranger_;
    Claiming node_;
};

TEST_F(NodeOfManyPins, RemovesAPin)
{
    EXPECT_TRUE(node_.removeNodePin(&pins_[50]));
    EXPECT_FALSE(node_.getNodePins().contains(&pins_[50]));
    EXPECT_EQ(node_.getNodePins().size(), 99u);
}

TEST_F(NodeOfManyPins, DoesNotRemoveAPinThatItClaimsAndDoesNotHave)
{
    node_.claims = true;
    EXPECT_FALSE(node_.removeNodePin(&stranger_));
    EXPECT_EQ(node_.getNodePins().size(), 100u);
}

TEST_F(NodeOfManyPins, RemovesAPinThatTheHostHasPutIntoTheList)
{
    node_.refNodePins().append(&stranger_);
    EXPECT_TRUE(node_.removeNodePin(&stranger_));
    EXPECT_FALSE(node_.getNodePins().contains(&stranger_));
}

TEST(NodePinQueries, NullIsNoPinEvenIfTheListHoldsIt)
{
    GraphNodeBase node;
    EXPECT_FALSE(node.hasPin(nullptr));
    node.refNodePins().append(nullptr);
    EXPECT_FALSE(node.hasPin(nullptr));
}

TEST(NodePinQueries, PinThatOnlyNamesTheNodeIsNotItsPin)
{
    GraphNodeBase node;
    GraphNodePin const pin(&node, 1, PIN_INPUT);
    EXPECT_FALSE(node.hasPin(&pin));
    EXPECT_FALSE(node.hasInputPins());
}

TEST(NodePinQueries, PinsThatShareABitWithTheDirectionAreGatheredInPinOrder)
{
    FourPins const node;
    Lines const expected[] = {{}, {"in", "both"}, {"out", "both"}, {"in", "out", "both"}};
    for (unsigned int direction = 0; direction < 4; ++direction)
    {
        SCOPED_TRACE(direction);
        Pins out;
        EXPECT_EQ(node.getPins(PinDirection(direction), out), direction != 0);
        EXPECT_EQ(namesOf(out), expected[direction]);
    }
}

TEST(NodePinQueries, InputAndOutputPinsAreThoseOfTheBit)
{
    FourPins const node;
    Pins inputs;
    Pins outputs;
    EXPECT_TRUE(node.getInputPins(inputs));
    EXPECT_TRUE(node.getOutputPins(outputs));
    EXPECT_EQ(namesOf(inputs), (Lines{"in", "both"}));
    EXPECT_EQ(namesOf(outputs), (Lines{"out", "both"}));
}

TEST(NodePinQueries, GatheringAppendsAndTellsWhetherTheListHoldsAnything)
{
    GraphNodeBase const bare;
    FourPins node;
    GraphNodePin& stranger = node.make("stranger");
    Pins out;
    EXPECT_FALSE(bare.getPins(PIN_INPUT | PIN_OUTPUT, out));
    EXPECT_FALSE(bare.getInputPins(out));
    EXPECT_FALSE(bare.getOutputPins(out));
    out.append(&stranger);
    EXPECT_TRUE(bare.getPins(PIN_INPUT | PIN_OUTPUT, out));
    EXPECT_TRUE(bare.getInputPins(out));
    EXPECT_TRUE(bare.getOutputPins(out));
    node.getPins(PIN_INPUT, out);
    node.getInputPins(out);
    EXPECT_EQ(namesOf(out), (Lines{"stranger", "in", "both", "in", "both"}));
}

TEST(NodePinQueries, PinsMayBeGatheredIntoTheNodesOwnList)
{
    FourPins node;
    node.getPins(PIN_INPUT, node.refNodePins());
    EXPECT_EQ(namesOn(node), (Lines{"none", "in", "out", "both", "in", "both"}));
    node.setNodePins(node.getNodePins());
    node.getNotConnectedPins(PIN_OUTPUT, node.refNodePins());
    EXPECT_EQ(namesOn(node), (Lines{"none", "in", "out", "both", "in", "both", "out", "both", "both"}));
}

TEST(NodePinQueries, SomePinOfTheDirectionIsEnough)
{
    for (unsigned int direction = 0; direction < 4; ++direction)
    {
        SCOPED_TRACE(direction);
        PinnedNode node;
        EXPECT_FALSE(node.hasInputPins());
        EXPECT_FALSE(node.hasOutputPins());
        node.add("first", 0);
        node.add("second", direction);
        node.add("third", 0);
        EXPECT_EQ(node.hasInputPins(), (direction & inputBit) != 0);
        EXPECT_EQ(node.hasOutputPins(), (direction & outputBit) != 0);
    }
}

TEST(NodePinQueries, PinIsFoundByItsExactName)
{
    PinnedNode node;
    GraphNodePin& value = node.add("value", inputBit);
    GraphNodePin& valueX = node.add("valueX", 0);
    EXPECT_EQ(node.getPinByName("value"), &value);
    EXPECT_EQ(node.getPinByName("valueX"), &valueX);
    for (char const* name : {"", "Value", "valu", "value ", "alue", "VALUEX"})
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(node.getPinByName(name), nullptr);
        EXPECT_FALSE(node.hasPinWithName(name, false));
    }
}

TEST(NodePinQueries, FirstPinOfANameIsFound)
{
    PinnedNode node;
    node.add("other", inputBit);
    GraphNodePin& first = node.add("twin", outputBit);
    node.add("twin", inputBit);
    EXPECT_EQ(node.getPinByName("twin"), &first);
}

TEST(NodePinQueries, EmptyNameIsANameToo)
{
    PinnedNode node;
    EXPECT_EQ(node.getPinByName(""), nullptr);
    GraphNodePin& nameless = node.add("", inputBit);
    EXPECT_EQ(node.getPinByName(""), &nameless);
    EXPECT_TRUE(node.hasPinWithName("", false));
}

TEST(NodePinQueries, NameOnTheOwnerCountsOnRequest)
{
    PinnedNode top;
    PinnedNode owner;
    PinnedNode node;
    top.addNode(&owner);
    owner.addNode(&node);
    top.add("top", inputBit);
    owner.add("owner", inputBit);
    node.add("node", inputBit);
    struct Row
    {
        char const* name;
        bool alone;
        bool withOwner;
    };
    for (Row const& row : {Row{"node", true, true}, Row{"owner", false, true}, Row{"Owner", false, false},
                           Row{"top", false, false}})
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(node.hasPinWithName(row.name, false), row.alone);
        EXPECT_EQ(node.hasPinWithName(row.name, true), row.withOwner);
    }
}

TEST(NodePinQueries, NameOnAMissingOwnerIsNotThere)
{
    PinnedNode node;
    node.add("node", inputBit);
    EXPECT_FALSE(node.hasPinWithName("other", true));
    EXPECT_TRUE(node.hasPinWithName("node", true));
}

TEST(NodePinList, AppendsWithoutCheckingForRepeats)
{
    PinnedNode node;
    GraphNodePin& a = node.make("a");
    GraphNodePin& b = node.make("b");
    node.addPinToList(&a);
    node.addPinToList(&b);
    node.addPinToList(&a);
    EXPECT_EQ(namesOn(node), (Lines{"a", "b", "a"}));
    EXPECT_EQ(a.getParentGraphNodePtr(), nullptr);
}

TEST(NodePinList, RemovesEveryEqualEntryAndKeepsTheOrder)
{
    PinnedNode node;
    GraphNodePin& a = node.make("a");
    for (GraphNodePin* pin : {&a, &node.make("b"), &node.make("c"), &a, &node.make("d")})
        node.addPinToList(pin);
    EXPECT_TRUE(node.removePinFromList(&a));
    EXPECT_EQ(namesOn(node), (Lines{"b", "c", "d"}));
    EXPECT_FALSE(node.removePinFromList(&a));
    EXPECT_EQ(namesOn(node), (Lines{"b", "c", "d"}));
}

TEST(NodePinAdding, PinIsAppendedAndBecomesTheNodesOwn)
{
    PinnedNode node;
    GraphNodePin& b = node.make("b");
    GraphNodePin& a = node.make("a");
    EXPECT_TRUE(node.addNodePin(&b));
    EXPECT_TRUE(node.addNodePin(&a));
    EXPECT_EQ(namesOn(node), (Lines{"b", "a"}));
    EXPECT_EQ(a.getParentGraphNodePtr(), &node);
    EXPECT_EQ(b.getParentGraphNodePtr(), &node);
}

TEST(NodePinAdding, NullAndAPinThatIsThereAreRefused)
{
    PinnedNode owner;
    PinnedNode node;
    owner.addNode(&node);
    GraphNodePin& pin = node.make("in");
    CallbackLog log;
    EXPECT_FALSE(node.addNodePin(nullptr));
    EXPECT_TRUE(node.addNodePin(&pin));
    EXPECT_FALSE(node.addNodePin(&pin));
    EXPECT_EQ(namesOn(node), Lines{"in"});
    EXPECT_EQ(log.lines.size(), 1u);
}

TEST(NodePinAdding, CallbackGetsTheSceneAndTheOwner)
{
    TestGraph<> graph;
    TestNode& compound = graph.addNode("compound");
    TestNode& node = graph.addNode("node", &compound);
    GraphNodePin* const pin = new GraphNodePin(nullptr, 1, PIN_INPUT);
    pin->setName("in");
    CallbackLog log;
    int calls = 0;
    log.onPin = [&](GraphScene* scene, GraphNodeBase* owner, GraphNodePin* added)
    {
        ++calls;
        EXPECT_EQ(scene, &graph.scene);
        EXPECT_EQ(owner, &compound);
        EXPECT_EQ(added, pin);
    };
    node.addNodePin(pin);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(log.lines, Lines{"addNodePin compound in"});
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinAdding, CallbackComesAfterTheChange)
{
    PinnedNode owner;
    PinnedNode node;
    owner.addNode(&node);
    GraphNodePin& pin = node.make("in");
    CallbackLog log;
    bool called = false;
    log.onPin = [&](GraphScene* scene, GraphNodeBase*, GraphNodePin*)
    {
        called = true;
        EXPECT_EQ(scene, nullptr);
        EXPECT_TRUE(node.hasPin(&pin));
        EXPECT_EQ(pin.getParentGraphNodePtr(), &node);
    };
    node.addNodePin(&pin);
    EXPECT_TRUE(called);
}

TEST(NodePinAdding, CallbackIsSkippedForANodeWithoutOwner)
{
    TestGraph<> graph;
    GraphNodePin* const pin = new GraphNodePin(nullptr, 1, PIN_INPUT);
    CallbackLog log;
    EXPECT_TRUE(graph.root.addNodePin(pin));
    EXPECT_EQ(log.lines, Lines{});
    EXPECT_EQ(pin->getParentGraphNodePtr(), &graph.root);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinAdding, NoMapOfTheSceneIsTold)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin* const pin = new GraphNodePin(nullptr, 1, PIN_INPUT);
    pin->setName("in");
    pin->setId(12345u);
    graph.scene.setIsDirty(false);
    node.addNodePin(pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.in"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrById(12345u), nullptr);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinRemoving, PinIsTakenOutInOrderAndLeftWithoutNode)
{
    PinnedNode node;
    node.add("a", inputBit);
    GraphNodePin& b = node.add("b", inputBit);
    node.add("c", inputBit);
    node.add("d", inputBit);
    EXPECT_TRUE(node.removeNodePin(&b));
    EXPECT_EQ(namesOn(node), (Lines{"a", "c", "d"}));
    EXPECT_EQ(b.getParentGraphNodePtr(), nullptr);
}

TEST(NodePinRemoving, NullAndAPinThatIsNotThereAreRefused)
{
    PinnedNode owner;
    PinnedNode node;
    PinnedNode other;
    owner.addNode(&node);
    node.add("in", inputBit);
    GraphNodePin& elsewhere = other.add("in", inputBit);
    CallbackLog log;
    EXPECT_FALSE(node.removeNodePin(nullptr));
    EXPECT_FALSE(node.removeNodePin(&elsewhere));
    EXPECT_EQ(log.lines, Lines{});
    EXPECT_EQ(elsewhere.getParentGraphNodePtr(), &other);
    EXPECT_EQ(namesOn(node), Lines{"in"});
}

TEST(NodePinRemoving, CallbackComesWhileThePinStillNamesItsNode)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin pin(nullptr, 1, PIN_INPUT);
    pin.setName("in");
    node.addNodePin(&pin);
    CallbackLog log;
    log.onPin = [&](GraphScene* scene, GraphNodeBase* owner, GraphNodePin* removed)
    {
        EXPECT_EQ(scene, &graph.scene);
        EXPECT_EQ(owner, &graph.root);
        EXPECT_EQ(removed, &pin);
        EXPECT_EQ(pin.getParentGraphNodePtr(), &node);
        EXPECT_FALSE(node.hasPin(&pin));
    };
    EXPECT_TRUE(node.removeNodePin(&pin));
    EXPECT_EQ(log.lines, Lines{"removeNodePin root in"});
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinRemoving, CallbackIsFiredForANodeWithoutOwner)
{
    PinnedNode node;
    GraphNodePin& pin = node.add("in", inputBit);
    CallbackLog log;
    EXPECT_TRUE(node.removeNodePin(&pin));
    EXPECT_EQ(log.lines, Lines{"removeNodePin - in"});
}

TEST(NodePinRemoving, PinThatStandsTwiceGoesAtOnce)
{
    PinnedNode node;
    GraphNodePin& pin = node.add("twice", inputBit);
    node.add("other", inputBit);
    node.refNodePins().append(&pin);
    CallbackLog log;
    EXPECT_TRUE(node.removeNodePin(&pin));
    EXPECT_EQ(namesOn(node), Lines{"other"});
    EXPECT_FALSE(node.removeNodePin(&pin));
    EXPECT_EQ(log.lines.size(), 1u);
}

TEST(NodePinRemoving, NoMapOfTheSceneIsTold)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin& pin = graph.addInput(node);
    graph.scene.setIsDirty(false);
    node.removeNodePin(&pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrById(pin.getId()), &pin);
    EXPECT_FALSE(graph.scene.getIsDirty());
    node.addNodePin(&pin);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinRemoving, ConnectionsOfThePinStay)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphNodePin* const out = a.getPinByName("out");
    GraphConnection* const connection = graph.scene.connect(out, b.getPinByName("in"), false);
    EXPECT_TRUE(a.removeNodePin(out));
    EXPECT_EQ(listed(out->getOutputConnections()), std::vector{connection});
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 1u);
    a.addNodePin(out);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinDestroying, EachPinIsRemovedAndThenDeletedInOrder)
{
    Lines lines;
    GraphNodeBase owner;
    GraphNodeBase node;
    owner.addNode(&node);
    owner.setName("owner");
    for (char const* name : {"a", "b", "c"}) node.addNodePin(new MournedPin(name, lines));
    CallbackLog log;
    log.onPin = [&](GraphScene*, GraphNodeBase*, GraphNodePin*) { lines.push_back(log.lines.back()); };
    node.destroyNodePins();
    EXPECT_EQ(lines, (Lines{"removeNodePin owner a", "delete a", "removeNodePin owner b", "delete b",
                            "removeNodePin owner c", "delete c"}));
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodePinDestroying, PinThatStandsTwiceIsDeletedOnce)
{
    Lines lines;
    GraphNodeBase node;
    GraphNodePin* const pin = new MournedPin("twice", lines);
    node.addNodePin(pin);
    node.addNodePin(new MournedPin("other", lines));
    node.refNodePins().append(pin);
    node.destroyNodePins();
    EXPECT_EQ(lines, (Lines{"delete twice", "delete other"}));
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodePinDestroying, PinThatAnOverrideKeepsIsNotLeftInTheList)
{
    struct Keeping : GraphNodeBase
    {
        bool removeNodePin(GraphNodePin*) override { return false; }
    };
    Keeping node;
    node.addNodePin(new GraphNodePin);
    node.destroyNodePins();
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodePinDestroying, EndsWhenACallbackHasTakenTheRest)
{
    static GraphNodePin* rest = nullptr;
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    graph.addInput(node, "first");
    GraphNodePin& last = graph.addInput(node, "last");
    rest = &last;
    GraphScene::removeNodePinCallback_ = [](GraphScene*, GraphNodeBase*, GraphNodePin* pin)
    {
        if (rest == nullptr || rest == pin) return;
        GraphNodeBase* const owner = rest->getParentGraphNodePtr();
        std::unique_ptr<GraphNodePin> const taken(std::exchange(rest, nullptr));
        owner->removeNodePin(taken.get());
    };
    node.destroyNodePins();
    GraphScene::removeNodePinCallback_ = nullptr;
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_EQ(rest, nullptr);
}

TEST(NodePinDestroying, NodeWithoutPinsIsLeftAlone)
{
    GraphNodeBase node;
    CallbackLog log;
    node.destroyNodePins();
    node.destroyNodePins();
    EXPECT_EQ(log.lines, Lines{});
}

TEST(NodePinDestroying, PinsOfTheChildrenStay)
{
    PinnedNode node;
    PinnedNode child;
    node.addNode(&child);
    child.add("in", inputBit);
    node.destroyNodePins();
    EXPECT_EQ(namesOn(child), Lines{"in"});
}

TEST(NodePinReordering, MarksAreSetByNamePositionAndReadByPinPosition)
{
    struct Row
    {
        Lines names;
        Lines expected;
    };
    Row const rows[] = {
        {{"c", "a", "b"}, {"c", "a", "b"}},
        {{"a", "b", "c"}, {"a", "b", "c"}},
        {{"c", "b", "a"}, {"c", "b", "a"}},
        {{"b", "x", "a"}, {"b", "a", "b"}},
        {{}, {"a", "b", "c"}},
        {{"x"}, {"a", "b", "c"}},
        {{"x", "y", "z", "x"}, {"a", "b", "c"}},
        {{"A", "B", "C"}, {"a", "b", "c"}},
        {{"a"}, {"a", "b", "c"}},
        {{"b"}, {"b", "b", "c"}},
        {{"c"}, {"c", "b", "c"}},
        {{"b", "a"}, {"b", "a", "c"}},
        {{"c", "b"}, {"c", "b", "c"}},
        {{"x", "c"}, {"c", "a", "c"}},
        {{"x", "x", "c"}, {"c", "a", "b"}},
        {{"x", "x", "a"}, {"a", "a", "b"}},
        {{"a", "a", "a"}, {"a", "a", "a"}},
        {{"a", "b", "c", "a"}, {"a", "b", "c", "a"}},
        {{"x", "x", "x", "c"}, {"c", "a", "b", "c"}},
        {{"x", "x", "x", "x", "c", "a", "b"}, {"c", "a", "b", "a", "b", "c"}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.names));
        EXPECT_EQ(reordered(Side::inputs, {"a", "b", "c"}, row.names), row.expected);
        EXPECT_EQ(reordered(Side::outputs, {"a", "b", "c"}, row.names), row.expected);
    }
}

TEST(NodePinReordering, FirstPinOfARepeatedNameIsTakenEachTime)
{
    PinnedNode node;
    GraphNodePin& first = node.add("twin", inputBit);
    node.add("twin", inputBit);
    reorder(node, Side::inputs, {"twin", "twin"});
    EXPECT_EQ(listed(node.getNodePins()), (std::vector{&first, &first}));
}

TEST(NodePinReordering, ManyPinsKeepOneMarkEach)
{
    for (unsigned int const count : {31u, 32u, 33u, 64u, 65u, 100u})
    {
        SCOPED_TRACE(count);
        Lines const before = numbered(count);
        Lines const reversed(before.rbegin(), before.rend());
        EXPECT_EQ(reordered(Side::inputs, before, reversed), reversed);

        Lines lastPlace(count, "unknown");
        lastPlace.back() = "p0";
        Lines expected = before;
        expected.pop_back();
        expected.insert(expected.begin(), "p0");
        EXPECT_EQ(reordered(Side::outputs, before, lastPlace), expected);
    }
}

TEST(NodePinReordering, BothSidesAreGatheredInputsFirst)
{
    for (Side const side : {Side::inputs, Side::outputs})
    {
        PinnedNode node;
        node.add("o", outputBit);
        node.add("a", inputBit);
        node.add("p", outputBit);
        node.add("b", inputBit);
        reorder(node, side, {});
        EXPECT_EQ(namesOn(node), (Lines{"a", "b", "o", "p"}));
    }
}

TEST(NodePinReordering, OtherSideKeepsItsOrder)
{
    PinnedNode node;
    for (char const* name : {"b", "a"}) node.add(name, inputBit);
    for (char const* name : {"p", "o"}) node.add(name, outputBit);
    reorder(node, Side::inputs, {"a", "b"});
    EXPECT_EQ(namesOn(node), (Lines{"a", "b", "p", "o"}));
    reorder(node, Side::outputs, {"o", "p"});
    EXPECT_EQ(namesOn(node), (Lines{"a", "b", "o", "p"}));
}

TEST(NodePinReordering, NamesOfTheOtherSideMatchNothing)
{
    PinnedNode node;
    node.add("a", inputBit);
    node.add("b", inputBit);
    node.add("o", outputBit);
    reorder(node, Side::inputs, {"o", "b"});
    EXPECT_EQ(namesOn(node), (Lines{"b", "a", "o"}));
    reorder(node, Side::outputs, {"a"});
    EXPECT_EQ(namesOn(node), (Lines{"b", "a", "o"}));
}

TEST(NodePinReordering, PinOfBothDirectionsStandsOnBothSides)
{
    PinnedNode node;
    node.add("both", inputBit | outputBit);
    node.add("a", inputBit);
    reorder(node, Side::inputs, {"a", "both"});
    EXPECT_EQ(namesOn(node), (Lines{"a", "both", "both"}));
}

TEST(NodePinReordering, PinWithoutDirectionIsDropped)
{
    for (Side const side : {Side::inputs, Side::outputs})
    {
        FourPins node;
        reorder(node, side, {"none"});
        EXPECT_FALSE(node.hasPinWithName("none", false));
    }
}

TEST(NodePinReordering, NeitherHostNorPinsNorSceneAreTold)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin& a = graph.addInput(node, "a");
    GraphNodePin& b = graph.addInput(node, "b");
    graph.scene.setIsDirty(false);
    CallbackLog log;
    reorder(node, Side::inputs, {"b", "a"});
    EXPECT_EQ(listed(node.getNodePins()), (std::vector{&b, &a}));
    EXPECT_EQ(log.lines, Lines{});
    EXPECT_EQ(a.getParentGraphNodePtr(), &node);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodePinReordering, NodeWithoutPinsStaysEmpty)
{
    GraphNodeBase node;
    reorder(node, Side::inputs, {"a", "b"});
    reorder(node, Side::outputs, {"a", "b"});
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodeDynamicPins, AreMadeAndRegisteredByTheScene)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    GraphNodePin* const in = node.addDynamicInputPin();
    ASSERT_NE(in, nullptr);
    in->setName("in");
    GraphNodePin* const out = node.addDynamicOutputPin();
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(in->getDirection(), PIN_INPUT);
    EXPECT_EQ(out->getDirection(), PIN_OUTPUT);
    EXPECT_EQ(in->getMaxNumConnections(), 1u);
    EXPECT_EQ(out->getMaxNumConnections(), 1u);
    EXPECT_EQ(listed(node.getNodePins()), (std::vector{in, out}));
    EXPECT_EQ(in->getParentGraphNodePtr(), &node);
    EXPECT_EQ(graph.scene.getPinPtrById(in->getId()), in);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.Untitled"), out);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeDynamicPins, AreMadeWhetherOrNotTheNodeAllowsThem)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    EXPECT_FALSE(node.dynamicPinsAllowed());
    EXPECT_NE(node.addDynamicInputPin(), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeDynamicPins, NodeWithoutSceneHasNone)
{
    GraphNodeBase node;
    EXPECT_EQ(node.addDynamicInputPin(), nullptr);
    EXPECT_EQ(node.addDynamicOutputPin(), nullptr);
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodePins, DestructionSparesThePinsThatACallbackAdds)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    for (int i = 0; i < 2; ++i) node.addNodePin(new GraphNodePin(nullptr, 1, PIN_INPUT));
    CallbackLog log;
    log.onPin = [&](GraphScene*, GraphNodeBase*, GraphNodePin*)
    {
        if (log.lines.back().rfind("removeNodePin", 0) == 0)
            node.addNodePin(new GraphNodePin(nullptr, 1, PIN_OUTPUT));
    };
    node.destroyNodePins();
    EXPECT_FALSE(node.hasInputPins());
    EXPECT_EQ(node.getNodePins().size(), 2u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

} // namespace kestrel::graph::test
