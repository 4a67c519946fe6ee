/// @file
/// What the snippets of the pages stand in. The pages show the code; this is what they leave out.
#pragma once

#include <ks_graph/ks_graph.h>

#include <cstdio>

namespace kestrel::graph
{

inline constexpr unsigned int noLimit = 0xFFFFFFFF;

/// A scene with a registered root node named "root". Every node that is registered at its end goes with it.
class PageGraph
{
public:
    PageGraph()
    {
        auto* const root = new GraphNodeBase(scene.getFreeNodeId());
        root->setName("root");
        scene.addNodeToGraph(root);
        scene.setRootNode(root);
    }

    ~PageGraph()
    {
        ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
        scene.getGraphNodesAsList(nodes);
        for (GraphNodeBase* node : nodes) scene.removeNodePins(node);
        scene.clear();
        delete scene.getRootNode();
    }

    PageGraph(PageGraph const&) = delete;
    PageGraph& operator=(PageGraph const&) = delete;

    GraphScene scene;
};

inline GraphNodeBase* addNode(GraphScene& scene, KS_String const& name, GraphNodeBase* owner = nullptr)
{
    auto* const node = new GraphNodeBase(scene.getFreeNodeId());
    node->setName(name);
    if (owner != nullptr) node->setNodeOwner(owner);
    scene.addNodeToGraph(node);
    return node;
}

inline GraphNodePin* addPin(GraphNodeBase* node, KS_String const& name, PinDirection const& direction,
                            unsigned int capacity)
{
    GraphNodePin* const pin = node->getGraphScene()->createNewPin(node, capacity, direction);
    pin->setName(name);
    return pin;
}

inline GraphNodePin* addInput(GraphNodeBase* node, KS_String const& name, unsigned int capacity = noLimit)
{
    return addPin(node, name, PIN_INPUT, capacity);
}

inline GraphNodePin* addOutput(GraphNodeBase* node, KS_String const& name, unsigned int capacity = noLimit)
{
    return addPin(node, name, PIN_OUTPUT, capacity);
}

/// So that no snippet hears what a later one does.
inline void forgetCallbacks()
{
    GraphScene::addNodeCallback_ = GraphScene::removeNodeCallback_ = nullptr;
    GraphScene::addNodePinCallback_ = GraphScene::removeNodePinCallback_ = nullptr;
    GraphScene::updateNodePinCallback_ = nullptr;
    GraphScene::addConnectionCallback_ = GraphScene::removeConnectionCallback_ = nullptr;
}

inline char const* yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

} // namespace kestrel::graph
