/// @file
/// A scene of the benchmarks, and the classes that it may be made of.
#pragma once

#include "Inputs.h"

#include <ks_graph/ks_graph.h>

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

inline constexpr unsigned int unlimited = 0xFFFFFFFFu;

/// The classes of the library themselves.
struct PlainHost
{
    using Scene = kestrel::graph::GraphScene;
    using Node = kestrel::graph::GraphNodeBase;
};

/// A root node and below it nodes with two input pins, "in0" and "in1", and an output pin, "out", all without
/// limit. Made as a host makes it.
template <class Host>
class SampleGraph
{
public:
    using Node = kestrel::graph::GraphNodeBase;
    using Pin = kestrel::graph::GraphNodePin;

    struct Element
    {
        Node* node = nullptr;
        Pin* inputs[2] = {};
        Pin* output = nullptr;
    };

    /// Empty, with room for that many elements, so that making them costs what the scene costs.
    explicit SampleGraph(std::size_t capacity) { elements_.reserve(capacity); }

    /// All of it.
    explicit SampleGraph(Inputs const& inputs) : SampleGraph(inputs.n)
    {
        addElements(inputs);
        for (Edge const& edge : inputs.edges) connect(edge);
    }

    ~SampleGraph() { clear(); }

    SampleGraph(SampleGraph const&) = delete;
    SampleGraph& operator=(SampleGraph const&) = delete;

    /// The first thing to be made.
    void addRoot()
    {
        root_ = new typename Host::Node(0);
        root_->setName("root");
        scene.addNodeToGraph(root_);
        scene.setRootNode(root_);
    }

    /// The root and all elements, not connected.
    void addElements(Inputs const& inputs)
    {
        addRoot();
        for (std::string const& name : inputs.names) addElement(kestrel::KS_String(name));
    }

    Element const& addElement(kestrel::KS_String const& name)
    {
        elements_.push_back(makeElement(static_cast<unsigned int>(elements_.size()) + 1, name, nullptr));
        return elements_.back();
    }

    kestrel::graph::GraphConnection* connect(Edge const& edge)
    {
        return scene.connect(elements_[edge.source].output, elements_[edge.target].inputs[edge.port], false);
    }

    Node* addCompound(char const* name)
    {
        Node* const compound = scene.createNewCompound();
        compound->setName(name);
        scene.addNodeToGraph(compound);
        return compound;
    }

    /// A node like the others, but in a compound and not one of the elements.
    void addChild(Node* compound, kestrel::KS_String const& name)
    {
        makeElement(scene.getFreeNodeId(), name, compound);
    }

    /// Ends the life of a compound and of all nodes in it.
    void removeCompound(Node* compound)
    {
        kestrel::ArrayOfPtr<Node, kestrel::KS_NO> const children(compound->getNodes());
        for (Node* const child : children) scene.removeNodePins(child);
        scene.removeNodePins(compound);
        scene.removeNodeFromGraph(compound);
        for (Node* const child : children) delete child;
        delete compound;
    }

    /// Ends the life of a node, its pins and its connections.
    void remove(std::size_t place)
    {
        Node* const node = elements_[place].node;
        scene.removeNodePins(node);
        scene.removeNodeFromGraph(node);
        delete node;
    }

    /// Everything but the scene itself, and the root too.
    void clear()
    {
        if (root_ == nullptr) return;
        kestrel::ArrayOfPtr<Node, kestrel::KS_NO> nodes;
        scene.getGraphNodesAsList(nodes);
        scene.removeAllConnections();
        for (Node* const node : nodes) node->destroyNodePins(); // the scene goes, too: no map needs to know
        scene.clear();
        delete root_;
        root_ = nullptr;
    }

    Node* root() const { return root_; }
    Element const& operator[](std::size_t place) const { return elements_[place]; }
    std::size_t size() const { return elements_.size(); }

    typename Host::Scene scene;

private:
    Element makeElement(unsigned int id, kestrel::KS_String const& name, Node* owner)
    {
        Element element;
        element.node = new typename Host::Node(id);
        element.node->setName(name);
        if (owner != nullptr) element.node->setNodeOwner(owner);
        scene.addNodeToGraph(element.node);
        element.inputs[0] = addPin(element.node, kestrel::graph::PIN_INPUT, "in0");
        element.inputs[1] = addPin(element.node, kestrel::graph::PIN_INPUT, "in1");
        element.output = addPin(element.node, kestrel::graph::PIN_OUTPUT, "out");
        return element;
    }

    Pin* addPin(Node* node, kestrel::graph::PinDirection const& direction, char const* name)
    {
        Pin* const pin = scene.createNewPin(node, unlimited, direction);
        pin->setName(name);
        return pin;
    }

    Node* root_ = nullptr;
    std::vector<Element> elements_;
};

} // namespace bench
