#include "Text.h"

#include <algorithm>
#include <cstddef>

namespace material_graph
{

namespace
{

constexpr std::string_view replacement = "\xEF\xBF\xBD";

unsigned int byteAt(std::string_view text, std::size_t index)
{
    return static_cast<unsigned char>(text[index]);
}

// The bytes that a letter with that first byte has; 0 if none begins so.
std::size_t claimedLength(unsigned int first)
{
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    if (first >= 0xF0 && first < 0xF5) return 4;
    return 0;
}

// Overlong forms, surrogates and what lies beyond the last code point show in the second byte.
bool isSecondByte(unsigned int first, unsigned int second)
{
    unsigned int const least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned int const most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    return second >= least && second <= most;
}

bool isControl(std::string_view letter)
{
    unsigned int const first = byteAt(letter, 0);
    return (first < 0x20 && first != '\n' && first != '\t') || first == 0x7F;
}

// U+FFFE and U+FFFF are in no XML document.
bool isNoCharacter(std::string_view letter)
{
    return letter == "\xEF\xBF\xBE" || letter == "\xEF\xBF\xBF";
}

} // namespace

std::size_t letterLength(std::string_view text)
{
    if (text.empty()) return 0;
    unsigned int const first = byteAt(text, 0);
    std::size_t const length = claimedLength(first);
    if (length <= 1) return length;
    if (text.size() < length || !isSecondByte(first, byteAt(text, 1))) return 0;
    bool const rest =
        std::all_of(text.begin() + 2, text.begin() + static_cast<std::ptrdiff_t>(length),
                    [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; });
    return rest ? length : 0;
}

std::string printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty())
    {
        std::size_t const length = letterLength(text);
        std::string_view const letter = text.substr(0, length);
        bool const good = length != 0 && !isControl(letter) && !isNoCharacter(letter);
        out += good ? letter : replacement;
        text.remove_prefix(length != 0 ? length : 1);
    }
    return out;
}

} // namespace material_graph
