#include "Report.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench
{

namespace
{

long peakMemoryInKilobytes()
{
    char const* const key = "VmHWM:";
    long kilobytes = -1;
    if (std::FILE* const status = std::fopen("/proc/self/status", "r"))
    {
        char line[256];
        while (kilobytes < 0 && std::fgets(line, sizeof line, status))
            if (std::strncmp(line, key, std::strlen(key)) == 0)
                kilobytes = std::atol(line + std::strlen(key));
        std::fclose(status);
    }
    return kilobytes;
}

} // namespace

Arguments readArguments(int count, char** values)
{
    long const nodes = count > 1 ? std::atol(values[1]) : 0;
    double const budget = count > 2 ? std::atof(values[2]) : 5.0;
    if (nodes < 100 || nodes > 100000000 || budget <= 0)
    {
        std::fprintf(stderr, "usage: %s NODES [SECONDS]\nat least 100 nodes; 5 seconds for each workload\n",
                     values[0]);
        std::exit(2);
    }
    return {static_cast<std::uint32_t>(nodes), budget};
}

void Report::start() const
{
    std::printf("rss_start,%u,NA,%ld\n", n_, peakMemoryInKilobytes());
    std::fflush(stdout);
}

void Report::notAvailable(char const* workload) const
{
    std::printf("%s,%u,NA,NA\n", workload, n_);
    std::fflush(stdout);
}

void Report::print(char const* workload, Timing const& timing, std::size_t wanted) const
{
    if (timing.operations < wanted)
        std::fprintf(stderr, "%s,%u: stopped after %zu of %zu operations\n", workload, n_, timing.operations,
                     wanted);
    if (timing.operations == 0) return notAvailable(workload);
    std::printf("%s,%u,%.2f,%ld\n", workload, n_,
                timing.seconds * 1e9 / static_cast<double>(timing.operations), peakMemoryInKilobytes());
    std::fflush(stdout);
}

} // namespace bench
