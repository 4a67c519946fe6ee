#include "Platform.h"

#include <unistd.h>

#include <system_error>

namespace material_graph
{

namespace fs = std::filesystem;

std::vector<std::string> programArguments(int argc, char** argv)
{
    return {argc > 0 ? argv + 1 : argv, argv + argc};
}

void prepareOutput() {}

bool isErrorTerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}

int processId()
{
    return ::getpid();
}

std::FILE* openFile(fs::path const& path, char const* mode)
{
    return std::fopen(path.c_str(), mode);
}

std::FILE* createFile(fs::path const& path)
{
    return std::fopen(path.c_str(), "wbx");
}

bool flushToDisk(std::FILE* file)
{
    return ::fsync(::fileno(file)) == 0;
}

bool isWritable(fs::path const& path)
{
    return ::access(path.c_str(), W_OK) == 0;
}

Destination destinationOf(fs::path const& name)
{
    std::error_code nowhere;
    fs::path const resolved = fs::canonical(name, nowhere);
    if (nowhere) return {name, true};
    std::error_code unknown;
    return {resolved, fs::is_regular_file(resolved, unknown)};
}

std::string replaceFile(fs::path const& target, fs::path const& file)
{
    std::error_code error;
    fs::rename(file, target, error);
    return error ? error.message() : std::string();
}

} // namespace material_graph
