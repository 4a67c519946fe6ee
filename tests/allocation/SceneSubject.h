/// @file
#pragma once

#include "Operation.h"

#include "support/GraphTexts.h"
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// With its protected operations opened.
class OpenScene : public GraphScene
{
public:
    using GraphScene::addConnectionToAdjacencyMaps;
    using GraphScene::getNumberOfConnectionsInAdjacencyMap;
    using GraphScene::insertNodeInMapById;
    using GraphScene::insertPinInMapByFullName;
    using GraphScene::insertPinInMapById;
    using GraphScene::isConnectionInAdjacencyMap;
    using GraphScene::nodeColorMap_;
    using GraphScene::nodeHasConnectionsInAdjacencyMap;
    using GraphScene::nodeHasConnectionsInAdjacencyMapAsSource;
    using GraphScene::nodeHasConnectionsInAdjacencyMapAsTarget;
    using GraphScene::removeConnectionFromAdjacencyMaps;
    using GraphScene::removeNodeFromMapById;
    using GraphScene::removePinFromMapByFullName;
    using GraphScene::removePinFromMapById;
};

/// With its protected operations opened.
class OpenNode : public TestNode
{
public:
    using TestNode::TestNode;

    using GraphNodeBase::addNodeToNodesList;
    using GraphNodeBase::addPinToList;
    using GraphNodeBase::removeNodeFromNodesList;
    using GraphNodeBase::removePinFromList;
    using GraphNodeBase::setNodeOwnerBase;
};

/// A graph with something of everything: a compound "box" under the root with two nodes in it, wired to each
/// other and, through interface pairs in both directions, to the outside; nodes outside; nodes, pins and a
/// connection that are not in the scene yet. Its callbacks count their calls.
class SceneSubject : public TestGraph<OpenScene>
{
public:
    SceneSubject();
    ~SceneSubject();
    SceneSubject(SceneSubject const&) = delete;
    SceneSubject& operator=(SceneSubject const&) = delete;

    std::string state();
    std::string results() const;
    void prepareRepeat();
    void expectWhole();

    /// Once the scene no longer knows them, nobody else does.
    void deleteInterfaces();

    /// What a call returned and gathered.
    struct Results
    {
        long number = -1;
        KS_String text;
        Color4<float> color;
        GraphNodeBase* node = nullptr;
        GraphNodePin* pin = nullptr;
        GraphNodePin* otherPin = nullptr;
        GraphConnection* connection = nullptr;
        Nodes nodes;
        Pins pins;
        Pins otherPins;
        Connections connections;
        Connections otherConnections;
        ConnectionValues values;
        ConnectionValues otherValues;
        Array<Message, _Wa> messages;
        Array<KS_String, _Wa> texts;
        PinRenames renames;
        InterfaceOfNode inputs;
        InterfaceOfNode outputs;
        std::map<GraphNodePin*, Pins> pinsByPin;
        std::map<GraphNodePin*, Connections> connectionsByPin;
        // What the caller owns.
        std::unique_ptr<GraphNodeBase> madeNode;
        std::unique_ptr<GraphNodePin> madePin;
        std::unique_ptr<GraphConnection> madeConnection;
        std::unique_ptr<GraphScene> madeScene;
        std::unique_ptr<KS_Class> madeObject;
    };

    Results out;

    OpenNode& box;
    OpenNode& inner;
    OpenNode& second;
    OpenNode& outside;
    OpenNode& other;
    OpenNode& empty;    // no pins: its map entries would go stale when it leaves the tree
    OpenNode& detached; // in no scene, but its two children are
    OpenNode& left;
    OpenNode& right;
    OpenNode& spare;    // in no scene, of no owner
    OpenNode& unlisted; // names the node "empty" as its owner, which does not list it
    GraphNodePin* innerIn;
    GraphNodePin* innerOut;
    GraphNodePin* secondOut;
    GraphNodePin* outsideIn;
    GraphNodePin* outsideOut;
    GraphNodePin* otherIn;
    GraphNodePin* otherOut;
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    GraphNodeBase* inputInterface = nullptr;
    GraphNodePin* inputCompoundPin = nullptr;
    GraphNodePin* inputInterfacePin = nullptr;
    GraphConnection* fed = nullptr;
    std::unique_ptr<GraphNodePin> sparePin = std::make_unique<GraphNodePin>(nullptr, 1u, PIN_INPUT);
    std::unique_ptr<GraphNodePin> unlistedPin; // names the node "other", which does not list it
    std::unique_ptr<GraphConnection> spareConnection;
    std::unique_ptr<GraphNodeBase> copiedNode = std::make_unique<GraphNodeBase>(900u);
    std::unique_ptr<GraphScene> otherScene = std::make_unique<GraphScene>();

    KS_String const name = "a name that is longer than any of the others";
    KS_String const boxName = "root.box";
    KS_String const otherName = "root.other";
    KS_String const otherInName = "root.other.in";
    KS_String const secondName = "root.other.IN";
    KS_String const taken = "in";
    KS_String const spareName = "spare";
    KS_String const childName = "other";
    Array<KS_String, _Wa> pinNames;
    Nodes moved;
    Nodes moveBack;
    Pins pins;
    Connections connections;
    MessageHandler messages;
};

/// A node whose output pin has more connections than are searched one by one.
class BusySceneSubject : public SceneSubject
{
public:
    BusySceneSubject();

    OpenNode& hub;
    GraphNodePin* hubOut;
    GraphNodePin* sinkIn;
};

std::vector<Operation<SceneSubject>> sceneOperations();
std::vector<Operation<SceneSubject>> nodeOperations();
std::vector<Operation<SceneSubject>> pinOperations();
std::vector<Operation<SceneSubject>> connectionOperations();
std::vector<Operation<BusySceneSubject>> busySceneOperations();

} // namespace kestrel::graph::test
