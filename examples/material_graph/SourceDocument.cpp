#include "SourceDocument.h"

#include <algorithm>
#include <utility>

namespace material_graph
{

namespace
{

std::vector<std::ptrdiff_t> lineEndsOf(std::string_view text)
{
    std::vector<std::ptrdiff_t> ends;
    for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
        ends.push_back(static_cast<std::ptrdiff_t>(at));
    return ends;
}

} // namespace

SourceDocument::SourceDocument(std::string name, std::string_view text)
    : name_(std::move(name)), lineEnds_(lineEndsOf(text)), result_(xml_.load_buffer(text.data(), text.size()))
{}

std::optional<std::string> SourceDocument::defect() const
{
    if (!result_) return std::string("broken XML: ") + result_.description();
    std::string const rootName = xml_.document_element().name();
    if (rootName != "materialx") return "the root element is <" + rootName + ">, not <materialx>";
    return std::nullopt;
}

pugi::xml_node SourceDocument::root() const
{
    return defect() ? pugi::xml_node() : xml_.document_element();
}

std::string SourceDocument::placeOf(pugi::xml_node element) const
{
    return placeAt(element.offset_debug());
}

std::string SourceDocument::placeOfDefect() const
{
    return result_ ? placeOf(xml_.document_element()) : placeAt(result_.offset);
}

std::string SourceDocument::placeAt(std::ptrdiff_t offset) const
{
    if (offset < 0 || result_.encoding != pugi::encoding_utf8) return name_;
    auto const end = std::lower_bound(lineEnds_.begin(), lineEnds_.end(), offset);
    return name_ + ":" + std::to_string(end - lineEnds_.begin() + 1);
}

} // namespace material_graph
