// Hears of every change of a graph through the scene's callbacks, and keeps a log. The callbacks are plain
// functions, one set for all scenes of the process: a host that needs to know which of its editors is meant
// goes by the scene.

#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

unsigned int const noLimit = 0xFFFFFFFF;

void log(GraphScene const* scene, char const* what, KS_String const& name, GraphNodeBase* owner)
{
    std::printf("scene %u: %s %s in %s\n", scene->getId(), what, name.c_str(),
                owner != nullptr ? owner->getFullName().c_str() : "nothing");
}

// Sets the callbacks for as long as it lives. The owner that a callback gets is that of the node, of the
// pin's node, or of the connection's source node: the compound whose canvas has to be drawn again.
class ChangeLog
{
public:
    ChangeLog()
    {
        GraphScene::addNodeCallback_ = [](GraphScene* scene, GraphNodeBase* owner, GraphNodeBase* node)
        { log(scene, "added node", node->getFullName(), owner); };
        GraphScene::removeNodeCallback_ = [](GraphScene* scene, GraphNodeBase* owner, GraphNodeBase* node)
        { log(scene, "removing node", node->getFullName(), owner); };
        GraphScene::addNodePinCallback_ = [](GraphScene* scene, GraphNodeBase* owner, GraphNodePin* pin)
        { log(scene, "added pin", pin->getFullName(), owner); };
        GraphScene::removeNodePinCallback_ = [](GraphScene* scene, GraphNodeBase* owner, GraphNodePin* pin)
        { log(scene, "removing pin", pin->getFullName(), owner); };
        GraphScene::addConnectionCallback_ =
            [](GraphScene* scene, GraphNodeBase* owner, GraphConnection* connection)
        { log(scene, "added connection", connection->getFullName(), owner); };
        GraphScene::removeConnectionCallback_ =
            [](GraphScene* scene, GraphNodeBase* owner, GraphConnection* connection)
        { log(scene, "removing connection", connection->getFullName(), owner); };
    }

    ~ChangeLog()
    {
        GraphScene::addNodeCallback_ = GraphScene::removeNodeCallback_ = nullptr;
        GraphScene::addNodePinCallback_ = GraphScene::removeNodePinCallback_ = nullptr;
        GraphScene::addConnectionCallback_ = GraphScene::removeConnectionCallback_ = nullptr;
    }

    ChangeLog(ChangeLog const&) = delete;
    ChangeLog& operator=(ChangeLog const&) = delete;
};

GraphNodeBase* addNode(GraphScene& scene, char const* name)
{
    auto* const node = new GraphNodeBase(scene.getFreeNodeId());
    node->setName(name);
    scene.addNodeToGraph(node);
    return node;
}

void deleteGraph(GraphScene& scene)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* node : nodes) scene.removeNodePins(node);
    scene.clear();
    delete scene.getRootNode();
}

} // namespace

int main()
{
    GraphScene scene;
    scene.setRootNode(addNode(scene, "root"));
    {
        ChangeLog const changes;
        GraphNodeBase* const noise = addNode(scene, "noise");
        GraphNodeBase* const blur = addNode(scene, "blur");
        scene.createNewPin(noise, noLimit, PIN_OUTPUT)->setName("out"); // heard of before it has its name
        scene.createNewPin(blur, 1, PIN_INPUT)->setName("in");
        scene.connect(noise, blur, false);
        scene.connect(noise, blur, false); // refused, so nothing changes

        // No callback tells of a rename. The dirty flag does, when the pins' names change with it.
        scene.setIsDirty(false);
        blur->setName("soft blur");
        std::printf("renamed without a word; the scene is %s\n", scene.getIsDirty() ? "dirty" : "clean");

        scene.removeNodePins(blur);
        scene.removeNodeFromGraph(blur);
        delete blur;
    }
    deleteGraph(scene); // nobody listens any more
}
