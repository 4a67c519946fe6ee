/// @file
/// Internal: looking for one node by full name, or for one free name after the other, in a single walk.
#pragma once

#include <ks_graph/GraphScene.h>

#include <map>
#include <utility>

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
    FullNameWalk(GraphScene const& scene, KS_String const& prefix)
        : scene_(scene), prefix_(prefix), version_(scene.registryVersion_)
    {}

    /// Whether `find` may answer: the name begins with the prefix, and nothing has changed since the walk
    /// began.
    bool covers(KS_String const& fullName) const { return isCurrent() && fullName.startsWith(prefix_); }

    /// The first node, by id, of that full name, or null. False when asking the nodes for their names has
    /// changed them: then only a new walk can tell. REQUIRES: `covers(fullName)`.
    bool find(KS_String const& fullName, GraphNodeBase*& found)
    {
        auto const seen = seen_.find(fullName);
        found = seen != seen_.end() ? seen->second : nullptr;
        while (found == nullptr)
        {
            auto const next = begun_ ? scene_.nodesById_.upper_bound(lastId_) : scene_.nodesById_.begin();
            if (next == scene_.nodesById_.end()) return true;
            begun_ = true;
            lastId_ = next->first;
            GraphNodeBase* const node = next->second;
            KS_String name = node->getFullName();
            if (!isCurrent()) return false;
            if (name == fullName) found = node;
            if (name.startsWith(prefix_)) seen_.emplace(std::move(name), node);
        }
        return true;
    }

private:
    bool isCurrent() const { return version_ == scene_.registryVersion_; }

    GraphScene const& scene_;
    KS_String prefix_;
    unsigned int version_;
    std::map<KS_String, GraphNodeBase*> seen_;
    unsigned int lastId_ = 0;
    bool begun_ = false;
};

} // namespace kestrel::graph
