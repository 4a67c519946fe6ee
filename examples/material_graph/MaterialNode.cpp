#include "MaterialNode.h"

#include <iterator>
#include <string>
#include <vector>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::Message;

namespace
{

KS_String escaped(KS_String text)
{
    text.replace("&", "&amp;");
    text.replace("<", "&lt;");
    text.replace(">", "&gt;");
    return text;
}

} // namespace

MaterialNode::MaterialNode(unsigned int const& id) : GraphNodeBase(id) {}

MaterialNode::~MaterialNode()
{
    destroyNodePins();
}

KS_String MaterialNode::getFullName()
{
    std::vector<KS_String> names;
    for (GraphNodeBase* node = this; node != nullptr; node = node->getNodeOwner())
        names.push_back(node->getName());
    std::string fullName(names.back());
    for (auto name = std::next(names.rbegin()); name != names.rend(); ++name)
        fullName.append(".").append(*name);
    return KS_String(fullName);
}

KS_String MaterialNode::asHTML()
{
    GraphNodeBase page;
    page.setDescription(escaped(getDescription()));
    return page.asHTML();
}

bool MaterialNode::getMessages(kestrel::Array<Message, kestrel::_Wa>& out) const
{
    for (Message const& message : messages_.getMessages()) out.append(message);
    return !out.isEmpty();
}

} // namespace material_graph
