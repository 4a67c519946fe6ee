/// @file
#pragma once

#include "MaterialScene.h"

#include <optional>
#include <string>
#include <vector>

namespace material_graph
{

/// Whether there is a command of that name and it takes that many arguments.
bool isCommand(std::string const& name, std::size_t numberOfArguments);

/// What the command prints. Nothing when it could not be done: the reason is then a message of the scene.
/// REQUIRES: `isCommand`.
std::optional<std::string> runCommand(MaterialScene& scene, std::string const& name,
                                      std::vector<std::string> const& arguments);

} // namespace material_graph
