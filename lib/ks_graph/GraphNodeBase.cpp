#include <ks_graph/GraphNodeBase.h>

#include "Names.h"
#include "PointerSet.h"
#include "ScopeExit.h"

#include <ks_graph/GraphScene.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace kestrel::graph
{

GraphNodeBase GRAPH_NODE_NOT_VALID;

namespace
{

// Walks by index, up to the count at the start: `out` may be the very list that is walked.
template <class T, class IsWanted>
bool appendWanted(ArrayOfPtr<T, KS_NO> const& list, ArrayOfPtr<T, KS_NO>& out, IsWanted isWanted)
{
    unsigned int const count = list.size();
    for (unsigned int i = 0; i < count; ++i)
    {
        T* const element = list[i];
        if (isWanted(element)) out.append(element);
    }
    return !out.isEmpty();
}

bool hasPinOfDirection(ArrayOfPtr<GraphNodePin, KS_NO> const& pins, PinDirection direction)
{
    return std::any_of(pins.begin(), pins.end(),
                       [direction](GraphNodePin const* pin)
                       { return pin->getDirection().hasAny(direction); });
}

// Pairs own pins, in the outer loop, with other pins. Without `out` the first allowed pair decides. Walks by
// index, up to the counts at the start: `out` may be one of the two lists.
template <class IsAllowed>
bool pairPins(ArrayOfPtr<GraphNodePin, KS_NO> const& ownPins,
              ArrayOfPtr<GraphNodePin, KS_NO> const& otherPins, IsAllowed isAllowed,
              ArrayOfPtr<GraphNodePin, KS_NO>* out)
{
    bool anyAllowed = false;
    unsigned int const ownCount = ownPins.size();
    unsigned int const otherCount = otherPins.size();
    for (unsigned int i = 0; i < ownCount; ++i)
    {
        GraphNodePin* const own = ownPins[i];
        for (unsigned int j = 0; j < otherCount; ++j)
        {
            if (!isAllowed(own, otherPins[j])) continue;
            if (out == nullptr) return true;
            anyAllowed = true;
            out->append(own);
        }
    }
    return anyAllowed;
}

// The own pins that are allowed with the one given pin, appended.
template <class IsAllowed>
bool pairWithPin(ArrayOfPtr<GraphNodePin, KS_NO> const& ownPins, GraphNodePin const* pin, IsAllowed isAllowed,
                 ArrayOfPtr<GraphNodePin, KS_NO>& out)
{
    bool anyAllowed = false;
    unsigned int const count = ownPins.size();
    for (unsigned int i = 0; i < count; ++i)
    {
        GraphNodePin* const own = ownPins[i];
        if (!isAllowed(own, pin)) continue;
        anyAllowed = true;
        out.append(own);
    }
    return anyAllowed;
}

bool otherAllowsTo(GraphNodePin const* own, GraphNodePin const* other)
{
    return other->allowsConnectionTo(own);
}

bool otherAllowsFrom(GraphNodePin const* own, GraphNodePin const* other)
{
    return other->allowsConnectionFrom(own);
}

bool anyAllowsFrom(ArrayOfPtr<GraphNodePin, KS_NO> const& ownPins, GraphNodePin const* pin)
{
    return std::any_of(ownPins.begin(), ownPins.end(),
                       [pin](GraphNodePin const* own) { return own->allowsConnectionFrom(pin); });
}

// The marks are set by the position of a name and read by the position of a pin. So the result is the named
// order only when every pin is named once; hosts rely on what comes out otherwise, too.
ArrayOfPtr<GraphNodePin, KS_NO> reordered(ArrayOfPtr<GraphNodePin, KS_NO> const& pins,
                                          Array<KS_String, _Wa> const& names)
{
    ArrayOfPtr<GraphNodePin, KS_NO> result;
    std::vector<bool> marks(std::max(pins.size(), names.size()), false);
    for (unsigned int position = 0; position < names.size(); ++position)
    {
        auto const named = std::find_if(pins.begin(), pins.end(),
                                        [&](GraphNodePin* pin) { return pin->getName() == names[position]; });
        if (named == pins.end()) continue;
        result.append(*named);
        marks[position] = true;
    }
    for (unsigned int position = 0; position < pins.size(); ++position)
        if (!marks[position]) result.append(pins[position]);
    return result;
}

ArrayOfPtr<GraphNodePin, KS_NO> joined(ArrayOfPtr<GraphNodePin, KS_NO> first,
                                       ArrayOfPtr<GraphNodePin, KS_NO> const& second)
{
    appendAll(second, first);
    return first;
}

bool appendFirstInternalConnection(GraphNodeBase const& node, Array<GraphConnection, _Wa>& out)
{
    ArrayOfPtr<GraphNodePin, KS_NO> inputs;
    ArrayOfPtr<GraphNodePin, KS_NO> outputs;
    node.getInputPins(inputs);
    node.getOutputPins(outputs);
    if (!inputs.isEmpty() && !outputs.isEmpty()) out.append(GraphConnection(inputs[0], outputs[0]));
    return !out.isEmpty();
}

template <class Predicate>
bool anyMessage(GraphNodeBase const& node, Predicate predicate)
{
    Array<Message, _Wa> messages;
    node.getMessages(messages);
    return std::any_of(messages.begin(), messages.end(), predicate);
}

} // namespace

struct GraphNodeBase::ChildRenames
{
    GraphScene* scene;
    std::vector<std::pair<KS_String, KS_String>> pins;
};

// Where a node stands among its owner's children, so that a move that fails can be taken back.
class GraphNodeBase::PlaceInTree
{
public:
    explicit PlaceInTree(GraphNodeBase& node)
        : node_(node),
          owner_(node.getNodeOwner()),
          index_(owner_ != nullptr ? owner_->nodes_.find(&node) : node.nodes_.npos)
    {}

    // Allocates nothing: the old owner's list still has the slot that the node has left.
    void restore(GraphNodeBase& newOwner) const
    {
        newOwner.removeNodeFromNodesList(&node_);
        node_.setNodeOwnerBase(owner_);
        if (owner_ == nullptr || owner_->nodes_.contains(&node_) || index_ == owner_->nodes_.npos) return;
        ArrayOfPtr<GraphNodeBase, KS_NO>& siblings = owner_->nodes_;
        siblings.append(&node_);
        std::rotate(siblings.begin() + index_, siblings.end() - 1, siblings.end());
    }

private:
    GraphNodeBase& node_;
    GraphNodeBase* owner_;
    unsigned int index_;
};

GraphNodeBase::GraphNodeBase() = default;

GraphNodeBase::GraphNodeBase(unsigned int const& id) : id_(id) {}

GraphNodeBase::GraphNodeBase(GraphNodeBase const& other) = default;
GraphNodeBase& GraphNodeBase::operator=(GraphNodeBase const& other) = default;
GraphNodeBase::~GraphNodeBase() = default;

bool GraphNodeBase::operator==(GraphNodeBase const& other) const
{
    return isSameNodeAs(other);
}

bool GraphNodeBase::isValid() const
{
    return getId() < 0xFFFFFFFFu;
}

bool GraphNodeBase::isCompound() const
{
    return compound_ || !nodes_.isEmpty();
}

bool GraphNodeBase::isEvaluator() const
{
    return false;
}

bool GraphNodeBase::isPassThroughFamily() const
{
    return isPassThrough();
}

bool GraphNodeBase::isGroup() const
{
    return false;
}

bool GraphNodeBase::isPassThrough() const
{
    return false;
}

bool GraphNodeBase::isIterator() const
{
    return false;
}

void GraphNodeBase::setCompound(bool const& compound)
{
    compound_ = compound;
}

bool GraphNodeBase::isInputInterface() const
{
    return isInterface() && !nodePins_.isEmpty() && nodePins_[0]->isOutputPin();
}

bool GraphNodeBase::isOutputInterface() const
{
    return isInterface() && !nodePins_.isEmpty() && nodePins_[0]->isInputPin();
}

bool GraphNodeBase::isInterface() const
{
    return interface_;
}

void GraphNodeBase::setInterface(bool const& isInterface)
{
    interface_ = isInterface;
}

bool GraphNodeBase::isSameNodeAs(GraphNodeBase const& other) const
{
    return isValid() && other.isValid() && getId() == other.getId();
}

bool GraphNodeBase::isEditable() const
{
    return false;
}

bool GraphNodeBase::hasPin(GraphNodePin const* pin) const
{
    return pin != nullptr && nodePins_.contains(pin);
}

bool GraphNodeBase::getPins(PinDirection const& direction, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return appendWanted(nodePins_, out,
                        [direction](GraphNodePin const* pin)
                        { return pin->getDirection().hasAny(direction); });
}

bool GraphNodeBase::getInputPins(ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return getPins(PIN_INPUT, out);
}

bool GraphNodeBase::getOutputPins(ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return getPins(PIN_OUTPUT, out);
}

bool GraphNodeBase::hasInputPins() const
{
    return hasPinOfDirection(nodePins_, PIN_INPUT);
}

bool GraphNodeBase::hasOutputPins() const
{
    return hasPinOfDirection(nodePins_, PIN_OUTPUT);
}

GraphNodePin* GraphNodeBase::getPinByName(KS_String const& name) const
{
    auto const pin = std::find_if(nodePins_.begin(), nodePins_.end(),
                                  [&name](GraphNodePin* candidate) { return candidate->getName() == name; });
    return pin != nodePins_.end() ? *pin : nullptr;
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodePin const* pin) const
{
    return pin != nullptr && pin->isOutputPin() && anyAllowsFrom(nodePins_, pin);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return pin != nullptr && pairWithPin(nodePins_, pin, otherAllowsTo, out);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodeBase const* node) const
{
    return node != nullptr && pairPins(nodePins_, node->getNodePins(), otherAllowsTo, nullptr);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodeBase const* node,
                                         ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return node != nullptr && pairPins(nodePins_, node->getNodePins(), otherAllowsTo, &out);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodePin const* pin) const
{
    // The own pins are asked for connections from `pin` here, too: hosts rely on this asymmetry.
    return pin != nullptr && pin->isInputPin() && anyAllowsFrom(nodePins_, pin);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return pin != nullptr && pairWithPin(nodePins_, pin, otherAllowsFrom, out);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodeBase const* node) const
{
    return node != nullptr && pairPins(nodePins_, node->getNodePins(), otherAllowsFrom, nullptr);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodeBase const* node, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return node != nullptr && pairPins(nodePins_, node->getNodePins(), otherAllowsFrom, &out);
}

KS_String GraphNodeBase::getFullName()
{
    GraphNodeBase* const owner = isRoot() ? nullptr : getNodeOwner();
    if (owner == nullptr) return getName();
    KS_String fullName = owner->getFullName();
    if (isOfThisClass())
        appendDotted(fullName, name_);
    else
        appendDotted(fullName, getName());
    return fullName;
}

// A node of this very class overrides nothing: the copy that its getName would return can be saved.
bool GraphNodeBase::isOfThisClass() const
{
    return typeid(*this) == typeid(GraphNodeBase);
}

KS_String GraphNodeBase::getName()
{
    return name_;
}

void GraphNodeBase::setName(KS_String const& name)
{
    KS_String const oldName = getName();
    KS_String other(name);
    name_.swap(other);
    ScopeExit restoreName([this, &other] { name_.swap(other); });
    GraphScene* const scene = getGraphScene();
    if (scene != nullptr && oldName != name) scene->updateRenamedNodeInMapByFullName(this, oldName, name);
    restoreName.dismiss();
}

unsigned int const& GraphNodeBase::getId() const
{
    return id_;
}

void GraphNodeBase::setId(unsigned int const& id)
{
    unsigned int const oldId = getId();
    unsigned int const newId = id;
    id_ = newId;
    GraphScene* const scene = getGraphScene();
    if (scene != nullptr && oldId != newId) scene->updateNodeIdChange(this, oldId, newId);
}

GraphScene* GraphNodeBase::getGraphScene() const
{
    return graphScene_;
}

void GraphNodeBase::setGraphScene(GraphScene* scene)
{
    graphScene_ = scene;
}

GraphNodeBase* GraphNodeBase::getNodeOwner() const
{
    return nodeOwner_;
}

void GraphNodeBase::setNodeOwner(GraphNodeBase* newOwner)
{
    GraphNodeBase* const oldOwner = getNodeOwner();
    if (oldOwner == newOwner || (newOwner != nullptr && newOwner->isAtOrBelow(*this))) return;

    std::vector<KS_String> oldFullNames;
    for (GraphNodeBase* const child : nodes_) oldFullNames.push_back(child->getFullName());

    if (newOwner == nullptr)
    {
        oldOwner->removeNode(this);
        return;
    }
    PlaceInTree const place(*this);
    newOwner->addNode(this);
    std::vector<ChildRenames> renames;
    try
    {
        renames = renamesOfChildren(oldFullNames);
    }
    catch (std::bad_alloc const&)
    {
        // With a scene, addNode has re-keyed everything below that is in this scene, and the move has
        // happened; a child of another scene keeps its old keys. Without one, no map knows of the move yet.
        if (getGraphScene() != nullptr) return;
        place.restore(*newOwner);
        throw;
    }
    for (ChildRenames& child : renames) child.scene->rekeyPins(child.pins);
}

// What the scenes of the direct children have to be told of their new full names.
std::vector<GraphNodeBase::ChildRenames> GraphNodeBase::renamesOfChildren(
    std::vector<KS_String> const& oldFullNames)
{
    std::vector<ChildRenames> renames;
    for (unsigned int i = 0; i < nodes_.size() && i < oldFullNames.size(); ++i)
    {
        GraphNodeBase* const child = nodes_[i];
        GraphScene* const scene = child->getGraphScene();
        if (scene != nullptr)
            renames.push_back(
                {scene, GraphScene::pinRenamesBelow(child, oldFullNames[i], child->getFullName())});
    }
    return renames;
}

bool GraphNodeBase::isRoot() const
{
    return getNodeOwner() == nullptr;
}

bool GraphNodeBase::isOwnedByNode(GraphNodeBase* node, bool const& recursive) const
{
    GraphNodeBase* const owner = getNodeOwner();
    if (node == owner) return true;
    if (owner == nullptr || isRoot() || !recursive) return false;
    return owner->isOwnedByNode(node, true);
}

bool GraphNodeBase::isUpdating() const
{
    return false;
}

void GraphNodeBase::update() {}

void GraphNodeBase::update_notCleaning() {}

void GraphNodeBase::addNode(GraphNodeBase* child)
{
    if (child == nullptr || isAtOrBelow(*child)) return;
    KS_String const oldFullName = child->getFullName();
    PlaceInTree const place(*child);
    ScopeExit putBack([this, &place] { place.restore(*this); });
    if (GraphNodeBase* const owner = child->getNodeOwner()) owner->removeNodeFromNodesList(child);
    child->setNodeOwnerBase(this);
    addNodeToNodesList(child);
    if (GraphScene* const scene = child->getGraphScene())
        scene->updateReparentedNodeInMapByFullName(child, oldFullName, child->getFullName());
    putBack.dismiss();
}

// Whether this node is `node` or lies below it. Owners decide: a child list may have been emptied.
bool GraphNodeBase::isAtOrBelow(GraphNodeBase const& node) const
{
    for (GraphNodeBase const* above = this; above != nullptr; above = above->getNodeOwner())
        if (above == &node) return true;
    return false;
}

void GraphNodeBase::removeNode(GraphNodeBase* child)
{
    if (child == nullptr) return;
    removeNodeFromNodesList(child);
    child->setNodeOwnerBase(nullptr);
}

GraphNodeBase* GraphNodeBase::getNodeByName(KS_String const& name, bool const& caseSensitive)
{
    auto const isWanted = [&](KS_String const& childName)
    { return caseSensitive ? childName == name : equalIgnoringCase(childName, name); };
    for (GraphNodeBase* const child : nodes_)
        if (child->isOfThisClass() ? isWanted(child->name_) : isWanted(child->getName())) return child;
    return nullptr;
}

void GraphNodeBase::clearNodesArray()
{
    nodes_.setSize(0);
}

bool GraphNodeBase::getNodesRecursively(ArrayOfPtr<GraphNodeBase, KS_NO>& out)
{
    unsigned int const count = nodes_.size();
    appendAll(nodes_, out);
    for (unsigned int i = 0; i < count; ++i)
    {
        GraphNodeBase* const child = nodes_[i];
        if (child->isCompound()) child->getNodesRecursively(out);
    }
    return !out.isEmpty();
}

bool GraphNodeBase::getCompoundNodes(ArrayOfPtr<GraphNodeBase, KS_NO>& out)
{
    return appendWanted(nodes_, out, [](GraphNodeBase const* child) { return child->isCompound(); });
}

bool GraphNodeBase::dynamicPinsAllowed() const
{
    return isInterface() || isCompound() || isEvaluator();
}

KS_String GraphNodeBase::getFreeNodeNameLikeThis(KS_String const& name, GraphNodeBase* otherParent)
{
    auto const isTakenHere = [this](KS_String const& candidate)
    { return getNodeByName(candidate, false) != nullptr; };
    // The other parent has no say about the name as it is given.
    if (!isTakenHere(name)) return name;
    return firstFreeNameLike(name,
                             [&](KS_String const& candidate)
                             {
                                 return isTakenHere(candidate) ||
                                        (otherParent != nullptr &&
                                         otherParent->getNodeByName(candidate, false) != nullptr);
                             });
}

KS_String GraphNodeBase::getFreePinNameLikeThis(KS_String const& name)
{
    bool const alsoOwner = isInterface();
    auto const isTaken = [this, alsoOwner](KS_String const& candidate)
    { return hasPinWithName(candidate, alsoOwner); };
    return isTaken(name) ? firstFreeNameLike(name, isTaken) : name;
}

bool GraphNodeBase::getNotConnectedPins(PinDirection const& directions, ArrayOfPtr<GraphNodePin, KS_NO>& out)
{
    return appendWanted(nodePins_, out,
                        [directions](GraphNodePin const* pin)
                        { return pin->getDirection().hasAny(directions) && !pin->isConnected(); });
}

bool GraphNodeBase::getConnectedPins(PinDirection const& directions, ArrayOfPtr<GraphNodePin, KS_NO>& out)
{
    return appendWanted(nodePins_, out,
                        [directions](GraphNodePin const* pin)
                        { return pin->getDirection().hasAny(directions) && pin->isConnected(); });
}

bool GraphNodeBase::hasPinWithName(KS_String const& name, bool const& alsoOwner)
{
    if (getPinByName(name) != nullptr) return true;
    GraphNodeBase const* const owner = alsoOwner ? getNodeOwner() : nullptr;
    return owner != nullptr && owner->getPinByName(name) != nullptr;
}

bool GraphNodeBase::isWorkflowFamily() const
{
    return false;
}

KS_String GraphNodeBase::getInfo()
{
    return KS_String();
}

KS_String GraphNodeBase::getDescription()
{
    return description_;
}

void GraphNodeBase::setDescription(KS_String const& description)
{
    description_ = description;
}

KS_String GraphNodeBase::asHTML()
{
    KS_String description = getDescription();
    description.replace("\n", "</p><p>");
    unsigned int const length = description.length();
    if (length != 0 && description[length - 1] == '.') description = description.left(length - 1);
    return KS_String::concatenated({"<html><head/><body><p/>", "<h3>Description</h3>", "<p>",
                                    cText(description), ".</p>", "<p/></body></html>"});
}

unsigned int GraphNodeBase::getNumberOfThreads() const
{
    return 0;
}

void GraphNodeBase::setNumberOfThreads(unsigned int const&) {}

bool GraphNodeBase::hasErrors() const
{
    return anyMessage(*this,
                      [](Message const& message) { return message.isCritical() || message.isError(); });
}

bool GraphNodeBase::hasWarnings() const
{
    return anyMessage(*this, [](Message const& message) { return message.isWarning(); });
}

bool GraphNodeBase::hasMessages() const
{
    return anyMessage(*this, [](Message const&) { return true; });
}

MessageHandler const& GraphNodeBase::getMessages() const
{
    static MessageHandler const handler;
    return handler;
}

bool GraphNodeBase::getMessages(Array<Message, _Wa>& out) const
{
    // Sample data that hosts show while they have no messages of their own.
    out.append(Message(2, "prueba 1"));
    out.append(Message(3, "prueba 2"));
    out.append(Message(4, "prueba 3"));
    return true;
}

MessageHandler& GraphNodeBase::refMessages()
{
    static MessageHandler handler;
    return handler;
}

void GraphNodeBase::clearMessages() {}

bool GraphNodeBase::getMessagesAsStrings(Array<KS_String, _Wa>& out) const
{
    Array<Message, _Wa> messages;
    getMessages(messages);
    for (Message const& message : messages) out.append(message.asString());
    return !out.isEmpty();
}

bool GraphNodeBase::getInternalConnections(Array<GraphConnection, _Wa>& out) const
{
    return appendFirstInternalConnection(*this, out);
}

bool GraphNodeBase::getInternalConnectionsForPainting(Array<GraphConnection, _Wa>& out) const
{
    return appendFirstInternalConnection(*this, out);
}

KS_String GraphNodeBase::getType()
{
    return type_;
}

void GraphNodeBase::setType(KS_String const& type)
{
    type_ = type;
}

void GraphNodeBase::addPinToList(GraphNodePin* pin)
{
    nodePins_.append(pin);
}

bool GraphNodeBase::removePinFromList(GraphNodePin* pin)
{
    return nodePins_.removeAll(pin) != 0;
}

void GraphNodeBase::setNodeOwnerBase(GraphNodeBase* owner)
{
    nodeOwner_ = owner;
}

void GraphNodeBase::addNodeToNodesList(GraphNodeBase* node)
{
    nodes_.append(node);
}

void GraphNodeBase::removeNodeFromNodesList(GraphNodeBase* node)
{
    nodes_.removeAll(node);
}

bool GraphNodeBase::addNodePin(GraphNodePin* pin)
{
    if (pin == nullptr || hasPin(pin)) return false;
    addPinToList(pin);
    pin->setParentGraphNodePtr(this);
    GraphNodeBase* const owner = getNodeOwner();
    if (GraphScene::addNodePinCallback_ != nullptr && owner != nullptr)
        GraphScene::addNodePinCallback_(getGraphScene(), owner, pin);
    return true;
}

GraphNodePin* GraphNodeBase::addDynamicInputPin()
{
    return addDynamicPin(PIN_INPUT);
}

GraphNodePin* GraphNodeBase::addDynamicOutputPin()
{
    return addDynamicPin(PIN_OUTPUT);
}

GraphNodePin* GraphNodeBase::addDynamicPin(PinDirection direction)
{
    GraphScene* const scene = getGraphScene();
    return scene != nullptr ? scene->createNewPin(this, 1, direction) : nullptr;
}

bool GraphNodeBase::removeNodePin(GraphNodePin* pin)
{
    if (pin == nullptr || !hasPin(pin)) return false;
    bool const removed = removePinFromList(pin);
    if (GraphScene::removeNodePinCallback_ != nullptr)
        GraphScene::removeNodePinCallback_(getGraphScene(), getNodeOwner(), pin);
    pin->setParentGraphNodePtr(nullptr);
    return removed;
}

// Allocates nothing: destructors call it.
void GraphNodeBase::destroyNodePins()
{
    // Up to the pins that were there at the start: a callback may add others.
    for (unsigned int left = nodePins_.size(); left > 0 && !nodePins_.isEmpty();)
    {
        GraphNodePin* const pin = nodePins_[0];
        auto const entries = static_cast<unsigned int>(std::count(nodePins_.begin(), nodePins_.end(), pin));
        left -= std::min(left, entries);
        removeNodePin(pin);
        nodePins_.removeAll(pin); // also when an override has left it there
        delete pin;
    }
}

void GraphNodeBase::reorderInputPins(Array<KS_String, _Wa> const& names)
{
    ArrayOfPtr<GraphNodePin, KS_NO> inputs;
    ArrayOfPtr<GraphNodePin, KS_NO> outputs;
    getInputPins(inputs);
    getOutputPins(outputs);
    setNodePins(joined(reordered(inputs, names), outputs));
}

void GraphNodeBase::reorderOutputPins(Array<KS_String, _Wa> const& names)
{
    ArrayOfPtr<GraphNodePin, KS_NO> inputs;
    ArrayOfPtr<GraphNodePin, KS_NO> outputs;
    getInputPins(inputs);
    getOutputPins(outputs);
    setNodePins(joined(inputs, reordered(outputs, names)));
}

bool GraphNodeBase::getConnections(ArrayOfPtr<GraphConnection, KS_NO>& out, bool const& outputs,
                                   bool const& inputs, bool const& includeImplicit, bool const& unique) const
{
    ArrayOfPtr<GraphConnection, KS_NO> gathered;
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    if (inputs)
    {
        getInputPins(pins);
        for (GraphNodePin const* const pin : pins) appendAll(pin->getInputConnections(), gathered);
    }
    if (outputs)
    {
        pins.setSize(0);
        getOutputPins(pins);
        for (GraphNodePin const* const pin : pins) appendAll(pin->getOutputConnections(), gathered);
    }
    if (!includeImplicit)
        gathered.removeIf([](GraphConnection const* connection) { return connection->isImplicit(); });
    appendAll(gathered, out);
    if (unique) removeRepeats(out);
    return !out.isEmpty();
}

bool GraphNodeBase::getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                           bool const& bothDirections, bool const& includeImplicit,
                                           bool const& unique) const
{
    if (node == nullptr) return !out.isEmpty();
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    getOutputPins(pins);
    for (GraphNodePin const* const pin : pins)
        pin->getConnectionsWithNode(node, out, false, true, includeImplicit);
    if (bothDirections) node->getConnectionsWithNode(this, out, false, includeImplicit, false);
    if (unique) removeRepeats(out);
    return !out.isEmpty();
}

bool GraphNodeBase::hasConnectionsWithNode(GraphNodeBase const* node, bool const& bothDirections,
                                           bool const& includeImplicit) const
{
    if (node == nullptr) return false;
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    getOutputPins(pins);
    for (GraphNodePin const* const pin : pins)
        if (pin->hasConnectionsWithNode(node, false, true, includeImplicit)) return true;
    return bothDirections && node->hasConnectionsWithNode(this, false, includeImplicit);
}

KS_String GraphNodeBase::toXml()
{
    KS_String opening;
    opening.format("<node id=\"%d\">\n<pins>\n", static_cast<int>(id_));
    std::string text(opening.c_str());
    for (GraphNodePin* const pin : nodePins_) text += pin->toXml();
    text += "</pins>\n</node>\n";
    return KS_String(text);
}

void GraphNodeBase::onAddingToScene() {}

void GraphNodeBase::onRemovingFromScene() {}

bool GraphNodeBase::getAllChildNodePins(ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& includeOwn) const
{
    // A list of open nodes instead of recursion: a tree may be deeper than the stack.
    std::vector<GraphNodeBase const*> open{this};
    while (!open.empty())
    {
        GraphNodeBase const* const node = open.back();
        open.pop_back();
        if (node != this || includeOwn) appendAll(node->nodePins_, out);
        open.insert(open.end(), std::make_reverse_iterator(node->nodes_.end()),
                    std::make_reverse_iterator(node->nodes_.begin()));
    }
    return !out.isEmpty();
}

} // namespace kestrel::graph
