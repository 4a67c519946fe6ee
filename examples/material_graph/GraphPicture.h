/// @file
#pragma once

#include "MaterialScene.h"

#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphSettings.h>

#include <string>

namespace material_graph
{

/// One level of the graph, the children of a node, as an SVG document such as an editor would show it. It has
/// one element for each visible node, pin, connection and note, of the class "node", "pin", "connection" and
/// "note"; all but notes have their full name as `data-name`.
/// REQUIRES: `placeLevel` of that level.
std::string drawLevel(MaterialScene& scene, kestrel::graph::GraphNodeBase& level,
                      kestrel::graph::GraphLayout const& layout,
                      kestrel::graph::GraphSettings const& settings);

} // namespace material_graph
