#include "CompoundMover.h"

#include <utility>
#include <vector>

namespace kestrel::graph
{

namespace
{

std::vector<KS_String> fullNamesOfPins(GraphNodeBase const& node)
{
    std::vector<KS_String> names;
    for (GraphNodePin* const pin : node.getNodePins()) names.push_back(pin->getFullName());
    return names;
}

// What is left of a connection that is deleted.
GraphConnection endsOf(GraphConnection const& connection)
{
    return GraphConnection(connection.getSourcePin(), connection.getTargetPin());
}

bool endsHaveOneOwner(GraphConnection const& connection)
{
    GraphNodeBase const* const source = connection.getSourceNode();
    GraphNodeBase const* const target = connection.getTargetNode();
    return source != nullptr && target != nullptr && source->getNodeOwner() == target->getNodeOwner();
}

void takeFreeName(GraphNodeBase& node, GraphNodeBase& newOwner)
{
    KS_String const name = node.getName();
    if (newOwner.getNodeByName(name, false) != nullptr)
        node.setName(newOwner.getFreeNodeNameLikeThis(name, node.getNodeOwner()));
}

} // namespace

void reparent(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, GraphNodeBase* newOwner, RenameRecord& renames)
{
    for (GraphNodeBase* const node : nodes)
    {
        if (node == nullptr || node->isInterface()) continue;
        std::vector<KS_String> oldNames = fullNamesOfPins(*node);
        if (newOwner != nullptr) takeFreeName(*node, *newOwner);
        node->setNodeOwner(newOwner);
        std::vector<KS_String> newNames = fullNamesOfPins(*node);
        for (std::size_t i = 0; i < newNames.size() && i < oldNames.size(); ++i)
            renames.emplace(std::move(newNames[i]), std::move(oldNames[i]));
    }
}

BoundaryRewirer::BoundaryRewirer(GraphScene& scene, GraphNodeBase* compound,
                                 ArrayOfPtr<GraphNodeBase, KS_NO> const& listedNodes, bool listIsInside,
                                 Results results)
    : scene_(scene),
      compound_(compound),
      listedNodes_(listedNodes),
      listIsInside_(listIsInside),
      results_(results)
{}

void BoundaryRewirer::rewire(GraphConnection* connection)
{
    GraphNodePin* const source = connection->getSourcePin();
    GraphNodePin* const target = connection->getTargetPin();
    GraphNodeBase* const sourceNode = connection->getSourceNode();
    GraphNodeBase* const targetNode = connection->getTargetNode();
    bool const sourceListed = listedNodes_.contains(sourceNode);
    if (sourceListed == listedNodes_.contains(targetNode)) return;

    results_.removedConnections.append(endsOf(*connection));
    scene_.removeConnection(connection);

    bool const sourceIsInside = sourceListed == listIsInside_;
    GraphNodePin* const listedPin = sourceListed ? source : target;
    Pair const pair =
        makePair(sourceIsInside ? PIN_OUTPUT : PIN_INPUT, sourceListed ? sourceNode : targetNode);
    results_.newCompoundPins.append(pair.compoundPin);
    if (pair.interfacePin != nullptr)
        pair.interfacePin->setName(scene_.getFreePinName(compound_->getFullName(), listedPin->getName()));

    if (sourceIsInside)
    {
        results_.innerConnections.append(scene_.connect(source, pair.interfacePin, false));
        results_.outerConnections.append(scene_.connect(pair.compoundPin, target, false));
    }
    else
    {
        results_.innerConnections.append(scene_.connect(pair.interfacePin, target, false));
        results_.outerConnections.append(scene_.connect(source, pair.compoundPin, false));
    }
}

// A pair for one connection, on the interface node that serves the listed node in that direction.
BoundaryRewirer::Pair BoundaryRewirer::makePair(PinDirection direction, GraphNodeBase* listedNode)
{
    Pair pair;
    InterfaceOfNode& interfaces =
        direction == PIN_INPUT ? results_.inputInterfaces : results_.outputInterfaces;
    auto const known = interfaces.find(listedNode);
    if (known != interfaces.end() && known->second != nullptr)
    {
        scene_.addCompoundInterfacePin(direction, known->second, pair.compoundPin, pair.interfacePin);
        return pair;
    }
    GraphNodeBase* interfaceNode = nullptr;
    scene_.addCompoundInterfaceNode(direction, compound_, interfaceNode, pair.compoundPin, pair.interfacePin);
    if (interfaceNode == nullptr) return pair;
    results_.newInterfaceNodes.append(interfaceNode);
    interfaces.emplace(listedNode, interfaceNode);
    return pair;
}

CompoundExit::CompoundExit(GraphScene& scene, GraphNodeBase* compound, Results results,
                           BoundaryRewirer* rewirer)
    : scene_(scene), compound_(compound), results_(results), rewirer_(rewirer)
{}

void CompoundExit::move(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes)
{
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    scene_.getConnectionsInvolvingNodes(nodes, false, false, true, connections);
    scene_.getNodeConnectionsByPin(compound_, outsidePartners_);
    ArrayOfPtr<GraphConnection, KS_NO> const outer = outerConnectionsOf(connections);
    PointerSet<GraphConnection> const gone(outer);

    reparent(nodes, compound_->getNodeOwner(), results_.pinRenames);
    for (GraphConnection* const connection : outer) remove(connection, results_.removedOuterConnections);
    for (GraphConnection* const connection : connections)
        if (!gone.contains(connection)) settle(connection);
}

// The connections at the outside of the output side: those of every compound pin whose interface pin is fed.
ArrayOfPtr<GraphConnection, KS_NO> CompoundExit::outerConnectionsOf(
    ArrayOfPtr<GraphConnection, KS_NO> const& inner)
{
    ArrayOfPtr<GraphConnection, KS_NO> outer;
    for (GraphConnection const* const connection : inner)
    {
        if (!connection->targetIsInterfacePin()) continue;
        GraphNodePin const* const compoundPin = connection->getTargetPin()->getParentGraphNodePinPtr();
        if (compoundPin != nullptr) compoundPin->getConnections(outer, true);
    }
    removeRepeats(outer); // several inner connections may lead to one compound pin
    return outer;
}

void CompoundExit::remove(GraphConnection* connection, Array<GraphConnection, _Wa>& record)
{
    record.append(endsOf(*connection));
    scene_.removeConnection(connection);
}

void CompoundExit::settle(GraphConnection* connection)
{
    if (connection->sourceIsInterfacePin() || connection->targetIsInterfacePin())
        connectDirectly(connection);
    else if (endsHaveOneOwner(*connection))
        return;
    else if (rewirer_ != nullptr)
        rewirer_->rewire(connection);
    else
        remove(connection, results_.removedConnections);
}

void CompoundExit::connectDirectly(GraphConnection* connection)
{
    ArrayOfPtr<GraphNodePin, KS_NO> const sources = resolve(connection->getSourcePin());
    ArrayOfPtr<GraphNodePin, KS_NO> const targets = resolve(connection->getTargetPin());
    remove(connection, results_.removedConnections);
    for (GraphNodePin const* const source : sources)
    {
        for (GraphNodePin const* const target : targets)
        {
            GraphConnection* const made = scene_.connect(source, target, false);
            if (made != nullptr) results_.newConnections.append(made);
        }
    }
}

// The pins that stand behind a pin: itself or, for an interface pin, what its compound pin was wired to.
ArrayOfPtr<GraphNodePin, KS_NO> CompoundExit::resolve(GraphNodePin* pin) const
{
    if (pin != nullptr && pin->isInterfacePin())
    {
        auto const partners = outsidePartners_.find(pin->getParentGraphNodePinPtr());
        return partners != outsidePartners_.end() ? partners->second : ArrayOfPtr<GraphNodePin, KS_NO>();
    }
    ArrayOfPtr<GraphNodePin, KS_NO> itself;
    if (pin != nullptr) itself.append(pin);
    return itself;
}

} // namespace kestrel::graph
