#include "DocumentReader.h"

#include "GraphBuilder.h"
#include "ReferenceWiring.h"
#include "SourceDocument.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace material_graph
{

DocumentReader::DocumentReader(MaterialScene& scene, Progress& progress) : scene_(scene), progress_(progress)
{}

std::string DocumentReader::readFile(std::string const& path)
{
    std::error_code unknown;
    if (std::filesystem::is_directory(path, unknown)) return "it is a directory";
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::strerror(errno);
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) return std::strerror(errno);
    readText(std::filesystem::path(path).filename().string(), text);
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
