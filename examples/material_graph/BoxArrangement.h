/// @file
#pragma once

#include "Geometry.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace material_graph
{

/// A link from one box to another, by their indexes.
struct BoxLink
{
    std::size_t from;
    std::size_t to;
};

/// No places were found for boxes; what it says tells why.
class NoArrangement : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Where boxes stand when the links lead from left to right: the top left corner of each, in the order of the
/// boxes. No two of them are closer than the gap. The corner of all of them together is at (0, 0). Graphviz
/// finds the places; the result is the same in every run. Built without Graphviz, the program has none for
/// any box: `NoArrangement`.
std::vector<Point> arrangeBoxes(std::vector<Size> const& boxes, std::vector<BoxLink> const& links, Size gap);

} // namespace material_graph
