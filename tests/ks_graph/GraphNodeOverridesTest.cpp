/// @file
/// A host overrides one operation of a node, and the library's other operations take part in it.

#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using testing::EndsWith;
using testing::IsEmpty;
using Lines = std::vector<std::string>;
using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

Lines namesOf(Pins const& pins)
{
    Lines names;
    for (GraphNodePin* pin : pins) names.push_back(pin->getName().c_str());
    return names;
}

std::string nameOf(GraphNodeBase* node)
{
    return node != nullptr ? node->getName().c_str() : "-";
}

/// Writes down each call of the operations by which a node's lists and owner change, and does it.
template <class Base>
class Recording : public Base
{
public:
    using Base::Base;

    void addNode(GraphNodeBase* child) override
    {
        note("addNode", nameOf(child));
        Base::addNode(child);
    }
    void removeNode(GraphNodeBase* child) override
    {
        note("removeNode", nameOf(child));
        Base::removeNode(child);
    }
    void setNodeOwner(GraphNodeBase* owner) override
    {
        note("setNodeOwner", nameOf(owner));
        Base::setNodeOwner(owner);
    }
    bool addNodePin(GraphNodePin* pin) override
    {
        note("addNodePin", pin->getName().c_str());
        return Base::addNodePin(pin);
    }
    bool removeNodePin(GraphNodePin* pin) override
    {
        note("removeNodePin", pin->getName().c_str());
        return Base::removeNodePin(pin);
    }

    Lines* calls = nullptr;

protected:
    void setNodeOwnerBase(GraphNodeBase* owner) override
    {
        note("setNodeOwnerBase", nameOf(owner));
        Base::setNodeOwnerBase(owner);
    }
    void addNodeToNodesList(GraphNodeBase* node) override
    {
        note("addNodeToNodesList", nameOf(node));
        Base::addNodeToNodesList(node);
    }
    void removeNodeFromNodesList(GraphNodeBase* node) override
    {
        note("removeNodeFromNodesList", nameOf(node));
        Base::removeNodeFromNodesList(node);
    }
    void addPinToList(GraphNodePin* pin) override
    {
        note("addPinToList", pin->getName().c_str());
        Base::addPinToList(pin);
    }
    bool removePinFromList(GraphNodePin* pin) override
    {
        note("removePinFromList", pin->getName().c_str());
        return Base::removePinFromList(pin);
    }

private:
    void note(char const* operation, std::string const& argument)
    {
        if (calls != nullptr) calls->push_back(nameOf(this) + "." + operation + "(" + argument + ")");
    }
};

using RecordingNode = Recording<GraphNodeBase>;

/// Three nodes of which the third starts as the child of the first, and the calls that follow.
struct RecordedMove
{
    RecordedMove()
    {
        from.setName("from");
        to.setName("to");
        node.setName("node");
        from.addNode(&node);
        for (RecordingNode* each : {&from, &to, &node}) each->calls = &calls;
    }

    Lines calls;
    RecordingNode from;
    RecordingNode to;
    RecordingNode node;
};

/// A node whose name is decorated.
class DecoratedNode : public TestNode
{
public:
    using TestNode::TestNode;
    KS_String getName() override { return KS_String("<") + TestNode::getName() + ">"; }
};

class AliasNode : public TestNode
{
public:
    KS_String getFullName() override { return "alias"; }
};

/// A node that claims an owner of its choice, whatever is stored.
class AdoptedNode : public TestNode
{
public:
    GraphNodeBase* getNodeOwner() const override { return guardian; }

    GraphNodeBase* guardian = nullptr;
};

class RootlikeNode : public TestNode
{
public:
    bool isRoot() const override { return rootlike; }

    bool rootlike = true;
};

/// Answers each question of kind as it is told.
class KindNode : public TestNode
{
public:
    bool isCompound() const override { return answers.count("compound") != 0; }
    bool isInterface() const override { return answers.count("interface") != 0; }
    bool isEvaluator() const override { return answers.count("evaluator") != 0; }
    bool isPassThrough() const override { return answers.count("pass through") != 0; }
    bool isGroup() const override { return answers.count("group") != 0; }
    bool isIterator() const override { return answers.count("iterator") != 0; }
    bool isEditable() const override { return answers.count("editable") != 0; }
    bool isUpdating() const override { return answers.count("updating") != 0; }
    bool isWorkflowFamily() const override { return answers.count("workflow") != 0; }
    bool isValid() const override { return answers.count("invalid") == 0; }

    std::set<std::string> answers;
};

/// Keeps its id elsewhere.
class ForeignIdNode : public TestNode
{
public:
    unsigned int const& getId() const override { return foreignId; }

    unsigned int foreignId = 0xFFFFFFFFu;
};

/// Is in the scene that it is told, whatever is stored.
class ForeignSceneNode : public TestNode
{
public:
    GraphScene* getGraphScene() const override { return foreignScene; }

    GraphScene* foreignScene = nullptr;
};

class CountingPin : public GraphNodePin
{
public:
    CountingPin(KS_String const& name, PinDirection const& direction) : GraphNodePin(nullptr, 1, direction)
    {
        setName(name);
    }

    void setParentGraphNodePtr(GraphNodeBase* node) override
    {
        parents.push_back(node);
        if (node != nullptr) wasListed = node->hasPin(this);
        GraphNodePin::setParentGraphNodePtr(node);
    }

    std::vector<GraphNodeBase*> parents;
    bool wasListed = false;
};

/// A pin that goes by another name, claims to be connected, and writes an element of its own.
class HostPin : public GraphNodePin
{
public:
    HostPin(char const* name, PinDirection const& direction)
        : GraphNodePin(nullptr, 1, direction), name_(name)
    {}

    KS_String getName() override { return name_; }
    bool isConnected() const override { return true; }
    KS_String toXml() override { return "<host/>\n"; }

private:
    KS_String name_;
};

/// A connection that decides for itself whether it is implicit and where it leads.
class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
    bool isImplicit() const override { return claimsImplicit; }
    GraphNodeBase* getTargetNode() const override { return claimedTarget; }

    bool claimsImplicit = false;
    GraphNodeBase* claimedTarget = nullptr;
};

/// A bare node with one input and one output pin.
template <class Node = GraphNodeBase>
struct Filter
{
    Filter()
    {
        in.setName("in");
        out.setName("out");
        node.addNodePin(&in);
        node.addNodePin(&out);
    }

    ~Filter() { node.refNodePins().clear(); }

    GraphNodePin in{nullptr, unlimited, PIN_INPUT};
    GraphNodePin out{nullptr, unlimited, PIN_OUTPUT};
    Node node;
};

} // namespace

TEST(NodeOverride, GetNameIsPartOfTheFullName)
{
    TestGraph<> graph;
    DecoratedNode& owner = graph.addNode<DecoratedNode>("owner");
    TestNode& child = graph.addNode("child", &owner);
    EXPECT_EQ(owner.getFullName(), "root.<owner>");
    EXPECT_EQ(child.getFullName(), "root.<owner>.child");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetNameIsWhatChildrenAreFoundBy)
{
    TestGraph<> graph;
    DecoratedNode& child = graph.addNode<DecoratedNode>("child");
    EXPECT_EQ(graph.root.getNodeByName("<child>", true), &child);
    EXPECT_EQ(graph.root.getNodeByName("<CHILD>", false), &child);
    EXPECT_EQ(graph.root.getNodeByName("child", false), nullptr);
    EXPECT_EQ(graph.root.getFreeNodeNameLikeThis("<child>", nullptr), "<child>1");
}

TEST(NodeOverride, GetNameIsTheOldNameOfARename)
{
    TestGraph<> graph;
    DecoratedNode& node = graph.addNode<DecoratedNode>("a");
    GraphNodePin& pin = graph.addInput(node);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.<a>.in"), &pin);
    node.setName("b");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.<b>.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.<a>.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetFullNameOfAnOwnerIsPartOfItsChildrensOnes)
{
    TestGraph<> graph;
    AliasNode& owner = graph.addNode<AliasNode>("owner");
    TestNode& child = graph.addNode("child", &owner);
    TestNode& grandchild = graph.addNode("grandchild", &child);
    EXPECT_EQ(grandchild.getFullName(), "alias.child.grandchild");
    GraphNodePin& pin = graph.addInput(grandchild);
    EXPECT_EQ(pin.getFullName(), "alias.child.grandchild.in");
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetFullNameIsTheOldAndTheNewNameOfAMove)
{
    TestGraph<> graph;
    AliasNode& alias = graph.addNode<AliasNode>("owner");
    TestNode& child = graph.addNode("child");
    GraphNodePin& pin = graph.addInput(child);
    child.setNodeOwner(&alias);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("alias.child.in"), &pin);
    child.setNodeOwner(&graph.root);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.child.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("alias.child.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, IsRootEndsTheFullName)
{
    TestGraph<> graph;
    RootlikeNode& node = graph.addNode<RootlikeNode>("node");
    TestNode& child = graph.addNode("child", &node);
    EXPECT_EQ(node.getFullName(), "node");
    EXPECT_EQ(child.getFullName(), "node.child");
    node.rootlike = false;
    EXPECT_EQ(child.getFullName(), "root.node.child");
}

TEST(NodeOverride, IsRootLeavesTheOwnersNameOutOfTheKeysOfARename)
{
    TestGraph<> graph;
    RootlikeNode& node = graph.addNode<RootlikeNode>("node");
    TestNode& child = graph.addNode("child", &node);
    GraphNodePin& pin = graph.addInput(node);
    GraphNodePin& childPin = graph.addInput(child);
    node.setName("other");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("other.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("other.child.in"), &childPin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("node.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, IsRootEndsTheWalkUpTheOwners)
{
    TestGraph<> graph;
    RootlikeNode& node = graph.addNode<RootlikeNode>("node");
    TestNode& child = graph.addNode("child", &node);
    EXPECT_TRUE(node.isOwnedByNode(&graph.root, false));
    EXPECT_FALSE(node.isOwnedByNode(nullptr, true));
    EXPECT_TRUE(child.isOwnedByNode(&graph.root, true));
    EXPECT_FALSE(child.isOwnedByNode(nullptr, true));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetNodeOwnerDecidesNameRootAndOwnership)
{
    AdoptedNode node;
    GraphNodeBase guardian;
    guardian.setName("guardian");
    node.setName("node");
    EXPECT_TRUE(node.isRoot());
    node.guardian = &guardian;
    EXPECT_FALSE(node.isRoot());
    EXPECT_EQ(node.getFullName(), "guardian.node");
    EXPECT_TRUE(node.isOwnedByNode(&guardian, false));
    EXPECT_FALSE(node.isOwnedByNode(nullptr, false));
    EXPECT_TRUE(node.isOwnedByNode(nullptr, true));
}

TEST(NodeOverride, GetNodeOwnerIsWhatThePinCallbacksGet)
{
    AdoptedNode node;
    GraphNodeBase guardian;
    guardian.setName("guardian");
    GraphNodePin pin;
    pin.setName("in");
    CallbackLog log;
    node.addNodePin(&pin);
    node.removeNodePin(&pin);
    node.guardian = &guardian;
    node.addNodePin(&pin);
    node.removeNodePin(&pin);
    EXPECT_EQ(log.lines,
              (Lines{"removeNodePin - in", "addNodePin guardian in", "removeNodePin guardian in"}));
}

TEST(NodeOverride, GetNodeOwnerIsAskedForPinsByName)
{
    AdoptedNode node;
    Filter<> guardian;
    EXPECT_FALSE(node.hasPinWithName("in", true));
    node.guardian = &guardian.node;
    EXPECT_TRUE(node.hasPinWithName("in", true));
    EXPECT_FALSE(node.hasPinWithName("in", false));
}

TEST(NodeOverride, GetNodeOwnerIsWhatAMoveTakesTheNodeFrom)
{
    Lines calls;
    RecordingNode guardian;
    guardian.setName("guardian");
    guardian.calls = &calls;
    RecordingNode owner;
    AdoptedNode node;
    node.setName("node");
    node.guardian = &guardian;
    owner.addNode(&node);
    EXPECT_EQ(calls, Lines{"guardian.removeNodeFromNodesList(node)"});
    calls.clear();
    node.setNodeOwner(nullptr);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front(), "guardian.removeNode(node)");
}

TEST(NodeOverride, GetNodeOwnerDecidesWhetherTheOwnerStaysTheSame)
{
    Lines calls;
    RecordingNode guardian;
    guardian.calls = &calls;
    AdoptedNode node;
    node.guardian = &guardian;
    node.setNodeOwner(&guardian);
    EXPECT_THAT(calls, IsEmpty());
    node.guardian = nullptr;
    node.setNodeOwner(nullptr);
    EXPECT_THAT(calls, IsEmpty());
}

TEST(NodeOverride, IsOwnedByNodeOfTheOwnerIsAsked)
{
    class Accomplice : public GraphNodeBase
    {
    public:
        bool isOwnedByNode(GraphNodeBase* node, bool const& recursive) const override
        {
            asked.emplace_back(node, recursive);
            return true;
        }
        mutable std::vector<std::pair<GraphNodeBase*, bool>> asked;
    };
    Accomplice owner;
    GraphNodeBase node;
    GraphNodeBase stranger;
    owner.addNode(&node);
    owner.asked.clear();
    EXPECT_FALSE(node.isOwnedByNode(&stranger, false));
    EXPECT_THAT(owner.asked, IsEmpty());
    EXPECT_TRUE(node.isOwnedByNode(&stranger, true));
    EXPECT_EQ(owner.asked, (std::vector<std::pair<GraphNodeBase*, bool>>{{&stranger, true}}));
}

TEST(NodeOverride, IsValidOfBothDecidesWhetherTheyAreTheSame)
{
    KindNode a;
    KindNode b;
    a.setId(5u);
    b.setId(5u);
    EXPECT_TRUE(a.isSameNodeAs(b));
    a.answers = {"invalid"};
    EXPECT_FALSE(a.isSameNodeAs(b));
    EXPECT_FALSE(b.isSameNodeAs(a));
    a.answers.clear();
    EXPECT_TRUE(b.isSameNodeAs(a));
}

TEST(NodeOverride, GetIdDecidesValidityAndSameness)
{
    ForeignIdNode node;
    GraphNodeBase const five(5u);
    node.setId(3u);
    EXPECT_FALSE(node.isValid());
    EXPECT_FALSE(node.isSameNodeAs(GraphNodeBase(3u)));
    node.foreignId = 5u;
    EXPECT_TRUE(node.isValid());
    EXPECT_TRUE(node.isSameNodeAs(five));
    EXPECT_TRUE(five.isSameNodeAs(node));
}

TEST(NodeOverride, GetIdIsTheOldIdOfAChange)
{
    TestGraph<> graph;
    TestNode& registered = graph.addNode("registered");
    unsigned int const id = registered.getId();
    ForeignIdNode node;
    node.setGraphScene(&graph.scene);
    node.foreignId = id;
    node.setId(id);
    EXPECT_EQ(graph.scene.getNodePtrById(id), &registered);
    node.setId(900u);
    EXPECT_FALSE(graph.scene.hasGraphNodeWithId(id));
    EXPECT_EQ(graph.scene.getNodePtrById(900u), &node);
    graph.scene.updateNodeIdChange(&registered, 900u, id);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, IsSameNodeAsIsEquality)
{
    class Friendly : public GraphNodeBase
    {
    public:
        bool isSameNodeAs(GraphNodeBase const&) const override { return true; }
    };
    Friendly const friendly;
    GraphNodeBase const& node = friendly;
    GraphNodeBase const other(1u);
    EXPECT_TRUE(node == other);
    EXPECT_FALSE(other == node);
}

TEST(NodeOverride, IsInterfaceDecidesTheSidesAndTheFreeNames)
{
    Filter<> owner;
    Filter<KindNode> inner;
    owner.node.addNode(&inner.node);
    EXPECT_FALSE(inner.node.isOutputInterface());
    EXPECT_EQ(inner.node.getFreePinNameLikeThis("in"), "in1");
    owner.out.setName("in1");
    inner.node.answers = {"interface"};
    EXPECT_TRUE(inner.node.isOutputInterface());
    EXPECT_FALSE(inner.node.isInputInterface());
    inner.in.setDirection(PIN_OUTPUT);
    EXPECT_TRUE(inner.node.isInputInterface());
    EXPECT_EQ(inner.node.getFreePinNameLikeThis("in"), "in2");
}

TEST(NodeOverride, DynamicPinsAreForInterfacesCompoundsAndEvaluatorsOnly)
{
    struct Row
    {
        char const* kind;
        bool allowed;
    };
    for (Row const& row :
         {Row{"interface", true}, Row{"compound", true}, Row{"evaluator", true}, Row{"pass through", false},
          Row{"group", false}, Row{"iterator", false}, Row{"editable", false}, Row{"updating", false},
          Row{"workflow", false}, Row{"invalid", false}})
    {
        SCOPED_TRACE(row.kind);
        KindNode node;
        node.answers = {row.kind};
        EXPECT_EQ(node.dynamicPinsAllowed(), row.allowed);
    }
}

TEST(NodeOverride, PassThroughFamilyIsPassThroughOnly)
{
    for (char const* kind :
         {"interface", "compound", "evaluator", "group", "iterator", "editable", "updating", "workflow"})
    {
        SCOPED_TRACE(kind);
        KindNode node;
        node.answers = {kind};
        EXPECT_FALSE(node.isPassThroughFamily());
        node.answers.insert("pass through");
        EXPECT_TRUE(node.isPassThroughFamily());
    }
}

TEST(NodeOverride, IsCompoundOfTheChildrenDecidesTheWalk)
{
    GraphNodeBase root;
    KindNode child;
    GraphNodeBase grandchild;
    GraphNodePin pin;
    root.addNode(&child);
    child.addNode(&grandchild);
    grandchild.addNodePin(&pin);

    Nodes walked;
    root.getNodesRecursively(walked);
    EXPECT_EQ(listed(walked), std::vector<GraphNodeBase*>{&child});
    Nodes compounds;
    EXPECT_FALSE(root.getCompoundNodes(compounds));

    child.answers = {"compound"};
    root.getNodesRecursively(walked);
    EXPECT_EQ(listed(walked), (std::vector<GraphNodeBase*>{&child, &child, &grandchild}));
    EXPECT_TRUE(root.getCompoundNodes(compounds));
    EXPECT_EQ(listed(compounds), std::vector<GraphNodeBase*>{&child});
}

TEST(NodeOverride, PinsBelowAreGatheredWhateverIsCompoundSays)
{
    GraphNodeBase root;
    KindNode child;
    GraphNodeBase grandchild;
    GraphNodePin pin;
    root.addNode(&child);
    child.addNode(&grandchild);
    grandchild.addNodePin(&pin);
    Pins pins;
    EXPECT_TRUE(root.getAllChildNodePins(pins, false));
    EXPECT_EQ(listed(pins), std::vector{&pin});
}

TEST(NodeOverride, GetNodesRecursivelyOfTheCompoundChildrenIsCalled)
{
    class Secretive : public GraphNodeBase
    {
    public:
        bool getNodesRecursively(Nodes& out) override { return !out.isEmpty(); }
    };
    GraphNodeBase root;
    Secretive child;
    GraphNodeBase grandchild;
    root.addNode(&child);
    child.addNode(&grandchild);
    Nodes out;
    root.getNodesRecursively(out);
    EXPECT_EQ(listed(out), std::vector<GraphNodeBase*>{&child});
}

TEST(NodeOverride, GetPinsGivesTheInputAndTheOutputPins)
{
    class Picky : public GraphNodeBase
    {
    public:
        bool getPins(PinDirection const& direction, Pins& out) const override
        {
            asked.push_back(direction.value());
            return GraphNodeBase::getPins(direction, out);
        }
        mutable std::vector<unsigned int> asked;
    };
    Filter<Picky> filter;
    Pins out;
    filter.node.getInputPins(out);
    filter.node.getOutputPins(out);
    EXPECT_EQ(filter.node.asked, (std::vector<unsigned int>{1u, 2u}));
    EXPECT_EQ(namesOf(out), (Lines{"in", "out"}));
}

TEST(NodeOverride, GetInputPinsAndGetOutputPinsDecideWhatIsReorderedAndGathered)
{
    class Hiding : public TestNode
    {
    public:
        bool getInputPins(Pins& out) const override
        {
            return hidesInputs ? false : TestNode::getInputPins(out);
        }
        bool getOutputPins(Pins& out) const override
        {
            return hidesOutputs ? false : TestNode::getOutputPins(out);
        }
        bool hidesInputs = false;
        bool hidesOutputs = false;
    };
    TestGraph<> graph;
    Hiding& node = graph.addNode<Hiding>("node");
    GraphNodePin& in = graph.addInput(node);
    GraphNodePin& out = graph.addOutput(node);
    GraphConnection* const loop = graph.scene.connect(&out, &in, false);

    node.hidesInputs = true;
    Connections inputSide;
    EXPECT_FALSE(node.getConnections(inputSide, false, true, true, false));
    EXPECT_TRUE(node.getConnections(inputSide, true, false, true, false));
    EXPECT_EQ(listed(inputSide), std::vector{loop});

    node.hidesInputs = false;
    node.hidesOutputs = true;
    Connections outputSide;
    EXPECT_FALSE(node.getConnections(outputSide, true, false, true, false));
    EXPECT_TRUE(node.getConnections(outputSide, false, true, true, false));

    ArrayOfPtr<GraphNodePin, KS_NO> const before = node.getNodePins();
    node.reorderInputPins({});
    EXPECT_EQ(listed(node.getNodePins()), std::vector{&in});
    node.setNodePins(before);
    node.hidesOutputs = false;
    node.hidesInputs = true;
    node.reorderOutputPins({});
    EXPECT_EQ(listed(node.getNodePins()), std::vector{&out});
    node.setNodePins(before);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, HasPinDecidesWhetherAPinIsAdded)
{
    class Denying : public GraphNodeBase
    {
    public:
        bool hasPin(GraphNodePin const*) const override { return has; }
        bool has = true;
    };
    Denying node;
    GraphNodePin pin;
    EXPECT_FALSE(node.addNodePin(&pin));
    EXPECT_TRUE(node.getNodePins().isEmpty());
    node.has = false;
    EXPECT_TRUE(node.addNodePin(&pin));
    EXPECT_TRUE(node.addNodePin(&pin));
    EXPECT_EQ(node.getNodePins().size(), 2u);
}

TEST(NodeOverride, GetPinByNameOfNodeAndOwnerAnswersForTheNames)
{
    class Renaming : public GraphNodeBase
    {
    public:
        GraphNodePin* getPinByName(KS_String const& name) const override
        {
            return name == "other" ? GraphNodeBase::getPinByName("in") : nullptr;
        }
    };
    Filter<Renaming> owner;
    GraphNodeBase child;
    owner.node.addNode(&child);
    EXPECT_TRUE(owner.node.hasPinWithName("other", false));
    EXPECT_FALSE(owner.node.hasPinWithName("in", false));
    EXPECT_TRUE(child.hasPinWithName("other", true));
    EXPECT_FALSE(child.hasPinWithName("in", true));
    EXPECT_EQ(owner.node.getFreePinNameLikeThis("other"), "other1");
}

TEST(NodeOverride, HasPinWithNameDecidesTheFreePinNames)
{
    class Reserving : public GraphNodeBase
    {
    public:
        bool hasPinWithName(KS_String const& name, bool const& alsoOwner) override
        {
            asked.push_back(std::string(name.c_str()) + (alsoOwner ? " with owner" : ""));
            return name == "in" || name == "in1";
        }
        Lines asked;
    };
    Reserving node;
    EXPECT_EQ(node.getFreePinNameLikeThis("in"), "in2");
    EXPECT_EQ(node.asked, (Lines{"in", "in1", "in2"}));
    node.asked.clear();
    node.setInterface(true);
    EXPECT_EQ(node.getFreePinNameLikeThis("in"), "in2");
    EXPECT_EQ(node.asked, (Lines{"in with owner", "in1 with owner", "in2 with owner"}));
}

TEST(NodeOverride, GetNodeByNameOfBothParentsDecidesTheFreeNodeNames)
{
    class Reserving : public GraphNodeBase
    {
    public:
        explicit Reserving(std::set<std::string> names) : names_(std::move(names)) {}

        GraphNodeBase* getNodeByName(KS_String const& name, bool const& caseSensitive) override
        {
            asked.push_back(std::string(name.c_str()) + (caseSensitive ? " exactly" : ""));
            return names_.count(name.c_str()) != 0 ? this : nullptr;
        }
        Lines asked;

    private:
        std::set<std::string> names_;
    };
    Reserving node({"add", "add2"});
    Reserving other({"add", "add1"});
    EXPECT_EQ(node.getFreeNodeNameLikeThis("add", &other), "add3");
    EXPECT_EQ(node.asked, (Lines{"add", "add1", "add2", "add3"}));
    EXPECT_EQ(other.asked, (Lines{"add1", "add3"}));
}

TEST(NodeOverride, AddPinToListAddsThePins)
{
    Lines calls;
    RecordingNode node;
    node.setName("node");
    node.calls = &calls;
    GraphNodePin pin;
    pin.setName("in");
    node.addNodePin(&pin);
    EXPECT_EQ(calls, (Lines{"node.addNodePin(in)", "node.addPinToList(in)"}));
    calls.clear();
    node.addNodePin(&pin);
    EXPECT_EQ(calls, Lines{"node.addNodePin(in)"});
}

TEST(NodeOverride, RemovePinFromListRemovesThePinsAndGivesTheResult)
{
    class Keeping : public GraphNodeBase
    {
    protected:
        bool removePinFromList(GraphNodePin*) override { return false; }
    };
    Keeping node;
    GraphNodePin pin;
    pin.setName("in");
    node.addNodePin(&pin);
    CallbackLog log;
    EXPECT_FALSE(node.removeNodePin(&pin));
    EXPECT_TRUE(node.hasPin(&pin));
    EXPECT_EQ(pin.getParentGraphNodePtr(), nullptr);
    EXPECT_EQ(log.lines, Lines{"removeNodePin - in"});
}

TEST(NodeOverride, RemoveNodePinIsCalledForEachPinThatIsDestroyed)
{
    Lines calls;
    RecordingNode node;
    node.setName("node");
    for (char const* name : {"a", "b"})
    {
        GraphNodePin* const pin = new GraphNodePin;
        pin->setName(name);
        node.addNodePin(pin);
    }
    node.calls = &calls;
    node.destroyNodePins();
    EXPECT_EQ(calls, (Lines{"node.removeNodePin(a)", "node.removePinFromList(a)", "node.removeNodePin(b)",
                            "node.removePinFromList(b)"}));
}

TEST(NodeOverride, AddNodeIsMadeOfTheListAndOwnerOperations)
{
    RecordedMove move;
    move.to.addNode(&move.node);
    EXPECT_EQ(move.calls, (Lines{"to.addNode(node)", "from.removeNodeFromNodesList(node)",
                                 "node.setNodeOwnerBase(to)", "to.addNodeToNodesList(node)"}));
}

TEST(NodeOverride, AddNodeOfANodeWithoutOwnerTakesItFromNowhere)
{
    RecordedMove move;
    move.to.addNode(&move.from);
    EXPECT_EQ(move.calls,
              (Lines{"to.addNode(from)", "from.setNodeOwnerBase(to)", "to.addNodeToNodesList(from)"}));
}

TEST(NodeOverride, RemoveNodeIsMadeOfTheListAndOwnerOperations)
{
    RecordedMove move;
    move.from.removeNode(&move.node);
    EXPECT_EQ(move.calls, (Lines{"from.removeNode(node)", "from.removeNodeFromNodesList(node)",
                                 "node.setNodeOwnerBase(-)"}));
}

TEST(NodeOverride, AddNodeOfTheNewOwnerMovesTheNode)
{
    RecordedMove move;
    move.node.setNodeOwner(&move.to);
    EXPECT_EQ(move.calls,
              (Lines{"node.setNodeOwner(to)", "to.addNode(node)", "from.removeNodeFromNodesList(node)",
                     "node.setNodeOwnerBase(to)", "to.addNodeToNodesList(node)"}));
}

TEST(NodeOverride, RemoveNodeOfTheOldOwnerLetsTheNodeGo)
{
    RecordedMove move;
    move.node.setNodeOwner(nullptr);
    EXPECT_EQ(move.calls, (Lines{"node.setNodeOwner(-)", "from.removeNode(node)",
                                 "from.removeNodeFromNodesList(node)", "node.setNodeOwnerBase(-)"}));
}

TEST(NodeOverride, SameOwnerIsNotAskedToTakeTheNode)
{
    RecordedMove move;
    move.node.setNodeOwner(&move.from);
    EXPECT_EQ(move.calls, Lines{"node.setNodeOwner(from)"});
}

TEST(NodeOverride, RefusingAddNodeKeepsTheNodeWhereItIs)
{
    class Refusing : public TestNode
    {
    public:
        void addNode(GraphNodeBase*) override {}
    };
    TestGraph<> graph;
    Refusing& refusing = graph.addNode<Refusing>("refusing");
    TestNode& node = graph.addNode("node");
    TestNode& child = graph.addNode("child", &node);
    GraphNodePin& pin = graph.addInput(child);
    node.setNodeOwner(&refusing);
    EXPECT_EQ(node.getNodeOwner(), &graph.root);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.child.in"), &pin);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, SetNodeOwnerPlacesANodeThatIsAddedToTheGraph)
{
    TestGraph<> graph;
    Lines calls;
    Recording<TestNode>& node = graph.newNode<Recording<TestNode>>("node");
    node.calls = &calls;
    graph.scene.addNodeToGraph(&node);
    graph.scene.removeNodeFromGraph(&node);
    node.calls = nullptr;
    EXPECT_THAT(calls, testing::IsSupersetOf({"node.setNodeOwner(root)", "node.setNodeOwner(-)"}));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetGraphSceneIsTheSceneThatIsTold)
{
    TestGraph<> graph;
    TestNode& owner = graph.addNode("owner");
    ForeignSceneNode& node = graph.addNode<ForeignSceneNode>("node");
    TestNode& child = graph.addNode("child", &node);
    node.foreignScene = &graph.scene;
    GraphNodePin& pin = graph.addInput(node);
    GraphNodePin& childPin = graph.addInput(child);
    node.foreignScene = nullptr;
    unsigned int const id = node.getId();
    graph.scene.setIsDirty(false);

    node.setName("renamed");
    node.setId(800u);
    owner.addNode(&node);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.child.in"), &childPin);
    EXPECT_EQ(graph.scene.getNodePtrById(id), &node);
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_EQ(node.addDynamicInputPin(), nullptr);

    graph.scene.updateNodeIdChange(&node, id, 800u);
    graph.scene.updateReparentedNodeInMapByFullName(&node, "root.node", "root.owner.renamed");
    node.foreignScene = &graph.scene;
    node.setName("again");
    node.setId(801u);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.owner.again.in"), &pin);
    EXPECT_EQ(graph.scene.getNodePtrById(801u), &node);
    EXPECT_NE(node.addDynamicInputPin(), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetGraphSceneOfTheChildrenDecidesTheirRefresh)
{
    TestGraph<> graph;
    TestNode& owner = graph.addNode("owner");
    TestNode& node = graph.newNode("node");
    graph.root.addNode(&node);
    ForeignSceneNode& child = graph.newNode<ForeignSceneNode>("child");
    node.addNode(&child);
    child.foreignScene = &graph.scene;
    GraphNodePin& pin = graph.addInput(child);
    child.foreignScene = nullptr;
    node.setNodeOwner(&owner);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.child.in"), &pin);

    graph.scene.updateRenamedPinInMapByFullName("root.node.child.in", "root.owner.node.child.in");
    child.foreignScene = &graph.scene;
    node.setNodeOwner(&graph.root);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.node.child.in"), &pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.owner.node.child.in"), nullptr);
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetGraphSceneIsWhatThePinCallbacksGet)
{
    GraphScene scene;
    GraphNodeBase owner;
    ForeignSceneNode node;
    owner.addNode(&node);
    node.foreignScene = &scene;
    GraphNodePin pin;
    CallbackLog log;
    std::vector<GraphScene*> scenes;
    log.onPin = [&](GraphScene* told, GraphNodeBase*, GraphNodePin*) { scenes.push_back(told); };
    node.addNodePin(&pin);
    node.removeNodePin(&pin);
    EXPECT_EQ(scenes, (std::vector{&scene, &scene}));
}

TEST(NodeOverride, CreateNewPinOfTheSceneMakesTheDynamicPins)
{
    struct Request
    {
        GraphNodeBase* node;
        unsigned int capacity;
        unsigned int direction;
        bool operator==(Request const&) const = default;
    };
    class Factory : public GraphScene
    {
    public:
        using GraphScene::createNewPin;
        GraphNodePin* createNewPin(GraphNodeBase* node, unsigned int const& capacity,
                                   PinDirection const& direction) override
        {
            requests.push_back({node, capacity, direction.value()});
            return result;
        }
        std::vector<Request> requests;
        GraphNodePin* result = nullptr;
    };
    Factory scene;
    GraphNodePin pin;
    GraphNodeBase node;
    node.setGraphScene(&scene);
    EXPECT_EQ(node.addDynamicInputPin(), nullptr);
    scene.result = &pin;
    EXPECT_EQ(node.addDynamicInputPin(), &pin);
    EXPECT_EQ(node.addDynamicOutputPin(), &pin);
    EXPECT_EQ(scene.requests, (std::vector<Request>{{&node, 1u, 1u}, {&node, 1u, 1u}, {&node, 1u, 2u}}));
    EXPECT_TRUE(node.getNodePins().isEmpty());
}

TEST(NodeOverride, GetMessagesFeedsEveryQuestionAboutMessages)
{
    class Quiet : public GraphNodeBase
    {
    public:
        using GraphNodeBase::getMessages;
        bool getMessages(Array<Message, _Wa>& out) const override
        {
            if (!title.isEmpty()) out.append(Message(1, title));
            return !out.isEmpty();
        }
        KS_String title;
    };
    Quiet node;
    Array<KS_String, _Wa> texts;
    EXPECT_FALSE(node.hasErrors());
    EXPECT_FALSE(node.hasWarnings());
    EXPECT_FALSE(node.hasMessages());
    EXPECT_FALSE(node.getMessagesAsStrings(texts));
    node.title = "broken";
    EXPECT_TRUE(node.hasErrors());
    EXPECT_FALSE(node.hasWarnings());
    EXPECT_TRUE(node.hasMessages());
    EXPECT_TRUE(node.getMessagesAsStrings(texts));
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_THAT(texts[0].c_str(), EndsWith(" - broken. "));
}

TEST(NodeOverride, GetDescriptionIsWhatTheHtmlShows)
{
    class Described : public GraphNodeBase
    {
    public:
        KS_String getDescription() override { return "From the host."; }
    };
    Described node;
    node.setDescription("stored");
    EXPECT_STREQ(node.asHTML().c_str(),
                 "<html><head/><body><p/><h3>Description</h3><p>From the host.</p><p/></body></html>");
}

TEST(NodeOverride, ConnectionQueriesOfTheOtherNodeAreAskedForTheWayBack)
{
    class Asked : public GraphNodeBase
    {
    public:
        bool getConnectionsWithNode(GraphNodeBase const* node, Connections& out, bool const& bothDirections,
                                    bool const& includeImplicit, bool const& unique) const override
        {
            partners.push_back(node);
            flags.push_back({bothDirections, includeImplicit, unique});
            out.append(&connection);
            return true;
        }
        bool hasConnectionsWithNode(GraphNodeBase const* node, bool const& bothDirections,
                                    bool const& includeImplicit) const override
        {
            partners.push_back(node);
            flags.push_back({bothDirections, includeImplicit});
            return true;
        }
        mutable std::vector<GraphNodeBase const*> partners;
        mutable std::vector<std::vector<bool>> flags;
        mutable GraphConnection connection;
    };
    for (bool const includeImplicit : {false, true})
    {
        SCOPED_TRACE(includeImplicit);
        Asked other;
        GraphNodeBase const node;
        Connections out;
        EXPECT_FALSE(node.getConnectionsWithNode(&other, out, false, includeImplicit, true));
        EXPECT_FALSE(node.hasConnectionsWithNode(&other, false, includeImplicit));
        EXPECT_THAT(other.partners, IsEmpty());
        EXPECT_TRUE(node.getConnectionsWithNode(&other, out, true, includeImplicit, true));
        EXPECT_TRUE(node.hasConnectionsWithNode(&other, true, includeImplicit));
        EXPECT_EQ(listed(out), std::vector{&other.connection});
        EXPECT_EQ(other.partners, (std::vector<GraphNodeBase const*>{&node, &node}));
        EXPECT_EQ(other.flags, (std::vector<std::vector<bool>>{{false, includeImplicit, false},
                                                               {false, includeImplicit}}));
    }
}

TEST(NodeOverride, HooksAreCalledByTheScene)
{
    class Hooked : public TestNode
    {
    public:
        void onAddingToScene() override { calls.push_back("adding"); }
        void onRemovingFromScene() override { calls.push_back("removing"); }
        void clearMessages() override { calls.push_back("clearing"); }
        Lines calls;
    };
    TestGraph<> graph;
    Hooked& node = graph.newNode<Hooked>("node");
    graph.scene.clearMessages();
    EXPECT_THAT(node.calls, IsEmpty());
    graph.scene.addNodeToGraph(&node);
    graph.scene.clearMessages();
    graph.scene.removeNodeFromGraph(&node);
    EXPECT_EQ(node.calls, (Lines{"adding", "clearing", "removing"}));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

TEST(NodeOverride, GetTypeDecidesTheColour)
{
    class Coloured : public GraphScene
    {
    public:
        Coloured() { nodeColorMap_[KS_String("host")] = Color4<float>(1, 0, 0, 1); }
    };
    class Typed : public GraphNodeBase
    {
    public:
        KS_String getType() override { return "Host"; }
    };
    Coloured const scene;
    Typed node;
    EXPECT_EQ(scene.getColorFromNodeType(&node), Color4<float>(1, 0, 0, 1));
}

TEST(NodeOverride, StoredIdIsWrittenToXmlWithWhatThePinsWrite)
{
    ForeignIdNode node;
    node.setId(12u);
    node.foreignId = 99u;
    HostPin pin("pin", PIN_INPUT);
    node.addNodePin(&pin);
    EXPECT_STREQ(node.toXml().c_str(), "<node id=\"12\">\n<pins>\n<host/>\n</pins>\n</node>\n");
    node.removeNodePin(&pin);
    EXPECT_STREQ(node.toXml().c_str(), "<node id=\"12\">\n<pins>\n</pins>\n</node>\n");
}

TEST(PinOverride, ParentIsSetThroughThePin)
{
    GraphNodeBase node;
    CountingPin pin("in", PIN_INPUT);
    node.addNodePin(&pin);
    node.addNodePin(&pin);
    node.removeNodePin(&pin);
    EXPECT_EQ(pin.parents, (std::vector<GraphNodeBase*>{&node, nullptr}));
    EXPECT_TRUE(pin.wasListed);
}

TEST(PinOverride, GetNameIsWhatPinsAreFoundAndReorderedBy)
{
    GraphNodeBase node;
    HostPin first("first", PIN_INPUT);
    HostPin second("second", PIN_INPUT);
    node.addNodePin(&first);
    node.addNodePin(&second);
    EXPECT_EQ(node.getPinByName("second"), &second);
    EXPECT_EQ(node.getPinByName("Untitled"), nullptr);
    EXPECT_EQ(node.getFreePinNameLikeThis("second"), "second1");
    Array<KS_String, _Wa> names;
    names.append("second");
    names.append("first");
    node.reorderInputPins(names);
    EXPECT_EQ(namesOf(node.getNodePins()), (Lines{"second", "first"}));
}

TEST(PinOverride, IsConnectedSortsTheConnectedPins)
{
    GraphNodeBase node;
    HostPin claiming("claiming", PIN_INPUT);
    CountingPin plain("plain", PIN_INPUT);
    node.addNodePin(&claiming);
    node.addNodePin(&plain);
    Pins connected;
    node.getConnectedPins(PIN_INPUT, connected);
    EXPECT_EQ(namesOf(connected), Lines{"claiming"});
    Pins notConnected;
    node.getNotConnectedPins(PIN_INPUT, notConnected);
    EXPECT_EQ(namesOf(notConnected), Lines{"plain"});
}

TEST(ConnectionOverride, IsImplicitDecidesWhatIsGathered)
{
    Filter<> filter;
    HostConnection connection(&filter.out, &filter.in);
    filter.out.addOutputConnection(&connection);
    filter.in.addInputConnection(&connection);
    connection.claimedTarget = &filter.node;
    for (bool const implicit : {false, true})
    {
        SCOPED_TRACE(implicit);
        connection.claimsImplicit = implicit;
        Connections out;
        EXPECT_EQ(filter.node.getConnections(out, true, true, false, true), !implicit);
        Connections between;
        EXPECT_EQ(filter.node.getConnectionsWithNode(&filter.node, between, false, false, true), !implicit);
        EXPECT_EQ(filter.node.hasConnectionsWithNode(&filter.node, false, false), !implicit);
        EXPECT_TRUE(filter.node.hasConnectionsWithNode(&filter.node, false, true));
    }
}

TEST(ConnectionOverride, GetTargetNodeDecidesWhereAConnectionLeads)
{
    Filter<> filter;
    Filter<> claimed;
    Filter<> wired;
    HostConnection connection(&filter.out, &wired.in);
    filter.out.addOutputConnection(&connection);
    connection.claimedTarget = &claimed.node;
    EXPECT_TRUE(filter.node.hasConnectionsWithNode(&claimed.node, false, false));
    EXPECT_FALSE(filter.node.hasConnectionsWithNode(&wired.node, false, false));
    Connections out;
    EXPECT_TRUE(filter.node.getConnectionsWithNode(&claimed.node, out, false, false, false));
    EXPECT_EQ(listed(out), std::vector<GraphConnection*>{&connection});
}

} // namespace kestrel::graph::test
