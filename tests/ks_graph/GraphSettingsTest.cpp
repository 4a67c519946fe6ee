#include <foundation/KS_Class.h>
#include <ks_graph/GraphSettings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

using Color = Color4<float>;
using FloatPair = Tuple2<float, float>;
using IntPair = Tuple2<int, int>;

constexpr float largest = std::numeric_limits<float>::max();

constexpr char menuStyle[] =
    R"(QMenu::item:disabled { color: "#CCC"; }QMenu::item:disabled:selected { color: "#333"; })";
static_assert(sizeof(menuStyle) == 87 + 1);

// clang-format off
/// Type, name and default of every setting in the order of declaration. The text of the help style sheet is
/// the library's own; all records begin with the same one.
#define FOR_EACH_SETTING(SETTING)                                                                            \
    SETTING(Color, BackgroundTopColor, 0.3f, 0.3f, 0.3f, 1.0f)                                               \
    SETTING(Color, BackgroundBottomColor, 0.0f, 0.0f, 0.0f, 1.0f)                                            \
    SETTING(Color, BackgroundColor, 0.2f, 0.2f, 0.2f, 1.0f)                                                  \
    SETTING(bool, UseOpenGL, false)                                                                          \
    SETTING(bool, UseGrid, false)                                                                            \
    SETTING(bool, ShowToolTip, false)                                                                        \
    SETTING(Color, GridColor, 0.27f, 0.27f, 0.27f, 1.0f)                                                     \
    SETTING(int, GridSize, 80)                                                                               \
    SETTING(float, GhostAlpha, 0.1f)                                                                         \
    SETTING(bool, GlobalAntialias, true)                                                                     \
    SETTING(float, MaxSceneZoom, 5.0f)                                                                       \
    SETTING(float, MinSceneZoom, 0.2f)                                                                       \
    SETTING(float, SceneZoomEpsilon, 0.005f)                                                                 \
    SETTING(int, ZoomFactor, 1)                                                                              \
    SETTING(float, DragZoomFactor, 1.0f)                                                                     \
    SETTING(bool, DrawNodeProxies, true)                                                                     \
    SETTING(bool, UseNavigator, true)                                                                        \
    SETTING(IntPair, NavigatorSize, 192, 120)                                                                \
    SETTING(float, NavigatorMargin, 50.0f)                                                                   \
    SETTING(int, NavigatorBorderSize, 1)                                                                     \
    SETTING(Color, NavigatorBorderColor, 0.0f, 0.0f, 0.0f, 1.0f)                                             \
    SETTING(Color, NavigatorRectColor, 0.8f, 0.8f, 0.8f, 0.2f)                                               \
    SETTING(bool, NavigatorAntialiasing, true)                                                               \
    SETTING(KS_String, DefaultRootName, "root")                                                              \
    SETTING(bool, TabMenuMatchAny, true)                                                                     \
    SETTING(bool, TabMenuCaseSensitive, false)                                                               \
    SETTING(int, TabMenuLimit, 100)                                                                          \
    SETTING(bool, TabMenuIgnoreFirstCharacter, true)                                                         \
    SETTING(Color, LabelBackgroundColor, 0.0f, 0.0f, 0.0f, 0.0f)                                             \
    SETTING(Color, LabelEditingBackgroundColor, 1.0f, 1.0f, 1.0f, 0.8f)                                      \
    SETTING(float, LabelSideMargin, 30.0f)                                                                   \
    SETTING(KS_String, IconsFolder, "")                                                                      \
    SETTING(bool, CatchEventsOutsideWidget, false)                                                           \
    SETTING(bool, ShowCompoundCaption, true)                                                                 \
    SETTING(float, CompoundCaptionSize, 15.0f)                                                               \
    SETTING(float, CompoundCaptionArrowSize, 18.0f)                                                          \
    SETTING(bool, CompoundCaptionBrighter, true)                                                             \
    SETTING(float, CompoundCaptionAlpha, 0.5f)                                                               \
    SETTING(FloatPair, CompoundCaptionOffset, 3.0f, 0.0f)                                                    \
    SETTING(int, ToolTipShowTimeOut, 400)                                                                    \
    SETTING(int, ToolTipHideTimeOut, 300)                                                                    \
    SETTING(Color, ToolTipBackgroundColor, 0.0f, 0.0f, 0.0f, 1.0f)                                           \
    SETTING(Color, ToolTipBorderColor, 0.0f, 0.0f, 0.0f, 1.0f)                                               \
    SETTING(Color, ToolTipTextColor, 1.0f, 1.0f, 1.0f, 1.0f)                                                 \
    SETTING(float, ToolTipMinimumWidth, 100.0f)                                                              \
    SETTING(float, ToolTipMinimumHeight, 50.0f)                                                              \
    SETTING(float, ToolTipArrowWidth, 20.0f)                                                                 \
    SETTING(float, ToolTipArrowHeight, 20.0f)                                                                \
    SETTING(float, DefaultToolTipZ, 20.0f)                                                                   \
    SETTING(float, ConnectionLineWidth, 1.5f)                                                                \
    SETTING(float, ConnectionLineOffset, 1.0f)                                                               \
    SETTING(Color, ConnectionLineColor, 0.7f, 0.7f, 0.7f, 1.0f)                                              \
    SETTING(float, ConnectionLineSelectedLightColor, 0.5f)                                                   \
    SETTING(float, ConnectionLineHoverLightColor, 0.8f)                                                      \
    SETTING(bool, ConnectionAntialias, true)                                                                 \
    SETTING(bool, ConnectionToEdge, true)                                                                    \
    SETTING(bool, ConnectionBezier, true)                                                                    \
    SETTING(bool, ConnectionUsePinColor, true)                                                               \
    SETTING(float, ConnectionBezierTangentWidth, 20.0f)                                                      \
    SETTING(Color, ConnectionTmpColor, 0.8f, 0.8f, 0.8f, 0.5f)                                               \
    SETTING(Color, ConnectionTmpConnectedColor, 0.0f, 0.8f, 0.0f, 1.0f)                                      \
    SETTING(int, ConnectionDashLineLength, 2)                                                                \
    SETTING(int, ConnectionDashHoleLength, 4)                                                                \
    SETTING(float, ConnectionDoubleLineOffsetFactor, 2.0f)                                                   \
    SETTING(int, ConnectionImplicitHiddenByDefault, 1)                                                       \
    SETTING(bool, ConnectionDrawArrow, false)                                                                \
    SETTING(float, ConnectionArrowWidth, 7.0f)                                                               \
    SETTING(float, ConnectionArrowLength, 10.0f)                                                             \
    SETTING(float, ConnectionArrowOffset, 15.0f)                                                             \
    SETTING(Color, ConnectionInternalLineColor, 0.0f, 0.0f, 0.0f, 0.15f)                                     \
    SETTING(float, ConnectionInternalTangentWidth, 0.5f)                                                     \
    SETTING(float, DefaultConnectionZ, 2.0f)                                                                 \
    SETTING(float, NodeBorderWidth, 1.0f)                                                                    \
    SETTING(float, NodeSelectedBorderWidth, 5.0f)                                                            \
    SETTING(float, NodeRoundRectangleSize, 5.0f)                                                             \
    SETTING(Color, NodeBorderColor, 0.5f, 0.5f, 0.5f, 0.0f)                                                  \
    SETTING(Color, NodeBorderSelectedColor, 1.0f, 1.0f, 1.0f, 1.0f)                                          \
    SETTING(Color, NodeBorderHoverColor, 0.8f, 0.8f, 0.8f, 1.0f)                                             \
    SETTING(FloatPair, NodeMinSize, 10.0f, 10.0f)                                                            \
    SETTING(FloatPair, NodeMaxSize, 150.0f, largest)                                                         \
    SETTING(FloatPair, NodeLabelPosition, 0.0f, 0.0f)                                                        \
    SETTING(float, NodeLabelHeight, 10.0f)                                                                   \
    SETTING(bool, NodeLabelVerticalCentered, false)                                                          \
    SETTING(bool, NodeLabelHorizontalCentered, false)                                                        \
    SETTING(bool, NodeAntialias, true)                                                                       \
    SETTING(Color, NodeTextColor, 0.0f, 0.0f, 0.0f, 1.0f)                                                    \
    SETTING(bool, NodeDoubleClickToRename, false)                                                            \
    SETTING(bool, NodeDoubleClickToCollapse, true)                                                           \
    SETTING(bool, NodeColapsedByDefault, false)                                                              \
    SETTING(float, NodeTagsHeight, 20.0f)                                                                    \
    SETTING(bool, NodeShowTags, false)                                                                       \
    SETTING(bool, NodeHorizontalInputPins, true)                                                             \
    SETTING(bool, NodeHorizontalOutputPins, true)                                                            \
    SETTING(Color, DefaultNodeColor, 0.6f, 0.7f, 0.8f, 1.0f)                                                 \
    SETTING(Color, DefaultInterfaceNodeColor, 0.9f, 0.7f, 0.2f, 1.0f)                                        \
    SETTING(Color, DefaultCompoundNodeColor, 0.8f, 0.6f, 0.8f, 1.0f)                                         \
    SETTING(bool, DrawNodeShadow, true)                                                                      \
    SETTING(FloatPair, NodeShadowGrow, 1.5f, 1.5f)                                                           \
    SETTING(FloatPair, NodeShadowOffset, 2.0f, 2.0f)                                                         \
    SETTING(float, NodeRFBrightFactor, 0.7f)                                                                 \
    SETTING(FloatPair, NodeGroupMargin, 15.0f, 15.0f)                                                        \
    SETTING(float, NodeRFwidth, 90.0f)                                                                       \
    SETTING(float, NodeRFhubWidth, 120.0f)                                                                   \
    SETTING(FloatPair, NodeRFgroupTabSize, 30.0f, 10.0f)                                                     \
    SETTING(float, NodeOutRingWidth, 10.0f)                                                                  \
    SETTING(float, NodeInRingWidth, 2.5f)                                                                    \
    SETTING(float, NodeOutRingMargin, 2.5f)                                                                  \
    SETTING(float, NodeInRingMargin, 1.25f)                                                                  \
    SETTING(Color, NodeInCircleColor, 0.118f, 0.118f, 0.118f, 1.0f)                                          \
    SETTING(int, NodeInnerRingStartAngle, -640)                                                              \
    SETTING(int, NodeInnerRingAngle, -1600)                                                                  \
    SETTING(bool, NodeShowBadge, false)                                                                      \
    SETTING(float, NodeBadgeMargin, 5.0f)                                                                    \
    SETTING(FloatPair, NodeBadgeSize, 12.0f, 12.0f)                                                          \
    SETTING(bool, NodeDrawInternalConnection, true)                                                          \
    SETTING(FloatPair, PinVerticalSize, 15.0f, 10.0f)                                                        \
    SETTING(FloatPair, PinHorizontalSize, 20.0f, 20.0f)                                                      \
    SETTING(FloatPair, PinVerticalOffset, 5.0f, 0.0f)                                                        \
    SETTING(FloatPair, PinHorizontalOffset, 0.0f, 0.0f)                                                      \
    SETTING(float, PinOffsetBottom, 5.0f)                                                                    \
    SETTING(float, PinVerticalInsideMargin, 5.0f)                                                            \
    SETTING(float, PinHorizontalInsideMargin, 10.0f)                                                         \
    SETTING(float, PinVerticalArrowMargin, 5.0f)                                                             \
    SETTING(float, PinHorizontalArrowMargin, 5.0f)                                                           \
    SETTING(Color, PinArrowColor, 0.2f, 0.2f, 0.2f, 1.0f)                                                    \
    SETTING(Color, PinArrowX_Color, 0.8f, 0.2f, 0.2f, 1.0f)                                                  \
    SETTING(float, PinArrowAlpha, 0.3f)                                                                      \
    SETTING(float, PinOffsetMiddle, 5.0f)                                                                    \
    SETTING(bool, PinShowName, true)                                                                         \
    SETTING(float, PinBorderWidth, 1.5f)                                                                     \
    SETTING(Color, PinBorderColor, 0.5f, 0.5f, 0.5f, 1.0f)                                                   \
    SETTING(Color, PinConnectedColor, 0.0f, 0.6f, 0.0f, 1.0f)                                                \
    SETTING(float, PinPartiallyConnectedAlpha, 0.8f)                                                         \
    SETTING(float, PinNotConnectedAlpha, 0.4f)                                                               \
    SETTING(bool, PinDrawCircle, true)                                                                       \
    SETTING(bool, PinAntialias, true)                                                                        \
    SETTING(Color, PinTextColor, 0.0f, 0.0f, 0.0f, 1.0f)                                                     \
    SETTING(bool, DrawPinShadow, true)                                                                       \
    SETTING(FloatPair, PinShadowGrow, -1.0f, -1.0f)                                                          \
    SETTING(FloatPair, PinShadowOffset, 1.5f, 1.5f)                                                          \
    SETTING(float, PinShadowAlpha, 0.2f)                                                                     \
    SETTING(FloatPair, FreeAreaMargin, 30.0f, 35.0f)                                                         \
    SETTING(FloatPair, FreeAreaMin, -50.0f, -50.0f)                                                          \
    SETTING(FloatPair, FreeAreaMax, 1000.0f, 1000.0f)                                                        \
    SETTING(FloatPair, FreeAreaStep, 20.0f, 20.0f)                                                           \
    SETTING(Color, ZoomAreaColor, 1.0f, 1.0f, 1.0f, 0.1f)                                                    \
    SETTING(Color, ZoomAreaLineColor, 1.0f, 1.0f, 1.0f, 1.0f)                                                \
    SETTING(float, ZoomAreaLineWidth, 1.0f)                                                                  \
    SETTING(bool, ZoomAreaLineDashed, true)                                                                  \
    SETTING(float, DefaultZoomZ, 10.0f)                                                                      \
    SETTING(Color, DefaultNoteColor, 0.0f, 1.0f, 1.0f, 0.4f)                                                 \
    SETTING(Color, DefaultNoteTextColor, 1.0f, 1.0f, 1.0f, 1.0f)                                             \
    SETTING(FloatPair, DefaultNoteSize, 100.0f, 50.0f)                                                       \
    SETTING(float, DefaultNoteBorderAlpha, 1.0f)                                                             \
    SETTING(float, DefaultNoteZ, -20.0f)                                                                     \
    SETTING(FloatPair, MinimumNoteSize, 30.0f, 20.0f)                                                        \
    SETTING(FloatPair, NoteHandlerSize, 20.0f, 20.0f)                                                        \
    SETTING(float, NoteHandlerAlpha, 0.3f)                                                                   \
    SETTING(FloatPair, NoteElideMargin, 5.0f, -5.0f)                                                         \
    SETTING(float, NoteElideSize, 20.0f)                                                                     \
    SETTING(KS_String, MenuStyle, menuStyle)                                                                 \
    SETTING(KS_String, GraphHelpCss, GraphSettings().getGraphHelpCss())                                      \
    SETTING(FloatPair, GraphHelpSize, 800.0f, 600.0f)                                                        \
    SETTING(float, GraphHelpVerticalMargin, 20.0f)                                                           \
    SETTING(float, GraphAutomaticLabelingSamplingPointsMax, 2000.0f)                                         \
    SETTING(float, GraphAutomaticLabelingSpiralRadiusMax, 3710.7f)                                           \
    SETTING(float, GraphAutomaticLabelingSpiralNoOfRotations, 532.0f)                                        \
    SETTING(float, GraphAutomaticLabelingMargin, 8.0f)                                                       \
    SETTING(float, GraphAutomaticLabelingBordersMinX, -10000.0f)                                             \
    SETTING(float, GraphAutomaticLabelingBordersMinY, -10000.0f)                                             \
    SETTING(float, GraphAutomaticLabelingBordersMaxX, 19900.0f)                                              \
    SETTING(float, GraphAutomaticLabelingBordersMaxY, 19900.0f)
// clang-format on

// ---- The types of the accessors

#define EXPECT_TYPES(Type, Name, ...)                                                                        \
    static_assert(                                                                                           \
        std::is_same_v<decltype(&GraphSettings::get##Name), Type const& (GraphSettings::*)() const>);        \
    static_assert(std::is_same_v<decltype(&GraphSettings::ref##Name), Type& (GraphSettings::*)()>);          \
    static_assert(std::is_same_v<decltype(&GraphSettings::set##Name), void (GraphSettings::*)(Type const&)>);

FOR_EACH_SETTING(EXPECT_TYPES)
#undef EXPECT_TYPES

static_assert(std::is_base_of_v<KS_Class, GraphSettings>);
static_assert(std::is_copy_constructible_v<GraphSettings>);
static_assert(std::is_copy_assignable_v<GraphSettings>);
static_assert(std::is_same_v<decltype(&GraphSettings::initialize), void (GraphSettings::*)()>);
static_assert(std::is_same_v<decltype(&GraphSettings::toXml), KS_String (GraphSettings::*)() const>);

// ---- The settings as a list

using Value = std::variant<bool, int, float, Color, FloatPair, IntPair, KS_String>;

struct Setting
{
    char const* name;
    Value byDefault;
    Value (*get)(GraphSettings const& settings);
    void (*set)(GraphSettings& settings, Value const& value);
    void (*assignThroughRef)(GraphSettings& settings, Value const& value);
    void const* (*addressOfGet)(GraphSettings const& settings);
    void const* (*addressOfRef)(GraphSettings& settings);
};

template <class T, auto getOperation, auto refOperation, auto setOperation>
Setting settingOf(char const* name, T const& byDefault)
{
    return {name,
            byDefault,
            [](GraphSettings const& settings) { return Value((settings.*getOperation)()); },
            [](GraphSettings& settings, Value const& value) { (settings.*setOperation)(std::get<T>(value)); },
            [](GraphSettings& settings, Value const& value)
            { (settings.*refOperation)() = std::get<T>(value); },
            [](GraphSettings const& settings) -> void const* { return &(settings.*getOperation)(); },
            [](GraphSettings& settings) -> void const* { return &(settings.*refOperation)(); }};
}

#define SETTING_OF(Type, Name, ...)                                                                          \
    settingOf<Type, &GraphSettings::get##Name, &GraphSettings::ref##Name, &GraphSettings::set##Name>(        \
        #Name, Type(__VA_ARGS__)),

std::vector<Setting> const& allSettings()
{
    static std::vector<Setting> const settings{FOR_EACH_SETTING(SETTING_OF)};
    return settings;
}
#undef SETTING_OF
#undef FOR_EACH_SETTING

std::vector<std::string> differences(GraphSettings const& a, GraphSettings const& b)
{
    std::vector<std::string> names;
    for (Setting const& setting : allSettings())
        if (!(setting.get(a) == setting.get(b))) names.push_back(setting.name);
    return names;
}

template <class T>
T otherNumber(T number)
{
    return number == 0 ? T(1) : -number;
}

/// A value that differs from the given one in each of its components.
struct OtherValue
{
    Value operator()(bool flag) const { return !flag; }
    Value operator()(int number) const { return otherNumber(number); }
    Value operator()(float number) const { return otherNumber(number); }
    Value operator()(Color const& color) const
    {
        return Color(otherNumber(color.red), otherNumber(color.green), otherNumber(color.blue),
                     otherNumber(color.alpha));
    }
    template <class T>
    Value operator()(Tuple2<T, T> const& pair) const
    {
        return Tuple2<T, T>(otherNumber(pair.first), otherNumber(pair.second));
    }
    Value operator()(KS_String const& text) const { return text + "\xE9 changed"; }
};

Value changedValueOf(Setting const& setting)
{
    return std::visit(OtherValue(), setting.byDefault);
}

GraphSettings changedSettings()
{
    GraphSettings settings;
    for (Setting const& setting : allSettings()) setting.set(settings, changedValueOf(setting));
    return settings;
}

void expectAllChanged(GraphSettings const& settings)
{
    for (Setting const& setting : allSettings())
        EXPECT_TRUE(setting.get(settings) == changedValueOf(setting)) << setting.name;
}

// ---- Defaults

TEST(GraphSettings, HaveTheirDefaultsWhenNew)
{
    EXPECT_EQ(allSettings().size(), 172u);
    GraphSettings const settings;
    for (Setting const& setting : allSettings())
        EXPECT_TRUE(setting.get(settings) == setting.byDefault) << setting.name;
}

TEST(GraphSettings, HaveTheirDefaultsAgainWhenInitialized)
{
    GraphSettings settings = changedSettings();
    EXPECT_EQ(differences(settings, GraphSettings()).size(), allSettings().size());
    settings.initialize();
    EXPECT_THAT(differences(settings, GraphSettings()), IsEmpty());
    settings.initialize();
    EXPECT_THAT(differences(settings, GraphSettings()), IsEmpty());
}

TEST(GraphSettings, LetANodeBeAnyHeight)
{
    EXPECT_EQ(GraphSettings().getNodeMaxSize(), FloatPair(150.0f, 3.4028235e38f));
}

TEST(GraphSettings, OffsetVerticalPinsByTheDefaultSizeOfTheRoundCorners)
{
    GraphSettings settings;
    EXPECT_EQ(settings.getPinVerticalOffset(), FloatPair(5.0f, 0.0f));
    settings.setNodeRoundRectangleSize(9.0f);
    EXPECT_EQ(settings.getPinVerticalOffset(), FloatPair(5.0f, 0.0f));
    settings.initialize();
    EXPECT_EQ(settings.getPinVerticalOffset(), FloatPair(5.0f, 0.0f));
    EXPECT_EQ(settings.getNodeRoundRectangleSize(), 5.0f);
}

TEST(GraphSettings, StyleMenusByATextOfTwoRules)
{
    GraphSettings const settings;
    EXPECT_EQ(settings.getMenuStyle().length(), 87u);
    EXPECT_STREQ(settings.getMenuStyle().c_str(), menuStyle);
}

// ---- Each setting by itself

TEST(GraphSettings, AreSetOneAtATime)
{
    GraphSettings const defaults;
    for (Setting const& setting : allSettings())
    {
        GraphSettings settings;
        setting.set(settings, changedValueOf(setting));
        EXPECT_TRUE(setting.get(settings) == changedValueOf(setting)) << setting.name;
        EXPECT_THAT(differences(settings, defaults), ElementsAre(setting.name));
    }
}

TEST(GraphSettings, AreChangedThroughTheirReferenceOneAtATime)
{
    GraphSettings const defaults;
    for (Setting const& setting : allSettings())
    {
        GraphSettings settings;
        setting.assignThroughRef(settings, changedValueOf(setting));
        EXPECT_TRUE(setting.get(settings) == changedValueOf(setting)) << setting.name;
        EXPECT_THAT(differences(settings, defaults), ElementsAre(setting.name));
    }
}

TEST(GraphSettings, AreOneValueForAllThreeAccessors)
{
    GraphSettings settings;
    for (Setting const& setting : allSettings())
        EXPECT_EQ(setting.addressOfGet(settings), setting.addressOfRef(settings)) << setting.name;
}

TEST(GraphSettings, StandInTheOrderOfTheirDeclaration)
{
    GraphSettings settings;
    void const* last = &settings;
    for (Setting const& setting : allSettings())
    {
        void const* const address = setting.addressOfRef(settings);
        EXPECT_TRUE(std::less<>()(last, address)) << setting.name;
        last = address;
    }
    EXPECT_TRUE(std::less<>()(last, &settings + 1));
}

TEST(GraphSettings, TakeAnyValueAsItIs)
{
    GraphSettings settings;
    settings.setGhostAlpha(-7.5f);
    settings.setMaxSceneZoom(std::numeric_limits<float>::infinity());
    settings.setGridSize(std::numeric_limits<int>::min());
    settings.setGridColor(Color(-1.0f, 2.0f, 100.0f, largest));
    EXPECT_EQ(settings.getGhostAlpha(), -7.5f);
    EXPECT_EQ(settings.getMaxSceneZoom(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(settings.getGridSize(), std::numeric_limits<int>::min());
    EXPECT_EQ(settings.getGridColor(), Color(-1.0f, 2.0f, 100.0f, largest));
}

TEST(GraphSettings, MayBeSetFromEachOther)
{
    GraphSettings settings;
    settings.setMenuStyle(settings.getMenuStyle());
    settings.setGraphHelpCss(settings.getMenuStyle());
    EXPECT_STREQ(settings.getMenuStyle().c_str(), menuStyle);
    EXPECT_STREQ(settings.getGraphHelpCss().c_str(), menuStyle);
    settings.setGridColor(settings.getToolTipTextColor());
    EXPECT_EQ(settings.getGridColor(), Color(1.0f, 1.0f, 1.0f, 1.0f));
}

// ---- Copies

TEST(GraphSettings, AreAllCopied)
{
    GraphSettings const source = changedSettings();
    GraphSettings const copy(source);
    GraphSettings assigned;
    assigned = source;
    expectAllChanged(copy);
    expectAllChanged(assigned);
    assigned = GraphSettings();
    EXPECT_THAT(differences(assigned, GraphSettings()), IsEmpty());
}

TEST(GraphSettings, OfACopyAreItsOwn)
{
    auto source = std::make_unique<GraphSettings>(changedSettings());
    GraphSettings const copy(*source);
    GraphSettings assigned;
    assigned = *source;
    source->initialize();
    expectAllChanged(copy);
    expectAllChanged(assigned);
    source.reset();
    expectAllChanged(copy);
    expectAllChanged(assigned);
}

TEST(GraphSettings, AssignedToThemselvesStayAsTheyAre)
{
    GraphSettings settings = changedSettings();
    GraphSettings const& same = settings;
    settings = same;
    expectAllChanged(settings);
}

TEST(GraphSettings, MoveAndLeaveARecordThatMayBeInitialized)
{
    GraphSettings source = changedSettings();
    GraphSettings taker(std::move(source));
    expectAllChanged(taker);
    source.initialize();
    EXPECT_THAT(differences(source, GraphSettings()), IsEmpty());
    source = std::move(taker);
    expectAllChanged(source);
}

TEST(GraphSettings, StayChangedWhileAnotherRecordIsInitialized)
{
    GraphSettings const changed = changedSettings();
    GraphSettings other;
    other.refGraphHelpCss() += "changed";
    other.initialize();
    GraphSettings const fresh;
    EXPECT_EQ(fresh.getGraphHelpCss(), other.getGraphHelpCss());
    expectAllChanged(changed);
}

// ---- The text

constexpr char emptyElement[] = "<GraphSettings>\n</GraphSettings>\n";

TEST(GraphSettings, AreWrittenAsAnEmptyElementWhateverTheyHold)
{
    EXPECT_STREQ(GraphSettings().toXml().c_str(), emptyElement);
    EXPECT_STREQ(changedSettings().toXml().c_str(), emptyElement);
}

/// A host's settings, which are written.
class WrittenSettings : public GraphSettings
{
public:
    explicit WrittenSettings(bool& gone) : gone_(gone) {}
    WrittenSettings(WrittenSettings const&) = delete;
    WrittenSettings& operator=(WrittenSettings const&) = delete;
    ~WrittenSettings() override { gone_ = true; }

    KS_String toXml() const override
    {
        KS_String text;
        text.format("<GridSize>%d</GridSize>\n", getGridSize());
        return GraphSettings::toXml() + text;
    }

private:
    bool& gone_;
};

TEST(GraphSettings, MayBeWrittenByAHost)
{
    bool gone = false;
    WrittenSettings const written(gone);
    GraphSettings const& settings = written;
    EXPECT_STREQ(settings.toXml().c_str(), "<GraphSettings>\n</GraphSettings>\n<GridSize>80</GridSize>\n");
}

TEST(GraphSettings, OfAHostAreDeletedThroughTheBase)
{
    bool gone = false;
    KS_Class* const settings = new WrittenSettings(gone);
    EXPECT_FALSE(gone);
    delete settings;
    EXPECT_TRUE(gone);
}

// ---- The help style sheet

/// `selector { body }`, and the condition of the block around it, if there is one.
struct StyleRule
{
    std::string condition;
    std::string selector;
    std::string body;
};

std::string trimmed(std::string_view text)
{
    auto const isSpace = [](char byte) { return std::isspace(static_cast<unsigned char>(byte)) != 0; };
    auto const first = std::find_if_not(text.begin(), text.end(), isSpace);
    auto const last = std::find_if_not(text.rbegin(), text.rend(), isSpace).base();
    return first < last ? std::string(first, last) : std::string();
}

std::vector<std::string> split(std::string const& text, std::string_view separators)
{
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();)
    {
        std::size_t const end = std::min(text.find_first_of(separators, start), text.size());
        if (end > start) parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string lowerCase(std::string text)
{
    for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
    return text;
}

std::string withoutComments(std::string css)
{
    for (std::size_t start = css.find("/*"); start != std::string::npos; start = css.find("/*", start))
    {
        std::size_t const end = css.find("*/", start + 2);
        if (end == std::string::npos) return css;
        css.erase(start, end + 2 - start);
    }
    return css;
}

/// Position behind the brace that closes the one at `open`; the end if there is none.
std::size_t endOfBlock(std::string const& css, std::size_t open)
{
    int depth = 0;
    for (std::size_t i = open; i < css.size(); ++i)
    {
        if (css[i] == '{') ++depth;
        if (css[i] == '}' && --depth == 0) return i + 1;
    }
    return css.size();
}

void gatherRules(std::string const& css, std::string const& condition, std::vector<StyleRule>& rules)
{
    std::size_t start = 0;
    for (std::size_t open = css.find('{'); open != std::string::npos; open = css.find('{', start))
    {
        std::string const selector = trimmed(std::string_view(css).substr(start, open - start));
        start = endOfBlock(css, open);
        std::string const body = trimmed(std::string_view(css).substr(open + 1, start - open - 2));
        if (selector.starts_with("@media"))
            gatherRules(body, selector, rules);
        else
            rules.push_back({condition, selector, body});
    }
}

class HelpCss : public ::testing::Test
{
protected:
    HelpCss() { gatherRules(css, "", rules); }

    std::string const css = withoutComments(lowerCase(std::string(GraphSettings().getGraphHelpCss())));
    std::vector<StyleRule> rules;
};

TEST_F(HelpCss, HasRules)
{
    EXPECT_FALSE(GraphSettings().getGraphHelpCss().isEmpty());
    EXPECT_FALSE(rules.empty());
}

TEST_F(HelpCss, ClosesEveryBraceAndCommentThatItOpens)
{
    int depth = 0;
    for (char byte : css)
    {
        if (byte == '{') ++depth;
        if (byte == '}') --depth;
        ASSERT_GE(depth, 0);
    }
    EXPECT_EQ(depth, 0);
    EXPECT_EQ(css.find("/*"), std::string::npos);
    EXPECT_EQ(css.find("*/"), std::string::npos);
}

TEST_F(HelpCss, HasASelectorAndDeclarationsInEveryRule)
{
    for (StyleRule const& rule : rules)
    {
        SCOPED_TRACE(rule.selector + " { " + rule.body + " }");
        EXPECT_FALSE(rule.selector.empty());
        std::vector<std::string> const declarations = split(rule.body, ";");
        EXPECT_FALSE(declarations.empty());
        for (std::string const& declaration : declarations)
        {
            std::size_t const colon = declaration.find(':');
            if (trimmed(declaration).empty()) continue;
            ASSERT_NE(colon, std::string::npos) << declaration;
            std::string const property = trimmed(std::string_view(declaration).substr(0, colon));
            EXPECT_EQ(property.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), std::string::npos);
            EXPECT_FALSE(property.empty()) << declaration;
            EXPECT_FALSE(trimmed(std::string_view(declaration).substr(colon + 1)).empty()) << declaration;
        }
    }
}

TEST_F(HelpCss, StylesTheElementsOfAHelpPage)
{
    std::set<std::string> elements;
    for (StyleRule const& rule : rules)
        for (std::string const& part : split(rule.selector, " \t\n,>+~"))
            elements.insert(part.substr(0, part.find_first_of(".#:[")));
    EXPECT_THAT(elements, IsSupersetOf({"h1", "h2", "h3", "p", "table", "code", "pre", "ul", "ol"}));
}

TEST_F(HelpCss, HasADarkColorScheme)
{
    auto const dark =
        std::count_if(rules.begin(), rules.end(),
                      [](StyleRule const& rule)
                      {
                          return rule.condition.find("prefers-color-scheme: dark") != std::string::npos &&
                                 rule.body.find('#') != std::string::npos;
                      });
    EXPECT_GT(dark, 0);
}

TEST_F(HelpCss, LoadsNothingAndDoesNotEndItsElement)
{
    for (char const* refused : {"@import", "url(", "</style", "<!--", "javascript:", "expression("})
        EXPECT_EQ(css.find(refused), std::string::npos) << refused;
}

} // namespace

} // namespace kestrel::graph::test
