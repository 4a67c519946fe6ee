// What an operation costs does not depend on how large the graph is, or grows no faster than a search in an
// ordered map does. Counted, so that it holds on any machine under any load.
#include "AllocationCounter.h"
#include "CountingHost.h"
#include "DerivedHost.h"
#include "Inputs.h"
#include "MoveResults.h"
#include "SampleGraph.h"
#include "StepCounter.h"

#include <ks_graph/ks_graph.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using bench::Inputs;
using bench::MoveResults;
using bench::SampleGraph;

constexpr std::uint32_t smallSize = 200;
constexpr std::uint32_t largeSize = 10 * smallSize;

Inputs const& inputsOf(std::uint32_t nodes)
{
    static Inputs const small(smallSize);
    static Inputs const large(largeSize);
    return nodes == smallSize ? small : large;
}

// Of one operation, on average.
struct Cost
{
    double steps;
    double copiedBytes;
    double allocations;
    double namesAskedFor;
};

template <class Operation>
Cost costOf(std::size_t operations, Operation operate)
{
    Work const workBefore = workSoFar();
    std::uint64_t const allocationsBefore = bench::allocationsSoFar().count;
    std::uint64_t const namesBefore = namesAskedFor();
    operate();
    Work const work = workSoFar();
    auto const each = [operations](std::uint64_t from, std::uint64_t to)
    { return static_cast<double>(to - from) / static_cast<double>(operations); };
    return {each(workBefore.steps, work.steps), each(workBefore.copiedBytes, work.copiedBytes),
            each(allocationsBefore, bench::allocationsSoFar().count), each(namesBefore, namesAskedFor())};
}

// With ten times as much of something. A search in an ordered map takes a third more steps then, a growing
// list copies up to twice as much, and whatever walks over all of it takes ten times as much.
void expectNoGrowth(Cost const& small, Cost const& large)
{
    EXPECT_GT(small.steps, 0) << "nothing was measured";
    EXPECT_LE(large.steps, 1.6 * small.steps + 10) << "up from " << small.steps;
    EXPECT_LE(large.copiedBytes, 2 * small.copiedBytes + 64) << "up from " << small.copiedBytes;
    EXPECT_LE(large.allocations, 1.2 * small.allocations + 1) << "up from " << small.allocations;
    EXPECT_LE(large.namesAskedFor, 1.1 * small.namesAskedFor + 1) << "up from " << small.namesAskedFor;
}

template <class Host>
class Costs : public testing::Test
{
protected:
    using Graph = SampleGraph<Host>;

    // `measure` takes a graph and its inputs and returns the cost of one operation.
    template <class Measure>
    static void expectTheSameInALargeGraph(Measure measure)
    {
        expectNoGrowth(measureIn(smallSize, measure), measureIn(largeSize, measure));
    }

    // The same, for what takes nodes out of a list of children: it keeps its order, so the bytes behind them
    // move up, the more the longer it is.
    template <class Measure>
    static void expectAsManyStepsInALargeGraph(Measure measure)
    {
        expectTheSameInALargeGraph(
            [measure](Graph& graph, Inputs const& inputs)
            {
                Cost cost = measure(graph, inputs);
                cost.copiedBytes = 0;
                return cost;
            });
    }

    template <class Measure>
    static Cost measureIn(std::uint32_t nodes, Measure measure)
    {
        Graph graph(inputsOf(nodes));
        return measure(graph, inputsOf(nodes));
    }

    // `measure` takes the inputs.
    template <class Measure>
    static void expectTheSameWithLargeInputs(Measure measure)
    {
        expectNoGrowth(measure(inputsOf(smallSize)), measure(inputsOf(largeSize)));
    }

    // Spread over the graph: at its ends, a walk might end at once.
    static MoveResults::Nodes someNodes(Graph const& graph, std::size_t count)
    {
        MoveResults::Nodes nodes;
        for (std::size_t i = 0; i < count; ++i) nodes.append(graph[placeOf(i, count, graph)].node);
        return nodes;
    }

    static std::size_t placeOf(std::size_t i, std::size_t count, Graph const& graph)
    {
        return (2 * i + 1) * graph.size() / (2 * count);
    }
};

// Those that rest on names. A node that makes its own has to be asked for it, each time and with all others,
// so these hold only while the nodes keep the names of the library.
template <class Host>
class CostsWithNames : public Costs<Host>
{
};

using HostsWithNames = testing::Types<bench::PlainHost, bench::DerivedHost>;
using Hosts = testing::Types<bench::PlainHost, bench::DerivedHost, CountingHost>;

struct HostNames
{
    template <class Host>
    static std::string GetName(int)
    {
        if (std::is_same_v<Host, bench::PlainHost>) return "TheLibrarysClasses";
        return std::is_same_v<Host, CountingHost> ? "ClassesWithNamesOfTheirOwn" : "DerivedClasses";
    }
};

TYPED_TEST_SUITE(Costs, Hosts, HostNames);
TYPED_TEST_SUITE(CostsWithNames, HostsWithNames, HostNames);

TYPED_TEST(Costs, AddingANodeWithItsPinsCostsTheSameInALargeGraph)
{
    this->expectTheSameWithLargeInputs(
        [](Inputs const& inputs)
        {
            SampleGraph<TypeParam> graph(inputs.n);
            return costOf(inputs.n, [&] { graph.addElements(inputs); });
        });
}

TYPED_TEST(Costs, ConnectingCostsTheSameInALargeGraph)
{
    this->expectTheSameWithLargeInputs(
        [](Inputs const& inputs)
        {
            SampleGraph<TypeParam> graph(inputs.n);
            graph.addElements(inputs);
            return costOf(inputs.edges.size(),
                          [&]
                          {
                              for (bench::Edge const& edge : inputs.edges) graph.connect(edge);
                          });
        });
}

TYPED_TEST(Costs, AskingWhetherNodesAreConnectedCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const& inputs)
        {
            return costOf(1000,
                          [&]
                          {
                              for (std::size_t i = 0; i < 1000; ++i)
                                  graph.scene.areNodesConnected(graph[inputs.pairs[i].source].node,
                                                                graph[inputs.pairs[i].target].node, true,
                                                                true);
                          });
        });
}

TYPED_TEST(Costs, RemovingOneConnectionAfterTheOtherCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            ArrayOfPtr<GraphConnection, KS_NO> const connections(graph.scene.getGraphConnections());
            return costOf(connections.size(),
                          [&]
                          {
                              for (GraphConnection const* const connection : connections)
                                  graph.scene.removeConnection(connection);
                          });
        });
}

TYPED_TEST(Costs, RemovingAllConnectionsCostsTheSameForEachInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&) {
            return costOf(graph.scene.getNumberOfConnections(), [&] { graph.scene.removeAllConnections(); });
        });
}

TYPED_TEST(Costs, RemovingTheConnectionsOfAPinCostsTheSameForEachHoweverManyItHas)
{
    auto const removeThoseOfAHub = [](auto& graph, Inputs const& inputs)
    {
        for (std::size_t i = 0; i < inputs.n; ++i)
            graph.scene.connect(graph[0].output, graph[i].inputs[0], false);
        return costOf(inputs.n, [&] { graph.scene.removeConnectionsWithPin(graph[0].output); });
    };
    this->expectTheSameInALargeGraph(removeThoseOfAHub);
}

TYPED_TEST(Costs, RenamingANodeCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            MoveResults::Nodes const nodes = TestFixture::someNodes(graph, 100);
            return costOf(nodes.size(),
                          [&]
                          {
                              for (GraphNodeBase* const node : nodes) node->setName("renamed");
                          });
        });
}

TYPED_TEST(Costs, RenamingACompoundCostsTheSameForEachNodeInIt)
{
    this->expectTheSameInALargeGraph([](auto& graph, Inputs const& inputs)
                                     { return costOf(inputs.n, [&] { graph.root()->setName("renamed"); }); });
}

TYPED_TEST(CostsWithNames, FindingANodeByItsFullNameCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            std::vector<KS_String> names{"root.missing"};
            for (GraphNodeBase* const node : TestFixture::someNodes(graph, 20))
                names.push_back(node->getFullName());
            return costOf(names.size(),
                          [&]
                          {
                              for (KS_String const& name : names) graph.scene.getNodePtrByFullName(name);
                          });
        });
}

TYPED_TEST(Costs, FindingAPinByItsFullNameCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            std::vector<KS_String> names{"root.node1.missing"};
            for (GraphNodeBase* const node : TestFixture::someNodes(graph, 20))
                names.push_back(node->getNodePins()[0]->getFullName());
            return costOf(names.size(),
                          [&]
                          {
                              for (KS_String const& name : names) graph.scene.getPinPtrByFullName(name);
                          });
        });
}

TYPED_TEST(CostsWithNames, AFreeNodeNameCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        { return costOf(1, [&] { graph.scene.getFreeNodeName("root", "compound"); }); });
}

TYPED_TEST(Costs, AFreePinNameCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        { return costOf(1, [&] { graph.scene.getFreePinName(graph[7].node->getFullName(), "in"); }); });
}

TYPED_TEST(Costs, AFreeIdAfterTheFirstCostsTheSameInALargeGraph)
{
    this->expectTheSameInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            graph.scene.getFreeNodeId();
            return costOf(1, [&] { graph.scene.getFreeNodeId(); });
        });
}

TYPED_TEST(Costs, WritingXmlCostsTheSameForEachNodeOfALargeGraph)
{
    this->expectTheSameInALargeGraph([](auto& graph, Inputs const& inputs)
                                     { return costOf(inputs.n, [&] { graph.scene.toXml(); }); });
}

TYPED_TEST(Costs, MovingANodeUnderAnotherTakesAsManyStepsInALargeGraph)
{
    this->expectAsManyStepsInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            GraphNodeBase* const compound = graph.addCompound("compound");
            MoveResults::Nodes const nodes = TestFixture::someNodes(graph, 20);
            return costOf(nodes.size(),
                          [&]
                          {
                              for (GraphNodeBase* const node : nodes) node->setNodeOwner(compound);
                          });
        });
}

TYPED_TEST(CostsWithNames, MovingNodesIntoACompoundTakesAsManyStepsInALargeGraph)
{
    this->expectAsManyStepsInALargeGraph(
        [](auto& graph, Inputs const&)
        {
            GraphNodeBase* const compound = graph.addCompound("compound");
            MoveResults::Nodes const nodes = TestFixture::someNodes(graph, 20);
            MoveResults results;
            return costOf(nodes.size(), [&] { results.moveIn(graph.scene, nodes, compound); });
        });
}

// A tenth of the nodes each time.
TYPED_TEST(CostsWithNames, MovingNodesIntoACompoundTakesAsManyStepsForEachHoweverManyMove)
{
    this->expectAsManyStepsInALargeGraph(
        [](auto& graph, Inputs const& inputs)
        {
            GraphNodeBase* const compound = graph.addCompound("compound");
            MoveResults::Nodes const nodes = TestFixture::someNodes(graph, inputs.n / 10);
            MoveResults results;
            return costOf(nodes.size(), [&] { results.moveIn(graph.scene, nodes, compound); });
        });
}

TYPED_TEST(CostsWithNames, MovingNodesOutOfACompoundTakesAsManyStepsForEachHoweverManyMove)
{
    this->expectAsManyStepsInALargeGraph(
        [](auto& graph, Inputs const& inputs)
        {
            GraphNodeBase* const compound = graph.addCompound("compound");
            MoveResults::Nodes nodes = TestFixture::someNodes(graph, inputs.n / 10);
            MoveResults().moveIn(graph.scene, nodes, compound);
            MoveResults results;
            return costOf(nodes.size(), [&] { results.moveOut(graph.scene, nodes, compound); });
        });
}

TYPED_TEST(Costs, RemovingANodeTakesAsManyStepsWhenItsParentHasManyChildren)
{
    this->expectAsManyStepsInALargeGraph(
        [](auto& graph, Inputs const& inputs)
        {
            std::size_t const count = inputs.n / 10;
            return costOf(count,
                          [&]
                          {
                              for (std::size_t i = 0; i < count; ++i)
                                  graph.remove(TestFixture::placeOf(i, count, graph));
                          });
        });
}

TYPED_TEST(Costs, ClearingCostsTheSameForEachNodeOfALargeGraph)
{
    this->expectTheSameInALargeGraph([](auto& graph, Inputs const& inputs)
                                     { return costOf(inputs.n, [&] { graph.clear(); }); });
}

} // namespace

} // namespace kestrel::graph::test
