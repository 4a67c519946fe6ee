/// @file
#pragma once

#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphSettings.h>

#include <string>

namespace material_graph
{

/// The node's description as a page for a browser: what `asHTML` writes, with a head that has the style sheet
/// of the settings, and as wide as their help window. An override of `asHTML` may also write a page without a
/// head, or just a part of one.
std::string helpPage(kestrel::graph::GraphNodeBase& node, kestrel::graph::GraphSettings const& settings);

} // namespace material_graph
