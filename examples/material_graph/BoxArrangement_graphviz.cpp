#include "BoxArrangement.h"

#include <graphviz/cgraph.h>
#include <graphviz/gvc.h>

#include <charconv>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace material_graph
{

namespace
{

constexpr float pointsPerInch = 72.0f;
// It places in whole points.
constexpr float rounding = 1.0f;

struct ContextEnd
{
    void operator()(GVC_t* context) const { gvFreeContext(context); }
};

struct GraphEnd
{
    void operator()(Agraph_t* graph) const { agclose(graph); }
};

using Context = std::unique_ptr<GVC_t, ContextEnd>;
using Graph = std::unique_ptr<Agraph_t, GraphEnd>;

// Its C interface takes texts that it never changes as `char*`.
char* text(char const* constant)
{
    return const_cast<char*>(constant);
}

void set(void* object, char const* attribute, std::string const& value)
{
    agsafeset(object, text(attribute), text(value.c_str()), text(""));
}

std::string inInches(float length)
{
    return std::to_string(length / pointsPerInch);
}

// Parts that no link connects are packed beside each other, instead of into one endless column.
Graph makeGraph(Size gap)
{
    Graph graph(agopen(text("boxes"), Agdirected, nullptr));
    set(graph.get(), "rankdir", "LR");
    set(graph.get(), "splines", "false");
    set(graph.get(), "nodesep", inInches(gap.height + rounding));
    set(graph.get(), "ranksep", inInches(gap.width + rounding));
    set(graph.get(), "pack", std::to_string(static_cast<int>(std::max(gap.width, gap.height) / 2) + 1));
    set(graph.get(), "packmode", "graph");
    return graph;
}

Agnode_t* addBox(Graph const& graph, std::size_t index, Size size)
{
    std::string const name = std::to_string(index);
    Agnode_t* const node = agnode(graph.get(), text(name.c_str()), 1);
    set(node, "shape", "box");
    set(node, "fixedsize", "true");
    set(node, "label", "");
    set(node, "width", inInches(size.width));
    set(node, "height", inInches(size.height));
    return node;
}

// "x,y" of the centre, with y upwards.
Point centerOf(Agnode_t* node)
{
    std::string_view const position = agget(node, text("pos"));
    Point center;
    auto const x = std::from_chars(position.data(), position.data() + position.size(), center.x);
    std::from_chars(x.ptr + 1, position.data() + position.size(), center.y);
    return {center.x, -center.y};
}

void moveToOrigin(std::vector<Point>& corners)
{
    constexpr float largest = std::numeric_limits<float>::max();
    Point least{largest, largest};
    for (Point corner : corners) least = {std::min(least.x, corner.x), std::min(least.y, corner.y)};
    for (Point& corner : corners) corner = corner - least;
}

} // namespace

std::vector<Point> arrangeBoxes(std::vector<Size> const& boxes, std::vector<BoxLink> const& links, Size gap)
{
    Context const context(gvContext());
    Graph const graph = makeGraph(gap);
    std::vector<Agnode_t*> nodes;
    for (Size box : boxes) nodes.push_back(addBox(graph, nodes.size(), box));
    for (BoxLink const& link : links) agedge(graph.get(), nodes[link.from], nodes[link.to], nullptr, 1);

    if (gvLayout(context.get(), graph.get(), "dot") != 0)
        throw NoArrangement("Graphviz cannot lay out the graph");
    gvRender(context.get(), graph.get(), "dot", nullptr); // writes the positions into the attributes
    std::vector<Point> corners;
    for (std::size_t i = 0; i < boxes.size(); ++i)
        corners.push_back(centerOf(nodes[i]) - Point{boxes[i].width / 2, boxes[i].height / 2});
    gvFreeLayout(context.get(), graph.get());
    moveToOrigin(corners);
    return corners;
}

} // namespace material_graph
