/// @file
/// Internal: what a scene knows about its nodes, pins and connections.
#pragma once

#include "AdjacencyCounts.h"
#include "ConnectionIndex.h"
#include "FreeNumbers.h"
#include "IdMap.h"
#include "NodeNames.h"
#include "PinNames.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph
{

/// The key of one pin, before and after.
struct PinRename
{
    PinNames::Name oldName;
    PinNames::Key newName;
};

/// What happens to the keys of the pins of a node, and of all below it, when its full name changes: each of
/// them has begun with the old name, and now begins with the new one.
struct PinRenames
{
    std::string oldFront;
    std::size_t newFrontLength = 0;
    std::vector<PinNames::Key> newNames;
};

class FullNameWalk;

/// A copy knows the same objects; it makes its own short cuts when it needs them.
struct SceneRegistry
{
    SceneRegistry() = default;
    SceneRegistry(SceneRegistry const& other)
        : nodesById(other.nodesById),
          pinsById(other.pinsById),
          pinsByFullName(other.pinsByFullName),
          adjacency(other.adjacency),
          nodeNames(other.nodeNames),
          connectionsKnowTheirPlaces(false)
    {}
    SceneRegistry& operator=(SceneRegistry const&) = delete;

    /// False for an unknown old name. A new name that is taken keeps its pin.
    bool rekeyPin(PinRename&& rename) noexcept
    {
        noteReleased(rename.oldName);
        return pinsByFullName.rekey(rename.oldName, std::move(rename.newName));
    }

    IdMap<GraphNodeBase> nodesById;
    IdMap<GraphNodePin> pinsById;
    PinNames pinsByFullName;
    AdjacencyCounts adjacency;
    NodeNames nodeNames;
    FreeNumbers freePinNumbers;
    /// Whether each connection of the array is alive and knows its place there. Not in an array that a host
    /// has had in hand, nor when a copy of the scene has the same connections: either may delete them.
    std::atomic<bool> connectionsKnowTheirPlaces{true};
    /// Of an array whose connections do not; made by the first removal from a long one.
    std::unique_ptr<ConnectionIndex> arrayIndex;
    /// Of the free node name that is being looked for.
    FullNameWalk* currentWalk = nullptr;
    /// Counts the changes of nodes, of their ids and their names.
    unsigned int version = 0;

private:
    void noteReleased(PinNames::Name const& name) noexcept
    {
        if (freePinNumbers.isEmpty()) return;
        try
        {
            freePinNumbers.released(std::string(name.front.text).append(name.back));
        }
        catch (std::bad_alloc const&)
        {
            freePinNumbers.clear();
        }
    }
};

} // namespace kestrel::graph
