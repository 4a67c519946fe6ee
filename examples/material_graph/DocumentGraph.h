/// @file
/// What the two passes of the reader hand to each other: the first makes nodes and pins, the second
/// connections.
#pragma once

#include "MaterialScene.h"

#include <pugixml.hpp>

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace material_graph
{

/// A graph element, or the document, with what the names in it mean.
struct Scope
{
    pugi::xml_node element;
    MaterialNode* compound;
    /// Null for the document.
    Scope* outer;
    unsigned int depth;

    /// The first of each name.
    std::map<std::string, MaterialNode*> nodes;
    /// What `interfacename` may name: pins that give the compound's inputs to the inside.
    std::map<std::string, MaterialPin*> interfaceInputs;
};

/// An `input` or `output` element that something feeds.
struct Port
{
    pugi::xml_node element;
    MaterialPin* pin;
    /// Where the names in the element are looked up.
    Scope* scope;
};

/// The output pins of a node by their names in the document.
struct Outputs
{
    std::vector<std::pair<std::string, MaterialPin*>> pins;
    /// Whether the document leaves them open, so that a name that is not there is made.
    bool open = false;

    MaterialPin* find(std::string const& name) const
    {
        for (auto const& [known, pin] : pins)
            if (known == name) return pin;
        return nullptr;
    }
};

struct DocumentGraph
{
    /// A deque: scopes stay where they are.
    std::deque<Scope> scopes;
    std::vector<Port> ports;
    std::map<MaterialNode*, Outputs> outputs;
};

} // namespace material_graph
