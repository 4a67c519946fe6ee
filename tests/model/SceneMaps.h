/// @file
#pragma once

#include "Difference.h"
#include "Model.h"

#include <ks_graph/ks_graph.h>

#include <vector>

namespace kestrel::graph::test::model
{

/// Compares the scene's private maps with the model's, entry by entry. The vectors say which object of the
/// library stands for which of the model; one that is gone still has its address here.
void compareMaps(GraphScene const& scene, Model const& model, std::vector<GraphNodeBase*> const& nodes,
                 std::vector<GraphNodePin*> const& pins, Difference& difference);

} // namespace kestrel::graph::test::model
