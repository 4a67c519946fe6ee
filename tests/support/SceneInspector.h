/// @file
#pragma once

#include <foundation/KS_String.h>
#include <ks_graph/GraphScene.h>
#include <ks_graph/SceneRegistry.h>

#include <map>
#include <string_view>

namespace kestrel::graph
{

/// The one view into what a scene keeps to itself, as copies.
struct SceneInspector
{
    using Counts = std::map<unsigned int, std::map<unsigned int, AdjacencyCounts::Counts>>;

    static std::map<unsigned int, GraphNodeBase*> nodesById(GraphScene const& scene)
    {
        std::map<unsigned int, GraphNodeBase*> nodes;
        scene.registry_->nodesById.forEach([&nodes](unsigned int id, GraphNodeBase* node)
                                           { nodes.emplace(id, node); });
        return nodes;
    }

    static std::map<unsigned int, GraphNodePin*> pinsById(GraphScene const& scene)
    {
        std::map<unsigned int, GraphNodePin*> pins;
        scene.registry_->pinsById.forEach([&pins](unsigned int id, GraphNodePin* pin)
                                          { pins.emplace(id, pin); });
        return pins;
    }

    static std::map<KS_String, GraphNodePin*> pinsByFullName(GraphScene const& scene)
    {
        std::map<KS_String, GraphNodePin*> pins;
        scene.registry_->pinsByFullName.forEach([&pins](std::string_view name, GraphNodePin* pin)
                                                { pins.emplace(name, pin); });
        return pins;
    }

    static Counts adjacency(GraphScene const& scene)
    {
        Counts counts;
        scene.registry_->adjacency.forEach(
            [&counts](unsigned int source, unsigned int target, AdjacencyCounts::Counts const& pair)
            { counts[source][target] = pair; });
        return counts;
    }
};

} // namespace kestrel::graph
