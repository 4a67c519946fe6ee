/// @file
#pragma once

#include <string>

namespace material_graph
{

/// Reads a whole file. Why it could not be done; empty when it was.
std::string readWholeFile(std::string const& path, std::string& content);

/// Whether both names lead to one file; false for what does not exist.
bool isSameFile(std::string const& a, std::string const& b);

} // namespace material_graph
