#include "Summary.h"

#include <cstddef>
#include <iomanip>
#include <sstream>
#include <vector>

namespace material_graph
{

using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;

namespace
{

struct Place
{
    GraphNodeBase* node;
    unsigned int depth;
    std::size_t fullNameLength;
};

// Full names are added up on the way down; only the longest one is ever built.
class Walk
{
public:
    explicit Walk(MaterialScene& scene)
    {
        open_.push_back({&scene.root(), 0, scene.root().getName().length()});
        while (!open_.empty())
        {
            Place const place = open_.back();
            open_.pop_back();
            visit(place);
        }
    }

    Summary finish()
    {
        if (longestPin_ != nullptr)
            summary_.longestFullName = std::string(longestPin_->getFullName());
        else
            summary_.longestFullName = std::string(longestNode_->getFullName());
        return summary_;
    }

private:
    void visit(Place const& place)
    {
        if (place.depth != 0) count(*place.node);
        if (place.depth > summary_.depth) summary_.depth = place.depth;
        if (isLongest(place.fullNameLength)) noteLongest(place.node, nullptr);
        for (GraphNodePin* pin : place.node->getNodePins())
        {
            ++summary_.pins;
            if (isLongest(place.fullNameLength + 1 + pin->getName().length())) noteLongest(nullptr, pin);
        }
        for (GraphNodeBase* child : place.node->getNodes())
            open_.push_back({child, place.depth + 1, place.fullNameLength + 1 + child->getName().length()});
    }

    void count(GraphNodeBase& node)
    {
        if (node.isInterface())
            ++summary_.interfaceNodes;
        else if (node.isCompound())
            ++summary_.compounds;
        else
            ++summary_.nodes;
    }

    bool isLongest(std::size_t length)
    {
        if (length <= longest_) return false;
        longest_ = length;
        return true;
    }

    void noteLongest(GraphNodeBase* node, GraphNodePin* pin)
    {
        longestNode_ = node;
        longestPin_ = pin;
    }

    Summary summary_;
    std::vector<Place> open_;
    std::size_t longest_ = 0;
    GraphNodeBase* longestNode_ = nullptr;
    GraphNodePin* longestPin_ = nullptr;
};

} // namespace

Summary summarize(MaterialScene& scene)
{
    Summary summary = Walk(scene).finish();
    summary.connections = scene.getNumberOfConnections();
    summary.messages = static_cast<unsigned int>(scene.getMessages().getNumberOfMessages());
    return summary;
}

std::string toText(Summary const& summary)
{
    std::ostringstream text;
    auto const line = [&text](char const* label, auto const& value)
    { text << std::left << std::setw(20) << label << value << "\n"; };
    line("nodes", summary.nodes);
    line("compounds", summary.compounds);
    line("interface nodes", summary.interfaceNodes);
    line("pins", summary.pins);
    line("connections", summary.connections);
    line("depth", summary.depth);
    line("longest full name", summary.longestFullName);
    line("messages", summary.messages);
    return text.str();
}

} // namespace material_graph
