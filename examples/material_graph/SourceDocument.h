/// @file
#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace material_graph
{

/// A parsed XML text that knows the lines of its elements.
class SourceDocument
{
public:
    SourceDocument(std::string name, std::string_view text);

    /// What is wrong with the text: that it is no XML, or no MaterialX. Nothing when it can be read.
    std::optional<std::string> defect() const;

    /// The `materialx` element; empty when there is a defect.
    pugi::xml_node root() const;

    /// "<name>:<line>" of an element, or of the place where the parser gave up. Just the name where the
    /// parser cannot tell: for an empty element, and in a text that is not UTF-8, whose places are those of a
    /// copy.
    std::string placeOf(pugi::xml_node element) const;
    std::string placeOfDefect() const;

private:
    std::string placeAt(std::ptrdiff_t offset) const;

    std::string name_;
    std::vector<std::ptrdiff_t> lineEnds_;
    pugi::xml_document xml_;
    pugi::xml_parse_result result_;
};

} // namespace material_graph
