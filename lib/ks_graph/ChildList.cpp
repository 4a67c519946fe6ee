#include "ChildList.h"

#include "ChildNames.h"
#include "Names.h"
#include "PlainTypes.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace kestrel::graph
{

namespace
{

// Below this length a search is faster than the index.
constexpr unsigned int longList = 32;

bool isSame(std::string_view own, std::string_view name, bool caseSensitive)
{
    return caseSensitive ? own == name : equalIgnoringCase(own, name);
}

} // namespace

ChildList::List const& ChildList::get()
{
    if (children_.gaps != 0)
    {
        children_.list.removeAll(nullptr);
        noteClosed(std::exchange(children_.gaps, 0u));
    }
    return children_.list;
}

ChildList::List const& ChildList::show()
{
    if (!children_.isShown) children_.isShown = true; // a second thread that only looks writes nothing
    return get();
}

ChildList::List& ChildList::expose()
{
    children_.isExposed = true;
    makeIrregular();
    return children_.list;
}

void ChildList::set(List const& children)
{
    get();
    children_.list = children;
    makeIrregular();
}

void ChildList::clear()
{
    for (GraphNodeBase* child = node_.ownerLinks_.first; child != nullptr; child = child->ownerLinks_.next)
        child->placeInList_ = {};
    children_.list.setSize(0);
    children_.gaps = 0;
    children_.closedGaps = 0;
    children_.nextRank = 0;
    children_.names.reset();
    children_.isRegular = !children_.isExposed;
}

void ChildList::append(GraphNodeBase* child)
{
    children_.list.append(child);
    bool const ranksAreLeft = children_.nextRank != 0xFFFFFFFFu;
    bool const fits = child != nullptr && child->nodeOwner_ == &node_ && !child->placeInList_.isListed &&
                      ranksAreLeft; // coverage: four thousand million children
    if (!fits) makeIrregular();
    if (!children_.isRegular) return;
    child->placeInList_ = {children_.nextRank++, true};
    addName(*child);
}

void ChildList::removeAll(GraphNodeBase* child)
{
    if (child == nullptr || !isInRegularList(*child))
    {
        get();
        children_.list.removeAll(child);
        if (child != nullptr && child->nodeOwner_ == &node_) child->placeInList_ = {};
        return;
    }
    takeName(*child);
    List& list = children_.list;
    unsigned int const place = placeOf(*child);
    child->placeInList_ = {};
    list[place] = nullptr;
    ++children_.gaps;
    if (children_.isShown)
        closeGap(place);
    else if (children_.gaps > list.size() / 2)
        get();
}

bool ChildList::contains(GraphNodeBase const& child)
{
    return isInRegularList(child) || get().contains(&child);
}

GraphNodeBase* ChildList::nextBehind(GraphNodeBase const& child)
{
    List const& list = children_.list;
    for (unsigned int place = placeOf(child); ++place < list.size();)
        if (list[place] != nullptr) return list[place];
    return nullptr;
}

void ChildList::insertBefore(GraphNodeBase* next, GraphNodeBase* child)
{
    makeIrregular(); // its rank would be out of order
    List& list = children_.list;
    unsigned int const place = next != nullptr ? list.find(next) : list.npos;
    list.append(child);
    if (place != list.npos) std::rotate(list.begin() + place, list.end() - 1, list.end());
}

GraphNodeBase* ChildList::find(KS_String const& name, bool caseSensitive)
{
    List const& list = get();
    if (children_.isRegular && list.size() >= longList && prepareNames(cText(name)))
        return children_.names->find(name, caseSensitive);
    for (GraphNodeBase* const child : list)
    {
        bool const isWanted = isPlain(*child) ? isSame(cText(child->name_), cText(name), caseSensitive)
                                              : isSame(cText(child->getName()), cText(name), caseSensitive);
        if (isWanted) return child;
    }
    return nullptr;
}

void ChildList::childIsLost(GraphNodeBase& child) noexcept
{
    if (!child.placeInList_.isListed) return;
    ChildList(*child.nodeOwner_).makeIrregular();
    child.placeInList_ = {};
}

void ChildList::beforeRenaming(GraphNodeBase const& child) noexcept
{
    if (child.placeInList_.isListed) ChildList(*child.nodeOwner_).takeName(child);
}

void ChildList::afterRenaming(GraphNodeBase& child) noexcept
{
    if (child.placeInList_.isListed) ChildList(*child.nodeOwner_).addName(child);
}

bool ChildList::isInRegularList(GraphNodeBase const& child) const
{
    return children_.isRegular && child.placeInList_.isListed && child.nodeOwner_ == &node_;
}

// The place of a child of an irregular list is searched from the start, that of another from its rank back:
// as far as others have gone from before it.
unsigned int ChildList::placeOf(GraphNodeBase const& child) const
{
    List const& list = children_.list;
    if (!isInRegularList(child)) return list.find(&child);
    unsigned int place = std::min(child.placeInList_.rank, list.size() - 1);
    while (list[place] != &child) --place;
    return place;
}

void ChildList::closeGap(unsigned int place)
{
    List& list = children_.list;
    std::move(list.begin() + place + 1, list.end(), list.begin() + place);
    list[list.size() - 1] = nullptr;
    list.setSize(list.size() - 1);
    --children_.gaps;
    noteClosed(1);
}

// Only a regular list has had gaps. The farther the places are from the ranks, the longer the way from one to
// the other.
void ChildList::noteClosed(unsigned int gaps)
{
    List& list = children_.list;
    children_.closedGaps += gaps;
    if (children_.closedGaps < list.size() / 8 + longList) return;
    for (unsigned int place = 0; place < list.size(); ++place) list[place]->placeInList_.rank = place;
    children_.nextRank = list.size();
    children_.closedGaps = 0;
    children_.names.reset();
}

void ChildList::makeIrregular() noexcept
{
    get();
    children_.isRegular = false;
    children_.names.reset();
}

// Whether the children can be found by name: not if one of them has to be asked for it, or without memory.
bool ChildList::prepareNames(std::string_view name) noexcept
{
    if (children_.names != nullptr && !children_.names->isCurrentFor(name)) children_.names.reset();
    if (children_.names != nullptr) return true;
    List const& list = children_.list;
    if (!std::all_of(list.begin(), list.end(), [](GraphNodeBase const* child) { return isPlain(*child); }))
        return false;
    try
    {
        auto names = std::make_unique<ChildNames>();
        for (GraphNodeBase* const child : list) names->insert(*child);
        children_.names = std::move(names);
        return true;
    }
    catch (std::bad_alloc const&)
    {
        return false;
    }
}

void ChildList::addName(GraphNodeBase& child) noexcept
{
    if (children_.names == nullptr) return;
    try
    {
        if (isPlain(child) && children_.names->isCurrentFor(cText(child.name_)))
        {
            children_.names->insert(child);
            return;
        }
    }
    catch (std::bad_alloc const&)
    {
        // Without the names, the list is searched.
    }
    children_.names.reset();
}

void ChildList::takeName(GraphNodeBase const& child) noexcept
{
    if (children_.names == nullptr) return;
    if (children_.names->isCurrentFor(cText(child.name_)))
        children_.names->erase(child);
    else
        children_.names.reset();
}

} // namespace kestrel::graph
