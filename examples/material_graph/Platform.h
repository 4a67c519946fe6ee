/// @file
/// What each operating system does in its own way. Where something fails, `errno` or the text that is
/// returned tells why.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace material_graph
{

/// @name The program
/// @{

/// What `main` was called with, in UTF-8 and without the program's own name.
std::vector<std::string> programArguments(int argc, char** argv);

/// From now on, what is printed goes out byte for byte, and a terminal takes it as UTF-8.
void prepareOutput();

/// Whether somebody sees what goes to standard error, and its lines can be cleared.
bool isErrorTerminal();

int processId();

/// @}

/// @name Files
/// @{

/// Like `std::fopen`, and for a name of any letters.
std::FILE* openFile(std::filesystem::path const& path, char const* mode);

/// A new binary file to write to; null where there is one of that name.
std::FILE* createFile(std::filesystem::path const& path);

/// Waits until what was written is on the disk.
bool flushToDisk(std::FILE* file);

bool isWritable(std::filesystem::path const& path);

/// Where a name leads to through all links.
struct Destination
{
    std::filesystem::path path;
    /// A regular file, or nothing yet; no device, pipe or folder.
    bool isReplaceable;
};

Destination destinationOf(std::filesystem::path const& name);

/// Gives the file the target's name in one step, in place of an old file of that name. Why that could not be
/// done; empty when it was.
std::string replaceFile(std::filesystem::path const& target, std::filesystem::path const& file);

/// @}

} // namespace material_graph
