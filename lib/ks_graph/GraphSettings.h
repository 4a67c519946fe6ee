/// @file
#pragma once

#include <foundation/Color4.h>
#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <foundation/Tuple2.h>
#include <ks_graph/ks_graph_api.h>

#include <cfloat>

// clang-format off
/// Declares one property of `GraphSettings` with its type, its default and its three accessors.
#define KS_GRAPH_SETTING(Type, Name, ...)                                                                    \
public:                                                                                                      \
    Type const& get##Name() const { return Name##_; }                                                        \
    Type& ref##Name() { return Name##_; }                                                                    \
    void set##Name(Type const& value) { Name##_ = value; }                                                   \
                                                                                                             \
private:                                                                                                     \
    Type Name##_{__VA_ARGS__}
// clang-format on

namespace kestrel::graph
{

/// The visual and behavioural settings of a node-graph editor, with one set of defaults: a plain record. The
/// library draws nothing and reads none of them, attaches no units to them, checks and clamps nothing, and
/// tells nobody of a change; what a value means is up to the editor that draws with it. One thread at a time
/// uses a record.
///
/// Each property below has `getName() const`, `refName()` and `setName(value)`, and is written as its type,
/// its name and its default. Colours are red, green, blue, alpha in 0..1; pairs are x, y or width, height.
class KS_GRAPH_API GraphSettings : public KS_Class
{
public:
    /// All three are short names for types of properties.
    using Color = Color4<float>;
    using FloatPair = Tuple2<float, float>;
    using IntPair = Tuple2<int, int>;

    /// Every property has its default.
    GraphSettings();
    GraphSettings(GraphSettings const&) = default;
    GraphSettings(GraphSettings&&) noexcept = default;
    /// When an allocation fails, the record is as it was.
    GraphSettings& operator=(GraphSettings const& other);
    GraphSettings& operator=(GraphSettings&&) noexcept = default;
    ~GraphSettings() override;

    /// "<GraphSettings>" and "</GraphSettings>", each ended by a line feed, whatever the record holds: the
    /// settings are no part of the exported graph. An override may write them.
    virtual KS_String toXml() const;

    /// Gives every property its default again. When an allocation fails, the record is as it was.
    void initialize();

    /// @name Canvas
    /// Either one background colour or a gradient from top to bottom; a grid of `GridSize` units.
    /// @{
    KS_GRAPH_SETTING(Color, BackgroundTopColor, 0.3f, 0.3f, 0.3f, 1.0f);
    KS_GRAPH_SETTING(Color, BackgroundBottomColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(Color, BackgroundColor, 0.2f, 0.2f, 0.2f, 1.0f);
    KS_GRAPH_SETTING(bool, UseOpenGL, false);
    KS_GRAPH_SETTING(bool, UseGrid, false);
    KS_GRAPH_SETTING(bool, ShowToolTip, false);
    KS_GRAPH_SETTING(Color, GridColor, 0.27f, 0.27f, 0.27f, 1.0f);
    KS_GRAPH_SETTING(int, GridSize, 80);
    KS_GRAPH_SETTING(float, GhostAlpha, 0.1f);
    KS_GRAPH_SETTING(bool, GlobalAntialias, true);
    /// @}

    /// @name Zooming
    /// Factors of magnification.
    /// @{
    KS_GRAPH_SETTING(float, MaxSceneZoom, 5.0f);
    KS_GRAPH_SETTING(float, MinSceneZoom, 0.2f);
    KS_GRAPH_SETTING(float, SceneZoomEpsilon, 0.005f);
    /// An int, though `DragZoomFactor` is a float.
    KS_GRAPH_SETTING(int, ZoomFactor, 1);
    KS_GRAPH_SETTING(float, DragZoomFactor, 1.0f);
    /// @}

    /// @name Navigator
    /// The overview of the whole canvas.
    /// @{
    KS_GRAPH_SETTING(bool, DrawNodeProxies, true);
    KS_GRAPH_SETTING(bool, UseNavigator, true);
    KS_GRAPH_SETTING(IntPair, NavigatorSize, 192, 120);
    KS_GRAPH_SETTING(float, NavigatorMargin, 50.0f);
    KS_GRAPH_SETTING(int, NavigatorBorderSize, 1);
    KS_GRAPH_SETTING(Color, NavigatorBorderColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(Color, NavigatorRectColor, 0.8f, 0.8f, 0.8f, 0.2f);
    KS_GRAPH_SETTING(bool, NavigatorAntialiasing, true);
    /// @}

    /// @name Root
    /// @{
    KS_GRAPH_SETTING(KS_String, DefaultRootName, "root");
    /// @}

    /// @name Tab menu
    /// The menu from which nodes are created by typing a part of their name.
    /// @{
    KS_GRAPH_SETTING(bool, TabMenuMatchAny, true);
    KS_GRAPH_SETTING(bool, TabMenuCaseSensitive, false);
    KS_GRAPH_SETTING(int, TabMenuLimit, 100);
    KS_GRAPH_SETTING(bool, TabMenuIgnoreFirstCharacter, true);
    /// @}

    /// @name Labels, icons and events
    /// @{
    KS_GRAPH_SETTING(Color, LabelBackgroundColor, 0.0f, 0.0f, 0.0f, 0.0f);
    KS_GRAPH_SETTING(Color, LabelEditingBackgroundColor, 1.0f, 1.0f, 1.0f, 0.8f);
    KS_GRAPH_SETTING(float, LabelSideMargin, 30.0f);
    KS_GRAPH_SETTING(KS_String, IconsFolder, "");
    KS_GRAPH_SETTING(bool, CatchEventsOutsideWidget, false);
    /// @}

    /// @name Compound caption
    /// What tells which compound is being shown.
    /// @{
    KS_GRAPH_SETTING(bool, ShowCompoundCaption, true);
    KS_GRAPH_SETTING(float, CompoundCaptionSize, 15.0f);
    KS_GRAPH_SETTING(float, CompoundCaptionArrowSize, 18.0f);
    KS_GRAPH_SETTING(bool, CompoundCaptionBrighter, true);
    KS_GRAPH_SETTING(float, CompoundCaptionAlpha, 0.5f);
    KS_GRAPH_SETTING(FloatPair, CompoundCaptionOffset, 3.0f, 0.0f);
    /// @}

    /// @name Tool tips
    /// @{
    KS_GRAPH_SETTING(int, ToolTipShowTimeOut, 400);
    KS_GRAPH_SETTING(int, ToolTipHideTimeOut, 300);
    KS_GRAPH_SETTING(Color, ToolTipBackgroundColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(Color, ToolTipBorderColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(Color, ToolTipTextColor, 1.0f, 1.0f, 1.0f, 1.0f);
    KS_GRAPH_SETTING(float, ToolTipMinimumWidth, 100.0f);
    KS_GRAPH_SETTING(float, ToolTipMinimumHeight, 50.0f);
    KS_GRAPH_SETTING(float, ToolTipArrowWidth, 20.0f);
    KS_GRAPH_SETTING(float, ToolTipArrowHeight, 20.0f);
    KS_GRAPH_SETTING(float, DefaultToolTipZ, 20.0f);
    /// @}

    /// @name Connections
    /// Drawn from the output pin to the input pin as a line or a curve, with an arrow if wanted.
    /// @{
    KS_GRAPH_SETTING(float, ConnectionLineWidth, 1.5f);
    KS_GRAPH_SETTING(float, ConnectionLineOffset, 1.0f);
    KS_GRAPH_SETTING(Color, ConnectionLineColor, 0.7f, 0.7f, 0.7f, 1.0f);
    KS_GRAPH_SETTING(float, ConnectionLineSelectedLightColor, 0.5f);
    KS_GRAPH_SETTING(float, ConnectionLineHoverLightColor, 0.8f);
    KS_GRAPH_SETTING(bool, ConnectionAntialias, true);
    KS_GRAPH_SETTING(bool, ConnectionToEdge, true);
    KS_GRAPH_SETTING(bool, ConnectionBezier, true);
    KS_GRAPH_SETTING(bool, ConnectionUsePinColor, true);
    KS_GRAPH_SETTING(float, ConnectionBezierTangentWidth, 20.0f);
    KS_GRAPH_SETTING(Color, ConnectionTmpColor, 0.8f, 0.8f, 0.8f, 0.5f);
    KS_GRAPH_SETTING(Color, ConnectionTmpConnectedColor, 0.0f, 0.8f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(int, ConnectionDashLineLength, 2);
    KS_GRAPH_SETTING(int, ConnectionDashHoleLength, 4);
    KS_GRAPH_SETTING(float, ConnectionDoubleLineOffsetFactor, 2.0f);
    /// An int that says yes or no.
    KS_GRAPH_SETTING(int, ConnectionImplicitHiddenByDefault, 1);
    KS_GRAPH_SETTING(bool, ConnectionDrawArrow, false);
    KS_GRAPH_SETTING(float, ConnectionArrowWidth, 7.0f);
    KS_GRAPH_SETTING(float, ConnectionArrowLength, 10.0f);
    KS_GRAPH_SETTING(float, ConnectionArrowOffset, 15.0f);
    KS_GRAPH_SETTING(Color, ConnectionInternalLineColor, 0.0f, 0.0f, 0.0f, 0.15f);
    KS_GRAPH_SETTING(float, ConnectionInternalTangentWidth, 0.5f);
    KS_GRAPH_SETTING(float, DefaultConnectionZ, 2.0f);
    /// @}

    /// @name Nodes
    /// @{
    KS_GRAPH_SETTING(float, NodeBorderWidth, 1.0f);
    KS_GRAPH_SETTING(float, NodeSelectedBorderWidth, 5.0f);
    KS_GRAPH_SETTING(float, NodeRoundRectangleSize, 5.0f);
    KS_GRAPH_SETTING(Color, NodeBorderColor, 0.5f, 0.5f, 0.5f, 0.0f);
    KS_GRAPH_SETTING(Color, NodeBorderSelectedColor, 1.0f, 1.0f, 1.0f, 1.0f);
    KS_GRAPH_SETTING(Color, NodeBorderHoverColor, 0.8f, 0.8f, 0.8f, 1.0f);
    KS_GRAPH_SETTING(FloatPair, NodeMinSize, 10.0f, 10.0f);
    /// Any height.
    KS_GRAPH_SETTING(FloatPair, NodeMaxSize, 150.0f, FLT_MAX);
    KS_GRAPH_SETTING(FloatPair, NodeLabelPosition, 0.0f, 0.0f);
    KS_GRAPH_SETTING(float, NodeLabelHeight, 10.0f);
    KS_GRAPH_SETTING(bool, NodeLabelVerticalCentered, false);
    KS_GRAPH_SETTING(bool, NodeLabelHorizontalCentered, false);
    KS_GRAPH_SETTING(bool, NodeAntialias, true);
    KS_GRAPH_SETTING(Color, NodeTextColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(bool, NodeDoubleClickToRename, false);
    KS_GRAPH_SETTING(bool, NodeDoubleClickToCollapse, true);
    /// Spelled with one l.
    KS_GRAPH_SETTING(bool, NodeColapsedByDefault, false);
    KS_GRAPH_SETTING(float, NodeTagsHeight, 20.0f);
    KS_GRAPH_SETTING(bool, NodeShowTags, false);
    KS_GRAPH_SETTING(bool, NodeHorizontalInputPins, true);
    KS_GRAPH_SETTING(bool, NodeHorizontalOutputPins, true);
    KS_GRAPH_SETTING(Color, DefaultNodeColor, 0.6f, 0.7f, 0.8f, 1.0f);
    KS_GRAPH_SETTING(Color, DefaultInterfaceNodeColor, 0.9f, 0.7f, 0.2f, 1.0f);
    KS_GRAPH_SETTING(Color, DefaultCompoundNodeColor, 0.8f, 0.6f, 0.8f, 1.0f);
    KS_GRAPH_SETTING(bool, DrawNodeShadow, true);
    KS_GRAPH_SETTING(FloatPair, NodeShadowGrow, 1.5f, 1.5f);
    KS_GRAPH_SETTING(FloatPair, NodeShadowOffset, 2.0f, 2.0f);
    /// @}

    /// @name Nodes of the workflow family
    /// @{
    KS_GRAPH_SETTING(float, NodeRFBrightFactor, 0.7f);
    KS_GRAPH_SETTING(FloatPair, NodeGroupMargin, 15.0f, 15.0f);
    KS_GRAPH_SETTING(float, NodeRFwidth, 90.0f);
    KS_GRAPH_SETTING(float, NodeRFhubWidth, 120.0f);
    KS_GRAPH_SETTING(FloatPair, NodeRFgroupTabSize, 30.0f, 10.0f);
    KS_GRAPH_SETTING(float, NodeOutRingWidth, 10.0f);
    KS_GRAPH_SETTING(float, NodeInRingWidth, 2.5f);
    KS_GRAPH_SETTING(float, NodeOutRingMargin, 2.5f);
    KS_GRAPH_SETTING(float, NodeInRingMargin, 1.25f);
    KS_GRAPH_SETTING(Color, NodeInCircleColor, 0.118f, 0.118f, 0.118f, 1.0f);
    /// The two ring angles are ints.
    KS_GRAPH_SETTING(int, NodeInnerRingStartAngle, -640);
    KS_GRAPH_SETTING(int, NodeInnerRingAngle, -1600);
    /// @}

    /// @name Badges and lines inside nodes
    /// @{
    KS_GRAPH_SETTING(bool, NodeShowBadge, false);
    KS_GRAPH_SETTING(float, NodeBadgeMargin, 5.0f);
    KS_GRAPH_SETTING(FloatPair, NodeBadgeSize, 12.0f, 12.0f);
    KS_GRAPH_SETTING(bool, NodeDrawInternalConnection, true);
    /// @}

    /// @name Pins
    /// "Horizontal" pins stand at the sides of a node, "vertical" ones along its upper and lower edge.
    /// @{
    KS_GRAPH_SETTING(FloatPair, PinVerticalSize, 15.0f, 10.0f);
    KS_GRAPH_SETTING(FloatPair, PinHorizontalSize, 20.0f, 20.0f);
    /// As far in as the corners are round: the x is the default of `NodeRoundRectangleSize`.
    KS_GRAPH_SETTING(FloatPair, PinVerticalOffset, NodeRoundRectangleSize_, 0.0f);
    KS_GRAPH_SETTING(FloatPair, PinHorizontalOffset, 0.0f, 0.0f);
    KS_GRAPH_SETTING(float, PinOffsetBottom, 5.0f);
    KS_GRAPH_SETTING(float, PinVerticalInsideMargin, 5.0f);
    KS_GRAPH_SETTING(float, PinHorizontalInsideMargin, 10.0f);
    KS_GRAPH_SETTING(float, PinVerticalArrowMargin, 5.0f);
    KS_GRAPH_SETTING(float, PinHorizontalArrowMargin, 5.0f);
    KS_GRAPH_SETTING(Color, PinArrowColor, 0.2f, 0.2f, 0.2f, 1.0f);
    KS_GRAPH_SETTING(Color, PinArrowX_Color, 0.8f, 0.2f, 0.2f, 1.0f);
    KS_GRAPH_SETTING(float, PinArrowAlpha, 0.3f);
    KS_GRAPH_SETTING(float, PinOffsetMiddle, 5.0f);
    KS_GRAPH_SETTING(bool, PinShowName, true);
    KS_GRAPH_SETTING(float, PinBorderWidth, 1.5f);
    KS_GRAPH_SETTING(Color, PinBorderColor, 0.5f, 0.5f, 0.5f, 1.0f);
    KS_GRAPH_SETTING(Color, PinConnectedColor, 0.0f, 0.6f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(float, PinPartiallyConnectedAlpha, 0.8f);
    KS_GRAPH_SETTING(float, PinNotConnectedAlpha, 0.4f);
    KS_GRAPH_SETTING(bool, PinDrawCircle, true);
    KS_GRAPH_SETTING(bool, PinAntialias, true);
    KS_GRAPH_SETTING(Color, PinTextColor, 0.0f, 0.0f, 0.0f, 1.0f);
    KS_GRAPH_SETTING(bool, DrawPinShadow, true);
    KS_GRAPH_SETTING(FloatPair, PinShadowGrow, -1.0f, -1.0f);
    KS_GRAPH_SETTING(FloatPair, PinShadowOffset, 1.5f, 1.5f);
    KS_GRAPH_SETTING(float, PinShadowAlpha, 0.2f);
    /// @}

    /// @name Free area
    /// Where the search for a free place for a node looks.
    /// @{
    KS_GRAPH_SETTING(FloatPair, FreeAreaMargin, 30.0f, 35.0f);
    KS_GRAPH_SETTING(FloatPair, FreeAreaMin, -50.0f, -50.0f);
    KS_GRAPH_SETTING(FloatPair, FreeAreaMax, 1000.0f, 1000.0f);
    KS_GRAPH_SETTING(FloatPair, FreeAreaStep, 20.0f, 20.0f);
    /// @}

    /// @name Zoom area
    /// The rectangle that is dragged to zoom into it.
    /// @{
    KS_GRAPH_SETTING(Color, ZoomAreaColor, 1.0f, 1.0f, 1.0f, 0.1f);
    KS_GRAPH_SETTING(Color, ZoomAreaLineColor, 1.0f, 1.0f, 1.0f, 1.0f);
    KS_GRAPH_SETTING(float, ZoomAreaLineWidth, 1.0f);
    KS_GRAPH_SETTING(bool, ZoomAreaLineDashed, true);
    KS_GRAPH_SETTING(float, DefaultZoomZ, 10.0f);
    /// @}

    /// @name Notes
    /// For what a `NoteDesc` leaves absent, among others.
    /// @{
    KS_GRAPH_SETTING(Color, DefaultNoteColor, 0.0f, 1.0f, 1.0f, 0.4f);
    KS_GRAPH_SETTING(Color, DefaultNoteTextColor, 1.0f, 1.0f, 1.0f, 1.0f);
    KS_GRAPH_SETTING(FloatPair, DefaultNoteSize, 100.0f, 50.0f);
    KS_GRAPH_SETTING(float, DefaultNoteBorderAlpha, 1.0f);
    KS_GRAPH_SETTING(float, DefaultNoteZ, -20.0f);
    KS_GRAPH_SETTING(FloatPair, MinimumNoteSize, 30.0f, 20.0f);
    KS_GRAPH_SETTING(FloatPair, NoteHandlerSize, 20.0f, 20.0f);
    KS_GRAPH_SETTING(float, NoteHandlerAlpha, 0.3f);
    KS_GRAPH_SETTING(FloatPair, NoteElideMargin, 5.0f, -5.0f);
    KS_GRAPH_SETTING(float, NoteElideSize, 20.0f);
    /// @}

    /// @name Menus and the help page
    /// Two style sheets: the menus' is in the Qt style-sheet syntax, the help page's is CSS.
    /// @{
    KS_GRAPH_SETTING(KS_String, MenuStyle,
                     R"(QMenu::item:disabled { color: "#CCC"; })"
                     R"(QMenu::item:disabled:selected { color: "#333"; })");
    /// For the page that shows a node's `asHTML`: light and dark, readable in a window of `GraphHelpSize`.
    KS_GRAPH_SETTING(KS_String, GraphHelpCss, defaultHelpCss());
    KS_GRAPH_SETTING(FloatPair, GraphHelpSize, 800.0f, 600.0f);
    KS_GRAPH_SETTING(float, GraphHelpVerticalMargin, 20.0f);
    /// @}

    /// @name Automatic placement of labels
    /// @{
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingSamplingPointsMax, 2000.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingSpiralRadiusMax, 3710.7f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingSpiralNoOfRotations, 532.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingMargin, 8.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingBordersMinX, -10000.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingBordersMinY, -10000.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingBordersMaxX, 19900.0f);
    KS_GRAPH_SETTING(float, GraphAutomaticLabelingBordersMaxY, 19900.0f);
    /// @}

private:
    static KS_String defaultHelpCss();
};

} // namespace kestrel::graph

#undef KS_GRAPH_SETTING
