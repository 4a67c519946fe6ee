/// @file
/// Points and rectangles of the canvas: x grows to the right, y downwards.
#pragma once

#include <algorithm>

namespace material_graph
{

struct Point
{
    float x = 0.0f;
    float y = 0.0f;

    friend Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
    friend Point operator*(Point a, float factor) { return {a.x * factor, a.y * factor}; }
};

struct Size
{
    float width = 0.0f;
    float height = 0.0f;
};

struct Rect
{
    Point topLeft;
    Size size;

    float left() const { return topLeft.x; }
    float top() const { return topLeft.y; }
    float right() const { return topLeft.x + size.width; }
    float bottom() const { return topLeft.y + size.height; }
    Point center() const { return {left() + size.width / 2, top() + size.height / 2}; }

    Rect movedBy(Point distance) const { return {topLeft + distance, size}; }

    /// Larger on each side by the margin, smaller by a negative one.
    Rect grownBy(Size margin) const
    {
        return {{left() - margin.width, top() - margin.height},
                {size.width + 2 * margin.width, size.height + 2 * margin.height}};
    }

    /// Touching edges do not overlap.
    bool overlaps(Rect const& other) const
    {
        return left() < other.right() && other.left() < right() && top() < other.bottom() &&
               other.top() < bottom();
    }

    /// The smallest rectangle that holds both.
    Rect unitedWith(Rect const& other) const
    {
        Point const corner{std::min(left(), other.left()), std::min(top(), other.top())};
        return {corner,
                {std::max(right(), other.right()) - corner.x, std::max(bottom(), other.bottom()) - corner.y}};
    }
};

} // namespace material_graph
