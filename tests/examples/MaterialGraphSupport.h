/// @file
/// Documents, runs and files for the tests of the example host.
#pragma once

#include <material_graph/CommandLine.h>
#include <material_graph/DocumentReader.h>
#include <material_graph/FileNames.h>
#include <material_graph/MaterialScene.h>
#include <material_graph/Progress.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace material_graph::test
{

inline std::string exampleFile(std::string const& name)
{
    return EXAMPLE_DATA_DIR "/" + name;
}

inline std::string materialx(std::string const& content)
{
    return "<materialx version=\"1.39\">\n" + content + "\n</materialx>\n";
}

/// The documents of examples/data.
inline std::vector<std::string> exampleNames()
{
    return {"brick_wall", "broken_references", "weathered_bronze"};
}

struct ExampleFile
{
    std::string name;
};

/// A scene that a document was read into; the first line of `content` is line 2 of the document "test".
struct Document
{
    explicit Document(std::string const& content)
    {
        DocumentReader(scene, quiet).readText("test", materialx(content));
    }
    explicit Document(ExampleFile const& file)
    {
        std::string const error = DocumentReader(scene, quiet).readFile(exampleFile(file.name));
        if (!error.empty()) throw std::runtime_error(error);
    }

    MaterialNode& node(std::string const& name)
    {
        MaterialNode* const found = scene.findNode(name);
        if (found == nullptr) throw std::runtime_error("no node " + name);
        return *found;
    }

    MaterialPin& pin(std::string const& name)
    {
        auto* const found =
            dynamic_cast<MaterialPin*>(scene.getPinPtrByFullName(kestrel::KS_String("root." + name)));
        if (found == nullptr) throw std::runtime_error("no pin " + name);
        return *found;
    }

    Progress quiet{nullptr};
    MaterialScene scene;
};

/// "title: content" of each.
inline std::vector<std::string> messagesOf(MaterialScene const& scene)
{
    std::vector<std::string> lines;
    for (kestrel::graph::Message const& message : scene.getMessages().getMessages())
        lines.push_back(std::string(message.getTitle()) + ": " + std::string(message.getContent()));
    return lines;
}

inline std::vector<std::string> connectionsOf(MaterialScene& scene)
{
    std::vector<std::string> names;
    for (kestrel::graph::GraphConnection* connection : scene.getGraphConnections())
        names.emplace_back(connection->getFullName());
    return names;
}

/// Whatever has a picture of its own: the root and every compound.
inline std::vector<kestrel::graph::GraphNodeBase*> levelsOf(MaterialScene& scene)
{
    kestrel::ArrayOfPtr<kestrel::graph::GraphNodeBase, kestrel::KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    std::vector<kestrel::graph::GraphNodeBase*> levels;
    for (kestrel::graph::GraphNodeBase* node : nodes)
        if (node->isRoot() || node->isCompound()) levels.push_back(node);
    return levels;
}

/// A folder for the files of a test, which goes with it.
class Folder
{
public:
    Folder()
        : path_(std::filesystem::temp_directory_path() /
                ("material_graph_" + std::to_string(std::random_device{}())))
    {
        if (!std::filesystem::create_directory(path_)) throw std::runtime_error("no temporary folder");
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    std::string file(std::string const& name) const { return nameOf(path_ / pathOf(name)); }

    std::string write(std::string const& name, std::string const& text) const
    {
        std::ofstream(pathOf(file(name)), std::ios::binary) << text;
        return file(name);
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (auto const& entry : std::filesystem::directory_iterator(path_))
            found.push_back(nameOf(entry.path().filename()));
        return found;
    }

private:
    std::filesystem::path path_;
};

inline std::string contentOf(std::string const& path)
{
    std::ifstream file(pathOf(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A run of the program.
struct Outcome
{
    explicit Outcome(std::vector<std::string> const& arguments)
    {
        std::ostringstream outStream;
        std::ostringstream errStream;
        Progress quiet(nullptr);
        status = runCommandLine(arguments, outStream, errStream, quiet);
        out = outStream.str();
        err = errStream.str();
    }

    Status status;
    std::string out;
    std::string err;
};

/// The program on a file "test.mtlx" of that content.
inline Outcome runOn(std::string const& content, std::vector<std::string> arguments)
{
    Folder const folder;
    arguments.insert(arguments.begin(), folder.write("test.mtlx", materialx(content)));
    return Outcome(arguments);
}

} // namespace material_graph::test
