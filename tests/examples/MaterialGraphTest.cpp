#include "MaterialGraphSupport.h"
#include "support/SceneInvariants.h"

#include <material_graph/Summary.h>
#include <material_graph/TypeColors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::ArrayOfPtr;
using kestrel::Color4;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::Message;
using kestrel::graph::PIN_INPUT;
using kestrel::graph::PIN_OUTPUT;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

constexpr unsigned int unlimited = 0xFFFFFFFFu;

std::vector<std::string> pinsOf(GraphNodeBase& node)
{
    std::vector<std::string> pins;
    for (GraphNodePin* pin : node.getNodePins())
        pins.push_back(std::string(pin->isInputPin() ? "in " : "out ") + std::string(pin->getName()) + " " +
                       std::string(pin->getInfo()));
    return pins;
}

TEST(MaterialDocument, ElementBecomesNodeWithNameTypeAndDescription)
{
    Document document(R"(<image name="wood" type="color3" doc="Oak &amp; ash."/>)");
    MaterialNode& wood = document.node("wood");
    EXPECT_EQ(wood.getFullName(), "root.wood");
    EXPECT_EQ(wood.getType(), "image");
    EXPECT_EQ(wood.getCategory(), "image");
    EXPECT_EQ(wood.getDescription(), "Oak & ash.");
    EXPECT_FALSE(wood.isCompound());
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, InputsTakeOneConnectionAndOutputsAnyNumber)
{
    Document document(
        R"(<mix name="m" type="color3"><input name="fg" type="color3"/><input name="mix" type="float"/></mix>
        <sep name="s" type="multioutput"><output name="r" type="float"/><output name="c" type="color3"/></sep>)");
    EXPECT_THAT(pinsOf(document.node("m")), ElementsAre("in fg color3", "in mix float", "out out color3"));
    EXPECT_THAT(pinsOf(document.node("s")), ElementsAre("out r float", "out c color3"));
    EXPECT_EQ(document.pin("m.fg").getMaxNumConnections(), 1u);
    EXPECT_EQ(document.pin("m.out").getMaxNumConnections(), unlimited);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, PinsHaveIdsOfTheirOwnUnderWhichTheSceneFindsThem)
{
    Document document(
        R"(<add name="a" type="float"><input name="in1" type="float"/></add><add name="b" type="float"/>)");
    std::set<unsigned int> ids;
    for (char const* name : {"a.in1", "a.out", "b.out"})
    {
        MaterialPin& pin = document.pin(name);
        EXPECT_EQ(document.scene.getPinPtrById(pin.getId()), &pin);
        ids.insert(pin.getId());
    }
    EXPECT_EQ(ids.size(), 3u);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, DefinitionsAndLooksAreNoNodes)
{
    Document document(R"(<nodedef name="ND_a" node="a"><output name="out" type="float"/></nodedef>
        <typedef name="t"/><implementation name="i"/><look name="l"/><geominfo name="g"/><propertyset name="p"/>
        <variantset name="v"/><collection name="c"/><unitdef name="u"/><unittypedef name="ut"/><targetdef name="td"/>
        <geompropdef name="gp"/><attributedef name="ad"/><xi:include href="x"/><backdrop name="b"/><token name="k"/>)");
    EXPECT_EQ(summarize(document.scene).nodes, 0u);
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NodenameConnectsSiblings)
{
    Document document(R"(<add name="a" type="float"/>
        <split name="s" type="multioutput"><output name="x" type="float"/><output name="y" type="float"/></split>
        <add name="b" type="float"><input name="in1" type="float" nodename="a"/>
            <input name="in2" type="float" nodename="s" output="y"/></add>)");
    EXPECT_THAT(connectionsOf(document.scene),
                ElementsAre("root.a.out > root.b.in1", "root.s.y > root.b.in2"));
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, ConnectionsAndCompoundsAreOfTheHostsClasses)
{
    Document document(R"(<nodegraph name="g"><add name="a" type="float"/>
        <output name="o" type="float" nodename="a"/></nodegraph>)");
    auto* const connection = dynamic_cast<MaterialConnection*>(document.scene.getGraphConnections()[0]);
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->describe(), "root.g.a.out > root.g.output interface01.o (float)");
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    document.scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes) EXPECT_NE(dynamic_cast<MaterialNode*>(node), nullptr);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NodegraphBecomesCompoundWithPairedPins)
{
    Document document(R"(<nodegraph name="g" doc="Twice as much.">
          <input name="amount" type="float" value="1"/>
          <input name="unused" type="float" value="1"/>
          <multiply name="m" type="float"><input name="in1" type="float" interfacename="amount"/></multiply>
          <output name="twice" type="float" nodename="m"/>
        </nodegraph>
        <add name="user" type="float"><input name="in1" type="float" nodegraph="g" output="twice"/></add>)");
    MaterialNode& graph = document.node("g");
    EXPECT_TRUE(graph.isCompound());
    EXPECT_EQ(graph.getType(), "nodegraph");
    EXPECT_EQ(graph.getDescription(), "Twice as much.");
    EXPECT_THAT(pinsOf(graph), ElementsAre("in amount float", "out twice float"));
    EXPECT_TRUE(document.node("g.input interface01").isInputInterface());
    EXPECT_TRUE(document.node("g.output interface01").isOutputInterface());
    MaterialPin& inner = document.pin("g.input interface01.amount");
    EXPECT_EQ(inner.getParentGraphNodePinPtr(), &document.pin("g.amount"));
    EXPECT_EQ(inner.getType(), "float");
    EXPECT_EQ(document.pin("g.amount").getMaxNumConnections(), 1u);
    EXPECT_THAT(connectionsOf(document.scene),
                UnorderedElementsAre("root.g.input interface01.amount > root.g.m.in1",
                                     "root.g.m.out > root.g.output interface01.twice",
                                     "root.g.twice > root.user.in1"));
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NestedGraphsAreFedFromTheGraphAroundThem)
{
    Document document(R"(<nodegraph name="outer">
          <input name="a" type="float"/>
          <add name="n" type="float"/>
          <nodegraph name="inner">
            <input name="x" type="float" interfacename="a"/>
            <input name="y" type="float" nodename="n"/>
            <input name="fed only" type="float" nodename="n"/>
            <add name="sum" type="float"><input name="in1" type="float" interfacename="x"/>
              <input name="in2" type="float" interfacename="y"/></add>
            <output name="o" type="float" nodename="sum"/>
          </nodegraph>
          <output name="o" type="float" nodegraph="inner" output="o"/>
        </nodegraph>
        <add name="user" type="float"><input name="in1" type="float" nodename="outer"/></add>)");
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_THAT(connectionsOf(document.scene),
                UnorderedElementsAre(
                    "root.outer.input interface01.a > root.outer.inner.x",
                    "root.outer.n.out > root.outer.inner.y", "root.outer.n.out > root.outer.inner.fed only",
                    "root.outer.inner.input interface01.x > root.outer.inner.sum.in1",
                    "root.outer.inner.input interface01.y > root.outer.inner.sum.in2",
                    "root.outer.inner.sum.out > root.outer.inner.output interface01.o",
                    "root.outer.inner.o > root.outer.output interface01.o", "root.outer.o > root.user.in1"));
    EXPECT_EQ(summarize(document.scene).depth, 3u);
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, DefinitionInTheDocumentGivesInterfaceInputsTheirTypes)
{
    Document document(R"(<nodedef name="ND_base"><input name="far" type="color3"/></nodedef>
        <nodedef name="ND_middle" inherit="ND_base"/>
        <nodedef name="ND_near" inherit="ND_middle"><input name="near" type="float"/></nodedef>
        <nodegraph name="g" nodedef="ND_near">
          <mix name="m" type="color3"><input name="fg" type="color3" interfacename="far"/>
            <input name="mix" type="float" interfacename="near"/><input name="bg" interfacename="other"/></mix>
        </nodegraph>)");
    EXPECT_EQ(document.pin("g.far").getType(), "color3");
    EXPECT_EQ(document.pin("g.near").getType(), "float");
    EXPECT_THAT(messagesOf(document.scene), ElementsAre(AllOf(StartsWith("test:7: "), HasSubstr("'other'"))));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, DefinitionElsewhereIsKnownByItsUses)
{
    Document document(R"(<nodegraph name="g" nodedef="ND_elsewhere">
        <mix name="m" type="color3"><input name="fg" interfacename="tint"/>
          <input name="bg" type="color3" interfacename="tint"/></mix></nodegraph>
        <nodedef name="ND_derived" inherit="ND_elsewhere"/>
        <nodegraph name="h" nodedef="ND_derived">
          <add name="a" type="float"><input name="in1" type="float" interfacename="far"/></add></nodegraph>)");
    EXPECT_EQ(document.pin("g.tint").getType(), "color3");
    EXPECT_EQ(document.pin("h.far").getType(), "float");
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, ImplementationElementLinksGraphAndDefinition)
{
    Document document(R"(<nodedef name="ND_a"><input name="x" type="float"/></nodedef>
        <implementation name="I_a" nodedef="ND_a" nodegraph="g"/>
        <nodegraph name="g"><add name="a" type="float"><input name="in1" type="float" interfacename="x"/></add></nodegraph>)");
    EXPECT_EQ(document.pin("g.x").getType(), "float");
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, DefinitionsThatInheritFromEachOtherEnd)
{
    Document document(R"(<nodedef name="ND_a" inherit="ND_b"/><nodedef name="ND_b" inherit="ND_a"/>
        <nodegraph name="g" nodedef="ND_a"><add name="a" type="float">
          <input name="in1" type="float" interfacename="x"/></add></nodegraph>)");
    EXPECT_THAT(messagesOf(document.scene), ElementsAre(HasSubstr("does not have")));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, OutputsOfAMultioutputNodeAreThoseOfItsDefinition)
{
    Document document(R"(<nodedef name="ND_split" node="split">
          <output name="low" type="float"/><output name="high" type="color3"/></nodedef>
        <split name="s" type="multioutput"/>)");
    EXPECT_THAT(pinsOf(document.node("s")), ElementsAre("out low float", "out high color3"));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, OutputsThatOnlyTheirUsersKnowAreMadeWithTheUsersType)
{
    Document document(R"(<separate3 name="s" type="multioutput"/><noise name="n" type="float"/>
        <unused name="u" type="multioutput"/>
        <add name="a" type="float"><input name="in1" type="float" nodename="s" output="outx"/>
          <input name="in2" type="vector2" nodename="n" output="gradient"/>
          <input name="in3" type="float" nodename="n" output="out"/></add>
        <add name="b" type="float"><input name="in1" type="float" nodename="s" output="outx"/></add>)");
    EXPECT_THAT(pinsOf(document.node("s")), ElementsAre("out outx float"));
    EXPECT_THAT(pinsOf(document.node("n")), ElementsAre("out out float", "out gradient vector2"));
    EXPECT_THAT(pinsOf(document.node("u")), ElementsAre("out out any type"));
    EXPECT_EQ(document.scene.getNumberOfConnections(), 4u);
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, ChannelsConvertBetweenTypes)
{
    Document document(R"(<image name="i" type="color3"/>
        <add name="a" type="float"><input name="in1" type="float" nodename="i" channels="r"/></add>
        <nodegraph name="g"><input name="x" type="float" nodename="i" channels="g"/>
          <image name="j" type="color3"/><output name="o" type="float" nodename="j" channels="b"/></nodegraph>)");
    EXPECT_THAT(connectionsOf(document.scene),
                UnorderedElementsAre("root.i.out > root.a.in1", "root.i.out > root.g.x",
                                     "root.g.j.out > root.g.output interface01.o"));
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, PinNamedLikeTheLibrarysNewPinsIsFoundByItsName)
{
    Document document(
        R"(<add name="a" type="float"><input name="Untitled" type="float"/><input name="b" type="float"/></add>
        <nodegraph name="g"><output name="Untitled" type="float"/><output name="o" type="float"/></nodegraph>)");
    EXPECT_EQ(document.pin("a.Untitled").getName(), "Untitled");
    EXPECT_EQ(document.pin("g.Untitled").getName(), "Untitled");
    EXPECT_EQ(document.pin("g.o").getName(), "o");
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, OutputOfTheDocumentIsAnOutputOfTheRoot)
{
    Document document(R"(<add name="a" type="float"/><output name="preview" type="float" nodename="a"/>
        <add name="b" type="float"><input name="in1" type="float" output="preview"/></add>)");
    EXPECT_THAT(pinsOf(document.scene.root()), ElementsAre("out preview float"));
    EXPECT_THAT(
        connectionsOf(document.scene),
        UnorderedElementsAre("root.a.out > root.output interface01.preview", "root.a.out > root.b.in1"));
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NamesThatAnIncludedFileMayHoldAreNoDefects)
{
    Document document(R"(<xi:include href="library.mtlx"/>
        <add name="a" type="float"><input name="in1" type="float" nodegraph="NG_library"/></add>
        <nodegraph name="g"><add name="a" type="float"><input name="in1" type="float" nodename="lost"/></add></nodegraph>)");
    EXPECT_THAT(messagesOf(document.scene), ElementsAre(HasSubstr("'lost'")));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NodesMayFeedThemselvesAndEachOther)
{
    Document document(R"(<add name="self" type="float"><input name="in1" type="float" nodename="self"/></add>
        <add name="a" type="float"><input name="in1" type="float" nodename="b"/></add>
        <add name="b" type="float"><input name="in1" type="float" nodename="a"/></add>
        <nodegraph name="g"><input name="x" type="float" nodename="g"/><output name="o" type="float" interfacename="x"/></nodegraph>)");
    EXPECT_EQ(document.scene.getNumberOfConnections(), 5u);
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, NamesMayHoldDotsAndBlanksAndCollideAcrossLevels)
{
    Document document(R"(<add name="a.b" type="float"/><add name="two words" type="float"/>
        <nodegraph name="a"><add name="b" type="float"/></nodegraph>
        <sum name="c" type="float"><input name="in1" type="float" nodename="a.b"/>
          <input name="in2" type="float" nodename="two words"/></sum>)");
    EXPECT_THAT(connectionsOf(document.scene),
                ElementsAre("root.a.b.out > root.c.in1", "root.two words.out > root.c.in2"));
    EXPECT_EQ(document.scene.getPinPtrByFullName("root.a.b.out01")->getParentGraphNodePtr()->getNodeOwner(),
              &document.node("a"));
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, InputNamedLikeTheOnlyOutputLeavesBothUsable)
{
    Document document(R"(<add name="a" type="float"><input name="out" type="float"/></add>
        <add name="b" type="float"><input name="in1" type="float" nodename="a" output="out"/></add>)");
    EXPECT_THAT(pinsOf(document.node("a")), ElementsAre("in out float", "out out01 float"));
    EXPECT_THAT(connectionsOf(document.scene), ElementsAre("root.a.out01 > root.b.in1"));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

std::string nested(unsigned int levels)
{
    std::string text;
    for (unsigned int i = 0; i < levels; ++i) text += R"(<nodegraph name="g">)";
    text += R"(<add name="innermost" type="float"/>)";
    for (unsigned int i = 0; i < levels; ++i) text += R"(<output name="o" type="float"/></nodegraph>)";
    return text;
}

TEST(MaterialDocument, GraphsMayBeNestedAThousandLevelsDeep)
{
    Document document(nested(1000));
    EXPECT_EQ(summarize(document.scene).depth, 1001u);
    EXPECT_THAT(messagesOf(document.scene), IsEmpty());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, GraphsBeyondTwoThousandLevelsAreLeftOutWithAMessage)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<nodegraph name=\"g\">";
    for (int i = 0; i < 100000; ++i) deep += "</nodegraph>";
    Document document(deep);
    EXPECT_EQ(summarize(document.scene).compounds, 2000u);
    EXPECT_THAT(messagesOf(document.scene), ElementsAre(HasSubstr("2000 levels")));
}

TEST(MaterialDocument, DefectsAreMessagesWithTheirLine)
{
    struct Case
    {
        char const* content;
        char const* message;
    };
    for (Case const& defect : {
             Case{"<add name='a' type='float'>\n<input name='i' nodename='x'/></add>",
                  "test:3: input 'i' of 'root.a' refers to 'x', which is not in 'root'"},
             Case{"<add name='a' type='float'>\n<input name='i' nodegraph='x' output='o'/></add>",
                  "test:3: input 'i' of 'root.a' refers to 'x', which is not in 'root'"},
             Case{"<nodegraph name='g'>\n<output name='o' nodename='x'/></nodegraph>",
                  "test:3: output 'o' of 'root.g' refers to 'x', which is not in 'root.g'"},
             Case{"<add name='a'/>\n<nodegraph name='g'><output name='o' nodename='a'/></nodegraph>",
                  "test:3: output 'o' of 'root.g' refers to 'a', which is not in 'root.g'"},
             Case{"<add name='a'>\n<input name='i' interfacename='x'/></add>",
                  "test:3: input 'i' of 'root.a' refers to the interface input 'x', which 'root' does not "
                  "have"},
             Case{"<add name='a'>\n<input name='i' output='x'/></add>",
                  "test:3: input 'i' of 'root.a' refers to the output 'x', which is not there"},
             Case{"<add name='a'/>\n\n<add name='a'/>",
                  "test:4: <add> in 'root' has the name 'a', which is taken there; it is read as 'a1'"},
             Case{"<nodegraph name='a'/>\n<nodegraph name='a'/>",
                  "test:3: <nodegraph> in 'root' has the name 'a', which is taken there; it is read as 'a1'"},
             Case{"<add/>", "test:2: <add> in 'root' has no name; it is read as 'add1'"},
             Case{"<add name='a'>\n<input name='i'/>\n<input name='i'/></add>",
                  "test:4: <input> in 'root.a' has the name 'i', which is taken there; it is left out"},
             Case{"<add name='a'>\n<input/></add>",
                  "test:3: <input> in 'root.a' has no name; it is left out"},
             Case{"<add name='a'>\n<output/><output name='o'/></add>",
                  "test:3: <output> in 'root.a' has no name; it is left out"},
             Case{"<nodegraph name='g'>\n<input/></nodegraph>", "test:3: <input> in 'root.g' has no name"},
             Case{"<nodegraph name='g'>\n<output/></nodegraph>", "test:3: <output> in 'root.g' has no name"},
             Case{"<nodegraph name='g'><output name='o'/>\n<output name='o'/></nodegraph>",
                  "test:3: <output> in 'root.g' has the name 'o', which is taken there"},
             Case{"<look name='l'/>\n<look name='l'/>",
                  "test:3: <look> in 'root' has the name 'l', which is taken there"},
             Case{"<add name='a' type='color3'/>\n<add name='b'><input name='i' type='float' "
                  "nodename='a'/></add>",
                  "test:3: input 'i' of 'root.b' takes float and refuses 'root.a.out' (color3)"},
             Case{"<nodegraph name='g'><output name='o'/></nodegraph><add name='a'>\n"
                  "<input name='i' nodename='a' nodegraph='g'/></add>",
                  "test:3: input 'i' of 'root.a' is connected already and refuses 'root.g.o'"},
             Case{"<nodegraph name='g'/>\n<add name='a'><input name='i' nodegraph='g'/></add>",
                  "test:3: input 'i' of 'root.a' refers to an output of 'root.g', which has none"},
             Case{"<x name='x'><output name='p'/><output name='q'/></x>\n<add name='a'><input name='i' "
                  "nodename='x'/></add>",
                  "test:3: input 'i' of 'root.a' does not say which output of 'root.x' it takes"},
             Case{"<x name='x'><output name='p'/></x>\n<add name='a'><input name='i' nodename='x' "
                  "output='q'/></add>",
                  "test:3: input 'i' of 'root.a' refers to the output 'q' of 'root.x', which has none of "
                  "that name"},
         })
    {
        SCOPED_TRACE(defect.content);
        Document document(defect.content);
        EXPECT_THAT(messagesOf(document.scene), ElementsAre(defect.message));
        EXPECT_TRUE(document.scene.getMessages().hasErrorsOrCriticals());
        EXPECT_SCENE_INVARIANTS(document.scene);
    }
}

TEST(MaterialDocument, ExampleWithEveryDefectNamesThemInTheOrderOfItsLines)
{
    Progress quiet(nullptr);
    MaterialScene scene;
    ASSERT_EQ(DocumentReader(scene, quiet).readFile(exampleFile("broken_references.mtlx")), "");
    std::vector<std::string> places;
    for (Message const& message : scene.getMessages().getMessages()) places.emplace_back(message.getTitle());
    std::vector<std::string> expected;
    for (char const* line : {"5", "9", "12", "13", "18", "19", "25", "35", "36", "45", "46", "47"})
        expected.push_back(std::string("broken_references.mtlx:") + line);
    EXPECT_EQ(places, expected);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialDocument, BrokenTextIsACriticalMessageAndReadsNothing)
{
    struct Case
    {
        std::string text;
        char const* message;
    };
    for (Case const& broken : {
             Case{"", "test:1: broken XML: No document element found"},
             Case{"plain words", "test:1: broken XML: No document element found"},
             Case{"<materialx>\n<add name='a'/>\n</material>", "test:3: broken XML: Start-end tags mismatch"},
             Case{"<materialx>\n<add name=a/>", "test:2: broken XML: Error parsing element attribute"},
             Case{"<?xml version='1.0'?>\n<svg/>", "test:2: the root element is <svg>, not <materialx>"},
             Case{std::string("\x7f\0<\1\2\n\xff", 7), "test:2: broken XML: No document element found"},
         })
    {
        SCOPED_TRACE(broken.text);
        Progress quiet(nullptr);
        MaterialScene scene;
        DocumentReader(scene, quiet).readText("test", broken.text);
        EXPECT_THAT(messagesOf(scene), ElementsAre(broken.message));
        EXPECT_TRUE(scene.getMessages().getMessages()[0].isCritical());
        EXPECT_EQ(scene.getNumberOfNodes(), 1u);
        EXPECT_SCENE_INVARIANTS(scene);
    }
}

TEST(MaterialDocument, LinesAreLeftOutWhereTheParserCountsInACopy)
{
    std::string const text = "<materialx><add/></materialx>";
    std::string utf16 = "\xff\xfe";
    for (char const letter : text) utf16.append({letter, '\0'});
    Progress quiet(nullptr);
    MaterialScene scene;
    DocumentReader(scene, quiet).readText("test", utf16);
    EXPECT_THAT(messagesOf(scene), ElementsAre("test: <add> in 'root' has no name; it is read as 'add1'"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialDocument, DefectIsAMessageOfItsNodeAndOfNoOther)
{
    Document document("<add name='good'/><add name='bad'><input name='i' nodename='x'/></add>");
    EXPECT_FALSE(document.node("good").hasMessages());
    MaterialNode& bad = document.node("bad");
    EXPECT_TRUE(bad.hasErrors());
    EXPECT_FALSE(bad.hasWarnings());
    EXPECT_EQ(bad.getMessages().getNumberOfMessages(), 1);
    document.scene.clearMessages();
    EXPECT_FALSE(bad.hasMessages());
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialDocument, ManyElementsWithoutANameAreCheap)
{
    std::string content;
    for (int i = 0; i < 20000; ++i) content += "<add/>";
    Document document(content);
    EXPECT_EQ(summarize(document.scene).nodes, 20000u);
    EXPECT_EQ(document.scene.getMessages().getNumberOfMessages(), 20000);
}

TEST(MaterialPin, RefusesAnotherType)
{
    MaterialScene scene;
    MaterialNode& node = scene.addMaterialNode("x", "x", scene.root());
    MaterialPin& source = scene.addOutput(node, "float", "float");
    MaterialPin& same = scene.addInput(node, "same", "float");
    MaterialPin& other = scene.addInput(node, "other", "color3");
    EXPECT_TRUE(scene.isConnectionAllowed(&source, &same));
    EXPECT_FALSE(scene.isConnectionAllowed(&source, &other));
    EXPECT_FALSE(scene.isConnectionAllowed(&same, &source));
    EXPECT_EQ(scene.connect(&source, &other, false), nullptr);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialPin, UntypedPinTakesTheTypeOfTheFirstItIsWiredTo)
{
    MaterialScene scene;
    MaterialNode& node = scene.addMaterialNode("x", "x", scene.root());
    MaterialPin& source = scene.addOutput(node, "source", "");
    MaterialPin& first = scene.addInput(node, "first", "float");
    MaterialPin& second = scene.addInput(node, "second", "color3");
    ASSERT_NE(scene.connect(&source, &first, false), nullptr);
    EXPECT_EQ(source.getType(), "float");
    EXPECT_EQ(source.getColor(), colorOfType("float"));
    EXPECT_EQ(scene.connect(&source, &second, false), nullptr);

    MaterialPin& target = scene.addInput(node, "target", "");
    ASSERT_NE(scene.connect(&source, &target, false), nullptr);
    EXPECT_EQ(target.getType(), "float");
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialPin, UntypedPinLearnsNothingFromOneThatConverts)
{
    MaterialScene scene;
    MaterialNode& node = scene.addMaterialNode("x", "x", scene.root());
    MaterialPin& source = scene.addOutput(node, "source", "");
    MaterialPin& red = scene.addInput(node, "red", "float");
    red.setConverts(true);
    ASSERT_NE(scene.connect(&source, &red, false), nullptr);
    EXPECT_TRUE(source.getType().isEmpty());
    EXPECT_EQ(source.getInfo(), "any type");
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialPin, PairedPinsHaveOneType)
{
    MaterialScene scene;
    MaterialNode& compound = scene.addCompound("c", scene.root());
    GraphNodeBase* interfaceNode = nullptr;
    MaterialScene::PinPair const pair = scene.addInterfacePair(PIN_OUTPUT, compound, interfaceNode, "o", "");
    pair.outer.setType("color3");
    EXPECT_EQ(pair.inner.getType(), "color3");
    EXPECT_EQ(pair.inner.getColor(), colorOfType("color3"));
    pair.inner.setType("float");
    EXPECT_EQ(pair.outer.getType(), "float");
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialPin, PairingGivesAnUntypedPinTheTypeOfTheOther)
{
    MaterialPin typed(1, PIN_OUTPUT);
    typed.setType("float");
    MaterialPin outer(1, PIN_INPUT);
    outer.setChildGraphNodePinPtr(&typed);
    EXPECT_EQ(outer.getType(), "float");
    MaterialPin inner(1, PIN_INPUT);
    inner.setParentGraphNodePinPtr(&typed);
    EXPECT_EQ(inner.getType(), "float");
}

TEST(MaterialPin, ColourSaysTheType)
{
    EXPECT_NE(colorOfType("float"), colorOfType("color3"));
    EXPECT_EQ(colorOfType("acme_spectrum"), colorOfType("acme_spectrum"));
    EXPECT_NE(colorOfType("acme_spectrum"), colorOfType("acme_curve"));
    Document document("<add name='a' type='float'/>");
    EXPECT_EQ(document.pin("a.out").getColor(), colorOfType("float"));
    EXPECT_EQ(document.pin("a.out").getBorderColor(), borderOf(colorOfType("float")));
}

TEST(MaterialScene, ColoursNodesByTheirType)
{
    Document document(
        "<standard_surface name='s'/><other name='o'/><nodegraph name='g'><output name='o'/></nodegraph>");
    EXPECT_TRUE(document.scene.hasColorForNodeType("Standard_Surface"));
    EXPECT_NE(document.scene.getColorFromNodeType(&document.node("s")),
              document.scene.getColorFromNodeType(&document.node("g")));
    EXPECT_EQ(document.scene.getColorFromNodeType(&document.node("o")),
              Color4<float>(0.6f, 0.7f, 0.8f, 1.0f));
    EXPECT_TRUE(document.scene.hasColorForNodeType(document.node("g.output interface01").getType()));
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialScene, DeletedNodeLeavesNothingBehind)
{
    MaterialScene scene;
    MaterialNode& source = scene.addMaterialNode("x", "source", scene.root());
    MaterialPin& out = scene.addOutput(source, "out", "float");
    MaterialNode& compound = scene.addCompound("c", scene.root());
    MaterialPin& unpaired = scene.addInput(compound, "unpaired", "float");
    ASSERT_NE(scene.connect(&out, &unpaired, true), nullptr);
    unsigned int const id = unpaired.getId();
    scene.deleteNode(compound);
    EXPECT_EQ(scene.getNumberOfConnections(), 0u);
    EXPECT_FALSE(out.isConnected());
    EXPECT_EQ(scene.getPinPtrById(id), nullptr);
    EXPECT_EQ(scene.findNode("c"), nullptr);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(MaterialScene, FindsNodesWithAndWithoutTheRootsName)
{
    Document document("<add name='root'/><nodegraph name='g'><add name='g'/></nodegraph>");
    EXPECT_EQ(document.scene.findNode("root"), &document.scene.root());
    EXPECT_EQ(document.scene.findNode("root.root"), &document.node("root.root"));
    EXPECT_EQ(document.scene.findNode("g.g")->getFullName(), "root.g.g");
    EXPECT_EQ(document.scene.findNode("root.g.g"), document.scene.findNode("g.g"));
    for (char const* absent : {"", ".", "g.", "roo", "rootg", "root.", "root.g.g.g"})
        EXPECT_EQ(document.scene.findNode(absent), nullptr) << absent;
    EXPECT_SCENE_INVARIANTS(document.scene);
}

TEST(MaterialScene, FindsTheNodesThatTheBaseClassFinds)
{
    Document document("<nodegraph name='a'><nodegraph name='b.c'><add name='d'/></nodegraph></nodegraph>"
                      "<nodegraph name='a.b'><add name='c'/><add name='e'/></nodegraph>");
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    document.scene.getGraphNodesAsList(nodes);
    ASSERT_EQ(nodes.size(), 7u);
    for (GraphNodeBase* node : nodes)
    {
        KS_String const name = node->getFullName();
        EXPECT_EQ(document.scene.getNodePtrByFullName(name),
                  document.scene.GraphScene::getNodePtrByFullName(name));
    }
}

TEST(MaterialScene, FullNameOfADeepNodeIsThatOfTheBaseClass)
{
    Document document("<nodegraph name='a'><nodegraph name='b'><add name='c'/></nodegraph></nodegraph>");
    MaterialNode& node = document.node("a.b.c");
    EXPECT_EQ(node.getFullName(), node.GraphNodeBase::getFullName());
    EXPECT_EQ(document.scene.root().getFullName(), "root");
}

} // namespace

} // namespace material_graph::test
