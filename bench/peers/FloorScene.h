/// @file
/// A plain store of the same information that a ks_graph scene holds, without virtual operations, callbacks
/// and rules of a host: the floor that the library is measured against.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace bench
{

inline constexpr std::uint32_t floorUnlimited = 0xFFFFFFFFu;

enum FloorDirection : std::uint32_t
{
    floorInput = 1,
    floorOutput = 2
};

template <class Parts>
struct FloorPin;

template <class Parts>
struct FloorConnection
{
    FloorPin<Parts>* source;
    FloorPin<Parts>* target;
    bool implicit;
    std::uint32_t place; // in the scene's array
};

/// Its tree links come from the parts, as intrusive as they are there.
template <class Parts>
struct FloorNode : Parts::template TreeLinks<FloorNode<Parts>>
{
    explicit FloorNode(std::uint32_t nodeId) : id(nodeId) {}

    typename Parts::template PointerList<FloorPin<Parts>> pins;
    std::uint32_t id;
    bool compound = false;
    bool interface = false;
    bool marked = false;
    FloorNode* owner = nullptr;
    std::string name;
    std::string type;
    std::string description;
    std::string category;
};

template <class Parts>
struct FloorPin
{
    FloorPin(std::uint32_t pinId, std::uint32_t maximum, FloorDirection pinDirection,
             std::string_view pinName)
        : id(pinId), capacity(maximum), direction(pinDirection), name(pinName)
    {}

    bool isFull() const { return inputs.size() + outputs.size() >= capacity; }

    std::uint32_t id;
    std::uint32_t capacity;
    FloorNode<Parts>* node = nullptr;
    FloorDirection direction;
    FloorPin* child = nullptr;
    FloorPin* parent = nullptr;
    std::string name;
    float borderColor[4] = {0, 0.6f, 0, 1};
    float color[4] = {0, 0.6f, 0, 1};
    typename Parts::template PointerList<FloorConnection<Parts>> outputs;
    typename Parts::template PointerList<FloorConnection<Parts>> inputs;
    typename Parts::Lock lock;
};

template <class Parts>
class FloorScene
{
public:
    using Node = FloorNode<Parts>;
    using Pin = FloorPin<Parts>;
    using Connection = FloorConnection<Parts>;

    Node* addNode(std::uint32_t id, std::string_view name, Node* owner)
    {
        Node* const node = nodePool_.make(id);
        node->name = name;
        nodes_.insert(id, node);
        node->owner = owner;
        if (owner != nullptr) owner->addChild(node);
        node->nameChanged();
        nodeNames_.insert(node);
        return node;
    }

    Pin* addPin(Node* node, FloorDirection direction, std::string_view name)
    {
        std::string_view const firstName = Parts::goesStepByStep ? "Untitled" : name;
        Pin* const pin = pinPool_.make(nextPinId_++, floorUnlimited, direction, firstName);
        pin->node = node;
        node->pins.append(pin);
        pins_.insert(pin->id, pin);
        pinNames_.insert(pin);
        if (Parts::goesStepByStep) rename(pin, name);
        return pin;
    }

    /// Null if a pin is full or has the wrong direction.
    Connection* connect(Pin* source, Pin* target, bool implicit)
    {
        bool const isAllowed =
            (source->direction & floorOutput) != 0 && (target->direction & floorInput) != 0;
        if (!isAllowed || source->isFull() || target->isFull()) return nullptr;
        auto const place = static_cast<std::uint32_t>(connections_.size());
        Connection* const connection = connectionPool_.make(Connection{source, target, implicit, place});
        connections_.push_back(connection);
        {
            std::lock_guard const guard(source->lock);
            source->outputs.append(connection);
        }
        {
            std::lock_guard const guard(target->lock);
            target->inputs.append(connection);
        }
        count(*connection, 1);
        return connection;
    }

    void disconnect(Connection* connection)
    {
        Connection* const last = connections_.back();
        connections_[connection->place] = last;
        last->place = connection->place;
        connections_.pop_back();
        {
            std::lock_guard const guard(connection->source->lock);
            connection->source->outputs.removeFast(connection);
        }
        {
            std::lock_guard const guard(connection->target->lock);
            connection->target->inputs.removeFast(connection);
        }
        count(*connection, -1);
        connectionPool_.free(connection);
    }

    /// With its pins and their connections.
    void removeNode(Node* node)
    {
        for (Pin* const pin : node->pins)
        {
            while (pin->inputs.size() > 0) disconnect(*pin->inputs.begin());
            while (pin->outputs.size() > 0) disconnect(*pin->outputs.begin());
            pinNames_.erase(pin);
            pins_.erase(pin->id);
        }
        nodeNames_.erase(node);
        for (Pin* const pin : node->pins) pinPool_.free(pin);
        if (node->owner != nullptr) node->owner->removeChild(node);
        nodes_.erase(node->id);
        nodePool_.free(node);
    }

    void rename(Node* node, std::string_view name)
    {
        forgetNames(node);
        node->name = name;
        learnNames(node);
    }

    void rename(Pin* pin, std::string_view name)
    {
        pinNames_.erase(pin);
        pin->name = name;
        pinNames_.insert(pin);
    }

    void setOwner(Node* node, Node* owner)
    {
        forgetNames(node);
        if (node->owner != nullptr) node->owner->removeChild(node);
        node->owner = owner;
        owner->addChild(node);
        learnNames(node);
    }

    bool areConnected(Node const* from, Node const* to) const
    {
        return pairs_.connected(from->id, to->id, true);
    }
    Node* findNode(std::string const& fullName) const { return nodeNames_.find(fullName); }
    Node* findNode(std::uint32_t id) const { return nodes_.find(id); }
    Pin* findPin(std::string const& fullName) const { return pinNames_.find(fullName); }

    /// Every connection that crosses the boundary of the compound is led through an interface node of it,
    /// which takes the next id.
    void moveToCompound(std::vector<Node*> const& moved, Node* compound, std::uint32_t& nextId)
    {
        for (Node* const node : moved) node->marked = true;
        std::vector<Connection*> const crossing = connectionsToOthers(moved);
        PinRenames renames;
        for (Node* const node : moved)
        {
            if (Parts::goesStepByStep)
                setOwner(node, compound, renames);
            else
                setOwner(node, compound);
        }
        InterfaceNodes interfaces;
        for (Connection* const connection : crossing) leadThrough(connection, compound, interfaces, nextId);
        for (Node* const node : moved) node->marked = false;
    }

    std::string toXml() const
    {
        std::string out = "<graph>\n<nodes>\n";
        nodes_.each(
            [&out](Node const* node)
            {
                if (Parts::goesStepByStep)
                    out += xmlOf(*node);
                else
                    appendXml(out, *node);
            });
        out += "</nodes>\n<connections>\n";
        for (Connection const* const connection : connections_)
        {
            out += "<connection source-node=\"";
            Parts::appendNumber(out, connection->source->node->id);
            out += "\" target-node=\"";
            Parts::appendNumber(out, connection->target->node->id);
            out += "\"/>\n";
        }
        return out += "</connections>\n</graph>\n";
    }

    void clear()
    {
        if (Parts::goesStepByStep)
            for (Connection* const connection : std::vector<Connection*>(connections_))
                disconnect(connection);
        for (Connection* const connection : connections_) connectionPool_.free(connection);
        connections_.clear();
        nodes_.each(
            [this](Node* node)
            {
                for (Pin* const pin : node->pins) pinPool_.free(pin);
                nodePool_.free(node);
            });
    }

private:
    // Old full names by new ones.
    using PinRenames = std::map<std::string, std::string>;

    // By moved node: that of its inputs, that of its outputs.
    struct InterfaceNodes
    {
        std::unordered_map<Node*, Node*> ofInputs;
        std::unordered_map<Node*, Node*> ofOutputs;
    };

    void setOwner(Node* node, Node* owner, PinRenames& renames)
    {
        std::vector<std::string> oldNames = fullNamesOfPins(*node);
        setOwner(node, owner);
        std::vector<std::string> newNames = fullNamesOfPins(*node);
        for (std::size_t i = 0; i < newNames.size(); ++i)
            renames.emplace(std::move(newNames[i]), std::move(oldNames[i]));
    }

    static std::vector<std::string> fullNamesOfPins(Node const& node)
    {
        std::string const front = Parts::fullName(node).append(".");
        std::vector<std::string> names;
        for (Pin const* const pin : node.pins) names.push_back(std::string(front).append(pin->name));
        return names;
    }

    template <class Change>
    void changeNames(Node* node, Change change)
    {
        change(node);
        node->eachChild([&](Node* child) { changeNames(child, change); });
    }

    void forgetNames(Node* top)
    {
        changeNames(top,
                    [this](Node* node)
                    {
                        nodeNames_.erase(node);
                        for (Pin* const pin : node->pins) pinNames_.erase(pin);
                    });
    }

    void learnNames(Node* top)
    {
        changeNames(top,
                    [this](Node* node)
                    {
                        node->nameChanged();
                        nodeNames_.insert(node);
                        for (Pin* const pin : node->pins) pinNames_.insert(pin);
                    });
    }

    void count(Connection const& connection, int change)
    {
        pairs_.add(connection.source->node->id, connection.target->node->id, change, connection.implicit);
    }

    // A counter for each owner and base instead of a search that begins at 1.
    std::string freeName(std::string const& ownerFullName, std::string const& base, bool bareFirst)
    {
        std::uint32_t& counter = lastNumbers_[std::string(ownerFullName).append(".").append(base)];
        std::uint32_t const number = bareFirst ? counter++ : ++counter;
        if (number == 0) return base;
        return std::string(base).append(number < 10 ? "0" : "").append(std::to_string(number));
    }

    static std::vector<Connection*> connectionsToOthers(std::vector<Node*> const& marked)
    {
        std::vector<Connection*> found;
        for (Node* const node : marked)
        {
            for (Pin* const pin : node->pins)
            {
                for (Connection* const output : pin->outputs)
                    if (!output->target->node->marked) found.push_back(output);
                for (Connection* const input : pin->inputs)
                    if (!input->source->node->marked) found.push_back(input);
            }
        }
        return found;
    }

    void leadThrough(Connection* connection, Node* compound, InterfaceNodes& interfaces,
                     std::uint32_t& nextId)
    {
        Pin* const source = connection->source;
        Pin* const target = connection->target;
        bool const leaves = source->node->marked;
        Pin* const movedPin = leaves ? source : target;
        std::string const compoundName = Parts::fullName(*compound);

        Node*& interfaceNode = (leaves ? interfaces.ofOutputs : interfaces.ofInputs)[movedPin->node];
        if (interfaceNode == nullptr)
        {
            char const* const base = leaves ? "output interface" : "input interface";
            interfaceNode = addNode(nextId++, freeName(compoundName, base, false), compound);
            interfaceNode->interface = true;
        }
        std::string const name = freeName(compoundName, movedPin->name, true);
        Pin* const compoundPin = addPin(compound, leaves ? floorOutput : floorInput, name);
        Pin* const interfacePin = addPin(interfaceNode, leaves ? floorInput : floorOutput, name);
        compoundPin->child = interfacePin;
        interfacePin->parent = compoundPin;
        disconnect(connection);
        connect(leaves ? source : interfacePin, leaves ? interfacePin : target, false);
        connect(leaves ? compoundPin : source, leaves ? target : compoundPin, false);
    }

    static std::string xmlOf(Node const& node)
    {
        std::string out;
        appendXml(out, node);
        return out;
    }

    static void appendXml(std::string& out, Node const& node)
    {
        out += "<node id=\"";
        Parts::appendNumber(out, node.id);
        out += "\">\n<pins>\n";
        for (Pin const* const pin : node.pins)
        {
            out += "<pin parent=\"";
            Parts::appendNumber(out, node.id);
            out += (pin->direction & floorInput) != 0 ? "\" input=\"true\" output=\""
                                                      : "\" input=\"false\" output=\"";
            out += (pin->direction & floorOutput) != 0 ? "true\" maxconnections=\""
                                                       : "false\" maxconnections=\"";
            Parts::appendNumber(out, pin->capacity);
            out += "\">\n</pin>\n";
        }
        out += "</pins>\n</node>\n";
    }

    typename Parts::template Pool<Node> nodePool_;
    typename Parts::template Pool<Pin> pinPool_;
    typename Parts::template Pool<Connection> connectionPool_;
    typename Parts::template IdIndex<Node> nodes_;
    typename Parts::template IdIndex<Pin> pins_;
    typename Parts::template NodeNameIndex<Node> nodeNames_;
    typename Parts::template PinNameIndex<Pin> pinNames_;
    typename Parts::PairCounts pairs_;
    std::vector<Connection*> connections_;
    std::unordered_map<std::string, std::uint32_t> lastNumbers_;
    std::uint32_t nextPinId_ = 1;
};

} // namespace bench
