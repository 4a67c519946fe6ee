#include "FailEachAllocation.h"
#include "FailingAllocator.h"
#include "SceneSubject.h"

#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <foundation/FileStream.h>
#include <foundation/KS_String.h>
#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

TEST(AllocationFailure, LeavesTheTargetOfASceneAssignmentUnchanged)
{
    SceneSubject source;
    TestGraph<> other;
    TestNode& node = other.addFilter("node");
    other.scene.connect(&node, &node, false);
    GraphNodePin* const pin = node.getPinByName("in");
    auto const check = [&](GraphScene& target, bool failed)
    {
        GraphScene const& expected = failed ? static_cast<GraphScene&>(other.scene) : source.scene;
        EXPECT_EQ(target.getId(), expected.getId());
        EXPECT_EQ(target.getNumberOfNodes(), expected.getNumberOfNodes());
        EXPECT_EQ(target.getNumberOfConnections(), expected.getNumberOfConnections());
        EXPECT_EQ(target.getPinPtrById(pin->getId()), failed ? pin : nullptr);
        EXPECT_EQ(target.getPinPtrByFullName("root.node.in"), failed ? pin : nullptr);
        EXPECT_SCENE_INVARIANTS(target);
    };
    auto const make = [&] { return GraphScene(other.scene); };
    auto const assign = [&](GraphScene& target) { target = source.scene; };
    failEachAllocation(true, make, assign, check);
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

TEST(AllocationFailure, LeavesATextAsItWasThatCouldNotBeFormatted)
{
    std::string const longText(1000, 'x'); // too long for the stack
    KS_String const before("before");
    unsigned int failures = 0;
    for (bool const persistently : {false, true})
    {
        for (long number = 1; number <= 4; ++number)
        {
            KS_String replaced(before);
            KS_String appended(before);
            try
            {
                FailAllocation const failure(number, persistently);
                replaced.format("%s", longText.c_str());
                appended.appendFormat("%s", longText.c_str());
            }
            catch (std::bad_alloc const&)
            {
                ++failures;
            }
            EXPECT_EQ(replaced, number > 2 ? KS_String(longText) : before) << number;
            EXPECT_EQ(appended, before) << number;
        }
    }
    EXPECT_EQ(failures, 8u);
}

namespace
{

/// A pin's list of inputs beside the naive one: what goes leaves its slot to the last.
class PinListAndModel
{
public:
    explicit PinListAndModel(unsigned int length)
    {
        for (unsigned int i = 0; i < length; ++i) add();
    }

    void add()
    {
        connections_.push_back(std::make_unique<GraphConnection>());
        pin_.addInputConnection(connections_.back().get());
        model_.push_back(connections_.back().get());
    }

    void addWithoutMemory()
    {
        connections_.push_back(std::make_unique<GraphConnection>());
        model_.push_back(connections_.back().get());
        FailAllocation const failure(1, true);
        pin_.addInputConnection(connections_.back().get());
    }

    void remove(std::size_t position)
    {
        pin_.removeInputConnection(model_[position]);
        model_[position] = model_.back();
        model_.pop_back();
    }

    void removeWithoutMemory(std::size_t position)
    {
        FailAllocation const failure(1, true);
        remove(position);
    }

    std::size_t size() const { return model_.size(); }

    void expectEqual() const { EXPECT_EQ(listed(pin_.getInputConnections()), model_); }

private:
    std::vector<std::unique_ptr<GraphConnection>> connections_;
    std::vector<GraphConnection*> model_;
    GraphNodePin pin_;
};

} // namespace

TEST(AllocationFailure, DoesNotReachARemovalFromALongPinList)
{
    PinListAndModel pin(200);
    for (unsigned int const position : {150u, 0u, 197u, 73u}) // 197 is the last one then
    {
        pin.removeWithoutMemory(position);
        pin.expectEqual();
    }
    pin.remove(20);
    pin.expectEqual();
}

TEST(AllocationFailure, DoesNotReachAnAdditionToALongPinListThatHasRoom)
{
    PinListAndModel pin(200);
    pin.remove(150);
    pin.addWithoutMemory();
    pin.expectEqual();
    for (unsigned int const position : {199u, 7u, 197u, 120u}) // the new one; then the last one, too
    {
        pin.remove(position);
        pin.expectEqual();
    }
}

TEST(AllocationFailure, OfTheIndexOfALongPinListLeavesTheListRight)
{
    PinListAndModel pin(110);
    while (pin.size() > 30) pin.remove(0);
    while (pin.size() < 96) pin.add();
    pin.remove(3); // makes an index that has room for 96
    pin.addWithoutMemory();
    pin.addWithoutMemory();
    pin.expectEqual();
    for (unsigned int const position : {96u, 7u, 0u})
    {
        pin.remove(position);
        pin.expectEqual();
    }
}

TEST(AllocationFailure, LeavesTheCountsOfConnectedNodesRight)
{
    TestGraph<OpenScene> graph;
    OpenScene& scene = graph.scene;
    for (unsigned int i = 0; i < 30; ++i)
    {
        SCOPED_TRACE(i);
        TestNode& source = graph.addNode("source");
        TestNode& target = graph.addNode("target");
        scene.setUseAdjacencyMap(false);
        GraphConnection const* const connection =
            scene.connect(&graph.addOutput(source), &graph.addInput(target), false);
        EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&source, true, true));
        try
        {
            FailAllocation const failure(1, true);
            scene.addConnectionToAdjacencyMaps(connection);
        }
        catch (std::bad_alloc const&)
        {
            EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&target, true, true));
            scene.addConnectionToAdjacencyMaps(connection);
        }
        EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&source, true, true));
        EXPECT_TRUE(scene.nodeHasConnectionsInAdjacencyMapAsTarget(&target, true, true));
        EXPECT_FALSE(scene.nodeHasConnectionsInAdjacencyMapAsSource(&target, true, true));
        EXPECT_EQ(scene.getNumberOfConnectionsInAdjacencyMap(&source, &target, true, false), 1);
    }
}

TEST(AllocationFailure, LeavesQuestionsForConnectedNodesToBeAnswered)
{
    TestGraph<OpenScene> graph;
    std::vector<TestNode*> nodes;
    for (unsigned int i = 0; i < 6; ++i) nodes.push_back(&graph.addFilter("node"));
    graph.scene.setUseAdjacencyMap(true);
    auto const connect = [&](std::size_t source, std::size_t target, bool implicit)
    { graph.scene.connect(nodes[source], nodes[target], implicit); };
    connect(0, 1, false);
    connect(0, 2, true);
    connect(3, 3, false);
    connect(4, 4, true);
    connect(1, 4, true);
    for (TestNode* const node : nodes)
        for (bool const includeImplicit : {false, true})
            for (bool const ignoreSelf : {false, true})
            {
                SCOPED_TRACE(testing::Message() << node->getId() << includeImplicit << ignoreSelf);
                OpenScene const copy(graph.scene);
                bool source = false;
                bool target = false;
                {
                    FailAllocation const failure(1, true);
                    source = copy.nodeHasConnectionsInAdjacencyMapAsSource(node, includeImplicit, ignoreSelf);
                    target = copy.nodeHasConnectionsInAdjacencyMapAsTarget(node, includeImplicit, ignoreSelf);
                }
                EXPECT_EQ(source, graph.scene.nodeHasConnectionsInAdjacencyMapAsSource(node, includeImplicit,
                                                                                       ignoreSelf));
                EXPECT_EQ(target, graph.scene.nodeHasConnectionsInAdjacencyMapAsTarget(node, includeImplicit,
                                                                                       ignoreSelf));
            }
}

TEST(AllocationFailure, DoesNotReachTheSecondQuestionForConnectedNodes)
{
    TestGraph<OpenScene> graph;
    TestNode& node = graph.addFilter("node");
    graph.scene.connect(&node, &graph.addFilter("target"), false);
    EXPECT_TRUE(graph.scene.nodeHasConnectionsInAdjacencyMapAsSource(&node, true, true));
    bool isSource = false;
    bool failed = true;
    {
        FailAllocation const failure(1, true);
        isSource = graph.scene.nodeHasConnectionsInAdjacencyMapAsSource(&node, true, true);
        failed = failure.happened();
    }
    EXPECT_TRUE(isSource);
    EXPECT_FALSE(failed);
}

TEST(AllocationFailure, LeavesALongPinListRight)
{
    std::vector<std::unique_ptr<GraphNodePin>> pins;
    GraphNodeBase node;
    for (unsigned int i = 0; i < 200; ++i)
    {
        SCOPED_TRACE(i);
        pins.push_back(std::make_unique<GraphNodePin>());
        GraphNodePin* const pin = pins.back().get();
        pin->setId(i + 1);
        {
            FailAllocation const failure(1, true);
            EXPECT_FALSE(node.hasPin(pin));
        }
        EXPECT_FALSE(node.hasPin(pin));
        for (long number = 1; number < 10 && !node.hasPin(pin); ++number)
        {
            try
            {
                FailAllocation const failure(number, true);
                node.addNodePin(pin);
            }
            catch (std::bad_alloc const&)
            {}
        }
        EXPECT_TRUE(node.hasPin(pin));
        EXPECT_EQ(node.getNodePins().size(), i + 1);
    }
}

TEST(AllocationFailure, LeavesChildrenToBeFoundByTheirNames)
{
    std::vector<std::unique_ptr<GraphNodeBase>> children;
    GraphNodeBase parent;
    auto const newChild = [&](KS_String const& name)
    {
        children.push_back(std::make_unique<GraphNodeBase>());
        children.back()->setName(name);
        return children.back().get();
    };
    for (unsigned int i = 0; i < 100; ++i) parent.addNode(newChild(KS_String(std::string(i + 1, 'x'))));
    KS_String const name(std::string(42, 'x'));
    for (long number = 1; number < 10; ++number)
    {
        FailAllocation const failure(number, true);
        EXPECT_EQ(parent.getNodeByName(name, true), children[41].get());
    }
    for (bool wasAdded = false; !wasAdded;)
    {
        for (long number = 1; number < 10; ++number)
        {
            SCOPED_TRACE(number);
            GraphNodeBase* const child = newChild("X"); // beside the first one, without its case
            parent.getNodeByName(name, true);
            try
            {
                FailAllocation const failure(number, true);
                parent.addNode(child);
            }
            catch (std::bad_alloc const&)
            {}
            wasAdded = child->getNodeOwner() == &parent;
            EXPECT_EQ(parent.getNodeByName("X", true), wasAdded ? child : nullptr);
            parent.removeNode(child);
        }
    }
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

TEST(AllocationFailure, RegistersAPinUnderItsIdAndItsNameOrNotAtAll)
{
    struct Subject : SceneSubject
    {
        Subject() : pin(&other, 1, PIN_INPUT)
        {
            pin.setId(4000000);
            pin.setName("a pin that names its node and is not on it");
        }

        GraphNodePin pin;
    };
    for (bool const persistently : {false, true})
    {
        long const failures = failEachAllocation(
            persistently, [] { return std::make_unique<Subject>(); },
            [](std::unique_ptr<Subject>& subject) { subject->scene.addNodePin(&subject->pin); },
            [](std::unique_ptr<Subject>& subject, bool failed)
            {
                GraphNodePin* const expected = failed ? nullptr : &subject->pin;
                EXPECT_EQ(subject->scene.getPinPtrById(4000000), expected);
                EXPECT_EQ(subject->scene.getPinPtrByFullName(subject->pin.getFullName()), expected);
                subject->scene.removeNodePin(&subject->pin);
            });
        EXPECT_GT(failures, 1);
    }
}

TEST(AllocationFailure, LeavesTheEntryOfAPinThatCouldNotBeRegisteredAgain)
{
    SceneSubject graph;
    GraphNodePin pin(&graph.other, 1, PIN_INPUT);
    pin.setId(4000000);
    pin.setName("first");
    graph.scene.addNodePin(&pin);
    KS_String const oldName = pin.getFullName();
    pin.setParentGraphNodePtr(&graph.outside); // no map is told
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        try
        {
            FailAllocation const failure(number, false);
            graph.scene.addNodePin(&pin);
        }
        catch (std::bad_alloc const&)
        {}
        EXPECT_EQ(graph.scene.getPinPtrById(4000000), &pin);
        EXPECT_EQ(graph.scene.getPinPtrByFullName(oldName), &pin);
    }
    EXPECT_EQ(graph.scene.getPinPtrByFullName(pin.getFullName()), &pin);
    graph.scene.removeNodePin(&pin);
    pin.setParentGraphNodePtr(&graph.other);
    graph.scene.removeNodePin(&pin);
}

TEST(AllocationFailure, LeavesAPinUnregisteredThatAFullNodeCouldNotTake)
{
    for (bool const isRegistered : {false, true})
    {
        SCOPED_TRACE(isRegistered);
        SceneSubject graph;
        while (graph.other.getNodePins().size() < graph.other.getNodePins().capacity())
            graph.addInput(graph.other, "more");
        GraphNodePin pin;
        pin.setId(4000000);
        if (isRegistered) graph.scene.addNodePin(&pin);
        bool failed = false;
        bool added = false;
        for (long number = 1; !added && number < 20; ++number)
        {
            SCOPED_TRACE(number);
            try
            {
                FailAllocation const failure(number, false);
                added = graph.scene.addNodePin(&graph.other, &pin);
            }
            catch (std::bad_alloc const&)
            {
                failed = true;
            }
            bool const isThere = added || isRegistered;
            EXPECT_EQ(graph.scene.getPinPtrById(4000000), isThere ? &pin : nullptr);
            EXPECT_EQ(graph.other.hasPin(&pin), added);
            EXPECT_EQ(pin.getParentGraphNodePtr(), added ? &graph.other : nullptr);
        }
        EXPECT_TRUE(failed);
        EXPECT_TRUE(added);
        graph.scene.removeNodePin(&pin);
        graph.other.removeNodePin(&pin);
    }
}

TEST(AllocationFailure, DoesNotReachARemovalFromALargeScene)
{
    TestGraph<> graph;
    GraphNodePin& source = graph.addOutput(graph.addNode("source"));
    GraphNodePin& target = graph.addInput(graph.addNode("target"));
    std::vector<GraphConnection*> model;
    for (unsigned int i = 0; i < 200; ++i) model.push_back(graph.scene.connect(&source, &target, false));
    for (std::size_t const position : {150u, 0u, 197u, 73u})
    {
        {
            FailAllocation const failure(1, true);
            EXPECT_TRUE(graph.scene.removeConnection(model[position]));
        }
        model[position] = model.back();
        model.pop_back();
        EXPECT_EQ(listed(graph.scene.getGraphConnections()), model);
    }
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(AllocationFailure, DoesNotReachTheRemovalOfAConnectionThatWasNeverCounted)
{
    TestGraph<> graph;
    TestNode& source = graph.addNode("source");
    TestNode& target = graph.addNode("target");
    GraphConnection* const connection =
        graph.scene.connect(&graph.addOutput(source), &graph.addInput(target), false);
    graph.scene.setUseAdjacencyMap(true);
    {
        FailAllocation const failure(1, true);
        EXPECT_TRUE(graph.scene.removeConnection(connection));
    }
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 0u);
}

TEST(AllocationFailure, OfANewPinLeavesTheEntryOfAnotherPinOfThatIdAlone)
{
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        SceneSubject graph;
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

// ---- Layouts

namespace
{

using Color = Color4<float>;
using Pair = Tuple2<float, float>;

NoteDesc noteOf(char const* owner, unsigned int x = 0)
{
    return NoteDesc(owner, "a text", Pair(static_cast<float>(x), 2), Pair(3, 4), Color(), Color());
}

void insertAll(GraphLayout& layout, char const* name)
{
    layout.insertNode(name, Pair(1, 2), Color(1, 0, 0, 1), true, true, true, true);
    layout.insertConnection(name, true, true);
}

char const* const sampleNames[] = {"root.a", "root.b", "root.c"};

// Everything under each of three names, and different notes, whose list is full when there are four of them.
GraphLayout sampleLayout(unsigned int numberOfNotes)
{
    GraphLayout layout;
    for (char const* name : sampleNames) insertAll(layout, name);
    for (unsigned int i = 0; i < numberOfNotes; ++i) layout.addNote(noteOf(sampleNames[i % 3], i));
    return layout;
}

// Which of the eight values of `insertAll` the name has.
std::vector<bool> valuesOf(GraphLayout const& layout, KS_String const& name)
{
    return {
        layout.getPositionByNodeName(name).value_or(Pair()) == Pair(1, 2),
        layout.getColorByNodeName(name).value_or(Color()) == Color(1, 0, 0, 1),
        layout.getCollapsedByNodeName(name).value_or(false),
        layout.getVisibleByNodeName(name).value_or(false),
        layout.getHorizontalInputsByNodeName(name).value_or(false),
        layout.getHorizontalOutputsByNodeName(name).value_or(false),
        layout.getVisibleByConnectionName(name).value_or(false),
        layout.getBezierByConnectionName(name).value_or(false),
    };
}

struct Renaming
{
    char const* name;
    std::function<void(GraphLayout&)> rename;
};

// All of them turn "root." into "another root.".
Renaming const renamings[] = {
    {"replaceTxtInNames", [](GraphLayout& layout) { layout.replaceTxtInNames("root.", "another root."); }},
    {"replacePrefixInNames",
     [](GraphLayout& layout) { layout.replacePrefixInNames("root.", "another root."); }},
    {"applyDictionary",
     [](GraphLayout& layout)
     {
         layout.applyDictionary(
             {{"root.a", "another root.a"}, {"root.b", "another root.b"}, {"root.c", "another root.c"}});
     }},
};

void expectUnderOneOfTheirNames(GraphLayout const& layout, bool failed)
{
    for (KS_String const name : sampleNames)
    {
        KS_String const newName = KS_String("another ") + name;
        std::vector<bool> notRenamed = valuesOf(layout, newName);
        notRenamed.flip();
        EXPECT_EQ(valuesOf(layout, name), notRenamed) << name.c_str();
        EXPECT_TRUE(failed || notRenamed == std::vector<bool>(8, false)) << name.c_str();
    }
    GraphLayout const original = sampleLayout(5);
    ASSERT_EQ(layout.getNotes().size(), original.getNotes().size());
    for (unsigned int i = 0; i < layout.getNotes().size(); ++i)
    {
        NoteDesc expected = original.getNotes()[i];
        NoteDesc const& note = layout.getNotes()[i];
        bool const isRenamed = note.getOwnerName() != expected.getOwnerName();
        if (isRenamed) expected.setOwnerName(KS_String("another ") + expected.getOwnerName());
        EXPECT_TRUE(note == expected);
        EXPECT_TRUE(isRenamed || failed);
    }
}

} // namespace

TEST(AllocationFailure, OfARenamingLeavesEveryValueUnderItsOldOrItsNewName)
{
    auto const make = [] { return sampleLayout(5); };
    for (Renaming const& renaming : renamings)
        for (bool persistently : {false, true})
        {
            SCOPED_TRACE(renaming.name);
            long const failures =
                failEachAllocation(persistently, make, renaming.rename, expectUnderOneOfTheirNames);
            EXPECT_GT(failures, 0);
        }
}

TEST(AllocationFailure, OfARenamingAlongAChainLosesOnlyWhatIsReplaced)
{
    auto const make = []
    {
        GraphLayout layout;
        for (unsigned int i = 0; i < 3; ++i)
            layout.insertNodePosition(sampleNames[i], Pair(static_cast<float>(i + 1), 0));
        return layout;
    };
    auto const rename = [](GraphLayout& layout) {
        layout.applyDictionary({{"root.a", "root.b"}, {"root.b", "root.c"}});
    };
    auto const check = [](GraphLayout& layout, bool failed)
    {
        std::vector<float> xs;
        for (char const* name : sampleNames)
            xs.push_back(layout.getPositionByNodeName(name).value_or(Pair()).first);
        EXPECT_THAT(xs, testing::AnyOf(testing::ElementsAre(0, 0, 1), testing::ElementsAre(0, 1, 3),
                                       testing::ElementsAre(1, 2, 3)));
        EXPECT_TRUE(failed || xs[2] == 1);
    };
    EXPECT_GT(failEachAllocation(true, make, rename, check), 0);
}

// Two nodes of one full name take memory in the index of names, so a rename may have to give it up half-way.
TEST(AllocationFailure, LeavesNoNodeToBeFoundThatWasRemovedAfterTheIndexOfNamesWasGivenUp)
{
    for (long number = 1; number < 30; ++number)
    {
        SCOPED_TRACE(number);
        GraphScene scene;
        GraphNodeBase owner(1);
        GraphNodeBase other(2);
        std::vector<std::unique_ptr<GraphNodeBase>> nodes;
        for (unsigned int id = 3; id < 11; ++id)
        {
            nodes.push_back(std::make_unique<GraphNodeBase>(id));
            nodes.back()->setName(id % 2 == 0 ? "x" : KS_String(std::to_string(id)));
            (id < 7 ? other : owner).addNode(nodes.back().get());
            scene.addNodeToGraph(nodes.back().get());
        }
        owner.setName("owner");
        other.setName("other");
        try
        {
            FailAllocation const failure(number, false);
            owner.setName("other");
        }
        catch (std::bad_alloc const&)
        {}
        for (std::unique_ptr<GraphNodeBase> const& node : nodes)
        {
            KS_String const fullName = node->getFullName();
            scene.removeNodeFromGraph(node.get());
            node->setName(fullName); // what it was called as a node of its owner
            EXPECT_NE(scene.getNodePtrByFullName(fullName), node.get());
        }
    }
}

// Each of these has a short cut that takes memory, and a way without it.
TEST(AllocationFailure, KeepsNoConnectionInTheGraphThatIsRemovedWithoutMemory)
{
    TestGraph<> graph;
    TestNode& source = graph.addFilter("source");
    TestNode& target = graph.addFilter("target");
    graph.scene.setUseAdjacencyMap(false);
    GraphConnection* const uncounted = graph.scene.connect(&source, &target, false);
    for (int i = 0; i < 200; ++i) graph.scene.connect(&source, &target, false);
    graph.scene.setUseAdjacencyMap(true);
    graph.scene.refGraphConnections();
    {
        FailAllocation const failure(1, true);
        EXPECT_TRUE(graph.scene.removeConnection(uncounted));
        EXPECT_TRUE(failure.happened());
    }
    EXPECT_EQ(graph.scene.getNumberOfConnections(), 200u);
    EXPECT_FALSE(graph.scene.getGraphConnections().contains(uncounted));
    graph.scene.setUseAdjacencyMap(false);
}

TEST(AllocationFailure, LetsANodeOfManyPinsFindThemWithoutMemory)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("node");
    for (int i = 0; i < 100; ++i) graph.addPin(node, "pin", PIN_INPUT);
    node.setNodePins(
        ArrayOfPtr<GraphNodePin, KS_NO>(node.getNodePins())); // whatever was known of them is forgotten
    GraphNodePin const stranger;
    bool hasLast = false;
    bool hasStranger = true;
    {
        FailAllocation const failure(1, true);
        hasLast = node.hasPin(node.getNodePins()[99]);
        hasStranger = node.hasPin(&stranger);
        ASSERT_TRUE(failure.happened());
    }
    EXPECT_TRUE(hasLast);
    EXPECT_FALSE(hasStranger);
}

TEST(AllocationFailure, LetsAnOwnerFindChildrenThatWereNamedWithoutMemory)
{
    for (long number = 1; number < 12; ++number)
    {
        SCOPED_TRACE(number);
        GraphNodeBase owner(1);
        std::vector<std::unique_ptr<GraphNodeBase>> children;
        for (unsigned int id = 2; id < 50; ++id)
        {
            children.push_back(std::make_unique<GraphNodeBase>(id));
            children.back()->setName("same");
            owner.addNode(children.back().get());
        }
        EXPECT_EQ(owner.getNodeByName("same", true), children[0].get());
        try
        {
            FailAllocation const failure(number, false);
            for (unsigned int i = 10; i < 20; ++i) children[i]->setName("other");
        }
        catch (std::bad_alloc const&)
        {}
        auto const other =
            std::find_if(children.begin(), children.end(),
                         [](auto const& child) { return std::string(child->getName()) == "other"; });
        GraphNodeBase const* const expected = other != children.end() ? other->get() : nullptr;
        EXPECT_EQ(owner.getNodeByName("other", true), expected);
        EXPECT_EQ(owner.getNodeByName("SAME", false), children[0].get());
    }
}

TEST(AllocationFailure, LeavesNoNumberTakenThatWasGivenUpWithoutMemory)
{
    std::string const stem(300, 'n');
    for (long number = 1; number < 30; ++number)
    {
        SCOPED_TRACE(number);
        TestGraph<> graph;
        std::vector<TestNode*> nodes;
        for (int i = 1; i < 15; ++i)
        {
            nodes.push_back(&graph.addNode(graph.scene.getFreeNodeName("root", KS_String(stem)).c_str()));
            graph.scene.createNewPin(&graph.root, 1, PIN_INPUT)
                ->setName(graph.scene.getFreePinName("root", KS_String(stem)));
        }
        GraphNodePin* const pin = graph.root.getNodePins()[3];
        KS_String const pinName = pin->getName();
        try
        {
            FailAllocation const failure(number, false);
            nodes[2]->setName("x");
            pin->setName("x");
        }
        catch (std::bad_alloc const&)
        {}
        bool const nodeIsRenamed = std::string(nodes[2]->getName()) == "x";
        bool const pinIsRenamed = std::string(pin->getName()) == "x";
        std::string const freeNode(graph.scene.getFreeNodeName("root", KS_String(stem)));
        EXPECT_EQ(freeNode, std::string(stem).append(nodeIsRenamed ? "03" : "15"));
        std::string const freePin(graph.scene.getFreePinName("root", KS_String(stem)));
        EXPECT_EQ(freePin, pinIsRenamed ? std::string(pinName) : std::string(stem).append("14"));
    }
}

// The pin is known by the full name that it had in the other node.
TEST(AllocationFailure, OfAPinThatTheNodeCannotTakeLeavesItsFormerNameUnknown)
{
    struct Subject
    {
        Subject() : node(graph.addNode("node")), other(graph.addNode("other")) { pin.setName("pin"); }
        TestGraph<> graph;
        TestNode& node;
        TestNode& other;
        GraphNodePin pin{nullptr, 1u, PIN_INPUT};
    };
    auto const make = []
    {
        auto subject = std::make_unique<Subject>();
        subject->pin.setId(70000);
        subject->pin.setParentGraphNodePtr(&subject->other);
        return subject;
    };
    auto const add = [](std::unique_ptr<Subject>& subject)
    { subject->graph.scene.addNodePin(&subject->node, &subject->pin); };
    auto const check = [](std::unique_ptr<Subject>& subject, bool failed)
    {
        GraphNodePin* const expected = failed ? nullptr : &subject->pin;
        EXPECT_EQ(subject->graph.scene.getPinPtrByFullName("root.other.pin"), expected);
        EXPECT_EQ(subject->graph.scene.getPinPtrById(70000), expected);
        subject->node.removeNodePin(&subject->pin);
    };
    EXPECT_GT(failEachAllocation(true, make, add, check), 0);
}

// The owner has never let it go.
TEST(AllocationFailure, OfAMoveFromAnOwnerThatKeepsItsChildrenListsTheChildOnce)
{
    struct Keeper : OpenNode
    {
        using OpenNode::OpenNode;
        void removeNodeFromNodesList(GraphNodeBase*) override {}
    };
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        Keeper keeper(1);
        GraphNodeBase child(2);
        GraphNodeBase target(3);
        keeper.addNode(&child);
        bool failed = false;
        try
        {
            FailAllocation const failure(number, true);
            target.addNode(&child);
        }
        catch (std::bad_alloc const&)
        {
            failed = true;
        }
        EXPECT_EQ(child.getNodeOwner(), failed ? &keeper : &target);
        EXPECT_EQ(keeper.getNodes().size(), 1u);
        EXPECT_EQ(target.getNodes().size(), failed ? 0u : 1u);
        keeper.setNodes({});
    }
}

TEST(AllocationFailure, LeavesNoNumberOfPlainNamesTakenThatWasGivenUpWithoutMemory)
{
    std::string const stem(300, 'n');
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        GraphScene scene;
        GraphNodeBase root(1);
        root.setName("root");
        scene.setRootNode(&root);
        std::vector<std::unique_ptr<GraphNodeBase>> nodes;
        for (unsigned int id = 2; id < 16; ++id)
        {
            nodes.push_back(std::make_unique<GraphNodeBase>(id));
            nodes.back()->setName(scene.getFreeNodeName("root", KS_String(stem)));
            scene.addNodeToGraph(nodes.back().get());
        }
        ASSERT_EQ(std::string(scene.getFreeNodeName("root", KS_String(stem))),
                  std::string(stem).append("15"));
        bool failed = false;
        try
        {
            FailAllocation const failure(number, false);
            nodes[2]->setName("x");
        }
        catch (std::bad_alloc const&)
        {
            failed = true;
        }
        EXPECT_EQ(std::string(scene.getFreeNodeName("root", KS_String(stem))),
                  std::string(stem).append(failed ? "15" : "03"));
    }
}

} // namespace kestrel::graph::test
