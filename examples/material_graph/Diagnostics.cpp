#include "Diagnostics.h"

#include <algorithm>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::Message;

namespace
{

constexpr int errorLevel = 2;

} // namespace

void Diagnostics::brokenDocument(std::string const& text)
{
    scene_.refMessages().pushCritical(KS_String(source_.placeOfDefect()), KS_String(text));
}

void Diagnostics::error(pugi::xml_node element, GraphNodeBase& node, std::string const& text)
{
    Message const message(errorLevel, KS_String(source_.placeOf(element)), KS_String(text));
    node.refMessages().push(message);
    findings_.push_back({element.offset_debug(), message});
}

void Diagnostics::deliver()
{
    std::stable_sort(findings_.begin(), findings_.end(),
                     [](Finding const& a, Finding const& b) { return a.offset < b.offset; });
    for (Finding const& finding : findings_) scene_.refMessages().push(finding.message);
    findings_.clear();
}

} // namespace material_graph
