#include "Definitions.h"

#include <set>
#include <string_view>

namespace material_graph
{

namespace
{

bool isDefinition(std::string_view tag)
{
    static std::set<std::string_view> const tags{
        "attributedef",      "backdrop",       "collection", "geomattr",   "geominfo",       "geomprop",
        "geompropdef",       "implementation", "input",      "look",       "lookgroup",      "material",
        "materialassign",    "nodedef",        "output",     "property",   "propertyassign", "propertyset",
        "propertysetassign", "targetdef",      "token",      "typedef",    "unitdef",        "unittypedef",
        "variant",           "variantassign",  "variantset", "visibility",
    };
    return tags.count(tag) != 0;
}

} // namespace

ElementKind kindOf(pugi::xml_node element)
{
    std::string_view const tag = element.name();
    if (element.type() != pugi::node_element || tag.find(':') != std::string_view::npos || isDefinition(tag))
        return ElementKind::Other;
    return tag == "nodegraph" ? ElementKind::Graph : ElementKind::Node;
}

bool isFed(pugi::xml_node port)
{
    for (char const* attribute : {"nodename", "nodegraph", "interfacename", "output"})
        if (*port.attribute(attribute).value() != '\0') return true;
    return false;
}

Definitions::Definitions(pugi::xml_node root)
{
    for (pugi::xml_node child : root.children())
    {
        std::string_view const tag = child.name();
        if (tag == "nodedef")
        {
            byName_.emplace(child.attribute("name").value(), child);
            byCategory_.emplace(child.attribute("node").value(), child.attribute("name").value());
        }
        else if (tag == "implementation" && child.attribute("nodegraph"))
        {
            byGraph_.emplace(child.attribute("nodegraph").value(), child.attribute("nodedef").value());
        }
        else if (tag == "xi:include")
        {
            hasIncludes_ = true;
        }
    }
}

Definitions::InterfaceInput Definitions::interfaceInput(pugi::xml_node graph, std::string const& name) const
{
    bool elsewhere = false;
    for (std::string const& definition : definitionsOf(graph))
    {
        bool complete = true;
        for (pugi::xml_node nodedef : inheritedFrom(definition, complete))
        {
            pugi::xml_node const input = nodedef.find_child_by_attribute("input", "name", name.c_str());
            if (input) return {true, input.attribute("type").value()};
        }
        elsewhere = elsewhere || !complete;
    }
    return {elsewhere, ""};
}

std::vector<pugi::xml_node> Definitions::outputsOf(pugi::xml_node node) const
{
    std::vector<std::string> candidates{node.attribute("nodedef").value()};
    auto const [first, last] = byCategory_.equal_range(node.name());
    for (auto entry = first; entry != last; ++entry) candidates.push_back(entry->second);
    for (std::string const& candidate : candidates)
    {
        bool complete = true;
        std::vector<pugi::xml_node> outputs;
        for (pugi::xml_node nodedef : inheritedFrom(candidate, complete))
            for (pugi::xml_node output : nodedef.children("output")) outputs.push_back(output);
        if (outputs.size() > 1) return outputs;
    }
    return {};
}

std::vector<std::string> Definitions::definitionsOf(pugi::xml_node graph) const
{
    std::vector<std::string> names;
    if (graph.attribute("nodedef")) names.push_back(graph.attribute("nodedef").value());
    auto const [first, last] = byGraph_.equal_range(graph.attribute("name").value());
    for (auto entry = first; entry != last; ++entry) names.push_back(entry->second);
    return names;
}

// The definition and those it inherits from; a ring of them ends where it closes. Not complete when one of
// them is not in the document.
std::vector<pugi::xml_node> Definitions::inheritedFrom(std::string const& name, bool& complete) const
{
    std::vector<pugi::xml_node> chain;
    std::string next = name;
    while (!next.empty() && chain.size() <= byName_.size())
    {
        auto const found = byName_.find(next);
        complete = found != byName_.end();
        if (!complete) break;
        chain.push_back(found->second);
        next = found->second.attribute("inherit").value();
    }
    return chain;
}

} // namespace material_graph
