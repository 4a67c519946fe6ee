#include "NodeNames.h"

#include "FullNameText.h"
#include "Hashing.h"
#include "Names.h"
#include "PlainTypes.h"

#include <new>

namespace kestrel::graph
{

void NodeNames::added(unsigned int id, GraphNodeBase* node) noexcept
{
    if (!isComplete_) return;
    if (node == nullptr || node->placeInNames_.names != nullptr)
    {
        giveUp();
        return;
    }
    node->placeInNames_.names = this;
    node->placeInNames_.id = id;
    putBack(*node);
}

void NodeNames::removed(GraphNodeBase* node) noexcept
{
    if (!isComplete_) return;
    if (holdsDead_)
    {
        giveUp(); // this may be it
        return;
    }
    takeOut(*node);
    node->placeInNames_.names = nullptr;
}

void NodeNames::clear() noexcept
{
    forgetAll();
    isComplete_ = true;
    holdsDead_ = false;
}

void NodeNames::takeOut(GraphNodeBase& node) noexcept
{
    detail::PlaceInNames const& place = node.placeInNames_;
    if (place.isAsked)
    {
        asked_.erase(place.id);
        return;
    }
    plain_.erase(shortHash(place.fullNameHash), place.id);
    if (freeNumbers_.isEmpty()) return;
    try
    {
        freeNumbers_.released(FullNameText(node).view());
    }
    catch (std::bad_alloc const&)
    {
        freeNumbers_.clear();
    }
}

void NodeNames::putBack(GraphNodeBase& node) noexcept
{
    if (!isComplete_) // given up since the node was taken out
    {
        node.placeInNames_.names = nullptr;
        return;
    }
    try
    {
        insert(node);
    }
    catch (std::bad_alloc const&)
    {
        node.placeInNames_.names = nullptr; // it is in none of the two, where giving up looks
        giveUp();
    }
}

void NodeNames::insert(GraphNodeBase& node)
{
    detail::PlaceInNames& place = node.placeInNames_;
    place.isAsked = !hasPlainFullName(node);
    if (!place.isAsked)
    {
        plain_.insert(shortHash(place.fullNameHash), place.id, &node);
        return;
    }
    freeNumbers_.clear();
    asked_.insert(place.id, &node);
}

void NodeNames::forget(GraphNodeBase& node) noexcept
{
    freeNumbers_.clear(); // without asking for a name: the owner may be gone
    takeOut(node);
    node.placeInNames_.names = nullptr;
    holdsDead_ = true;
}

bool NodeNames::isReady(Nodes const& nodes) noexcept
{
    if (isComplete_) return true;
    isComplete_ = true;
    holdsDead_ = false;
    nodes.walk(0, Nodes::endOfIds,
               [this](unsigned int id, GraphNodeBase* node)
               {
                   added(id, node);
                   return isComplete_;
               });
    return isComplete_;
}

GraphNodeBase* NodeNames::findPlain(std::string_view fullName) const
{
    return plain_.findFirst(shortHash(hashOf(fullName)), [fullName](GraphNodeBase const& node)
                            { return FullNameText::isPlainFullName(node, fullName); });
}

void NodeNames::forgetAll() noexcept
{
    plain_.forEach([](GraphNodeBase& node) { node.placeInNames_.names = nullptr; });
    asked_.forEach([](unsigned int, GraphNodeBase* node) { node->placeInNames_.names = nullptr; });
    plain_.clear();
    asked_.clear();
    freeNumbers_.clear();
}

void NodeNames::giveUp() noexcept
{
    forgetAll();
    isComplete_ = false;
}

} // namespace kestrel::graph
