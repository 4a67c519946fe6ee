/// @file
/// Several threads each build, change and clear a scene of their own at the same time; what they share are
/// the counters and the callbacks. Meant for the thread sanitizer as well.
#include <ks_graph/GraphScene.h>

#include "support/GraphTexts.h"
#include "support/MoveRecords.h"
#include "support/SceneInvariants.h"
#include "support/SceneText.h"
#include "support/TestGraph.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

/// Sets the callbacks for as long as it lives; they count, as a host's may that serves several scenes.
class CountingCallbacks
{
public:
    CountingCallbacks()
    {
        for (std::atomic<unsigned int>& calls : counts) calls = 0;
        GraphScene::addNodeCallback_ = [](auto...) { ++counts[0]; };
        GraphScene::removeNodeCallback_ = [](auto...) { ++counts[1]; };
        GraphScene::addConnectionCallback_ = [](auto...) { ++counts[2]; };
        GraphScene::removeConnectionCallback_ = [](auto...) { ++counts[3]; };
        GraphScene::addNodePinCallback_ = [](auto...) { ++counts[4]; };
        GraphScene::removeNodePinCallback_ = [](auto...) { ++counts[5]; };
    }

    ~CountingCallbacks()
    {
        GraphScene::addNodeCallback_ = GraphScene::removeNodeCallback_ = nullptr;
        GraphScene::addConnectionCallback_ = GraphScene::removeConnectionCallback_ = nullptr;
        GraphScene::addNodePinCallback_ = GraphScene::removeNodePinCallback_ = nullptr;
    }

    CountingCallbacks(CountingCallbacks const&) = delete;
    CountingCallbacks& operator=(CountingCallbacks const&) = delete;

    std::vector<unsigned int> calls() const { return {std::begin(counts), std::end(counts)}; }

private:
    static std::atomic<unsigned int> counts[6];
};

std::atomic<unsigned int> CountingCallbacks::counts[6];

/// A chain of nodes, half of which go into a compound and some out again, with what the scene looked like
/// after each step. Ends with a cleared scene.
std::vector<std::string> lifeOfAScene()
{
    constexpr unsigned int length = 12;
    TestGraph<> graph;
    std::vector<std::string> texts;
    auto const note = [&]
    {
        EXPECT_SCENE_INVARIANTS(graph.scene);
        texts.push_back(sceneText(graph.scene));
    };

    std::vector<TestNode*> chain;
    for (unsigned int i = 0; i < length; ++i)
    {
        chain.push_back(&graph.addFilter(KS_String(std::to_string(i))));
        if (i > 0) graph.scene.connect(chain[i - 1], chain[i], i % 5 == 0);
    }
    note();

    TestNode& box = graph.addNode("box");
    box.setCompound(true);
    Nodes grouped;
    for (unsigned int i = length / 4; i < length / 2; ++i) grouped.append(chain[i]);
    MoveRecords in;
    graph.scene.moveNodesToCompound(grouped, &box, in.pinRenames, in.inputInterfaces, in.outputInterfaces,
                                    in.newInterfaceNodes, in.newCompoundPins, in.removed, in.outer, in.inner);
    note();

    box.setName("a box by another name");
    Nodes ungrouped;
    ungrouped.append(chain[length / 4]);
    MoveRecords out;
    graph.scene.removeNodesFromCompoundCreatingInterfaces(
        &box, ungrouped, out.pinRenames, out.removedOuter, out.removed, out.outer, out.inner,
        out.inputInterfaces, out.outputInterfaces, out.newInterfaceNodes, out.newCompoundPins);
    note();
    texts.push_back(std::string(graph.scene.toXml()));

    graph.scene.removeNodePins(chain.back());
    graph.scene.removeNodeFromGraph(chain.back());
    graph.scene.removeConnectionsWithNode(chain[1]);
    note();

    graph.scene.removeAllConnections();
    Nodes left;
    graph.scene.getGraphNodesAsList(left);
    for (GraphNodeBase* const node : left) node->destroyNodePins(); // the moves' own nodes would leave theirs
    graph.scene.clear();
    texts.push_back(std::to_string(graph.scene.getNumberOfNodes() + graph.scene.getNumberOfConnections()));
    return texts;
}

class SceneThreads : public ::testing::TestWithParam<unsigned int>
{
protected:
    unsigned int const count = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Of, SceneThreads, ::testing::Values(2u, 8u, 32u));

TEST_P(SceneThreads, ScenesThatAreBuiltGroupedAndClearedAtOnceAreAsIfAlone)
{
    constexpr unsigned int livesInAll = 64;
    CountingCallbacks const callbacks;
    std::vector<std::string> const expected = lifeOfAScene();
    std::vector<unsigned int> expectedCalls = callbacks.calls();
    for (unsigned int& calls : expectedCalls)
    {
        EXPECT_GT(calls, 0u);
        calls *= 1 + livesInAll;
    }
    std::vector<unsigned int> asIfAlone(count);
    onThreads(count,
              [&](unsigned int i)
              {
                  for (unsigned int life = 0; life < livesInAll / count; ++life)
                      if (lifeOfAScene() == expected) ++asIfAlone[i];
              });
    EXPECT_EQ(asIfAlone, std::vector<unsigned int>(count, livesInAll / count));
    EXPECT_EQ(callbacks.calls(), expectedCalls);
}

TEST_P(SceneThreads, ScenesAndPinsThatAreMadeAtOnceGetIdsOfTheirOwn)
{
    unsigned int const scenesPerThread = 200 / count;
    constexpr unsigned int pinsPerScene = 20;
    unsigned int const lastBefore = GraphScene::lastUsedId_;
    std::vector<std::vector<unsigned int>> sceneIds(count);
    std::vector<std::vector<unsigned int>> pinIds(count);
    onThreads(count,
              [&](unsigned int i)
              {
                  for (unsigned int k = 0; k < scenesPerThread; ++k)
                  {
                      GraphScene scene;
                      sceneIds[i].push_back(scene.getId());
                      TestNode node(1);
                      for (unsigned int n = 0; n < pinsPerScene; ++n)
                          pinIds[i].push_back(scene.createNewPin(&node, 1, PIN_INPUT)->getId());
                  }
              });
    std::set<unsigned int> distinctScenes;
    std::set<unsigned int> distinctPins;
    for (std::vector<unsigned int> const& ids : sceneIds) distinctScenes.insert(ids.begin(), ids.end());
    for (std::vector<unsigned int> const& ids : pinIds) distinctPins.insert(ids.begin(), ids.end());
    EXPECT_EQ(distinctScenes.size(), count * scenesPerThread);
    EXPECT_EQ(*distinctScenes.begin(), lastBefore + 1);
    EXPECT_EQ(*distinctScenes.rbegin(), lastBefore + count * scenesPerThread);
    EXPECT_EQ(GraphScene::lastUsedId_, lastBefore + count * scenesPerThread);
    EXPECT_EQ(distinctPins.size(), count * scenesPerThread * pinsPerScene);
}

} // namespace

} // namespace kestrel::graph::test
