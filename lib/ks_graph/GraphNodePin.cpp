#include <ks_graph/GraphNodePin.h>

#include "ConnectionIndex.h"
#include "FullNameText.h"
#include "Names.h"
#include "PlainTypes.h"
#include "PointerSet.h"
#include "SceneRegistry.h"
#include "ScopeExit.h"

#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphScene.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace kestrel::graph
{

namespace
{

constexpr PinDirection inputAndOutput = PIN_INPUT | PIN_OUTPUT;

bool isLeftOut(GraphConnection const* connection, bool includeImplicit)
{
    return !includeImplicit && connection->isImplicit();
}

// `visit` returns whether to go on, and may append to the list.
template <class IsWanted, class Visit>
bool visitList(ArrayOfPtr<GraphConnection, KS_NO> const& list, bool includeImplicit, IsWanted isWanted,
               Visit visit)
{
    unsigned int const count = list.size();
    for (unsigned int i = 0; i < count; ++i)
    {
        GraphConnection* const connection = list[i];
        if (!isLeftOut(connection, includeImplicit) && isWanted(connection) && !visit(connection))
            return false;
    }
    return true;
}

// The one walk behind all questions of the form "which connections lead to ...": input connections whose
// source, then output connections whose target, is the wanted one.
template <class IsWantedInput, class IsWantedOutput, class Visit>
void visitConnections(GraphNodePin const& pin, bool inputs, bool outputs, bool includeImplicit,
                      IsWantedInput isWantedInput, IsWantedOutput isWantedOutput, Visit visit)
{
    if (inputs && !visitList(pin.getInputConnections(), includeImplicit, isWantedInput, visit)) return;
    if (outputs) visitList(pin.getOutputConnections(), includeImplicit, isWantedOutput, visit);
}

template <class Visit>
void visitConnectionsWithPin(GraphNodePin const& pin, GraphNodePin const* other, bool inputs, bool outputs,
                             bool includeImplicit, Visit visit)
{
    if (other == nullptr) return;
    visitConnections(
        pin, inputs, outputs, includeImplicit,
        [other](GraphConnection const* connection) { return connection->getSourcePin() == other; },
        [other](GraphConnection const* connection) { return connection->getTargetPin() == other; }, visit);
}

template <class Visit>
void visitConnectionsWithNode(GraphNodePin const& pin, GraphNodeBase const* node, bool inputs, bool outputs,
                              bool includeImplicit, Visit visit)
{
    if (node == nullptr) return;
    visitConnections(
        pin, inputs, outputs, includeImplicit,
        [node](GraphConnection const* connection) { return connection->getSourceNode() == node; },
        [node](GraphConnection const* connection) { return connection->getTargetNode() == node; }, visit);
}

// On the heap: a rename goes up through as many parent pins as there are levels.
PinNames::Key fullNameKey(GraphNodePin& pin)
{
    return PinNames::Key(FullNameText(pin).hashed());
}

auto appendTo(ArrayOfPtr<GraphConnection, KS_NO>& out)
{
    return [&out](GraphConnection* connection)
    {
        out.append(connection);
        return true;
    };
}

auto noteIn(bool& found)
{
    return [&found](GraphConnection*)
    {
        found = true;
        return false;
    };
}

} // namespace

/// Each link is known at both its ends.
struct FormerPairs
{
    std::vector<GraphNodePin*> parents;
    GraphNodePin* child = nullptr;
};

namespace detail
{

void PinLock::lock()
{
    while (isHeld_.exchange(true, std::memory_order_acquire)) std::this_thread::yield();
}

void PinLock::unlock()
{
    isHeld_.store(false, std::memory_order_release);
}

FormerPairsOfPin::FormerPairsOfPin() = default;
FormerPairsOfPin::FormerPairsOfPin(FormerPairsOfPin const&) {}
FormerPairsOfPin::~FormerPairsOfPin() = default;

FormerPairs& FormerPairsOfPin::make()
{
    if (pairs_ == nullptr) pairs_ = std::make_unique<FormerPairs>();
    return *pairs_;
}

ConnectionList::ConnectionList() = default;
ConnectionList::ConnectionList(ConnectionList const& other) : connections_(other.connections_) {}
ConnectionList::~ConnectionList() = default;

ConnectionList& ConnectionList::operator=(ConnectionList const& other)
{
    set(other.connections_);
    return *this;
}

ArrayOfPtr<GraphConnection, KS_NO>& ConnectionList::expose()
{
    index_.reset();
    return connections_;
}

void ConnectionList::set(ArrayOfPtr<GraphConnection, KS_NO> const& connections)
{
    index_.reset();
    connections_ = connections;
}

void ConnectionList::append(GraphConnection* connection)
{
    connections_.append(connection);
    if (!index_) return;
    try
    {
        index_->added(connections_, connections_.size() - 1);
    }
    catch (std::bad_alloc const&)
    {
        index_.reset(); // the list is right; only the short cut is lost
    }
}

void ConnectionList::removeFast(GraphConnection* connection, bool isExposed)
{
    prepareIndex(isExposed);
    unsigned int const position =
        index_ ? index_->find(connections_, connection) : connections_.find(connection);
    if (position == connections_.npos) return;
    connections_.removeFastAt(position);
    if (index_) index_->removed(connections_, connection, position);
}

// The index goes at half the length at which it comes, so that a list that swings around the limit does not
// build one at every turn.
void ConnectionList::prepareIndex(bool isExposed)
{
    if (connections_.size() < ConnectionIndex::longList / 2) index_.reset();
    if (index_ || isExposed || connections_.size() < ConnectionIndex::longList) return;
    try
    {
        index_ = std::make_unique<ConnectionIndex>(connections_);
    }
    catch (std::bad_alloc const&)
    {
        // A removal never fails: without memory for the index, the list is searched.
    }
}

} // namespace detail

GraphNodePin::GraphNodePin()
    : name_("Untitled"), borderColor_(0.0f, 1.0f, 0.0f, 1.0f), color_(0.0f, 1.0f, 0.0f, 1.0f)
{}

GraphNodePin::GraphNodePin(GraphNodeBase* parentNode, unsigned int const& maxNumConnections,
                           PinDirection const& direction)
    : maxNumConnections_(maxNumConnections),
      parentNode_(parentNode),
      direction_(direction),
      name_("Untitled"),
      borderColor_(0.0f, 0.6f, 0.0f, 1.0f),
      color_(0.0f, 0.6f, 0.0f, 1.0f)
{}

GraphNodePin::GraphNodePin(GraphNodePin const& other) = default;
GraphNodePin& GraphNodePin::operator=(GraphNodePin const& other) = default;

GraphNodePin::~GraphNodePin()
{
    leaveFormerChild();
    while (GraphNodePin* const parent = takeFormerParent())
        if (parent->childPin_ == this) parent->childPin_ = nullptr;
}

// Of a pin that is about to be paired with another one. A host may keep the link elsewhere.
void GraphNodePin::keepFormerParent(GraphNodePin& parent)
{
    if (parent.childPin_ != this) return;
    std::vector<GraphNodePin*>& parents = formerPairs_.make().parents;
    parents.reserve(parents.size() + 1);
    FormerPairs& pairs = parent.formerPairs_.make();
    parent.leaveFormerChild();
    parents.push_back(&parent);
    pairs.child = this;
}

// Null when there is none left.
GraphNodePin* GraphNodePin::takeFormerParent() noexcept
{
    FormerPairs* const pairs = formerPairs_.get();
    if (pairs == nullptr || pairs->parents.empty()) return nullptr;
    GraphNodePin* const parent = pairs->parents.back();
    pairs->parents.pop_back();
    parent->formerPairs_.get()->child = nullptr;
    return parent;
}

void GraphNodePin::leaveFormerChild() noexcept
{
    FormerPairs* const pairs = formerPairs_.get();
    GraphNodePin* const child = pairs != nullptr ? std::exchange(pairs->child, nullptr) : nullptr;
    if (child == nullptr) return;
    std::vector<GraphNodePin*>& parents = child->formerPairs_.get()->parents;
    parents.erase(std::find(parents.begin(), parents.end(), this));
}

bool GraphNodePin::isCompoundPin() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return node != nullptr && node->isCompound();
}

bool GraphNodePin::isInterfacePin() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return node != nullptr && node->isInterface();
}

bool GraphNodePin::isEvaluatorPin() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return node != nullptr && node->isEvaluator();
}

bool GraphNodePin::isPassThroughPin() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return node != nullptr && node->isPassThrough();
}

bool GraphNodePin::isDirty() const
{
    return false;
}

bool GraphNodePin::isEditable() const
{
    return false;
}

bool GraphNodePin::isDynamic() const
{
    return isInterfacePin() || isCompoundPin() || isEvaluatorPin();
}

bool GraphNodePin::isUpdating() const
{
    return false;
}

bool GraphNodePin::allowsConnectionFrom(GraphNodePin const* other) const
{
    return other != nullptr && isInputPin() && other->isOutputPin();
}

bool GraphNodePin::allowsConnectionTo(GraphNodePin const* other) const
{
    return other != nullptr && other->allowsConnectionFrom(this);
}

GraphNodeBase* GraphNodePin::getParentGraphNodePtr() const
{
    return parentNode_;
}

void GraphNodePin::setParentGraphNodePtr(GraphNodeBase* node)
{
    parentNode_ = node;
}

GraphNodePin* GraphNodePin::getChildGraphNodePinPtr() const
{
    return childPin_;
}

void GraphNodePin::setChildGraphNodePinPtr(GraphNodePin* pin)
{
    childPin_ = pin;
}

GraphNodeBase* GraphNodePin::getChildInterfaceNodePtr() const
{
    GraphNodePin const* const child = getChildGraphNodePinPtr();
    return child != nullptr ? child->getParentGraphNodePtr() : nullptr;
}

GraphNodePin* GraphNodePin::getParentGraphNodePinPtr() const
{
    return parentPin_;
}

void GraphNodePin::setParentGraphNodePinPtr(GraphNodePin* pin)
{
    parentPin_ = pin;
}

GraphScene* GraphNodePin::getParentGraphScenePtr() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return node != nullptr ? node->getGraphScene() : nullptr;
}

KS_String GraphNodePin::getName()
{
    return KS_String(name_);
}

KS_String GraphNodePin::getFullName()
{
    if (isPlain(*this)) return KS_String(FullNameText(*this).view());
    GraphNodeBase* const node = getParentGraphNodePtr();
    return node != nullptr ? dottedName(node->getFullName(), getName()) : getName();
}

// Everything that can fail comes before the scene's map changes, and gives the old name back. So the new full
// name is taken before the parent pin is renamed: nothing after that step may fail.
void GraphNodePin::setName(KS_String const& name)
{
    bool const plain = isPlain(*this) && (parentNode_ == nullptr || hasPlainFullName(*parentNode_));
    PinNames::Key const oldFullName = plain ? PinNames::Key() : fullNameKey(*this);
    std::string other{std::string_view(name)};
    name_.swap(other);
    ScopeExit restoreName([this, &other] { name_.swap(other); });
    PinNames::Key newFullName = fullNameKey(*this);
    GraphScene* const scene = getParentGraphScenePtr();
    if (scene != nullptr) scene->registry_->pinsByFullName.prefetch(newFullName.hash());
    GraphNodePin* const parentPin = isInterfacePin() ? getParentGraphNodePinPtr() : nullptr;
    if (parentPin != nullptr) parentPin->setName(name);
    restoreName.dismiss();
    if (scene == nullptr) return;
    // Plain full names differ at the end only.
    std::string_view const front =
        newFullName.view().substr(0, newFullName.view().size() - cText(name_).size());
    PinNames::Name const oldName =
        plain ? PinNames::Name({front, FullNameText::hashInFrontOf(*this)}, cText(other))
              : PinNames::Name(oldFullName.view());
    if (!newFullName.is(oldName)) scene->rekeyPin({oldName, std::move(newFullName)});
}

KS_String GraphNodePin::toXml()
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    return KS_String::concatenated(
        {"<pin parent=\"", Decimal(node != nullptr ? static_cast<int>(node->getId()) : -1), "\" input=\"",
         isInputPin() ? "true" : "false", "\" output=\"", isOutputPin() ? "true" : "false",
         "\" maxconnections=\"", Decimal(static_cast<int>(getMaxNumConnections())), "\">\n</pin>\n"});
}

bool GraphNodePin::isConnected() const
{
    return !getInputConnections().isEmpty() || !getOutputConnections().isEmpty();
}

bool GraphNodePin::isFull() const
{
    return getNumConnections() >= maxNumConnections_;
}

void GraphNodePin::update() {}

bool GraphNodePin::isBidirectionalPin() const
{
    return isInputPin() && isOutputPin();
}

Color4<float> GraphNodePin::getBorderColor()
{
    return borderColor_;
}

Color4<float> GraphNodePin::getColor()
{
    return color_;
}

void GraphNodePin::setBorderColor(Color4<float> const& color)
{
    borderColor_ = color;
}

void GraphNodePin::setColor(Color4<float> const& color)
{
    color_ = color;
}

KS_String GraphNodePin::getInfo()
{
    return KS_String();
}

KS_String GraphNodePin::getDescription()
{
    return KS_String();
}

KS_String GraphNodePin::asHTML()
{
    return KS_String();
}

void GraphNodePin::addInputConnection(GraphConnection* connection)
{
    if (connection == nullptr) return;
    std::lock_guard const guard(lock_);
    inputConnections_.append(connection);
}

void GraphNodePin::addOutputConnection(GraphConnection* connection)
{
    if (connection == nullptr) return;
    std::lock_guard const guard(lock_);
    outputConnections_.append(connection);
}

void GraphNodePin::removeInputConnection(GraphConnection* connection)
{
    std::lock_guard const guard(lock_);
    inputConnections_.removeFast(connection, inputsAreExposed_);
}

void GraphNodePin::removeOutputConnection(GraphConnection* connection)
{
    std::lock_guard const guard(lock_);
    outputConnections_.removeFast(connection, outputsAreExposed_);
}

bool GraphNodePin::allowsInternalConnections() const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    if (!isInputPin() || node == nullptr) return false;
    ArrayOfPtr<GraphNodePin, KS_NO> inputs;
    node->getInputPins(inputs);
    return !inputs.isEmpty() && inputs[0] == this;
}

bool GraphNodePin::hasInternalConnections() const
{
    return false;
}

bool GraphNodePin::allowsNewOrRemovalOfInternalConnections() const
{
    return true;
}

bool GraphNodePin::internalConnections(ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return appendOutputPinsOfNode(out);
}

bool GraphNodePin::allowedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return appendOutputPinsOfNode(out);
}

bool GraphNodePin::appendOutputPinsOfNode(ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    GraphNodeBase const* const node = getParentGraphNodePtr();
    if (!isOutputPin() && node != nullptr) node->getOutputPins(out);
    return !out.isEmpty();
}

GraphNodePin* GraphNodePin::forcedInternalConnection() const
{
    return nullptr;
}

void GraphNodePin::forcedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>&) const {}

void GraphNodePin::addInternalConnection(GraphNodePin*)
{
    ArrayOfPtr<GraphNodePin, KS_NO> allowed;
    allowedInternalConnections(allowed);
}

void GraphNodePin::removeInternalConnection(GraphNodePin*)
{
    ArrayOfPtr<GraphNodePin, KS_NO> allowed;
    allowedInternalConnections(allowed);
}

ArrayOfPtr<GraphConnection, KS_NO>& GraphNodePin::refInputConnections()
{
    inputsAreExposed_ = true;
    return inputConnections_.expose();
}

void GraphNodePin::setInputConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections)
{
    inputConnections_.set(connections);
}

ArrayOfPtr<GraphConnection, KS_NO>& GraphNodePin::refOutputConnections()
{
    outputsAreExposed_ = true;
    return outputConnections_.expose();
}

void GraphNodePin::setOutputConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections)
{
    outputConnections_.set(connections);
}

unsigned int GraphNodePin::getNumConnections() const
{
    return getNumConnections(inputAndOutput);
}

unsigned int GraphNodePin::getNumConnections(PinDirection const& direction) const
{
    return (direction.hasAny(PIN_INPUT) ? getInputConnections().size() : 0) +
           (direction.hasAny(PIN_OUTPUT) ? getOutputConnections().size() : 0);
}

bool GraphNodePin::hasConnections() const
{
    return isConnected();
}

bool GraphNodePin::hasConnections(PinDirection const& direction) const
{
    return getNumConnections(direction) != 0;
}

bool GraphNodePin::getConnections(PinDirection const& direction, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                  bool const& includeImplicit) const
{
    if (includeImplicit)
    {
        if (direction.hasAny(PIN_INPUT)) appendAll(getInputConnections(), out);
        if (direction.hasAny(PIN_OUTPUT)) appendAll(getOutputConnections(), out);
        return !out.isEmpty();
    }
    // Without implicit connections the direction is not consulted. Hosts rely on getting both sides here.
    auto const any = [](GraphConnection const*) { return true; };
    visitConnections(*this, true, true, false, any, any, appendTo(out));
    return !out.isEmpty();
}

bool GraphNodePin::getConnections(ArrayOfPtr<GraphConnection, KS_NO>& out, bool const& includeImplicit) const
{
    return getConnections(inputAndOutput, out, includeImplicit);
}

bool GraphNodePin::getConnectionsWithPin(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                         bool const& inputs, bool const& outputs,
                                         bool const& includeImplicit) const
{
    visitConnectionsWithPin(*this, pin, inputs, outputs, includeImplicit, appendTo(out));
    return !out.isEmpty();
}

bool GraphNodePin::getInputConnectionsWithPin(GraphNodePin const* pin,
                                              ArrayOfPtr<GraphConnection, KS_NO>& out,
                                              bool const& includeImplicit) const
{
    return getConnectionsWithPin(pin, out, true, false, includeImplicit);
}

bool GraphNodePin::getOutputConnectionsWithPin(GraphNodePin const* pin,
                                               ArrayOfPtr<GraphConnection, KS_NO>& out,
                                               bool const& includeImplicit) const
{
    return getConnectionsWithPin(pin, out, false, true, includeImplicit);
}

bool GraphNodePin::getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                          bool const& inputs, bool const& outputs,
                                          bool const& includeImplicit) const
{
    visitConnectionsWithNode(*this, node, inputs, outputs, includeImplicit, appendTo(out));
    return !out.isEmpty();
}

bool GraphNodePin::hasConnectionsWithPin(GraphNodePin const* pin, bool const& inputs, bool const& outputs,
                                         bool const& includeImplicit) const
{
    bool found = false;
    visitConnectionsWithPin(*this, pin, inputs, outputs, includeImplicit, noteIn(found));
    return found;
}

bool GraphNodePin::hasInputConnectionsWithPin(GraphNodePin const* pin, bool const& includeImplicit) const
{
    return hasConnectionsWithPin(pin, true, false, includeImplicit);
}

bool GraphNodePin::hasOutputConnectionsWithPin(GraphNodePin const* pin, bool const& includeImplicit) const
{
    return hasConnectionsWithPin(pin, false, true, includeImplicit);
}

bool GraphNodePin::hasConnectionsWithNode(GraphNodeBase const* node, bool const& inputs, bool const& outputs,
                                          bool const& includeImplicit) const
{
    bool found = false;
    visitConnectionsWithNode(*this, node, inputs, outputs, includeImplicit, noteIn(found));
    return found;
}

} // namespace kestrel::graph
