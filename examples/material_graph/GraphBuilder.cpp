#include "GraphBuilder.h"

#include "Text.h"

#include <utility>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::PIN_INPUT;
using kestrel::graph::PIN_OUTPUT;

namespace
{

using Uses = std::map<std::string, std::string>;

std::string nameOf(pugi::xml_node element)
{
    return element.attribute("name").value();
}

std::string typeOf(pugi::xml_node element)
{
    return element.attribute("type").value();
}

std::string whatIsWrongWithName(pugi::xml_node element, MaterialNode& owner)
{
    std::string const subject = std::string("<") + element.name() + "> in " + inQuotes(owner.getFullName());
    if (nameOf(element).empty()) return subject + " has no name";
    return subject + " has the name " + inQuotes(nameOf(element)) + ", which is taken there";
}

void noteUse(pugi::xml_node port, Uses& uses)
{
    std::string const name = port.attribute("interfacename").value();
    if (name.empty()) return;
    std::string& type = uses[name];
    if (type.empty()) type = typeOf(port);
}

// The names that `interfacename` uses inside a graph, with the type that the first use gives. The graph's own
// inputs name those of the graph around it.
Uses usesIn(pugi::xml_node graph)
{
    Uses uses;
    for (pugi::xml_node output : graph.children("output")) noteUse(output, uses);
    for (pugi::xml_node child : graph.children())
        if (kindOf(child) != ElementKind::Other)
            for (pugi::xml_node input : child.children("input")) noteUse(input, uses);
    return uses;
}

} // namespace

GraphBuilder::GraphBuilder(MaterialScene& scene, Definitions const& definitions, Diagnostics& diagnostics,
                           Progress& progress)
    : scene_(scene), definitions_(definitions), diagnostics_(diagnostics), progress_(progress)
{}

// Scope by scope instead of graph within graph: documents nest as deep as they like.
DocumentGraph GraphBuilder::build(pugi::xml_node root)
{
    progress_.start("reading elements");
    graph_.scopes.push_back({root, &scene_.root(), nullptr, 0, {}, {}});
    for (std::size_t i = 0; i < graph_.scopes.size(); ++i) readScope(graph_.scopes[i]);
    progress_.start("reading graphs", graph_.scopes.size());
    for (Scope& scope : graph_.scopes) makeInterface(scope);
    progress_.finish();
    return std::move(graph_);
}

void GraphBuilder::readScope(Scope& scope)
{
    metNames_.clear();
    takenNames_.clear();
    lastNumbers_.clear();
    for (pugi::xml_node child : scope.element.children()) takenNames_.insert(nameOf(child));
    for (pugi::xml_node child : scope.element.children())
    {
        progress_.step();
        ElementKind const kind = kindOf(child);
        if (kind == ElementKind::Node) readNode(child, scope);
        if (kind == ElementKind::Graph) readGraph(child, scope);
        if (kind == ElementKind::Other) checkDefinitionName(child, scope);
    }
}

void GraphBuilder::readNode(pugi::xml_node element, Scope& scope)
{
    KS_String const name(nodeNameFor(element));
    MaterialNode& node = scene_.addMaterialNode(element.name(), name, *scope.compound);
    enter(element, node, scope);
    readInputs(element, node, scope);
    readOutputs(element, node);
}

void GraphBuilder::readGraph(pugi::xml_node element, Scope& scope)
{
    if (scope.depth == maxDepth)
    {
        diagnostics_.error(element, *scope.compound,
                           "graphs are nested more than " + std::to_string(maxDepth) +
                               " levels deep; this one is not read");
        return;
    }
    MaterialNode& compound = scene_.addCompound(KS_String(nodeNameFor(element)), *scope.compound);
    enter(element, compound, scope);
    graph_.scopes.push_back({element, &compound, &scope, scope.depth + 1, {}, {}});
}

void GraphBuilder::enter(pugi::xml_node element, MaterialNode& node, Scope& scope)
{
    node.setDescription(element.attribute("doc").value());
    std::string const name = nameOf(element);
    if (!name.empty()) scope.nodes.emplace(name, &node);
    if (node.getName() != KS_String(name))
        diagnostics_.error(element, node,
                           whatIsWrongWithName(element, *scope.compound) + "; it is read as " +
                               inQuotes(node.getName()));
}

void GraphBuilder::readInputs(pugi::xml_node element, MaterialNode& node, Scope& scope)
{
    for (pugi::xml_node input : portsNamed("input", element, node))
    {
        MaterialPin& pin = scene_.addInput(node, KS_String(nameOf(input)), KS_String(typeOf(input)));
        pin.setConverts(input.attribute("channels"));
        if (isFed(input)) graph_.ports.push_back({input, &pin, &scope});
    }
}

// A node of several outputs may be declared in another document: its outputs are then known by their use.
void GraphBuilder::readOutputs(pugi::xml_node element, MaterialNode& node)
{
    Outputs& outputs = graph_.outputs[&node];
    bool const several = typeOf(element) == "multioutput";
    std::vector<pugi::xml_node> declared = portsNamed("output", element, node);
    outputs.open = several || declared.empty();
    if (declared.empty() && several) declared = definitions_.outputsOf(element);
    for (pugi::xml_node output : declared)
        outputs.pins.emplace_back(
            nameOf(output), &scene_.addOutput(node, KS_String(nameOf(output)), KS_String(typeOf(output))));
    if (declared.empty() && !several)
        outputs.pins.emplace_back("out", &scene_.addOutput(node, "out", KS_String(typeOf(element))));
}

// The inputs or outputs that can be told apart by their names.
std::vector<pugi::xml_node> GraphBuilder::portsNamed(char const* tag, pugi::xml_node element,
                                                     MaterialNode& node)
{
    std::set<std::string> names;
    std::vector<pugi::xml_node> ports;
    for (pugi::xml_node port : element.children(tag))
    {
        if (!nameOf(port).empty() && names.insert(nameOf(port)).second)
            ports.push_back(port);
        else
            diagnostics_.error(port, node, whatIsWrongWithName(port, node) + "; it is left out");
    }
    return ports;
}

std::string GraphBuilder::nodeNameFor(pugi::xml_node element)
{
    std::string const name = nameOf(element);
    if (name.empty()) return freeName(element.name());
    return metNames_.insert(name).second ? name : freeName(name);
}

// Numbers go up for each base name, so that a thousand nodes without a name stay cheap.
std::string GraphBuilder::freeName(std::string const& base)
{
    std::string candidate;
    do candidate = base + std::to_string(++lastNumbers_[base]);
    while (!takenNames_.insert(candidate).second);
    return candidate;
}

void GraphBuilder::checkDefinitionName(pugi::xml_node element, Scope& scope)
{
    std::string const name = nameOf(element);
    if (!name.empty() && !metNames_.insert(name).second)
        diagnostics_.error(element, *scope.compound, whatIsWrongWithName(element, *scope.compound));
}

void GraphBuilder::makeInterface(Scope& scope)
{
    progress_.step();
    Uses const uses = usesIn(scope.element);
    InterfaceNode inputNode = nullptr;
    makeOwnInputs(scope, uses, inputNode);
    makeDefinedInputs(scope, uses, inputNode);
    makeOutputs(scope);
}

// Only the inputs that something inside uses or something outside feeds.
void GraphBuilder::makeOwnInputs(Scope& scope, Uses const& uses, InterfaceNode& node)
{
    for (pugi::xml_node input : scope.element.children("input"))
    {
        std::string const name = nameOf(input);
        if (name.empty())
            diagnostics_.error(input, *scope.compound, whatIsWrongWithName(input, *scope.compound));
        bool const fed = scope.outer != nullptr && isFed(input);
        if (name.empty() || scope.interfaceInputs.count(name) != 0 || !(fed || uses.count(name) != 0))
            continue;
        MaterialPin& outer = makeInput(scope, name, typeOf(input), node);
        outer.setConverts(input.attribute("channels"));
        if (fed) graph_.ports.push_back({input, &outer, scope.outer});
    }
}

void GraphBuilder::makeDefinedInputs(Scope& scope, Uses const& uses, InterfaceNode& node)
{
    for (auto const& [name, usedType] : uses)
    {
        if (scope.interfaceInputs.count(name) != 0) continue;
        Definitions::InterfaceInput const defined = definitions_.interfaceInput(scope.element, name);
        if (defined.exists) makeInput(scope, name, defined.type.empty() ? usedType : defined.type, node);
    }
}

MaterialPin& GraphBuilder::makeInput(Scope& scope, std::string const& name, std::string const& type,
                                     InterfaceNode& node)
{
    MaterialScene::PinPair const pair =
        scene_.addInterfacePair(PIN_INPUT, *scope.compound, node, KS_String(name), KS_String(type));
    scope.interfaceInputs.emplace(name, &pair.inner);
    return pair.outer;
}

void GraphBuilder::makeOutputs(Scope& scope)
{
    InterfaceNode node = nullptr;
    Outputs& outputs = graph_.outputs[scope.compound];
    for (pugi::xml_node output : scope.element.children("output"))
    {
        std::string const name = nameOf(output);
        if (name.empty())
            diagnostics_.error(output, *scope.compound, whatIsWrongWithName(output, *scope.compound));
        if (name.empty() || outputs.find(name) != nullptr) continue;
        MaterialScene::PinPair const pair = scene_.addInterfacePair(
            PIN_OUTPUT, *scope.compound, node, KS_String(name), KS_String(typeOf(output)));
        outputs.pins.emplace_back(name, &pair.outer);
        pair.inner.setConverts(output.attribute("channels"));
        if (isFed(output)) graph_.ports.push_back({output, &pair.inner, &scope});
    }
}

} // namespace material_graph
