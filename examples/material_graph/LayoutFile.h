/// @file
#pragma once

#include <ks_graph/GraphLayout.h>

#include <string>

namespace material_graph
{

/// Both return why it could not be done; empty when it was.

/// Puts the layout into a file in the byte order that is the same on every machine. A file that is there
/// stays as it is unless the new one is complete.
std::string saveLayout(std::string const& path, kestrel::graph::GraphLayout const& layout);

/// Replaces the layout by that of a file of either byte order; unless all of it can be read, nothing changes.
std::string loadLayout(std::string const& path, kestrel::graph::GraphLayout& layout);

} // namespace material_graph
