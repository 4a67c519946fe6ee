/// @file
/// Internal: the children of a node, at a cost that does not grow with their number.
#pragma once

#include <ks_graph/GraphNodeBase.h>

#include <string_view>

namespace kestrel::graph
{

/// Changes the list of children of one node.
///
/// A regular list is one that only this class has changed: each child stands in it once, has the node as its
/// owner, and knows its rank. A removal then finds the child near its rank. Whatever a host does to the list
/// in another way makes it irregular, until it is emptied; then it is searched, and the result is the same.
class ChildList
{
public:
    using List = ArrayOfPtr<GraphNodeBase, KS_NO>;

    explicit ChildList(GraphNodeBase const& node) : node_(node), children_(node.nodes_) {}

    /// Closes the gaps.
    List const& get();
    /// The same, for a host, who may keep the reference.
    List const& show();
    List& expose();
    void set(List const& children);
    /// The children go on naming the node as their owner.
    void clear();

    void append(GraphNodeBase* child);
    /// Every equal entry; the others keep their order.
    void removeAll(GraphNodeBase* child);

    bool contains(GraphNodeBase const& child);
    /// The child behind this one in the list; null for the last one. REQUIRES: it is there.
    GraphNodeBase* nextBehind(GraphNodeBase const& child);
    /// Allocates nothing after a removal. Null means the end.
    void insertBefore(GraphNodeBase* next, GraphNodeBase* child);

    /// The first child of that name, or null.
    GraphNodeBase* find(KS_String const& name, bool caseSensitive);

    /// When a child leaves its owner, or ends, and may still stand in the list. Its owner is still there.
    static void childIsLost(GraphNodeBase& child) noexcept;
    /// Around every change of a child's name. Its owner is still there.
    static void beforeRenaming(GraphNodeBase const& child) noexcept;
    static void afterRenaming(GraphNodeBase& child) noexcept;

private:
    bool isInRegularList(GraphNodeBase const& child) const;
    unsigned int placeOf(GraphNodeBase const& child) const;
    void closeGap(unsigned int place);
    void noteClosed(unsigned int gaps);
    void makeIrregular() noexcept;
    bool prepareNames(std::string_view name) noexcept;
    void addName(GraphNodeBase& child) noexcept;
    void takeName(GraphNodeBase const& child) noexcept;

    GraphNodeBase const& node_;
    detail::NodeChildren& children_;
};

} // namespace kestrel::graph
