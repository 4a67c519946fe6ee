#include <ks_graph/GraphNodeBase.h>

#include <gtest/gtest.h>

#include <deque>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;
constexpr PinDirection noDirection{0u};

using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Lines = std::vector<std::string>;

/// The questions that were put to the pins, in order, and those that they answer with yes.
struct Script
{
    bool answer(std::string const& question)
    {
        asked.push_back(question);
        return allowed.count(question) != 0;
    }

    Lines asked;
    std::set<std::string> allowed;
};

/// Answers "a.from(x)" and "x.to(a)" as the script says.
class ScriptedPin : public GraphNodePin
{
public:
    ScriptedPin(Script& script, std::string label, PinDirection const& direction)
        : GraphNodePin(nullptr, 1, direction), script_(script), label_(std::move(label))
    {}

    bool allowsConnectionFrom(GraphNodePin const* other) const override { return ask("from", other); }
    bool allowsConnectionTo(GraphNodePin const* other) const override { return ask("to", other); }

private:
    bool ask(char const* verb, GraphNodePin const* other) const
    {
        std::string const otherLabel = static_cast<ScriptedPin const*>(other)->label_;
        return script_.answer(label_ + "." + verb + "(" + otherLabel + ")");
    }

    Script& script_;
    std::string label_;
};

/// A node with the pins a and b, and another one with the pins x and y; x is also "the pin".
class NodeWiringRules : public testing::Test
{
protected:
    NodeWiringRules()
    {
        own.addNodePin(&a);
        own.addNodePin(&b);
        other.addNodePin(&x);
        other.addNodePin(&y);
    }

    Lines asked() { return std::exchange(script.asked, {}); }

    Script script;
    ScriptedPin a{script, "a", bothDirections};
    ScriptedPin b{script, "b", bothDirections};
    ScriptedPin x{script, "x", bothDirections};
    ScriptedPin y{script, "y", bothDirections};
    GraphNodeBase own;
    GraphNodeBase other;
    Pins out;
};

std::vector<GraphNodePin*> listedPins(Pins const& pins)
{
    return {pins.begin(), pins.end()};
}

std::vector<GraphNodePin*> pinsOf(std::initializer_list<GraphNodePin*> pins)
{
    return pins;
}

/// A node with one plain pin.
struct PlainNode
{
    explicit PlainNode(unsigned int direction) : pin(nullptr, 1, PinDirection(direction))
    {
        node.addNodePin(&pin);
    }

    GraphNodePin pin;
    GraphNodeBase node;
};

bool hasInput(unsigned int direction)
{
    return (direction & 1u) != 0;
}

bool hasOutput(unsigned int direction)
{
    return (direction & 2u) != 0;
}

} // namespace

TEST_F(NodeWiringRules, FromNodeAsksTheOtherPinsWithOwnPinsInTheOuterLoop)
{
    EXPECT_FALSE(own.allowsConnectionFrom(&other));
    EXPECT_EQ(asked(), (Lines{"x.to(a)", "y.to(a)", "x.to(b)", "y.to(b)"}));
}

TEST_F(NodeWiringRules, FromNodeStopsAtTheFirstAllowedPair)
{
    script.allowed = {"y.to(a)", "x.to(b)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&other));
    EXPECT_EQ(asked(), (Lines{"x.to(a)", "y.to(a)"}));
}

TEST_F(NodeWiringRules, FromNodeIsAllowedByTheLastPairAlone)
{
    script.allowed = {"y.to(b)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&other));
}

TEST_F(NodeWiringRules, FromNodeWithListGathersTheOwnPinOfEveryAllowedPair)
{
    script.allowed = {"x.to(a)", "y.to(a)", "y.to(b)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&other, out));
    EXPECT_EQ(listedPins(out), pinsOf({&a, &a, &b}));
    EXPECT_EQ(asked(), (Lines{"x.to(a)", "y.to(a)", "x.to(b)", "y.to(b)"}));
}

TEST_F(NodeWiringRules, ToNodeAsksTheOtherPinsWithOwnPinsInTheOuterLoop)
{
    EXPECT_FALSE(own.allowsConnectionTo(&other));
    EXPECT_EQ(asked(), (Lines{"x.from(a)", "y.from(a)", "x.from(b)", "y.from(b)"}));
}

TEST_F(NodeWiringRules, ToNodeStopsAtTheFirstAllowedPair)
{
    script.allowed = {"y.from(a)", "x.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&other));
    EXPECT_EQ(asked(), (Lines{"x.from(a)", "y.from(a)"}));
}

TEST_F(NodeWiringRules, ToNodeIsAllowedByTheLastPairAlone)
{
    script.allowed = {"y.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&other));
}

TEST_F(NodeWiringRules, ToNodeWithListGathersTheOwnPinOfEveryAllowedPair)
{
    script.allowed = {"y.from(a)", "x.from(b)", "y.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&other, out));
    EXPECT_EQ(listedPins(out), pinsOf({&a, &b, &b}));
    EXPECT_EQ(asked(), (Lines{"x.from(a)", "y.from(a)", "x.from(b)", "y.from(b)"}));
}

TEST_F(NodeWiringRules, FromPinAsksTheOwnPins)
{
    EXPECT_FALSE(own.allowsConnectionFrom(&x));
    EXPECT_EQ(asked(), (Lines{"a.from(x)", "b.from(x)"}));
    script.allowed = {"a.from(x)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&x));
    EXPECT_EQ(asked(), (Lines{"a.from(x)"}));
    script.allowed = {"b.from(x)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&x));
}

TEST_F(NodeWiringRules, FromPinNeedsTheOutputBitOfThePin)
{
    script.allowed = {"a.from(x)", "b.from(x)"};
    for (PinDirection const& direction : {noDirection, PIN_INPUT})
    {
        x.setDirection(direction);
        EXPECT_FALSE(own.allowsConnectionFrom(&x));
        EXPECT_EQ(asked(), Lines{});
    }
    x.setDirection(PIN_OUTPUT);
    EXPECT_TRUE(own.allowsConnectionFrom(&x));
}

TEST_F(NodeWiringRules, FromPinWithListAsksThePin)
{
    script.allowed = {"x.to(b)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&x, out));
    EXPECT_EQ(listedPins(out), pinsOf({&b}));
    EXPECT_EQ(asked(), (Lines{"x.to(a)", "x.to(b)"}));
    script.allowed = {"x.to(a)", "x.to(b)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&x, out));
    EXPECT_EQ(listedPins(out), pinsOf({&b, &a, &b}));
}

TEST_F(NodeWiringRules, ToPinAsksTheOwnPinsWhetherTheyTakeAConnectionFromIt)
{
    EXPECT_FALSE(own.allowsConnectionTo(&x));
    EXPECT_EQ(asked(), (Lines{"a.from(x)", "b.from(x)"}));
    script.allowed = {"a.from(x)"};
    EXPECT_TRUE(own.allowsConnectionTo(&x));
    EXPECT_EQ(asked(), (Lines{"a.from(x)"}));
    script.allowed = {"b.from(x)"};
    EXPECT_TRUE(own.allowsConnectionTo(&x));
    script.allowed = {"a.to(x)", "b.to(x)", "x.from(a)", "x.from(b)"};
    EXPECT_FALSE(own.allowsConnectionTo(&x));
}

TEST_F(NodeWiringRules, ToPinNeedsTheInputBitOfThePin)
{
    script.allowed = {"a.from(x)", "b.from(x)"};
    for (PinDirection const& direction : {noDirection, PIN_OUTPUT})
    {
        x.setDirection(direction);
        EXPECT_FALSE(own.allowsConnectionTo(&x));
        EXPECT_EQ(asked(), Lines{});
    }
    x.setDirection(PIN_INPUT);
    EXPECT_TRUE(own.allowsConnectionTo(&x));
}

TEST_F(NodeWiringRules, ToPinWithListAsksThePin)
{
    script.allowed = {"x.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&x, out));
    EXPECT_EQ(listedPins(out), pinsOf({&b}));
    EXPECT_EQ(asked(), (Lines{"x.from(a)", "x.from(b)"}));
    script.allowed = {"x.from(a)", "x.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&x, out));
    EXPECT_EQ(listedPins(out), pinsOf({&b, &a, &b}));
}

TEST_F(NodeWiringRules, PinWithListIsAskedWhateverItsDirection)
{
    x.setDirection(noDirection);
    script.allowed = {"x.to(a)", "x.from(a)"};
    EXPECT_TRUE(own.allowsConnectionFrom(&x, out));
    EXPECT_TRUE(own.allowsConnectionTo(&x, out));
    EXPECT_EQ(listedPins(out), pinsOf({&a, &a}));
}

TEST_F(NodeWiringRules, ListThatHeldPinsBeforeIsNoAllowedPair)
{
    out.append(&y);
    EXPECT_FALSE(own.allowsConnectionFrom(&x, out));
    EXPECT_FALSE(own.allowsConnectionTo(&x, out));
    EXPECT_FALSE(own.allowsConnectionFrom(&other, out));
    EXPECT_FALSE(own.allowsConnectionTo(&other, out));
    EXPECT_EQ(listedPins(out), pinsOf({&y}));
}

TEST_F(NodeWiringRules, NullIsNeverAllowed)
{
    GraphNodePin const* const noPin = nullptr;
    GraphNodeBase const* const noNode = nullptr;
    out.append(&y);
    EXPECT_FALSE(own.allowsConnectionFrom(noPin));
    EXPECT_FALSE(own.allowsConnectionFrom(noPin, out));
    EXPECT_FALSE(own.allowsConnectionFrom(noNode));
    EXPECT_FALSE(own.allowsConnectionFrom(noNode, out));
    EXPECT_FALSE(own.allowsConnectionTo(noPin));
    EXPECT_FALSE(own.allowsConnectionTo(noPin, out));
    EXPECT_FALSE(own.allowsConnectionTo(noNode));
    EXPECT_FALSE(own.allowsConnectionTo(noNode, out));
    EXPECT_EQ(listedPins(out), pinsOf({&y}));
    EXPECT_EQ(asked(), Lines{});
}

TEST_F(NodeWiringRules, NodeWithoutPinsAllowsNothing)
{
    GraphNodeBase bare;
    EXPECT_FALSE(bare.allowsConnectionFrom(&x));
    EXPECT_FALSE(bare.allowsConnectionFrom(&x, out));
    EXPECT_FALSE(bare.allowsConnectionFrom(&other));
    EXPECT_FALSE(bare.allowsConnectionFrom(&other, out));
    EXPECT_FALSE(bare.allowsConnectionTo(&x));
    EXPECT_FALSE(bare.allowsConnectionTo(&x, out));
    EXPECT_FALSE(bare.allowsConnectionTo(&other));
    EXPECT_FALSE(bare.allowsConnectionTo(&other, out));
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(asked(), Lines{});
}

TEST_F(NodeWiringRules, NothingIsAllowedWithANodeWithoutPins)
{
    GraphNodeBase const bare;
    EXPECT_FALSE(own.allowsConnectionFrom(&bare));
    EXPECT_FALSE(own.allowsConnectionFrom(&bare, out));
    EXPECT_FALSE(own.allowsConnectionTo(&bare));
    EXPECT_FALSE(own.allowsConnectionTo(&bare, out));
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(asked(), Lines{});
}

TEST_F(NodeWiringRules, NodeMayBeAskedAboutItself)
{
    script.allowed = {"a.from(b)"};
    EXPECT_TRUE(own.allowsConnectionTo(&own, out));
    EXPECT_EQ(asked(), (Lines{"a.from(a)", "b.from(a)", "a.from(b)", "b.from(b)"}));
    EXPECT_EQ(listedPins(out), pinsOf({&b}));
}

TEST(NodeWiringOfPlainPins, FollowsTheDirections)
{
    for (unsigned int own = 0; own < 4; ++own)
    {
        for (unsigned int other = 0; other < 4; ++other)
        {
            SCOPED_TRACE(testing::Message() << "own pin " << own << ", other pin " << other);
            PlainNode node(own);
            PlainNode partner(other);
            Pins out;
            bool const from = hasInput(own) && hasOutput(other);
            bool const to = hasOutput(own) && hasInput(other);
            EXPECT_EQ(node.node.allowsConnectionFrom(&partner.pin), from);
            EXPECT_EQ(node.node.allowsConnectionFrom(&partner.pin, out), from);
            EXPECT_EQ(node.node.allowsConnectionFrom(&partner.node), from);
            EXPECT_EQ(node.node.allowsConnectionFrom(&partner.node, out), from);
            EXPECT_EQ(node.node.allowsConnectionTo(&partner.pin, out), to);
            EXPECT_EQ(node.node.allowsConnectionTo(&partner.node), to);
            EXPECT_EQ(node.node.allowsConnectionTo(&partner.node, out), to);
            EXPECT_EQ(out.size(), (from ? 2u : 0u) + (to ? 2u : 0u));
        }
    }
}

TEST(NodeWiringOfPlainPins, ToAPinPassesOnlyForAnOwnInputAndAPinOfBothDirections)
{
    for (unsigned int own = 0; own < 4; ++own)
    {
        for (unsigned int other = 0; other < 4; ++other)
        {
            SCOPED_TRACE(testing::Message() << "own pin " << own << ", other pin " << other);
            PlainNode node(own);
            GraphNodePin const pin(nullptr, 1, PinDirection(other));
            EXPECT_EQ(node.node.allowsConnectionTo(&pin), hasInput(own) && other == 3u);
        }
    }
}

/// A node with so many pins of both directions that its list outgrows its block while it is walked.
struct ManyPins
{
    ManyPins()
    {
        for (GraphNodePin& pin : pins)
        {
            pin.setDirection(bothDirections);
            node.addNodePin(&pin);
        }
    }

    /// The list as it was made, then each pin of `own` so many times in a row.
    std::vector<GraphNodePin*> followedBy(ManyPins& own, unsigned int times)
    {
        std::vector<GraphNodePin*> expected;
        for (GraphNodePin& pin : pins) expected.push_back(&pin);
        for (GraphNodePin& pin : own.pins) expected.insert(expected.end(), times, &pin);
        return expected;
    }

    static constexpr unsigned int count = 20;
    std::deque<GraphNodePin> pins = std::deque<GraphNodePin>(count);
    GraphNodeBase node;
};

using GatherWithPin = bool (GraphNodeBase::*)(GraphNodePin const*, Pins&) const;
using GatherWithNode = bool (GraphNodeBase::*)(GraphNodeBase const*, Pins&) const;

TEST(NodeWiringIntoAListThatIsWalked, PinsArePairedThatWereThereAtTheStart)
{
    for (GatherWithPin const gather : {GatherWithPin(&GraphNodeBase::allowsConnectionFrom),
                                       GatherWithPin(&GraphNodeBase::allowsConnectionTo)})
    {
        ManyPins own;
        GraphNodePin const pin(nullptr, 1, bothDirections);
        EXPECT_TRUE((own.node.*gather)(&pin, own.node.refNodePins()));
        EXPECT_EQ(listedPins(own.node.getNodePins()), own.followedBy(own, 1));
    }
}

TEST(NodeWiringIntoAListThatIsWalked, PinsOfBothNodesArePairedThatWereThereAtTheStart)
{
    for (GatherWithNode const gather : {GatherWithNode(&GraphNodeBase::allowsConnectionFrom),
                                        GatherWithNode(&GraphNodeBase::allowsConnectionTo)})
    {
        for (bool const intoOwnList : {true, false})
        {
            SCOPED_TRACE(intoOwnList);
            ManyPins own;
            ManyPins other;
            ManyPins& walked = intoOwnList ? own : other;
            EXPECT_TRUE((own.node.*gather)(&other.node, walked.node.refNodePins()));
            EXPECT_EQ(listedPins(walked.node.getNodePins()), walked.followedBy(own, ManyPins::count));
        }
    }
}

} // namespace kestrel::graph::test
