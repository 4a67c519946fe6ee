#include "FailingAllocator.h"

#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <foundation/FileStream.h>
#include <foundation/KS_String.h>
#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

// A graph with something of everything: a compound "box" under the root with two nodes in it, wired to each
// other and, through an interface pair, to the outside; and nodes outside.
struct Graph : TestGraph<>
{
    Graph()
        : box(addNode("box")),
          inner(addFilter("inner", &box)),
          second(addFilter("second", &box)),
          outside(addFilter("outside")),
          other(addFilter("other")),
          empty(addNode("empty")),
          detached(newNode<TestNode>("detached")),
          left(addFilter("left", &detached)),
          right(addFilter("right", &detached))
    {
        scene.connect(pin(inner, "out"), pin(second, "in"), false);
        scene.addCompoundInterfaceNode(PIN_OUTPUT, &box, interfaceNode, compoundPin, interfacePin);
        scene.connect(pin(second, "out"), interfacePin, false);
        fed = scene.connect(compoundPin, pin(outside, "in"), false);
    }

    static GraphNodePin* pin(GraphNodeBase& node, char const* name) { return node.getPinByName(name); }

    TestNode& box;
    TestNode& inner;
    TestNode& second;
    TestNode& outside;
    TestNode& other;
    TestNode& empty;    // no pins: its map entries would go stale when it leaves the tree
    TestNode& detached; // in no scene, but its two children are
    TestNode& left;
    TestNode& right;
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    GraphConnection* fed = nullptr;
};

// What a host can see of the graph, in one text.
std::string picture(Graph& graph)
{
    std::string text;
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    graph.scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes)
    {
        text += std::to_string(node->getId()) + " " + node->getFullName().c_str() + ":";
        for (GraphNodeBase* child : node->getNodes()) text += std::string(" ") + child->getName().c_str();
        for (GraphNodePin* pin : node->getNodePins())
        {
            text +=
                std::string(" ") + pin->getName().c_str() + "=" + std::to_string(pin->getNumConnections());
            if (graph.scene.getPinPtrByFullName(pin->getFullName()) != pin) text += "?";
        }
        text += "\n";
    }
    for (GraphConnection* connection : graph.scene.getGraphConnections())
        text += std::string(connection->getFullName().c_str()) + "\n";
    return text;
}

using Change = std::function<void(Graph&)>;

std::string pictureAfter(Change const& change)
{
    Graph graph;
    change(graph);
    return picture(graph);
}

// Fails allocation 1, 2, 3, ... of the change of a new subject until it gets through, and lets `check` look
// at the subject each time. Returns how many of them failed.
template <class Make, class ChangeOperation, class Check>
long failEachAllocation(bool persistently, Make make, ChangeOperation change, Check check)
{
    bool failed = true;
    long failures = 0;
    while (failed && failures < 10000)
    {
        long const number = failures + 1;
        SCOPED_TRACE("allocation " + std::to_string(number));
        long const living = livingAllocations();
        {
            auto subject = make();
            failed = false;
            try
            {
                FailAllocation const failure(number, persistently);
                change(subject);
            }
            catch (std::bad_alloc const&)
            {
                failed = true;
                ++failures;
            }
            check(subject, failed);
        }
        EXPECT_EQ(livingAllocations(), living);
        if (testing::Test::HasFailure()) return failures;
    }
    EXPECT_FALSE(failed);
    return failures;
}

// After each failure the graph is whole and, for a single change, as it was; the same call then gets through.
void failEachAllocationOf(Change const& change, bool isSingleChange, bool persistently)
{
    std::string const before = pictureAfter([](Graph&) {});
    std::string const after = pictureAfter(change);
    auto const check = [&](Graph& graph, bool failed)
    {
        EXPECT_SCENE_INVARIANTS(graph.scene);
        if (isSingleChange)
        {
            EXPECT_EQ(picture(graph), failed ? before : after);
            if (failed) change(graph);
            EXPECT_EQ(picture(graph), after);
        }
        EXPECT_SCENE_INVARIANTS(graph.scene);
    };
    auto const make = [] { return Graph(); };
    failEachAllocation(persistently, make, change, check);
}

struct NamedChange
{
    char const* name;
    bool isSingle;
    Change change;
};

void moveIn(Graph& graph)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&graph.outside);
    nodes.append(&graph.other);
    std::map<KS_String, KS_String> renames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputs;
    std::map<GraphNodeBase*, GraphNodeBase*> outputs;
    ArrayOfPtr<GraphNodeBase, KS_NO> newNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newPins;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> outer;
    ArrayOfPtr<GraphConnection, KS_NO> inner;
    graph.scene.moveNodesToCompound(nodes, &graph.box, renames, inputs, outputs, newNodes, newPins, removed,
                                    outer, inner);
}

void moveOut(Graph& graph)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&graph.second);
    std::map<KS_String, KS_String> renames;
    std::map<GraphNodeBase*, GraphNodeBase*> inputs;
    std::map<GraphNodeBase*, GraphNodeBase*> outputs;
    ArrayOfPtr<GraphNodeBase, KS_NO> newNodes;
    ArrayOfPtr<GraphNodePin, KS_NO> newPins;
    Array<GraphConnection, _Wa> removedOuter;
    Array<GraphConnection, _Wa> removed;
    ArrayOfPtr<GraphConnection, KS_NO> made;
    ArrayOfPtr<GraphConnection, KS_NO> inner;
    graph.scene.removeNodesFromCompoundCreatingInterfaces(&graph.box, nodes, renames, removedOuter, removed,
                                                          made, inner, inputs, outputs, newNodes, newPins);
}

NamedChange const changes[] = {
    {"connect", true,
     [](Graph& graph)
     { graph.scene.connect(Graph::pin(graph.outside, "out"), Graph::pin(graph.other, "in"), false); }},
    {"connect nodes", true,
     [](Graph& graph)
     {
         graph.scene.connect(static_cast<GraphNodeBase*>(&graph.outside),
                             static_cast<GraphNodeBase*>(&graph.other), false);
     }},
    {"removeConnection", true, [](Graph& graph) { graph.scene.removeConnection(graph.fed); }},
    {"removeAllConnections", false, [](Graph& graph) { graph.scene.removeAllConnections(); }},
    {"addNodeToGraph", true,
     [](Graph& graph)
     {
         auto node = std::make_unique<TestNode>(77);
         graph.scene.addNodeToGraph(node.get());
         static_cast<void>(node.release());
     }},
    {"removeNodeFromGraph", false,
     [](Graph& graph)
     {
         graph.scene.removeNodePins(&graph.other);
         graph.scene.removeNodeFromGraph(&graph.other);
     }},
    {"createNewPin", true, [](Graph& graph) { graph.scene.createNewPin(&graph.other, 1, PIN_INPUT); }},
    {"addNodePin", true,
     [](Graph& graph)
     {
         auto pin = std::make_unique<GraphNodePin>(nullptr, 1, PIN_INPUT);
         pin->setId(4000000);
         graph.scene.addNodePin(&graph.other, pin.get());
         static_cast<void>(pin.release());
     }},
    {"addNode", true, [](Graph& graph) { graph.outside.addNode(&graph.box); }},
    {"addNode of the first child", true, [](Graph& graph) { graph.outside.addNode(&graph.inner); }},
    {"setNodeOwner", true, [](Graph& graph) { graph.box.setNodeOwner(&graph.outside); }},
    {"setNodeOwner to null", true, [](Graph& graph) { graph.empty.setNodeOwner(nullptr); }},
    {"setNodeOwner of a node without scene", true,
     [](Graph& graph) { graph.detached.setNodeOwner(&graph.root); }},
    {"setName of a compound", true, [](Graph& graph) { graph.box.setName("a box with a longer name"); }},
    {"setName of a pin", true,
     [](Graph& graph) { Graph::pin(graph.outside, "in")->setName("another name for the pin"); }},
    {"setName of an interface pin", true,
     [](Graph& graph) { graph.interfacePin->setName("another name for the pair"); }},
    {"setId", true, [](Graph& graph) { graph.other.setId(500); }},
    {"addCompoundInterfaceNode", false,
     [](Graph& graph)
     {
         GraphNodeBase* node = nullptr;
         GraphNodePin* compoundPin = nullptr;
         GraphNodePin* interfacePin = nullptr;
         graph.scene.addCompoundInterfaceNode(PIN_INPUT, &graph.box, node, compoundPin, interfacePin);
     }},
    {"moveNodesToCompound", false, moveIn},
    {"removeNodesFromCompoundCreatingInterfaces", false, moveOut},
    {"clearing the pins of a node", false, [](Graph& graph) { graph.scene.removeNodePins(&graph.box); }},
};

} // namespace

TEST(AllocationFailure, OnceInAnyPlaceLeavesTheGraphWholeAndAllowsToTryAgain)
{
    for (NamedChange const& change : changes)
    {
        SCOPED_TRACE(change.name);
        failEachAllocationOf(change.change, change.isSingle, false);
    }
}

TEST(AllocationFailure, FromAnyPlaceOnLeavesTheGraphWholeAndAllowsToTryAgain)
{
    for (NamedChange const& change : changes)
    {
        SCOPED_TRACE(change.name);
        failEachAllocationOf(change.change, change.isSingle, true);
    }
}

TEST(AllocationFailure, LeavesTheTargetOfASceneAssignmentUnchanged)
{
    Graph source;
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

TEST(AllocationFailure, OfANewPinLeavesTheEntryOfAnotherPinOfThatIdAlone)
{
    for (long number = 1; number < 10; ++number)
    {
        SCOPED_TRACE(number);
        Graph graph;
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
using Notes = Array<NoteDesc, _Wa>;
using Pair = Tuple2<float, float>;

NoteDesc noteOf(char const* owner, unsigned int x = 0)
{
    return NoteDesc(owner, "a text", Pair(static_cast<float>(x), 2), Pair(3, 4), Color(), Color());
}

Notes notesOf(std::initializer_list<char const*> owners)
{
    Notes notes;
    for (char const* owner : owners) notes.append(noteOf(owner));
    return notes;
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

GraphLayout otherLayout()
{
    GraphLayout layout;
    insertAll(layout, "root.b");
    insertAll(layout, "root.other");
    layout.insertNodePosition("root.a", Pair(9, 9));
    return layout;
}

struct LayoutChange
{
    char const* name;
    bool isSingle;
    std::function<void(GraphLayout&)> change;
};

// Those of many steps are such that repeating one completes it.
LayoutChange const layoutChanges[] = {
    {"insertNodePosition", true, [](GraphLayout& layout) { layout.insertNodePosition("new", Pair()); }},
    {"insertNodeColor", true, [](GraphLayout& layout) { layout.insertNodeColor("new", Color()); }},
    {"insertNodeCollapsed", true, [](GraphLayout& layout) { layout.insertNodeCollapsed("new", true); }},
    {"insertNodeVisible", true, [](GraphLayout& layout) { layout.insertNodeVisible("new", true); }},
    {"insertNodeHorizontalInputs", true,
     [](GraphLayout& layout) { layout.insertNodeHorizontalInputs("new", true); }},
    {"insertNodeHorizontalOutputs", true,
     [](GraphLayout& layout) { layout.insertNodeHorizontalOutputs("new", true); }},
    {"insertConnectionVisible", true,
     [](GraphLayout& layout) { layout.insertConnectionVisible("new", true); }},
    {"insertConnectionBezier", true, [](GraphLayout& layout) { layout.insertConnectionBezier("new", true); }},
    {"addNote", true, [](GraphLayout& layout) { layout.addNote(noteOf("new")); }},
    {"addNote of parts", true,
     [](GraphLayout& layout) { layout.addNote("new", "text", Pair(), Pair(), Color(), Color()); }},
    {"addNote of the layout's own", true, [](GraphLayout& layout) { layout.addNote(layout.getNotes()[0]); }},
    {"setNotes to more", true,
     [](GraphLayout& layout) {
         layout.setNotes(notesOf({"1", "2", "3", "4", "5", "6", "7"}));
     }},
    {"setNotes to as many", true,
     [](GraphLayout& layout) {
         layout.setNotes(notesOf({"1", "2", "3", "4"}));
     }},
    {"setNotes to fewer", true, [](GraphLayout& layout) { layout.setNotes(notesOf({"1"})); }},
    {"assignment of a note", true,
     [](GraphLayout& layout)
     {
         NoteDesc const note = noteOf("new");
         layout.refNotes()[1] = note;
     }},
    {"setOwnerName", true, [](GraphLayout& layout) { layout.refNotes()[1].setOwnerName("new"); }},
    {"setText", true, [](GraphLayout& layout) { layout.refNotes()[1].setText("another text"); }},
    {"assignment of a layout", true,
     [](GraphLayout& layout)
     {
         GraphLayout const other = otherLayout();
         layout = other;
     }},
    {"insertNode", false,
     [](GraphLayout& layout) { layout.insertNode("new", Pair(), Color(), true, true, true, true); }},
    {"insertConnection", false, [](GraphLayout& layout) { layout.insertConnection("new", true, true); }},
    {"updateWithOther", false, [](GraphLayout& layout) { layout.updateWithOther(otherLayout()); }},
    {"moveNotes", false, [](GraphLayout& layout) { layout.moveNotes(sampleLayout(3).getNotes(), "new"); }},
};

void failEachAllocationOf(LayoutChange const& change, unsigned int numberOfNotes, bool persistently)
{
    GraphLayout const before = sampleLayout(numberOfNotes);
    GraphLayout after = before;
    change.change(after);
    EXPECT_FALSE(after == before);
    auto const check = [&](GraphLayout& layout, bool failed)
    {
        if (failed)
        {
            EXPECT_TRUE(layout == before || !change.isSingle);
            change.change(layout);
        }
        EXPECT_TRUE(layout == after);
    };
    auto const make = [&] { return sampleLayout(numberOfNotes); };
    EXPECT_GT(failEachAllocation(persistently, make, change.change, check), 0);
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

TEST(AllocationFailure, InAnyPlaceLeavesALayoutAsItWasAndAllowsToTryAgain)
{
    for (LayoutChange const& change : layoutChanges)
        for (unsigned int numberOfNotes : {4u, 5u})
            for (bool persistently : {false, true})
            {
                SCOPED_TRACE(change.name);
                failEachAllocationOf(change, numberOfNotes, persistently);
            }
}

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

TEST(AllocationFailure, OfACopyOfALayoutLeaksNothing)
{
    auto const make = [] { return sampleLayout(4); };
    auto const copyAndGather = [](GraphLayout& layout)
    {
        GraphLayout const copy(layout);
        Array<KS_String, _Wa> names;
        copy.getAllNodeNames(names);
        copy.getAllConnectionNames(names);
    };
    auto const check = [](GraphLayout& layout, bool) { EXPECT_TRUE(layout == sampleLayout(4)); };
    EXPECT_GT(failEachAllocation(true, make, copyAndGather, check), 0);
}

// ---- Settings

namespace
{

GraphSettings changedSettings()
{
    GraphSettings settings;
    settings.setBackgroundTopColor(Color(1, 1, 1, 1));
    settings.setGridSize(7);
    settings.setDefaultRootName("another root");
    settings.setIconsFolder("icons/of/a/host");
    settings.setMenuStyle("a menu style");
    settings.setGraphHelpCss("a help style sheet");
    settings.setGraphAutomaticLabelingBordersMaxY(7);
    return settings;
}

// The first, the last and all texts of the settings, and one between them.
std::string picture(GraphSettings const& settings)
{
    std::string text;
    for (KS_String const* part : {&settings.getDefaultRootName(), &settings.getIconsFolder(),
                                  &settings.getMenuStyle(), &settings.getGraphHelpCss()})
        text += std::string(*part) + "|";
    return text + std::to_string(settings.getBackgroundTopColor().red) + "|" +
           std::to_string(settings.getGridSize()) + "|" +
           std::to_string(settings.getGraphAutomaticLabelingBordersMaxY());
}

void failEachAllocationOfSettings(std::function<void(GraphSettings&)> const& change)
{
    std::string const before = picture(changedSettings());
    GraphSettings changed = changedSettings();
    change(changed);
    std::string const after = picture(changed);
    EXPECT_NE(before, after);
    auto const check = [&](GraphSettings& settings, bool failed)
    {
        EXPECT_EQ(picture(settings), failed ? before : after);
        if (failed) change(settings);
        EXPECT_EQ(picture(settings), after);
    };
    for (bool persistently : {false, true})
        EXPECT_GT(failEachAllocation(persistently, changedSettings, change, check), 0);
}

} // namespace

TEST(AllocationFailure, LeavesTheTargetOfASettingsAssignmentUnchanged)
{
    GraphSettings const source;
    failEachAllocationOfSettings([&](GraphSettings& settings) { settings = source; });
}

TEST(AllocationFailure, LeavesSettingsUnchangedThatCouldNotBeInitialized)
{
    failEachAllocationOfSettings([](GraphSettings& settings) { settings.initialize(); });
}

TEST(AllocationFailure, LeavesASettingUnchangedThatCouldNotBeSet)
{
    failEachAllocationOfSettings([](GraphSettings& settings)
                                 { settings.setMenuStyle("a longer menu style"); });
}

TEST(AllocationFailure, OfNewSettingsLeaksNothing)
{
    auto const makeAndCopy = [](GraphSettings& settings)
    {
        GraphSettings const fresh;
        GraphSettings const copy(settings);
        settings.toXml();
    };
    auto const check = [](GraphSettings& settings, bool)
    { EXPECT_EQ(picture(settings), picture(changedSettings())); };
    EXPECT_GT(failEachAllocation(true, changedSettings, makeAndCopy, check), 0);
}

} // namespace kestrel::graph::test
