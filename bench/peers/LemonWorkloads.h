/// @file
#pragma once

#include "../Inputs.h"
#include "../Timing.h"
#include "Report.h"

#include <lemon/lgf_writer.h>
#include <lemon/list_graph.h>
#include <lemon/smart_graph.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace bench
{

/// The workloads of a LEMON digraph with a map of names, one of the numbers of the inputs, and beside it a
/// hash map for the names. No pins.
template <class Graph>
class LemonWorkloads
{
public:
    explicit LemonWorkloads(Arguments const& arguments)
        : in_(arguments.nodes),
          report_(arguments),
          namesAskedFor_(in_.namesOf(in_.namesAskedFor)),
          nodes_(in_.n),
          store_(std::make_unique<Store>())
    {}

    void run()
    {
        report_.start();
        build();
        ask();
        walkNeighbours();
        report_.loop("rename", in_.renamed.size(),
                     [&](std::size_t i) { rename(nodes_[in_.renamed[i]], in_.newNames[i]); });
        serialise();
        report_.notAvailable("group");
        report_.notAvailable("group_rewire");
        removeSome();
        report_.once("clear", in_.n, [&] { store_.reset(); });
    }

private:
    using Node = typename Graph::Node;
    using Arc = typename Graph::Arc;

    struct Store
    {
        Graph graph;
        typename Graph::template NodeMap<std::string> names{graph};
        typename Graph::template ArcMap<std::uint32_t> ports{graph};
        std::unordered_map<std::string, Node> byName;
    };

    Graph& graph() { return store_->graph; }

    void build()
    {
        report_.all("build", in_.n, [&](std::size_t i) { nodes_[i] = add(in_.names[i]); });
        report_.all("connect", in_.edges.size(),
                    [&](std::size_t i)
                    {
                        Edge const& edge = in_.edges[i];
                        Arc const arc = graph().addArc(nodes_[edge.source], nodes_[edge.target]);
                        store_->ports[arc] = edge.port;
                    });
    }

    Node add(std::string const& name)
    {
        Node const node = graph().addNode();
        store_->names[node] = name;
        store_->byName.emplace(name, node);
        return node;
    }

    bool areConnected(Edge const& edge)
    {
        return lemon::findArc(graph(), nodes_[edge.source], nodes_[edge.target]) != lemon::INVALID;
    }

    void ask()
    {
        report_.loop("are_connected", in_.pairs.size(),
                     [&](std::size_t i) { keep(areConnected(in_.pairs[i])); });
        report_.loop("are_connected_hit", in_.connectedPairs.size(),
                     [&](std::size_t i) { require(areConnected(in_.connectedPairs[i])); });
        report_.loop(
            "lookup_name", namesAskedFor_.size(),
            [&](std::size_t i)
            { require(store_->byName.find(namesAskedFor_[i])->second == nodes_[in_.namesAskedFor[i]]); });
        report_.notAvailable("lookup_pin_name");
        report_.loop("lookup_id", in_.idsAskedFor.size(),
                     [&](std::size_t i)
                     {
                         Node const node = graph().nodeFromId(static_cast<int>(in_.idsAskedFor[i]));
                         require(graph().valid(node) && node == nodes_[in_.idsAskedFor[i]]);
                     });
    }

    void walkNeighbours()
    {
        std::uint64_t sum = 0;
        auto const visit = [&](Node node, Arc arc)
        { sum += static_cast<std::uint64_t>(graph().id(node)) + store_->ports[arc]; };
        report_.loop("neighbours", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         Node const node = nodes_[in_.neighboursAskedFor[i]];
                         for (typename Graph::OutArcIt arc(graph(), node); arc != lemon::INVALID; ++arc)
                             visit(graph().target(arc), arc);
                         for (typename Graph::InArcIt arc(graph(), node); arc != lemon::INVALID; ++arc)
                             visit(graph().source(arc), arc);
                     });
        keep(sum);
    }

    void rename(Node node, std::string const& name)
    {
        auto entry = store_->byName.extract(store_->names[node]);
        store_->names[node] = name;
        entry.key() = name;
        store_->byName.insert(std::move(entry));
    }

    void serialise()
    {
        report_.once("serialise", in_.n,
                     [&]
                     {
                         std::ostringstream out;
                         lemon::digraphWriter(graph(), out)
                             .nodeMap("name", store_->names)
                             .arcMap("port", store_->ports)
                             .run();
                         written_ = out.str();
                     });
        std::fprintf(stderr, "serialised bytes: %zu\n", written_.size());
    }

    void removeSome()
    {
        if constexpr (std::is_same_v<Graph, lemon::SmartDigraph>)
            report_.notAvailable("remove"); // it only grows
        else
            report_.loop("remove", in_.removed.size(),
                         [&](std::size_t i) { remove(nodes_[in_.removed[i]]); });
    }

    void remove(Node node)
    {
        store_->byName.erase(store_->names[node]);
        graph().erase(node);
    }

    Inputs const in_;
    Report const report_;
    std::vector<std::string> const namesAskedFor_;
    std::vector<Node> nodes_;
    std::unique_ptr<Store> store_;
    std::string written_;
};

} // namespace bench
