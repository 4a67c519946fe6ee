#include "../MoveBudget.h"
#include "../MoveResults.h"
#include "SharedGraph.h"
#include "Workload.h"

#include <ks_graph/ks_graph.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

namespace
{

using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphScene;
using kestrel::graph::PIN_OUTPUT;

using Graph = SharedGraph::Graph;
using Texts = std::vector<KS_String>;

constexpr std::size_t hubConnections = 100000;
constexpr std::uint32_t childrenOfTheRenamedCompound = 1000;
constexpr std::uint32_t nodesMovedAtOnce = 10000;

// ---- Making ----

void build(std::uint32_t nodes, Measurement& measurement)
{
    Inputs const& inputs = SharedGraph::inputs(nodes);
    Texts const names(inputs.names.begin(), inputs.names.end());
    Graph& graph = SharedGraph::empty(nodes);
    graph.addRoot();
    measurement.all(nodes, [&](std::size_t i) { graph.addElement(names[i]); });
    measurement.bytesEach(SharedGraph::bytes(), nodes);
}

void connect(std::uint32_t nodes, Measurement& measurement)
{
    std::vector<Edge> const& edges = SharedGraph::inputs(nodes).edges;
    Graph& graph = SharedGraph::unconnected(nodes);
    std::int64_t const before = SharedGraph::bytes();
    measurement.all(edges.size(), [&](std::size_t i) { require(graph.connect(edges[i]) != nullptr); });
    measurement.bytesEach(SharedGraph::bytes() - before, edges.size());
}

// ---- Asking ----

void measureAreConnected(std::uint32_t nodes, std::vector<Edge> const& pairs, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    measurement.loop(pairs.size(),
                     [&](std::size_t i)
                     {
                         keep(graph.scene.areNodesConnected(graph[pairs[i].source].node,
                                                            graph[pairs[i].target].node, false, true));
                     });
}

void areConnected(std::uint32_t nodes, Measurement& measurement)
{
    measureAreConnected(nodes, SharedGraph::inputs(nodes).pairs, measurement);
}

void areConnectedHit(std::uint32_t nodes, Measurement& measurement)
{
    measureAreConnected(nodes, SharedGraph::inputs(nodes).connectedPairs, measurement);
}

void areConnectedByWalking(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene& scene = SharedGraph::connected(nodes).scene;
    scene.setUseAdjacencyMap(false);
    areConnected(nodes, measurement);
    scene.setUseAdjacencyMap(true);
}

Texts namesAskedFor(std::uint32_t nodes, std::string const& behind)
{
    Texts names;
    for (std::string const& name :
         SharedGraph::inputs(nodes).namesOf(SharedGraph::inputs(nodes).namesAskedFor))
        names.emplace_back(std::string("root.").append(name).append(behind));
    return names;
}

template <class LookUp>
void measureLookUps(Texts const& names, Measurement& measurement, LookUp lookUp)
{
    measurement.loop(names.size(), [&](std::size_t i) { keep(lookUp(names[i])); });
}

void lookUpName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measureLookUps(namesAskedFor(nodes, ""), measurement,
                   [&](KS_String const& name) { return scene.getNodePtrByFullName(name); });
}

void lookUpMissingName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measureLookUps(namesAskedFor(nodes, "x"), measurement,
                   [&](KS_String const& name) { return scene.getNodePtrByFullName(name); });
}

void lookUpPinName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measureLookUps(namesAskedFor(nodes, ".in1"), measurement,
                   [&](KS_String const& name) { return scene.getPinPtrByFullName(name); });
}

void lookUpMissingPinName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measureLookUps(namesAskedFor(nodes, ".in2"), measurement,
                   [&](KS_String const& name) { return scene.getPinPtrByFullName(name); });
}

void lookUpPinNameInAnyCase(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measureLookUps(namesAskedFor(nodes, ".IN1"), measurement,
                   [&](KS_String const& name) { return scene.getPinPtrByFullNameCaseInsensitive(name); });
}

void lookUpId(std::uint32_t nodes, Measurement& measurement)
{
    Inputs::Places const& places = SharedGraph::inputs(nodes).idsAskedFor;
    Graph const& graph = SharedGraph::connected(nodes);
    measurement.loop(places.size(), [&](std::size_t i)
                     { require(graph.scene.getNodePtrById(places[i] + 1) == graph[places[i]].node); });
}

void walkNeighbours(std::uint32_t nodes, Measurement& measurement)
{
    Inputs::Places const& places = SharedGraph::inputs(nodes).neighboursAskedFor;
    Graph const& graph = SharedGraph::connected(nodes);
    measurement.loop(places.size(),
                     [&](std::size_t i)
                     {
                         for (GraphNodePin const* const pin : graph[places[i]].node->getNodePins())
                         {
                             for (GraphConnection const* const in : pin->getInputConnections()) keep(in);
                             for (GraphConnection const* const out : pin->getOutputConnections()) keep(out);
                         }
                     });
}

void gatherConnections(std::uint32_t nodes, Measurement& measurement)
{
    Inputs::Places const& places = SharedGraph::inputs(nodes).neighboursAskedFor;
    Graph const& graph = SharedGraph::connected(nodes);
    measurement.loop(places.size(),
                     [&](std::size_t i)
                     {
                         ArrayOfPtr<GraphConnection, KS_NO> connections;
                         graph[places[i]].node->getConnections(connections, true, true, true, true);
                         keep(connections.size());
                     });
}

void writeXml(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene const& scene = SharedGraph::connected(nodes).scene;
    measurement.once(nodes, [&] { keep(scene.toXml().length()); });
}

// ---- Free names and ids ----

void freeNodeName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene& scene = SharedGraph::connected(nodes).scene;
    KS_String const owner("root");
    KS_String const base("compound");
    measurement.loop(1000, [&](std::size_t) { keep(scene.getFreeNodeName(owner, base).length()); });
}

void freePinName(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene& scene = SharedGraph::connected(nodes).scene;
    KS_String const node("root.node1");
    KS_String const base("in");
    measurement.loop(1000, [&](std::size_t) { keep(scene.getFreePinName(node, base).length()); });
}

void freeIds(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene& scene = SharedGraph::connected(nodes).scene;
    scene.getFreeNodeId(); // the first one walks over all ids that are taken
    measurement.loop(1000, [&](std::size_t) { keep(scene.getFreeNodeId()); });
}

// ---- Renaming ----

void renameNodes(std::uint32_t nodes, Measurement& measurement)
{
    Inputs const& inputs = SharedGraph::inputs(nodes);
    Graph const& graph = SharedGraph::connected(nodes);
    Texts const newNames(inputs.newNames.begin(), inputs.newNames.end());
    measurement.loop(newNames.size(),
                     [&](std::size_t i) { graph[inputs.renamed[i]].node->setName(newNames[i]); });
    for (std::uint32_t const place : inputs.renamed)
        graph[place].node->setName(KS_String(inputs.names[place]));
}

void renameCompound(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    GraphNodeBase* const compound = graph.addCompound("box");
    for (std::uint32_t i = 0; i < childrenOfTheRenamedCompound; ++i)
        graph.addChild(compound, KS_String(std::string("child").append(std::to_string(i))));
    KS_String const names[] = {"tub", "box"};
    measurement.loop(100, [&](std::size_t i) { compound->setName(names[i % 2]); });
    graph.removeCompound(compound);
}

// ---- Unwiring ----

void removeConnections(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    ArrayOfPtr<GraphConnection, KS_NO> const connections(graph.scene.getGraphConnections());
    measurement.loop(connections.size(), [&](std::size_t i)
                     { graph.scene.removeConnection(connections[static_cast<unsigned int>(i)]); });
    graph.scene.removeAllConnections();
}

void removeAllConnections(std::uint32_t nodes, Measurement& measurement)
{
    GraphScene& scene = SharedGraph::connected(nodes).scene;
    measurement.once(scene.getNumberOfConnections(), [&] { scene.removeAllConnections(); });
}

void removeConnectionsOfAHub(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    GraphNodePin* const hub = graph.scene.createNewPin(graph[0].node, unlimited, PIN_OUTPUT);
    hub->setName("hub");
    for (std::size_t i = 0; i < hubConnections; ++i)
        graph.scene.connect(hub, graph[i % nodes].inputs[0], false);
    measurement.once(hubConnections, [&] { graph.scene.removeConnectionsWithPin(hub); });
    graph.scene.removeNodePinFromSceneAndNode(hub);
}

// ---- Compounds ----

MoveResults::Nodes listed(Graph const& graph, Inputs::Places const& places)
{
    MoveResults::Nodes nodes;
    for (std::uint32_t const place : places) nodes.append(graph[place].node);
    return nodes;
}

Inputs::Places firstPlaces(std::uint32_t count)
{
    Inputs::Places places(count);
    for (std::uint32_t i = 0; i < count; ++i) places[i] = i;
    return places;
}

void setOwners(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    Inputs::Places const& places = SharedGraph::inputs(nodes).grouped;
    GraphNodeBase* const compound = graph.addCompound("box");
    measurement.loop(places.size(), [&](std::size_t i) { graph[places[i]].node->setNodeOwner(compound); });
    for (std::uint32_t const place : places) graph[place].node->setNodeOwner(graph.root());
    graph.removeCompound(compound);
}

// A compound with nodes that were moved into it. As long as a move ended within its time, the graph is in the
// end connected as before.
class Grouping
{
public:
    Grouping(std::uint32_t nodes, Inputs::Places const& places, Measurement& measurement)
        : graph_(SharedGraph::connected(nodes)),
          compound_(graph_.addCompound("box")),
          moved_(listed(graph_, places)),
          measurement_(measurement)
    {}

    ~Grouping()
    {
        if (complete_) complete_ = movesWithin(timeToUndo, [&] { dissolve(); });
        if (!complete_) SharedGraph::drop();
    }

    Grouping(Grouping const&) = delete;
    Grouping& operator=(Grouping const&) = delete;

    void moveIn()
    {
        complete_ = movesWithin(timeToUndo, [&] { MoveResults().moveIn(graph_.scene, moved_, compound_); });
        if (!complete_) measurement_.giveUp("moving nodes in takes too long");
    }

    void measureMoveIn()
    {
        measure(moved_, [&] { results_.moveIn(graph_.scene, moved_, compound_); });
    }
    void measureMoveOut()
    {
        measure(moved_, [&] { results_.moveOut(graph_.scene, moved_, compound_); });
    }
    // Half of them, so that connections are left that cross the boundary.
    void measureMoveOutCreatingInterfaces()
    {
        MoveResults::Nodes half;
        for (unsigned int i = 0; i < moved_.size(); i += 2) half.append(moved_[i]);
        measure(half, [&] { results_.moveOutCreatingInterfaces(graph_.scene, half, compound_); });
    }

private:
    static constexpr double timeToUndo = 10 * Measurement::budgetInSeconds;

    template <class Move>
    void measure(MoveResults::Nodes const& nodes, Move move)
    {
        if (!complete_) return;
        measurement_.once(nodes.size(), [&] { complete_ = movesWithin(Measurement::budgetInSeconds, move); });
        if (!complete_) measurement_.giveUp("the budget is spent");
    }

    void dissolve()
    {
        MoveResults::Nodes inside;
        for (GraphNodeBase* const node : compound_->getNodes())
            if (!node->isInterface()) inside.append(node);
        MoveResults().moveOut(graph_.scene, inside, compound_);
        graph_.removeCompound(compound_);
    }

    Graph& graph_;
    GraphNodeBase* compound_;
    MoveResults::Nodes moved_;
    MoveResults results_;
    Measurement& measurement_;
    bool complete_ = true;
};

void moveIn(std::uint32_t nodes, Measurement& measurement)
{
    Grouping(nodes, SharedGraph::inputs(nodes).grouped, measurement).measureMoveIn();
}

void moveOut(std::uint32_t nodes, Measurement& measurement)
{
    Grouping grouping(nodes, SharedGraph::inputs(nodes).grouped, measurement);
    grouping.moveIn();
    grouping.measureMoveOut();
}

void moveOutCreatingInterfaces(std::uint32_t nodes, Measurement& measurement)
{
    Grouping grouping(nodes, SharedGraph::inputs(nodes).grouped, measurement);
    grouping.moveIn();
    grouping.measureMoveOutCreatingInterfaces();
}

void moveManyIn(std::uint32_t nodes, Measurement& measurement)
{
    Grouping(nodes, firstPlaces(nodesMovedAtOnce), measurement).measureMoveIn();
}

void moveManyOut(std::uint32_t nodes, Measurement& measurement)
{
    Grouping grouping(nodes, firstPlaces(nodesMovedAtOnce), measurement);
    grouping.moveIn();
    grouping.measureMoveOut();
}

void moveManyOutCreatingInterfaces(std::uint32_t nodes, Measurement& measurement)
{
    Grouping grouping(nodes, firstPlaces(nodesMovedAtOnce), measurement);
    grouping.moveIn();
    grouping.measureMoveOutCreatingInterfaces();
}

// ---- Taking apart ----

void removeNodes(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    Inputs::Places const& places = SharedGraph::inputs(nodes).removed;
    measurement.loop(places.size(), [&](std::size_t i) { graph.remove(places[i]); });
    SharedGraph::drop();
}

void clear(std::uint32_t nodes, Measurement& measurement)
{
    Graph& graph = SharedGraph::connected(nodes);
    measurement.once(nodes, [&] { graph.clear(); });
    SharedGraph::drop();
}

} // namespace

std::vector<Workload> sceneWorkloads()
{
    return {
        {"build", build},
        {"connect", connect},
        {"are_connected", areConnected},
        {"are_connected_hit", areConnectedHit},
        {"are_connected_by_walking", areConnectedByWalking},
        {"lookup_name", lookUpName},
        {"lookup_missing_name", lookUpMissingName},
        {"lookup_pin_name", lookUpPinName},
        {"lookup_missing_pin_name", lookUpMissingPinName},
        {"lookup_pin_name_in_any_case", lookUpPinNameInAnyCase},
        {"lookup_id", lookUpId},
        {"neighbours", walkNeighbours},
        {"neighbours_gathered", gatherConnections},
        {"serialise", writeXml},
        {"free_node_name", freeNodeName},
        {"free_pin_name", freePinName},
        {"free_id", freeIds},
        {"rename", renameNodes},
        {"rename_compound_of_1000", renameCompound},
        {"remove_connection", removeConnections},
        {"remove_all_connections", removeAllConnections},
        {"remove_connections_of_hub", removeConnectionsOfAHub},
        {"group", setOwners},
        {"move_in", moveIn},
        {"move_out", moveOut},
        {"move_out_with_interfaces", moveOutCreatingInterfaces},
        {"move_10000_in", moveManyIn, nodesMovedAtOnce},
        {"move_10000_out", moveManyOut, nodesMovedAtOnce},
        {"move_10000_out_with_interfaces", moveManyOutCreatingInterfaces, nodesMovedAtOnce},
        {"remove", removeNodes},
        {"clear", clear},
    };
}

} // namespace bench
