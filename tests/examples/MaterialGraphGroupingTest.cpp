#include "MaterialGraphSupport.h"
#include "support/SceneInvariants.h"

#include <material_graph/Grouping.h>
#include <material_graph/Summary.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char const* chain = R"(<add name="a" type="float"/>
    <nodegraph name="g">
      <input name="x" type="float" nodename="a"/>
      <add name="first" type="float"><input name="in1" type="float" interfacename="x"/></add>
      <add name="second" type="float"><input name="in1" type="float" nodename="first"/></add>
      <output name="o" type="float" nodename="second"/>
      <output name="through" type="float" interfacename="x"/>
    </nodegraph>
    <add name="b" type="float"><input name="in1" type="float" nodegraph="g" output="o"/>
      <input name="in2" type="float" nodegraph="g" output="through"/></add>)";

std::vector<MaterialNode*> nodesOf(std::vector<MovedNode> const& moved)
{
    std::vector<MaterialNode*> nodes;
    for (MovedNode const& node : moved) nodes.push_back(node.node);
    return nodes;
}

/// "<before> -> <now>" of each.
std::vector<std::string> namesOf(std::vector<MovedNode> const& moved)
{
    std::vector<std::string> names;
    for (MovedNode const& node : moved)
        names.push_back(std::string(node.nameBefore) + " -> " + std::string(node.node->getFullName()));
    return names;
}

// Where a pin gets its value from in the end: the output pin behind all compounds.
GraphNodePin* behindCompounds(GraphNodePin* pin)
{
    while (true)
    {
        GraphNodePin* const paired =
            pin->isInterfacePin() ? pin->getParentGraphNodePinPtr() : pin->getChildGraphNodePinPtr();
        if (paired == nullptr || paired->getInputConnections().isEmpty()) return pin;
        pin = paired->getInputConnections()[0]->getSourcePin();
    }
}

// Every wired input of a plain node, with the plain node's output that feeds it through whatever compounds
// there are: by the pins themselves, which moves do not replace. A value that comes from nowhere, through the
// input of a graph that nothing feeds, is gone when the graph is.
std::set<std::pair<GraphNodePin*, GraphNodePin*>> wiringOf(MaterialScene& scene)
{
    std::set<std::pair<GraphNodePin*, GraphNodePin*>> wiring;
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes)
    {
        if (node->isInterface() || node->isCompound()) continue;
        for (GraphNodePin* pin : node->getNodePins())
            for (GraphConnection* connection : pin->getInputConnections())
            {
                GraphNodePin* const source = behindCompounds(connection->getSourcePin());
                if (!source->isInterfacePin()) wiring.emplace(source, pin);
            }
    }
    return wiring;
}

TEST(MaterialGrouping, UngroupWiresTheOutsideStraightToTheInside)
{
    Document document(chain);
    GroupingChanges changes;
    ungroup(document.scene, document.node("g"), changes);
    EXPECT_THAT(namesOf(changes.moved),
                ElementsAre("root.g.first -> root.first", "root.g.second -> root.second"));
    EXPECT_THAT(connectionsOf(document.scene),
                UnorderedElementsAre("root.a.out > root.first.in1", "root.first.out > root.second.in1",
                                     "root.second.out > root.b.in1", "root.a.out > root.b.in2"));
    EXPECT_EQ(document.scene.findNode("g"), nullptr);
    EXPECT_EQ(document.scene.getNumberOfNodes(), 5u);
    EXPECT_EQ(document.scene.getPinPtrByFullName("root.g.x"), nullptr);
    EXPECT_EQ(changes.refused, 0u);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, UngroupTellsWhatItChanged)
{
    Document document(chain);
    GroupingChanges changes;
    ungroup(document.scene, document.node("g"), changes);
    EXPECT_THAT(changes.created, UnorderedElementsAre("connection root.a.out > root.first.in1",
                                                      "connection root.second.out > root.b.in1",
                                                      "connection root.a.out > root.b.in2"));
    EXPECT_THAT(
        changes.removed,
        UnorderedElementsAre(
            "connection root.a.out > root.g.x", "connection root.g.input interface01.x > root.g.first.in1",
            "connection root.g.input interface01.x > root.g.output interface01.through",
            "connection root.g.second.out > root.g.output interface01.o", "connection root.g.o > root.b.in1",
            "connection root.g.through > root.b.in2", "compound root.g",
            "interface node root.g.input interface01", "interface node root.g.output interface01",
            "pin root.g.x", "pin root.g.o", "pin root.g.through"));
    EXPECT_THAT(changes.renamed, UnorderedElementsAre("root.g.first.in1 -> root.first.in1",
                                                      "root.g.first.out -> root.first.out",
                                                      "root.g.second.in1 -> root.second.in1",
                                                      "root.g.second.out -> root.second.out"));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, GroupLeadsConnectionsThroughTypedPairs)
{
    Document document(R"(<add name="a" type="color3"/>
        <add name="b" type="color3"><input name="in1" type="color3" nodename="a"/></add>
        <add name="c" type="color3"><input name="in1" type="color3" nodename="b"/></add>)");
    GroupingChanges changes;
    MaterialNode& compound = group(document.scene, "g", {&document.node("b")}, changes);
    EXPECT_EQ(compound.getFullName(), "root.g");
    EXPECT_EQ(document.pin("g.in1").getType(), "color3");
    EXPECT_EQ(document.pin("g.out").getType(), "color3");
    EXPECT_THAT(changes.created,
                UnorderedElementsAre("compound root.g", "interface node root.g.input interface01",
                                     "interface node root.g.output interface01", "pin root.g.in1",
                                     "pin root.g.out", "connection root.a.out > root.g.in1",
                                     "connection root.g.out > root.c.in1",
                                     "connection root.g.input interface01.in1 > root.g.b.in1",
                                     "connection root.g.b.out > root.g.output interface01.out"));
    EXPECT_THAT(changes.removed, UnorderedElementsAre("connection root.a.out > root.b.in1",
                                                      "connection root.b.out > root.c.in1"));
    EXPECT_THAT(changes.renamed,
                UnorderedElementsAre("root.b.in1 -> root.g.b.in1", "root.b.out -> root.g.b.out"));
    EXPECT_EQ(changes.refused, 0u);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, GroupKeepsAConnectionThatConverts)
{
    Document document(R"(<image name="i" type="color3"/>
        <add name="a" type="float"><input name="in1" type="float" nodename="i" channels="r"/></add>)");
    GroupingChanges changes;
    group(document.scene, "g", {&document.node("a")}, changes);
    EXPECT_EQ(changes.refused, 0u);
    EXPECT_THAT(
        connectionsOf(document.scene),
        UnorderedElementsAre("root.i.out > root.g.in1", "root.g.input interface01.in1 > root.g.a.in1"));
    EXPECT_EQ(document.pin("g.in1").getType(), "color3");
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, MovedNodeWhoseNameIsTakenGetsAnother)
{
    Document document(
        R"(<add name="a" type="float"/><nodegraph name="g"><add name="a" type="float"/></nodegraph>)");
    GroupingChanges changes;
    ungroup(document.scene, document.node("g"), changes);
    EXPECT_THAT(namesOf(changes.moved), ElementsAre("root.g.a -> root.a1"));
    EXPECT_THAT(changes.renamed, ElementsAre("root.g.a.out -> root.a1.out"));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, EmptyCompoundIsJustRemoved)
{
    Document document(R"(<nodegraph name="g"><output name="o" type="float"/></nodegraph>)");
    GroupingChanges changes;
    ungroup(document.scene, document.node("g"), changes);
    EXPECT_THAT(changes.moved, IsEmpty());
    EXPECT_EQ(document.scene.getNumberOfNodes(), 1u);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialGrouping, UngroupOfANestedCompoundMovesItsNodesOneLevelUp)
{
    Document document(R"(<nodegraph name="outer">
        <input name="x" type="float"/>
        <nodegraph name="inner"><input name="y" type="float" interfacename="x"/>
          <add name="n" type="float"><input name="in1" type="float" interfacename="y"/></add>
          <output name="o" type="float" nodename="n"/></nodegraph>
        <output name="p" type="float" nodegraph="inner" output="o"/></nodegraph>)");
    GroupingChanges changes;
    ungroup(document.scene, document.node("outer.inner"), changes);
    EXPECT_THAT(connectionsOf(document.scene),
                UnorderedElementsAre("root.outer.input interface01.x > root.outer.n.in1",
                                     "root.outer.n.out > root.outer.output interface01.p"));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

class EveryExample : public ::testing::TestWithParam<char const*>
{
};

TEST_P(EveryExample, KeepsItsWiringWhenEveryCompoundIsUngroupedAndGroupedAgain)
{
    Progress quiet(nullptr);
    MaterialScene scene;
    ASSERT_EQ(DocumentReader(scene, quiet).readFile(exampleFile(GetParam())), "");
    auto const wiring = wiringOf(scene);
    ASSERT_FALSE(wiring.empty());
    Summary const before = summarize(scene);
    ArrayOfPtr<GraphNodeBase, KS_NO> compounds;
    scene.getAllGraphCompounds(compounds);
    ASSERT_GT(compounds.size(), 1u);
    for (GraphNodeBase* node : compounds)
    {
        if (node == &scene.root()) continue;
        SCOPED_TRACE(std::string(node->getFullName()));
        KS_String const name = node->getName();
        GroupingChanges changes;
        ungroup(scene, static_cast<MaterialNode&>(*node), changes);
        std::vector<MaterialNode*> const moved = nodesOf(changes.moved);
        EXPECT_SCENE_INVARIANTS(scene);
        EXPECT_EQ(wiringOf(scene), wiring);
        group(scene, name, moved, changes);
        EXPECT_SCENE_INVARIANTS(scene);
        EXPECT_EQ(wiringOf(scene), wiring);
        EXPECT_EQ(changes.refused, 0u);
    }
    Summary const after = summarize(scene);
    EXPECT_EQ(after.nodes, before.nodes);
    EXPECT_EQ(after.compounds, before.compounds);
    EXPECT_EQ(after.depth, before.depth);
}

INSTANTIATE_TEST_SUITE_P(MaterialGrouping, EveryExample,
                         ::testing::Values("brick_wall.mtlx", "weathered_bronze.mtlx",
                                           "broken_references.mtlx"),
                         [](auto const& example)
                         {
                             std::string const name = example.param;
                             return name.substr(0, name.find('.'));
                         });

} // namespace

} // namespace material_graph::test
