#include "SceneSubject.h"

#include <utility>

namespace kestrel::graph::test
{

namespace
{

using S = SceneSubject;
using enum Promise;

class DeclaredNode final : public GraphNodeBase
{
};

// What is declared stays declared, and takes its memory once.
bool const isDeclared = (declarePlainNames<DeclaredNode>(), true);

// A cleared scene still holds the pins in its maps, which are gone with their nodes.
void prepareClearing(S& s)
{
    s.unlisted.setNodeOwnerBase(nullptr);
    s.unlistedPin->setParentGraphNodePtr(nullptr);
    for (GraphNodeBase* const node :
         {static_cast<GraphNodeBase*>(&s.inner), static_cast<GraphNodeBase*>(&s.second),
          static_cast<GraphNodeBase*>(&s.outside), static_cast<GraphNodeBase*>(&s.other), s.interfaceNode,
          s.inputInterface})
        if (s.scene.getNumberOfNodes() != 0) s.scene.removeNodePins(node);
}

} // namespace

std::vector<Operation<SceneSubject>> sceneOperations()
{
    return {
        {"detail::notePlainNames(std::type_info const&)", allocatesNothing,
         [](S& s)
         {
             declarePlainNames<DeclaredNode>();
             s.out.number = isDeclared;
         }},
        {"GraphScene::GraphScene()", allOrNothing, [](S&) { GraphScene const scene; }},
        {"GraphScene::GraphScene(GraphScene const&)", allOrNothing,
         [](S& s) { s.out.madeScene = std::make_unique<GraphScene>(s.scene); }},
        {"GraphScene::operator=(GraphScene const&)", allOrNothing, [](S& s) { *s.otherScene = s.scene; }},
        {"GraphScene::~GraphScene()", allocatesNothing, [](S& s) { s.otherScene.reset(); }},

        // Looking up
        {"GraphScene::getNodePtrById(unsigned int const&) const", allocatesNothing,
         [](S& s) { s.out.node = s.scene.getNodePtrById(s.box.getId()); }},
        {"GraphScene::getNodePtrByFullName(KS_String const&) const", allOrNothing,
         [](S& s) { s.out.node = s.scene.getNodePtrByFullName(s.otherName); }},
        {"GraphScene::hasGraphNodeWithId(unsigned int const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.hasGraphNodeWithId(s.box.getId()); }},
        {"GraphScene::getAllGraphCompounds(ArrayOfPtr<GraphNodeBase, KS_NO>&) const", allOrNothing,
         [](S& s) { s.scene.getAllGraphCompounds(s.out.nodes); }},
        {"GraphScene::getPinPtrById(unsigned int const&) const", allocatesNothing,
         [](S& s) { s.out.pin = s.scene.getPinPtrById(s.innerIn->getId()); }},
        {"GraphScene::getPinPtrByFullName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.pin = s.scene.getPinPtrByFullName(s.otherInName); }},
        {"GraphScene::getPinPtrByFullNameCaseInsensitive(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.pin = s.scene.getPinPtrByFullNameCaseInsensitive(s.secondName); }},
        {"GraphScene::getGraphNodesAsList(ArrayOfPtr<GraphNodeBase, KS_NO>&) const", allOrNothing,
         [](S& s) { s.out.number = s.scene.getGraphNodesAsList(s.out.nodes); }},
        {"GraphScene::getGraphNodesAtLevel(GraphNodeBase*, bool const&, ArrayOfPtr<GraphNodeBase, KS_NO>&) "
         "const",
         allOrNothing, [](S& s) { s.scene.getGraphNodesAtLevel(&s.root, true, s.out.nodes); }},
        {"GraphScene::getNumberOfNodes() const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.getNumberOfNodes(); }},
        {"GraphScene::getNumberOfConnections() const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.getNumberOfConnections(); }},
        {"GraphScene::getGraphType() const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.getGraphType(); }},
        {"GraphScene::run()", allocatesNothing, [](S& s) { s.scene.run(); }},
        {"GraphScene::purge()", allocatesNothing, [](S& s) { s.scene.purge(); }},
        {"GraphScene::getEvaluablePins(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allocatesNothing,
         [](S& s) { s.scene.getEvaluablePins(s.out.pins); }},

        // Connected nodes, connectable pins
        {"GraphScene::getNodesConnectedWithNode(GraphNodeBase const*, ArrayOfPtr<GraphNodeBase, KS_NO>&, "
         "bool const&, bool const&, bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s)
         {
             s.out.number =
                 s.scene.getNodesConnectedWithNode(&s.outside, s.out.nodes, true, true, false, true, true);
         }},
        {"GraphScene::getNodesConnectedBase(ArrayOfPtr<GraphConnection, KS_NO> const&, "
         "ArrayOfPtr<GraphNodeBase, KS_NO>&, bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s)
         { s.out.number = s.scene.getNodesConnectedBase(s.connections, s.out.nodes, true, true, false); }},
        {"GraphScene::getConnectablePins(GraphNodeBase const*, GraphNodeBase const*, "
         "ArrayOfPtr<GraphNodePin, KS_NO>&, ArrayOfPtr<GraphNodePin, KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s) {
             s.out.number =
                 s.scene.getConnectablePins(&s.other, &s.outside, s.out.pins, s.out.otherPins, true);
         }},
        {"GraphScene::getConnectablePins(GraphNodeBase const*, GraphNodePin const*, ArrayOfPtr<GraphNodePin, "
         "KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.getConnectablePins(&s.other, s.outsideIn, s.out.pins, true); }},
        {"GraphScene::getConnectablePins(GraphNodePin const*, GraphNodeBase const*, ArrayOfPtr<GraphNodePin, "
         "KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.getConnectablePins(s.outsideOut, &s.other, s.out.pins, true); }},
        {"GraphScene::getConnectablePins(GraphNodePin const*, GraphNodeBase const*, bool const&, "
         "ArrayOfPtr<GraphNodePin, KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s)
         { s.out.number = s.scene.getConnectablePins(s.outsideOut, &s.other, true, s.out.pins, true); }},

        // Pins and their connections
        {"GraphScene::isPinFull(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.isPinFull(s.innerIn); }},
        {"GraphScene::hasPinConnections(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.hasPinConnections(s.innerIn); }},
        {"GraphScene::hasPinConnections(GraphNodePin const*, Flag<GraphNodePin, unsigned int> const&) const",
         allocatesNothing, [](S& s) { s.out.number = s.scene.hasPinConnections(s.innerIn, PIN_INPUT); }},
        {"GraphScene::getPinNumConnections(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.getPinNumConnections(s.innerIn); }},
        {"GraphScene::getPinNumConnections(GraphNodePin const*, Flag<GraphNodePin, unsigned int> const&) "
         "const",
         allocatesNothing, [](S& s) { s.out.number = s.scene.getPinNumConnections(s.innerIn, PIN_INPUT); }},
        {"GraphScene::hasConnectionsLikeThis(GraphConnection const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.hasConnectionsLikeThis(*s.fed); }},
        {"GraphScene::getConnectionsLikeThis(GraphConnection const&, ArrayOfPtr<GraphConnection, KS_NO>&) "
         "const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.getConnectionsLikeThis(*s.fed, s.out.connections); }},
        {"GraphScene::areNodesConnected(GraphNodeBase const*, GraphNodeBase const*, bool const&, bool "
         "const&) const",
         allocatesNothing,
         [](S& s) { s.out.number = s.scene.areNodesConnected(&s.box, &s.outside, true, true); }},
        {"GraphScene::hasNodeAnyConnection(GraphNodeBase const*, Flag<GraphNodePin, unsigned int> const&, "
         "bool const&) const",
         allOrNothing, [](S& s) { s.out.number = s.scene.hasNodeAnyConnection(&s.box, PIN_OUTPUT, true); }},

        // Gathering connections
        {"GraphScene::getPinConnections(GraphNodePin const*, ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.getPinConnections(s.outsideIn, s.out.connections); }},
        {"GraphScene::getPinConnections(GraphNodePin const*, Flag<GraphNodePin, unsigned int> const&, "
         "ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.getPinConnections(s.outsideIn, PIN_INPUT, s.out.connections); }},
        {"GraphScene::getNodeConnectionsByPin(GraphNodeBase*, std::map<GraphNodePin*, "
         "ArrayOfPtr<GraphNodePin, KS_NO>>&) const",
         allOrNothing, [](S& s) { s.scene.getNodeConnectionsByPin(&s.box, s.out.pinsByPin); }},
        {"GraphScene::getNodeConnectionsByPin(GraphNodeBase*, std::map<GraphNodePin*, "
         "ArrayOfPtr<GraphConnection, KS_NO>>&) const",
         allOrNothing, [](S& s) { s.scene.getNodeConnectionsByPin(&s.box, s.out.connectionsByPin); }},
        {"GraphScene::getConnectionsWithNode(GraphNodeBase const*, ArrayOfPtr<GraphConnection, KS_NO>&, bool "
         "const&, bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s) {
             s.out.number =
                 s.scene.getConnectionsWithNode(&s.box, s.out.connections, true, true, false, true);
         }},
        {"GraphScene::getConnectionsWithNode(unsigned int const&, ArrayOfPtr<GraphConnection, KS_NO>&, bool "
         "const&, bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s)
         {
             s.out.number =
                 s.scene.getConnectionsWithNode(s.box.getId(), s.out.connections, true, true, false, true);
         }},
        {"GraphScene::getConnectionsBetweenNodes(GraphNodeBase const*, GraphNodeBase const*, bool const&, "
         "bool const&, bool const&, ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](S& s)
         {
             s.out.number =
                 s.scene.getConnectionsBetweenNodes(&s.box, &s.outside, true, true, true, s.out.connections);
         }},
        {"GraphScene::getConnectionsInvolvingNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const&, bool const&, "
         "bool const&, bool const&, ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](S& s) {
             s.out.number =
                 s.scene.getConnectionsInvolvingNodes(s.moved, true, true, true, s.out.connections);
         }},
        {"GraphScene::getConnectionsInvolvingOnlyNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const&, bool const&, "
         "bool const&, ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](S& s) {
             s.out.number = s.scene.getConnectionsInvolvingOnlyNodes(s.moved, true, true, s.out.connections);
         }},

        // Wiring rules
        {"GraphScene::isConnectionAllowed(GraphNodeBase const*, GraphNodeBase const*) const",
         allocatesNothing,
         [](S& s)
         {
             s.out.number = s.scene.isConnectionAllowed(static_cast<GraphNodeBase*>(&s.box),
                                                        static_cast<GraphNodeBase*>(&s.outside));
         }},
        {"GraphScene::isConnectionAllowed(GraphNodeBase const*, GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.isConnectionAllowed(&s.box, s.outsideIn); }},
        {"GraphScene::isConnectionAllowed(GraphNodePin const*, GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.isConnectionAllowed(s.otherOut, &s.outside); }},
        {"GraphScene::isConnectionAllowed(GraphNodePin const*, GraphNodeBase const*, bool const&) const",
         allocatesNothing,
         [](S& s) { s.out.number = s.scene.isConnectionAllowed(s.otherOut, &s.outside, true); }},
        {"GraphScene::isConnectionAllowed(GraphNodePin const*, GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.scene.isConnectionAllowed(s.otherOut, s.outsideIn); }},

        // The whole scene
        {"GraphScene::clear()", repeatCompletes,
         [](S& s)
         {
             prepareClearing(s);
             s.scene.clear();
         }},
        {"GraphScene::removeAllNodes()", repeatCompletes,
         [](S& s)
         {
             prepareClearing(s);
             s.scene.removeAllConnections();
             s.out.number = s.scene.removeAllNodes();
         }},
        {"GraphScene::clearMessages()", allocatesNothing, [](S& s) { s.scene.clearMessages(); }},
        {"GraphScene::setupNodeColor()", allocatesNothing, [](S& s) { s.scene.setupNodeColor(); }},
        {"GraphScene::getColorFromNodeType(KS_String const&) const", allOrNothing,
         [](S& s) { s.out.color = s.scene.getColorFromNodeType(s.name); }},
        {"GraphScene::getColorFromNodeType(GraphNodeBase*) const", allOrNothing,
         [](S& s) { s.out.color = s.scene.getColorFromNodeType(&s.box); }},
        {"GraphScene::hasColorForNodeType(KS_String const&) const", allOrNothing,
         [](S& s) { s.out.number = s.scene.hasColorForNodeType(s.name); }},
        {"GraphScene::setMessages", allOrNothing, [](S& s) { s.scene.setMessages(s.messages); }},
        {"GraphScene::setLastImportedNodes", allOrNothing,
         [](S& s) { s.scene.setLastImportedNodes(s.moved); }},
        {"GraphScene::setLastImportedConnections", allOrNothing,
         [](S& s) { s.scene.setLastImportedConnections(s.connections); }},
        {"GraphScene::toXml() const", allOrNothing, [](S& s) { s.out.text = s.scene.toXml(); }},

        // Nodes
        {"GraphScene::addNodeToGraph(GraphNodeBase*)", allOrNothing,
         [](S& s) { s.out.number = s.scene.addNodeToGraph(&s.spare); }},
        {"GraphScene::removeNodeFromGraph(GraphNodeBase*)", repeatCompletes,
         [](S& s)
         {
             s.scene.removeNodePins(&s.other);
             s.scene.removeNodeFromGraph(&s.other);
         }},
        {"GraphScene::removeNodeFromGraph(unsigned int const&)", repeatCompletes,
         [](S& s)
         {
             for (OpenNode* const node : {&s.inner, &s.second}) s.scene.removeNodePins(node);
             s.scene.removeNodePins(&s.box);
             s.unlisted.setNodeOwnerBase(nullptr);
             s.scene.removeNodeFromGraph(s.box.getId());
             s.deleteInterfaces();
         }},
        {"GraphScene::removeNodesInCompoundFromGraph(GraphNodeBase*)", repeatCompletes,
         [](S& s)
         {
             for (OpenNode* const node : {&s.inner, &s.second}) s.scene.removeNodePins(node);
             s.unlisted.setNodeOwnerBase(nullptr);
             s.scene.removeNodesInCompoundFromGraph(&s.box);
             s.deleteInterfaces();
         }},
        {"GraphScene::createNewCompound()", allOrNothing,
         [](S& s) { s.out.madeNode.reset(s.scene.createNewCompound()); }},
        {"GraphScene::createNewInterfaceNode()", allOrNothing,
         [](S& s) { s.out.madeNode.reset(s.scene.createNewInterfaceNode()); }},
        {"GraphScene::createNewPassThrough()", allOrNothing,
         [](S& s) { s.out.madeNode.reset(s.scene.createNewPassThrough()); }},
        {"GraphScene::createNewEvaluator()", allOrNothing,
         [](S& s) { s.out.madeNode.reset(s.scene.createNewEvaluator()); }},

        // Compounds
        {"GraphScene::moveNodesToCompound(ArrayOfPtr<GraphNodeBase, KS_NO> const&, GraphNodeBase*, "
         "std::map<KS_String, KS_String>&, std::map<GraphNodeBase*, GraphNodeBase*>&, "
         "std::map<GraphNodeBase*, GraphNodeBase*>&, ArrayOfPtr<GraphNodeBase, KS_NO>&, "
         "ArrayOfPtr<GraphNodePin, KS_NO>&, Array<GraphConnection, _Wa>&, ArrayOfPtr<GraphConnection, "
         "KS_NO>&, ArrayOfPtr<GraphConnection, KS_NO>&)",
         partsRemain,
         [](S& s)
         {
             s.out.number = s.scene.moveNodesToCompound(s.moved, &s.box, s.out.renames, s.out.inputs,
                                                        s.out.outputs, s.out.nodes, s.out.pins, s.out.values,
                                                        s.out.connections, s.out.otherConnections);
             EXPECT_EQ(s.other.getNodeOwner(), &s.box);
         }},
        {"GraphScene::removeNodesFromCompound(GraphNodeBase*, ArrayOfPtr<GraphNodeBase, KS_NO>&, "
         "std::map<KS_String, KS_String>&, Array<GraphConnection, _Wa>&, Array<GraphConnection, _Wa>&, "
         "ArrayOfPtr<GraphConnection, KS_NO>&, ArrayOfPtr<GraphConnection, KS_NO>&)",
         partsRemain,
         [](S& s)
         {
             s.out.number = s.scene.removeNodesFromCompound(&s.box, s.moveBack, s.out.renames, s.out.values,
                                                            s.out.otherValues, s.out.connections,
                                                            s.out.otherConnections);
             EXPECT_EQ(s.second.getNodeOwner(), &s.root);
         }},
        {"GraphScene::removeNodesFromCompoundCreatingInterfaces(GraphNodeBase*, ArrayOfPtr<GraphNodeBase, "
         "KS_NO>&, std::map<KS_String, KS_String>&, Array<GraphConnection, _Wa>&, Array<GraphConnection, "
         "_Wa>&, ArrayOfPtr<GraphConnection, KS_NO>&, ArrayOfPtr<GraphConnection, KS_NO>&, "
         "std::map<GraphNodeBase*, GraphNodeBase*>&, std::map<GraphNodeBase*, GraphNodeBase*>&, "
         "ArrayOfPtr<GraphNodeBase, KS_NO>&, ArrayOfPtr<GraphNodePin, KS_NO>&)",
         partsRemain,
         [](S& s)
         {
             s.out.number = s.scene.removeNodesFromCompoundCreatingInterfaces(
                 &s.box, s.moveBack, s.out.renames, s.out.values, s.out.otherValues, s.out.connections,
                 s.out.otherConnections, s.out.inputs, s.out.outputs, s.out.nodes, s.out.pins);
             EXPECT_EQ(s.second.getNodeOwner(), &s.root);
         }},
        {"GraphScene::addCompoundInterfaceNode(Flag<GraphNodePin, unsigned int> const&, GraphNodeBase*, "
         "GraphNodeBase*&, GraphNodePin*&, GraphNodePin*&)",
         partsRemain,
         [](S& s)
         {
             s.out.number =
                 s.scene.addCompoundInterfaceNode(PIN_INPUT, &s.box, s.out.node, s.out.pin, s.out.otherPin);
         }},
        {"GraphScene::addCompoundInterfacePin(Flag<GraphNodePin, unsigned int> const&, GraphNodeBase*, "
         "GraphNodePin*&, GraphNodePin*&)",
         partsRemain,
         [](S& s) {
             s.out.number =
                 s.scene.addCompoundInterfacePin(PIN_OUTPUT, s.interfaceNode, s.out.pin, s.out.otherPin);
         }},
        {"GraphScene::createCompoundPinForInterfacePin(GraphNodePin*)", allOrNothing,
         [](S& s)
         {
             s.out.pin = s.scene.createCompoundPinForInterfacePin(s.interfacePin);
             if (s.out.pin != nullptr) s.out.pin->setChildGraphNodePinPtr(nullptr);
             s.interfacePin->setParentGraphNodePinPtr(s.compoundPin);
         }},

        // Free ids and names
        {"GraphScene::getFreeNodeId()", allocatesNothing,
         [](S& s) { s.out.number = s.scene.getFreeNodeId(); }},
        {"GraphScene::getFreeNodeName(KS_String const&, KS_String const&)", allOrNothing,
         [](S& s) { s.out.text = s.scene.getFreeNodeName(s.boxName, s.name); }},
        {"GraphScene::getFreeNodeCompoundName(KS_String const&)", allOrNothing,
         [](S& s) { s.out.text = s.scene.getFreeNodeCompoundName(s.boxName); }},
        {"GraphScene::getFreeInterfaceNodeName(KS_String const&, Flag<GraphNodePin, unsigned int> const&)",
         allOrNothing, [](S& s) { s.out.text = s.scene.getFreeInterfaceNodeName(s.boxName, PIN_INPUT); }},
        {"GraphScene::getFreePinName(KS_String const&, KS_String const&)", allOrNothing,
         [](S& s) { s.out.text = s.scene.getFreePinName(s.otherName, s.taken); }},

        // Pins
        {"GraphScene::createNewPin(GraphNodeBase*, unsigned int const&, Flag<GraphNodePin, unsigned int> "
         "const&)",
         allOrNothing, [](S& s) { s.out.pin = s.scene.createNewPin(&s.other, 1, PIN_INPUT); }},
        {"GraphScene::createNewPin(unsigned int const&, Flag<GraphNodePin, unsigned int> const&)",
         allOrNothing, [](S& s) { s.out.madePin.reset(s.scene.createNewPin(1, PIN_INPUT)); }},
        {"GraphScene::addNodePin(GraphNodePin*)", allOrNothing,
         [](S& s) { s.out.number = s.scene.addNodePin(s.sparePin.get()); }},
        {"GraphScene::addNodePin(GraphNodeBase*, GraphNodePin*)", allOrNothing,
         [](S& s)
         {
             s.out.number = s.scene.addNodePin(&s.other, s.sparePin.get());
             static_cast<void>(s.sparePin.release());
         }},
        {"GraphScene::addNodePins(GraphNodeBase*, ArrayOfPtr<GraphNodePin, KS_NO> const&)", repeatCompletes,
         [](S& s)
         {
             s.out.number = s.scene.addNodePins(&s.other, s.pins);
             static_cast<void>(s.sparePin.release());
         }},
        {"GraphScene::removeNodePin(GraphNodePin*)", allOrNothing,
         [](S& s) { s.out.number = s.scene.removeNodePin(s.otherIn); }},
        {"GraphScene::removeNodePins(GraphNodeBase*)", repeatCompletes,
         [](S& s) { s.scene.removeNodePins(s.interfaceNode); }},
        // An interface pin may outlive its compound pin, and the compound knows it no more.
        {"GraphScene::removeNodePins(GraphNodeBase*)", partsRemain,
         [](S& s) { s.scene.removeNodePins(&s.box); }},
        {"GraphScene::removeNodePinFromSceneAndNode(GraphNodePin*)", repeatCompletes,
         [](S& s)
         {
             if (s.interfaceNode->hasPin(s.interfacePin))
                 s.scene.removeNodePinFromSceneAndNode(s.interfacePin);
         }},

        // Wiring
        {"GraphScene::createGraphConnection(GraphNodePin*, GraphNodePin*)", allOrNothing,
         [](S& s) { s.out.madeConnection.reset(s.scene.createGraphConnection(s.outsideOut, s.otherIn)); }},
        {"GraphScene::connect(GraphNodePin const*, GraphNodePin const*, bool const&)", allOrNothing,
         [](S& s) { s.out.connection = s.scene.connect(s.outsideOut, s.otherIn, false); }},
        {"GraphScene::connect(GraphNodePin const*, GraphNodeBase const*, bool const&)", allOrNothing,
         [](S& s) { s.out.connection = s.scene.connect(s.outsideOut, &s.other, false); }},
        {"GraphScene::connect(GraphNodeBase const*, GraphNodePin const*, bool const&)", allOrNothing,
         [](S& s) { s.out.connection = s.scene.connect(&s.outside, s.otherIn, false); }},
        {"GraphScene::connect(GraphNodeBase const*, GraphNodeBase const*, bool const&)", allOrNothing,
         [](S& s)
         {
             s.out.connection = s.scene.connect(static_cast<GraphNodeBase*>(&s.outside),
                                                static_cast<GraphNodeBase*>(&s.other), false);
         }},
        {"GraphScene::connectBase(GraphNodePin const*, GraphNodeBase const*, bool const&, bool const&)",
         allOrNothing,
         [](S& s) { s.out.connection = s.scene.connectBase(s.outsideOut, &s.other, true, true); }},
        {"GraphScene::removeConnection(GraphConnection const*)", allocatesNothing,
         [](S& s) { s.out.number = s.scene.removeConnection(s.fed); }},
        {"GraphScene::removeConnectionsWithNode(GraphNodeBase const*)", repeatCompletes,
         [](S& s) { s.out.number = s.scene.removeConnectionsWithNode(&s.box); }},
        {"GraphScene::removeConnectionsWithNode(unsigned int const&)", repeatCompletes,
         [](S& s) { s.out.number = s.scene.removeConnectionsWithNode(s.box.getId()); }},
        {"GraphScene::removeConnectionsWithPin(GraphNodePin const*)", repeatCompletes,
         [](S& s) { s.scene.removeConnectionsWithPin(s.outsideIn); }},
        {"GraphScene::removeConnectionsBetweenNodes(GraphNodeBase const*, GraphNodeBase const*, bool const&, "
         "bool const&)",
         repeatCompletes,
         [](S& s) { s.scene.removeConnectionsBetweenNodes(&s.box, &s.outside, true, true); }},
        {"GraphScene::removeAllConnections()", repeatCompletes,
         [](S& s) { s.out.number = s.scene.removeAllConnections(); }},
        {"GraphScene::refGraphConnections()", allocatesNothing, [](S& s) { s.scene.refGraphConnections(); }},
        {"GraphScene::setGraphConnections(ArrayOfPtr<GraphConnection, KS_NO> const&)", allOrNothing,
         [](S& s)
         {
             s.otherScene->setGraphConnections(s.connections);
             s.otherScene->refGraphConnections().clear();
         }},

        // What nodes and pins tell the scene
        {"GraphScene::updateNodeIdChange(GraphNodeBase*, unsigned int const&, unsigned int const&)",
         allocatesNothing,
         [](S& s) { s.scene.updateNodeIdChange(&s.other, s.other.getId(), s.other.getId()); }},
        {"GraphScene::updateRenamedNodeInMapByFullName(GraphNodeBase*, KS_String const&, KS_String const&)",
         allOrNothing,
         [](S& s) { s.scene.updateRenamedNodeInMapByFullName(&s.other, s.childName, s.childName); }},
        {"GraphScene::updateReparentedNodeInMapByFullName(GraphNodeBase*, KS_String const&, KS_String "
         "const&)",
         allOrNothing,
         [](S& s) { s.scene.updateReparentedNodeInMapByFullName(&s.box, s.boxName, s.boxName); }},
        {"GraphScene::updateRenamedPinInMapByFullName(KS_String const&, KS_String const&)", allOrNothing,
         [](S& s) { s.scene.updateRenamedPinInMapByFullName(s.otherInName, s.otherInName); }},

        // The registry's maps
        {"GraphScene::insertNodeInMapById(unsigned int const&, GraphNodeBase*)", allOrNothing,
         [](S& s) { s.out.number = s.scene.insertNodeInMapById(s.spare.getId(), &s.spare); }},
        {"GraphScene::insertPinInMapById(unsigned int const&, GraphNodePin*)", allOrNothing,
         [](S& s) { s.out.number = s.scene.insertPinInMapById(s.sparePin->getId(), s.sparePin.get()); }},
        {"GraphScene::insertPinInMapByFullName(KS_String const&, GraphNodePin*)", repeatCompletes,
         [](S& s)
         {
             s.scene.insertPinInMapById(s.sparePin->getId(), s.sparePin.get());
             s.out.number = s.scene.insertPinInMapByFullName(s.spareName, s.sparePin.get());
         }},
        {"GraphScene::removeNodeFromMapById(unsigned int const&)", allocatesNothing,
         [](S& s) { s.scene.removeNodeFromMapById(s.empty.getId()); }},
        {"GraphScene::removePinFromMapById(unsigned int const&)", allocatesNothing,
         [](S& s) { s.scene.removePinFromMapById(s.otherIn->getId()); }},
        {"GraphScene::removePinFromMapByFullName(KS_String const&)", allocatesNothing,
         [](S& s) { s.scene.removePinFromMapByFullName(s.otherInName); }},

        // Adjacency counts
        {"GraphScene::addConnectionToAdjacencyMaps(GraphConnection const*)", allOrNothing,
         [](S& s)
         {
             s.scene.setUseAdjacencyMap(false);
             GraphConnection const back(s.outsideOut, s.otherIn);
             s.scene.addConnectionToAdjacencyMaps(&back);
         }},
        {"GraphScene::removeConnectionFromAdjacencyMaps(GraphConnection const*)", allocatesNothing,
         [](S& s)
         {
             s.scene.setUseAdjacencyMap(false);
             s.scene.removeConnectionFromAdjacencyMaps(s.fed);
         }},
        {"GraphScene::isConnectionInAdjacencyMap(GraphNodeBase const*, GraphNodeBase const*, bool const&, "
         "bool const&) const",
         allocatesNothing,
         [](S& s) { s.out.number = s.scene.isConnectionInAdjacencyMap(&s.box, &s.outside, true, true); }},
        {"GraphScene::nodeHasConnectionsInAdjacencyMap(GraphNodeBase const*, bool const&, bool const&, bool "
         "const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.nodeHasConnectionsInAdjacencyMap(&s.box, true, true, true); }},
        {"GraphScene::nodeHasConnectionsInAdjacencyMapAsSource(GraphNodeBase const*, bool const&, bool "
         "const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.nodeHasConnectionsInAdjacencyMapAsSource(&s.box, true, true); }},
        {"GraphScene::nodeHasConnectionsInAdjacencyMapAsTarget(GraphNodeBase const*, bool const&, bool "
         "const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.scene.nodeHasConnectionsInAdjacencyMapAsTarget(&s.box, true, true); }},
        {"GraphScene::getNumberOfConnectionsInAdjacencyMap(GraphNodeBase const*, GraphNodeBase const*, bool "
         "const&, bool const&) const",
         allocatesNothing,
         [](S& s)
         { s.out.number = s.scene.getNumberOfConnectionsInAdjacencyMap(&s.box, &s.outside, true, true); }},
    };
}

std::vector<Operation<BusySceneSubject>> busySceneOperations()
{
    using B = BusySceneSubject;
    return {
        {"GraphScene::removeConnection(GraphConnection const*)", allOrNothing,
         [](B& b) { b.out.number = b.scene.removeConnection(b.hubOut->getOutputConnections()[7]); }},
        {"GraphScene::connect(GraphNodePin const*, GraphNodePin const*, bool const&)", allOrNothing,
         [](B& b) { b.out.connection = b.scene.connect(b.hubOut, b.sinkIn, false); }},
        {"GraphScene::removeAllConnections()", repeatCompletes,
         [](B& b) { b.out.number = b.scene.removeAllConnections(); }},
        {"GraphScene::removeConnectionsWithPin(GraphNodePin const*)", repeatCompletes,
         [](B& b) { b.scene.removeConnectionsWithPin(b.hubOut); }},
        {"GraphScene::removeConnectionsBetweenNodes(GraphNodeBase const*, GraphNodeBase const*, bool const&, "
         "bool const&)",
         repeatCompletes,
         [](B& b) { b.scene.removeConnectionsBetweenNodes(&b.hub, &b.outside, true, false); }},
        {"GraphScene::getConnectionsInvolvingOnlyNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const&, bool const&, "
         "bool const&, ArrayOfPtr<GraphConnection, KS_NO>&) const",
         allOrNothing,
         [](B& b) {
             b.out.number = b.scene.getConnectionsInvolvingOnlyNodes(b.moved, true, true, b.out.connections);
         }},
        {"GraphScene::removeNodePins(GraphNodeBase*)", repeatCompletes,
         [](B& b) { b.scene.removeNodePins(&b.hub); }},
    };
}

} // namespace kestrel::graph::test
