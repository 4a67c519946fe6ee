/// @file
#pragma once

#include <ks_graph/GraphConnection.h>

#include <string>

namespace material_graph
{

/// A connection that knows what it carries.
class MaterialConnection : public kestrel::graph::GraphConnection
{
public:
    using GraphConnection::GraphConnection;

    /// The type of the source pin; empty when that has none.
    kestrel::KS_String getType() const;

    /// The full name and, in parentheses, the type.
    std::string describe();
};

} // namespace material_graph
