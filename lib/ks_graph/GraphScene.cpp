#include <ks_graph/GraphScene.h>

#include "ChildList.h"
#include "CompoundMover.h"
#include "FullNameText.h"
#include "FullNameWalk.h"
#include "Names.h"
#include "PlainTypes.h"
#include "PointerSet.h"
#include "SceneRegistry.h"
#include "ScopeExit.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph
{

GraphScene::NodeCallback GraphScene::addNodeCallback_ = nullptr;
GraphScene::NodeCallback GraphScene::removeNodeCallback_ = nullptr;
GraphScene::PinCallback GraphScene::addNodePinCallback_ = nullptr;
GraphScene::PinCallback GraphScene::removeNodePinCallback_ = nullptr;
GraphScene::PinCallback GraphScene::updateNodePinCallback_ = nullptr;
GraphScene::ConnectionCallback GraphScene::addConnectionCallback_ = nullptr;
GraphScene::ConnectionCallback GraphScene::removeConnectionCallback_ = nullptr;
GraphScene::NodeCallback GraphScene::groupNodeCallback_ = nullptr;
GraphScene::NodeCallback GraphScene::ungroupNodeCallback_ = nullptr;

unsigned int GraphScene::lastUsedId_ = 0;

namespace
{

constexpr unsigned int invalidId = 0xFFFFFFFFu;
constexpr unsigned int unlimitedConnections = 0xFFFFFFFFu;
constexpr PinDirection inputAndOutput = PIN_INPUT | PIN_OUTPUT;
constexpr Color4<float> defaultNodeColor(0.6f, 0.7f, 0.8f, 1.0f);

// Ids of pins are unique in the process: scenes may exchange pins.
std::atomic<unsigned int> nextPinId{1};

// The scene hands out its pins as pointers to const, to say that a question changes nothing; wiring does.
GraphNodePin* forWiring(GraphNodePin const* pin)
{
    return const_cast<GraphNodePin*>(pin);
}

void removeFullPins(ArrayOfPtr<GraphNodePin, KS_NO>& pins)
{
    pins.removeIf([](GraphNodePin const* pin) { return pin != nullptr && pin->isFull(); });
}

// Fills a map with each pin of the node and what `gather` finds for it.
template <class List, class Gather>
void gatherByPin(GraphNodeBase const* node, std::map<GraphNodePin*, List>& out, Gather gather)
{
    if (node == nullptr) return;
    for (GraphNodePin* const pin : node->getNodePins())
    {
        if (out.count(pin) == 0) out.emplace(pin, gather(pin));
    }
}

// So that every node still stands behind its owner.
void keepLastOfEach(ArrayOfPtr<GraphNodeBase, KS_NO>& nodes)
{
    std::reverse(nodes.begin(), nodes.end());
    removeRepeats(nodes);
    std::reverse(nodes.begin(), nodes.end());
}

// Each node before its children. A list of open nodes instead of recursion: a tree may be deeper than the
// stack. A child list may hold nodes of another owner, so lists may form a ring: such a node is entered once.
template <class Enters>
ArrayOfPtr<GraphNodeBase, KS_NO> walkTree(GraphNodeBase* top, Enters enters)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> walked;
    PointerSet<GraphNodeBase> strangers;
    std::vector<GraphNodeBase*> open{top};
    while (!open.empty())
    {
        GraphNodeBase* const node = open.back();
        open.pop_back();
        if (!enters(node)) continue;
        walked.append(node);
        ArrayOfPtr<GraphNodeBase, KS_NO> const& children = ChildList(*node).get();
        for (unsigned int i = children.size(); i-- > 0;)
            if (children[i]->getNodeOwner() == node || strangers.insert(children[i]))
                open.push_back(children[i]);
    }
    if (!strangers.isEmpty()) keepLastOfEach(walked);
    return walked;
}

std::unique_ptr<GraphNodeBase> newNode(unsigned int id)
{
    return std::make_unique<GraphNodeBase>(id);
}

} // namespace

GraphScene::GraphScene()
    : registry_(std::make_unique<SceneRegistry>()), id_(std::atomic_ref(lastUsedId_).fetch_add(1) + 1)
{}

GraphScene::GraphScene(GraphScene const& other)
    : KS_Class(other),
      registry_(std::make_unique<SceneRegistry>(*other.registry_)),
      graphConnections_(other.graphConnections_),
      allowDuplicatedConnections_(other.allowDuplicatedConnections_),
      allowLoops_(other.allowLoops_),
      isDirty_(other.isDirty_),
      keepRootNode_(other.keepRootNode_),
      rootNode_(other.rootNode_),
      messages_(other.messages_),
      id_(other.id_),
      nodeColorMap_(other.nodeColorMap_),
      useAdjacencyMap_(other.useAdjacencyMap_),
      lastImportedNodes_(other.lastImportedNodes_),
      lastImportedConnections_(other.lastImportedConnections_),
      clearing_(other.clearing_),
      lastFreeNodeId_(other.lastFreeNodeId_)
{
    other.registry_->connectionsKnowTheirPlaces = false;
}

// A copy that fails leaves this scene as it was.
GraphScene& GraphScene::operator=(GraphScene const& other)
{
    GraphScene copy(other);
    swapState(copy);
    return *this;
}

void GraphScene::swapState(GraphScene& other) noexcept
{
    std::swap(registry_, other.registry_);
    std::swap(graphConnections_, other.graphConnections_);
    std::swap(allowDuplicatedConnections_, other.allowDuplicatedConnections_);
    std::swap(allowLoops_, other.allowLoops_);
    std::swap(isDirty_, other.isDirty_);
    std::swap(keepRootNode_, other.keepRootNode_);
    std::swap(rootNode_, other.rootNode_);
    std::swap(messages_, other.messages_);
    std::swap(id_, other.id_);
    std::swap(nodeColorMap_, other.nodeColorMap_);
    std::swap(useAdjacencyMap_, other.useAdjacencyMap_);
    std::swap(lastImportedNodes_, other.lastImportedNodes_);
    std::swap(lastImportedConnections_, other.lastImportedConnections_);
    std::swap(clearing_, other.clearing_);
    std::swap(lastFreeNodeId_, other.lastFreeNodeId_);
}

GraphScene::~GraphScene() = default;

// ---- Looking up ----

GraphNodeBase* GraphScene::getNodePtrById(unsigned int const& id) const
{
    if (id == invalidId) return nullptr;
    return registry_->nodesById.find(id);
}

GraphNodeBase* GraphScene::getNodePtrByFullName(KS_String const& name) const
{
    if (rootNode_ != nullptr && FullNameText::isFullName(*rootNode_, cText(name))) return rootNode_;
    NodeNames& names = registry_->nodeNames;
    if (!names.isReady(registry_->nodesById)) return findAsked(registry_->nodesById, name, nullptr);
    GraphNodeBase* const plain = names.findPlain(cText(name));
    return names.asked().size() != 0 ? findAsked(names.asked(), name, plain) : plain;
}

// The first by id of `plain`, which may be null, and those of the nodes that have this full name when asked
// for it.
GraphNodeBase* GraphScene::findAsked(IdMap<GraphNodeBase> const& nodes, KS_String const& fullName,
                                     GraphNodeBase* plain) const
{
    std::uint64_t const end = plain != nullptr ? plain->placeInNames_.id : IdMap<GraphNodeBase>::endOfIds;
    unsigned int const version = registry_->version;
    FullNameWalk* const walk = registry_->currentWalk;
    GraphNodeBase* const found = walk != nullptr && walk->covers(fullName)
                                     ? walk->find(nodes, fullName, end)
                                     : FullNameWalk(*registry_, fullName).find(nodes, fullName, end);
    return found != nullptr || version != registry_->version ? found : plain;
}

bool GraphScene::hasGraphNodeWithId(unsigned int const& id) const
{
    return id != invalidId && registry_->nodesById.contains(id);
}

void GraphScene::getAllGraphCompounds(ArrayOfPtr<GraphNodeBase, KS_NO>& out) const
{
    if (rootNode_ == nullptr) return;
    appendAll(walkTree(rootNode_, [](GraphNodeBase const* node) { return node->isCompound(); }), out);
}

GraphNodePin* GraphScene::getPinPtrById(unsigned int const& id) const
{
    return registry_->pinsById.find(id);
}

GraphNodePin* GraphScene::getPinPtrByFullName(KS_String const& name) const
{
    return registry_->pinsByFullName.find(cText(name));
}

GraphNodePin* GraphScene::getPinPtrByFullNameCaseInsensitive(KS_String const& name) const
{
    return registry_->pinsByFullName.findFirst([&name](std::string_view fullName)
                                               { return equalIgnoringCase(fullName, cText(name)); });
}

bool GraphScene::getGraphNodesAsList(ArrayOfPtr<GraphNodeBase, KS_NO>& out) const
{
    registry_->nodesById.forEach([&out](unsigned int, GraphNodeBase* node) { out.append(node); });
    return !out.isEmpty();
}

void GraphScene::getGraphNodesAtLevel(GraphNodeBase* node, bool const& recursive,
                                      ArrayOfPtr<GraphNodeBase, KS_NO>& out) const
{
    if (node == nullptr) return;
    if (!recursive)
    {
        appendAll(ChildList(*node).get(), out);
        return;
    }
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes; // `out` may be the child list of a node on the way
    node->getNodesRecursively(nodes);
    appendAll(nodes, out);
}

unsigned int GraphScene::getNumberOfNodes() const
{
    return static_cast<unsigned int>(registry_->nodesById.size());
}

unsigned int GraphScene::getNumberOfConnections() const
{
    return graphConnections_.size();
}

// ---- Connected nodes ----

bool GraphScene::getNodesConnectedWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphNodeBase, KS_NO>& out,
                                           bool const& addTargets, bool const& addSources,
                                           bool const& skipSameNode, bool const& unique,
                                           bool const& includeImplicit) const
{
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    getConnectionsWithNode(node, connections, addTargets, addSources, includeImplicit, unique);
    if (connections.isEmpty()) return false;
    getNodesConnectedBase(connections, out, addTargets, addSources, skipSameNode);
    return true;
}

bool GraphScene::getNodesConnectedBase(ArrayOfPtr<GraphConnection, KS_NO> const& connections,
                                       ArrayOfPtr<GraphNodeBase, KS_NO>& out, bool const& addTargets,
                                       bool const& addSources, bool const& skipSameNode) const
{
    PointerSet<GraphNodeBase> listed(out);
    auto const add = [&](GraphNodeBase* node)
    {
        if (node != nullptr && listed.insert(node)) out.append(node);
    };
    for (GraphConnection const* const connection : connections)
    {
        if (connection == nullptr || (skipSameNode && connection->isSameNode())) continue;
        if (addTargets) add(connection->getTargetNode());
        if (addSources) add(connection->getSourceNode());
    }
    return true;
}

// ---- Connectable pins ----

bool GraphScene::getConnectablePins(GraphNodePin const* pin, GraphNodeBase const* node,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& excludeFull) const
{
    return getConnectablePins(pin, node, true, out, excludeFull);
}

bool GraphScene::getConnectablePins(GraphNodeBase const* node, GraphNodePin const* pin,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& excludeFull) const
{
    return getConnectablePins(pin, node, false, out, excludeFull);
}

bool GraphScene::getConnectablePins(GraphNodePin const* pin, GraphNodeBase const* node,
                                    bool const& pinIsSource, ArrayOfPtr<GraphNodePin, KS_NO>& out,
                                    bool const& excludeFull) const
{
    if (pin == nullptr || node == nullptr) return false;
    bool const allowed =
        pinIsSource ? node->allowsConnectionFrom(pin, out) : node->allowsConnectionTo(pin, out);
    if (!excludeFull) return allowed;
    removeFullPins(out);
    return !out.isEmpty();
}

bool GraphScene::getConnectablePins(GraphNodeBase const* source, GraphNodeBase const* target,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& sourcePins,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& targetPins,
                                    bool const& excludeFull) const
{
    if (source == nullptr || target == nullptr) return false;
    bool const allowed =
        source->allowsConnectionTo(target, sourcePins) && target->allowsConnectionFrom(source, targetPins);
    if (!excludeFull) return allowed;
    removeFullPins(sourcePins);
    removeFullPins(targetPins);
    return !sourcePins.isEmpty() && !targetPins.isEmpty();
}

// ---- Pins and their connections ----

bool GraphScene::isPinFull(GraphNodePin const* pin) const
{
    return pin != nullptr && pin->isFull();
}

bool GraphScene::hasPinConnections(GraphNodePin const* pin) const
{
    return hasPinConnections(pin, inputAndOutput);
}

bool GraphScene::hasPinConnections(GraphNodePin const* pin, PinDirection const& direction) const
{
    return pin != nullptr && pin->hasConnections(direction);
}

unsigned int GraphScene::getPinNumConnections(GraphNodePin const* pin) const
{
    return pin != nullptr ? pin->getNumConnections() : 0xFFFFFFFFu;
}

unsigned int GraphScene::getPinNumConnections(GraphNodePin const* pin, PinDirection const& direction) const
{
    return pin != nullptr ? pin->getNumConnections(direction) : 0xFFFFFFFFu;
}

void GraphScene::getEvaluablePins(ArrayOfPtr<GraphNodePin, KS_NO>&) const {}

bool GraphScene::hasConnectionsLikeThis(GraphConnection const& connection) const
{
    if (!connection.isConnected()) return false;
    // The source pin's input list, and sources compared with the target: hosts rely on this test as it
    // stands.
    ArrayOfPtr<GraphConnection, KS_NO> const& inputs = connection.getSourcePin()->getInputConnections();
    return std::any_of(inputs.begin(), inputs.end(),
                       [&connection](GraphConnection const* input)
                       { return input->getSourcePin() == connection.getTargetPin(); });
}

bool GraphScene::getConnectionsLikeThis(GraphConnection const& connection,
                                        ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    if (!connection.isConnected()) return false;
    return connection.getSourcePin()->getConnectionsWithPin(connection.getTargetPin(), out, false, true,
                                                            true);
}

bool GraphScene::areNodesConnected(GraphNodeBase const* a, GraphNodeBase const* b,
                                   bool const& eitherDirection, bool const& includeImplicit) const
{
    if (a == nullptr || b == nullptr) return false;
    if (useAdjacencyMap_) return isConnectionInAdjacencyMap(a, b, includeImplicit, eitherDirection);
    for (GraphConnection const* const connection : graphConnections_)
    {
        if (connection == nullptr || (!includeImplicit && connection->isImplicit())) continue;
        if (connection->getSourceNode() == a && connection->getTargetNode() == b) return true;
    }
    return eitherDirection && areNodesConnected(b, a, false, includeImplicit);
}

bool GraphScene::hasNodeAnyConnection(GraphNodeBase const* node, PinDirection const& direction,
                                      bool const& ignoreNodeLoops) const
{
    if (node == nullptr) return false;
    // The counts answer for both directions when the output bit is asked for, and for none without it.
    if (useAdjacencyMap_)
        return direction.hasAny(PIN_OUTPUT) &&
               nodeHasConnectionsInAdjacencyMap(node, true, true, ignoreNodeLoops);
    return std::any_of(graphConnections_.begin(), graphConnections_.end(),
                       [&](GraphConnection const* connection)
                       {
                           if (connection == nullptr) return false;
                           if (ignoreNodeLoops && connection->isNodeLoop()) return false;
                           return (direction.hasAny(PIN_OUTPUT) && connection->getSourceNode() == node) ||
                                  (direction.hasAny(PIN_INPUT) && connection->getTargetNode() == node);
                       });
}

// ---- Gathering connections ----

bool GraphScene::getPinConnections(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    return getPinConnections(pin, inputAndOutput, out);
}

bool GraphScene::getPinConnections(GraphNodePin const* pin, PinDirection const& direction,
                                   ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    return pin != nullptr && pin->getConnections(direction, out, true);
}

void GraphScene::getNodeConnectionsByPin(GraphNodeBase* node,
                                         std::map<GraphNodePin*, ArrayOfPtr<GraphNodePin, KS_NO>>& out) const
{
    gatherByPin(node, out,
                [this](GraphNodePin* pin)
                {
                    ArrayOfPtr<GraphConnection, KS_NO> connections;
                    getPinConnections(pin, connections);
                    ArrayOfPtr<GraphNodePin, KS_NO> partners;
                    for (GraphConnection const* const connection : connections)
                        partners.append(connection->isConnectedPinSource(pin) ? connection->getTargetPin()
                                                                              : connection->getSourcePin());
                    return partners;
                });
}

void GraphScene::getNodeConnectionsByPin(
    GraphNodeBase* node, std::map<GraphNodePin*, ArrayOfPtr<GraphConnection, KS_NO>>& out) const
{
    gatherByPin(node, out,
                [this](GraphNodePin* pin)
                {
                    ArrayOfPtr<GraphConnection, KS_NO> connections;
                    getPinConnections(pin, connections);
                    return connections;
                });
}

bool GraphScene::getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                        bool const& outputs, bool const& inputs, bool const& includeImplicit,
                                        bool const& unique) const
{
    if (node == nullptr) return false;
    node->getConnections(out, outputs, inputs, includeImplicit, unique);
    return !out.isEmpty();
}

bool GraphScene::getConnectionsWithNode(unsigned int const& id, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                        bool const& outputs, bool const& inputs, bool const& includeImplicit,
                                        bool const& unique) const
{
    return getConnectionsWithNode(getNodePtrById(id), out, outputs, inputs, includeImplicit, unique);
}

bool GraphScene::getConnectionsBetweenNodes(GraphNodeBase const* a, GraphNodeBase const* b,
                                            bool const& bothDirections, bool const& includeImplicit,
                                            bool const& unique, ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    if (a == nullptr || b == nullptr) return false;
    a->getConnectionsWithNode(b, out, bothDirections, includeImplicit, unique);
    return !out.isEmpty();
}

// The connections of each node, repeats included.
void GraphScene::gatherConnections(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, bool skipInterfaces,
                                   bool includeImplicit, ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    for (GraphNodeBase const* const node : nodes)
    {
        if (node == nullptr || (skipInterfaces && node->isInterface())) continue;
        getConnectionsWithNode(node, out, true, true, includeImplicit, false);
    }
}

bool GraphScene::getConnectionsInvolvingNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes,
                                              bool const& skipInterfaces, bool const& includeImplicit,
                                              bool const& unique,
                                              ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    gatherConnections(nodes, skipInterfaces, includeImplicit, out);
    if (unique) removeRepeats(out);
    return !out.isEmpty();
}

bool GraphScene::getConnectionsInvolvingOnlyNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes,
                                                  bool const& skipInterfaces, bool const& includeImplicit,
                                                  ArrayOfPtr<GraphConnection, KS_NO>& out) const
{
    gatherConnections(nodes, skipInterfaces, includeImplicit, out);
    PointerSet<GraphNodeBase> const listed(nodes);
    PointerSet<GraphConnection> kept;
    auto const isListed = [&listed](GraphNodeBase const* node)
    { return node != nullptr && listed.contains(node); };
    out.removeIf(
        [&](GraphConnection const* connection)
        {
            return connection == nullptr || !isListed(connection->getSourceNode()) ||
                   !isListed(connection->getTargetNode()) || !kept.insert(connection);
        });
    return !out.isEmpty();
}

// ---- Wiring rules ----

bool GraphScene::isConnectionAllowed(GraphNodePin const* pin, GraphNodeBase const* node,
                                     bool const& pinIsSource) const
{
    if (pin == nullptr || node == nullptr) return false;
    return pinIsSource ? node->allowsConnectionFrom(pin) : node->allowsConnectionTo(pin);
}

bool GraphScene::isConnectionAllowed(GraphNodePin const* pin, GraphNodeBase const* node) const
{
    return isConnectionAllowed(pin, node, true);
}

bool GraphScene::isConnectionAllowed(GraphNodeBase const* node, GraphNodePin const* pin) const
{
    return isConnectionAllowed(pin, node, false);
}

bool GraphScene::isConnectionAllowed(GraphNodePin const* source, GraphNodePin const* target) const
{
    return source != nullptr && target != nullptr && source->allowsConnectionTo(target) &&
           !isPinFull(source) && !isPinFull(target);
}

bool GraphScene::isConnectionAllowed(GraphNodeBase const* source, GraphNodeBase const* target) const
{
    return source != nullptr && target != nullptr && source->allowsConnectionTo(target);
}

unsigned int GraphScene::getGraphType() const
{
    return 0;
}

void GraphScene::run() {}

void GraphScene::purge() {}

void GraphScene::clear()
{
    bool const wasClearing = std::exchange(clearing_, true);
    ScopeExit const stopClearing([this, wasClearing] { clearing_ = wasClearing; });
    removeAllConnections();
    removeAllNodes();
    registry_->adjacency.clear();
    lastImportedNodes_.setSize(0);
    lastImportedConnections_.setSize(0);
    clearMessages();
    lastFreeNodeId_ = 1;
}

void GraphScene::clearMessages()
{
    messages_.clear();
    if (clearing_) return;
    registry_->nodesById.forEach(
        [](unsigned int, GraphNodeBase* node)
        {
            if (node != nullptr) node->clearMessages();
        });
}

// ---- Node colours and XML ----

void GraphScene::setupNodeColor()
{
    nodeColorMap_.clear();
}

Color4<float> GraphScene::getColorFromNodeType(KS_String const& type) const
{
    auto const entry = nodeColorMap_.find(type.toLower());
    return entry != nodeColorMap_.end() ? entry->second : defaultNodeColor;
}

Color4<float> GraphScene::getColorFromNodeType(GraphNodeBase* node) const
{
    return node != nullptr ? getColorFromNodeType(node->getType()) : defaultNodeColor;
}

bool GraphScene::hasColorForNodeType(KS_String const& type) const
{
    return nodeColorMap_.count(type.toLower()) != 0;
}

KS_String GraphScene::toXml() const
{
    // Built in a text that grows by factors: KS_String grows exactly, so appending to it would copy the text
    // once for each element.
    std::string text = "<graph>\n<nodes>\n";
    registry_->nodesById.forEach(
        [&text](unsigned int, GraphNodeBase* node)
        {
            if (node != nullptr) text += node->toXml();
        });
    text += "</nodes>\n<connections>\n";
    for (GraphConnection* const connection : graphConnections_)
        if (connection != nullptr) text += connection->toXml();
    text += "</connections>\n</graph>\n";
    return KS_String(text);
}

// ---- Adding and removing nodes ----

bool GraphScene::addNodeToGraph(GraphNodeBase* node)
{
    if (node == nullptr) return false;
    unsigned int const id = node->getId();
    if (!insertNodeInMapById(id, node)) return false;
    ScopeExit takeOut(
        [this, node, id, oldScene = node->getGraphScene()]
        {
            node->setGraphScene(oldScene);
            removeNodeFromMapById(id);
        });
    node->onAddingToScene();
    node->setGraphScene(this);
    if (node->getNodeOwner() == nullptr) node->setNodeOwner(rootNode_);
    takeOut.dismiss();
    if (addNodeCallback_ != nullptr) addNodeCallback_(this, node->getNodeOwner(), node);
    isDirty_ = true;
    return true;
}

bool GraphScene::removeNodeFromGraph(GraphNodeBase* node)
{
    return node != nullptr && removeNodeFromGraph(node->getId());
}

bool GraphScene::removeNodeFromGraph(unsigned int const& id)
{
    unsigned int const removedId =
        id; // the argument may be the node's own, which the host may change on the way
    if (removedId == invalidId || !hasGraphNodeWithId(removedId)) return false;
    GraphNodeBase* const node = getNodePtrById(removedId);
    if (node == nullptr) return false;
    removeConnectionsWithNode(removedId);
    removeNodesInCompoundFromGraph(node);
    if (node->isInterface()) removeNodePins(node);
    if (removeNodeCallback_ != nullptr) removeNodeCallback_(this, node->getNodeOwner(), node);
    node->onRemovingFromScene();
    node->setNodeOwner(nullptr);
    removeNodeFromMapById(removedId);
    return true;
}

void GraphScene::removeNodesInCompoundFromGraph(GraphNodeBase* compound)
{
    if (compound == nullptr) return;
    ArrayOfPtr<GraphNodeBase, KS_NO> const children(ChildList(*compound).get());
    for (GraphNodeBase* const child : children) removeNodeFromGraph(child);
    compound->clearNodesArray();
}

bool GraphScene::removeAllNodes()
{
    if (rootNode_ != nullptr)
    {
        ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
        if (rootNode_->isCompound())
            nodes = walkTree(rootNode_, [](GraphNodeBase const*) { return true; });
        else
            nodes.append(rootNode_);

        keepLastOfEach(nodes); // a list may hold a node twice
        // From the deepest up: a node's owner is still there when the callback asks for it.
        for (unsigned int i = nodes.size(); i-- > 0;)
        {
            GraphNodeBase* const node = nodes[i];
            if (node == rootNode_ && keepRootNode_) continue;
            if (node->isCompound())
            {
                node->clearNodesArray();
                if (removeNodeCallback_ != nullptr) removeNodeCallback_(this, node->getNodeOwner(), node);
            }
            delete node;
        }
    }
    registry_->nodesById.clear();
    registry_->nodeNames.clear();
    ++registry_->version;
    if (!keepRootNode_) rootNode_ = nullptr;
    if (rootNode_ != nullptr) rootNode_->clearNodesArray();
    isDirty_ = true;
    return true;
}

// ---- The registry's maps ----

bool GraphScene::insertNodeInMapById(unsigned int const& id, GraphNodeBase* node)
{
    ++registry_->version;
    isDirty_ = registry_->nodesById.insert(id, node);
    if (isDirty_) registry_->nodeNames.added(id, node);
    return isDirty_;
}

bool GraphScene::insertPinInMapById(unsigned int const& id, GraphNodePin* pin)
{
    return isDirty_ = registry_->pinsById.insert(id, pin);
}

bool GraphScene::insertPinInMapByFullName(KS_String const& name, GraphNodePin* pin)
{
    return isDirty_ = registry_->pinsByFullName.insert(cText(name), pin);
}

void GraphScene::insertUnderFullName(GraphNodePin& pin)
{
    isDirty_ = registry_->pinsByFullName.insert(FullNameText(pin).hashed(), &pin);
}

void GraphScene::removeNodeFromMapById(unsigned int const& id)
{
    ++registry_->version;
    if (registry_->nodesById.contains(id)) registry_->nodeNames.removed(registry_->nodesById.find(id));
    registry_->nodesById.erase(id);
    isDirty_ = true;
}

void GraphScene::removePinFromMapById(unsigned int const& id)
{
    registry_->pinsById.erase(id);
    isDirty_ = true;
}

void GraphScene::removePinFromMapByFullName(KS_String const& name)
{
    eraseFullName(cText(name));
}

void GraphScene::eraseFullName(HashedText const& name)
{
    if (registry_->pinsByFullName.erase(name)) registry_->freePinNumbers.released(name.text);
    isDirty_ = true;
}

void GraphScene::updateNodeIdChange(GraphNodeBase* node, unsigned int const& oldId, unsigned int const& newId)
{
    IdMap<GraphNodeBase>& nodes = registry_->nodesById;
    if (!nodes.contains(oldId)) return;
    bool const isFree = oldId != newId && nodes.insert(newId, node);
    ++registry_->version;
    registry_->nodeNames.removed(nodes.find(oldId));
    if (oldId == newId)
        nodes.assign(oldId, node);
    else
        nodes.erase(oldId);
    if (isFree || oldId == newId) registry_->nodeNames.added(newId, node);
    isDirty_ = true;
}

void GraphScene::updateRenamedNodeInMapByFullName(GraphNodeBase* node, KS_String const& oldName,
                                                  KS_String const&)
{
    if (node == nullptr) return;
    GraphNodeBase* const owner = node->isRoot() ? nullptr : node->getNodeOwner();
    KS_String const oldFullName = owner != nullptr ? dottedName(owner->getFullName(), oldName) : oldName;
    rekeyPinsBelow(node, cText(oldFullName), FullNameText(*node).view());
}

void GraphScene::updateReparentedNodeInMapByFullName(GraphNodeBase* node, KS_String const& oldFullName,
                                                     KS_String const& newFullName)
{
    if (node != nullptr) rekeyPinsBelow(node, cText(oldFullName), cText(newFullName));
}

void GraphScene::updateRenamedPinInMapByFullName(KS_String const& oldFullName, KS_String const& newFullName)
{
    rekeyPin({HashedText(cText(oldFullName)), PinNames::Key(cText(newFullName))});
}

// Gathers every name before it changes the first key: what can fail comes first.
void GraphScene::rekeyPinsBelow(GraphNodeBase* node, std::string_view oldFullName,
                                std::string_view newFullName)
{
    PinRenames renames = pinRenamesBelow(node, oldFullName, newFullName);
    rekeyPins(renames);
}

// The pins of the node and of everything below it, with the full names that they have now.
PinRenames GraphScene::pinRenamesBelow(GraphNodeBase const* node, std::string_view oldFullName,
                                       std::string_view newFullName)
{
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    node->getAllChildNodePins(pins, true);
    PinRenames renames{std::string(oldFullName), newFullName.size(), {}};
    renames.newNames.reserve(pins.size());
    for (GraphNodePin* const pin : pins) renames.newNames.emplace_back(FullNameText(*pin).hashed());
    return renames;
}

void GraphScene::rekeyPins(PinRenames& renames) noexcept
{
    ++registry_->version;
    HashedText const oldFront(renames.oldFront);
    auto const oldName = [&](PinNames::Key const& newName)
    {
        std::string_view const text = newName.view();
        return PinNames::Name(oldFront, text.substr(std::min(text.size(), renames.newFrontLength)));
    };
    std::vector<PinNames::Key>& newNames = renames.newNames;
    constexpr std::size_t ahead = 4;
    for (std::size_t i = 0; i < newNames.size() + ahead; ++i)
    {
        if (i < newNames.size())
        {
            registry_->pinsByFullName.prefetch(newNames[i].hash());
            registry_->pinsByFullName.prefetch(oldName(newNames[i]).hash());
        }
        if (i >= ahead) rekeyPin({oldName(newNames[i - ahead]), std::move(newNames[i - ahead])});
    }
}

// Cannot fail: the new key is there already.
void GraphScene::rekeyPin(PinRename&& rename) noexcept
{
    if (registry_->rekeyPin(std::move(rename))) isDirty_ = true;
}

// ---- Making nodes ----

GraphNodeBase* GraphScene::createNewCompound()
{
    std::unique_ptr<GraphNodeBase> node = newNode(getFreeNodeId());
    node->setCompound(true);
    return node.release();
}

GraphNodeBase* GraphScene::createNewInterfaceNode()
{
    std::unique_ptr<GraphNodeBase> node = newNode(getFreeNodeId());
    node->setInterface(true);
    return node.release();
}

GraphNodeBase* GraphScene::createNewPassThrough()
{
    return new GraphNodeBase(getFreeNodeId());
}

GraphNodeBase* GraphScene::createNewEvaluator()
{
    return new GraphNodeBase(getFreeNodeId());
}

// ---- Compounds and interfaces ----

bool GraphScene::moveNodesToCompound(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, GraphNodeBase* compound,
                                     std::map<KS_String, KS_String>& pinRenames,
                                     std::map<GraphNodeBase*, GraphNodeBase*>& inputInterfaces,
                                     std::map<GraphNodeBase*, GraphNodeBase*>& outputInterfaces,
                                     ArrayOfPtr<GraphNodeBase, KS_NO>& newInterfaceNodes,
                                     ArrayOfPtr<GraphNodePin, KS_NO>& newCompoundPins,
                                     Array<GraphConnection, _Wa>& removedConnections,
                                     ArrayOfPtr<GraphConnection, KS_NO>& outerConnections,
                                     ArrayOfPtr<GraphConnection, KS_NO>& innerConnections)
{
    if (compound == nullptr) return true;
    ArrayOfPtr<GraphNodeBase, KS_NO> const moved(nodes); // the list may be a node's own
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    getConnectionsInvolvingNodes(moved, true, false, true, connections);
    reparent(moved, compound, pinRenames);
    BoundaryRewirer rewirer(*this, compound, moved, true,
                            {inputInterfaces, outputInterfaces, newInterfaceNodes, newCompoundPins,
                             removedConnections, outerConnections, innerConnections});
    for (GraphConnection* const connection : connections) rewirer.rewire(connection);
    return true;
}

bool GraphScene::removeNodesFromCompound(GraphNodeBase* compound, ArrayOfPtr<GraphNodeBase, KS_NO>& nodes,
                                         std::map<KS_String, KS_String>& pinRenames,
                                         Array<GraphConnection, _Wa>& removedOuterConnections,
                                         Array<GraphConnection, _Wa>& removedConnections,
                                         ArrayOfPtr<GraphConnection, KS_NO>& newConnections,
                                         ArrayOfPtr<GraphConnection, KS_NO>&)
{
    if (compound == nullptr) return true;
    ArrayOfPtr<GraphNodeBase, KS_NO> const moved(nodes);
    CompoundExit(*this, compound, {pinRenames, removedOuterConnections, removedConnections, newConnections},
                 nullptr)
        .move(moved);
    return true;
}

bool GraphScene::removeNodesFromCompoundCreatingInterfaces(
    GraphNodeBase* compound, ArrayOfPtr<GraphNodeBase, KS_NO>& nodes,
    std::map<KS_String, KS_String>& pinRenames, Array<GraphConnection, _Wa>& removedOuterConnections,
    Array<GraphConnection, _Wa>& removedConnections, ArrayOfPtr<GraphConnection, KS_NO>& newConnections,
    ArrayOfPtr<GraphConnection, KS_NO>& innerConnections,
    std::map<GraphNodeBase*, GraphNodeBase*>& inputInterfaces,
    std::map<GraphNodeBase*, GraphNodeBase*>& outputInterfaces,
    ArrayOfPtr<GraphNodeBase, KS_NO>& newInterfaceNodes, ArrayOfPtr<GraphNodePin, KS_NO>& newCompoundPins)
{
    if (compound == nullptr) return true;
    ArrayOfPtr<GraphNodeBase, KS_NO> const moved(nodes);
    BoundaryRewirer rewirer(*this, compound, moved, false,
                            {inputInterfaces, outputInterfaces, newInterfaceNodes, newCompoundPins,
                             removedConnections, newConnections, innerConnections});
    CompoundExit(*this, compound, {pinRenames, removedOuterConnections, removedConnections, newConnections},
                 &rewirer)
        .move(moved);
    return true;
}

bool GraphScene::addCompoundInterfaceNode(PinDirection const& direction, GraphNodeBase* compound,
                                          GraphNodeBase*& interfaceNode, GraphNodePin*& compoundPin,
                                          GraphNodePin*& interfacePin)
{
    interfaceNode = nullptr;
    compoundPin = nullptr;
    interfacePin = nullptr;
    if (compound == nullptr) return false;
    GraphNodeBase* const node = createNewInterfaceNode();
    if (node == nullptr) return false;
    ScopeExit discard(
        [this, node]
        {
            if (GraphScene::getNodePtrById(node->getId()) != node) delete node;
        });
    node->setName(getFreeInterfaceNodeName(compound->getFullName(), direction));
    addNodeToGraph(node);
    discard.dismiss();
    interfaceNode = node;
    interfaceNode->setNodeOwner(compound);
    return addCompoundInterfacePin(direction, interfaceNode, compoundPin, interfacePin);
}

bool GraphScene::addCompoundInterfacePin(PinDirection const& direction, GraphNodeBase* interfaceNode,
                                         GraphNodePin*& compoundPin, GraphNodePin*& interfacePin)
{
    compoundPin = nullptr;
    interfacePin = nullptr;
    if (interfaceNode == nullptr || interfaceNode->getNodeOwner() == nullptr) return false;
    bool const isInput = direction == PIN_INPUT; // as a whole: both bits together make an output
    interfacePin = createNewPin(interfaceNode, unlimitedConnections, isInput ? PIN_OUTPUT : PIN_INPUT);
    if (interfacePin == nullptr) return false;
    compoundPin = createCompoundPinForInterfacePin(interfacePin);
    GraphNodeBase* const compound = compoundPin != nullptr ? compoundPin->getParentGraphNodePtr() : nullptr;
    if (compound == nullptr) return false;
    interfacePin->setName(getFreePinName(compound->getFullName(), isInput ? "input" : "output"));
    return true;
}

GraphNodePin* GraphScene::createCompoundPinForInterfacePin(GraphNodePin* interfacePin)
{
    GraphNodeBase const* const node =
        interfacePin != nullptr ? interfacePin->getParentGraphNodePtr() : nullptr;
    GraphNodeBase* const compound = node != nullptr ? node->getNodeOwner() : nullptr;
    if (compound == nullptr) return nullptr;
    if (GraphNodePin* const former = interfacePin->getParentGraphNodePinPtr())
        interfacePin->keepFormerParent(*former);
    GraphNodePin* const compoundPin =
        createNewPin(compound, unlimitedConnections, interfacePin->isInputPin() ? PIN_OUTPUT : PIN_INPUT);
    if (compoundPin == nullptr) return nullptr;
    compoundPin->setChildGraphNodePinPtr(interfacePin);
    interfacePin->setParentGraphNodePinPtr(compoundPin);
    return compoundPin;
}

// ---- Free ids and names ----

unsigned int GraphScene::getFreeNodeId()
{
    unsigned int candidate = lastFreeNodeId_;
    while (getNodePtrById(candidate) != nullptr) ++candidate;
    lastFreeNodeId_ = candidate;
    return candidate;
}

KS_String GraphScene::getFreeNodeName(KS_String const& ownerFullName, KS_String const& baseName)
{
    if (hasPlainNames()) return freePlainNodeName(ownerFullName, baseName);
    FullNameWalk walk(*registry_, dottedName(ownerFullName, baseName));
    FullNameWalk* const outerWalk = std::exchange(registry_->currentWalk, &walk);
    ScopeExit const endWalk([this, outerWalk] { registry_->currentWalk = outerWalk; });
    for (int number = 1;; ++number)
    {
        KS_String name = numberedName(cText(baseName), 2, number);
        if (getNodePtrByFullName(dottedName(ownerFullName, name)) == nullptr) return name;
    }
}

// Whether a look-up by full name asks nobody, and nobody can notice one.
bool GraphScene::hasPlainNames() const
{
    NodeNames& names = registry_->nodeNames;
    return isPlain(*this) && (rootNode_ == nullptr || hasPlainFullName(*rootNode_)) &&
           names.isReady(registry_->nodesById) && names.asked().size() == 0;
}

KS_String GraphScene::freePlainNodeName(KS_String const& ownerFullName, KS_String const& baseName) const
{
    NodeNames& names = registry_->nodeNames;
    auto const isTaken = [&names](std::string_view fullName) { return names.findPlain(fullName) != nullptr; };
    NumberedNames candidates(dottedName(ownerFullName, baseName));
    int number = names.freeNumbers().firstFree(candidates, 1, isTaken);
    // The root node need not be registered.
    if (rootNode_ != nullptr)
        while (FullNameText::isFullName(*rootNode_, candidates.with(number)) ||
               isTaken(candidates.with(number)))
            ++number;
    return numberedName(cText(baseName), 2, number);
}

KS_String GraphScene::getFreeNodeCompoundName(KS_String const& ownerFullName)
{
    return getFreeNodeName(ownerFullName, "compound");
}

KS_String GraphScene::getFreeInterfaceNodeName(KS_String const& ownerFullName, PinDirection const& direction)
{
    return getFreeNodeName(ownerFullName,
                           direction.hasAny(PIN_INPUT) ? "input interface" : "output interface");
}

KS_String GraphScene::getFreePinName(KS_String const& nodeFullName, KS_String const& baseName)
{
    auto const isTaken = [this](std::string_view name)
    { return registry_->pinsByFullName.find(name) != nullptr; };
    NumberedNames candidates(dottedName(nodeFullName, baseName));
    int const number = registry_->freePinNumbers.firstFree(candidates, 0, isTaken);
    return number == 0 ? KS_String(cText(baseName)) : numberedName(cText(baseName), 2, number);
}

// ---- Making and registering pins ----

GraphNodePin* GraphScene::createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction)
{
    auto pin = std::make_unique<GraphNodePin>(nullptr, maxNumConnections, direction);
    pin->setId(nextPinId.fetch_add(1));
    ScopeExit unregister([this, &pin] { unregisterId(*pin); });
    bool const registered = addNodePin(pin.get());
    unregister.dismiss();
    GraphNodePin* const created = pin.release(); // a refused pin is the refusing override's to clean up
    if (!registered) return nullptr;
    isDirty_ = true;
    return created;
}

GraphNodePin* GraphScene::createNewPin(GraphNodeBase* node, unsigned int const& maxNumConnections,
                                       PinDirection const& direction)
{
    if (node == nullptr) return nullptr;
    // Which name it gets is certain only when it is asked for.
    registry_->pinsByFullName.prefetch(continuedHash(node->placeInNames_.fullNameHash, ".Untitled"));
    GraphNodePin* const pin = createNewPin(maxNumConnections, direction);
    if (pin == nullptr) return nullptr;
    ScopeExit discard(
        [this, node, pin]
        {
            unregisterId(*pin);
            node->removeNodePin(pin);
            delete pin;
        });
    node->addNodePin(pin);
    insertUnderFullName(*pin);
    discard.dismiss();
    isDirty_ = true;
    return pin;
}

bool GraphScene::addNodePin(GraphNodePin* pin)
{
    if (pin == nullptr) return false;
    bool const isNew = insertPinInMapById(pin->getId(), pin);
    if (pin->getParentGraphNodePtr() == nullptr) return true;
    ScopeExit unregister(
        [this, pin, isNew]
        {
            if (isNew) removePinFromMapById(pin->getId());
        });
    insertUnderFullName(*pin);
    unregister.dismiss();
    return true;
}

bool GraphScene::addNodePin(GraphNodeBase* node, GraphNodePin* pin)
{
    if (node == nullptr || pin == nullptr) return false;
    bool const wasRegistered = getPinPtrById(pin->getId()) == pin;
    KS_String const oldFullName = pin->getFullName();
    if (!addNodePin(pin)) return false;
    ScopeExit unregister(
        [this, node, pin, wasRegistered, &oldFullName]
        {
            if (wasRegistered) return;
            unregisterId(*pin);
            if (getPinPtrByFullName(oldFullName) == pin) removePinFromMapByFullName(oldFullName);
            node->removeNodePin(pin);
        });
    bool const added = node->addNodePin(pin);
    unregister.dismiss();
    if (!added) return false;
    isDirty_ = true;
    return true;
}

// Undoes a registration; a key that another pin holds stays.
void GraphScene::unregisterId(GraphNodePin const& pin)
{
    if (getPinPtrById(pin.getId()) == &pin) removePinFromMapById(pin.getId());
}

bool GraphScene::addNodePins(GraphNodeBase* node, ArrayOfPtr<GraphNodePin, KS_NO> const& pins)
{
    ArrayOfPtr<GraphNodePin, KS_NO> const added(pins); // the list may be the node's own
    bool result = true;
    for (GraphNodePin* const pin : added) result = addNodePin(node, pin);
    isDirty_ = true;
    return result;
}

bool GraphScene::removeNodePin(GraphNodePin* pin)
{
    if (pin == nullptr) return false;
    FullNameText const fullName(*pin);
    removePinFromMapById(pin->getId());
    eraseFullName(fullName.hashed());
    return true;
}

void GraphScene::removeNodePins(GraphNodeBase* node)
{
    if (node == nullptr) return;
    ArrayOfPtr<GraphNodePin, KS_NO> const pins(node->getNodePins());
    for (GraphNodePin* const pin : pins)
        // A pin may have gone with the one before it: as its partner, or because the list held it twice.
        if (node->getNodePins().contains(pin)) removeNodePinFromSceneAndNode(pin);
}

void GraphScene::removeNodePinFromSceneAndNode(GraphNodePin* pin)
{
    if (pin == nullptr) return;
    if (pin->isCompoundPin())
    {
        removeNodePinFromSceneAndNode(pin->getChildGraphNodePinPtr());
        return;
    }
    removeConnectionsWithPin(pin);
    GraphNodePin* const parentPin = pin->isInterfacePin() ? pin->getParentGraphNodePinPtr() : nullptr;
    if (parentPin != nullptr && parentPin->getParentGraphNodePtr() != nullptr)
    {
        removeConnectionsWithPin(parentPin);
        endPin(parentPin);
    }
    endPin(pin);
}

// Unregisters the pin, takes it off its node and deletes it; its partner is left without one.
void GraphScene::endPin(GraphNodePin* pin)
{
    removeNodePin(pin);
    if (GraphNodeBase* const node = pin->getParentGraphNodePtr()) node->removeNodePin(pin);
    GraphNodePin* const child = pin->getChildGraphNodePinPtr();
    if (child != nullptr && child->getParentGraphNodePinPtr() == pin)
        child->setParentGraphNodePinPtr(nullptr);
    GraphNodePin* const parent = pin->getParentGraphNodePinPtr();
    if (parent != nullptr && parent->getChildGraphNodePinPtr() == pin)
        parent->setChildGraphNodePinPtr(nullptr);
    while (GraphNodePin* const former = pin->takeFormerParent())
        if (former->getChildGraphNodePinPtr() == pin) former->setChildGraphNodePinPtr(nullptr);
    delete pin;
}

// ---- Wiring ----

GraphConnection* GraphScene::createGraphConnection(GraphNodePin* source, GraphNodePin* target)
{
    return new GraphConnection(source, target);
}

GraphConnection* GraphScene::connect(GraphNodePin const* pin, GraphNodeBase const* node, bool const& implicit)
{
    return connectBase(pin, node, implicit, true);
}

GraphConnection* GraphScene::connect(GraphNodeBase const* node, GraphNodePin const* pin, bool const& implicit)
{
    return connectBase(pin, node, implicit, false);
}

GraphConnection* GraphScene::connect(GraphNodePin const* source, GraphNodePin const* target,
                                     bool const& implicit)
{
    if (source == nullptr || target == nullptr || !source->allowsConnectionTo(target)) return nullptr;
    if (isPinFull(source) || isPinFull(target)) return nullptr;
    GraphNodePin* const sourcePin = forWiring(source);
    GraphNodePin* const targetPin = forWiring(target);
    if (!allowDuplicatedConnections_ && hasConnectionsLikeThis(GraphConnection(sourcePin, targetPin)))
        return nullptr;

    std::unique_ptr<GraphConnection> connection(createGraphConnection(sourcePin, targetPin));
    if (!connection) return nullptr;
    connection->setImplicit(implicit);
    enter(connection.get(), sourcePin, targetPin);
    GraphConnection* const made = connection.release();

    if (addConnectionCallback_ != nullptr)
    {
        GraphNodeBase const* const sourceNode = sourcePin->getParentGraphNodePtr();
        addConnectionCallback_(this, sourceNode != nullptr ? sourceNode->getNodeOwner() : nullptr, made);
    }
    isDirty_ = true;
    return made;
}

GraphConnection* GraphScene::connect(GraphNodeBase const* source, GraphNodeBase const* target,
                                     bool const& implicit)
{
    if (source == nullptr || target == nullptr) return nullptr;
    ArrayOfPtr<GraphNodePin, KS_NO> sourcePins;
    ArrayOfPtr<GraphNodePin, KS_NO> targetPins;
    if (!getConnectablePins(source, target, sourcePins, targetPins, true)) return nullptr;
    if (sourcePins.isEmpty() || targetPins.isEmpty()) return nullptr;
    return connect(sourcePins[0], targetPins[0], implicit);
}

GraphConnection* GraphScene::connectBase(GraphNodePin const* pin, GraphNodeBase const* node,
                                         bool const& implicit, bool const& pinIsSource)
{
    if (pin == nullptr || node == nullptr) return nullptr;
    ArrayOfPtr<GraphNodePin, KS_NO> candidates;
    bool const found = pinIsSource ? getConnectablePins(pin, node, candidates, true)
                                   : getConnectablePins(node, pin, candidates, true);
    if (!found || candidates.isEmpty()) return nullptr;
    return pinIsSource ? connect(pin, candidates[0], implicit) : connect(candidates[0], pin, implicit);
}

// Into the array, the two pins and the counts; if one of them fails, into none.
void GraphScene::enter(GraphConnection* connection, GraphNodePin* source, GraphNodePin* target)
{
    graphConnections_.append(connection);
    connection->placeInScene_ = graphConnections_.size() - 1;
    ScopeExit leave(
        [this, connection, source, target]
        {
            target->removeInputConnection(connection);
            source->removeOutputConnection(connection);
            takeOutOfArray(connection);
        });
    if (registry_->arrayIndex) registry_->arrayIndex->added(graphConnections_, graphConnections_.size() - 1);
    source->addOutputConnection(connection);
    target->addInputConnection(connection);
    if (useAdjacencyMap_) addConnectionToAdjacencyMaps(connection);
    leave.dismiss();
}

// ---- Unwiring ----

bool GraphScene::removeConnectionsWithNode(GraphNodeBase const* node)
{
    if (node == nullptr) return false;
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    getConnectionsWithNode(node, connections, true, true, false, true);
    removeEach(connections);
    return true;
}

bool GraphScene::removeConnectionsWithNode(unsigned int const& id)
{
    return removeConnectionsWithNode(getNodePtrById(id));
}

void GraphScene::removeConnectionsWithPin(GraphNodePin const* pin)
{
    if (pin == nullptr) return;
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    getPinConnections(pin, connections);
    removeEach(connections);
}

void GraphScene::removeConnectionsBetweenNodes(GraphNodeBase const* a, GraphNodeBase const* b,
                                               bool const& bothDirections, bool const& includeImplicit)
{
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    getConnectionsBetweenNodes(a, b, bothDirections, includeImplicit, true, connections);
    removeEach(connections);
}

bool GraphScene::removeAllConnections()
{
    ArrayOfPtr<GraphConnection, KS_NO> connections(graphConnections_);
    removeEach(connections);
    isDirty_ = true;
    return true;
}

// Each connection once, however often it was gathered: a pin that is wired to itself gathers it twice.
void GraphScene::removeEach(ArrayOfPtr<GraphConnection, KS_NO>& connections)
{
    removeRepeats(connections);
    for (GraphConnection* const connection : connections) removeConnection(connection);
}

bool GraphScene::removeConnection(GraphConnection const* connection)
{
    if (connection == nullptr) return false;
    auto* const removed = const_cast<GraphConnection*>(connection); // the scene owns it
    if (removeConnectionCallback_ != nullptr)
    {
        GraphNodeBase const* const sourceNode = removed->getSourceNode();
        removeConnectionCallback_(this, sourceNode != nullptr ? sourceNode->getNodeOwner() : nullptr,
                                  removed);
    }
    takeOutOfArray(removed);
    removed->removeFromConnectedPins();
    if (useAdjacencyMap_)
    {
        try
        {
            removeConnectionFromAdjacencyMaps(removed);
        }
        catch (std::bad_alloc const&)
        {
            // Only a pair that was never counted needs memory here: its count then stays 0 instead of -1.
        }
    }
    delete removed;
    isDirty_ = true;
    return true;
}

void GraphScene::takeOutOfArray(GraphConnection* connection)
{
    unsigned int const position = positionInArray(connection);
    if (position == graphConnections_.npos) return;
    graphConnections_.removeFastAt(position);
    if (registry_->arrayIndex) registry_->arrayIndex->removed(graphConnections_, connection, position);
    if (registry_->connectionsKnowTheirPlaces && position < graphConnections_.size())
        graphConnections_[position]->placeInScene_ = position;
}

// The host may have moved the connection: then a search finds it, and the next removal makes a new index.
unsigned int GraphScene::positionInArray(GraphConnection const* connection)
{
    if (registry_->connectionsKnowTheirPlaces)
    {
        unsigned int const place = connection->placeInScene_;
        bool const isThere = place < graphConnections_.size() && graphConnections_[place] == connection;
        return isThere ? place : graphConnections_.npos;
    }
    prepareArrayIndex();
    if (registry_->arrayIndex)
    {
        unsigned int const noted = registry_->arrayIndex->find(graphConnections_, connection);
        if (noted < graphConnections_.size() && graphConnections_[noted] == connection) return noted;
    }
    unsigned int const found = graphConnections_.find(connection);
    if (found != graphConnections_.npos) registry_->arrayIndex.reset();
    return found;
}

void GraphScene::prepareArrayIndex()
{
    if (graphConnections_.size() < ConnectionIndex::longList / 2) registry_->arrayIndex.reset();
    if (registry_->arrayIndex || graphConnections_.size() < ConnectionIndex::longList) return;
    try
    {
        registry_->arrayIndex = std::make_unique<ConnectionIndex>(graphConnections_);
    }
    catch (std::bad_alloc const&)
    {
        // A removal never fails: without memory for the index, the array is searched.
    }
}

void GraphScene::setGraphConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections)
{
    registry_->connectionsKnowTheirPlaces = false;
    registry_->arrayIndex.reset();
    graphConnections_ = connections;
}

ArrayOfPtr<GraphConnection, KS_NO>& GraphScene::refGraphConnections()
{
    registry_->connectionsKnowTheirPlaces = false;
    return graphConnections_;
}

// ---- Adjacency counts ----

void GraphScene::addConnectionToAdjacencyMaps(GraphConnection const* connection)
{
    countInAdjacencyMap(connection, 1);
}

void GraphScene::removeConnectionFromAdjacencyMaps(GraphConnection const* connection)
{
    countInAdjacencyMap(connection, -1);
}

void GraphScene::countInAdjacencyMap(GraphConnection const* connection, int change)
{
    GraphNodeBase const* const source = connection != nullptr ? connection->getSourceNode() : nullptr;
    GraphNodeBase const* const target = connection != nullptr ? connection->getTargetNode() : nullptr;
    if (source == nullptr || target == nullptr) return;
    registry_->adjacency.change(source->getId(), target->getId(), change,
                                connection->isImplicit() ? 0 : change);
}

int GraphScene::countInAdjacencyMap(GraphNodeBase const* source, GraphNodeBase const* target,
                                    bool includeImplicit) const
{
    if (source == nullptr || target == nullptr) return 0;
    return registry_->adjacency.count(source->getId(), target->getId(), includeImplicit);
}

bool GraphScene::isConnectionInAdjacencyMap(GraphNodeBase const* a, GraphNodeBase const* b,
                                            bool const& includeImplicit, bool const& eitherDirection) const
{
    if (countInAdjacencyMap(a, b, includeImplicit) > 0) return true;
    return eitherDirection && isConnectionInAdjacencyMap(b, a, includeImplicit, false);
}

bool GraphScene::nodeHasConnectionsInAdjacencyMapAsSource(GraphNodeBase const* node,
                                                          bool const& includeImplicit,
                                                          bool const& ignoreSelf) const
{
    return node != nullptr && registry_->adjacency.isSource(node->getId(), includeImplicit, ignoreSelf);
}

bool GraphScene::nodeHasConnectionsInAdjacencyMapAsTarget(GraphNodeBase const* node,
                                                          bool const& includeImplicit,
                                                          bool const& ignoreSelf) const
{
    return node != nullptr && registry_->adjacency.isTarget(node->getId(), includeImplicit, ignoreSelf);
}

bool GraphScene::nodeHasConnectionsInAdjacencyMap(GraphNodeBase const* node, bool const& includeImplicit,
                                                  bool const& alsoAsTarget, bool const& ignoreSelf) const
{
    return nodeHasConnectionsInAdjacencyMapAsSource(node, includeImplicit, ignoreSelf) ||
           (alsoAsTarget && nodeHasConnectionsInAdjacencyMapAsTarget(node, includeImplicit, ignoreSelf));
}

int GraphScene::getNumberOfConnectionsInAdjacencyMap(GraphNodeBase const* a, GraphNodeBase const* b,
                                                     bool const& bothDirections,
                                                     bool const& includeImplicit) const
{
    int const back = bothDirections && isConnectionInAdjacencyMap(b, a, includeImplicit, false) ? 1 : 0;
    return countInAdjacencyMap(a, b, includeImplicit) + back;
}

} // namespace kestrel::graph
