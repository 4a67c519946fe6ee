/// @file
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench
{

/// From the output pin of a node to an input pin of a node, each as its place in the list of nodes.
struct Edge
{
    std::uint32_t source;
    std::uint32_t target;
    std::uint32_t port;
};

/// A random graph of n nodes and 2n connections with the questions that are asked about it and the changes
/// that are made to it. The same for every program: the seed is fixed.
struct Inputs
{
    using Places = std::vector<std::uint32_t>;

    explicit Inputs(std::uint32_t nodeCount);

    /// The names of those nodes.
    std::vector<std::string> namesOf(Places const& places) const;

    std::uint32_t n;
    std::vector<std::string> names;    // "node%u"
    std::vector<Edge> edges;           // 2n
    std::vector<Edge> pairs;           // 100,000, few of them connected
    std::vector<Edge> connectedPairs;  // 100,000
    Places namesAskedFor;              // 100,000
    Places idsAskedFor;                // 1,000,000
    Places neighboursAskedFor;         // 100,000
    Places renamed;                    // up to 10,000, each once
    std::vector<std::string> newNames; // of those, "renamed%u"
    Places grouped;                    // 1 %; this list and the next two share no node
    Places groupedWithRewiring;        // 1 %
    Places removed;                    // 10 %
};

} // namespace bench
