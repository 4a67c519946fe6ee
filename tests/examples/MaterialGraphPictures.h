/// @file
/// The pictures that the example host draws, parsed and measured.
#pragma once

#include "MaterialGraphSupport.h"

#include <material_graph/Geometry.h>
#include <material_graph/GraphPicture.h>
#include <material_graph/LevelPlacement.h>
#include <material_graph/Svg.h>
#include <material_graph/Text.h>

#include <foundation/Color4.h>
#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphSettings.h>

#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <list>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace material_graph::test
{

using Color = kestrel::Color4<float>;

/// What two decimals of a drawn number may be off, twice.
constexpr float rounding = 0.02f;

/// A drawn level, parsed. What is asked for by name throws where it is not there.
class Picture
{
public:
    explicit Picture(std::string const& svg)
    {
        if (!document_.load_buffer(svg.data(), svg.size())) throw std::runtime_error("no XML: " + svg);
    }

    pugi::xml_node root() const { return document_.child("svg"); }

    /// The page.
    Rect viewBox() const
    {
        std::istringstream numbers(root().attribute("viewBox").as_string());
        Rect box;
        numbers >> box.topLeft.x >> box.topLeft.y >> box.size.width >> box.size.height;
        if (!numbers) throw std::runtime_error("no page");
        return box;
    }

    /// In the order of the drawing.
    std::vector<pugi::xml_node> ofClass(std::string const& name) const { return ofClass(root(), name); }
    static std::vector<pugi::xml_node> ofClass(pugi::xml_node parent, std::string const& name)
    {
        std::vector<pugi::xml_node> found;
        for (pugi::xpath_node const& match : parent.select_nodes((".//*[@class='" + name + "']").c_str()))
            found.push_back(match.node());
        return found;
    }

    /// The full names of the elements of that class.
    std::vector<std::string> names(std::string const& className) const
    {
        std::vector<std::string> names;
        for (pugi::xml_node element : ofClass(className))
            names.emplace_back(element.attribute("data-name").as_string());
        return names;
    }

    pugi::xml_node node(std::string const& name) const { return named("node", name); }
    pugi::xml_node pin(std::string const& name) const { return named("pin", name); }
    pugi::xml_node connection(std::string const& name) const { return named("connection", name); }

private:
    pugi::xml_node named(std::string const& className, std::string const& name) const
    {
        for (pugi::xml_node element : ofClass(className))
            if (element.attribute("data-name").as_string() == name) return element;
        throw std::runtime_error("no " + className + " " + name);
    }

    pugi::xml_document document_;
};

/// What an editor has open, to be changed before it is drawn.
class Canvas
{
public:
    explicit Canvas(std::string const& content) : document(content) {}

    std::string drawn(std::string const& level = "root")
    {
        MaterialNode& node = document.node(level);
        placeLevel(layout, node, settings);
        return drawLevel(document.scene, node, layout, settings);
    }

    /// Its elements stay as long as the canvas.
    Picture const& picture(std::string const& level = "root") { return pictures_.emplace_back(drawn(level)); }

    Document document;
    kestrel::graph::GraphLayout layout;
    kestrel::graph::GraphSettings settings;

private:
    std::list<Picture> pictures_;
};

constexpr char const* wire = "root.a.out > root.b.in1";

/// "a" above and to the left of "b", so that no line between them is level.
struct TwoNodes : Canvas
{
    TwoNodes()
        : Canvas(R"(<image name="a" type="color3"><input name="file" type="filename"/></image>
            <add name="b" type="color3"><input name="in1" type="color3" nodename="a"/>
              <input name="in2" type="float"/></add>)")
    {
        layout.insertNodePosition("root.a", {0.0f, 0.0f});
        layout.insertNodePosition("root.b", {300.0f, 200.0f});
    }
};

/// A compound between two nodes, and one more in it.
constexpr char const* nested = R"(<add name="a" type="float"/>
    <nodegraph name="g" doc="What is inside."><input name="x" type="float" nodename="a"/>
      <nodegraph name="h"><add name="deep" type="float"/></nodegraph>
      <add name="inside" type="float"><input name="in1" type="float" interfacename="x"/></add>
      <output name="o" type="float" nodename="inside"/></nodegraph>
    <add name="b" type="float"><input name="in1" type="float" nodegraph="g" output="o"/></add>)";

/// @name What an element says
/// @{

inline float numberOf(pugi::xml_node element, char const* attribute)
{
    if (!element.attribute(attribute)) throw std::runtime_error(std::string("no attribute ") + attribute);
    return element.attribute(attribute).as_float();
}

inline Rect rectOf(pugi::xml_node rect)
{
    return {{numberOf(rect, "x"), numberOf(rect, "y")}, {numberOf(rect, "width"), numberOf(rect, "height")}};
}

inline Point centerOf(pugi::xml_node circle)
{
    return {numberOf(circle, "cx"), numberOf(circle, "cy")};
}

/// Of a rectangle or a circle, without its border.
inline Rect boxOfShape(pugi::xml_node shape)
{
    if (!shape.attribute("r")) return rectOf(shape);
    float const radius = numberOf(shape, "r");
    return Rect{centerOf(shape), {}}.grownBy({radius, radius});
}

inline std::vector<pugi::xml_node> childrenOf(pugi::xml_node parent, char const* tag)
{
    auto const children = parent.children(tag);
    return {children.begin(), children.end()};
}

/// The lines of the texts that stand in the element itself.
inline std::vector<std::string> linesOf(pugi::xml_node parent)
{
    std::vector<std::string> lines;
    for (pugi::xml_node text : childrenOf(parent, "text")) lines.emplace_back(text.child_value());
    return lines;
}

/// Their letters: where lines are broken, spaces may go.
inline std::string lettersOf(std::string text)
{
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
    return text;
}

inline std::string lettersOf(pugi::xml_node parent)
{
    std::string text;
    for (std::string const& line : linesOf(parent)) text += line;
    return lettersOf(text);
}

inline std::string tooltipOf(pugi::xml_node element)
{
    return element.child("title").child_value();
}

/// The one element of that class in it.
inline pugi::xml_node onlyOfClass(pugi::xml_node parent, char const* name)
{
    std::vector<pugi::xml_node> const found = Picture::ofClass(parent, name);
    if (found.size() != 1) throw std::runtime_error(std::to_string(found.size()) + " of class " + name);
    return found.front();
}

inline Rect bodyOf(pugi::xml_node node)
{
    return rectOf(onlyOfClass(node, "body"));
}

/// The mark of a pin: of its shapes the one with a border.
inline pugi::xml_node markOf(pugi::xml_node pin)
{
    for (pugi::xml_node shape : pin)
        if (shape.attribute("stroke")) return shape;
    throw std::runtime_error("no mark");
}

/// "rgb(255,0,0)", with the opacity behind it unless it is 1.
inline std::string paintOf(pugi::xml_node element, std::string const& attribute)
{
    std::string const color = element.attribute(attribute.c_str()).as_string();
    pugi::xml_attribute const opacity = element.attribute((attribute + "-opacity").c_str());
    return opacity ? color + " " + opacity.as_string() : color;
}

inline std::string paintOf(Color const& color)
{
    auto const channel = [](float value) { return std::to_string(std::lround(value * 255)); };
    std::string const rgb =
        "rgb(" + channel(color.red) + "," + channel(color.green) + "," + channel(color.blue) + ")";
    return color.alpha < 1.0f ? rgb + " " + svgNumber(color.alpha) : rgb;
}

/// @}

/// @name Lines
/// @{

using Curve = std::vector<Point>;

/// The points of a path that is one straight line, one curve or one triangle.
inline Curve pointsOf(pugi::xml_node path)
{
    std::string commands = path.attribute("d").as_string();
    EXPECT_EQ(commands.find_first_not_of("MLCZ -.0123456789"), std::string::npos) << commands;
    for (char& c : commands)
        if (c >= 'A' && c <= 'Z') c = ' ';
    std::istringstream numbers(commands);
    Curve points;
    for (Point point; numbers >> point.x >> point.y;) points.push_back(point);
    return points;
}

inline Curve lineOf(pugi::xml_node connection)
{
    return pointsOf(childrenOf(connection, "path").at(0));
}

inline Point pointAt(Curve curve, float t)
{
    for (; curve.size() > 1; curve.pop_back())
        for (std::size_t i = 0; i + 1 < curve.size(); ++i) curve[i] = curve[i] * (1 - t) + curve[i + 1] * t;
    return curve.at(0);
}

inline Curve samplesOf(Curve const& curve)
{
    Curve samples;
    for (int i = 0; i <= 32; ++i) samples.push_back(pointAt(curve, static_cast<float>(i) / 32));
    return samples;
}

inline float distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

inline float distanceFromLine(Point point, Point from, Point to)
{
    Point const line = to - from;
    Point const way = point - from;
    return std::abs(line.x * way.y - line.y * way.x) / std::hypot(line.x, line.y);
}

inline bool isStraight(Curve const& curve)
{
    for (Point point : samplesOf(curve))
        if (distanceFromLine(point, curve.front(), curve.back()) > rounding) return false;
    return true;
}

/// @}

/// @name Where ink is
/// @{

inline std::vector<Rect> drawnBoxes(pugi::xml_node element)
{
    std::vector<Rect> boxes;
    for (pugi::xpath_node const& shape : element.select_nodes(".//rect|.//circle"))
        boxes.push_back(boxOfShape(shape.node()));
    return boxes;
}

/// Around all rectangles and circles in an element.
inline Rect drawnOutline(pugi::xml_node element)
{
    std::vector<Rect> const boxes = drawnBoxes(element);
    Rect outline = boxes.at(0);
    for (Rect const& box : boxes) outline = outline.unitedWith(box);
    return outline;
}

inline Rect boundsOf(Curve const& points)
{
    Rect bounds{points.at(0), {}};
    for (Point point : points) bounds = bounds.unitedWith({point, {}});
    return bounds;
}

inline Rect inkOfPath(pugi::xml_node path)
{
    Curve const points = pointsOf(path);
    bool const closed = std::string_view(path.attribute("d").as_string()).ends_with('Z');
    return boundsOf(closed ? points : samplesOf(points));
}

inline Rect inkOfText(pugi::xml_node text)
{
    float const size = numberOf(text, "font-size");
    float const width = text.attribute("textLength").as_float();
    std::string_view const anchor = text.attribute("text-anchor").as_string();
    float const before = anchor == "end" ? width : anchor == "middle" ? width / 2 : 0.0f;
    return {{numberOf(text, "x") - before, numberOf(text, "y") - 0.75f * size}, {width, size}};
}

/// Everything that is drawn in an element, borders included. A pattern's own lines are nowhere.
inline std::vector<Rect> inkIn(pugi::xml_node element)
{
    std::vector<Rect> ink;
    auto const add = [&](pugi::xml_node shape, Rect const& box)
    {
        float const border = shape.attribute("stroke-width").as_float() / 2;
        ink.push_back(box.grownBy({border, border}));
    };
    for (pugi::xpath_node const& shape : element.select_nodes(".//rect|.//circle"))
        add(shape.node(), boxOfShape(shape.node()));
    for (pugi::xpath_node const& path : element.select_nodes(".//path[not(ancestor::pattern)]"))
        add(path.node(), inkOfPath(path.node()));
    for (pugi::xpath_node const& text : element.select_nodes(".//text"))
        add(text.node(), inkOfText(text.node()));
    return ink;
}

inline std::string shown(Rect const& rect)
{
    std::ostringstream text;
    text << "(" << rect.left() << ", " << rect.top() << ") to (" << rect.right() << ", " << rect.bottom()
         << ")";
    return text.str();
}

inline bool isInside(Rect const& inner, Rect const& outer)
{
    Rect const room = outer.grownBy({rounding, rounding});
    return inner.left() >= room.left() && inner.right() <= room.right() && inner.top() >= room.top() &&
           inner.bottom() <= room.bottom();
}

/// Whether they share more than what rounding may do.
inline bool collide(Rect const& a, Rect const& b)
{
    return a.grownBy({-rounding, -rounding}).overlaps(b);
}

/// Every node stands free, with its pins, shadow and badge.
inline void expectNoOverlap(Picture const& picture)
{
    std::vector<pugi::xml_node> const nodes = picture.ofClass("node");
    for (std::size_t i = 0; i < nodes.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_FALSE(collide(drawnOutline(nodes[i]), drawnOutline(nodes[k])))
                << nodes[i].attribute("data-name").value() << " over "
                << nodes[k].attribute("data-name").value();
}

inline void expectOnThePage(Picture const& picture)
{
    Rect const page = picture.viewBox();
    EXPECT_TRUE(std::isfinite(page.size.width) && std::isfinite(page.size.height)) << shown(page);
    EXPECT_FLOAT_EQ(numberOf(picture.root(), "width"), page.size.width);
    EXPECT_FLOAT_EQ(numberOf(picture.root(), "height"), page.size.height);
    for (Rect const& ink : inkIn(picture.root()))
        EXPECT_TRUE(isInside(ink, page)) << shown(ink) << " is not on " << shown(page);
}

/// Names and types stand in their nodes, and neither over each other nor over pins and badges.
/// REQUIRES: horizontal pins, whose names stand in the node, too.
inline void expectReadable(Picture const& picture)
{
    for (pugi::xml_node node : picture.ofClass("node"))
    {
        std::vector<Rect> taken;
        for (pugi::xml_node pin : Picture::ofClass(node, "pin")) taken.push_back(boxOfShape(markOf(pin)));
        for (pugi::xml_node badge : Picture::ofClass(node, "badge")) taken.push_back(drawnOutline(badge));
        for (pugi::xpath_node const& found : node.select_nodes(".//text[not(parent::*[@class='badge'])]"))
        {
            Rect const ink = inkOfText(found.node());
            std::string const text = found.node().child_value() + (" " + shown(ink));
            EXPECT_TRUE(isInside(ink, bodyOf(node))) << text << " is not in " << shown(bodyOf(node));
            for (Rect const& other : taken)
                EXPECT_FALSE(collide(ink, other)) << text << " over " << shown(other);
            taken.push_back(ink);
        }
    }
}

/// @}

inline bool isEntity(std::string_view text)
{
    std::array<std::string_view, 6> const entities{"&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#"};
    return std::ranges::any_of(entities, [&](std::string_view entity) { return text.starts_with(entity); });
}

/// The parser is lenient: it takes bare ampersands, control characters and bytes that are no UTF-8.
inline void expectWellFormed(std::string const& svg)
{
    EXPECT_EQ(svg, printable(svg));
    for (std::size_t at = svg.find('&'); at != std::string::npos; at = svg.find('&', at + 1))
        EXPECT_TRUE(isEntity(std::string_view(svg).substr(at))) << svg.substr(at, 20);

    Picture const picture(svg);
    for (pugi::xpath_node const& found : picture.root().select_nodes("//*"))
    {
        std::set<std::string> names;
        for (pugi::xml_attribute attribute : found.node().attributes())
        {
            EXPECT_TRUE(names.insert(attribute.name()).second) << "twice: " << attribute.name();
            EXPECT_EQ(attribute.value(), printable(attribute.value()));
        }
        EXPECT_EQ(found.node().child_value(), printable(found.node().child_value()));
    }
}

} // namespace material_graph::test
