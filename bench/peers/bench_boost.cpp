// Boost.Graph: an adjacency list whose vertices stay where they are, and beside it two hash maps for names
// and ids. No pins; the number of the input is a property of the edge.
#include "../Inputs.h"
#include "../Timing.h"
#include "Report.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/graphviz.hpp>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace bench
{

namespace
{

struct NodeProperties
{
    std::uint32_t id;
    std::string name;
};

struct EdgeProperties
{
    std::uint32_t port;
};

using Graph =
    boost::adjacency_list<boost::vecS, boost::listS, boost::bidirectionalS, NodeProperties, EdgeProperties>;
using Vertex = boost::graph_traits<Graph>::vertex_descriptor;

struct Store
{
    Graph graph;
    std::unordered_map<std::string, Vertex> byName;
    std::unordered_map<std::uint32_t, Vertex> byId;
};

class BoostWorkloads
{
public:
    explicit BoostWorkloads(Arguments const& arguments)
        : in_(arguments.nodes),
          report_(arguments),
          namesAskedFor_(in_.namesOf(in_.namesAskedFor)),
          vertices_(in_.n),
          store_(std::make_unique<Store>())
    {}

    void run()
    {
        report_.start();
        build();
        ask();
        walkNeighbours();
        report_.loop("rename", in_.renamed.size(),
                     [&](std::size_t i) { rename(vertices_[in_.renamed[i]], in_.newNames[i]); });
        serialise();
        report_.notAvailable("group");
        report_.notAvailable("group_rewire");
        report_.loop("remove", in_.removed.size(), [&](std::size_t i) { remove(vertices_[in_.removed[i]]); });
        report_.once("clear", in_.n, [&] { store_.reset(); });
    }

private:
    Graph& graph() { return store_->graph; }

    void build()
    {
        report_.all("build", in_.n,
                    [&](std::size_t i) { vertices_[i] = add(static_cast<std::uint32_t>(i)); });
        report_.all("connect", in_.edges.size(),
                    [&](std::size_t i)
                    {
                        Edge const& edge = in_.edges[i];
                        boost::add_edge(vertices_[edge.source], vertices_[edge.target],
                                        EdgeProperties{edge.port}, graph());
                    });
    }

    Vertex add(std::uint32_t id)
    {
        Vertex const vertex = boost::add_vertex(NodeProperties{id, in_.names[id]}, graph());
        store_->byName.emplace(in_.names[id], vertex);
        store_->byId.emplace(id, vertex);
        return vertex;
    }

    bool areConnected(Edge const& edge)
    {
        return boost::edge(vertices_[edge.source], vertices_[edge.target], graph()).second;
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
            { require(store_->byName.find(namesAskedFor_[i])->second == vertices_[in_.namesAskedFor[i]]); });
        report_.notAvailable("lookup_pin_name");
        report_.loop(
            "lookup_id", in_.idsAskedFor.size(),
            [&](std::size_t i)
            { require(store_->byId.find(in_.idsAskedFor[i])->second == vertices_[in_.idsAskedFor[i]]); });
    }

    void walkNeighbours()
    {
        std::uintptr_t sum = 0;
        auto const visit = [&](Vertex vertex, auto const& edge)
        { sum += reinterpret_cast<std::uintptr_t>(vertex) + graph()[edge].port; };
        report_.loop("neighbours", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         Vertex const vertex = vertices_[in_.neighboursAskedFor[i]];
                         for (auto [edge, end] = boost::out_edges(vertex, graph()); edge != end; ++edge)
                             visit(boost::target(*edge, graph()), *edge);
                         for (auto [edge, end] = boost::in_edges(vertex, graph()); edge != end; ++edge)
                             visit(boost::source(*edge, graph()), *edge);
                     });
        keep(sum);
    }

    void rename(Vertex vertex, std::string const& name)
    {
        auto entry = store_->byName.extract(graph()[vertex].name);
        graph()[vertex].name = name;
        entry.key() = name;
        store_->byName.insert(std::move(entry));
    }

    void serialise()
    {
        report_.once("serialise", in_.n,
                     [&]
                     {
                         std::ostringstream out;
                         boost::write_graphviz(
                             out, graph(),
                             boost::make_label_writer(boost::get(&NodeProperties::name, graph())),
                             boost::default_writer(), boost::default_writer(),
                             boost::get(&NodeProperties::id, graph()));
                         written_ = out.str();
                     });
        std::fprintf(stderr, "serialised bytes: %zu\n", written_.size());
    }

    void remove(Vertex vertex)
    {
        store_->byName.erase(graph()[vertex].name);
        store_->byId.erase(graph()[vertex].id);
        boost::clear_vertex(vertex, graph());
        boost::remove_vertex(vertex, graph());
    }

    Inputs const in_;
    Report const report_;
    std::vector<std::string> const namesAskedFor_;
    std::vector<Vertex> vertices_;
    std::unique_ptr<Store> store_;
    std::string written_;
};

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    bench::BoostWorkloads(bench::readArguments(argc, argv)).run();
}
