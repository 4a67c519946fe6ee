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

std::string headContent(GraphNodeBase& node, GraphSettings const& settings)
{
    return "<meta charset=\"utf-8\"/>"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>"
           "<title>" +
           escaped(node.getFullName()) + "</title><style>" + std::string(settings.getGraphHelpCss()) +
           windowRule(settings) + "</style>";
}

} // namespace

std::string helpPage(GraphNodeBase& node, GraphSettings const& settings)
{
    constexpr std::string_view emptyHead = "<head/>";
    std::string page(node.asHTML());
    std::string const content = headContent(node, settings);
    std::size_t const place = page.find(emptyHead);
    if (place != page.npos)
        page.replace(place, emptyHead.size(), "<head>" + content + "</head>");
    else
        page.insert(0, content); // the tags around a head may be left out
    return "<!DOCTYPE html>\n" + page + "\n";
}

} // namespace material_graph
