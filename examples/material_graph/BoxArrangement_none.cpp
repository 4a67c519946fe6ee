#include "BoxArrangement.h"

namespace material_graph
{

std::vector<Point> arrangeBoxes(std::vector<Size> const&, std::vector<BoxLink> const&, Size)
{
    throw NoArrangement(
        "nodes without a position cannot be placed by a program that was built without Graphviz");
}

} // namespace material_graph
