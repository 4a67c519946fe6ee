#include "MaterialScene.h"

#include <utility>
#include <vector>

namespace material_graph
{

using kestrel::Color4;
using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::PIN_INPUT;
using kestrel::graph::PIN_OUTPUT;
using kestrel::graph::PinDirection;

namespace
{

constexpr unsigned int unlimited = 0xFFFFFFFFu;

// What is left of a full name below a node whose full name ends in front of it.
using Rest = std::string_view;

// Whether the name is the next part of the full name. Names may hold dots, so more than one child may match.
bool startsWithPart(Rest rest, std::string_view name)
{
    return rest.substr(0, name.size()) == name && (rest.size() == name.size() || rest[name.size()] == '.');
}

Rest behindPart(Rest rest, std::string_view name)
{
    return rest.substr(rest.size() == name.size() ? name.size() : name.size() + 1);
}

} // namespace

MaterialScene::MaterialScene() : root_(getFreeNodeId())
{
    root_.setName("root");
    root_.setType("materialx");
    root_.setCompound(true);
    setRootNode(&root_);
    GraphScene::addNodeToGraph(&root_);
    MaterialScene::setupNodeColor();
    setIsDirty(false);
}

MaterialScene::~MaterialScene()
{
    MaterialScene::clear();
}

MaterialNode& MaterialScene::addMaterialNode(KS_String const& category, KS_String const& name,
                                             GraphNodeBase& owner)
{
    auto* const node = new MaterialNode(getFreeNodeId());
    node->setName(name);
    node->setType(category);
    node->setCategory(category);
    node->setNodeOwner(&owner);
    addNodeToGraph(node);
    return *node;
}

MaterialNode& MaterialScene::addCompound(KS_String const& name, GraphNodeBase& owner)
{
    MaterialNode* const compound = createNewCompound();
    compound->setName(name);
    compound->setNodeOwner(&owner);
    addNodeToGraph(compound);
    return *compound;
}

MaterialPin& MaterialScene::addInput(GraphNodeBase& node, KS_String const& name, KS_String const& type)
{
    return addPin(node, name, type, 1, PIN_INPUT);
}

MaterialPin& MaterialScene::addOutput(GraphNodeBase& node, KS_String const& name, KS_String const& type)
{
    return addPin(node, name, type, unlimited, PIN_OUTPUT);
}

MaterialPin& MaterialScene::addPin(GraphNodeBase& node, KS_String const& name, KS_String const& type,
                                   unsigned int capacity, PinDirection const& direction)
{
    MaterialPin* const pin = createNewPin(&node, capacity, direction);
    pin->setName(getFreePinName(node.getFullName(), name));
    pin->setType(type);
    return *pin;
}

MaterialScene::PinPair MaterialScene::addInterfacePair(PinDirection const& direction, GraphNodeBase& compound,
                                                       GraphNodeBase*& interfaceNode, KS_String const& name,
                                                       KS_String const& type)
{
    GraphNodePin* outer = nullptr;
    GraphNodePin* inner = nullptr;
    if (interfaceNode == nullptr)
        addCompoundInterfaceNode(direction, &compound, interfaceNode, outer, inner);
    else
        addCompoundInterfacePin(direction, interfaceNode, outer, inner);
    inner->setName(getFreePinName(compound.getFullName(), name));
    (direction == PIN_INPUT ? outer : inner)->setMaxNumConnections(1);
    PinPair const pair{static_cast<MaterialPin&>(*outer), static_cast<MaterialPin&>(*inner)};
    pair.inner.setType(type);
    return pair;
}

void MaterialScene::deleteNode(GraphNodeBase& node)
{
    removeNodePins(&node);
    for (GraphNodePin* pin : node.getNodePins())
    {
        removeConnectionsWithPin(pin);
        removeNodePin(pin);
    }
    removeNodeFromGraph(&node);
    delete &node;
}

MaterialNode* MaterialScene::findNode(std::string_view name)
{
    GraphNodeBase* node = getNodePtrByFullName(name);
    if (node == nullptr) node = getNodePtrByFullName(root_.getFullName() + "." + KS_String(name));
    return dynamic_cast<MaterialNode*>(node);
}

GraphNodePin* MaterialScene::findPin(std::string_view name)
{
    GraphNodePin* const pin = getPinPtrByFullNameCaseInsensitive(name);
    if (pin != nullptr) return pin;
    return getPinPtrByFullNameCaseInsensitive(root_.getFullName() + "." + KS_String(name));
}

GraphNodeBase* MaterialScene::getNodePtrByFullName(KS_String const& name) const
{
    GraphNodeBase* const top = getRootNode();
    KS_String const topName = top->getName();
    if (!startsWithPart(name, topName)) return nullptr;
    if (name == topName) return top;
    GraphNodeBase* found = nullptr;
    std::vector<std::pair<GraphNodeBase*, Rest>> open{{top, behindPart(name, topName)}};
    while (!open.empty())
    {
        auto const [node, rest] = open.back();
        open.pop_back();
        for (GraphNodeBase* child : node->getNodes())
        {
            KS_String const childName = child->getName();
            if (!startsWithPart(rest, childName)) continue;
            if (rest.size() != childName.length())
                open.emplace_back(child, behindPart(rest, childName));
            else if (found == nullptr || child->getId() < found->getId())
                found = child;
        }
    }
    return found;
}

void MaterialScene::setupNodeColor()
{
    GraphScene::setupNodeColor();
    nodeColorMap_ = {
        {"materialx", Color4<float>(0.45f, 0.45f, 0.5f, 1.0f)},
        {"nodegraph", Color4<float>(0.8f, 0.6f, 0.8f, 1.0f)},
        {"interface", Color4<float>(0.9f, 0.7f, 0.2f, 1.0f)},
        {"surfacematerial", Color4<float>(0.85f, 0.35f, 0.6f, 1.0f)},
        {"standard_surface", Color4<float>(0.2f, 0.8f, 0.7f, 1.0f)},
        {"image", Color4<float>(0.7f, 0.5f, 0.35f, 1.0f)},
        {"tiledimage", Color4<float>(0.7f, 0.5f, 0.35f, 1.0f)},
        {"constant", Color4<float>(0.75f, 0.75f, 0.75f, 1.0f)},
        {"mix", Color4<float>(0.55f, 0.75f, 0.9f, 1.0f)},
    };
}

MaterialNode* MaterialScene::createNewCompound()
{
    auto* const compound = new MaterialNode(getFreeNodeId());
    compound->setCompound(true);
    compound->setType("nodegraph");
    compound->setCategory("nodegraph");
    return compound;
}

MaterialNode* MaterialScene::createNewInterfaceNode()
{
    auto* const node = new MaterialNode(getFreeNodeId());
    node->setInterface(true);
    node->setType("interface");
    node->setCategory("interface");
    return node;
}

MaterialPin* MaterialScene::createNewPin(GraphNodeBase* node, unsigned int const& maxNumConnections,
                                         PinDirection const& direction)
{
    return static_cast<MaterialPin*>(GraphScene::createNewPin(node, maxNumConnections, direction));
}

MaterialPin* MaterialScene::createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction)
{
    auto* const pin = new MaterialPin(maxNumConnections, direction);
    pin->setId(++lastPinId_);
    KS_String name;
    name.format("new pin #%u", lastPinId_);
    pin->setName(name);
    addNodePin(pin);
    return pin;
}

MaterialConnection* MaterialScene::createGraphConnection(GraphNodePin* source, GraphNodePin* target)
{
    return new MaterialConnection(source, target);
}

} // namespace material_graph
