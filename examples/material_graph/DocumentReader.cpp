#include "DocumentReader.h"

#include "FileNames.h"
#include "GraphBuilder.h"
#include "ReferenceWiring.h"
#include "SourceDocument.h"
#include "SourceFile.h"

namespace material_graph
{

DocumentReader::DocumentReader(MaterialScene& scene, Progress& progress) : scene_(scene), progress_(progress)
{}

std::string DocumentReader::readFile(std::string const& path)
{
    std::string text;
    std::string const unreadable = readWholeFile(path, text);
    if (!unreadable.empty()) return unreadable;
    readText(nameOf(pathOf(path).filename()), text);
    return {};
}

void DocumentReader::readText(std::string const& name, std::string_view text)
{
    SourceDocument const source(name, text);
    Diagnostics diagnostics(scene_, source);
    if (source.defect())
    {
        diagnostics.brokenDocument(*source.defect());
        return;
    }
    Definitions const definitions(source.root());
    DocumentGraph graph = GraphBuilder(scene_, definitions, diagnostics, progress_).build(source.root());
    ReferenceWiring(scene_, graph, definitions, diagnostics, progress_).wire();
    diagnostics.deliver();
    scene_.setIsDirty(false);
}

} // namespace material_graph
