#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using Sequence = std::vector<GraphConnection*>;

/// The rule of every list of connections: the last one moves into the place of the first that is equal.
void removeWithSwap(Sequence& sequence, GraphConnection const* connection)
{
    auto const found = std::find(sequence.begin(), sequence.end(), connection);
    if (found == sequence.end()) return;
    *found = sequence.back();
    sequence.pop_back();
}

ArrayOfPtr<GraphConnection, KS_NO> arrayOf(Sequence const& sequence)
{
    ArrayOfPtr<GraphConnection, KS_NO> array;
    for (GraphConnection* connection : sequence) array.append(connection);
    return array;
}

/// A scene beside a plain vector of its connections; every change is made to both, and they are compared.
class ArrayModel
{
public:
    explicit ArrayModel(unsigned int seed) : random_(seed)
    {
        graph.scene.setUseAdjacencyMap(false); // the host's own connections are never counted
        for (char const* name : {"a", "b", "c"})
        {
            TestNode& node = graph.addNode(name);
            for (char const* pin : {"one", "two", "three"})
                pins_.push_back(&graph.addPin(node, pin, PIN_INPUT | PIN_OUTPUT));
        }
    }

    ~ArrayModel()
    {
        // Those that the host took out of the array are no longer the scene's.
        for (GraphConnection* connection : outside_) graph.scene.removeConnection(connection);
    }

    ArrayModel(ArrayModel const&) = delete;
    ArrayModel& operator=(ArrayModel const&) = delete;

    std::size_t size() const { return model_.size(); }
    unsigned int below(std::size_t bound) { return static_cast<unsigned int>(random_() % bound); }

    void connect()
    {
        GraphNodePin* const source = anyPin();
        GraphNodePin* const target = anyPin();
        GraphConnection* const made = graph.scene.connect(source, target, below(2) != 0);
        ASSERT_NE(nullptr, made);
        enter(made);
    }

    void remove()
    {
        if (model_.empty()) return;
        GraphConnection* const connection = model_[below(model_.size())];
        forget(connection);
        EXPECT_TRUE(graph.scene.removeConnection(connection));
    }

    /// Another connection goes while the first one is on its way out.
    void removeTwoAtOnce()
    {
        if (model_.size() < 2) return;
        GraphConnection* const first = model_[below(model_.size())];
        GraphConnection* const second = model_[below(model_.size())];
        if (first == second) return;
        forget(second);
        forget(first);
        CallbackLog log;
        log.onConnection = [=](GraphScene* scene, GraphNodeBase*, GraphConnection* connection)
        {
            if (connection == first) scene->removeConnection(second);
        };
        EXPECT_TRUE(graph.scene.removeConnection(first));
    }

    void removeWithPin()
    {
        GraphNodePin* const pin = anyPin();
        Sequence gone = inputs_[pin];
        for (GraphConnection* connection : outputs_[pin])
            if (connection->getTargetPin() != pin) gone.push_back(connection);
        for (GraphConnection* connection : gone)
        {
            forget(connection);
            removeWithSwap(outside_, connection);
        }
        graph.scene.removeConnectionsWithPin(pin);
    }

    void reorder()
    {
        if (model_.empty()) return;
        ArrayOfPtr<GraphConnection, KS_NO>& array = graph.scene.refGraphConnections();
        unsigned int const middle = below(model_.size());
        switch (below(4))
        {
        case 0:
            std::shuffle(model_.begin(), model_.end(), random_);
            break;
        case 1:
            std::reverse(model_.begin(), model_.end());
            break;
        case 2:
            std::rotate(model_.begin(), model_.begin() + middle, model_.end());
            break;
        default:
            std::swap(model_[middle], model_.back());
            break;
        }
        if (below(2) != 0)
            graph.scene.setGraphConnections(arrayOf(model_));
        else
            std::copy(model_.begin(), model_.end(), array.begin());
    }

    /// The host appends a connection that it made and wired itself.
    void appendForeign()
    {
        GraphConnection* const made = new GraphConnection(anyPin(), anyPin());
        made->addToConnectedPins();
        graph.scene.refGraphConnections().append(made);
        enter(made);
    }

    /// The host takes a connection out of the array and leaves it wired.
    void takeOut()
    {
        if (model_.empty()) return;
        unsigned int const index = below(model_.size());
        outside_.push_back(model_[index]);
        model_.erase(model_.begin() + index);
        graph.scene.setGraphConnections(arrayOf(model_));
    }

    void removeOneThatWasTakenOut()
    {
        if (outside_.empty()) return;
        GraphConnection* const connection = outside_[below(outside_.size())];
        removeWithSwap(outside_, connection);
        forget(connection);
        EXPECT_TRUE(graph.scene.removeConnection(connection));
    }

    void putBack()
    {
        for (GraphConnection* connection : outside_)
        {
            graph.scene.refGraphConnections().append(connection);
            model_.push_back(connection);
        }
        outside_.clear();
    }

    bool agrees()
    {
        bool good = model_ == listed(graph.scene.getGraphConnections());
        for (GraphNodePin* pin : pins_)
        {
            good = good && inputs_[pin] == listed(pin->getInputConnections());
            good = good && outputs_[pin] == listed(pin->getOutputConnections());
        }
        return good;
    }

    TestGraph<> graph;

private:
    GraphNodePin* anyPin() { return pins_[below(pins_.size())]; }

    void enter(GraphConnection* connection)
    {
        model_.push_back(connection);
        outputs_[connection->getSourcePin()].push_back(connection);
        inputs_[connection->getTargetPin()].push_back(connection);
    }

    void forget(GraphConnection* connection)
    {
        removeWithSwap(model_, connection);
        removeWithSwap(outputs_[connection->getSourcePin()], connection);
        removeWithSwap(inputs_[connection->getTargetPin()], connection);
    }

    std::mt19937 random_;
    std::vector<GraphNodePin*> pins_;
    Sequence model_;
    Sequence outside_;
    std::map<GraphNodePin*, Sequence> inputs_;
    std::map<GraphNodePin*, Sequence> outputs_;
};

TEST(SceneArrayOrder, IsThatOfAPlainVectorThroughRandomConnectsAndRemovals)
{
    for (unsigned int const seed : {1u, 2u, 3u})
    {
        SCOPED_TRACE(seed);
        ArrayModel model(seed);
        for (int step = 0; step < 1500; ++step)
        {
            SCOPED_TRACE(step);
            if (model.below(100) < 55)
                model.connect();
            else
                model.remove();
            ASSERT_TRUE(model.agrees());
        }
        EXPECT_SCENE_INVARIANTS(model.graph.scene);
    }
}

TEST(SceneArrayOrder, IsThatOfAPlainVectorWhateverTheHostDoesToTheArray)
{
    for (unsigned int const seed : {11u, 12u, 13u, 14u, 15u})
    {
        SCOPED_TRACE(seed);
        ArrayModel model(seed);
        for (int step = 0; step < 800; ++step)
        {
            SCOPED_TRACE(step);
            unsigned int const dice = model.below(100);
            if (dice < 48)
                model.connect();
            else if (dice < 70)
                model.remove();
            else if (dice < 78)
                model.removeTwoAtOnce();
            else if (dice < 79)
                model.removeWithPin();
            else if (dice < 88)
                model.reorder();
            else if (dice < 92)
                model.appendForeign();
            else if (dice < 95)
                model.takeOut();
            else if (dice < 98)
                model.removeOneThatWasTakenOut();
            else
                model.putBack();
            ASSERT_TRUE(model.agrees());
        }
        model.putBack();
        ASSERT_TRUE(model.agrees());
        EXPECT_SCENE_INVARIANTS(model.graph.scene);
    }
}

TEST(SceneArrayOrder, IsThatOfAPlainVectorForThousandsOfConnections)
{
    ArrayModel model(21);
    while (model.size() < 2000) model.connect();
    ASSERT_TRUE(model.agrees());
    for (int step = 0; step < 600; ++step)
    {
        SCOPED_TRACE(step);
        if (step % 50 == 0) model.reorder();
        model.remove();
        if (step % 3 == 0) model.connect();
        ASSERT_TRUE(model.agrees());
    }
    while (model.size() > 0)
    {
        model.remove();
        ASSERT_TRUE(model.size() % 16 != 0 || model.agrees()) << model.size();
    }
    EXPECT_EQ(0u, model.graph.scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(model.graph.scene);
}

TEST(SceneArrayOrder, SurvivesTheRemovalOfAllThatWereReordered)
{
    for (int round = 0; round < 5; ++round)
    {
        ArrayModel model(31u + static_cast<unsigned int>(round));
        while (model.size() < 200) model.connect();
        model.reorder();
        EXPECT_TRUE(model.graph.scene.removeAllConnections());
        EXPECT_EQ(0u, model.graph.scene.getNumberOfConnections());
        EXPECT_SCENE_INVARIANTS(model.graph.scene);
    }
}

/// Two scenes that hold the same connections, in orders of their own.
class SceneArrayOrderOfTwoScenes : public ::testing::Test
{
protected:
    SceneArrayOrderOfTwoScenes()
    {
        TestNode& a = graph.addFilter("a");
        graph.scene.setUseAdjacencyMap(false);
        for (int i = 0; i < 6; ++i) made.push_back(graph.scene.connect(&a, &a, false));
    }

    /// Removes them in the given order and compares at each step.
    void expectOrderOfRemovals(GraphScene& scene, Sequence const& order)
    {
        Sequence expected = listed(scene.getGraphConnections());
        for (GraphConnection* connection : order)
        {
            removeWithSwap(expected, connection);
            EXPECT_TRUE(scene.removeConnection(connection));
            EXPECT_EQ(expected, listed(scene.getGraphConnections()));
        }
    }

    TestGraph<> graph;
    Sequence made;
};

TEST_F(SceneArrayOrderOfTwoScenes, IsTheCopysOwn)
{
    GraphScene copy(graph.scene);
    ArrayOfPtr<GraphConnection, KS_NO>& array = copy.refGraphConnections();
    std::reverse(array.begin(), array.end());
    expectOrderOfRemovals(copy, {made[4], made[0], made[1]});
    graph.scene.setGraphConnections(copy.getGraphConnections());
    expectOrderOfRemovals(graph.scene, {made[2], made[5], made[3]});
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(SceneArrayOrderOfTwoScenes, IsKeptThoughTheOtherSceneHasDeletedConnections)
{
    GraphScene& scene = graph.scene;
    GraphNodeBase const* const node = made[0]->getSourceNode();
    for (unsigned int const size : {3u, 200u})
    {
        for (auto const& [inCopy, inOriginal] :
             {std::pair(0u, 1u), std::pair(0u, size - 1), std::pair(size - 1, 0u)})
        {
            SCOPED_TRACE(::testing::Message() << size << " connections: " << inCopy << ", " << inOriginal);
            scene.removeAllConnections();
            while (scene.getNumberOfConnections() < size) scene.connect(node, node, false);
            GraphScene copy(scene);
            Sequence const all = listed(scene.getGraphConnections());
            expectOrderOfRemovals(copy, {all[inCopy]});
            Sequence const left = listed(copy.getGraphConnections());
            expectOrderOfRemovals(scene, {all[inOriginal]}); // its array still holds the one that is gone
            EXPECT_EQ(left, listed(copy.getGraphConnections()));
            scene.refGraphConnections().removeFast(all[inCopy]);
            EXPECT_TRUE(scene.removeAllConnections());
            EXPECT_EQ(0u, scene.getNumberOfConnections());
            EXPECT_SCENE_INVARIANTS(scene);
        }
    }
}

TEST_F(SceneArrayOrderOfTwoScenes, IsThatOfTheSceneThatTookThemOver)
{
    GraphScene other;
    other.setUseAdjacencyMap(false);
    ArrayOfPtr<GraphConnection, KS_NO> none;
    other.setGraphConnections(arrayOf({made[3], made[5], made[1], made[0], made[2], made[4]}));
    graph.scene.setGraphConnections(none);
    expectOrderOfRemovals(other, {made[3], made[0], made[2], made[4], made[1], made[5]});
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST_F(SceneArrayOrderOfTwoScenes, IsThatOfTheAssignedArray)
{
    GraphScene other;
    other.setUseAdjacencyMap(false);
    other.setGraphConnections(arrayOf({made[5], made[4], made[3], made[2], made[1], made[0]}));
    static_cast<GraphScene&>(graph.scene) = other;
    expectOrderOfRemovals(graph.scene, {made[1], made[5], made[0], made[3], made[2], made[4]});
}

} // namespace
} // namespace kestrel::graph::test
