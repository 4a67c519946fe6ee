#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <new>
#include <type_traits>

namespace kestrel::graph::test
{

namespace
{

constexpr unsigned int noId = 0xFFFFFFFFu;

void expectDefaultsBesidesId(GraphNodeBase& node)
{
    EXPECT_TRUE(node.getNodePins().isEmpty());
    EXPECT_FALSE(node.isCompound());
    EXPECT_FALSE(node.isInterface());
    EXPECT_EQ(node.getGraphScene(), nullptr);
    EXPECT_EQ(node.getNodeOwner(), nullptr);
    EXPECT_TRUE(node.getNodes().isEmpty());
    EXPECT_EQ(node.getName(), "");
    EXPECT_EQ(node.getType(), "");
    EXPECT_EQ(node.getDescription(), "");
    EXPECT_EQ(node.getCategory(), "");
}

/// A node in which no field has its default value.
struct FilledNode
{
    FilledNode()
    {
        node.setId(2);
        node.setCompound(true);
        node.setInterface(true);
        node.setGraphScene(&scene);
        node.setName("name");
        node.setType("type");
        node.setDescription("description");
        node.setCategory("category");
        node.addNodePin(&first);
        node.addNodePin(&second);
        owner.addNode(&node);
        node.addNode(&child);
        scene.setIsDirty(false);
    }

    GraphScene scene;
    GraphNodePin first;
    GraphNodePin second;
    GraphNodeBase owner;
    GraphNodeBase child;
    GraphNodeBase node;
};

void expectSameFields(GraphNodeBase& copy, GraphNodeBase& original)
{
    EXPECT_EQ(listed(copy.getNodePins()), listed(original.getNodePins()));
    EXPECT_EQ(copy.getId(), original.getId());
    EXPECT_EQ(copy.isInterface(), original.isInterface());
    EXPECT_EQ(copy.getGraphScene(), original.getGraphScene());
    EXPECT_EQ(copy.getNodeOwner(), original.getNodeOwner());
    EXPECT_EQ(listed(copy.getNodes()), listed(original.getNodes()));
    EXPECT_EQ(copy.getName(), original.getName());
    EXPECT_EQ(copy.getType(), original.getType());
    EXPECT_EQ(copy.getDescription(), original.getDescription());
    EXPECT_EQ(copy.getCategory(), original.getCategory());
}

/// Without children, only the flag is left to make it a compound.
bool compoundFlag(GraphNodeBase& node)
{
    node.clearNodesArray();
    return node.isCompound();
}

/// Counts how often it is asked for its full name, which the scene does when it re-keys it.
class AskedPin : public GraphNodePin
{
public:
    AskedPin() : GraphNodePin(nullptr, unlimited, PIN_INPUT) {}

    KS_String getFullName() override
    {
        ++asked;
        return GraphNodePin::getFullName();
    }

    int asked = 0;
};

class MournedPin : public GraphNodePin
{
public:
    explicit MournedPin(int& deaths) : deaths_(deaths) {}
    ~MournedPin() override { ++deaths_; }

private:
    int& deaths_;
};

class MournedNode : public GraphNodeBase
{
public:
    explicit MournedNode(int& deaths) : deaths_(deaths) {}
    ~MournedNode() override { ++deaths_; }

private:
    int& deaths_;
};

} // namespace

TEST(NodeConstruction, DefaultNodeHasNoIdAndTheDefaults)
{
    GraphNodeBase node;
    EXPECT_EQ(node.getId(), noId);
    EXPECT_FALSE(node.isValid());
    expectDefaultsBesidesId(node);
}

TEST(NodeConstruction, IdIsTheOnlyThingThatTheIdConstructorSets)
{
    GraphNodeBase node(17u);
    EXPECT_EQ(node.getId(), 17u);
    EXPECT_TRUE(node.isValid());
    expectDefaultsBesidesId(node);
}

TEST(NodeConstruction, InvalidNodeOfTheLibraryIsADefaultNode)
{
    EXPECT_EQ(GRAPH_NODE_NOT_VALID.getId(), noId);
    EXPECT_FALSE(GRAPH_NODE_NOT_VALID.isValid());
    expectDefaultsBesidesId(GRAPH_NODE_NOT_VALID);
}

TEST(NodeConstruction, InvalidNodeOfTheLibraryIsNotEvenItself)
{
    GraphNodeBase const& other = GRAPH_NODE_NOT_VALID;
    EXPECT_FALSE(GRAPH_NODE_NOT_VALID.isSameNodeAs(other));
    EXPECT_FALSE(GRAPH_NODE_NOT_VALID == other);
}

TEST(NodeCopy, CopyHasEveryField)
{
    FilledNode filled;
    GraphNodeBase copy(filled.node);
    expectSameFields(copy, filled.node);
    EXPECT_TRUE(compoundFlag(copy));
}

TEST(NodeCopy, CopyOfANodeWithChildrenDoesNotGetTheFlagFromThem)
{
    FilledNode filled;
    filled.node.setCompound(false);
    GraphNodeBase copy(filled.node);
    EXPECT_FALSE(compoundFlag(copy));
}

TEST(NodeCopy, AssignmentReplacesEveryField)
{
    FilledNode filled;
    FilledNode other;
    other.node.setId(9);
    other.node.setInterface(false);
    other.node.setCompound(false);
    other.node.refNodePins().append(&filled.first);
    EXPECT_EQ(&(other.node = filled.node), &other.node);
    expectSameFields(other.node, filled.node);
    EXPECT_TRUE(compoundFlag(other.node));
}

TEST(NodeCopy, AssignmentOfADefaultNodeRestoresTheDefaults)
{
    FilledNode filled;
    filled.node = GraphNodeBase();
    EXPECT_EQ(filled.node.getId(), noId);
    expectDefaultsBesidesId(filled.node);
}

TEST(NodeCopy, SelfAssignmentChangesNothing)
{
    FilledNode filled;
    GraphNodeBase const before(filled.node);
    GraphNodeBase const& alias = filled.node;
    filled.node = alias;
    GraphNodeBase expected(before);
    expectSameFields(filled.node, expected);
    EXPECT_TRUE(compoundFlag(filled.node));
}

TEST(NodeCopy, CopyHasListsOfItsOwn)
{
    FilledNode filled;
    GraphNodeBase copy(filled.node);
    copy.refNodePins().clear();
    copy.refNodes().clear();
    EXPECT_EQ(listed(filled.node.getNodePins()), (std::vector{&filled.first, &filled.second}));
    EXPECT_EQ(listed(filled.node.getNodes()), std::vector{&filled.child});
}

TEST(NodeCopy, CopyTellsNobody)
{
    FilledNode filled;
    GraphNodeBase copy(filled.node);
    EXPECT_EQ(listed(filled.owner.getNodes()), std::vector{&filled.node});
    EXPECT_EQ(filled.child.getNodeOwner(), &filled.node);
    EXPECT_EQ(filled.first.getParentGraphNodePtr(), &filled.node);
    EXPECT_EQ(filled.scene.getNumberOfNodes(), 0u);
    EXPECT_FALSE(filled.scene.getIsDirty());
}

TEST(NodeCopy, AssignmentOfAnIdAndANameIsNotToldToTheScene)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    GraphNodePin& in = graph.addInput(a);
    unsigned int const id = a.getId();
    graph.scene.setIsDirty(false);

    GraphNodeBase source(4711u);
    source.setName("z");
    source.setGraphScene(&graph.scene);
    static_cast<GraphNodeBase&>(a) = source;

    EXPECT_EQ(graph.scene.getNodePtrById(id), &a);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(4711u));
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.in"), &in);
    EXPECT_FALSE(graph.scene.getIsDirty());

    // Back into a state that the graph's own clean-up understands.
    a.setId(id);
    a.refNodePins().append(&in);
}

TEST(NodeDestruction, DeletesNeitherPinsNorChildren)
{
    int deaths = 0;
    {
        MournedPin pin(deaths);
        MournedNode child(deaths);
        {
            GraphNodeBase node;
            node.addNodePin(&pin);
            node.addNode(&child);
        }
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 2);
}

TEST(NodeDestruction, TellsNeitherPinsNorChildrenNorTheOwner)
{
    GraphNodePin pin;
    GraphNodeBase owner;
    GraphNodeBase child;
    GraphNodeBase* const node = new GraphNodeBase;
    node->addNodePin(&pin);
    node->addNode(&child);
    owner.addNode(node);
    delete node;
    EXPECT_EQ(pin.getParentGraphNodePtr(), node);
    EXPECT_EQ(child.getNodeOwner(), node);
    EXPECT_EQ(owner.getNodes().size(), 1u);
}

TEST(NodeDestruction, WorksThroughTheBaseOfAllClasses)
{
    int deaths = 0;
    KS_Class* const object = new MournedNode(deaths);
    delete object;
    EXPECT_EQ(deaths, 1);
}

TEST(NodeDestruction, WorksForArrays)
{
    GraphNodeBase* const nodes = new GraphNodeBase[3];
    nodes[2].setName("a name that needs memory of its own");
    EXPECT_EQ(nodes[2].getId(), noId);
    delete[] nodes;
}

TEST(NodeFields, TextsAreKeptApart)
{
    GraphNodeBase node;
    node.setName("n");
    node.setType("t");
    node.setDescription("d");
    node.setCategory("c");
    EXPECT_EQ(node.getName(), "n");
    EXPECT_EQ(node.getType(), "t");
    EXPECT_EQ(node.getDescription(), "d");
    EXPECT_EQ(node.getCategory(), "c");
}

TEST(NodeFields, TextsAreGivenOutAsCopies)
{
    GraphNodeBase node;
    node.setName("n");
    node.setType("t");
    node.setDescription("d");
    node.getName() += "x";
    node.getType() += "x";
    node.getDescription() += "x";
    EXPECT_EQ(node.getName(), "n");
    EXPECT_EQ(node.getType(), "t");
    EXPECT_EQ(node.getDescription(), "d");
}

TEST(NodeFields, SceneIsOnlyStored)
{
    GraphScene scene;
    GraphNodeBase node(5u);
    node.setGraphScene(&scene);
    EXPECT_EQ(node.getGraphScene(), &scene);
    EXPECT_EQ(scene.getNumberOfNodes(), 0u);
    EXPECT_FALSE(scene.getIsDirty());
    node.setGraphScene(nullptr);
    EXPECT_EQ(node.getGraphScene(), nullptr);
}

TEST(NodeFields, PinListIsReplacedByACopyAndNobodyIsTold)
{
    GraphNodePin pin;
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    pins.append(&pin);
    GraphNodeBase node;
    node.setNodePins(pins);
    pins.clear();
    EXPECT_EQ(listed(node.getNodePins()), std::vector{&pin});
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    node.refNodePins().append(&pin);
    EXPECT_EQ(node.getNodePins().size(), 2u);
}

TEST(NodeFields, ChildListIsReplacedByACopyAndNobodyIsTold)
{
    GraphNodeBase child;
    ArrayOfPtr<GraphNodeBase, KS_NO> children;
    children.append(&child);
    GraphNodeBase node;
    node.setNodes(children);
    children.clear();
    EXPECT_EQ(listed(node.getNodes()), std::vector{&child});
    EXPECT_EQ(child.getNodeOwner(), nullptr);
    node.refNodes().append(&child);
    EXPECT_EQ(node.getNodes().size(), 2u);
}

TEST(NodeIdentity, EveryIdBelowTheLargestIsValid)
{
    struct Row
    {
        unsigned int id;
        bool valid;
    };
    for (Row const& row : {Row{0u, true}, Row{1u, true}, Row{0x7FFFFFFFu, true}, Row{0x80000000u, true},
                           Row{0xFFFFFFFEu, true}, Row{0xFFFFFFFFu, false}})
    {
        SCOPED_TRACE(row.id);
        EXPECT_EQ(GraphNodeBase(row.id).isValid(), row.valid);
    }
}

TEST(NodeIdentity, NodesAreTheSameWhenBothAreValidAndTheIdsAreEqual)
{
    struct Row
    {
        unsigned int a;
        unsigned int b;
        bool same;
    };
    for (Row const& row : {Row{0u, 0u, true}, Row{7u, 7u, true}, Row{7u, 8u, false}, Row{7u, noId, false},
                           Row{noId, 7u, false}, Row{noId, noId, false}})
    {
        SCOPED_TRACE(testing::Message() << row.a << " and " << row.b);
        GraphNodeBase const a(row.a);
        GraphNodeBase const b(row.b);
        EXPECT_EQ(a.isSameNodeAs(b), row.same);
        EXPECT_EQ(a == b, row.same);
    }
}

TEST(NodeIdentity, NothingButTheIdIsCompared)
{
    FilledNode filled;
    GraphNodeBase const bare(2u);
    EXPECT_TRUE(filled.node.isSameNodeAs(bare));
    filled.node.setId(3);
    EXPECT_FALSE(filled.node.isSameNodeAs(bare));
}

TEST(NodeId, ChangeIsToldToTheScene)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    unsigned int const oldId = a.getId();
    graph.scene.setIsDirty(false);
    a.setId(77u);
    EXPECT_EQ(a.getId(), 77u);
    EXPECT_EQ(graph.scene.getNodePtrById(77u), &a);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(oldId));
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeId, SameIdIsNotToldToTheScene)
{
    TestGraph<> graph;
    TestNode& registered = graph.addNode("a");
    TestNode& twin = graph.newNode("twin");
    twin.setId(registered.getId());
    twin.setGraphScene(&graph.scene);
    graph.scene.setIsDirty(false);
    twin.setId(registered.getId());
    registered.setId(registered.getId());
    // Had the scene been told, the twin would have taken the entry over.
    EXPECT_EQ(graph.scene.getNodePtrById(registered.getId()), &registered);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeId, NodeWithoutSceneOnlyStoresIt)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    unsigned int const id = a.getId();
    TestNode& stranger = graph.newNode("stranger");
    stranger.setId(id);
    stranger.setId(99u);
    EXPECT_EQ(stranger.getId(), 99u);
    EXPECT_EQ(graph.scene.getNodePtrById(id), &a);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(99u));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeId, ChangeThatTheSceneCannotBeToldLeavesTheOldOne)
{
    struct Unwilling : GraphNodeBase
    {
        using GraphNodeBase::GraphNodeBase;
        GraphScene* getGraphScene() const override { throw std::bad_alloc(); }
    };
    Unwilling node(5);
    EXPECT_THROW(node.setId(6), std::bad_alloc);
    EXPECT_EQ(node.getId(), 5u);
}

TEST(NodeName, NeedsAnObjectThatIsNotConst)
{
    EXPECT_TRUE((std::is_invocable_v<decltype(&GraphNodeBase::getName), GraphNodeBase&>));
    EXPECT_FALSE((std::is_invocable_v<decltype(&GraphNodeBase::getName), GraphNodeBase const&>));
    EXPECT_FALSE((std::is_invocable_v<decltype(&GraphNodeBase::getFullName), GraphNodeBase const&>));
    EXPECT_FALSE((std::is_invocable_v<decltype(&GraphNodePin::getName), GraphNodePin const&>));
    EXPECT_FALSE((std::is_invocable_v<decltype(&GraphNodePin::getFullName), GraphNodePin const&>));
    EXPECT_FALSE((std::is_invocable_v<decltype(&GraphConnection::getFullName), GraphConnection const&>));
}

TEST(NodeName, ChangeIsToldToTheScene)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    GraphNodePin& in = graph.addInput(a);
    graph.scene.setIsDirty(false);
    a.setName("b");
    EXPECT_EQ(a.getName(), "b");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.b.in"), &in);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.in"), nullptr);
    EXPECT_TRUE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeName, ChangeRekeysThePinsOfEverythingBelow)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    TestNode& b = graph.addNode("b", &a);
    TestNode& c = graph.addNode("c", &b);
    GraphNodePin& deep = graph.addOutput(c);
    a.setName("longer name");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.longer name.b.c.out"), &deep);
    EXPECT_SCENE_INVARIANTS(graph.scene);
    graph.root.setName("r");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("r.longer name.b.c.out"), &deep);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeName, ChangeOfANodeWithoutOwnerIsToldToItsScene)
{
    TestGraph<> graph;
    TestNode& a = graph.newNode("a");
    a.setGraphScene(&graph.scene);
    GraphNodePin& in = graph.addInput(a);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("a.in"), &in);
    a.setName("b");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("b.in"), &in);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("a.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeName, ChangeOfALettersCaseIsAChange)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    GraphNodePin& in = graph.addInput(a);
    a.setName("A");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.A.in"), &in);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeName, SameTextIsNotToldToTheScene)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    AskedPin* const pin = new AskedPin;
    a.addNodePin(pin);
    graph.scene.addNodePin(pin);
    graph.scene.setIsDirty(false);
    pin->asked = 0;
    a.setName("a");
    EXPECT_EQ(pin->asked, 0);
    EXPECT_FALSE(graph.scene.getIsDirty());
    a.setName("b");
    EXPECT_GT(pin->asked, 0);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeName, NodeWithoutSceneOnlyStoresIt)
{
    TestGraph<> graph;
    TestNode& a = graph.addNode("a");
    graph.addInput(a);
    TestNode& stranger = graph.newNode("a");
    stranger.setName("b");
    EXPECT_EQ(stranger.getName(), "b");
    EXPECT_NE(graph.scene.getPinPtrByFullName("root.a.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeKind, CompoundIsTheFlagOrAChild)
{
    for (bool const flag : {false, true})
    {
        for (bool const withChild : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "flag " << flag << ", child " << withChild);
            GraphNodeBase node;
            GraphNodeBase child;
            node.setCompound(flag);
            if (withChild) node.addNode(&child);
            EXPECT_EQ(node.isCompound(), flag || withChild);
            node.clearNodesArray();
            EXPECT_EQ(node.isCompound(), flag);
        }
    }
}

TEST(NodeKind, InterfaceIsTheFlag)
{
    GraphNodeBase node;
    node.setInterface(true);
    EXPECT_TRUE(node.isInterface());
    EXPECT_FALSE(node.isCompound());
    node.setInterface(false);
    EXPECT_FALSE(node.isInterface());
    node.setCompound(true);
    EXPECT_FALSE(node.isInterface());
}

TEST(NodeKind, SideOfAnInterfaceIsThatOfItsFirstPin)
{
    for (unsigned int first = 0; first < 4; ++first)
    {
        for (unsigned int second = 0; second < 4; ++second)
        {
            SCOPED_TRACE(testing::Message() << "first pin " << first << ", second pin " << second);
            GraphNodePin pins[] = {GraphNodePin(nullptr, 1, PinDirection(first)),
                                   GraphNodePin(nullptr, 1, PinDirection(second))};
            GraphNodeBase node;
            node.addNodePin(&pins[0]);
            node.addNodePin(&pins[1]);
            EXPECT_FALSE(node.isInputInterface());
            EXPECT_FALSE(node.isOutputInterface());
            node.setInterface(true);
            EXPECT_EQ(node.isInputInterface(), (first & 2u) != 0);
            EXPECT_EQ(node.isOutputInterface(), (first & 1u) != 0);
        }
    }
}

TEST(NodeKind, InterfaceWithoutPinsIsOnNoSide)
{
    GraphNodeBase node;
    node.setInterface(true);
    EXPECT_FALSE(node.isInputInterface());
    EXPECT_FALSE(node.isOutputInterface());
}

TEST(NodeKind, HostQuestionsAreAnsweredNo)
{
    GraphNodeBase node(3u);
    node.setCompound(true);
    node.setInterface(true);
    EXPECT_FALSE(node.isEvaluator());
    EXPECT_FALSE(node.isGroup());
    EXPECT_FALSE(node.isIterator());
    EXPECT_FALSE(node.isPassThrough());
    EXPECT_FALSE(node.isPassThroughFamily());
    EXPECT_FALSE(node.isEditable());
    EXPECT_FALSE(node.isUpdating());
    EXPECT_FALSE(node.isWorkflowFamily());
}

TEST(NodeKind, DynamicPinsAreForInterfacesAndCompounds)
{
    for (bool const interface_ : {false, true})
    {
        for (bool const compound : {false, true})
        {
            SCOPED_TRACE(testing::Message() << "interface " << interface_ << ", compound " << compound);
            GraphNodeBase node;
            node.setInterface(interface_);
            node.setCompound(compound);
            EXPECT_EQ(node.dynamicPinsAllowed(), interface_ || compound);
        }
    }
}

TEST(NodeKind, DynamicPinsAreForNodesWithChildren)
{
    GraphNodeBase node;
    GraphNodeBase child;
    node.addNode(&child);
    EXPECT_TRUE(node.dynamicPinsAllowed());
    EXPECT_FALSE(child.dynamicPinsAllowed());
}

TEST(NodeHooks, DoNothing)
{
    FilledNode filled;
    GraphNodeBase before(filled.node);
    filled.node.update();
    filled.node.update_notCleaning();
    filled.node.setNumberOfThreads(8u);
    filled.node.clearMessages();
    filled.node.onAddingToScene();
    filled.node.onRemovingFromScene();
    EXPECT_EQ(filled.node.getNumberOfThreads(), 0u);
    EXPECT_FALSE(filled.scene.getIsDirty());
    expectSameFields(filled.node, before);
}

} // namespace kestrel::graph::test
