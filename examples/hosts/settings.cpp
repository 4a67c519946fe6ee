// The settings of an editor: a record with one set of defaults. An editor reads them while it draws; a user's
// changes are kept by the host, in whatever form it likes.

#include <ks_graph/GraphSettings.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

// What a user changed, in a form that a person reads.
class UserSettings : public GraphSettings
{
public:
    // The base writes an empty element: settings are no part of the graph, unless a host makes them so.
    KS_String toXml() const override
    {
        KS_String text("<GraphSettings>\n");
        GraphSettings const defaults;
        if (getGridSize() != defaults.getGridSize())
            text.appendFormat("<GridSize>%d</GridSize>\n", getGridSize());
        if (getUseGrid() != defaults.getUseGrid()) text.appendFormat("<UseGrid>%d</UseGrid>\n", getUseGrid());
        return text + "</GraphSettings>\n";
    }
};

void print(char const* name, Color4<float> const& color)
{
    std::printf("%s %g %g %g %g\n", name, static_cast<double>(color.red), static_cast<double>(color.green),
                static_cast<double>(color.blue), static_cast<double>(color.alpha));
}

} // namespace

int main()
{
    UserSettings settings;
    print("nodes", settings.getDefaultNodeColor());
    print("compounds", settings.getDefaultCompoundNodeColor());
    std::printf("a grid of %d, %s\n", settings.getGridSize(), settings.getUseGrid() ? "shown" : "hidden");
    std::printf("%s", settings.toXml().c_str());

    settings.setUseGrid(true);
    settings.setGridSize(40);
    settings.refDefaultNodeColor().alpha = 0.5f;
    print("nodes", settings.getDefaultNodeColor());
    std::printf("%s", settings.toXml().c_str());

    // Nothing checks a value: what makes sense is up to whoever draws.
    settings.setMaxSceneZoom(-1);
    std::printf("zoom up to %g\n", static_cast<double>(settings.getMaxSceneZoom()));

    settings.initialize();
    std::printf("again up to %g, a grid of %d\n", static_cast<double>(settings.getMaxSceneZoom()),
                settings.getGridSize());
}
