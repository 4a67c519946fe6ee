/// @file
#pragma once

#include <foundation/ArrayOfPtr.h>
#include <foundation/Color4.h>
#include <foundation/Flag.h>
#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <ks_graph/ks_graph_api.h>

#include <atomic>
#include <memory>
#include <string>

namespace kestrel::graph
{

class ConnectionIndex;
struct FormerPairs;
class GraphConnection;
class GraphNodeBase;
class GraphNodePin;
class GraphScene;

namespace detail
{

/// What `GraphNodePin` is made of. Of no use to a host.
/// @cond
/// One of the two lists, with an index beside it once a removal has met a long one.
class ConnectionList
{
public:
    ConnectionList();
    ConnectionList(ConnectionList const& other);
    ConnectionList& operator=(ConnectionList const& other);
    ~ConnectionList();

    ArrayOfPtr<GraphConnection, KS_NO> const& get() const { return connections_; }
    /// From here on the host may change the list, so no index can be trusted.
    ArrayOfPtr<GraphConnection, KS_NO>& expose();
    void set(ArrayOfPtr<GraphConnection, KS_NO> const& connections);
    void append(GraphConnection* connection);
    void removeFast(GraphConnection* connection, bool isExposed);

private:
    void prepareIndex(bool isExposed);

    ArrayOfPtr<GraphConnection, KS_NO> connections_;
    std::unique_ptr<ConnectionIndex> index_;
};

/// Small, since every pin has one, and held for a few steps only. Neither copied nor assigned with its pin.
class PinLock
{
public:
    PinLock() = default;
    PinLock(PinLock const&) {}
    PinLock& operator=(PinLock const&) { return *this; }

    void lock();
    void unlock();

private:
    std::atomic<bool> isHeld_{false};
};

/// An interface pin that is paired again leaves its compound pin with a link to it. Each of the two knows of
/// the other, so that none follows a pin that is gone. Neither copied nor assigned with its pin.
class FormerPairsOfPin
{
public:
    FormerPairsOfPin();
    FormerPairsOfPin(FormerPairsOfPin const&);
    FormerPairsOfPin& operator=(FormerPairsOfPin const&) { return *this; }
    ~FormerPairsOfPin();

    FormerPairs& make();
    FormerPairs* get() const { return pairs_.get(); }

private:
    std::unique_ptr<FormerPairs> pairs_; // few pins have any
};
/// @endcond

} // namespace detail

/// The direction of a pin. Every test of a direction asks whether two sets share a bit.
using PinDirection = Flag<GraphNodePin, unsigned int>;

/// The pin takes connections: it is their target.
inline constexpr PinDirection PIN_INPUT{1u};
/// The pin gives connections: it is their source.
inline constexpr PinDirection PIN_OUTPUT{2u};

/// One connection point of a node.
///
/// A pin has a direction, a capacity, a name, two colours and two lists of connections: its input connections
/// have it as target, its output connections as source. It decides nothing about wiring: the scene asks it
/// (`allowsConnectionTo`, `isFull`) and then enters the connection into its lists.
///
/// Ownership: a pin owns nothing it points at. The scene owns connections, the node owns its pins
/// (`GraphNodeBase::destroyNodePins`), and the pin goes after its connections: a pin that is deleted while it
/// is wired leaves connections that point nowhere. `GraphScene::removeNodePinFromSceneAndNode` does it right.
///
/// Pairs: the pin of an interface node has the pin of the compound around it as its parent pin, and that pin
/// has it as its child pin. Both links are plain pointers.
///
/// Threads: one lock per pin guards the two lists against `addInputConnection`,
/// `addOutputConnection`, `removeInputConnection` and `removeOutputConnection` on other threads. Nothing else
/// takes it, so whoever reads while another thread wires has to order the two.
///
/// A pin without a node answers false, null or nothing wherever it would have to ask its node, and its full
/// name is its bare name.
class KS_GRAPH_API GraphNodePin : public KS_Class
{
public:
    /// No id, capacity 0 (so it is always full), no direction, pure green, "Untitled".
    GraphNodePin();

    /// No id, darker green, "Untitled". The node is only stored: `GraphNodeBase::addNodePin` makes it the
    /// pin's owner.
    GraphNodePin(GraphNodeBase* parentNode, unsigned int const& maxNumConnections,
                 PinDirection const& direction);

    /// Copies everything but the lock, connection lists included: both pins then list the same connections,
    /// which know nothing of the copy.
    GraphNodePin(GraphNodePin const& other);
    GraphNodePin& operator=(GraphNodePin const& other);

    ~GraphNodePin() override;

    /// @name Kind. The first four ask the parent node.
    /// @{
    virtual bool isCompoundPin() const;
    virtual bool isInterfacePin() const;
    virtual bool isEvaluatorPin() const;
    virtual bool isPassThroughPin() const;
    /// False; a hook for hosts, as are `isEditable` and `isUpdating`.
    virtual bool isDirty() const;
    /// False.
    virtual bool isEditable() const;
    /// Whether it is an interface, a compound or an evaluator pin, asked in this order.
    virtual bool isDynamic() const;
    /// False.
    virtual bool isUpdating() const;
    /// @}

    /// @name Wiring rules
    /// @{

    /// Whether this pin takes a connection that comes from `other`. The base asks for the input bit here and
    /// the output bit there; false for null. The node's and, through `allowsConnectionTo`, the scene's wiring
    /// rules end here, so this is where a host refuses, say, a connection between different types.
    virtual bool allowsConnectionFrom(GraphNodePin const* other) const;

    /// Whether a connection may go from this pin to `other`: the base asks
    /// `other->allowsConnectionFrom(this)`. `GraphScene::connect` asks it first of all. False for null.
    virtual bool allowsConnectionTo(GraphNodePin const* other) const;
    /// @}

    /// @name Links
    /// @{
    virtual GraphNodeBase* getParentGraphNodePtr() const;
    /// Only stores the pointer; called by `GraphNodeBase::addNodePin` and `removeNodePin`.
    virtual void setParentGraphNodePtr(GraphNodeBase* node);
    /// The interface pin inside, for the pin of a compound.
    virtual GraphNodePin* getChildGraphNodePinPtr() const;
    virtual void setChildGraphNodePinPtr(GraphNodePin* pin);
    /// The node of the child pin, or null.
    virtual GraphNodeBase* getChildInterfaceNodePtr() const;
    /// The compound's pin outside, for the pin of an interface node.
    virtual GraphNodePin* getParentGraphNodePinPtr() const;
    virtual void setParentGraphNodePinPtr(GraphNodePin* pin);
    /// The scene of the parent node, or null.
    virtual GraphScene* getParentGraphScenePtr() const;
    /// @}

    /// @name Name
    /// @{
    virtual KS_String getName();

    /// "<full name of the node>.<name>"; the bare name without a node. Grows with the depth of the node.
    virtual KS_String getFullName();

    /// Renames the pin, then the parent pin of an interface pin, then tells the scene, so that
    /// `getPinPtrByFullName` follows. The scene is told only when the full name has really changed.
    virtual void setName(KS_String const& name);
    /// @}

    /// The pin's element in the scene XML: direction, capacity and the id of its node, -1 without one.
    virtual KS_String toXml();

    /// Whether either list holds a connection.
    virtual bool isConnected() const;

    /// Whether the two lists together, implicit connections included, have reached the capacity. A capacity
    /// of 0 is always full. `GraphScene::connect` asks it of both ends.
    virtual bool isFull() const;

    /// Nothing; a hook.
    virtual void update();

    /// Whether it is an input and an output pin.
    virtual bool isBidirectionalPin() const;

    /// All four are for the host to draw with; plain storage.
    virtual Color4<float> getBorderColor();
    virtual Color4<float> getColor();
    virtual void setBorderColor(Color4<float> const& color);
    virtual void setColor(Color4<float> const& color);

    /// @name Texts for the host to override; empty here
    /// @{
    virtual KS_String getInfo();
    virtual KS_String getDescription();
    virtual KS_String asHTML();
    /// @}

    /// @name Entering and leaving the connection lists, under the pin's lock
    /// The scene calls the adding ones itself and the removing ones through the connection; they change one
    /// list and nothing else. Adding appends, also what is already there; removing takes out the first entry,
    /// moves the last one into its place, and does nothing if there is none. A null connection is ignored.
    /// Constant time on average, however long the list, until `refInputConnections` or `refOutputConnections`
    /// has put that list into the host's hands: from then on a removal searches it.
    /// @{
    virtual void addInputConnection(GraphConnection* connection);
    virtual void addOutputConnection(GraphConnection* connection);
    /// An override of a removal does not throw: a `connect` that fails half-way calls it.
    virtual void removeInputConnection(GraphConnection* connection);
    /// Likewise.
    virtual void removeOutputConnection(GraphConnection* connection);
    /// @}

    /// @name Internal connections: links inside a node, from an input pin to an output pin
    /// They are hooks: a pin that has internal connections of its own overrides them.
    /// @{

    /// Only for the first of the node's input pins.
    virtual bool allowsInternalConnections() const;
    /// False.
    virtual bool hasInternalConnections() const;
    /// True.
    virtual bool allowsNewOrRemovalOfInternalConnections() const;
    /// Both append the node's output pins, nothing for a pin with the output bit; true if `out` holds any
    /// then.
    virtual bool internalConnections(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    virtual bool allowedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// Null.
    virtual GraphNodePin* forcedInternalConnection() const;
    /// Nothing.
    virtual void forcedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// Both ask `allowedInternalConnections` and change nothing.
    virtual void addInternalConnection(GraphNodePin* pin);
    virtual void removeInternalConnection(GraphNodePin* pin);
    /// @}

    /// Both look at their bit of the direction.
    bool isInputPin() const { return direction_.hasAny(PIN_INPUT); }
    bool isOutputPin() const { return direction_.hasAny(PIN_OUTPUT); }

    /// 0xFFFFFFFF until `GraphScene::createNewPin` gives one. Setting it tells no map.
    unsigned int const& getId() const { return id_; }
    void setId(unsigned int const& id) { id_ = id; }

    /// The capacity, both directions together; 0xFFFFFFFF is as good as no limit. Lowering it removes
    /// nothing.
    unsigned int const& getMaxNumConnections() const { return maxNumConnections_; }
    void setMaxNumConnections(unsigned int const& count) { maxNumConnections_ = count; }

    /// Connections that are there stay when the direction changes, though they may no longer be connected.
    PinDirection const& getDirection() const { return direction_; }
    void setDirection(PinDirection const& direction) { direction_ = direction; }

    /// @name The connection lists themselves, without lock
    /// `set` replaces a list and tells neither the connections nor the scene.
    /// @{
    ArrayOfPtr<GraphConnection, KS_NO> const& getInputConnections() const { return inputConnections_.get(); }
    ArrayOfPtr<GraphConnection, KS_NO>& refInputConnections();
    void setInputConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections);
    ArrayOfPtr<GraphConnection, KS_NO> const& getOutputConnections() const
    {
        return outputConnections_.get();
    }
    ArrayOfPtr<GraphConnection, KS_NO>& refOutputConnections();
    void setOutputConnections(ArrayOfPtr<GraphConnection, KS_NO> const& connections);
    /// @}

    /// @name Counting
    /// @{
    unsigned int getNumConnections() const;
    unsigned int getNumConnections(PinDirection const& direction) const;
    bool hasConnections() const;
    bool hasConnections(PinDirection const& direction) const;
    /// @}

    /// @name Gathering connections
    /// Each appends to `out`, input connections first, in list order, and returns whether `out` holds any
    /// afterwards.
    /// @{

    /// With `includeImplicit`, the lists that `direction` selects. Without it, the direction is not looked
    /// at: the connections of both lists that are not implicit.
    bool getConnections(PinDirection const& direction, ArrayOfPtr<GraphConnection, KS_NO>& out,
                        bool const& includeImplicit) const;
    bool getConnections(ArrayOfPtr<GraphConnection, KS_NO>& out, bool const& includeImplicit) const;

    /// The input connections that come from `pin` and the output connections that go to it.
    bool getConnectionsWithPin(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out,
                               bool const& inputs, bool const& outputs, bool const& includeImplicit) const;
    bool getInputConnectionsWithPin(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                    bool const& includeImplicit) const;
    bool getOutputConnectionsWithPin(GraphNodePin const* pin, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                     bool const& includeImplicit) const;

    /// The same with any pin of `node`.
    bool getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                bool const& inputs, bool const& outputs, bool const& includeImplicit) const;
    /// @}

    /// @name Whether the gathering of the same name would find any
    /// @{
    bool hasConnectionsWithPin(GraphNodePin const* pin, bool const& inputs, bool const& outputs,
                               bool const& includeImplicit) const;
    bool hasInputConnectionsWithPin(GraphNodePin const* pin, bool const& includeImplicit) const;
    bool hasOutputConnectionsWithPin(GraphNodePin const* pin, bool const& includeImplicit) const;
    bool hasConnectionsWithNode(GraphNodeBase const* node, bool const& inputs, bool const& outputs,
                                bool const& includeImplicit) const;
    /// @}

private:
    friend class FullNameText;
    friend class GraphScene;

    bool appendOutputPinsOfNode(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;

    void keepFormerParent(GraphNodePin& parent);
    GraphNodePin* takeFormerParent() noexcept;
    void leaveFormerChild() noexcept;

    // First what wiring needs, in as few cache lines as can be.
    unsigned int id_ = 0xFFFFFFFFu;
    unsigned int maxNumConnections_ = 0;
    GraphNodeBase* parentNode_ = nullptr;
    PinDirection direction_;
    detail::PinLock lock_;
    bool outputsAreExposed_ = false; // the host has the list in hand, and may change it at any time
    bool inputsAreExposed_ = false;
    detail::ConnectionList outputConnections_;
    detail::ConnectionList inputConnections_;
    GraphNodePin* childPin_ = nullptr;
    GraphNodePin* parentPin_ = nullptr;
    detail::FormerPairsOfPin formerPairs_;
    std::string name_;
    Color4<float> borderColor_;
    Color4<float> color_;
};

} // namespace kestrel::graph
