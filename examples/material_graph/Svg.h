/// @file
#pragma once

#include "Geometry.h"
#include "NodeShape.h"

#include <foundation/Color4.h>

#include <pugixml.hpp>

#include <string>
#include <string_view>

namespace material_graph
{

/// An element of an SVG document, to set attributes of and to add elements to.
class Svg
{
public:
    explicit Svg(pugi::xml_node element) : element_(element) {}

    Svg add(char const* tag) { return Svg(element_.append_child(tag)); }
    /// A `<g>` of that class.
    Svg group(char const* name);
    Svg rect(Rect const& rect);
    Svg circle(Point center, float radius);
    /// `commands` as in the attribute `d`.
    Svg path(std::string const& commands);
    /// One `<text>` for each line, squeezed to the room's width where a line is wider.
    void label(Label const& label, kestrel::Color4<float> const& color);
    /// What a viewer shows when the pointer rests on the element.
    void tooltip(std::string_view text);

    Svg& set(char const* attribute, std::string_view value);
    Svg& set(char const* attribute, char const* value) { return set(attribute, std::string_view(value)); }
    Svg& set(char const* attribute, float value);
    /// The colour and, unless it is opaque, the opacity of what is filled or drawn.
    Svg& fill(kestrel::Color4<float> const& color);
    Svg& stroke(kestrel::Color4<float> const& color, float width);

private:
    void paint(char const* attribute, char const* opacityAttribute, kestrel::Color4<float> const& color);

    pugi::xml_node element_;
};

/// With at most two decimals and without zeros at the end.
std::string svgNumber(float value);
/// "<x> <y>".
std::string svgPoint(Point point);

} // namespace material_graph
