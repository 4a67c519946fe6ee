#include "Model.h"

#include <algorithm>
#include <cstdio>

namespace kestrel::graph::test::model
{

namespace
{

template <class Value>
void removeAllOf(std::vector<Value>& list, Value value)
{
    list.erase(std::remove(list.begin(), list.end(), value), list.end());
}

// The last one moves into the gap.
void removeFast(Indices& list, Index value)
{
    for (Index& each : list)
    {
        if (each != value) continue;
        each = list.back();
        list.pop_back();
        return;
    }
}

void removeRepeats(Indices& list)
{
    Indices once;
    for (Index each : list)
        if (!contains(once, each)) once.push_back(each);
    list = once;
}

void append(Indices& list, Indices const& more)
{
    list.insert(list.end(), more.begin(), more.end());
}

char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lower(std::string text)
{
    for (char& letter : text) letter = lower(letter);
    return text;
}

bool equal(std::string const& a, std::string const& b, bool caseSensitive)
{
    return caseSensitive ? a == b : lower(a) == lower(b);
}

std::string padded(int number, std::size_t width)
{
    std::string digits = std::to_string(number);
    while (digits.size() < width) digits.insert(digits.begin(), '0');
    return digits;
}

// "<stem>1", "<stem>2", ... as wide as the digits at the end of the name were, until one is not taken.
template <class Taken>
std::string numbered(std::string const& name, Taken taken)
{
    std::size_t stem = name.size();
    while (stem > 0 && name[stem - 1] >= '0' && name[stem - 1] <= '9') --stem;
    for (int number = 1;; ++number)
    {
        std::string const candidate = name.substr(0, stem) + padded(number, name.size() - stem);
        if (!taken(candidate)) return candidate;
    }
}

template <class Key, class Value>
auto place(std::vector<std::pair<Key, Value>>& map, Key const& key)
{
    auto at = map.begin();
    while (at != map.end() && at->first < key) ++at;
    return at;
}

// False, and the map as it was, when the key is there.
template <class Key, class Value>
bool insert(std::vector<std::pair<Key, Value>>& map, Key const& key, Value const& value)
{
    auto const at = place(map, key);
    if (at != map.end() && at->first == key) return false;
    map.insert(at, {key, value});
    return true;
}

template <class Key, class Value>
bool erase(std::vector<std::pair<Key, Value>>& map, Key const& key)
{
    auto const at = place(map, key);
    if (at == map.end() || at->first != key) return false;
    map.erase(at);
    return true;
}

template <class Key, class Value>
Value const* lookUp(std::vector<std::pair<Key, Value>> const& map, Key const& key)
{
    for (auto const& entry : map)
        if (entry.first == key) return &entry.second;
    return nullptr;
}

} // namespace

template <class Made>
Reference Model::nextReference(Records<Made> const& made) const
{
    bool const isFirst = made.empty() || made.back().reference.operation != operation;
    return {operation, isFirst ? 0 : made.back().reference.count + 1};
}

void Model::begin(int newOperation)
{
    operation = newOperation;
    events.clear();
    abandonedPins.clear();
    changed = false;
    impossible = false;
    removals_ = 0;
}

bool Model::isSound() const
{
    for (Index const index : livingNodes)
    {
        Node const& node = nodes[index];
        if (node.owner != none && nodes[node.owner].gone) return false;
        for (Index child : node.children)
            if (nodes[child].gone) return false;
        for (Index pin : node.pins)
            if (pins[pin].gone) return false;
    }
    for (Index const index : livingPins)
    {
        Pin const& pin = pins[index];
        if (pin.node != none && nodes[pin.node].gone) return false;
        if (pin.child != none && pins[pin.child].gone) return false;
        if (pin.parent != none && pins[pin.parent].gone) return false;
    }
    for (Index const connection : livingConnections)
        if (pins[connections[connection].source].gone || pins[connections[connection].target].gone)
            return false;
    for (auto const& [id, node] : nodesById)
        if (nodes[node].gone) return false;
    return root == none || !nodes[root].gone;
}

bool Model::isForgotten(Index node) const
{
    if (node == root || nodes[node].owner != none || !nodes[node].children.empty()) return false;
    for (Index const each : livingNodes)
        if (nodes[each].owner == node || contains(nodes[each].children, node)) return false;
    for (auto const& [id, registered] : nodesById)
        if (registered == node) return false;
    return true;
}

void Model::emit(EventKind kind, Index owner, Index subject)
{
    events.push_back({kind, owner, subject});
    changed = true;
}

// --- nodes

Index Model::makeNode(unsigned int id, std::string const& name, bool ofHost)
{
    Node node;
    node.id = id;
    node.name = name;
    node.ofHost = ofHost;
    node.reference = nextReference(nodes);
    nodes.push_back(node);
    livingNodes.push_back(static_cast<Index>(nodes.size()) - 1);
    changed = true;
    return livingNodes.back();
}

void Model::deleteNode(Index node)
{
    if (nodes[node].ofHost) destroyPins(node);
    nodes[node].gone = true;
    removeAllOf(livingNodes, node);
    for (Index const pin : Indices(livingPins))
    {
        if (pins[pin].node != node) continue;
        abandonedPins.push_back(pin);
        deletePin(pin);
    }
    changed = true;
}

std::string Model::nodeName(Index node) const
{
    return profile.names && nodes[node].ofHost ? nodes[node].name + "~" : nodes[node].name;
}

std::string Model::fullName(Index node) const
{
    Index const owner = nodes[node].owner;
    std::string const name = owner == none ? nodeName(node) : fullName(owner) + "." + nodeName(node);
    return profile.fullNames && nodes[node].ofHost ? "/" + name : name;
}

bool Model::isCompound(Index node) const
{
    return nodes[node].compound || !nodes[node].children.empty();
}

bool Model::isInputInterface(Index node) const
{
    Node const& of = nodes[node];
    return of.interface_ && !of.pins.empty() && (pins[of.pins[0]].direction & output) != 0;
}

bool Model::isOutputInterface(Index node) const
{
    Node const& of = nodes[node];
    return of.interface_ && !of.pins.empty() && (pins[of.pins[0]].direction & input) != 0;
}

bool Model::isSameNode(Index a, Index b) const
{
    return nodes[a].id < noId && nodes[b].id < noId && nodes[a].id == nodes[b].id;
}

bool Model::isOwnedBy(Index node, Index owner, bool recursive) const
{
    if (nodes[node].owner == owner) return true;
    if (nodes[node].owner == none || !recursive) return false;
    return isOwnedBy(nodes[node].owner, owner, true);
}

void Model::setNodeName(Index node, std::string const& name)
{
    std::string const old = nodeName(node);
    if (nodes[node].name != name) changed = true;
    nodes[node].name = name;
    if (!nodes[node].hasScene || old == name) return;
    Index const owner = nodes[node].owner;
    rekeyPinsBelow(node, owner == none ? old : fullName(owner) + "." + old, fullName(node));
}

void Model::setNodeId(Index node, unsigned int id)
{
    unsigned int const old = nodes[node].id;
    nodes[node].id = id;
    if (old == id) return;
    changed = true;
    if (!nodes[node].hasScene || !erase(nodesById, old)) return;
    insert(nodesById, id, node);
    dirty = true;
}

bool Model::isAtOrBelow(Index node, Index top) const
{
    while (node != none && node != top) node = nodes[node].owner;
    return node != none;
}

void Model::takeFromOwner(Index node)
{
    if (nodes[node].owner != none) removeAllOf(nodes[nodes[node].owner].children, node);
}

void Model::addChild(Index node, Index child)
{
    if (child == none || isAtOrBelow(node, child)) return;
    std::string const old = fullName(child);
    takeFromOwner(child);
    nodes[child].owner = node;
    nodes[node].children.push_back(child);
    if (nodes[child].hasScene) rekeyPinsBelow(child, old, fullName(child));
    changed = true;
}

void Model::removeChild(Index node, Index child)
{
    removeAllOf(nodes[node].children, child);
    nodes[child].owner = none;
    changed = true;
}

void Model::setNodeOwner(Index node, Index owner)
{
    if (nodes[node].owner == owner) return;
    if (owner == none) return removeChild(nodes[node].owner, node);
    if (isAtOrBelow(owner, node)) return;
    Indices const children = nodes[node].children;
    std::vector<std::string> old;
    for (Index child : children) old.push_back(fullName(child));
    addChild(owner, node);
    for (std::size_t i = 0; i < children.size(); ++i)
        if (nodes[children[i]].hasScene) rekeyPinsBelow(children[i], old[i], fullName(children[i]));
}

Index Model::nodeByName(Index node, std::string const& name, bool caseSensitive) const
{
    for (Index child : nodes[node].children)
        if (equal(nodeName(child), name, caseSensitive)) return child;
    return none;
}

void Model::nodesBelow(Index node, Indices& out) const
{
    append(out, nodes[node].children);
    for (Index child : nodes[node].children)
        if (isCompound(child)) nodesBelow(child, out);
}

void Model::pinsBelow(Index node, bool includeOwn, Indices& out) const
{
    if (includeOwn) append(out, nodes[node].pins);
    for (Index child : nodes[node].children) pinsBelow(child, true, out);
}

Indices Model::pinsOf(Index node, unsigned int direction) const
{
    Indices found;
    for (Index pin : nodes[node].pins)
        if ((pins[pin].direction & direction) != 0) found.push_back(pin);
    return found;
}

Index Model::pinByName(Index node, std::string const& name) const
{
    for (Index pin : nodes[node].pins)
        if (pinName(pin) == name) return pin;
    return none;
}

bool Model::hasPinWithName(Index node, std::string const& name, bool alsoOwner) const
{
    if (pinByName(node, name) != none) return true;
    return alsoOwner && nodes[node].owner != none && pinByName(nodes[node].owner, name) != none;
}

std::string Model::freeNodeNameLikeThis(Index node, std::string const& name, Index otherParent) const
{
    if (nodeByName(node, name, false) == none) return name;
    return numbered(name,
                    [&](std::string const& candidate)
                    {
                        return nodeByName(node, candidate, false) != none ||
                               (otherParent != none && nodeByName(otherParent, candidate, false) != none);
                    });
}

std::string Model::freePinNameLikeThis(Index node, std::string const& name) const
{
    bool const alsoOwner = nodes[node].interface_;
    if (!hasPinWithName(node, name, alsoOwner)) return name;
    return numbered(name,
                    [&](std::string const& candidate) { return hasPinWithName(node, candidate, alsoOwner); });
}

bool Model::addPinToNode(Index node, Index pin)
{
    if (pin == none || contains(nodes[node].pins, pin)) return false;
    nodes[node].pins.push_back(pin);
    pins[pin].node = node;
    if (nodes[node].owner != none) emit(EventKind::addNodePin, nodes[node].owner, pin);
    changed = true;
    return true;
}

bool Model::removePinFromNode(Index node, Index pin)
{
    if (pin == none || !contains(nodes[node].pins, pin)) return false;
    removeAllOf(nodes[node].pins, pin);
    emit(EventKind::removeNodePin, nodes[node].owner, pin);
    pins[pin].node = none;
    return true;
}

void Model::destroyPins(Index node)
{
    for (Index const pin : Indices(nodes[node].pins))
        if (removePinFromNode(node, pin)) deletePin(pin);
}

Index Model::addDynamicPin(Index node, unsigned int direction)
{
    return nodes[node].hasScene ? createPinOf(node, 1, direction) : none;
}

void Model::reorderPins(Index node, bool inputSide, std::vector<std::string> const& names)
{
    Indices const inputs = pinsOf(node, input);
    Indices const outputs = pinsOf(node, output);
    Indices const& side = inputSide ? inputs : outputs;
    Indices ordered;
    std::vector<bool> marks(std::max(side.size(), names.size()));
    for (std::size_t k = 0; k < names.size(); ++k)
    {
        auto const found =
            std::find_if(side.begin(), side.end(), [&](Index pin) { return pinName(pin) == names[k]; });
        if (found == side.end()) continue;
        ordered.push_back(*found);
        marks[k] = true;
    }
    for (std::size_t i = 0; i < side.size(); ++i)
        if (!marks[i]) ordered.push_back(side[i]);
    Indices list = inputSide ? ordered : inputs;
    append(list, inputSide ? outputs : ordered);
    if (nodes[node].pins != list) changed = true;
    nodes[node].pins = list;
}

bool Model::allowsFromPin(Index node, Index pin) const
{
    if (pin == none || (pins[pin].direction & output) == 0) return false;
    return std::any_of(nodes[node].pins.begin(), nodes[node].pins.end(),
                       [&](Index own) { return allowsFrom(own, pin); });
}

bool Model::allowsToPin(Index node, Index pin) const
{
    if (pin == none || (pins[pin].direction & input) == 0) return false;
    return std::any_of(nodes[node].pins.begin(), nodes[node].pins.end(),
                       [&](Index own) { return allowsFrom(own, pin); });
}

bool Model::allowedPinsFromPin(Index node, Index pin, Indices& out) const
{
    bool any = false;
    for (Index own : nodes[node].pins)
    {
        if (!allowsTo(pin, own)) continue;
        out.push_back(own);
        any = true;
    }
    return any;
}

bool Model::allowedPinsToPin(Index node, Index pin, Indices& out) const
{
    bool any = false;
    for (Index own : nodes[node].pins)
    {
        if (!allowsFrom(pin, own)) continue;
        out.push_back(own);
        any = true;
    }
    return any;
}

bool Model::allowsFromNode(Index node, Index other, Indices& out) const
{
    bool any = false;
    for (Index own : nodes[node].pins)
        for (Index pin : nodes[other].pins)
        {
            if (!allowsTo(pin, own)) continue;
            out.push_back(own);
            any = true;
        }
    return any;
}

bool Model::allowsToNode(Index node, Index other, Indices& out) const
{
    bool any = false;
    for (Index own : nodes[node].pins)
        for (Index pin : nodes[other].pins)
        {
            if (!allowsFrom(pin, own)) continue;
            out.push_back(own);
            any = true;
        }
    return any;
}

void Model::connectionsOf(Index node, Indices& out, bool outputs, bool inputs, bool includeImplicit,
                          bool unique) const
{
    Indices found;
    if (inputs)
        for (Index pin : pinsOf(node, input)) append(found, pins[pin].inputs);
    if (outputs)
        for (Index pin : pinsOf(node, output)) append(found, pins[pin].outputs);
    for (Index connection : found)
        if (includeImplicit || !connections[connection].implicit) out.push_back(connection);
    if (unique) removeRepeats(out);
}

void Model::connectionsToNode(Index node, Index other, Indices& out, bool bothDirections,
                              bool includeImplicit, bool unique) const
{
    for (Index pin : pinsOf(node, output))
        append(out, connectionsWithNode(pin, other, false, true, includeImplicit));
    if (bothDirections) connectionsToNode(other, node, out, false, includeImplicit, false);
    if (unique) removeRepeats(out);
}

Indices Model::pinsByConnected(Index node, unsigned int direction, bool connected) const
{
    Indices found;
    for (Index pin : pinsOf(node, direction))
        if ((!pins[pin].inputs.empty() || !pins[pin].outputs.empty()) == connected) found.push_back(pin);
    return found;
}

// --- pins

Index Model::makePin(unsigned int capacity, unsigned int direction, unsigned int id, bool ofHost)
{
    Pin pin;
    pin.capacity = capacity;
    pin.direction = direction;
    pin.id = id;
    pin.ofHost = ofHost;
    pin.reference = nextReference(pins);
    pins.push_back(pin);
    livingPins.push_back(static_cast<Index>(pins.size()) - 1);
    changed = true;
    return livingPins.back();
}

void Model::deletePin(Index pin)
{
    if (pins[pin].gone) impossible = true; // it was in the lists of two nodes
    pins[pin].gone = true;
    removeAllOf(livingPins, pin);
    // An interface pin that was paired twice has two compound pins with a link to it, but one to only the
    // second.
    for (Index const other : livingPins)
        if (pins[other].child == pin && pins[pin].parent != other) pins[other].child = none;
    changed = true;
}

std::string Model::pinName(Index pin) const
{
    return profile.names && pins[pin].ofHost ? pins[pin].name + "~" : pins[pin].name;
}

std::string Model::pinFullName(Index pin) const
{
    Index const node = pins[pin].node;
    return node == none ? pinName(pin) : fullName(node) + "." + pinName(pin);
}

bool Model::isCompoundPin(Index pin) const
{
    return pins[pin].node != none && isCompound(pins[pin].node);
}

bool Model::isInterfacePin(Index pin) const
{
    return pins[pin].node != none && nodes[pins[pin].node].interface_;
}

bool Model::isFull(Index pin) const
{
    Pin const& of = pins[pin];
    bool const countsImplicitOnes = !profile.rules || !of.ofHost;
    return connectionsOfPin(pin, input | output, countsImplicitOnes).size() >= of.capacity;
}

bool Model::allowsFrom(Index pin, Index other) const
{
    if (other == none) return false;
    if ((pins[pin].direction & input) == 0 || (pins[other].direction & output) == 0) return false;
    return !(profile.rules && pins[pin].ofHost) || (pinName(pin).size() + pinName(other).size()) % 4 != 1;
}

bool Model::allowsTo(Index pin, Index other) const
{
    if (other == none || !allowsFrom(other, pin)) return false;
    return !(profile.rules && pins[pin].ofHost) || pins[pin].node != pins[other].node ||
           pins[pin].node == none;
}

bool Model::allowsInternalConnections(Index pin) const
{
    if ((pins[pin].direction & input) == 0 || pins[pin].node == none) return false;
    Indices const inputs = pinsOf(pins[pin].node, input);
    return !inputs.empty() && inputs.front() == pin;
}

void Model::setPinName(Index pin, std::string const& name)
{
    std::string const old = pinFullName(pin);
    if (pins[pin].name != name) changed = true;
    pins[pin].name = name;
    if (isInterfacePin(pin) && pins[pin].parent != none) setPinName(pins[pin].parent, name);
    std::string const now = pinFullName(pin);
    if (now != old && pins[pin].node != none && nodes[pins[pin].node].hasScene) rekeyPin(old, now);
}

Indices Model::connectionsOfPin(Index pin, unsigned int direction, bool includeImplicit) const
{
    Indices found;
    // Without the implicit ones, the direction is not looked at.
    if (!includeImplicit || (direction & input) != 0) append(found, pins[pin].inputs);
    if (!includeImplicit || (direction & output) != 0) append(found, pins[pin].outputs);
    if (!includeImplicit) std::erase_if(found, [&](Index each) { return connections[each].implicit; });
    return found;
}

Indices Model::connectionsWithPin(Index pin, Index other, bool inputs, bool outputs,
                                  bool includeImplicit) const
{
    Indices found;
    for (Index each : inputs ? pins[pin].inputs : Indices())
        if ((includeImplicit || !connections[each].implicit) && connections[each].source == other)
            found.push_back(each);
    for (Index each : outputs ? pins[pin].outputs : Indices())
        if ((includeImplicit || !connections[each].implicit) && connections[each].target == other)
            found.push_back(each);
    return found;
}

Indices Model::connectionsWithNode(Index pin, Index node, bool inputs, bool outputs,
                                   bool includeImplicit) const
{
    Indices found;
    for (Index each : inputs ? pins[pin].inputs : Indices())
        if ((includeImplicit || !connections[each].implicit) && sourceNode(each) == node)
            found.push_back(each);
    for (Index each : outputs ? pins[pin].outputs : Indices())
        if ((includeImplicit || !connections[each].implicit) && targetNode(each) == node)
            found.push_back(each);
    return found;
}

// --- connections

Index Model::sourceNode(Index connection) const
{
    return pins[connections[connection].source].node;
}

Index Model::targetNode(Index connection) const
{
    return pins[connections[connection].target].node;
}

bool Model::isConnected(Index source, Index target) const
{
    return source != none && target != none && (pins[source].direction & output) != 0 &&
           (pins[target].direction & input) != 0;
}

bool Model::isConnected(Index connection) const
{
    return isConnected(connections[connection].source, connections[connection].target);
}

bool Model::linksNodes(Index connection, Index from, Index to, bool recursive, bool bothWays) const
{
    if (!isConnected(connection)) return false;
    Index const source = sourceNode(connection);
    Index const target = targetNode(connection);
    if (source == none || target == none) return false;
    if (isSameNode(source, from) && isSameNode(target, to)) return true;
    if (recursive &&
        (recursiveSearch(connection, from, to, false) || recursiveSearch(connection, to, from, true)))
        return true;
    return bothWays && linksNodes(connection, to, from, recursive, false);
}

bool Model::recursiveSearch(Index connection, Index node, Index other, bool childIsSource) const
{
    if (!isCompound(node)) return false;
    for (Index child : nodes[node].children)
        if (childIsSource ? linksNodes(connection, child, other, true, false)
                          : linksNodes(connection, other, child, true, false))
            return true;
    return false;
}

std::string Model::connectionName(Index connection) const
{
    Index const source = sourceNode(connection);
    Index const target = targetNode(connection);
    if (!isConnected(connection) || source == none || target == none) return "";
    return fullName(source) + "." + pinName(connections[connection].source) + " > " + fullName(target) + "." +
           pinName(connections[connection].target);
}

// --- registry

Index Model::nodeById(unsigned int id) const
{
    Index const* const found = id == noId ? nullptr : lookUp(nodesById, id);
    return found != nullptr ? *found : none;
}

Index Model::nodeByFullName(std::string const& name) const
{
    if (root != none && fullName(root) == name) return root;
    for (auto const& [id, node] : nodesById)
        if (fullName(node) == name) return node;
    return none;
}

Index Model::pinById(unsigned int id) const
{
    Index const* const found = lookUp(pinsById, id);
    return found != nullptr ? *found : none;
}

Index Model::pinByFullName(std::string const& name) const
{
    Index const* const found = lookUp(pinsByFullName, name);
    return found != nullptr ? *found : none;
}

Index Model::pinByFullNameInAnyCase(std::string const& name) const
{
    for (auto const& [key, pin] : pinsByFullName)
        if (equal(key, name, false)) return pin;
    return none;
}

bool Model::addNodeToGraph(Index node)
{
    if (node == none) return false;
    dirty = insert(nodesById, nodes[node].id, node);
    if (!dirty) return false;
    if (nodes[node].ofHost) emit(EventKind::onAddingToScene, none, node);
    nodes[node].hasScene = true;
    if (nodes[node].owner == none) setNodeOwner(node, root);
    emit(EventKind::addNode, nodes[node].owner, node);
    dirty = true;
    return true;
}

bool Model::removeNodeFromGraph(Index node)
{
    return node != none && removeNodeById(nodes[node].id);
}

bool Model::removeNodeById(unsigned int id)
{
    Index const node = nodeById(id);
    if (node == none) return false;
    // A child that is not registered may have the id of the compound around it.
    if (++removals_ > 100) impossible = true;
    if (impossible) return false;
    removeConnectionsOfNode(node);
    removeNodesInCompound(node);
    if (nodes[node].interface_) removeNodePins(node);
    emit(EventKind::removeNode, nodes[node].owner, node);
    if (nodes[node].ofHost) emit(EventKind::onRemovingFromScene, none, node);
    setNodeOwner(node, none);
    erase(nodesById, id);
    dirty = true;
    --removals_;
    return true;
}

void Model::removeNodesInCompound(Index compound)
{
    if (compound == none) return;
    for (Index const child : Indices(nodes[compound].children)) removeNodeFromGraph(child);
    nodes[compound].children.clear();
}

void Model::removeAllNodes()
{
    Indices all;
    if (root != none) all.push_back(root);
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        Indices const& children = nodes[all[i]].children;
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(i) + 1, children.begin(), children.end());
    }
    while (!all.empty())
    {
        Index const node = all.back();
        all.pop_back();
        if (node == root && keepRoot) continue;
        if (isCompound(node))
        {
            nodes[node].children.clear();
            emit(EventKind::removeNode, nodes[node].owner, node);
        }
        deleteNode(node);
    }
    nodesById.clear();
    if (keepRoot && root != none)
        nodes[root].children.clear();
    else
        root = none;
    dirty = true;
    changed = true;
}

void Model::clear()
{
    removeAllConnections();
    removeAllNodes();
    adjacency.clear();
    lastFreeNodeId = 1;
}

bool Model::insertPinName(std::string const& name, Index pin)
{
    bool const added = insert(pinsByFullName, name, pin);
    if (added) changed = true;
    return added;
}

void Model::erasePinName(std::string const& name)
{
    if (erase(pinsByFullName, name)) changed = true;
}

void Model::rekeyPin(std::string const& oldName, std::string const& newName)
{
    Index const* const found = lookUp(pinsByFullName, oldName);
    if (found == nullptr) return;
    Index const pin = *found;
    erasePinName(oldName);
    insertPinName(newName, pin);
    dirty = true;
}

void Model::rekeyPinsBelow(Index node, std::string const& oldName, std::string const& newName)
{
    Indices below;
    pinsBelow(node, true, below);
    for (Index pin : below)
    {
        std::string const name = pinFullName(pin);
        rekeyPin(oldName + name.substr(std::min(name.size(), newName.size())), name);
    }
}

bool Model::addPin(Index pin)
{
    if (pin == none) return false;
    dirty = insert(pinsById, pins[pin].id, pin);
    if (dirty) changed = true;
    if (pins[pin].node != none) dirty = insertPinName(pinFullName(pin), pin);
    return true;
}

bool Model::addPinToNodeAndScene(Index node, Index pin)
{
    if (node == none || pin == none || !addPin(pin) || !addPinToNode(node, pin)) return false;
    dirty = true;
    return true;
}

bool Model::unregisterPin(Index pin)
{
    if (pin == none) return false;
    if (erase(pinsById, pins[pin].id)) changed = true;
    erasePinName(pinFullName(pin));
    dirty = true;
    return true;
}

void Model::endPin(Index pin)
{
    unregisterPin(pin);
    if (pins[pin].node != none) removePinFromNode(pins[pin].node, pin);
    leavePartners(pin);
    deletePin(pin);
}

void Model::leavePartners(Index pin)
{
    Index const child = pins[pin].child;
    if (child != none && pins[child].parent == pin) pins[child].parent = none;
    Index const parent = pins[pin].parent;
    if (parent != none && pins[parent].child == pin) pins[parent].child = none;
}

void Model::removePinEverywhere(Index pin)
{
    if (pin == none) return;
    if (isCompoundPin(pin)) return removePinEverywhere(pins[pin].child);
    removeConnectionsWithPin(pin);
    Index const parent = pins[pin].parent;
    if (isInterfacePin(pin) && parent != none && pins[parent].node != none)
    {
        removeConnectionsWithPin(parent);
        endPin(parent);
    }
    endPin(pin);
}

void Model::removeNodePins(Index node)
{
    if (node == none) return;
    for (Index const pin : Indices(nodes[node].pins))
        if (!pins[pin].gone) removePinEverywhere(pin);
}

Index Model::createPin(unsigned int capacity, unsigned int direction)
{
    Index const pin = makePin(capacity, direction, nextPinId++, profile.pins);
    addPin(pin);
    dirty = true;
    return pin;
}

Index Model::createPinOf(Index node, unsigned int capacity, unsigned int direction)
{
    if (node == none) return none;
    Index const pin = createPin(capacity, direction);
    addPinToNode(node, pin);
    insertPinName(pinFullName(pin), pin);
    dirty = true;
    return pin;
}

void Model::compoundsBelow(Index node, Indices& out) const
{
    if (node == none || !isCompound(node)) return;
    out.push_back(node);
    for (Index child : nodes[node].children) compoundsBelow(child, out);
}

// --- wiring

Index Model::connect(Index source, Index target, bool implicit)
{
    if (source == none || target == none) return none;
    if (!allowsTo(source, target) || isFull(source) || isFull(target)) return none;
    if (!allowDuplicates && hasConnectionsLike(source, target)) return none;
    if (profile.factories && pinName(source) == "value") return none;
    Index const made = makeStray(source, target);
    connections[made].implicit = implicit;
    array.push_back(made);
    if (useAdjacency) countAdjacency(made, 1);
    Index const node = pins[source].node;
    emit(EventKind::addConnection, node == none ? none : nodes[node].owner, made);
    dirty = true;
    return made;
}

Index Model::makeStray(Index source, Index target)
{
    Connection connection;
    connection.source = source;
    connection.target = target;
    connection.reference = nextReference(connections);
    Index const made = static_cast<Index>(connections.size());
    connections.push_back(connection);
    livingConnections.push_back(made);
    pins[source].outputs.push_back(made);
    pins[target].inputs.push_back(made);
    changed = true;
    return made;
}

Index Model::connectPinAndNode(Index pin, Index node, bool implicit, bool pinIsSource)
{
    Indices candidates;
    if (pin == none || node == none || !connectablePins(pin, node, pinIsSource, true, candidates))
        return none;
    return pinIsSource ? connect(pin, candidates[0], implicit) : connect(candidates[0], pin, implicit);
}

Index Model::connectNodes(Index source, Index target, bool implicit)
{
    Indices sources;
    Indices targets;
    if (source == none || target == none || !connectablePinsOfNodes(source, target, true, sources, targets))
        return none;
    return connect(sources[0], targets[0], implicit);
}

bool Model::removeConnection(Index connection)
{
    if (connection == none) return false;
    Connection& removed = connections[connection];
    Index const node = sourceNode(connection);
    emit(EventKind::removeConnection, node == none ? none : nodes[node].owner, connection);
    removeFast(array, connection);
    removeFast(pins[removed.source].outputs, connection);
    removeFast(pins[removed.target].inputs, connection);
    if (useAdjacency) countAdjacency(connection, -1);
    removed.gone = true;
    removeAllOf(livingConnections, connection);
    dirty = true;
    return true;
}

// A connection is removed once, however often it was gathered.
void Model::removeEach(Indices const& list)
{
    for (Index connection : list)
        if (!connections[connection].gone) removeConnection(connection);
}

void Model::removeAllConnections()
{
    removeEach(Indices(array));
    dirty = true;
}

void Model::removeConnectionsWithPin(Index pin)
{
    if (pin != none) removeEach(connectionsOfPin(pin, input | output, true));
}

bool Model::removeConnectionsOfNode(Index node)
{
    if (node == none) return false;
    Indices list;
    connectionsOf(node, list, true, true, false, true);
    removeEach(list);
    return true;
}

void Model::removeConnectionsBetween(Index a, Index b, bool bothDirections, bool includeImplicit)
{
    if (a == none || b == none) return;
    Indices list;
    connectionsToNode(a, b, list, bothDirections, includeImplicit, true);
    removeEach(list);
}

bool Model::hasConnectionsLike(Index source, Index target) const
{
    if (!isConnected(source, target)) return false;
    for (Index each : pins[source].inputs)
        if (connections[each].source == target) return true;
    return false;
}

bool Model::isConnectionAllowed(Index source, Index target) const
{
    return source != none && target != none && allowsTo(source, target) && !isFull(source) && !isFull(target);
}

bool Model::connectablePins(Index pin, Index node, bool pinIsSource, bool excludeFull, Indices& out) const
{
    if (pin == none || node == none) return false;
    bool const allowed = pinIsSource ? allowedPinsFromPin(node, pin, out) : allowedPinsToPin(node, pin, out);
    if (!excludeFull) return allowed;
    std::erase_if(out, [&](Index each) { return isFull(each); });
    return !out.empty();
}

bool Model::connectablePinsOfNodes(Index source, Index target, bool excludeFull, Indices& sourcePins,
                                   Indices& targetPins) const
{
    if (source == none || target == none) return false;
    bool const allowed =
        allowsToNode(source, target, sourcePins) && allowsFromNode(target, source, targetPins);
    if (!excludeFull) return allowed;
    std::erase_if(sourcePins, [&](Index each) { return isFull(each); });
    std::erase_if(targetPins, [&](Index each) { return isFull(each); });
    return !sourcePins.empty() && !targetPins.empty();
}

void Model::countAdjacency(Index connection, int change)
{
    Index const source = sourceNode(connection);
    Index const target = targetNode(connection);
    if (source == none || target == none) return;
    std::pair const ids(nodes[source].id, nodes[target].id);
    auto at = adjacency.begin();
    while (at != adjacency.end() && std::pair(at->source, at->target) < ids) ++at;
    if (at == adjacency.end() || std::pair(at->source, at->target) != ids)
        at = adjacency.insert(at, {ids.first, ids.second, 0, 0});
    at->all += change;
    if (!connections[connection].implicit) at->notImplicit += change;
}

// --- queries

int Model::count(Index a, Index b, bool includeImplicit) const
{
    for (Adjacency const& each : adjacency)
        if (each.source == nodes[a].id && each.target == nodes[b].id)
            return includeImplicit ? each.all : each.notImplicit;
    return 0;
}

bool Model::areNodesConnected(Index a, Index b, bool eitherDirection, bool includeImplicit) const
{
    if (a == none || b == none) return false;
    if (useAdjacency)
        return count(a, b, includeImplicit) > 0 || (eitherDirection && count(b, a, includeImplicit) > 0);
    for (Index each : array)
        if ((includeImplicit || !connections[each].implicit) && sourceNode(each) == a &&
            targetNode(each) == b)
            return true;
    return eitherDirection && areNodesConnected(b, a, false, includeImplicit);
}

bool Model::hasAdjacentTarget(unsigned int id, bool ignoreSelf) const
{
    return std::any_of(adjacency.begin(), adjacency.end(),
                       [&](Adjacency const& each)
                       { return each.source == id && each.all > 0 && !(ignoreSelf && each.target == id); });
}

bool Model::hasAdjacentSource(unsigned int id, bool ignoreSelf) const
{
    return std::any_of(adjacency.begin(), adjacency.end(),
                       [&](Adjacency const& each)
                       { return each.target == id && each.all > 0 && !(ignoreSelf && each.source == id); });
}

bool Model::hasAnyConnection(Index node, unsigned int direction, bool ignoreLoops) const
{
    if (useAdjacency)
        return (direction & output) != 0 && (hasAdjacentTarget(nodes[node].id, ignoreLoops) ||
                                             hasAdjacentSource(nodes[node].id, ignoreLoops));
    for (Index each : array)
    {
        Index const source = sourceNode(each);
        Index const target = targetNode(each);
        if (ignoreLoops && isConnected(each) && source == target) continue;
        if (((direction & output) != 0 && source == node) || ((direction & input) != 0 && target == node))
            return true;
    }
    return false;
}

Indices Model::connectionsInvolving(Indices const& listed, bool skipInterfaces, bool includeImplicit,
                                    bool unique) const
{
    Indices found;
    for (Index node : listed)
        if (node != none && !(skipInterfaces && nodes[node].interface_))
            connectionsOf(node, found, true, true, includeImplicit, false);
    if (unique) removeRepeats(found);
    return found;
}

Indices Model::connectionsInvolvingOnly(Indices const& listed, bool skipInterfaces,
                                        bool includeImplicit) const
{
    Indices found = connectionsInvolving(listed, skipInterfaces, includeImplicit, true);
    auto const isListed = [&](Index node) { return node != none && contains(listed, node); };
    std::erase_if(found,
                  [&](Index each) { return !isListed(sourceNode(each)) || !isListed(targetNode(each)); });
    return found;
}

bool Model::nodesConnectedWith(Index node, Indices& out, bool addTargets, bool addSources, bool skipSameNode,
                               bool unique, bool includeImplicit) const
{
    Indices list;
    if (node != none) connectionsOf(node, list, addTargets, addSources, includeImplicit, unique);
    for (Index each : list)
    {
        Index const source = sourceNode(each);
        Index const target = targetNode(each);
        if (skipSameNode && isConnected(each) && source == target) continue;
        if (addTargets && target != none && !contains(out, target)) out.push_back(target);
        if (addSources && source != none && !contains(out, source)) out.push_back(source);
    }
    return !list.empty();
}

Partners Model::connectionsByPin(Index node) const
{
    Partners found;
    for (Index pin : nodes[node].pins)
        if (lookUp(found, pin) == nullptr)
            found.push_back({pin, connectionsOfPin(pin, input | output, true)});
    return found;
}

Partners Model::partnersByPin(Index node) const
{
    Partners found = connectionsByPin(node);
    for (auto& [pin, list] : found)
        for (Index& each : list)
        {
            bool const isSource = connections[each].source == pin && isConnected(each);
            each = isSource ? connections[each].target : connections[each].source;
        }
    return found;
}

// --- compounds

unsigned int Model::freeNodeId()
{
    if (profile.ids) return lastHostNodeId += 3;
    while (nodeById(lastFreeNodeId) != none) ++lastFreeNodeId;
    return lastFreeNodeId;
}

std::string Model::freeNodeName(std::string const& ownerFullName, std::string const& base) const
{
    int number = 1;
    while (nodeByFullName(ownerFullName + "." + base + padded(number, 2)) != none) ++number;
    return base + padded(number, 2);
}

std::string Model::freeInterfaceNodeName(std::string const& ownerFullName, unsigned int direction) const
{
    return freeNodeName(ownerFullName, (direction & input) != 0 ? "input interface" : "output interface");
}

std::string Model::freePinName(std::string const& nodeFullName, std::string const& base) const
{
    std::string name = base;
    for (int number = 1; pinByFullName(nodeFullName + "." + name) != none; ++number)
        name = base + padded(number, 2);
    return name;
}

Index Model::createNode(bool compound, bool interface_)
{
    Index const node = makeNode(freeNodeId(), "", profile.factories && (compound || interface_));
    nodes[node].compound = compound;
    nodes[node].interface_ = interface_;
    return node;
}

Index Model::createCompoundPin(Index interfacePin)
{
    if (interfacePin == none || pins[interfacePin].node == none) return none;
    Index const compound = nodes[pins[interfacePin].node].owner;
    if (compound == none) return none;
    unsigned int const direction = (pins[interfacePin].direction & input) != 0 ? output : input;
    Index const pin = createPinOf(compound, noLimit, direction);
    pins[pin].child = interfacePin;
    pins[interfacePin].parent = pin;
    return pin;
}

bool Model::addInterfacePin(unsigned int direction, Index interfaceNode, Index& compoundPin,
                            Index& interfacePin)
{
    compoundPin = none;
    interfacePin = none;
    if (interfaceNode == none || nodes[interfaceNode].owner == none) return false;
    interfacePin = createPinOf(interfaceNode, noLimit, direction == input ? output : input);
    compoundPin = createCompoundPin(interfacePin);
    setPinName(interfacePin,
               freePinName(fullName(pins[compoundPin].node), direction == input ? "input" : "output"));
    return true;
}

bool Model::addInterfaceNode(unsigned int direction, Index compound, Index& interfaceNode, Index& compoundPin,
                             Index& interfacePin)
{
    interfaceNode = none;
    compoundPin = none;
    interfacePin = none;
    if (compound == none) return false;
    interfaceNode = createNode(false, true);
    setNodeName(interfaceNode, freeInterfaceNodeName(fullName(compound), direction));
    addNodeToGraph(interfaceNode);
    setNodeOwner(interfaceNode, compound);
    return addInterfacePin(direction, interfaceNode, compoundPin, interfacePin);
}

void Model::reparent(Indices const& listed, Index newOwner, MoveLists& lists)
{
    for (Index node : listed)
    {
        if (node == none || nodes[node].interface_) continue;
        Indices const own = nodes[node].pins;
        std::vector<std::string> old;
        for (Index pin : own) old.push_back(pinFullName(pin));
        if (newOwner != none && nodeByName(newOwner, nodeName(node), false) != none)
            setNodeName(node, freeNodeNameLikeThis(newOwner, nodeName(node), nodes[node].owner));
        setNodeOwner(node, newOwner);
        for (std::size_t i = 0; i < own.size(); ++i) insert(lists.pinRenames, pinFullName(own[i]), old[i]);
    }
}

void Model::crossBoundary(Index connection, Indices const& listed, Index compound, bool listIsInside,
                          MoveLists& lists, Indices& outerOnes)
{
    Index const sourcePin = connections[connection].source;
    Index const targetPin = connections[connection].target;
    bool const sourceListed = contains(listed, pins[sourcePin].node);
    bool const targetListed = contains(listed, pins[targetPin].node);
    if (sourceListed == targetListed) return;
    lists.removed.push_back({sourcePin, targetPin});
    removeConnection(connection);

    bool const sourceIsInside = sourceListed == listIsInside;
    unsigned int const direction = sourceIsInside ? output : input;
    Index const listedPin = sourceListed ? sourcePin : targetPin;
    Index const key = pins[listedPin].node;
    InterfaceOfNode& interfaces = sourceIsInside ? lists.outputInterfaces : lists.inputInterfaces;
    Index compoundPin = none;
    Index interfacePin = none;
    if (Index const* const known = lookUp(interfaces, key))
    {
        addInterfacePin(direction, *known, compoundPin, interfacePin);
    }
    else
    {
        Index interfaceNode = none;
        addInterfaceNode(direction, compound, interfaceNode, compoundPin, interfacePin);
        lists.newInterfaceNodes.push_back(interfaceNode);
        interfaces.push_back({key, interfaceNode});
    }
    lists.newCompoundPins.push_back(compoundPin);
    if (interfacePin != none) setPinName(interfacePin, freePinName(fullName(compound), pinName(listedPin)));
    if (sourceIsInside)
    {
        lists.inner.push_back(connect(sourcePin, interfacePin, false));
        outerOnes.push_back(connect(compoundPin, targetPin, false));
    }
    else
    {
        lists.inner.push_back(connect(interfacePin, targetPin, false));
        outerOnes.push_back(connect(sourcePin, compoundPin, false));
    }
}

void Model::moveIn(Indices const& listed, Index compound, MoveLists& lists)
{
    Indices const gathered = connectionsInvolving(listed, true, false, true);
    reparent(listed, compound, lists);
    for (Index connection : gathered) crossBoundary(connection, listed, compound, true, lists, lists.outer);
}

Indices Model::resolve(Index pin, Partners const& partners) const
{
    if (!isInterfacePin(pin)) return {pin};
    Indices const* const found = lookUp(partners, pins[pin].parent);
    return found != nullptr ? *found : Indices();
}

void Model::moveOut(Indices const& listed, Index compound, bool createInterfaces, MoveLists& lists)
{
    Indices const gathered = connectionsInvolving(listed, false, false, true);
    Partners const partners = partnersByPin(compound);
    Indices outer;
    for (Index each : gathered)
    {
        Index const target = connections[each].target;
        if (isInterfacePin(target) && pins[target].parent != none)
            append(outer, connectionsOfPin(pins[target].parent, input | output, true));
    }
    reparent(listed, nodes[compound].owner, lists);
    for (Index each : outer)
    {
        if (connections[each].gone) continue;
        lists.removedOuter.push_back({connections[each].source, connections[each].target});
        removeConnection(each);
    }
    for (Index each : gathered)
    {
        if (connections[each].gone) continue;
        Index const source = connections[each].source;
        Index const target = connections[each].target;
        if (isInterfacePin(source) || isInterfacePin(target))
        {
            lists.removed.push_back({source, target});
            removeConnection(each);
            for (Index from : resolve(source, partners))
                for (Index to : resolve(target, partners))
                {
                    Index const made = connect(from, to, false);
                    if (made != none) lists.created.push_back(made);
                }
            continue;
        }
        Index const sourceNode = pins[source].node;
        Index const targetNode = pins[target].node;
        // An end without node is beside no other.
        if (sourceNode != none && targetNode != none && nodes[sourceNode].owner == nodes[targetNode].owner)
            continue;
        if (createInterfaces)
        {
            crossBoundary(each, listed, compound, false, lists, lists.created);
            continue;
        }
        lists.removed.push_back({source, target});
        removeConnection(each);
    }
}

} // namespace kestrel::graph::test::model
