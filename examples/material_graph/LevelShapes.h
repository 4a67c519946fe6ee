/// @file
#pragma once

#include "NodeShape.h"

#include <ks_graph/GraphConnection.h>

#include <vector>

namespace material_graph
{

/// A curve with its two control points, which lie at the ends of a straight line.
struct ConnectionShape
{
    kestrel::graph::GraphConnection* connection;
    Point from;
    Point leaving;
    Point arriving;
    Point to;
    /// The tip and the two other corners; empty unless arrows are drawn.
    std::vector<Point> arrow;
};

struct NoteShape
{
    Rect box;
    Label text;
    kestrel::Color4<float> color;
    kestrel::Color4<float> textColor;
};

/// What is seen of one level of a graph: the children of one node, at their places.
struct LevelShapes
{
    std::vector<NodeShape> nodes;
    std::vector<ConnectionShape> connections;
    std::vector<NoteShape> notes;
    /// All of the above, curves included.
    Rect bounds;
    unsigned int hiddenNodes = 0;
    unsigned int hiddenConnections = 0;
};

/// A node or connection that the layout hides is not there; nor is a connection of a hidden node.
/// REQUIRES: every child has a usable position in the layout; see `placeLevel`.
LevelShapes shapesOf(kestrel::graph::GraphNodeBase& level, kestrel::graph::GraphLayout const& layout,
                     kestrel::graph::GraphSettings const& settings);

/// The connections between the children, in the order of the children and their output pins.
std::vector<kestrel::graph::GraphConnection*> connectionsIn(kestrel::graph::GraphNodeBase& level);

/// Of the text of a note that has room for it.
constexpr float noteFontSize = 10.0f;

/// Where a note of that level stands and how large it is, whatever it leaves absent.
Rect boxOf(kestrel::graph::NoteDesc const& note, kestrel::graph::GraphSettings const& settings);

/// Whether it is on a canvas of a sensible size: a layout file may hold any number, or none.
bool isUsable(kestrel::Tuple2<float, float> const& position);

} // namespace material_graph
