/// @file
/// The names of files are UTF-8 on every system.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace material_graph
{

std::filesystem::path pathOf(std::string_view name);
std::string nameOf(std::filesystem::path const& path);

} // namespace material_graph
