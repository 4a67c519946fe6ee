#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;

class EditorNode final : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    KS_String getInfo() override { return "an editor's own"; }
};

class EditorPin final : public GraphNodePin
{
};

class EditorScene final : public GraphScene
{
};

/// Reaches the map of nodes.
class PlainScene final : public GraphScene
{
public:
    void put(GraphNodeBase& node) { insertNodeInMapById(node.getId(), &node); }
    void putNull(unsigned int id) { insertNodeInMapById(id, nullptr); }
    void take(GraphNodeBase& node) { removeNodeFromMapById(node.getId()); }
};

/// Overrides nothing that matters, but nobody has declared it. Notes when it is asked.
class AskedNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;

    KS_String getFullName() override
    {
        if (log != nullptr) log->push_back(getId());
        return GraphNodeBase::getFullName();
    }

    std::vector<unsigned int>* log = nullptr;
};

/// Has a name of its own making.
class LoudNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    KS_String getName() override { return GraphNodeBase::getName() + "!"; }
};

void declare()
{
    declarePlainNames<EditorScene, EditorNode, EditorPin>();
}

GraphNodeBase* firstOfFullName(GraphScene& scene, KS_String const& fullName)
{
    if (scene.getRootNode() != nullptr && scene.getRootNode()->getFullName() == fullName)
        return scene.getRootNode();
    ArrayOfPtr<GraphNodeBase, KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    auto const found = std::find_if(nodes.begin(), nodes.end(),
                                    [&](GraphNodeBase* node) { return node->getFullName() == fullName; });
    return found != nodes.end() ? *found : nullptr;
}

std::string freeName(GraphScene& scene, std::string const& owner, std::string const& base)
{
    for (int number = 1;; ++number)
    {
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), "%02d", number);
        std::string const name = base + digits.data();
        if (firstOfFullName(scene, KS_String(owner + "." + name)) == nullptr) return name;
    }
}

std::string freePinName(GraphScene& scene, std::string const& node, std::string const& base)
{
    std::string name = base;
    for (int number = 1; scene.getPinPtrByFullName(KS_String(node + "." + name)) != nullptr; ++number)
    {
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), "%02d", number);
        name = base + digits.data();
    }
    return name;
}

GraphNodeBase* childOfName(ArrayOfPtr<GraphNodeBase, KS_NO> const& children, KS_String const& name,
                           bool caseSensitive)
{
    auto const folded = [caseSensitive](KS_String const& text)
    { return caseSensitive ? KS_String(text.c_str()) : KS_String(text.c_str()).toLower(); };
    auto const found =
        std::find_if(children.begin(), children.end(),
                     [&](GraphNodeBase* child) { return folded(child->getName()) == folded(name); });
    return found != children.end() ? *found : nullptr;
}

/// Nodes of all kinds in one scene, some of them not registered, changed at random, and beside it what the
/// child lists have to hold.
template <class Scene>
class Shuffle
{
public:
    // Every other graph is all of plain names: only then are children and free names looked up by them.
    explicit Shuffle(unsigned int seed) : random_(seed), allPlain_(seed % 2 == 0)
    {
        declare();
        scene_ = std::make_unique<Scene>();
        add();
        scene_->setRootNode(nodes_.front().get());
    }

    ~Shuffle() { scene_->removeAllConnections(); }

    void step()
    {
        switch (below(14))
        {
        case 0:
        case 1:
        case 2:
            add();
            break;
        case 3:
            any().setName(name());
            break;
        case 4:
            any().setName(name());
            break;
        case 5:
            own(any(), any());
            break;
        case 6:
            own(any(), any());
            break;
        case 7:
            disown(any());
            break;
        case 8:
            toggleRegistration(any());
            break;
        case 9:
            any().setId(1 + below(60));
            break;
        case 10:
            addPin(any());
            break;
        case 11:
            renamePin(any());
            break;
        case 12:
            rarely();
            break;
        default:
            destroy();
            break;
        }
    }

    void check()
    {
        for (int i = 0; i < 3; ++i)
        {
            KS_String const fullName = below(3) == 0 ? name() : any().getFullName();
            ASSERT_EQ(scene_->getNodePtrByFullName(fullName), firstOfFullName(*scene_, fullName))
                << fullName.c_str();
        }
        KS_String const owner = any().getFullName();
        KS_String const base(below(2) == 0 ? "a" : "b0");
        ASSERT_EQ(std::string(scene_->getFreeNodeName(owner, base)),
                  freeName(*scene_, std::string(owner), std::string(base)));
        ASSERT_EQ(std::string(scene_->getFreePinName(owner, base)),
                  freePinName(*scene_, std::string(owner), std::string(base)));
        GraphNodeBase& parent = any();
        ArrayOfPtr<GraphNodeBase, KS_NO> children;
        scene_->getGraphNodesAtLevel(&parent, false, children);
        ASSERT_EQ(listed(children), children_[&parent]);
        KS_String const wanted = name();
        for (bool const caseSensitive : {false, true})
            ASSERT_EQ(parent.getNodeByName(wanted, caseSensitive),
                      childOfName(children, wanted, caseSensitive));
        bool const isShown = below(4) == 0;
        if (isShown)
        {
            ASSERT_EQ(listed(parent.getNodes()), children_[&parent]);
        }
    }

private:
    using Children = std::map<GraphNodeBase const*, std::vector<GraphNodeBase*>>;

    unsigned int below(unsigned int count)
    {
        return std::uniform_int_distribution<unsigned int>(0, count - 1)(random_);
    }

    GraphNodeBase& any() { return *nodes_[below(static_cast<unsigned int>(nodes_.size()))]; }

    // Few, so that many nodes have the same, and with everything that names may hold.
    KS_String name()
    {
        constexpr std::array names{"",   "a",    "A",   "a01",   "a02",  "a03", "a1",
                                   "b0", "b001", "a.a", "a.a01", "\xC4", "i",   "I"};
        return KS_String(names[below(names.size())]);
    }

    void add()
    {
        switch (below(8))
        {
        case 0:
            nodes_.push_back(std::make_unique<AskedNode>(scene_->getFreeNodeId()));
            break;
        case 1:
            nodes_.push_back(std::make_unique<LoudNode>(scene_->getFreeNodeId()));
            break;
        case 2:
            nodes_.push_back(std::make_unique<GraphNodeBase>(scene_->getFreeNodeId()));
            break;
        default:
            nodes_.push_back(std::make_unique<EditorNode>(scene_->getFreeNodeId()));
            break;
        }
        GraphNodeBase& node = *nodes_.back();
        if (below(2) == 0) node.setName(name());
        if (below(5) != 0) registerNode(node);
    }

    void registerNode(GraphNodeBase& node)
    {
        bool const hadOwner = node.getNodeOwner() != nullptr;
        if (scene_->addNodeToGraph(&node) && !hadOwner && node.getNodeOwner() != nullptr)
            children_[node.getNodeOwner()].push_back(&node);
    }

    void own(GraphNodeBase& owner, GraphNodeBase& child)
    {
        GraphNodeBase* const old = child.getNodeOwner();
        child.setNodeOwner(&owner);
        if (child.getNodeOwner() == old) return;
        takeOut(old, child);
        children_[&owner].push_back(&child);
    }

    void disown(GraphNodeBase& child)
    {
        takeOut(child.getNodeOwner(), child);
        child.setNodeOwner(nullptr);
    }

    void takeOut(GraphNodeBase* owner, GraphNodeBase& child)
    {
        if (owner == nullptr) return;
        std::vector<GraphNodeBase*>& list = children_[owner];
        list.erase(std::remove(list.begin(), list.end(), &child), list.end());
    }

    void toggleRegistration(GraphNodeBase& node)
    {
        if (scene_->getNodePtrById(node.getId()) != &node)
        {
            registerNode(node);
            return;
        }
        if (node.isCompound()) return; // would take what is in it along
        takeOut(node.getNodeOwner(), node);
        scene_->removeNodeFromGraph(&node);
    }

    void addPin(GraphNodeBase& node)
    {
        if (scene_->getNodePtrById(node.getId()) != &node) return;
        GraphNodePin* const pin = scene_->createNewPin(&node, 1, PIN_INPUT);
        pins_.emplace_back(pin);
        pin->setName(name());
    }

    void renamePin(GraphNodeBase& node)
    {
        if (!node.getNodePins().isEmpty()) node.getNodePins()[0]->setName(name());
    }

    void rarely()
    {
        GraphNodeBase& node = any();
        switch (below(5))
        {
        case 0:
            node.clearNodesArray();
            children_[&node].clear();
            break;
        case 1:
            std::reverse(node.refNodes().begin(), node.refNodes().end());
            std::reverse(children_[&node].begin(), children_[&node].end());
            break;
        case 2:
            node.setNodes(ArrayOfPtr<GraphNodeBase, KS_NO>(node.getNodes()));
            break;
        case 3:
        {
            GraphScene const copy(*scene_);
            EXPECT_EQ(copy.getNodePtrByFullName("a"), scene_->getNodePtrByFullName("a"));
            break;
        }
        default:
            scene_->setRootNode(below(3) == 0 ? nullptr : &any());
            break;
        }
    }

    // The node is in no list and no map any more, as the owner of a node sees to it.
    void destroy()
    {
        if (nodes_.size() < 25) return;
        GraphNodeBase& node = any();
        if (&node == scene_->getRootNode() || !children_[&node].empty() || !node.getNodePins().isEmpty() ||
            isOwner(node))
            return;
        if (scene_->getNodePtrById(node.getId()) == &node) scene_->removeNodeFromGraph(&node);
        for (auto& [owner, list] : children_)
            list.erase(std::remove(list.begin(), list.end(), &node), list.end());
        if (GraphNodeBase* const owner = node.getNodeOwner()) owner->removeNode(&node);
        children_.erase(&node);
        nodes_.erase(std::find_if(nodes_.begin(), nodes_.end(),
                                  [&](auto const& held) { return held.get() == &node; }));
    }

    bool isOwner(GraphNodeBase const& node) const
    {
        return std::any_of(nodes_.begin(), nodes_.end(),
                           [&](auto const& held) { return held->getNodeOwner() == &node; });
    }

    std::mt19937 random_;
    bool allPlain_;
    std::vector<std::unique_ptr<GraphNodePin>> pins_;
    std::vector<std::unique_ptr<GraphNodeBase>> nodes_;
    Children children_;
    std::unique_ptr<Scene> scene_;
};

template <class Scene>
void shuffle(unsigned int seeds, int steps)
{
    for (unsigned int seed = 1; seed <= seeds; ++seed)
    {
        SCOPED_TRACE(seed);
        Shuffle<Scene> graph(seed);
        for (int i = 0; i < steps && !::testing::Test::HasFatalFailure(); ++i)
        {
            SCOPED_TRACE(i);
            graph.step();
            graph.check();
        }
        if (::testing::Test::HasFatalFailure()) return;
    }
}

/// A scene class that nobody declared: free names are looked up one by one.
class UndeclaredScene : public GraphScene
{
};

struct OtherFullNameNode : GraphNodeBase
{
    KS_String getFullName() override { return ""; }
};

struct OtherOwnerNode : GraphNodeBase
{
    GraphNodeBase* getNodeOwner() const override { return nullptr; }
};

struct OtherRootNode : GraphNodeBase
{
    bool isRoot() const override { return true; }
};

struct OtherFullNamePin : GraphNodePin
{
    KS_String getFullName() override { return ""; }
};

struct OtherNamePin : GraphNodePin
{
    KS_String getName() override { return ""; }
};

struct OtherNodePin : GraphNodePin
{
    GraphNodeBase* getParentGraphNodePtr() const override { return nullptr; }
};

struct OtherLookUpScene : GraphScene
{
    GraphNodeBase* getNodePtrByFullName(KS_String const&) const override { return nullptr; }
};

} // namespace

TEST(PlainNames, AreDeclaredOnlyOfClassesThatOverrideNoNaming)
{
    using namespace detail;
    EXPECT_TRUE(leavesNodeNamesAlone<EditorNode>());
    EXPECT_FALSE(leavesNodeNamesAlone<OtherFullNameNode>());
    EXPECT_FALSE(leavesNodeNamesAlone<LoudNode>());
    EXPECT_FALSE(leavesNodeNamesAlone<OtherOwnerNode>());
    EXPECT_FALSE(leavesNodeNamesAlone<OtherRootNode>());
    EXPECT_TRUE(leavesPinNamesAlone<EditorPin>());
    EXPECT_FALSE(leavesPinNamesAlone<OtherFullNamePin>());
    EXPECT_FALSE(leavesPinNamesAlone<OtherNamePin>());
    EXPECT_FALSE(leavesPinNamesAlone<OtherNodePin>());
    EXPECT_TRUE(leavesLookUpAlone<EditorScene>());
    EXPECT_FALSE(leavesLookUpAlone<OtherLookUpScene>());
}

TEST(PlainNames, WhateverChangesLookUpsFindWhatAWalkOverAllNodesFinds)
{
    shuffle<EditorScene>(60, 250);
}

TEST(PlainNames, AnUndeclaredSceneFindsTheSame)
{
    shuffle<UndeclaredScene>(20, 250);
}

// ---- What a host can notice ----

TEST(PlainNames, OnlyNodesOfOtherClassesAreAskedAndOnlyUpToTheOneThatIsFound)
{
    declare();
    GraphScene scene;
    std::vector<unsigned int> log;
    AskedNode first(1);
    EditorNode wanted(2);
    AskedNode last(3);
    first.setName("first");
    wanted.setName("wanted");
    last.setName("last");
    for (GraphNodeBase* const node : std::vector<GraphNodeBase*>{&first, &wanted, &last})
        scene.addNodeToGraph(node);
    first.log = last.log = &log;

    EXPECT_EQ(scene.getNodePtrByFullName("wanted"), &wanted);
    EXPECT_THAT(log, ElementsAre(1));
    log.clear();
    EXPECT_EQ(scene.getNodePtrByFullName("nobody"), nullptr);
    EXPECT_THAT(log, ElementsAre(1, 3));
}

TEST(PlainNames, ANodeUnderAnOwnerThatHasNoNameIsFoundByItsFullName)
{
    GraphScene scene;
    GraphNodeBase owner;
    GraphNodeBase child(1);
    child.setName("child");
    owner.addNode(&child);
    scene.addNodeToGraph(&child);
    EXPECT_EQ(scene.getNodePtrByFullName(".child"), &child);
}

// The second node stands where the first one was.
TEST(PlainNames, ANodeIsNotFoundInPlaceOfOneThatEndedInTheScene)
{
    std::optional<GraphNodeBase> node(std::in_place, 1u);
    GraphScene scene;
    node->setName("name");
    scene.addNodeToGraph(&*node);
    node.emplace(2u).setName("name");
    EXPECT_EQ(scene.getNodePtrByFullName("name"), nullptr);
}

TEST(PlainNames, ANodeThatIsRenamedWhileAnotherIsAskedIsNotFoundUnderItsOldName)
{
    struct RenamingNode : GraphNodeBase
    {
        using GraphNodeBase::GraphNodeBase;
        KS_String getFullName() override
        {
            if (GraphNodeBase* const node = std::exchange(renamed, nullptr)) node->setName("gone");
            return GraphNodeBase::getFullName();
        }
        GraphNodeBase* renamed = nullptr;
    };
    GraphScene scene;
    RenamingNode asked(1);
    GraphNodeBase plain(2);
    plain.setName("plain");
    scene.addNodeToGraph(&asked);
    scene.addNodeToGraph(&plain);
    asked.renamed = &plain;
    EXPECT_EQ(scene.getNodePtrByFullName("plain"), nullptr);
    EXPECT_EQ(scene.getNodePtrByFullName("gone"), &plain);
}

TEST(PlainNames, AnAskedNodeOfALowerIdComesBeforeAPlainOneOfTheSameName)
{
    declare();
    GraphScene scene;
    AskedNode low(1);
    EditorNode middle(2);
    AskedNode high(3);
    for (GraphNodeBase* const node : std::vector<GraphNodeBase*>{&low, &middle, &high})
    {
        node->setName("same");
        scene.addNodeToGraph(node);
    }

    EXPECT_EQ(scene.getNodePtrByFullName("same"), &low);
    scene.removeNodeFromGraph(&low);
    EXPECT_EQ(scene.getNodePtrByFullName("same"), &middle);
    scene.removeNodeFromGraph(&middle);
    EXPECT_EQ(scene.getNodePtrByFullName("same"), &high);
}

TEST(PlainNames, AnOwnerThatIsAskedDecidesForThePlainNodesBelowIt)
{
    declare();
    GraphScene scene;
    LoudNode owner(1);
    EditorNode child(2);
    owner.setName("owner");
    child.setName("child");
    owner.addNode(&child);
    scene.addNodeToGraph(&child);

    EXPECT_EQ(scene.getNodePtrByFullName("owner!.child"), &child);
    EXPECT_EQ(scene.getNodePtrByFullName("owner.child"), nullptr);
}

TEST(PlainNames, ARenamedOwnerThatIsNotRegisteredRenamesWhatIsBelowIt)
{
    declare();
    GraphScene scene;
    EditorNode top;
    EditorNode middle;
    EditorNode child(1);
    top.setName("top");
    middle.setName("middle");
    child.setName("child");
    top.addNode(&middle);
    middle.addNode(&child);
    scene.addNodeToGraph(&child);
    EXPECT_EQ(scene.getNodePtrByFullName("top.middle.child"), &child);

    top.setName("other");
    EXPECT_EQ(scene.getNodePtrByFullName("top.middle.child"), nullptr);
    EXPECT_EQ(scene.getNodePtrByFullName("other.middle.child"), &child);

    middle.clearNodesArray(); // the child goes on naming it as its owner
    middle.setName("m");
    EXPECT_EQ(scene.getNodePtrByFullName("other.m.child"), &child);
}

TEST(PlainNames, ThousandsOfNodesWithoutNamesAreFoundByAscendingId)
{
    declare();
    constexpr unsigned int count = 3000;
    GraphScene scene;
    std::vector<std::unique_ptr<EditorNode>> nodes;
    for (unsigned int id = count; id > 0; --id)
    {
        nodes.push_back(std::make_unique<EditorNode>(id));
        scene.addNodeToGraph(nodes.back().get());
    }
    for (unsigned int id = 1; id <= count; ++id)
    {
        GraphNodeBase* const found = scene.getNodePtrByFullName("");
        ASSERT_NE(found, nullptr);
        ASSERT_EQ(found->getId(), id);
        scene.removeNodeFromGraph(found);
    }
    EXPECT_EQ(scene.getNodePtrByFullName(""), nullptr);
}

TEST(PlainNames, AClassDeclaredLateIsReadFromItsNextRenameOn)
{
    class LateNode final : public GraphNodeBase
    {
    public:
        using GraphNodeBase::GraphNodeBase;
    };
    GraphScene scene;
    LateNode node(1);
    node.setName("a");
    scene.addNodeToGraph(&node);
    EXPECT_EQ(scene.getNodePtrByFullName("a"), &node);
    declarePlainNames<LateNode>();
    EXPECT_EQ(scene.getNodePtrByFullName("a"), &node);
    node.setName("b");
    EXPECT_EQ(scene.getNodePtrByFullName("b"), &node);
    EXPECT_EQ(scene.getNodePtrByFullName("a"), nullptr);
}

// ---- Lifetimes ----

TEST(PlainNames, NodesOutliveTheirScene)
{
    declare();
    EditorNode node(1);
    {
        GraphScene scene;
        scene.addNodeToGraph(&node);
    }
    node.setGraphScene(nullptr);
    node.setName("free");
    EXPECT_EQ(node.getFullName(), KS_String("free"));
}

TEST(PlainNames, ANodeThatEndsWhileItIsRegisteredCanBeTakenOutById)
{
    declare();
    class MapScene : public GraphScene
    {
    public:
        using GraphScene::removeNodeFromMapById;
    };
    MapScene scene;
    EditorNode other(2);
    other.setName("other");
    {
        EditorNode node(1);
        scene.addNodeToGraph(&node);
        scene.addNodeToGraph(&other);
    }
    scene.removeNodeFromMapById(1);
    EXPECT_EQ(scene.getNumberOfNodes(), 1U);
    EXPECT_EQ(scene.getNodePtrByFullName("other"), &other);
}

TEST(PlainNames, OwnersAndOwnedMayEndInAnyOrder)
{
    declare();
    auto owner = std::make_unique<EditorNode>(1);
    auto child = std::make_unique<EditorNode>(2);
    auto grandchild = std::make_unique<EditorNode>(3);
    owner->addNode(child.get());
    child->addNode(grandchild.get());
    owner.reset();
    grandchild.reset();
    child->setName("left over");
    EXPECT_EQ(child->getName(), KS_String("left over"));
}

TEST(PlainNames, ACopyOfANodeHasItsOwnerAndIsFoundOnceItIsRegistered)
{
    declare();
    GraphScene scene;
    EditorNode owner(1);
    EditorNode node(2);
    owner.setName("owner");
    node.setName("node");
    scene.addNodeToGraph(&owner);
    scene.addNodeToGraph(&node);
    owner.addNode(&node);
    {
        EditorNode copy(node);
        copy.setGraphScene(nullptr);
        copy.setId(3);
        copy.setName("copy");
        EXPECT_EQ(scene.getNodePtrByFullName("owner.copy"), nullptr);
        scene.addNodeToGraph(&copy);
        EXPECT_EQ(scene.getNodePtrByFullName("owner.copy"), &copy);
        owner.setName("boss");
        EXPECT_EQ(scene.getNodePtrByFullName("boss.copy"), &copy);
        EXPECT_THAT(listed(owner.getNodes()), ElementsAre(&node));

        node = copy;
        EXPECT_EQ(scene.getNodePtrByFullName("boss.node"), nullptr);
        scene.removeNodeFromGraph(&copy);
        EXPECT_EQ(scene.getNodePtrByFullName("boss.copy"), &node);
    }
    EXPECT_EQ(scene.getNodePtrByFullName("boss.copy"), &node);
}

TEST(PlainNames, TwoScenesFindTheNodesThatTheyShare)
{
    declare();
    EditorNode node(1);
    GraphScene first;
    first.addNodeToGraph(&node);
    GraphScene second;
    second.addNodeToGraph(&node);
    GraphScene const copy(first);
    node.setName("a");
    EXPECT_EQ(first.getNodePtrByFullName("a"), &node);
    EXPECT_EQ(second.getNodePtrByFullName("a"), &node);
    EXPECT_EQ(copy.getNodePtrByFullName("a"), &node);
    first.removeNodeFromGraph(&node);
    EXPECT_EQ(first.getNodePtrByFullName("a"), nullptr);
    EXPECT_EQ(second.getNodePtrByFullName("a"), &node);
}

// ---- Free names ----

/// Names its scene itself.
class PinOfNoNode final : public GraphNodePin
{
public:
    GraphScene* getParentGraphScenePtr() const override { return scene; }
    GraphScene* scene = nullptr;
};

class MapScene : public GraphScene
{
public:
    using GraphScene::insertNodeInMapById;
    using GraphScene::insertPinInMapByFullName;
    using GraphScene::removeNodeFromMapById;
};

TEST(PlainNames, APinWithoutNodeIsKeyedAnewInTheSceneThatItNames)
{
    declarePlainNames<PinOfNoNode>();
    MapScene scene;
    PinOfNoNode pin;
    pin.setName("old");
    pin.scene = &scene;
    scene.insertPinInMapByFullName("old", &pin);
    pin.setName("new");
    EXPECT_EQ(scene.getPinPtrByFullName("new"), &pin);
    EXPECT_EQ(scene.getPinPtrByFullName("old"), nullptr);
}

TEST(PlainNames, AFreeNameIsNeitherTheRootsNorThatOfANodeBehindIt)
{
    declarePlainNames<PlainScene>();
    PlainScene scene;
    GraphNodeBase root;
    root.setName("a.b01");
    scene.setRootNode(&root);
    EXPECT_EQ(scene.getFreeNodeName("a", "b"), "b02");
    GraphNodeBase behind(9);
    behind.setName("a.b02");
    scene.put(behind);
    EXPECT_EQ(scene.getFreeNodeName("a", "b"), "b03");
    scene.take(behind);
    EXPECT_EQ(scene.getFreeNodeName("a", "b"), "b02");
}

TEST(PlainNames, AFreeNameIsFoundThoughTheMapHoldsANull)
{
    declarePlainNames<PlainScene>();
    PlainScene scene;
    GraphNodeBase node(9);
    node.setName("a.b01");
    scene.put(node);
    scene.putNull(5);
    EXPECT_EQ(scene.getFreeNodeName("a", "b"), "b02");
    scene.take(node);
    EXPECT_EQ(scene.getFreeNodeName("a", "b"), "b01");
}

TEST(PlainNames, AFreeNameIsTheSameInASceneThatMayAnswerItself)
{
    MapScene asked;
    GraphNodeBase node(9);
    node.setName("a.b01");
    asked.insertNodeInMapById(9, &node);
    EXPECT_EQ(asked.getFreeNodeName("a", "b"), "b02");
    asked.removeNodeFromMapById(9);
    EXPECT_EQ(asked.getFreeNodeName("a", "b"), "b01");
}

class PlainFreeNames : public ::testing::Test
{
protected:
    PlainFreeNames()
    {
        declare();
        root_.setName("root");
        scene_.setRootNode(&root_);
        for (int i = 0; i < 20; ++i) add();
    }
    ~PlainFreeNames() override
    {
        for (std::unique_ptr<EditorNode> const& node : nodes_) node->destroyNodePins();
    }

    EditorNode& add()
    {
        nodes_.push_back(std::make_unique<EditorNode>(scene_.getFreeNodeId()));
        nodes_.back()->setName(scene_.getFreeNodeName("root", "n"));
        scene_.addNodeToGraph(nodes_.back().get());
        return *nodes_.back();
    }

    std::string next() { return std::string(scene_.getFreeNodeName("root", "n")); }

    EditorNode root_;
    std::vector<std::unique_ptr<EditorNode>> nodes_;
    EditorScene scene_;
};

// The last byte of the name orders in front of the digits.
TEST_F(PlainFreeNames, StayWhenANameWithoutNumberIsGivenUp)
{
    EXPECT_EQ(next(), "n21");
    EditorNode& node = add();
    node.setName("n-");
    EXPECT_EQ(next(), "n21");
    node.setName("n ");
    node.setName("");
    EXPECT_EQ(next(), "n21");
    node.setNodeOwner(nullptr);
    node.setName("21");
    node.setName("22");
    EXPECT_EQ(next(), "n21");
}

TEST_F(PlainFreeNames, NumbersGoOn)
{
    EXPECT_EQ(next(), "n21");
    EXPECT_EQ(next(), "n21");
    add();
    EXPECT_EQ(next(), "n22");
}

TEST_F(PlainFreeNames, ANumberThatIsGivenUpIsTheNextOne)
{
    nodes_[4]->setName("other");
    EXPECT_EQ(next(), "n05");
    nodes_[2]->setNodeOwner(nullptr);
    EXPECT_EQ(next(), "n03");
    scene_.removeNodeFromGraph(nodes_[1].get());
    EXPECT_EQ(next(), "n02");
    nodes_[1]->setName("n01");
    EXPECT_EQ(next(), "n02");
}

TEST_F(PlainFreeNames, ABareNameThatIsGivenUpIsNoNumber)
{
    EditorNode& bare = add();
    bare.setName("n");
    EXPECT_EQ(next(), "n21");
    bare.setName("other");
    EXPECT_EQ(next(), "n21");
}

TEST_F(PlainFreeNames, ARenamedOwnerGivesAllOfThemUp)
{
    root_.setName("other");
    EXPECT_EQ(next(), "n01");
    EXPECT_EQ(std::string(scene_.getFreeNodeName("other", "n")), "n21");
}

TEST_F(PlainFreeNames, TheRootNodeTakesANameThoughItIsNotRegistered)
{
    EditorNode other;
    other.setName("root.n21");
    scene_.setRootNode(&other);
    EXPECT_EQ(next(), "n22");
    other.setName("elsewhere");
    EXPECT_EQ(next(), "n21");
}

TEST_F(PlainFreeNames, AnAskedNodeTakesANameToo)
{
    LoudNode loud(1000);
    scene_.addNodeToGraph(&loud);
    loud.setName("n21");
    EXPECT_EQ(next(), "n21");
    AskedNode asked(1001);
    asked.setName("n21");
    scene_.addNodeToGraph(&asked);
    EXPECT_EQ(next(), "n22");
    scene_.removeNodeFromGraph(&asked);
    scene_.removeNodeFromGraph(&loud);
    EXPECT_EQ(next(), "n21");
}

TEST_F(PlainFreeNames, PinNumbersThatAreGivenUpAreTheNextOnes)
{
    EditorNode& node = *nodes_.front();
    std::vector<GraphNodePin*> pins;
    auto const free = [&] { return std::string(scene_.getFreePinName("root.n01", "in")); };
    for (int i = 0; i < 20; ++i)
    {
        pins.push_back(scene_.createNewPin(&node, 1, PIN_INPUT));
        pins.back()->setName(free().c_str());
    }
    EXPECT_EQ(free(), "in20");
    pins[7]->setName("other");
    EXPECT_EQ(free(), "in07");
    scene_.removeNodePinFromSceneAndNode(pins[3]);
    EXPECT_EQ(free(), "in03");
    pins[0]->setName("another");
    EXPECT_EQ(free(), "in");
    node.setName("renamed");
    EXPECT_EQ(std::string(scene_.getFreePinName("root.renamed", "in")), "in");
    pins[0]->setName("in");
    EXPECT_EQ(std::string(scene_.getFreePinName("root.renamed", "in")), "in03");
    EXPECT_EQ(free(), "in");
}

} // namespace kestrel::graph::test
