/// @file
/// Internal: the default style sheet of the help page.
#pragma once

#include <string_view>

namespace kestrel::graph
{

/// Plain CSS without imports, so that a page that holds it needs nothing else. It styles bare elements, as
/// `GraphNodeBase::asHTML` and the descriptions in it are written, and the classes "note" and "warning".
extern std::string_view const graphHelpCss;

} // namespace kestrel::graph
