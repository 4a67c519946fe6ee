/// @file
/// The XML text of a scene, read back strictly: every byte of it has to be as the writers promise.
#pragma once

#include "Expect.h"

#include <ks_graph/ks_graph.h>

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <vector>

namespace kestrel::fuzz
{

struct PinElement
{
    int parent;
    bool input;
    bool output;
    int maxConnections;

    bool operator==(PinElement const&) const = default;
};

struct NodeElement
{
    int id;
    std::vector<PinElement> pins;

    bool operator==(NodeElement const&) const = default;
};

struct ConnectionElement
{
    int sourceNode;
    int targetNode;

    bool operator==(ConnectionElement const&) const = default;
};

struct SceneElement
{
    std::vector<NodeElement> nodes;
    std::vector<ConnectionElement> connections;

    bool operator==(SceneElement const&) const = default;
};

class SceneXmlReader
{
public:
    explicit SceneXmlReader(std::string_view text) : text_(text) {}

    SceneElement read()
    {
        SceneElement scene;
        expect("<graph>\n<nodes>\n");
        while (!accept("</nodes>\n<connections>\n")) scene.nodes.push_back(readNode());
        while (!accept("</connections>\n</graph>\n")) scene.connections.push_back(readConnection());
        FUZZ_EXPECT(text_.empty());
        return scene;
    }

private:
    NodeElement readNode()
    {
        NodeElement node{readNumber("<node id=\"", "\">\n<pins>\n"), {}};
        while (!accept("</pins>\n</node>\n")) node.pins.push_back(readPin());
        return node;
    }

    PinElement readPin()
    {
        PinElement pin{};
        pin.parent = readNumber("<pin parent=\"", "\" input=\"");
        pin.input = readBool("\" output=\"");
        pin.output = readBool("\"");
        pin.maxConnections = readNumber(" maxconnections=\"", "\">\n</pin>\n");
        return pin;
    }

    ConnectionElement readConnection()
    {
        int const source = readNumber("<connection source-node=\"", "\"");
        return {source, readNumber(" target-node=\"", "\"/>\n")};
    }

    // As printf writes it: no plus sign, no leading zeros.
    int readNumber(std::string_view front, std::string_view behind)
    {
        expect(front);
        int number = 0;
        auto const [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), number);
        FUZZ_EXPECT(error == std::errc());
        std::size_t const length = static_cast<std::size_t>(end - text_.data());
        FUZZ_EXPECT(text_.substr(0, length) == std::to_string(number));
        text_.remove_prefix(length);
        expect(behind);
        return number;
    }

    bool readBool(std::string_view behind)
    {
        bool const value = accept("true");
        if (!value) expect("false");
        expect(behind);
        return value;
    }

    void expect(std::string_view word) { FUZZ_EXPECT(accept(word)); }

    bool accept(std::string_view word)
    {
        if (!text_.starts_with(word)) return false;
        text_.remove_prefix(word.size());
        return true;
    }

    std::string_view text_;
};

/// What the XML of the scene has to hold, asked from the scene itself.
inline SceneElement elementOf(graph::GraphScene& scene)
{
    SceneElement element;
    ArrayOfPtr<graph::GraphNodeBase, KS_NO> nodes;
    scene.getGraphNodesAsList(nodes);
    for (graph::GraphNodeBase* node : nodes)
    {
        int const id = static_cast<int>(node->getId());
        NodeElement nodeElement{id, {}};
        for (graph::GraphNodePin* pin : node->getNodePins())
            nodeElement.pins.push_back({id, pin->getDirection().hasAny(graph::PIN_INPUT),
                                        pin->getDirection().hasAny(graph::PIN_OUTPUT),
                                        static_cast<int>(pin->getMaxNumConnections())});
        element.nodes.push_back(nodeElement);
    }
    for (graph::GraphConnection* connection : scene.getGraphConnections())
        element.connections.push_back({static_cast<int>(connection->getSourceNode()->getId()),
                                       static_cast<int>(connection->getTargetNode()->getId())});
    return element;
}

} // namespace kestrel::fuzz
