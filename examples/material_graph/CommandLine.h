/// @file
#pragma once

#include "Progress.h"

#include <ostream>
#include <string>
#include <vector>

namespace material_graph
{

/// How a run ended, as the exit status of the program.
enum class Status
{
    Done = 0,
    /// The arguments were wrong, the document could not be read or the result could not be written.
    NotRun = 1,
    /// The document, or what was asked of it, has defects: they were printed.
    Defects = 2
};

/// The whole program: reads the document, runs the command, writes its result to `out` or to a file, and the
/// messages to `err`.
Status runCommandLine(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err,
                      Progress& progress);

} // namespace material_graph
