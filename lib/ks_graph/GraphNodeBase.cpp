#include <ks_graph/GraphNodeBase.h>

#include "ChildList.h"
#include "ChildNames.h"
#include "FlatTable.h"
#include "FullNameText.h"
#include "Hashing.h"
#include "Names.h"
#include "NodeNames.h"
#include "PlainTypes.h"
#include "PointerSet.h"
#include "SceneRegistry.h"
#include "ScopeExit.h"

#include <ks_graph/GraphScene.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph
{

class PinSet : public PointerSet<GraphNodePin>
{
public:
    using PointerSet::PointerSet;
};

struct NodeTexts
{
    KS_String type;
    KS_String description;
    KS_String category;
};

GraphNodeBase GRAPH_NODE_NOT_VALID;

namespace
{

KS_String const noText;

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
    PinRenames pins;
};

// Where a node stands among its owner's children, so that a move that fails can be taken back.
class GraphNodeBase::PlaceInTree
{
public:
    explicit PlaceInTree(GraphNodeBase& node)
        : node_(node),
          owner_(node.getNodeOwner()),
          isListed_(owner_ != nullptr && ChildList(*owner_).contains(node)),
          next_(isListed_ ? ChildList(*owner_).nextBehind(node) : nullptr)
    {}

    // Allocates nothing: the old owner's list still has the slot that the node has left.
    void restore(GraphNodeBase& newOwner) const
    {
        newOwner.removeNodeFromNodesList(&node_);
        node_.setNodeOwnerBase(owner_);
        if (isListed_ && !ChildList(*owner_).contains(node_)) ChildList(*owner_).insertBefore(next_, &node_);
    }

private:
    GraphNodeBase& node_;
    GraphNodeBase* owner_;
    bool isListed_;
    GraphNodeBase* next_;
};

// A change of what the full names of a node and of all below it are made of. Indexes of names follow.
class GraphNodeBase::Renaming
{
public:
    explicit Renaming(GraphNodeBase& node) : node_(node)
    {
        forAllFrom(&node_,
                   [](GraphNodeBase& below)
                   {
                       if (below.placeInNames_.names != nullptr) below.placeInNames_.names->takeOut(below);
                   });
    }
    ~Renaming()
    {
        forAllFrom(&node_,
                   [](GraphNodeBase& below)
                   {
                       below.computeFullNameHash();
                       if (below.placeInNames_.names != nullptr) below.placeInNames_.names->putBack(below);
                   });
    }
    Renaming(Renaming const&) = delete;
    Renaming& operator=(Renaming const&) = delete;

private:
    // Owners before what they own, along the links: no stack grows with the depth.
    template <class Visit>
    static void forAllFrom(GraphNodeBase* top, Visit visit)
    {
        for (GraphNodeBase* node = top;;)
        {
            visit(*node);
            if (node->ownerLinks_.first != nullptr)
            {
                node = node->ownerLinks_.first;
                continue;
            }
            while (node != top && node->ownerLinks_.next == nullptr) node = node->nodeOwner_;
            if (node == top) return;
            node = node->ownerLinks_.next;
        }
    }

    GraphNodeBase& node_;
};

GraphNodeBase::GraphNodeBase()
{
    computeFullNameHash();
}

GraphNodeBase::GraphNodeBase(unsigned int const& id) : id_(id)
{
    computeFullNameHash();
}

GraphNodeBase::GraphNodeBase(GraphNodeBase const& other)
    : KS_Class(other),
      id_(other.id_),
      compound_(other.compound_),
      interface_(other.interface_),
      name_(other.name_),
      graphScene_(other.graphScene_),
      texts_(other.texts_ != nullptr ? std::make_unique<NodeTexts>(*other.texts_) : nullptr)
{
    nodePins_.list = other.nodePins_.list;
    ChildList(*this).set(other.listOfChildren());
    takeOwnerOf(other);
}

GraphNodeBase& GraphNodeBase::operator=(GraphNodeBase const& other)
{
    if (this == &other) return *this;
    GraphNodeBase copy(other);
    KS_Class::operator=(other);
    setNodePins(copy.nodePins_.list);
    setNodes(copy.nodes_.list);
    id_ = copy.id_;
    compound_ = copy.compound_;
    interface_ = copy.interface_;
    graphScene_ = copy.graphScene_;
    std::swap(texts_, copy.texts_);
    takeOwnerOf(other);
    swapName(copy.name_);
    return *this;
}

GraphNodeBase::~GraphNodeBase()
{
    if (placeInNames_.names != nullptr) placeInNames_.names->forget(*this);
    leaveOwner();
    while (GraphNodeBase* const below = ownerLinks_.first)
    {
        // The owner field of a node whose owner is gone stays as it is, and is nobody's to follow.
        below->unlinkFromOwner();
        below->placeInList_ = {};
    }
}

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
    return compound_ || nodes_.list.size() != nodes_.gaps;
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
    return isInterface() && !nodePins_.list.isEmpty() && nodePins_.list[0]->isOutputPin();
}

bool GraphNodeBase::isOutputInterface() const
{
    return isInterface() && !nodePins_.list.isEmpty() && nodePins_.list[0]->isInputPin();
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
    return pin != nullptr && isInPinList(*pin);
}

bool GraphNodeBase::getPins(PinDirection const& direction, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return appendWanted(nodePins_.list, out,
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
    return hasPinOfDirection(nodePins_.list, PIN_INPUT);
}

bool GraphNodeBase::hasOutputPins() const
{
    return hasPinOfDirection(nodePins_.list, PIN_OUTPUT);
}

GraphNodePin* GraphNodeBase::getPinByName(KS_String const& name) const
{
    auto const pin = std::find_if(nodePins_.list.begin(), nodePins_.list.end(),
                                  [&name](GraphNodePin* candidate) { return candidate->getName() == name; });
    return pin != nodePins_.list.end() ? *pin : nullptr;
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodePin const* pin) const
{
    return pin != nullptr && pin->isOutputPin() && anyAllowsFrom(nodePins_.list, pin);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return pin != nullptr && pairWithPin(nodePins_.list, pin, otherAllowsTo, out);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodeBase const* node) const
{
    return node != nullptr && pairPins(nodePins_.list, node->getNodePins(), otherAllowsTo, nullptr);
}

bool GraphNodeBase::allowsConnectionFrom(GraphNodeBase const* node,
                                         ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return node != nullptr && pairPins(nodePins_.list, node->getNodePins(), otherAllowsTo, &out);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodePin const* pin) const
{
    // The own pins are asked for connections from `pin` here, too: hosts rely on this asymmetry.
    return pin != nullptr && pin->isInputPin() && anyAllowsFrom(nodePins_.list, pin);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return pin != nullptr && pairWithPin(nodePins_.list, pin, otherAllowsFrom, out);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodeBase const* node) const
{
    return node != nullptr && pairPins(nodePins_.list, node->getNodePins(), otherAllowsFrom, nullptr);
}

bool GraphNodeBase::allowsConnectionTo(GraphNodeBase const* node, ArrayOfPtr<GraphNodePin, KS_NO>& out) const
{
    return node != nullptr && pairPins(nodePins_.list, node->getNodePins(), otherAllowsFrom, &out);
}

KS_String GraphNodeBase::getFullName()
{
    if (isPlain(*this)) return KS_String(FullNameText(*this).view());
    GraphNodeBase* const owner = isRoot() ? nullptr : getNodeOwner();
    if (owner == nullptr) return getName();
    KS_String fullName = owner->getFullName();
    appendDotted(fullName, getName());
    return fullName;
}

KS_String GraphNodeBase::getName()
{
    return KS_String(name_);
}

void GraphNodeBase::setName(KS_String const& name)
{
    KS_String const oldName = getName();
    std::string other{std::string_view(name)};
    swapName(other);
    ScopeExit restoreName([this, &other] { swapName(other); });
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
    unsigned int const storedId = std::exchange(id_, newId);
    ScopeExit restoreId([this, storedId] { id_ = storedId; });
    GraphScene* const scene = getGraphScene();
    if (scene != nullptr && oldId != newId) scene->updateNodeIdChange(this, oldId, newId);
    restoreId.dismiss();
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
    // By index: a host's override may change the list while it tells the name.
    for (unsigned int i = 0; i < listOfChildren().size(); ++i)
        oldFullNames.push_back(listOfChildren()[i]->getFullName());

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
    for (unsigned int i = 0; i < listOfChildren().size() && i < oldFullNames.size(); ++i)
    {
        GraphNodeBase* const child = listOfChildren()[i];
        GraphScene* const scene = child->getGraphScene();
        if (scene != nullptr)
            renames.push_back({scene, GraphScene::pinRenamesBelow(child, cText(oldFullNames[i]),
                                                                  FullNameText(*child).view())});
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
    FullNameText const oldFullName(*child);
    PlaceInTree const place(*child);
    ScopeExit putBack([this, &place] { place.restore(*this); });
    if (GraphNodeBase* const owner = child->getNodeOwner()) owner->removeNodeFromNodesList(child);
    child->setNodeOwnerBase(this);
    addNodeToNodesList(child);
    if (GraphScene* const scene = child->getGraphScene())
        scene->rekeyPinsBelow(child, oldFullName.view(), FullNameText(*child).view());
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
    return ChildList(*this).find(name, caseSensitive);
}

void GraphNodeBase::clearNodesArray()
{
    ChildList(*this).clear();
}

bool GraphNodeBase::getNodesRecursively(ArrayOfPtr<GraphNodeBase, KS_NO>& out)
{
    unsigned int const count = listOfChildren().size();
    appendAll(listOfChildren(), out);
    for (unsigned int i = 0; i < count; ++i)
    {
        GraphNodeBase* const child = listOfChildren()[i];
        if (child->isCompound()) child->getNodesRecursively(out);
    }
    return !out.isEmpty();
}

bool GraphNodeBase::getCompoundNodes(ArrayOfPtr<GraphNodeBase, KS_NO>& out)
{
    return appendWanted(listOfChildren(), out,
                        [](GraphNodeBase const* child) { return child->isCompound(); });
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
    return appendWanted(nodePins_.list, out,
                        [directions](GraphNodePin const* pin)
                        { return pin->getDirection().hasAny(directions) && !pin->isConnected(); });
}

bool GraphNodeBase::getConnectedPins(PinDirection const& directions, ArrayOfPtr<GraphNodePin, KS_NO>& out)
{
    return appendWanted(nodePins_.list, out,
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
    return texts_ != nullptr ? texts_->description : KS_String();
}

void GraphNodeBase::setDescription(KS_String const& description)
{
    refTexts().description = description;
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
    return texts_ != nullptr ? texts_->type : KS_String();
}

void GraphNodeBase::setType(KS_String const& type)
{
    refTexts().type = type;
}

KS_String const& GraphNodeBase::getCategory() const
{
    return texts_ != nullptr ? texts_->category : noText;
}

void GraphNodeBase::setCategory(KS_String const& category)
{
    refTexts().category = category;
}

NodeTexts& GraphNodeBase::refTexts()
{
    if (texts_ == nullptr) texts_ = std::make_unique<NodeTexts>();
    return *texts_;
}

void GraphNodeBase::addPinToList(GraphNodePin* pin)
{
    nodePins_.list.append(pin);
    if (nodePins_.set == nullptr) return;
    try
    {
        nodePins_.set->insert(pin);
    }
    catch (std::bad_alloc const&)
    {
        nodePins_.set.reset(); // the list is right; only the short cut is lost
    }
}

bool GraphNodeBase::removePinFromList(GraphNodePin* pin)
{
    if (nodePins_.set != nullptr && !nodePins_.set->erase(pin)) return false;
    return nodePins_.list.removeAll(pin) != 0;
}

// A long list that only this class has changed is not searched. The pin may be gone: it is not looked at.
bool GraphNodeBase::isInPinList(GraphNodePin const& pin) const
{
    constexpr unsigned int longList = 64;
    if (nodePins_.list.size() < longList || nodePins_.isExposed) return nodePins_.list.contains(&pin);
    if (nodePins_.set == nullptr)
    {
        try
        {
            nodePins_.set = std::make_unique<PinSet>(nodePins_.list);
        }
        catch (std::bad_alloc const&)
        {
            return nodePins_.list.contains(&pin);
        }
    }
    return nodePins_.set->contains(&pin);
}

ArrayOfPtr<GraphNodePin, KS_NO>& GraphNodeBase::refNodePins()
{
    nodePins_.isExposed = true;
    nodePins_.set.reset();
    return nodePins_.list;
}

void GraphNodeBase::setNodePins(ArrayOfPtr<GraphNodePin, KS_NO> const& pins)
{
    nodePins_.set.reset();
    nodePins_.list = pins;
}

ArrayOfPtr<GraphNodeBase, KS_NO> const& GraphNodeBase::listOfChildren() const
{
    return ChildList(*this).get();
}

ArrayOfPtr<GraphNodeBase, KS_NO> const& GraphNodeBase::getNodes() const
{
    return ChildList(*this).show();
}

ArrayOfPtr<GraphNodeBase, KS_NO>& GraphNodeBase::refNodes()
{
    return ChildList(*this).expose();
}

void GraphNodeBase::setNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes)
{
    ChildList(*this).set(nodes);
}

void GraphNodeBase::setNodeOwnerBase(GraphNodeBase* owner)
{
    Renaming const renaming(*this);
    leaveOwner();
    nodeOwner_ = owner;
    if (owner != nullptr) linkToOwner();
}

// A copy has the owner of the original, but is not among its children.
void GraphNodeBase::takeOwnerOf(GraphNodeBase const& other)
{
    Renaming const renaming(*this);
    leaveOwner();
    nodeOwner_ = other.nodeOwner_;
    if (other.ownerLinks_.toThis != nullptr) linkToOwner();
}

void GraphNodeBase::linkToOwner() noexcept
{
    ownerLinks_.toThis = &nodeOwner_->ownerLinks_.first;
    ownerLinks_.next = nodeOwner_->ownerLinks_.first;
    if (ownerLinks_.next != nullptr) ownerLinks_.next->ownerLinks_.toThis = &ownerLinks_.next;
    nodeOwner_->ownerLinks_.first = this;
}

void GraphNodeBase::unlinkFromOwner() noexcept
{
    *ownerLinks_.toThis = ownerLinks_.next;
    if (ownerLinks_.next != nullptr) ownerLinks_.next->ownerLinks_.toThis = ownerLinks_.toThis;
    ownerLinks_.next = nullptr;
    ownerLinks_.toThis = nullptr;
}

void GraphNodeBase::leaveOwner() noexcept
{
    if (ownerLinks_.toThis == nullptr) return;
    ChildList::childIsLost(*this);
    unlinkFromOwner();
}

void GraphNodeBase::computeFullNameHash() noexcept
{
    bool const isBelow = ownerLinks_.toThis != nullptr;
    std::uint64_t const start =
        isBelow ? continuedHash(nodeOwner_->placeInNames_.fullNameHash, ".") : emptyTextHash;
    placeInNames_.fullNameHash = continuedHash(start, cText(name_));
}

void GraphNodeBase::swapName(std::string& name) noexcept
{
    Renaming const renaming(*this);
    ChildList::beforeRenaming(*this);
    name_.swap(name);
    ChildList::afterRenaming(*this);
}

void GraphNodeBase::addNodeToNodesList(GraphNodeBase* node)
{
    ChildList(*this).append(node);
}

void GraphNodeBase::removeNodeFromNodesList(GraphNodeBase* node)
{
    ChildList(*this).removeAll(node);
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
    for (unsigned int left = nodePins_.list.size(); left > 0 && !nodePins_.list.isEmpty();)
    {
        GraphNodePin* const pin = nodePins_.list[0];
        auto const entries =
            static_cast<unsigned int>(std::count(nodePins_.list.begin(), nodePins_.list.end(), pin));
        left -= std::min(left, entries);
        removeNodePin(pin);
        GraphNodeBase::removePinFromList(pin); // also when an override has left it there
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
    std::string text("<node id=\"");
    text.append(Decimal(static_cast<int>(id_))).append("\">\n<pins>\n");
    for (GraphNodePin* const pin : nodePins_.list) text += pin->toXml();
    text += "</pins>\n</node>\n";
    return KS_String(text);
}

void GraphNodeBase::onAddingToScene() {}

void GraphNodeBase::onRemovingFromScene() {}

bool GraphNodeBase::getAllChildNodePins(ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& includeOwn) const
{
    if (listOfChildren().isEmpty())
    {
        if (includeOwn) appendAll(nodePins_.list, out);
        return !out.isEmpty();
    }
    // A list of open nodes instead of recursion: a tree may be deeper than the stack.
    std::vector<GraphNodeBase const*> open{this};
    while (!open.empty())
    {
        GraphNodeBase const* const node = open.back();
        open.pop_back();
        if (node != this || includeOwn) appendAll(node->nodePins_.list, out);
        ArrayOfPtr<GraphNodeBase, KS_NO> const& children = node->listOfChildren();
        open.insert(open.end(), std::make_reverse_iterator(children.end()),
                    std::make_reverse_iterator(children.begin()));
    }
    return !out.isEmpty();
}

} // namespace kestrel::graph
