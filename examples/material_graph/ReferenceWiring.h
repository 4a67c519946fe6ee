/// @file
#pragma once

#include "Definitions.h"
#include "Diagnostics.h"
#include "DocumentGraph.h"
#include "Progress.h"

namespace material_graph
{

/// The reader's second pass: the connections that `nodename`, `nodegraph`, `output` and `interfacename`
/// describe.
class ReferenceWiring
{
public:
    ReferenceWiring(MaterialScene& scene, DocumentGraph& graph, Definitions const& definitions,
                    Diagnostics& diagnostics, Progress& progress);

    void wire();

private:
    void wirePort(Port const& port);
    void wireToNode(Port const& port, pugi::xml_node reference, char const* attribute);
    void wireToInterface(Port const& port);
    void connect(MaterialPin& source, Port const& port);

    pugi::xml_node referenceOf(Port const& port);
    MaterialPin* outputFor(Port const& port, MaterialNode& node, std::string const& name);
    void addMissingOutputs();
    void report(Port const& port, std::string const& text);

    MaterialScene& scene_;
    DocumentGraph& graph_;
    Definitions const& definitions_;
    Diagnostics& diagnostics_;
    Progress& progress_;
};

} // namespace material_graph
