/// @file
/// Internal: looking for one node by full name, or for one free name after the other, in a single walk.
#pragma once

#include "SceneRegistry.h"

#include <ks_graph/GraphNodeBase.h>

#include <cstdint>
#include <map>
#include <utility>

namespace kestrel::graph
{

/// Walks nodes by ascending id and asks each for its full name, at most once. It stops at the node that is
/// looked for; a later look-up is answered from the names that were seen, and only then walks on. So the many
/// look-ups of one free name cost one walk together.
///
/// It remembers only names that begin with `prefix`, which all candidates of one free name share. Other names
/// have to be looked for elsewhere (`covers`).
class FullNameWalk
{
public:
    FullNameWalk(SceneRegistry const& registry, KS_String const& prefix)
        : registry_(registry), prefix_(prefix), version_(registry.version)
    {}

    /// Whether `find` may answer: the name begins with the prefix, and nothing has changed since the walk
    /// began.
    bool covers(KS_String const& fullName) const { return isCurrent() && fullName.startsWith(prefix_); }

    /// The first of `nodes` that has this full name, by id and below the id `end`, or null. When asking the
    /// nodes for their names has changed them, all nodes of the scene are asked anew. REQUIRES:
    /// `covers(fullName)`, and the same nodes each time.
    GraphNodeBase* find(IdMap<GraphNodeBase> const& nodes, KS_String const& fullName, std::uint64_t end)
    {
        auto const seen = seen_.find(fullName);
        if (seen != seen_.end()) return seen->second.first < end ? seen->second.second : nullptr;
        GraphNodeBase* found = nullptr;
        nodes.walk(next_, end,
                   [&](unsigned int id, GraphNodeBase* node)
                   {
                       next_ = std::uint64_t{id} + 1;
                       if (node == nullptr) return true;
                       KS_String name = node->getFullName();
                       if (name == fullName) found = node;
                       if (name.startsWith(prefix_)) seen_.emplace(std::move(name), std::pair(id, node));
                       return found == nullptr && isCurrent();
                   });
        return isCurrent() ? found : askAll(fullName);
    }

private:
    bool isCurrent() const { return version_ == registry_.version; }

    GraphNodeBase* askAll(KS_String const& fullName) const
    {
        GraphNodeBase* found = nullptr;
        registry_.nodesById.walk(0, IdMap<GraphNodeBase>::endOfIds,
                                 [&](unsigned int, GraphNodeBase* node)
                                 {
                                     if (node != nullptr && node->getFullName() == fullName) found = node;
                                     return found == nullptr;
                                 });
        return found;
    }

    SceneRegistry const& registry_;
    KS_String prefix_;
    unsigned int version_;
    std::map<KS_String, std::pair<unsigned int, GraphNodeBase*>> seen_;
    std::uint64_t next_ = 0;
};

} // namespace kestrel::graph
