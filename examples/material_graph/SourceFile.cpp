#include "SourceFile.h"

#include "FileNames.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace material_graph
{

std::string readWholeFile(std::string const& path, std::string& content)
{
    std::error_code unknown;
    if (std::filesystem::is_directory(pathOf(path), unknown)) return "it is a directory";
    errno = 0;
    std::ifstream file(pathOf(path), std::ios::binary);
    if (!file) return std::strerror(errno);
    content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (file.bad()) return std::strerror(errno);
    return {};
}

bool isSameFile(std::string const& a, std::string const& b)
{
    std::error_code notThere;
    return std::filesystem::equivalent(pathOf(a), pathOf(b), notThere);
}

} // namespace material_graph
