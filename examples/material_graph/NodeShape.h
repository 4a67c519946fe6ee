/// @file
#pragma once

#include "Geometry.h"

#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphSettings.h>

#include <string>
#include <vector>

namespace material_graph
{

/// A text at its place: in the room, in lines from its top, at its left, its middle or its right.
struct Label
{
    enum class Align
    {
        Left,
        Middle,
        Right
    };

    std::vector<std::string> lines;
    Rect room;
    float fontSize = 0.0f;
    Align align = Align::Left;
};

struct PinShape
{
    kestrel::graph::GraphNodePin* pin;
    /// A circle at the side of the node, or a tab on its upper or lower edge.
    Rect box;
    /// Where connections end, and the direction from there away from the node.
    Point anchor;
    Point outwards;
    /// Without lines unless names are shown.
    Label name;
    bool horizontal;
};

/// What a node looks like: it follows from its names and pins, the settings and its flags in the layout.
struct NodeShape
{
    kestrel::graph::GraphNodeBase* node = nullptr;
    bool collapsed = false;
    Rect body;
    /// Of the body's corners. An interface node is rounder than any other: the graph enters and leaves there.
    float roundness = 0.0f;
    /// The body and all that stands out of it: pins, tab, badge and shadow.
    Rect outline;
    Label name;
    Label category;
    /// The tab that tells a compound; of no size at any other node.
    Rect tab;
    /// Of no size without messages.
    Rect badge;
    /// None of a collapsed node, whose connections end in the middle of its sides.
    std::vector<PinShape> pins;

    void moveBy(Point distance);
};

/// With the body's corner at (0, 0), whatever position the layout has for the node.
NodeShape shapeOf(kestrel::graph::GraphNodeBase& node, kestrel::graph::GraphLayout const& layout,
                  kestrel::graph::GraphSettings const& settings);

/// The messages of the node and of all nodes below it: what its badge stands for.
kestrel::Array<kestrel::graph::Message> messagesUnder(kestrel::graph::GraphNodeBase& node);

} // namespace material_graph
