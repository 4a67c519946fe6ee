/// @file
#pragma once

#include "../Inputs.h"
#include "../MoveBudget.h"
#include "../MoveResults.h"
#include "../SampleGraph.h"
#include "../Timing.h"
#include "Report.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace bench
{

/// The workloads of a ks_graph scene whose classes are those of the host.
template <class Host>
class KsGraphWorkloads
{
public:
    explicit KsGraphWorkloads(Arguments const& arguments)
        : in_(arguments.nodes),
          report_(arguments),
          names_(texts(in_.names)),
          newNames_(texts(in_.newNames)),
          graph_(std::make_unique<SampleGraph<Host>>(in_.n))
    {
        for (std::uint32_t const place : in_.namesAskedFor)
        {
            std::string const fullName = std::string("root.").append(in_.names[place]);
            nodesAskedFor_.emplace_back(fullName);
            pinsAskedFor_.emplace_back(std::string(fullName).append(place % 2 != 0 ? ".in1" : ".in0"));
        }
    }

    void run()
    {
        report_.start();
        build();
        ask();
        walkNeighbours();
        report_.loop("rename", in_.renamed.size(),
                     [&](std::size_t i) { graph()[in_.renamed[i]].node->setName(newNames_[i]); });
        report_.once("serialise", in_.n, [&] { xml_ = scene().toXml(); });
        std::fprintf(stderr, "serialised bytes: %u\n", xml_.length());
        group();
        report_.loop("remove", in_.removed.size(), [&](std::size_t i) { graph().remove(in_.removed[i]); });
        report_.once("clear", in_.n, [&] { graph_.reset(); });
    }

private:
    using Node = kestrel::graph::GraphNodeBase;
    using Pin = kestrel::graph::GraphNodePin;
    using Connection = kestrel::graph::GraphConnection;
    using Texts = std::vector<kestrel::KS_String>;

    static Texts texts(std::vector<std::string> const& from) { return Texts(from.begin(), from.end()); }

    SampleGraph<Host>& graph() { return *graph_; }
    kestrel::graph::GraphScene& scene() { return graph_->scene; }

    void build()
    {
        graph().addRoot();
        report_.all("build", in_.n, [&](std::size_t i) { graph().addElement(names_[i]); });
        report_.all("connect", in_.edges.size(),
                    [&](std::size_t i) { require(graph().connect(in_.edges[i]) != nullptr); });
    }

    bool areConnected(Edge const& edge)
    {
        return scene().areNodesConnected(graph()[edge.source].node, graph()[edge.target].node, false, true);
    }

    void ask()
    {
        report_.loop("are_connected", in_.pairs.size(),
                     [&](std::size_t i) { keep(areConnected(in_.pairs[i])); });
        report_.loop("are_connected_hit", in_.connectedPairs.size(),
                     [&](std::size_t i) { require(areConnected(in_.connectedPairs[i])); });
        report_.loop("lookup_name", nodesAskedFor_.size(),
                     [&](std::size_t i) {
                         require(scene().getNodePtrByFullName(nodesAskedFor_[i]) ==
                                 graph()[in_.namesAskedFor[i]].node);
                     });
        report_.loop("lookup_pin_name", pinsAskedFor_.size(),
                     [&](std::size_t i)
                     {
                         std::uint32_t const place = in_.namesAskedFor[i];
                         require(scene().getPinPtrByFullName(pinsAskedFor_[i]) ==
                                 graph()[place].inputs[place % 2]);
                     });
        report_.loop("lookup_id", in_.idsAskedFor.size(),
                     [&](std::size_t i)
                     {
                         std::uint32_t const place = in_.idsAskedFor[i];
                         require(scene().getNodePtrById(place + 1) == graph()[place].node);
                     });
    }

    void walkNeighbours()
    {
        std::uintptr_t sum = 0;
        auto const visit = [&sum](Connection const* connection)
        { sum += reinterpret_cast<std::uintptr_t>(connection); };
        report_.loop("neighbours", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         for (Pin const* const pin : graph()[in_.neighboursAskedFor[i]].node->getNodePins())
                         {
                             for (Connection const* const input : pin->getInputConnections()) visit(input);
                             for (Connection const* const output : pin->getOutputConnections()) visit(output);
                         }
                     });
        report_.loop("neighbours_gathered", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         kestrel::ArrayOfPtr<Connection, kestrel::KS_NO> connections;
                         graph()[in_.neighboursAskedFor[i]].node->getConnections(connections, true, true,
                                                                                 true, true);
                         for (Connection const* const connection : connections) visit(connection);
                     });
        keep(sum);
    }

    void group()
    {
        Node* const first = graph().addCompound("compound01");
        Node* const second = graph().addCompound("compound02");
        report_.loop("group", in_.grouped.size(),
                     [&](std::size_t i) { graph()[in_.grouped[i]].node->setNodeOwner(first); });
        kestrel::ArrayOfPtr<Node, kestrel::KS_NO> nodes;
        for (std::uint32_t const place : in_.groupedWithRewiring) nodes.append(graph()[place].node);
        MoveResults results;
        auto const move = [&] { results.moveIn(scene(), nodes, second); };
        report_.attempt("group_rewire", nodes.size(), [&] { return movesWithin(report_.budget(), move); });
    }

    Inputs const in_;
    Report const report_;
    Texts const names_;
    Texts const newNames_;
    Texts nodesAskedFor_;
    Texts pinsAskedFor_;
    std::unique_ptr<SampleGraph<Host>> graph_;
    kestrel::KS_String xml_;
};

} // namespace bench
