/// @file
#pragma once

#include "Geometry.h"

#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphSettings.h>

#include <optional>
#include <vector>

namespace material_graph
{

/// Gives a position to every child of the node that has none, or none that is usable. They come below those
/// that have one, and overlap neither them nor each other. The first time, the level also gets a note with
/// the description of its node, if there is one.
void placeLevel(kestrel::graph::GraphLayout& layout, kestrel::graph::GraphNodeBase& level,
                kestrel::graph::GraphSettings const& settings);

/// `placeLevel` of every node that has children.
void placeAllLevels(kestrel::graph::GraphLayout& layout, kestrel::graph::GraphNodeBase& root,
                    kestrel::graph::GraphSettings const& settings);

/// The corner nearest to the wanted one, in the steps of the settings, at which a box keeps the margin from
/// all the others; below all of them where there is no room nearby.
Point freePlaceNear(Point wanted, Size box, std::vector<Rect> const& others,
                    kestrel::graph::GraphSettings const& settings);

/// Where the node is seen; nothing without a usable position.
std::optional<Rect> outlineOf(kestrel::graph::GraphNodeBase& node, kestrel::graph::GraphLayout const& layout,
                              kestrel::graph::GraphSettings const& settings);

/// What stands on that level already: the outlines of the children that have a position, but for those that
/// are left out, and the notes.
std::vector<Rect> occupiedIn(kestrel::graph::GraphNodeBase& level, kestrel::graph::GraphLayout const& layout,
                             kestrel::graph::GraphSettings const& settings,
                             std::vector<kestrel::graph::GraphNodeBase*> const& except);

/// The notes that belong to the node of that name.
std::vector<Rect> noteBoxesOf(kestrel::KS_String const& owner, kestrel::graph::GraphLayout const& layout,
                              kestrel::graph::GraphSettings const& settings);

} // namespace material_graph
