/// @file
#pragma once

#include "Definitions.h"
#include "Diagnostics.h"
#include "DocumentGraph.h"
#include "Progress.h"

#include <set>

namespace material_graph
{

/// The reader's first pass: every node, compound, interface node and pin of the document.
class GraphBuilder
{
public:
    /// How deep graphs may be nested; the library promises its stack for no more.
    static constexpr unsigned int maxDepth = 2000;

    GraphBuilder(MaterialScene& scene, Definitions const& definitions, Diagnostics& diagnostics,
                 Progress& progress);

    DocumentGraph build(pugi::xml_node root);

private:
    /// @name Nodes and their pins
    /// @{
    void readScope(Scope& scope);
    void readNode(pugi::xml_node element, Scope& scope);
    void readGraph(pugi::xml_node element, Scope& scope);
    void enter(pugi::xml_node element, MaterialNode& node, Scope& scope);
    void readInputs(pugi::xml_node element, MaterialNode& node, Scope& scope);
    void readOutputs(pugi::xml_node element, MaterialNode& node);
    std::vector<pugi::xml_node> portsNamed(char const* tag, pugi::xml_node element, MaterialNode& node);
    /// @}

    /// @name Names that are missing or taken
    /// @{
    std::string nodeNameFor(pugi::xml_node element);
    std::string freeName(std::string const& base);
    void checkDefinitionName(pugi::xml_node element, Scope& scope);
    /// @}

    /// @name The outside of graphs
    /// @{
    using InterfaceNode = kestrel::graph::GraphNodeBase*;

    void makeInterface(Scope& scope);
    void makeOwnInputs(Scope& scope, std::map<std::string, std::string> const& uses, InterfaceNode& node);
    void makeDefinedInputs(Scope& scope, std::map<std::string, std::string> const& uses, InterfaceNode& node);
    MaterialPin& makeInput(Scope& scope, std::string const& name, std::string const& type,
                           InterfaceNode& node);
    void makeOutputs(Scope& scope);
    /// @}

    MaterialScene& scene_;
    Definitions const& definitions_;
    Diagnostics& diagnostics_;
    Progress& progress_;
    DocumentGraph graph_;
    // Of the scope that is being read: the names met so far, all names, and the last number for each base
    // name.
    std::set<std::string> metNames_;
    std::set<std::string> takenNames_;
    std::map<std::string, unsigned int> lastNumbers_;
};

} // namespace material_graph
