// Questions to the scene and its model: they change nothing. One operation asks many of them at once.

#include "Driver.h"

#include <algorithm>

namespace kestrel::graph::test::model
{

namespace
{

KS_String text(std::string const& plain)
{
    return KS_String(std::string_view(plain));
}

PinDirection directionOf(unsigned int bits)
{
    return PinDirection(bits & 3u);
}

bool bit(unsigned int flags, unsigned int place)
{
    return (flags >> place & 1u) != 0;
}

} // namespace

bool Driver::ask(Operation const& operation)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    unsigned int const number = operation.numbers[0];
    switch (operation.kind)
    {
    case Kind::askForFreeId:
        freeNodeId();
        found_ = true;
        break;
    case Kind::askForFreeNames:
        askFreeNames(operation.texts[0], number);
        break;
    case Kind::askNode:
        askNode(a, number, operation.numbers[1] & 3u);
        break;
    case Kind::askNodes:
        askNodes(a, b, number);
        break;
    case Kind::askPin:
        askPin(a, number);
        break;
    case Kind::askPins:
        askPins(a, b, number);
        break;
    case Kind::askPinAndNode:
        askPinAndNode(a, b, number);
        break;
    case Kind::askConnection:
        askConnection(a, b, arguments_[2], number);
        break;
    case Kind::askList:
        askList(list_, number);
        break;
    case Kind::askNames:
        askNames(operation.texts[0], number);
        break;
    default:
        return false;
    }
    return true;
}

void Driver::askFreeNames(std::string const& name, unsigned int flags)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    KS_String const like = text(name);
    std::string const full = model_.fullName(a);
    found_ = true;
    expectText("the full name of a node", full, node(a)->getFullName());
    expectText("getFreeNodeNameLikeThis", model_.freeNodeNameLikeThis(a, name, b),
               node(a)->getFreeNodeNameLikeThis(like, node(b)));
    expectText("getFreePinNameLikeThis", model_.freePinNameLikeThis(a, name),
               node(a)->getFreePinNameLikeThis(like));
    expectText("getFreeNodeName", model_.freeNodeName(full, name), scene_->getFreeNodeName(text(full), like));
    expectText("getFreeNodeCompoundName", model_.freeNodeName(full, "compound"),
               scene_->getFreeNodeCompoundName(text(full)));
    expectText("getFreeInterfaceNodeName", model_.freeInterfaceNodeName(full, flags & 3u),
               scene_->getFreeInterfaceNodeName(text(full), directionOf(flags)));
    expectText("getFreePinName", model_.freePinName(full, name), scene_->getFreePinName(text(full), like));
    expectSame("getNodeByName", model_.nodeByName(a, name, bit(flags, 2)),
               node(a)->getNodeByName(like, bit(flags, 2)));
    expectSame("getPinByName", model_.pinByName(a, name), node(a)->getPinByName(like));
    expectFlag({"hasPinWithName", model_.hasPinWithName(a, name, bit(flags, 3)),
                node(a)->hasPinWithName(like, bit(flags, 3))});
}

void Driver::askNode(Index a, unsigned int flags, unsigned int direction)
{
    if (a == none)
    {
        ConnectionList connections;
        NodeList nodes;
        GraphNodeBase const* const noNode = nullptr;
        expectFlag({"getConnectionsWithNode of null", false,
                    scene_->getConnectionsWithNode(noNode, connections, true, true, true, true)});
        expectFlag({"getNodesConnectedWithNode of null", false,
                    scene_->getNodesConnectedWithNode(noNode, nodes, true, true, false, true, true)});
        return;
    }
    askNodeItself(a, bit(flags, 0), direction);
    askNodeAboutConnections(a, flags, direction);
}

void Driver::askNodeItself(Index a, bool flag, unsigned int direction)
{
    GraphNodeBase& asked = *node(a);
    Indices found = model_.pinsOf(a, direction);
    PinList pins;
    expectFlag({"getPins", !found.empty(), asked.getPins(directionOf(direction), pins)});
    expectFound("the pins of a direction", found, pins);
    expectFlag({"hasInputPins", !model_.pinsOf(a, input).empty(), asked.hasInputPins()});
    expectFlag({"hasOutputPins", !model_.pinsOf(a, output).empty(), asked.hasOutputPins()});
    expectFlag({"isInputInterface", model_.isInputInterface(a), asked.isInputInterface()});
    expectFlag({"isOutputInterface", model_.isOutputInterface(a), asked.isOutputInterface()});

    pins.setSize(0);
    expectFlag({"whether pins are connected", !model_.pinsByConnected(a, direction, flag).empty(),
                flag ? asked.getConnectedPins(directionOf(direction), pins)
                     : asked.getNotConnectedPins(directionOf(direction), pins)});
    expectFound("the pins that are, or are not, connected", model_.pinsByConnected(a, direction, flag), pins);

    found.clear();
    pins.setSize(0);
    model_.pinsBelow(a, flag, found);
    expectFlag({"getAllChildNodePins", !found.empty(), asked.getAllChildNodePins(pins, flag)});
    expectFound("the pins below a node", found, pins);

    found.clear();
    NodeList nodes;
    model_.nodesBelow(a, found);
    expectFlag({"getNodesRecursively", !found.empty(), asked.getNodesRecursively(nodes)});
    expectFound("the nodes below a node", found, nodes);
    nodes.setSize(0);
    if (!flag) found = model_.nodes[a].children;
    scene_->getGraphNodesAtLevel(&asked, flag, nodes);
    expectFound("the nodes at a level", found, nodes);

    found.clear();
    nodes.setSize(0);
    model_.compoundsBelow(model_.root, found);
    scene_->getAllGraphCompounds(nodes);
    expectFound("the compounds of the scene", found, nodes);
}

void Driver::askNodeAboutConnections(Index a, unsigned int flags, unsigned int direction)
{
    Indices found;
    ConnectionList connections;
    // Twice into the same list: it is appended to, and made unique as a whole.
    for (int round = 0; round < 2; ++round)
    {
        model_.connectionsOf(a, found, bit(flags, 0), bit(flags, 1), bit(flags, 2), bit(flags, 3));
        GraphNodeBase const* const asked = node(a);
        expectFlag({"getConnectionsWithNode", !found.empty(),
                    scene_->getConnectionsWithNode(asked, connections, bit(flags, 0), bit(flags, 1),
                                                   bit(flags, 2), bit(flags, 3))});
        expectFound("the connections of a node", found, connections);
    }

    found.clear();
    NodeList nodes;
    bool const any = model_.nodesConnectedWith(a, found, bit(flags, 0), bit(flags, 1), bit(flags, 4),
                                               bit(flags, 3), bit(flags, 2));
    expectFlag({"getNodesConnectedWithNode", any,
                scene_->getNodesConnectedWithNode(node(a), nodes, bit(flags, 0), bit(flags, 1), bit(flags, 4),
                                                  bit(flags, 3), bit(flags, 2))});
    expectFound("the nodes that a node is connected with", found, nodes);
    expectFlag({"hasNodeAnyConnection", model_.hasAnyConnection(a, direction, bit(flags, 4)),
                scene_->hasNodeAnyConnection(node(a), directionOf(direction), bit(flags, 4))});

    std::map<GraphNodePin*, ConnectionList> connectionsByPin;
    std::map<GraphNodePin*, PinList> pinsByPin;
    scene_->getNodeConnectionsByPin(node(a), connectionsByPin);
    scene_->getNodeConnectionsByPin(node(a), pinsByPin);
    Partners const partners = model_.partnersByPin(a);
    difference_.expect("the number of pins by connections", partners.size(), connectionsByPin.size());
    difference_.expect("the number of pins by partners", partners.size(), pinsByPin.size());
    for (auto const& [each, list] : model_.connectionsByPin(a))
        expectFound("the connections by pin", list, connectionsByPin[pin(each)]);
    for (auto const& [each, list] : partners) expectFound("the partners by pin", list, pinsByPin[pin(each)]);
}

void Driver::askNodes(Index a, Index b, unsigned int flags)
{
    GraphNodeBase const* const first = node(a);
    GraphNodeBase const* const second = node(b);
    for (unsigned int both = 0; both < 4; ++both)
        expectFlag({"areNodesConnected", model_.areNodesConnected(a, b, bit(both, 0), bit(both, 1)),
                    scene_->areNodesConnected(first, second, bit(both, 0), bit(both, 1))});

    Indices found;
    Indices foundOther;
    PinList pins;
    PinList otherPins;
    expectFlag({"getConnectablePins", model_.connectablePinsOfNodes(a, b, bit(flags, 0), found, foundOther),
                scene_->getConnectablePins(first, second, pins, otherPins, bit(flags, 0))});
    expectFound("the connectable source pins", found, pins);
    expectFound("the connectable target pins", foundOther, otherPins);
    ConnectionList connections;
    if (a == none || b == none)
        return expectFlag({"getConnectionsBetweenNodes", false,
                           scene_->getConnectionsBetweenNodes(first, second, true, true, true, connections)});
    expectFlag({"isConnectionAllowed", !found.empty() || model_.allowsToNode(a, b, found),
                scene_->isConnectionAllowed(first, second)});
    found.clear();
    expectFlag(
        {"allowsConnectionFrom", model_.allowsFromNode(a, b, found), first->allowsConnectionFrom(second)});

    found.clear();
    model_.connectionsToNode(a, b, found, bit(flags, 0), bit(flags, 1), bit(flags, 2));
    expectFlag({"getConnectionsBetweenNodes", !found.empty(),
                scene_->getConnectionsBetweenNodes(first, second, bit(flags, 0), bit(flags, 1), bit(flags, 2),
                                                   connections)});
    expectFound("the connections between nodes", found, connections);
    expectFlag({"hasConnectionsWithNode", !found.empty(),
                first->hasConnectionsWithNode(second, bit(flags, 0), bit(flags, 1))});
    expectFlag({"isOwnedByNode", model_.isOwnedBy(a, b, bit(flags, 0)),
                node(a)->isOwnedByNode(node(b), bit(flags, 0))});
    expectFlag({"isSameNodeAs", model_.isSameNode(a, b), first->isSameNodeAs(*second)});
}

void Driver::askPin(Index a, unsigned int flags)
{
    GraphNodePin* const asked = pin(a);
    PinDirection const direction = directionOf(flags);
    ConnectionList connections;
    if (a == none)
    {
        expectFlag({"isPinFull of null", false, scene_->isPinFull(asked)});
        expectFlag({"hasPinConnections of null", false, scene_->hasPinConnections(asked, direction)});
        difference_.expect("getPinNumConnections of null", noLimit, scene_->getPinNumConnections(asked));
        return expectFlag(
            {"getPinConnections of null", false, scene_->getPinConnections(asked, connections)});
    }
    Indices const found = model_.connectionsOfPin(a, flags & 3u, true);
    expectFlag({"isPinFull", model_.isFull(a), scene_->isPinFull(asked)});
    expectFlag({"hasPinConnections", !found.empty(), scene_->hasPinConnections(asked, direction)});
    difference_.expect("getPinNumConnections", static_cast<unsigned int>(found.size()),
                       scene_->getPinNumConnections(asked, direction));
    expectFlag(
        {"getPinConnections", !found.empty(), scene_->getPinConnections(asked, direction, connections)});
    expectFound("the connections of a pin", found, connections);
    connections.setSize(0);
    asked->getConnections(direction, connections, bit(flags, 2));
    expectFound("the connections of a pin by flag", model_.connectionsOfPin(a, flags & 3u, bit(flags, 2)),
                connections);

    expectText("the full name of a pin", model_.pinFullName(a), asked->getFullName());
    expectFlag({"isCompoundPin", model_.isCompoundPin(a), asked->isCompoundPin()});
    expectFlag({"isInterfacePin", model_.isInterfacePin(a), asked->isInterfacePin()});
    expectFlag({"allowsInternalConnections", model_.allowsInternalConnections(a),
                asked->allowsInternalConnections()});
    Pin const& expected = model_.pins[a];
    expectSame("the child interface node", expected.child == none ? none : model_.pins[expected.child].node,
               asked->getChildInterfaceNodePtr());
}

void Driver::askPins(Index a, Index b, unsigned int flags)
{
    GraphNodePin* const first = pin(a);
    GraphNodePin* const second = pin(b);
    GraphNodePin const* const source = first;
    GraphNodePin const* const target = second;
    expectFlag({"isConnectionAllowed", model_.isConnectionAllowed(a, b),
                scene_->isConnectionAllowed(source, target)});
    GraphConnection const like(first, second);
    ConnectionList connections;
    if (a == none || b == none)
    {
        expectFlag({"hasConnectionsLikeThis", false, scene_->hasConnectionsLikeThis(like)});
        return expectFlag(
            {"getConnectionsLikeThis", false, scene_->getConnectionsLikeThis(like, connections)});
    }
    bool const inputs = bit(flags, 0);
    bool const outputs = bit(flags, 1);
    bool const includeImplicit = bit(flags, 2);
    Indices const found = model_.connectionsWithPin(a, b, inputs, outputs, includeImplicit);
    first->getConnectionsWithPin(second, connections, inputs, outputs, includeImplicit);
    expectFound("the connections with a pin", found, connections);
    expectFlag({"hasConnectionsWithPin", !found.empty(),
                first->hasConnectionsWithPin(second, inputs, outputs, includeImplicit)});

    expectFlag(
        {"hasConnectionsLikeThis", model_.hasConnectionsLike(a, b), scene_->hasConnectionsLikeThis(like)});
    Indices const alike =
        model_.isConnected(a, b) ? model_.connectionsWithPin(a, b, false, true, true) : Indices();
    connections.setSize(0);
    expectFlag({"getConnectionsLikeThis", !alike.empty(), scene_->getConnectionsLikeThis(like, connections)});
    expectFound("the connections alike", alike, connections);
}

void Driver::askPinAndNode(Index a, Index b, unsigned int flags)
{
    GraphNodePin const* const askedPin = pin(a);
    GraphNodeBase const* const askedNode = node(b);
    bool const isSource = bit(flags, 0);
    bool const excludeFull = bit(flags, 1);
    bool const allowed = b != none && (isSource ? model_.allowsFromPin(b, a) : model_.allowsToPin(b, a));
    expectFlag({"isConnectionAllowed", allowed, scene_->isConnectionAllowed(askedPin, askedNode, isSource)});
    expectFlag({"isConnectionAllowed in short", allowed,
                isSource ? scene_->isConnectionAllowed(askedPin, askedNode)
                         : scene_->isConnectionAllowed(askedNode, askedPin)});
    Indices found;
    PinList pins;
    expectFlag({"getConnectablePins", model_.connectablePins(a, b, isSource, excludeFull, found),
                isSource ? scene_->getConnectablePins(askedPin, askedNode, pins, excludeFull)
                         : scene_->getConnectablePins(askedNode, askedPin, pins, excludeFull)});
    expectFound("the connectable pins", found, pins);
    if (a == none || b == none) return;
    ConnectionList connections;
    found = model_.connectionsWithNode(a, b, bit(flags, 2), bit(flags, 3), bit(flags, 4));
    askedPin->getConnectionsWithNode(askedNode, connections, bit(flags, 2), bit(flags, 3), bit(flags, 4));
    expectFound("the connections of a pin with a node", found, connections);
    expectFlag({"hasConnectionsWithNode", !found.empty(),
                askedPin->hasConnectionsWithNode(askedNode, bit(flags, 2), bit(flags, 3), bit(flags, 4))});
}

void Driver::askConnection(Index asked, Index a, Index b, unsigned int flags)
{
    GraphConnection& actual = *connection(asked);
    bool const isConnected = model_.isConnected(asked);
    Index const source = model_.sourceNode(asked);
    Index const target = model_.targetNode(asked);
    expectFlag({"isConnected", isConnected, actual.isConnected()});
    expectSame("getSourceNode", source, actual.getSourceNode());
    expectSame("getTargetNode", target, actual.getTargetNode());
    expectText("the full name of a connection", model_.connectionName(asked), actual.getFullName());
    expectFlag({"isLoop", isConnected && model_.connections[asked].source == model_.connections[asked].target,
                actual.isLoop()});
    if (source != none || target != none)
    {
        expectFlag({"isNodeLoop", isConnected && source == target, actual.isNodeLoop()});
        expectFlag({"isSameNode", isConnected && source == target, actual.isSameNode()});
    }
    Indices below;
    model_.nodesBelow(a, below);
    model_.nodesBelow(b, below);
    // Every way down both of the trees is tried: with many nodes there is no end to it.
    bool const recursive = bit(flags, 0) && below.size() <= 8;
    expectFlag({"areNodesConnected of a connection", model_.linksNodes(asked, a, b, recursive, bit(flags, 1)),
                actual.areNodesConnected(*node(a), *node(b), recursive, bit(flags, 1))});
}

void Driver::askList(Indices const& listed, unsigned int flags)
{
    NodeList const nodes = listOf(listed);
    ConnectionList connections;
    Indices found = model_.connectionsInvolving(listed, bit(flags, 0), bit(flags, 1), bit(flags, 2));
    expectFlag({"getConnectionsInvolvingNodes", !found.empty(),
                scene_->getConnectionsInvolvingNodes(nodes, bit(flags, 0), bit(flags, 1), bit(flags, 2),
                                                     connections)});
    expectFound("the connections that involve nodes", found, connections);
    connections.setSize(0);
    found = model_.connectionsInvolvingOnly(listed, bit(flags, 0), bit(flags, 1));
    expectFlag({"getConnectionsInvolvingOnlyNodes", !found.empty(),
                scene_->getConnectionsInvolvingOnlyNodes(nodes, bit(flags, 0), bit(flags, 1), connections)});
    expectFound("the connections that involve only nodes", found, connections);
}

void Driver::askNames(std::string const& name, unsigned int id)
{
    KS_String const asked = text(name);
    expectSame("getNodePtrByFullName", model_.nodeByFullName(name), scene_->getNodePtrByFullName(asked));
    expectSame("getPinPtrByFullName", model_.pinByFullName(name), scene_->getPinPtrByFullName(asked));
    expectSame("getPinPtrByFullNameCaseInsensitive", model_.pinByFullNameInAnyCase(name),
               scene_->getPinPtrByFullNameCaseInsensitive(asked));
    expectSame("getNodePtrById", model_.nodeById(id), scene_->getNodePtrById(id));
    expectFlag({"hasGraphNodeWithId", model_.nodeById(id) != none, scene_->hasGraphNodeWithId(id)});
    expectSame("getPinPtrById", model_.pinById(pinId(id)), scene_->getPinPtrById(pinId(id)));
    NodeList nodes;
    Indices expected;
    for (auto const& [key, registered] : model_.nodesById) expected.push_back(registered);
    scene_->getGraphNodesAsList(nodes);
    expectFound("the nodes of the scene", expected, nodes);
}

} // namespace kestrel::graph::test::model
