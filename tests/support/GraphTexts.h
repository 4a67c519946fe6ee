/// @file
/// Nodes, pins and connections as short texts, to compare whole lists with: "a", "a.out", "a.out > b.in", and
/// "-" for null.
#pragma once

#include <ks_graph/ks_graph.h>

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;
/// What is left of connections that were removed.
using ConnectionValues = Array<GraphConnection, _Wa>;
using PinRenames = std::map<KS_String, KS_String>;
using InterfaceOfNode = std::map<GraphNodeBase*, GraphNodeBase*>;

inline Nodes listOf(std::initializer_list<GraphNodeBase*> nodes)
{
    Nodes list;
    for (GraphNodeBase* node : nodes) list.append(node);
    return list;
}

inline std::string text(GraphNodeBase* node)
{
    return node != nullptr ? std::string(node->getName()) : "-";
}

inline std::string text(GraphNodePin const* pin)
{
    if (pin == nullptr) return "-";
    return text(pin->getParentGraphNodePtr()) + "." + const_cast<GraphNodePin*>(pin)->getName().c_str();
}

inline std::string text(GraphConnection const& connection)
{
    return text(connection.getSourcePin()) + " > " + text(connection.getTargetPin());
}

inline std::string text(GraphConnection const* connection)
{
    return connection != nullptr ? text(*connection) : "-";
}

template <class List>
std::vector<std::string> texts(List const& list)
{
    std::vector<std::string> lines;
    for (auto const& element : list) lines.push_back(text(element));
    return lines;
}

inline std::map<std::string, std::string> texts(PinRenames const& renames)
{
    std::map<std::string, std::string> plain;
    for (auto const& [after, before] : renames) plain.emplace(after, before);
    return plain;
}

} // namespace kestrel::graph::test
