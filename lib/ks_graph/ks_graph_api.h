/// @file
/// The export macro of the graph classes.
#pragma once

#include <foundation/foundation_api.h>

/// Marks what the shared library exports; see `foundation_api.h` for how it is steered.
#define KS_GRAPH_API KS_FOUNDATION_API

/// Marks the declaration of a template's instance that the shared library exports.
#define KS_GRAPH_INSTANCE_API KS_FOUNDATION_INSTANCE_API
