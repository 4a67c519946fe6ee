/// @file
#pragma once

#include <ks_graph/ks_graph.h>

#include <initializer_list>
#include <string>

namespace kestrel::graph::test
{

/// All that can be seen of a scene and of what belongs to it, in one text: the nodes of the registry, of the
/// tree and `others`, with their fields, children and pins; each pin with its fields, connections and keys in
/// the registry; the connection array in its order; and the adjacency counts that are not 0. Ids of pins,
/// which no two runs give alike, and the dirty flag are left out.
std::string sceneText(GraphScene& scene, std::initializer_list<GraphNodeBase*> others = {});

} // namespace kestrel::graph::test
