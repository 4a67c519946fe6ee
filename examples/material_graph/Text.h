/// @file
#pragma once

#include <string>
#include <string_view>

namespace material_graph
{

inline std::string inQuotes(std::string_view name)
{
    std::string text("'");
    text.append(name).append("'");
    return text;
}

} // namespace material_graph
