#include "LayoutDump.h"

#include "Text.h"

#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace material_graph
{

namespace
{

constexpr std::uint32_t newestVersion = 2;
constexpr std::uint32_t largestVersion = 0xFFFF;

// Thrown where the dump has to end.
struct Defect
{
    std::string text;
};

template <class Number, class... Format>
void appendNumber(std::string& text, Number number, Format... format)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number, format...).ptr);
}

std::string hex(std::size_t number, std::size_t leastDigits)
{
    std::string digits;
    appendNumber(digits, number, 16);
    if (digits.size() < leastDigits) digits.insert(0, leastDigits - digits.size(), '0');
    return digits;
}

std::string offsetText(std::size_t offset)
{
    return hex(offset, 8);
}

std::string place(std::size_t offset)
{
    return " at 0x" + offsetText(offset);
}

std::string bytesText(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::uint32_t byteAt(std::string_view bytes, std::size_t index)
{
    return static_cast<unsigned char>(bytes[index]);
}

std::uint32_t numberAt(std::string_view bytes, std::endian order)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | byteAt(bytes, order == std::endian::big ? i : 3 - i);
    return number;
}

bool isVersion(std::uint32_t number)
{
    return number >= 1 && number <= largestVersion;
}

// How many bytes at the start of the text are shown as they are, if any: those of one letter.
std::size_t shownLength(std::string_view text)
{
    char const first = text.front();
    bool const isEscaped = first == '"' || first == '\\' || first == '\x7F' || byteAt(text, 0) < 0x20;
    return isEscaped ? 0 : letterLength(text);
}

void appendQuoted(std::string& out, std::string_view text)
{
    out += '"';
    while (!text.empty())
    {
        std::size_t const shown = shownLength(text);
        if (shown != 0)
            out.append(text.substr(0, shown));
        else
            out.append("\\x").append(hex(byteAt(text, 0), 2));
        text.remove_prefix(shown != 0 ? shown : 1);
    }
    out += '"';
}

// Takes values off the bytes, in order.
class Reader
{
public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    std::size_t offset() const { return offset_; }
    std::size_t numberOfBytesLeft() const { return bytes_.size() - offset_; }
    std::endian byteOrder() const { return order_; }

    // A number and its mirror image are never both small, so that the version tells the order.
    void findByteOrder()
    {
        require(4, "version");
        for (std::endian const order : {std::endian::little, std::endian::big})
        {
            order_ = order;
            if (isAtVersion()) return;
        }
        throw Defect{"there is no version of 1 to " + std::to_string(largestVersion) +
                     " in either byte order" + place(offset_)};
    }

    bool isAtVersion() const
    {
        return numberOfBytesLeft() >= 4 && isVersion(numberAt(bytes_.substr(offset_), order_));
    }

    std::uint32_t number(char const* what) { return numberAt(take(4, what), order_); }
    std::uint32_t byte(char const* what) { return byteAt(take(1, what), 0); }

    std::string_view take(std::size_t size, char const* what)
    {
        require(size, what);
        offset_ += size;
        return bytes_.substr(offset_ - size, size);
    }

private:
    void require(std::size_t size, char const* what) const
    {
        if (size <= numberOfBytesLeft()) return;
        throw Defect{"the file ends" + place(bytes_.size()) + ", but there should be a " + what + " of " +
                     bytesText(size) + place(offset_)};
    }

    std::string_view bytes_;
    std::size_t offset_ = 0;
    std::endian order_ = std::endian::little;
};

// Every value is appended as soon as it was read, so that the text holds all that is in front of a defect.
class Dumper
{
public:
    explicit Dumper(std::string_view bytes) : reader_(bytes) {}

    LayoutDump finish()
    {
        try
        {
            appendLayouts();
        }
        catch (Defect& defect)
        {
            if (!dump_.text.empty() && dump_.text.back() != '\n') dump_.text += "...\n";
            dump_.defect = std::move(defect.text);
        }
        return std::move(dump_);
    }

private:
    using Value = void (Dumper::*)();

    struct Section
    {
        char const* name;
        Value appendValue;
        std::uint32_t sinceVersion;
    };

    void appendLayouts()
    {
        reader_.findByteOrder();
        appendLayout();
        while (reader_.isAtVersion()) appendLayout();
        if (reader_.numberOfBytesLeft() != 0)
            throw Defect{bytesText(reader_.numberOfBytesLeft()) + " behind the layout" +
                         place(reader_.offset())};
    }

    void appendLayout()
    {
        static constexpr Section sections[] = {
            {"node positions", &Dumper::appendPair, 1},
            {"node colours", &Dumper::appendColor, 1},
            {"node collapsed", &Dumper::appendFlag, 1},
            {"node visible", &Dumper::appendFlag, 2},
            {"node horizontal inputs", &Dumper::appendFlag, 1},
            {"node horizontal outputs", &Dumper::appendFlag, 1},
            {"connection visible", &Dumper::appendFlag, 2},
            {"connection bezier", &Dumper::appendFlag, 2},
        };
        std::uint32_t const version = appendHeading();
        for (Section const& section : sections)
            if (version >= section.sinceVersion) appendSection(section);
        appendNotes();
    }

    std::uint32_t appendHeading()
    {
        beginLine(0, reader_.byteOrder() == std::endian::little ? "little-endian" : "big-endian");
        dump_.text += "layout, version ";
        std::uint32_t const version = reader_.number("version");
        appendNumber(dump_.text, version);
        if (version > newestVersion) dump_.text.append(", read as ").append(std::to_string(newestVersion));
        endLine();
        return version;
    }

    void appendSection(Section const& section)
    {
        std::size_t const start = reader_.offset();
        auto const count = appendCount<std::int32_t>(section.name);
        if (count < 0)
            throw Defect{std::string("the count of ") + section.name + place(start) + " is negative"};
        for (std::int32_t i = 0; i < count; ++i)
        {
            beginLine(2);
            appendText();
            dump_.text += ' ';
            (this->*section.appendValue)();
            endLine();
        }
    }

    void appendNotes()
    {
        auto const count = appendCount<std::uint32_t>("notes");
        for (std::uint32_t i = 0; i < count; ++i)
        {
            beginLine(2);
            appendText();
            endLine();
            appendNotePart("text", &Dumper::appendText);
            appendNotePart("position", &Dumper::appendPair);
            appendNotePart("size", &Dumper::appendPair);
            appendNotePart("first colour", &Dumper::appendColor);
            appendNotePart("second colour", &Dumper::appendColor);
        }
    }

    void appendNotePart(char const* name, Value appendValue)
    {
        beginLine(3, name);
        if (takeFlag())
            (this->*appendValue)();
        else
            dump_.text += "absent";
        endLine();
    }

    template <class Count>
    Count appendCount(std::string_view name)
    {
        beginLine(1, std::string(name) + ":");
        auto const count = static_cast<Count>(reader_.number("count"));
        appendNumber(dump_.text, count);
        endLine();
        return count;
    }

    void appendText()
    {
        std::size_t const size = reader_.number("length");
        std::string_view text = reader_.take(size, "text");
        bool const isTerminated = text.ends_with('\0');
        if (isTerminated) text.remove_suffix(1);
        appendQuoted(dump_.text, text);
        if (!isTerminated) dump_.text += " without NUL";
    }

    void appendPair() { appendFloats(2); }
    void appendColor() { appendFloats(4); }

    void appendFloats(unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i)
        {
            dump_.text += i == 0 ? "(" : ", ";
            appendNumber(dump_.text, std::bit_cast<float>(reader_.number("number")));
        }
        dump_.text += ')';
    }

    void appendFlag() { dump_.text += takeFlag() ? "true" : "false"; }

    bool takeFlag()
    {
        std::uint32_t const byte = reader_.byte("flag");
        if (byte > 1) dump_.text.append("[0x").append(hex(byte, 2)).append("] ");
        return byte != 0;
    }

    void beginLine(std::size_t depth)
    {
        dump_.text.append(offsetText(reader_.offset())).append(2 + 2 * depth, ' ');
    }
    void beginLine(std::size_t depth, std::string_view label)
    {
        beginLine(depth);
        dump_.text.append(label).append(" ");
    }
    void endLine() { dump_.text += '\n'; }

    Reader reader_;
    LayoutDump dump_;
};

} // namespace

LayoutDump dumpLayout(std::string_view bytes)
{
    return Dumper(bytes).finish();
}

} // namespace material_graph
