/// @file
/// Internal: moving nodes into and out of compounds. Everything goes through the virtual operations of the
/// scene.
#pragma once

#include "PointerSet.h"

#include <ks_graph/GraphScene.h>

#include <map>

namespace kestrel::graph
{

using RenameRecord = std::map<KS_String, KS_String>;
using InterfaceOfNode = std::map<GraphNodeBase*, GraphNodeBase*>;

/// Gives each node, but for interface nodes, a new owner, and a free name where its own is taken there.
/// Enters each of its pins into `renames`, new full name to old one; an entry that is there stays.
void reparent(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, GraphNodeBase* newOwner, RenameRecord& renames);

/// Leads connections that cross the boundary of a compound through pairs of pins.
class BoundaryRewirer
{
public:
    /// The caller's records and lists, filled as connections are rewired.
    struct Results
    {
        InterfaceOfNode& inputInterfaces;
        InterfaceOfNode& outputInterfaces;
        ArrayOfPtr<GraphNodeBase, KS_NO>& newInterfaceNodes;
        ArrayOfPtr<GraphNodePin, KS_NO>& newCompoundPins;
        Array<GraphConnection, _Wa>& removedConnections;
        ArrayOfPtr<GraphConnection, KS_NO>& outerConnections;
        ArrayOfPtr<GraphConnection, KS_NO>& innerConnections;
    };

    /// `listIsInside`: the listed nodes are those inside the compound; else those outside.
    BoundaryRewirer(GraphScene& scene, GraphNodeBase* compound,
                    ArrayOfPtr<GraphNodeBase, KS_NO> const& listedNodes, bool listIsInside, Results results);

    /// Replaces the connection by two, if exactly one of its ends is listed; deletes it then.
    void rewire(GraphConnection* connection);

private:
    struct Pair
    {
        GraphNodePin* compoundPin = nullptr;
        GraphNodePin* interfacePin = nullptr;
    };

    Pair makePair(PinDirection direction, GraphNodeBase* listedNode);

    GraphScene& scene_;
    GraphNodeBase* compound_;
    PointerSet<GraphNodeBase> listedNodes_;
    bool listIsInside_;
    Results results_;
};

/// Moves nodes from a compound to its owner. A connection that then crosses the boundary goes to `rewirer`,
/// or is removed when there is none.
class CompoundExit
{
public:
    struct Results
    {
        RenameRecord& pinRenames;
        Array<GraphConnection, _Wa>& removedOuterConnections;
        Array<GraphConnection, _Wa>& removedConnections;
        ArrayOfPtr<GraphConnection, KS_NO>& newConnections;
    };

    CompoundExit(GraphScene& scene, GraphNodeBase* compound, Results results, BoundaryRewirer* rewirer);

    void move(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes);

private:
    using PartnerPins = std::map<GraphNodePin*, ArrayOfPtr<GraphNodePin, KS_NO>>;

    static ArrayOfPtr<GraphConnection, KS_NO> outerConnectionsOf(
        ArrayOfPtr<GraphConnection, KS_NO> const& inner);
    ArrayOfPtr<GraphNodePin, KS_NO> resolve(GraphNodePin* pin) const;
    void remove(GraphConnection* connection, Array<GraphConnection, _Wa>& record);
    void settle(GraphConnection* connection);
    void connectDirectly(GraphConnection* connection);

    GraphScene& scene_;
    GraphNodeBase* compound_;
    Results results_;
    BoundaryRewirer* rewirer_;
    PartnerPins outsidePartners_;
};

} // namespace kestrel::graph
