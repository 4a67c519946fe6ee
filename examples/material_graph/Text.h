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

/// How many bytes the UTF-8 letter at the beginning of the text has; 0 if there is none that is well formed.
std::size_t letterLength(std::string_view text);

/// The text as XML can hold it: whatever is no well-formed UTF-8, and every control character but a line feed
/// and a tab, is replaced by U+FFFD.
std::string printable(std::string_view text);

} // namespace material_graph
