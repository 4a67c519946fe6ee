/// @file
#pragma once

#include "DerivedHost.h"

#include <ks_graph/ks_graph.h>

#include <cstdint>

namespace kestrel::graph::test
{

/// How often the nodes and pins of a `CountingHost` have been asked for a name or a full name.
std::uint64_t namesAskedFor();

/// A host that derives every class, and whose nodes and pins could have names of their own making.
struct CountingHost
{
    class Node : public GraphNodeBase
    {
    public:
        using GraphNodeBase::GraphNodeBase;

        KS_String getName() override;
        KS_String getFullName() override;
    };

    class Pin : public GraphNodePin
    {
    public:
        using GraphNodePin::GraphNodePin;

        KS_String getName() override;
        KS_String getFullName() override;
    };

    using Scene = bench::DerivedScene<Node, Pin, bench::DerivedHost::Connection>;
};

} // namespace kestrel::graph::test
