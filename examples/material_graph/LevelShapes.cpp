#include "LevelShapes.h"

#include "TextMetrics.h"

#include <ks_graph/GraphNodePin.h>

#include <cmath>
#include <map>

namespace material_graph
{

using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::Tuple2;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphSettings;
using kestrel::graph::NoteDesc;

namespace
{

constexpr float furthest = 1.0e6f;
constexpr float smallestNoteFontSize = 0.1f;

// The end of a connection at one of its nodes.
struct End
{
    Point at;
    Point outwards;
};

float lengthOf(Point distance)
{
    return std::hypot(distance.x, distance.y);
}

Point onCurve(ConnectionShape const& curve, float t)
{
    float const s = 1.0f - t;
    return curve.from * (s * s * s) + curve.leaving * (3 * s * s * t) + curve.arriving * (3 * s * t * t) +
           curve.to * (t * t * t);
}

class LevelMaker
{
public:
    LevelMaker(GraphLayout const& layout, GraphSettings const& settings)
        : layout_(layout), settings_(settings)
    {}

    LevelShapes make(GraphNodeBase& level)
    {
        for (GraphNodeBase* node : level.getNodes()) addNode(*node);
        for (std::size_t i = 0; i < shapes_.nodes.size(); ++i) indexes_[shapes_.nodes[i].node] = i;
        for (GraphConnection* connection : connectionsIn(level)) addConnection(*connection);
        for (NoteDesc const& note : layout_.getNotes())
            if (note.getOwnerName() == level.getFullName()) addNote(note);
        return std::move(shapes_);
    }

private:
    void include(Rect const& rect)
    {
        shapes_.bounds = empty_ ? rect : shapes_.bounds.unitedWith(rect);
        empty_ = false;
    }

    void addNode(GraphNodeBase& node)
    {
        KS_String const name = node.getFullName();
        if (!layout_.getVisibleByNodeName(name).value_or(true))
        {
            ++shapes_.hiddenNodes;
            return;
        }
        auto const position = layout_.getPositionByNodeName(name);
        NodeShape shape = shapeOf(node, layout_, settings_);
        shape.moveBy({position->first, position->second});
        include(shape.outline);
        shapes_.nodes.push_back(std::move(shape));
    }

    bool isVisible(GraphConnection& connection) const
    {
        bool const hiddenByDefault =
            connection.isImplicit() && settings_.getConnectionImplicitHiddenByDefault() != 0;
        return layout_.getVisibleByConnectionName(connection.getFullName()).value_or(!hiddenByDefault);
    }

    void addConnection(GraphConnection& connection)
    {
        auto const source = indexes_.find(connection.getSourceNode());
        auto const target = indexes_.find(connection.getTargetNode());
        if (source == indexes_.end() || target == indexes_.end()) return; // one of the nodes is hidden
        if (!isVisible(connection))
        {
            ++shapes_.hiddenConnections;
            return;
        }
        End const from = endAt(shapes_.nodes[source->second], connection.getSourcePin(), false);
        End const to = endAt(shapes_.nodes[target->second], connection.getTargetPin(), true);
        ConnectionShape shape = curveBetween(connection, from, to);
        if (source == target) leadAround(shape, shapes_.nodes[source->second].outline);
        if (settings_.getConnectionDrawArrow()) addArrow(shape);
        for (Point point : {shape.from, shape.leaving, shape.arriving, shape.to})
            include(Rect{point, {}}.grownBy(lineMargin()));
        shapes_.connections.push_back(std::move(shape));
    }

    Size lineMargin() const
    {
        float const width = std::max(settings_.getConnectionLineWidth(), settings_.getConnectionArrowWidth());
        return {width, width};
    }

    static End endAt(NodeShape const& node, GraphNodePin* pin, bool arriving)
    {
        for (PinShape const& shape : node.pins)
            if (shape.pin == pin) return {shape.anchor, shape.outwards};
        float const side = arriving ? node.body.left() : node.body.right();
        return {{side, node.body.center().y}, {arriving ? -1.0f : 1.0f, 0.0f}};
    }

    // The tangents get longer with the way that lies straight ahead, so that long curves are no kinked lines.
    float tangentOf(End const& from, End const& to) const
    {
        constexpr float longest = 150.0f;
        Point const way = to.at - from.at;
        float const ahead = std::abs(way.x * from.outwards.x + way.y * from.outwards.y);
        return std::max(settings_.getConnectionBezierTangentWidth(), std::min(ahead / 2, longest));
    }

    ConnectionShape curveBetween(GraphConnection& connection, End const& from, End const& to) const
    {
        bool const curved = layout_.getBezierByConnectionName(connection.getFullName())
                                .value_or(settings_.getConnectionBezier());
        float const tangent = curved ? tangentOf(from, to) : 0.0f;
        return {&connection, from.at, from.at + from.outwards * tangent, to.at + to.outwards * tangent,
                to.at,       {}};
    }

    // A connection of a node with itself would lie hidden behind it: its curve rises above the node.
    static void leadAround(ConnectionShape& shape, Rect const& outline)
    {
        constexpr float clearance = 15.0f;
        // A curve rises three quarters as high as its control points.
        float const top = outline.top() - clearance;
        float const rise = (std::max(shape.from.y, shape.to.y) - top) / 0.75f;
        Point const aside = Point{outline.size.width / 2, -rise};
        shape.leaving = shape.from + aside;
        shape.arriving = shape.to + Point{-aside.x, aside.y};
    }

    // The tip is that far in front of the end of the curve, or at its middle if it is too short.
    void addArrow(ConnectionShape& shape) const
    {
        constexpr float step = 1.0f / 256;
        float t = 1.0f;
        while (t > 0.5f && lengthOf(shape.to - onCurve(shape, t)) < settings_.getConnectionArrowOffset())
            t -= step;
        Point const tip = onCurve(shape, t);
        Point const behind = onCurve(shape, t - step);
        float const length = lengthOf(tip - behind);
        if (!(length > 0.0f)) return;
        Point const along = (tip - behind) * (1.0f / length);
        Point const base = tip - along * settings_.getConnectionArrowLength();
        Point const aside = Point{-along.y, along.x} * (settings_.getConnectionArrowWidth() / 2);
        shape.arrow = {tip, base + aside, base - aside};
    }

    void addNote(NoteDesc const& note)
    {
        Rect const box = boxOf(note, settings_);
        include(box);
        shapes_.notes.push_back({box, textIn(box, note),
                                 note.getFirstColor().value_or(settings_.getDefaultNoteColor()),
                                 note.getSecondColor().value_or(settings_.getDefaultNoteTextColor())});
    }

    // A font that is small enough for all of the text.
    Label textIn(Rect const& box, NoteDesc const& note) const
    {
        float const margin = settings_.getNoteElideMargin().first;
        Rect const room = box.grownBy({-margin, -margin});
        std::string const text(note.getText().value_or(KS_String()));
        for (float size = noteFontSize;; size *= 0.9f)
        {
            auto lines = wrapped(text, size, room.size.width);
            if (linesHeight(lines.size(), size) <= room.size.height || size < smallestNoteFontSize)
                return {std::move(lines), room, size, Label::Align::Left};
        }
    }

    GraphLayout const& layout_;
    GraphSettings const& settings_;
    LevelShapes shapes_;
    bool empty_ = true;
    std::map<GraphNodeBase*, std::size_t> indexes_;
};

bool isUsableSize(Tuple2<float, float> const& size)
{
    return isUsable(size) && size.first >= 0.0f && size.second >= 0.0f;
}

} // namespace

LevelShapes shapesOf(GraphNodeBase& level, GraphLayout const& layout, GraphSettings const& settings)
{
    return LevelMaker(layout, settings).make(level);
}

std::vector<GraphConnection*> connectionsIn(GraphNodeBase& level)
{
    std::vector<GraphConnection*> connections;
    for (GraphNodeBase* node : level.getNodes())
        for (GraphNodePin* pin : node->getNodePins())
            for (GraphConnection* connection : pin->getOutputConnections())
                if (connection->getTargetNode() != nullptr &&
                    connection->getTargetNode()->getNodeOwner() == &level)
                    connections.push_back(connection);
    return connections;
}

Rect boxOf(NoteDesc const& note, GraphSettings const& settings)
{
    Tuple2<float, float> const corner = note.getPosition().value_or({});
    Tuple2<float, float> size = note.getSize().value_or(settings.getDefaultNoteSize());
    if (!isUsableSize(size)) size = settings.getDefaultNoteSize();
    auto const& least = settings.getMinimumNoteSize();
    Point const topLeft = isUsable(corner) ? Point{corner.first, corner.second} : Point{};
    return {topLeft, {std::max(size.first, least.first), std::max(size.second, least.second)}};
}

bool isUsable(Tuple2<float, float> const& position)
{
    return std::abs(position.first) <= furthest && std::abs(position.second) <= furthest;
}

} // namespace material_graph
