/// @file
/// Internal: the registered nodes by full name.
#pragma once

#include "FirstOfHash.h"
#include "FreeNumbers.h"
#include "IdMap.h"

#include <ks_graph/GraphNodeBase.h>

#include <string_view>

namespace kestrel::graph
{

/// Answers what a walk over all registered nodes by ascending id would, which asks each for its full name.
/// Nodes with plain names (`hasPlainFullName`) stand in an index, which follows when they or their owners are
/// renamed or moved; the others have to be asked.
///
/// It is a short cut, not a record: when memory runs out it forgets everything, and is filled again at the
/// next look-up. A node stands in the index of one scene only; a scene that shares a node with another, as a
/// copy does, has no index.
class NodeNames
{
public:
    using Nodes = IdMap<GraphNodeBase>;

    NodeNames() = default;
    NodeNames(NodeNames const&) : isComplete_(false) {}
    NodeNames& operator=(NodeNames const&) = delete;
    ~NodeNames() { forgetAll(); }

    /// After a node was registered, and before its registration ends.
    void added(unsigned int id, GraphNodeBase* node) noexcept;
    void removed(GraphNodeBase* node) noexcept;
    /// After all registrations have ended.
    void clear() noexcept;

    /// Before the full name of a node that stands here changes, or what it is made of, and afterwards.
    void takeOut(GraphNodeBase& node) noexcept;
    void putBack(GraphNodeBase& node) noexcept;
    /// When a node that stands here is destroyed.
    void forget(GraphNodeBase& node) noexcept;

    /// False when there is no index, and all nodes have to be asked. Fills it if it had to be given up.
    bool isReady(Nodes const& nodes) noexcept;

    /// The first node, by id, that has this full name, among those with plain names. REQUIRES: `isReady`.
    GraphNodeBase* findPlain(std::string_view fullName) const;

    /// The nodes that have to be asked. REQUIRES: `isReady`.
    Nodes const& asked() const { return asked_; }

    /// For free names, as long as no node has to be asked.
    FreeNumbers& freeNumbers() { return freeNumbers_; }

private:
    void insert(GraphNodeBase& node);
    void forgetAll() noexcept;
    void giveUp() noexcept;

    FirstOfHash<GraphNodeBase> plain_;
    Nodes asked_;
    FreeNumbers freeNumbers_;
    bool isComplete_ = true;
    bool holdsDead_ = false; // the scene still holds a node that was destroyed
};

} // namespace kestrel::graph
