/// @file
/// A layout in standard types, and its bytes in a file, without the library.
#pragma once

#include "ByteWriter.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// Floats are kept as their bits, so that equal means the same bytes also for what is not a number.
using PlainPair = std::array<std::uint32_t, 2>;
using PlainColor = std::array<std::uint32_t, 4>;

inline PlainPair plainPair(float first, float second)
{
    return {std::bit_cast<std::uint32_t>(first), std::bit_cast<std::uint32_t>(second)};
}

inline PlainColor plainColor(float red, float green, float blue, float alpha)
{
    return {std::bit_cast<std::uint32_t>(red), std::bit_cast<std::uint32_t>(green),
            std::bit_cast<std::uint32_t>(blue), std::bit_cast<std::uint32_t>(alpha)};
}

struct PlainNote
{
    std::string owner;
    std::optional<std::string> text = {};
    std::optional<PlainPair> position = {};
    std::optional<PlainPair> size = {};
    std::optional<PlainColor> firstColor = {};
    std::optional<PlainColor> secondColor = {};

    bool operator==(PlainNote const&) const = default;
};

/// The six kinds of flags, in the order of the file.
enum PlainFlag : std::size_t
{
    nodeCollapsed,
    nodeVisible,
    nodeHorizontalInputs,
    nodeHorizontalOutputs,
    connectionVisible,
    connectionBezier,
    plainFlagCount
};

inline bool isInVersion(std::uint32_t version, std::size_t flag)
{
    return version >= 2 || flag == nodeCollapsed || flag == nodeHorizontalInputs ||
           flag == nodeHorizontalOutputs;
}

struct PlainLayout
{
    std::map<std::string, PlainPair> positions = {};
    std::map<std::string, PlainColor> colors = {};
    std::array<std::map<std::string, bool>, plainFlagCount> flags = {};
    std::vector<PlainNote> notes = {};

    bool operator==(PlainLayout const&) const = default;
};

/// What a file of that version can hold of it.
inline PlainLayout inVersion(std::uint32_t version, PlainLayout layout)
{
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
        if (!isInVersion(version, flag)) layout.flags[flag].clear();
    return layout;
}

template <class Value>
void writeMap(ByteWriter& out, std::map<std::string, Value> const& map)
{
    out.count(map.size());
    for (auto const& [name, value] : map)
    {
        out.value(name);
        out.value(value);
    }
}

template <class Value>
void writeOptional(ByteWriter& out, std::optional<Value> const& value)
{
    out.value(value.has_value());
    if (value) out.value(*value);
}

inline void writeNote(ByteWriter& out, PlainNote const& note)
{
    out.value(note.owner);
    writeOptional(out, note.text);
    writeOptional(out, note.position);
    writeOptional(out, note.size);
    writeOptional(out, note.firstColor);
    writeOptional(out, note.secondColor);
}

/// The file of that version.
inline ByteWriter encoded(PlainLayout const& layout, std::uint32_t version, std::endian order)
{
    ByteWriter out(order);
    out.number(version);
    writeMap(out, layout.positions);
    writeMap(out, layout.colors);
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
        if (isInVersion(version, flag)) writeMap(out, layout.flags[flag]);
    out.count(layout.notes.size());
    for (PlainNote const& note : layout.notes) writeNote(out, note);
    return out;
}

} // namespace kestrel::graph::test
