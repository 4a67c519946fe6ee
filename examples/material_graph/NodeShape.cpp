#include "NodeShape.h"

#include "TextMetrics.h"

#include <algorithm>
#include <utility>

namespace material_graph
{

using kestrel::Array;
using kestrel::KS_String;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphSettings;
using kestrel::graph::Message;

namespace
{

constexpr float labelPadding = 3.0f;
// Of the label's font, that of the line below it; of a pin's height, that of its name.
constexpr float categoryScale = 0.8f;
constexpr float pinFontScale = 0.45f;
constexpr float tabFontScale = 0.7f;
constexpr float tabTextMargin = 3.0f;

Size sizeFrom(kestrel::Tuple2<float, float> const& size)
{
    return {size.first, size.second};
}

class ShapeMaker
{
public:
    ShapeMaker(GraphNodeBase& node, GraphLayout const& layout, GraphSettings const& settings)
        : settings_(settings)
    {
        shape_.roundness = settings.getNodeRoundRectangleSize() * (node.isInterface() ? 2.0f : 1.0f);
        KS_String const name = node.getFullName();
        shape_.node = &node;
        shape_.collapsed = layout.getCollapsedByNodeName(name).value_or(settings.getNodeColapsedByDefault());
        horizontalInputs_ =
            layout.getHorizontalInputsByNodeName(name).value_or(settings.getNodeHorizontalInputPins());
        horizontalOutputs_ =
            layout.getHorizontalOutputsByNodeName(name).value_or(settings.getNodeHorizontalOutputPins());
    }

    NodeShape make()
    {
        if (!shape_.collapsed) sortPins();
        hasBadge_ = settings_.getNodeShowBadge() && !messagesUnder(*shape_.node).isEmpty();
        setWidth();
        setLabels();
        setTab();
        float const bottom = placePins(headerHeight());
        shape_.body.size.height = std::max(bottom, settings_.getNodeMinSize().second);
        placeTabPins(lowerTabs_, shape_.body.bottom(), Point{0.0f, 1.0f});
        placeTabPins(upperTabs_, 0.0f, Point{0.0f, -1.0f});
        setBadge();
        setOutline();
        return std::move(shape_);
    }

private:
    using Pins = std::vector<GraphNodePin*>;

    void sortPins()
    {
        for (GraphNodePin* pin : shape_.node->getNodePins())
        {
            if (pin->isInputPin())
                (horizontalInputs_ ? left_ : upperTabs_).push_back(pin);
            else
                (horizontalOutputs_ ? right_ : lowerTabs_).push_back(pin);
        }
    }

    // As wide as the texts and pins need, within the limits; tabs may need more than these allow.
    void setWidth()
    {
        float const inputs = columnWidth(left_);
        float const outputs = columnWidth(right_);
        float const both = inputs + settings_.getPinOffsetMiddle() + outputs;
        float const most = settings_.getNodeMaxSize().first;
        stacked_ = !left_.empty() && !right_.empty() && both > most;
        float const pins = stacked_ ? std::max(inputs, outputs) : both;
        float const texts = std::max(textWidth(name(), labelFont()), textWidth(category(), categoryFont()));
        float width = std::min(std::max(texts + labelInset() + shape_.roundness, pins), most);
        width = std::max({width, settings_.getNodeMinSize().first, widthAboveBody(), tabsWidth(upperTabs_),
                          tabsWidth(lowerTabs_)});
        shape_.body.size.width = width;
    }

    float widthAboveBody() const
    {
        float width = 2 * shape_.roundness;
        if (shape_.node->isCompound()) width += settings_.getNodeRFgroupTabSize().first;
        if (hasBadge_) width += settings_.getNodeBadgeSize().first + 2 * settings_.getNodeBadgeMargin();
        return width;
    }

    float columnWidth(Pins const& pins) const
    {
        if (pins.empty()) return 0.0f;
        float widest = 0.0f;
        for (GraphNodePin* pin : pins) widest = std::max(widest, textWidth(nameOf(pin), pinFont()));
        return widest + 2 * pinNameMargin();
    }

    // Half of the pin's size is the circle, in the middle of the edge; the rest is room around it.
    float pinDiameter() const { return settings_.getPinHorizontalSize().first / 2; }

    // From the edge to the name, which begins behind the circle.
    float pinNameMargin() const
    {
        return std::max(settings_.getPinHorizontalInsideMargin(),
                        pinDiameter() / 2 + settings_.getPinBorderWidth());
    }

    float tabWidth(GraphNodePin* pin) const
    {
        return std::max(settings_.getPinVerticalSize().first,
                        textWidth(nameOf(pin), tabFont()) + 2 * tabTextMargin);
    }

    float tabsWidth(Pins const& pins) const
    {
        float width = 2 * settings_.getPinVerticalOffset().first + tabsBegin(pins);
        for (GraphNodePin* pin : pins) width += tabWidth(pin) + settings_.getPinVerticalInsideMargin();
        return width;
    }

    // The tab of a compound stands in front of the pins on the upper edge.
    float tabsBegin(Pins const& pins) const
    {
        bool const besideTab = &pins == &upperTabs_ && shape_.node->isCompound();
        return besideTab ? shape_.roundness + settings_.getNodeRFgroupTabSize().first : 0.0f;
    }

    float labelInset() const { return shape_.roundness + settings_.getNodeLabelPosition().first; }

    void setLabels()
    {
        Point const corner{labelInset(), labelPadding + settings_.getNodeLabelPosition().second};
        float const room = shape_.body.size.width - labelInset() - shape_.roundness;
        Label::Align const align =
            settings_.getNodeLabelHorizontalCentered() ? Label::Align::Middle : Label::Align::Left;
        auto lines = wrapped(name(), labelFont(), room);
        float const height = linesHeight(lines.size(), labelFont());
        shape_.name = {std::move(lines), {corner, {room, height}}, labelFont(), align};
        if (category() == name()) return;
        Point const below{corner.x, corner.y + height};
        shape_.category = {
            {category()}, {below, {room, linesHeight(1, categoryFont())}}, categoryFont(), align};
    }

    float headerHeight() const
    {
        return std::max(shape_.name.room.bottom(), shape_.category.room.bottom()) + labelPadding;
    }

    void setTab()
    {
        if (!shape_.node->isCompound()) return;
        Size const size = sizeFrom(settings_.getNodeRFgroupTabSize());
        shape_.tab = {{shape_.roundness, -size.height}, size};
    }

    // Returns where the body ends below them.
    float placePins(float top)
    {
        float const besideInputs = placeColumn(left_, top, true);
        float const belowInputs = besideInputs + settings_.getPinOffsetMiddle();
        float const besideOutputs = placeColumn(right_, stacked_ ? belowInputs : top, false);
        float const bottom = std::max(besideInputs, besideOutputs);
        return bottom > top ? bottom + settings_.getPinOffsetBottom() : bottom;
    }

    float placeColumn(Pins const& pins, float top, bool atLeft)
    {
        float const rowHeight = settings_.getPinHorizontalSize().second;
        for (GraphNodePin* pin : pins)
        {
            addCircle(pin, top + rowHeight / 2, atLeft);
            top += rowHeight;
        }
        return top;
    }

    void addCircle(GraphNodePin* pin, float y, bool atLeft)
    {
        float const width = shape_.body.size.width;
        float const diameter = pinDiameter();
        Point const outwards{atLeft ? -1.0f : 1.0f, 0.0f};
        Point const center = Point{atLeft ? 0.0f : width, y} + offset(atLeft);
        Rect const box{center - Point{diameter / 2, diameter / 2}, {diameter, diameter}};
        Point const anchor = settings_.getConnectionToEdge() ? center + outwards * (diameter / 2) : center;
        shape_.pins.push_back({pin, box, anchor, outwards, circleName(pin, y, atLeft), true});
    }

    Point offset(bool atLeft) const
    {
        auto const& given = settings_.getPinHorizontalOffset();
        return {atLeft ? given.first : -given.first, given.second};
    }

    Label circleName(GraphNodePin* pin, float y, bool atLeft) const
    {
        if (!settings_.getPinShowName()) return {};
        float const margin = pinNameMargin();
        float const width = shape_.body.size.width - 2 * margin;
        float const height = linesHeight(1, pinFont());
        return {{nameOf(pin)},
                {{margin, y - height / 2}, {width, height}},
                pinFont(),
                atLeft ? Label::Align::Left : Label::Align::Right};
    }

    void placeTabPins(Pins const& pins, float edge, Point outwards)
    {
        float const height = settings_.getPinVerticalSize().second;
        float const gap = settings_.getPinVerticalInsideMargin();
        Point corner{tabsBegin(pins) + settings_.getPinVerticalOffset().first,
                     edge + settings_.getPinVerticalOffset().second - (outwards.y < 0.0f ? height : 0.0f)};
        for (GraphNodePin* pin : pins)
        {
            Rect const box{corner, {tabWidth(pin), height}};
            Point const anchor{box.center().x, outwards.y < 0.0f ? box.top() : box.bottom()};
            Label name;
            if (settings_.getPinShowName())
                name = {{nameOf(pin)}, box.grownBy({-tabTextMargin, 0.0f}), tabFont(), Label::Align::Middle};
            shape_.pins.push_back({pin, box, anchor, outwards, std::move(name), false});
            corner.x += box.size.width + gap;
        }
    }

    void setBadge()
    {
        if (!hasBadge_) return;
        Size const size = sizeFrom(settings_.getNodeBadgeSize());
        float const margin = settings_.getNodeBadgeMargin();
        float const above = upperTabs_.empty() ? 0.0f : settings_.getPinVerticalSize().second;
        shape_.badge = {{shape_.body.right() - margin - size.width, -above - size.height}, size};
    }

    void setOutline()
    {
        shape_.outline = shape_.body.unitedWith(shape_.tab);
        if (hasBadge_) shape_.outline = shape_.outline.unitedWith(shape_.badge);
        for (PinShape const& pin : shape_.pins) shape_.outline = shape_.outline.unitedWith(pin.box);
        if (settings_.getDrawNodeShadow())
        {
            auto const& step = settings_.getNodeShadowOffset();
            Rect const shadow = shape_.body.grownBy(sizeFrom(settings_.getNodeShadowGrow()))
                                    .movedBy({step.first, step.second});
            shape_.outline = shape_.outline.unitedWith(shadow);
        }
    }

    std::string name() const { return std::string(shape_.node->getName()); }
    std::string category() const { return std::string(shape_.node->getType()); }
    std::string nameOf(GraphNodePin* pin) const
    {
        return settings_.getPinShowName() ? std::string(pin->getName()) : std::string();
    }

    float labelFont() const { return settings_.getNodeLabelHeight(); }
    float categoryFont() const { return labelFont() * categoryScale; }
    float pinFont() const { return settings_.getPinHorizontalSize().second * pinFontScale; }
    float tabFont() const { return settings_.getPinVerticalSize().second * tabFontScale; }

    GraphSettings const& settings_;
    NodeShape shape_;
    bool horizontalInputs_ = true;
    bool horizontalOutputs_ = true;
    bool hasBadge_ = false;
    // Both columns do not fit beside each other: the outputs come below the inputs.
    bool stacked_ = false;
    Pins left_;
    Pins right_;
    Pins upperTabs_;
    Pins lowerTabs_;
};

} // namespace

void NodeShape::moveBy(Point distance)
{
    for (Rect* rect : {&body, &outline, &name.room, &category.room, &tab, &badge})
        *rect = rect->movedBy(distance);
    for (PinShape& pin : pins)
    {
        pin.box = pin.box.movedBy(distance);
        pin.anchor = pin.anchor + distance;
        pin.name.room = pin.name.room.movedBy(distance);
    }
}

NodeShape shapeOf(GraphNodeBase& node, GraphLayout const& layout, GraphSettings const& settings)
{
    return ShapeMaker(node, layout, settings).make();
}

Array<Message> messagesUnder(GraphNodeBase& node)
{
    Array<Message> messages;
    std::vector<GraphNodeBase*> open{&node};
    while (!open.empty())
    {
        GraphNodeBase* const next = open.back();
        open.pop_back();
        next->getMessages(messages);
        for (GraphNodeBase* child : next->getNodes()) open.push_back(child);
    }
    return messages;
}

} // namespace material_graph
