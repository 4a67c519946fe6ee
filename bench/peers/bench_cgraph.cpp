// Graphviz cgraph: nodes and edges, no pins.
#include "../Inputs.h"
#include "../Timing.h"
#include "Report.h"

#include <graphviz/cgraph.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace bench
{

namespace
{

int appendText(void* text, char const* part)
{
    static_cast<std::string*>(text)->append(part);
    return 0;
}

int flushNothing(void*)
{
    return 0;
}

// cgraph takes its texts as pointers to what it does not change.
char* text(std::string const& from)
{
    return const_cast<char*>(from.c_str());
}

class CgraphWorkloads
{
public:
    explicit CgraphWorkloads(Arguments const& arguments)
        : in_(arguments.nodes),
          report_(arguments),
          namesAskedFor_(in_.namesOf(in_.namesAskedFor)),
          nodes_(in_.n)
    {}

    void run()
    {
        report_.start();
        build();
        ask();
        walkNeighbours();
        report_.loop("rename", in_.renamed.size(),
                     [&](std::size_t i) { rename(in_.renamed[i], in_.newNames[i]); });
        serialise();
        Agraph_t* const cluster = agsubg(graph_, text("cluster0"), 1);
        report_.loop("group", in_.grouped.size(),
                     [&](std::size_t i) { agsubnode(cluster, nodes_[in_.grouped[i]], 1); });
        report_.notAvailable("group_rewire");
        report_.loop("remove", in_.removed.size(),
                     [&](std::size_t i) { agdelnode(graph_, nodes_[in_.removed[i]]); });
        report_.once("clear", in_.n, [&] { agclose(graph_); });
    }

private:
    void build()
    {
        graph_ = agopen(text("g"), Agdirected, &disciplines_);
        report_.all("build", in_.n,
                    [&](std::size_t i) { nodes_[i] = agnode(graph_, text(in_.names[i]), 1); });
        report_.all("connect", in_.edges.size(), [&](std::size_t i) { keep(edge(in_.edges[i], 1)); });
    }

    void ask()
    {
        report_.loop("are_connected", in_.pairs.size(), [&](std::size_t i) { keep(edge(in_.pairs[i], 0)); });
        report_.loop("are_connected_hit", in_.connectedPairs.size(),
                     [&](std::size_t i) { require(edge(in_.connectedPairs[i], 0) != nullptr); });
        report_.loop("lookup_name", namesAskedFor_.size(),
                     [&](std::size_t i) {
                         require(agnode(graph_, text(namesAskedFor_[i]), 0) == nodes_[in_.namesAskedFor[i]]);
                     });
        report_.notAvailable("lookup_pin_name");
        std::vector<IDTYPE> ids;
        for (Agnode_t* const node : nodes_) ids.push_back(AGID(node));
        report_.loop("lookup_id", in_.idsAskedFor.size(),
                     [&](std::size_t i) {
                         require(agidnode(graph_, ids[in_.idsAskedFor[i]], 0) == nodes_[in_.idsAskedFor[i]]);
                     });
    }

    void walkNeighbours()
    {
        std::uintptr_t sum = 0;
        report_.loop("neighbours", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         Agnode_t* const node = nodes_[in_.neighboursAskedFor[i]];
                         for (Agedge_t* e = agfstedge(graph_, node); e != nullptr;
                              e = agnxtedge(graph_, e, node))
                             sum += reinterpret_cast<std::uintptr_t>(e);
                     });
        keep(sum);
    }

    // agrelabel_node crashes in version 2.42: a new node takes over the edges instead, and the old one goes.
    void rename(std::uint32_t place, std::string const& name)
    {
        Agnode_t* const old = nodes_[place];
        Agnode_t* const renamed = agnode(graph_, text(name), 1);
        for (Agedge_t* e = agfstout(graph_, old); e != nullptr; e = agnxtout(graph_, e))
            agedge(graph_, renamed, aghead(e) == old ? renamed : aghead(e), nullptr, 1);
        for (Agedge_t* e = agfstin(graph_, old); e != nullptr; e = agnxtin(graph_, e))
            if (agtail(e) != old) agedge(graph_, agtail(e), renamed, nullptr, 1);
        agdelnode(graph_, old);
        nodes_[place] = renamed;
    }

    void serialise()
    {
        report_.once("serialise", in_.n, [&] { agwrite(graph_, &written_); });
        std::fprintf(stderr, "serialised bytes: %zu\n", written_.size());
    }

    Agedge_t* edge(Edge const& ends, int create)
    {
        return agedge(graph_, nodes_[ends.source], nodes_[ends.target], nullptr, create);
    }

    Inputs const in_;
    Report const report_;
    std::vector<std::string> const namesAskedFor_;
    std::vector<Agnode_t*> nodes_;
    Agiodisc_t output_{nullptr, appendText, flushNothing};
    Agdisc_t disciplines_{&AgMemDisc, &AgIdDisc, &output_};
    Agraph_t* graph_ = nullptr;
    std::string written_;
};

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    bench::CgraphWorkloads(bench::readArguments(argc, argv)).run();
}
