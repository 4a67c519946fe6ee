/// @file
/// Internal: how names are joined, compared and numbered. Names are C texts here: they end at the first NUL.
#pragma once

#include <foundation/KS_String.h>

#include <string>
#include <string_view>

namespace kestrel::graph
{

inline std::string_view cText(KS_String const& text)
{
    return text.c_str();
}

inline std::string_view cText(std::string const& text)
{
    return text.c_str();
}

/// "<owner>.<name>", in one allocation.
inline KS_String dottedName(KS_String const& owner, KS_String const& name)
{
    return KS_String::concatenated({cText(owner), ".", cText(name)});
}

/// Appends "." and the name. A long text gets room to spare, so that a name of many levels is not copied once
/// for each of them.
void appendDotted(KS_String& fullName, KS_String const& name);

/// Whether the two are equal after the runtime's `tolower`, byte by byte.
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// "<stem><number>", the number padded with zeros to `width` digits. The stem is a text, never a format.
KS_String numberedName(std::string_view stem, int width, int number);

/// Appends the number, padded with zeros to `width` digits.
void appendNumber(std::string& text, int width, int number);

/// How many of the bytes at the end of the text are decimal digits.
int trailingDigits(std::string_view text);

/// The first of "<stem>1", "<stem>2", ... that is not taken, where the stem is `name` without the digits at
/// its end, and their count is the width of the number.
template <class Taken>
KS_String firstFreeNameLike(KS_String const& name, Taken isTaken)
{
    int const width = trailingDigits(cText(name));
    std::string_view const stem =
        cText(name).substr(0, cText(name).size() - static_cast<unsigned int>(width));
    for (int number = 1;; ++number)
    {
        KS_String candidate = numberedName(stem, width, number);
        if (!isTaken(candidate)) return candidate;
    }
}

} // namespace kestrel::graph
