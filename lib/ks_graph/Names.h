/// @file
/// Internal: how names are joined, compared and numbered. Names are C texts here: they end at the first NUL.
#pragma once

#include <foundation/KS_String.h>

#include <array>
#include <charconv>
#include <cstddef>
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

/// The decimal digits of a number, behind a minus sign where it is negative, without touching the heap.
class Decimal
{
public:
    explicit Decimal(int number) : end_(std::to_chars(text_.begin(), text_.end(), number).ptr) {}
    Decimal(Decimal const&) = delete;
    Decimal& operator=(Decimal const&) = delete;

    operator std::string_view() const
    {
        return {text_.data(), static_cast<std::size_t>(end_ - text_.data())};
    }

private:
    std::array<char, 11> text_;
    char const* end_;
};

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
