#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>

#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;

constexpr PinDirection noDirection{0u};
constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;

constexpr Color4<float> green(0.0f, 1.0f, 0.0f, 1.0f);
constexpr Color4<float> darkGreen(0.0f, 0.6f, 0.0f, 1.0f);

/// Its four kinds are flags of its own, so that only the virtual questions can tell.
class KindNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    bool isCompound() const override { return compound; }
    bool isInterface() const override { return interfaceKind; }
    bool isEvaluator() const override { return evaluator; }
    bool isPassThrough() const override { return passThrough; }

    bool compound = false;
    bool interfaceKind = false;
    bool evaluator = false;
    bool passThrough = false;
};

/// Stands on a node that only the virtual question knows.
class RelocatedPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    GraphNodeBase* getParentGraphNodePtr() const override { return place; }

    GraphNodeBase* place = nullptr;
};

/// Lets a test look at the moment at which it is renamed.
class WatchedPin : public GraphNodePin
{
public:
    void setName(KS_String const& name) override
    {
        ++renames;
        if (onSetName) onSetName();
        GraphNodePin::setName(name);
    }

    int renames = 0;
    std::function<void()> onSetName;
};

/// A pin of the node that is registered under the given name; the node deletes it.
template <class Pin, class Graph>
Pin& adoptPin(Graph& graph, GraphNodeBase& node, KS_String const& name, PinDirection const& direction,
              unsigned int id)
{
    Pin* const pin = new Pin;
    pin->setDirection(direction);
    pin->setMaxNumConnections(unlimited);
    pin->setId(id);
    pin->setName(name);
    node.addNodePin(pin);
    graph.scene.addNodePin(pin);
    return *pin;
}

/// The pins by name, separated by spaces.
std::string names(Pins const& pins)
{
    std::string text;
    for (GraphNodePin* pin : pins) text += (text.empty() ? "" : " ") + std::string(pin->getName());
    return text;
}

// -----------------------------------------------------------------------------------------------------------
// Directions

TEST(GraphNodePinDirection, EachQuestionLooksAtItsOwnBit)
{
    struct Row
    {
        unsigned int direction;
        bool input;
        bool output;
        bool bidirectional;
    };
    for (Row const& row : {Row{0, false, false, false}, Row{1, true, false, false},
                           Row{2, false, true, false}, Row{3, true, true, true}, Row{4, false, false, false},
                           Row{5, true, false, false}, Row{6, false, true, false}, Row{7, true, true, true},
                           Row{0xFFFFFFFCu, false, false, false}, Row{0xFFFFFFFFu, true, true, true}})
    {
        SCOPED_TRACE(row.direction);
        GraphNodePin pin;
        pin.setDirection(PinDirection(row.direction));
        EXPECT_EQ(pin.getDirection().value(), row.direction);
        EXPECT_EQ(pin.isInputPin(), row.input);
        EXPECT_EQ(pin.isOutputPin(), row.output);
        EXPECT_EQ(pin.isBidirectionalPin(), row.bidirectional);
    }
}

// -----------------------------------------------------------------------------------------------------------
// Construction

void expectUnlinked(GraphNodePin const& pin)
{
    EXPECT_EQ(pin.getId(), 0xFFFFFFFFu);
    EXPECT_EQ(pin.getChildGraphNodePinPtr(), nullptr);
    EXPECT_EQ(pin.getParentGraphNodePinPtr(), nullptr);
    EXPECT_EQ(pin.getInputConnections().size(), 0u);
    EXPECT_EQ(pin.getInputConnections().capacity(), 0u);
    EXPECT_EQ(pin.getOutputConnections().size(), 0u);
    EXPECT_EQ(pin.getOutputConnections().capacity(), 0u);
}

TEST(GraphNodePinConstruction, ADefaultPinIsPureGreenWithoutNodeDirectionAndCapacity)
{
    GraphNodePin pin;
    expectUnlinked(pin);
    EXPECT_EQ(pin.getMaxNumConnections(), 0u);
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    EXPECT_EQ(pin.getDirection().value(), 0u);
    EXPECT_EQ(pin.getName(), KS_String("Untitled"));
    EXPECT_EQ(pin.getBorderColor(), green);
    EXPECT_EQ(pin.getColor(), green);
}

TEST(GraphNodePinConstruction, APinOfANodeIsDarkerGreenWithWhatItWasGiven)
{
    GraphNodeBase node;
    GraphNodePin pin(&node, 7, PIN_OUTPUT);
    expectUnlinked(pin);
    EXPECT_EQ(pin.getMaxNumConnections(), 7u);
    EXPECT_EQ(pin.getParentGraphNodePtr(), &node);
    EXPECT_EQ(pin.getDirection().value(), 2u);
    EXPECT_EQ(pin.getName(), KS_String("Untitled"));
    EXPECT_EQ(pin.getBorderColor(), darkGreen);
    EXPECT_EQ(pin.getColor(), darkGreen);
}

TEST(GraphNodePinConstruction, ANullNodeIsTaken)
{
    GraphNodePin pin(nullptr, 1, bothDirections);
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    EXPECT_EQ(pin.getMaxNumConnections(), 1u);
    EXPECT_EQ(pin.getDirection().value(), 3u);
    EXPECT_EQ(pin.getColor(), darkGreen);
}

TEST(GraphNodePinConstruction, TellsTheNodeNothing)
{
    GraphNodeBase node;
    GraphNodePin pin(&node, 1, PIN_INPUT);
    EXPECT_EQ(node.getNodePins().size(), 0u);
}

TEST(GraphNodePinConstruction, ADefaultPinIsFull)
{
    GraphNodePin pin;
    EXPECT_TRUE(pin.isFull());
    EXPECT_FALSE(pin.isConnected());
}

// -----------------------------------------------------------------------------------------------------------
// Copies

/// A pin in which no two fields hold the same value, nor a default.
class GraphNodePinCopy : public ::testing::Test
{
protected:
    GraphNodePinCopy()
    {
        original.setId(42);
        original.setName("original");
        original.setBorderColor(borderColor);
        original.setColor(color);
        original.setChildGraphNodePinPtr(&child);
        original.setParentGraphNodePinPtr(&parent);
        original.addInputConnection(&first);
        original.addInputConnection(&second);
        original.addOutputConnection(&third);
    }

    void expectEqualToTheOriginal(GraphNodePin& pin)
    {
        EXPECT_EQ(pin.getId(), 42u);
        EXPECT_EQ(pin.getMaxNumConnections(), 9u);
        EXPECT_EQ(pin.getParentGraphNodePtr(), &node);
        EXPECT_EQ(pin.getDirection().value(), 2u);
        EXPECT_EQ(pin.getChildGraphNodePinPtr(), &child);
        EXPECT_EQ(pin.getParentGraphNodePinPtr(), &parent);
        EXPECT_EQ(pin.getName(), KS_String("original"));
        EXPECT_EQ(pin.getBorderColor(), borderColor);
        EXPECT_EQ(pin.getColor(), color);
        EXPECT_EQ(listed(pin.getInputConnections()), (std::vector<GraphConnection*>{&first, &second}));
        EXPECT_EQ(listed(pin.getOutputConnections()), (std::vector<GraphConnection*>{&third}));
    }

    Color4<float> const borderColor{0.1f, 0.2f, 0.3f, 0.4f};
    Color4<float> const color{0.5f, 0.6f, 0.7f, 0.8f};
    GraphNodeBase node;
    GraphNodePin child;
    GraphNodePin parent;
    GraphConnection first;
    GraphConnection second;
    GraphConnection third;
    GraphNodePin original{&node, 9, PIN_OUTPUT};
};

TEST_F(GraphNodePinCopy, CopiesEveryField)
{
    GraphNodePin copy(original);
    expectEqualToTheOriginal(copy);
    expectEqualToTheOriginal(original);
}

TEST_F(GraphNodePinCopy, AssignmentReplacesEveryField)
{
    GraphNodeBase otherNode;
    GraphConnection other;
    GraphNodePin target(&otherNode, 1, PIN_INPUT);
    target.addInputConnection(&other);
    target.addOutputConnection(&other);
    EXPECT_EQ(&(target = original), &target);
    expectEqualToTheOriginal(target);
    expectEqualToTheOriginal(original);
}

TEST_F(GraphNodePinCopy, AssignmentToItselfChangesNothing)
{
    GraphNodePin& same = original;
    original = same;
    expectEqualToTheOriginal(original);
}

TEST_F(GraphNodePinCopy, ACopyOfADefaultPinClearsWhatTheTargetHad)
{
    original = GraphNodePin();
    expectUnlinked(original);
    EXPECT_EQ(original.getParentGraphNodePtr(), nullptr);
    EXPECT_EQ(original.getMaxNumConnections(), 0u);
    EXPECT_EQ(original.getDirection().value(), 0u);
    EXPECT_EQ(original.getName(), KS_String("Untitled"));
    EXPECT_EQ(original.getColor(), green);
}

TEST_F(GraphNodePinCopy, TellsNeitherNodeNorPairNorConnectionsOfTheCopy)
{
    GraphNodePin const copy(original);
    EXPECT_EQ(node.getNodePins().size(), 0u);
    EXPECT_EQ(child.getParentGraphNodePinPtr(), nullptr);
    EXPECT_EQ(parent.getChildGraphNodePinPtr(), nullptr);
    EXPECT_EQ(first.getTargetPin(), nullptr);
    EXPECT_EQ(third.getSourcePin(), nullptr);
}

TEST_F(GraphNodePinCopy, FieldsOfTheCopyAreItsOwn)
{
    GraphNodePin copy(original);
    copy.setId(1);
    copy.setMaxNumConnections(1);
    copy.setName("copy");
    copy.setColor(green);
    copy.setDirection(PIN_INPUT);
    copy.setParentGraphNodePtr(nullptr);
    expectEqualToTheOriginal(original);
}

// -----------------------------------------------------------------------------------------------------------
// Plain fields

TEST(GraphNodePinFields, IdAndCapacityHoldAnyValue)
{
    GraphNodePin pin;
    for (unsigned int value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu})
    {
        pin.setId(value);
        pin.setMaxNumConnections(~value);
        EXPECT_EQ(pin.getId(), value);
        EXPECT_EQ(pin.getMaxNumConnections(), ~value);
    }
}

TEST(GraphNodePinFields, GettersReferToTheFields)
{
    GraphNodePin pin;
    unsigned int const& id = pin.getId();
    unsigned int const& capacity = pin.getMaxNumConnections();
    PinDirection const& direction = pin.getDirection();
    pin.setId(3);
    pin.setMaxNumConnections(4);
    pin.setDirection(PIN_OUTPUT);
    EXPECT_EQ(id, 3u);
    EXPECT_EQ(capacity, 4u);
    EXPECT_EQ(direction.value(), 2u);
}

TEST(GraphNodePinFields, AnIdIsToldToNoMap)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.root);
    unsigned int const id = pin.getId();
    graph.scene.setIsDirty(false);
    pin.setId(id + 100000);
    EXPECT_EQ(graph.scene.getPinPtrById(id), &pin);
    EXPECT_EQ(graph.scene.getPinPtrById(id + 100000), nullptr);
    EXPECT_FALSE(graph.scene.getIsDirty());
    pin.setId(id);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(GraphNodePinFields, TheTwoColoursAreApart)
{
    Color4<float> const one(0.1f, 0.2f, 0.3f, 0.4f);
    Color4<float> const other(-1.0f, 2.0f, 0.0f, 5.0f);
    GraphNodePin pin;
    pin.setColor(one);
    EXPECT_EQ(pin.getColor(), one);
    EXPECT_EQ(pin.getBorderColor(), green);
    pin.setBorderColor(other);
    EXPECT_EQ(pin.getColor(), one);
    EXPECT_EQ(pin.getBorderColor(), other);
}

TEST(GraphNodePinFields, LinksAreStoredAndTellNobody)
{
    GraphNodeBase node;
    GraphNodePin child;
    GraphNodePin parent;
    GraphNodePin pin;
    pin.setParentGraphNodePtr(&node);
    pin.setChildGraphNodePinPtr(&child);
    pin.setParentGraphNodePinPtr(&parent);
    EXPECT_EQ(pin.getParentGraphNodePtr(), &node);
    EXPECT_EQ(pin.getChildGraphNodePinPtr(), &child);
    EXPECT_EQ(pin.getParentGraphNodePinPtr(), &parent);
    EXPECT_EQ(node.getNodePins().size(), 0u);
    EXPECT_EQ(child.getParentGraphNodePinPtr(), nullptr);
    EXPECT_EQ(parent.getChildGraphNodePinPtr(), nullptr);
    pin.setParentGraphNodePtr(nullptr);
    pin.setChildGraphNodePinPtr(nullptr);
    pin.setParentGraphNodePinPtr(nullptr);
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    EXPECT_EQ(pin.getChildGraphNodePinPtr(), nullptr);
    EXPECT_EQ(pin.getParentGraphNodePinPtr(), nullptr);
}

TEST(GraphNodePinFields, GetNameIsACopy)
{
    GraphNodePin pin;
    KS_String const before = pin.getName();
    pin.setName("later");
    EXPECT_EQ(before, KS_String("Untitled"));
    EXPECT_EQ(pin.getName(), KS_String("later"));
}

// -----------------------------------------------------------------------------------------------------------
// Hooks

TEST(GraphNodePinHooks, AnswerNoAndSayNothing)
{
    GraphNodePin pin;
    EXPECT_FALSE(pin.isDirty());
    EXPECT_FALSE(pin.isEditable());
    EXPECT_FALSE(pin.isUpdating());
    EXPECT_FALSE(pin.hasInternalConnections());
    EXPECT_TRUE(pin.allowsNewOrRemovalOfInternalConnections());
    EXPECT_EQ(pin.forcedInternalConnection(), nullptr);
    EXPECT_EQ(pin.getInfo(), KS_String(""));
    EXPECT_EQ(pin.getDescription(), KS_String(""));
    EXPECT_EQ(pin.asHTML(), KS_String(""));
}

TEST(GraphNodePinHooks, UpdateLeavesTheSceneClean)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.root);
    graph.scene.setIsDirty(false);
    pin.update();
    EXPECT_FALSE(pin.isDirty());
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(GraphNodePinHooks, ForcedInternalConnectionsAddNothing)
{
    GraphNodeBase node;
    GraphNodePin in(&node, 1, PIN_INPUT);
    GraphNodePin out(&node, 1, PIN_OUTPUT);
    node.addNodePin(&in);
    node.addNodePin(&out);
    Pins gathered;
    in.forcedInternalConnections(gathered);
    EXPECT_TRUE(gathered.isEmpty());
    gathered.append(&out);
    out.forcedInternalConnections(gathered);
    EXPECT_EQ(gathered.size(), 1u);
}

// -----------------------------------------------------------------------------------------------------------
// Kind

struct Kind
{
    char const* name;
    bool KindNode::*flag;
    bool (GraphNodePin::*question)() const;
};

constexpr Kind kinds[] = {
    {"compound", &KindNode::compound, &GraphNodePin::isCompoundPin},
    {"interface", &KindNode::interfaceKind, &GraphNodePin::isInterfacePin},
    {"evaluator", &KindNode::evaluator, &GraphNodePin::isEvaluatorPin},
    {"pass-through", &KindNode::passThrough, &GraphNodePin::isPassThroughPin},
};

TEST(GraphNodePinKind, IsThatOfTheNode)
{
    for (Kind const& kind : kinds)
    {
        SCOPED_TRACE(kind.name);
        KindNode node;
        node.*kind.flag = true;
        GraphNodePin const pin(&node, 1, PIN_INPUT);
        for (Kind const& asked : kinds)
            EXPECT_EQ((pin.*asked.question)(), asked.flag == kind.flag) << "asked for " << asked.name;
    }
}

TEST(GraphNodePinKind, IsNoneOnAPlainNode)
{
    GraphNodeBase node;
    GraphNodePin const pin(&node, 1, PIN_INPUT);
    for (Kind const& kind : kinds) EXPECT_FALSE((pin.*kind.question)()) << kind.name;
    EXPECT_FALSE(pin.isDynamic());
}

TEST(GraphNodePinKind, FollowsTheFlagsAndTheChildrenOfTheNode)
{
    GraphNodeBase node;
    GraphNodeBase child;
    GraphNodePin const pin(&node, 1, PIN_INPUT);
    node.setInterface(true);
    EXPECT_TRUE(pin.isInterfacePin());
    EXPECT_FALSE(pin.isCompoundPin());
    node.setInterface(false);
    node.addNode(&child);
    EXPECT_TRUE(pin.isCompoundPin());
    EXPECT_FALSE(pin.isInterfacePin());
    node.removeNode(&child);
    EXPECT_FALSE(pin.isCompoundPin());
}

TEST(GraphNodePinKind, AsksTheVirtualParentNode)
{
    for (Kind const& kind : kinds)
    {
        SCOPED_TRACE(kind.name);
        GraphNodeBase stored;
        KindNode place;
        place.*kind.flag = true;
        RelocatedPin pin(&stored, 1, PIN_INPUT);
        pin.place = &place;
        EXPECT_TRUE((pin.*kind.question)());
        pin.place = nullptr;
        EXPECT_FALSE((pin.*kind.question)());
    }
}

TEST(GraphNodePinKind, IsNoneWithoutANode)
{
    GraphNodePin const pin;
    for (Kind const& kind : kinds) EXPECT_FALSE((pin.*kind.question)()) << kind.name;
    EXPECT_FALSE(pin.isDynamic());
}

TEST(GraphNodePinKind, InterfaceCompoundAndEvaluatorPinsAreDynamicPassThroughPinsAreNot)
{
    for (Kind const& kind : kinds)
    {
        KindNode node;
        node.*kind.flag = true;
        GraphNodePin const pin(&node, 1, PIN_INPUT);
        EXPECT_EQ(pin.isDynamic(), kind.flag != &KindNode::passThrough) << kind.name;
    }
}

class AskedPin : public GraphNodePin
{
public:
    bool isInterfacePin() const override { return answer("interface", interfaceKind); }
    bool isCompoundPin() const override { return answer("compound", compound); }
    bool isEvaluatorPin() const override { return answer("evaluator", evaluator); }
    bool isPassThroughPin() const override { return answer("pass-through", true); }

    bool interfaceKind = false;
    bool compound = false;
    bool evaluator = false;
    mutable std::vector<std::string> asked;

private:
    bool answer(char const* question, bool yes) const
    {
        asked.emplace_back(question);
        return yes;
    }
};

TEST(GraphNodePinKind, DynamicAsksTheThreeQuestionsInOrderUntilOneIsTrue)
{
    struct Row
    {
        bool interfaceKind;
        bool compound;
        bool evaluator;
        bool dynamic;
        std::vector<std::string> asked;
    };
    std::vector<Row> const rows{
        {false, false, false, false, {"interface", "compound", "evaluator"}},
        {true, false, false, true, {"interface"}},
        {false, true, false, true, {"interface", "compound"}},
        {false, false, true, true, {"interface", "compound", "evaluator"}},
        {true, true, true, true, {"interface"}},
        {false, true, true, true, {"interface", "compound"}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(::testing::PrintToString(row.asked));
        AskedPin pin;
        pin.interfaceKind = row.interfaceKind;
        pin.compound = row.compound;
        pin.evaluator = row.evaluator;
        EXPECT_EQ(pin.isDynamic(), row.dynamic);
        EXPECT_EQ(pin.asked, row.asked);
    }
}

// -----------------------------------------------------------------------------------------------------------
// Wiring rules

TEST(GraphNodePinRules, AConnectionComesIntoAnInputFromAnOutput)
{
    for (unsigned int own = 0; own < 4; ++own)
    {
        for (unsigned int others = 0; others < 4; ++others)
        {
            SCOPED_TRACE(::testing::Message() << own << " from " << others);
            GraphNodePin const pin(nullptr, 1, PinDirection(own));
            GraphNodePin const other(nullptr, 1, PinDirection(others));
            bool const allowed = (own == 1 || own == 3) && (others == 2 || others == 3);
            EXPECT_EQ(pin.allowsConnectionFrom(&other), allowed);
            EXPECT_EQ(other.allowsConnectionTo(&pin), allowed);
        }
    }
}

TEST(GraphNodePinRules, ABidirectionalPinTakesAConnectionFromItself)
{
    GraphNodePin const pin(nullptr, 1, bothDirections);
    EXPECT_TRUE(pin.allowsConnectionFrom(&pin));
    EXPECT_TRUE(pin.allowsConnectionTo(&pin));
}

TEST(GraphNodePinRules, NullIsRefused)
{
    GraphNodePin const pin(nullptr, 1, bothDirections);
    EXPECT_FALSE(pin.allowsConnectionFrom(nullptr));
    EXPECT_FALSE(pin.allowsConnectionTo(nullptr));
}

TEST(GraphNodePinRules, CapacityIsNotAsked)
{
    GraphNodePin const in(nullptr, 0, PIN_INPUT);
    GraphNodePin const out(nullptr, 0, PIN_OUTPUT);
    ASSERT_TRUE(in.isFull());
    EXPECT_TRUE(in.allowsConnectionFrom(&out));
    EXPECT_TRUE(out.allowsConnectionTo(&in));
}

class JudgingPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    bool allowsConnectionFrom(GraphNodePin const* other) const override
    {
        ++asked;
        askedFor = other;
        return verdict;
    }

    bool verdict = false;
    mutable int asked = 0;
    mutable GraphNodePin const* askedFor = nullptr;
};

TEST(GraphNodePinRules, WhetherAConnectionMayGoToAPinIsForThatPinAlone)
{
    for (bool verdict : {false, true})
    {
        // Directions that the base would answer the other way round.
        PinDirection const direction = verdict ? noDirection : bothDirections;
        JudgingPin target(nullptr, 1, direction);
        target.verdict = verdict;
        JudgingPin source(nullptr, 1, direction);
        EXPECT_EQ(source.allowsConnectionTo(&target), verdict);
        EXPECT_EQ(target.asked, 1);
        EXPECT_EQ(target.askedFor, &source);
        EXPECT_EQ(source.asked, 0);
    }
}

TEST(GraphNodePinRules, ARefusingPinIsNotConnected)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addNode("b");
    JudgingPin& in = adoptPin<JudgingPin>(graph, b, "in", PIN_INPUT, 900001);
    GraphNodePin* const out = a.getPinByName("out");
    EXPECT_EQ(graph.scene.connect(out, &in, false), nullptr);
    in.verdict = true;
    EXPECT_NE(graph.scene.connect(out, &in, false), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

// -----------------------------------------------------------------------------------------------------------
// Links

TEST(GraphNodePinLinks, TheChildInterfaceNodeIsThatOfTheChildPin)
{
    GraphNodeBase node;
    GraphNodePin child;
    GraphNodePin pin;
    EXPECT_EQ(pin.getChildInterfaceNodePtr(), nullptr);
    pin.setChildGraphNodePinPtr(&child);
    EXPECT_EQ(pin.getChildInterfaceNodePtr(), nullptr);
    child.setParentGraphNodePtr(&node);
    EXPECT_EQ(pin.getChildInterfaceNodePtr(), &node);
}

TEST(GraphNodePinLinks, TheChildInterfaceNodeIsNotThatOfTheParentPin)
{
    GraphNodeBase node;
    GraphNodePin parent(&node, 1, PIN_INPUT);
    GraphNodePin pin(&node, 1, PIN_INPUT);
    pin.setParentGraphNodePinPtr(&parent);
    EXPECT_EQ(pin.getChildInterfaceNodePtr(), nullptr);
}

TEST(GraphNodePinLinks, TheChildInterfaceNodeIsAskedOfTheChildPin)
{
    GraphNodeBase node;
    RelocatedPin child;
    child.place = &node;
    GraphNodePin pin;
    pin.setChildGraphNodePinPtr(&child);
    EXPECT_EQ(pin.getChildInterfaceNodePtr(), &node);
}

TEST(GraphNodePinLinks, TheSceneIsThatOfTheNode)
{
    GraphScene scene;
    GraphNodeBase node;
    GraphNodePin pin;
    EXPECT_EQ(pin.getParentGraphScenePtr(), nullptr);
    pin.setParentGraphNodePtr(&node);
    EXPECT_EQ(pin.getParentGraphScenePtr(), nullptr);
    node.setGraphScene(&scene);
    EXPECT_EQ(pin.getParentGraphScenePtr(), &scene);
}

class ElsewhereNode : public GraphNodeBase
{
public:
    GraphScene* getGraphScene() const override { return elsewhere; }

    GraphScene* elsewhere = nullptr;
};

TEST(GraphNodePinLinks, TheSceneIsAskedOfTheVirtualNodeAndOfItsVirtualScene)
{
    GraphScene scene;
    ElsewhereNode node;
    node.elsewhere = &scene;
    RelocatedPin pin;
    EXPECT_EQ(pin.getParentGraphScenePtr(), nullptr);
    pin.place = &node;
    EXPECT_EQ(pin.getParentGraphScenePtr(), &scene);
}

// -----------------------------------------------------------------------------------------------------------
// Full names

TEST(GraphNodePinFullName, IsThatOfTheNodeADotAndTheName)
{
    GraphNodeBase top;
    GraphNodeBase below;
    top.setName("A");
    below.setName("B");
    top.addNode(&below);
    GraphNodePin pin(&below, 1, PIN_INPUT);
    pin.setName("in");
    EXPECT_EQ(pin.getFullName(), KS_String("A.B.in"));
    pin.setParentGraphNodePtr(&top);
    EXPECT_EQ(pin.getFullName(), KS_String("A.in"));
}

TEST(GraphNodePinFullName, IsTheBareNameWithoutANode)
{
    GraphNodePin pin;
    EXPECT_EQ(pin.getFullName(), KS_String("Untitled"));
    pin.setName("in");
    EXPECT_EQ(pin.getFullName(), KS_String("in"));
}

TEST(GraphNodePinFullName, KeepsItsDotWithEmptyNames)
{
    GraphNodeBase node;
    GraphNodePin pin(&node, 1, PIN_INPUT);
    pin.setName("");
    EXPECT_EQ(pin.getFullName(), KS_String("."));
}

TEST(GraphNodePinFullName, NamesAreNeverFormats)
{
    GraphNodeBase node;
    node.setName("100%s%n");
    GraphNodePin pin(&node, 1, PIN_INPUT);
    pin.setName("%d%%");
    EXPECT_EQ(pin.getFullName(), KS_String("100%s%n.%d%%"));
}

TEST(GraphNodePinFullName, HoldsLongNamesWhole)
{
    std::string const longName(5000, 'x');
    GraphNodeBase node;
    node.setName(longName.c_str());
    GraphNodePin pin(&node, 1, PIN_INPUT);
    pin.setName(longName.c_str());
    EXPECT_EQ(std::string(pin.getFullName()), longName + "." + longName);
}

class RenamedNode : public GraphNodeBase
{
public:
    KS_String getFullName() override { return "over.there"; }
};

class RenamedPin : public RelocatedPin
{
public:
    KS_String getName() override { return "other"; }
};

TEST(GraphNodePinFullName, AsksTheVirtualNodeItsVirtualFullNameAndTheVirtualName)
{
    RenamedNode node;
    RenamedPin pin;
    pin.place = &node;
    EXPECT_EQ(pin.getFullName(), KS_String("over.there.other"));
    pin.place = nullptr;
    EXPECT_EQ(pin.getFullName(), KS_String("other"));
}

// -----------------------------------------------------------------------------------------------------------
// Renaming

TEST(GraphNodePinRename, WorksWithoutNodeAndWithoutScene)
{
    GraphNodePin pin;
    pin.setName("alone");
    EXPECT_EQ(pin.getName(), KS_String("alone"));
    GraphNodeBase node;
    pin.setParentGraphNodePtr(&node);
    pin.setName("on a node");
    EXPECT_EQ(pin.getName(), KS_String("on a node"));
}

TEST(GraphNodePinRename, IsFollowedByTheScene)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    GraphNodePin& pin = graph.addInput(a, "old");
    graph.scene.setIsDirty(false);
    pin.setName("new");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.old"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.new"), &pin);
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(GraphNodePinRename, ToTheSameNameTellsTheSceneNothing)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.root, "in");
    graph.scene.setIsDirty(false);
    pin.setName("in");
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.in"), &pin);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(GraphNodePinRename, OfAnotherCaseIsAnotherName)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.root, "in");
    pin.setName("IN");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.in"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.IN"), &pin);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

class PinOfFixedFullName : public GraphNodePin
{
public:
    KS_String getFullName() override { return "fixed"; }
};

TEST(GraphNodePinRename, TellsTheSceneNothingWhenTheFullNameStays)
{
    TestGraph<> graph;
    auto& pin = adoptPin<PinOfFixedFullName>(graph, graph.root, "in", PIN_INPUT, 900001);
    graph.scene.setIsDirty(false);
    pin.setName("another");
    EXPECT_EQ(pin.getName(), KS_String("another"));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_EQ(graph.scene.getPinPtrByFullName("fixed"), &pin);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

class PinOfAnyScene : public GraphNodePin
{
public:
    GraphScene* getParentGraphScenePtr() const override { return told; }

    GraphScene* told = nullptr;
};

TEST(GraphNodePinRename, TellsTheSceneThatTheVirtualQuestionNames)
{
    TestGraph<> graph;
    auto& pin = adoptPin<PinOfAnyScene>(graph, graph.root, "old", PIN_INPUT, 900001);
    GraphScene other;
    other.addNodePin(&pin);
    pin.told = &other;
    pin.setName("new");
    EXPECT_EQ(other.getPinPtrByFullName("root.new"), &pin);
    EXPECT_EQ(other.getPinPtrByFullName("root.old"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.old"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.new"), nullptr);
}

TEST(GraphNodePinRename, TellsNobodyWhenTheVirtualQuestionNamesNoScene)
{
    TestGraph<> graph;
    auto& pin = adoptPin<PinOfAnyScene>(graph, graph.root, "old", PIN_INPUT, 900001);
    graph.scene.setIsDirty(false);
    pin.setName("new");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.old"), &pin);
    EXPECT_FALSE(graph.scene.getIsDirty());
}

/// A compound "c" around an interface node "i", each with one pin, paired with each other.
class PairedPins : public ::testing::Test
{
protected:
    PairedPins()
    {
        interfaceNode.setInterface(true);
        inner.setParentGraphNodePinPtr(&outer);
        outer.setChildGraphNodePinPtr(&inner);
        outer.renames = 0;
        graph.scene.setIsDirty(false);
    }

    TestGraph<> graph;
    TestNode& compound = graph.addNode("c");
    TestNode& interfaceNode = graph.addNode("i", &compound);
    WatchedPin& outer = adoptPin<WatchedPin>(graph, compound, "old", PIN_INPUT, 900001);
    GraphNodePin& inner = graph.addOutput(interfaceNode, "old");
};

TEST_F(PairedPins, RenamingTheInnerPinRenamesTheOuterOne)
{
    inner.setName("new");
    EXPECT_EQ(inner.getName(), KS_String("new"));
    EXPECT_EQ(outer.getName(), KS_String("new"));
    EXPECT_EQ(outer.renames, 1);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.c.new"), &outer);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.c.i.new"), &inner);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.c.old"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.c.i.old"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(PairedPins, RenamingTheOuterPinLeavesTheInnerOne)
{
    outer.setName("new");
    EXPECT_EQ(outer.getName(), KS_String("new"));
    EXPECT_EQ(inner.getName(), KS_String("old"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(PairedPins, TheOuterPinIsRenamedAfterTheInnerNameIsStoredAndBeforeTheSceneHears)
{
    KS_String innerName;
    GraphNodePin* underOldName = nullptr;
    outer.onSetName = [&]
    {
        innerName = inner.getName();
        underOldName = graph.scene.getPinPtrByFullName("root.c.i.old");
    };
    inner.setName("new");
    EXPECT_EQ(innerName, KS_String("new"));
    EXPECT_EQ(underOldName, &inner);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(PairedPins, RenamingTheInnerPinToItsOwnNameStillRenamesTheOuterOne)
{
    outer.setName("apart");
    graph.scene.setIsDirty(false);
    inner.setName("old");
    EXPECT_EQ(outer.getName(), KS_String("old"));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.c.old"), &outer);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(PairedPins, OnlyThePinOfAnInterfaceNodeRenamesItsParentPin)
{
    interfaceNode.setInterface(false);
    inner.setName("new");
    EXPECT_EQ(outer.getName(), KS_String("old"));
    EXPECT_EQ(outer.renames, 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(PairedPins, AnInterfacePinWithoutParentPinIsRenamedAlone)
{
    inner.setParentGraphNodePinPtr(nullptr);
    outer.setChildGraphNodePinPtr(nullptr);
    inner.setName("new");
    EXPECT_EQ(inner.getName(), KS_String("new"));
    EXPECT_EQ(outer.renames, 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(GraphNodePinRename, GoesUpThroughEveryInterfacePin)
{
    GraphNodeBase interfaceNode;
    interfaceNode.setInterface(true);
    GraphNodeBase plainNode;
    WatchedPin pins[4];
    for (unsigned int i = 0; i < 3; ++i)
    {
        pins[i].setParentGraphNodePtr(i < 2 ? &interfaceNode : &plainNode);
        pins[i].setParentGraphNodePinPtr(&pins[i + 1]);
    }
    pins[0].setName("new");
    EXPECT_EQ(pins[1].getName(), KS_String("new"));
    EXPECT_EQ(pins[2].getName(), KS_String("new"));
    EXPECT_EQ(pins[3].getName(), KS_String("Untitled"));
}

class PinThatCallsItselfInterface : public GraphNodePin
{
public:
    bool isInterfacePin() const override { return yes; }

    bool yes = true;
};

TEST(GraphNodePinRename, AsksTheVirtualKind)
{
    for (bool yes : {false, true})
    {
        GraphNodeBase node;
        node.setInterface(!yes);
        WatchedPin parent;
        PinThatCallsItselfInterface pin;
        pin.setParentGraphNodePtr(&node);
        pin.yes = yes;
        pin.setParentGraphNodePinPtr(&parent);
        pin.setName("new");
        EXPECT_EQ(parent.renames, yes ? 1 : 0);
    }
}

class PinOfHiddenParent : public PinThatCallsItselfInterface
{
public:
    GraphNodePin* getParentGraphNodePinPtr() const override { return hidden; }

    GraphNodePin* hidden = nullptr;
};

TEST(GraphNodePinRename, AsksTheVirtualParentPin)
{
    WatchedPin stored;
    WatchedPin hidden;
    PinOfHiddenParent pin;
    pin.setParentGraphNodePinPtr(&stored);
    pin.hidden = &hidden;
    pin.setName("new");
    EXPECT_EQ(stored.renames, 0);
    EXPECT_EQ(hidden.renames, 1);
}

// -----------------------------------------------------------------------------------------------------------
// XML

TEST(GraphNodePinXml, TellsNodeDirectionAndCapacity)
{
    struct Row
    {
        unsigned int nodeId;
        unsigned int direction;
        unsigned int capacity;
        char const* xml;
    };
    for (Row const& row : {
             Row{1, 1, 1,
                 "<pin parent=\"1\" input=\"true\" output=\"false\" maxconnections=\"1\">\n</pin>\n"},
             Row{2, 2, 0xFFFFFFFFu,
                 "<pin parent=\"2\" input=\"false\" output=\"true\" maxconnections=\"-1\">\n</pin>\n"},
             Row{0, 3, 0, "<pin parent=\"0\" input=\"true\" output=\"true\" maxconnections=\"0\">\n</pin>\n"},
             Row{0x7FFFFFFFu, 0, 0x80000000u,
                 "<pin parent=\"2147483647\" input=\"false\" output=\"false\" "
                 "maxconnections=\"-2147483648\">\n</pin>\n"},
             Row{0x80000000u, 4, 0x7FFFFFFFu,
                 "<pin parent=\"-2147483648\" input=\"false\" output=\"false\" "
                 "maxconnections=\"2147483647\">\n</pin>\n"},
             Row{0xFFFFFFFFu, 1, 12,
                 "<pin parent=\"-1\" input=\"true\" output=\"false\" maxconnections=\"12\">\n</pin>\n"},
         })
    {
        GraphNodeBase node(row.nodeId);
        GraphNodePin pin(&node, row.capacity, PinDirection(row.direction));
        pin.setName("never written");
        EXPECT_EQ(pin.toXml(), KS_String(row.xml));
    }
}

TEST(GraphNodePinXml, TellsMinusOneWithoutANode)
{
    GraphNodePin pin(nullptr, 3, PIN_INPUT);
    EXPECT_STREQ(pin.toXml().c_str(),
                 "<pin parent=\"-1\" input=\"true\" output=\"false\" maxconnections=\"3\">\n</pin>\n");
}

class NodeOfAnotherId : public GraphNodeBase
{
public:
    unsigned int const& getId() const override { return anotherId; }

    unsigned int anotherId = 77;
};

TEST(GraphNodePinXml, AsksTheVirtualNodeItsVirtualId)
{
    NodeOfAnotherId node;
    RelocatedPin pin(nullptr, 3, PIN_INPUT);
    pin.place = &node;
    EXPECT_STREQ(pin.toXml().c_str(),
                 "<pin parent=\"77\" input=\"true\" output=\"false\" maxconnections=\"3\">\n</pin>\n");
}

// -----------------------------------------------------------------------------------------------------------
// Counting

/// A pin with that many entries in its lists; they are never looked into.
class CrowdedPin : public GraphNodePin
{
public:
    CrowdedPin(unsigned int capacity, unsigned int inputs, unsigned int outputs)
    {
        setMaxNumConnections(capacity);
        for (unsigned int i = 0; i < inputs; ++i) addInputConnection(&connection);
        for (unsigned int i = 0; i < outputs; ++i) addOutputConnection(&connection);
    }

    GraphConnection connection;
};

TEST(GraphNodePinCounting, IsFullWhenBothListsTogetherReachTheCapacity)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int inputs;
        unsigned int outputs;
        bool full;
    };
    for (Row const& row : {Row{0, 0, 0, true}, Row{0, 1, 0, true}, Row{1, 0, 0, false}, Row{1, 1, 0, true},
                           Row{1, 0, 1, true}, Row{2, 1, 0, false}, Row{2, 0, 1, false}, Row{2, 1, 1, true},
                           Row{3, 1, 1, false}, Row{3, 3, 0, true}, Row{3, 0, 3, true}, Row{3, 2, 2, true},
                           Row{1, 5, 5, true}, Row{0xFFFFFFFFu, 9, 9, false}})
    {
        CrowdedPin const pin(row.capacity, row.inputs, row.outputs);
        EXPECT_EQ(pin.isFull(), row.full) << row.capacity << ": " << row.inputs << " + " << row.outputs;
    }
}

TEST(GraphNodePinCounting, ImplicitConnectionsFillAsWell)
{
    CrowdedPin pin(1, 1, 0);
    pin.connection.setImplicit(true);
    EXPECT_TRUE(pin.isFull());
    EXPECT_EQ(pin.getNumConnections(), 1u);
    EXPECT_TRUE(pin.isConnected());
}

TEST(GraphNodePinCounting, LoweringTheCapacityRemovesNothing)
{
    CrowdedPin pin(9, 2, 1);
    EXPECT_FALSE(pin.isFull());
    pin.setMaxNumConnections(1);
    EXPECT_TRUE(pin.isFull());
    EXPECT_EQ(pin.getNumConnections(), 3u);
}

TEST(GraphNodePinCounting, IsConnectedWithAnEntryInEitherList)
{
    for (unsigned int inputs : {0u, 1u})
    {
        for (unsigned int outputs : {0u, 1u})
        {
            CrowdedPin const pin(9, inputs, outputs);
            EXPECT_EQ(pin.isConnected(), inputs + outputs > 0) << inputs << " + " << outputs;
            EXPECT_EQ(pin.hasConnections(), inputs + outputs > 0) << inputs << " + " << outputs;
        }
    }
}

TEST(GraphNodePinCounting, CountsTheListsThatTheDirectionSelects)
{
    struct Row
    {
        unsigned int direction;
        unsigned int count;
    };
    CrowdedPin pin(9, 2, 3);
    pin.setDirection(noDirection);
    EXPECT_EQ(pin.getNumConnections(), 5u);
    for (Row const& row : {Row{0, 0}, Row{1, 2}, Row{2, 3}, Row{3, 5}, Row{4, 0}, Row{5, 2}, Row{7, 5}})
        EXPECT_EQ(pin.getNumConnections(PinDirection(row.direction)), row.count) << row.direction;
}

TEST(GraphNodePinCounting, HasConnectionsInTheListsThatTheDirectionSelects)
{
    for (unsigned int lists = 0; lists < 4; ++lists)
    {
        CrowdedPin const pin(9, lists & 1u, lists >> 1u);
        for (unsigned int direction = 0; direction < 8; ++direction)
        {
            EXPECT_EQ(pin.hasConnections(PinDirection(direction)), (lists & direction) != 0)
                << "lists " << lists << ", direction " << direction;
        }
    }
}

class PinThatSaysConnected : public GraphNodePin
{
public:
    bool isConnected() const override { return true; }
};

TEST(GraphNodePinCounting, HasConnectionsIsWhateverIsConnectedSays)
{
    PinThatSaysConnected const pin;
    EXPECT_TRUE(pin.hasConnections());
}

// -----------------------------------------------------------------------------------------------------------
// Gathering

/// A bidirectional pin of the node `here`, wired both ways with two pins of `there` and one of `elsewhere`.
/// Connections are told by name: "in2" and "in4", "out1" and "out4" are implicit.
class PinWithConnections : public ::testing::Test
{
protected:
    PinWithConnections()
    {
        for (GraphConnection* connection : {&in2, &in4, &out1, &out4}) connection->setImplicit(true);
        for (GraphConnection* connection : {&in1, &in2, &in3, &in4}) pin.addInputConnection(connection);
        for (GraphConnection* connection : {&out1, &out2, &out3, &out4}) pin.addOutputConnection(connection);
    }

    std::string text(Connections const& connections) const
    {
        std::string result;
        for (GraphConnection* connection : connections)
            result += (result.empty() ? "" : " ") + names.at(connection);
        return result;
    }

    std::string all(PinDirection const& direction, bool includeImplicit) const
    {
        Connections out;
        bool const any = pin.getConnections(direction, out, includeImplicit);
        EXPECT_EQ(any, !out.isEmpty());
        return text(out);
    }

    std::string withPin(GraphNodePin const* other, bool inputs, bool outputs, bool includeImplicit) const
    {
        Connections out;
        bool const any = pin.getConnectionsWithPin(other, out, inputs, outputs, includeImplicit);
        EXPECT_EQ(any, !out.isEmpty());
        EXPECT_EQ(pin.hasConnectionsWithPin(other, inputs, outputs, includeImplicit), !out.isEmpty());
        return text(out);
    }

    std::string withNode(GraphNodeBase const* node, bool inputs, bool outputs, bool includeImplicit) const
    {
        Connections out;
        bool const any = pin.getConnectionsWithNode(node, out, inputs, outputs, includeImplicit);
        EXPECT_EQ(any, !out.isEmpty());
        EXPECT_EQ(pin.hasConnectionsWithNode(node, inputs, outputs, includeImplicit), !out.isEmpty());
        return text(out);
    }

    GraphNodeBase here{1};
    GraphNodeBase there{2};
    GraphNodeBase elsewhere{3};
    GraphNodePin pin{&here, unlimited, bothDirections};
    GraphNodePin partner{&there, unlimited, bothDirections};
    GraphNodePin sibling{&there, unlimited, bothDirections};
    GraphNodePin stranger{&elsewhere, unlimited, bothDirections};
    GraphConnection in1{&partner, &pin};
    GraphConnection in2{&partner, &pin};
    GraphConnection in3{&stranger, &pin};
    GraphConnection in4{&sibling, &pin};
    GraphConnection out1{&pin, &partner};
    GraphConnection out2{&pin, &partner};
    GraphConnection out3{&pin, &stranger};
    GraphConnection out4{&pin, &sibling};
    std::map<GraphConnection*, std::string> names{{&in1, "in1"},   {&in2, "in2"},   {&in3, "in3"},
                                                  {&in4, "in4"},   {&out1, "out1"}, {&out2, "out2"},
                                                  {&out3, "out3"}, {&out4, "out4"}};
};

TEST_F(PinWithConnections, WithImplicitOnesTheDirectionSelectsTheLists)
{
    EXPECT_EQ(all(noDirection, true), "");
    EXPECT_EQ(all(PIN_INPUT, true), "in1 in2 in3 in4");
    EXPECT_EQ(all(PIN_OUTPUT, true), "out1 out2 out3 out4");
    EXPECT_EQ(all(bothDirections, true), "in1 in2 in3 in4 out1 out2 out3 out4");
    EXPECT_EQ(all(PinDirection(4u), true), "");
}

TEST_F(PinWithConnections, WithoutImplicitOnesTheDirectionIsNotLookedAt)
{
    for (unsigned int direction = 0; direction < 8; ++direction)
        EXPECT_EQ(all(PinDirection(direction), false), "in1 in3 out2 out3") << direction;
}

TEST_F(PinWithConnections, WithoutADirectionBothListsAreGathered)
{
    for (bool includeImplicit : {false, true})
    {
        Connections out;
        EXPECT_TRUE(pin.getConnections(out, includeImplicit));
        EXPECT_EQ(text(out), includeImplicit ? "in1 in2 in3 in4 out1 out2 out3 out4" : "in1 in3 out2 out3");
    }
}

TEST_F(PinWithConnections, ThePinsOwnDirectionPlaysNoPart)
{
    pin.setDirection(noDirection);
    EXPECT_EQ(all(bothDirections, true), "in1 in2 in3 in4 out1 out2 out3 out4");
    EXPECT_EQ(withPin(&stranger, true, true, true), "in3 out3");
    EXPECT_EQ(withNode(&elsewhere, true, true, true), "in3 out3");
}

TEST_F(PinWithConnections, TheConnectionsWithAPinComeFromItOrGoToIt)
{
    struct Row
    {
        bool inputs;
        bool outputs;
        bool includeImplicit;
        char const* withPartner;
        char const* withNodeThere;
    };
    for (Row const& row :
         {Row{false, false, false, "", ""}, Row{false, false, true, "", ""},
          Row{true, false, false, "in1", "in1"}, Row{true, false, true, "in1 in2", "in1 in2 in4"},
          Row{false, true, false, "out2", "out2"}, Row{false, true, true, "out1 out2", "out1 out2 out4"},
          Row{true, true, false, "in1 out2", "in1 out2"},
          Row{true, true, true, "in1 in2 out1 out2", "in1 in2 in4 out1 out2 out4"}})
    {
        SCOPED_TRACE(row.withNodeThere);
        EXPECT_EQ(withPin(&partner, row.inputs, row.outputs, row.includeImplicit), row.withPartner);
        EXPECT_EQ(withNode(&there, row.inputs, row.outputs, row.includeImplicit), row.withNodeThere);
    }
}

TEST_F(PinWithConnections, WhereAllAreImplicitNoneIsFoundWithoutThem)
{
    EXPECT_EQ(withPin(&sibling, true, true, false), "");
    EXPECT_EQ(withPin(&sibling, true, true, true), "in4 out4");
}

TEST_F(PinWithConnections, ThePinItselfAndItsNodeAreNotTheirOwnPartners)
{
    EXPECT_EQ(withPin(&pin, true, true, true), "");
    EXPECT_EQ(withNode(&here, true, true, true), "");
}

TEST_F(PinWithConnections, ALoopIsFoundInBothLists)
{
    GraphConnection loop(&pin, &pin);
    names[&loop] = "loop";
    pin.addInputConnection(&loop);
    pin.addOutputConnection(&loop);
    EXPECT_EQ(withPin(&pin, true, true, false), "loop loop");
    EXPECT_EQ(withPin(&pin, true, false, false), "loop");
    EXPECT_EQ(withNode(&here, true, true, false), "loop loop");
    EXPECT_EQ(withNode(&here, false, true, false), "loop");
}

TEST_F(PinWithConnections, NullIsNobodysPartner)
{
    EXPECT_EQ(withPin(nullptr, true, true, true), "");
    EXPECT_EQ(withNode(nullptr, true, true, true), "");
    Connections out;
    EXPECT_FALSE(pin.getInputConnectionsWithPin(nullptr, out, true));
    EXPECT_FALSE(pin.getOutputConnectionsWithPin(nullptr, out, true));
    EXPECT_FALSE(pin.hasInputConnectionsWithPin(nullptr, true));
    EXPECT_FALSE(pin.hasOutputConnectionsWithPin(nullptr, true));
    EXPECT_TRUE(out.isEmpty());
}

TEST_F(PinWithConnections, NodesAreComparedByPointerNotById)
{
    GraphNodeBase const sameId(2);
    EXPECT_EQ(withNode(&sameId, true, true, true), "");
}

TEST_F(PinWithConnections, TheInputAndTheOutputFormLookAtOneListEach)
{
    for (bool includeImplicit : {false, true})
    {
        Connections in;
        EXPECT_TRUE(pin.getInputConnectionsWithPin(&partner, in, includeImplicit));
        EXPECT_EQ(text(in), includeImplicit ? "in1 in2" : "in1");
        Connections out;
        EXPECT_TRUE(pin.getOutputConnectionsWithPin(&partner, out, includeImplicit));
        EXPECT_EQ(text(out), includeImplicit ? "out1 out2" : "out2");
    }
}

TEST_F(PinWithConnections, TheHasFormsOfOneListLookAtThatListAlone)
{
    GraphNodePin source;
    GraphNodePin target;
    GraphConnection from(&source, &pin);
    GraphConnection to(&pin, &target);
    from.setImplicit(true);
    to.setImplicit(true);
    pin.addInputConnection(&from);
    pin.addOutputConnection(&to);
    for (bool includeImplicit : {false, true})
    {
        EXPECT_EQ(pin.hasInputConnectionsWithPin(&source, includeImplicit), includeImplicit);
        EXPECT_EQ(pin.hasOutputConnectionsWithPin(&target, includeImplicit), includeImplicit);
        EXPECT_FALSE(pin.hasInputConnectionsWithPin(&target, includeImplicit));
        EXPECT_FALSE(pin.hasOutputConnectionsWithPin(&source, includeImplicit));
    }
}

TEST_F(PinWithConnections, GatheringAppendsToWhatIsThere)
{
    Connections out;
    out.append(&out3);
    pin.getConnections(PIN_INPUT, out, true);
    EXPECT_EQ(text(out), "out3 in1 in2 in3 in4");
    pin.getConnections(out, false);
    EXPECT_EQ(text(out), "out3 in1 in2 in3 in4 in1 in3 out2 out3");
    pin.getConnectionsWithPin(&stranger, out, true, true, true);
    pin.getConnectionsWithNode(&elsewhere, out, true, true, true);
    pin.getInputConnectionsWithPin(&sibling, out, true);
    pin.getOutputConnectionsWithPin(&sibling, out, true);
    EXPECT_EQ(text(out), "out3 in1 in2 in3 in4 in1 in3 out2 out3 in3 out3 in3 out3 in4 out4");
}

TEST_F(PinWithConnections, GatheringTellsWhetherAnythingIsThereAfterwards)
{
    Connections out;
    GraphNodePin const nobody;
    EXPECT_FALSE(pin.getConnections(noDirection, out, true));
    EXPECT_FALSE(pin.getConnectionsWithPin(&nobody, out, true, true, true));
    EXPECT_FALSE(nobody.getConnections(out, true));
    out.append(&in1);
    EXPECT_TRUE(pin.getConnections(noDirection, out, true));
    EXPECT_TRUE(nobody.getConnections(out, true));
    EXPECT_TRUE(nobody.getConnections(out, false));
    EXPECT_TRUE(pin.getConnectionsWithPin(&nobody, out, true, true, true));
    EXPECT_TRUE(pin.getInputConnectionsWithPin(&nobody, out, true));
    EXPECT_TRUE(pin.getOutputConnectionsWithPin(&nobody, out, true));
    EXPECT_TRUE(pin.getConnectionsWithNode(&here, out, true, true, true));
    EXPECT_EQ(text(out), "in1");
}

TEST_F(PinWithConnections, ARepeatedEntryIsGatheredAsOftenAsItStands)
{
    pin.addInputConnection(&in3);
    EXPECT_EQ(all(PIN_INPUT, true), "in1 in2 in3 in4 in3");
    EXPECT_EQ(withPin(&stranger, true, false, false), "in3 in3");
    EXPECT_EQ(withNode(&elsewhere, true, false, false), "in3 in3");
}

TEST_F(PinWithConnections, AConnectionThatIsNotConnectedIsGatheredLikeAnyOther)
{
    stranger.setDirection(noDirection);
    ASSERT_FALSE(in3.isConnected());
    EXPECT_EQ(all(bothDirections, false), "in1 in3 out2 out3");
    EXPECT_EQ(withPin(&stranger, true, true, false), "in3 out3");
    EXPECT_EQ(withNode(&elsewhere, true, true, false), "in3 out3");
}

class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool isImplicit() const override { return implicitAnswer; }
    GraphNodeBase* getSourceNode() const override { return sourceNode; }
    GraphNodeBase* getTargetNode() const override { return targetNode; }

    bool implicitAnswer = false;
    GraphNodeBase* sourceNode = nullptr;
    GraphNodeBase* targetNode = nullptr;
};

TEST_F(PinWithConnections, AConnectionIsAskedItsVirtualFlag)
{
    HostConnection host(&stranger, &pin);
    host.sourceNode = &elsewhere;
    names[&host] = "host";
    pin.addInputConnection(&host);
    EXPECT_EQ(all(bothDirections, false), "in1 in3 host out2 out3");
    EXPECT_EQ(withPin(&stranger, true, true, false), "in3 host out3");
    host.implicitAnswer = true;
    EXPECT_EQ(all(bothDirections, false), "in1 in3 out2 out3");
    EXPECT_EQ(withPin(&stranger, true, true, false), "in3 out3");
    EXPECT_EQ(withNode(&elsewhere, true, true, false), "in3 out3");
    EXPECT_EQ(withNode(&elsewhere, true, true, true), "in3 host out3");
}

TEST_F(PinWithConnections, AConnectionIsAskedItsVirtualNodes)
{
    GraphNodeBase from;
    GraphNodeBase to;
    HostConnection host(&stranger, &partner);
    host.sourceNode = &from;
    host.targetNode = &to;
    names[&host] = "host";
    pin.addInputConnection(&host);
    EXPECT_EQ(withNode(&from, true, true, false), "host");
    EXPECT_EQ(withNode(&to, true, true, false), "");
    pin.removeInputConnection(&host);
    pin.addOutputConnection(&host);
    EXPECT_EQ(withNode(&from, true, true, false), "");
    EXPECT_EQ(withNode(&to, true, true, false), "host");
}

TEST_F(PinWithConnections, NoFurtherConnectionIsAskedThanTheFirstThatLeadsThere)
{
    struct Counting : GraphConnection
    {
        using GraphConnection::GraphConnection;
        bool isImplicit() const override
        {
            ++asked;
            return false;
        }
        mutable int asked = 0;
    };
    GraphNodePin asking(&here, unlimited, bothDirections);
    Counting first(&partner, &asking);
    Counting second(&partner, &asking);
    Counting leaving(&asking, &partner);
    for (Counting* const connection : {&first, &second}) asking.addInputConnection(connection);
    asking.addOutputConnection(&leaving);
    EXPECT_TRUE(asking.hasConnectionsWithPin(&partner, true, true, false));
    EXPECT_TRUE(asking.hasConnectionsWithNode(&there, true, true, false));
    EXPECT_EQ(first.asked, 2);
    EXPECT_EQ(second.asked, 0);
    EXPECT_EQ(leaving.asked, 0);
}

TEST(GraphNodePinGathering, NothingLeadsToNoPinAndNoNode)
{
    GraphNodePin pin(nullptr, unlimited, bothDirections);
    GraphNodePin other(nullptr, unlimited, bothDirections);
    GraphConnection fromOther(&other, &pin);
    GraphConnection toOther(&pin, &other);
    GraphConnection fromNowhere(nullptr, &pin);
    GraphConnection toNowhere(&pin, nullptr);
    for (GraphConnection* connection : {&fromOther, &fromNowhere}) pin.addInputConnection(connection);
    for (GraphConnection* connection : {&toOther, &toNowhere}) pin.addOutputConnection(connection);
    for (auto const& [inputs, outputs] :
         {std::pair(true, true), std::pair(true, false), std::pair(false, true)})
    {
        SCOPED_TRACE(::testing::Message() << inputs << outputs);
        Connections out;
        EXPECT_FALSE(pin.hasConnectionsWithPin(nullptr, inputs, outputs, true));
        EXPECT_FALSE(pin.hasConnectionsWithNode(nullptr, inputs, outputs, true));
        EXPECT_FALSE(pin.getConnectionsWithPin(nullptr, out, inputs, outputs, true));
        EXPECT_FALSE(pin.getConnectionsWithNode(nullptr, out, inputs, outputs, true));
        EXPECT_TRUE(out.isEmpty());
        EXPECT_TRUE(pin.hasConnectionsWithPin(&other, inputs, outputs, true));
    }
}

// -----------------------------------------------------------------------------------------------------------
// Internal connections

/// A node with the pins o1 (output), a and b (input), both, o2 (output), in this order.
class InternalConnections : public ::testing::Test
{
protected:
    InternalConnections() : InternalConnections(std::make_unique<GraphNodeBase>()) {}

    explicit InternalConnections(std::unique_ptr<GraphNodeBase> made) : node(std::move(made))
    {
        for (GraphNodePin* pin : {&o1, &a, &b, &both, &o2}) node->addNodePin(pin);
        o1.setName("o1");
        a.setName("a");
        b.setName("b");
        both.setName("both");
        o2.setName("o2");
    }

    std::unique_ptr<GraphNodeBase> node;
    GraphNodePin o1{nullptr, 1, PIN_OUTPUT};
    GraphNodePin a{nullptr, 1, PIN_INPUT};
    GraphNodePin b{nullptr, 1, PIN_INPUT};
    GraphNodePin both{nullptr, 1, bothDirections};
    GraphNodePin o2{nullptr, 1, PIN_OUTPUT};
};

struct InternalGathering
{
    char const* name;
    bool (GraphNodePin::*gather)(Pins&) const;
};

constexpr InternalGathering internalGatherings[] = {
    {"internalConnections", &GraphNodePin::internalConnections},
    {"allowedInternalConnections", &GraphNodePin::allowedInternalConnections},
};

TEST_F(InternalConnections, AreForTheFirstInputPinAlone)
{
    EXPECT_TRUE(a.allowsInternalConnections());
    for (GraphNodePin* pin : {&o1, &b, &both, &o2})
        EXPECT_FALSE(pin->allowsInternalConnections()) << std::string(pin->getName());
}

TEST_F(InternalConnections, AreForABidirectionalPinThatIsTheFirstInput)
{
    node->removeNodePin(&a);
    node->removeNodePin(&b);
    EXPECT_TRUE(both.allowsInternalConnections());
    EXPECT_FALSE(o1.allowsInternalConnections());
}

TEST_F(InternalConnections, AreNotForAPinThatTheNodeDoesNotList)
{
    GraphNodePin const unlisted(node.get(), 1, PIN_INPUT);
    EXPECT_FALSE(unlisted.allowsInternalConnections());
    GraphNodeBase empty;
    GraphNodePin const onEmpty(&empty, 1, PIN_INPUT);
    EXPECT_FALSE(onEmpty.allowsInternalConnections());
}

TEST_F(InternalConnections, LeadFromAnInputToEveryOutputPin)
{
    for (InternalGathering const& each : internalGatherings)
    {
        SCOPED_TRACE(each.name);
        for (GraphNodePin* pin : {&a, &b})
        {
            Pins out;
            EXPECT_TRUE((pin->*each.gather)(out));
            EXPECT_EQ(names(out), "o1 both o2");
        }
    }
}

TEST_F(InternalConnections, LeadNowhereFromAPinWithTheOutputBit)
{
    for (InternalGathering const& each : internalGatherings)
    {
        SCOPED_TRACE(each.name);
        for (GraphNodePin* pin : {&o1, &both, &o2})
        {
            Pins out;
            EXPECT_FALSE((pin->*each.gather)(out));
            EXPECT_TRUE(out.isEmpty());
        }
    }
}

TEST_F(InternalConnections, OnlyTheOutputBitMatters)
{
    a.setDirection(noDirection);
    for (InternalGathering const& each : internalGatherings)
    {
        Pins out;
        EXPECT_TRUE((a.*each.gather)(out)) << each.name;
        EXPECT_EQ(names(out), "o1 both o2") << each.name;
    }
}

TEST_F(InternalConnections, AreAppendedAndToldByWhatIsThereAfterwards)
{
    for (InternalGathering const& each : internalGatherings)
    {
        SCOPED_TRACE(each.name);
        Pins out;
        out.append(&b);
        EXPECT_TRUE((o1.*each.gather)(out));
        EXPECT_EQ(names(out), "b");
        EXPECT_TRUE((a.*each.gather)(out));
        EXPECT_EQ(names(out), "b o1 both o2");
    }
}

TEST_F(InternalConnections, AreNoneOnANodeWithoutOutputs)
{
    for (GraphNodePin* pin : {&o1, &both, &o2}) node->removeNodePin(pin);
    for (InternalGathering const& each : internalGatherings)
    {
        Pins out;
        EXPECT_FALSE((a.*each.gather)(out)) << each.name;
        EXPECT_TRUE(out.isEmpty()) << each.name;
    }
}

TEST_F(InternalConnections, AreNoneWithoutANode)
{
    GraphNodePin pin(nullptr, 1, PIN_INPUT);
    EXPECT_FALSE(pin.allowsInternalConnections());
    for (InternalGathering const& each : internalGatherings)
    {
        Pins out;
        EXPECT_FALSE((pin.*each.gather)(out)) << each.name;
        EXPECT_TRUE(out.isEmpty()) << each.name;
    }
    pin.addInternalConnection(&o1);
    pin.removeInternalConnection(&o1);
}

TEST_F(InternalConnections, AddingAndRemovingChangeNothing)
{
    for (GraphNodePin* other : {&o1, &b, static_cast<GraphNodePin*>(nullptr)})
    {
        a.addInternalConnection(other);
        EXPECT_FALSE(a.hasInternalConnections());
        a.removeInternalConnection(other);
    }
    EXPECT_FALSE(a.isConnected());
    EXPECT_FALSE(o1.isConnected());
    Pins out;
    a.allowedInternalConnections(out);
    EXPECT_EQ(names(out), "o1 both o2");
}

class InternalHostPin : public RelocatedPin
{
public:
    using RelocatedPin::RelocatedPin;
    bool allowedInternalConnections(Pins& out) const override
    {
        ++asked;
        listWasEmpty = out.isEmpty();
        return RelocatedPin::allowedInternalConnections(out);
    }

    mutable int asked = 0;
    mutable bool listWasEmpty = false;
};

TEST_F(InternalConnections, AddingAndRemovingAskTheVirtualAllowedOnesForAFreshList)
{
    InternalHostPin host(nullptr, 1, PIN_INPUT);
    host.place = node.get();
    host.addInternalConnection(&o1);
    EXPECT_EQ(host.asked, 1);
    EXPECT_TRUE(host.listWasEmpty);
    host.removeInternalConnection(&o1);
    EXPECT_EQ(host.asked, 2);
    EXPECT_TRUE(host.listWasEmpty);
}

/// Shows its pins in an order of its own.
class ReorderingNode : public GraphNodeBase
{
public:
    bool getInputPins(Pins& out) const override { return appendReversed(PIN_INPUT, out); }
    bool getOutputPins(Pins& out) const override { return appendReversed(PIN_OUTPUT, out); }

private:
    bool appendReversed(PinDirection const& direction, Pins& out) const
    {
        for (unsigned int i = getNodePins().size(); i-- > 0;)
            if (getNodePins()[i]->getDirection().hasAny(direction)) out.append(getNodePins()[i]);
        return !out.isEmpty();
    }
};

class InternalConnectionsOfAHostNode : public InternalConnections
{
protected:
    InternalConnectionsOfAHostNode() : InternalConnections(std::make_unique<ReorderingNode>()) {}
};

TEST_F(InternalConnectionsOfAHostNode, FollowTheVirtualPinLists)
{
    EXPECT_FALSE(a.allowsInternalConnections());
    EXPECT_TRUE(both.allowsInternalConnections());
    for (InternalGathering const& each : internalGatherings)
    {
        Pins out;
        EXPECT_TRUE((a.*each.gather)(out)) << each.name;
        EXPECT_EQ(names(out), "o2 both o1") << each.name;
    }
}

TEST_F(InternalConnectionsOfAHostNode, AskTheVirtualParentNode)
{
    RelocatedPin pin(nullptr, 1, PIN_INPUT);
    pin.place = node.get();
    node->addNodePin(&pin); // last in the list, so the first that this node shows
    EXPECT_TRUE(pin.allowsInternalConnections());
    for (InternalGathering const& each : internalGatherings)
    {
        Pins out;
        EXPECT_TRUE((pin.*each.gather)(out)) << each.name;
        EXPECT_EQ(names(out), "o2 both o1") << each.name;
    }
}

} // namespace

} // namespace kestrel::graph::test
