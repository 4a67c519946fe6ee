/// @file
#pragma once

#include "Measurement.h"

#include <cstdint>
#include <vector>

namespace bench
{

/// Something that is measured in graphs, or with layouts, of several sizes.
struct Workload
{
    char const* name;
    void (*run)(std::uint32_t nodes, Measurement& measurement);
    std::uint32_t fromNodes = 0; // what it works on does not fit into a smaller graph
};

/// In the order in which they are to run for one size: they share a graph, which the first ones make and the
/// last ones take apart.
std::vector<Workload> sceneWorkloads();

std::vector<Workload> layoutWorkloads();

} // namespace bench
