#include "Driver.h"

#include "SceneMaps.h"
#include "support/SceneInvariants.h"

#include <algorithm>

namespace kestrel::graph::test::model
{

Driver* Driver::active_ = nullptr;

namespace
{

// The pin ids of the library go on through the whole process.
unsigned int nextPinIdOfProcess()
{
    GraphScene scene;
    std::unique_ptr<GraphNodePin> const pin(scene.createNewPin(1u, PIN_INPUT));
    return pin->getId() + 1;
}

constexpr unsigned int firstHostPinId = 100000;

} // namespace

Driver::Driver(Profile const& profile)
    : profile_(profile),
      firstPinId_(profile.pins ? firstHostPinId : nextPinIdOfProcess()),
      model_(profile, firstPinId_)
{
    hook_ = [this](GraphNodeBase* node, bool adding)
    { onEvent(adding ? EventKind::onAddingToScene : EventKind::onRemovingFromScene, nullptr, node); };
    if (profile.ids || profile.pins || profile.factories)
        scene_ = std::make_unique<HostScene>(profile_, hook_, firstPinId_);
    else
        scene_ = std::make_unique<GraphScene>();
    active_ = this;
    setCallbacks(true);
    Operation first;
    first.kind = Kind::newRoot;
    first.texts[0] = "root";
    apply(first);
}

Driver::~Driver()
{
    setCallbacks(false);
    active_ = nullptr;
    // After a difference nobody knows what is still there.
    if (difference_) return;
    hook_ = [](GraphNodeBase*, bool) {};
    for (Index each : model_.livingConnections) delete connection(each);
    for (Index each : model_.livingNodes)
    {
        node(each)->setNodePins({});
        delete node(each);
    }
    for (Index each : model_.livingPins) delete pin(each);
}

// --- sequences

bool Driver::apply(Operation const& operation)
{
    start(operation);
    done_ = resolve(operation);
    if (!done_) return true;
    if (!layouts_.apply(operation, found_, difference_)) perform(operation);
    hadEffect_ = done_ && (model_.changed || found_);
    if (done_ && operation.kind < Kind::layoutInsert) finish();
    return !difference_;
}

void Driver::start(Operation const& operation)
{
    model_.begin(operation.label);
    nextEvent_ = 0;
    found_ = false;
    hadEffect_ = false;
    if (firstMade_.size() <= at(operation.label))
        firstMade_.resize(at(operation.label) + 1, {~std::size_t{}});
    firstMade_[at(operation.label)] = {model_.nodes.size(), model_.pins.size(), model_.connections.size()};
}

bool Driver::resolve(Operation const& operation)
{
    arguments_ = {none, none, none};
    list_.clear();
    std::size_t argument = 0;
    for (char const* kind = kinds[static_cast<std::size_t>(operation.kind)].signature; *kind != '\0'; ++kind)
    {
        bool const nullWillDo = *kind == 'N' || *kind == 'P' || *kind == 'C';
        if (nullWillDo || *kind == 'n' || *kind == 'p' || *kind == 'c')
        {
            Index& index = arguments_[argument];
            if (!resolve(operation.references[argument++], *kind, index)) return false;
            if (index == none && !nullWillDo) return false;
        }
        if (*kind != 'l' && *kind != 'k') continue;
        for (Reference const& reference : operation.list)
            if (Index index = none; resolve(reference, *kind, index)) list_.push_back(index);
    }
    return true;
}

bool Driver::resolve(Reference const& reference, char kind, Index& index) const
{
    index = none;
    if (reference.operation == none) return true;
    if (at(reference.operation) >= firstMade_.size()) return false;
    auto const find = [&](auto const& objects, std::size_t first)
    {
        std::size_t const place = first + at(reference.count);
        if (first == ~std::size_t{} || place >= objects.size()) return false;
        if (objects.at(place).gone || objects.at(place).reference != reference) return false;
        index = static_cast<Index>(place);
        return true;
    };
    auto const& [firstNode, firstPin, firstConnection] = firstMade_[at(reference.operation)];
    switch (kind)
    {
    case 'n':
    case 'N':
    case 'l':
        return find(model_.nodes, firstNode);
    case 'p':
    case 'P':
    case 'k':
        return find(model_.pins, firstPin);
    default:
        return find(model_.connections, firstConnection);
    }
}

void Driver::finish()
{
    for (Index each : model_.abandonedPins) delete pin(each);
    if (nextEvent_ < model_.events.size())
        difference_.note("there are ", nextEvent_, " callbacks, but ", model_.events.size(), " in the model");
    if (!difference_) compareState();
}

void Driver::checkInvariants()
{
    for (std::string const& broken : brokenInvariants(*scene_)) difference_.note("an invariant: ", broken);
}

// --- objects

Driver::NodeList Driver::listOf(Indices const& nodes) const
{
    NodeList list;
    for (Index each : nodes) list.append(node(each));
    return list;
}

// --- comparing

void Driver::expectFlag(Answers const& answers)
{
    if (answers.expected) found_ = true;
    difference_.expect(answers.what, answers.expected, answers.actual);
}

void Driver::expectText(char const* what, std::string const& expected, KS_String const& actual)
{
    if (std::string_view(actual) != expected) difference_.expect(what, expected, std::string(actual));
}

void Driver::expectValues(char const* what, std::vector<Ends> const& expected, ConnectionValues const& actual)
{
    if (expected.size() != actual.size())
        return difference_.note(what, ": ", actual.size(), " values, but ", expected.size(), " in the model");
    unsigned int place = 0;
    for (auto const& [source, target] : expected)
    {
        GraphConnection const& value = actual[place++];
        if (!isSame(source, value.getSourcePin()) || !isSame(target, value.getTargetPin()))
            difference_.note(what, ": other pins than in the model at place ", place - 1);
    }
}

void Driver::expectInterfaces(char const* what, InterfaceOfNode const& expected,
                              std::map<GraphNodeBase*, GraphNodeBase*> const& actual)
{
    if (expected.size() != actual.size())
        return difference_.note(what, ": ", actual.size(), " entries, but ", expected.size(),
                                " in the model");
    for (auto const& [key, value] : expected)
    {
        auto const found = actual.find(node(key));
        if (found == actual.end() || !isSame(value, found->second))
            difference_.note(what, " differs from the model's");
    }
}

void Driver::compareState()
{
    difference_.expect("the dirty flag", model_.dirty, scene_->getIsDirty());
    expectSame("the root", model_.root, scene_->getRootNode());
    compareArray();
    compareNodes();
    comparePins();
    if (!difference_) compareMaps(*scene_, model_, nodes_, pins_, difference_);
}

void Driver::compareArray()
{
    expectList("the connection array", model_.array, scene_->getGraphConnections());
    for (Index each : model_.livingConnections)
    {
        Connection const& expected = model_.connections[each];
        if (at(each) >= connections_.size() || connection(each) == nullptr)
            return difference_.note("a new connection is missing");
        GraphConnection const& actual = *connection(each);
        if (!isSame(expected.source, actual.getSourcePin()) ||
            !isSame(expected.target, actual.getTargetPin()))
            difference_.note("a connection has other pins than in the model");
        difference_.expect("the implicit flag of a connection", expected.implicit, actual.isImplicit());
    }
}

void Driver::compareNodes()
{
    for (Index each : model_.livingNodes)
    {
        Node const& expected = model_.nodes[each];
        if (at(each) >= nodes_.size() || node(each) == nullptr)
            return difference_.note("a new node is missing");
        GraphNodeBase& actual = *node(each);
        difference_.expect("the id of a node", expected.id, actual.getId());
        expectSame("the owner of a node", expected.owner, actual.getNodeOwner());
        expectList("the children of a node", expected.children, actual.getNodes());
        expectList("the pins of a node", expected.pins, actual.getNodePins());
        difference_.expect("whether a node is a compound", model_.isCompound(each), actual.isCompound());
        difference_.expect("whether a node is an interface", expected.interface_, actual.isInterface());
        difference_.expect("whether a node has a scene", expected.hasScene,
                           actual.getGraphScene() != nullptr);
        expectText("the name of a node", model_.nodeName(each), actual.getName());
    }
}

void Driver::comparePins()
{
    for (Index each : model_.livingPins)
    {
        Pin const& expected = model_.pins[each];
        if (at(each) >= pins_.size() || pin(each) == nullptr) return difference_.note("a new pin is missing");
        GraphNodePin& actual = *pin(each);
        difference_.expect("the id of a pin", expected.id, actual.getId());
        difference_.expect("the direction of a pin", expected.direction, actual.getDirection().value());
        difference_.expect("the capacity of a pin", expected.capacity, actual.getMaxNumConnections());
        expectSame("the node of a pin", expected.node, actual.getParentGraphNodePtr());
        expectSame("the child pin of a pin", expected.child, actual.getChildGraphNodePinPtr());
        expectSame("the parent pin of a pin", expected.parent, actual.getParentGraphNodePinPtr());
        expectList("the input connections of a pin", expected.inputs, actual.getInputConnections());
        expectList("the output connections of a pin", expected.outputs, actual.getOutputConnections());
        expectText("the name of a pin", model_.pinName(each), actual.getName());
    }
}

// --- callbacks

template <EventKind kind, class Subject>
void Driver::onCallback(GraphScene* scene, GraphNodeBase* owner, Subject* subject)
{
    bool const isOfNodeWithoutScene = kind == EventKind::addNodePin || kind == EventKind::removeNodePin;
    if (scene != active_->scene_.get() && !(isOfNodeWithoutScene && scene == nullptr))
        active_->difference_.note("a callback names another scene");
    active_->onEvent(kind, owner, subject);
}

template <class Subject>
void Driver::onEvent(EventKind kind, GraphNodeBase* owner, Subject* subject)
{
    if (nextEvent_ >= model_.events.size())
        return difference_.note("there are more callbacks than in the model, which has ", nextEvent_);
    Event const& expected = model_.events[nextEvent_++];
    if (expected.kind != kind)
        return difference_.note("callback ", nextEvent_, " is of kind ", static_cast<int>(kind), ", but ",
                                static_cast<int>(expected.kind), " in the model");
    if (!isSame(expected.owner, owner) || !isSame(expected.subject, subject))
        difference_.note("callback ", nextEvent_, " is about others than in the model");
}

void Driver::setCallbacks(bool set)
{
    using Scene = GraphScene;
    Scene::addNodeCallback_ = set ? &onCallback<EventKind::addNode, GraphNodeBase> : nullptr;
    Scene::removeNodeCallback_ = set ? &onCallback<EventKind::removeNode, GraphNodeBase> : nullptr;
    Scene::addNodePinCallback_ = set ? &onCallback<EventKind::addNodePin, GraphNodePin> : nullptr;
    Scene::removeNodePinCallback_ = set ? &onCallback<EventKind::removeNodePin, GraphNodePin> : nullptr;
    Scene::addConnectionCallback_ = set ? &onCallback<EventKind::addConnection, GraphConnection> : nullptr;
    Scene::removeConnectionCallback_ =
        set ? &onCallback<EventKind::removeConnection, GraphConnection> : nullptr;
}

} // namespace kestrel::graph::test::model
