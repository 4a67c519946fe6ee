#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;

/// Lets the tests reach the maps.
class MapScene : public GraphScene
{
public:
    using GraphScene::insertPinInMapByFullName;
    using GraphScene::removePinFromMapByFullName;
};

/// Answers look-ups by id as if some more ids were taken.
class CrowdedScene : public GraphScene
{
public:
    GraphNodeBase* getNodePtrById(unsigned int const& id) const override
    {
        asked.push_back(id);
        return taken.count(id) != 0 ? &GRAPH_NODE_NOT_VALID : GraphScene::getNodePtrById(id);
    }

    std::set<unsigned int> taken;
    mutable std::vector<unsigned int> asked;
};

/// Answers look-ups by full name as if some more names were taken, and keeps what was asked.
class NamedScene : public GraphScene
{
public:
    GraphNodeBase* getNodePtrByFullName(KS_String const& name) const override
    {
        asked.emplace_back(name);
        return taken.count(asked.back()) != 0 ? &GRAPH_NODE_NOT_VALID : nullptr;
    }

    std::set<std::string> taken;
    mutable std::vector<std::string> asked;
};

/// Hands out what `getFreeNodeName` was asked.
class EchoScene : public GraphScene
{
public:
    KS_String getFreeNodeName(KS_String const& ownerFullName, KS_String const& baseName) override
    {
        return ownerFullName + "|" + baseName;
    }
};

/// Takes the name that waits for it when it is asked for its full name.
class LazyNode : public TestNode
{
public:
    KS_String getFullName() override
    {
        if (KS_String const name = std::exchange(waitingName, KS_String()); !name.isEmpty()) setName(name);
        return TestNode::getFullName();
    }

    KS_String waitingName;
};

/// Looks up another node when it is asked for its full name.
class AskingNode : public TestNode
{
public:
    KS_String getFullName() override
    {
        if (KS_String const name = std::exchange(wantedName, KS_String()); !name.isEmpty())
            found = getGraphScene()->getNodePtrByFullName(name);
        return TestNode::getFullName();
    }

    KS_String wantedName;
    GraphNodeBase* found = nullptr;
};

std::string number(unsigned int value)
{
    return (value < 10 ? "0" : "") + std::to_string(value);
}

} // namespace

// ---- ids of nodes

TEST(SceneFreeIds, FreshSceneGivesOneUntilItIsTaken)
{
    GraphScene scene;
    EXPECT_EQ(scene.getFreeNodeId(), 1u);
    EXPECT_EQ(scene.getFreeNodeId(), 1u);
    GraphNodeBase node(1);
    scene.addNodeToGraph(&node);
    EXPECT_EQ(scene.getFreeNodeId(), 2u);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeIds, TakenIdsAreSkippedAndGapsAreFound)
{
    GraphScene scene;
    GraphNodeBase one(1);
    GraphNodeBase two(2);
    GraphNodeBase three(3);
    GraphNodeBase five(5);
    for (GraphNodeBase* node : {&five, &three, &one, &two}) scene.addNodeToGraph(node);
    EXPECT_EQ(scene.getFreeNodeId(), 4u);
    GraphNodeBase four(4);
    scene.addNodeToGraph(&four);
    EXPECT_EQ(scene.getFreeNodeId(), 6u);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeIds, SearchStartsAtTheIdThatWasGivenLast)
{
    GraphScene scene;
    GraphNodeBase one(1);
    GraphNodeBase two(2);
    scene.addNodeToGraph(&one);
    scene.addNodeToGraph(&two);
    EXPECT_EQ(scene.getFreeNodeId(), 3u);
    scene.removeNodeFromGraph(&one);
    scene.removeNodeFromGraph(&two);
    EXPECT_EQ(scene.getFreeNodeId(), 3u);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeIds, IdIsNotReservedSoAFreedOneAtTheCounterComesBack)
{
    GraphScene scene;
    GraphNodeBase node(scene.getFreeNodeId());
    scene.addNodeToGraph(&node);
    scene.removeNodeFromGraph(&node);
    EXPECT_EQ(scene.getFreeNodeId(), 1u);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeIds, ClearStartsAgainAtOne)
{
    TestGraph<> graph;
    graph.addNode("a");
    graph.addNode("b");
    EXPECT_EQ(graph.scene.getFreeNodeId(), 4u);
    graph.scene.clear();
    EXPECT_EQ(graph.scene.getFreeNodeId(), 1u);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeIds, EverySceneCountsForItself)
{
    GraphScene first;
    GraphNodeBase node(1);
    first.addNodeToGraph(&node);
    EXPECT_EQ(first.getFreeNodeId(), 2u);
    GraphScene second;
    EXPECT_EQ(second.getFreeNodeId(), 1u);
    GraphScene const copy(first);
    EXPECT_EQ(GraphScene(copy).getFreeNodeId(), 2u);
    EXPECT_SCENE_INVARIANTS(first);
}

TEST(SceneFreeIds, GivingAnIdChangesNothingElse)
{
    GraphScene scene;
    unsigned int const scenes = GraphScene::lastUsedId_;
    scene.getFreeNodeId();
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(scene.getNumberOfNodes(), 0u);
    EXPECT_EQ(GraphScene::lastUsedId_, scenes);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeIds, HostsLookUpDecidesWhatIsTaken)
{
    CrowdedScene scene;
    scene.taken = {1, 2, 4};
    EXPECT_EQ(scene.getFreeNodeId(), 3u);
    EXPECT_THAT(scene.asked, ElementsAre(1u, 2u, 3u));
    scene.taken.insert(3);
    scene.asked.clear();
    EXPECT_EQ(scene.getFreeNodeId(), 5u);
    EXPECT_THAT(scene.asked, ElementsAre(3u, 4u, 5u));
}

TEST(SceneFreeIds, SceneIdsCountScenesAndNotNodes)
{
    GraphScene first;
    GraphNodeBase node(first.getFreeNodeId());
    first.addNodeToGraph(&node);
    GraphScene second;
    EXPECT_EQ(second.getId(), first.getId() + 1);
    EXPECT_EQ(GraphScene::lastUsedId_, second.getId());
    EXPECT_SCENE_INVARIANTS(first);
}

// ---- an id that changes

TEST(SceneNodeIdChange, EntryMovesToTheNewId)
{
    GraphScene scene;
    GraphNodeBase node(5);
    scene.addNodeToGraph(&node);
    scene.setIsDirty(false);
    node.setId(7);
    EXPECT_EQ(scene.getNodePtrById(5), nullptr);
    EXPECT_EQ(scene.getNodePtrById(7), &node);
    EXPECT_EQ(scene.getNumberOfNodes(), 1u);
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneNodeIdChange, NodesOwnIdIsLeftToTheCaller)
{
    GraphScene scene;
    GraphNodeBase node(5);
    scene.addNodeToGraph(&node);
    scene.updateNodeIdChange(&node, 5, 7);
    EXPECT_EQ(scene.getNodePtrById(7), &node);
    EXPECT_EQ(node.getId(), 5u);
}

TEST(SceneNodeIdChange, UnknownOldIdChangesNothing)
{
    GraphScene scene;
    GraphNodeBase node(5);
    GraphNodeBase stranger(6);
    scene.addNodeToGraph(&node);
    scene.setIsDirty(false);
    scene.updateNodeIdChange(&stranger, 6, 7);
    scene.updateNodeIdChange(&node, 6, 7);
    EXPECT_EQ(scene.getNodePtrById(7), nullptr);
    EXPECT_EQ(scene.getNodePtrById(5), &node);
    EXPECT_EQ(scene.getNumberOfNodes(), 1u);
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneNodeIdChange, TakenNewIdKeepsItsNodeAndTheOtherIsLeftWithoutEntry)
{
    GraphScene scene;
    GraphNodeBase node(5);
    GraphNodeBase other(7);
    scene.addNodeToGraph(&node);
    scene.addNodeToGraph(&other);
    scene.setIsDirty(false);
    scene.updateNodeIdChange(&node, 5, 7);
    EXPECT_EQ(scene.getNodePtrById(5), nullptr);
    EXPECT_EQ(scene.getNodePtrById(7), &other);
    EXPECT_EQ(scene.getNumberOfNodes(), 1u);
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneNodeIdChange, NodeThatIsPassedTakesTheEntry)
{
    GraphScene scene;
    GraphNodeBase node(5);
    GraphNodeBase other(7);
    scene.addNodeToGraph(&node);
    scene.updateNodeIdChange(&other, 5, 7);
    EXPECT_EQ(scene.getNodePtrById(7), &other);
    EXPECT_EQ(scene.getNodePtrById(5), nullptr);
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneNodeIdChange, NewIdIsFreeToGiveNoMore)
{
    GraphScene scene;
    GraphNodeBase node(5);
    scene.addNodeToGraph(&node);
    node.setId(1);
    EXPECT_EQ(scene.getFreeNodeId(), 2u);
    EXPECT_SCENE_INVARIANTS(scene);
}

// ---- names of nodes

TEST(SceneFreeNodeNames, FirstCandidateCarriesANumberAlready)
{
    TestGraph<> graph;
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("nowhere", "add").c_str(), "add01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "").c_str(), "01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, NamesAreNotReserved)
{
    TestGraph<> graph;
    graph.scene.getFreeNodeName("root", "add");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add01");
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, FirstGapIsFound)
{
    TestGraph<> graph;
    graph.addNode("add01");
    graph.addNode("add03");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add02");
    graph.addNode("add02");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add04");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, OnlyEqualNamesUnderTheSameOwnerCollide)
{
    TestGraph<> graph;
    TestNode& owner = graph.addNode("C");
    graph.addNode("add01", &owner);
    graph.addNode("Mul01");
    graph.addNode("sub1");
    graph.addNode("neg");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root.C", "add").c_str(), "add02");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "mul").c_str(), "mul01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "sub").c_str(), "sub01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "neg").c_str(), "neg01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("Root", "sub").c_str(), "sub01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, NumberInTheBaseIsPartOfIt)
{
    TestGraph<> graph;
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add01").c_str(), "add0101");
    graph.addNode("add0101");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add01").c_str(), "add0102");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, BaseIsTextAndNeverAFormat)
{
    TestGraph<> graph;
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "50%s%d%%").c_str(), "50%s%d%%01");
    graph.addNode("50%s%d%%01");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "50%s%d%%").c_str(), "50%s%d%%02");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, NumberGrowsToThreeDigits)
{
    TestGraph<> graph;
    for (unsigned int i = 1; i < 99; ++i) graph.addNode(KS_String("add" + number(i)));
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add99");
    graph.addNode("add99");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add100");
    graph.addNode("add100");
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "add").c_str(), "add101");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, RootThatIsNotRegisteredCollidesToo)
{
    GraphScene scene;
    GraphNodeBase root(1);
    root.setName("top.compound01");
    scene.setRootNode(&root);
    EXPECT_STREQ(scene.getFreeNodeCompoundName("top").c_str(), "compound02");
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeNodeNames, NodeThatNamesItselfWhenItIsAskedHidesNoOther)
{
    std::vector<std::string> names{"add01", "add02", "add03"};
    do {
        SCOPED_TRACE(::testing::PrintToString(names));
        TestGraph<> graph;
        graph.addNode(KS_String(names[0]));
        LazyNode& lazy = graph.addNode<LazyNode>("unnamed");
        graph.addNode(KS_String(names[2]));
        lazy.waitingName = KS_String(names[1]);
        EXPECT_EQ(graph.scene.getFreeNodeName("root", "add"), "add04");
        EXPECT_SCENE_INVARIANTS(graph.scene);
    } while (std::next_permutation(names.begin(), names.end()));
}

TEST(SceneFreeNodeNames, NodeMayAskForAnotherNodeWhenItIsAskedForItsName)
{
    TestGraph<> graph;
    TestNode& wanted = graph.addNode("wanted");
    AskingNode& asking = graph.addNode<AskingNode>("x01");
    asking.wantedName = "root.wanted";
    EXPECT_STREQ(graph.scene.getFreeNodeName("root", "x").c_str(), "x02");
    EXPECT_EQ(asking.found, &wanted);
}

TEST(SceneFreeNodeNames, NodesOfOneNameAreOneTakenName)
{
    GraphScene scene;
    GraphNodeBase root(1);
    GraphNodeBase ofTheLibrary(2);
    TestNode second(3);
    TestNode first(4);
    for (auto const& [node, name] : std::initializer_list<std::pair<GraphNodeBase*, char const*>>{
             {&root, "root"}, {&ofTheLibrary, "x02"}, {&second, "x02"}, {&first, "x01"}})
    {
        node->setName(name);
        if (node != &root) node->setNodeOwner(&root);
        scene.addNodeToGraph(node);
    }
    EXPECT_STREQ(scene.getFreeNodeName("root", "x").c_str(), "x03");
    EXPECT_EQ(scene.getNodePtrByFullName("root.x02"), &ofTheLibrary);
}

TEST(SceneFreeNodeNames, EmptyOwnerStillPutsTheSeparatorInFront)
{
    GraphScene scene;
    GraphNodeBase plain(1);
    plain.setName("add01");
    GraphNodeBase dotted(2);
    dotted.setName(".mul01");
    scene.addNodeToGraph(&plain);
    scene.addNodeToGraph(&dotted);
    EXPECT_STREQ(scene.getFreeNodeName("", "add").c_str(), "add01");
    EXPECT_STREQ(scene.getFreeNodeName("", "mul").c_str(), "mul02");
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST(SceneFreeNodeNames, HostsLookUpDecidesWhatIsTaken)
{
    NamedScene scene;
    scene.taken = {"top.add01", "top.add02"};
    EXPECT_STREQ(scene.getFreeNodeName("top", "add").c_str(), "add03");
    EXPECT_THAT(scene.asked, ElementsAre("top.add01", "top.add02", "top.add03"));
}

TEST(SceneFreeNodeNames, CompoundsAreNumberedAsCompound)
{
    TestGraph<> graph;
    EXPECT_STREQ(graph.scene.getFreeNodeCompoundName("root").c_str(), "compound01");
    graph.addNode("compound01");
    EXPECT_STREQ(graph.scene.getFreeNodeCompoundName("root").c_str(), "compound02");
    EXPECT_STREQ(graph.scene.getFreeNodeCompoundName("root.compound01").c_str(), "compound01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, InterfaceNodesAreNamedByTheInputBit)
{
    struct Row
    {
        unsigned int direction;
        char const* name;
    };
    for (Row const& row :
         {Row{0, "output interface01"}, Row{1, "input interface01"}, Row{2, "output interface01"},
          Row{3, "input interface01"}, Row{4, "output interface01"}, Row{5, "input interface01"}})
    {
        SCOPED_TRACE(row.direction);
        GraphScene scene;
        EXPECT_STREQ(scene.getFreeInterfaceNodeName("root", PinDirection(row.direction)).c_str(), row.name);
    }
}

TEST(SceneFreeNodeNames, InterfaceNodesAreNumbered)
{
    TestGraph<> graph;
    graph.addNode("input interface01");
    EXPECT_STREQ(graph.scene.getFreeInterfaceNodeName("root", PIN_INPUT).c_str(), "input interface02");
    EXPECT_STREQ(graph.scene.getFreeInterfaceNodeName("root", PIN_OUTPUT).c_str(), "output interface01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreeNodeNames, CompoundAndInterfaceNamesAskTheHostForANodeName)
{
    EchoScene scene;
    EXPECT_STREQ(scene.getFreeNodeCompoundName("a.b").c_str(), "a.b|compound");
    EXPECT_STREQ(scene.getFreeInterfaceNodeName("a.b", PIN_INPUT).c_str(), "a.b|input interface");
    EXPECT_STREQ(scene.getFreeInterfaceNodeName("a.b", PIN_OUTPUT).c_str(), "a.b|output interface");
}

// ---- names of pins

TEST(SceneFreePinNames, BareBaseComesFirstThenTheNumbers)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    graph.addInput(node, "in");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in01");
    graph.addInput(node, "in01");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in02");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, BaseIsFreeEvenWhenItsNumbersAreTaken)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    graph.addInput(node, "in01");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    graph.addInput(node, "in");
    graph.addInput(node, "in03");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in02");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, OnlyEqualNamesOfTheSameNodeCollide)
{
    TestGraph<> graph;
    graph.addInput(graph.addNode("n"), "Input");
    graph.addInput(graph.addNode("m"), "in");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "input").c_str(), "input");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    EXPECT_STREQ(graph.scene.getFreePinName("root.M", "in").c_str(), "in");
    EXPECT_STREQ(graph.scene.getFreePinName("n", "Input").c_str(), "Input");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, NumberInTheBaseIsPartOfIt)
{
    TestGraph<> graph;
    graph.addInput(graph.addNode("n"), "in01");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in01").c_str(), "in0101");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, BaseIsTextAndNeverAFormat)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "50%s").c_str(), "50%s");
    graph.addInput(node, "50%s");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "50%s").c_str(), "50%s01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, NumberGrowsToThreeDigits)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    graph.addInput(node, "in");
    for (unsigned int i = 1; i < 99; ++i) graph.addInput(node, KS_String("in" + number(i)));
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in99");
    graph.addInput(node, "in99");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in100");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, NameThatIsGivenUpIsFreeAgainWhateverOthersAreCalled)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    std::vector<GraphNodePin*> pins;
    for (unsigned int i = 0; i < 12; ++i)
        pins.push_back(&graph.addInput(node, graph.scene.getFreePinName("root.n", "in")));
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in12");
    GraphNodePin& other = graph.addInput(node, "other");
    for (char const* name : {"in-", "in/7", "in:", "in05x", "in1234567890", "in12345678901", "7", ""})
    {
        other.setName(name);
        other.setName("other");
        EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in12") << name;
    }
    GraphNodePin withoutNode;
    withoutNode.setId(5000);
    withoutNode.setName("12");
    graph.scene.addNodePin(&withoutNode);
    graph.scene.removeNodePin(&withoutNode);
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in12");
    pins[5]->setName("gone");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in05");
    pins[0]->setName("gone");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
}

TEST(SceneFreePinNames, ManyBasesAreCountedEachOnItsOwn)
{
    TestGraph<MapScene> graph;
    GraphNodePin& pin = graph.addInput(graph.addNode("n"), "in");
    std::vector<std::string> bases;
    for (unsigned int i = 0; i < 4100; ++i) bases.push_back("b" + std::to_string(i) + "_");
    for (int round = 0; round < 2; ++round)
    {
        for (std::string const& base : bases)
        {
            for (int i = 0; i < 9; ++i)
            {
                KS_String const name = graph.scene.getFreePinName("root.n", KS_String(base));
                EXPECT_EQ(name,
                          KS_String(base +
                                    (i + round > 0 ? number(static_cast<unsigned int>(i + 9 * round)) : "")));
                graph.scene.insertPinInMapByFullName(KS_String("root.n.") + name, &pin);
            }
        }
    }
}

TEST(SceneFreePinNames, NodesNameEndsAtItsFirstNul)
{
    TestGraph<> graph;
    graph.addInput(graph.addNode("n"), "in");
    KS_String const withNul(std::string_view("root.n\0x", 8));
    EXPECT_STREQ(graph.scene.getFreePinName(withNul, "in").c_str(), "in01");
}

TEST(SceneFreePinNames, EmptyTextsAreNotSpecial)
{
    TestGraph<> graph;
    TestNode& nameless = graph.newNode("");
    GraphNodePin& pin = *graph.scene.createNewPin(&nameless, 1, PIN_INPUT);
    EXPECT_STREQ(pin.getFullName().c_str(), ".Untitled");
    EXPECT_STREQ(graph.scene.getFreePinName("", "Untitled").c_str(), "Untitled01");
    EXPECT_STREQ(graph.scene.getFreePinName("", "").c_str(), "");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, NameOfANullPinCountsAsFree)
{
    TestGraph<MapScene> graph;
    graph.scene.insertPinInMapByFullName("root.n.in", nullptr);
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    graph.scene.removePinFromMapByFullName("root.n.in");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, PinThatIsNotRegisteredDoesNotCollide)
{
    TestGraph<> graph;
    TestNode& node = graph.addNode("n");
    GraphNodePin& pin = graph.addInput(node, "in");
    graph.scene.removeNodePin(&pin);
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, AskingChangesNothing)
{
    TestGraph<> graph;
    graph.scene.getFreePinName("root", "in");
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_STREQ(graph.scene.getFreePinName("root", "in").c_str(), "in");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(SceneFreePinNames, NameFollowsTheNodesPlaceAndName)
{
    TestGraph<> graph;
    TestNode& owner = graph.addNode("C");
    TestNode& node = graph.addNode("n");
    graph.addInput(node, "in");
    node.setNodeOwner(&owner);
    node.setName("m");
    EXPECT_STREQ(graph.scene.getFreePinName("root.n", "in").c_str(), "in");
    EXPECT_STREQ(graph.scene.getFreePinName("root.C.n", "in").c_str(), "in");
    EXPECT_STREQ(graph.scene.getFreePinName("root.C.m", "in").c_str(), "in01");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

} // namespace kestrel::graph::test
