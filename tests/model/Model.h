/// @file
/// A scene without the library: plain records in vectors, searched from the front, and the rules of the scene
/// written down a second time, as literally as they are told. It is slow and knows no trick.
#pragma once

#include "Profile.h"

#include <cassert>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test::model
{

/// Where a node, a pin or a connection stands in its vector; it keeps its place when it is gone.
using Index = int;
inline constexpr Index none = -1;
using Indices = std::vector<Index>;

inline constexpr unsigned int noId = 0xFFFFFFFFu;
inline constexpr unsigned int noLimit = 0xFFFFFFFFu;
inline constexpr unsigned int input = 1;
inline constexpr unsigned int output = 2;

/// A vector whose places are of that type.
template <class Record>
class Records : public std::vector<Record>
{
public:
    Record& operator[](Index index) { return this->data()[checked(index)]; }
    Record const& operator[](Index index) const { return this->data()[checked(index)]; }

private:
    Index checked(Index index) const
    {
        assert(index >= 0 && index < static_cast<Index>(this->size()));
        return index;
    }
};

/// Whatever an operation makes is known by the operation that made it and a count, so that a sequence stays
/// the same when other operations are left out of it.
struct Reference
{
    int operation = none;
    int count = 0;

    bool operator==(Reference const&) const = default;
};

struct Node
{
    Reference reference;
    unsigned int id = noId;
    std::string name;
    bool compound = false;
    bool interface_ = false;
    bool hasScene = false;
    bool ofHost = false; // of the host's class: with its names, its hooks, and pins that go with it
    bool gone = false;
    Index owner = none;
    Indices children;
    Indices pins;
};

struct Pin
{
    Reference reference;
    unsigned int id = noId;
    unsigned int capacity = 0;
    unsigned int direction = 0;
    std::string name = "Untitled";
    bool ofHost = false; // of the host's class: with its name and its rules
    bool gone = false;
    Index node = none;
    Index child = none;
    Index parent = none;
    Indices inputs;
    Indices outputs;
};

struct Connection
{
    Reference reference;
    Index source = none;
    Index target = none;
    bool implicit = false;
    bool gone = false;
};

struct Adjacency
{
    unsigned int source;
    unsigned int target;
    int all;
    int notImplicit;
};

enum class EventKind
{
    addNode,
    removeNode,
    addNodePin,
    removeNodePin,
    addConnection,
    removeConnection,
    onAddingToScene,
    onRemovingFromScene
};

/// A callback, or a hook of a host's node.
struct Event
{
    EventKind kind;
    Index owner;
    Index subject;
};

using Ends = std::pair<Index, Index>;
using InterfaceOfNode = std::vector<std::pair<Index, Index>>;
using Partners = std::vector<std::pair<Index, Indices>>;

/// What the moves report.
struct MoveLists
{
    std::vector<std::pair<std::string, std::string>> pinRenames; // by ascending new name
    InterfaceOfNode inputInterfaces;
    InterfaceOfNode outputInterfaces;
    Indices newInterfaceNodes;
    Indices newCompoundPins;
    std::vector<Ends> removed;
    std::vector<Ends> removedOuter;
    Indices outer;
    Indices inner;
    Indices created;
};

class Model
{
public:
    Model(Profile const& ofProfile, unsigned int firstPinId) : profile(ofProfile), nextPinId(firstPinId) {}

    Profile profile;
    Records<Node> nodes;
    Records<Pin> pins;
    Records<Connection> connections;
    Indices livingNodes;
    Indices livingPins;
    Indices livingConnections;

    std::vector<std::pair<unsigned int, Index>> nodesById;     // by ascending id
    std::vector<std::pair<unsigned int, Index>> pinsById;      // by ascending id
    std::vector<std::pair<std::string, Index>> pinsByFullName; // by ascending bytes
    Indices array;
    std::vector<Adjacency> adjacency; // by ascending source and target
    bool allowDuplicates = true;
    bool dirty = false;
    bool keepRoot = true;
    bool useAdjacency = true;
    Index root = none;
    unsigned int lastFreeNodeId = 1;
    unsigned int lastHostNodeId = 5000;
    unsigned int nextPinId;

    /// @name Of the operation at work
    /// @{
    int operation = 0;
    std::vector<Event> events;
    Indices abandonedPins; // whose node went without them: the host deletes them
    bool changed = false;
    bool impossible = false; // the rules lead round in a circle, or delete twice: not for the library
    /// @}

    void begin(int newOperation);

    /// Nothing that lives points at anything that is gone: else no host may do what was done.
    bool isSound() const;
    /// The node's deletion leaves nobody with a pointer to it.
    bool isForgotten(Index node) const;

    /// @name Nodes
    /// @{
    Index makeNode(unsigned int id, std::string const& name, bool ofHost);
    void deleteNode(Index node);
    std::string nodeName(Index node) const;
    std::string fullName(Index node) const;
    bool isCompound(Index node) const;
    bool isInputInterface(Index node) const;
    bool isOutputInterface(Index node) const;
    bool isSameNode(Index a, Index b) const;
    bool isOwnedBy(Index node, Index owner, bool recursive) const;
    void setNodeName(Index node, std::string const& name);
    void setNodeId(Index node, unsigned int id);
    void setNodeOwner(Index node, Index owner);
    void addChild(Index node, Index child);
    void removeChild(Index node, Index child);
    Index nodeByName(Index node, std::string const& name, bool caseSensitive) const;
    void nodesBelow(Index node, Indices& out) const;
    void pinsBelow(Index node, bool includeOwn, Indices& out) const;
    Indices pinsOf(Index node, unsigned int direction) const;
    Index pinByName(Index node, std::string const& name) const;
    bool hasPinWithName(Index node, std::string const& name, bool alsoOwner) const;
    std::string freeNodeNameLikeThis(Index node, std::string const& name, Index otherParent) const;
    std::string freePinNameLikeThis(Index node, std::string const& name) const;
    bool addPinToNode(Index node, Index pin);
    bool removePinFromNode(Index node, Index pin);
    void destroyPins(Index node);
    Index addDynamicPin(Index node, unsigned int direction);
    void reorderPins(Index node, bool inputSide, std::vector<std::string> const& names);
    bool allowsFromPin(Index node, Index pin) const;
    bool allowsToPin(Index node, Index pin) const;
    bool allowedPinsFromPin(Index node, Index pin, Indices& out) const;
    bool allowedPinsToPin(Index node, Index pin, Indices& out) const;
    bool allowsFromNode(Index node, Index other, Indices& out) const;
    bool allowsToNode(Index node, Index other, Indices& out) const;
    void connectionsOf(Index node, Indices& out, bool outputs, bool inputs, bool includeImplicit,
                       bool unique) const;
    void connectionsToNode(Index node, Index other, Indices& out, bool bothDirections, bool includeImplicit,
                           bool unique) const;
    Indices pinsByConnected(Index node, unsigned int direction, bool connected) const;
    /// @}

    /// @name Pins
    /// @{
    Index makePin(unsigned int capacity, unsigned int direction, unsigned int id, bool ofHost);
    void deletePin(Index pin);
    std::string pinName(Index pin) const;
    std::string pinFullName(Index pin) const;
    bool isCompoundPin(Index pin) const;
    bool isInterfacePin(Index pin) const;
    bool isFull(Index pin) const;
    bool allowsFrom(Index pin, Index other) const;
    bool allowsTo(Index pin, Index other) const;
    bool allowsInternalConnections(Index pin) const;
    void setPinName(Index pin, std::string const& name);
    Indices connectionsOfPin(Index pin, unsigned int direction, bool includeImplicit) const;
    Indices connectionsWithPin(Index pin, Index other, bool inputs, bool outputs, bool includeImplicit) const;
    Indices connectionsWithNode(Index pin, Index node, bool inputs, bool outputs, bool includeImplicit) const;
    /// @}

    /// @name Connections
    /// @{
    Index sourceNode(Index connection) const;
    Index targetNode(Index connection) const;
    bool isConnected(Index source, Index target) const;
    bool isConnected(Index connection) const;
    bool linksNodes(Index connection, Index from, Index to, bool recursive, bool bothWays) const;
    std::string connectionName(Index connection) const;
    /// @}

    /// @name The scene's registry
    /// @{
    Index nodeById(unsigned int id) const;
    Index nodeByFullName(std::string const& name) const;
    Index pinById(unsigned int id) const;
    Index pinByFullName(std::string const& name) const;
    Index pinByFullNameInAnyCase(std::string const& name) const;
    bool addNodeToGraph(Index node);
    bool removeNodeFromGraph(Index node);
    bool removeNodeById(unsigned int id);
    void removeNodesInCompound(Index compound);
    void removeAllNodes();
    void clear();
    bool addPin(Index pin);
    bool addPinToNodeAndScene(Index node, Index pin);
    bool unregisterPin(Index pin);
    void removeNodePins(Index node);
    void removePinEverywhere(Index pin);
    Index createPin(unsigned int capacity, unsigned int direction);
    Index createPinOf(Index node, unsigned int capacity, unsigned int direction);
    void compoundsBelow(Index node, Indices& out) const;
    /// @}

    /// @name Wiring
    /// @{
    Index connect(Index source, Index target, bool implicit);
    Index connectPinAndNode(Index pin, Index node, bool implicit, bool pinIsSource);
    Index connectNodes(Index source, Index target, bool implicit);
    Index makeStray(Index source, Index target);
    bool removeConnection(Index connection);
    void removeAllConnections();
    void removeConnectionsWithPin(Index pin);
    bool removeConnectionsOfNode(Index node);
    void removeConnectionsBetween(Index a, Index b, bool bothDirections, bool includeImplicit);
    bool hasConnectionsLike(Index source, Index target) const;
    bool isConnectionAllowed(Index source, Index target) const;
    bool connectablePins(Index pin, Index node, bool pinIsSource, bool excludeFull, Indices& out) const;
    bool connectablePinsOfNodes(Index source, Index target, bool excludeFull, Indices& sourcePins,
                                Indices& targetPins) const;
    /// @}

    /// @name Queries
    /// @{
    int count(Index a, Index b, bool includeImplicit) const;
    bool areNodesConnected(Index a, Index b, bool eitherDirection, bool includeImplicit) const;
    bool hasAnyConnection(Index node, unsigned int direction, bool ignoreLoops) const;
    Indices connectionsInvolving(Indices const& listed, bool skipInterfaces, bool includeImplicit,
                                 bool unique) const;
    Indices connectionsInvolvingOnly(Indices const& listed, bool skipInterfaces, bool includeImplicit) const;
    bool nodesConnectedWith(Index node, Indices& out, bool addTargets, bool addSources, bool skipSameNode,
                            bool unique, bool includeImplicit) const;
    Partners connectionsByPin(Index node) const;
    Partners partnersByPin(Index node) const;
    /// @}

    /// @name Compounds, free names and ids
    /// @{
    unsigned int freeNodeId();
    std::string freeNodeName(std::string const& ownerFullName, std::string const& base) const;
    std::string freeInterfaceNodeName(std::string const& ownerFullName, unsigned int direction) const;
    std::string freePinName(std::string const& nodeFullName, std::string const& base) const;
    Index createNode(bool compound, bool interface_);
    Index createCompoundPin(Index interfacePin);
    bool addInterfacePin(unsigned int direction, Index interfaceNode, Index& compoundPin,
                         Index& interfacePin);
    bool addInterfaceNode(unsigned int direction, Index compound, Index& interfaceNode, Index& compoundPin,
                          Index& interfacePin);
    void moveIn(Indices const& listed, Index compound, MoveLists& lists);
    void moveOut(Indices const& listed, Index compound, bool createInterfaces, MoveLists& lists);
    /// @}

private:
    template <class Made>
    Reference nextReference(Records<Made> const& made) const;
    void emit(EventKind kind, Index owner, Index subject);
    bool isAtOrBelow(Index node, Index top) const;
    void takeFromOwner(Index node);
    bool insertPinName(std::string const& name, Index pin);
    void erasePinName(std::string const& name);
    void rekeyPin(std::string const& oldName, std::string const& newName);
    void rekeyPinsBelow(Index node, std::string const& oldName, std::string const& newName);
    void countAdjacency(Index connection, int change);
    void endPin(Index pin);
    void leavePartners(Index pin);
    void removeEach(Indices const& list);
    void reparent(Indices const& listed, Index newOwner, MoveLists& lists);
    void crossBoundary(Index connection, Indices const& listed, Index compound, bool listIsInside,
                       MoveLists& lists, Indices& outerOnes);
    Indices resolve(Index pin, Partners const& partners) const;
    bool recursiveSearch(Index connection, Index node, Index other, bool childIsSource) const;
    bool hasAdjacentTarget(unsigned int id, bool ignoreSelf) const;
    bool hasAdjacentSource(unsigned int id, bool ignoreSelf) const;

    int removals_ = 0; // one inside the other
};

template <class Value>
bool contains(std::vector<Value> const& list, Value const& value)
{
    for (Value const& each : list)
        if (each == value) return true;
    return false;
}

} // namespace kestrel::graph::test::model
