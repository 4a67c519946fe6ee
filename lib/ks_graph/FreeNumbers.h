/// @file
/// Internal: from which number on the names of one stem may be free.
#pragma once

#include "Names.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kestrel::graph
{

/// "<stem>" as number 0, "<stem>01", "<stem>02" and so on.
class NumberedNames
{
public:
    explicit NumberedNames(KS_String const& stem) : text_(stem.c_str()), stemLength_(text_.size()) {}

    std::string_view stem() const { return std::string_view(text_).substr(0, stemLength_); }

    /// Valid until the next call.
    std::string_view with(int number)
    {
        text_.resize(stemLength_);
        if (number != 0) appendNumber(text_, 2, number);
        return text_;
    }

private:
    std::string text_;
    std::size_t stemLength_;
};

/// Names of one stem are tried in ascending order. This remembers how many of them are taken for certain, so
/// that the many names of one move do not try all of them each time.
///
/// It has to be told of every name that is given up; a name that is taken behind its back does no harm.
class FreeNumbers
{
public:
    bool isEmpty() const { return firstMaybeFree_.empty(); }

    /// The first number from `lowest` on whose name is not taken.
    template <class IsTaken>
    int firstFree(NumberedNames& candidates, int lowest, IsTaken isTaken)
    {
        auto const known = firstMaybeFree_.find(candidates.stem());
        // A bare stem that was given up lowers it to 0, which is no number where they begin with 1.
        int number = known != firstMaybeFree_.end() ? std::max(lowest, known->second) : lowest;
        int const first = number;
        while (isTaken(candidates.with(number))) ++number;
        if (known != firstMaybeFree_.end())
            known->second = number;
        else if (number - first >= worthKeeping)
            keep(candidates.stem(), number);
        return number;
    }

    /// The name may have been any of the stems with a number, or a stem itself, which counts as number 0.
    void released(std::string_view name)
    {
        if (isEmpty()) return;
        for (std::size_t length = name.size();; --length)
        {
            lower(name.substr(0, length), name.substr(length));
            constexpr std::size_t digitsOfAnInt = 10;
            bool const isDigit = length > 0 && name[length - 1] >= '0' && name[length - 1] <= '9';
            if (!isDigit || name.size() - length == digitsOfAnInt) return;
        }
    }

    void clear() noexcept { firstMaybeFree_.clear(); }

private:
    static constexpr std::size_t manyStems = 4096;
    static constexpr int worthKeeping = 8;

    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    void keep(std::string_view stem, int number)
    {
        if (firstMaybeFree_.size() >= manyStems) firstMaybeFree_.clear();
        firstMaybeFree_.emplace(stem, number);
    }

    void lower(std::string_view stem, std::string_view digits)
    {
        auto const known = firstMaybeFree_.find(stem);
        if (known == firstMaybeFree_.end()) return;
        long long number = 0;
        for (char const digit : digits) number = number * 10 + (digit - '0');
        if (number < known->second) known->second = static_cast<int>(number);
    }

    std::unordered_map<std::string, int, Hash, std::equal_to<>> firstMaybeFree_;
};

} // namespace kestrel::graph
