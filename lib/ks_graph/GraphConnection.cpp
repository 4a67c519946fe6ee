#include <ks_graph/GraphConnection.h>

#include "ChildList.h"
#include "Names.h"
#include "ScopeExit.h"

#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>

namespace kestrel::graph
{

namespace
{

GraphNodeBase* nodeOf(GraphNodePin const* pin)
{
    return pin != nullptr ? pin->getParentGraphNodePtr() : nullptr;
}

bool isNodeOf(GraphNodeBase const* node, GraphNodePin const* pin)
{
    return node != nullptr && nodeOf(pin) == node;
}

bool isSameNode(GraphNodePin const* pin, GraphNodeBase const& other)
{
    GraphNodeBase const* const node = nodeOf(pin);
    return node != nullptr && node->isSameNodeAs(other);
}

int xmlId(GraphNodePin const* pin)
{
    GraphNodeBase const* const node = nodeOf(pin);
    return node != nullptr ? static_cast<int>(node->getId()) : -1;
}

} // namespace

GraphConnection::GraphConnection() = default;

GraphConnection::GraphConnection(GraphNodePin* source, GraphNodePin* target)
    : sourcePin_(source), targetPin_(target)
{}

GraphConnection::GraphConnection(GraphConnection const& other) = default;
GraphConnection& GraphConnection::operator=(GraphConnection const& other) = default;
GraphConnection::~GraphConnection() = default;

bool GraphConnection::operator==(GraphConnection const& other) const
{
    return isSameAs(other);
}

bool GraphConnection::isSameAs(GraphConnection const& other) const
{
    return sourcePin_ == other.sourcePin_ && targetPin_ == other.targetPin_;
}

bool GraphConnection::isConnected() const
{
    return sourcePin_ != nullptr && targetPin_ != nullptr && sourcePin_->isOutputPin() &&
           targetPin_->isInputPin();
}

bool GraphConnection::isConnectedPin(GraphNodePin const* pin) const
{
    return isConnectedPinSource(pin) || isConnectedPinTarget(pin);
}

bool GraphConnection::isConnectedPinSource(GraphNodePin const* pin) const
{
    return pin == sourcePin_ && isConnected();
}

bool GraphConnection::isConnectedPinTarget(GraphNodePin const* pin) const
{
    return pin == targetPin_ && isConnected();
}

bool GraphConnection::isLoop() const
{
    return isConnected() && sourcePin_ == targetPin_;
}

bool GraphConnection::isNodeLoop() const
{
    if (!isConnected()) return false;
    GraphNodeBase const* const source = getSourceNode();
    return source != nullptr && source == getTargetNode();
}

bool GraphConnection::isSameNode() const
{
    return isConnected() && isNodeOf(nodeOf(sourcePin_), targetPin_);
}

bool GraphConnection::isConnectedNode(GraphNodeBase const* node) const
{
    return isConnected() && (isNodeOf(node, sourcePin_) || isNodeOf(node, targetPin_));
}

bool GraphConnection::isConnectedNodeSource(GraphNodeBase const* node) const
{
    return isConnected() && isNodeOf(node, sourcePin_);
}

bool GraphConnection::isConnectedNodeTarget(GraphNodeBase const* node) const
{
    return isConnected() && isNodeOf(node, targetPin_);
}

bool GraphConnection::areNodesConnected(GraphNodeBase const& from, GraphNodeBase const& to,
                                        bool const& recursive, bool const& bothWays) const
{
    if (!isConnected()) return false;
    if (graph::isSameNode(sourcePin_, from) && graph::isSameNode(targetPin_, to)) return true;
    if (recursive && (recursiveSearch(from, to, false) || recursiveSearch(to, from, true))) return true;
    return bothWays && areNodesConnected(to, from, recursive, false);
}

// The direction turns here: a child of `from` is tested as the target of `to`, and a child of `to` as the
// source of `from`. Hosts rely on it.
bool GraphConnection::recursiveSearch(GraphNodeBase const& node, GraphNodeBase const& other,
                                      bool const& childIsSource) const
{
    if (!node.isCompound()) return false;
    // A plain loop: this recurses once for each level of a tree that may be thousands of levels deep.
    for (GraphNodeBase const* const child : ChildList(node).get())
        if (childIsSource ? areNodesConnected(*child, other, true, false)
                          : areNodesConnected(other, *child, true, false))
            return true;
    return false;
}

GraphNodeBase* GraphConnection::getSourceNode() const
{
    return nodeOf(sourcePin_);
}

GraphNodeBase* GraphConnection::getTargetNode() const
{
    return nodeOf(targetPin_);
}

bool GraphConnection::sourceIsCompoundPin() const
{
    return sourcePin_ != nullptr && sourcePin_->isCompoundPin();
}

bool GraphConnection::targetIsCompoundPin() const
{
    return targetPin_ != nullptr && targetPin_->isCompoundPin();
}

bool GraphConnection::sourceIsInterfacePin() const
{
    return sourcePin_ != nullptr && sourcePin_->isInterfacePin();
}

bool GraphConnection::targetIsInterfacePin() const
{
    return targetPin_ != nullptr && targetPin_->isInterfacePin();
}

KS_String GraphConnection::getFullName()
{
    if (!isConnected()) return KS_String();
    GraphNodeBase* const source = getSourceNode();
    GraphNodeBase* const target = getTargetNode();
    if (source == nullptr || target == nullptr) return KS_String();
    return KS_String::concatenated({cText(source->getFullName()), ".", cText(sourcePin_->getName()), " > ",
                                    cText(target->getFullName()), ".", cText(targetPin_->getName())});
}

bool GraphConnection::isImplicit() const
{
    return implicit_;
}

bool GraphConnection::isBidirectional() const
{
    return false;
}

void GraphConnection::setImplicit(bool const& implicit)
{
    implicit_ = implicit;
}

void GraphConnection::removeFromConnectedPins()
{
    removeFromSourcePin();
    removeFromTargetPin();
}

void GraphConnection::removeFromSourcePin()
{
    if (sourcePin_ != nullptr) sourcePin_->removeOutputConnection(this);
}

void GraphConnection::removeFromTargetPin()
{
    if (targetPin_ != nullptr) targetPin_->removeInputConnection(this);
}

void GraphConnection::addToConnectedPins()
{
    addToSourcePin();
    ScopeExit leave([this] { removeFromSourcePin(); });
    addToTargetPin();
    leave.dismiss();
}

void GraphConnection::addToSourcePin()
{
    if (sourcePin_ != nullptr) sourcePin_->addOutputConnection(this);
}

void GraphConnection::addToTargetPin()
{
    if (targetPin_ != nullptr) targetPin_->addInputConnection(this);
}

KS_String GraphConnection::toXml()
{
    return KS_String::concatenated({"<connection source-node=\"", Decimal(xmlId(sourcePin_)),
                                    "\" target-node=\"", Decimal(xmlId(targetPin_)), "\"/>\n"});
}

} // namespace kestrel::graph
