#include "support/CallbackLog.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OpenScene : public GraphScene
{
public:
    using GraphScene::insertNodeInMapById;
    using GraphScene::insertPinInMapByFullName;
    using GraphScene::insertPinInMapById;
    using GraphScene::removeNodeFromMapById;
    using GraphScene::removePinFromMapByFullName;
    using GraphScene::removePinFromMapById;
};

std::vector<std::string> deletedPins;

/// Writes down its end.
class TrackedPin : public GraphNodePin
{
public:
    TrackedPin(std::string const& name, PinDirection const& direction)
        : GraphNodePin(nullptr, unlimited, direction), label_(name)
    {
        setName(name.c_str());
    }

    TrackedPin(TrackedPin const&) = delete;
    TrackedPin& operator=(TrackedPin const&) = delete;

    ~TrackedPin() override { deletedPins.push_back(label_); }

private:
    std::string label_;
};

class ScenePinRegistry : public ::testing::Test
{
protected:
    ScenePinRegistry() : a(graph.addNode("a"))
    {
        deletedPins.clear();
        scene.setIsDirty(false);
    }

    ~ScenePinRegistry() override
    {
        for (GraphNodePin* pin : strays_) delete pin;
    }

    /// A pin with an id of its own that is in no scene and, unless given, on no node.
    GraphNodePin& newPin(std::string const& name, GraphNodeBase* node = nullptr)
    {
        TrackedPin* const pin = new TrackedPin(name, PIN_INPUT);
        pin->setId(nextId_++);
        if (node != nullptr)
            node->addNodePin(pin);
        else
            strays_.insert(pin);
        return *pin;
    }

    /// Says that the pin has got a node, which deletes it.
    void adopted(GraphNodePin& pin) { strays_.erase(&pin); }

    GraphNodePin* byId(GraphNodePin const& pin) const { return scene.getPinPtrById(pin.getId()); }
    GraphNodePin* byName(KS_String const& name) const { return scene.getPinPtrByFullName(name); }

    TestGraph<OpenScene> graph;
    OpenScene& scene = graph.scene;
    TestNode& a;

private:
    std::set<GraphNodePin*> strays_;
    unsigned int nextId_ = 1000000;
};

// --- making pins

TEST_F(ScenePinRegistry, NewPinWithoutNodeIsRegisteredByItsIdAlone)
{
    GraphNodePin* const pin = scene.createNewPin(3u, PIN_OUTPUT);
    EXPECT_EQ(pin, byId(*pin));
    EXPECT_EQ(nullptr, byName("Untitled"));
    EXPECT_EQ(nullptr, pin->getParentGraphNodePtr());
    EXPECT_EQ(3u, pin->getMaxNumConnections());
    EXPECT_EQ(PIN_OUTPUT, pin->getDirection());
    EXPECT_STREQ("Untitled", pin->getName().c_str());
    EXPECT_EQ(Color4<float>(0.0f, 0.6f, 0.0f, 1.0f), pin->getColor());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
    scene.removeNodePin(pin);
    delete pin;
}

TEST_F(ScenePinRegistry, NewPinOfANodeIsOnTheNodeAndFoundByIdAndFullName)
{
    GraphNodePin* const pin = scene.createNewPin(&a, 0xFFFFFFFFu, PIN_INPUT | PIN_OUTPUT);
    EXPECT_EQ(pin, byId(*pin));
    EXPECT_EQ(pin, byName("root.a.Untitled"));
    EXPECT_EQ(nullptr, byName("Untitled"));
    EXPECT_EQ(&a, pin->getParentGraphNodePtr());
    EXPECT_THAT(listed(a.getNodePins()), ElementsAre(pin));
    EXPECT_EQ(0xFFFFFFFFu, pin->getMaxNumConnections());
    EXPECT_TRUE(pin->isBidirectionalPin());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, SecondUnnamedPinOfANodeLeavesTheNameWithTheFirst)
{
    GraphNodePin* const first = scene.createNewPin(&a, 1u, PIN_INPUT);
    scene.setIsDirty(false);
    GraphNodePin* const second = scene.createNewPin(&a, 1u, PIN_INPUT);
    EXPECT_EQ(first, byName("root.a.Untitled"));
    EXPECT_EQ(second, byId(*second));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, NewPinOfANodeFiresTheAddCallbackWithTheNodesOwner)
{
    CallbackLog log;
    log.onPin = [&](GraphScene* caller, GraphNodeBase*, GraphNodePin* pin)
    {
        EXPECT_EQ(&scene, caller);
        EXPECT_EQ(pin, byId(*pin));
        EXPECT_EQ(&a, pin->getParentGraphNodePtr());
        EXPECT_EQ(nullptr, byName(pin->getFullName()));
    };
    scene.createNewPin(&a, 1u, PIN_INPUT);
    EXPECT_THAT(log.lines, ElementsAre("addNodePin root Untitled"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, NewPinSetsTheDirtyFlagAfterTheCallback)
{
    CallbackLog log;
    log.onPin = [](GraphScene* caller, GraphNodeBase*, GraphNodePin*) { caller->setIsDirty(false); };
    scene.createNewPin(&a, 1u, PIN_INPUT);
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(ScenePinRegistry, NewPinWithoutANodeToGoOnIsNull)
{
    EXPECT_EQ(nullptr, scene.createNewPin(nullptr, 1u, PIN_INPUT));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, PinIdsCountOnAcrossScenesAndAreNotResetByClear)
{
    GraphScene other;
    GraphNodePin* const first = scene.createNewPin(&a, 1u, PIN_INPUT);
    GraphNodePin* const second = other.createNewPin(1u, PIN_INPUT);
    other.clear();
    GraphNodePin* const third = other.createNewPin(1u, PIN_INPUT);
    GraphNodePin* const fourth = scene.createNewPin(&a, 1u, PIN_INPUT);
    EXPECT_EQ(first->getId() + 1, second->getId());
    EXPECT_EQ(first->getId() + 2, third->getId());
    EXPECT_EQ(first->getId() + 3, fourth->getId());
    delete second;
    delete third;
}

TEST_F(ScenePinRegistry, PinIdsStayDistinctWhenScenesAreFilledOnManyThreads)
{
    constexpr unsigned int threads = 4;
    constexpr unsigned int pinsPerThread = 500;
    std::set<unsigned int> ids;
    std::mutex mutex;
    std::vector<std::thread> running;
    for (unsigned int i = 0; i < threads; ++i)
    {
        running.emplace_back(
            [&]
            {
                TestGraph<> own;
                std::vector<unsigned int> mine;
                for (unsigned int k = 0; k < pinsPerThread; ++k)
                    mine.push_back(own.scene.createNewPin(&own.root, 1u, PIN_INPUT)->getId());
                std::lock_guard const lock(mutex);
                ids.insert(mine.begin(), mine.end());
            });
    }
    for (std::thread& thread : running) thread.join();
    EXPECT_EQ(threads * pinsPerThread, ids.size());
}

/// A host scene that takes no pins.
class RefusingScene : public GraphScene
{
public:
    using GraphScene::addNodePin;

    bool addNodePin(GraphNodePin* pin) override
    {
        refused.push_back(pin);
        return false;
    }

    std::vector<GraphNodePin*> refused;
};

TEST(ScenePinRegistryOfAHost, RefusedNewPinIsNullAndNotDeleted)
{
    TestGraph<RefusingScene> graph;
    EXPECT_EQ(nullptr, graph.scene.createNewPin(2u, PIN_OUTPUT));
    EXPECT_EQ(nullptr, graph.scene.createNewPin(&graph.root, 2u, PIN_OUTPUT));
    ASSERT_EQ(2u, graph.scene.refused.size());
    EXPECT_TRUE(graph.root.getNodePins().isEmpty());
    EXPECT_FALSE(graph.scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(graph.scene);
    EXPECT_EQ(2u, graph.scene.refused[0]->getMaxNumConnections());
    EXPECT_EQ(graph.scene.refused[0]->getId() + 1, graph.scene.refused[1]->getId());
    for (GraphNodePin* pin : graph.scene.refused) delete pin;
}

// --- registering a pin

TEST_F(ScenePinRegistry, RegisteringAPinOfANodeMakesItFoundByIdAndFullName)
{
    GraphNodePin& pin = newPin("in", &a);
    EXPECT_TRUE(scene.addNodePin(&pin));
    EXPECT_EQ(&pin, byId(pin));
    EXPECT_EQ(&pin, byName("root.a.in"));
    EXPECT_EQ(1u, a.getNodePins().size());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RegisteringAPinFiresNoCallback)
{
    GraphNodePin& pin = newPin("in", &a);
    CallbackLog log;
    scene.addNodePin(&pin);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ScenePinRegistry, RegisteringAPinWithoutNodeStopsAtItsId)
{
    GraphNodePin& pin = newPin("in");
    EXPECT_TRUE(scene.addNodePin(&pin));
    EXPECT_EQ(&pin, byId(pin));
    EXPECT_EQ(nullptr, byName("in"));
    EXPECT_EQ(nullptr, byName(".in"));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, DirtyFlagTellsWhetherTheLastInsertionOfARegistrationAddedAnEntry)
{
    struct Row
    {
        char const* what;
        bool hasNode;
        bool idTaken;
        bool nameTaken;
        bool dirty;
    };
    Row const rows[] = {
        {"no node, free id", false, false, false, true},   {"no node, taken id", false, true, false, false},
        {"both keys free", true, false, false, true},      {"taken id, free name", true, true, false, true},
        {"free id, taken name", true, false, true, false}, {"both keys taken", true, true, true, false},
    };
    for (Row const& row : rows)
    {
        for (bool const before : {false, true})
        {
            SCOPED_TRACE(row.what);
            TestGraph<> own;
            GraphNodePin& holder = own.addInput(own.root, "holder");
            GraphNodePin pin(nullptr, 1u, PIN_INPUT);
            pin.setName(row.nameTaken ? "holder" : "pin");
            pin.setId(row.idTaken ? holder.getId() : holder.getId() + 1);
            if (row.hasNode) pin.setParentGraphNodePtr(&own.root);
            own.scene.setIsDirty(before);
            EXPECT_TRUE(own.scene.addNodePin(&pin));
            EXPECT_EQ(row.dirty, own.scene.getIsDirty());
            EXPECT_EQ(&holder, own.scene.getPinPtrById(holder.getId()));
            EXPECT_EQ(&holder, own.scene.getPinPtrByFullName("root.holder"));
            EXPECT_EQ(row.hasNode && !row.nameTaken ? &pin : nullptr,
                      own.scene.getPinPtrByFullName("root.pin"));
            EXPECT_EQ(row.idTaken ? nullptr : &pin, own.scene.getPinPtrById(holder.getId() + 1));
        }
    }
}

TEST_F(ScenePinRegistry, NoIdIsAnOrdinaryKeyForPins)
{
    GraphNodePin& pin = newPin("in", &a);
    pin.setId(0xFFFFFFFFu);
    scene.addNodePin(&pin);
    EXPECT_EQ(&pin, scene.getPinPtrById(0xFFFFFFFFu));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, NullPinIsRefusedAndLeavesTheDirtyFlagAlone)
{
    for (bool const dirty : {false, true})
    {
        scene.setIsDirty(dirty);
        EXPECT_FALSE(scene.addNodePin(static_cast<GraphNodePin*>(nullptr)));
        EXPECT_FALSE(scene.addNodePin(&a, nullptr));
        EXPECT_FALSE(scene.removeNodePin(nullptr));
        EXPECT_EQ(dirty, scene.getIsDirty());
    }
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, PinIsNotAddedToNoNode)
{
    GraphNodePin& pin = newPin("in");
    EXPECT_FALSE(scene.addNodePin(nullptr, &pin));
    EXPECT_EQ(nullptr, pin.getParentGraphNodePtr());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingToANodeRegistersByIdAloneWhenThePinHadNoNode)
{
    GraphNodePin& pin = newPin("in");
    CallbackLog log;
    EXPECT_TRUE(scene.addNodePin(&a, &pin));
    adopted(pin);
    EXPECT_EQ(&pin, byId(pin));
    EXPECT_EQ(nullptr, byName("root.a.in"));
    EXPECT_EQ(nullptr, byName("in"));
    EXPECT_EQ(&a, pin.getParentGraphNodePtr());
    EXPECT_THAT(listed(a.getNodePins()), ElementsAre(&pin));
    EXPECT_THAT(log.lines, ElementsAre("addNodePin root in"));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingToANodeRegistersByFullNameWhenThePinNamedItsNodeBefore)
{
    GraphNodePin& pin = newPin("in");
    pin.setParentGraphNodePtr(&a);
    EXPECT_TRUE(scene.addNodePin(&a, &pin));
    adopted(pin);
    EXPECT_EQ(&pin, byName("root.a.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingToANodeRegistersBeforeTheNodeIsTold)
{
    GraphNodePin& pin = newPin("in");
    CallbackLog log;
    log.onPin = [&](GraphScene* caller, GraphNodeBase*, GraphNodePin*)
    {
        EXPECT_EQ(&pin, byId(pin));
        caller->setIsDirty(false);
    };
    EXPECT_TRUE(scene.addNodePin(&a, &pin));
    adopted(pin);
    EXPECT_EQ(1u, log.lines.size());
    EXPECT_TRUE(scene.getIsDirty());
}

TEST_F(ScenePinRegistry, AddingAPinThatIsOnTheNodeIsRefusedThoughItIsRegistered)
{
    GraphNodePin& pin = newPin("in", &a);
    CallbackLog log;
    EXPECT_FALSE(scene.addNodePin(&a, &pin));
    EXPECT_EQ(&pin, byId(pin));
    EXPECT_EQ(&pin, byName("root.a.in"));
    EXPECT_THAT(listed(a.getNodePins()), ElementsAre(&pin));
    EXPECT_THAT(log.lines, IsEmpty());
    scene.setIsDirty(true);
    EXPECT_FALSE(scene.addNodePin(&a, &pin));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingManyAddsEachInOrderAndGivesTheResultOfTheLast)
{
    GraphNodePin& there = newPin("there", &a);
    GraphNodePin& first = newPin("first");
    GraphNodePin& second = newPin("second");
    ArrayOfPtr<GraphNodePin, KS_NO> pins;
    pins.append(&first);
    pins.append(&there);
    EXPECT_FALSE(scene.addNodePins(&a, pins));
    adopted(first);
    EXPECT_TRUE(scene.getIsDirty());
    pins.append(&second);
    EXPECT_TRUE(scene.addNodePins(&a, pins));
    adopted(second);
    EXPECT_THAT(listed(a.getNodePins()), ElementsAre(&there, &first, &second));
    EXPECT_EQ(&second, byId(second));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingNoPinsIsTrueAndSetsTheDirtyFlag)
{
    EXPECT_TRUE(scene.addNodePins(&a, ArrayOfPtr<GraphNodePin, KS_NO>()));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, AddingTheNodesOwnListRegistersItsPins)
{
    GraphNodePin& first = newPin("first", &a);
    GraphNodePin& second = newPin("second", &a);
    EXPECT_FALSE(scene.addNodePins(&a, a.getNodePins()));
    EXPECT_THAT(listed(a.getNodePins()), ElementsAre(&first, &second));
    EXPECT_EQ(&first, byName("root.a.first"));
    EXPECT_EQ(&second, byName("root.a.second"));
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- unregistering

TEST_F(ScenePinRegistry, UnregisteringLeavesThePinOnItsNodeAndWired)
{
    GraphNodePin& in = graph.addInput(a);
    GraphNodePin& out = graph.addOutput(a);
    scene.connect(&out, &in, false);
    scene.setIsDirty(false);
    CallbackLog log;
    EXPECT_TRUE(scene.removeNodePin(&in));
    EXPECT_EQ(nullptr, byId(in));
    EXPECT_EQ(nullptr, byName("root.a.in"));
    EXPECT_EQ(&out, byName("root.a.out"));
    EXPECT_TRUE(a.hasPin(&in));
    EXPECT_TRUE(in.isConnected());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, UnregisteringAnUnknownPinIsTrueAndSetsTheDirtyFlag)
{
    GraphNodePin& pin = newPin("in", &a);
    EXPECT_TRUE(scene.removeNodePin(&pin));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, UnregisteringGoesByKeysSoATwinTakesTheEntryAway)
{
    GraphNodePin& pin = graph.addInput(a);
    GraphNodePin& twin = newPin("in", &a);
    EXPECT_TRUE(scene.removeNodePin(&twin));
    EXPECT_EQ(nullptr, byName("root.a.in"));
    EXPECT_EQ(&pin, byId(pin));
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- ending the life of a pin

TEST_F(ScenePinRegistry, RemovedPlainPinIsUnwiredUnregisteredTakenOffAndDeleted)
{
    GraphNodePin& in = newPin("in", &a);
    scene.addNodePin(&in);
    unsigned int const id = in.getId();
    TestNode& b = graph.addFilter("b");
    scene.connect(b.getNodePins()[1], &in, false);
    scene.connect(b.getNodePins()[1], &in, true);
    scene.setIsDirty(false);
    CallbackLog log;
    log.onPin = [&](GraphScene*, GraphNodeBase*, GraphNodePin* pin)
    {
        EXPECT_EQ(&in, pin);
        EXPECT_EQ(&a, pin->getParentGraphNodePtr());
        EXPECT_EQ(nullptr, byId(*pin));
        EXPECT_EQ(nullptr, byName("root.a.in"));
        EXPECT_FALSE(pin->isConnected());
        EXPECT_THAT(deletedPins, IsEmpty());
    };
    scene.removeNodePinFromSceneAndNode(&in);
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root b.out > a.in",
                                       "removeConnection root b.out > a.in", "removeNodePin root in"));
    EXPECT_THAT(deletedPins, ElementsAre("in"));
    EXPECT_EQ(nullptr, scene.getPinPtrById(id));
    EXPECT_TRUE(a.getNodePins().isEmpty());
    EXPECT_EQ(0u, scene.getNumberOfConnections());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RemovingAPinLeavesTheOtherPinsInOrder)
{
    newPin("one", &a);
    GraphNodePin& two = newPin("two", &a);
    newPin("three", &a);
    scene.addNodePins(&a, a.getNodePins());
    scene.removeNodePinFromSceneAndNode(&two);
    ASSERT_EQ(2u, a.getNodePins().size());
    EXPECT_STREQ("one", a.getNodePins()[0]->getName().c_str());
    EXPECT_STREQ("three", a.getNodePins()[1]->getName().c_str());
    EXPECT_NE(nullptr, byName("root.a.one"));
    EXPECT_NE(nullptr, byName("root.a.three"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RemovingAPinThatIsWiredToItselfRemovesItsConnectionOnce)
{
    GraphNodePin& both = newPin("both", &a);
    both.setDirection(PIN_INPUT | PIN_OUTPUT);
    scene.addNodePin(&both);
    ASSERT_NE(nullptr, scene.connect(&both, &both, false));
    CallbackLog log;
    scene.removeNodePinFromSceneAndNode(&both);
    EXPECT_THAT(log.lines, ElementsAre("removeConnection root a.both > a.both", "removeNodePin root both"));
    EXPECT_THAT(deletedPins, ElementsAre("both"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RemovingNoPinDoesNothing)
{
    scene.removeNodePinFromSceneAndNode(nullptr);
    scene.removeNodePins(nullptr);
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RemovingAPinWithoutNodeUnregistersAndDeletesIt)
{
    GraphNodePin& pin = newPin("stray");
    scene.addNodePin(&pin);
    unsigned int const id = pin.getId();
    scene.removeNodePinFromSceneAndNode(&pin);
    EXPECT_EQ(nullptr, scene.getPinPtrById(id));
    EXPECT_THAT(deletedPins, ElementsAre("stray"));
    if (!deletedPins.empty()) adopted(pin);
    EXPECT_SCENE_INVARIANTS(scene);
}

/// A compound with one interface node whose pin is paired with a pin of the compound, and both wired.
class ScenePinPairs : public ScenePinRegistry
{
protected:
    ScenePinPairs()
        : compound(graph.addNode("compound")),
          gate(graph.addNode("gate", &compound)),
          outside(graph.addFilter("outside")),
          inside(graph.addFilter("inside", &compound)),
          compoundPin(&newPin("cp", &compound)),
          interfacePin(&newPin("ip", &gate))
    {
        compound.setCompound(true);
        gate.setInterface(true);
        interfacePin->setDirection(PIN_OUTPUT);
        compoundPin->setChildGraphNodePinPtr(interfacePin);
        interfacePin->setParentGraphNodePinPtr(compoundPin);
        scene.addNodePin(compoundPin);
        scene.addNodePin(interfacePin);
        scene.connect(outside.getNodePins()[1], compoundPin, false);
        scene.connect(interfacePin, inside.getNodePins()[0], false);
        scene.setIsDirty(false);
    }

    void expectPairIsGone(std::vector<std::string> const& lines)
    {
        EXPECT_THAT(lines, ElementsAre("removeConnection compound gate.ip > inside.in",
                                       "removeConnection root outside.out > compound.cp",
                                       "removeNodePin root cp", "removeNodePin compound ip"));
        EXPECT_THAT(deletedPins, ElementsAre("cp", "ip"));
        EXPECT_TRUE(compound.getNodePins().isEmpty());
        EXPECT_TRUE(gate.getNodePins().isEmpty());
        EXPECT_EQ(nullptr, byName("root.compound.cp"));
        EXPECT_EQ(nullptr, byName("root.compound.gate.ip"));
        EXPECT_TRUE(scene.getIsDirty());
        EXPECT_SCENE_INVARIANTS(scene);
    }

    TestNode& compound;
    TestNode& gate;
    TestNode& outside;
    TestNode& inside;
    GraphNodePin* compoundPin;
    GraphNodePin* interfacePin;
};

TEST_F(ScenePinPairs, RemovingTheInterfacePinRemovesTheCompoundPinFirst)
{
    CallbackLog log;
    log.onPin = [&](GraphScene*, GraphNodeBase*, GraphNodePin* pin)
    {
        EXPECT_EQ(nullptr, byId(*pin));
        EXPECT_EQ(nullptr, byName(pin->getFullName()));
        EXPECT_FALSE(pin->isConnected());
        EXPECT_TRUE(pin == interfacePin || byId(*interfacePin) == interfacePin);
    };
    scene.removeNodePinFromSceneAndNode(interfacePin);
    expectPairIsGone(log.lines);
}

TEST_F(ScenePinPairs, RemovingTheCompoundPinGoesByWayOfTheInterfacePin)
{
    CallbackLog log;
    scene.removeNodePinFromSceneAndNode(compoundPin);
    expectPairIsGone(log.lines);
}

TEST_F(ScenePinPairs, RemovingThePinsOfTheInterfaceNodeRemovesTheCompoundPins)
{
    CallbackLog log;
    scene.removeNodePins(&gate);
    expectPairIsGone(log.lines);
}

TEST_F(ScenePinPairs, RemovingThePinsOfTheCompoundRemovesTheInterfacePins)
{
    CallbackLog log;
    scene.removeNodePins(&compound);
    expectPairIsGone(log.lines);
}

TEST_F(ScenePinPairs, RemovingACompoundPinWithoutChildPinDoesNothing)
{
    compoundPin->setChildGraphNodePinPtr(nullptr);
    interfacePin->setParentGraphNodePinPtr(nullptr);
    CallbackLog log;
    scene.removeNodePinFromSceneAndNode(compoundPin);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(deletedPins, IsEmpty());
    EXPECT_EQ(compoundPin, byName("root.compound.cp"));
    EXPECT_TRUE(compoundPin->isConnected());
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinPairs, RemovingAnInterfacePinWithoutParentPinRemovesItAlone)
{
    compoundPin->setChildGraphNodePinPtr(nullptr);
    interfacePin->setParentGraphNodePinPtr(nullptr);
    scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_THAT(deletedPins, ElementsAre("ip"));
    EXPECT_EQ(compoundPin, byName("root.compound.cp"));
    EXPECT_EQ(1u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinPairs, RemovingTheInterfacePinSparesAParentPinThatHasNoNode)
{
    GraphNodePin& stray = newPin("stray");
    compoundPin->setChildGraphNodePinPtr(nullptr);
    interfacePin->setParentGraphNodePinPtr(&stray);
    scene.addNodePin(&stray);
    scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_THAT(deletedPins, ElementsAre("ip"));
    EXPECT_EQ(&stray, byId(stray));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinPairs, RemovingAPlainPinSparesItsParentPin)
{
    gate.setInterface(false);
    compoundPin->setChildGraphNodePinPtr(nullptr);
    scene.removeNodePinFromSceneAndNode(interfacePin);
    EXPECT_THAT(deletedPins, ElementsAre("ip"));
    EXPECT_EQ(compoundPin, byName("root.compound.cp"));
    EXPECT_EQ(1u, scene.getNumberOfConnections());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinPairs, RemovingAPlainPinLeavesItsPartnersWithoutOne)
{
    GraphNodePin parent;
    GraphNodePin child;
    TestNode& plain = graph.addNode("plain");
    GraphNodePin& pin = graph.addInput(plain);
    pin.setParentGraphNodePinPtr(&parent);
    parent.setChildGraphNodePinPtr(&pin);
    pin.setChildGraphNodePinPtr(&child);
    child.setParentGraphNodePinPtr(&pin);
    graph.scene.removeNodePinFromSceneAndNode(&pin);
    EXPECT_EQ(parent.getChildGraphNodePinPtr(), nullptr);
    EXPECT_EQ(child.getParentGraphNodePinPtr(), nullptr);
}

TEST_F(ScenePinPairs, RemovingAPlainPinSparesPartnersThatHaveAnotherOne)
{
    GraphNodePin parent;
    GraphNodePin child;
    GraphNodePin other;
    TestNode& plain = graph.addNode("plain");
    GraphNodePin& pin = graph.addInput(plain);
    pin.setParentGraphNodePinPtr(&parent);
    parent.setChildGraphNodePinPtr(&other);
    pin.setChildGraphNodePinPtr(&child);
    child.setParentGraphNodePinPtr(&other);
    graph.scene.removeNodePinFromSceneAndNode(&pin);
    EXPECT_EQ(parent.getChildGraphNodePinPtr(), &other);
    EXPECT_EQ(child.getParentGraphNodePinPtr(), &other);
}

TEST_F(ScenePinRegistry, RemovingThePinsOfANodeRemovesThemInOrderAndSparesOthers)
{
    newPin("one", &a);
    newPin("two", &a);
    newPin("three", &a);
    scene.addNodePins(&a, a.getNodePins());
    GraphNodePin& other = graph.addInput(graph.root, "other");
    CallbackLog log;
    scene.removeNodePins(&a);
    EXPECT_THAT(log.lines,
                ElementsAre("removeNodePin root one", "removeNodePin root two", "removeNodePin root three"));
    EXPECT_THAT(deletedPins, ElementsAre("one", "two", "three"));
    EXPECT_TRUE(a.getNodePins().isEmpty());
    EXPECT_EQ(&other, byName("root.other"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, PinThatStandsInTheListTwiceIsDeletedOnce)
{
    GraphNodePin& pin = newPin("in", &a);
    a.refNodePins().append(&pin);
    scene.removeNodePins(&a);
    EXPECT_THAT(deletedPins, ElementsAre("in"));
    EXPECT_TRUE(a.getNodePins().isEmpty());
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- looking up

TEST_F(ScenePinRegistry, UnknownPinsAreNull)
{
    graph.addInput(a);
    EXPECT_EQ(nullptr, scene.getPinPtrById(0));
    EXPECT_EQ(nullptr, scene.getPinPtrById(0xFFFFFFFFu));
    for (char const* unknown : {"", "in", "a.in", "root.a", "root.a.", "root.a.IN", "Root.a.in"})
    {
        SCOPED_TRACE(unknown);
        EXPECT_EQ(nullptr, byName(unknown));
    }
}

TEST_F(ScenePinRegistry, CaseInsensitiveLookUpIgnoresTheCaseOfLettersOnBothSides)
{
    GraphNodePin& pin = graph.addInput(a, "InPut_1");
    for (char const* spelling : {"root.a.InPut_1", "ROOT.A.INPUT_1", "root.a.input_1", "rOOt.A.iNpUT_1"})
    {
        SCOPED_TRACE(spelling);
        EXPECT_EQ(&pin, scene.getPinPtrByFullNameCaseInsensitive(spelling));
    }
    EXPECT_EQ(nullptr, byName("root.a.input_1"));
    for (char const* other : {"", "root.a", "root.a.input-1", "root.a.input_1 ", "oot.a.input_1"})
    {
        SCOPED_TRACE(other);
        EXPECT_EQ(nullptr, scene.getPinPtrByFullNameCaseInsensitive(other));
    }
}

TEST_F(ScenePinRegistry, CaseInsensitiveLookUpGivesTheFirstKeyInByteOrder)
{
    GraphNodePin& lower = graph.addInput(a, "in");
    EXPECT_EQ(&lower, scene.getPinPtrByFullNameCaseInsensitive("ROOT.A.IN"));
    GraphNodePin& mixed = graph.addInput(a, "iN");
    EXPECT_EQ(&mixed, scene.getPinPtrByFullNameCaseInsensitive("root.a.in"));
    GraphNodePin& upper = graph.addInput(a, "IN");
    EXPECT_EQ(&upper, scene.getPinPtrByFullNameCaseInsensitive("root.a.in"));
    EXPECT_EQ(&lower, byName("root.a.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, CaseInsensitiveLookUpKeepsBytesAbove127Apart)
{
    GraphNodePin& pin = graph.addInput(a, "\xC4\xE4");
    EXPECT_EQ(&pin, scene.getPinPtrByFullNameCaseInsensitive("ROOT.A.\xC4\xE4"));
    EXPECT_EQ(nullptr, scene.getPinPtrByFullNameCaseInsensitive("root.a.\xE4\xE4"));
}

TEST_F(ScenePinRegistry, LookingUpPinsLeavesTheDirtyFlagAlone)
{
    GraphNodePin& pin = graph.addInput(a);
    scene.setIsDirty(false);
    byId(pin);
    byName("root.a.in");
    scene.getPinPtrByFullNameCaseInsensitive("root.a.IN");
    EXPECT_FALSE(scene.getIsDirty());
}

// --- the protected map operations

TEST_F(ScenePinRegistry, InsertingIntoAMapNeverReplacesAndTellsWhetherItAdded)
{
    GraphNodePin& first = newPin("first");
    GraphNodePin& second = newPin("second");
    TestNode& b = graph.newNode("b");
    EXPECT_TRUE(scene.insertPinInMapById(5, &first));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_FALSE(scene.insertPinInMapById(5, &second));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(&first, scene.getPinPtrById(5));

    EXPECT_TRUE(scene.insertPinInMapByFullName("x.y", &first));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_FALSE(scene.insertPinInMapByFullName("x.y", &second));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(&first, byName("x.y"));

    EXPECT_TRUE(scene.insertNodeInMapById(700, &b));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_FALSE(scene.insertNodeInMapById(700, &a));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_EQ(&b, scene.getNodePtrById(700));
    EXPECT_EQ(nullptr, b.getGraphScene());
    scene.removeNodeFromMapById(700);
}

TEST(ScenePinMaps, ANameOfNoPinIsTakenAllTheSame)
{
    OpenScene scene;
    GraphNodePin pin;
    EXPECT_TRUE(scene.insertPinInMapByFullName("x.y", nullptr));
    EXPECT_FALSE(scene.insertPinInMapByFullName("x.y", &pin));
    EXPECT_EQ(scene.getPinPtrByFullName("x.y"), nullptr);
    scene.removePinFromMapByFullName("x.y");
    EXPECT_TRUE(scene.insertPinInMapByFullName("x.y", &pin));

    scene.insertPinInMapByFullName("z", nullptr);
    scene.updateRenamedPinInMapByFullName("z", "moved");
    EXPECT_FALSE(scene.insertPinInMapByFullName("moved", &pin));
    EXPECT_TRUE(scene.insertPinInMapByFullName("z", &pin));
}

TEST_F(ScenePinRegistry, RemovingFromAMapTakesOneKeyAndSetsTheDirtyFlagEvenWhenItIsAbsent)
{
    GraphNodePin& pin = newPin("pin");
    scene.insertPinInMapById(5, &pin);
    scene.insertPinInMapByFullName("x.y", &pin);

    scene.setIsDirty(false);
    scene.removePinFromMapById(5);
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_EQ(nullptr, scene.getPinPtrById(5));
    EXPECT_EQ(&pin, byName("x.y"));
    scene.setIsDirty(false);
    scene.removePinFromMapById(5);
    EXPECT_TRUE(scene.getIsDirty());

    scene.setIsDirty(false);
    scene.removePinFromMapByFullName("x.y");
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_EQ(nullptr, byName("x.y"));
    scene.setIsDirty(false);
    scene.removePinFromMapByFullName("x.y");
    EXPECT_TRUE(scene.getIsDirty());

    scene.setIsDirty(false);
    scene.removeNodeFromMapById(a.getId());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_FALSE(scene.hasGraphNodeWithId(a.getId()));
    EXPECT_EQ(&graph.root, a.getNodeOwner());
    scene.setIsDirty(false);
    scene.removeNodeFromMapById(a.getId());
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

// --- the maps follow pins

TEST_F(ScenePinRegistry, RenamedPinIsFoundUnderItsNewName)
{
    GraphNodePin& pin = graph.addInput(a);
    scene.setIsDirty(false);
    pin.setName("renamed");
    EXPECT_EQ(nullptr, byName("root.a.in"));
    EXPECT_EQ(&pin, byName("root.a.renamed"));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RenamingAPinToItsOwnNameTellsNothing)
{
    GraphNodePin& pin = graph.addInput(a);
    scene.setIsDirty(false);
    pin.setName("in");
    EXPECT_EQ(&pin, byName("root.a.in"));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, RenamingAPinThatHasNoNameEntryChangesNothing)
{
    GraphNodePin& pin = newPin("in", &a);
    pin.setName("renamed");
    EXPECT_EQ(nullptr, byName("root.a.renamed"));
    EXPECT_FALSE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, PinRenamedToATakenNameLosesItsEntryAndTheOtherKeepsIts)
{
    GraphNodePin& keeper = graph.addInput(a, "keeper");
    GraphNodePin& loser = graph.addInput(a, "loser");
    scene.setIsDirty(false);
    loser.setName("keeper");
    EXPECT_EQ(&keeper, byName("root.a.keeper"));
    EXPECT_EQ(nullptr, byName("root.a.loser"));
    EXPECT_EQ(&loser, byId(loser));
    EXPECT_TRUE(scene.getIsDirty());
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, EntrySharedByTwoPinsFollowsTheRenameOfEither)
{
    GraphNodePin& first = graph.addInput(a, "shared");
    GraphNodePin& second = graph.addInput(a, "other");
    second.setName("shared");
    second.setName("away");
    EXPECT_EQ(nullptr, byName("root.a.shared"));
    EXPECT_EQ(&first, byName("root.a.away"));
}

TEST_F(ScenePinRegistry, RenamedInterfacePinTakesThePairedCompoundPinAlongInTheMap)
{
    TestNode& compound = graph.addNode("compound");
    GraphNodeBase* gate = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    scene.addCompoundInterfaceNode(PIN_INPUT, &compound, gate, compoundPin, interfacePin);
    interfacePin->setName("renamed");
    EXPECT_EQ(interfacePin, byName(interfacePin->getFullName()));
    EXPECT_EQ(compoundPin, byName("root.compound.renamed"));
    EXPECT_EQ(nullptr, byName("root.compound.input"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinRegistry, ToldOfARenamedPinTheMapMovesTheEntry)
{
    GraphNodePin& pin = newPin("pin");
    GraphNodePin& other = newPin("other");
    scene.insertPinInMapByFullName("old", &pin);
    scene.insertPinInMapByFullName("taken", &other);

    scene.setIsDirty(false);
    scene.updateRenamedPinInMapByFullName("unknown", "new");
    EXPECT_EQ(nullptr, byName("new"));
    EXPECT_FALSE(scene.getIsDirty());
    scene.updateRenamedPinInMapByFullName("unknown", "taken");
    EXPECT_EQ(&other, byName("taken"));
    EXPECT_FALSE(scene.getIsDirty());

    scene.updateRenamedPinInMapByFullName("old", "new");
    EXPECT_EQ(nullptr, byName("old"));
    EXPECT_EQ(&pin, byName("new"));
    EXPECT_TRUE(scene.getIsDirty());

    scene.setIsDirty(false);
    scene.updateRenamedPinInMapByFullName("new", "new");
    EXPECT_EQ(&pin, byName("new"));
    EXPECT_TRUE(scene.getIsDirty());

    scene.setIsDirty(false);
    scene.updateRenamedPinInMapByFullName("new", "taken");
    EXPECT_EQ(nullptr, byName("new"));
    EXPECT_EQ(&other, byName("taken"));
    EXPECT_TRUE(scene.getIsDirty());
    scene.removePinFromMapByFullName("taken");
}

TEST_F(ScenePinRegistry, MapEntriesMoveByAReferenceIntoTheTextThatIsPassed)
{
    GraphNodePin& pin = newPin("pin");
    KS_String const same("old");
    scene.insertPinInMapByFullName(same, &pin);
    scene.updateRenamedPinInMapByFullName(same, same);
    EXPECT_EQ(&pin, byName("old"));
    scene.removePinFromMapByFullName("old");
}

// --- the maps follow nodes

/// root.top.middle.leaf, each with a pin "in"; and beside it root.other.
class ScenePinsBelowNodes : public ScenePinRegistry
{
protected:
    ScenePinsBelowNodes()
        : top(graph.addNode("top")),
          middle(graph.addNode("middle", &top)),
          leaf(graph.addNode("leaf", &middle)),
          other(graph.addNode("other")),
          topPin(graph.addInput(top)),
          middlePin(graph.addInput(middle)),
          leafPin(graph.addInput(leaf)),
          otherPin(graph.addInput(other))
    {
        scene.setIsDirty(false);
    }

    void expectKeys(std::string const& prefix)
    {
        EXPECT_EQ(&topPin, byName((prefix + ".in").c_str()));
        EXPECT_EQ(&middlePin, byName((prefix + ".middle.in").c_str()));
        EXPECT_EQ(&leafPin, byName((prefix + ".middle.leaf.in").c_str()));
        EXPECT_SCENE_INVARIANTS(scene);
    }

    void expectNoKeys(std::string const& prefix)
    {
        for (char const* pin : {".in", ".middle.in", ".middle.leaf.in"})
            EXPECT_EQ(nullptr, byName((prefix + pin).c_str())) << prefix << pin;
    }

    TestNode& top;
    TestNode& middle;
    TestNode& leaf;
    TestNode& other;
    GraphNodePin& topPin;
    GraphNodePin& middlePin;
    GraphNodePin& leafPin;
    GraphNodePin& otherPin;
};

TEST_F(ScenePinsBelowNodes, AreReKeyedAtEveryLevelWhenTheNodeIsRenamed)
{
    for (char const* name : {"t", "a much longer name", "", "top.dotted"})
    {
        SCOPED_TRACE(name);
        std::string const before = "root." + std::string(top.getName());
        scene.setIsDirty(false);
        top.setName(name);
        expectKeys("root." + std::string(name));
        expectNoKeys(before);
        EXPECT_TRUE(scene.getIsDirty());
    }
    EXPECT_EQ(&otherPin, byName("root.other.in"));
}

TEST_F(ScenePinsBelowNodes, AreReKeyedFromTheMiddleToo)
{
    middle.setName("m");
    EXPECT_EQ(&topPin, byName("root.top.in"));
    EXPECT_EQ(&middlePin, byName("root.top.m.in"));
    EXPECT_EQ(&leafPin, byName("root.top.m.leaf.in"));
    EXPECT_EQ(nullptr, byName("root.top.middle.leaf.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, AreReKeyedWhenTheRootIsRenamed)
{
    graph.root.setName("r");
    expectKeys("r.top");
    expectNoKeys("root.top");
    EXPECT_EQ(&otherPin, byName("r.other.in"));
}

TEST_F(ScenePinsBelowNodes, StayAsTheyAreWhenANodeTakesTheNameThatItHas)
{
    top.setName("top");
    expectKeys("root.top");
    EXPECT_FALSE(scene.getIsDirty());
}

TEST_F(ScenePinsBelowNodes, AreReKeyedAtEveryLevelWhenTheNodeGetsAnotherOwner)
{
    top.setNodeOwner(&other);
    expectKeys("root.other.top");
    expectNoKeys("root.top");
    EXPECT_TRUE(scene.getIsDirty());
    graph.root.addNode(&top);
    expectKeys("root.top");
    expectNoKeys("root.other.top");
}

TEST_F(ScenePinsBelowNodes, KeepTheirOldKeysWhenTheNodeLosesItsOwner)
{
    top.setNodeOwner(nullptr);
    EXPECT_EQ(&topPin, byName("root.top.in"));
    EXPECT_EQ(&leafPin, byName("root.top.middle.leaf.in"));
    EXPECT_EQ(nullptr, byName("top.in"));
    EXPECT_FALSE(scene.getIsDirty());
}

TEST_F(ScenePinsBelowNodes, LoseTheirEntriesToThePinsThatHaveTheNamesAlready)
{
    top.setName("other");
    EXPECT_EQ(&otherPin, byName("root.other.in"));
    EXPECT_EQ(&middlePin, byName("root.other.middle.in"));
    EXPECT_EQ(nullptr, byName("root.top.in"));
    EXPECT_EQ(&topPin, byId(topPin));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, TakeASharedEntryAlongWhenTheyAreRenamedBack)
{
    top.setName("other");
    top.setName("top");
    EXPECT_EQ(&otherPin, byName("root.top.in"));
    EXPECT_EQ(nullptr, byName("root.other.in"));
    EXPECT_EQ(&leafPin, byName("root.top.middle.leaf.in"));
}

TEST_F(ScenePinsBelowNodes, LoseTheirEntriesWhenTheNewOwnerHasSuchAlready)
{
    TestNode& twin = graph.addNode("top", &other);
    GraphNodePin& twinPin = graph.addInput(twin);
    top.setNodeOwner(&other);
    EXPECT_EQ(&twinPin, byName("root.other.top.in"));
    EXPECT_EQ(&middlePin, byName("root.other.top.middle.in"));
    EXPECT_EQ(nullptr, byName("root.top.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, AreReKeyedInTheOrderOfTheNodesPinList)
{
    // The new key of "in" is the old one of "b.in", which gives it up only when its turn comes.
    GraphNodePin& in = graph.addInput(a, "in");
    GraphNodePin& dotted = graph.addInput(a, "b.in");
    a.setName("a.b");
    EXPECT_EQ(nullptr, byName("root.a.b.in"));
    EXPECT_EQ(&dotted, byName("root.a.b.b.in"));
    EXPECT_EQ(&in, byId(in));

    TestNode& c = graph.addNode("c");
    GraphNodePin& dottedFirst = graph.addInput(c, "b.in");
    GraphNodePin& inSecond = graph.addInput(c, "in");
    c.setName("c.b");
    EXPECT_EQ(&inSecond, byName("root.c.b.in"));
    EXPECT_EQ(&dottedFirst, byName("root.c.b.b.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, AreReKeyedAfterThePinsOfTheNodeItself)
{
    TestNode& b = graph.addNode("b", &a);
    GraphNodePin& below = graph.addInput(b, "in");
    graph.addInput(a, "in");
    a.setName("a.b");
    EXPECT_EQ(nullptr, byName("root.a.b.in"));
    EXPECT_EQ(&below, byName("root.a.b.b.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, FollowANodeThatTellsOfItsOldNameAlone)
{
    scene.removePinFromMapByFullName("root.top.in");
    scene.insertPinInMapByFullName("root.former.in", &topPin);
    scene.updateRenamedNodeInMapByFullName(&top, "former", "not asked");
    EXPECT_EQ(&topPin, byName("root.top.in"));
    EXPECT_EQ(nullptr, byName("root.former.in"));
    EXPECT_EQ(nullptr, byName("root.not asked.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, FollowANodeWithoutOwnerByItsBareNames)
{
    GraphNodePin& rootPin = graph.addInput(graph.root);
    scene.removePinFromMapByFullName("root.in");
    scene.insertPinInMapByFullName("former.in", &rootPin);
    scene.updateRenamedNodeInMapByFullName(&graph.root, "former", "root");
    EXPECT_EQ(&rootPin, byName("root.in"));
    EXPECT_EQ(nullptr, byName("former.in"));
    EXPECT_SCENE_INVARIANTS(scene);
}

TEST_F(ScenePinsBelowNodes, FollowANodeThatTellsOfItsOldAndNewFullNames)
{
    scene.removePinFromMapByFullName("root.top.in");
    scene.removePinFromMapByFullName("root.top.middle.leaf.in");
    scene.insertPinInMapByFullName("x.y.z.in", &topPin);
    scene.insertPinInMapByFullName("x.y.z.middle.leaf.in", &leafPin);
    scene.updateReparentedNodeInMapByFullName(&top, "x.y.z", top.getFullName());
    expectKeys("root.top");
    expectNoKeys("x.y.z");
}

TEST_F(ScenePinsBelowNodes, StayAsTheyAreWhenNoNodeIsTold)
{
    scene.updateRenamedNodeInMapByFullName(nullptr, "top", "new");
    scene.updateReparentedNodeInMapByFullName(nullptr, "root.top", "root.new");
    scene.updateNodeIdChange(nullptr, 4711, 4712);
    expectKeys("root.top");
    EXPECT_FALSE(scene.getIsDirty());
}

TEST_F(ScenePinsBelowNodes, FollowNodesThatAreNotRegisteredThemselves)
{
    TestNode& stranger = graph.newNode("stranger");
    stranger.setNodeOwner(&top);
    GraphNodePin* const pin = scene.createNewPin(&stranger, 1u, PIN_INPUT);
    ASSERT_EQ(pin, byName("root.top.stranger.Untitled"));
    top.setName("t");
    EXPECT_EQ(pin, byName("root.t.stranger.Untitled"));
    EXPECT_SCENE_INVARIANTS(scene);
}

// The renamed pin has no key any more, then or later.
TEST_F(ScenePinRegistry, APinThatWasRenamedToATakenNameIsNotFoundWhenTheNameIsGivenUp)
{
    GraphNodePin* const first = graph.scene.createNewPin(&a, 1u, PIN_INPUT);
    first->setName("x");
    GraphNodePin* const second = graph.scene.createNewPin(&a, 1u, PIN_INPUT);
    second->setName("x");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.x"), first);
    first->setName("y");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.x"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.y"), first);
}

TEST_F(ScenePinRegistry, APinThatWasRenamedLastIsFoundUnderItsNewNameOnly)
{
    GraphNodePin* const pin = graph.scene.createNewPin(&a, 1u, PIN_INPUT);
    pin->setName("x");
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.Untitled"), nullptr);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.x"), pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullNameCaseInsensitive("ROOT.A.X"), pin);
    GraphScene const copy(graph.scene);
    EXPECT_EQ(copy.getPinPtrByFullName("root.a.x"), pin);
    EXPECT_EQ(copy.getPinPtrByFullNameCaseInsensitive("ROOT.A.X"), pin);
    graph.scene.removeNodePinFromSceneAndNode(pin);
    EXPECT_EQ(graph.scene.getPinPtrByFullName("root.a.x"), nullptr);
}

TEST(SceneIdMap, ANullNodeIsPassedOver)
{
    OpenScene scene;
    GraphNodeBase node(3);
    node.setName("n");
    EXPECT_TRUE(scene.insertNodeInMapById(2, nullptr));
    EXPECT_FALSE(scene.insertNodeInMapById(2, &node));
    EXPECT_TRUE(scene.addNodeToGraph(&node));
    EXPECT_FALSE(scene.insertNodeInMapById(3, nullptr));
    EXPECT_TRUE(scene.hasGraphNodeWithId(2));
    EXPECT_EQ(scene.getNodePtrByFullName("n"), &node);
    EXPECT_EQ(scene.getNodePtrByFullName("m"), nullptr);
    EXPECT_EQ(scene.getFreeNodeName("", "n"), "n01");
    EXPECT_EQ(scene.toXml(),
              "<graph>\n<nodes>\n<node id=\"3\">\n<pins>\n</pins>\n</node>\n</nodes>\n<connections>\n"
              "</connections>\n</graph>\n");
    scene.clearMessages();
    EXPECT_FALSE(scene.removeNodeFromGraph(2u));
    scene.removeNodeFromMapById(2);
    EXPECT_FALSE(scene.hasGraphNodeWithId(2));
    EXPECT_TRUE(scene.removeNodeFromGraph(&node));
}

// The second walk of the look-up meets it, too.
TEST(SceneIdMap, ANullNodeIsPassedOverWhenANodeChangesTheSceneWhileItTellsItsName)
{
    struct Restless : GraphNodeBase
    {
        using GraphNodeBase::GraphNodeBase;
        KS_String getFullName() override
        {
            if (other != nullptr) std::exchange(other, nullptr)->setId(77);
            return GraphNodeBase::getFullName();
        }
        GraphNodeBase* other = nullptr;
    };
    OpenScene scene;
    GraphNodeBase root;
    root.setName("root");
    scene.setRootNode(&root);
    Restless restless(2);
    GraphNodeBase wanted(3);
    wanted.setName("wanted");
    scene.insertNodeInMapById(1, nullptr);
    scene.addNodeToGraph(&restless);
    scene.addNodeToGraph(&wanted);
    restless.other = &wanted;
    EXPECT_EQ(scene.getNodePtrByFullName("root.wanted"), &wanted);
    EXPECT_EQ(wanted.getId(), 77u);
    scene.removeNodeFromGraph(&wanted);
    scene.removeNodeFromGraph(&restless);
}

TEST(SceneIdMap, AnIdFarFromTheOthersIsKnownAndMayChange)
{
    OpenScene scene;
    GraphNodeBase near(1);
    GraphNodeBase far(4000000000u);
    GraphNodeBase other(4000000001u);
    scene.addNodeToGraph(&near);
    scene.addNodeToGraph(&far);
    scene.updateNodeIdChange(&other, 4000000000u, 4000000000u);
    EXPECT_EQ(scene.getNodePtrById(4000000000u), &other);
    scene.updateNodeIdChange(&other, 4000000000u, 2u);
    EXPECT_EQ(scene.getNodePtrById(2u), &other);
    EXPECT_EQ(scene.getNodePtrById(4000000000u), nullptr);
    scene.removeNodeFromMapById(2u);
    scene.removeNodeFromMapById(1u);
}

// Their hash values end in the same 32 bits.
TEST(ScenePinMaps, NamesThatHashAlikeAreToldApart)
{
    OpenScene scene;
    GraphNodePin first;
    GraphNodePin second;
    EXPECT_TRUE(scene.insertPinInMapByFullName("pin322881", &first));
    EXPECT_EQ(scene.getPinPtrByFullName("pin514990"), nullptr);
    EXPECT_TRUE(scene.insertPinInMapByFullName("pin514990", &second));
    EXPECT_EQ(scene.getPinPtrByFullName("pin322881"), &first);
    EXPECT_EQ(scene.getPinPtrByFullName("pin514990"), &second);
    scene.removePinFromMapByFullName("pin322881");
    EXPECT_EQ(scene.getPinPtrByFullName("pin514990"), &second);
}

// Whatever order the map keeps them in.
TEST(ScenePinMaps, WithoutRegardToCaseTheFirstByBytesIsFound)
{
    OpenScene scene;
    std::vector<GraphNodePin> pins(16);
    for (unsigned int i = 0; i < pins.size(); ++i)
    {
        std::string name = "abcd";
        for (unsigned int letter = 0; letter < 4; ++letter)
            if ((i >> letter & 1u) != 0) name[letter] = static_cast<char>(name[letter] - 'a' + 'A');
        scene.insertPinInMapByFullName(KS_String(name), &pins[i]);
    }
    EXPECT_EQ(scene.getPinPtrByFullNameCaseInsensitive("aBcD"), &pins[15]);
    EXPECT_EQ(scene.getPinPtrByFullNameCaseInsensitive("abc"), nullptr);
}

} // namespace
} // namespace kestrel::graph::test
