#include "examples/MaterialGraphPictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphSettings;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;

struct DrawnLevel
{
    GraphNodeBase& node;
    std::string name;
    std::string svg;
    Picture picture{svg};
};

std::list<DrawnLevel> drawAllLevels(MaterialScene& scene, GraphSettings const& settings = {})
{
    GraphLayout layout;
    std::list<DrawnLevel> levels;
    for (GraphNodeBase* level : levelsOf(scene))
    {
        placeLevel(layout, *level, settings);
        levels.push_back(
            {*level, std::string(level->getFullName()), drawLevel(scene, *level, layout, settings)});
    }
    return levels;
}

class PictureOfExample : public ::testing::TestWithParam<std::string>
{
protected:
    Document document_{ExampleFile{GetParam() + ".mtlx"}};
};

INSTANTIATE_TEST_SUITE_P(MaterialPicture, PictureOfExample, ::testing::ValuesIn(exampleNames()),
                         [](auto const& example) { return example.param; });

TEST_P(PictureOfExample, IsWellFormed)
{
    for (DrawnLevel const& level : drawAllLevels(document_.scene))
    {
        SCOPED_TRACE(level.name);
        expectWellFormed(level.svg);
    }
}

TEST_P(PictureOfExample, HasOneElementForEachNodeAndPin)
{
    for (DrawnLevel const& level : drawAllLevels(document_.scene))
    {
        std::vector<std::string> nodes;
        std::vector<std::string> pins;
        for (GraphNodeBase* node : level.node.getNodes())
        {
            nodes.emplace_back(node->getFullName());
            for (GraphNodePin* pin : node->getNodePins()) pins.emplace_back(pin->getFullName());
        }
        EXPECT_THAT(level.picture.names("node"), UnorderedElementsAreArray(nodes)) << level.name;
        EXPECT_THAT(level.picture.names("pin"), UnorderedElementsAreArray(pins)) << level.name;
    }
}

TEST_P(PictureOfExample, HasOneElementForEachConnection)
{
    std::vector<std::string> drawn;
    for (DrawnLevel const& level : drawAllLevels(document_.scene))
        for (std::string const& name : level.picture.names("connection"))
        {
            EXPECT_THAT(name, StartsWith(level.name + "."));
            drawn.push_back(name);
        }
    EXPECT_THAT(drawn, UnorderedElementsAreArray(connectionsOf(document_.scene)));
}

TEST_P(PictureOfExample, PinsStandAtTheSidesOfTheirNode)
{
    for (DrawnLevel const& level : drawAllLevels(document_.scene))
        for (GraphNodeBase* node : level.node.getNodes())
        {
            Rect const body = bodyOf(level.picture.node(std::string(node->getFullName())));
            for (GraphNodePin* pin : node->getNodePins())
            {
                std::string const name(pin->getFullName());
                Point const center = centerOf(markOf(level.picture.pin(name)));
                EXPECT_NEAR(center.x, pin->isInputPin() ? body.left() : body.right(), rounding) << name;
                EXPECT_TRUE(center.y > body.top() && center.y < body.bottom()) << name;
            }
        }
}

TEST_P(PictureOfExample, ConnectionsBeginAndEndAtTheEdgeOfTheirPins)
{
    for (DrawnLevel const& level : drawAllLevels(document_.scene))
        for (std::string const& name : level.picture.names("connection"))
        {
            std::size_t const arrow = name.find(" > ");
            pugi::xml_node const source = markOf(level.picture.pin(name.substr(0, arrow)));
            pugi::xml_node const target = markOf(level.picture.pin(name.substr(arrow + 3)));
            Curve const line = lineOf(level.picture.connection(name));
            Point const toEdge{numberOf(source, "r"), 0.0f};
            EXPECT_LT(distance(line.front(), centerOf(source) + toEdge), rounding) << name;
            EXPECT_LT(distance(line.back(), centerOf(target) - toEdge), rounding) << name;
        }
}

TEST_P(PictureOfExample, NothingIsOffThePage)
{
    GraphSettings settings;
    settings.setNodeShowBadge(true);
    settings.setConnectionDrawArrow(true);
    for (DrawnLevel const& level : drawAllLevels(document_.scene, settings))
    {
        SCOPED_TRACE(level.name);
        expectOnThePage(level.picture);
    }
}

TEST_P(PictureOfExample, NodesDoNotOverlap)
{
    GraphSettings settings;
    settings.setNodeShowBadge(true);
    for (DrawnLevel const& level : drawAllLevels(document_.scene, settings)) expectNoOverlap(level.picture);
}

TEST_P(PictureOfExample, TextsStandFreeInTheirNodes)
{
    GraphSettings settings;
    settings.setNodeShowBadge(true);
    for (DrawnLevel const& level : drawAllLevels(document_.scene, settings)) expectReadable(level.picture);
}

TEST_P(PictureOfExample, IsTheSameInEveryRun)
{
    Document again{ExampleFile{GetParam() + ".mtlx"}};
    std::list<DrawnLevel> const first = drawAllLevels(document_.scene);
    std::list<DrawnLevel> const second = drawAllLevels(again.scene);
    ASSERT_EQ(first.size(), second.size());
    for (auto a = first.begin(), b = second.begin(); a != first.end(); ++a, ++b) EXPECT_EQ(a->svg, b->svg);
}

TEST(MaterialPicture, ShowsTheLevelThatIsAskedForAndNothingBelow)
{
    Canvas canvas(nested);
    Picture const& root = canvas.picture();
    EXPECT_THAT(root.names("node"), UnorderedElementsAre("root.a", "root.g", "root.b"));
    EXPECT_THAT(root.names("pin"),
                UnorderedElementsAre("root.a.out", "root.g.x", "root.g.o", "root.b.in1", "root.b.out"));
    EXPECT_THAT(root.names("connection"),
                UnorderedElementsAre("root.a.out > root.g.x", "root.g.o > root.b.in1"));
    Picture const& inner = canvas.picture("g");
    EXPECT_THAT(inner.names("node"),
                UnorderedElementsAre("root.g.h", "root.g.inside", "root.g.input interface01",
                                     "root.g.output interface01"));
    EXPECT_THAT(inner.names("connection"),
                UnorderedElementsAre("root.g.input interface01.x > root.g.inside.in1",
                                     "root.g.inside.out > root.g.output interface01.o"));
}

TEST(MaterialPicture, EmptyLevelIsAPageWithoutElements)
{
    Canvas canvas("<nodegraph name='g'/>");
    expectWellFormed(canvas.drawn("g"));
    Picture const& picture = canvas.picture("g");
    expectOnThePage(picture);
    for (char const* name : {"node", "pin", "connection", "note"})
        EXPECT_THAT(picture.ofClass(name), IsEmpty()) << name;
}

TEST(MaterialPicture, NodesStandWhereTheLayoutPutsThem)
{
    TwoNodes canvas;
    Picture const& picture = canvas.picture();
    EXPECT_LT(distance(bodyOf(picture.node("root.a")).topLeft, {0.0f, 0.0f}), rounding);
    EXPECT_LT(distance(bodyOf(picture.node("root.b")).topLeft, {300.0f, 200.0f}), rounding);
}

TEST(MaterialPicture, NodesFarApartAreStillOnThePage)
{
    TwoNodes canvas;
    canvas.layout.clear();
    canvas.layout.insertNodePosition("root.a", {-20000.0f, 30000.0f});
    canvas.layout.insertNodePosition("root.b", {15000.0f, -5000.0f});
    expectOnThePage(canvas.picture());
}

TEST(MaterialPicture, CompoundsAndInterfaceNodesAreToldFromOthers)
{
    Canvas canvas(nested);
    Picture const& picture = canvas.picture("g");
    pugi::xml_node const compound = picture.node("root.g.h");
    pugi::xml_node const interfaceNode = picture.node("root.g.input interface01");
    pugi::xml_node const plain = picture.node("root.g.inside");
    EXPECT_STREQ(compound.attribute("data-kind").value(), "compound");
    EXPECT_STREQ(interfaceNode.attribute("data-kind").value(), "interface");
    EXPECT_STREQ(plain.attribute("data-kind").value(), "plain");
    EXPECT_EQ(Picture::ofClass(compound, "tab").size(), 1u);
    EXPECT_THAT(Picture::ofClass(interfaceNode, "tab"), IsEmpty());
    EXPECT_THAT(Picture::ofClass(plain, "tab"), IsEmpty());
    EXPECT_EQ(childrenOf(interfaceNode, "rect").size(), childrenOf(plain, "rect").size());
    EXPECT_GT(childrenOf(compound, "rect").size(), childrenOf(plain, "rect").size() + 1);
    EXPECT_GT(numberOf(onlyOfClass(interfaceNode, "body"), "rx"), numberOf(onlyOfClass(plain, "body"), "rx"));
}

TEST(MaterialPicture, NodeShowsItsNameAndTypeAndTellsTheRestInATooltip)
{
    Canvas canvas("<image name='a' type='float' doc='Oak &amp; ash.'/>");
    Picture const& picture = canvas.picture();
    EXPECT_THAT(linesOf(picture.node("root.a")), ElementsAre("a", "image"));
    EXPECT_EQ(tooltipOf(picture.node("root.a")), "root.a\nOak & ash.");
    EXPECT_THAT(linesOf(picture.pin("root.a.out")), ElementsAre("out"));
    EXPECT_EQ(tooltipOf(picture.pin("root.a.out")), "root.a.out\nfloat");
}

/// @name Hidden and collapsed
/// @{

TEST(MaterialPicture, HiddenNodeTakesItsPinsAndConnectionsWithIt)
{
    TwoNodes canvas;
    canvas.layout.insertNodeVisible("root.a", false);
    Picture const& picture = canvas.picture();
    EXPECT_THAT(picture.names("node"), ElementsAre("root.b"));
    EXPECT_THAT(picture.names("pin"), Each(StartsWith("root.b.")));
    EXPECT_THAT(picture.ofClass("connection"), IsEmpty());
}

TEST(MaterialPicture, HiddenConnectionLeavesItsPins)
{
    TwoNodes canvas;
    canvas.layout.insertConnectionVisible(wire, false);
    Picture const& picture = canvas.picture();
    EXPECT_THAT(picture.ofClass("connection"), IsEmpty());
    EXPECT_THAT(picture.names("pin"), IsSupersetOf({"root.a.out", "root.b.in1"}));
}

TEST(MaterialPicture, CollapsedNodeHasNoPinsAndIsWiredInTheMiddleOfItsSides)
{
    TwoNodes canvas;
    canvas.layout.insertNodeCollapsed("root.a", true);
    canvas.layout.insertNodeCollapsed("root.b", true);
    Picture const& picture = canvas.picture();
    EXPECT_THAT(picture.ofClass("pin"), IsEmpty());
    Rect const a = bodyOf(picture.node("root.a"));
    Rect const b = bodyOf(picture.node("root.b"));
    Curve const line = lineOf(picture.connection(wire));
    EXPECT_LT(distance(line.front(), {a.right(), a.center().y}), rounding);
    EXPECT_LT(distance(line.back(), {b.left(), b.center().y}), rounding);
}

TEST(MaterialPicture, LayoutSaysWhatIsCollapsedBeforeTheSettingsDo)
{
    TwoNodes canvas;
    canvas.settings.setNodeColapsedByDefault(true);
    canvas.layout.insertNodeCollapsed("root.b", false);
    EXPECT_THAT(canvas.picture().names("pin"),
                UnorderedElementsAre("root.b.in1", "root.b.in2", "root.b.out"));
}

/// @}

/// @name Vertical pins
/// @{

void expectVertical(Picture const& picture, std::string const& node, std::string const& pin, bool input)
{
    Rect const body = bodyOf(picture.node(node));
    Rect const tab = boxOfShape(markOf(picture.pin(node + "." + pin)));
    EXPECT_NEAR(input ? tab.bottom() : tab.top(), input ? body.top() : body.bottom(), rounding) << pin;
    EXPECT_TRUE(tab.left() > body.left() && tab.right() < body.right()) << pin;
    for (pugi::xml_node text : childrenOf(picture.pin(node + "." + pin), "text"))
        EXPECT_TRUE(isInside(inkOfText(text), tab)) << shown(inkOfText(text)) << " in " << shown(tab);
}

struct VerticalNodes : TwoNodes
{
    VerticalNodes()
    {
        settings.setNodeHorizontalInputPins(false);
        settings.setNodeHorizontalOutputPins(false);
    }
};

TEST(MaterialPicture, VerticalPinsStandSideBySideOnTheUpperAndLowerEdge)
{
    VerticalNodes canvas;
    Picture const& picture = canvas.picture();
    expectVertical(picture, "root.a", "file", true);
    expectVertical(picture, "root.a", "out", false);
    expectVertical(picture, "root.b", "in1", true);
    expectVertical(picture, "root.b", "in2", true);
    Rect const first = boxOfShape(markOf(picture.pin("root.b.in1")));
    Rect const second = boxOfShape(markOf(picture.pin("root.b.in2")));
    EXPECT_LT(first.right(), second.left());
    expectOnThePage(picture);
}

TEST(MaterialPicture, ConnectionsLeaveVerticalPinsDownwardsAndArriveFromAbove)
{
    VerticalNodes canvas;
    Picture const& picture = canvas.picture();
    Rect const source = boxOfShape(markOf(picture.pin("root.a.out")));
    Rect const target = boxOfShape(markOf(picture.pin("root.b.in1")));
    Curve const line = lineOf(picture.connection(wire));
    ASSERT_EQ(line.size(), 4u);
    EXPECT_LT(distance(line[0], {source.center().x, source.bottom()}), rounding);
    EXPECT_LT(distance(line[3], {target.center().x, target.top()}), rounding);
    EXPECT_TRUE(line[1].y > line[0].y && std::abs(line[1].x - line[0].x) < rounding);
    EXPECT_TRUE(line[2].y < line[3].y && std::abs(line[2].x - line[3].x) < rounding);
}

TEST(MaterialPicture, LayoutTurnsThePinsOfOneNode)
{
    TwoNodes canvas;
    canvas.settings.setNodeHorizontalOutputPins(false);
    canvas.layout.insertNodeHorizontalInputs("root.b", false);
    canvas.layout.insertNodeHorizontalOutputs("root.b", true);
    Picture const& picture = canvas.picture();
    expectVertical(picture, "root.a", "out", false);
    expectVertical(picture, "root.b", "in1", true);
    EXPECT_NEAR(centerOf(markOf(picture.pin("root.a.file"))).x, bodyOf(picture.node("root.a")).left(),
                rounding);
    EXPECT_NEAR(centerOf(markOf(picture.pin("root.b.out"))).x, bodyOf(picture.node("root.b")).right(),
                rounding);
}

TEST(MaterialPicture, VerticalPinsWithLongNamesDoNotOverlap)
{
    std::string const input = "<input type='float' name='";
    Canvas canvas("<add name='a'>" + input + std::string(40, 'p') + "'/>" + input + std::string(40, 'q') +
                  "'/>" + input + "r'/></add>");
    canvas.settings.setNodeHorizontalInputPins(false);
    Picture const& picture = canvas.picture();
    std::vector<pugi::xml_node> const pins = picture.ofClass("pin");
    for (std::size_t i = 0; i < pins.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_FALSE(collide(boxOfShape(markOf(pins[i])), boxOfShape(markOf(pins[k])))) << i << k;
    expectVertical(picture, "root.a", std::string(40, 'p'), true);
    expectOnThePage(picture);
}

/// @}

/// @name Connections
/// @{

TEST(MaterialConnectionPicture, IsACurveUnlessSettingsOrLayoutSayStraight)
{
    struct Case
    {
        bool setting;
        bool inLayout;
        bool flag;
        bool straight;
    };
    for (Case const& wanted : {Case{true, false, false, false}, Case{false, false, false, true},
                               Case{true, true, false, true}, Case{false, true, true, false}})
    {
        TwoNodes canvas;
        canvas.settings.setConnectionBezier(wanted.setting);
        if (wanted.inLayout) canvas.layout.insertConnectionBezier(wire, wanted.flag);
        EXPECT_EQ(isStraight(lineOf(canvas.picture().connection(wire))), wanted.straight)
            << wanted.setting << wanted.inLayout << wanted.flag;
    }
}

TEST(MaterialConnectionPicture, LeavesToTheRightAndArrivesFromTheLeft)
{
    TwoNodes canvas;
    Curve const line = lineOf(canvas.picture().connection(wire));
    ASSERT_EQ(line.size(), 4u);
    EXPECT_TRUE(line[1].x > line[0].x && std::abs(line[1].y - line[0].y) < rounding);
    EXPECT_TRUE(line[2].x < line[3].x && std::abs(line[2].y - line[3].y) < rounding);
}

TEST(MaterialConnectionPicture, MayEndInTheMiddleOfThePins)
{
    TwoNodes canvas;
    canvas.settings.setConnectionToEdge(false);
    Picture const& picture = canvas.picture();
    Curve const line = lineOf(picture.connection(wire));
    EXPECT_LT(distance(line.front(), centerOf(markOf(picture.pin("root.a.out")))), rounding);
    EXPECT_LT(distance(line.back(), centerOf(markOf(picture.pin("root.b.in1")))), rounding);
}

TEST(MaterialConnectionPicture, LeavesAtLeastAsFarAsTheSettingsSay)
{
    TwoNodes canvas;
    canvas.settings.setConnectionBezierTangentWidth(400.0f);
    Curve const line = lineOf(canvas.picture().connection(wire));
    EXPECT_NEAR(line.at(1).x, line.at(0).x + 400.0f, rounding);
    EXPECT_NEAR(line.at(2).x, line.at(3).x - 400.0f, rounding);
    expectOnThePage(canvas.picture());
}

TEST(MaterialConnectionPicture, OfANodeWithItselfIsALoopOnThePage)
{
    Canvas canvas("<blur name='a' type='float'><input name='in' type='float' nodename='a'/></blur>");
    Picture const& picture = canvas.picture();
    Curve const line = lineOf(picture.connection("root.a.out > root.a.in"));
    Rect const body = bodyOf(picture.node("root.a"));
    Rect const loop = boundsOf(samplesOf(line));
    EXPECT_TRUE(loop.top() < body.top() || loop.bottom() > body.bottom()) << shown(loop);
    EXPECT_GT(line.at(1).x, line.at(0).x);
    EXPECT_LT(line.at(2).x, line.at(3).x);
    expectOnThePage(picture);
}

TEST(MaterialConnectionPicture, TellsItsNameAndTypeInATooltip)
{
    TwoNodes canvas;
    EXPECT_EQ(tooltipOf(canvas.picture().connection(wire)), std::string(wire) + " (color3)");
}

TEST(MaterialConnectionPicture, HasNoArrowByDefault)
{
    TwoNodes canvas;
    EXPECT_EQ(childrenOf(canvas.picture().connection(wire), "path").size(), 1u);
}

TEST(MaterialConnectionPicture, ArrowIsAsLargeAsTheSettingsSayAndLiesOnTheLine)
{
    TwoNodes canvas;
    canvas.settings.setConnectionBezier(false);
    canvas.settings.setConnectionDrawArrow(true);
    canvas.settings.setConnectionArrowWidth(12.0f);
    canvas.settings.setConnectionArrowLength(20.0f);
    canvas.settings.setConnectionArrowOffset(30.0f);
    pugi::xml_node const connection = canvas.picture().connection(wire);
    Curve const line = lineOf(connection);
    Curve const arrow = pointsOf(childrenOf(connection, "path").at(1));
    ASSERT_EQ(arrow.size(), 3u);
    Point const back = (arrow[1] + arrow[2]) * 0.5f;
    EXPECT_NEAR(distance(arrow[1], arrow[2]), 12.0f, 2 * rounding);
    EXPECT_NEAR(distance(arrow[0], back), 20.0f, 2 * rounding);
    EXPECT_NEAR(distance(arrow[0], line.back()), 30.0f, 2.0f);
    EXPECT_LT(distance(arrow[0], line.back()), distance(back, line.back()));
    for (Point point : {arrow[0], back})
        EXPECT_LT(distanceFromLine(point, line.front(), line.back()), 2 * rounding);
    EXPECT_EQ(paintOf(childrenOf(connection, "path").at(1), "fill"),
              paintOf(connection.child("path"), "stroke"));
}

TEST(MaterialConnectionPicture, ImplicitOneIsHiddenUnlessSettingsOrLayoutShowIt)
{
    struct Case
    {
        int hiddenByDefault;
        bool inLayout;
        bool flag;
        std::size_t drawn;
    };
    for (Case const& wanted : {Case{1, false, false, 0}, Case{0, false, false, 1}, Case{1, true, true, 1},
                               Case{0, true, false, 0}})
    {
        TwoNodes canvas;
        canvas.document.scene.getGraphConnections()[0]->setImplicit(true);
        canvas.settings.setConnectionImplicitHiddenByDefault(wanted.hiddenByDefault);
        if (wanted.inLayout) canvas.layout.insertConnectionVisible(wire, wanted.flag);
        EXPECT_EQ(canvas.picture().ofClass("connection").size(), wanted.drawn)
            << wanted.hiddenByDefault << wanted.inLayout << wanted.flag;
    }
}

TEST(MaterialConnectionPicture, OnlyAnImplicitOneIsDashed)
{
    TwoNodes canvas;
    canvas.settings.setConnectionImplicitHiddenByDefault(0);
    canvas.settings.setConnectionDashLineLength(7);
    canvas.settings.setConnectionDashHoleLength(3);
    char const* const dashes = "stroke-dasharray";
    EXPECT_FALSE(canvas.picture().connection(wire).child("path").attribute(dashes));
    canvas.document.scene.getGraphConnections()[0]->setImplicit(true);
    EXPECT_STREQ(canvas.picture().connection(wire).child("path").attribute(dashes).value(), "7 3");
}

/// @}

} // namespace

} // namespace material_graph::test
