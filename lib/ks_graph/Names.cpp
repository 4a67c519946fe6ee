#include "Names.h"

#include <algorithm>
#include <cctype>

namespace kestrel::graph
{

void appendDotted(KS_String& fullName, KS_String const& name)
{
    constexpr unsigned int longText = 256;
    unsigned int const length = fullName.length() + 1 + static_cast<unsigned int>(cText(name).size());
    if (length >= fullName.capacity()) fullName.reserve(length + 1 + (length > longText ? length / 2 : 0));
    fullName += ".";
    fullName += name.c_str();
}

KS_String upToFirstNul(KS_String text)
{
    return cText(text).size() == text.length() ? text : KS_String(cText(text));
}

bool equalIgnoringCase(KS_String const& a, KS_String const& b)
{
    auto const sameLetter = [](char x, char y)
    { return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y)); };
    std::string_view const left = cText(a);
    std::string_view const right = cText(b);
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), sameLetter);
}

int trailingDigits(std::string_view text)
{
    auto const isDigit = [](char byte) { return std::isdigit(static_cast<unsigned char>(byte)) != 0; };
    return static_cast<int>(std::find_if_not(text.rbegin(), text.rend(), isDigit) - text.rbegin());
}

KS_String numberedName(std::string_view stem, int width, int number)
{
    KS_String digits;
    digits.format("%0*d", width, number);
    return KS_String::concatenated({stem, digits});
}

} // namespace kestrel::graph
