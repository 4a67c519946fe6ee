/// @file
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace material_graph
{

/// Writes the content of a file; false, with `errno` set, when it could not.
using FileWriter = std::function<bool(std::FILE* file)>;

/// Writes a whole file. Why it could not be done; empty when it was.
///
/// The content goes into a new file beside the target, and takes the target's place when it is on the disk:
/// until then, and whenever anything fails, an old file stays as it is. A symbolic link stays a link, and a
/// device or a pipe is written to, not replaced.
std::string writeOutputFile(std::string const& path, FileWriter const& write);
std::string writeOutputFile(std::string const& path, std::string_view text);

} // namespace material_graph
