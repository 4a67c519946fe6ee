/// @file
#pragma once

#include "MaterialScene.h"
#include "SourceDocument.h"

#include <cstddef>
#include <string>
#include <vector>

namespace material_graph
{

/// Turns the defects of a document into messages of the scene, titled with their place in the file. A defect
/// of a node becomes a message of that node, too.
class Diagnostics
{
public:
    Diagnostics(MaterialScene& scene, SourceDocument const& source) : scene_(scene), source_(source) {}

    void brokenDocument(std::string const& text);
    void error(pugi::xml_node element, kestrel::graph::GraphNodeBase& node, std::string const& text);

    /// The scene gets the errors now, in the order of the document, whatever order they were found in.
    void deliver();

private:
    struct Finding
    {
        std::ptrdiff_t offset;
        kestrel::graph::Message message;
    };

    MaterialScene& scene_;
    SourceDocument const& source_;
    std::vector<Finding> findings_;
};

} // namespace material_graph
