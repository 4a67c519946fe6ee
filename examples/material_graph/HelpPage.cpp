#include "HelpPage.h"

#include "Svg.h"
#include "Text.h"

namespace material_graph
{

using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphSettings;

namespace
{

std::string escaped(std::string_view text)
{
    std::string out;
    for (char byte : printable(text))
    {
        if (byte == '&')
            out += "&amp;";
        else if (byte == '<')
            out += "&lt;";
        else
            out += byte;
    }
    return out;
}

// The window of the help page: its width, and the room above and below.
std::string windowRule(GraphSettings const& settings)
{
    return "\nbody { max-width: " + svgNumber(settings.getGraphHelpSize().first) +
           "px; margin: " + svgNumber(settings.getGraphHelpVerticalMargin()) + "px auto; }\n";
}

std::string headOf(GraphNodeBase& node, GraphSettings const& settings)
{
    return "<head><meta charset=\"utf-8\"/>"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>"
           "<title>" +
           escaped(node.getFullName()) + "</title><style>" + std::string(settings.getGraphHelpCss()) +
           windowRule(settings) + "</style></head>";
}

} // namespace

std::string helpPage(GraphNodeBase& node, GraphSettings const& settings)
{
    constexpr std::string_view emptyHead = "<head/>";
    std::string page(node.asHTML());
    std::size_t const head = page.find(emptyHead);
    if (head != page.npos) page.replace(head, emptyHead.size(), headOf(node, settings));
    return "<!DOCTYPE html>\n" + page + "\n";
}

} // namespace material_graph
