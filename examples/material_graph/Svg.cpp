#include "Svg.h"

#include "Text.h"
#include "TextMetrics.h"

#include <array>
#include <charconv>
#include <cmath>

namespace material_graph
{

using kestrel::Color4;

namespace
{

// Not even a colour of a damaged layout gives a number that is none.
int byteOf(float component)
{
    if (!(component > 0.0f)) return 0;
    return static_cast<int>(std::lround(std::min(component, 1.0f) * 255.0f));
}

float opacityOf(Color4<float> const& color)
{
    return color.alpha > 0.0f ? std::min(color.alpha, 1.0f) : 0.0f;
}

char const* anchorOf(Label::Align align)
{
    switch (align)
    {
    case Label::Align::Middle:
        return "middle";
    case Label::Align::Right:
        return "end";
    case Label::Align::Left:
        break;
    }
    return "start";
}

float xOf(Label const& label)
{
    switch (label.align)
    {
    case Label::Align::Middle:
        return label.room.center().x;
    case Label::Align::Right:
        return label.room.right();
    case Label::Align::Left:
        break;
    }
    return label.room.left();
}

} // namespace

Svg Svg::group(char const* name)
{
    Svg element = add("g");
    element.set("class", name);
    return element;
}

Svg Svg::rect(Rect const& rect)
{
    Svg element = add("rect");
    element.set("x", rect.left()).set("y", rect.top());
    element.set("width", rect.size.width).set("height", rect.size.height);
    return element;
}

Svg Svg::circle(Point center, float radius)
{
    Svg element = add("circle");
    element.set("cx", center.x).set("cy", center.y).set("r", radius);
    return element;
}

Svg Svg::path(std::string const& commands)
{
    Svg element = add("path");
    element.set("d", commands);
    return element;
}

void Svg::label(Label const& label, Color4<float> const& color)
{
    float top = label.room.top();
    float const lineHeight = linesHeight(1, label.fontSize);
    for (std::string const& line : label.lines)
    {
        float const width = textWidth(line, label.fontSize);
        float const room = std::max(label.room.size.width, 1.0f);
        float const shown = std::min(width, room);
        float const scale = width > 0.0f ? shown / width : 1.0f;
        Svg element = add("text");
        element.set("x", xOf(label)).set("y", top + lineHeight * 0.5f + label.fontSize * scale * 0.35f);
        element.set("font-size", label.fontSize * scale).set("text-anchor", anchorOf(label.align));
        if (width > 0.0f) element.set("textLength", shown).set("lengthAdjust", "spacingAndGlyphs");
        element.fill(color);
        element.element_.text().set(printable(line).c_str());
        top += lineHeight;
    }
}

void Svg::tooltip(std::string_view text)
{
    element_.append_child("title").text().set(printable(text).c_str());
}

Svg& Svg::set(char const* attribute, std::string_view value)
{
    element_.append_attribute(attribute).set_value(printable(value).c_str());
    return *this;
}

Svg& Svg::set(char const* attribute, float value)
{
    return set(attribute, std::string_view(svgNumber(value)));
}

Svg& Svg::fill(Color4<float> const& color)
{
    paint("fill", "fill-opacity", color);
    return *this;
}

Svg& Svg::stroke(Color4<float> const& color, float width)
{
    paint("stroke", "stroke-opacity", color);
    return set("stroke-width", width);
}

void Svg::paint(char const* attribute, char const* opacityAttribute, Color4<float> const& color)
{
    set(attribute, "rgb(" + std::to_string(byteOf(color.red)) + "," + std::to_string(byteOf(color.green)) +
                       "," + std::to_string(byteOf(color.blue)) + ")");
    if (opacityOf(color) < 1.0f) set(opacityAttribute, opacityOf(color));
}

std::string svgNumber(float value)
{
    float const rounded = std::round(value * 100.0f) / 100.0f;
    std::array<char, 64> digits;
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), rounded + 0.0f,
                                   std::chars_format::fixed, 2);
    std::string text(digits.data(), end.ptr);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string svgPoint(Point point)
{
    return svgNumber(point.x) + " " + svgNumber(point.y);
}

} // namespace material_graph
