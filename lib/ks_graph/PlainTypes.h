/// @file
/// Internal: whether an object's names may be read instead of asked for.
#pragma once

#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>

#include <typeinfo>

namespace kestrel::graph
{

/// Whether the host has declared the type with `declarePlainNames`. Safe on any thread.
bool isDeclaredPlain(std::type_info const& type);

/// Whether the virtual naming operations of the object are the library's own.
///
/// What an object is may change while it is constructed or destroyed: then it is of the class whose
/// constructor is at work, which is neither one of the library's (those register nothing) nor final.
template <class Base>
bool isPlain(Base const& object)
{
    std::type_info const& type = typeid(object);
    return &type == &typeid(Base) || isDeclaredPlain(type);
}

/// Whether the node's full name follows from the stored names of itself and its owners.
bool hasPlainFullName(GraphNodeBase const& node);

} // namespace kestrel::graph
