#include "ReferenceWiring.h"

#include "Text.h"

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;

namespace
{

// The node whose input or output the document means: for a pin inside a graph, the graph.
GraphNodeBase& nodeOf(Port const& port)
{
    GraphNodePin* const parent = port.pin->getParentGraphNodePinPtr();
    return *(parent != nullptr ? parent : port.pin)->getParentGraphNodePtr();
}

std::string typed(MaterialPin& pin)
{
    return inQuotes(pin.getFullName()) + " (" + std::string(pin.getInfo()) + ")";
}

} // namespace

ReferenceWiring::ReferenceWiring(MaterialScene& scene, DocumentGraph& graph, Definitions const& definitions,
                                 Diagnostics& diagnostics, Progress& progress)
    : scene_(scene), graph_(graph), definitions_(definitions), diagnostics_(diagnostics), progress_(progress)
{}

void ReferenceWiring::wire()
{
    progress_.start("connecting", graph_.ports.size());
    for (Port const& port : graph_.ports) wirePort(port);
    addMissingOutputs();
    progress_.finish();
}

void ReferenceWiring::wirePort(Port const& port)
{
    progress_.step();
    pugi::xml_node const reference = referenceOf(port);
    wireToNode(port, reference, "nodename");
    wireToNode(port, reference, "nodegraph");
    wireToInterface(port);
}

// An `output` on its own names an output beside the port: what feeds that one feeds the port.
pugi::xml_node ReferenceWiring::referenceOf(Port const& port)
{
    bool const direct = port.element.attribute("nodename") || port.element.attribute("nodegraph") ||
                        port.element.attribute("interfacename");
    if (direct) return port.element;
    char const* const name = port.element.attribute("output").value();
    pugi::xml_node const output = port.scope->element.find_child_by_attribute("output", "name", name);
    if (!output || output == port.element)
        report(port, "refers to the output " + inQuotes(name) + ", which is not there");
    return output;
}

void ReferenceWiring::wireToNode(Port const& port, pugi::xml_node reference, char const* attribute)
{
    std::string const name = reference.attribute(attribute).value();
    if (name.empty()) return;
    auto const found = port.scope->nodes.find(name);
    if (found != port.scope->nodes.end())
    {
        MaterialPin* const source = outputFor(port, *found->second, reference.attribute("output").value());
        if (source != nullptr) connect(*source, port);
    }
    else if (port.scope->outer != nullptr || !definitions_.hasIncludes())
    {
        report(port, "refers to " + inQuotes(name) + ", which is not in " +
                         inQuotes(port.scope->compound->getFullName()));
    }
}

void ReferenceWiring::wireToInterface(Port const& port)
{
    std::string const name = port.element.attribute("interfacename").value();
    if (name.empty()) return;
    auto const found = port.scope->interfaceInputs.find(name);
    if (found != port.scope->interfaceInputs.end())
        connect(*found->second, port);
    else
        report(port, "refers to the interface input " + inQuotes(name) + ", which " +
                         inQuotes(port.scope->compound->getFullName()) + " does not have");
}

void ReferenceWiring::connect(MaterialPin& source, Port const& port)
{
    if (scene_.connect(&source, port.pin, false) != nullptr) return;
    report(port, scene_.isPinFull(port.pin)
                     ? "is connected already and refuses " + inQuotes(source.getFullName())
                     : "takes " + std::string(port.pin->getInfo()) + " and refuses " + typed(source));
}

// Without a name: "out", or the only one.
MaterialPin* ReferenceWiring::outputFor(Port const& port, MaterialNode& node, std::string const& name)
{
    Outputs& outputs = graph_.outputs[&node];
    MaterialPin* const known = outputs.find(name.empty() ? "out" : name);
    if (known != nullptr) return known;
    if (name.empty() && outputs.pins.size() == 1) return outputs.pins.front().second;
    if (outputs.open && !(name.empty() && outputs.pins.size() > 1))
    {
        std::string const newName = name.empty() ? "out" : name;
        MaterialPin& pin = scene_.addOutput(node, KS_String(newName), port.pin->getType());
        outputs.pins.emplace_back(newName, &pin);
        return &pin;
    }
    if (name.empty() && !outputs.pins.empty())
        report(port, "does not say which output of " + inQuotes(node.getFullName()) + " it takes");
    else
        report(port, "refers to " + (name.empty() ? "an output" : "the output " + inQuotes(name)) + " of " +
                         inQuotes(node.getFullName()) + ", which has none" +
                         (name.empty() ? "" : " of that name"));
    return nullptr;
}

// Every node has at least one output, but for those of several outputs that is known only now.
void ReferenceWiring::addMissingOutputs()
{
    for (auto& [node, outputs] : graph_.outputs)
        if (outputs.open && outputs.pins.empty())
            outputs.pins.emplace_back("out", &scene_.addOutput(*node, "out", ""));
}

void ReferenceWiring::report(Port const& port, std::string const& text)
{
    GraphNodeBase& node = nodeOf(port);
    diagnostics_.error(port.element, node,
                       std::string(port.element.name()) + " " + inQuotes(port.pin->getName()) + " of " +
                           inQuotes(node.getFullName()) + " " + text);
}

} // namespace material_graph
