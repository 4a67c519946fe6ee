/// @file
#pragma once

#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <ks_graph/ks_graph_api.h>

namespace kestrel::graph
{

class GraphNodeBase;
class GraphNodePin;

/// One directed link from an output pin, the source, to an input pin, the target: two pointers and a flag.
///
/// A connection that a scene made (`GraphScene::connect`) belongs to that scene, which deletes it in
/// `removeConnection`. Any other one is a plain value: whoever enters it into its pins' lists takes
/// it out again, since neither destruction nor assignment does. The pins are never owned.
///
/// A connection is connected when both pins are set, the source has the output bit and the target the input
/// bit. One that is not is a loop of nothing and links no nodes, nor does one whose pins have no node. Every
/// operation that needs a pin does nothing when it is null.
class KS_GRAPH_API GraphConnection : public KS_Class
{
public:
    /// No pins, not implicit.
    GraphConnection();

    /// Stores the two pins, which know nothing of it: see `addToConnectedPins`. Not implicit.
    GraphConnection(GraphNodePin* source, GraphNodePin* target);

    /// Copies pins and flag. The copy is in no list.
    GraphConnection(GraphConnection const& other);
    GraphConnection& operator=(GraphConnection const& other);

    ~GraphConnection() override;

    /// @name Comparing: the same source and target pin, whether implicit or not
    /// @{
    /// Asks `isSameAs`.
    virtual bool operator==(GraphConnection const& other) const;
    virtual bool isSameAs(GraphConnection const& other) const;
    /// @}

    /// @name Ends. All of them are false while the connection is not connected.
    /// @{
    virtual bool isConnected() const;
    virtual bool isConnectedPin(GraphNodePin const* pin) const;
    virtual bool isConnectedPinSource(GraphNodePin const* pin) const;
    virtual bool isConnectedPinTarget(GraphNodePin const* pin) const;
    /// From a pin to itself.
    virtual bool isLoop() const;
    /// From a node to itself; compares `getSourceNode()` and `getTargetNode()`.
    virtual bool isNodeLoop() const;
    /// From a node to itself; compares the pins' parent nodes.
    virtual bool isSameNode() const;
    virtual bool isConnectedNode(GraphNodeBase const* node) const;
    virtual bool isConnectedNodeSource(GraphNodeBase const* node) const;
    virtual bool isConnectedNodeTarget(GraphNodeBase const* node) const;

    /// Whether it links `from` to `to`; with `bothWays`, also `to` to `from`.
    ///
    /// `recursive` also looks into compounds, in the other direction, turned at every level it descends: it
    /// accepts a connection from `to` into a child of `from`, and from a child of `to` into `from`. With a
    /// compound C around X and a connection from B to X, (C, B) is linked and (B, C) is not.
    ///
    /// Nodes are compared with `isSameNodeAs`. Recursive cost grows with the number of ways down the two
    /// subtrees: linear when one of the two holds no nodes, beyond all bounds for two that are both deep.
    virtual bool areNodesConnected(GraphNodeBase const& from, GraphNodeBase const& to, bool const& recursive,
                                   bool const& bothWays) const;
    /// @}

    /// @name Nodes and kinds of the ends; null or false without a pin
    /// @{
    virtual GraphNodeBase* getSourceNode() const;
    virtual GraphNodeBase* getTargetNode() const;
    virtual bool sourceIsCompoundPin() const;
    virtual bool targetIsCompoundPin() const;
    virtual bool sourceIsInterfacePin() const;
    virtual bool targetIsInterfacePin() const;
    /// @}

    /// "<node>.<pin> > <node>.<pin>", source first, with the nodes' full names. Empty when it is not
    /// connected or a pin has no node. Hosts key what they keep about a connection by it.
    virtual KS_String getFullName();

    /// A connection that the host made by itself, and not its user, may be implicit. Queries leave it out
    /// when they are asked to, and the scene's explicit adjacency does not count it.
    virtual bool isImplicit() const;
    /// False.
    virtual bool isBidirectional() const;
    /// Only stores the flag: a scene that counts adjacency (`GraphScene::setUseAdjacencyMap`) has counted the
    /// connection with the flag that it was made with.
    virtual void setImplicit(bool const& implicit);

    /// @name Leaving and entering the pins' lists, source first
    /// The scene calls `removeFromConnectedPins` before it deletes a connection, and enters a new one through
    /// the pins themselves.
    /// @{
    virtual void removeFromConnectedPins();
    virtual void removeFromSourcePin();
    virtual void removeFromTargetPin();
    virtual void addToConnectedPins();
    virtual void addToSourcePin();
    virtual void addToTargetPin();
    /// @}

    /// The connection's element in the scene XML: the ids of the two nodes, -1 where there is none. Which
    /// pins it joins is not written.
    virtual KS_String toXml();

    /// @name The pins; setting one touches no list
    /// @{
    GraphNodePin* getSourcePin() const { return sourcePin_; }
    void setSourcePin(GraphNodePin* pin) { sourcePin_ = pin; }
    GraphNodePin* getTargetPin() const { return targetPin_; }
    void setTargetPin(GraphNodePin* pin) { targetPin_ = pin; }
    /// @}

private:
    friend class GraphScene;

    bool recursiveSearch(GraphNodeBase const& node, GraphNodeBase const& other,
                         bool const& childIsSource) const;

    GraphNodePin* sourcePin_ = nullptr;
    GraphNodePin* targetPin_ = nullptr;
    bool implicit_ = false;
    unsigned int placeInScene_ = 0; // the index in the scene's array, as far as only the scene changes it
};

} // namespace kestrel::graph
