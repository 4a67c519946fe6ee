/// @file
#pragma once

#include "MaterialScene.h"
#include "Progress.h"

#include <string>
#include <string_view>

namespace material_graph
{

/// Reads a document into an empty scene. What is wrong with the document becomes messages of the scene; what
/// can be read in spite of it is in the scene.
class DocumentReader
{
public:
    DocumentReader(MaterialScene& scene, Progress& progress);

    /// Why the file could not be read; empty when it was, whatever it holds.
    std::string readFile(std::string const& path);

    /// `name` stands for the file in messages.
    void readText(std::string const& name, std::string_view text);

private:
    MaterialScene& scene_;
    Progress& progress_;
};

} // namespace material_graph
