// What a project that uses the installed package does: derives, builds a graph, keeps its layout.

#include <foundation/FileStream.h>
#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

class LoudNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    ~LoudNode() override { destroyNodePins(); }

    KS_String getInfo() override { return "loud"; }
};

GraphNodePin* addNode(GraphScene& scene, char const* name, PinDirection const& direction)
{
    auto* const node = new LoudNode(scene.getFreeNodeId());
    node->setName(name);
    scene.addNodeToGraph(node);
    return scene.createNewPin(node, 1, direction);
}

bool keepsItsLayout()
{
    std::FILE* const file = std::tmpfile();
    if (file == nullptr) return false;
    FileStreamEndian stream(file);
    GraphLayout written;
    written.insertNodePosition("a", {1.0f, 2.0f});
    bool good = written.write(stream);
    std::rewind(file);
    GraphLayout read;
    good = read.read(stream) && good && read == written;
    std::fclose(file);
    return good;
}

} // namespace

int main()
{
    GraphScene scene;
    GraphNodePin* const from = addNode(scene, "a", PIN_OUTPUT);
    GraphNodePin* const to = addNode(scene, "b", PIN_INPUT);
    bool const wired = scene.connect(from, to, false) != nullptr;
    bool const derived = scene.getNodePtrByFullName("b")->getInfo() == "loud";
    bool const layout = keepsItsLayout();
    GraphSettings const settings;
    std::printf("wired %d, derived %d, layout %d, version %u, grid %d\n", wired, derived, layout,
                GraphLayout::VERSION, settings.getGridSize());
    scene.removeAllConnections();
    scene.clear();
    return wired && derived && layout ? 0 : 1;
}
