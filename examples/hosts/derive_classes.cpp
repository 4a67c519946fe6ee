// A host with a scene, nodes, pins and connections of its own classes: pins have a type and refuse another
// one, nodes delete their pins and report messages, connections know their colour. The scene's factories are
// overridden, so that what the library makes by itself, here an interface node with a pair of pins, is of
// these classes, too.

#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

unsigned int const noLimit = 0xFFFFFFFF;

// A pin without a type takes anything, and learns its type from the first connection.
class TypedPin : public GraphNodePin
{
public:
    TypedPin(unsigned int const& capacity, PinDirection const& direction)
        : GraphNodePin(nullptr, capacity, direction)
    {}

    KS_String const& getType() const { return type_; }
    void setType(KS_String const& type) { type_ = type; }

    // Every wiring rule of the library ends here.
    bool allowsConnectionFrom(GraphNodePin const* other) const override
    {
        if (!GraphNodePin::allowsConnectionFrom(other)) return false;
        auto const& source = static_cast<TypedPin const&>(*other);
        return type_.isEmpty() || source.type_.isEmpty() || type_ == source.type_;
    }

    void addInputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addInputConnection(connection);
        learnTypeFrom(connection->getSourcePin());
    }

    void addOutputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addOutputConnection(connection);
        learnTypeFrom(connection->getTargetPin());
    }

private:
    // A pair of pins is one thing to the user: what the one learns, the other knows.
    void learnTypeFrom(GraphNodePin const* other)
    {
        if (!type_.isEmpty()) return;
        type_ = static_cast<TypedPin const*>(other)->type_;
        for (GraphNodePin* paired : {getParentGraphNodePinPtr(), getChildGraphNodePinPtr()})
            if (paired != nullptr) static_cast<TypedPin*>(paired)->type_ = type_;
    }

    KS_String type_;
};

class HostNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    HostNode(HostNode const&) = delete;
    HostNode& operator=(HostNode const&) = delete;

    // The base leaves its pins alone.
    ~HostNode() override { destroyNodePins(); }

    // The base reports sample messages; `hasErrors`, `hasWarnings` and `hasMessages` follow from this.
    bool getMessages(Array<Message, _Wa>& out) const override
    {
        for (GraphNodePin const* pin : getNodePins())
            if (pin->isInputPin() && !pin->isConnected()) out.append(Message(3, "input", "is not connected"));
        return !out.isEmpty();
    }
    using GraphNodeBase::getMessages;
};

class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;

    char const* getColor() const
    {
        return static_cast<TypedPin const*>(getSourcePin())->getType() == "color" ? "yellow" : "grey";
    }
};

class HostScene : public GraphScene
{
public:
    HostScene()
    {
        auto* const root = new HostNode(getFreeNodeId());
        root->setName("root");
        setRootNode(root);
        addNodeToGraph(root);
    }
    HostScene(HostScene const&) = delete;
    HostScene& operator=(HostScene const&) = delete;

    // The base deletes neither nodes nor connections.
    ~HostScene() override
    {
        setKeepRootNode(false);
        clear();
    }

    HostNode& addNode(char const* name, GraphNodeBase* owner)
    {
        auto* const node = new HostNode(getFreeNodeId());
        place(*node, name, owner);
        return *node;
    }

    HostNode& addCompound(char const* name, GraphNodeBase* owner)
    {
        HostNode* const compound = createNewCompound();
        place(*compound, name, owner);
        return *compound;
    }

    TypedPin& addPin(GraphNodeBase& node, char const* name, char const* type, PinDirection direction)
    {
        auto* const pin =
            static_cast<TypedPin*>(createNewPin(&node, direction == PIN_INPUT ? 1 : noLimit, direction));
        pin->setName(name);
        pin->setType(type);
        return *pin;
    }

    // Both forms of `createNewPin` end in this one.
    GraphNodePin* createNewPin(unsigned int const& capacity, PinDirection const& direction) override
    {
        auto* const pin = new TypedPin(capacity, direction);
        pin->setId(nextPinId_++);
        GraphScene::addNodePin(pin);
        return pin;
    }
    using GraphScene::createNewPin;

    HostNode* createNewCompound() override
    {
        auto* const node = new HostNode(getFreeNodeId());
        node->setCompound(true);
        return node;
    }

    HostNode* createNewInterfaceNode() override
    {
        auto* const node = new HostNode(getFreeNodeId());
        node->setInterface(true);
        return node;
    }

    HostNode* createNewPassThrough() override { return new HostNode(getFreeNodeId()); }
    HostNode* createNewEvaluator() override { return new HostNode(getFreeNodeId()); }

    HostConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override
    {
        return new HostConnection(source, target);
    }

private:
    void place(HostNode& node, char const* name, GraphNodeBase* owner)
    {
        node.setName(name);
        node.setNodeOwner(owner);
        addNodeToGraph(&node);
    }

    unsigned int nextPinId_ = 1;
};

void tryToConnect(HostScene& scene, TypedPin& source, TypedPin& target)
{
    auto const* const connection = static_cast<HostConnection*>(scene.connect(&source, &target, false));
    std::printf("%s > %s: %s\n", source.getFullName().c_str(), target.getFullName().c_str(),
                connection != nullptr ? connection->getColor() : "refused");
}

} // namespace

int main()
{
    HostScene scene;
    HostNode& picture = scene.addNode("picture", scene.getRootNode());
    TypedPin& color = scene.addPin(picture, "color", "color", PIN_OUTPUT);
    TypedPin& alpha = scene.addPin(picture, "alpha", "float", PIN_OUTPUT);
    HostNode& blur = scene.addNode("blur", scene.getRootNode());
    TypedPin& amount = scene.addPin(blur, "amount", "float", PIN_INPUT);
    TypedPin& in = scene.addPin(blur, "in", "color", PIN_INPUT);

    tryToConnect(scene, color, amount);
    tryToConnect(scene, alpha, amount);
    std::printf("blur has warnings: %s\n", blur.hasWarnings() ? "yes" : "no");
    tryToConnect(scene, color, in);
    std::printf("blur has warnings: %s\n", blur.hasWarnings() ? "yes" : "no");

    // The pins that the library makes come from the scene's factory, without a type.
    HostNode& box = scene.addCompound("box", scene.getRootNode());
    GraphNodeBase* interfaceNode = nullptr;
    GraphNodePin* outside = nullptr;
    GraphNodePin* inside = nullptr;
    scene.addCompoundInterfaceNode(PIN_INPUT, &box, interfaceNode, outside, inside);
    tryToConnect(scene, alpha, static_cast<TypedPin&>(*outside));
    std::printf("%s is a %s\n", inside->getFullName().c_str(),
                static_cast<TypedPin const*>(inside)->getType().c_str());
}
