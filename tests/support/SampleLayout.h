/// @file
/// The layouts of the golden files in tests/data/layout.
#pragma once

#include "PlainLayout.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// Something of everything that a file can hold; every map has names and values of its own.
inline PlainLayout everythingLayout()
{
    float const infinity = std::numeric_limits<float>::infinity();
    float const largest = std::numeric_limits<float>::max();
    float const smallest = std::numeric_limits<float>::denorm_min();
    std::string const cafe = "root.caf\xC3\xA9";
    PlainPair const position = plainPair(-0.5f, 1.0e6f);
    PlainPair const size = plainPair(200.0f, 99.75f);
    PlainColor const firstColor = plainColor(1.0f, 0.9f, 0.5f, 0.8f);
    PlainColor const secondColor = plainColor(0.0f, 0.0f, 0.0f, 0.0f);

    PlainLayout layout;
    layout.positions = {{"", plainPair(-0.0f, smallest)},
                        {"root.a", plainPair(12.5f, -7.25f)},
                        {"root.b", plainPair(infinity, -infinity)},
                        {cafe, plainPair(0.1f, -largest)}};
    layout.colors = {{"root.a", plainColor(0.1f, 0.2f, 0.3f, 1.0f)},
                     {"\xE9\xFF", plainColor(-1.0f, 2.5f, infinity, 0.5f)}};
    layout.flags[nodeCollapsed] = {{"", true}, {"root.a", false}};
    layout.flags[nodeVisible] = {{"root.a", true}, {"root.b", false}, {cafe, true}};
    layout.flags[nodeHorizontalInputs] = {{"root.b", true}};
    layout.flags[nodeHorizontalOutputs] = {{"root.a", false}, {"root.b", true}};
    layout.flags[connectionVisible] = {{"root.a.out > root.b.in", false}, {cafe + ".out > root.a.in", true}};
    layout.flags[connectionBezier] = {{"root.a.out > root.b.in", true}};
    layout.notes = {
        {"root", "First line\nsecond line: \xE2\x82\xAC", position, size, firstColor, secondColor},
        {""},
        {"root.text", ""},
        {"root.position", {}, position},
        {"root.size", {}, {}, size},
        {"root.first", {}, {}, {}, firstColor},
        {"root.second", {}, {}, {}, {}, secondColor}};
    return layout;
}

/// The one that docs/layout-format.md shows byte by byte.
inline PlainLayout smallLayout()
{
    PlainLayout layout;
    layout.positions = {{"a", plainPair(1.5f, -2.0f)}};
    layout.flags[nodeCollapsed] = {{"a", true}, {"b", false}};
    layout.flags[connectionBezier] = {{"a.o > b.i", true}};
    layout.notes = {{"a", "Hi", plainPair(0.0f, 0.5f)}};
    return layout;
}

struct GoldenFile
{
    std::string name;
    PlainLayout layout; // what is in the file
    std::uint32_t version;
    std::endian order;
};

/// Raw files are those of a little-endian machine.
inline std::vector<GoldenFile> goldenFiles()
{
    PlainLayout const everything = everythingLayout();
    PlainLayout const everythingOld = inVersion(1, everything);
    return {{"everything.v1.raw.layout", everythingOld, 1, std::endian::little},
            {"everything.v1.endian.layout", everythingOld, 1, std::endian::big},
            {"everything.v2.raw.layout", everything, 2, std::endian::little},
            {"everything.v2.endian.layout", everything, 2, std::endian::big},
            {"empty.v2.raw.layout", {}, 2, std::endian::little},
            {"empty.v2.endian.layout", {}, 2, std::endian::big},
            {"small.v2.endian.layout", smallLayout(), 2, std::endian::big}};
}

} // namespace kestrel::graph::test
