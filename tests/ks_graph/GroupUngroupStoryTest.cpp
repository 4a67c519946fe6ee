#include "support/MoveRecords.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

// A user of an editor groups nodes, nests the groups, takes nodes out again and dissolves groups. Whatever
// the order, what every plain node feeds must stay as it was, but for what a move out is known to drop.

namespace kestrel::graph::test
{

namespace
{

using ::testing::IsEmpty;

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
using NodeList = std::vector<GraphNodeBase*>;

/// A way from one plain pin to another, through any number of pairs of interface and compound pins.
struct Way
{
    GraphNodePin* from;
    GraphNodePin* to;
    std::vector<GraphConnection*> steps;
};

/// The two ends of every way, a pair of pins as often as there are ways between them.
using Reach = std::multiset<std::pair<GraphNodePin*, GraphNodePin*>>;

bool isPlain(GraphNodePin* pin)
{
    return !pin->isCompoundPin() && !pin->isInterfacePin();
}

/// Where a connection into the pin goes on: the other pin of the pair.
GraphNodePin* otherOfPair(GraphNodePin* pin)
{
    return pin->isInterfacePin() ? pin->getParentGraphNodePinPtr() : pin->getChildGraphNodePinPtr();
}

NodeList withoutInterfaces(Nodes const& nodes)
{
    NodeList list;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(list),
                 [](GraphNodeBase* node) { return !node->isInterface(); });
    return list;
}

class Story
{
public:
    Story() { graph.root.setCompound(true); }

    // ---- building

    TestNode& addFilter(KS_String const& name)
    {
        TestNode& node = graph.addFilter(name);
        plain.push_back(&node);
        return node;
    }

    void wire(GraphNodeBase& source, GraphNodeBase& target, bool implicit = false)
    {
        GraphConnection* const connection =
            graph.scene.connect(source.getPinByName("out"), target.getPinByName("in"), implicit);
        ASSERT_NE(connection, nullptr);
        if (implicit) implicitOnes.push_back(connection);
    }

    // ---- what an editor does

    /// A new compound of the owner with the nodes in it, all of them children of the owner.
    GraphNodeBase* group(GraphNodeBase* owner, NodeList const& nodes)
    {
        GraphNodeBase* const compound = graph.scene.createNewCompound();
        compound->setName(graph.scene.getFreeNodeCompoundName(owner->getFullName()));
        graph.scene.addNodeToGraph(compound);
        compound->setNodeOwner(owner);
        moveIn(compound, nodes);
        return compound;
    }

    void moveIn(GraphNodeBase* compound, NodeList const& nodes)
    {
        Reach const before = reach();
        unsigned int const crossing = countCrossing(nodes);
        NamesBefore const names = namesOf(nodes);
        MoveRecords records;
        EXPECT_TRUE(graph.scene.moveNodesToCompound(listOf(nodes), compound, records.pinRenames,
                                                    records.inputInterfaces, records.outputInterfaces,
                                                    records.newInterfaceNodes, records.newCompoundPins,
                                                    records.removed, records.outer, records.inner));
        expectMoved(nodes, compound, names, records);
        EXPECT_EQ(records.removed.size(), crossing);
        EXPECT_EQ(records.newCompoundPins.size(), crossing);
        expectAllMade(records.outer, crossing);
        expectAllMade(records.inner, crossing);
        expectInterfaces(compound, records);
        expectReach(before);
        expectConsistent();
    }

    void moveOutCreatingInterfaces(GraphNodeBase* compound, NodeList const& nodes)
    {
        Reach const expected = reachWithoutLoops(compound, nodes);
        NamesBefore const names = namesOf(nodes);
        Nodes list = listOf(nodes);
        MoveRecords records;
        EXPECT_TRUE(graph.scene.removeNodesFromCompoundCreatingInterfaces(
            compound, list, records.pinRenames, records.removedOuter, records.removed, records.outer,
            records.inner, records.inputInterfaces, records.outputInterfaces, records.newInterfaceNodes,
            records.newCompoundPins));
        expectMoved(nodes, compound->getNodeOwner(), names, records);
        expectAllMade(records.inner, records.newCompoundPins.size());
        expectAllMade(records.outer, records.outer.size());
        expectInterfaces(compound, records);
        expectReach(expected);
        expectConsistent();
    }

    void moveOutDropping(GraphNodeBase* compound, NodeList const& nodes)
    {
        Reach const expected = reachWithoutStepsBetween(compound, nodes);
        NamesBefore const names = namesOf(nodes);
        unsigned int const registered = graph.scene.getNumberOfNodes();
        Nodes list = listOf(nodes);
        MoveRecords records;
        EXPECT_TRUE(graph.scene.removeNodesFromCompound(compound, list, records.pinRenames,
                                                        records.removedOuter, records.removed, records.outer,
                                                        records.spare));
        expectMoved(nodes, compound->getNodeOwner(), names, records);
        expectAllMade(records.outer, records.outer.size());
        EXPECT_TRUE(records.spare.isEmpty());
        EXPECT_EQ(graph.scene.getNumberOfNodes(), registered);
        expectReach(expected);
        expectConsistent();
    }

    /// Takes everything out of the compound, by its own child list, and deletes it.
    void dissolve(GraphNodeBase* compound)
    {
        NodeList const nodes = withoutInterfaces(compound->getNodes());
        Reach const expected = reachWithoutLoops(compound, nodes);
        NamesBefore const names = namesOf(nodes);
        GraphNodeBase* const owner = compound->getNodeOwner();
        MoveRecords records;
        EXPECT_TRUE(graph.scene.removeNodesFromCompound(compound, compound->refNodes(), records.pinRenames,
                                                        records.removedOuter, records.removed, records.outer,
                                                        records.spare));
        expectMoved(nodes, owner, names, records);
        EXPECT_THAT(withoutInterfaces(compound->getNodes()), IsEmpty());
        expectReach(expected);
        expectConsistent();

        NodeList const leftOver(compound->getNodes().begin(), compound->getNodes().end());
        graph.scene.removeNodesInCompoundFromGraph(compound);
        EXPECT_TRUE(compound->getNodePins().isEmpty());
        EXPECT_TRUE(graph.scene.removeNodeFromGraph(compound));
        for (GraphNodeBase* node : leftOver) delete node;
        delete compound;
        expectReach(expected);
        expectConsistent();
    }

    // ---- looking

    NodeList compounds()
    {
        Nodes all;
        graph.scene.getAllGraphCompounds(all);
        return NodeList(all.begin(), all.end());
    }

    Reach reach()
    {
        return reachOf([](Way const&) { return true; });
    }

    /// Every pin is found by its full name, the graph agrees with itself, and implicit connections stand as
    /// they were made.
    void expectConsistent()
    {
        EXPECT_SCENE_INVARIANTS(graph.scene);
        ArrayOfPtr<GraphNodePin, KS_NO> pins;
        graph.root.getAllChildNodePins(pins, true);
        for (GraphNodePin* pin : pins) EXPECT_EQ(graph.scene.getPinPtrByFullName(pin->getFullName()), pin);
        Connections const& connections = graph.scene.getGraphConnections();
        for (GraphConnection* connection : implicitOnes)
        {
            EXPECT_TRUE(connections.contains(connection));
            EXPECT_TRUE(connection->isImplicit());
        }
        auto const implicitCount = std::count_if(connections.begin(), connections.end(),
                                                 [](GraphConnection* one) { return one->isImplicit(); });
        EXPECT_EQ(static_cast<std::size_t>(implicitCount), implicitOnes.size());
    }

    /// Every explicit connection joins two plain pins, and there is one for every way.
    void expectFlat()
    {
        EXPECT_EQ(compounds(), NodeList{&graph.root});
        EXPECT_EQ(graph.root.getNodes().size(), plain.size());
        EXPECT_EQ(graph.scene.getNumberOfNodes(), plain.size() + 1);
        EXPECT_EQ(graph.scene.getNumberOfConnections(), reach().size() + implicitOnes.size());
        EXPECT_TRUE(graph.root.getNodePins().isEmpty());
    }

    TestGraph<> graph;
    NodeList plain;

private:
    using NamesBefore = std::vector<std::pair<GraphNodePin*, std::string>>;

    static Nodes listOf(NodeList const& nodes)
    {
        Nodes list;
        for (GraphNodeBase* node : nodes) list.append(node);
        return list;
    }

    static bool contains(NodeList const& nodes, GraphNodeBase* node)
    {
        return std::find(nodes.begin(), nodes.end(), node) != nodes.end();
    }

    static NamesBefore namesOf(NodeList const& nodes)
    {
        NamesBefore names;
        for (GraphNodeBase* node : nodes)
            for (GraphNodePin* pin : node->getNodePins()) names.emplace_back(pin, pin->getFullName());
        return names;
    }

    /// The explicit connections that join one of the nodes with one that is not listed.
    unsigned int countCrossing(NodeList const& nodes) const
    {
        unsigned int count = 0;
        for (GraphConnection* connection : graph.scene.getGraphConnections())
        {
            if (connection->isImplicit()) continue;
            if (contains(nodes, connection->getSourceNode()) != contains(nodes, connection->getTargetNode()))
                ++count;
        }
        return count;
    }

    /// The nodes are children of the owner, and the renames are exactly those of their pins.
    static void expectMoved(NodeList const& nodes, GraphNodeBase* owner, NamesBefore const& names,
                            MoveRecords const& records)
    {
        for (GraphNodeBase* node : nodes) EXPECT_EQ(node->getNodeOwner(), owner);
        std::map<std::string, std::string> expected;
        for (auto const& [pin, before] : names) expected.emplace(pin->getFullName(), before);
        std::map<std::string, std::string> recorded;
        for (auto const& [after, before] : records.pinRenames) recorded.emplace(after, before);
        EXPECT_EQ(recorded, expected);
    }

    static void expectAllMade(Connections const& made, unsigned int count)
    {
        EXPECT_EQ(made.size(), count);
        EXPECT_FALSE(made.contains(nullptr));
    }

    /// New interface nodes and pairs belong to the compound; every new node is on record once.
    static void expectInterfaces(GraphNodeBase* compound, MoveRecords const& records)
    {
        for (GraphNodeBase* node : records.newInterfaceNodes) EXPECT_EQ(node->getNodeOwner(), compound);
        for (GraphNodePin* pin : records.newCompoundPins)
        {
            EXPECT_EQ(pin->getParentGraphNodePtr(), compound);
            ASSERT_NE(pin->getChildGraphNodePinPtr(), nullptr);
            EXPECT_TRUE(records.newInterfaceNodes.contains(pin->getChildInterfaceNodePtr()));
        }
        EXPECT_EQ(records.inputInterfaces.size() + records.outputInterfaces.size(),
                  records.newInterfaceNodes.size());
    }

    std::vector<Way> ways()
    {
        std::vector<Way> found;
        for (GraphNodeBase* node : plain)
            for (GraphNodePin* pin : node->getNodePins()) follow(pin, Way{pin, nullptr, {}}, found);
        return found;
    }

    void follow(GraphNodePin* pin, Way const& soFar, std::vector<Way>& found)
    {
        ASSERT_LT(soFar.steps.size(), 200u) << "pairs lead round in a circle";
        for (GraphConnection* connection : pin->getOutputConnections())
        {
            if (connection->isImplicit()) continue;
            Way way(soFar);
            way.to = connection->getTargetPin();
            way.steps.push_back(connection);
            if (isPlain(way.to))
                found.push_back(way);
            else if (GraphNodePin* const next = otherOfPair(way.to))
                follow(next, way, found);
        }
    }

    /// Says which ways are missing and which are new.
    void expectReach(Reach const& expected)
    {
        Reach const found = reach();
        EXPECT_THAT(namesOfDifference(expected, found), IsEmpty()) << "missing";
        EXPECT_THAT(namesOfDifference(found, expected), IsEmpty()) << "new";
    }

    static std::vector<std::string> namesOfDifference(Reach const& first, Reach const& second)
    {
        std::vector<std::pair<GraphNodePin*, GraphNodePin*>> difference;
        std::set_difference(first.begin(), first.end(), second.begin(), second.end(),
                            std::back_inserter(difference));
        std::vector<std::string> names;
        for (auto const& [from, to] : difference)
            names.push_back(std::string(from->getFullName()) + " > " + to->getFullName().c_str());
        return names;
    }

    /// What is left when nodes leave the compound: the ends of a connection from the compound to itself are
    /// followed one at a time, so a way through it is lost when the nodes before and behind it both leave.
    Reach reachWithoutLoops(GraphNodeBase* compound, NodeList const& nodes)
    {
        return reachOf([&](Way const& way) { return !isLostInALoop(way, compound, nodes); });
    }

    /// The same when, besides, no connection may join one of the nodes with a plain one or a compound that
    /// stays.
    Reach reachWithoutStepsBetween(GraphNodeBase* compound, NodeList const& nodes)
    {
        auto const isDropped = [&](GraphConnection* step)
        {
            GraphNodeBase* const source = step->getSourceNode();
            GraphNodeBase* const target = step->getTargetNode();
            return source->getNodeOwner() == compound && target->getNodeOwner() == compound &&
                   !source->isInterface() && !target->isInterface() &&
                   contains(nodes, source) != contains(nodes, target);
        };
        return reachOf(
            [&](Way const& way)
            {
                return !isLostInALoop(way, compound, nodes) &&
                       std::none_of(way.steps.begin(), way.steps.end(), isDropped);
            });
    }

    static bool isLostInALoop(Way const& way, GraphNodeBase* compound, NodeList const& nodes)
    {
        for (std::size_t i = 1; i + 1 < way.steps.size(); ++i)
            if (way.steps[i]->getSourceNode() == compound && way.steps[i]->getTargetNode() == compound &&
                contains(nodes, way.steps[i - 1]->getSourceNode()) &&
                contains(nodes, way.steps[i + 1]->getTargetNode()))
                return true;
        return false;
    }

    template <class Keep>
    Reach reachOf(Keep keep)
    {
        Reach result;
        for (Way const& way : ways())
            if (keep(way)) result.emplace(way.from, way.to);
        return result;
    }

    std::vector<GraphConnection*> implicitOnes;
};

/// Sixty filters in six stages of ten. Each feeds the two next to it in the next stage and one far ahead.
void buildStages(Story& story)
{
    for (int i = 0; i < 60; ++i) story.addFilter(KS_String("n" + std::to_string(i)));
    for (std::size_t i = 0; i + 10 < 60; ++i)
    {
        std::size_t const stage = i / 10 * 10;
        story.wire(*story.plain[i], *story.plain[i + 10]);
        story.wire(*story.plain[i], *story.plain[stage + 10 + (i + 1) % 10]);
        if (i % 3 == 0) story.wire(*story.plain[i], *story.plain[50 + i % 10]);
    }
    story.wire(*story.plain[59], *story.plain[0]);
    story.wire(*story.plain[7], *story.plain[7]);
    story.wire(*story.plain[3], *story.plain[44], true);
}

NodeList stageOf(Story const& story, std::size_t stage)
{
    auto const first = story.plain.begin() + static_cast<std::ptrdiff_t>(stage * 10);
    return NodeList(first, first + 10);
}

/// Picks with a fixed seed. Only raw numbers of the engine, whose sequence is the same everywhere.
class Dice
{
public:
    explicit Dice(unsigned int seed) : engine_(seed) {}

    unsigned int below(std::size_t count) { return static_cast<unsigned int>(engine_() % count); }

    template <class T>
    T pick(std::vector<T> const& from)
    {
        return from[below(from.size())];
    }

    /// One to `most` different ones, in any order.
    NodeList some(NodeList from, std::size_t most)
    {
        std::size_t const count = 1 + below(std::min(most, from.size()));
        for (std::size_t i = 0; i < count; ++i) std::swap(from[i], from[i + below(from.size() - i)]);
        from.resize(count);
        return from;
    }

private:
    std::mt19937 engine_;
};

class RandomUser
{
public:
    RandomUser(Story& story, unsigned int seed) : story_(story), dice_(seed) {}

    void act()
    {
        switch (dice_.below(12))
        {
        case 0:
        case 1:
        case 2:
            group();
            break;
        case 3:
        case 4:
            addToGroup();
            break;
        case 5:
        case 6:
            takeOut(true);
            break;
        case 7:
            takeOut(false);
            break;
        case 8:
        case 9:
            dissolve();
            break;
        case 10:
            rename();
            break;
        default:
            wire();
            break;
        }
    }

private:
    GraphNodeBase* anyCompound() { return dice_.pick(story_.compounds()); }

    /// A compound below the root, or null.
    GraphNodeBase* anyGroup()
    {
        NodeList all = story_.compounds();
        all.erase(all.begin());
        return all.empty() ? nullptr : dice_.pick(all);
    }

    void group()
    {
        if (story_.compounds().size() > 12) return dissolve();
        GraphNodeBase* const owner = anyCompound();
        NodeList const nodes = withoutInterfaces(owner->getNodes());
        if (!nodes.empty()) story_.group(owner, dice_.some(nodes, 6));
    }

    void addToGroup()
    {
        GraphNodeBase* const compound = anyGroup();
        if (compound == nullptr) return;
        NodeList nodes = withoutInterfaces(compound->getNodeOwner()->getNodes());
        nodes.erase(std::find(nodes.begin(), nodes.end(), compound));
        if (!nodes.empty()) story_.moveIn(compound, dice_.some(nodes, 4));
    }

    void takeOut(bool creatingInterfaces)
    {
        GraphNodeBase* const compound = anyGroup();
        if (compound == nullptr) return;
        NodeList const nodes = withoutInterfaces(compound->getNodes());
        if (nodes.empty()) return;
        if (creatingInterfaces)
            story_.moveOutCreatingInterfaces(compound, dice_.some(nodes, 4));
        else
            story_.moveOutDropping(compound, dice_.some(nodes, 2));
    }

    void dissolve()
    {
        if (GraphNodeBase* const compound = anyGroup()) story_.dissolve(compound);
    }

    /// Few names for many nodes, so that moves meet names that are taken.
    void rename()
    {
        GraphNodeBase* const node = dice_.pick(story_.plain);
        char const* const stem = dice_.pick(std::vector<char const*>{"n", "N", "add", "mul09"});
        node->setName(node->getNodeOwner()->getFreeNodeNameLikeThis(stem, nullptr));
        story_.expectConsistent();
    }

    /// A connection between two plain nodes of one level.
    void wire()
    {
        GraphNodeBase* const source = dice_.pick(story_.plain);
        NodeList nodes = withoutInterfaces(source->getNodeOwner()->getNodes());
        nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                                   [](GraphNodeBase* node) { return node->isCompound(); }),
                    nodes.end());
        story_.wire(*source, *dice_.pick(nodes));
    }

    Story& story_;
    Dice dice_;
};

void dissolveAll(Story& story)
{
    for (NodeList all = story.compounds(); all.size() > 1; all = story.compounds())
        story.dissolve(all.back());
}

} // namespace

TEST(GroupUngroupStory, StagesAreGroupedNestedAndDissolved)
{
    Story story;
    buildStages(story);
    Reach const atStart = story.reach();
    unsigned int const connectionsAtStart = story.graph.scene.getNumberOfConnections();

    NodeList stages;
    for (std::size_t stage = 0; stage < 6; ++stage)
        stages.push_back(story.group(&story.graph.root, stageOf(story, stage)));
    EXPECT_EQ(story.graph.root.getNodes().size(), 6u);
    GraphNodeBase* const front = story.group(&story.graph.root, {stages[0], stages[1], stages[2]});
    GraphNodeBase* const whole = story.group(&story.graph.root, {front, stages[3]});
    EXPECT_EQ(story.graph.root.getNodes().size(), 3u);
    EXPECT_EQ(story.compounds().size(), 9u);
    EXPECT_STREQ(story.plain[0]->getFullName().c_str(), "root.compound01.compound07.compound01.n0");

    story.dissolve(whole);
    story.dissolve(stages[1]);
    story.dissolve(front);
    dissolveAll(story);
    story.expectFlat();
    EXPECT_EQ(story.reach(), atStart);
    EXPECT_EQ(story.graph.scene.getNumberOfConnections(), connectionsAtStart);
}

TEST(GroupUngroupStory, NodesClimbOutOneByOneThroughNewInterfaces)
{
    Story story;
    buildStages(story);
    GraphNodeBase* const outer =
        story.group(&story.graph.root, NodeList(story.plain.begin() + 5, story.plain.begin() + 35));
    GraphNodeBase* const inner =
        story.group(outer, NodeList(story.plain.begin() + 12, story.plain.begin() + 24));
    for (std::size_t i = 12; i < 24; ++i) story.moveOutCreatingInterfaces(inner, {story.plain[i]});
    for (std::size_t i = 34; i >= 5; --i) story.moveOutCreatingInterfaces(outer, {story.plain[i]});
    EXPECT_THAT(withoutInterfaces(inner->getNodes()), IsEmpty());
    dissolveAll(story);
    story.expectFlat();
}

TEST(GroupUngroupStory, RegroupingTheSameNodesEndsWhereItBegan)
{
    Story story;
    buildStages(story);
    Reach const atStart = story.reach();
    GraphNodeBase* const keep = story.group(&story.graph.root, stageOf(story, 2));
    for (int round = 0; round < 5; ++round)
    {
        story.moveOutCreatingInterfaces(keep, {story.plain[20], story.plain[25]});
        story.moveIn(keep, {story.plain[25], story.plain[20], story.plain[30]});
        story.moveOutCreatingInterfaces(keep, {story.plain[30]});
    }
    EXPECT_EQ(withoutInterfaces(keep->getNodes()).size(), 10u);
    dissolveAll(story);
    story.expectFlat();
    EXPECT_EQ(story.reach(), atStart);
}

TEST(GroupUngroupStory, TakingNodesOutWithoutInterfacesDropsOnlyWhatCrosses)
{
    Story story;
    TestNode& a = story.addFilter("a");
    TestNode& b = story.addFilter("b");
    TestNode& c = story.addFilter("c");
    TestNode& d = story.addFilter("d");
    story.wire(a, b);
    story.wire(b, c);
    story.wire(c, d);
    GraphNodeBase* const compound = story.group(&story.graph.root, {&b, &c});
    story.moveOutDropping(compound, {&b});
    EXPECT_EQ(story.reach(), (Reach{{a.getPinByName("out"), b.getPinByName("in")},
                                    {c.getPinByName("out"), d.getPinByName("in")}}));
    dissolveAll(story);
    story.expectFlat();
}

class GroupUngroupRandomStory : public ::testing::TestWithParam<unsigned int>
{
};

INSTANTIATE_TEST_SUITE_P(Seeds, GroupUngroupRandomStory, ::testing::Values(1u, 2u, 20u, 4711u));

TEST_P(GroupUngroupRandomStory, WhateverTheUserDoesTheGraphStaysWhole)
{
    Story story;
    buildStages(story);
    RandomUser user(story, GetParam());
    for (int step = 0; step < 200 && !HasFailure(); ++step)
    {
        SCOPED_TRACE(step);
        user.act();
    }
    EXPECT_FALSE(story.reach().empty());
    dissolveAll(story);
    story.expectFlat();
}

} // namespace kestrel::graph::test
