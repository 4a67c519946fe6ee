#include "GraphPicture.h"

#include "LevelShapes.h"
#include "Svg.h"
#include "TextMetrics.h"

#include <sstream>
#include <vector>

namespace material_graph
{

using kestrel::Array;
using kestrel::Color4;
using kestrel::KS_String;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphSettings;
using kestrel::graph::Message;

namespace
{

using Color = Color4<float>;

constexpr float pageMargin = 30.0f;
constexpr Color white(1.0f, 1.0f, 1.0f, 1.0f);
constexpr Color nodeShadowColor(0.0f, 0.0f, 0.0f, 0.35f);

Color withAlpha(Color color, float alpha)
{
    color.alpha = alpha;
    return color;
}

std::string textOf(KS_String const& text)
{
    return std::string(text);
}

Color badgeColor(Array<Message> const& messages)
{
    bool warning = false;
    for (Message const& message : messages)
    {
        if (message.isError() || message.isCritical()) return {0.85f, 0.15f, 0.15f, 1.0f};
        warning = warning || message.isWarning();
    }
    return warning ? Color(0.95f, 0.65f, 0.1f, 1.0f) : Color(0.2f, 0.5f, 0.9f, 1.0f);
}

// One line for each.
std::string linesOf(Array<Message> const& messages)
{
    std::string text;
    for (Message const& message : messages)
    {
        if (!text.empty()) text += "\n";
        text.append(message.getTitle()).append(": ").append(message.getContent());
    }
    return text;
}

class Painter
{
public:
    Painter(MaterialScene& scene, GraphNodeBase& level, GraphLayout const& layout,
            GraphSettings const& settings)
        : scene_(scene),
          level_(level),
          layout_(layout),
          settings_(settings),
          shapes_(shapesOf(level, layout, settings))
    {}

    std::string draw()
    {
        setCaption();
        Svg page = makePage();
        paintBackground(page);
        Svg notes = page.group("notes");
        for (NoteShape const& note : shapes_.notes) paintNote(notes, note);
        // Below the nodes: a line that passes one does not cross out its texts.
        Svg connections = page.group("connections");
        for (ConnectionShape const& connection : shapes_.connections)
            paintConnection(connections, connection);
        Svg nodes = page.group("nodes");
        for (NodeShape const& node : shapes_.nodes) paintNode(nodes, node);
        paintCaption(page);
        std::ostringstream text;
        document_.save(text, " ", pugi::format_default | pugi::format_no_declaration);
        return text.str();
    }

private:
    /// @name The page
    /// @{

    // The way from the root to this level, and what is hidden in it.
    void setCaption()
    {
        if (!settings_.getShowCompoundCaption()) return;
        for (GraphNodeBase* node = &level_; node != nullptr; node = node->getNodeOwner())
            path_.insert(path_.begin(), textOf(node->getName()));
        remark(shapes_.hiddenNodes, "hidden node");
        remark(shapes_.hiddenConnections, "hidden connection");
        float width = 0.0f;
        for (std::string const& name : path_) width += stepWidth(name);
        width += textWidth(remark_, captionFont());
        Size const size{width,
                        linesHeight(1, std::max(captionFont(), settings_.getCompoundCaptionArrowSize()))};
        Point const aboveAll = shapes_.bounds.topLeft - Point{0.0f, size.height + pageMargin / 2};
        auto const& offset = settings_.getCompoundCaptionOffset();
        caption_ = {aboveAll + Point{offset.first, offset.second}, size};
        shapes_.bounds = shapes_.bounds.unitedWith(caption_);
    }

    void remark(unsigned int count, char const* what)
    {
        if (count == 0) return;
        if (!remark_.empty()) remark_ += ", ";
        remark_ += std::to_string(count) + " " + what;
        if (count > 1) remark_ += "s";
    }

    float captionFont() const { return settings_.getCompoundCaptionSize(); }

    // Of one name of the path with the arrow behind it.
    float stepWidth(std::string const& name) const
    {
        return textWidth(name, captionFont()) + settings_.getCompoundCaptionArrowSize();
    }

    Svg makePage()
    {
        page_ = shapes_.bounds.grownBy({pageMargin, pageMargin});
        Svg page = Svg(document_).add("svg");
        page.set("xmlns", "http://www.w3.org/2000/svg");
        page.set("width", page_.size.width).set("height", page_.size.height);
        page.set("viewBox", svgPoint(page_.topLeft) + " " + svgPoint({page_.size.width, page_.size.height}));
        page.set("font-family", "Helvetica, Arial, 'Liberation Sans', 'DejaVu Sans', sans-serif");
        if (!settings_.getGlobalAntialias()) page.set("shape-rendering", "crispEdges");
        page.tooltip(textOf(level_.getFullName()));
        return page;
    }

    void paintBackground(Svg& page)
    {
        page.rect(page_).fill(settings_.getBackgroundColor()).set("class", "background");
        if (!settings_.getUseGrid() || settings_.getGridSize() <= 0) return;
        Svg pattern = page.add("pattern").set("id", "grid").set("patternUnits", "userSpaceOnUse");
        float const step = static_cast<float>(settings_.getGridSize());
        pattern.set("width", step).set("height", step);
        pattern.path("M " + svgPoint({step, 0.0f}) + " H 0 V " + svgNumber(step))
            .set("fill", "none")
            .stroke(settings_.getGridColor(), 1.0f);
        page.rect(page_).set("fill", "url(#grid)").set("class", "grid");
    }

    void paintCaption(Svg& page)
    {
        if (!settings_.getShowCompoundCaption()) return;
        Color const base = settings_.getCompoundCaptionBrighter() ? white : Color();
        Color const color = withAlpha(base, settings_.getCompoundCaptionAlpha());
        Svg caption = page.group("caption");
        float x = caption_.left();
        for (std::string const& name : path_)
        {
            caption.label(captionText(name, x), color);
            x += stepWidth(name);
            if (&name != &path_.back()) paintArrow(caption, x, color);
        }
        if (!remark_.empty()) caption.label(captionText(remark_, x), color);
    }

    Label captionText(std::string const& text, float x) const
    {
        float const height = linesHeight(1, captionFont());
        Point const corner{x, caption_.center().y - height / 2};
        return {
            {text}, {corner, {textWidth(text, captionFont()), height}}, captionFont(), Label::Align::Left};
    }

    // In the room behind a name that ends at `right`.
    void paintArrow(Svg& caption, float right, Color const& color) const
    {
        float const size = settings_.getCompoundCaptionArrowSize() / 2;
        Point const tip{right - size / 2, caption_.center().y};
        caption.path(polygon({tip, tip + Point{-size, size / 2}, tip + Point{-size, -size / 2}})).fill(color);
    }

    static std::string polygon(std::vector<Point> const& points)
    {
        std::string commands;
        for (Point point : points)
        {
            commands += commands.empty() ? "M " : " L ";
            commands += svgPoint(point);
        }
        return commands + " Z";
    }
    /// @}

    /// @name Notes and connections
    /// @{
    void paintNote(Svg& notes, NoteShape const& note)
    {
        Svg group = notes.group("note");
        group.rect(note.box)
            .fill(note.color)
            .stroke(withAlpha(note.color, settings_.getDefaultNoteBorderAlpha()), 1.0f);
        group.label(note.text, note.textColor);
    }

    void paintConnection(Svg& connections, ConnectionShape const& shape)
    {
        GraphNodePin* const source = shape.connection->getSourcePin();
        Color const color =
            settings_.getConnectionUsePinColor() ? source->getColor() : settings_.getConnectionLineColor();
        Svg group = connections.group("connection");
        group.set("data-name", textOf(shape.connection->getFullName()));
        group.tooltip(static_cast<MaterialConnection*>(shape.connection)->describe());
        Svg line = group.path("M " + svgPoint(shape.from) + " C " + svgPoint(shape.leaving) + " " +
                              svgPoint(shape.arriving) + " " + svgPoint(shape.to));
        line.set("fill", "none").stroke(color, settings_.getConnectionLineWidth());
        if (shape.connection->isImplicit())
            line.set("stroke-dasharray",
                     svgPoint({static_cast<float>(settings_.getConnectionDashLineLength()),
                               static_cast<float>(settings_.getConnectionDashHoleLength())}));
        if (!shape.arrow.empty()) group.path(polygon(shape.arrow)).fill(color).set("class", "arrow");
    }
    /// @}

    /// @name Nodes
    /// @{
    void paintNode(Svg& nodes, NodeShape const& shape)
    {
        Svg group = nodes.group("node");
        group.set("data-name", textOf(shape.node->getFullName())).set("data-kind", kindOf(shape));
        if (shape.collapsed) group.set("data-collapsed", "true");
        group.tooltip(tooltipOf(*shape.node));
        if (settings_.getDrawNodeShadow()) paintShadow(group, shape);
        paintBody(group, shape);
        group.label(shape.name, settings_.getNodeTextColor());
        group.label(shape.category, withAlpha(settings_.getNodeTextColor(), 0.6f));
        for (PinShape const& pin : shape.pins) paintPin(group, pin);
        paintBadge(group, shape);
    }

    static char const* kindOf(NodeShape const& shape)
    {
        if (shape.node->isInterface()) return "interface";
        return shape.node->isCompound() ? "compound" : "plain";
    }

    static std::string tooltipOf(GraphNodeBase& node)
    {
        std::string text = textOf(node.getFullName());
        if (!node.getDescription().isEmpty()) text.append("\n").append(node.getDescription());
        return text;
    }

    // The layout's own, else that of the node's type, else that of its kind.
    Color colorOf(GraphNodeBase& node) const
    {
        auto const chosen = layout_.getColorByNodeName(node.getFullName());
        if (chosen) return *chosen;
        if (scene_.hasColorForNodeType(node.getType())) return scene_.getColorFromNodeType(&node);
        if (node.isInterface()) return settings_.getDefaultInterfaceNodeColor();
        return node.isCompound() ? settings_.getDefaultCompoundNodeColor() : settings_.getDefaultNodeColor();
    }

    void paintShadow(Svg& group, NodeShape const& shape)
    {
        auto const& grow = settings_.getNodeShadowGrow();
        auto const& step = settings_.getNodeShadowOffset();
        Rect const shadow = shape.body.grownBy({grow.first, grow.second}).movedBy({step.first, step.second});
        group.rect(shadow).fill(nodeShadowColor).set("rx", shape.roundness).set("class", "shadow");
    }

    // A compound is drawn with a second line inside, as if there were another sheet below.
    void paintBody(Svg& group, NodeShape const& shape)
    {
        Color const color = colorOf(*shape.node);
        if (shape.node->isCompound()) group.rect(shape.tab).fill(color).set("class", "tab");
        Svg body = group.rect(shape.body).fill(color).set("rx", shape.roundness).set("class", "body");
        body.stroke(settings_.getNodeBorderColor(), settings_.getNodeBorderWidth());
        if (!shape.node->isCompound()) return;
        group.rect(shape.body.grownBy({-2.0f, -2.0f}))
            .set("fill", "none")
            .set("rx", shape.roundness)
            .stroke(withAlpha(settings_.getNodeTextColor(), 0.4f), 1.0f);
    }

    void paintPin(Svg& group, PinShape const& shape)
    {
        Svg pin = group.group("pin");
        pin.set("data-name", textOf(shape.pin->getFullName()));
        pin.tooltip(textOf(shape.pin->getFullName()) + "\n" + textOf(shape.pin->getInfo()));
        if (settings_.getDrawPinShadow())
        {
            auto const& grow = settings_.getPinShadowGrow();
            auto const& step = settings_.getPinShadowOffset();
            Rect const shadow =
                shape.box.grownBy({grow.first, grow.second}).movedBy({step.first, step.second});
            paintPinShape(pin, shape, shadow).fill(withAlpha(Color(), settings_.getPinShadowAlpha()));
        }
        // Opaque below, so that no line shows through the pin.
        paintPinShape(pin, shape, shape.box).fill(white);
        float const alpha = shape.pin->isConnected() ? 1.0f : settings_.getPinNotConnectedAlpha();
        paintPinShape(pin, shape, shape.box)
            .fill(withAlpha(shape.pin->getColor(), alpha))
            .stroke(shape.pin->getBorderColor(), settings_.getPinBorderWidth());
        pin.label(shape.name, settings_.getPinTextColor());
    }

    Svg paintPinShape(Svg& pin, PinShape const& shape, Rect const& box) const
    {
        if (!shape.horizontal || !settings_.getPinDrawCircle()) return pin.rect(box);
        return pin.circle(box.center(), box.size.width / 2);
    }

    void paintBadge(Svg& group, NodeShape const& shape)
    {
        if (shape.badge.size.width <= 0.0f) return;
        Array<Message> const messages = messagesUnder(*shape.node);
        Svg badge = group.group("badge");
        badge.tooltip(linesOf(messages));
        float const radius = std::min(shape.badge.size.width, shape.badge.size.height) / 2;
        badge.circle(shape.badge.center(), radius).fill(badgeColor(messages)).stroke(white, 1.0f);
        float const font = shape.badge.size.height * 0.65f;
        Rect const room{{shape.badge.left() + 1.0f, shape.badge.center().y - linesHeight(1, font) / 2},
                        {shape.badge.size.width - 2.0f, linesHeight(1, font)}};
        badge.label({{std::to_string(messages.size())}, room, font, Label::Align::Middle}, white);
    }
    /// @}

    MaterialScene& scene_;
    GraphNodeBase& level_;
    GraphLayout const& layout_;
    GraphSettings const& settings_;
    LevelShapes shapes_;
    std::vector<std::string> path_;
    std::string remark_;
    Rect caption_;
    Rect page_;
    pugi::xml_document document_;
};

} // namespace

std::string drawLevel(MaterialScene& scene, GraphNodeBase& level, GraphLayout const& layout,
                      GraphSettings const& settings)
{
    return Painter(scene, level, layout, settings).draw();
}

} // namespace material_graph
