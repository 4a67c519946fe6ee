/// @file
#pragma once

#include <foundation/Array.h>
#include <foundation/ArrayOfPtr.h>
#include <foundation/Color4.h>
#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/Message.h>
#include <ks_graph/ks_graph_api.h>

#include <map>
#include <memory>
#include <string_view>

namespace kestrel::graph
{

template <class T>
class IdMap;
struct HashedText;
struct PinRename;
struct PinRenames;
struct SceneRegistry;

/// One graph: the registry of its nodes and pins, its connections, the rules and factories of wiring, and the
/// moves into and out of compounds.
///
/// Invariants, as long as the host changes the graph through the scene:
/// - every connection of the array is in its source pin's output list and in its target pin's input list;
/// - the id map holds every registered node under its id; the pin maps hold every registered pin under its id
///   and, if it had a node when it was registered, under its full name;
/// - with `useAdjacencyMap`, the adjacency counts are those of the connections.
///
/// Nearly everything is virtual, and the scene calls its own operations through the virtual ones: a host that
/// overrides `createGraphConnection`, `getFreeNodeId` or `removeConnection` takes part everywhere.
///
/// Ownership: the scene owns its connections: it makes them through `createGraphConnection` and deletes them
/// in `removeConnection`. It deletes nodes only in `removeAllNodes` and `clear`; a node that was removed by
/// `removeNodeFromGraph` is the caller's. Nodes own their pins. The destructor deletes neither nodes nor
/// connections: a host calls `clear` first, and deletes the root node, which `clear` spares while
/// `keepRootNode` is set.
///
/// The destruction of a node does not delete its pins: see `GraphNodeBase`.
///
/// Null pointers and unknown ids give false, null or no effect. Operations that gather append to the caller's
/// list, never empty it first, and return whether it holds anything afterwards. Lists that are passed in may
/// be the scene's or a node's own.
///
/// Threads: one thread at a time may use a scene; different scenes may be built on different threads, as long
/// as the host's callbacks allow it.
class KS_GRAPH_API GraphScene : public KS_Class
{
public:
    /// Takes the next value of `lastUsedId_` as the scene's id.
    GraphScene();

    /// Copies every field, the id too: both scenes then hold the same nodes, pins and connections, which
    /// still belong to the other one: what one of them deletes dangles in the other. For a host that keeps a
    /// record of a scene's state.
    GraphScene(GraphScene const& other);
    GraphScene& operator=(GraphScene const& other);

    /// Deletes neither nodes nor connections.
    ~GraphScene() override;

    /// @name Callbacks: one set for all scenes of the process, null at start, without a lock
    /// The owner is that of the node, or of the connection's source node, at the moment of the call.
    /// @{
    using NodeCallback = void (*)(GraphScene* scene, GraphNodeBase* owner, GraphNodeBase* node);
    using PinCallback = void (*)(GraphScene* scene, GraphNodeBase* owner, GraphNodePin* pin);
    using ConnectionCallback = void (*)(GraphScene* scene, GraphNodeBase* owner, GraphConnection* connection);

    /// After a node was added to the graph.
    static NodeCallback addNodeCallback_;
    /// While a node is removed: without children and without connections but the implicit ones, still
    /// registered and owned. `removeAllNodes` fires it only for compounds.
    static NodeCallback removeNodeCallback_;
    /// Fired by `GraphNodeBase::addNodePin` and `removeNodePin`, with the owner of the pin's node. Without an
    /// owner, the first is not fired, the second gets null.
    static PinCallback addNodePinCallback_;
    static PinCallback removeNodePinCallback_;
    /// Never fired by the library.
    static PinCallback updateNodePinCallback_;
    /// After a connection was made.
    static ConnectionCallback addConnectionCallback_;
    /// Before a connection is taken out, while it is still fully wired.
    static ConnectionCallback removeConnectionCallback_;
    /// Never fired by the library, both.
    static NodeCallback groupNodeCallback_;
    static NodeCallback ungroupNodeCallback_;
    /// @}

    /// The scene id that was given out last; 0 at start. Copies take none. Counted without a race between
    /// threads.
    static unsigned int lastUsedId_;

    /// @name Looking up
    /// @{

    /// Null for 0xFFFFFFFF, which is no id, and for an unknown one. Constant for ids that lie close together,
    /// as those of `getFreeNodeId` do, else logarithmic.
    virtual GraphNodeBase* getNodePtrById(unsigned int const& id) const;

    /// The root node if its full name is `name`, registered or not; else the first registered node of that
    /// full name, by ascending id; else null. Constant on average, with the depth, for nodes whose names are
    /// read (`declarePlainNames`); each node of another class that comes before the one that is found is
    /// asked for its `getFullName()`.
    virtual GraphNodeBase* getNodePtrByFullName(KS_String const& name) const;

    /// False for 0xFFFFFFFF, too.
    virtual bool hasGraphNodeWithId(unsigned int const& id) const;

    /// Every compound, from the root node down, each before what is in it. Nodes that are not compounds are
    /// not entered.
    virtual void getAllGraphCompounds(ArrayOfPtr<GraphNodeBase, KS_NO>& out) const;
    /// @}

    /// @name Connected nodes
    /// @{

    /// The nodes at the other ends, and the node itself, of the node's connections: see
    /// `getNodesConnectedBase`. `unique` and `includeImplicit` stand in this order here and are handed on in
    /// the other. False, with nothing appended, when there are no such connections.
    virtual bool getNodesConnectedWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphNodeBase, KS_NO>& out,
                                           bool const& addTargets, bool const& addSources,
                                           bool const& skipSameNode, bool const& unique,
                                           bool const& includeImplicit) const;
    /// Appends, connection by connection, its target and then its source node, each unless `out` already
    /// holds it. `skipSameNode` leaves out connections from a node to itself. Always true.
    virtual bool getNodesConnectedBase(ArrayOfPtr<GraphConnection, KS_NO> const& connections,
                                       ArrayOfPtr<GraphNodeBase, KS_NO>& out, bool const& addTargets,
                                       bool const& addSources, bool const& skipSameNode) const;
    /// @}

    /// @name Connectable pins
    /// Null gives false. With `excludeFull`, full pins are removed from the whole of the lists afterwards,
    /// and the result is whether the lists (both of them) hold any pin, whatever the nodes said. Two nodes
    /// are asked pair by pair: the cost is the number of pins of the one times that of the other.
    /// @{

    /// The pins of `node` that take a connection from `pin`.
    virtual bool getConnectablePins(GraphNodePin const* pin, GraphNodeBase const* node,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& excludeFull) const;
    /// The pins of `node` that may feed `pin`.
    virtual bool getConnectablePins(GraphNodeBase const* node, GraphNodePin const* pin,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& excludeFull) const;
    /// The pins of both that may be wired; a pin of several pairs appears several times.
    virtual bool getConnectablePins(GraphNodeBase const* source, GraphNodeBase const* target,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& sourcePins,
                                    ArrayOfPtr<GraphNodePin, KS_NO>& targetPins,
                                    bool const& excludeFull) const;
    /// The pins of `node` that take a connection from `pin` or, without `pinIsSource`, may feed it. Not
    /// virtual.
    bool getConnectablePins(GraphNodePin const* pin, GraphNodeBase const* node, bool const& pinIsSource,
                            ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& excludeFull) const;
    /// @}

    /// @name Pins and their connections; a null pin gives false, or 0xFFFFFFFF as a number
    /// @{

    /// Asks the pin; `connect` asks this for both ends.
    virtual bool isPinFull(GraphNodePin const* pin) const;
    virtual bool hasPinConnections(GraphNodePin const* pin) const;
    virtual bool hasPinConnections(GraphNodePin const* pin, PinDirection const& direction) const;
    virtual unsigned int getPinNumConnections(GraphNodePin const* pin) const;
    virtual unsigned int getPinNumConnections(GraphNodePin const* pin, PinDirection const& direction) const;
    /// @}

    /// Nothing; a hook for an evaluating host.
    virtual void getEvaluablePins(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;

    /// @name Connections alike
    /// @{

    /// Whether the *input* list of the connection's source pin holds one that comes from its target pin. This
    /// is the test of `connect` when duplicates are forbidden, and it looks at that list on purpose: a second
    /// connection from a to b passes, one from b to a does not.
    virtual bool hasConnectionsLikeThis(GraphConnection const& connection) const;
    /// The connections from the same source to the same target pin. False, with nothing appended, when it is
    /// not connected.
    virtual bool getConnectionsLikeThis(GraphConnection const& connection,
                                        ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    /// @}

    /// Whether a connection leads from `a` to `b`, or, with `eitherDirection`, from `b` to `a`. With
    /// `useAdjacencyMap` a look-up, without it a walk over all connections.
    virtual bool areNodesConnected(GraphNodeBase const* a, GraphNodeBase const* b,
                                   bool const& eitherDirection, bool const& includeImplicit) const;

    /// @name Gathering connections
    /// @{

    /// Both directions, implicit ones included.
    virtual bool getPinConnections(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    virtual bool getPinConnections(GraphNodePin const* pin, PinDirection const& direction,
                                   ArrayOfPtr<GraphConnection, KS_NO>& out) const;

    /// Each pin of the node with the pins at the other ends of its connections. A key that is there stays as
    /// it is.
    virtual void getNodeConnectionsByPin(GraphNodeBase* node,
                                         std::map<GraphNodePin*, ArrayOfPtr<GraphNodePin, KS_NO>>& out) const;
    /// Each pin of the node with its connections. A key that is there stays as it is.
    virtual void getNodeConnectionsByPin(
        GraphNodeBase* node, std::map<GraphNodePin*, ArrayOfPtr<GraphConnection, KS_NO>>& out) const;

    /// What `GraphNodeBase::getConnections` gathers with the same four flags.
    virtual bool getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                        bool const& outputs, bool const& inputs, bool const& includeImplicit,
                                        bool const& unique) const;
    virtual bool getConnectionsWithNode(unsigned int const& id, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                        bool const& outputs, bool const& inputs, bool const& includeImplicit,
                                        bool const& unique) const;
    /// What `GraphNodeBase::getConnectionsWithNode` gathers with the same three flags.
    virtual bool getConnectionsBetweenNodes(GraphNodeBase const* a, GraphNodeBase const* b,
                                            bool const& bothDirections, bool const& includeImplicit,
                                            bool const& unique,
                                            ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    /// The connections of every listed node, node by node. `unique` removes repeats from the whole of `out`.
    virtual bool getConnectionsInvolvingNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes,
                                              bool const& skipInterfaces, bool const& includeImplicit,
                                              bool const& unique,
                                              ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    /// The same, each once, and only those with both ends in the list. What `out` held before is filtered
    /// too.
    virtual bool getConnectionsInvolvingOnlyNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes,
                                                  bool const& skipInterfaces, bool const& includeImplicit,
                                                  ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    /// @}

    /// @name Wiring rules: what an editor asks while the user drags
    /// @{
    /// Asks the node alone, not whether pins are full: `allowsConnectionFrom(pin)`, or, when the pin is not
    /// the source, `allowsConnectionTo(pin)`, which is false for plain pins though `connect` would wire them
    /// (see there). `getConnectablePins` tells what `connect` finds.
    virtual bool isConnectionAllowed(GraphNodePin const* pin, GraphNodeBase const* node,
                                     bool const& pinIsSource) const;
    virtual bool isConnectionAllowed(GraphNodePin const* pin, GraphNodeBase const* node) const;
    virtual bool isConnectionAllowed(GraphNodeBase const* node, GraphNodePin const* pin) const;
    /// `source->allowsConnectionTo(target)`, and neither pin full.
    virtual bool isConnectionAllowed(GraphNodePin const* source, GraphNodePin const* target) const;
    /// `source->allowsConnectionTo(target)`; the target is not asked, nor whether pins are full.
    virtual bool isConnectionAllowed(GraphNodeBase const* source, GraphNodeBase const* target) const;
    /// @}

    /// 0; a hook.
    virtual unsigned int getGraphType() const;
    /// Nothing; a hook for an evaluating host.
    virtual void run();

    /// Removes all connections, then all nodes (`removeAllNodes`, which deletes them), the adjacency counts,
    /// the last imported lists and the scene's messages, and starts the free ids again. The pin maps are left
    /// alone: a host that clears a scene to use it again removes the pins of its nodes first
    /// (`removeNodePins`), or keeps stale entries under their names.
    virtual void clear();

    /// Empties the scene's messages and, unless `clear` is at work, calls `clearMessages()` of every node.
    virtual void clearMessages();
    /// Nothing; a hook.
    virtual void purge();

    /// @name Node colours
    /// @{

    /// Empties the table. A host overrides it, calls the base, and fills `nodeColorMap_`. Nothing here calls
    /// it.
    virtual void setupNodeColor();
    /// The colour of a type, whatever the case of its letters; (0.6, 0.7, 0.8, 1) for an unknown one.
    virtual Color4<float> getColorFromNodeType(KS_String const& type) const;
    /// By the node's `getType()`; the default colour for null.
    virtual Color4<float> getColorFromNodeType(GraphNodeBase* node) const;
    /// Whether the table has the type, whatever the case of its letters.
    virtual bool hasColorForNodeType(KS_String const& type) const;
    /// @}

    /// The scene as XML: the nodes by ascending id, whatever their place in the tree, then the connections in
    /// the order of the array, each through its virtual `toXml`. Linear in the text.
    virtual KS_String toXml() const;

    /// @name Adding and removing nodes
    /// @{

    /// Registers the node under its id, calls `onAddingToScene`, sets its scene, gives it the root node as
    /// owner if it has none, and fires `addNodeCallback_`. Its pins are not registered: `addNodePin` does
    /// that. False for null and for an id that is taken; the latter clears the dirty flag.
    virtual bool addNodeToGraph(GraphNodeBase* node);

    /// Removes the node's connections (implicit ones stay: see `removeConnectionsWithNode`), everything below
    /// it by this same operation, the pins of an interface node, fires `removeNodeCallback_`, calls
    /// `onRemovingFromScene`, and takes it out of the tree and of the id map. Pins of other nodes stay
    /// registered: call `removeNodePins` first if the node is not coming back. The node is not deleted, and
    /// keeps its scene pointer; a root node that is removed remains `getRootNode()`. False for 0xFFFFFFFF and
    /// an unknown id.
    virtual bool removeNodeFromGraph(unsigned int const& id);
    virtual bool removeNodeFromGraph(GraphNodeBase* node);

    /// Removes every child of the compound from the graph and empties its list. The nodes are not deleted; a
    /// child that is not registered goes on naming the compound as its owner.
    virtual void removeNodesInCompoundFromGraph(GraphNodeBase* compound);
    /// @}

    /// @name Making nodes: with a free id, neither named nor added; the caller owns them
    /// A host overrides them for node classes of its own.
    /// @{

    /// With the compound flag set; an override sets it, too.
    virtual GraphNodeBase* createNewCompound();
    /// With the interface flag set; an override sets it, too.
    virtual GraphNodeBase* createNewInterfaceNode();
    /// Both a plain node.
    virtual GraphNodeBase* createNewPassThrough();
    virtual GraphNodeBase* createNewEvaluator();
    /// @}

    /// Deletes every node below the root, deepest first, and the root too unless `keepRootNode` is set; then
    /// empties the id map (a kept root is no longer registered) and the root's children.
    /// `removeNodeCallback_` fires only for compounds. Connections, pin maps and adjacency are left alone, so
    /// a host calls `clear`, or removes the connections first. Registered nodes outside the root's tree are
    /// forgotten, not deleted. Always true.
    /// Until the end the maps and lists still hold nodes that are gone: a callback, and the destructor of a
    /// host's node, must not look nodes up.
    virtual bool removeAllNodes();

    /// @name Compounds and interfaces
    /// A compound's inner nodes reach the outside through interface nodes: an input interface node inside
    /// stands for input pins of the compound. Each compound pin is paired with one interface pin of the
    /// opposite direction, both without limit of connections.
    ///
    /// The moves append to their lists and insert into their maps, never overwriting:
    /// - `pinRenames`: the full name of each pin of a moved node after the move, with the one before it;
    /// - `inputInterfaces`, `outputInterfaces`: a moved node with the interface node that serves it in that
    ///   direction; pass the same maps again to go on using those nodes;
    /// - `newInterfaceNodes`, `newCompoundPins`: what was made;
    /// - `removedConnections`, `removedOuterConnections`: values of the connections that were deleted.
    ///
    /// Interface nodes in the list are not moved; a move out replaces their connections all the same. A moved
    /// node whose name is taken at its new place, whatever the case of its letters, gets a free one; so does
    /// a node that is there already, whose own name it is. Connections that `connect` refuses are null
    /// entries. Implicit connections are left alone, but for the outer ones that a move out takes. A compound
    /// may be moved like any node. All moves return true.
    ///
    /// The new pins come from `createNewPin` and know nothing of the connection that they replace, which is
    /// deleted before its halves are made: a half that is refused is lost. So a host whose pins refuse some
    /// types lets a fresh pin take any, and learn its type in `addInputConnection` and `addOutputConnection`,
    /// as the pins of `examples/material_graph` do.
    ///
    /// To dissolve a compound, move out a copy of its children, then `removeNodePins` of each interface node
    /// left in it and of the compound, `removeNodeFromGraph` of the compound, and delete them.
    /// @{

    /// Moves nodes into the compound. A connection that then crosses the boundary is replaced by two, through
    /// a new pair of pins: `innerConnections` and `outerConnections` take the new ones.
    virtual bool moveNodesToCompound(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, GraphNodeBase* compound,
                                     std::map<KS_String, KS_String>& pinRenames,
                                     std::map<GraphNodeBase*, GraphNodeBase*>& inputInterfaces,
                                     std::map<GraphNodeBase*, GraphNodeBase*>& outputInterfaces,
                                     ArrayOfPtr<GraphNodeBase, KS_NO>& newInterfaceNodes,
                                     ArrayOfPtr<GraphNodePin, KS_NO>& newCompoundPins,
                                     Array<GraphConnection, _Wa>& removedConnections,
                                     ArrayOfPtr<GraphConnection, KS_NO>& outerConnections,
                                     ArrayOfPtr<GraphConnection, KS_NO>& innerConnections);

    /// Makes an interface node in the compound with its first pair of pins. `direction` is that of the
    /// compound pin. The interface node is added to the graph. False, and null, without a compound.
    virtual bool addCompoundInterfaceNode(PinDirection const& direction, GraphNodeBase* compound,
                                          GraphNodeBase*& interfaceNode, GraphNodePin*& compoundPin,
                                          GraphNodePin*& interfacePin);

    /// Moves nodes out of the compound to the compound's owner. A connection to or from an interface pin
    /// becomes direct ones to the pins behind it (`newConnections`); any other one that then crosses the
    /// boundary is dropped. The outer connections of the output side go (`removedOuterConnections`); those of
    /// the input side stay, so the outside goes on feeding the compound. Interface nodes and compound pins
    /// stay even when nothing is wired to them. `spareConnections` is not used.
    virtual bool removeNodesFromCompound(GraphNodeBase* compound, ArrayOfPtr<GraphNodeBase, KS_NO>& nodes,
                                         std::map<KS_String, KS_String>& pinRenames,
                                         Array<GraphConnection, _Wa>& removedOuterConnections,
                                         Array<GraphConnection, _Wa>& removedConnections,
                                         ArrayOfPtr<GraphConnection, KS_NO>& newConnections,
                                         ArrayOfPtr<GraphConnection, KS_NO>& spareConnections);

    /// The same, but a connection that would be dropped is led through a new pair of pins: its outer half
    /// goes to `newConnections`, its inner half to `innerConnections`.
    virtual bool removeNodesFromCompoundCreatingInterfaces(
        GraphNodeBase* compound, ArrayOfPtr<GraphNodeBase, KS_NO>& nodes,
        std::map<KS_String, KS_String>& pinRenames, Array<GraphConnection, _Wa>& removedOuterConnections,
        Array<GraphConnection, _Wa>& removedConnections, ArrayOfPtr<GraphConnection, KS_NO>& newConnections,
        ArrayOfPtr<GraphConnection, KS_NO>& innerConnections,
        std::map<GraphNodeBase*, GraphNodeBase*>& inputInterfaces,
        std::map<GraphNodeBase*, GraphNodeBase*>& outputInterfaces,
        ArrayOfPtr<GraphNodeBase, KS_NO>& newInterfaceNodes,
        ArrayOfPtr<GraphNodePin, KS_NO>& newCompoundPins);
    /// @}

    /// @name Free ids and names
    /// None is reserved: until it is used, the same one is given again. Names are short names; the owner's or
    /// node's full name says where they have to be free. Nothing is cut from the base name.
    /// @{

    /// The first id, from the one given out last, that `getNodePtrById` does not find. Ids below that one are
    /// not given again before `clear`.
    virtual unsigned int getFreeNodeId();
    /// "<base>01", "<base>02", ..., the first that `getNodePtrByFullName` does not find; never the bare base.
    virtual KS_String getFreeNodeName(KS_String const& ownerFullName, KS_String const& baseName);
    /// For the base "compound".
    virtual KS_String getFreeNodeCompoundName(KS_String const& ownerFullName);
    /// For the base "input interface" when `direction` has the input bit, else "output interface".
    virtual KS_String getFreeInterfaceNodeName(KS_String const& ownerFullName, PinDirection const& direction);
    /// @}

    /// @name Making and registering pins
    /// A registered pin is found by its id and, once it has a node, by its full name. A key that is taken
    /// keeps its pin, so of two pins of one full name only the first is found; the entry then follows the
    /// rename of either.
    /// @{

    /// A new registered pin of the node, made by the other `createNewPin`. It is named "Untitled": name it
    /// before the next pin of the node is made, or the two share one entry and the second is not found by
    /// name. The node owns it. Null, with nothing made, without a node, and null when `addNodePin` refused
    /// the pin. A pin that the node itself refuses is returned without node, registered under its bare name.
    virtual GraphNodePin* createNewPin(GraphNodeBase* node, unsigned int const& maxNumConnections,
                                       PinDirection const& direction);
    /// A new registered pin without node, which the caller owns, with an id of its own in the process. This
    /// is the one to override for a pin class of the host's: it gives the pin an id that no other pin of the
    /// scene has and registers it with `addNodePin`. When an override of `addNodePin` refuses it, null, and
    /// the pin is left to that override.
    virtual GraphNodePin* createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction);

    /// Registers the pin. True whether or not its keys were free; false for null. The dirty flag tells
    /// whether the last insertion added an entry.
    virtual bool addNodePin(GraphNodePin* pin);
    /// Registers the pin, then adds it to the node: a pin that had no node before is registered by its id
    /// alone. False as soon as either says no.
    virtual bool addNodePin(GraphNodeBase* node, GraphNodePin* pin);
    /// The result for the last pin; true for an empty list.
    virtual bool addNodePins(GraphNodeBase* node, ArrayOfPtr<GraphNodePin, KS_NO> const& pins);

    /// Takes the pin's id and full name out of the maps, whichever pin is registered under them. The pin
    /// stays on its node and wired. False for null.
    virtual bool removeNodePin(GraphNodePin* pin);
    /// `removeNodePinFromSceneAndNode` for each pin of the node. So compound pins without an interface pin
    /// stay.
    virtual void removeNodePins(GraphNodeBase* node);
    /// Ends the life of the pin: its connections go, then those of the compound pin paired with an interface
    /// pin and that pin itself, then the pin; both are unregistered, taken off their nodes and deleted. For a
    /// compound pin, the paired interface pin is removed, and the compound pin with it; a compound pin
    /// without one stays.
    virtual void removeNodePinFromSceneAndNode(GraphNodePin* pin);

    /// Adds a pair of pins to an interface node. `direction` is that of the compound pin, compared as a
    /// whole: anything but exactly PIN_INPUT makes an output pin of the compound. The interface pin gets a
    /// free name from "input" or "output"; the compound pin, through the pairing, the same. False, with
    /// nothing made and both pins null, when the interface node is in no compound; false too, with whatever
    /// was made by then, when a host's override gives no pin.
    virtual bool addCompoundInterfacePin(PinDirection const& direction, GraphNodeBase* interfaceNode,
                                         GraphNodePin*& compoundPin, GraphNodePin*& interfacePin);
    /// Makes the compound pin for an interface pin, in the opposite direction, and pairs the two. Null, with
    /// nothing made, when the interface pin's node has no owner.
    virtual GraphNodePin* createCompoundPinForInterfacePin(GraphNodePin* interfacePin);

    /// `baseName` itself, else "<base>01", "<base>02", ..., the first that no registered pin of the node has.
    virtual KS_String getFreePinName(KS_String const& nodeFullName, KS_String const& baseName);
    /// @}

    /// @name Wiring
    /// All of them return the new connection, which the scene owns, or null when nothing was made; the scene
    /// is then as it was. A null pin or node makes nothing. Between two pins, constant on average.
    /// @{

    /// Makes the connection object and nothing else; `connect` takes it over. A host overrides it for a class
    /// of its own; null refuses the connection.
    virtual GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target);

    /// To the first of the node's pins that takes `pin`; no other is tried.
    virtual GraphConnection* connect(GraphNodePin const* pin, GraphNodeBase const* node,
                                     bool const& implicit);
    /// From the first of the node's pins that may feed `pin`.
    virtual GraphConnection* connect(GraphNodeBase const* node, GraphNodePin const* pin,
                                     bool const& implicit);
    /// Asks `source->allowsConnectionTo(target)`, then `isPinFull` of both, then, when duplicates are
    /// forbidden, `hasConnectionsLikeThis`. Then makes the connection, enters it into the array, the two pins
    /// and the adjacency counts, and fires `addConnectionCallback_`. `allowLoops` is not asked.
    virtual GraphConnection* connect(GraphNodePin const* source, GraphNodePin const* target,
                                     bool const& implicit);
    /// Between the first pins that `getConnectablePins` finds; no other pair is tried.
    virtual GraphConnection* connect(GraphNodeBase const* source, GraphNodeBase const* target,
                                     bool const& implicit);
    /// @}

    /// @name Unwiring
    /// @{

    /// The node's connections but for the implicit ones: a host that deletes the node removes those by pin
    /// (`removeConnectionsWithPin`). False for null and an unknown id.
    virtual bool removeConnectionsWithNode(GraphNodeBase const* node);
    virtual bool removeConnectionsWithNode(unsigned int const& id);
    /// Implicit ones included. Linear in their number.
    virtual void removeConnectionsWithPin(GraphNodePin const* pin);
    /// Those that `getConnectionsBetweenNodes` gathers, each once.
    virtual void removeConnectionsBetweenNodes(GraphNodeBase const* a, GraphNodeBase const* b,
                                               bool const& bothDirections, bool const& includeImplicit);
    /// Fires `removeConnectionCallback_`, takes the connection out of the array (the last one moves into its
    /// place), of its pins and of the adjacency counts, and deletes it. A connection that is not in the array
    /// is unwired and deleted all the same. False for null. Constant on average, but for a connection
    /// that the host has moved within the array, or that is not there: the array is searched.
    virtual bool removeConnection(GraphConnection const* connection);
    /// Linear in their number. Always true.
    virtual bool removeAllConnections();
    /// @}

    /// What `connect` of a pin and a node does; `pinIsSource` says which way.
    virtual GraphConnection* connectBase(GraphNodePin const* pin, GraphNodeBase const* node,
                                         bool const& implicit, bool const& pinIsSource);

    /// @name Looking up, continued
    /// @{

    /// Null if there is none.
    GraphNodePin* getPinPtrById(unsigned int const& id) const;
    GraphNodePin* getPinPtrByFullName(KS_String const& name) const;
    /// The first pin, by full name, that is equal after the runtime's `tolower`. Linear in the registered
    /// pins.
    GraphNodePin* getPinPtrByFullNameCaseInsensitive(KS_String const& name) const;
    /// Every registered node by ascending id.
    bool getGraphNodesAsList(ArrayOfPtr<GraphNodeBase, KS_NO>& out) const;
    /// The node's children or, with `recursive`, `getNodesRecursively`.
    void getGraphNodesAtLevel(GraphNodeBase* node, bool const& recursive,
                              ArrayOfPtr<GraphNodeBase, KS_NO>& out) const;
    unsigned int getNumberOfNodes() const;
    unsigned int getNumberOfConnections() const;

    /// Whether the node has a connection in one of the directions. Without `useAdjacencyMap`, a walk over all
    /// connections. With it, the counts decide: the output bit then asks for both directions, and without it
    /// the answer is false.
    bool hasNodeAnyConnection(GraphNodeBase const* node, PinDirection const& direction,
                              bool const& ignoreNodeLoops) const;
    /// @}

    /// @name Called by nodes and pins after they changed, so that the maps follow
    /// A host's node class that overrides the naming of its nodes calls them too. An unknown old name or id
    /// changes nothing.
    /// @{

    /// A new id that is taken keeps its node; this one then is in the map no more.
    void updateNodeIdChange(GraphNodeBase* node, unsigned int const& oldId, unsigned int const& newId);
    /// With the bare names. Re-keys the pins of the node and of all below it.
    void updateRenamedNodeInMapByFullName(GraphNodeBase* node, KS_String const& oldName,
                                          KS_String const& newName);
    /// With the full names. Re-keys the pins of the node and of all below it.
    void updateReparentedNodeInMapByFullName(GraphNodeBase* node, KS_String const& oldFullName,
                                             KS_String const& newFullName);
    /// A new name that is taken keeps its pin.
    void updateRenamedPinInMapByFullName(KS_String const& oldFullName, KS_String const& newFullName);
    /// @}

    /// @name The connection array, in creation order until a removal moves the last one
    /// The host may reorder it; `set` replaces it and wires nothing. A removal costs the same whatever the
    /// length; once the host has had the array in hand, or a copy of the scene was made, it needs an index
    /// for that, which the first removal from a long array makes. Of a connection that the host has entered
    /// there twice, a removal then takes either entry, and leaves the other pointing to what is deleted.
    /// @{
    ArrayOfPtr<GraphConnection, KS_NO> const& getGraphConnections() const { return graphConnections_; }
    ArrayOfPtr<GraphConnection, KS_NO>& refGraphConnections();
    void setGraphConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections);
    /// @}

    /// @name Flags: plain storage, setting one changes nothing else
    /// @{

    /// True at start. When false, `connect` asks `hasConnectionsLikeThis`.
    bool const& getAllowDuplicatedConnections() const { return allowDuplicatedConnections_; }
    void setAllowDuplicatedConnections(bool const& allow) { allowDuplicatedConnections_ = allow; }
    /// True at start. Only stored: loops are for the pins' rules to refuse.
    bool const& getAllowLoops() const { return allowLoops_; }
    void setAllowLoops(bool const& allow) { allowLoops_ = allow; }
    /// Set by every change of the registry and the wiring; the host clears it. An insertion whose key is
    /// taken clears it, too.
    bool const& getIsDirty() const { return isDirty_; }
    void setIsDirty(bool const& dirty) { isDirty_ = dirty; }
    /// True at start.
    bool const& getKeepRootNode() const { return keepRootNode_; }
    void setKeepRootNode(bool const& keep) { keepRootNode_ = keep; }
    /// True at start. Turned on later, it counts only what is made from then on; turned off, it keeps its
    /// counts.
    bool const& getUseAdjacencyMap() const { return useAdjacencyMap_; }
    void setUseAdjacencyMap(bool const& use) { useAdjacencyMap_ = use; }
    /// @}

    /// The top of the tree, not owned while it is kept; null at start. Setting it registers nothing.
    GraphNodeBase* getRootNode() const { return rootNode_; }
    void setRootNode(GraphNodeBase* node) { rootNode_ = node; }

    /// @name The scene's own diagnostics; the library pushes none
    /// @{
    MessageHandler const& getMessages() const { return messages_; }
    MessageHandler& refMessages() { return messages_; }
    void setMessages(MessageHandler const& messages) { messages_ = messages; }
    /// @}

    /// The number of the scene in the process, from 1; that of its source for a copy.
    unsigned int const& getId() const { return id_; }

    /// @name What the host's last paste or import made; kept for it, emptied by `clear`
    /// @{
    ArrayOfPtr<GraphNodeBase, KS_NO> const& getLastImportedNodes() const { return lastImportedNodes_; }
    ArrayOfPtr<GraphNodeBase, KS_NO>& refLastImportedNodes() { return lastImportedNodes_; }
    void setLastImportedNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes) { lastImportedNodes_ = nodes; }
    ArrayOfPtr<GraphConnection, KS_NO> const& getLastImportedConnections() const
    {
        return lastImportedConnections_;
    }
    ArrayOfPtr<GraphConnection, KS_NO>& refLastImportedConnections() { return lastImportedConnections_; }
    void setLastImportedConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections)
    {
        lastImportedConnections_ = connections;
    }
    /// @}

protected:
    /// @name The registry's maps
    /// Inserting never replaces; it sets the dirty flag to, and returns, whether an entry was added. Removing
    /// an absent key is no error; it sets the dirty flag.
    /// @{
    bool insertNodeInMapById(unsigned int const& id, GraphNodeBase* node);
    bool insertPinInMapById(unsigned int const& id, GraphNodePin* pin);
    bool insertPinInMapByFullName(KS_String const& name, GraphNodePin* pin);
    void removeNodeFromMapById(unsigned int const& id);
    void removePinFromMapById(unsigned int const& id);
    void removePinFromMapByFullName(KS_String const& name);
    /// @}

    /// @name Adjacency counts, by node id
    /// One count of all connections from a node to a node, and one of those that are not implicit. Only a
    /// count above 0 is a connection. Null, and connections whose pins have no node, are ignored.
    /// @{
    void addConnectionToAdjacencyMaps(GraphConnection const* connection);
    /// May leave a count of -1 when the connection was never counted.
    void removeConnectionFromAdjacencyMaps(GraphConnection const* connection);
    bool isConnectionInAdjacencyMap(GraphNodeBase const* a, GraphNodeBase const* b,
                                    bool const& includeImplicit, bool const& eitherDirection) const;
    bool nodeHasConnectionsInAdjacencyMapAsSource(GraphNodeBase const* node, bool const& includeImplicit,
                                                  bool const& ignoreSelf) const;
    bool nodeHasConnectionsInAdjacencyMapAsTarget(GraphNodeBase const* node, bool const& includeImplicit,
                                                  bool const& ignoreSelf) const;
    bool nodeHasConnectionsInAdjacencyMap(GraphNodeBase const* node, bool const& includeImplicit,
                                          bool const& alsoAsTarget, bool const& ignoreSelf) const;
    /// The other direction, with `bothDirections`, adds at most 1. Mind the order of the two flags: it is not
    /// that of `isConnectionInAdjacencyMap`.
    int getNumberOfConnectionsInAdjacencyMap(GraphNodeBase const* a, GraphNodeBase const* b,
                                             bool const& bothDirections, bool const& includeImplicit) const;
    /// @}

private:
    // Lets the tests compare the maps with the graph.
    friend struct SceneInspector;
    // Tell the maps of a change that must not fail half-way.
    friend class GraphNodeBase;
    friend class GraphNodePin;

    void rekeyPins(PinRenames& renames) noexcept;
    void rekeyPin(PinRename&& rename) noexcept;
    void rekeyPinsBelow(GraphNodeBase* node, std::string_view oldFullName, std::string_view newFullName);
    static PinRenames pinRenamesBelow(GraphNodeBase const* node, std::string_view oldFullName,
                                      std::string_view newFullName);
    void insertUnderFullName(GraphNodePin& pin);
    void eraseFullName(HashedText const& name);
    bool hasPlainNames() const;
    GraphNodeBase* findAsked(IdMap<GraphNodeBase> const& nodes, KS_String const& fullName,
                             GraphNodeBase* plain) const;
    KS_String freePlainNodeName(KS_String const& ownerFullName, KS_String const& baseName) const;
    void gatherConnections(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes, bool skipInterfaces,
                           bool includeImplicit, ArrayOfPtr<GraphConnection, KS_NO>& out) const;
    void endPin(GraphNodePin* pin);
    void unregisterId(GraphNodePin const& pin);
    void swapState(GraphScene& other) noexcept;
    void removeEach(ArrayOfPtr<GraphConnection, KS_NO>& connections);
    void enter(GraphConnection* connection, GraphNodePin* source, GraphNodePin* target);
    void takeOutOfArray(GraphConnection* connection);
    unsigned int positionInArray(GraphConnection const* connection);
    void prepareArrayIndex();
    void countInAdjacencyMap(GraphConnection const* connection, int change);
    int countInAdjacencyMap(GraphNodeBase const* source, GraphNodeBase const* target,
                            bool includeImplicit) const;

    std::unique_ptr<SceneRegistry> registry_;
    ArrayOfPtr<GraphConnection, KS_NO> graphConnections_;
    bool allowDuplicatedConnections_ = true;
    bool allowLoops_ = true;
    bool isDirty_ = false;
    bool keepRootNode_ = true;
    GraphNodeBase* rootNode_ = nullptr;
    MessageHandler messages_;
    unsigned int id_;

protected:
    /// Colours by node type, with the type in lower case; filled by the host in `setupNodeColor`.
    std::map<KS_String, Color4<float>> nodeColorMap_;

private:
    bool useAdjacencyMap_ = true;
    ArrayOfPtr<GraphNodeBase, KS_NO> lastImportedNodes_;
    ArrayOfPtr<GraphConnection, KS_NO> lastImportedConnections_;
    bool clearing_ = false;
    unsigned int lastFreeNodeId_ = 1;
};

} // namespace kestrel::graph
