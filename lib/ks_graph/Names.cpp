#include "Names.h"

#include <algorithm>
#include <cctype>

namespace kestrel::graph
{

void appendDotted(KS_String& fullName, KS_String const& name)
{
    constexpr std::size_t longText = 256;
    std::string_view const owner = cText(fullName);
    if (owner.size() != fullName.length()) fullName = KS_String(owner);
    std::size_t const length = owner.size() + 1 + cText(name).size();
    std::size_t const spare = length > longText ? length / 2 : 0;
    // coverage: a name of 4 GiB
    if (length >= fullName.capacity() && length + spare < KS_String::npos)
        fullName.reserve(static_cast<unsigned int>(length + 1 + spare));
    fullName += ".";
    fullName += name.c_str();
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    auto const sameLetter = [](char x, char y)
    {
        return x == y ||
               std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameLetter);
}

int trailingDigits(std::string_view text)
{
    auto const isDigit = [](char byte) { return std::isdigit(static_cast<unsigned char>(byte)) != 0; };
    return static_cast<int>(std::find_if_not(text.rbegin(), text.rend(), isDigit) - text.rbegin());
}

KS_String numberedName(std::string_view stem, int width, int number)
{
    std::string name(stem);
    appendNumber(name, width, number);
    return KS_String(name);
}

void appendNumber(std::string& text, int width, int number)
{
    std::string const digits = std::to_string(number);
    if (digits.size() < static_cast<std::size_t>(width))
        text.append(static_cast<std::size_t>(width) - digits.size(), '0');
    text += digits;
}

} // namespace kestrel::graph
