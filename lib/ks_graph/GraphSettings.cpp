#include <ks_graph/GraphSettings.h>

#include <ks_graph/GraphHelpCss.h>

namespace kestrel::graph
{

GraphSettings::GraphSettings() = default;

GraphSettings& GraphSettings::operator=(GraphSettings const& other)
{
    return *this = GraphSettings(other);
}

GraphSettings::~GraphSettings() = default;

KS_String GraphSettings::toXml() const
{
    return "<GraphSettings>\n</GraphSettings>\n";
}

void GraphSettings::initialize()
{
    *this = GraphSettings();
}

KS_String GraphSettings::defaultHelpCss()
{
    return graphHelpCss;
}

} // namespace kestrel::graph
