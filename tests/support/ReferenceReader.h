/// @file
#pragma once

#include "PlainLayout.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel::graph::test
{

/// Reads a layout as the page about the format tells it, from bytes in memory. It ends at the first thing
/// that is not there or cannot be; `layout` is what was whole in front of it.
class ReferenceReader
{
public:
    ReferenceReader(std::string_view bytes, std::endian order) : bytes_(bytes), order_(order)
    {
        whole = readLayout();
    }

    bool whole;
    PlainLayout layout;
    std::size_t end = 0;

private:
    bool readLayout()
    {
        std::uint32_t version = 0;
        if (!read(version) || !readMap(layout.positions) || !readMap(layout.colors)) return false;
        for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
            if (isInVersion(version, flag) && !readMap(layout.flags[flag])) return false;
        return readNotes();
    }

    template <class Value>
    bool readMap(std::map<std::string, Value>& map)
    {
        std::uint32_t count = 0;
        if (!read(count) || count > 0x7FFFFFFFu) return false;
        for (; count > 0; --count)
        {
            std::string name;
            Value value{};
            if (!read(name) || !read(value)) return false;
            map[name.c_str()] = value; // a name ends at its first NUL
        }
        return true;
    }

    bool readNotes()
    {
        std::uint32_t count = 0;
        if (!read(count)) return false;
        for (; count > 0; --count)
        {
            PlainNote note;
            if (!read(note.owner) || !read(note.text) || !read(note.position) || !read(note.size) ||
                !read(note.firstColor) || !read(note.secondColor))
                return false;
            layout.notes.push_back(note);
        }
        return true;
    }

    template <class Value>
    bool read(std::optional<Value>& value)
    {
        bool present = false;
        if (!read(present)) return false;
        return !present || read(value.emplace());
    }

    bool read(std::string& text)
    {
        std::uint32_t length = 0;
        std::string_view bytes;
        if (!read(length) || !take(length, bytes)) return false;
        if (bytes.ends_with('\0')) bytes.remove_suffix(1);
        text = bytes;
        return true;
    }

    template <std::size_t count>
    bool read(std::array<std::uint32_t, count>& floats)
    {
        return std::ranges::all_of(floats, [this](std::uint32_t& bits) { return read(bits); });
    }

    bool read(bool& value)
    {
        std::string_view byte;
        if (!take(1, byte)) return false;
        value = byte[0] != 0;
        return true;
    }

    bool read(std::uint32_t& number)
    {
        std::string_view bytes;
        if (!take(4, bytes)) return false;
        number = 0;
        for (std::size_t i = 0; i < 4; ++i)
            number = number << 8 | static_cast<unsigned char>(bytes[order_ == std::endian::big ? i : 3 - i]);
        return true;
    }

    bool take(std::size_t count, std::string_view& bytes)
    {
        if (count > bytes_.size() - end) return false;
        bytes = bytes_.substr(end, count);
        end += count;
        return true;
    }

    std::string_view bytes_;
    std::endian order_;
};

} // namespace kestrel::graph::test
