#include "FileNames.h"

namespace material_graph
{

std::filesystem::path pathOf(std::string_view name)
{
    return std::u8string(name.begin(), name.end());
}

std::string nameOf(std::filesystem::path const& path)
{
    std::u8string const name = path.u8string();
    return {name.begin(), name.end()};
}

} // namespace material_graph
