/// @file
#pragma once

#include <ks_graph/ks_graph.h>

#include <map>

namespace bench
{

/// What the moves into and out of a compound report.
struct MoveResults
{
    using Node = kestrel::graph::GraphNodeBase;
    using Pin = kestrel::graph::GraphNodePin;
    using Connection = kestrel::graph::GraphConnection;
    using Nodes = kestrel::ArrayOfPtr<Node, kestrel::KS_NO>;

    void moveIn(kestrel::graph::GraphScene& scene, Nodes const& nodes, Node* compound)
    {
        scene.moveNodesToCompound(nodes, compound, pinRenames, inputInterfaces, outputInterfaces,
                                  interfaceNodes, compoundPins, removedConnections, newConnections,
                                  innerConnections);
    }

    void moveOut(kestrel::graph::GraphScene& scene, Nodes& nodes, Node* compound)
    {
        scene.removeNodesFromCompound(compound, nodes, pinRenames, removedOuterConnections,
                                      removedConnections, newConnections, innerConnections);
    }

    void moveOutCreatingInterfaces(kestrel::graph::GraphScene& scene, Nodes& nodes, Node* compound)
    {
        scene.removeNodesFromCompoundCreatingInterfaces(
            compound, nodes, pinRenames, removedOuterConnections, removedConnections, newConnections,
            innerConnections, inputInterfaces, outputInterfaces, interfaceNodes, compoundPins);
    }

    std::map<kestrel::KS_String, kestrel::KS_String> pinRenames;
    std::map<Node*, Node*> inputInterfaces;
    std::map<Node*, Node*> outputInterfaces;
    Nodes interfaceNodes;
    kestrel::ArrayOfPtr<Pin, kestrel::KS_NO> compoundPins;
    kestrel::Array<Connection, kestrel::_Wa> removedConnections;
    kestrel::Array<Connection, kestrel::_Wa> removedOuterConnections;
    kestrel::ArrayOfPtr<Connection, kestrel::KS_NO> newConnections;
    kestrel::ArrayOfPtr<Connection, kestrel::KS_NO> innerConnections;
};

} // namespace bench
