#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr unsigned int noId = 0xFFFFFFFFu;

std::vector<std::string> journal;

/// Writes down what the scene does to it, and looks at the scene at the two moments of the hooks.
class HostNode : public TestNode
{
public:
    using TestNode::TestNode;

    ~HostNode() override { journal.push_back("delete " + label); }

    void onAddingToScene() override
    {
        journal.push_back("adding " + label);
        if (look) look(*this);
    }

    void onRemovingFromScene() override
    {
        journal.push_back("removing " + label);
        if (look) look(*this);
    }

    void setGraphScene(GraphScene* scene) override
    {
        journal.push_back("scene " + label);
        TestNode::setGraphScene(scene);
    }

    void setNodeOwner(GraphNodeBase* owner) override
    {
        journal.push_back((owner != nullptr ? "owner " : "no owner ") + label);
        TestNode::setNodeOwner(owner);
    }

    void clearMessages() override { journal.push_back("clear messages " + label); }

    std::string label;
    std::function<void(HostNode&)> look;
};

class SceneRegistry : public ::testing::Test
{
protected:
    SceneRegistry() { journal.clear(); }

    HostNode& newHostNode(std::string const& name)
    {
        HostNode& node = graph.newNode<HostNode>(name.c_str());
        node.label = name;
        return node;
    }

    HostNode& addHostNode(std::string const& name, GraphNodeBase* owner = nullptr)
    {
        HostNode& node = graph.addNode<HostNode>(name.c_str(), owner);
        node.label = name;
        journal.clear();
        return node;
    }

    TestGraph<> graph;
    GraphScene& scene = graph.scene;
};

// --- looking up

TEST_F(SceneRegistry, NodesAreFoundByTheirId)
{
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b");
    EXPECT_EQ(&a, scene.getNodePtrById(a.getId()));
    EXPECT_EQ(&b, scene.getNodePtrById(b.getId()));
    EXPECT_TRUE(scene.hasGraphNodeWithId(b.getId()));
    EXPECT_EQ(nullptr, scene.getNodePtrById(b.getId() + 1));
    EXPECT_FALSE(scene.hasGraphNodeWithId(b.getId() + 1));
    EXPECT_EQ(nullptr, scene.getNodePtrById(0));
    EXPECT_EQ(3u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, TheSmallestAndTheLargestIdAreOrdinaryOnes)
{
    for (unsigned int const id : {0u, 0xFFFFFFFEu})
    {
        TestNode& node = graph.newNode("edge");
        node.setId(id);
        EXPECT_TRUE(scene.addNodeToGraph(&node));
        EXPECT_EQ(&node, scene.getNodePtrById(id));
        EXPECT_TRUE(scene.hasGraphNodeWithId(id));
        EXPECT_TRUE(scene.removeNodeFromGraph(id));
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, NoIdIsNeverFoundEvenWhenANodeIsRegisteredUnderIt)
{
    TestNode& node = graph.newNode("a");
    node.setId(noId);
    EXPECT_TRUE(scene.addNodeToGraph(&node));
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_EQ(nullptr, scene.getNodePtrById(noId));
    EXPECT_FALSE(scene.hasGraphNodeWithId(noId));
    EXPECT_FALSE(scene.removeNodeFromGraph(noId));
    EXPECT_FALSE(scene.removeNodeFromGraph(&node));
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, NodesAreFoundByTheirFullNameExactly)
{
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b", &a);
    EXPECT_EQ(&graph.root, scene.getNodePtrByFullName("root"));
    EXPECT_EQ(&a, scene.getNodePtrByFullName("root.a"));
    EXPECT_EQ(&b, scene.getNodePtrByFullName("root.a.b"));
    for (char const* unknown : {"", "a", "b", "a.b", "Root", "root.A", "root.a.", "root.", "root.a.b.c"})
    {
        SCOPED_TRACE(unknown);
        EXPECT_EQ(nullptr, scene.getNodePtrByFullName(unknown));
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RootIsFoundByFullNameWithoutBeingRegistered)
{
    GraphScene bare;
    GraphNodeBase root(9);
    root.setName("top");
    bare.setRootNode(&root);
    EXPECT_EQ(&root, bare.getNodePtrByFullName("top"));
    EXPECT_EQ(nullptr, bare.getNodePtrById(9));
}

TEST_F(SceneRegistry, RootComesBeforeARegisteredNodeOfTheSameFullName)
{
    GraphScene bare;
    GraphNodeBase root(9);
    GraphNodeBase twin(1);
    root.setName("top");
    twin.setName("top");
    bare.addNodeToGraph(&twin);
    EXPECT_EQ(&twin, bare.getNodePtrByFullName("top"));
    bare.setRootNode(&root);
    EXPECT_EQ(&root, bare.getNodePtrByFullName("top"));
}

TEST_F(SceneRegistry, FirstIdWinsAmongNodesOfOneFullName)
{
    TestNode& high = graph.newNode("twin");
    high.setId(50);
    scene.addNodeToGraph(&high);
    TestNode& low = graph.newNode("twin");
    low.setId(40);
    scene.addNodeToGraph(&low);
    EXPECT_EQ(&low, scene.getNodePtrByFullName("root.twin"));
    scene.removeNodeFromGraph(&low);
    EXPECT_EQ(&high, scene.getNodePtrByFullName("root.twin"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, UnregisteredNodesAreNotFoundByFullName)
{
    TestNode& node = graph.newNode("a");
    node.setNodeOwner(&graph.root);
    EXPECT_EQ(nullptr, scene.getNodePtrByFullName("root.a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ListOfNodesIsAppendedByAscendingId)
{
    TestNode& high = graph.newNode("high");
    high.setId(30);
    scene.addNodeToGraph(&high);
    TestNode& low = graph.newNode("low");
    low.setId(20);
    scene.addNodeToGraph(&low);
    ArrayOfPtr<GraphNodeBase, KS_NO> out;
    out.append(&high);
    EXPECT_TRUE(scene.getGraphNodesAsList(out));
    EXPECT_THAT(listed(out), ElementsAre(&high, &graph.root, &low, &high));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ListOfNodesTellsWhetherItHoldsAnythingAfterwards)
{
    GraphScene bare;
    ArrayOfPtr<GraphNodeBase, KS_NO> out;
    EXPECT_FALSE(bare.getGraphNodesAsList(out));
    out.append(&graph.root);
    EXPECT_TRUE(bare.getGraphNodesAsList(out));
    EXPECT_EQ(1u, out.size());
}

TEST_F(SceneRegistry, LookingUpLeavesTheDirtyFlagAlone)
{
    ArrayOfPtr<GraphNodeBase, KS_NO> out;
    scene.getNodePtrById(1);
    scene.getNodePtrByFullName("root");
    scene.hasGraphNodeWithId(1);
    scene.getGraphNodesAsList(out);
    EXPECT_FALSE(scene.getIsDirty());
}

TEST_F(SceneRegistry, IdOfARegisteredNodeMayChangeAndTheMapFollows)
{
    TestNode& a = graph.addNode("a");
    unsigned int const old = a.getId();
    scene.setIsDirty(false);
    a.setId(70);
    EXPECT_EQ(nullptr, scene.getNodePtrById(old));
    EXPECT_EQ(&a, scene.getNodePtrById(70));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- adding

TEST_F(SceneRegistry, AddingGivesTheNodeItsSceneAndTheRootAsOwner)
{
    TestNode& a = graph.newNode("a");
    EXPECT_TRUE(scene.addNodeToGraph(&a));
    EXPECT_EQ(&scene, a.getGraphScene());
    EXPECT_EQ(&graph.root, a.getNodeOwner());
    EXPECT_THAT(listed(graph.root.getNodes()), ElementsAre(&a));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingKeepsAnOwnerThatIsThere)
{
    TestNode& compound = graph.addNode("compound");
    TestNode& a = graph.newNode("a");
    a.setNodeOwner(&compound);
    EXPECT_TRUE(scene.addNodeToGraph(&a));
    EXPECT_EQ(&compound, a.getNodeOwner());
    EXPECT_THAT(listed(compound.getNodes()), ElementsAre(&a));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingWithoutARootLeavesTheNodeWithoutOwner)
{
    CallbackLog log;
    GraphScene bare;
    GraphNodeBase node(4);
    node.setName("a");
    EXPECT_TRUE(bare.addNodeToGraph(&node));
    EXPECT_EQ(nullptr, node.getNodeOwner());
    EXPECT_THAT(log.lines, ElementsAre("addNode - a"));
    EXPECT_SCENE_INVARIANTS(bare);
}

TEST_F(SceneRegistry, AddingTheRootItselfLeavesItWithoutOwner)
{
    CallbackLog log;
    GraphScene bare;
    GraphNodeBase root(4);
    root.setName("top");
    bare.setRootNode(&root);
    EXPECT_TRUE(bare.addNodeToGraph(&root));
    EXPECT_EQ(nullptr, root.getNodeOwner());
    EXPECT_TRUE(root.getNodes().isEmpty());
    EXPECT_EQ(&bare, root.getGraphScene());
    EXPECT_EQ(&root, bare.getNodePtrById(4));
    EXPECT_THAT(log.lines, ElementsAre("addNode - top"));
    EXPECT_SCENE_INVARIANTS(bare);
}

TEST_F(SceneRegistry, AddingNullIsRefusedAndLeavesTheDirtyFlagAlone)
{
    for (bool const dirty : {false, true})
    {
        scene.setIsDirty(dirty);
        EXPECT_FALSE(scene.addNodeToGraph(nullptr));
        EXPECT_EQ(dirty, scene.getIsDirty());
    }
    EXPECT_EQ(1u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingUnderATakenIdIsRefusedAndClearsTheDirtyFlag)
{
    TestNode& first = graph.addNode("first");
    HostNode& second = newHostNode("second");
    second.setId(first.getId());
    journal.clear();
    CallbackLog log;
    scene.setIsDirty(true);
    EXPECT_FALSE(scene.addNodeToGraph(&second));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(&first, scene.getNodePtrById(first.getId()));
    EXPECT_EQ(nullptr, second.getGraphScene());
    EXPECT_EQ(nullptr, second.getNodeOwner());
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingTheSameNodeAgainIsRefused)
{
    TestNode& a = graph.addNode("a");
    EXPECT_FALSE(scene.addNodeToGraph(&a));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(&a, scene.getNodePtrById(a.getId()));
    EXPECT_THAT(listed(graph.root.getNodes()), ElementsAre(&a));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingGoesThroughTheNodesOwnOperationsInOrder)
{
    HostNode& a = newHostNode("a");
    journal.clear();
    CallbackLog log;
    log.onNode = [](GraphScene*, GraphNodeBase*, GraphNodeBase*) { journal.push_back("callback"); };
    scene.addNodeToGraph(&a);
    EXPECT_THAT(journal, ElementsAre("adding a", "scene a", "owner a", "callback"));
    EXPECT_THAT(log.lines, ElementsAre("addNode root a"));
}

TEST_F(SceneRegistry, AddingHookSeesTheNodeRegisteredButWithoutSceneAndOwner)
{
    HostNode& a = newHostNode("a");
    int looks = 0;
    a.look = [&](HostNode& node)
    {
        ++looks;
        EXPECT_EQ(&node, scene.getNodePtrById(node.getId()));
        EXPECT_EQ(nullptr, node.getGraphScene());
        EXPECT_EQ(nullptr, node.getNodeOwner());
    };
    scene.addNodeToGraph(&a);
    a.look = nullptr;
    EXPECT_EQ(1, looks);
}

TEST_F(SceneRegistry, OwnerThatTheAddingHookGivesIsKept)
{
    TestNode& compound = graph.addNode("compound");
    HostNode& a = newHostNode("a");
    a.look = [&](HostNode& node) { compound.addNode(&node); };
    scene.addNodeToGraph(&a);
    a.look = nullptr;
    EXPECT_EQ(&compound, a.getNodeOwner());
    EXPECT_THAT(listed(graph.root.getNodes()), ElementsAre(&compound));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddCallbackSeesTheNodeInItsPlace)
{
    TestNode& compound = graph.addNode("compound");
    TestNode& a = graph.newNode("a");
    a.setNodeOwner(&compound);
    CallbackLog log;
    log.onNode = [&](GraphScene* caller, GraphNodeBase* owner, GraphNodeBase* node)
    {
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(&compound, owner);
        EXPECT_EQ(&a, node);
        EXPECT_EQ(&a, scene.getNodePtrById(a.getId()));
        EXPECT_EQ(&scene, a.getGraphScene());
        EXPECT_TRUE(scene.getIsDirty());
    };
    scene.addNodeToGraph(&a);
    EXPECT_THAT(log.lines, ElementsAre("addNode compound a"));
}

TEST_F(SceneRegistry, AddingSetsTheDirtyFlagAfterTheCallback)
{
    CallbackLog log;
    log.onNode = [](GraphScene* caller, GraphNodeBase*, GraphNodeBase*) { caller->setIsDirty(false); };
    TestNode& a = graph.newNode("a");
    EXPECT_TRUE(scene.addNodeToGraph(&a));
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(SceneRegistry, AddingRegistersNoPins)
{
    TestNode& a = graph.newNode("a");
    GraphNodePin* const pin = new GraphNodePin(nullptr, 1u, PIN_INPUT);
    pin->setId(4711);
    a.addNodePin(pin);
    scene.addNodeToGraph(&a);
    EXPECT_EQ(nullptr, scene.getPinPtrById(4711));
    EXPECT_EQ(nullptr, scene.getPinPtrByFullName(pin->getFullName()));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, AddingReKeysPinsThatWereRegisteredBefore)
{
    TestNode& a = graph.newNode("a");
    GraphNodePin* const pin = scene.createNewPin(&a, 1u, PIN_INPUT);
    ASSERT_EQ(pin, scene.getPinPtrByFullName("a.Untitled"));
    scene.addNodeToGraph(&a);
    EXPECT_EQ(nullptr, scene.getPinPtrByFullName("a.Untitled"));
    EXPECT_EQ(pin, scene.getPinPtrByFullName("root.a.Untitled"));
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- removing

TEST_F(SceneRegistry, RemovingTakesTheNodeOutOfTheMapAndTheTreeButDoesNotDeleteIt)
{
    HostNode& a = addHostNode("a");
    unsigned int const id = a.getId();
    scene.setIsDirty(false);
    EXPECT_TRUE(scene.removeNodeFromGraph(id));
    EXPECT_EQ(nullptr, scene.getNodePtrById(id));
    EXPECT_FALSE(scene.hasGraphNodeWithId(id));
    EXPECT_EQ(1u, scene.getNumberOfNodes());
    EXPECT_EQ(nullptr, a.getNodeOwner());
    EXPECT_TRUE(graph.root.getNodes().isEmpty());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_THAT(journal, ElementsAre("removing a", "no owner a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovedNodeKeepsItsIdAndItsScenePointer)
{
    TestNode& a = graph.addNode("a");
    unsigned int const id = a.getId();
    scene.removeNodeFromGraph(&a);
    EXPECT_EQ(&scene, a.getGraphScene());
    EXPECT_EQ(id, a.getId());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovedNodeCanBeAddedAgain)
{
    TestNode& a = graph.addNode("a");
    EXPECT_TRUE(scene.removeNodeFromGraph(&a));
    EXPECT_FALSE(scene.removeNodeFromGraph(&a));
    EXPECT_TRUE(scene.addNodeToGraph(&a));
    EXPECT_EQ(&a, scene.getNodePtrByFullName("root.a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingNullOrAnUnknownIdIsRefusedAndChangesNothing)
{
    TestNode& stranger = graph.newNode("stranger");
    for (bool const dirty : {false, true})
    {
        scene.setIsDirty(dirty);
        EXPECT_FALSE(scene.removeNodeFromGraph(nullptr));
        EXPECT_FALSE(scene.removeNodeFromGraph(stranger.getId()));
        EXPECT_FALSE(scene.removeNodeFromGraph(&stranger));
        EXPECT_FALSE(scene.removeNodeFromGraph(noId));
        EXPECT_EQ(dirty, scene.getIsDirty());
    }
    EXPECT_EQ(1u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingByNodeGoesByItsIdSoATwinRemovesTheRegisteredOne)
{
    TestNode& a = graph.addNode("a");
    GraphNodeBase twin(a.getId());
    EXPECT_TRUE(scene.removeNodeFromGraph(&twin));
    EXPECT_EQ(nullptr, scene.getNodePtrById(a.getId()));
    EXPECT_EQ(nullptr, a.getNodeOwner());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingByAReferenceToTheNodesOwnIdWorks)
{
    TestNode& a = graph.addNode("a");
    unsigned int const& id = a.getId();
    EXPECT_TRUE(scene.removeNodeFromGraph(id));
    EXPECT_FALSE(scene.hasGraphNodeWithId(id));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingDropsTheConnectionsOfBothDirections)
{
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    TestNode& c = graph.addFilter("c");
    scene.connect(&a, &b, false);
    scene.connect(&b, &c, false);
    GraphConnection* const other = scene.connect(&a, &c, false);
    CallbackLog log;
    scene.removeNodeFromGraph(&b);
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(other));
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root a.out > b.in",
                                       "removeConnection root b.out > c.in", "removeNode root b"));
    scene.addNodeToGraph(&b); // under its full name again, which is the key of its pins
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingLeavesImplicitConnectionsAlone)
{
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    GraphConnection* const implicitOne = scene.connect(&a, &b, true);
    scene.connect(&a, &b, false);
    scene.removeNodeFromGraph(&b);
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(implicitOne));
    EXPECT_TRUE(implicitOne->isConnected());
    scene.addNodeToGraph(&b);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, PinsOfARemovedPlainNodeStayRegisteredUnderTheirOldNames)
{
    TestNode& a = graph.addFilter("a");
    GraphNodePin* const pin = a.getNodePins()[0];
    scene.removeNodeFromGraph(&a);
    EXPECT_EQ(2u, a.getNodePins().size());
    EXPECT_EQ(pin, scene.getPinPtrById(pin->getId()));
    EXPECT_EQ(pin, scene.getPinPtrByFullName("root.a.in"));
    EXPECT_STREQ("a.in", pin->getFullName().c_str());
}

TEST_F(SceneRegistry, PinsOfARemovedInterfaceNodeGoAndTheirCompoundPinsToo)
{
    TestNode& compound = graph.addNode("compound");
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    scene.addCompoundInterfaceNode(PIN_INPUT, &compound, interfaceNode, compoundPin, interfacePin);
    unsigned int const compoundPinId = compoundPin->getId();
    unsigned int const interfacePinId = interfacePin->getId();
    KS_String const compoundPinName = compoundPin->getFullName();
    KS_String const interfacePinName = interfacePin->getFullName();
    EXPECT_TRUE(scene.removeNodeFromGraph(interfaceNode));
    EXPECT_EQ(nullptr, scene.getPinPtrById(compoundPinId));
    EXPECT_EQ(nullptr, scene.getPinPtrById(interfacePinId));
    EXPECT_EQ(nullptr, scene.getPinPtrByFullName(compoundPinName));
    EXPECT_EQ(nullptr, scene.getPinPtrByFullName(interfacePinName));
    EXPECT_TRUE(compound.getNodePins().isEmpty());
    EXPECT_TRUE(interfaceNode->getNodePins().isEmpty());
    EXPECT_SCENE_INVARIANTS(scene);
    delete interfaceNode;
}

TEST_F(SceneRegistry, RemovingACompoundRemovesItsSubtreeDeepestFirst)
{
    HostNode& top = addHostNode("top");
    HostNode& left = addHostNode("left", &top);
    addHostNode("leaf", &left);
    addHostNode("twig", &left);
    addHostNode("right", &top);
    HostNode& beside = addHostNode("beside");
    CallbackLog log;
    EXPECT_TRUE(scene.removeNodeFromGraph(&top));
    EXPECT_THAT(log.lines, ElementsAre("removeNode left leaf", "removeNode left twig", "removeNode top left",
                                       "removeNode top right", "removeNode root top"));
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_EQ(&beside, scene.getNodePtrById(beside.getId()));
    EXPECT_TRUE(top.getNodes().isEmpty());
    EXPECT_TRUE(left.getNodes().isEmpty());
    EXPECT_EQ(nullptr, left.getNodeOwner());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemoveCallbackSeesTheNodeRegisteredAndOwnedWithoutConnectionsAndChildren)
{
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    TestNode& child = graph.addNode("child", &b);
    scene.connect(&a, &b, false);
    CallbackLog log;
    log.onNode = [&](GraphScene* caller, GraphNodeBase* owner, GraphNodeBase* node)
    {
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(node, scene.getNodePtrById(node->getId()));
        EXPECT_EQ(owner, node->getNodeOwner());
        EXPECT_NE(nullptr, owner);
        EXPECT_TRUE(node->getNodes().isEmpty());
        EXPECT_EQ(0u, scene.getNumberOfConnections());
        EXPECT_EQ(node == &child, scene.hasGraphNodeWithId(child.getId()));
    };
    scene.removeNodeFromGraph(&b);
    EXPECT_EQ(3u, log.lines.size());
}

TEST_F(SceneRegistry, RemovingHookRunsAfterTheCallbackWhileTheNodeStillHasItsPlace)
{
    HostNode& a = addHostNode("a");
    a.look = [&](HostNode& node)
    {
        EXPECT_EQ(&graph.root, node.getNodeOwner());
        EXPECT_EQ(&node, scene.getNodePtrById(node.getId()));
    };
    CallbackLog log;
    log.onNode = [](GraphScene*, GraphNodeBase*, GraphNodeBase*) { journal.push_back("callback"); };
    scene.removeNodeFromGraph(&a);
    a.look = nullptr;
    EXPECT_THAT(journal, ElementsAre("callback", "removing a", "no owner a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingSetsTheDirtyFlagAfterTheCallback)
{
    TestNode& a = graph.addNode("a");
    CallbackLog log;
    log.onNode = [](GraphScene* caller, GraphNodeBase*, GraphNodeBase*) { caller->setIsDirty(false); };
    scene.removeNodeFromGraph(&a);
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(SceneRegistry, RemovingTheRootUnregistersTheWholeTreeAndKeepsTheRootPointer)
{
    graph.addNode("a");
    EXPECT_TRUE(scene.removeNodeFromGraph(&graph.root));
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(&graph.root, scene.getRootNode());
    EXPECT_TRUE(graph.root.getNodes().isEmpty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, CallbackMayRemoveASiblingOfTheNodeThatIsBeingRemoved)
{
    TestNode& top = graph.addNode("top");
    TestNode& first = graph.addNode("first", &top);
    TestNode& second = graph.addNode("second", &top);
    CallbackLog log;
    log.onNode = [&](GraphScene* caller, GraphNodeBase*, GraphNodeBase* node)
    {
        if (node == &first) caller->removeNodeFromGraph(&second);
    };
    EXPECT_TRUE(scene.removeNodeFromGraph(&top));
    EXPECT_THAT(log.lines,
                ElementsAre("removeNode top first", "removeNode top second", "removeNode root top"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingTheNodesInACompoundKeepsTheCompound)
{
    TestNode& top = graph.addNode("top");
    TestNode& first = graph.addNode("first", &top);
    TestNode& second = graph.addNode("second", &top);
    CallbackLog log;
    scene.setIsDirty(false);
    scene.removeNodesInCompoundFromGraph(&top);
    EXPECT_THAT(log.lines, ElementsAre("removeNode top first", "removeNode top second"));
    EXPECT_TRUE(top.getNodes().isEmpty());
    EXPECT_EQ(nullptr, first.getNodeOwner());
    EXPECT_EQ(nullptr, second.getNodeOwner());
    EXPECT_EQ(&top, scene.getNodePtrById(top.getId()));
    EXPECT_EQ(&graph.root, top.getNodeOwner());
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, UnregisteredChildIsDroppedFromTheListButStillNamesItsOwner)
{
    TestNode& top = graph.addNode("top");
    TestNode& child = graph.newNode("child");
    child.setNodeOwner(&top);
    scene.removeNodesInCompoundFromGraph(&top);
    EXPECT_TRUE(top.getNodes().isEmpty());
    EXPECT_EQ(&top, child.getNodeOwner());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingTheNodesOfNoCompoundOrOfALeafDoesNothing)
{
    TestNode& leaf = graph.addNode("leaf");
    scene.setIsDirty(false);
    scene.removeNodesInCompoundFromGraph(nullptr);
    scene.removeNodesInCompoundFromGraph(&leaf);
    EXPECT_EQ(2u, scene.getNumberOfNodes());
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

/// Counts how often its children are forgotten at once.
class ForgettingNode : public TestNode
{
public:
    using TestNode::TestNode;

    void clearNodesArray() override
    {
        ++forgettings;
        TestNode::clearNodesArray();
    }

    static int forgettings;
};

int ForgettingNode::forgettings = 0;

TEST_F(SceneRegistry, ChildrenAreForgottenThroughTheNodesOwnOperation)
{
    ForgettingNode& top = graph.addNode<ForgettingNode>("top");
    graph.addNode("child", &top);
    ForgettingNode::forgettings = 0;
    scene.removeNodesInCompoundFromGraph(&top);
    EXPECT_EQ(1, ForgettingNode::forgettings);
    graph.addNode("child", &top);
    scene.removeAllNodes();
    EXPECT_EQ(2, ForgettingNode::forgettings);
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- removing all

TEST_F(SceneRegistry, RemovingAllDeletesTheTreeFromTheLastNodeToTheFirstAndKeepsTheRoot)
{
    HostNode& a = addHostNode("a");
    addHostNode("c", &a);
    addHostNode("d", &a);
    addHostNode("b");
    scene.setIsDirty(false);
    EXPECT_TRUE(scene.removeAllNodes());
    EXPECT_THAT(journal, ElementsAre("delete b", "delete d", "delete c", "delete a"));
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(&graph.root, scene.getRootNode());
    EXPECT_TRUE(graph.root.getNodes().isEmpty());
    EXPECT_EQ(nullptr, scene.getNodePtrById(graph.root.getId()));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingAllFiresTheCallbackForCompoundsOnlyAndBeforeTheyAreDeleted)
{
    HostNode& a = addHostNode("a");
    addHostNode("c", &a);
    HostNode& b = addHostNode("b");
    b.setCompound(true);
    CallbackLog log;
    log.onNode = [&](GraphScene* caller, GraphNodeBase* owner, GraphNodeBase* node)
    {
        journal.push_back("callback " + std::string(node->getName()));
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(&graph.root, owner);
        EXPECT_TRUE(node->getNodes().isEmpty());
        EXPECT_EQ(4u, scene.getNumberOfNodes());
    };
    scene.removeAllNodes();
    EXPECT_THAT(journal, ElementsAre("callback b", "delete b", "delete c", "callback a", "delete a"));
    EXPECT_THAT(log.lines, ElementsAre("removeNode root b", "removeNode root a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingAllCallsNoRemovingHook)
{
    HostNode& a = addHostNode("a");
    addHostNode("b", &a);
    scene.removeAllNodes();
    EXPECT_THAT(journal, ElementsAre("delete b", "delete a"));
}

TEST_F(SceneRegistry, RemovingAllDeletesTheRootTooWhenItIsNotKept)
{
    graph.addNode("a");
    scene.setKeepRootNode(false);
    CallbackLog log;
    EXPECT_TRUE(scene.removeAllNodes());
    EXPECT_THAT(log.lines, ElementsAre("removeNode - root"));
    EXPECT_EQ(nullptr, scene.getRootNode());
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingAllOfALoneRootFiresNothing)
{
    scene.setKeepRootNode(false);
    CallbackLog log;
    EXPECT_TRUE(scene.removeAllNodes());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(nullptr, scene.getRootNode());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingAllWithoutARootEmptiesTheIdMapAndDeletesNothing)
{
    HostNode& a = addHostNode("a");
    scene.setRootNode(nullptr);
    scene.setIsDirty(false);
    EXPECT_TRUE(scene.removeAllNodes());
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_EQ(&graph.root, a.getNodeOwner());
}

TEST_F(SceneRegistry, RemovingAllForgetsRegisteredNodesOutsideTheTreeWithoutDeletingThem)
{
    HostNode& stray = addHostNode("stray");
    stray.setNodeOwner(nullptr);
    journal.clear();
    scene.removeAllNodes();
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, RemovingAllDeletesUnregisteredNodesOfTheTreeToo)
{
    HostNode& a = newHostNode("a");
    a.setNodeOwner(&graph.root);
    journal.clear();
    scene.removeAllNodes();
    EXPECT_THAT(journal, ElementsAre("delete a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

/// The two operations that delete the tree.
using DeleteTree = void (*)(GraphScene&);
constexpr DeleteTree deleteTree[] = {[](GraphScene& scene) { scene.removeAllNodes(); },
                                     [](GraphScene& scene) { scene.clear(); }};

TEST_F(SceneRegistry, NodeThatTwoChildListsHoldIsDeletedOnce)
{
    for (DeleteTree const deleteAll : deleteTree)
    {
        GraphNodeBase* const compound = scene.createNewCompound();
        scene.addNodeToGraph(compound);
        addHostNode("below", &addHostNode("child", compound));
        GraphNodeBase* const copy = new GraphNodeBase(*compound); // lists the child, too
        copy->setGraphScene(nullptr);
        copy->setNodeOwner(nullptr);
        copy->setId(scene.getFreeNodeId());
        scene.addNodeToGraph(copy);
        deleteAll(scene);
        EXPECT_THAT(journal, UnorderedElementsAre("delete below", "delete child"));
        EXPECT_EQ(0u, scene.getNumberOfNodes());
        EXPECT_SCENE_INVARIANTS(scene);
    }
}

TEST_F(SceneRegistry, NodeThatAListHoldsTwiceIsDeletedOnce)
{
    for (DeleteTree const deleteAll : deleteTree)
    {
        HostNode& node = addHostNode("node");
        graph.root.refNodes().append(&node);
        journal.clear();
        deleteAll(scene);
        EXPECT_THAT(journal, ElementsAre("delete node"));
        EXPECT_SCENE_INVARIANTS(scene);
    }
}

TEST_F(SceneRegistry, OwnerIsStillThereWhenANodeOfTwoChildListsIsDeleted)
{
    GraphNodeBase* const compound = scene.createNewCompound();
    compound->setName("compound");
    scene.addNodeToGraph(compound);
    addHostNode("child", compound).setCompound(true);
    GraphNodeBase* const copy = new GraphNodeBase(*compound); // lists the child, too
    copy->setGraphScene(nullptr);
    copy->setNodeOwner(nullptr);
    copy->setId(scene.getFreeNodeId());
    scene.addNodeToGraph(copy);
    graph.root.addNode(compound); // now behind its copy
    CallbackLog log;
    scene.clear();
    EXPECT_THAT(log.lines, ElementsAre("removeNode compound child", "removeNode root compound",
                                       "removeNode root compound"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ChildListsThatFormARingAreDeletedOnce)
{
    for (DeleteTree const deleteAll : deleteTree)
    {
        HostNode& a = addHostNode("a");
        HostNode& b = addHostNode("b");
        HostNode& c = addHostNode("c", &b);
        a.refNodes().append(&b);
        c.refNodes().append(&a);
        c.refNodes().append(&graph.root);
        journal.clear();
        deleteAll(scene);
        EXPECT_THAT(journal, UnorderedElementsAre("delete a", "delete b", "delete c"));
        EXPECT_EQ(0u, scene.getNumberOfNodes());
        EXPECT_SCENE_INVARIANTS(scene);
    }
}

TEST_F(SceneRegistry, RemovingAllLeavesConnectionsAndPinMapsAlone)
{
    GraphNodePin& in = graph.addInput(graph.root);
    GraphNodePin& out = graph.addOutput(graph.root);
    GraphConnection* const loop = scene.connect(&out, &in, false);
    CallbackLog log;
    scene.removeAllNodes();
    EXPECT_THAT(listed(scene.getGraphConnections()), ElementsAre(loop));
    EXPECT_EQ(&in, scene.getPinPtrById(in.getId()));
    EXPECT_EQ(&out, scene.getPinPtrByFullName("root.out"));
    EXPECT_TRUE(scene.areNodesConnected(&graph.root, &graph.root, false, true));
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_SCENE_INVARIANTS(scene);
}

/// A host's root that holds nodes and still says that it is no compound.
class PlainRoot : public TestNode
{
public:
    using TestNode::TestNode;
    bool isCompound() const override { return false; }
};

TEST_F(SceneRegistry, RemovingAllDoesNotLookBelowARootThatIsNoCompound)
{
    PlainRoot& root = graph.newNode<PlainRoot>("plain");
    scene.setRootNode(&root);
    HostNode& a = newHostNode("a");
    a.setNodeOwner(&root);
    journal.clear();
    scene.removeAllNodes();
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_TRUE(root.getNodes().isEmpty());
}

// --- clear and clearMessages

TEST_F(SceneRegistry, ClearRemovesConnectionsThenNodesAndKeepsTheRoot)
{
    HostNode& a = addHostNode("a");
    HostNode& b = addHostNode("b");
    GraphNodePin& out = graph.addOutput(a);
    GraphNodePin& in = graph.addInput(b);
    scene.connect(&out, &in, false);
    scene.removeNodePin(&out); // the maps would keep the pins otherwise, when they are long gone
    scene.removeNodePin(&in);
    b.setCompound(true);
    CallbackLog log;
    scene.setIsDirty(false);
    scene.clear();
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root a.out > b.in", "removeNode root b",
                                       "removeNodePin root in", "removeNodePin root out"));
    EXPECT_THAT(journal, ElementsAre("delete b", "delete a"));
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_EQ(&graph.root, scene.getRootNode());
    EXPECT_TRUE(graph.root.getNodes().isEmpty());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ClearDeletesTheRootWhenItIsNotKept)
{
    scene.setKeepRootNode(false);
    scene.clear();
    EXPECT_EQ(nullptr, scene.getRootNode());
    EXPECT_EQ(0u, scene.getNumberOfNodes());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ClearEmptiesTheLastImportedListsAndKeepsTheirStorage)
{
    GraphConnection connection;
    scene.refLastImportedNodes().append(&graph.root);
    scene.refLastImportedConnections().append(&connection);
    unsigned int const capacity = scene.getLastImportedNodes().capacity();
    scene.clear();
    EXPECT_TRUE(scene.getLastImportedNodes().isEmpty());
    EXPECT_TRUE(scene.getLastImportedConnections().isEmpty());
    EXPECT_EQ(capacity, scene.getLastImportedNodes().capacity());
}

TEST_F(SceneRegistry, ClearEmptiesTheMessagesAndKeepsTheVerbosity)
{
    scene.refMessages().setVerbosityLevel(2);
    scene.refMessages().pushError("title", "");
    scene.clear();
    EXPECT_TRUE(scene.getMessages().isEmpty());
    EXPECT_EQ(2, scene.getMessages().getVerbosityLevel());
}

TEST_F(SceneRegistry, ClearStartsTheFreeIdsAgain)
{
    graph.addNode("a");
    graph.addNode("b");
    EXPECT_EQ(4u, scene.getFreeNodeId());
    scene.clear();
    EXPECT_EQ(1u, scene.getFreeNodeId());
}

TEST_F(SceneRegistry, ClearEmptiesTheAdjacencyCounts)
{
    TestNode& a = graph.addFilter("a");
    TestNode& b = graph.addFilter("b");
    scene.connect(&a, &b, false);
    // Turned off, the removal of the connections leaves the counts; only clearing them takes them away.
    scene.setUseAdjacencyMap(false);
    GraphNodeBase const twinOfA(a.getId());
    GraphNodeBase const twinOfB(b.getId());
    scene.clear();
    scene.setUseAdjacencyMap(true);
    EXPECT_FALSE(scene.areNodesConnected(&twinOfA, &twinOfB, false, true));
    EXPECT_FALSE(scene.areNodesConnected(&twinOfA, &twinOfB, false, false));
}

TEST_F(SceneRegistry, ClearLeavesThePinMapsAlone)
{
    GraphNodePin& pin = graph.addInput(graph.root);
    scene.clear();
    EXPECT_EQ(&pin, scene.getPinPtrById(pin.getId()));
    EXPECT_EQ(&pin, scene.getPinPtrByFullName("root.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ClearKeepsFlagsAndIdentity)
{
    unsigned int const id = scene.getId();
    scene.setAllowDuplicatedConnections(false);
    scene.setAllowLoops(false);
    scene.setUseAdjacencyMap(false);
    scene.clear();
    EXPECT_EQ(id, scene.getId());
    EXPECT_FALSE(scene.getAllowDuplicatedConnections());
    EXPECT_FALSE(scene.getAllowLoops());
    EXPECT_FALSE(scene.getUseAdjacencyMap());
    EXPECT_TRUE(scene.getKeepRootNode());
}

TEST_F(SceneRegistry, ClearedSceneCanBeFilledAgain)
{
    scene.clear();
    EXPECT_TRUE(scene.addNodeToGraph(&graph.root));
    TestNode& a = graph.addFilter("a");
    EXPECT_EQ(2u, a.getId());
    EXPECT_EQ(&a, scene.getNodePtrByFullName("root.a"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(SceneRegistry, ClearMessagesReachesEveryNodeByAscendingId)
{
    HostNode& high = newHostNode("high");
    high.setId(20);
    scene.addNodeToGraph(&high);
    HostNode& low = newHostNode("low");
    low.setId(10);
    scene.addNodeToGraph(&low);
    scene.refMessages().pushError("title", "");
    journal.clear();
    scene.setIsDirty(false);
    scene.clearMessages();
    EXPECT_THAT(journal, ElementsAre("clear messages low", "clear messages high"));
    EXPECT_TRUE(scene.getMessages().isEmpty());
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

/// A host scene whose nodes outlive `clear`, so that it shows whether they are told. It copies itself on the
/// way.
class SparingScene : public GraphScene
{
public:
    bool removeAllNodes() override
    {
        copy = std::make_unique<GraphScene>(*this);
        assigned = *this;
        if (nestedClears-- > 0) GraphScene::clear();
        return true;
    }

    int nestedClears = 0;
    std::unique_ptr<GraphScene> copy;
    GraphScene assigned;
};

TEST(SceneRegistryOfAHost, CopyOfASceneThatIsBeingClearedDoesNotTellItsNodesEither)
{
    TestGraph<SparingScene> graph;
    graph.addNode<HostNode>("a").label = "a";
    graph.scene.clear();
    journal.clear();
    graph.scene.copy->clearMessages();
    graph.scene.assigned.clearMessages();
    EXPECT_EQ(2u, graph.scene.copy->getNumberOfNodes());
    EXPECT_THAT(journal, IsEmpty());
    graph.scene.clearMessages();
    EXPECT_THAT(journal, ElementsAre("clear messages a"));
}

TEST(SceneRegistryOfAHost, NodesAreNotToldToClearTheirMessagesWhileTheSceneIsCleared)
{
    for (int const nestedClears : {0, 1})
    {
        SCOPED_TRACE(nestedClears);
        TestGraph<SparingScene> graph;
        graph.addNode<HostNode>("a").label = "a";
        graph.scene.refMessages().pushError("title", "");
        graph.scene.nestedClears = nestedClears;
        journal.clear();
        graph.scene.clear();
        EXPECT_THAT(journal, IsEmpty());
        EXPECT_TRUE(graph.scene.getMessages().isEmpty());
        graph.scene.clearMessages();
        EXPECT_THAT(journal, ElementsAre("clear messages a"));
        EXPECT_SCENE_INVARIANTS(graph.scene);
    }
}

// --- callbacks that the library never fires

TEST_F(SceneRegistry, HostCallbacksAreNeverFired)
{
    CallbackLog log;
    TestNode& compound = graph.addNode("compound");
    compound.setCompound(true);
    TestNode& a = graph.addFilter("a", &compound);
    a.setName("b");
    a.getNodePins()[0]->setName("in2");
    a.setNodeOwner(&graph.root);
    scene.removeNodeFromGraph(&compound);
    for (std::string const& line : log.lines)
    {
        EXPECT_NE(0u, line.find("updateNodePin"));
        EXPECT_NE(0u, line.find("groupNode"));
        EXPECT_NE(0u, line.find("ungroupNode"));
    }
    EXPECT_FALSE(log.lines.empty());
    EXPECT_SCENE_INVARIANTS(scene);
}

} // namespace
} // namespace kestrel::graph::test
