/// @file
/// Internal: looking for one node by full name, or for one free name after the other, in a single walk.
#pragma once

#include <ks_graph/GraphScene.h>

#include <map>

namespace kestrel::graph
{

/// Walks the registered nodes by ascending id and asks each for its full name, at most once. It stops at the
/// node that is looked for; a later look-up is answered from the names that were seen, and only then walks
/// on. So the many look-ups of one free name cost one walk together.
///
/// It remembers only names that begin with `prefix`, which all candidates of one free name share. Other names
/// have to be looked for elsewhere (`covers`).
class GraphScene::FullNameWalk
{
public:
    FullNameWalk(std::map<unsigned int, GraphNodeBase*> const& nodes, KS_String const& prefix)
        : nodes_(nodes), prefix_(prefix)
    {}

    bool covers(KS_String const& fullName) const { return fullName.startsWith(prefix_); }

    /// The first node, by id, of that full name, or null. REQUIRES: `covers(fullName)`.
    GraphNodeBase* find(KS_String const& fullName)
    {
        auto const seen = seen_.find(fullName);
        if (seen != seen_.end()) return seen->second;
        for (auto next = begun_ ? nodes_.upper_bound(lastId_) : nodes_.begin(); next != nodes_.end();
             next = nodes_.upper_bound(lastId_))
        {
            begun_ = true;
            lastId_ = next->first;
            GraphNodeBase* const node = next->second;
            KS_String name = node->getFullName();
            if (!covers(name)) continue;
            auto const entry = seen_.emplace(std::move(name), node).first;
            if (entry->second == node && entry->first == fullName) return node;
        }
        return nullptr;
    }

    /// Forgets everything: the nodes or their names have changed.
    void restart()
    {
        seen_.clear();
        begun_ = false;
    }

private:
    std::map<unsigned int, GraphNodeBase*> const& nodes_;
    KS_String prefix_;
    std::map<KS_String, GraphNodeBase*> seen_;
    unsigned int lastId_ = 0;
    bool begun_ = false;
};

} // namespace kestrel::graph
