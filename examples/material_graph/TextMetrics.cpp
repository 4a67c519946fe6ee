#include "TextMetrics.h"

#include <array>
#include <cstddef>

namespace material_graph
{

namespace
{

constexpr float unitsPerEm = 1000.0f;
constexpr int widestLetter = 1015;
// A text has room in its own width, however the sum was made.
constexpr float roundingError = 0.01f;

// The advance widths of Helvetica, which most sans-serif typefaces come close to, from the space to the
// tilde.
constexpr std::array<int, 95> advances{
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333,  278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667,
    611, 778, 722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667,  611, 722, 667, 944, 667,
    667, 611, 278, 278, 278, 469, 556, 333, 556, 556, 500, 556, 556, 278,  556, 556, 222, 222, 500,
    222, 833, 556, 556, 556, 556, 333, 500, 278, 556, 500, 722, 500, 500,  500, 334, 260, 334, 584};

bool continuesLetter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

// Of the letter that begins with the byte.
int advanceOf(char byte)
{
    auto const code = static_cast<unsigned char>(byte);
    if (continuesLetter(byte)) return 0;
    if (code < ' ' || code > '~') return widestLetter;
    return advances[code - static_cast<std::size_t>(' ')];
}

bool mayBreakBehind(char byte)
{
    return byte == ' ' || byte == '_' || byte == '.';
}

// How many bytes of the text go into the first line: at least one letter.
std::size_t firstLineOf(std::string_view text, float fontSize, float maxWidth)
{
    float width = 0.0f;
    std::size_t best = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        width += static_cast<float>(advanceOf(text[i])) * fontSize / unitsPerEm;
        bool const overflows = width > maxWidth + roundingError && text[i] != ' ';
        if (overflows && !continuesLetter(text[i]) && i != 0) return best != 0 ? best : i;
        if (mayBreakBehind(text[i])) best = i + 1;
    }
    return text.size();
}

std::string withoutSpaceAtEnd(std::string_view line)
{
    std::size_t const last = line.find_last_not_of(' ');
    return std::string(line.substr(0, last == line.npos ? 0 : last + 1));
}

void wrapParagraph(std::string_view text, float fontSize, float maxWidth, std::vector<std::string>& lines)
{
    do {
        std::size_t const length = firstLineOf(text, fontSize, maxWidth);
        lines.push_back(withoutSpaceAtEnd(text.substr(0, length)));
        text.remove_prefix(length);
    } while (!text.empty());
}

} // namespace

float textWidth(std::string_view text, float fontSize)
{
    int units = 0;
    for (char byte : text) units += advanceOf(byte);
    return static_cast<float>(units) * fontSize / unitsPerEm;
}

std::vector<std::string> wrapped(std::string_view text, float fontSize, float maxWidth)
{
    std::vector<std::string> lines;
    for (;;)
    {
        std::size_t const end = text.find('\n');
        wrapParagraph(text.substr(0, end), fontSize, maxWidth, lines);
        if (end == text.npos) return lines;
        text.remove_prefix(end + 1);
    }
}

} // namespace material_graph
