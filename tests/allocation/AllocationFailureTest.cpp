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
    for (long number = 1; number <= 4; ++number)
    {
        KS_String replaced(before);
        KS_String appended(before);
        try
        {
            FailAllocation const failure(number, true);
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
    EXPECT_EQ(failures, 4u);
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

} // namespace kestrel::graph::test
