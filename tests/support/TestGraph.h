/// @file
/// A small graph that cleans up after itself, whatever a test did to it.
#pragma once

#include <ks_graph/ks_graph.h>

#include <set>
#include <vector>

namespace kestrel::graph::test
{

/// A node that destroys its pins with itself and lets `TestGraph` know when it goes.
class TestNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    TestNode(TestNode const&) = delete;
    TestNode& operator=(TestNode const&) = delete;

    ~TestNode() override
    {
        destroyNodePins();
        if (living != nullptr) living->erase(this);
    }

    std::set<GraphNodeBase*>* living = nullptr;
};

inline constexpr unsigned int unlimited = 0xFFFFFFFFu;

/// A scene with a registered root node named "root" (id 1). Nodes and pins are made with `addNode` and
/// `addPin`; whatever of them, and of the nodes that the library made, is left at the end is deleted.
template <class Scene = GraphScene>
class TestGraph
{
public:
    TestGraph() : root(newNode<TestNode>("root"))
    {
        scene.setRootNode(&root);
        scene.addNodeToGraph(&root);
        scene.setIsDirty(false);
    }

    ~TestGraph()
    {
        scene.removeAllConnections();
        ArrayOfPtr<GraphNodeBase, KS_NO> registered;
        scene.getGraphNodesAsList(registered);
        std::set<GraphNodeBase*> nodes(living_);
        nodes.insert(registered.begin(), registered.end());
        living_.clear();
        for (GraphNodeBase* node : nodes)
        {
            node->destroyNodePins();
            delete node;
        }
    }

    TestGraph(TestGraph const&) = delete;
    TestGraph& operator=(TestGraph const&) = delete;

    /// A registered node with a free id, under `owner` or under the root.
    template <class Node = TestNode>
    Node& addNode(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        Node& node = newNode<Node>(name);
        if (owner != nullptr) node.setNodeOwner(owner);
        scene.addNodeToGraph(&node);
        return node;
    }

    /// A node with a free id that is in no scene and has no owner.
    template <class Node = TestNode>
    Node& newNode(KS_String const& name)
    {
        Node* const node = new Node;
        node->setId(scene.getFreeNodeId());
        node->setName(name);
        node->living = &living_;
        living_.insert(node);
        return *node;
    }

    /// A registered pin of the node, made by the scene and then named.
    GraphNodePin& addPin(GraphNodeBase& node, KS_String const& name, PinDirection const& direction,
                         unsigned int capacity = unlimited)
    {
        GraphNodePin* const pin = scene.createNewPin(&node, capacity, direction);
        pin->setName(name);
        return *pin;
    }

    GraphNodePin& addInput(GraphNodeBase& node, KS_String const& name = "in",
                           unsigned int capacity = unlimited)
    {
        return addPin(node, name, PIN_INPUT, capacity);
    }

    GraphNodePin& addOutput(GraphNodeBase& node, KS_String const& name = "out",
                            unsigned int capacity = unlimited)
    {
        return addPin(node, name, PIN_OUTPUT, capacity);
    }

    /// A registered node with one input pin "in" and one output pin "out", both without limit.
    TestNode& addFilter(KS_String const& name, GraphNodeBase* owner = nullptr)
    {
        TestNode& node = addNode(name, owner);
        addInput(node);
        addOutput(node);
        return node;
    }

private:
    std::set<GraphNodeBase*> living_;

public:
    Scene scene;
    TestNode& root;
};

/// The elements of a list, to compare with.
template <class T>
std::vector<T*> listed(ArrayOfPtr<T, KS_NO> const& list)
{
    return std::vector<T*>(list.begin(), list.end());
}

} // namespace kestrel::graph::test
