#include "SceneSubject.h"

namespace kestrel::graph::test
{

std::vector<Operation<SceneSubject>> pinOperations()
{
    using S = SceneSubject;
    using enum Promise;
    return {
        {"GraphNodePin::GraphNodePin()", allOrNothing,
         [](S& s) { s.out.madePin = std::make_unique<GraphNodePin>(); }},
        {"GraphNodePin::GraphNodePin(GraphNodeBase*, unsigned int const&, Flag<GraphNodePin, unsigned int> "
         "const&)",
         allOrNothing, [](S& s) { s.out.madePin = std::make_unique<GraphNodePin>(nullptr, 1u, PIN_INPUT); }},
        {"GraphNodePin::GraphNodePin(GraphNodePin const&)", allOrNothing,
         [](S& s) { s.out.madePin = std::make_unique<GraphNodePin>(*s.outsideIn); }},
        {"GraphNodePin::operator=(GraphNodePin const&)", repeatCompletes,
         [](S& s) { *s.sparePin = *s.outsideIn; }},
        {"GraphNodePin::~GraphNodePin()", allocatesNothing, [](S& s) { s.unlistedPin.reset(); }},

        // Kinds
        {"GraphNodePin::isCompoundPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.compoundPin->isCompoundPin(); }},
        {"GraphNodePin::isInterfacePin() const", allocatesNothing,
         [](S& s) { s.out.number = s.interfacePin->isInterfacePin(); }},
        {"GraphNodePin::isEvaluatorPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isEvaluatorPin(); }},
        {"GraphNodePin::isPassThroughPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isPassThroughPin(); }},
        {"GraphNodePin::isDirty() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isDirty(); }},
        {"GraphNodePin::isEditable() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isEditable(); }},
        {"GraphNodePin::isDynamic() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isDynamic(); }},
        {"GraphNodePin::isUpdating() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isUpdating(); }},
        {"GraphNodePin::isBidirectionalPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isBidirectionalPin(); }},
        {"GraphNodePin::update()", allocatesNothing, [](S& s) { s.innerIn->update(); }},

        // Fields
        {"GraphNodePin::getParentGraphNodePtr() const", allocatesNothing,
         [](S& s) { s.out.node = s.innerIn->getParentGraphNodePtr(); }},
        {"GraphNodePin::setParentGraphNodePtr(GraphNodeBase*)", allocatesNothing,
         [](S& s) { s.unlistedPin->setParentGraphNodePtr(&s.spare); }},
        {"GraphNodePin::getChildGraphNodePinPtr() const", allocatesNothing,
         [](S& s) { s.out.pin = s.compoundPin->getChildGraphNodePinPtr(); }},
        {"GraphNodePin::setChildGraphNodePinPtr(GraphNodePin*)", allocatesNothing,
         [](S& s) { s.sparePin->setChildGraphNodePinPtr(s.innerIn); }},
        {"GraphNodePin::getChildInterfaceNodePtr() const", allocatesNothing,
         [](S& s) { s.out.node = s.compoundPin->getChildInterfaceNodePtr(); }},
        {"GraphNodePin::getParentGraphNodePinPtr() const", allocatesNothing,
         [](S& s) { s.out.pin = s.interfacePin->getParentGraphNodePinPtr(); }},
        {"GraphNodePin::setParentGraphNodePinPtr(GraphNodePin*)", allocatesNothing,
         [](S& s) { s.sparePin->setParentGraphNodePinPtr(s.innerIn); }},
        {"GraphNodePin::getParentGraphScenePtr() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->getParentGraphScenePtr() == &s.scene; }},
        {"GraphNodePin::getBorderColor()", allocatesNothing,
         [](S& s) { s.out.color = s.innerIn->getBorderColor(); }},
        {"GraphNodePin::getColor()", allocatesNothing, [](S& s) { s.out.color = s.innerIn->getColor(); }},
        {"GraphNodePin::setBorderColor(Color4<float> const&)", allocatesNothing,
         [](S& s) { s.innerIn->setBorderColor(s.out.color); }},
        {"GraphNodePin::setColor(Color4<float> const&)", allocatesNothing,
         [](S& s) { s.innerIn->setColor(s.out.color); }},

        // Texts
        {"GraphNodePin::getName()", allOrNothing, [](S& s) { s.out.text = s.innerIn->getName(); }},
        {"GraphNodePin::getFullName()", allOrNothing, [](S& s) { s.out.text = s.innerIn->getFullName(); }},
        {"GraphNodePin::setName(KS_String const&)", allOrNothing, [](S& s) { s.outsideIn->setName(s.name); }},
        {"GraphNodePin::setName(KS_String const&)", allOrNothing,
         [](S& s) { s.interfacePin->setName(s.name); }},
        {"GraphNodePin::setName(KS_String const&)", allOrNothing, [](S& s) { s.sparePin->setName(s.name); }},
        {"GraphNodePin::toXml()", allOrNothing, [](S& s) { s.out.text = s.innerIn->toXml(); }},
        {"GraphNodePin::getInfo()", allOrNothing, [](S& s) { s.out.text = s.innerIn->getInfo(); }},
        {"GraphNodePin::getDescription()", allOrNothing,
         [](S& s) { s.out.text = s.innerIn->getDescription(); }},
        {"GraphNodePin::asHTML()", allOrNothing, [](S& s) { s.out.text = s.innerIn->asHTML(); }},

        // Wiring
        {"GraphNodePin::allowsConnectionFrom(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->allowsConnectionFrom(s.otherOut); }},
        {"GraphNodePin::allowsConnectionTo(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.otherOut->allowsConnectionTo(s.innerIn); }},
        {"GraphNodePin::isConnected() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->isConnected(); }},
        {"GraphNodePin::isFull() const", allocatesNothing, [](S& s) { s.out.number = s.innerIn->isFull(); }},
        {"GraphNodePin::addInputConnection(GraphConnection*)", allOrNothing,
         [](S& s) { s.sparePin->addInputConnection(s.spareConnection.get()); }},
        {"GraphNodePin::addOutputConnection(GraphConnection*)", allOrNothing,
         [](S& s) { s.unlistedPin->addOutputConnection(s.spareConnection.get()); }},
        {"GraphNodePin::removeInputConnection(GraphConnection*)", allocatesNothing,
         [](S& s) { s.sparePin->removeInputConnection(s.spareConnection.get()); }},
        {"GraphNodePin::removeOutputConnection(GraphConnection*)", allocatesNothing,
         [](S& s) { s.unlistedPin->removeOutputConnection(s.spareConnection.get()); }},
        {"GraphNodePin::refInputConnections()", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->refInputConnections().size(); }},
        {"GraphNodePin::refOutputConnections()", allocatesNothing,
         [](S& s) { s.out.number = s.innerOut->refOutputConnections().size(); }},
        {"GraphNodePin::setInputConnections(ArrayOfPtr<GraphConnection, KS_NO> const&)", allOrNothing,
         [](S& s) { s.sparePin->setInputConnections(s.connections); }},
        {"GraphNodePin::setOutputConnections(ArrayOfPtr<GraphConnection, KS_NO> const&)", allOrNothing,
         [](S& s) { s.sparePin->setOutputConnections(s.connections); }},

        // Internal connections
        {"GraphNodePin::allowsInternalConnections() const", allOrNothing,
         [](S& s) { s.out.number = s.innerIn->allowsInternalConnections(); }},
        {"GraphNodePin::hasInternalConnections() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->hasInternalConnections(); }},
        {"GraphNodePin::allowsNewOrRemovalOfInternalConnections() const", allocatesNothing,
         [](S& s) { s.out.number = s.innerIn->allowsNewOrRemovalOfInternalConnections(); }},
        {"GraphNodePin::internalConnections(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allOrNothing,
         [](S& s) { s.out.number = s.innerIn->internalConnections(s.out.pins); }},
        {"GraphNodePin::allowedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allOrNothing,
         [](S& s) { s.out.number = s.innerIn->allowedInternalConnections(s.out.pins); }},
        {"GraphNodePin::forcedInternalConnection() const", allocatesNothing,
         [](S& s) { s.out.pin = s.innerIn->forcedInternalConnection(); }},
        {"GraphNodePin::forcedInternalConnections(ArrayOfPtr<GraphNodePin, KS_NO>&) const", allocatesNothing,
         [](S& s) { s.innerIn->forcedInternalConnections(s.out.pins); }},
        {"GraphNodePin::addInternalConnection(GraphNodePin*)", allOrNothing,
         [](S& s) { s.innerIn->addInternalConnection(s.innerOut); }},
        {"GraphNodePin::removeInternalConnection(GraphNodePin*)", allOrNothing,
         [](S& s) { s.innerIn->removeInternalConnection(s.innerOut); }},

        // Questions about connections
        {"GraphNodePin::getNumConnections() const", allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->getNumConnections(); }},
        {"GraphNodePin::getNumConnections(Flag<GraphNodePin, unsigned int> const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->getNumConnections(PIN_INPUT); }},
        {"GraphNodePin::hasConnections() const", allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->hasConnections(); }},
        {"GraphNodePin::hasConnections(Flag<GraphNodePin, unsigned int> const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->hasConnections(PIN_INPUT); }},
        {"GraphNodePin::getConnections(ArrayOfPtr<GraphConnection, KS_NO>&, bool const&) const", allOrNothing,
         [](S& s) { s.out.number = s.outsideIn->getConnections(s.out.connections, false); }},
        {"GraphNodePin::getConnections(Flag<GraphNodePin, unsigned int> const&, ArrayOfPtr<GraphConnection, "
         "KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s) { s.out.number = s.outsideIn->getConnections(PIN_INPUT, s.out.connections, true); }},
        {"GraphNodePin::getConnectionsWithPin(GraphNodePin const*, ArrayOfPtr<GraphConnection, KS_NO>&, bool "
         "const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s) {
             s.out.number =
                 s.outsideIn->getConnectionsWithPin(s.compoundPin, s.out.connections, true, true, true);
         }},
        {"GraphNodePin::getInputConnectionsWithPin(GraphNodePin const*, ArrayOfPtr<GraphConnection, KS_NO>&, "
         "bool const&) const",
         allOrNothing,
         [](S& s)
         { s.out.number = s.outsideIn->getInputConnectionsWithPin(s.compoundPin, s.out.connections, true); }},
        {"GraphNodePin::getOutputConnectionsWithPin(GraphNodePin const*, ArrayOfPtr<GraphConnection, "
         "KS_NO>&, bool const&) const",
         allOrNothing,
         [](S& s) {
             s.out.number = s.compoundPin->getOutputConnectionsWithPin(s.outsideIn, s.out.connections, true);
         }},
        {"GraphNodePin::getConnectionsWithNode(GraphNodeBase const*, ArrayOfPtr<GraphConnection, KS_NO>&, "
         "bool const&, bool const&, bool const&) const",
         allOrNothing,
         [](S& s) {
             s.out.number = s.outsideIn->getConnectionsWithNode(&s.box, s.out.connections, true, true, true);
         }},
        {"GraphNodePin::hasConnectionsWithPin(GraphNodePin const*, bool const&, bool const&, bool const&) "
         "const",
         allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->hasConnectionsWithPin(s.compoundPin, true, true, true); }},
        {"GraphNodePin::hasInputConnectionsWithPin(GraphNodePin const*, bool const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->hasInputConnectionsWithPin(s.compoundPin, true); }},
        {"GraphNodePin::hasOutputConnectionsWithPin(GraphNodePin const*, bool const&) const",
         allocatesNothing,
         [](S& s) { s.out.number = s.compoundPin->hasOutputConnectionsWithPin(s.outsideIn, true); }},
        {"GraphNodePin::hasConnectionsWithNode(GraphNodeBase const*, bool const&, bool const&, bool const&) "
         "const",
         allocatesNothing,
         [](S& s) { s.out.number = s.outsideIn->hasConnectionsWithNode(&s.box, true, true, true); }},
    };
}

std::vector<Operation<SceneSubject>> connectionOperations()
{
    using S = SceneSubject;
    using enum Promise;
    return {
        {"GraphConnection::GraphConnection()", allocatesNothing,
         [](S&) { GraphConnection const connection; }},
        {"GraphConnection::GraphConnection(GraphNodePin*, GraphNodePin*)", allocatesNothing,
         [](S& s) { GraphConnection const connection(s.innerOut, s.outsideIn); }},
        {"GraphConnection::GraphConnection(GraphConnection const&)", allocatesNothing,
         [](S& s) { GraphConnection const connection(*s.fed); }},
        {"GraphConnection::operator=(GraphConnection const&)", allocatesNothing,
         [](S& s) { *s.spareConnection = *s.fed; }},
        {"GraphConnection::~GraphConnection()", allocatesNothing, [](S& s) { s.spareConnection.reset(); }},
        {"GraphConnection::operator==(GraphConnection const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->GraphConnection::operator==(*s.spareConnection); }},
        {"GraphConnection::isSameAs(GraphConnection const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isSameAs(*s.spareConnection); }},
        {"GraphConnection::isConnected() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnected(); }},
        {"GraphConnection::isConnectedPin(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedPin(s.outsideIn); }},
        {"GraphConnection::isConnectedPinSource(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedPinSource(s.outsideIn); }},
        {"GraphConnection::isConnectedPinTarget(GraphNodePin const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedPinTarget(s.outsideIn); }},
        {"GraphConnection::isLoop() const", allocatesNothing, [](S& s) { s.out.number = s.fed->isLoop(); }},
        {"GraphConnection::isNodeLoop() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isNodeLoop(); }},
        {"GraphConnection::isSameNode() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isSameNode(); }},
        {"GraphConnection::isConnectedNode(GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedNode(&s.box); }},
        {"GraphConnection::isConnectedNodeSource(GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedNodeSource(&s.box); }},
        {"GraphConnection::isConnectedNodeTarget(GraphNodeBase const*) const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isConnectedNodeTarget(&s.box); }},
        {"GraphConnection::areNodesConnected(GraphNodeBase const&, GraphNodeBase const&, bool const&, bool "
         "const&) const",
         allocatesNothing,
         [](S& s) { s.out.number = s.fed->areNodesConnected(s.root, s.outside, true, true); }},
        {"GraphConnection::getSourceNode() const", allocatesNothing,
         [](S& s) { s.out.node = s.fed->getSourceNode(); }},
        {"GraphConnection::getTargetNode() const", allocatesNothing,
         [](S& s) { s.out.node = s.fed->getTargetNode(); }},
        {"GraphConnection::sourceIsCompoundPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->sourceIsCompoundPin(); }},
        {"GraphConnection::targetIsCompoundPin() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->targetIsCompoundPin(); }},
        {"GraphConnection::sourceIsInterfacePin() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->sourceIsInterfacePin(); }},
        {"GraphConnection::targetIsInterfacePin() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->targetIsInterfacePin(); }},
        {"GraphConnection::getFullName()", allOrNothing, [](S& s) { s.out.text = s.fed->getFullName(); }},
        {"GraphConnection::isImplicit() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isImplicit(); }},
        {"GraphConnection::isBidirectional() const", allocatesNothing,
         [](S& s) { s.out.number = s.fed->isBidirectional(); }},
        {"GraphConnection::setImplicit(bool const&)", allocatesNothing,
         [](S& s) { s.spareConnection->setImplicit(true); }},
        {"GraphConnection::removeFromConnectedPins()", allocatesNothing,
         [](S& s) { s.spareConnection->removeFromConnectedPins(); }},
        {"GraphConnection::removeFromSourcePin()", allocatesNothing,
         [](S& s) { s.spareConnection->removeFromSourcePin(); }},
        {"GraphConnection::removeFromTargetPin()", allocatesNothing,
         [](S& s) { s.spareConnection->removeFromTargetPin(); }},
        // The source pin may have it when the target pin has no room for it.
        {"GraphConnection::addToConnectedPins()", allOrNothing,
         [](S& s) { s.spareConnection->addToConnectedPins(); }},
        {"GraphConnection::addToSourcePin()", allOrNothing,
         [](S& s) { s.spareConnection->addToSourcePin(); }},
        {"GraphConnection::addToTargetPin()", allOrNothing,
         [](S& s) { s.spareConnection->addToTargetPin(); }},
        {"GraphConnection::toXml()", allOrNothing, [](S& s) { s.out.text = s.fed->toXml(); }},
    };
}

} // namespace kestrel::graph::test
