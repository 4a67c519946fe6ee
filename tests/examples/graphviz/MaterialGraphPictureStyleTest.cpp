#include "examples/MaterialGraphPictures.h"

#include <material_graph/TypeColors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::KS_String;
using kestrel::Tuple2;
using kestrel::graph::GraphSettings;
using kestrel::graph::NoteDesc;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// @name Sizes
/// @{

/// Settings with which texts, pins or badges need another room than by default.
struct RoomySettings
{
    char const* name;
    void (*apply)(GraphSettings& settings);
};

void PrintTo(RoomySettings const& settings, std::ostream* out)
{
    *out << settings.name;
}

class PictureWithSettings : public ::testing::TestWithParam<RoomySettings>
{
};

INSTANTIATE_TEST_SUITE_P(
    MaterialPicture, PictureWithSettings,
    ::testing::Values(
        RoomySettings{"LargePins",
                      [](GraphSettings& s) {
                          s.setPinHorizontalSize({60.0f, 60.0f});
                      }},
        RoomySettings{"SmallPins",
                      [](GraphSettings& s) {
                          s.setPinHorizontalSize({6.0f, 6.0f});
                      }},
        RoomySettings{"LargeNames", [](GraphSettings& s) { s.setNodeLabelHeight(30.0f); }},
        RoomySettings{"NamesMovedIn",
                      [](GraphSettings& s) {
                          s.setNodeLabelPosition({40.0f, 30.0f});
                      }},
        RoomySettings{"NamesInTheMiddle", [](GraphSettings& s) { s.setNodeLabelHorizontalCentered(true); }},
        RoomySettings{"NarrowNodes",
                      [](GraphSettings& s) {
                          s.setNodeMaxSize({60.0f, 1000.0f});
                      }},
        RoomySettings{"LargeNodes",
                      [](GraphSettings& s) {
                          s.setNodeMinSize({200.0f, 200.0f});
                      }},
        RoomySettings{"RoundNodes", [](GraphSettings& s) { s.setNodeRoundRectangleSize(20.0f); }},
        RoomySettings{"NoMarginBelow", [](GraphSettings& s) { s.setPinOffsetBottom(0.0f); }},
        RoomySettings{"LargeShadows",
                      [](GraphSettings& s) {
                          s.setNodeShadowGrow({50.0f, 50.0f});
                      }},
        RoomySettings{"LargeBadges",
                      [](GraphSettings& s)
                      {
                          s.setNodeShowBadge(true);
                          s.setNodeBadgeSize({80.0f, 80.0f});
                      }}),
    [](auto const& settings) { return settings.param.name; });

TEST_P(PictureWithSettings, KeepsEverythingReadableAndOnThePage)
{
    Canvas canvas(nested);
    GetParam().apply(canvas.settings);
    canvas.document.node("b").refMessages().pushError("broken", "");
    for (char const* level : {"root", "g"})
    {
        Picture const& picture = canvas.picture(level);
        expectReadable(picture);
        expectNoOverlap(picture);
        expectOnThePage(picture);
    }
}

TEST(MaterialPictureSizes, PinsFollowTheSettings)
{
    TwoNodes canvas;
    auto const radius = [&] { return numberOf(markOf(canvas.picture().pin("root.a.out")), "r"); };
    float const before = radius();
    canvas.settings.setPinHorizontalSize({40.0f, 40.0f});
    EXPECT_FLOAT_EQ(radius(), 2 * before);
}

TEST(MaterialPictureSizes, VerticalPinsAreNoSmallerThanTheSettingsSay)
{
    TwoNodes canvas;
    canvas.settings.setNodeHorizontalInputPins(false);
    canvas.settings.setPinVerticalSize({50.0f, 22.0f});
    Rect const tab = boxOfShape(markOf(canvas.picture().pin("root.b.in1")));
    EXPECT_NEAR(tab.size.width, 50.0f, rounding);
    EXPECT_NEAR(tab.size.height, 22.0f, rounding);
}

TEST(MaterialPictureSizes, NodesHaveTheMarginOfTheSettingsBelowTheirPins)
{
    TwoNodes canvas;
    float const before = bodyOf(canvas.picture().node("root.b")).size.height;
    canvas.settings.setPinOffsetBottom(canvas.settings.getPinOffsetBottom() + 12.0f);
    EXPECT_NEAR(bodyOf(canvas.picture().node("root.b")).size.height, before + 12.0f, rounding);
}

TEST(MaterialPictureSizes, NodesAreNoSmallerThanTheSettingsSay)
{
    TwoNodes canvas;
    canvas.settings.setNodeMinSize({123.0f, 234.0f});
    Rect const body = bodyOf(canvas.picture().node("root.a"));
    EXPECT_FLOAT_EQ(body.size.width, 123.0f);
    EXPECT_FLOAT_EQ(body.size.height, 234.0f);
}

TEST(MaterialPictureSizes, LongNameMakesNoNodeWiderThanTheSettingsAllow)
{
    Canvas canvas("<add name='" + std::string(500, 'm') + "'/>");
    for (float width : {150.0f, 80.0f})
    {
        canvas.settings.setNodeMaxSize({width, 1e6f});
        EXPECT_LE(bodyOf(canvas.picture().ofClass("node").at(0)).size.width, width + rounding);
    }
}

TEST(MaterialPictureSizes, NameIsAsHighAsTheSettingsSay)
{
    TwoNodes canvas;
    canvas.settings.setNodeLabelHeight(17.0f);
    EXPECT_FLOAT_EQ(numberOf(canvas.picture().node("root.a").child("text"), "font-size"), 17.0f);
}

TEST(MaterialPictureSizes, PinsMayBeSquareAndWithoutNames)
{
    TwoNodes canvas;
    canvas.settings.setPinDrawCircle(false);
    canvas.settings.setPinShowName(false);
    for (pugi::xml_node pin : canvas.picture().ofClass("pin"))
    {
        EXPECT_STREQ(markOf(pin).name(), "rect");
        EXPECT_THAT(linesOf(pin), IsEmpty());
    }
}

/// @}

/// @name Colours
/// @{

std::string bodyPaintOf(pugi::xml_node node)
{
    return paintOf(onlyOfClass(node, "body"), "fill");
}

TEST(MaterialPictureColors, NodeHasThatOfTheLayoutOrOfItsTypeOrOfTheSettings)
{
    TwoNodes canvas;
    canvas.settings.setDefaultNodeColor({1.0f, 0.2f, 0.0f, 1.0f});
    Color const image = canvas.document.scene.getColorFromNodeType(KS_String("image"));
    EXPECT_EQ(bodyPaintOf(canvas.picture().node("root.a")), paintOf(image));
    EXPECT_EQ(bodyPaintOf(canvas.picture().node("root.b")), "rgb(255,51,0)");
    canvas.layout.insertNodeColor("root.a", {0.0f, 0.0f, 1.0f, 0.25f});
    canvas.layout.insertNodeColor("root.b", {0.0f, 1.0f, 0.0f, 1.0f});
    EXPECT_EQ(bodyPaintOf(canvas.picture().node("root.a")), "rgb(0,0,255) 0.25");
    EXPECT_EQ(bodyPaintOf(canvas.picture().node("root.b")), "rgb(0,255,0)");
}

TEST(MaterialPictureColors, CompoundsAndInterfaceNodesOfNoKnownTypeHaveDefaultsOfTheirOwn)
{
    Canvas canvas(nested);
    for (char const* name : {"g.h", "g.input interface01"}) canvas.document.node(name).setType("mystery");
    canvas.settings.setDefaultCompoundNodeColor({0.0f, 0.4f, 0.0f, 1.0f});
    canvas.settings.setDefaultInterfaceNodeColor({0.0f, 0.0f, 0.4f, 1.0f});
    Picture const& picture = canvas.picture("g");
    EXPECT_EQ(bodyPaintOf(picture.node("root.g.h")), "rgb(0,102,0)");
    EXPECT_EQ(bodyPaintOf(picture.node("root.g.input interface01")), "rgb(0,0,102)");
}

TEST(MaterialPictureColors, NumbersBeyondThemAreClampedAndNoNumbersLeaveNoTrace)
{
    TwoNodes canvas;
    float const nan = std::numeric_limits<float>::quiet_NaN();
    canvas.layout.insertNodeColor("root.a", {nan, nan, nan, nan});
    canvas.layout.insertNodeColor("root.b", {-3.0f, std::numeric_limits<float>::infinity(), 1e30f, 5.0f});
    EXPECT_THAT(canvas.drawn(), Not(HasSubstr("nan")));
    EXPECT_EQ(bodyPaintOf(canvas.picture().node("root.b")), "rgb(0,255,255)");
}

TEST(MaterialPictureColors, PinHasThatOfItsTypeFainterWhenNothingIsConnected)
{
    TwoNodes canvas;
    canvas.settings.setPinNotConnectedAlpha(0.25f);
    Picture const& picture = canvas.picture();
    EXPECT_EQ(paintOf(markOf(picture.pin("root.a.out")), "fill"), paintOf(colorOfType("color3")));
    EXPECT_EQ(paintOf(markOf(picture.pin("root.b.in1")), "fill"), paintOf(colorOfType("color3")));
    Color unconnected = colorOfType("float");
    unconnected.alpha = 0.25f;
    EXPECT_EQ(paintOf(markOf(picture.pin("root.b.in2")), "fill"), paintOf(unconnected));
}

TEST(MaterialPictureColors, ConnectionHasThatOfItsSourcePinAndTheWidthOfTheSettings)
{
    TwoNodes canvas;
    canvas.settings.setConnectionLineWidth(4.5f);
    pugi::xml_node const line = canvas.picture().connection(wire).child("path");
    EXPECT_EQ(paintOf(line, "stroke"), paintOf(colorOfType("color3")));
    EXPECT_FLOAT_EQ(numberOf(line, "stroke-width"), 4.5f);
    EXPECT_STREQ(line.attribute("fill").value(), "none");
}

TEST(MaterialPictureColors, ConnectionHasThatOfTheSettingsWherePinsDoNotGiveIt)
{
    TwoNodes canvas;
    canvas.settings.setConnectionUsePinColor(false);
    canvas.settings.setConnectionLineColor({1.0f, 0.0f, 0.2f, 0.5f});
    EXPECT_EQ(paintOf(canvas.picture().connection(wire).child("path"), "stroke"), "rgb(255,0,51) 0.5");
}

TEST(MaterialPictureColors, BordersAndTextsFollowTheSettings)
{
    TwoNodes canvas;
    canvas.settings.setNodeBorderColor({0.0f, 1.0f, 0.0f, 1.0f});
    canvas.settings.setNodeBorderWidth(3.5f);
    canvas.settings.setNodeTextColor({1.0f, 0.0f, 0.0f, 1.0f});
    canvas.settings.setPinTextColor({0.0f, 0.0f, 1.0f, 1.0f});
    canvas.settings.setPinBorderWidth(2.5f);
    Picture const& picture = canvas.picture();
    pugi::xml_node const body = onlyOfClass(picture.node("root.a"), "body");
    EXPECT_EQ(paintOf(body, "stroke"), "rgb(0,255,0)");
    EXPECT_FLOAT_EQ(numberOf(body, "stroke-width"), 3.5f);
    EXPECT_EQ(paintOf(picture.node("root.a").child("text"), "fill"), "rgb(255,0,0)");
    EXPECT_EQ(paintOf(picture.pin("root.a.out").child("text"), "fill"), "rgb(0,0,255)");
    EXPECT_FLOAT_EQ(numberOf(markOf(picture.pin("root.a.out")), "stroke-width"), 2.5f);
}

TEST(MaterialPictureColors, BackgroundFillsThePage)
{
    TwoNodes canvas;
    canvas.settings.setBackgroundColor({0.2f, 0.4f, 0.6f, 1.0f});
    Picture const& picture = canvas.picture();
    pugi::xml_node const background = onlyOfClass(picture.root(), "background");
    EXPECT_EQ(paintOf(background, "fill"), "rgb(51,102,153)");
    EXPECT_TRUE(isInside(picture.viewBox(), rectOf(background)));
}

/// @}

/// @name Badges
/// @{

struct BadgeCanvas : Canvas
{
    BadgeCanvas() : Canvas(nested) { settings.setNodeShowBadge(true); }

    void tell(char const* node, int level)
    {
        document.node(node).refMessages().pushIgnoringLevel({level, "title", "content"});
    }
    std::vector<pugi::xml_node> badges(char const* node)
    {
        return Picture::ofClass(picture().node(node), "badge");
    }
    std::string paint(char const* node) { return paintOf(badges(node).at(0).child("circle"), "fill"); }
};

TEST(MaterialPictureBadge, CountsTheMessagesOfTheNodeAndBelow)
{
    BadgeCanvas canvas;
    canvas.tell("a", 2);
    canvas.tell("a", 3);
    canvas.tell("g", 3);
    canvas.tell("g.inside", 3);
    canvas.tell("g.h.deep", 2);
    EXPECT_THAT(linesOf(canvas.badges("root.a").at(0)), ElementsAre("2"));
    EXPECT_THAT(linesOf(canvas.badges("root.g").at(0)), ElementsAre("3"));
    EXPECT_THAT(canvas.badges("root.b"), IsEmpty());
    EXPECT_THAT(tooltipOf(canvas.badges("root.a").at(0)), HasSubstr("title: content"));
}

TEST(MaterialPictureBadge, HasTheColorOfTheWorstMessage)
{
    BadgeCanvas canvas;
    std::map<int, std::string> paints;
    for (int level = 5; level >= 1; --level)
    {
        canvas.tell("a", level);
        paints[level] = canvas.paint("root.a");
    }
    EXPECT_EQ(paints[1], paints[2]);
    EXPECT_NE(paints[2], paints[3]);
    EXPECT_NE(paints[3], paints[4]);
    EXPECT_NE(paints[4], paints[2]);
    canvas.tell("a", 5);
    EXPECT_EQ(canvas.paint("root.a"), paints[1]);
    canvas.tell("g", 4);
    canvas.tell("g.h.deep", 3);
    EXPECT_EQ(canvas.paint("root.g"), paints[3]);
}

TEST(MaterialPictureBadge, IsNotThereUnlessTheSettingsAskForIt)
{
    BadgeCanvas canvas;
    canvas.settings.setNodeShowBadge(false);
    canvas.tell("a", 2);
    EXPECT_THAT(canvas.badges("root.a"), IsEmpty());
}

TEST(MaterialPictureBadge, IsAsLargeAsTheSettingsSayWithItsCountInside)
{
    for (int count : {1, 1234})
    {
        BadgeCanvas canvas;
        canvas.settings.setNodeBadgeSize({16.0f, 16.0f});
        for (int i = 0; i < count; ++i) canvas.tell("a", 2);
        pugi::xml_node const badge = canvas.badges("root.a").at(0);
        EXPECT_THAT(linesOf(badge), ElementsAre(std::to_string(count)));
        EXPECT_FLOAT_EQ(numberOf(badge.child("circle"), "r"), 8.0f);
        EXPECT_TRUE(isInside(inkOfText(badge.child("text")), drawnOutline(badge)));
    }
}

/// @}

/// @name Notes
/// @{

NoteDesc noteOf(std::string const& owner, std::string const& text)
{
    NoteDesc note;
    note.setOwnerName(KS_String(owner));
    note.setText(KS_String(text));
    return note;
}

struct NoteCanvas : TwoNodes
{
    explicit NoteCanvas(NoteDesc const& note) { layout.addNote(note); }

    pugi::xml_node drawnNote() { return picture().ofClass("note").at(0); }
    Rect drawnBox() { return rectOf(drawnNote().child("rect")); }
};

TEST(MaterialPictureNote, IsDrawnAsTheLayoutDescribesIt)
{
    NoteCanvas canvas({"root",
                       "two\nlines",
                       {10.0f, 400.0f},
                       {150.0f, 80.0f},
                       {1.0f, 0.0f, 0.0f, 0.5f},
                       {0.0f, 0.0f, 1.0f, 1.0f}});
    EXPECT_LT(distance(canvas.drawnBox().topLeft, {10.0f, 400.0f}), rounding);
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.width, 150.0f);
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.height, 80.0f);
    pugi::xml_node const note = canvas.drawnNote();
    EXPECT_EQ(paintOf(note.child("rect"), "fill"), "rgb(255,0,0) 0.5");
    EXPECT_THAT(linesOf(note), ElementsAre("two", "lines"));
    EXPECT_EQ(paintOf(note.child("text"), "fill"), "rgb(0,0,255)");
}

TEST(MaterialPictureNote, AbsentPartsAreThoseOfTheSettings)
{
    NoteCanvas canvas(noteOf("root", "text"));
    canvas.settings.setDefaultNoteColor({0.0f, 1.0f, 0.0f, 1.0f});
    canvas.settings.setDefaultNoteTextColor({0.0f, 0.0f, 0.2f, 1.0f});
    canvas.settings.setDefaultNoteSize({170.0f, 60.0f});
    canvas.settings.setDefaultNoteBorderAlpha(0.5f);
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.width, 170.0f);
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.height, 60.0f);
    pugi::xml_node const note = canvas.drawnNote();
    EXPECT_EQ(paintOf(note.child("rect"), "fill"), "rgb(0,255,0)");
    EXPECT_EQ(paintOf(note.child("rect"), "stroke"), "rgb(0,255,0) 0.5");
    EXPECT_EQ(paintOf(note.child("text"), "fill"), "rgb(0,0,51)");
    expectOnThePage(canvas.picture());
}

TEST(MaterialPictureNote, WithoutAnythingIsAnEmptyBox)
{
    NoteDesc note;
    note.setOwnerName("root");
    NoteCanvas canvas(note);
    EXPECT_EQ(lettersOf(canvas.drawnNote()), "");
    EXPECT_TRUE(canvas.drawnNote().child("rect"));
    expectWellFormed(canvas.drawn());
}

TEST(MaterialPictureNote, IsSeenOnTheLevelOfItsOwnerOnly)
{
    Canvas canvas(nested);
    for (char const* owner : {"root", "root.g.h", "root.elsewhere"})
        canvas.layout.addNote(noteOf(owner, owner));
    for (char const* level : {"root", "root.g.h"})
    {
        std::vector<pugi::xml_node> const notes = canvas.picture(level).ofClass("note");
        ASSERT_EQ(notes.size(), 1u);
        EXPECT_THAT(linesOf(notes[0]), ElementsAre(level));
    }
}

TEST(MaterialPictureNote, UnusablePlacesAndSizesStayOnThePage)
{
    float const infinity = std::numeric_limits<float>::infinity();
    for (float number : {std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, 1e30f, -1e30f})
    {
        NoteDesc note = noteOf("root", "text");
        note.setPosition({number, 5.0f});
        note.setSize({40.0f, number});
        NoteCanvas canvas(note);
        expectWellFormed(canvas.drawn());
        expectOnThePage(canvas.picture());
        EXPECT_LT(canvas.picture().viewBox().size.height, 10000.0f) << number;
    }
}

TEST(MaterialPictureNote, IsNeverSmallerThanTheSettingsSay)
{
    NoteDesc note = noteOf("root", "");
    note.setSize({1.0f, 2.0f});
    NoteCanvas canvas(note);
    canvas.settings.setMinimumNoteSize({35.0f, 25.0f});
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.width, 35.0f);
    EXPECT_FLOAT_EQ(canvas.drawnBox().size.height, 25.0f);
}

TEST(MaterialPictureNote, LongTextIsWholeAndStaysInItsBox)
{
    std::string text;
    for (int i = 0; i < 40; ++i) text += "word" + std::to_string(i) + " ";
    using Pair = Tuple2<float, float>;
    for (Pair const& size :
         {Pair{400.0f, 300.0f}, Pair{100.0f, 50.0f}, Pair{30.0f, 20.0f}, Pair{30.0f, 600.0f}})
    {
        NoteDesc note = noteOf("root", text);
        note.setSize(size);
        NoteCanvas canvas(note);
        Rect const box = canvas.drawnBox();
        EXPECT_EQ(lettersOf(canvas.drawnNote()), lettersOf(text));
        for (pugi::xml_node line : childrenOf(canvas.drawnNote(), "text"))
            EXPECT_TRUE(isInside(inkOfText(line), box))
                << shown(inkOfText(line)) << " is not in " << shown(box);
    }
}

/// @}

/// @name Caption
/// @{

pugi::xml_node captionOf(Picture const& picture)
{
    return onlyOfClass(picture.root(), "caption");
}

TEST(MaterialPictureCaption, NamesTheWayFromTheRootToTheLevel)
{
    Canvas canvas(nested);
    EXPECT_THAT(linesOf(captionOf(canvas.picture())), ElementsAre("root"));
    pugi::xml_node const deep = captionOf(canvas.picture("g.h"));
    EXPECT_THAT(linesOf(deep), ElementsAre("root", "g", "h"));
    EXPECT_EQ(childrenOf(deep, "path").size(), 2u);
}

TEST(MaterialPictureCaption, FollowsTheSettings)
{
    TwoNodes canvas;
    canvas.settings.setCompoundCaptionSize(22.0f);
    canvas.settings.setCompoundCaptionAlpha(0.25f);
    pugi::xml_node const text = captionOf(canvas.picture()).child("text");
    EXPECT_FLOAT_EQ(numberOf(text, "font-size"), 22.0f);
    EXPECT_FLOAT_EQ(numberOf(text, "fill-opacity"), 0.25f);
    canvas.settings.setShowCompoundCaption(false);
    EXPECT_THAT(canvas.picture().ofClass("caption"), IsEmpty());
}

TEST(MaterialPictureCaption, StandsClearOfTheGraph)
{
    Canvas canvas(nested);
    for (char const* level : {"root", "g"})
    {
        Picture const& picture = canvas.picture(level);
        for (pugi::xml_node text : childrenOf(captionOf(picture), "text"))
            for (char const* name : {"node", "note"})
                for (pugi::xml_node element : picture.ofClass(name))
                    EXPECT_FALSE(inkOfText(text).overlaps(drawnOutline(element))) << level;
    }
}

TEST(MaterialPictureCaption, CountsWhatIsHidden)
{
    Canvas nodes(nested);
    nodes.layout.insertNodeVisible("root.a", false);
    EXPECT_THAT(linesOf(captionOf(nodes.picture())).back(), HasSubstr("1 hidden node"));
    nodes.layout.insertNodeVisible("root.b", false);
    EXPECT_THAT(linesOf(captionOf(nodes.picture())).back(), HasSubstr("2 hidden nodes"));
    TwoNodes connections;
    connections.layout.insertConnectionVisible(wire, false);
    EXPECT_THAT(linesOf(captionOf(connections.picture())).back(), HasSubstr("1 hidden connection"));
}

/// @}

/// @name Grid and shadows
/// @{

TEST(MaterialPictureGrid, IsThereOnlyWhenTheSettingsAskForIt)
{
    TwoNodes canvas;
    EXPECT_FALSE(canvas.picture().root().child("pattern"));
    canvas.settings.setUseGrid(true);
    canvas.settings.setGridSize(50);
    canvas.settings.setGridColor({1.0f, 0.0f, 0.0f, 1.0f});
    Picture const& picture = canvas.picture();
    pugi::xml_node const pattern = picture.root().child("pattern");
    EXPECT_FLOAT_EQ(numberOf(pattern, "width"), 50.0f);
    EXPECT_FLOAT_EQ(numberOf(pattern, "height"), 50.0f);
    EXPECT_EQ(paintOf(pattern.child("path"), "stroke"), "rgb(255,0,0)");
    pugi::xml_node const grid = onlyOfClass(picture.root(), "grid");
    EXPECT_EQ(paintOf(grid, "fill"), "url(#" + std::string(pattern.attribute("id").value()) + ")");
    EXPECT_TRUE(isInside(picture.viewBox(), rectOf(grid)));
}

TEST(MaterialPictureGrid, OfNoSizeIsNotDrawn)
{
    for (int size : {0, -80})
    {
        TwoNodes canvas;
        canvas.settings.setUseGrid(true);
        canvas.settings.setGridSize(size);
        EXPECT_THAT(canvas.picture().ofClass("grid"), IsEmpty()) << size;
    }
}

TEST(MaterialPictureShadow, LiesBehindItsNodeAsTheSettingsSay)
{
    TwoNodes canvas;
    canvas.settings.setNodeShadowGrow({4.0f, 6.0f});
    canvas.settings.setNodeShadowOffset({10.0f, 20.0f});
    pugi::xml_node const node = canvas.picture().node("root.a");
    pugi::xml_node const shadow = onlyOfClass(node, "shadow");
    Rect const expected = bodyOf(node).grownBy({4.0f, 6.0f}).movedBy({10.0f, 20.0f});
    EXPECT_LT(distance(rectOf(shadow).topLeft, expected.topLeft), rounding);
    EXPECT_LT(
        distance({rectOf(shadow).right(), rectOf(shadow).bottom()}, {expected.right(), expected.bottom()}),
        2 * rounding);
    EXPECT_EQ(node.child("rect"), shadow);
}

TEST(MaterialPictureShadow, OfNodesAndPinsCanBeLeftOut)
{
    TwoNodes canvas;
    auto const shapes = [&] { return drawnBoxes(canvas.picture().pin("root.a.out")).size(); };
    EXPECT_THAT(canvas.picture().ofClass("shadow"), Not(IsEmpty()));
    std::size_t const withShadow = shapes();
    canvas.settings.setDrawNodeShadow(false);
    canvas.settings.setDrawPinShadow(false);
    EXPECT_THAT(canvas.picture().ofClass("shadow"), IsEmpty());
    EXPECT_EQ(shapes(), withShadow - 1);
}

/// @}

} // namespace

} // namespace material_graph::test
