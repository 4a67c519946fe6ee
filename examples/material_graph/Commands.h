/// @file
#pragma once

#include "Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace material_graph
{

/// Whether the words name a command and give it as many arguments as it takes.
bool isCommand(std::vector<std::string> const& words);

/// What the command prints. Nothing when it could not be done: the reason is then a message of the scene.
/// REQUIRES: `isCommand`.
std::optional<std::string> runCommand(Workspace& workspace, std::vector<std::string> const& words);

} // namespace material_graph
