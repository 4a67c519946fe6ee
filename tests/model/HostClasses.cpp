#include "HostClasses.h"

namespace kestrel::graph::test::model
{

KS_String HostNode::getName()
{
    return profile_.names ? GraphNodeBase::getName() + "~" : GraphNodeBase::getName();
}

KS_String HostNode::getFullName()
{
    return profile_.fullNames ? KS_String("/") + GraphNodeBase::getFullName() : GraphNodeBase::getFullName();
}

KS_String HostPin::getName()
{
    return profile_.names ? GraphNodePin::getName() + "~" : GraphNodePin::getName();
}

bool HostPin::isFull() const
{
    if (!profile_.rules) return GraphNodePin::isFull();
    ArrayOfPtr<GraphConnection, KS_NO> counted;
    getConnections(counted, false);
    return counted.size() >= getMaxNumConnections();
}

bool HostPin::allowsConnectionFrom(GraphNodePin const* other) const
{
    if (!GraphNodePin::allowsConnectionFrom(other)) return false;
    if (!profile_.rules) return true;
    unsigned int const length =
        const_cast<HostPin*>(this)->getName().length() + const_cast<GraphNodePin*>(other)->getName().length();
    return length % 4 != 1;
}

bool HostPin::allowsConnectionTo(GraphNodePin const* other) const
{
    if (!GraphNodePin::allowsConnectionTo(other)) return false;
    return !profile_.rules || getParentGraphNodePtr() == nullptr ||
           getParentGraphNodePtr() != other->getParentGraphNodePtr();
}

unsigned int HostScene::getFreeNodeId()
{
    return profile_.ids ? lastNodeId_ += 3 : GraphScene::getFreeNodeId();
}

GraphConnection* HostScene::createGraphConnection(GraphNodePin* source, GraphNodePin* target)
{
    if (!profile_.factories) return GraphScene::createGraphConnection(source, target);
    return source->getName() == "value" ? nullptr : new HostConnection(source, target);
}

GraphNodeBase* HostScene::createNewCompound()
{
    if (!profile_.factories) return GraphScene::createNewCompound();
    HostNode* const node = new HostNode(profile_, hook_);
    node->setId(getFreeNodeId());
    node->setCompound(true);
    return node;
}

GraphNodeBase* HostScene::createNewInterfaceNode()
{
    if (!profile_.factories) return GraphScene::createNewInterfaceNode();
    HostNode* const node = new HostNode(profile_, hook_);
    node->setId(getFreeNodeId());
    node->setInterface(true);
    return node;
}

GraphNodePin* HostScene::createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction)
{
    if (!profile_.pins) return GraphScene::createNewPin(maxNumConnections, direction);
    HostPin* const pin = new HostPin(profile_, maxNumConnections, direction);
    pin->setId(nextPinId_++);
    addNodePin(pin);
    setIsDirty(true);
    return pin;
}

} // namespace kestrel::graph::test::model
