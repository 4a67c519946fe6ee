/// @file
/// What all commands have in common.
#pragma once

#include "Workspace.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace material_graph
{

using Arguments = std::vector<std::string>;
/// What the command prints. Nothing when it could not be done: the reason is then a message of the scene.
using Result = std::optional<std::string>;

struct Command
{
    Result (*run)(Workspace& workspace, Arguments const& arguments);
    std::size_t fewestArguments;
    std::size_t mostArguments;
};

constexpr std::size_t anyNumber = static_cast<std::size_t>(-1);

/// @name The commands by name; that of a layout command has two words
/// @{
std::map<std::string, Command> const& queryCommands();
std::map<std::string, Command> const& editCommands();
std::map<std::string, Command> const& layoutCommands();
/// @}

/// Pushes the reason as an error of that command, and returns no result.
Result fail(MaterialScene& scene, char const* command, std::string const& reason);

/// The node of that name; null, and an error of the command, if there is none.
MaterialNode* nodeNamed(MaterialScene& scene, char const* command, std::string const& name);

} // namespace material_graph
