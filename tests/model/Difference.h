/// @file
#pragma once

#include <sstream>
#include <string>

namespace kestrel::graph::test::model
{

/// The first difference between the model and the library; empty while there is none.
class Difference
{
public:
    explicit operator bool() const { return !text_.empty(); }
    std::string const& text() const { return text_; }

    /// Keeps the text when it is the first. The parts are only joined then.
    template <class... Parts>
    void note(Parts const&... parts)
    {
        if (!text_.empty()) return;
        std::ostringstream out;
        (out << ... << parts);
        text_ = out.str();
    }

    template <class Expected, class Actual>
    void expect(char const* what, Expected const& expected, Actual const& actual)
    {
        if (!(expected == actual)) note(what, " is ", actual, ", but ", expected, " in the model");
    }

private:
    std::string text_;
};

} // namespace kestrel::graph::test::model
