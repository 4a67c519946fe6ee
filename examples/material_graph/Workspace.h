/// @file
#pragma once

#include "MaterialScene.h"

#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphSettings.h>

#include <string>

namespace material_graph
{

/// What an editor has open: a document's graph, how it looks, and the editor's settings.
struct Workspace
{
    Workspace() { settings.setNodeShowBadge(true); }

    MaterialScene scene;
    kestrel::graph::GraphLayout layout;
    /// The defaults, but with badges: they tell the messages of a document.
    kestrel::graph::GraphSettings settings;
    /// The file that the document was read from, which no command may overwrite.
    std::string document;
};

} // namespace material_graph
