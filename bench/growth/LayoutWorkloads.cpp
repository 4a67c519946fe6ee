#include "../Inputs.h"
#include "Workload.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench
{

namespace
{

using kestrel::Color4;
using kestrel::FileStreamEndian;
using kestrel::KS_String;
using kestrel::Tuple2;
using kestrel::graph::GraphLayout;

using Texts = std::vector<KS_String>;

Texts fullNames(std::uint32_t count, char const* owner)
{
    Texts names;
    for (std::string const& name : Inputs(count).names) names.emplace_back(std::string(owner).append(name));
    return names;
}

void insertNode(GraphLayout& layout, KS_String const& name, float x)
{
    layout.insertNode(name, Tuple2<float, float>(x, -x), Color4<float>(0.2f, 0.4f, 0.6f, 1.0f), false, true,
                      true, false);
}

std::unique_ptr<GraphLayout> layoutOf(Texts const& names)
{
    auto layout = std::make_unique<GraphLayout>();
    for (std::size_t i = 0; i < names.size(); ++i) insertNode(*layout, names[i], static_cast<float>(i));
    return layout;
}

// A temporary file that is empty at first.
class LayoutFile
{
public:
    LayoutFile() : file_(std::tmpfile()) { require(file_ != nullptr); }
    ~LayoutFile() { std::fclose(file_); }
    LayoutFile(LayoutFile const&) = delete;
    LayoutFile& operator=(LayoutFile const&) = delete;

    void write(GraphLayout const& layout)
    {
        std::rewind(file_);
        FileStreamEndian stream(file_);
        require(layout.write(stream));
    }

    void read(GraphLayout& layout)
    {
        std::rewind(file_);
        FileStreamEndian stream(file_);
        require(layout.read(stream));
    }

private:
    std::FILE* file_;
};

void insert(std::uint32_t nodes, Measurement& measurement)
{
    Texts const names = fullNames(nodes, "root.");
    GraphLayout layout;
    std::int64_t const before = allocationsSoFar().livingBytes;
    measurement.all(nodes, [&](std::size_t i) { insertNode(layout, names[i], static_cast<float>(i)); });
    measurement.bytesEach(allocationsSoFar().livingBytes - before, nodes);
}

void lookUp(std::uint32_t nodes, Measurement& measurement)
{
    Texts const names = fullNames(nodes, "root.");
    auto const layout = layoutOf(names);
    Inputs::Places const places = Inputs(nodes).namesAskedFor;
    measurement.loop(places.size(), [&](std::size_t i)
                     { require(layout->getPositionByNodeName(names[places[i]]).has_value()); });
}

void renamePrefix(std::uint32_t nodes, Measurement& measurement)
{
    auto const layout = layoutOf(fullNames(nodes, "root."));
    measurement.once(nodes, [&] { layout->replacePrefixInNames("root.", "top."); });
}

void applyDictionary(std::uint32_t nodes, Measurement& measurement)
{
    Texts const oldNames = fullNames(nodes, "root.");
    Texts const newNames = fullNames(nodes, "top.");
    std::map<KS_String const, KS_String> dictionary;
    for (std::size_t i = 0; i < nodes; ++i) dictionary.emplace(oldNames[i], newNames[i]);
    auto const layout = layoutOf(oldNames);
    measurement.once(nodes, [&] { layout->applyDictionary(dictionary); });
}

void write(std::uint32_t nodes, Measurement& measurement)
{
    auto const layout = layoutOf(fullNames(nodes, "root."));
    LayoutFile file;
    measurement.once(nodes, [&] { file.write(*layout); });
}

void read(std::uint32_t nodes, Measurement& measurement)
{
    LayoutFile file;
    file.write(*layoutOf(fullNames(nodes, "root.")));
    GraphLayout layout;
    measurement.once(nodes, [&] { file.read(layout); });
}

} // namespace

std::vector<Workload> layoutWorkloads()
{
    return {
        {"layout_insert", insert},          {"layout_lookup", lookUp}, {"layout_rename_prefix", renamePrefix},
        {"layout_rename", applyDictionary}, {"layout_write", write},   {"layout_read", read},
    };
}

} // namespace bench
