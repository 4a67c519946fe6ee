#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

class OpenScene : public GraphScene
{
public:
    using GraphScene::getNumberOfConnectionsInAdjacencyMap;
    using GraphScene::isConnectionInAdjacencyMap;
    using GraphScene::nodeColorMap_;
};

struct StateAtStart
{
    unsigned int lastUsedId = GraphScene::lastUsedId_;
    bool callbacksAreNull =
        GraphScene::addNodeCallback_ == nullptr && GraphScene::removeNodeCallback_ == nullptr &&
        GraphScene::addNodePinCallback_ == nullptr && GraphScene::removeNodePinCallback_ == nullptr &&
        GraphScene::updateNodePinCallback_ == nullptr && GraphScene::addConnectionCallback_ == nullptr &&
        GraphScene::removeConnectionCallback_ == nullptr && GraphScene::groupNodeCallback_ == nullptr &&
        GraphScene::ungroupNodeCallback_ == nullptr;
};

// Taken before any test has run.
StateAtStart const atStart;

TEST(Scene, IsAPolymorphicObjectOfTheObjectBase)
{
    static_assert(std::is_base_of_v<KS_Class, GraphScene>);
    static_assert(std::has_virtual_destructor_v<GraphScene>);
    std::unique_ptr<KS_Class> const scene = std::make_unique<GraphScene>();
    EXPECT_STREQ("KS_Class", scene->getClassName().c_str());
}

TEST(Scene, CallbacksAreNullAtStart)
{
    EXPECT_TRUE(atStart.callbacksAreNull);
}

TEST(Scene, CallbackTypesTakeTheSceneTheOwnerAndTheSubject)
{
    static_assert(std::is_same_v<decltype(GraphScene::addNodeCallback_),
                                 void (*)(GraphScene*, GraphNodeBase*, GraphNodeBase*)>);
    static_assert(std::is_same_v<decltype(GraphScene::updateNodePinCallback_),
                                 void (*)(GraphScene*, GraphNodeBase*, GraphNodePin*)>);
    static_assert(std::is_same_v<decltype(GraphScene::removeConnectionCallback_),
                                 void (*)(GraphScene*, GraphNodeBase*, GraphConnection*)>);
    static_assert(
        std::is_same_v<decltype(GraphScene::groupNodeCallback_), decltype(GraphScene::ungroupNodeCallback_)>);
}

TEST(Scene, IdCounterStartsAtZero)
{
    EXPECT_EQ(0u, atStart.lastUsedId);
}

TEST(Scene, EachTakesTheNextIdOfTheProcess)
{
    unsigned int const before = GraphScene::lastUsedId_;
    GraphScene const first;
    GraphScene const second;
    EXPECT_EQ(before + 1, first.getId());
    EXPECT_EQ(before + 2, second.getId());
    EXPECT_EQ(before + 2, GraphScene::lastUsedId_);
}

TEST(Scene, IdsAreNotGivenBackByTheDestructor)
{
    unsigned int const before = GraphScene::lastUsedId_;
    {
        GraphScene const scene;
    }
    EXPECT_EQ(before + 1, GraphScene::lastUsedId_);
}

TEST(Scene, IdsStayDistinctWhenScenesAreBuiltOnManyThreads)
{
    constexpr unsigned int threads = 4;
    constexpr unsigned int scenesPerThread = 500;
    unsigned int const before = GraphScene::lastUsedId_;
    std::set<unsigned int> ids;
    std::mutex mutex;
    std::vector<std::thread> running;
    for (unsigned int i = 0; i < threads; ++i)
    {
        running.emplace_back(
            [&]
            {
                std::vector<unsigned int> mine;
                for (unsigned int k = 0; k < scenesPerThread; ++k) mine.push_back(GraphScene().getId());
                std::lock_guard const lock(mutex);
                ids.insert(mine.begin(), mine.end());
            });
    }
    for (std::thread& thread : running) thread.join();
    EXPECT_EQ(threads * scenesPerThread, ids.size());
    EXPECT_EQ(before + threads * scenesPerThread, GraphScene::lastUsedId_);
}

#if GTEST_HAS_DEATH_TEST
TEST(SceneDeathTest, FirstSceneAndFirstPinOfAProcessHaveTheIdOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const firstIds = []
    {
        GraphScene scene;
        GraphNodePin* const pin = scene.createNewPin(1u, PIN_INPUT);
        bool const good = scene.getId() == 1 && pin->getId() == 1 && GraphScene::lastUsedId_ == 1;
        delete pin;
        std::exit(good ? 0 : 1);
    };
    EXPECT_EXIT(firstIds(), ::testing::ExitedWithCode(0), "");
}
#endif

TEST(Scene, StartsEmpty)
{
    GraphScene scene;
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_TRUE(scene.getGraphConnections().isEmpty());
    EXPECT_TRUE(scene.getLastImportedNodes().isEmpty());
    EXPECT_TRUE(scene.getLastImportedConnections().isEmpty());
    EXPECT_EQ(nullptr, scene.getRootNode());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(Scene, FlagsHaveTheirDefaults)
{
    GraphScene const scene;
    EXPECT_TRUE(scene.getAllowDuplicatedConnections());
    EXPECT_TRUE(scene.getAllowLoops());
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_TRUE(scene.getKeepRootNode());
    EXPECT_TRUE(scene.getUseAdjacencyMap());
}

TEST(Scene, MessageHandlerHasItsDefaults)
{
    GraphScene const scene;
    EXPECT_EQ(3, scene.getMessages().getVerbosityLevel());
    EXPECT_TRUE(scene.getMessages().isEmpty());
    EXPECT_EQ(nullptr, scene.getMessages().getParent());
}

TEST(Scene, ColourTableStartsEmpty)
{
    OpenScene const scene;
    EXPECT_TRUE(scene.nodeColorMap_.empty());
}

TEST(Scene, FirstFreeNodeIdIsOne)
{
    GraphScene scene;
    EXPECT_EQ(1u, scene.getFreeNodeId());
}

TEST(Scene, EachFlagIsStoredInAPlaceOfItsOwnAndSettingItHasNoOtherEffect)
{
    struct Row
    {
        char const* name;
        bool const& (GraphScene::*get)() const;
        void (GraphScene::*set)(bool const&);
    };
    Row const rows[] = {
        {"allowDuplicatedConnections", &GraphScene::getAllowDuplicatedConnections,
         &GraphScene::setAllowDuplicatedConnections},
        {"allowLoops", &GraphScene::getAllowLoops, &GraphScene::setAllowLoops},
        {"isDirty", &GraphScene::getIsDirty, &GraphScene::setIsDirty},
        {"keepRootNode", &GraphScene::getKeepRootNode, &GraphScene::setKeepRootNode},
        {"useAdjacencyMap", &GraphScene::getUseAdjacencyMap, &GraphScene::setUseAdjacencyMap},
    };
    for (Row const& changed : rows)
    {
        SCOPED_TRACE(changed.name);
        GraphScene scene;
        GraphScene const untouched;
        bool const flipped = !(scene.*changed.get)();
        (scene.*changed.set)(flipped);
        for (Row const& other : rows)
        {
            SCOPED_TRACE(other.name);
            bool const expected = &other == &changed ? flipped : (untouched.*other.get)();
            EXPECT_EQ(expected, (scene.*other.get)());
        }
        (scene.*changed.set)(!flipped);
        EXPECT_EQ(!flipped, (scene.*changed.get)());
    }
}

TEST(Scene, AssignmentTakesTheDirtyFlagOver)
{
    GraphScene dirty;
    dirty.setIsDirty(true);
    GraphScene scene;
    scene = dirty;
    EXPECT_TRUE(scene.getIsDirty());
}

TEST(Scene, RootNodeThatIsNoCompoundEndsWithTheOthers)
{
    class Root : public GraphNodeBase
    {
    public:
        explicit Root(bool& ended) : ended_(ended) {}
        ~Root() override { ended_ = true; }

    private:
        bool& ended_;
    };
    bool ended = false;
    GraphScene scene;
    scene.setKeepRootNode(false);
    scene.setRootNode(new Root(ended));
    scene.removeAllNodes();
    EXPECT_TRUE(ended);
    EXPECT_EQ(nullptr, scene.getRootNode());
}

TEST(Scene, RootNodeIsOnlyStored)
{
    GraphScene scene;
    GraphNodeBase node(7);
    scene.setRootNode(&node);
    EXPECT_EQ(&node, scene.getRootNode());
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(nullptr, node.getGraphScene());
    EXPECT_FALSE(scene.getIsDirty());
    scene.setRootNode(nullptr);
    EXPECT_EQ(nullptr, scene.getRootNode());
}

TEST(Scene, MessagesCanBeChangedInPlaceAndReplaced)
{
    GraphScene scene;
    scene.refMessages().pushError("one", "");
    EXPECT_EQ(1, scene.getMessages().getNumberOfMessages());
    MessageHandler other;
    other.setVerbosityLevel(5);
    other.pushDebug("two", "");
    other.pushDebug("three", "");
    scene.setMessages(other);
    EXPECT_EQ(2, scene.getMessages().getNumberOfMessages());
    EXPECT_EQ(5, scene.getMessages().getVerbosityLevel());
    EXPECT_EQ(&scene.getMessages(), &scene.refMessages());
    EXPECT_FALSE(scene.getIsDirty());
}

TEST(Scene, ConnectionArrayCanBeReadReplacedAndChangedInPlaceWithoutWiringAnything)
{
    GraphScene scene;
    GraphNodePin out(nullptr, 9, PIN_OUTPUT);
    GraphNodePin in(nullptr, 9, PIN_INPUT);
    GraphConnection first(&out, &in);
    GraphConnection second(&out, &in);
    ArrayOfPtr<GraphConnection, KS_NO> list;
    list.append(&first);
    scene.setGraphConnections(list);
    scene.refGraphConnections().append(&second);
    EXPECT_EQ((std::vector<GraphConnection*>{&first, &second}), listed(scene.getGraphConnections()));
    EXPECT_EQ(2u, scene.getNumberOfConnections());
    EXPECT_FALSE(out.isConnected());
    EXPECT_FALSE(scene.getIsDirty());
}

TEST(Scene, LastImportedListsAreStoredApartAndAsGiven)
{
    GraphScene scene;
    GraphNodeBase node(1);
    GraphNodeBase other(2);
    GraphConnection connection;
    GraphConnection another;
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    nodes.append(&node);
    ArrayOfPtr<GraphConnection, KS_NO> connections;
    connections.append(&connection);
    scene.setLastImportedNodes(nodes);
    scene.setLastImportedConnections(connections);
    scene.refLastImportedNodes().append(&other);
    scene.refLastImportedConnections().append(&another);
    EXPECT_EQ((std::vector<GraphNodeBase*>{&node, &other}), listed(scene.getLastImportedNodes()));
    EXPECT_EQ((std::vector<GraphConnection*>{&connection, &another}),
              listed(scene.getLastImportedConnections()));
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_FALSE(scene.getIsDirty());
}

TEST(Scene, AccessorsReturnReferencesToTheFields)
{
    static_assert(std::is_same_v<decltype(std::declval<GraphScene const&>().getIsDirty()), bool const&>);
    static_assert(std::is_same_v<decltype(std::declval<GraphScene const&>().getGraphConnections()),
                                 ArrayOfPtr<GraphConnection, KS_NO> const&>);
    static_assert(
        std::is_same_v<decltype(std::declval<GraphScene const&>().getMessages()), MessageHandler const&>);
    static_assert(std::is_same_v<decltype(std::declval<GraphScene const&>().getGraphType()), unsigned int>);
    GraphScene scene;
    bool const& dirty = scene.getIsDirty();
    scene.setIsDirty(true);
    EXPECT_TRUE(dirty);
    EXPECT_EQ(&scene.getGraphConnections(), &scene.refGraphConnections());
    EXPECT_EQ(&scene.getLastImportedNodes(), &scene.refLastImportedNodes());
    EXPECT_EQ(&scene.getLastImportedConnections(), &scene.refLastImportedConnections());
}

TEST(Scene, EmptyHooksDoNothing)
{
    TestGraph<> graph;
    GraphNodePin& pin = graph.addInput(graph.root);
    graph.scene.setIsDirty(false);
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    graph.scene.getEvaluablePins(pins);
    EXPECT_TRUE(pins.isEmpty());
    pins.append(&pin);
    graph.scene.getEvaluablePins(pins);
    EXPECT_EQ(1u, pins.size());
    graph.scene.run();
    graph.scene.purge();
    EXPECT_EQ(0u, graph.scene.getGraphType());
    EXPECT_EQ(1u, graph.scene.getNumberOfNodes());
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

/// A scene in which no field has its default value.
struct Filled
{
    Filled()
    {
        a = &graph.addFilter("a");
        b = &graph.addFilter("b");
        connection = graph.scene.connect(a, b, true);
        graph.scene.setAllowDuplicatedConnections(false);
        graph.scene.setAllowLoops(false);
        graph.scene.setIsDirty(true);
        graph.scene.setKeepRootNode(false);
        graph.scene.refMessages().pushError("title", "content");
        graph.scene.refMessages().setVerbosityLevel(5);
        graph.scene.nodeColorMap_["type"] = Color4<float>(1, 0, 0, 1);
        graph.scene.setUseAdjacencyMap(false);
        graph.scene.refLastImportedNodes().append(a);
        graph.scene.refLastImportedConnections().append(connection);
        fourth = &graph.addNode("d");
        fifthId = graph.scene.getFreeNodeId();
    }

    void expectIsCopy(OpenScene& copy)
    {
        EXPECT_EQ(graph.scene.getId(), copy.getId());
        EXPECT_EQ(4u, copy.getNumberOfNodes());
        EXPECT_EQ(a, copy.getNodePtrById(a->getId()));
        EXPECT_EQ(a->getNodePins()[0], copy.getPinPtrById(a->getNodePins()[0]->getId()));
        EXPECT_EQ(a->getNodePins()[0], copy.getPinPtrByFullName("root.a.in"));
        EXPECT_EQ(std::vector<GraphConnection*>{connection}, listed(copy.getGraphConnections()));
        EXPECT_FALSE(copy.getAllowDuplicatedConnections());
        EXPECT_FALSE(copy.getAllowLoops());
        EXPECT_TRUE(copy.getIsDirty());
        EXPECT_FALSE(copy.getKeepRootNode());
        EXPECT_EQ(&graph.root, copy.getRootNode());
        EXPECT_EQ(1, copy.getMessages().getNumberOfMessages());
        EXPECT_EQ(5, copy.getMessages().getVerbosityLevel());
        ASSERT_EQ(1u, copy.nodeColorMap_.count("type"));
        EXPECT_EQ(Color4<float>(1, 0, 0, 1), copy.nodeColorMap_["type"]);
        EXPECT_FALSE(copy.getUseAdjacencyMap());
        EXPECT_TRUE(copy.isConnectionInAdjacencyMap(a, b, true, false));
        EXPECT_FALSE(copy.isConnectionInAdjacencyMap(a, b, false, false));
        EXPECT_EQ(std::vector<GraphNodeBase*>{a}, listed(copy.getLastImportedNodes()));
        EXPECT_EQ(std::vector<GraphConnection*>{connection}, listed(copy.getLastImportedConnections()));
        EXPECT_EQ(fifthId, copy.getFreeNodeId());
    }

    TestGraph<OpenScene> graph;
    TestNode* a = nullptr;
    TestNode* b = nullptr;
    TestNode* fourth = nullptr;
    unsigned int fifthId = 0;
    GraphConnection* connection = nullptr;
};

TEST(Scene, CopyHasEveryFieldOfItsSource)
{
    Filled filled;
    OpenScene copy(filled.graph.scene);
    filled.expectIsCopy(copy);
    EXPECT_SCENE_INVARIANTS(copy);
}

TEST(Scene, AssignmentTakesEveryFieldOfItsSource)
{
    Filled filled;
    OpenScene copy;
    GraphNodeBase stray(77);
    copy.addNodeToGraph(&stray);
    copy.nodeColorMap_["other"] = Color4<float>();
    copy.refLastImportedNodes().append(&stray);
    OpenScene& result = copy = filled.graph.scene;
    EXPECT_EQ(&copy, &result);
    filled.expectIsCopy(copy);
    EXPECT_EQ(nullptr, copy.getNodePtrById(77));
    EXPECT_EQ(0u, copy.nodeColorMap_.count("other"));
    EXPECT_SCENE_INVARIANTS(copy);
}

TEST(Scene, AssignmentToItselfChangesNothing)
{
    Filled filled;
    OpenScene& same = filled.graph.scene;
    filled.graph.scene = same;
    filled.expectIsCopy(filled.graph.scene);
    EXPECT_SCENE_INVARIANTS(filled.graph.scene);
}

TEST(Scene, CopyHasTheCounterOfFreeIdsNotTheFirstFreeId)
{
    Filled filled;
    filled.graph.scene.removeNodeFromGraph(filled.fourth);
    ASSERT_EQ(filled.fifthId, filled.graph.scene.getFreeNodeId());
    GraphScene copy(filled.graph.scene);
    EXPECT_EQ(filled.fifthId, copy.getFreeNodeId());
    GraphScene assigned;
    assigned = filled.graph.scene;
    EXPECT_EQ(filled.fifthId, assigned.getFreeNodeId());
}

TEST(Scene, CopiesDoNotTouchTheIdCounter)
{
    GraphScene const scene;
    unsigned int const before = GraphScene::lastUsedId_;
    GraphScene const copy(scene);
    EXPECT_EQ(before, GraphScene::lastUsedId_);
    GraphScene assigned;
    EXPECT_EQ(before + 1, GraphScene::lastUsedId_);
    assigned = scene;
    EXPECT_EQ(before + 1, GraphScene::lastUsedId_);
    EXPECT_EQ(scene.getId(), assigned.getId());
}

TEST(Scene, CopyHasContainersOfItsOwn)
{
    Filled filled;
    OpenScene copy(filled.graph.scene);
    GraphNodeBase extra(99);
    copy.addNodeToGraph(&extra);
    copy.refGraphConnections().setSize(0);
    copy.nodeColorMap_.clear();
    copy.refMessages().clear();
    copy.refLastImportedNodes().setSize(0);
    EXPECT_EQ(nullptr, filled.graph.scene.getNodePtrById(99));
    EXPECT_EQ(1u, filled.graph.scene.getNumberOfConnections());
    EXPECT_EQ(1u, filled.graph.scene.nodeColorMap_.size());
    EXPECT_EQ(1, filled.graph.scene.getMessages().getNumberOfMessages());
    EXPECT_EQ(1u, filled.graph.scene.getLastImportedNodes().size());
    extra.setNodeOwner(nullptr);
    EXPECT_SCENE_INVARIANTS(filled.graph.scene);
}

TEST(Scene, CopyLeavesTheNodesAndConnectionsWithTheirScene)
{
    Filled filled;
    GraphScene const copy(filled.graph.scene);
    EXPECT_EQ(&filled.graph.scene, filled.a->getGraphScene());
    EXPECT_EQ(1u, filled.a->getNodePins()[1]->getNumConnections());
    EXPECT_EQ(4u, copy.getNumberOfNodes());
}

TEST(Scene, DestructorDeletesNeitherNodesNorConnections)
{
    std::set<GraphNodeBase*> living;
    TestNode node(5);
    TestNode other(6);
    node.living = &living;
    living.insert(&node);
    GraphNodePin* out = nullptr;
    GraphNodePin* in = nullptr;
    GraphConnection* connection = nullptr;
    {
        GraphScene scene;
        scene.setKeepRootNode(false);
        scene.setRootNode(&other);
        scene.addNodeToGraph(&other);
        scene.addNodeToGraph(&node);
        out = scene.createNewPin(&node, 5u, PIN_OUTPUT);
        in = scene.createNewPin(&other, 5u, PIN_INPUT);
        connection = scene.connect(out, in, false);
        ASSERT_NE(nullptr, connection);
    }
    EXPECT_EQ(1u, living.size());
    EXPECT_EQ(connection, out->getOutputConnections()[0]);
    EXPECT_EQ(in, connection->getTargetPin());
    EXPECT_EQ(&other, node.getNodeOwner());
    connection->removeFromConnectedPins();
    delete connection;
}

TEST(Scene, ConnectionsThatACopyHasDeletedAreNotTouchedWhenOthersAreRemoved)
{
    TestGraph<> graph;
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphConnection* const first = graph.scene.connect(&a, &b, false);
    GraphConnection* const last = graph.scene.connect(&b, &a, false);
    GraphScene copy(graph.scene);
    copy.removeConnection(last);
    graph.scene.removeConnection(first); // the one that is gone takes its place in the array
    EXPECT_THAT(listed(graph.scene.getGraphConnections()), ::testing::ElementsAre(last));
    graph.scene.setGraphConnections({});
}

TEST(Scene, CallbackPointersAreSharedByAllScenes)
{
    static int calls;
    static GraphScene* last;
    calls = 0;
    GraphScene::addNodeCallback_ = [](GraphScene* scene, GraphNodeBase*, GraphNodeBase*)
    {
        ++calls;
        last = scene;
    };
    GraphScene first;
    GraphScene second;
    GraphNodeBase a(1);
    GraphNodeBase b(1);
    first.addNodeToGraph(&a);
    EXPECT_EQ(&first, last);
    second.addNodeToGraph(&b);
    EXPECT_EQ(&second, last);
    EXPECT_EQ(2, calls);
    GraphScene::addNodeCallback_ = nullptr;
}

} // namespace
} // namespace kestrel::graph::test
