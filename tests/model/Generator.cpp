#include "Generator.h"

#include <algorithm>
#include <cctype>

namespace kestrel::graph::test::model
{

namespace
{

// Few, so that they meet: the same in other case, with numbers at the end, with the separators of full names.
std::vector<std::string> const nodeNames{"a",      "b",      "A",  "add",        "Add",  "add1",
                                         "node07", "node08", "12", "compound01", "root", "",
                                         "x.y",    "50%s",   "a~", "/a",         "node", "input interface01",
                                         "\xE9",   "c > d"};
std::vector<std::string> const pinNames{"in",  "out", "In", "value", "value1",  "in01",
                                        "x09", "7",   "",   "b.in",  "Untitled"};
std::vector<std::string> const layoutNames{"root",
                                           "root.a",
                                           "root.b",
                                           "root.ab",
                                           "root.a.b",
                                           "A",
                                           "",
                                           "aaa",
                                           "root.a.out > root.b.in",
                                           "root.b.out > root.a.in",
                                           "\xE9\x80"};
std::vector<std::string> const layoutTexts{"a", "root", "root.a", "root.", "",
                                           "b", "aa",   "out",    ".",     "root.b"};
std::vector<unsigned int> const oddIds{0, 1, 4711, noId, noId - 1};
std::vector<unsigned int> const capacities{0, 1, 1, 2, 3, noLimit, noLimit, noLimit, noLimit};
std::vector<unsigned int> const directions{0, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 3};

unsigned int weightOf(KindOfOperation const& kind, bool orderly)
{
    return orderly ? kind.orderlyWeight : kind.weight;
}

struct Weights
{
    explicit Weights(bool orderly)
    {
        for (KindOfOperation const& kind : kinds) sums.push_back(total += weightOf(kind, orderly));
    }

    unsigned int total = 0;
    std::vector<unsigned int> sums;
};

bool isConnectedAnywhere(Model const& model, Index node)
{
    Node const& asked = model.nodes[node];
    return std::any_of(asked.pins.begin(), asked.pins.end(),
                       [&](Index pin) { return !model.connectionsOfPin(pin, input | output, true).empty(); });
}

// The pin of many connections, for which the library keeps an index.
Index firstUnlimited(Model const& model)
{
    for (Index each : model.livingPins)
        if (model.pins[each].capacity == noLimit) return each;
    return none;
}

// Without two of one full name.
bool canHold(Model const& model, Index owner, Index child)
{
    if (owner == none || child == none) return false;
    Index const namesake = model.nodeByName(owner, model.nodeName(child), true);
    return !model.nodes[owner].interface_ && !model.nodes[child].interface_ &&
           (namesake == none || namesake == child);
}

template <class Made>
Index indexOf(Records<Made> const& made, Indices const& living, Reference const& reference)
{
    for (Index each : living)
        if (made[each].reference == reference) return each;
    return none;
}

} // namespace

Generator::Generator(std::uint64_t seed) : random_(seed)
{
    bool const isHost = random_.below(2) == 0;
    profile_.orderly = random_.once(4);
    profile_.large = random_.once(32);
    profile_.nodes = isHost && !random_.once(4);
    profile_.names = isHost && random_.once(3) && !profile_.orderly;
    profile_.fullNames = isHost && random_.once(4) && !profile_.orderly;
    profile_.pins = isHost && random_.once(2);
    profile_.rules = isHost && random_.once(2);
    profile_.ids = isHost && random_.once(4);
    profile_.factories = isHost && random_.once(2);
    nodeLimit_ = profile_.large ? 40 : 6 + random_.below(24);
    connectionLimit_ = profile_.large ? 300 : 3 * nodeLimit_;
}

Operation Generator::next(Model const& model)
{
    ++label_;
    constexpr int mostTries = 4;
    for (;;)
    {
        Kind const kind = nextKind(model);
        for (int tries = 1; tries <= mostTries; ++tries)
        {
            Operation operation = fill(kind, model);
            if (profile_.orderly && !isOrderly(operation, model)) continue;
            // What has no effect is worth a try, too, but a rarer one.
            if (tries == mostTries || isPromising(operation, model)) return operation;
        }
    }
}

bool Generator::isPromising(Operation const& operation, Model const& model) const
{
    auto const nodeOf = [&](Reference const& reference)
    { return indexOf(model.nodes, model.livingNodes, reference); };
    auto const pinOf = [&](Reference const& reference)
    { return indexOf(model.pins, model.livingPins, reference); };
    auto const& [first, second, third] = operation.references;
    Index const node = nodeOf(first);
    Index const otherNode = nodeOf(second);
    Index const pin = pinOf(first);
    Indices found;
    Indices others;
    switch (operation.kind)
    {
    case Kind::deleteNode:
        return model.isForgotten(node);
    case Kind::retireNode:
        return node != model.root && model.nodes[node].children.empty() &&
               model.nodeById(model.nodes[node].id) == node;
    case Kind::removePinFromNode:
    {
        Index const listed = pinOf(second);
        return listed != none && model.pins[listed].node == node;
    }
    case Kind::connectPinAndNode:
        return model.connectablePins(pin, otherNode, operation.numbers[1] != 0, true, found);
    case Kind::connectNodes:
        return model.connectablePinsOfNodes(node, otherNode, true, found, others);
    case Kind::removeConnectionsBetween:
        if (node != none && otherNode != none)
            model.connectionsToNode(node, otherNode, found, true, true, false);
        return !found.empty();
    default:
        return true;
    }
}

// What keeps the graph at its size, or gets it going again, comes first.
Kind Generator::nextKind(Model const& model)
{
    if (model.root == none) return Kind::newRoot;
    unsigned int const rootId = model.nodes[model.root].id;
    if (!profile_.orderly && model.nodeById(rootId) == none && random_.once(8)) return Kind::addNodeToGraph;
    std::size_t const nodeCount = model.livingNodes.size();
    if (nodeCount > nodeLimit_ && !random_.once(3))
    {
        if (profile_.orderly) return Kind::retireNode;
        if (nodeCount > 2 * nodeLimit_ && random_.once(16)) return Kind::clear;
        return random_.oneOf(std::vector{Kind::removeNodeFromGraph, Kind::deleteNode, Kind::retireNode});
    }
    if (model.livingPins.size() > 4 * nodeLimit_ && !random_.once(3))
        return random_.once(4) ? Kind::removeNodePins : Kind::removePinEverywhere;
    if (model.livingConnections.size() > connectionLimit_ && !random_.once(3)) return Kind::removeConnection;
    if (profile_.large && model.livingPins.size() > nodeLimit_ && random_.once(2)) return Kind::connectPins;
    return weightedKind();
}

Kind Generator::weightedKind()
{
    static Weights const wild(false);
    static Weights const orderly(true);
    Weights const& weights = profile_.orderly ? orderly : wild;
    unsigned int const place = random_.below(weights.total);
    auto const found = std::upper_bound(weights.sums.begin(), weights.sums.end(), place);
    return static_cast<Kind>(found - weights.sums.begin());
}

// What would take the scene's views of the graph out of step, as the texts say that it does.
bool Generator::isOrderly(Operation const& operation, Model const& model) const
{
    Index const node = indexOf(model.nodes, model.livingNodes, operation.references[0]);
    Index const pin = indexOf(model.pins, model.livingPins, operation.references[0]);
    Index const second = indexOf(model.nodes, model.livingNodes, operation.references[1]);
    auto const isInterface = [&](Index asked) { return asked != none && model.nodes[asked].interface_; };
    switch (operation.kind)
    {
    // Interface nodes hold no others, and stay where they are: their names and their pins' would meet.
    case Kind::addNode:
    case Kind::addCompound:
    case Kind::addInterfaceNode:
    case Kind::moveIn:
    case Kind::moveChildrenIn:
        return !isInterface(node);
    case Kind::setNodeOwner:
        return canHold(model, second, node);
    case Kind::addChild:
        return canHold(model, node, second);
    case Kind::addInterfacePin:
        return node == none || isInterface(node);
    case Kind::changeNodeId:
        return !isConnectedAnywhere(model, node);
    case Kind::renamePin:
        return pin != none && model.pins[pin].child == none;
    case Kind::moveOut:
    case Kind::moveChildrenOut:
        return node != model.root;
    default:
        return true;
    }
}

Operation Generator::fill(Kind kind, Model const& model)
{
    Operation operation;
    operation.label = label_;
    operation.kind = kind;
    auto reference = operation.references.begin();
    for (char const* letter = kinds[static_cast<std::size_t>(kind)].signature; *letter != '\0'; ++letter)
    {
        switch (*letter)
        {
        case 'n':
            *reference++ = anyNode(model, false);
            break;
        case 'N':
            *reference++ = anyNode(model, true);
            break;
        case 'p':
            *reference++ = anyPin(model, false);
            break;
        case 'P':
            *reference++ = anyPin(model, true);
            break;
        case 'c':
            *reference++ = anyConnection(model, false);
            break;
        case 'C':
            *reference++ = anyConnection(model, true);
            break;
        case 'l':
            for (unsigned int left = random_.below(5); left > 0; --left)
                operation.list.push_back(anyNode(model, true));
            break;
        case 'k':
            for (unsigned int left = random_.below(4); left > 0; --left)
                operation.list.push_back(anyPin(model, false));
            break;
        case 't':
            fillNames(operation, model);
            break;
        default:
            break;
        }
    }
    fillNumbers(operation, model);
    fillTexts(operation, model);
    aim(operation, model);
    return operation;
}

void Generator::fillNumbers(Operation& operation, Model const& model)
{
    int place = 0;
    for (char const* letter = kinds[static_cast<std::size_t>(operation.kind)].signature; *letter != '\0';
         ++letter)
    {
        unsigned int& number = operation.numbers[static_cast<std::size_t>(place)];
        if (*letter == 'b') number = random_.below(2);
        if (*letter == '#') number = anyNumber(operation.kind, place, model);
        if (*letter == 'b' || *letter == '#') ++place;
    }
}

unsigned int Generator::anyNumber(Kind kind, int place, Model const& model)
{
    switch (kind)
    {
    case Kind::addPin:
    case Kind::createPin:
    case Kind::createLoosePin:
        if (place == 0) return profile_.orderly ? 1 + random_.below(2) : random_.oneOf(directions);
        return random_.oneOf(capacities);
    case Kind::makeHostPin:
        if (place == 2) return random_.below(60) + (random_.once(4) ? 0 : 1000);
        return place == 0 ? random_.oneOf(directions) : random_.oneOf(capacities);
    case Kind::setDirection:
        return random_.oneOf(directions);
    case Kind::setCapacity:
        return random_.oneOf(capacities);
    case Kind::changeNodeId:
        return profile_.orderly ? 10000 + static_cast<unsigned int>(label_) : anyId(model);
    case Kind::looseNode:
    case Kind::removeNodeById:
    case Kind::removeConnectionsById:
        return anyId(model);
    case Kind::askNames:
        return random_.once(2) ? anyId(model) : random_.below(60);
    case Kind::changePinId:
        return random_.below(60);
    case Kind::addInterfaceNode:
    case Kind::addInterfacePin:
        return random_.once(8) ? random_.below(4) : 1 + random_.below(2);
    // Interface nodes of the last move belong to another compound.
    case Kind::moveIn:
    case Kind::moveOut:
        return profile_.orderly ? 2 * random_.below(2) : random_.below(4);
    default:
        return random_.below(4096);
    }
}

void Generator::fillTexts(Operation& operation, Model const& model)
{
    int place = 0;
    for (char const* letter = kinds[static_cast<std::size_t>(operation.kind)].signature; *letter != '\0';
         ++letter)
    {
        if (*letter != 's') continue;
        std::string& text = operation.texts[static_cast<std::size_t>(place++)];
        switch (operation.kind)
        {
        case Kind::addPin:
        case Kind::createLoosePin:
        case Kind::renamePin:
            text = profile_.orderly ? "p" + std::to_string(label_) + "x" : anyPinName();
            break;
        case Kind::askForFreeNames:
            text = random_.once(2) ? anyPinName() : anyNodeName();
            break;
        case Kind::askNames:
            text = anyFullName(model);
            break;
        case Kind::layoutReplaceText:
        case Kind::layoutReplacePrefix:
            text = random_.oneOf(layoutTexts);
            break;
        default:
            if (operation.kind >= Kind::layoutInsert)
                text = anyLayoutName(model);
            else
                text = profile_.orderly ? "n" + std::to_string(label_) + "x" : anyNodeName();
        }
    }
}

// For a dictionary old and new names in turn; else the names of pins, most of them of the node.
void Generator::fillNames(Operation& operation, Model const& model)
{
    if (operation.kind == Kind::layoutDictionary)
    {
        for (unsigned int left = 2 * random_.below(4); left > 0; --left)
            operation.names.push_back(anyLayoutName(model));
        return;
    }
    Index const node = indexOf(model.nodes, model.livingNodes, operation.references[0]);
    Indices const& pins = model.nodes[node].pins;
    for (unsigned int left = random_.below(6); left > 0; --left)
        operation.names.push_back(pins.empty() || random_.once(4) ? anyPinName()
                                                                  : model.pinName(random_.oneOf(pins)));
}

// Arguments that fit each other are too rare by themselves.
void Generator::aim(Operation& operation, Model const& model)
{
    switch (operation.kind)
    {
    case Kind::addNodeToGraph:
        if (random_.once(2)) operation.references[0] = model.nodes[model.root].reference;
        for (Index each : model.livingNodes)
            if (model.nodeById(model.nodes[each].id) != each && random_.once(3))
                operation.references[0] = model.nodes[each].reference;
        break;
    case Kind::deleteNode:
        for (Index each : model.livingNodes)
            if (model.isForgotten(each)) operation.references[0] = model.nodes[each].reference;
        break;
    case Kind::retireNode:
    {
        Index const first = indexOf(model.nodes, model.livingNodes, operation.references[0]);
        Index leaf = first;
        while (leaf != none && !model.nodes[leaf].children.empty())
            leaf = random_.oneOf(model.nodes[leaf].children);
        operation.references[0] = model.nodes[leaf].reference;
        break;
    }
    case Kind::removeChild:
    {
        Index const child = indexOf(model.nodes, model.livingNodes, operation.references[1]);
        if (model.nodes[child].owner != none)
            operation.references[0] = model.nodes[model.nodes[child].owner].reference;
        break;
    }
    case Kind::removePinFromNode:
    {
        Index const pin = indexOf(model.pins, model.livingPins, operation.references[1]);
        if (pin != none && model.pins[pin].node != none && !random_.once(4))
            operation.references[0] = model.nodes[model.pins[pin].node].reference;
        break;
    }
    case Kind::removeConnectionsBetween:
    {
        if (model.livingConnections.empty() || random_.once(4)) break;
        Index const connection = random_.oneOf(model.livingConnections);
        Index const source = model.sourceNode(connection);
        Index const target = model.targetNode(connection);
        if (source != none) operation.references[0] = model.nodes[source].reference;
        if (target != none) operation.references[1] = model.nodes[target].reference;
        if (random_.once(2)) std::swap(operation.references[0], operation.references[1]);
        break;
    }
    case Kind::connectPins:
    {
        Index const hub = profile_.large && random_.once(2) ? firstUnlimited(model) : none;
        for (int tries = 0; tries < 8; ++tries)
        {
            if (hub != none)
            {
                bool const isSource = (model.pins[hub].direction & output) != 0;
                operation.references[isSource ? 0 : 1] = model.pins[hub].reference;
            }
            Index const source = indexOf(model.pins, model.livingPins, operation.references[0]);
            Index const target = indexOf(model.pins, model.livingPins, operation.references[1]);
            if (source == none || target == none || model.isConnectionAllowed(source, target)) break;
            operation.references[0] = anyPin(model, false);
            operation.references[1] = anyPin(model, false);
        }
        break;
    }
    case Kind::addInterfacePin:
    case Kind::moveOut:
    case Kind::moveChildrenOut:
    {
        // Into a compound, or an interface node, that there is; most of the nodes are its own.
        bool const ofInterface = operation.kind == Kind::addInterfacePin;
        for (int tries = 0; tries < 6; ++tries)
        {
            Index const node = indexOf(model.nodes, model.livingNodes, operation.references[0]);
            if (node == none) break;
            if (ofInterface ? model.nodes[node].interface_ : !model.nodes[node].children.empty()) break;
            operation.references[0] = anyNode(model, false);
        }
        Index const compound = indexOf(model.nodes, model.livingNodes, operation.references[0]);
        if (compound == none || model.nodes[compound].children.empty()) break;
        for (Reference& each : operation.list)
            if (!random_.once(6)) each = model.nodes[random_.oneOf(model.nodes[compound].children)].reference;
        break;
    }
    case Kind::moveIn:
    {
        // Most of the nodes come from beside the compound.
        Index const compound = indexOf(model.nodes, model.livingNodes, operation.references[0]);
        Index const owner = model.nodes[compound].owner;
        if (owner == none || model.nodes[owner].children.empty()) break;
        for (Reference& each : operation.list)
            if (!random_.once(4)) each = model.nodes[random_.oneOf(model.nodes[owner].children)].reference;
        break;
    }
    case Kind::askConnection:
    {
        Index const asked = indexOf(model.connections, model.livingConnections, operation.references[0]);
        if (asked == none || random_.once(3)) break;
        Index const source = model.sourceNode(asked);
        Index const target = model.targetNode(asked);
        if (source != none) operation.references[1] = model.nodes[source].reference;
        if (target != none) operation.references[2] = model.nodes[target].reference;
        if (random_.once(2)) std::swap(operation.references[1], operation.references[2]);
        break;
    }
    default:
        break;
    }
}

Reference Generator::anyNode(Model const& model, bool nullToo)
{
    if (model.livingNodes.empty() || (nullToo && random_.once(32))) return {};
    return model.nodes[random_.oneOf(model.livingNodes)].reference;
}

Reference Generator::anyPin(Model const& model, bool nullToo)
{
    if (model.livingPins.empty() || (nullToo && random_.once(32))) return {};
    return model.pins[random_.oneOf(model.livingPins)].reference;
}

Reference Generator::anyConnection(Model const& model, bool nullToo)
{
    if (model.livingConnections.empty() || (nullToo && random_.once(32))) return {};
    return model.connections[random_.oneOf(model.livingConnections)].reference;
}

// Of a node, also of one that is not registered, or of none.
unsigned int Generator::anyId(Model const& model)
{
    if (random_.once(5)) return random_.oneOf(oddIds);
    if (random_.once(4)) return random_.below(40);
    return random_.oneOf(model.nodes).id;
}

std::string Generator::anyNodeName()
{
    return random_.oneOf(nodeNames);
}

std::string Generator::anyPinName()
{
    return random_.oneOf(pinNames);
}

std::string Generator::anyFullName(Model const& model)
{
    std::string name;
    if (random_.once(3) || model.livingPins.empty())
        name = model.fullName(random_.oneOf(model.livingNodes));
    else if (random_.once(2) && !model.pinsByFullName.empty())
        name = random_.oneOf(model.pinsByFullName).first;
    else
        name = model.pinFullName(random_.oneOf(model.livingPins));
    if (random_.once(3))
        for (char& letter : name)
            if (letter >= 'a' && letter <= 'z' && random_.once(2))
                letter = static_cast<char>(letter - 'a' + 'A');
    return name;
}

std::string Generator::anyLayoutName(Model const& model)
{
    if (random_.once(4)) return model.fullName(random_.oneOf(model.livingNodes));
    if (random_.once(8) && !model.livingConnections.empty())
        return model.connectionName(random_.oneOf(model.livingConnections));
    return random_.oneOf(layoutNames);
}

} // namespace kestrel::graph::test::model
