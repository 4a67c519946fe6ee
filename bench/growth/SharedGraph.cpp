#include "SharedGraph.h"

#include "../AllocationCounter.h"

namespace bench
{

Inputs const& SharedGraph::inputs(std::uint32_t nodes)
{
    static std::unique_ptr<Inputs const> kept;
    if (!kept || kept->n != nodes) kept = std::make_unique<Inputs const>(nodes);
    return *kept;
}

SharedGraph::Graph& SharedGraph::empty(std::uint32_t nodes)
{
    drop();
    inputs(nodes);
    graph_ = std::make_unique<Graph>(nodes);
    bytesBefore_ = allocationsSoFar().livingBytes;
    return *graph_;
}

SharedGraph::Graph& SharedGraph::unconnected(std::uint32_t nodes)
{
    if (!graph_ || graph_->size() != nodes) empty(nodes).addElements(inputs(nodes));
    graph_->scene.removeAllConnections();
    return *graph_;
}

SharedGraph::Graph& SharedGraph::connected(std::uint32_t nodes)
{
    if (!graph_ || graph_->size() != nodes) empty(nodes).addElements(inputs(nodes));
    if (graph_->scene.getNumberOfConnections() == 0)
        for (Edge const& edge : inputs(nodes).edges) graph_->connect(edge);
    return *graph_;
}

void SharedGraph::drop()
{
    graph_.reset();
}

std::int64_t SharedGraph::bytes()
{
    return allocationsSoFar().livingBytes - bytesBefore_;
}

} // namespace bench
