/// @file
#pragma once

#include <string>
#include <string_view>

namespace material_graph
{

/// One line for each value of a layout file: its offset in hexadecimal digits, then the value, indented by
/// its depth. What the library accepts but never writes is shown beside the value: "without NUL" behind a
/// text that lacks it, the byte in brackets in front of a flag that is neither 0 nor 1.
struct LayoutDump
{
    /// All values in front of the defect, when there is one. A value that it cuts short ends in "...".
    std::string text;
    /// Empty when the file is whole. Else what is wrong and where, without a full stop.
    std::string defect;
};

/// The dump of all layouts that follow each other in the file. The byte order is the one in which the file
/// begins with a version of 1 to 0xFFFF; versions after 2 are read as 2.
///
/// Reads nothing but the given bytes, whatever counts and lengths they hold. Time and text grow linearly with
/// the file; for many short values the text is several times its size.
LayoutDump dumpLayout(std::string_view bytes);

} // namespace material_graph
