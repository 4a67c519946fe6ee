/// @file
/// The order of the virtual operations is binary interface: a host that was built against an older library
/// calls by place.
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>
#include <ks_graph/GraphSettings.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

/// A host's class below any of the classes.
template <class Base>
class Counted : public Base
{
public:
    Counted() { ++living; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() override { --living; }

    static inline int living = 0;
};

template <class Base>
class DestructorSlot : public ::testing::Test
{
};

using CountedClasses =
    ::testing::Types<KS_Class, GraphNodePin, GraphConnection, GraphNodeBase, GraphScene, GraphSettings>;

struct ClassNames
{
    template <class Base>
    static std::string GetName(int)
    {
        if (std::is_same_v<Base, GraphNodePin>) return "GraphNodePin";
        if (std::is_same_v<Base, GraphConnection>) return "GraphConnection";
        if (std::is_same_v<Base, GraphNodeBase>) return "GraphNodeBase";
        if (std::is_same_v<Base, GraphScene>) return "GraphScene";
        if (std::is_same_v<Base, GraphSettings>) return "GraphSettings";
        return "KS_Class";
    }
};

TYPED_TEST_SUITE(DestructorSlot, CountedClasses, ClassNames);

TYPED_TEST(DestructorSlot, DeletingThroughTheBaseDestroysTheWholeObject)
{
    KS_Class* const object = new Counted<TypeParam>;
    ASSERT_EQ(Counted<TypeParam>::living, 1);
    delete object;
    EXPECT_EQ(Counted<TypeParam>::living, 0);
}

TYPED_TEST(DestructorSlot, AnArrayConstructsAndDestroysEachElement)
{
    auto* const objects = new Counted<TypeParam>[5];
    EXPECT_EQ(Counted<TypeParam>::living, 5);
    delete[] objects;
    EXPECT_EQ(Counted<TypeParam>::living, 0);
}

// -----------------------------------------------------------------------------------------------------------
// The order. A pointer to a virtual member function of the Itanium C++ ABI holds 1 + the byte offset into the
// table, so that it tells its place; ARM keeps the mark elsewhere.

#if defined(__GXX_ABI_VERSION) && (defined(__x86_64__) || defined(__i386__))

struct Slot
{
    char const* name;
    std::size_t place;
};

constexpr std::size_t notVirtual = static_cast<std::size_t>(-1);

template <class Operation>
std::size_t placeOf(Operation operation)
{
    struct
    {
        std::size_t pointer;
        std::ptrdiff_t adjustment;
    } parts{};
    static_assert(sizeof(parts) == sizeof(operation));
    std::memcpy(&parts, &operation, sizeof(parts));
    if (parts.pointer % 2 == 0 || parts.adjustment != 0) return notVirtual;
    return (parts.pointer - 1) / sizeof(void*);
}

/// Picks one of several operations of a name: `overload<bool(GraphNodePin const*) const>(&GraphNodeBase::f)`.
template <class Signature, class Class>
constexpr auto overload(Signature Class::*operation)
{
    return operation;
}

#define SLOT(Class, operation)                                                                               \
    Slot                                                                                                     \
    {                                                                                                        \
#operation, placeOf(&Class::operation)                                                               \
    }

#define SLOT_OF(Class, operation, ...)                                                                       \
    Slot                                                                                                     \
    {                                                                                                        \
#operation " " #__VA_ARGS__, placeOf(overload <__VA_ARGS__>(&Class::operation))                      \
    }

void expectConsecutive(std::vector<Slot> const& slots, std::size_t first)
{
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
        EXPECT_NE(slots[i].place, notVirtual) << slots[i].name << " is not virtual";
        EXPECT_EQ(slots[i].place, first + i)
            << slots[i].name << " does not follow " << (i == 0 ? "what the base has" : slots[i - 1].name);
    }
}

// Six operations and the destructor, which takes two places.
constexpr std::size_t firstPlaceBehindTheBase = 8;

/// A host's own first virtual operation.
template <class Base>
class Extended : public Base
{
public:
    virtual void ownOperation() {}
};

template <class Base>
void expectNothingBehind(Slot const& last)
{
    EXPECT_EQ(placeOf(&Extended<Base>::ownOperation), last.place + 1)
        << "there are virtual operations behind " << last.name;
}

TEST(VirtualSlotOrder, OfKS_Class)
{
    std::vector<Slot> const slots{
        SLOT(KS_Class, getClassName),
        SLOT(KS_Class, getParentClassName),
        SLOT(KS_Class, getClassDescription),
        SLOT(KS_Class, createInstance),
        SLOT(KS_Class, isKindOf),
        SLOT(KS_Class, printMetaClass),
    };
    expectConsecutive(slots, 0);
}

TEST(VirtualSlotOrder, TheDestructorIsTheLastOfKS_Class)
{
    EXPECT_EQ(placeOf(&Extended<KS_Class>::ownOperation), placeOf(&KS_Class::printMetaClass) + 3);
    EXPECT_EQ(placeOf(&Extended<KS_Class>::ownOperation), firstPlaceBehindTheBase);
}

TEST(VirtualSlotOrder, OfGraphNodePin)
{
    std::vector<Slot> const slots{
        SLOT(GraphNodePin, isCompoundPin),
        SLOT(GraphNodePin, isInterfacePin),
        SLOT(GraphNodePin, isEvaluatorPin),
        SLOT(GraphNodePin, isPassThroughPin),
        SLOT(GraphNodePin, isDirty),
        SLOT(GraphNodePin, isEditable),
        SLOT(GraphNodePin, isDynamic),
        SLOT(GraphNodePin, isUpdating),
        SLOT(GraphNodePin, allowsConnectionFrom),
        SLOT(GraphNodePin, allowsConnectionTo),
        SLOT(GraphNodePin, getParentGraphNodePtr),
        SLOT(GraphNodePin, setParentGraphNodePtr),
        SLOT(GraphNodePin, getChildGraphNodePinPtr),
        SLOT(GraphNodePin, setChildGraphNodePinPtr),
        SLOT(GraphNodePin, getChildInterfaceNodePtr),
        SLOT(GraphNodePin, getParentGraphNodePinPtr),
        SLOT(GraphNodePin, setParentGraphNodePinPtr),
        SLOT(GraphNodePin, getParentGraphScenePtr),
        SLOT(GraphNodePin, getName),
        SLOT(GraphNodePin, getFullName),
        SLOT(GraphNodePin, setName),
        SLOT(GraphNodePin, toXml),
        SLOT(GraphNodePin, isConnected),
        SLOT(GraphNodePin, isFull),
        SLOT(GraphNodePin, update),
        SLOT(GraphNodePin, isBidirectionalPin),
        SLOT(GraphNodePin, getBorderColor),
        SLOT(GraphNodePin, getColor),
        SLOT(GraphNodePin, setBorderColor),
        SLOT(GraphNodePin, setColor),
        SLOT(GraphNodePin, getInfo),
        SLOT(GraphNodePin, getDescription),
        SLOT(GraphNodePin, asHTML),
        SLOT(GraphNodePin, addInputConnection),
        SLOT(GraphNodePin, addOutputConnection),
        SLOT(GraphNodePin, removeInputConnection),
        SLOT(GraphNodePin, removeOutputConnection),
        SLOT(GraphNodePin, allowsInternalConnections),
        SLOT(GraphNodePin, hasInternalConnections),
        SLOT(GraphNodePin, allowsNewOrRemovalOfInternalConnections),
        SLOT(GraphNodePin, internalConnections),
        SLOT(GraphNodePin, allowedInternalConnections),
        SLOT(GraphNodePin, forcedInternalConnection),
        SLOT(GraphNodePin, forcedInternalConnections),
        SLOT(GraphNodePin, addInternalConnection),
        SLOT(GraphNodePin, removeInternalConnection),
    };
    EXPECT_EQ(slots.size(), 46u);
    expectConsecutive(slots, firstPlaceBehindTheBase);
    expectNothingBehind<GraphNodePin>(slots.back());
}

TEST(VirtualSlotOrder, OfGraphConnection)
{
    std::vector<Slot> const slots{
        SLOT(GraphConnection, operator==),
        SLOT(GraphConnection, isSameAs),
        SLOT(GraphConnection, isConnected),
        SLOT(GraphConnection, isConnectedPin),
        SLOT(GraphConnection, isConnectedPinSource),
        SLOT(GraphConnection, isConnectedPinTarget),
        SLOT(GraphConnection, isLoop),
        SLOT(GraphConnection, isNodeLoop),
        SLOT(GraphConnection, isSameNode),
        SLOT(GraphConnection, isConnectedNode),
        SLOT(GraphConnection, isConnectedNodeSource),
        SLOT(GraphConnection, isConnectedNodeTarget),
        SLOT(GraphConnection, areNodesConnected),
        SLOT(GraphConnection, getSourceNode),
        SLOT(GraphConnection, getTargetNode),
        SLOT(GraphConnection, sourceIsCompoundPin),
        SLOT(GraphConnection, targetIsCompoundPin),
        SLOT(GraphConnection, sourceIsInterfacePin),
        SLOT(GraphConnection, targetIsInterfacePin),
        SLOT(GraphConnection, getFullName),
        SLOT(GraphConnection, isImplicit),
        SLOT(GraphConnection, isBidirectional),
        SLOT(GraphConnection, setImplicit),
        SLOT(GraphConnection, removeFromConnectedPins),
        SLOT(GraphConnection, removeFromSourcePin),
        SLOT(GraphConnection, removeFromTargetPin),
        SLOT(GraphConnection, addToConnectedPins),
        SLOT(GraphConnection, addToSourcePin),
        SLOT(GraphConnection, addToTargetPin),
        SLOT(GraphConnection, toXml),
    };
    EXPECT_EQ(slots.size(), 30u);
    expectConsecutive(slots, firstPlaceBehindTheBase);
    expectNothingBehind<GraphConnection>(slots.back());
}

class OpenNode : public GraphNodeBase
{
public:
    using GraphNodeBase::addNodeToNodesList;
    using GraphNodeBase::addPinToList;
    using GraphNodeBase::removeNodeFromNodesList;
    using GraphNodeBase::removePinFromList;
    using GraphNodeBase::setNodeOwnerBase;
};

using Pins = ArrayOfPtr<GraphNodePin, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

TEST(VirtualSlotOrder, OfGraphNodeBase)
{
    using OnePin = bool(GraphNodePin const*) const;
    using OnePinGathering = bool(GraphNodePin const*, Pins&) const;
    using OneNode = bool(GraphNodeBase const*) const;
    using OneNodeGathering = bool(GraphNodeBase const*, Pins&) const;
    std::vector<Slot> const slots{
        SLOT(GraphNodeBase, operator==),
        SLOT(GraphNodeBase, isValid),
        SLOT(GraphNodeBase, isCompound),
        SLOT(GraphNodeBase, isEvaluator),
        SLOT(GraphNodeBase, isPassThroughFamily),
        SLOT(GraphNodeBase, isGroup),
        SLOT(GraphNodeBase, isPassThrough),
        SLOT(GraphNodeBase, isIterator),
        SLOT(GraphNodeBase, setCompound),
        SLOT(GraphNodeBase, isInputInterface),
        SLOT(GraphNodeBase, isOutputInterface),
        SLOT(GraphNodeBase, isInterface),
        SLOT(GraphNodeBase, setInterface),
        SLOT(GraphNodeBase, isSameNodeAs),
        SLOT(GraphNodeBase, isEditable),
        SLOT(GraphNodeBase, hasPin),
        SLOT(GraphNodeBase, getPins),
        SLOT(GraphNodeBase, getInputPins),
        SLOT(GraphNodeBase, getOutputPins),
        SLOT(GraphNodeBase, hasInputPins),
        SLOT(GraphNodeBase, hasOutputPins),
        SLOT(GraphNodeBase, getPinByName),
        SLOT_OF(GraphNodeBase, allowsConnectionFrom, OnePin),
        SLOT_OF(GraphNodeBase, allowsConnectionFrom, OnePinGathering),
        SLOT_OF(GraphNodeBase, allowsConnectionFrom, OneNode),
        SLOT_OF(GraphNodeBase, allowsConnectionFrom, OneNodeGathering),
        SLOT_OF(GraphNodeBase, allowsConnectionTo, OnePin),
        SLOT_OF(GraphNodeBase, allowsConnectionTo, OnePinGathering),
        SLOT_OF(GraphNodeBase, allowsConnectionTo, OneNode),
        SLOT_OF(GraphNodeBase, allowsConnectionTo, OneNodeGathering),
        SLOT(GraphNodeBase, getFullName),
        SLOT(GraphNodeBase, getName),
        SLOT(GraphNodeBase, setName),
        SLOT(GraphNodeBase, getId),
        SLOT(GraphNodeBase, setId),
        SLOT(GraphNodeBase, getGraphScene),
        SLOT(GraphNodeBase, setGraphScene),
        SLOT(GraphNodeBase, getNodeOwner),
        SLOT(GraphNodeBase, setNodeOwner),
        SLOT(GraphNodeBase, isRoot),
        SLOT(GraphNodeBase, isOwnedByNode),
        SLOT(GraphNodeBase, isUpdating),
        SLOT(GraphNodeBase, update),
        SLOT(GraphNodeBase, update_notCleaning),
        SLOT(GraphNodeBase, addNode),
        SLOT(GraphNodeBase, removeNode),
        SLOT(GraphNodeBase, getNodeByName),
        SLOT(GraphNodeBase, clearNodesArray),
        SLOT(GraphNodeBase, getNodesRecursively),
        SLOT(GraphNodeBase, getCompoundNodes),
        SLOT(GraphNodeBase, dynamicPinsAllowed),
        SLOT(GraphNodeBase, getFreeNodeNameLikeThis),
        SLOT(GraphNodeBase, getFreePinNameLikeThis),
        SLOT(GraphNodeBase, getNotConnectedPins),
        SLOT(GraphNodeBase, getConnectedPins),
        SLOT(GraphNodeBase, hasPinWithName),
        SLOT(GraphNodeBase, isWorkflowFamily),
        SLOT(GraphNodeBase, getInfo),
        SLOT(GraphNodeBase, getDescription),
        SLOT(GraphNodeBase, setDescription),
        SLOT(GraphNodeBase, asHTML),
        SLOT(GraphNodeBase, getNumberOfThreads),
        SLOT(GraphNodeBase, setNumberOfThreads),
        SLOT(GraphNodeBase, hasErrors),
        SLOT(GraphNodeBase, hasWarnings),
        SLOT(GraphNodeBase, hasMessages),
        SLOT_OF(GraphNodeBase, getMessages, MessageHandler const&() const),
        SLOT_OF(GraphNodeBase, getMessages, bool(Array<Message, _Wa>&) const),
        SLOT(GraphNodeBase, refMessages),
        SLOT(GraphNodeBase, clearMessages),
        SLOT(GraphNodeBase, getMessagesAsStrings),
        SLOT(GraphNodeBase, getInternalConnections),
        SLOT(GraphNodeBase, getInternalConnectionsForPainting),
        SLOT(GraphNodeBase, getType),
        SLOT(GraphNodeBase, setType),
        SLOT(OpenNode, addPinToList),
        SLOT(OpenNode, removePinFromList),
        SLOT(OpenNode, setNodeOwnerBase),
        SLOT(OpenNode, addNodeToNodesList),
        SLOT(OpenNode, removeNodeFromNodesList),
        SLOT(GraphNodeBase, addNodePin),
        SLOT(GraphNodeBase, addDynamicInputPin),
        SLOT(GraphNodeBase, addDynamicOutputPin),
        SLOT(GraphNodeBase, removeNodePin),
        SLOT(GraphNodeBase, destroyNodePins),
        SLOT(GraphNodeBase, reorderInputPins),
        SLOT(GraphNodeBase, reorderOutputPins),
        SLOT(GraphNodeBase, getConnections),
        SLOT(GraphNodeBase, getConnectionsWithNode),
        SLOT(GraphNodeBase, hasConnectionsWithNode),
        SLOT(GraphNodeBase, toXml),
        SLOT(GraphNodeBase, onAddingToScene),
        SLOT(GraphNodeBase, onRemovingFromScene),
    };
    EXPECT_EQ(slots.size(), 93u);
    expectConsecutive(slots, firstPlaceBehindTheBase);
    expectNothingBehind<GraphNodeBase>(slots.back());
}

TEST(VirtualSlotOrder, OfGraphScene)
{
    using Yes = bool const&;
    using Id = unsigned int const&;
    using Name = KS_String const&;
    using Pin = GraphNodePin const*;
    using Node = GraphNodeBase const*;
    using PinsByPin = std::map<GraphNodePin*, Pins>;
    using ConnectionsByPin = std::map<GraphNodePin*, Connections>;
    std::vector<Slot> const slots{
        SLOT(GraphScene, getNodePtrById),
        SLOT(GraphScene, getNodePtrByFullName),
        SLOT(GraphScene, hasGraphNodeWithId),
        SLOT(GraphScene, getAllGraphCompounds),
        SLOT(GraphScene, getNodesConnectedWithNode),
        SLOT(GraphScene, getNodesConnectedBase),
        SLOT_OF(GraphScene, getConnectablePins, bool(Pin, Node, Pins&, Yes) const),
        SLOT_OF(GraphScene, getConnectablePins, bool(Node, Pin, Pins&, Yes) const),
        SLOT_OF(GraphScene, getConnectablePins, bool(Node, Node, Pins&, Pins&, Yes) const),
        SLOT(GraphScene, isPinFull),
        SLOT_OF(GraphScene, hasPinConnections, bool(Pin) const),
        SLOT_OF(GraphScene, hasPinConnections, bool(Pin, PinDirection const&) const),
        SLOT_OF(GraphScene, getPinNumConnections, unsigned int(Pin) const),
        SLOT_OF(GraphScene, getPinNumConnections, unsigned int(Pin, PinDirection const&) const),
        SLOT(GraphScene, getEvaluablePins),
        SLOT(GraphScene, hasConnectionsLikeThis),
        SLOT(GraphScene, getConnectionsLikeThis),
        SLOT(GraphScene, areNodesConnected),
        SLOT_OF(GraphScene, getPinConnections, bool(Pin, Connections&) const),
        SLOT_OF(GraphScene, getPinConnections, bool(Pin, PinDirection const&, Connections&) const),
        SLOT_OF(GraphScene, getNodeConnectionsByPin, void(GraphNodeBase*, PinsByPin&) const),
        SLOT_OF(GraphScene, getNodeConnectionsByPin, void(GraphNodeBase*, ConnectionsByPin&) const),
        SLOT_OF(GraphScene, getConnectionsWithNode, bool(Node, Connections&, Yes, Yes, Yes, Yes) const),
        SLOT_OF(GraphScene, getConnectionsWithNode, bool(Id, Connections&, Yes, Yes, Yes, Yes) const),
        SLOT(GraphScene, getConnectionsBetweenNodes),
        SLOT(GraphScene, getConnectionsInvolvingNodes),
        SLOT(GraphScene, getConnectionsInvolvingOnlyNodes),
        SLOT_OF(GraphScene, isConnectionAllowed, bool(Pin, Node, Yes) const),
        SLOT_OF(GraphScene, isConnectionAllowed, bool(Pin, Node) const),
        SLOT_OF(GraphScene, isConnectionAllowed, bool(Node, Pin) const),
        SLOT_OF(GraphScene, isConnectionAllowed, bool(Pin, Pin) const),
        SLOT_OF(GraphScene, isConnectionAllowed, bool(Node, Node) const),
        SLOT(GraphScene, getGraphType),
        SLOT(GraphScene, run),
        SLOT(GraphScene, clear),
        SLOT(GraphScene, clearMessages),
        SLOT(GraphScene, purge),
        SLOT(GraphScene, setupNodeColor),
        SLOT_OF(GraphScene, getColorFromNodeType, Color4<float>(Name) const),
        SLOT_OF(GraphScene, getColorFromNodeType, Color4<float>(GraphNodeBase*) const),
        SLOT(GraphScene, hasColorForNodeType),
        SLOT(GraphScene, toXml),
        SLOT(GraphScene, addNodeToGraph),
        SLOT_OF(GraphScene, removeNodeFromGraph, bool(Id)),
        SLOT_OF(GraphScene, removeNodeFromGraph, bool(GraphNodeBase*)),
        SLOT(GraphScene, removeNodesInCompoundFromGraph),
        SLOT(GraphScene, createNewCompound),
        SLOT(GraphScene, createNewInterfaceNode),
        SLOT(GraphScene, createNewPassThrough),
        SLOT(GraphScene, createNewEvaluator),
        SLOT(GraphScene, removeAllNodes),
        SLOT(GraphScene, moveNodesToCompound),
        SLOT(GraphScene, addCompoundInterfaceNode),
        SLOT(GraphScene, removeNodesFromCompound),
        SLOT(GraphScene, removeNodesFromCompoundCreatingInterfaces),
        SLOT(GraphScene, getFreeNodeId),
        SLOT(GraphScene, getFreeNodeName),
        SLOT(GraphScene, getFreeNodeCompoundName),
        SLOT(GraphScene, getFreeInterfaceNodeName),
        SLOT_OF(GraphScene, createNewPin, GraphNodePin * (GraphNodeBase*, Id, PinDirection const&)),
        SLOT_OF(GraphScene, createNewPin, GraphNodePin * (Id, PinDirection const&)),
        SLOT_OF(GraphScene, addNodePin, bool(GraphNodePin*)),
        SLOT_OF(GraphScene, addNodePin, bool(GraphNodeBase*, GraphNodePin*)),
        SLOT(GraphScene, addNodePins),
        SLOT(GraphScene, removeNodePin),
        SLOT(GraphScene, removeNodePins),
        SLOT(GraphScene, removeNodePinFromSceneAndNode),
        SLOT(GraphScene, addCompoundInterfacePin),
        SLOT(GraphScene, createCompoundPinForInterfacePin),
        SLOT(GraphScene, getFreePinName),
        SLOT(GraphScene, createGraphConnection),
        SLOT_OF(GraphScene, connect, GraphConnection * (Pin, Node, Yes)),
        SLOT_OF(GraphScene, connect, GraphConnection * (Node, Pin, Yes)),
        SLOT_OF(GraphScene, connect, GraphConnection * (Pin, Pin, Yes)),
        SLOT_OF(GraphScene, connect, GraphConnection * (Node, Node, Yes)),
        SLOT_OF(GraphScene, removeConnectionsWithNode, bool(Node)),
        SLOT_OF(GraphScene, removeConnectionsWithNode, bool(Id)),
        SLOT(GraphScene, removeConnectionsWithPin),
        SLOT(GraphScene, removeConnectionsBetweenNodes),
        SLOT(GraphScene, removeConnection),
        SLOT(GraphScene, removeAllConnections),
        SLOT(GraphScene, connectBase),
    };
    EXPECT_EQ(slots.size(), 82u);
    expectConsecutive(slots, firstPlaceBehindTheBase);
    expectNothingBehind<GraphScene>(slots.back());
}

TEST(VirtualSlotOrder, OfGraphSettings)
{
    Slot const last = SLOT(GraphSettings, toXml);
    expectConsecutive({last}, firstPlaceBehindTheBase);
    expectNothingBehind<GraphSettings>(last);
}

TEST(VirtualSlotOrder, ANonVirtualOperationHasNoPlace)
{
    EXPECT_EQ(placeOf(&GraphNodePin::isInputPin), notVirtual);
    EXPECT_EQ(placeOf(&GraphNodePin::isOutputPin), notVirtual);
    EXPECT_EQ(placeOf(&GraphNodePin::refInputConnections), notVirtual);
    EXPECT_EQ(placeOf(&GraphConnection::getSourcePin), notVirtual);
    EXPECT_EQ(placeOf(&GraphNodeBase::getAllChildNodePins), notVirtual);
    EXPECT_EQ(placeOf(&GraphScene::updateNodeIdChange), notVirtual);
    EXPECT_EQ(placeOf(&GraphSettings::initialize), notVirtual);
}

#undef SLOT
#undef SLOT_OF

#endif

} // namespace

} // namespace kestrel::graph::test
