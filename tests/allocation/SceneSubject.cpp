#include "SceneSubject.h"

#include "support/SceneInvariants.h"
#include "support/SceneText.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

namespace kestrel::graph::test
{

namespace
{

// Added less removed, so that a change that was taken back counts as none.
int nodesAdded = 0;
int pinsAdded = 0;
int connectionsAdded = 0;

void startCounting()
{
    nodesAdded = pinsAdded = connectionsAdded = 0;
    GraphScene::addNodeCallback_ = [](auto...) { ++nodesAdded; };
    GraphScene::removeNodeCallback_ = [](auto...) { --nodesAdded; };
    GraphScene::addNodePinCallback_ = [](auto...) { ++pinsAdded; };
    GraphScene::removeNodePinCallback_ = [](auto...) { --pinsAdded; };
    GraphScene::addConnectionCallback_ = [](auto...) { ++connectionsAdded; };
    GraphScene::removeConnectionCallback_ = [](auto...) { --connectionsAdded; };
}

void stopCounting()
{
    GraphScene::addNodeCallback_ = GraphScene::removeNodeCallback_ = nullptr;
    GraphScene::addNodePinCallback_ = GraphScene::removeNodePinCallback_ = nullptr;
    GraphScene::addConnectionCallback_ = GraphScene::removeConnectionCallback_ = nullptr;
}

template <class List>
void write(std::ostream& out, char const* title, List const& list)
{
    out << title << "[";
    for (std::string const& line : texts(list)) out << line << "; ";
    out << "] ";
}

// The order of such a map is that of addresses.
template <class Map>
void writeUnordered(std::ostream& out, char const* title, Map const& map)
{
    std::vector<std::string> lines;
    for (auto const& [key, value] : map)
    {
        std::string line = text(key) + ":";
        if constexpr (std::is_pointer_v<std::decay_t<decltype(value)>>)
            line += text(value);
        else
            for (std::string const& element : texts(value)) line += " " + element;
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    out << title << "[";
    for (std::string const& line : lines) out << line << "; ";
    out << "] ";
}

std::string fullName(GraphNodeBase* node)
{
    return node != nullptr ? std::string(node->getFullName()) : "-";
}

// Which stands on a line of its own in front of a message's title.
std::string withoutTime(std::string const& line)
{
    return line.substr(line.rfind('\n') + 1);
}

} // namespace

SceneSubject::SceneSubject()
    : box(addNode<OpenNode>("box")),
      inner(addNode<OpenNode>("inner", &box)),
      second(addNode<OpenNode>("second", &box)),
      outside(addNode<OpenNode>("outside")),
      other(addNode<OpenNode>("other")),
      empty(addNode<OpenNode>("empty", &box)),
      detached(newNode<OpenNode>("detached")),
      left(addNode<OpenNode>("left", &detached)),
      right(addNode<OpenNode>("right", &detached)),
      spare(newNode<OpenNode>("spare")),
      unlisted(newNode<OpenNode>("unlisted"))
{
    for (OpenNode* const node : {&inner, &second, &outside, &other, &left, &right})
    {
        addInput(*node);
        addOutput(*node);
    }
    innerIn = inner.getNodePins()[0];
    innerOut = inner.getNodePins()[1];
    secondOut = second.getNodePins()[1];
    outsideIn = outside.getNodePins()[0];
    outsideOut = outside.getNodePins()[1];
    otherIn = other.getNodePins()[0];
    otherOut = other.getNodePins()[1];
    scene.connect(innerOut, second.getNodePins()[0], false);
    scene.addCompoundInterfaceNode(PIN_OUTPUT, &box, interfaceNode, compoundPin, interfacePin);
    scene.connect(secondOut, interfacePin, false);
    fed = scene.connect(compoundPin, outsideIn, false);
    scene.addCompoundInterfaceNode(PIN_INPUT, &box, inputInterface, inputCompoundPin, inputInterfacePin);
    scene.connect(inputInterfacePin, innerIn, false);
    scene.connect(otherOut, inputCompoundPin, false);
    scene.connect(otherOut, outsideIn, true);
    spare.setId(77);
    unlisted.setNodeOwnerBase(&empty);
    empty.setDescription("a node without pins");
    sparePin->setId(4000000);
    sparePin->setName("spare");
    unlistedPin = std::make_unique<GraphNodePin>(&other, 1u, PIN_INPUT);
    unlistedPin->setId(4000001);
    unlistedPin->setName("unlisted");
    spareConnection = std::make_unique<GraphConnection>(unlistedPin.get(), sparePin.get());
    scene.nodeColorMap_.emplace("a type of nodes", Color4<float>(1, 2, 3, 4));
    for (char const* pinName : {"out", "in"}) pinNames.append(pinName);
    for (OpenNode* const node : {&outside, &other}) moved.append(node);
    moveBack.append(&second);
    pins.append(sparePin.get());
    connections = scene.getGraphConnections();
    messages.push(1, "a title", "a content");
    startCounting();
}

SceneSubject::~SceneSubject()
{
    stopCounting();
}

std::string SceneSubject::state()
{
    std::ostringstream text;
    text << sceneText(scene, {&detached, &spare, &unlisted, copiedNode.get()})
         << otherScene->getNumberOfNodes() << " nodes elsewhere, callbacks " << nodesAdded << " " << pinsAdded
         << " " << connectionsAdded << ", colours " << scene.nodeColorMap_.size() << ", messages "
         << scene.getMessages().getNumberOfMessages() << ", imported " << scene.getLastImportedNodes().size()
         << " " << scene.getLastImportedConnections().size();
    for (GraphNodePin* const pin : {sparePin.get(), unlistedPin.get()})
        if (pin != nullptr)
            text << ", " << pin->getName().c_str() << " " << pin->getInputConnections().size() << " "
                 << pin->getOutputConnections().size();
    text << "\n";
    return text.str();
}

std::string SceneSubject::results() const
{
    std::ostringstream text;
    text << "number " << out.number << " text " << std::string(out.text) << " color " << out.color.red << " "
         << fullName(out.node) << " " << test::text(out.pin) << " " << test::text(out.otherPin) << " "
         << test::text(out.connection) << " ";
    write(text, "nodes", out.nodes);
    write(text, "pins", out.pins);
    write(text, "other pins", out.otherPins);
    write(text, "connections", out.connections);
    write(text, "other connections", out.otherConnections);
    write(text, "values", out.values);
    write(text, "other values", out.otherValues);
    for (Message const& message : out.messages) text << std::string(message.getTitle()) << "; ";
    for (KS_String const& line : out.texts) text << withoutTime(std::string(line)) << "; ";
    for (auto const& [after, before] : out.renames)
        text << std::string(after) << " was " << std::string(before) << "; ";
    writeUnordered(text, "inputs", out.inputs);
    writeUnordered(text, "outputs", out.outputs);
    writeUnordered(text, "pins by pin", out.pinsByPin);
    writeUnordered(text, "connections by pin", out.connectionsByPin);
    text << fullName(out.madeNode.get()) << " " << (out.madePin ? std::string(out.madePin->getName()) : "-")
         << " " << test::text(out.madeConnection.get()) << " "
         << (out.madeScene ? out.madeScene->getNumberOfNodes() : 0) << (out.madeObject ? " object" : "")
         << "\n";
    return text.str();
}

void SceneSubject::prepareRepeat()
{
    out = Results();
    // A pair of pins that was made but not named would share its entry with the next one.
    Nodes nodes;
    scene.getGraphNodesAsList(nodes);
    for (GraphNodeBase* const node : nodes)
        if (node->isInterface())
            while (GraphNodePin* const pin = node->getPinByName("Untitled"))
                scene.removeNodePinFromSceneAndNode(pin);
}

void SceneSubject::deleteInterfaces()
{
    for (GraphNodeBase* const node : {interfaceNode, inputInterface}) delete node;
}

void SceneSubject::expectWhole()
{
    EXPECT_SCENE_INVARIANTS(scene);
}

BusySceneSubject::BusySceneSubject()
    : hub(addNode<OpenNode>("hub")), hubOut(&addOutput(hub)), sinkIn(&addInput(hub, "sink"))
{
    for (int i = 0; i < 70; ++i) scene.connect(hubOut, i % 2 == 0 ? sinkIn : outsideIn, i % 3 == 0);
}

} // namespace kestrel::graph::test
