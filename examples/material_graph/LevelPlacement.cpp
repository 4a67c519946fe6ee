#include "LevelPlacement.h"

#include "BoxArrangement.h"
#include "LevelShapes.h"
#include "TextMetrics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::Optional;
using kestrel::Tuple2;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphSettings;
using kestrel::graph::NoteDesc;

namespace
{

constexpr float widestNote = 400.0f;

std::optional<Point> positionOf(GraphNodeBase& node, GraphLayout const& layout)
{
    Optional<Tuple2<float, float>> const position = layout.getPositionByNodeName(node.getFullName());
    if (!position || !isUsable(*position)) return std::nullopt;
    return Point{position->first, position->second};
}

class LevelPlacer
{
public:
    LevelPlacer(GraphLayout& layout, GraphNodeBase& level, GraphSettings const& settings)
        : layout_(layout), level_(level), settings_(settings), levelName_(level.getFullName())
    {
        for (GraphNodeBase* node : level.getNodes()) sort(*node);
        for (Rect const& note : noteBoxesOf(levelName_, layout, settings)) occupy(note);
    }

    void place()
    {
        if (missing_.empty()) return;
        std::vector<Point> const corners = arrangeBoxes(boxes(), links(), gap());
        Point const start = startOfBlock();
        GraphLayout placed;
        for (std::size_t i = 0; i < missing_.size(); ++i)
        {
            Point const position = start + corners[i] - missing_[i].outline.topLeft;
            placed.insertNodePosition(missing_[i].node->getFullName(), {position.x, position.y});
        }
        layout_.updateWithOther(placed);
        if (!anyPlaced_ && !occupied_) addDescription(start);
    }

private:
    void sort(GraphNodeBase& node)
    {
        NodeShape shape = shapeOf(node, layout_, settings_);
        if (std::optional<Point> const position = positionOf(node, layout_))
        {
            occupy(shape.outline.movedBy(*position));
            anyPlaced_ = true;
            return;
        }
        indexes_[&node] = missing_.size();
        missing_.push_back(std::move(shape));
    }

    void occupy(Rect const& rect) { occupied_ = occupied_ ? occupied_->unitedWith(rect) : rect; }

    Size gap() const
    {
        auto const& margin = settings_.getFreeAreaMargin();
        return {2 * margin.first, margin.second};
    }

    Point startOfBlock() const
    {
        return occupied_ ? Point{occupied_->left(), occupied_->bottom() + gap().height} : Point{};
    }

    std::vector<Size> boxes() const
    {
        std::vector<Size> sizes;
        for (NodeShape const& shape : missing_) sizes.push_back(shape.outline.size);
        return sizes;
    }

    std::vector<BoxLink> links() const
    {
        std::vector<BoxLink> found;
        for (GraphConnection* connection : connectionsIn(level_))
        {
            auto const source = indexes_.find(connection->getSourceNode());
            auto const target = indexes_.find(connection->getTargetNode());
            if (source != indexes_.end() && target != indexes_.end())
                found.push_back({source->second, target->second});
        }
        return found;
    }

    // Above the nodes, as large as its text.
    void addDescription(Point start)
    {
        KS_String const description = level_.getDescription();
        if (description.isEmpty()) return;
        float const margin = settings_.getNoteElideMargin().first;
        auto const lines = wrapped(description, noteFontSize, widestNote - 2 * margin - 1);
        float width = 0.0f;
        for (std::string const& line : lines) width = std::max(width, textWidth(line, noteFontSize));
        Tuple2<float, float> const size(width + 2 * margin + 1,
                                        linesHeight(lines.size(), noteFontSize) + 2 * margin + 1);
        layout_.addNote(levelName_, description, {start.x, start.y - gap().height - size.second}, size,
                        settings_.getDefaultNoteColor(), settings_.getDefaultNoteTextColor());
    }

    GraphLayout& layout_;
    GraphNodeBase& level_;
    GraphSettings const& settings_;
    KS_String levelName_;
    std::vector<NodeShape> missing_;
    std::map<GraphNodeBase*, std::size_t> indexes_;
    std::optional<Rect> occupied_;
    bool anyPlaced_ = false;
};

bool isFree(Rect const& box, std::vector<Rect> const& others)
{
    return std::none_of(others.begin(), others.end(),
                        [&box](Rect const& other) { return box.overlaps(other); });
}

Size atLeastOne(Tuple2<float, float> const& step)
{
    return {step.first > 1.0f ? step.first : 1.0f, step.second > 1.0f ? step.second : 1.0f};
}

// The places at that distance from the middle one, in steps.
std::vector<Point> ringAround(int ring)
{
    if (ring == 0) return {{}};
    std::vector<Point> places;
    for (int y = -ring; y <= ring; ++y)
        for (int x = -ring; x <= ring; x += std::abs(y) == ring ? 1 : 2 * ring)
            places.push_back({static_cast<float>(x), static_cast<float>(y)});
    return places;
}

float lowestOf(std::vector<Rect> const& boxes)
{
    float lowest = boxes.front().bottom();
    for (Rect const& box : boxes) lowest = std::max(lowest, box.bottom());
    return lowest;
}

} // namespace

void placeLevel(GraphLayout& layout, GraphNodeBase& level, GraphSettings const& settings)
{
    LevelPlacer(layout, level, settings).place();
}

void placeAllLevels(GraphLayout& layout, GraphNodeBase& root, GraphSettings const& settings)
{
    std::vector<GraphNodeBase*> open{&root};
    while (!open.empty())
    {
        GraphNodeBase* const level = open.back();
        open.pop_back();
        placeLevel(layout, *level, settings);
        for (GraphNodeBase* node : level->getNodes()) open.push_back(node);
    }
}

Point freePlaceNear(Point wanted, Size box, std::vector<Rect> const& others, GraphSettings const& settings)
{
    constexpr int furthestRing = 100;
    auto const& margin = settings.getFreeAreaMargin();
    Size const step = atLeastOne(settings.getFreeAreaStep());
    std::optional<Point> nearest;
    float distance = std::numeric_limits<float>::max();
    // The corners of a ring are further away than the sides of the next ones.
    for (int ring = 0; ring <= furthestRing; ++ring)
    {
        if (static_cast<float>(ring) * std::min(step.width, step.height) >= distance) break;
        for (Point place : ringAround(ring))
        {
            Point const way{place.x * step.width, place.y * step.height};
            float const length = std::hypot(way.x, way.y);
            Rect const room = Rect{wanted + way, box}.grownBy({margin.first, margin.second});
            if (length >= distance || !isFree(room, others)) continue;
            nearest = wanted + way;
            distance = length;
        }
    }
    return nearest ? *nearest : Point{wanted.x, lowestOf(others) + margin.second};
}

std::optional<Rect> outlineOf(GraphNodeBase& node, GraphLayout const& layout, GraphSettings const& settings)
{
    std::optional<Point> const position = positionOf(node, layout);
    if (!position) return std::nullopt;
    return shapeOf(node, layout, settings).outline.movedBy(*position);
}

std::vector<Rect> occupiedIn(GraphNodeBase& level, GraphLayout const& layout, GraphSettings const& settings,
                             std::vector<GraphNodeBase*> const& except)
{
    std::vector<Rect> occupied = noteBoxesOf(level.getFullName(), layout, settings);
    for (GraphNodeBase* node : level.getNodes())
    {
        if (std::find(except.begin(), except.end(), node) != except.end()) continue;
        if (std::optional<Rect> const outline = outlineOf(*node, layout, settings))
            occupied.push_back(*outline);
    }
    return occupied;
}

std::vector<Rect> noteBoxesOf(KS_String const& owner, GraphLayout const& layout,
                              GraphSettings const& settings)
{
    std::vector<Rect> boxes;
    for (NoteDesc const& note : layout.getNotes())
        if (note.getOwnerName() == owner) boxes.push_back(boxOf(note, settings));
    return boxes;
}

} // namespace material_graph
