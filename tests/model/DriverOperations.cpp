// What each operation does with the scene and its model.

#include "Driver.h"

#include <algorithm>

namespace kestrel::graph::test::model
{

namespace
{

KS_String text(std::string const& plain)
{
    return KS_String(std::string_view(plain));
}

PinDirection directionOf(unsigned int bits)
{
    return PinDirection(bits & 3u);
}

// Small and the largest numbers are meant as they are; the others count from the sequence's first pin id.
constexpr unsigned int largest = 0xFFFFFFF0u;

// A move out wires all partners of one pin with all of another: hundreds would become tens of thousands.
constexpr std::size_t mostConnectionsToMoveOut = 120;

// A move in names a pin for each connection that crosses the boundary, and the model tries one number after
// the other, each against all pins.
constexpr std::size_t mostConnectionsToMoveIn = 500;

// Names of no pin may repeat pins, and a list that is reordered again and again may double each time.
constexpr std::size_t mostPinsToReorder = 200;

} // namespace

void Driver::perform(Operation const& operation)
{
    if (!performOnNode(operation) && !performOnPin(operation) && !performWiring(operation) &&
        !performMove(operation))
        ask(operation);
}

// The operations that delete: the model tries first whether they leave anybody with a pointer to what is
// gone.
template <class ModelOperation>
bool Driver::isPossible(ModelOperation modelOperation)
{
    Model const before = model_;
    modelOperation();
    done_ = model_.isSound() && !model_.impossible;
    if (!done_) model_ = before;
    return done_;
}

bool Driver::performOnNode(Operation const& operation)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    std::string const& name = operation.texts[0];
    unsigned int const number = operation.numbers[0];
    switch (operation.kind)
    {
    case Kind::addNode:
        placeNode(makeNode(freeNodeId(), name), a);
        break;
    case Kind::addCompound:
    case Kind::addPlainNode:
    {
        bool const compound = operation.kind == Kind::addCompound;
        Index const made = model_.createNode(compound, false);
        expectSame("the new node", made,
                   compound      ? scene_->createNewCompound()
                   : number != 0 ? scene_->createNewPassThrough()
                                 : scene_->createNewEvaluator());
        model_.setNodeName(made, name);
        node(made)->setName(text(name));
        placeNode(made, a);
        break;
    }
    case Kind::looseNode:
        makeNode(number, name);
        break;
    case Kind::newRoot:
        model_.root = makeNode(freeNodeId(), name);
        scene_->setRootNode(node(model_.root));
        placeNode(model_.root, none);
        break;
    case Kind::addNodeToGraph:
        expectFlag({"addNodeToGraph", model_.addNodeToGraph(a), scene_->addNodeToGraph(node(a))});
        break;
    case Kind::removeNodeFromGraph:
        if (isPossible([&] { found_ = model_.removeNodeFromGraph(a); }))
            expectFlag({"removeNodeFromGraph", found_, scene_->removeNodeFromGraph(node(a))});
        break;
    case Kind::removeNodeById:
        if (isPossible([&] { found_ = model_.removeNodeById(number); }))
            expectFlag({"removeNodeFromGraph", found_, scene_->removeNodeFromGraph(number)});
        break;
    case Kind::removeNodesInCompound:
        if (isPossible([&] { model_.removeNodesInCompound(a); }))
            scene_->removeNodesInCompoundFromGraph(node(a));
        break;
    case Kind::removeAllNodes:
        if (isPossible([&] { model_.removeAllNodes(); }))
            expectFlag({"removeAllNodes", true, scene_->removeAllNodes()});
        break;
    case Kind::clear:
        if (isPossible([&] { model_.clear(); })) scene_->clear();
        break;
    case Kind::deleteNode:
        done_ = model_.isForgotten(a);
        if (done_ && isPossible([&] { model_.deleteNode(a); })) delete node(a);
        break;
    case Kind::retireNode:
        retire(a);
        break;
    case Kind::setNodeOwner:
        model_.setNodeOwner(a, b);
        node(a)->setNodeOwner(node(b));
        break;
    case Kind::addChild:
        model_.addChild(a, b);
        node(a)->addNode(node(b));
        break;
    case Kind::removeChild:
        done_ = contains(model_.nodes[a].children, b);
        if (!done_) break;
        model_.removeChild(a, b);
        node(a)->removeNode(node(b));
        break;
    case Kind::clearChildren:
        model_.changed = !model_.nodes[a].children.empty();
        model_.nodes[a].children.clear();
        node(a)->clearNodesArray();
        break;
    case Kind::renameNode:
        model_.setNodeName(a, name);
        node(a)->setName(text(name));
        break;
    case Kind::changeNodeId:
        model_.setNodeId(a, number);
        node(a)->setId(number);
        break;
    case Kind::setCompound:
        model_.changed = model_.nodes[a].compound != (number != 0);
        model_.nodes[a].compound = number != 0;
        node(a)->setCompound(number != 0);
        break;
    case Kind::setInterface:
        model_.changed = model_.nodes[a].interface_ != (number != 0);
        model_.nodes[a].interface_ = number != 0;
        node(a)->setInterface(number != 0);
        break;
    default:
        return false;
    }
    return true;
}

unsigned int Driver::freeNodeId()
{
    unsigned int const id = scene_->getFreeNodeId();
    difference_.expect("the free id", model_.freeNodeId(), id);
    return id;
}

Index Driver::makeNode(unsigned int id, std::string const& name)
{
    GraphNodeBase* const made = profile_.nodes ? new HostNode(profile_, hook_) : new GraphNodeBase;
    Index const index = model_.makeNode(id, name, profile_.nodes);
    expectSame("the new node", index, made);
    made->setId(id);
    made->setName(text(name));
    return index;
}

void Driver::placeNode(Index node, Index owner)
{
    model_.setNodeOwner(node, owner);
    this->node(node)->setNodeOwner(this->node(owner));
    expectFlag({"addNodeToGraph", model_.addNodeToGraph(node), scene_->addNodeToGraph(this->node(node))});
}

// As a careful host does it with a node that holds no others: nothing of it stays behind.
void Driver::retire(Index node)
{
    Node const& retired = model_.nodes[node];
    done_ = node != model_.root && retired.children.empty() && model_.nodeById(retired.id) == node;
    if (!done_ || !isPossible([&] { model_.removeNodePins(node); })) return;
    scene_->removeNodePins(this->node(node));
    for (Index const pin : Indices(model_.nodes[node].pins))
    {
        if (model_.pins[pin].gone) continue; // it stood there twice
        if (!isPossible([&] { retirePin(node, pin); })) return;
        scene_->removeConnectionsWithPin(this->pin(pin));
        scene_->removeNodePin(this->pin(pin));
        this->node(node)->removeNodePin(this->pin(pin));
        delete this->pin(pin);
    }
    if (!isPossible([&] { model_.removeNodeFromGraph(node); })) return;
    scene_->removeNodeFromGraph(this->node(node));
    if (model_.isForgotten(node) && isPossible([&] { model_.deleteNode(node); })) delete this->node(node);
}

void Driver::retirePin(Index node, Index pin)
{
    model_.removeConnectionsWithPin(pin);
    model_.unregisterPin(pin);
    model_.removePinFromNode(node, pin);
    model_.deletePin(pin);
}

bool Driver::performOnPin(Operation const& operation)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    std::string const& name = operation.texts[0];
    auto const [number, second, third, fourth] = operation.numbers;
    switch (operation.kind)
    {
    case Kind::addPin:
    {
        Index const made = model_.createPinOf(a, second, number & 3u);
        expectSame("createNewPin", made, scene_->createNewPin(node(a), second, directionOf(number)));
        model_.setPinName(made, name);
        pin(made)->setName(text(name));
        break;
    }
    case Kind::createPin:
    {
        Index const made = model_.createPinOf(a, second, number & 3u);
        expectSame("createNewPin", made, scene_->createNewPin(node(a), second, directionOf(number)));
        break;
    }
    case Kind::createLoosePin:
    {
        Index const made = model_.createPin(second, number & 3u);
        expectSame("createNewPin", made, scene_->createNewPin(second, directionOf(number)));
        model_.setPinName(made, name);
        pin(made)->setName(text(name));
        break;
    }
    case Kind::makeHostPin:
    {
        Index const made = model_.makePin(second, number & 3u, pinId(third), false);
        GraphNodePin* const hostPin = new GraphNodePin(nullptr, second, directionOf(number));
        hostPin->setId(pinId(third));
        expectSame("the host's pin", made, hostPin);
        break;
    }
    case Kind::registerPin:
        expectFlag({"addNodePin", model_.addPin(a), scene_->addNodePin(pin(a))});
        break;
    case Kind::registerPinOfNode:
        expectFlag({"addNodePin", model_.addPinToNodeAndScene(a, b), scene_->addNodePin(node(a), pin(b))});
        break;
    case Kind::registerPinsOfNode:
    {
        PinList pins;
        bool expected = true;
        for (Index each : list_) pins.append(pin(each));
        for (Index each : list_) expected = model_.addPinToNodeAndScene(a, each);
        model_.dirty = true;
        expectFlag({"addNodePins", expected, scene_->addNodePins(node(a), pins)});
        break;
    }
    case Kind::addPinToNode:
        expectFlag({"addNodePin of a node", model_.addPinToNode(a, b), node(a)->addNodePin(pin(b))});
        break;
    case Kind::removePinFromNode:
        expectFlag(
            {"removeNodePin of a node", model_.removePinFromNode(a, b), node(a)->removeNodePin(pin(b))});
        break;
    case Kind::unregisterPin:
        expectFlag({"removeNodePin", model_.unregisterPin(a), scene_->removeNodePin(pin(a))});
        break;
    case Kind::removePinEverywhere:
        if (isPossible([&] { model_.removePinEverywhere(a); })) scene_->removeNodePinFromSceneAndNode(pin(a));
        break;
    case Kind::removeNodePins:
        if (isPossible([&] { model_.removeNodePins(a); })) scene_->removeNodePins(node(a));
        break;
    case Kind::destroyPins:
        if (isPossible([&] { model_.destroyPins(a); })) node(a)->destroyNodePins();
        break;
    case Kind::addDynamicPin:
    {
        bool const isInput = number % 2 == 0;
        Index const made = model_.addDynamicPin(a, isInput ? input : output);
        expectSame("the dynamic pin", made,
                   isInput ? node(a)->addDynamicInputPin() : node(a)->addDynamicOutputPin());
        break;
    }
    case Kind::reorderPins:
        done_ = model_.nodes[a].pins.size() <= mostPinsToReorder;
        if (done_) reorderPins(a, number != 0, operation.names);
        break;
    case Kind::orderPins:
        done_ = model_.nodes[a].pins.size() <= mostPinsToReorder;
        if (done_) orderPins(a, number != 0, second);
        break;
    case Kind::renamePin:
        model_.setPinName(a, name);
        pin(a)->setName(text(name));
        break;
    case Kind::setDirection:
        model_.changed = model_.pins[a].direction != (number & 3u);
        model_.pins[a].direction = number & 3u;
        pin(a)->setDirection(directionOf(number));
        break;
    case Kind::setCapacity:
        model_.changed = model_.pins[a].capacity != number;
        model_.pins[a].capacity = number;
        pin(a)->setMaxNumConnections(number);
        break;
    case Kind::changePinId:
        model_.changed = model_.pins[a].id != pinId(number);
        model_.pins[a].id = pinId(number);
        pin(a)->setId(pinId(number));
        break;
    default:
        return false;
    }
    return true;
}

unsigned int Driver::pinId(unsigned int number) const
{
    return number < largest ? firstPinId_ + number : number;
}

void Driver::reorderPins(Index node, bool inputSide, std::vector<std::string> const& names)
{
    Array<KS_String, _Wa> libraryNames;
    for (std::string const& name : names) libraryNames.append(text(name));
    model_.reorderPins(node, inputSide, names);
    if (inputSide)
        this->node(node)->reorderInputPins(libraryNames);
    else
        this->node(node)->reorderOutputPins(libraryNames);
}

// All names of that side, in an order that the number gives.
void Driver::orderPins(Index node, bool inputSide, unsigned int number)
{
    std::vector<std::string> names;
    for (Index each : model_.pinsOf(node, inputSide ? input : output))
    {
        auto const place = static_cast<std::ptrdiff_t>(number % (names.size() + 1));
        names.insert(names.begin() + place, model_.pinName(each));
        number /= 3;
    }
    reorderPins(node, inputSide, names);
}

bool Driver::performWiring(Operation const& operation)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    unsigned int const number = operation.numbers[0];
    bool const flag = number != 0;
    bool const second = operation.numbers[1] != 0;
    switch (operation.kind)
    {
    case Kind::connectPins:
    {
        Index const made = model_.connect(a, b, flag);
        expectSame("connect", made, scene_->connect(pin(a), pin(b), flag));
        break;
    }
    case Kind::connectPinAndNode:
    {
        Index const made = model_.connectPinAndNode(a, b, flag, second);
        GraphNodePin const* const first = pin(a);
        GraphNodeBase const* const other = node(b);
        expectSame("connect", made,
                   second ? scene_->connect(first, other, flag) : scene_->connect(other, first, flag));
        break;
    }
    case Kind::connectNodes:
    {
        GraphNodeBase const* const source = node(a);
        GraphNodeBase const* const target = node(b);
        Index const made = model_.connectNodes(a, b, flag);
        expectSame("connect", made, scene_->connect(source, target, flag));
        break;
    }
    case Kind::wireStray:
    {
        GraphConnection* const stray = new GraphConnection(pin(a), pin(b));
        expectSame("the stray connection", model_.makeStray(a, b), stray);
        stray->addToConnectedPins();
        break;
    }
    case Kind::removeConnection:
        expectFlag({"removeConnection", model_.removeConnection(a), scene_->removeConnection(connection(a))});
        break;
    case Kind::removeConnectionsWithPin:
        model_.removeConnectionsWithPin(a);
        scene_->removeConnectionsWithPin(pin(a));
        break;
    case Kind::removeConnectionsOfNode:
        expectFlag({"removeConnectionsWithNode", model_.removeConnectionsOfNode(a),
                    scene_->removeConnectionsWithNode(static_cast<GraphNodeBase const*>(node(a)))});
        break;
    case Kind::removeConnectionsById:
        expectFlag({"removeConnectionsWithNode", model_.removeConnectionsOfNode(model_.nodeById(number)),
                    scene_->removeConnectionsWithNode(number)});
        break;
    case Kind::removeConnectionsBetween:
        model_.removeConnectionsBetween(a, b, flag, second);
        scene_->removeConnectionsBetweenNodes(node(a), node(b), flag, second);
        break;
    case Kind::removeAllConnections:
        model_.removeAllConnections();
        expectFlag({"removeAllConnections", true, scene_->removeAllConnections()});
        break;
    case Kind::reorderArray:
        reorderArray(number, operation.numbers[1], operation.numbers[2] != 0);
        break;
    case Kind::allowDuplicates:
        model_.changed = model_.allowDuplicates != flag;
        model_.allowDuplicates = flag;
        scene_->setAllowDuplicatedConnections(flag);
        scene_->setAllowLoops(flag);
        break;
    case Kind::useAdjacency:
        model_.changed = model_.useAdjacency != flag;
        model_.useAdjacency = flag;
        scene_->setUseAdjacencyMap(flag);
        break;
    case Kind::keepRoot:
        model_.changed = model_.keepRoot != flag;
        model_.keepRoot = flag;
        scene_->setKeepRootNode(flag);
        break;
    case Kind::cleanDirty:
        model_.changed = model_.dirty;
        model_.dirty = false;
        scene_->setIsDirty(false);
        break;
    default:
        return false;
    }
    return true;
}

// Two connections change places, in the array itself or in a copy that replaces it.
void Driver::reorderArray(unsigned int first, unsigned int second, bool byCopy)
{
    unsigned int const count = static_cast<unsigned int>(model_.array.size());
    if (count == 0) return;
    first %= count;
    second %= count;
    std::swap(model_.array[first], model_.array[second]);
    model_.changed = first != second;
    ConnectionList copy = scene_->getGraphConnections();
    ConnectionList& changed = byCopy ? copy : scene_->refGraphConnections();
    std::swap(changed[first], changed[second]);
    if (byCopy) scene_->setGraphConnections(copy);
}

bool Driver::performMove(Operation const& operation)
{
    Index const a = arguments_[0];
    Index const b = arguments_[1];
    unsigned int const number = operation.numbers[0];
    bool const flag = number != 0;
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* compoundPin = nullptr;
    GraphNodePin* interfacePin = nullptr;
    Index expectedNode = none;
    Index expectedCompoundPin = none;
    Index expectedInterfacePin = none;
    bool const isMoveIn = operation.kind == Kind::moveIn || operation.kind == Kind::moveChildrenIn;
    bool const isMoveOut = operation.kind == Kind::moveOut || operation.kind == Kind::moveChildrenOut;
    std::size_t const connections = model_.livingConnections.size();
    done_ = !(isMoveIn && connections > mostConnectionsToMoveIn) &&
            !(isMoveOut && connections > mostConnectionsToMoveOut);
    if (!done_) return true;
    switch (operation.kind)
    {
    case Kind::addInterfaceNode:
    {
        bool const made =
            model_.addInterfaceNode(number & 3u, a, expectedNode, expectedCompoundPin, expectedInterfacePin);
        expectFlag({"addCompoundInterfaceNode", made,
                    scene_->addCompoundInterfaceNode(directionOf(number), node(a), interfaceNode, compoundPin,
                                                     interfacePin)});
        break;
    }
    case Kind::addInterfacePin:
    {
        bool const made = model_.addInterfacePin(number & 3u, a, expectedCompoundPin, expectedInterfacePin);
        expectFlag(
            {"addCompoundInterfacePin", made,
             scene_->addCompoundInterfacePin(directionOf(number), node(a), compoundPin, interfacePin)});
        break;
    }
    case Kind::addCompoundPin:
        expectedCompoundPin = model_.createCompoundPin(a);
        compoundPin = scene_->createCompoundPinForInterfacePin(pin(a));
        break;
    case Kind::moveIn:
    {
        prepareMoveLists(number);
        NodeList const listed = listOf(list_);
        moveIn(list_, listed, a);
        break;
    }
    case Kind::moveChildrenIn:
        prepareMoveLists(0);
        moveIn(Indices(model_.nodes[b].children), node(b)->getNodes(), a);
        break;
    case Kind::moveOut:
    {
        prepareMoveLists(operation.numbers[1]);
        NodeList listed = listOf(list_);
        moveOut(list_, listed, a, flag);
        break;
    }
    case Kind::moveChildrenOut:
        prepareMoveLists(0);
        moveOut(Indices(model_.nodes[a].children), node(a)->refNodes(), a, flag);
        break;
    default:
        return false;
    }
    expectSame("the new interface node", expectedNode, interfaceNode);
    expectSame("the new compound pin", expectedCompoundPin, compoundPin);
    expectSame("the new interface pin", expectedInterfacePin, interfacePin);
    return true;
}

// The bits of the number say which lists of the last move go on, as for a host that moves nodes one by one.
void Driver::prepareMoveLists(unsigned int number)
{
    MoveLists last;
    LibraryLists libraryLast;
    std::swap(last, moveLists_);
    std::swap(libraryLast, libraryLists_);
    auto const isGone = [&](std::pair<Index, Index> const& entry)
    {
        return entry.first == none || entry.second == none || model_.nodes[entry.first].gone ||
               model_.nodes[entry.second].gone;
    };
    bool const goesOn = (number & 1u) != 0 &&
                        std::none_of(last.inputInterfaces.begin(), last.inputInterfaces.end(), isGone) &&
                        std::none_of(last.outputInterfaces.begin(), last.outputInterfaces.end(), isGone);
    if (goesOn)
    {
        moveLists_.inputInterfaces = last.inputInterfaces;
        moveLists_.outputInterfaces = last.outputInterfaces;
        libraryLists_.inputInterfaces = libraryLast.inputInterfaces;
        libraryLists_.outputInterfaces = libraryLast.outputInterfaces;
    }
    if ((number & 2u) == 0) return;
    moveLists_.pinRenames = last.pinRenames;
    moveLists_.newCompoundPins = last.newCompoundPins;
    moveLists_.removed = last.removed;
    libraryLists_.pinRenames = libraryLast.pinRenames;
    libraryLists_.newCompoundPins = libraryLast.newCompoundPins;
    libraryLists_.removed = libraryLast.removed;
}

void Driver::moveIn(Indices const& listed, NodeList const& libraryListed, Index compound)
{
    LibraryLists& lists = libraryLists_;
    model_.moveIn(listed, compound, moveLists_);
    expectFlag(
        {"moveNodesToCompound", true,
         scene_->moveNodesToCompound(libraryListed, node(compound), lists.pinRenames, lists.inputInterfaces,
                                     lists.outputInterfaces, lists.newInterfaceNodes, lists.newCompoundPins,
                                     lists.removed, lists.outer, lists.inner)});
    compareMoveLists();
}

void Driver::moveOut(Indices const& listed, NodeList& libraryListed, Index compound, bool createInterfaces)
{
    LibraryLists& lists = libraryLists_;
    model_.moveOut(listed, compound, createInterfaces, moveLists_);
    bool const done =
        createInterfaces
            ? scene_->removeNodesFromCompoundCreatingInterfaces(
                  node(compound), libraryListed, lists.pinRenames, lists.removedOuter, lists.removed,
                  lists.created, lists.inner, lists.inputInterfaces, lists.outputInterfaces,
                  lists.newInterfaceNodes, lists.newCompoundPins)
            : scene_->removeNodesFromCompound(node(compound), libraryListed, lists.pinRenames,
                                              lists.removedOuter, lists.removed, lists.created, lists.inner);
    expectFlag({"removeNodesFromCompound", true, done});
    compareMoveLists();
}

void Driver::compareMoveLists()
{
    found_ =
        !moveLists_.pinRenames.empty() || !moveLists_.removed.empty() || !moveLists_.removedOuter.empty();
    std::vector<std::pair<std::string, std::string>> const renames(libraryLists_.pinRenames.begin(),
                                                                   libraryLists_.pinRenames.end());
    if (renames != moveLists_.pinRenames) difference_.note("the renamed pins are others than in the model");
    expectList("the new interface nodes", moveLists_.newInterfaceNodes, libraryLists_.newInterfaceNodes);
    expectInterfaces("the input interfaces", moveLists_.inputInterfaces, libraryLists_.inputInterfaces);
    expectInterfaces("the output interfaces", moveLists_.outputInterfaces, libraryLists_.outputInterfaces);
    expectList("the new compound pins", moveLists_.newCompoundPins, libraryLists_.newCompoundPins);
    expectValues("the removed connections", moveLists_.removed, libraryLists_.removed);
    expectValues("the removed outer connections", moveLists_.removedOuter, libraryLists_.removedOuter);
    expectList("the outer connections", moveLists_.outer, libraryLists_.outer);
    expectList("the inner connections", moveLists_.inner, libraryLists_.inner);
    expectList("the new connections", moveLists_.created, libraryLists_.created);
}

} // namespace kestrel::graph::test::model
