/// @file
#pragma once

#include "../Inputs.h"
#include "../SampleGraph.h"

#include <cstdint>
#include <memory>

namespace bench
{

/// The graph that the workloads of one size work on, one after the other. Each leaves it connected as it was,
/// or drops it; it is made again when it is needed.
class SharedGraph
{
public:
    using Graph = SampleGraph<PlainHost>;

    static Inputs const& inputs(std::uint32_t nodes);

    /// With all its connections.
    static Graph& connected(std::uint32_t nodes);
    static Graph& unconnected(std::uint32_t nodes);
    /// Without the nodes, too.
    static Graph& empty(std::uint32_t nodes);
    static void drop();

    /// What the graph has taken since it was empty.
    static std::int64_t bytes();

private:
    static inline std::unique_ptr<Graph> graph_;
    static inline std::int64_t bytesBefore_ = 0;
};

} // namespace bench
