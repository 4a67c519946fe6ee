#include "SceneSubject.h"

namespace kestrel::graph::test
{

std::vector<Operation<SceneSubject>> nodeOperations()
{
    using S = SceneSubject;
    using enum Promise;
    return {
        {"GraphNodeBase::GraphNodeBase()", allocatesNothing, [](S&) { GraphNodeBase const node; }},
        {"GraphNodeBase::GraphNodeBase(unsigned int const&)", allocatesNothing,
         [](S& s) { GraphNodeBase const node(s.box.getId()); }},
        {"GraphNodeBase::GraphNodeBase(GraphNodeBase const&)", allOrNothing,
         [](S& s) { s.out.madeNode = std::make_unique<GraphNodeBase>(s.box); }},
        {"GraphNodeBase::operator=(GraphNodeBase const&)", repeatCompletes,
         [](S& s) { *s.copiedNode = s.empty; }},
        {"GraphNodeBase::~GraphNodeBase()", allocatesNothing, [](S& s) { s.copiedNode.reset(); }},
        {"GraphNodeBase::operator==(GraphNodeBase const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.box.GraphNodeBase::operator==(s.inner); }},

        // Identity
        {"GraphNodeBase::isValid() const", allocatesNothing, [](S& s) { s.out.number = s.box.isValid(); }},
        {"GraphNodeBase::isCompound() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isCompound(); }},
        {"GraphNodeBase::isEvaluator() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isEvaluator(); }},
        {"GraphNodeBase::isPassThroughFamily() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isPassThroughFamily(); }},
        {"GraphNodeBase::isGroup() const", allocatesNothing, [](S& s) { s.out.number = s.box.isGroup(); }},
        {"GraphNodeBase::isPassThrough() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isPassThrough(); }},
        {"GraphNodeBase::isIterator() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isIterator(); }},
        {"GraphNodeBase::setCompound(bool const&)", allocatesNothing, [](S& s) { s.box.setCompound(true); }},
        {"GraphNodeBase::isInputInterface() const", allocatesNothing,
         [](S& s) { s.out.number = s.inputInterface->isInputInterface(); }},
        {"GraphNodeBase::isOutputInterface() const", allocatesNothing,
         [](S& s) { s.out.number = s.interfaceNode->isOutputInterface(); }},
        {"GraphNodeBase::isInterface() const", allocatesNothing,
         [](S& s) { s.out.number = s.interfaceNode->isInterface(); }},
        {"GraphNodeBase::setInterface(bool const&)", allocatesNothing,
         [](S& s) { s.empty.setInterface(true); }},
        {"GraphNodeBase::isSameNodeAs(GraphNodeBase const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isSameNodeAs(s.box); }},
        {"GraphNodeBase::isEditable() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isEditable(); }},
        {"GraphNodeBase::isUpdating() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isUpdating(); }},
        {"GraphNodeBase::isWorkflowFamily() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.isWorkflowFamily(); }},
        {"GraphNodeBase::update()", allocatesNothing, [](S& s) { s.box.update(); }},
        {"GraphNodeBase::update_notCleaning()", allocatesNothing, [](S& s) { s.box.update_notCleaning(); }},
        {"GraphNodeBase::getNumberOfThreads() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.getNumberOfThreads(); }},
        {"GraphNodeBase::setNumberOfThreads(unsigned int const&)", allocatesNothing,
         [](S& s) { s.box.setNumberOfThreads(4); }},
        {"GraphNodeBase::onAddingToScene()", allocatesNothing, [](S& s) { s.box.onAddingToScene(); }},
        {"GraphNodeBase::onRemovingFromScene()", allocatesNothing, [](S& s) { s.box.onRemovingFromScene(); }},
        {"GraphNodeBase::getId() const", allocatesNothing, [](S& s) { s.out.number = s.box.getId(); }},
        {"GraphNodeBase::setId(unsigned int const&)", allOrNothing,
         [](S& s)
         {
             s.scene.setUseAdjacencyMap(false);
             s.other.setId(500);
         }},
        {"GraphNodeBase::getGraphScene() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.getGraphScene() != nullptr; }},
        {"GraphNodeBase::setGraphScene(GraphScene*)", allocatesNothing,
         [](S& s) { s.spare.setGraphScene(&s.scene); }},

        // Texts
        {"GraphNodeBase::getFullName()", allOrNothing, [](S& s) { s.out.text = s.inner.getFullName(); }},
        {"GraphNodeBase::getName()", allOrNothing, [](S& s) { s.out.text = s.inner.getName(); }},
        {"GraphNodeBase::setName(KS_String const&)", allOrNothing, [](S& s) { s.box.setName(s.name); }},
        {"GraphNodeBase::getInfo()", allOrNothing, [](S& s) { s.out.text = s.inner.getInfo(); }},
        {"GraphNodeBase::getDescription()", allOrNothing, [](S& s) { s.out.text = s.root.getDescription(); }},
        {"GraphNodeBase::setDescription(KS_String const&)", allOrNothing,
         [](S& s) { s.box.setDescription(s.name); }},
        {"GraphNodeBase::getType()", allOrNothing, [](S& s) { s.out.text = s.root.getType(); }},
        {"GraphNodeBase::setType(KS_String const&)", allOrNothing, [](S& s) { s.box.setType(s.name); }},
        {"GraphNodeBase::getCategory() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.getCategory().isEmpty(); }},
        {"GraphNodeBase::setCategory(KS_String const&)", allOrNothing,
         [](S& s) { s.box.setCategory(s.name); }},
        {"GraphNodeBase::asHTML()", allOrNothing, [](S& s) { s.out.text = s.root.asHTML(); }},
        {"GraphNodeBase::toXml()", allOrNothing, [](S& s) { s.out.text = s.box.toXml(); }},
        {"GraphNodeBase::getFreeNodeNameLikeThis(KS_String const&, GraphNodeBase*)", allOrNothing,
         [](S& s) { s.out.text = s.root.getFreeNodeNameLikeThis(s.childName, &s.box); }},
        {"GraphNodeBase::getFreePinNameLikeThis(KS_String const&)", allOrNothing,
         [](S& s) { s.out.text = s.other.getFreePinNameLikeThis(s.taken); }},

        // Messages
        {"GraphNodeBase::hasErrors() const", allOrNothing, [](S& s) { s.out.number = s.box.hasErrors(); }},
        {"GraphNodeBase::hasWarnings() const", allOrNothing,
         [](S& s) { s.out.number = s.box.hasWarnings(); }},
        {"GraphNodeBase::hasMessages() const", allOrNothing,
         [](S& s) { s.out.number = s.box.hasMessages(); }},
        {"GraphNodeBase::getMessages() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.getMessages().getNumberOfMessages(); }},
        {"GraphNodeBase::getMessages(Array<Message, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.box.getMessages(s.out.messages); }},
        {"GraphNodeBase::refMessages()", allocatesNothing,
         [](S& s) { s.out.number = s.box.refMessages().getNumberOfMessages(); }},
        {"GraphNodeBase::clearMessages()", allocatesNothing, [](S& s) { s.box.clearMessages(); }},
        {"GraphNodeBase::getMessagesAsStrings(Array<KS_String, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.box.getMessagesAsStrings(s.out.texts); }},

        // Pins
        {"GraphNodeBase::hasPin(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.inner.hasPin(s.innerIn); }},
        {"GraphNodeBase::getPins(Flag<GraphNodePin, unsigned int> const&, ArrayOfPtr<GraphNodePin, KS_NO>&) "
         "const",
         allOrNothing, [](S& s) { s.out.number = s.box.getPins(PIN_OUTPUT, s.out.pins); }},
        {"GraphNodeBase::getInputPins(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allOrNothing,
         [](S& s) { s.out.number = s.box.getInputPins(s.out.pins); }},
        {"GraphNodeBase::getOutputPins(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allOrNothing,
         [](S& s) { s.out.number = s.box.getOutputPins(s.out.pins); }},
        {"GraphNodeBase::hasInputPins() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.hasInputPins(); }},
        {"GraphNodeBase::hasOutputPins() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.hasOutputPins(); }},
        {"GraphNodeBase::getPinByName(KS_String const&) const", allOrNothing,
         [](S& s) { s.out.pin = s.inner.getPinByName(s.taken); }},
        {"GraphNodeBase::hasPinWithName(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.out.number = s.inner.hasPinWithName(s.name, true); }},
        {"GraphNodeBase::getNotConnectedPins(Flag<GraphNodePin, unsigned int> const&, "
         "ArrayOfPtr<GraphNodePin, KS_NO>&)",
         allOrNothing, [](S& s) { s.out.number = s.outside.getNotConnectedPins(PIN_OUTPUT, s.out.pins); }},
        {"GraphNodeBase::getConnectedPins(Flag<GraphNodePin, unsigned int> const&, ArrayOfPtr<GraphNodePin, "
         "KS_NO>&)",
         allOrNothing, [](S& s) { s.out.number = s.outside.getConnectedPins(PIN_INPUT, s.out.pins); }},
        {"GraphNodeBase::getAllChildNodePins(ArrayOfPtr<GraphNodePin, KS_NO>&, bool const&) const",
         allOrNothing, [](S& s) { s.out.number = s.root.getAllChildNodePins(s.out.pins, true); }},
        {"GraphNodeBase::dynamicPinsAllowed() const", allocatesNothing,
         [](S& s) { s.out.number = s.box.dynamicPinsAllowed(); }},
        {"GraphNodeBase::addDynamicInputPin()", allOrNothing,
         [](S& s) { s.out.pin = s.other.addDynamicInputPin(); }},
        {"GraphNodeBase::addDynamicOutputPin()", allOrNothing,
         [](S& s) { s.out.pin = s.other.addDynamicOutputPin(); }},
        {"GraphNodeBase::addNodePin(GraphNodePin*)", allOrNothing,
         [](S& s)
         {
             s.out.number = s.empty.addNodePin(s.sparePin.get());
             static_cast<void>(s.sparePin.release());
         }},
        {"GraphNodeBase::addPinToList(GraphNodePin*)", allOrNothing,
         [](S& s)
         {
             s.unlistedPin->setParentGraphNodePtr(&s.empty);
             s.empty.addPinToList(s.unlistedPin.get());
             static_cast<void>(s.unlistedPin.release());
         }},
        {"GraphNodeBase::removeNodePin(GraphNodePin*)", allocatesNothing,
         [](S& s)
         {
             s.scene.removePinFromMapByFullName(s.otherInName);
             s.out.number = s.other.removeNodePin(s.otherIn);
             s.out.madePin.reset(s.otherIn);
         }},
        {"GraphNodeBase::removePinFromList(GraphNodePin*)", allocatesNothing,
         [](S& s)
         {
             s.scene.removePinFromMapByFullName(s.otherInName);
             s.out.number = s.other.removePinFromList(s.otherIn);
             s.out.madePin.reset(s.otherIn);
         }},
        {"GraphNodeBase::destroyNodePins()", allocatesNothing, [](S& s) { s.detached.destroyNodePins(); }},
        {"GraphNodeBase::refNodePins()", allocatesNothing,
         [](S& s) { s.out.number = s.box.refNodePins().size(); }},
        {"GraphNodeBase::setNodePins(ArrayOfPtr<GraphNodePin, KS_NO> const&)", allOrNothing,
         [](S& s) { s.copiedNode->setNodePins(s.pins); }},
        {"GraphNodeBase::reorderInputPins(Array<KS_String, _Wa> const&)", allOrNothing,
         [](S& s) { s.outside.reorderInputPins(s.pinNames); }},
        {"GraphNodeBase::reorderOutputPins(Array<KS_String, _Wa> const&)", allOrNothing,
         [](S& s) { s.outside.reorderOutputPins(s.pinNames); }},

        // Wiring rules
        {"GraphNodeBase::allowsConnectionFrom(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.outside.allowsConnectionFrom(s.otherOut); }},
        {"GraphNodeBase::allowsConnectionFrom(GraphNodePin const*, ArrayOfPtr<GraphNodePin, KS_NO>&) const",
         allOrNothing, [](S& s) { s.out.number = s.outside.allowsConnectionFrom(s.otherOut, s.out.pins); }},
        {"GraphNodeBase::allowsConnectionFrom(GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.outside.allowsConnectionFrom(static_cast<GraphNodeBase*>(&s.other)); }},
        {"GraphNodeBase::allowsConnectionFrom(GraphNodeBase const*, ArrayOfPtr<GraphNodePin, KS_NO>&) const",
         allOrNothing, [](S& s) { s.out.number = s.outside.allowsConnectionFrom(&s.other, s.out.pins); }},
        {"GraphNodeBase::allowsConnectionTo(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.outside.allowsConnectionTo(s.otherIn); }},
        {"GraphNodeBase::allowsConnectionTo(GraphNodePin const*, ArrayOfPtr<GraphNodePin, KS_NO>&) const",
         allOrNothing, [](S& s) { s.out.number = s.outside.allowsConnectionTo(s.otherIn, s.out.pins); }},
        {"GraphNodeBase::allowsConnectionTo(GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.outside.allowsConnectionTo(static_cast<GraphNodeBase*>(&s.other)); }},
        {"GraphNodeBase::allowsConnectionTo(GraphNodeBase const*, ArrayOfPtr<GraphNodePin, KS_NO>&) const",
         allOrNothing, [](S& s) { s.out.number = s.outside.allowsConnectionTo(&s.other, s.out.pins); }},

        // The tree
        {"GraphNodeBase::getNodeOwner() const", allocatesNothing,
         [](S& s) { s.out.node = s.inner.getNodeOwner(); }},
        {"GraphNodeBase::isRoot() const", allocatesNothing, [](S& s) { s.out.number = s.inner.isRoot(); }},
        {"GraphNodeBase::isOwnedByNode(GraphNodeBase*, bool const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.inner.isOwnedByNode(&s.root, true); }},
        {"GraphNodeBase::getNodeByName(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.out.node = s.root.getNodeByName(s.childName, false); }},
        {"GraphNodeBase::getNodesRecursively(ArrayOfPtr<GraphNodeBase, KS_NO>&)", allOrNothing,
         [](S& s) { s.out.number = s.root.getNodesRecursively(s.out.nodes); }},
        {"GraphNodeBase::getCompoundNodes(ArrayOfPtr<GraphNodeBase, KS_NO>&)", allOrNothing,
         [](S& s) { s.out.number = s.root.getCompoundNodes(s.out.nodes); }},
        {"GraphNodeBase::getNodes() const", allocatesNothing,
         [](S& s) { s.out.number = s.root.getNodes().size(); }},
        {"GraphNodeBase::refNodes()", allocatesNothing,
         [](S& s) { s.out.number = s.root.refNodes().size(); }},
        {"GraphNodeBase::setNodes(ArrayOfPtr<GraphNodeBase, KS_NO> const&)", allOrNothing,
         [](S& s)
         {
             s.copiedNode->setNodes(s.moved);
             s.copiedNode->clearNodesArray();
         }},
        {"GraphNodeBase::addNode(GraphNodeBase*)", allOrNothing, [](S& s) { s.outside.addNode(&s.inner); }},
        {"GraphNodeBase::addNode(GraphNodeBase*)", allOrNothing, [](S& s) { s.outside.addNode(&s.box); }},
        {"GraphNodeBase::setNodeOwner(GraphNodeBase*)", allOrNothing,
         [](S& s) { s.box.setNodeOwner(&s.outside); }},
        {"GraphNodeBase::setNodeOwner(GraphNodeBase*)", allOrNothing,
         [](S& s) { s.detached.setNodeOwner(&s.root); }},
        {"GraphNodeBase::setNodeOwner(GraphNodeBase*)", allOrNothing,
         [](S& s) { s.spare.setNodeOwner(&s.detached); }},
        {"GraphNodeBase::setNodeOwner(GraphNodeBase*)", allocatesNothing,
         [](S& s) { s.empty.setNodeOwner(nullptr); }},
        {"GraphNodeBase::setNodeOwnerBase(GraphNodeBase*)", allocatesNothing,
         [](S& s)
         {
             s.spare.setNodeOwnerBase(&s.root);
             s.spare.setNodeOwnerBase(nullptr);
         }},
        {"GraphNodeBase::addNodeToNodesList(GraphNodeBase*)", allOrNothing,
         [](S& s) { s.empty.addNodeToNodesList(&s.unlisted); }},
        {"GraphNodeBase::removeNode(GraphNodeBase*)", allocatesNothing,
         [](S& s) { s.box.removeNode(&s.empty); }},
        {"GraphNodeBase::removeNodeFromNodesList(GraphNodeBase*)", allocatesNothing,
         [](S& s)
         {
             s.box.removeNodeFromNodesList(&s.empty);
             s.empty.setNodeOwnerBase(nullptr);
         }},
        {"GraphNodeBase::clearNodesArray()", allocatesNothing, [](S& s) { s.copiedNode->clearNodesArray(); }},

        // Connections
        {"GraphNodeBase::getConnections(ArrayOfPtr<GraphConnection, KS_NO>&, bool const&, bool const&, bool "
         "const&, bool const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.box.getConnections(s.out.connections, true, true, true, true); }},
        {"GraphNodeBase::getConnectionsWithNode(GraphNodeBase const*, ArrayOfPtr<GraphConnection, KS_NO>&, "
         "bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s)
         { s.out.number = s.box.getConnectionsWithNode(&s.outside, s.out.connections, true, true, true); }},
        {"GraphNodeBase::hasConnectionsWithNode(GraphNodeBase const*, bool const&, bool const&) const",
         allOrNothing, [](S& s) { s.out.number = s.box.hasConnectionsWithNode(&s.outside, true, true); }},
        {"GraphNodeBase::getInternalConnections(Array<GraphConnection, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.inner.getInternalConnections(s.out.values); }},
        {"GraphNodeBase::getInternalConnectionsForPainting(Array<GraphConnection, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.inner.getInternalConnectionsForPainting(s.out.values); }},
    };
}

} // namespace kestrel::graph::test
