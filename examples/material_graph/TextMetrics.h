/// @file
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace material_graph
{

/// How wide a UTF-8 text is at that font size, as if set in a common sans-serif typeface. Letters beyond
/// ASCII count as wide as the widest. The drawing tells the viewer this width, so that it fits in whatever
/// typeface the viewer has.
float textWidth(std::string_view text, float fontSize);

/// How high that many lines are at that font size.
inline float linesHeight(std::size_t lines, float fontSize)
{
    return static_cast<float>(lines) * fontSize * 1.2f;
}

/// The text in lines that are no wider than that, broken behind a space, an underscore or a dot where there
/// is one, and anywhere, but between letters, where there is none. Never empty.
std::vector<std::string> wrapped(std::string_view text, float fontSize, float maxWidth);

} // namespace material_graph
