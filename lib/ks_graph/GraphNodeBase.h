/// @file
#pragma once

#include <foundation/Array.h>
#include <foundation/ArrayOfPtr.h>
#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/Message.h>
#include <ks_graph/ks_graph_api.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph
{

class ChildNames;
class GraphNodeBase;
class GraphScene;
class NodeNames;
class PinSet;
struct NodeTexts;

namespace detail
{

/// What `GraphNodeBase` keeps beside what it shows. Of no use to a host.
/// @cond
/// The pins, with a set of them beside the list once it is long.
struct NodePins
{
    ArrayOfPtr<GraphNodePin, KS_NO> list;
    mutable std::unique_ptr<PinSet> set;
    bool isExposed = false;
};

/// The children: kept by ChildList. A child that was removed may leave a gap, a null pointer, until the list
/// is looked at.
struct NodeChildren
{
    ArrayOfPtr<GraphNodeBase, KS_NO> list;
    unsigned int gaps = 0;
    unsigned int closedGaps = 0; // since the ranks were the places
    unsigned int nextRank = 0;
    bool isRegular = true; // each child stands here once and knows where, and this is its owner
    bool isShown = false;
    bool isExposed = false;
    std::unique_ptr<ChildNames> names;
};

/// This node among its owner's children: kept by ChildList.
struct PlaceInList
{
    unsigned int rank = 0; // ascending in list order; no child stands behind its rank
    bool isListed = false; // in the regular list of its owner
};

/// The nodes below by owner, whatever the lists of children hold: first below this one, next below its owner.
struct OwnerLinks
{
    GraphNodeBase* first = nullptr;
    GraphNodeBase* next = nullptr;
    GraphNodeBase** toThis = nullptr; // null without an owner, and when the owner is gone
};

/// This node in the index of full names: kept by NodeNames, but for the hash.
struct PlaceInNames
{
    std::uint64_t fullNameHash = 0;
    NodeNames* names = nullptr;
    unsigned int id = 0;
    bool isAsked = false;
};
/// @endcond

} // namespace detail

/// A node: an identity (id, name, type, category, description), an ordered list of pins, an owner node and an
/// ordered list of child nodes. The nodes of a scene form one tree under the scene's root; a node with
/// children is a compound.
///
/// Nearly everything is virtual and meant to be overridden: where the class needs its own name, full name,
/// id, owner or kind, it asks the virtual operation. It draws and evaluates nothing.
///
/// Ownership: a node owns its pins, but deletes them only in `destroyNodePins`: the destructor does not, so a
/// host's destructor calls it, or the host does before it deletes the node. A node never deletes its
/// children. Its scene and its owner are plain pointers, which outlive it or are taken from it first.
///
/// The tree stays a tree: an operation that would put a node under itself or under a node below it has no
/// effect. The list accessors (`refNodes`, `setNodes`, `refNodePins`, `setNodePins`) are plain access and
/// check nothing.
///
/// One thread at a time may use a node. A tree may be thousands of levels deep; operations that walk up or
/// down through virtual operations use a little stack for each level.
class KS_GRAPH_API GraphNodeBase : public KS_Class
{
public:
    /// No id (0xFFFFFFFF), no name, no scene, no owner, no pins, no children.
    GraphNodeBase();
    /// The same, but for the id.
    explicit GraphNodeBase(unsigned int const& id);

    /// Copies every field as it stands, the pointers to pins, children, owner and scene too, and tells
    /// nobody: the copy is in no list. Empty its own lists before it is placed in the tree, where its
    /// children still belong to the original.
    GraphNodeBase(GraphNodeBase const& other);
    GraphNodeBase& operator=(GraphNodeBase const& other);

    /// Frees the lists and the texts; deletes no pin and no child.
    ~GraphNodeBase() override;

    /// Asks `isSameNodeAs`.
    virtual bool operator==(GraphNodeBase const& other) const;

    /// @name Kind
    /// @{

    /// Whether the id is below 0xFFFFFFFF.
    virtual bool isValid() const;
    /// Whether the compound flag is set or the node has children.
    virtual bool isCompound() const;
    /// False; a hook, as are `isGroup`, `isPassThrough`, `isIterator`, `isEditable`, `isUpdating` and
    /// `isWorkflowFamily`. `dynamicPinsAllowed` asks this one.
    virtual bool isEvaluator() const;
    /// Asks `isPassThrough`.
    virtual bool isPassThroughFamily() const;
    /// False.
    virtual bool isGroup() const;
    /// False.
    virtual bool isPassThrough() const;
    /// False.
    virtual bool isIterator() const;
    /// Sets the compound flag.
    virtual void setCompound(bool const& compound);
    /// An interface node whose first pin has the output bit: it shows the compound's inputs inside it.
    virtual bool isInputInterface() const;
    /// An interface node whose first pin has the input bit.
    virtual bool isOutputInterface() const;
    /// The interface flag.
    virtual bool isInterface() const;
    virtual void setInterface(bool const& isInterface);
    /// Both nodes valid, and of the same id.
    virtual bool isSameNodeAs(GraphNodeBase const& other) const;
    /// False.
    virtual bool isEditable() const;
    /// @}

    /// @name Pins
    /// The gathering operations append in pin order and return whether `out` holds any pin afterwards.
    /// @{

    /// False for null.
    virtual bool hasPin(GraphNodePin const* pin) const;
    /// The pins whose direction shares a bit with `direction`.
    virtual bool getPins(PinDirection const& direction, ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    virtual bool getInputPins(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    virtual bool getOutputPins(ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    virtual bool hasInputPins() const;
    virtual bool hasOutputPins() const;
    /// The first pin of exactly that name, or null. Linear.
    virtual GraphNodePin* getPinByName(KS_String const& name) const;
    /// @}

    /// @name Wiring rules
    /// Each pairs the own pins, in the outer loop, with the other node's pins or with the one given pin, and
    /// asks the pins. Without `out`, the first allowed pair gives true; with it, the own pin of every allowed
    /// pair is appended, so possibly more than once, and the result is whether a pair was allowed. Null, and
    /// a node without pins, give false.
    /// @{

    /// False unless `pin` has the output bit; asks the own pins' `allowsConnectionFrom(pin)`.
    virtual bool allowsConnectionFrom(GraphNodePin const* pin) const;
    /// Asks `pin->allowsConnectionTo(own pin)`.
    virtual bool allowsConnectionFrom(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// Asks the other pins' `allowsConnectionTo(own pin)`.
    virtual bool allowsConnectionFrom(GraphNodeBase const* node) const;
    virtual bool allowsConnectionFrom(GraphNodeBase const* node, ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// False unless `pin` has the input bit; then asks, deliberately, the own pins'
    /// `allowsConnectionFrom(pin)`, not their `allowsConnectionTo`: for plain pins only an own input pin and
    /// a `pin` with both bits pass.
    virtual bool allowsConnectionTo(GraphNodePin const* pin) const;
    /// Asks `pin->allowsConnectionFrom(own pin)`.
    virtual bool allowsConnectionTo(GraphNodePin const* pin, ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// Asks the other pins' `allowsConnectionFrom(own pin)`.
    virtual bool allowsConnectionTo(GraphNodeBase const* node) const;
    virtual bool allowsConnectionTo(GraphNodeBase const* node, ArrayOfPtr<GraphNodePin, KS_NO>& out) const;
    /// @}

    /// @name Identity
    /// @{

    /// The names from the root's down to this node's, joined by "."; the bare name of a root. Grows with the
    /// depth.
    virtual KS_String getFullName();
    virtual KS_String getName();
    /// Renames the node. If the text really changes and the node has a scene, the scene re-keys the pins of
    /// the node and of all nodes below it. Siblings may share a name; see `getFreeNodeNameLikeThis`.
    virtual void setName(KS_String const& name);
    virtual unsigned int const& getId() const;
    /// Changes the id. If it really changes and the node has a scene, the scene's id map follows
    /// (`GraphScene::updateNodeIdChange`). Adjacency counts stay under the old id.
    virtual void setId(unsigned int const& id);
    /// @}

    /// @name Place in the scene and in the tree
    /// @{
    /// Null for a node that was never added to a scene.
    virtual GraphScene* getGraphScene() const;
    /// Only stores the pointer; `GraphScene::addNodeToGraph` calls it. A node that is removed from its scene
    /// keeps it.
    virtual void setGraphScene(GraphScene* scene);
    /// Null for a root and for a node that is not placed yet.
    virtual GraphNodeBase* getNodeOwner() const;
    /// Moves the node, and all below it, to the end of the new owner's children, and re-keys their pins in
    /// the scene. Null takes it out of its owner's children and re-keys nothing: the scene's pins keep the
    /// old full names as keys. Nothing happens when the owner stays the same or is the node itself or a node
    /// below it.
    virtual void setNodeOwner(GraphNodeBase* newOwner);
    /// Whether it has no owner.
    virtual bool isRoot() const;
    /// Whether `node` is the owner; with `recursive`, the owner or an owner above it. A root is owned by
    /// null, and so, with `recursive`, is every node below it.
    virtual bool isOwnedByNode(GraphNodeBase* node, bool const& recursive) const;
    /// False.
    virtual bool isUpdating() const;
    /// @}

    /// Nothing; two hooks for an evaluating host.
    virtual void update();
    virtual void update_notCleaning();

    /// @name Children
    /// @{

    /// Takes the child from its owner and appends it here, then re-keys its pins, and those of all below it,
    /// in the child's scene. A node that is already a child moves to the end. No effect for null and for a
    /// node that this one is or lies below.
    virtual void addNode(GraphNodeBase* child);
    /// Takes the child from the list and leaves it without owner. Tells no scene. No effect for null.
    /// REQUIRES: `child` is one of the children; any other node would lose its owner, which goes on listing
    /// it.
    virtual void removeNode(GraphNodeBase* child);
    /// The first direct child of that name, or null. Without `caseSensitive`, letters are compared after the
    /// runtime's `tolower`. Constant on average when the names of all children are read
    /// (`declarePlainNames`); else the children are asked in turn.
    virtual GraphNodeBase* getNodeByName(KS_String const& name, bool const& caseSensitive);
    /// Empties the list of children, who still name this node as owner.
    virtual void clearNodesArray();
    /// Appends all children, then, child by child, those below the compound ones: a whole level of a node
    /// comes before what is below its first compound. True if `out` holds any node afterwards.
    virtual bool getNodesRecursively(ArrayOfPtr<GraphNodeBase, KS_NO>& out);
    /// Appends the direct children that are compounds; true if `out` holds any node afterwards.
    virtual bool getCompoundNodes(ArrayOfPtr<GraphNodeBase, KS_NO>& out);
    /// @}

    /// Whether it is an interface, a compound or an evaluator node.
    virtual bool dynamicPinsAllowed() const;

    /// @name Free names
    /// @{

    /// `name` if no child has it, whatever the case of its letters. Else the digits at its end are cut off,
    /// and 1, 2, 3, ... is appended, padded with zeros to as many digits as were cut, until neither this node
    /// nor `otherParent` (which may be null) has such a child. `otherParent` is not asked about `name`
    /// itself.
    virtual KS_String getFreeNodeNameLikeThis(KS_String const& name, GraphNodeBase* otherParent);
    /// The same among the pins, by `hasPinWithName`; an interface node's pins also avoid those of its owner.
    virtual KS_String getFreePinNameLikeThis(KS_String const& name);
    /// @}

    /// Both append, in pin order, the pins of `directions` that are not, or are, connected; true if `out`
    /// holds any pin afterwards.
    virtual bool getNotConnectedPins(PinDirection const& directions, ArrayOfPtr<GraphNodePin, KS_NO>& out);
    virtual bool getConnectedPins(PinDirection const& directions, ArrayOfPtr<GraphNodePin, KS_NO>& out);

    /// Whether this node or, with `alsoOwner`, its owner has a pin of exactly that name.
    virtual bool hasPinWithName(KS_String const& name, bool const& alsoOwner);

    /// False.
    virtual bool isWorkflowFamily() const;

    /// @name Description
    /// @{
    /// Empty; a hook.
    virtual KS_String getInfo();
    virtual KS_String getDescription();
    virtual void setDescription(KS_String const& description);
    /// The description as a small HTML page. A line feed starts a paragraph, and the text ends with exactly
    /// one full stop, also an empty one. Nothing is escaped: the description may hold HTML.
    virtual KS_String asHTML();
    /// @}

    /// 0; a hook.
    virtual unsigned int getNumberOfThreads() const;
    /// Nothing; a hook.
    virtual void setNumberOfThreads(unsigned int const& count);

    /// @name Messages
    /// A host that reports messages overrides `getMessages(Array<Message, _Wa>&)`; the first three and
    /// `getMessagesAsStrings` follow from it. The base reports three sample messages, an error, a warning and
    /// an info, so a node class that does not override it has errors and warnings. Handlers are another
    /// matter: the base's two are empty, shared by all nodes of the process, and not the same object; a host
    /// that fills `refMessages` gives each node its own.
    /// @{
    virtual bool hasErrors() const;
    virtual bool hasWarnings() const;
    virtual bool hasMessages() const;
    virtual MessageHandler const& getMessages() const;
    /// Appends; true if `out` holds any message afterwards.
    virtual bool getMessages(Array<Message, _Wa>& out) const;
    virtual MessageHandler& refMessages();
    /// Nothing; called by `GraphScene::clearMessages`.
    virtual void clearMessages();
    /// Appends `Message::asString` of each; true if `out` holds any text afterwards.
    virtual bool getMessagesAsStrings(Array<KS_String, _Wa>& out) const;
    /// @}

    /// Both append one connection value from the first input pin to the first output pin, if the node has
    /// both; true if `out` holds any afterwards. As its source is an input, it is not `isConnected` and has
    /// no full name, unless the pins are of both directions.
    virtual bool getInternalConnections(Array<GraphConnection, _Wa>& out) const;
    virtual bool getInternalConnectionsForPainting(Array<GraphConnection, _Wa>& out) const;

    /// Free for the host; `GraphScene::getColorFromNodeType` looks colours up by it.
    virtual KS_String getType();
    virtual void setType(KS_String const& type);

protected:
    /// @name The lists and the owner field, for the operations above and for a host's own
    /// They check nothing and tell nobody. An override of a removal or of `setNodeOwnerBase` does not throw:
    /// a move that fails half-way calls it.
    /// @{
    virtual void addPinToList(GraphNodePin* pin);
    /// Removes every equal entry and keeps the order; false if there was none.
    virtual bool removePinFromList(GraphNodePin* pin);
    virtual void setNodeOwnerBase(GraphNodeBase* owner);
    virtual void addNodeToNodesList(GraphNodeBase* node);
    /// Removes every equal entry and keeps the order.
    virtual void removeNodeFromNodesList(GraphNodeBase* node);
    /// @}

public:
    /// @name Adding and removing pins
    /// These change the node alone. The scene's maps learn of a pin through `GraphScene::addNodePin`,
    /// `GraphScene::createNewPin` and `GraphScene::removeNodePinFromSceneAndNode`.
    /// @{

    /// Appends the pin and becomes its node, then, if this node has an owner, fires
    /// `GraphScene::addNodePinCallback_` with that owner. False for null and for a pin that is already here.
    virtual bool addNodePin(GraphNodePin* pin);

    /// A new pin of capacity 1 through `GraphScene::createNewPin`; null without a scene.
    virtual GraphNodePin* addDynamicInputPin();
    virtual GraphNodePin* addDynamicOutputPin();

    /// Takes the pin out, fires `GraphScene::removeNodePinCallback_` with the node's owner (null included)
    /// while the pin still names its node, and leaves the pin without node. Deletes nothing. False for null
    /// and for a pin that is not here. A host that goes on using the scene takes the pin's connections and
    /// map entries away first, or calls `GraphScene::removeNodePinFromSceneAndNode`, which does all of it.
    virtual bool removeNodePin(GraphNodePin* pin);

    /// `removeNodePin` and delete, for each pin in order. Like it, it tells no map and no connection.
    virtual void destroyNodePins();

    /// Both rebuild the pin list as inputs followed by outputs, one of the two in a new order. With every pin
    /// of that side named exactly once, it is the order of the names. Names of no pin are skipped, but their
    /// place counts: for every name that is found at place k, the pin at place k of the old order is not
    /// appended behind the named ones. So with a list that is not complete, pins may appear twice or be
    /// dropped. A pin of both directions is on both sides, and stands twice afterwards; one of none is
    /// dropped.
    virtual void reorderInputPins(Array<KS_String, _Wa> const& names);
    virtual void reorderOutputPins(Array<KS_String, _Wa> const& names);
    /// @}

    /// @name Connections, gathered through the pins
    /// @{

    /// Appends the connections into the input pins, then those out of the output pins. `unique` removes
    /// repeats from the whole of `out`, keeping the first. True if `out` holds any afterwards. Mind the order
    /// of the first two flags: it is not that of the pin's operations.
    virtual bool getConnections(ArrayOfPtr<GraphConnection, KS_NO>& out, bool const& outputs,
                                bool const& inputs, bool const& includeImplicit, bool const& unique) const;
    /// Appends the connections to `node`, then, with `bothDirections`, those from it. Null gives what `out`
    /// held.
    virtual bool getConnectionsWithNode(GraphNodeBase const* node, ArrayOfPtr<GraphConnection, KS_NO>& out,
                                        bool const& bothDirections, bool const& includeImplicit,
                                        bool const& unique) const;
    virtual bool hasConnectionsWithNode(GraphNodeBase const* node, bool const& bothDirections,
                                        bool const& includeImplicit) const;
    /// @}

    /// The node's element in the scene XML: the stored id and the pins; no name, no children.
    virtual KS_String toXml();

    /// Nothing; hooks. `GraphScene::addNodeToGraph` calls the first when the node is registered, before
    /// its scene is set and it gets the root as owner if it has none, `removeNodeFromGraph` the second when
    /// its connections and children are gone but it still has its owner and its place in the id map.
    virtual void onAddingToScene();
    virtual void onRemovingFromScene();

    /// Free for the host.
    KS_String const& getCategory() const;
    void setCategory(KS_String const& category);

    /// @name The lists themselves: plain access that tells nobody
    /// Removing one of many children is constant on average until `getNodes` has shown the list; from then on
    /// the children behind it move up at once, since a host may be looking. Once `refNodes` has put the list
    /// into the host's hands, and as long as `setNodes` decides what is in it, a removal also searches it. To
    /// look at the children of a node with very many while removing some of them, copy the list with
    /// `GraphScene::getGraphNodesAtLevel`.
    /// @{
    ArrayOfPtr<GraphNodePin, KS_NO> const& getNodePins() const { return nodePins_.list; }
    ArrayOfPtr<GraphNodePin, KS_NO>& refNodePins();
    void setNodePins(ArrayOfPtr<GraphNodePin, KS_NO> const& pins);
    ArrayOfPtr<GraphNodeBase, KS_NO> const& getNodes() const;
    ArrayOfPtr<GraphNodeBase, KS_NO>& refNodes();
    void setNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const& nodes);
    /// @}

    /// Appends, with `includeOwn`, this node's pins, then those of everything below it, each node before its
    /// children. True if `out` holds any pin afterwards.
    bool getAllChildNodePins(ArrayOfPtr<GraphNodePin, KS_NO>& out, bool const& includeOwn) const;

private:
    class PlaceInTree;
    class Renaming;
    struct ChildRenames;

    // Keep what is private to them below, each under its own name.
    friend class ChildList;
    friend class ChildNames;
    friend class FullNameText;
    friend class GraphScene;
    friend class NodeNames;
    friend bool hasPlainFullName(GraphNodeBase const& node);

    bool isAtOrBelow(GraphNodeBase const& node) const;
    std::vector<ChildRenames> renamesOfChildren(std::vector<KS_String> const& oldFullNames);
    GraphNodePin* addDynamicPin(PinDirection direction);
    bool isInPinList(GraphNodePin const& pin) const;
    ArrayOfPtr<GraphNodeBase, KS_NO> const& listOfChildren() const;
    NodeTexts& refTexts();
    void swapName(std::string& name) noexcept;
    void takeOwnerOf(GraphNodeBase const& other);
    void linkToOwner() noexcept;
    void unlinkFromOwner() noexcept;
    void leaveOwner() noexcept;
    void computeFullNameHash() noexcept;

    // First what a look-up asks: in a large scene each further cache line costs as much as the rest of it.
    unsigned int id_ = 0xFFFFFFFFu;
    bool compound_ = false;
    bool interface_ = false;
    GraphNodeBase* nodeOwner_ = nullptr;
    std::string name_;
    GraphScene* graphScene_ = nullptr;
    detail::NodePins nodePins_;
    detail::PlaceInNames placeInNames_;
    detail::OwnerLinks ownerLinks_;
    detail::PlaceInList placeInList_;
    mutable detail::NodeChildren nodes_;
    std::unique_ptr<NodeTexts> texts_; // null while all of them are empty
};

/// Stands for no node wherever a host needs a node object: its id is 0xFFFFFFFF. Built when the library is
/// loaded.
extern KS_GRAPH_API GraphNodeBase GRAPH_NODE_NOT_VALID;

} // namespace kestrel::graph
