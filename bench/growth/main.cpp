// How the costs of the library grow with the graph.
#include "Workload.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

void registerWorkloads(std::vector<bench::Workload> const& workloads, std::uint32_t nodes)
{
    for (bench::Workload const& workload : workloads)
    {
        if (nodes < workload.fromNodes) continue;
        std::string const name = std::string(workload.name).append("/").append(std::to_string(nodes));
        auto const run = [workload, nodes](benchmark::State& state)
        {
            bench::Measurement measurement(state);
            while (state.KeepRunning()) workload.run(nodes, measurement);
        };
        benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime()->Iterations(1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    for (std::uint32_t const nodes : {1000u, 10000u, 100000u, 1000000u})
    {
        registerWorkloads(bench::sceneWorkloads(), nodes);
        registerWorkloads(bench::layoutWorkloads(), nodes);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
