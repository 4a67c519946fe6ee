/// @file
#pragma once

#include "MaterialScene.h"

#include <string>

namespace material_graph
{

struct Summary
{
    /// Of nodes that are neither compounds nor interface nodes. The root, which stands for the document, is
    /// counted nowhere.
    unsigned int nodes = 0;
    unsigned int compounds = 0;
    unsigned int interfaceNodes = 0;
    unsigned int pins = 0;
    unsigned int connections = 0;
    /// How many levels there are below the root.
    unsigned int depth = 0;
    /// Of all nodes and pins.
    std::string longestFullName;
    unsigned int messages = 0;
};

/// Linear in the size of the scene.
Summary summarize(MaterialScene& scene);

/// One line for each count.
std::string toText(Summary const& summary);

} // namespace material_graph
