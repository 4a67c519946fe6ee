/// @file
/// For hosts with large scenes of their own classes: which of them leave naming as it is.
#pragma once

#include <foundation/KS_String.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>
#include <ks_graph/ks_graph_api.h>

#include <type_traits>
#include <typeinfo>

namespace kestrel::graph
{

/// @cond
namespace detail
{

KS_GRAPH_API void notePlainNames(std::type_info const& type);

template <class Type>
constexpr bool leavesNodeNamesAlone()
{
    return std::is_same_v<decltype(&Type::getFullName), KS_String (GraphNodeBase::*)()> &&
           std::is_same_v<decltype(&Type::getName), KS_String (GraphNodeBase::*)()> &&
           std::is_same_v<decltype(&Type::getNodeOwner), GraphNodeBase* (GraphNodeBase::*)() const> &&
           std::is_same_v<decltype(&Type::isRoot), bool (GraphNodeBase::*)() const>;
}

template <class Type>
constexpr bool leavesPinNamesAlone()
{
    return std::is_same_v<decltype(&Type::getFullName), KS_String (GraphNodePin::*)()> &&
           std::is_same_v<decltype(&Type::getName), KS_String (GraphNodePin::*)()> &&
           std::is_same_v<decltype(&Type::getParentGraphNodePtr), GraphNodeBase* (GraphNodePin::*)() const>;
}

template <class Type>
constexpr bool leavesLookUpAlone()
{
    return std::is_same_v<decltype(&Type::getNodePtrByFullName),
                          GraphNodeBase* (GraphScene::*)(KS_String const&) const>;
}

template <class Type>
void notePlainNames()
{
    static_assert(std::is_final_v<Type>,
                  "A class derived from this one might override its naming: make it final");
    if constexpr (std::is_base_of_v<GraphNodeBase, Type>)
        static_assert(leavesNodeNamesAlone<Type>(),
                      "It overrides getFullName, getName, getNodeOwner or isRoot");
    else if constexpr (std::is_base_of_v<GraphNodePin, Type>)
        static_assert(leavesPinNamesAlone<Type>(),
                      "It overrides getFullName, getName or getParentGraphNodePtr");
    else
        static_assert(leavesLookUpAlone<Type>(), "It overrides getNodePtrByFullName");
    notePlainNames(typeid(Type));
}

} // namespace detail
/// @endcond

/// Declares final classes of nodes, pins and scenes that do not override their naming, which the compiler
/// checks: for nodes `getFullName`, `getName`, `getNodeOwner` and `isRoot`, for pins `getFullName`, `getName`
/// and `getParentGraphNodePtr`, for scenes `getNodePtrByFullName`. Nothing changes but the cost: since asking
/// such an object for its name would only give what is stored, the library reads it, keeps an index of the
/// full names and need not ask every node of the scene in turn. The library's own classes are always read so.
///
/// One line in the host's program, before the scenes are filled; objects of other classes may stand beside,
/// and are asked. May be called more than once and on any thread. The module that holds the classes stays
/// loaded.
///
/// @code
/// kestrel::graph::declarePlainNames<EditorScene, EditorNode, EditorPin>();
/// @endcode
template <class... Types>
void declarePlainNames()
{
    (detail::notePlainNames<Types>(), ...);
}

} // namespace kestrel::graph
