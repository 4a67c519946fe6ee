#include "examples/MaterialGraphSupport.h"

#include <material_graph/BoxArrangement.h>
#include <material_graph/LevelPlacement.h>
#include <material_graph/LevelShapes.h>
#include <material_graph/TextMetrics.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::KS_String;
using kestrel::Tuple2;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphSettings;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// What sums of floats may be off.
constexpr float rounding = 0.01f;

/// @name Boxes
/// @{

struct Boxes
{
    std::vector<Size> sizes;
    std::vector<BoxLink> links;
    Size gap{20.0f, 30.0f};

    std::vector<Rect> arranged() const
    {
        std::vector<Point> const corners = arrangeBoxes(sizes, links, gap);
        EXPECT_EQ(corners.size(), sizes.size());
        std::vector<Rect> rects;
        for (std::size_t i = 0; i < corners.size(); ++i) rects.push_back({corners[i], sizes[i]});
        return rects;
    }
};

/// Links lead from a box to a later one.
Boxes randomBoxes(unsigned int seed)
{
    std::mt19937 random(seed);
    auto const number = [&](std::size_t below) { return random() % below; };
    Boxes boxes;
    std::size_t const count = 2 + number(40);
    for (std::size_t i = 0; i < count; ++i)
        boxes.sizes.push_back(
            {1.0f + static_cast<float>(number(3000)) / 10, 1.0f + static_cast<float>(number(200))});
    for (std::size_t to = 1; to < count; ++to)
        for (std::size_t i = number(3); i > 0; --i) boxes.links.push_back({number(to), to});
    boxes.gap = {static_cast<float>(number(60)), static_cast<float>(number(60))};
    return boxes;
}

void expectApart(Boxes const& boxes)
{
    std::vector<Rect> const rects = boxes.arranged();
    Size const closest{boxes.gap.width - rounding, boxes.gap.height - rounding};
    for (std::size_t i = 0; i < rects.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_FALSE(rects[i].grownBy(closest).overlaps(rects[k])) << i << " and " << k;
}

void expectAtTheOrigin(std::vector<Rect> const& rects)
{
    Rect all = rects.at(0);
    for (Rect const& rect : rects) all = all.unitedWith(rect);
    EXPECT_NEAR(all.left(), 0.0f, rounding);
    EXPECT_NEAR(all.top(), 0.0f, rounding);
}

class ArrangedBoxes : public ::testing::TestWithParam<unsigned int>
{
};

INSTANTIATE_TEST_SUITE_P(MaterialPlacement, ArrangedBoxes, ::testing::Range(1u, 21u));

TEST_P(ArrangedBoxes, AreNoCloserThanTheGapFromTheOriginOn)
{
    Boxes const boxes = randomBoxes(GetParam());
    expectApart(boxes);
    expectAtTheOrigin(boxes.arranged());
}

TEST_P(ArrangedBoxes, AreLinkedFromLeftToRight)
{
    Boxes const boxes = randomBoxes(GetParam());
    std::vector<Rect> const rects = boxes.arranged();
    for (BoxLink const& link : boxes.links)
        EXPECT_LE(rects[link.from].right(), rects[link.to].left() + rounding)
            << link.from << " to " << link.to;
}

TEST_P(ArrangedBoxes, StandWhereTheyStoodBefore)
{
    Boxes const boxes = randomBoxes(GetParam());
    std::vector<Rect> const first = boxes.arranged();
    randomBoxes(GetParam() + 100).arranged();
    std::vector<Rect> const second = boxes.arranged();
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        EXPECT_EQ(first[i].left(), second[i].left()) << i;
        EXPECT_EQ(first[i].top(), second[i].top()) << i;
    }
}

TEST(MaterialPlacement, NoBoxesHaveNoPlaces)
{
    EXPECT_THAT(arrangeBoxes({}, {}, {20.0f, 30.0f}), IsEmpty());
}

TEST(MaterialPlacement, OneBoxStandsAtTheOrigin)
{
    expectAtTheOrigin(Boxes{{{70.0f, 30.0f}}, {}}.arranged());
    expectAtTheOrigin(Boxes{{{70.0f, 30.0f}}, {{0, 0}}}.arranged());
}

TEST(MaterialPlacement, BoxesWithoutLinksStandApart)
{
    Boxes const boxes{std::vector<Size>(30, {50.0f, 20.0f}), {}};
    expectApart(boxes);
    expectAtTheOrigin(boxes.arranged());
}

TEST(MaterialPlacement, RingsRepeatedLinksAndLinksToThemselvesDoNoHarm)
{
    expectApart(
        {{{50.0f, 20.0f}, {60.0f, 30.0f}, {5.0f, 5.0f}}, {{0, 1}, {1, 2}, {2, 0}, {1, 1}, {0, 1}, {0, 1}}});
}

TEST(MaterialPlacement, LargeAndSmallBoxesStandApart)
{
    expectApart(
        {{{5000.0f, 0.5f}, {0.5f, 5000.0f}, {0.0f, 0.0f}, {1000.0f, 1000.0f}}, {{0, 1}, {1, 2}, {2, 3}}});
}

/// @}

/// @name Levels
/// @{

constexpr char const* fourNodes = R"(<add name="a" type="float"/>
    <add name="b" type="float"><input name="in1" type="float" nodename="a"/></add>
    <nodegraph name="g" doc="What is inside."><add name="first" type="float"/>
      <add name="second" type="float"><input name="in1" type="float" nodename="first"/></add></nodegraph>
    <add name="c" type="float"/>)";

/// Of the children that have a usable position.
std::vector<Rect> outlinesOf(GraphNodeBase& level, GraphLayout const& layout, GraphSettings const& settings)
{
    std::vector<Rect> outlines;
    for (GraphNodeBase* node : level.getNodes())
        if (std::optional<Rect> const outline = outlineOf(*node, layout, settings))
            outlines.push_back(*outline);
    return outlines;
}

void expectNoOverlap(GraphNodeBase& level, GraphLayout const& layout, GraphSettings const& settings)
{
    std::vector<Rect> const outlines = outlinesOf(level, layout, settings);
    EXPECT_EQ(outlines.size(), level.getNodes().size());
    for (std::size_t i = 0; i < outlines.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_FALSE(outlines[i].overlaps(outlines[k]))
                << level.getFullName().c_str() << ": " << i << " and " << k;
}

struct Level
{
    explicit Level(std::string const& content = fourNodes) : document(content) {}

    void place() { placeLevel(layout, document.scene.root(), settings); }
    Rect outline(char const* name) { return outlineOf(document.node(name), layout, settings).value(); }

    Document document;
    GraphLayout layout;
    GraphSettings settings;
};

class PlacedExample : public ::testing::TestWithParam<std::string>
{
protected:
    Document document_{ExampleFile{GetParam() + ".mtlx"}};
    GraphLayout layout_;
    GraphSettings settings_;
};

INSTANTIATE_TEST_SUITE_P(MaterialPlacement, PlacedExample, ::testing::ValuesIn(exampleNames()),
                         [](auto const& example) { return example.param; });

TEST_P(PlacedExample, HasNoOverlapOnAnyLevel)
{
    placeAllLevels(layout_, document_.scene.root(), settings_);
    for (GraphNodeBase* level : levelsOf(document_.scene)) expectNoOverlap(*level, layout_, settings_);
}

TEST_P(PlacedExample, HasNoOverlapWithVerticalPinsOrBadgesEither)
{
    settings_.setNodeHorizontalInputPins(false);
    settings_.setNodeHorizontalOutputPins(false);
    settings_.setNodeShowBadge(true);
    placeAllLevels(layout_, document_.scene.root(), settings_);
    for (GraphNodeBase* level : levelsOf(document_.scene)) expectNoOverlap(*level, layout_, settings_);
}

TEST_P(PlacedExample, IsPlacedLevelByLevelAsAllAtOnce)
{
    placeAllLevels(layout_, document_.scene.root(), settings_);
    GraphLayout single;
    for (GraphNodeBase* level : levelsOf(document_.scene)) placeLevel(single, *level, settings_);
    kestrel::Array<KS_String, kestrel::_Wa> names;
    layout_.getInvolvedNodeNames(names);
    EXPECT_EQ(names.size() + 1, document_.scene.getNumberOfNodes());
    for (KS_String const& name : names)
        EXPECT_EQ(*layout_.getPositionByNodeName(name), *single.getPositionByNodeName(name)) << name.c_str();
    EXPECT_EQ(layout_.getNotes().size(), single.getNotes().size());
}

TEST_P(PlacedExample, StaysAsItIsWhenPlacedAgain)
{
    placeAllLevels(layout_, document_.scene.root(), settings_);
    GraphLayout const before = layout_;
    placeAllLevels(layout_, document_.scene.root(), settings_);
    EXPECT_EQ(layout_, before);
}

TEST(MaterialPlacement, PositionsThatAreThereStay)
{
    Level level;
    level.layout.insertNodePosition("root.a", {-500.0f, 700.5f});
    level.layout.insertNodePosition("root.c", {-490.0f, 705.0f});
    level.place();
    using Pair = Tuple2<float, float>;
    EXPECT_EQ(*level.layout.getPositionByNodeName("root.a"), (Pair{-500.0f, 700.5f}));
    EXPECT_EQ(*level.layout.getPositionByNodeName("root.c"), (Pair{-490.0f, 705.0f}));
}

TEST(MaterialPlacement, NewNodesComeBelowThosePlacedAndApart)
{
    Level level;
    level.layout.insertNodePosition("root.a", {1000.0f, -300.0f});
    level.layout.insertNodePosition("root.b", {0.0f, 200.0f});
    level.place();
    for (char const* name : {"g", "c"})
        EXPECT_GE(level.outline(name).top(), level.outline("b").bottom()) << name;
    expectNoOverlap(level.document.scene.root(), level.layout, level.settings);
}

TEST(MaterialPlacement, UnusablePositionsAreReplaced)
{
    for (float number : {nan, infinity, -infinity, 1e30f, -1e30f})
        for (Tuple2<float, float> const& position : {Tuple2<float, float>{number, 0.0f}, {0.0f, number}})
        {
            Level level;
            EXPECT_FALSE(isUsable(position));
            level.layout.insertNodePosition("root.b", position);
            level.layout.insertNodePosition("root.c", {10.0f, 20.0f});
            level.place();
            EXPECT_TRUE(isUsable(*level.layout.getPositionByNodeName("root.b"))) << number;
            EXPECT_GE(level.outline("b").top(), level.outline("c").bottom());
            expectNoOverlap(level.document.scene.root(), level.layout, level.settings);
        }
}

TEST(MaterialPlacement, OtherValuesOfANodeThatIsPlacedStay)
{
    Level level;
    level.layout.insertNode("root.a", {nan, 0.0f}, {1.0f, 0.0f, 0.0f, 1.0f}, true, false, false, true);
    level.place();
    EXPECT_EQ(*level.layout.getColorByNodeName("root.a"), (kestrel::Color4<float>{1.0f, 0.0f, 0.0f, 1.0f}));
    EXPECT_TRUE(*level.layout.getCollapsedByNodeName("root.a"));
    EXPECT_FALSE(*level.layout.getVisibleByNodeName("root.a"));
    EXPECT_FALSE(*level.layout.getHorizontalInputsByNodeName("root.a"));
    EXPECT_TRUE(*level.layout.getHorizontalOutputsByNodeName("root.a"));
}

TEST(MaterialPlacement, OtherLevelsStayUnplaced)
{
    Level level;
    level.place();
    EXPECT_TRUE(level.layout.getPositionByNodeName("root.g"));
    EXPECT_FALSE(level.layout.getPositionByNodeName("root.g.first"));
}

TEST(MaterialPlacement, LevelWithADescriptionGetsItAsANoteOnce)
{
    Level level;
    MaterialNode& compound = level.document.node("g");
    placeLevel(level.layout, compound, level.settings);
    ASSERT_EQ(level.layout.getNotes().size(), 1u);
    EXPECT_EQ(level.layout.getNotes()[0].getOwnerName(), "root.g");
    EXPECT_EQ(*level.layout.getNotes()[0].getText(), "What is inside.");
    Rect const note = boxOf(level.layout.getNotes()[0], level.settings);
    for (Rect const& outline : outlinesOf(compound, level.layout, level.settings))
        EXPECT_FALSE(note.overlaps(outline));

    level.document.scene.addMaterialNode("add", "later", compound);
    placeLevel(level.layout, compound, level.settings);
    EXPECT_EQ(level.layout.getNotes().size(), 1u);
    level.layout.refNotes().setSize(0);
    placeLevel(level.layout, compound, level.settings);
    EXPECT_EQ(level.layout.getNotes().size(), 0u);
}

TEST(MaterialPlacement, NewNodesKeepClearOfTheNotesOfTheirLevel)
{
    Level level;
    level.layout.addNote("root", "in the way", {-100.0f, -100.0f}, {600.0f, 500.0f}, {}, {});
    level.layout.addNote("root.g", "not there", {-1000.0f, -1000.0f}, {9000.0f, 9000.0f}, {}, {});
    level.place();
    std::vector<Rect> const notes = noteBoxesOf("root", level.layout, level.settings);
    ASSERT_EQ(notes.size(), 1u);
    for (Rect const& outline : outlinesOf(level.document.scene.root(), level.layout, level.settings))
        EXPECT_FALSE(outline.overlaps(notes[0]));
}

TEST(MaterialPlacement, NodesAndNotesOccupyALevel)
{
    Level level;
    GraphNodeBase& root = level.document.scene.root();
    level.layout.insertNodePosition("root.a", {0.0f, 0.0f});
    level.layout.insertNodePosition("root.b", {300.0f, 0.0f});
    level.layout.insertNodePosition("root.c", {nan, 0.0f});
    level.layout.addNote("root", "", {0.0f, 500.0f}, {50.0f, 60.0f}, {}, {});
    level.layout.addNote("root.g", "", {0.0f, 900.0f}, {50.0f, 60.0f}, {}, {});
    EXPECT_EQ(occupiedIn(root, level.layout, level.settings, {}).size(), 3u);
    std::vector<Rect> const others =
        occupiedIn(root, level.layout, level.settings, {&level.document.node("a")});
    ASSERT_EQ(others.size(), 2u);
    EXPECT_EQ(std::min(others[0].top(), others[1].top()), level.outline("b").top());
    EXPECT_EQ(std::max(others[0].bottom(), others[1].bottom()), 560.0f);
}

TEST(MaterialPlacement, LevelWithoutADescriptionGetsNoNote)
{
    Level level;
    level.place();
    EXPECT_EQ(level.layout.getNotes().size(), 0u);
}

TEST(MaterialPlacement, OrdinaryPositionsAreUsable)
{
    using Pair = Tuple2<float, float>;
    for (Pair const& position : {Pair{0.0f, 0.0f}, Pair{-0.5f, 1e4f}, Pair{-1e4f, 3.0f}})
        EXPECT_TRUE(isUsable(position)) << position.first << ", " << position.second;
}

/// @}

/// @name Free places
/// @{

bool isFree(Point corner, Size box, std::vector<Rect> const& others, GraphSettings const& settings)
{
    Size const margin{settings.getFreeAreaMargin().first - rounding,
                      settings.getFreeAreaMargin().second - rounding};
    Rect const room = Rect{corner, box}.grownBy(margin);
    return std::ranges::none_of(others, [&](Rect const& other) { return room.overlaps(other); });
}

float distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

constexpr Size box{50.0f, 40.0f};

std::vector<Rect> const twoBoxes{{{0.0f, 0.0f}, {60.0f, 50.0f}}, {{100.0f, 20.0f}, {60.0f, 50.0f}}};

TEST(MaterialPlacement, FreePlaceIsTheWantedOneWhereThatIsFree)
{
    GraphSettings const settings;
    for (Point wanted : {Point{500.0f, 3.5f}, Point{-3000.0f, 20000.0f}})
    {
        EXPECT_LT(distance(freePlaceNear(wanted, box, twoBoxes, settings), wanted), rounding);
        EXPECT_LT(distance(freePlaceNear(wanted, box, {}, settings), wanted), rounding);
    }
}

TEST(MaterialPlacement, FreePlaceKeepsTheMarginFromAllOthers)
{
    GraphSettings settings;
    for (float margin : {0.0f, 5.0f, 70.0f})
    {
        settings.setFreeAreaMargin({margin, margin + 10.0f});
        for (Point wanted :
             {Point{0.0f, 0.0f}, Point{30.0f, 10.0f}, Point{80.0f, 30.0f}, Point{150.0f, -10.0f}})
            EXPECT_TRUE(isFree(freePlaceNear(wanted, box, twoBoxes, settings), box, twoBoxes, settings))
                << margin;
    }
}

TEST(MaterialPlacement, FreePlaceIsNearTheWantedOneWhereThereIsRoom)
{
    GraphSettings const settings;
    for (Point wanted : {Point{0.0f, 0.0f}, Point{30.0f, 10.0f}, Point{80.0f, 30.0f}, Point{150.0f, -10.0f}})
        EXPECT_LT(distance(freePlaceNear(wanted, box, twoBoxes, settings), wanted), 200.0f) << wanted.x;
}

TEST(MaterialPlacement, FreePlaceIsBelowAllOthersWhereThereIsNoRoom)
{
    GraphSettings const settings;
    std::vector<Rect> const wall{{{-50000.0f, -50000.0f}, {100000.0f, 90000.0f}}};
    Point const found = freePlaceNear({100.0f, 100.0f}, box, wall, settings);
    EXPECT_TRUE(isFree(found, box, wall, settings));
    EXPECT_GE(found.y, 40000.0f);
}

TEST(MaterialPlacement, FreePlaceIsFoundInSmallAndInLargeSteps)
{
    GraphSettings settings;
    for (float step : {0.5f, 3.0f, 1000.0f})
    {
        settings.setFreeAreaStep({step, step});
        Point const found = freePlaceNear({10.0f, 10.0f}, box, twoBoxes, settings);
        EXPECT_TRUE(isFree(found, box, twoBoxes, settings)) << step;
    }
}

/// @}

/// @name Shapes
/// @{

TEST(MaterialShapes, OutlineNeedsAUsablePosition)
{
    Level level;
    MaterialNode& node = level.document.node("a");
    EXPECT_FALSE(outlineOf(node, level.layout, level.settings));
    level.layout.insertNodePosition("root.a", {nan, 0.0f});
    EXPECT_FALSE(outlineOf(node, level.layout, level.settings));
    EXPECT_THAT(outlinesOf(level.document.scene.root(), level.layout, level.settings), IsEmpty());
}

bool holds(Rect const& outer, Rect const& inner)
{
    Rect const room = outer.grownBy({rounding, rounding});
    return room.left() <= inner.left() && room.top() <= inner.top() && room.right() >= inner.right() &&
           room.bottom() >= inner.bottom();
}

TEST(MaterialShapes, OutlineHoldsBodyPinsTabAndBadgeAtThePosition)
{
    Level level;
    level.settings.setNodeShowBadge(true);
    level.document.node("g").refMessages().pushError("broken", "");
    level.layout.insertNodePosition("root.g", {300.0f, 200.0f});
    NodeShape shape = shapeOf(level.document.node("g"), level.layout, level.settings);
    EXPECT_EQ(shape.body.left(), 0.0f);
    EXPECT_EQ(shape.body.top(), 0.0f);
    EXPECT_GT(shape.tab.size.width * shape.badge.size.width, 0.0f);
    for (Rect const& part : {shape.body, shape.tab, shape.badge}) EXPECT_TRUE(holds(shape.outline, part));
    for (PinShape const& pin : shape.pins) EXPECT_TRUE(holds(shape.outline, pin.box));
    shape.moveBy({300.0f, 200.0f});
    EXPECT_TRUE(holds(shape.outline, level.outline("g")));
    EXPECT_TRUE(holds(level.outline("g"), shape.outline));
}

TEST(MaterialShapes, MoveEveryPartByTheSameWay)
{
    Level level;
    NodeShape const before = shapeOf(level.document.node("b"), level.layout, level.settings);
    NodeShape after = before;
    after.moveBy({7.0f, -3.0f});
    auto const expectMoved = [](Point from, Point to) {
        EXPECT_LT(distance(from + Point{7.0f, -3.0f}, to), rounding);
    };
    expectMoved(before.body.topLeft, after.body.topLeft);
    expectMoved(before.outline.topLeft, after.outline.topLeft);
    expectMoved(before.name.room.topLeft, after.name.room.topLeft);
    expectMoved(before.category.room.topLeft, after.category.room.topLeft);
    ASSERT_EQ(before.pins.size(), after.pins.size());
    for (std::size_t i = 0; i < before.pins.size(); ++i)
    {
        expectMoved(before.pins[i].box.topLeft, after.pins[i].box.topLeft);
        expectMoved(before.pins[i].anchor, after.pins[i].anchor);
        expectMoved(before.pins[i].name.room.topLeft, after.pins[i].name.room.topLeft);
    }
}

void expectRoomFor(Label const& label, Rect const& outer)
{
    if (label.lines.empty()) return;
    EXPECT_TRUE(holds(outer, label.room)) << label.lines[0];
    EXPECT_LE(linesHeight(label.lines.size(), label.fontSize), label.room.size.height + rounding)
        << label.lines[0];
    for (std::string const& line : label.lines)
        EXPECT_LE(textWidth(line, label.fontSize), label.room.size.width + rounding) << line;
}

TEST_P(PlacedExample, HasRoomForAllItsTextsAsTheyAre)
{
    placeAllLevels(layout_, document_.scene.root(), settings_);
    for (GraphNodeBase* level : levelsOf(document_.scene))
    {
        LevelShapes const shapes = shapesOf(*level, layout_, settings_);
        EXPECT_EQ(shapes.nodes.size(), level->getNodes().size());
        for (NodeShape const& node : shapes.nodes)
        {
            expectRoomFor(node.name, node.body);
            expectRoomFor(node.category, node.body);
            for (PinShape const& pin : node.pins) expectRoomFor(pin.name, node.body);
        }
        for (NoteShape const& note : shapes.notes)
        {
            expectRoomFor(note.text, note.box);
            EXPECT_EQ(note.text.fontSize, noteFontSize);
        }
    }
}

Point pointAt(ConnectionShape const& curve, float t)
{
    float const s = 1.0f - t;
    return curve.from * (s * s * s) + curve.leaving * (3 * s * s * t) + curve.arriving * (3 * s * t * t) +
           curve.to * (t * t * t);
}

TEST_P(PlacedExample, HasBoundsAroundEverything)
{
    placeAllLevels(layout_, document_.scene.root(), settings_);
    for (GraphNodeBase* level : levelsOf(document_.scene))
    {
        LevelShapes const shapes = shapesOf(*level, layout_, settings_);
        for (NodeShape const& node : shapes.nodes) EXPECT_TRUE(holds(shapes.bounds, node.outline));
        for (NoteShape const& note : shapes.notes) EXPECT_TRUE(holds(shapes.bounds, note.box));
        for (ConnectionShape const& connection : shapes.connections)
            for (float t = 0.0f; t <= 1.0f; t += 0.0625f)
                EXPECT_TRUE(holds(shapes.bounds, {pointAt(connection, t), {}}));
    }
}

TEST(MaterialShapes, ConnectionsAreInTheOrderOfTheChildrenAndTheirOutputs)
{
    Document document(
        R"(<add name="z" type="float"><input name="in1" type="float" nodename="s" output="y"/></add>
        <split name="s" type="multioutput"><output name="x" type="float"/><output name="y" type="float"/></split>
        <add name="a" type="float"><input name="in1" type="float" nodename="z"/>
          <input name="in2" type="float" nodename="s" output="x"/></add>)");
    std::vector<std::string> names;
    for (GraphConnection* connection : connectionsIn(document.scene.root()))
        names.emplace_back(connection->getFullName());
    EXPECT_THAT(names,
                ElementsAre("root.z.out > root.a.in1", "root.s.x > root.a.in2", "root.s.y > root.z.in1"));
}

TEST(MaterialShapes, HiddenOnesAreCountedAndNotThere)
{
    Level level;
    level.place();
    level.layout.insertNodeVisible("root.c", false);
    level.layout.insertConnectionVisible("root.a.out > root.b.in1", false);
    LevelShapes const shapes = shapesOf(level.document.scene.root(), level.layout, level.settings);
    EXPECT_EQ(shapes.hiddenNodes, 1u);
    EXPECT_EQ(shapes.hiddenConnections, 1u);
    EXPECT_EQ(shapes.nodes.size(), 3u);
    EXPECT_THAT(shapes.connections, IsEmpty());
}

TEST(MaterialShapes, BadgeStandsForTheMessagesOfTheNodeAndAllBelow)
{
    Level level;
    level.document.node("g").refMessages().pushError("outer", "");
    level.document.node("g.second").refMessages().pushError("inner", "");
    EXPECT_EQ(messagesUnder(level.document.node("g")).size(), 2u);
    EXPECT_EQ(messagesUnder(level.document.node("g.second")).size(), 1u);
    EXPECT_EQ(messagesUnder(level.document.node("a")).size(), 0u);
}

/// @}

} // namespace

} // namespace material_graph::test
