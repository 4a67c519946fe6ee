#include <material_graph/Svg.h>
#include <material_graph/Text.h>
#include <material_graph/TextMetrics.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace material_graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// What sums of floats may be off.
constexpr float rounding = 0.01f;

TEST(SvgText, NumbersHaveAtMostTwoDecimalsAndNoZerosAtTheEnd)
{
    EXPECT_EQ(svgNumber(0.0f), "0");
    EXPECT_EQ(svgNumber(-0.0f), "0");
    EXPECT_EQ(svgNumber(-0.001f), "0");
    EXPECT_EQ(svgNumber(1.5f), "1.5");
    EXPECT_EQ(svgNumber(100.0f), "100");
    EXPECT_EQ(svgNumber(-2.126f), "-2.13");
    EXPECT_EQ(svgNumber(1e7f), "10000000");
    EXPECT_EQ(svgPoint({1.25f, -3.0f}), "1.25 -3");
}

TEST(PrintableText, KeepsWhatXmlCanHold)
{
    for (char const* text : {"", "plain", "a\tb\nc", "<&>\"'", "\xC2\xA0", "\xC3\xA9", "\xE2\x82\xAC",
                             "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x9F\x8E\xA8", "\xF4\x8F\xBF\xBD"})
        EXPECT_EQ(printable(text), text);
}

TEST(PrintableText, ReplacesWhatXmlCannotHold)
{
    std::string const replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(printable(std::string_view("a\0b", 3)), "a" + replacement + "b");
    for (char const* text :
         {"\x01", "\x1F", "\r", "\x7F", "\x80", "\xFF", "\xC3", "\xE2\x82", "\xC0\x80", "\xED\xA0\x80",
          "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xEF\xBF\xBE", "\xEF\xBF\xBF"})
    {
        std::string const shown = printable("<" + std::string(text) + ">");
        EXPECT_THAT(shown, HasSubstr(replacement)) << text;
        EXPECT_THAT(shown, Not(HasSubstr(text))) << text;
        EXPECT_EQ(shown, printable(shown));
    }
}

TEST(PrintableText, LetterIsAsLongAsItsBytes)
{
    EXPECT_EQ(letterLength("ab"), 1u);
    EXPECT_EQ(letterLength("\xC3\xA9x"), 2u);
    EXPECT_EQ(letterLength("\xE2\x82\xAC"), 3u);
    EXPECT_EQ(letterLength("\xF0\x9F\x8E\xA8"), 4u);
    for (char const* none :
         {"", "\x80", "\xC3", "\xE2\x82", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"})
        EXPECT_EQ(letterLength(none), 0u);
}

TEST(TextMetrics, WidthGrowsWithTheTextAndTheFont)
{
    EXPECT_EQ(textWidth("", 10.0f), 0.0f);
    EXPECT_GT(textWidth("ab", 10.0f), textWidth("a", 10.0f));
    EXPECT_NEAR(textWidth("ab", 10.0f), textWidth("a", 10.0f) + textWidth("b", 10.0f), rounding);
    EXPECT_NEAR(textWidth("some text", 20.0f), 2 * textWidth("some text", 10.0f), rounding);
    EXPECT_LT(textWidth("ill", 10.0f), textWidth("MWM", 10.0f));
    EXPECT_FLOAT_EQ(linesHeight(3, 10.0f), 36.0f);
}

TEST(TextMetrics, LettersBeyondAsciiAreEachAsWideAsTheWidest)
{
    float widest = 0.0f;
    for (char c = ' '; c < 127; ++c) widest = std::max(widest, textWidth(std::string(1, c), 10.0f));
    for (char const* letter : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x8E\xA8"})
        EXPECT_FLOAT_EQ(textWidth(letter, 10.0f), widest) << letter;
}

TEST(TextMetrics, TextIsBrokenBehindSpacesUnderscoresAndDots)
{
    float const width = textWidth("mmmm", 10.0f);
    EXPECT_THAT(wrapped("mmm_mmm", 10.0f, width), ElementsAre("mmm_", "mmm"));
    EXPECT_THAT(wrapped("mmm.mmm", 10.0f, width), ElementsAre("mmm.", "mmm"));
    EXPECT_THAT(wrapped("mmm", 10.0f, width), ElementsAre("mmm"));
    std::vector<std::string> const words = wrapped("mmm mmm", 10.0f, width);
    ASSERT_EQ(words.size(), 2u);
    EXPECT_TRUE(words[0].starts_with("mmm"));
    EXPECT_EQ(words[1], "mmm");
}

TEST(TextMetrics, LongWordIsBrokenBetweenLetters)
{
    EXPECT_THAT(wrapped("mmmmmmmmm", 10.0f, textWidth("mmmm", 10.0f)), ElementsAre("mmmm", "mmmm", "m"));
    std::string const euro = "\xE2\x82\xAC";
    EXPECT_THAT(wrapped(euro + euro + euro, 10.0f, textWidth(euro + euro, 10.0f)),
                ElementsAre(euro + euro, euro));
}

TEST(TextMetrics, LineFeedEndsALine)
{
    EXPECT_THAT(wrapped("a\nb", 10.0f, 100.0f), ElementsAre("a", "b"));
    EXPECT_THAT(wrapped("a\n\nb", 10.0f, 100.0f), ElementsAre("a", "", "b"));
}

TEST(TextMetrics, WrappedTextIsNeverEmpty)
{
    EXPECT_EQ(wrapped("", 10.0f, 100.0f).size(), 1u);
    EXPECT_EQ(wrapped("", 10.0f, 0.0f).size(), 1u);
}

std::string withoutSpaces(std::string text)
{
    std::erase(text, ' ');
    return text;
}

std::size_t lettersIn(std::string_view text)
{
    std::size_t count = 0;
    for (; letterLength(text) > 0; text.remove_prefix(letterLength(text))) ++count;
    return count;
}

void expectWhole(std::vector<std::string> const& lines, std::string const& text)
{
    std::string all;
    for (std::string const& line : lines) all += line;
    EXPECT_EQ(withoutSpaces(all), withoutSpaces(text));
}

TEST(TextMetrics, WrappedTextIsWholeAndNoWiderThanItsRoomButForSingleLetters)
{
    for (std::string const& text :
         {std::string("Running bond: every second row is shifted by half a brick."),
          std::string("_leading.and_trailing_ "), std::string(300, 'W'), std::string("   "),
          std::string("\xC3\xA9t\xC3\xA9 \xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC \xF0\x9F\x8E\xA8")})
        for (float width : {-1.0f, 0.0f, 3.0f, 25.0f, 60.0f, 1000.0f})
        {
            std::vector<std::string> const lines = wrapped(text, 10.0f, width);
            for (std::string const& line : lines)
                EXPECT_TRUE(textWidth(line, 10.0f) <= width + rounding || lettersIn(line) <= 1)
                    << "'" << line << "' in " << width;
            expectWhole(lines, text);
        }
}

TEST(TextMetrics, WrappedBytesThatAreNoLettersStay)
{
    std::string const broken = "a\xFF\xC3(\xE2\x82 \x80";
    for (float width : {0.0f, 25.0f, 1000.0f}) expectWhole(wrapped(broken, 10.0f, width), broken);
}

} // namespace

} // namespace material_graph::test
