/// @file
#pragma once

#include "support/GraphTexts.h"

#include <ks_graph/ks_graph.h>

namespace kestrel::graph::test
{

/// What a move into a compound or out of one tells of itself.
struct MoveRecords
{
    PinRenames pinRenames;
    InterfaceOfNode inputInterfaces;
    InterfaceOfNode outputInterfaces;
    Nodes newInterfaceNodes;
    Pins newCompoundPins;
    ConnectionValues removedOuter;
    ConnectionValues removed;
    Connections outer;
    Connections inner;
    Connections spare;
};

} // namespace kestrel::graph::test
