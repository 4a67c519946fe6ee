/// @file
#pragma once

#include <pugixml.hpp>

#include <map>
#include <string>
#include <vector>

namespace material_graph
{

enum class ElementKind
{
    Node,
    Graph,
    /// Definitions, looks, comments and everything else that is no part of a graph, ports included.
    Other
};

ElementKind kindOf(pugi::xml_node element);

/// Whether an `input` or `output` names something that feeds it.
bool isFed(pugi::xml_node port);

/// The `nodedef` and `implementation` elements of a document, and what they say about its graphs and nodes.
///
/// A definition may stand in another document. Whatever that one could say is taken as said.
class Definitions
{
public:
    explicit Definitions(pugi::xml_node root);

    /// Whether names at document level may be found in another file.
    bool hasIncludes() const { return hasIncludes_; }

    struct InterfaceInput
    {
        bool exists;
        /// Empty when the definition does not tell.
        std::string type;
    };
    /// What `interfacename="name"` means inside a graph that has no input of that name itself.
    InterfaceInput interfaceInput(pugi::xml_node graph, std::string const& name) const;

    /// The outputs that the document declares for a node with several; none if it does not.
    std::vector<pugi::xml_node> outputsOf(pugi::xml_node node) const;

private:
    using Names = std::multimap<std::string, std::string>;

    std::vector<std::string> definitionsOf(pugi::xml_node graph) const;
    std::vector<pugi::xml_node> inheritedFrom(std::string const& name, bool& complete) const;

    std::map<std::string, pugi::xml_node> byName_;
    Names byCategory_;
    Names byGraph_;
    bool hasIncludes_ = false;
};

} // namespace material_graph
