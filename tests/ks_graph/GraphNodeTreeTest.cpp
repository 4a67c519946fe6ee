#include "support/SceneInvariants.h"
#include "support/SmallStack.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Lines = std::vector<std::string>;

/// A node whose list and owner operations are opened up.
class OpenNode : public GraphNodeBase
{
public:
    explicit OpenNode(std::string const& name = "") { setName(KS_String(name)); }

    using GraphNodeBase::addNodeToNodesList;
    using GraphNodeBase::removeNodeFromNodesList;
    using GraphNodeBase::setNodeOwnerBase;
};

Lines namesOf(Nodes const& nodes)
{
    Lines names;
    for (GraphNodeBase* node : nodes) names.push_back(node->getName().c_str());
    return names;
}

Lines childrenOf(GraphNodeBase const& node)
{
    return namesOf(node.getNodes());
}

std::string fullNameOf(GraphNodeBase& node)
{
    return node.getFullName().c_str();
}

/// top over a and b; a over c; c over d. No scene.
struct SmallTree
{
    SmallTree()
    {
        top.addNode(&a);
        top.addNode(&b);
        a.addNode(&c);
        c.addNode(&d);
    }

    OpenNode top{"top"};
    OpenNode a{"a"};
    OpenNode b{"b"};
    OpenNode c{"c"};
    OpenNode d{"d"};
};

void expectSmallTreeUntouched(SmallTree& tree)
{
    EXPECT_EQ(tree.top.getNodeOwner(), nullptr);
    EXPECT_EQ(tree.a.getNodeOwner(), &tree.top);
    EXPECT_EQ(tree.b.getNodeOwner(), &tree.top);
    EXPECT_EQ(tree.c.getNodeOwner(), &tree.a);
    EXPECT_EQ(tree.d.getNodeOwner(), &tree.c);
    EXPECT_EQ(childrenOf(tree.top), (Lines{"a", "b"}));
    EXPECT_EQ(childrenOf(tree.a), Lines{"c"});
    EXPECT_EQ(childrenOf(tree.b), Lines{});
    EXPECT_EQ(childrenOf(tree.c), Lines{"d"});
    EXPECT_EQ(childrenOf(tree.d), Lines{});
}

/// Every ordered pair (node, node that may not come under it).
std::vector<std::pair<OpenNode*, OpenNode*>> cyclesOf(SmallTree& tree)
{
    return {{&tree.top, &tree.top}, {&tree.a, &tree.top}, {&tree.b, &tree.top}, {&tree.c, &tree.top},
            {&tree.d, &tree.top},   {&tree.a, &tree.a},   {&tree.c, &tree.a},   {&tree.d, &tree.a},
            {&tree.b, &tree.b},     {&tree.c, &tree.c},   {&tree.d, &tree.c},   {&tree.d, &tree.d}};
}

/// A scene with the compounds x and y under the root, m under x, c under m, g under c, and an output pin
/// "out" on each of the last three.
struct MovableTree
{
    MovableTree() { graph.scene.setIsDirty(false); }

    GraphNodePin* pinAt(char const* fullName) { return graph.scene.getPinPtrByFullName(fullName); }

    void expectKeys(char const* mKey, char const* cKey, char const* gKey)
    {
        EXPECT_EQ(pinAt(mKey), &mOut);
        EXPECT_EQ(pinAt(cKey), &cOut);
        EXPECT_EQ(pinAt(gKey), &gOut);
    }

    void expectOldKeys() { expectKeys("root.x.m.out", "root.x.m.c.out", "root.x.m.c.g.out"); }
    void expectKeysUnderY() { expectKeys("root.y.m.out", "root.y.m.c.out", "root.y.m.c.g.out"); }

    void expectNoOldKeys()
    {
        EXPECT_EQ(pinAt("root.x.m.out"), nullptr);
        EXPECT_EQ(pinAt("root.x.m.c.out"), nullptr);
        EXPECT_EQ(pinAt("root.x.m.c.g.out"), nullptr);
    }

    TestGraph<> graph;
    TestNode& x = graph.addNode("x");
    TestNode& y = graph.addNode("y");
    TestNode& m = graph.addNode("m", &x);
    TestNode& c = graph.addNode("c", &m);
    TestNode& g = graph.addNode("g", &c);
    GraphNodePin& mOut = graph.addOutput(m);
    GraphNodePin& cOut = graph.addOutput(c);
    GraphNodePin& gOut = graph.addOutput(g);
};

/// Takes another node in beside itself when it finds itself under y.
class HiringNode : public TestNode
{
public:
    KS_String getFullName() override
    {
        KS_String const name = TestNode::getFullName();
        if (hired != nullptr && name.startsWith("root.y."))
            getNodeOwner()->addNode(std::exchange(hired, nullptr));
        return name;
    }

    GraphNodeBase* hired = nullptr;
};

/// 2,000 nodes "n", each the only child of the one before, and a pin "in" on the last.
struct DeepTree
{
    static constexpr unsigned int depth = 2000;

    DeepTree()
    {
        for (unsigned int i = 0; i < depth; ++i) nodes.emplace_back("n");
        // From the bottom up, so that no node has a long name while the tree grows.
        for (unsigned int i = depth - 1; i > 0; --i) nodes[i - 1].addNode(&nodes[i]);
        pin.setName("in");
        nodes.back().addNodePin(&pin);
    }

    GraphNodeBase& top() { return nodes.front(); }
    GraphNodeBase& bottom() { return nodes.back(); }

    std::deque<OpenNode> nodes;
    GraphNodePin pin{nullptr, 1, PIN_INPUT};
};

std::string repeated(char const* text, unsigned int count)
{
    std::string result;
    for (unsigned int i = 0; i < count; ++i) result += text;
    return result;
}

} // namespace

TEST(NodeFullName, JoinsTheNamesFromTheRootDown)
{
    SmallTree tree;
    EXPECT_EQ(fullNameOf(tree.top), "top");
    EXPECT_EQ(fullNameOf(tree.a), "top.a");
    EXPECT_EQ(fullNameOf(tree.c), "top.a.c");
    EXPECT_EQ(fullNameOf(tree.d), "top.a.c.d");
}

TEST(NodeFullName, IsTheBareNameWithoutOwner)
{
    OpenNode node("alone");
    EXPECT_EQ(fullNameOf(node), "alone");
    GraphNodeBase nameless;
    EXPECT_EQ(fullNameOf(nameless), "");
}

TEST(NodeFullName, FollowsEveryRenameAbove)
{
    SmallTree tree;
    tree.top.setName("r");
    tree.a.setName("z");
    EXPECT_EQ(fullNameOf(tree.c), "r.z.c");
}

TEST(NodeFullName, TakesNamesAsTheyAre)
{
    struct Row
    {
        char const* owner;
        char const* name;
        char const* full;
    };
    for (Row const& row : {Row{"50%s", "%d", "50%s.%d"}, Row{"%%", "%n", "%%.%n"}, Row{"a.b", "c.", "a.b.c."},
                           Row{"", "", "."}, Row{"", "a", ".a"}, Row{"a", "", "a."}})
    {
        SCOPED_TRACE(row.full);
        OpenNode owner(row.owner);
        OpenNode node(row.name);
        owner.addNode(&node);
        EXPECT_EQ(fullNameOf(node), row.full);
    }
}

TEST(NodeRoot, IsTheNodeWithoutOwner)
{
    SmallTree tree;
    EXPECT_TRUE(tree.top.isRoot());
    EXPECT_FALSE(tree.a.isRoot());
    EXPECT_FALSE(tree.d.isRoot());
    EXPECT_TRUE(GraphNodeBase().isRoot());
}

TEST(NodeOwnerQuery, OwnersAboveCountOnRequest)
{
    SmallTree tree;
    struct Row
    {
        GraphNodeBase* node;
        GraphNodeBase* owner;
        bool direct;
        bool recursive;
    };
    for (Row const& row : {
             Row{&tree.top, nullptr, true, true},
             Row{&tree.top, &tree.top, false, false},
             Row{&tree.top, &tree.a, false, false},
             Row{&tree.a, &tree.top, true, true},
             Row{&tree.a, nullptr, false, true},
             Row{&tree.a, &tree.a, false, false},
             Row{&tree.a, &tree.b, false, false},
             Row{&tree.a, &tree.c, false, false},
             Row{&tree.d, &tree.c, true, true},
             Row{&tree.d, &tree.a, false, true},
             Row{&tree.d, &tree.top, false, true},
             Row{&tree.d, &tree.b, false, false},
             Row{&tree.d, nullptr, false, true},
         })
    {
        SCOPED_TRACE(row.node->getName().c_str() + std::string(" in ") +
                     (row.owner != nullptr ? row.owner->getName().c_str() : "null"));
        EXPECT_EQ(row.node->isOwnedByNode(row.owner, false), row.direct);
        EXPECT_EQ(row.node->isOwnedByNode(row.owner, true), row.recursive);
    }
}

TEST(NodeAddNode, ChildrenStandInTheOrderInWhichTheyCame)
{
    OpenNode owner("owner");
    OpenNode b("b");
    OpenNode a("a");
    owner.addNode(&b);
    owner.addNode(&a);
    EXPECT_EQ(childrenOf(owner), (Lines{"b", "a"}));
    EXPECT_EQ(a.getNodeOwner(), &owner);
    EXPECT_EQ(b.getNodeOwner(), &owner);
}

TEST(NodeAddNode, ChildLeavesItsOwner)
{
    SmallTree tree;
    tree.b.addNode(&tree.c);
    EXPECT_EQ(childrenOf(tree.a), Lines{});
    EXPECT_EQ(childrenOf(tree.b), Lines{"c"});
    EXPECT_EQ(tree.c.getNodeOwner(), &tree.b);
    EXPECT_EQ(fullNameOf(tree.d), "top.b.c.d");
}

TEST(NodeAddNode, ChildThatIsThereMovesToTheEnd)
{
    OpenNode owner("owner");
    OpenNode nodes[] = {OpenNode("a"), OpenNode("b"), OpenNode("c")};
    for (OpenNode& node : nodes) owner.addNode(&node);
    owner.addNode(&nodes[0]);
    EXPECT_EQ(childrenOf(owner), (Lines{"b", "c", "a"}));
    owner.addNode(&nodes[0]);
    EXPECT_EQ(childrenOf(owner), (Lines{"b", "c", "a"}));
    EXPECT_EQ(nodes[0].getNodeOwner(), &owner);
}

TEST(NodeAddNode, NullHasNoEffect)
{
    SmallTree tree;
    tree.top.addNode(nullptr);
    expectSmallTreeUntouched(tree);
}

TEST(NodeAddNode, NodeNeverComesUnderItself)
{
    SmallTree tree;
    for (auto const& [under, node] : cyclesOf(tree))
    {
        SCOPED_TRACE(node->getName().c_str() + std::string(" under ") + under->getName().c_str());
        under->addNode(node);
        expectSmallTreeUntouched(tree);
    }
}

TEST(NodeAddNode, MayTakeAnAncestorsOtherChildren)
{
    SmallTree tree;
    tree.d.addNode(&tree.b);
    EXPECT_EQ(fullNameOf(tree.b), "top.a.c.d.b");
    tree.top.addNode(&tree.d);
    EXPECT_EQ(fullNameOf(tree.b), "top.d.b");
}

TEST(NodeAddNode, PinsOfTheWholeSubtreeGetNewKeys)
{
    MovableTree tree;
    tree.y.addNode(&tree.m);
    tree.expectKeysUnderY();
    tree.expectNoOldKeys();
    EXPECT_TRUE(tree.graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeAddNode, ChildWithoutSceneIsNotToldToTheOwnersScene)
{
    MovableTree tree;
    tree.m.setGraphScene(nullptr);
    tree.y.addNode(&tree.m);
    tree.expectOldKeys();
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
}

TEST(NodeAddNode, SceneOfTheChildIsToldWhateverTheOwnersScene)
{
    MovableTree tree;
    OpenNode elsewhere("elsewhere");
    elsewhere.addNode(&tree.m);
    tree.expectKeys("elsewhere.m.out", "elsewhere.m.c.out", "elsewhere.m.c.g.out");
    EXPECT_EQ(elsewhere.getGraphScene(), nullptr);
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeAddNode, RefusedCycleIsNotToldToTheScene)
{
    MovableTree tree;
    tree.g.addNode(&tree.m);
    tree.g.setNodeOwner(&tree.g);
    tree.expectOldKeys();
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeRemoveNode, ChildIsLeftWithoutOwner)
{
    OpenNode owner("owner");
    OpenNode nodes[] = {OpenNode("a"), OpenNode("b"), OpenNode("c")};
    for (OpenNode& node : nodes) owner.addNode(&node);
    owner.removeNode(&nodes[1]);
    EXPECT_EQ(childrenOf(owner), (Lines{"a", "c"}));
    EXPECT_EQ(nodes[1].getNodeOwner(), nullptr);
    EXPECT_EQ(nodes[0].getNodeOwner(), &owner);
    EXPECT_EQ(fullNameOf(nodes[1]), "b");
}

TEST(NodeRemoveNode, NullHasNoEffect)
{
    SmallTree tree;
    tree.top.removeNode(nullptr);
    expectSmallTreeUntouched(tree);
}

TEST(NodeRemoveNode, SceneIsNotTold)
{
    MovableTree tree;
    tree.x.removeNode(&tree.m);
    tree.expectOldKeys();
    EXPECT_EQ(tree.m.getGraphScene(), &tree.graph.scene);
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
}

TEST(NodeSetOwner, MovesTheNodeToTheEndOfTheNewOwnersChildren)
{
    SmallTree tree;
    tree.d.setNodeOwner(&tree.top);
    EXPECT_EQ(childrenOf(tree.top), (Lines{"a", "b", "d"}));
    EXPECT_EQ(childrenOf(tree.c), Lines{});
    EXPECT_EQ(tree.d.getNodeOwner(), &tree.top);
}

TEST(NodeSetOwner, SameOwnerChangesNotEvenTheOrder)
{
    MovableTree tree;
    tree.x.setNodeOwner(&tree.graph.root);
    EXPECT_EQ(listed(tree.graph.root.getNodes()), (std::vector<GraphNodeBase*>{&tree.x, &tree.y}));
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeSetOwner, NullTakesTheNodeOut)
{
    SmallTree tree;
    tree.a.setNodeOwner(nullptr);
    EXPECT_EQ(childrenOf(tree.top), Lines{"b"});
    EXPECT_EQ(tree.a.getNodeOwner(), nullptr);
    EXPECT_EQ(childrenOf(tree.a), Lines{"c"});
}

TEST(NodeSetOwner, NullForANodeWithoutOwnerHasNoEffect)
{
    SmallTree tree;
    tree.top.setNodeOwner(nullptr);
    expectSmallTreeUntouched(tree);
}

TEST(NodeSetOwner, NodeNeverComesUnderItself)
{
    SmallTree tree;
    for (auto const& [under, node] : cyclesOf(tree))
    {
        SCOPED_TRACE(node->getName().c_str() + std::string(" under ") + under->getName().c_str());
        node->setNodeOwner(under);
        expectSmallTreeUntouched(tree);
    }
}

TEST(NodeSetOwner, PinsOfTheWholeSubtreeGetNewKeys)
{
    MovableTree tree;
    tree.m.setNodeOwner(&tree.y);
    tree.expectKeysUnderY();
    tree.expectNoOldKeys();
    EXPECT_TRUE(tree.graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeSetOwner, NullLeavesTheKeysAsTheyAre)
{
    MovableTree tree;
    tree.m.setNodeOwner(nullptr);
    EXPECT_EQ(fullNameOf(tree.c), "m.c");
    tree.expectOldKeys();
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
}

TEST(NodeSetOwner, ChildrenOfANodeWithoutSceneAreRefreshedAllTheSame)
{
    MovableTree tree;
    tree.m.setGraphScene(nullptr);
    tree.m.setNodeOwner(&tree.y);
    tree.expectKeys("root.x.m.out", "root.y.m.c.out", "root.y.m.c.g.out");
    EXPECT_EQ(tree.pinAt("root.x.m.c.out"), nullptr);
    EXPECT_TRUE(tree.graph.scene.getIsDirty());
}

TEST(NodeSetOwner, GrandchildrenAreNotRefreshedOnTheirOwn)
{
    MovableTree tree;
    tree.m.setGraphScene(nullptr);
    tree.c.setGraphScene(nullptr);
    tree.m.setNodeOwner(&tree.y);
    EXPECT_EQ(fullNameOf(tree.g), "root.y.m.c.g");
    tree.expectOldKeys();
    EXPECT_FALSE(tree.graph.scene.getIsDirty());
}

TEST(NodeSetOwner, EachChildIsToldToItsOwnScene)
{
    MovableTree tree;
    GraphScene other;
    for (TestNode* node : {&tree.c, &tree.g}) node->setGraphScene(&other);
    other.addNodePin(&tree.cOut);
    other.addNodePin(&tree.gOut);
    other.setIsDirty(false);
    tree.m.setNodeOwner(&tree.y);
    tree.expectKeysUnderY();
    EXPECT_EQ(other.getPinPtrByFullName("root.y.m.c.out"), &tree.cOut);
    EXPECT_EQ(other.getPinPtrByFullName("root.y.m.c.g.out"), &tree.gOut);
    EXPECT_EQ(other.getPinPtrByFullName("root.x.m.c.out"), nullptr);
    EXPECT_TRUE(other.getIsDirty());
    EXPECT_SCENE_INVARIANTS(tree.graph.scene);
}

TEST(NodeSetOwner, ChildThatComesMeanwhileHasItsNewKeysAlready)
{
    MovableTree tree;
    HiringNode& hiring = tree.graph.addNode<HiringNode>("hiring", &tree.m);
    TestNode& hired = tree.graph.addNode("hired");
    GraphNodePin& pin = tree.graph.addOutput(hired);
    tree.m.setGraphScene(nullptr);
    hiring.hired = &hired;
    tree.m.setNodeOwner(&tree.y);
    EXPECT_EQ(childrenOf(tree.m), (Lines{"c", "hiring", "hired"}));
    EXPECT_EQ(tree.pinAt("root.y.m.hired.out"), &pin);
    EXPECT_EQ(tree.pinAt("root.y.m.c.out"), &tree.cOut);
}

TEST(NodeSetOwner, EveryChildIsRefreshedNotOnlyTheFirst)
{
    MovableTree tree;
    TestNode& last = tree.graph.addNode("last", &tree.m);
    GraphNodePin& pin = tree.graph.addOutput(last);
    tree.m.setGraphScene(nullptr);
    tree.m.setNodeOwner(&tree.y);
    EXPECT_EQ(tree.pinAt("root.y.m.last.out"), &pin);
    EXPECT_EQ(tree.pinAt("root.y.m.c.out"), &tree.cOut);
}

TEST(NodeSetOwner, SceneOfTheOwnerIsNotTakenOver)
{
    TestGraph<> graph;
    TestNode& node = graph.newNode("node");
    node.setNodeOwner(&graph.root);
    EXPECT_EQ(node.getGraphScene(), nullptr);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(node.getId()));
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeTree, RootOfASceneStaysWithoutOwner)
{
    TestGraph<> graph;
    EXPECT_EQ(graph.root.getNodeOwner(), nullptr);
    EXPECT_TRUE(graph.root.getNodes().isEmpty());
    EXPECT_EQ(graph.scene.getNodePtrById(graph.root.getId()), &graph.root);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeTree, NeverBecomesARingThoughAnEmptiedListNoLongerHoldsTheChild)
{
    OpenNode parent("parent");
    OpenNode child("child");
    parent.addNode(&child);
    parent.clearNodesArray();
    child.addNode(&parent);
    parent.setNodeOwner(&child);
    EXPECT_EQ(parent.getNodeOwner(), nullptr);
    EXPECT_EQ(child.getNodeOwner(), &parent);
    EXPECT_EQ(childrenOf(parent), Lines{});
    EXPECT_EQ(childrenOf(child), Lines{});
}

TEST(NodeLists, OwnerFieldIsStoredAlone)
{
    OpenNode owner("owner");
    OpenNode node("node");
    node.setNodeOwnerBase(&owner);
    EXPECT_EQ(node.getNodeOwner(), &owner);
    EXPECT_TRUE(owner.getNodes().isEmpty());
    node.setNodeOwnerBase(nullptr);
    EXPECT_EQ(node.getNodeOwner(), nullptr);
}

TEST(NodeLists, NodesAreAppendedWithoutCheckingForRepeats)
{
    OpenNode node("node");
    OpenNode a("a");
    OpenNode b("b");
    for (OpenNode* child : {&a, &b, &a}) node.addNodeToNodesList(child);
    EXPECT_EQ(childrenOf(node), (Lines{"a", "b", "a"}));
    EXPECT_EQ(a.getNodeOwner(), nullptr);
}

TEST(NodeLists, EveryEqualNodeIsRemovedAndTheOrderKept)
{
    OpenNode node("node");
    OpenNode nodes[] = {OpenNode("a"), OpenNode("b"), OpenNode("c"), OpenNode("d")};
    for (unsigned int const i : {0u, 1u, 2u, 0u, 3u}) node.addNodeToNodesList(&nodes[i]);
    node.removeNodeFromNodesList(&nodes[0]);
    EXPECT_EQ(childrenOf(node), (Lines{"b", "c", "d"}));
    node.removeNodeFromNodesList(&nodes[0]);
    EXPECT_EQ(childrenOf(node), (Lines{"b", "c", "d"}));
}

TEST(NodeLists, ClearedChildrenStillNameTheNodeAsOwner)
{
    SmallTree tree;
    unsigned int const capacity = tree.top.getNodes().capacity();
    tree.top.clearNodesArray();
    EXPECT_EQ(tree.top.getNodes().size(), 0u);
    EXPECT_EQ(tree.top.getNodes().capacity(), capacity);
    EXPECT_EQ(tree.a.getNodeOwner(), &tree.top);
    EXPECT_EQ(fullNameOf(tree.a), "top.a");
    EXPECT_EQ(childrenOf(tree.a), Lines{"c"});
}

TEST(NodeByName, FindsDirectChildrenOnly)
{
    SmallTree tree;
    EXPECT_EQ(tree.top.getNodeByName("b", true), &tree.b);
    for (bool const caseSensitive : {false, true})
    {
        EXPECT_EQ(tree.top.getNodeByName("a", caseSensitive), &tree.a);
        EXPECT_EQ(tree.top.getNodeByName("c", caseSensitive), nullptr);
        EXPECT_EQ(tree.top.getNodeByName("top", caseSensitive), nullptr);
        EXPECT_EQ(tree.top.getNodeByName("top.a", caseSensitive), nullptr);
        EXPECT_EQ(tree.top.getNodeByName("a.c", caseSensitive), nullptr);
        EXPECT_EQ(tree.d.getNodeByName("d", caseSensitive), nullptr);
    }
}

TEST(NodeByName, ComparesLettersWithOrWithoutTheirCase)
{
    struct Row
    {
        char const* child;
        char const* wanted;
        bool sensitive;
        bool insensitive;
    };
    for (Row const& row :
         {Row{"abc", "ABC", false, true}, Row{"ABC", "abc", false, true}, Row{"aBc", "AbC", false, true},
          Row{"abc", "abc", true, true}, Row{"abc", "abcd", false, false}, Row{"abcd", "abc", false, false},
          Row{"a[", "a{", false, false}, Row{"a@", "a`", false, false}, Row{"", "", true, true},
          Row{"a", "", false, false}, Row{"", "a", false, false}, Row{"\xC3\x89", "\xC3\x89", true, true},
          Row{"Z9", "z9", false, true}})
    {
        SCOPED_TRACE(std::string(row.child) + " for " + row.wanted);
        OpenNode owner;
        OpenNode child(row.child);
        owner.addNode(&child);
        EXPECT_EQ(owner.getNodeByName(row.wanted, true), row.sensitive ? &child : nullptr);
        EXPECT_EQ(owner.getNodeByName(row.wanted, false), row.insensitive ? &child : nullptr);
    }
}

TEST(NodeByName, FirstMatchWins)
{
    OpenNode owner;
    OpenNode nodes[] = {OpenNode("other"), OpenNode("ABC"), OpenNode("abc"), OpenNode("abc")};
    for (OpenNode& node : nodes) owner.addNode(&node);
    EXPECT_EQ(owner.getNodeByName("abc", false), &nodes[1]);
    EXPECT_EQ(owner.getNodeByName("abc", true), &nodes[2]);
}

TEST(NodeWalk, LevelComesBeforeWhatIsBelowItsFirstCompound)
{
    OpenNode root("root");
    OpenNode a("a"), b("b"), c("c"), a1("a1"), a2("a2"), a11("a11"), c1("c1");
    for (OpenNode* node : {&a, &b, &c}) root.addNode(node);
    for (OpenNode* node : {&a1, &a2}) a.addNode(node);
    a1.addNode(&a11);
    c.addNode(&c1);
    Nodes out;
    EXPECT_TRUE(root.getNodesRecursively(out));
    EXPECT_EQ(namesOf(out), (Lines{"a", "b", "c", "a1", "a2", "a11", "c1"}));
}

TEST(NodeWalk, AppendsAndTellsWhetherTheListHoldsAnything)
{
    SmallTree tree;
    Nodes out;
    EXPECT_FALSE(tree.b.getNodesRecursively(out));
    EXPECT_FALSE(tree.b.getCompoundNodes(out));
    out.append(&tree.top);
    EXPECT_TRUE(tree.b.getNodesRecursively(out));
    EXPECT_TRUE(tree.b.getCompoundNodes(out));
    EXPECT_TRUE(tree.c.getNodesRecursively(out));
    EXPECT_TRUE(tree.a.getCompoundNodes(out));
    EXPECT_EQ(namesOf(out), (Lines{"top", "d", "c"}));
}

TEST(NodeWalk, NodesAndPinsMayBeGatheredIntoTheNodesOwnLists)
{
    SmallTree tree;
    tree.top.getNodesRecursively(tree.top.refNodes());
    EXPECT_EQ(childrenOf(tree.top), (Lines{"a", "b", "a", "b", "c", "d"}));
    tree.c.setCompound(true);
    tree.a.getCompoundNodes(tree.a.refNodes());
    tree.a.setNodes(tree.a.getNodes());
    EXPECT_EQ(childrenOf(tree.a), (Lines{"c", "c"}));

    GraphNodePin own;
    GraphNodePin below;
    tree.c.addNodePin(&own);
    tree.d.addNodePin(&below);
    tree.c.getAllChildNodePins(tree.c.refNodePins(), true);
    EXPECT_EQ(listed(tree.c.getNodePins()), (std::vector{&own, &own, &below}));
}

TEST(NodeWalk, DirectChildrenThatAreCompoundsAreGathered)
{
    SmallTree tree;
    Nodes out;
    tree.top.getCompoundNodes(out);
    EXPECT_EQ(namesOf(out), Lines{"a"});
    tree.b.setCompound(true);
    tree.top.getCompoundNodes(out);
    EXPECT_EQ(namesOf(out), (Lines{"a", "a", "b"}));
}

TEST(NodeWalk, PinsOfASubtreeComeNodeBeforeChildren)
{
    SmallTree tree;
    std::deque<GraphNodePin> pins(7);
    OpenNode* const nodes[] = {&tree.top, &tree.top, &tree.a, &tree.c, &tree.c, &tree.d, &tree.b};
    for (unsigned int i = 0; i < pins.size(); ++i) nodes[i]->addNodePin(&pins[i]);
    std::vector<GraphNodePin*> expected;
    for (GraphNodePin& pin : pins) expected.push_back(&pin);

    ArrayOfPtr<GraphNodePin, KS_NO> all;
    EXPECT_TRUE(tree.top.getAllChildNodePins(all, true));
    EXPECT_EQ(listed(all), expected);
    ArrayOfPtr<GraphNodePin, KS_NO> below;
    EXPECT_TRUE(tree.top.getAllChildNodePins(below, false));
    EXPECT_EQ(listed(below), std::vector(expected.begin() + 2, expected.end()));
}

TEST(NodeWalk, PinsAreAppendedAndTheResultIsWhetherThereAreAny)
{
    SmallTree tree;
    GraphNodePin own;
    tree.d.addNodePin(&own);
    ArrayOfPtr<GraphNodePin, KS_NO> out;
    EXPECT_FALSE(tree.d.getAllChildNodePins(out, false));
    EXPECT_FALSE(tree.b.getAllChildNodePins(out, true));
    EXPECT_TRUE(tree.d.getAllChildNodePins(out, true));
    EXPECT_TRUE(tree.b.getAllChildNodePins(out, true));
    EXPECT_TRUE(tree.c.getAllChildNodePins(out, false));
    EXPECT_EQ(listed(out), (std::vector{&own, &own}));
}

TEST(NodeDepth, FullNameOfTwoThousandLevels)
{
    DeepTree tree;
    onSmallStack(
        [&]
        {
            std::string const expected = repeated("n.", DeepTree::depth - 1) + "n";
            EXPECT_EQ(fullNameOf(tree.bottom()), expected);
            EXPECT_STREQ(tree.pin.getFullName().c_str(), (expected + ".in").c_str());
        });
}

TEST(NodeDepth, OwnersOfTwoThousandLevels)
{
    DeepTree tree;
    onSmallStack(
        [&]
        {
            EXPECT_TRUE(tree.bottom().isOwnedByNode(&tree.top(), true));
            EXPECT_FALSE(tree.bottom().isOwnedByNode(&tree.bottom(), true));
        });
}

TEST(NodeDepth, WalksOfTwoThousandLevels)
{
    DeepTree tree;
    onSmallStack(
        [&]
        {
            Nodes nodes;
            EXPECT_TRUE(tree.top().getNodesRecursively(nodes));
            EXPECT_EQ(nodes.size(), DeepTree::depth - 1);
            EXPECT_EQ(nodes[nodes.size() - 1], &tree.bottom());
            ArrayOfPtr<GraphNodePin, KS_NO> pins;
            EXPECT_TRUE(tree.top().getAllChildNodePins(pins, false));
            EXPECT_EQ(listed(pins), std::vector{&tree.pin});
        });
}

TEST(NodeDepth, CycleOfTwoThousandLevelsIsRefused)
{
    DeepTree tree;
    onSmallStack(
        [&]
        {
            tree.bottom().addNode(&tree.top());
            EXPECT_EQ(tree.top().getNodeOwner(), nullptr);
            tree.top().setNodeOwner(&tree.bottom());
            EXPECT_EQ(tree.top().getNodeOwner(), nullptr);
            EXPECT_TRUE(tree.bottom().getNodes().isEmpty());
        });
}

TEST(NodeDepth, MoveAndRenameOfTwoThousandLevels)
{
    DeepTree tree;
    GraphScene scene;
    OpenNode owner("owner");
    onSmallStack(
        [&]
        {
            for (OpenNode& node : tree.nodes) node.setGraphScene(&scene);
            scene.addNodePin(&tree.pin);
            std::string const below = repeated("n.", DeepTree::depth - 1) + "in";
            tree.top().setNodeOwner(&owner);
            EXPECT_EQ(scene.getPinPtrByFullName(KS_String("owner.n." + below)), &tree.pin);
            tree.top().setName("top");
            EXPECT_EQ(scene.getPinPtrByFullName(KS_String("owner.top." + below)), &tree.pin);
            tree.bottom().setNodeOwner(&owner);
            EXPECT_EQ(scene.getPinPtrByFullName("owner.n.in"), &tree.pin);
        });
}

TEST(NodeFullName, EndsAnOwnersNameAtItsFirstNul)
{
    GraphNodeBase owner;
    GraphNodeBase child;
    owner.setName(KS_String(std::string_view("own\0er", 6)));
    child.setName("child");
    owner.addNode(&child);
    EXPECT_STREQ(child.getFullName().c_str(), "own.child");
}

// The list of children grows while it is walked.
TEST(NodeTree, AChildMayGetASiblingWhileItTellsItsFullNameInAMove)
{
    struct Breeder : GraphNodeBase
    {
        KS_String getFullName() override
        {
            if (siblings != nullptr)
            {
                std::vector<GraphNodeBase>& added = *std::exchange(siblings, nullptr);
                for (GraphNodeBase& sibling : added) getNodeOwner()->addNode(&sibling);
            }
            return GraphNodeBase::getFullName();
        }
        std::vector<GraphNodeBase>* siblings = nullptr;
    };
    std::vector<GraphNodeBase> siblings(40);
    GraphNodeBase root;
    GraphNodeBase owner;
    Breeder child;
    GraphNodeBase last;
    owner.addNode(&child);
    owner.addNode(&last);
    child.siblings = &siblings;
    owner.setNodeOwner(&root);
    EXPECT_EQ(owner.getNodeOwner(), &root);
    EXPECT_EQ(owner.getNodes().size(), 42u);
    owner.setNodes({});
}

} // namespace kestrel::graph::test
